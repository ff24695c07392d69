// tests/desktop/x11/HintsTest.cpp
//
// What a window manager is told of our windows, and what it makes of that.
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/support/Desk.h"

namespace {

using testing::ElementsAre;

void SetTitle(WindowRef window, const std::string& title)
{
    CFStringRef text = MakeString(title);
    EXPECT_EQ(SetWindowTitleWithCFString(window, text), noErr);
    CFRelease(text);
}

bool IsCentredOn(const ScreenWindow& window, const ScreenWindow& around)
{
    const int right = window.x - around.x - (around.width - window.width) / 2;
    const int down = window.y - around.y - (around.height - window.height) / 2;
    return std::abs(right) <= 1 && std::abs(down) <= 1;
}

/// A window made by hand, for what the nib's is not.
class COwnWindow {
public:
    COwnWindow(const std::string& title, const Rect& content, WindowAttributes attributes)
    {
        EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, attributes, &content, &m_window), noErr);
        SetTitle(m_window, title);
    }
    ~COwnWindow() { DisposeWindow(m_window); }
    COwnWindow(const COwnWindow&) = delete;
    COwnWindow& operator=(const COwnWindow&) = delete;
    WindowRef Get() const { return m_window; }

private:
    WindowRef m_window = nullptr;
};

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

TEST_F(Hints, TitleIsUtf8AndFollows)
{
    EXPECT_EQ(m_screen.BytesOf(m_window, "_NET_WM_NAME"), "Dialog");
    const std::string title = "Gr\xC3\xB6\xC3\x9F"
                              "e \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x9B";
    SetTitle(m_dialog.Window(), title);
    EXPECT_TRUE(ServeUntil([&] { return m_screen.BytesOf(m_window, "_NET_WM_NAME") == title; }));
}

TEST_F(Hints, IconsAreWholePictures)
{
    std::vector<std::uint32_t> sides;
    const std::vector<std::uint32_t> words = m_screen.WordsOf(m_window, "_NET_WM_ICON");
    std::size_t at = 0;
    while (at + 2 <= words.size()) {
        EXPECT_EQ(words[at], words[at + 1]);
        sides.push_back(words[at]);
        const std::uint32_t middle = words.at(at + 2 + words[at] * words[at] / 2 + words[at] / 2);
        EXPECT_EQ(middle >> 24, 0xFFU) << "nothing is drawn in the middle";
        at += 2 + words[at] * words[at + 1];
    }
    EXPECT_EQ(at, words.size());
    EXPECT_THAT(sides, ElementsAre(16U, 48U));
}

TEST_F(Hints, WindowOfFixedSizeKeepsItsSize)
{
    const std::uint32_t wider[] = {700, 600};
    xcb_configure_window(m_screen.Connection(), m_window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, wider);
    m_screen.MoveWindow(m_window, 300, 250); // done after the other, so waited for
    ASSERT_TRUE(ServeUntil([&] { return m_screen.PlaceOf(m_window)->x == 300; }));
    EXPECT_EQ(m_screen.PlaceOf(m_window)->width, 400);
    EXPECT_EQ(m_screen.PlaceOf(m_window)->height, 320);
}

TEST_F(Hints, ResizableWindowFollowsTheManager)
{
    const COwnWindow plain("Resizable", {100, 100, 300, 400}, kWindowResizableAttribute | kWindowCloseBoxAttribute);
    ShowWindow(plain.Get());
    const xcb_window_t window = ShownOn(m_screen, plain.Get()).id;
    const std::uint32_t wider[] = {500, 350};
    xcb_configure_window(m_screen.Connection(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, wider);
    m_screen.Sync();
    EXPECT_TRUE(ServeUntil([&] {
        Rect content = {};
        (void)GetWindowBounds(plain.Get(), kWindowContentRgn, &content); // zero is waited out
        return content.right - content.left == 500 && content.bottom - content.top == 350;
    }));
    EXPECT_TRUE(ServeUntil([&] {
        const auto place = m_screen.PlaceOf(window);
        const ScreenImage image = m_screen.Look(*place);
        return image.width == 500 && image.At(490, 340) == image.At(5, 5);
    })) << "the new part is not drawn";
}

TEST_F(Hints, WindowStandsOnItsModalParent)
{
    const COwnWindow sheet("Sheet", {0, 0, 100, 200}, kWindowCloseBoxAttribute);
    ASSERT_EQ(SetWindowModality(sheet.Get(), kWindowModalityWindowModal, m_dialog.Window()), noErr);
    ShowWindow(sheet.Get());
    const ScreenWindow shown = ShownOn(m_screen, sheet.Get());
    EXPECT_EQ(m_screen.PropertyOf(shown.id, "WM_TRANSIENT_FOR"), m_window);
    EXPECT_TRUE(ServeUntil([&] { return m_screen.HasState(shown.id, "_NET_WM_STATE_MODAL"); }));
    EXPECT_TRUE(IsCentredOn(shown, *m_screen.PlaceOf(m_window)));
    EXPECT_FALSE(m_screen.HasState(m_window, "_NET_WM_STATE_MODAL"));

    ASSERT_EQ(SetWindowModality(sheet.Get(), kWindowModalityNone, nullptr), noErr);
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.HasState(shown.id, "_NET_WM_STATE_MODAL"); }));
}

