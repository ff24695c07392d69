// tests/desktop/x11/HintsTest.cpp
//
// What a window manager is told of our windows, and what it makes of that.
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/support/Desk.h"

namespace {

using testing::ElementsAre;

class Hints : public testing::Test {
protected:
    CScreen& m_screen = TheScreen();
    const CDialog m_dialog{Stand::OnScreen};
    const xcb_window_t m_window = ShownOn(m_screen, m_dialog.Window()).id;
};

TEST_F(Hints, NameTheProcessAndTheKindOfWindow)
{
    EXPECT_EQ(m_screen.PropertyOf(m_window, "_NET_WM_PID"), static_cast<std::uint32_t>(getpid()));
    EXPECT_EQ(m_screen.BytesOf(m_window, "WM_CLASS"), std::string("HintsTest\0Corvane\0", 18));
    EXPECT_THAT(m_screen.AtomsOf(m_window, "_NET_WM_WINDOW_TYPE"), ElementsAre("_NET_WM_WINDOW_TYPE_DIALOG"));
}

} // namespace
