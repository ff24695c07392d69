// tests/hitoolbox/EditTextTest.cpp
//
// Edit text under real keys and clicks, and the event that asks about each change. The headless
// desktop's characters are 7 points wide.
#include <gtest/gtest.h>

#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

constexpr double kAdvance = 7;

class EditText : public testing::TestWithParam<SInt32> {
protected:
    EditText() { ClickOn(m_dialog.Control('EDIT', GetParam())); }

    void Set(const char* text) { m_dialog.SetText('EDIT', GetParam(), text); }
    std::string Text() const { return m_dialog.Text('EDIT', GetParam()); }
    std::string Selection() const
    {
        const ControlEditTextSelectionRec selection = m_dialog.Selection('EDIT', GetParam());
        return std::to_string(selection.selStart) + "-" + std::to_string(selection.selEnd);
    }
    EventTargetRef Target() const { return GetControlEventTarget(m_dialog.Control('EDIT', GetParam())); }
    // Clicks at the border before the character of that number.
    void ClickBefore(int character, UInt32 modifiers = 0) const
    {
        ClickAt(m_dialog.Window(), 20 + character * kAdvance + 1, GetParam() == 0 ? 48 : 78, modifiers);
    }

    const CDialog m_dialog;
};

std::string Clipboard()
{
    const auto text = Own(CVCopyClipboardText());
    return TextOf(text.get());
}

} // namespace

TEST_P(EditText, TypingReplacesTheSelection)
{
    Set("");
    TypeKeys("hello");
    EXPECT_EQ(Text(), "hello");
    PressKey('a', kCVModifierControl);
    EXPECT_EQ(Selection(), "0-5");
    TypeKeys("x");
    EXPECT_EQ(Text(), "x");
}

TEST_P(EditText, ClickSetsTheCaretAndShiftClickExtends)
{
    Set("hello world");
    CVAdvanceTime(1);
    ClickBefore(3);
    EXPECT_EQ(Selection(), "3-3");
    CVAdvanceTime(1);
    ClickBefore(8, kCVModifierShift);
    EXPECT_EQ(Selection(), "3-8");
}

TEST_P(EditText, DragSelects)
{
    Set("hello world");
    CVAdvanceTime(1);
    PressAt(m_dialog.Window(), 21, GetParam() == 0 ? 48 : 78);
    MoveTo(m_dialog.Window(), 20 + 5 * kAdvance, GetParam() == 0 ? 48 : 78);
    EXPECT_EQ(Selection(), "0-5");
    ReleaseAt(m_dialog.Window(), 20 + 5 * kAdvance, GetParam() == 0 ? 48 : 78);
    TypeKeys("J");
    EXPECT_EQ(Text(), "J world");
}

TEST_P(EditText, DoubleClickSelectsAWord)
{
    Set("hello world");
    CVAdvanceTime(1);
    ClickBefore(8);
    ClickBefore(8);
    EXPECT_EQ(Selection(), "6-11");
    ClickBefore(8);
    EXPECT_EQ(Selection(), "0-11");
}

TEST_P(EditText, SlowSecondClickIsNoDoubleClick)
{
    Set("hello world");
    CVAdvanceTime(1);
    ClickBefore(8);
    CVAdvanceTime(0.6);
    ClickBefore(8);
    EXPECT_EQ(Selection(), "8-8");
}

TEST_P(EditText, CaretMovesByGraphemeAndWord)
{
    Set("a\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x9A\x80 b"); // a, an astronaut of three characters, blank, b
    PressKey(kHomeKey);
    PressKey(kRightKey);
    PressKey(kRightKey);
    EXPECT_EQ(Selection(), "6-6");
    PressKey(kBackspaceKey);
    EXPECT_EQ(Text(), "a b");
    PressKey(kEndKey);
    PressKey(kLeftKey, kCVModifierControl | kCVModifierShift);
    EXPECT_EQ(Selection(), "2-3");
    PressKey(kDeleteKey);
    EXPECT_EQ(Text(), "a ");
}

TEST_P(EditText, DeletesByWordAndUndoes)
{
    Set("");
    TypeKeys("one two");
    PressKey(kBackspaceKey, kCVModifierControl);
    EXPECT_EQ(Text(), "one ");
    PressKey('z', kCVModifierControl);
    EXPECT_EQ(Text(), "one two");
    PressKey('Z', kCVModifierControl | kCVModifierShift);
    EXPECT_EQ(Text(), "one ");
}

TEST_P(EditText, CutsCopiesAndPastes)
{
    Set("hello");
    PressKey('a', kCVModifierControl);
    PressKey('c', kCVModifierControl);
    EXPECT_EQ(Clipboard(), "hello");
    PressKey('x', kCVModifierControl);
    EXPECT_EQ(Text(), "");
    PressKey('v', kCVModifierControl);
    PressKey('v', kCVModifierControl);
    EXPECT_EQ(Text(), "hellohello");
}

TEST_P(EditText, InputMethodsTextIsInserted)
{
    Set("");
    (void)CVPostText("\xE6\xBC\xA2\xE5\xAD\x97");
    Pump();
    EXPECT_EQ(Text(), "\xE6\xBC\xA2\xE5\xAD\x97");
}

