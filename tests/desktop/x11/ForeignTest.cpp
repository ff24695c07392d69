// tests/desktop/x11/ForeignTest.cpp
//
// Dialogs over windows of other programs, as plug-in hosts hand them to their plug-ins.
#include <gtest/gtest.h>

#include "tests/support/Desk.h"

namespace {

constexpr std::size_t kLongText = 300000; // more than goes in one part

/// The dialog, window-modal to a foreign window.
class CChild {
public:
    explicit CChild(xcb_window_t foreign)
    {
        EXPECT_EQ(CVCreateForeignWindow(foreign, &m_parent), noErr);
        WindowRef const window = m_dialog.Window();
        HideWindow(window); // its parent is chosen before it is shown, as dialogs do
        EXPECT_EQ(SetWindowModality(window, kWindowModalityWindowModal, m_parent), noErr);
        ShowWindow(window);
    }
    ~CChild() { DisposeWindow(m_parent); }
    CChild(const CChild&) = delete;
    CChild& operator=(const CChild&) = delete;

    WindowRef Window() const { return m_dialog.Window(); }
    WindowRef Parent() const { return m_parent; }
    ControlRef Control(OSType signature, SInt32 id = 0) const { return m_dialog.Control(signature, id); }

private:
    const CDialog m_dialog{Stand::OnScreen};
    WindowRef m_parent = nullptr;
};

class Foreign : public testing::Test {
protected:
    CScreen& m_screen = TheScreen();
    const xcb_window_t m_host = m_screen.MakeWindow(200, 150, 600, 500, "Host");

    // The window manager has placed it.
    void SetUp() override
    {
        ASSERT_TRUE(WaitFor([this] { return m_screen.PropertyOf(m_host, "WM_STATE") != 0; }));
    }
    void TearDown() override { m_screen.DestroyWindow(m_host); }
};

TEST_F(Foreign, DialogStandsOverTheHostsWindow)
{
    const CChild child(m_host);
    const ScreenWindow shown = ActiveOn(m_screen, child.Window());
    EXPECT_EQ(m_screen.PropertyOf(shown.id, "WM_TRANSIENT_FOR"), m_host);
    EXPECT_TRUE(ServeUntil([&] { return m_screen.HasState(shown.id, "_NET_WM_STATE_MODAL"); }));
    const ScreenWindow host = *m_screen.PlaceOf(m_host);
    EXPECT_NEAR(shown.x + shown.width / 2, host.x + host.width / 2, 1);
    EXPECT_NEAR(shown.y + shown.height / 2, host.y + host.height / 2, 1);
    CCommands commands;
    ClickOn(m_screen, child.Control('HELP'));
    EXPECT_TRUE(ServeUntil([&] { return commands.Take() == "help"; }));
}

TEST_F(Foreign, PluginsWindowInsideTheHostsStandsForThat)
{
    const xcb_window_t inner = xcb_generate_id(m_screen.Connection());
    xcb_create_window(m_screen.Connection(), XCB_COPY_FROM_PARENT, inner, m_host, 50, 50, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    m_screen.Sync();
    const CChild child(inner);
    const ScreenWindow shown = ShownOn(m_screen, child.Window());
    EXPECT_EQ(m_screen.PropertyOf(shown.id, "WM_TRANSIENT_FOR"), m_host);

    m_screen.DestroyWindow(inner); // the plug-in's view closes, the host's window stays
    EXPECT_TRUE(ServeUntil([&] { return !IsValidWindowPtr(child.Window()); }));
}

TEST_F(Foreign, DestroyedWindowTakesItsDialogAlong)
{
    const CChild child(m_host);
    const ScreenWindow shown = ShownOn(m_screen, child.Window());
    int disposals = 0;
    const CListener listener(GetWindowEventTarget(child.Window()), {{kEventClassWindow, kEventWindowDispose}},
                             [&](EventHandlerCallRef, EventRef) {
                                 ++disposals;
                                 return OSStatus{eventNotHandledErr};
                             });
    m_screen.DestroyWindow(m_host);
    EXPECT_TRUE(ServeUntil([&] { return disposals == 1; }));
    EXPECT_FALSE(IsValidWindowPtr(child.Window()));
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.PlaceOf(shown.id); }));
}

TEST_F(Foreign, WindowOutlivesItsReference)
{
    WindowRef foreign = nullptr;
    ASSERT_EQ(CVCreateForeignWindow(m_host, &foreign), noErr);
    DisposeWindow(foreign);
    EXPECT_FALSE(IsValidWindowPtr(foreign));
    (void)ServeUntil([] { return true; });
    EXPECT_TRUE(m_screen.PlaceOf(m_host).has_value());
}

TEST_F(Foreign, WindowThatIsNotThereIsNobodysParent)
{
    const xcb_window_t nothing = xcb_generate_id(m_screen.Connection());
    const CChild child(nothing);
    const ScreenWindow shown = ActiveOn(m_screen, child.Window());
    EXPECT_EQ(m_screen.PropertyOf(shown.id, "WM_TRANSIENT_FOR"), 0U);
}

TEST_F(Foreign, HostThatTakesTheClipboardIsStillWatched)
{
    // The foreign window itself asks for a text that goes in parts, for which we watch its properties.
    const CChild child(m_host);
    (void)ActiveOn(m_screen, child.Window());
    ControlRef const edit = child.Control('EDIT');
    CFStringRef text = MakeString(std::string(kLongText, '.'));
    ASSERT_EQ(SetControlData(edit, kControlEntireControl, kControlEditTextCFStringTag, sizeof text, &text), noErr);
    CFRelease(text);
    ASSERT_EQ(SetKeyboardFocus(child.Window(), edit, kControlEditTextPart), noErr);
    constexpr std::uint32_t kControl = 0xFFE3;
    m_screen.Tap('a', {kControl});
    m_screen.Tap('c', {kControl});
    ASSERT_TRUE(ServeUntil([&] { return m_screen.OwnerOf("CLIPBOARD") != 0; }));
    xcb_convert_selection(m_screen.Connection(), m_host, m_screen.Atom("CLIPBOARD"), m_screen.Atom("UTF8_STRING"),
                          m_screen.Atom("PASTED"), XCB_CURRENT_TIME);
    std::string pasted;
    ASSERT_TRUE(ServeUntil([&] {
        const std::string part = m_screen.BytesOf(m_host, "PASTED");
        if (part.empty())
            return false;
        if (part.size() > 4)
            pasted += part; // else it is the length, which announces the parts
        xcb_delete_property(m_screen.Connection(), m_host, m_screen.Atom("PASTED"));
        m_screen.Sync();
        return pasted.size() == kLongText;
    }));
    ASSERT_TRUE(ServeUntil([&] { return m_screen.HasProperty(m_host, "PASTED"); })); // the empty last part
    xcb_delete_property(m_screen.Connection(), m_host, m_screen.Atom("PASTED"));
    m_screen.Sync();
    (void)ServeUntil([] { return true; });

    m_screen.DestroyWindow(m_host);
    EXPECT_TRUE(ServeUntil([&] { return !IsValidWindowPtr(child.Window()); }));
}

} // namespace
