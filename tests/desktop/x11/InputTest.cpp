// tests/desktop/x11/InputTest.cpp
//
// A window from a nib under real pointers and keys, on keyboards of several layouts.
#include <gmock/gmock.h>

#include "tests/support/Desk.h"

namespace {

constexpr std::uint32_t kShift = 0xFFE1, kControl = 0xFFE3;
constexpr std::uint32_t kDeadAcute = 0xFE51, kComposeKey = 0xFF20;
constexpr std::uint32_t kCyrillicA = 0x6C1, kCyrillicEf = 0x6C6, kCyrillicDe = 0x6C4;

class Input : public testing::Test {
protected:
    ControlRef Edit() const { return m_dialog.Control('EDIT'); }
    std::string Text() const { return m_dialog.Text('EDIT'); }
    bool Becomes(const std::string& text) const
    {
        return ServeUntil([&] { return Text() == text; });
    }
    bool Commands(const std::string& wanted)
    {
        std::string commands;
        return ServeUntil([&] { return (commands += m_commands.Take()) == wanted; });
    }
    ControlRef Focus() const
    {
        ControlRef focus = nullptr;
        (void)GetKeyboardFocus(m_dialog.Window(), &focus); // null is an answer
        return focus;
    }
    void FocusOn(ControlRef control) const
    {
        ASSERT_EQ(SetKeyboardFocus(m_dialog.Window(), control, kControlEditTextPart), noErr);
    }
    // Gives the keyboard another layout, as a user's settings do.
    void UseLayout(const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> words = {"setxkbmap"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const ProgramResult result = RunProgram(words);
        ASSERT_EQ(result.code, 0) << result.err;
    }

    CScreen& m_screen = TheScreen();
    CCommands m_commands;
    const CDialog m_dialog{Stand::OnScreen};
    const ScreenWindow m_window = ActiveOn(m_screen, m_dialog.Window());
};

TEST_F(Input, ClickPressesAButton)
{
    ClickOn(m_screen, m_dialog.Control('HELP'));
    EXPECT_TRUE(Commands("help"));
    ClickOn(m_screen, m_dialog.Control('INNR'));
    EXPECT_TRUE(Commands("innr"));
}

TEST_F(Input, ButtonLetGoElsewhereIsNotPressed)
{
    const ScreenSpot help = MiddleOn(m_screen, m_dialog.Control('HELP'));
    m_screen.Drag(help.x, help.y, m_window.x - 20, m_window.y + 100); // beyond the window's edge
    ClickOn(m_screen, m_dialog.Control('INNR'));
    EXPECT_TRUE(Commands("innr"));
}

TEST_F(Input, ClickAndSpaceTickACheckBox)
{
    ControlRef const box = m_dialog.Control('KNOB');
    ClickOn(m_screen, box);
    EXPECT_TRUE(ServeUntil([&] { return GetControl32BitValue(box) == 1; }));
    FocusOn(box);
    m_screen.Tap(' ');
    EXPECT_TRUE(ServeUntil([&] { return GetControl32BitValue(box) == 0; }));
}

TEST_F(Input, ReturnAndEscapePressTheirButtons)
{
    m_screen.Tap(kReturnKey);
    EXPECT_TRUE(Commands("ok  "));
    m_screen.Tap(kEscapeKey);
    EXPECT_TRUE(Commands("not!"));
}

TEST_F(Input, TabGoesBothWays)
{
    FocusOn(Edit());
    m_screen.Tap(kTabKey);
    EXPECT_TRUE(ServeUntil([&] { return Focus() == m_dialog.Control('EDIT', 1); }));
    m_screen.Tap(kTabKey, {kShift});
    EXPECT_TRUE(ServeUntil([&] { return Focus() == Edit(); }));
}

TEST_F(Input, KeysType)
{
    FocusOn(Edit());
    TypeOn(m_screen, "Hello, World!");
    EXPECT_TRUE(Becomes("Hello, World!"));
    m_screen.Tap(kHomeKey);
    m_screen.Tap(kDeleteKey);
    m_screen.Tap(kEndKey);
    m_screen.Tap(kBackspaceKey);
    EXPECT_TRUE(Becomes("ello, World"));
    m_screen.Tap('a', {kControl});
    m_screen.Tap('x');
    EXPECT_TRUE(Becomes("x"));
}

TEST_F(Input, HeldKeyRepeats)
{
    FocusOn(Edit());
    m_screen.Key('a', true);
    EXPECT_TRUE(ServeUntil([&] { return Text().size() >= 3; }));
    m_screen.Key('a', false);
}

TEST_F(Input, DeadKeysAndComposeSequencesMakeOneCharacter)
{
    UseLayout({"-layout", "us", "-variant", "intl", "-option", "compose:menu"});
    FocusOn(Edit());
    m_screen.Tap(kDeadAcute);
    m_screen.Tap('e');
    EXPECT_TRUE(Becomes("\xC3\xA9"));
    m_screen.Tap(kComposeKey);
    m_screen.Tap('o');
    m_screen.Tap('e');
    EXPECT_TRUE(Becomes("\xC3\xA9\xC5\x93"));
    m_screen.Tap(kDeadAcute); // a sequence that leads nowhere types nothing
    m_screen.Tap('q');
    m_screen.Tap('z');
    EXPECT_TRUE(Becomes("\xC3\xA9\xC5\x93z"));
    UseLayout({"-layout", "us"});
}

TEST_F(Input, LayoutMayChangeAndShortcutsStayLatin)
{
    FocusOn(Edit());
    TypeOn(m_screen, "ab");
    ASSERT_TRUE(Becomes("ab"));
    UseLayout({"-layout", "ru,us"});
    m_screen.Tap(kCyrillicDe);
    m_screen.Tap(kCyrillicA);
    EXPECT_TRUE(Becomes("ab\xD0\xB4\xD0\xB0"));
    m_screen.Tap(kCyrillicEf, {kControl}); // the key that has an a in the other layout
    m_screen.Tap(kCyrillicDe);
    EXPECT_TRUE(Becomes("\xD0\xB4"));
    UseLayout({"-layout", "us"});
}

TEST_F(Input, WheelStepsASlider)
{
    constexpr int kWheelUp = 4, kWheelDown = 5;
    ControlRef const slider = m_dialog.Control('SLID');
    SetControl32BitValue(slider, 50);
    ClickOn(m_screen, slider, kWheelUp);
    EXPECT_TRUE(ServeUntil([&] { return GetControl32BitValue(slider) == 51; }));
    ClickOn(m_screen, slider, kWheelDown);
    ClickOn(m_screen, slider, kWheelDown);
    EXPECT_TRUE(ServeUntil([&] { return GetControl32BitValue(slider) == 49; }));
}

TEST_F(Input, PointerDragsTheSlider)
{
    ControlRef const slider = m_dialog.Control('SLID');
    const ScreenSpot middle = MiddleOn(m_screen, slider);
    m_screen.Drag(middle.x, middle.y, middle.x + 200, middle.y);
    EXPECT_TRUE(ServeUntil([&] { return GetControl32BitValue(slider) == 100; }));
}

TEST_F(Input, DoubleClickTakesAWord)
{
    m_dialog.SetText('EDIT', 0, "one");
    ClickOn(m_screen, Edit());
    const ScreenSpot middle = MiddleOn(m_screen, Edit());
    m_screen.Click(middle.x - 90, middle.y);
    m_screen.Click(middle.x - 90, middle.y);
    EXPECT_TRUE(ServeUntil([&] {
        const ControlEditTextSelectionRec selection = m_dialog.Selection('EDIT');
        return selection.selStart == 0 && selection.selEnd == 3;
    }));
}

} // namespace