TEST_P(EditText, EachChangeIsProposedWithRangeAndText)
{
    Set("\xC3\xA9xy");
    std::string log;
    const CListener listener(
        Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}}, [&log](EventHandlerCallRef, EventRef event) {
            const auto range = ParameterOf<CFRange>(event, kEventParamTextSelection, typeCFRange);
            const auto text = ParameterOf<CFStringRef>(event, kEventParamCandidateText, typeCFStringRef);
            log += std::to_string(range.location) + "+" + std::to_string(range.length) + "=" + TextOf(text) + ";";
            return OSStatus{eventNotHandledErr};
        });
    PressKey(kEndKey);
    TypeKeys("z");
    PressKey(kBackspaceKey);
    PressKey('a', kCVModifierControl);
    (void)CVSetClipboardText("new");
    PressKey('v', kCVModifierControl);
    EXPECT_EQ(log, "3+0=z;3+1=;0+3=new;");
    EXPECT_EQ(Text(), "new");
}

TEST_P(EditText, CanceledChangeKeepsTextAndSelection)
{
    Set("kept");
    const CListener listener(Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}},
                             [](EventHandlerCallRef, EventRef) { return OSStatus{userCanceledErr}; });
    PressKey('a', kCVModifierControl);
    TypeKeys("x");
    PressKey('x', kCVModifierControl);
    EXPECT_EQ(Text(), "kept");
    EXPECT_EQ(Selection(), "0-4");
}

TEST_P(EditText, NoErrWithoutReplacementDeletesTheSelectionOnly)
{
    Set("abcd");
    const CListener listener(Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}},
                             [](EventHandlerCallRef, EventRef) { return OSStatus{noErr}; });
    PressKey(kHomeKey);
    PressKey(kRightKey, kCVModifierShift);
    TypeKeys("x");
    EXPECT_EQ(Text(), "bcd");
}

TEST_P(EditText, ReplacementTakesTheTextsPlace)
{
    Set("");
    const CListener listener(
        Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}}, [](EventHandlerCallRef, EventRef event) {
            const CFStringRef instead = CFSTR("!");
            (void)SetEventParameter(event, kEventParamReplacementText, typeCFStringRef, sizeof instead, &instead);
            return OSStatus{noErr};
        });
    TypeKeys("abc");
    EXPECT_EQ(Text(), "!!!");
}

TEST_P(EditText, HandlerMayDisposeOfTheWindowThatIsTypedInto)
{
    Set("");
    const WindowRef window = m_dialog.Window();
    const CListener listener(Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}},
                             [window](EventHandlerCallRef, EventRef) {
                                 DisposeWindow(window);
                                 return OSStatus{eventNotHandledErr};
                             });
    TypeKeys("a");
    EXPECT_FALSE(IsValidWindowPtr(window));
}

TEST_P(EditText, HandlerMaySetTheTextMeanwhile)
{
    Set("");
    const CListener listener(Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}},
                             [this](EventHandlerCallRef, EventRef) {
                                 m_dialog.SetText('EDIT', GetParam(), "set");
                                 return OSStatus{eventNotHandledErr};
                             });
    TypeKeys("a");
    EXPECT_EQ(Text(), "set");
}

TEST_P(EditText, UsersChangesAreToldAndSettingIsNot)
{
    int told = 0;
    const CListener listener(
        Target(), {{kEventClassTextField, kEventTextShouldChangeInRange}, {kEventClassTextField, kEventTextDidChange}},
        [&told](EventHandlerCallRef, EventRef) {
            ++told;
            return OSStatus{eventNotHandledErr};
        });
    Set("set");
    EXPECT_EQ(told, 0);
    PressKey(kLeftKey);
    EXPECT_EQ(told, 0);
    TypeKeys("a");
    EXPECT_EQ(told, 2);
}

TEST_P(EditText, LockedTextIsNotChanged)
{
    Set("kept");
    const Boolean locked = true;
    ASSERT_EQ(
        SetControlData(m_dialog.Control('EDIT', GetParam()), 0, kControlEditTextLockedTag, sizeof locked, &locked),
        noErr);
    TypeKeys("x");
    PressKey(kBackspaceKey);
    EXPECT_EQ(Text(), "kept");
}

INSTANTIATE_TEST_SUITE_P(Kinds, EditText, testing::Values(0, 1),
                         [](const auto& instance) { return instance.param == 0 ? "Unicode" : "Classic"; });

TEST(MultiLineText, ReturnMakesALineAndControlReturnPressesTheButton)
{
    const CDialog dialog;
    CCommands commands;
    ClickOn(dialog.Control('MULT'));
    TypeKeys("a");
    PressKey(kReturnKey, 0, "\r");
    TypeKeys("b");
    EXPECT_EQ(dialog.Text('MULT'), "a\nb");
    EXPECT_EQ(commands.Take(), "");
    PressKey(kReturnKey, kCVModifierControl);
    EXPECT_EQ(commands.Take(), "ok  ");
}

TEST(PasswordText, IsNotCopied)
{
    const CDialog dialog;
    (void)CVSetClipboardText("before");
    ClickOn(dialog.Control('PASS'));
    TypeKeys("secret");
    PressKey('a', kCVModifierControl);
    PressKey('c', kCVModifierControl);
    PressKey('x', kCVModifierControl);
    EXPECT_EQ(Clipboard(), "before");
    EXPECT_EQ(dialog.Text('PASS'), "secret");
}