TEST_F(Hints, CloseButtonAsksTheWindow)
{
    int asked = 0;
    const CListener listener(GetWindowEventTarget(m_dialog.Window()), {{kEventClassWindow, kEventWindowClose}},
                             [&](EventHandlerCallRef, EventRef) {
                                 ++asked;
                                 return OSStatus{noErr}; // and stays
                             });
    m_screen.Close(m_window);
    EXPECT_TRUE(ServeUntil([&] { return asked == 1; }));
    EXPECT_TRUE(IsWindowVisible(m_dialog.Window()));
}

TEST_F(Hints, SelectedWindowComesToTheFrontWithTheKeyboard)
{
    (void)ActiveOn(m_screen, m_dialog.Window()); // or it comes to the front only after the other one
    const COwnWindow other("Other", {120, 120, 320, 420}, kWindowCloseBoxAttribute);
    ShowWindow(other.Get());
    SelectWindow(other.Get());
    const ScreenWindow second = ActiveOn(m_screen, other.Get());
    const auto isInFront = [this](xcb_window_t window) { // which the manager may say after the focus has changed
        return ServeUntil(
            [&] { return m_screen.WordsOf(m_screen.Root(), "_NET_CLIENT_LIST_STACKING").back() == window; });
    };
    EXPECT_TRUE(isInFront(second.id));
    EXPECT_FALSE(IsWindowActive(m_dialog.Window()));

    SelectWindow(m_dialog.Window());
    (void)ActiveOn(m_screen, m_dialog.Window());
    EXPECT_TRUE(isInFront(m_window));
    EXPECT_TRUE(ServeUntil([&] { return m_screen.PropertyOf(m_screen.Root(), "_NET_ACTIVE_WINDOW") == m_window; }));
}

TEST_F(Hints, HiddenWindowIsTakenBackAndShownAgain)
{
    HideWindow(m_dialog.Window());
    EXPECT_TRUE(ServeUntil([&] { return m_screen.Find("Dialog").empty(); }));
    EXPECT_TRUE(ServeUntil([&] { return m_screen.WordsOf(m_screen.Root(), "_NET_CLIENT_LIST").empty(); }));
    ShowWindow(m_dialog.Window());
    EXPECT_EQ(ShownOn(m_screen, m_dialog.Window()).id, m_window);
}

TEST_F(Hints, HiddenWindowIsShownAgainBeforeWeHaveHeardThatItIsGone)
{
    (void)ActiveOn(m_screen, m_dialog.Window()); // else we have not heard yet that it is there
    HideWindow(m_dialog.Window());
    ASSERT_TRUE(WaitFor([&] { return !m_screen.HasProperty(m_window, "WM_STATE"); }));
    m_screen.Sync(); // the word of it lies in our socket, and is read while the new picture is sent
    ShowWindow(m_dialog.Window());
    EXPECT_EQ(ShownOn(m_screen, m_dialog.Window()).id, m_window);
}

TEST_F(Hints, ManagersQuestionForLifeIsAnswered)
{
    xcb_connection_t* const connection = m_screen.Connection();
    const std::uint32_t events[] = {XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_change_window_attributes(connection, m_screen.Root(), XCB_CW_EVENT_MASK, events);
    xcb_client_message_event_t ping = {};
    ping.response_type = XCB_CLIENT_MESSAGE;
    ping.format = 32;
    ping.window = m_window;
    ping.type = m_screen.Atom("WM_PROTOCOLS");
    ping.data.data32[0] = m_screen.Atom("_NET_WM_PING");
    ping.data.data32[1] = 4711;
    ping.data.data32[2] = m_window;
    xcb_send_event(connection, 0, m_window, 0, reinterpret_cast<const char*>(&ping));
    xcb_flush(connection);
    EXPECT_TRUE(ServeUntil([&] {
        while (xcb_generic_event_t* const event = xcb_poll_for_event(connection)) {
            const auto answer = *reinterpret_cast<const xcb_client_message_event_t*>(event);
            free(event);
            if ((answer.response_type & 0x7F) == XCB_CLIENT_MESSAGE && answer.type == ping.type)
                return answer.window == m_screen.Root() && answer.data.data32[1] == 4711 &&
                       answer.data.data32[2] == m_window;
        }
        return false;
    }));
}

} // namespace
