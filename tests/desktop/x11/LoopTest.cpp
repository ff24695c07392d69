// tests/desktop/x11/LoopTest.cpp
//
// Programs with main loops of every kind: each shows the dialog, has its timers fired, and lives on
// while an alert waits.
#include <gtest/gtest.h>

#include "tests/support/Desk.h"

namespace {

// Middles of buttons, see tests/data/windows/Dialog.nib.
constexpr ScreenSpot kHelpButton = {55, 290};
constexpr ScreenSpot kInnerButton = {345, 160};

class Loop : public testing::TestWithParam<const char*> {
protected:
    void Click(const ScreenWindow& window, const ScreenSpot& spot)
    {
        m_screen.Click(window.x + spot.x, window.y + spot.y);
    }
    bool Says(const std::string& line)
    {
        return WaitFor([&] { return m_host.Log().find(line) != std::string::npos; }, 30.0);
    }

    // What libraries of the desktop keep to themselves is known in our own programs only.
    const CEnvironment m_leaks{"ASAN_OPTIONS", "detect_leaks=0"};
    const CDataBundle m_bundle{"windows"};
    CScreen m_screen;
    CProgram m_host{{std::string(CV_TEST_BIN_DIR "/desktop/x11/") + GetParam(), m_bundle.Path()}};
};

TEST_P(Loop, ServesWindowsTimersAndAlerts)
{
    const auto dialog = m_screen.WaitForWindow("Dialog");
    ASSERT_TRUE(dialog) << m_host.Log();
    ASSERT_TRUE(WaitFor([&] { return m_screen.Focus() == dialog->id; }));
    EXPECT_TRUE(Says("timer")) << m_host.Log();
    Click(*dialog, kHelpButton);
    EXPECT_TRUE(Says("help")) << m_host.Log();

    Click(*dialog, kInnerButton);
    EXPECT_TRUE(Says("the host runs in the alert")) << m_host.Log();
    ASSERT_TRUE(WaitFor([&] {
        const std::uint32_t owner = m_screen.PropertyOf(m_screen.Focus(), "WM_TRANSIENT_FOR");
        return owner == dialog->id;
    })) << "the alert does not get the keyboard";
    m_screen.Tap(kReturnKey);
    EXPECT_TRUE(Says("alert answered")) << m_host.Log();

    ASSERT_TRUE(WaitFor([&] { return m_screen.Focus() == dialog->id; }));
    m_screen.Tap(kReturnKey);
    EXPECT_EQ(m_host.Wait(30.0), 0) << m_host.Log();
}

INSTANTIATE_TEST_SUITE_P(Of, Loop, testing::Values(CV_HOSTS),
                         [](const auto& instance) { return std::string(instance.param); });

} // namespace
