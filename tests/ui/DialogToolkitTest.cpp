// tests/ui/DialogToolkitTest.cpp
//
// The toolkit on a window of a real nib, used with mouse and keys.
#include <gtest/gtest.h>

#include "frame/BaseProductManager.h"
#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

using Toolkit = CBaseProductManager;

const ControlID kEdit = {'EDIT', 0};
const ControlID kName = {'NAME', 0};
const ControlID kOk = {'CLOS', 0};
const ControlID kMissing = {'NONE', 7};

std::string StaticText(ControlRef control)
{
    CFStringRef text = nullptr;
    (void)GetControlData(control, kControlEntireControl, kControlStaticTextCFStringTag, sizeof text, &text, nullptr);
    const auto owned = Own(text);
    return TextOf(text);
}

std::string TitleOf(ControlRef control)
{
    CFStringRef title = nullptr;
    (void)CopyControlTitleAsCFString(control, &title);
    const auto owned = Own(title);
    return TextOf(title);
}

// The references on the string that a control holds, apart from the one that asking adds.
CFIndex ReferencesOf(ControlRef control, ResType tag)
{
    CFStringRef text = nullptr;
    (void)GetControlData(control, kControlEntireControl, tag, sizeof text, &text, nullptr);
    const auto owned = Own(text);
    return CFGetRetainCount(text) - 1;
}

// Answers the next alert when the loop of the alert runs.
class CAnswer {
public:
    explicit CAnswer(std::function<void(WindowRef)> answer) : m_answer(std::move(answer))
    {
        (void)InstallEventLoopTimer(GetMainEventLoop(), 0.1, 0, Fire, this, &m_timer);
    }
    ~CAnswer() { (void)RemoveEventLoopTimer(m_timer); }
    CAnswer(const CAnswer&) = delete;
    CAnswer& operator=(const CAnswer&) = delete;

private:
    static void Fire(EventLoopTimerRef, void* self) { static_cast<CAnswer*>(self)->m_answer(FrontNonFloatingWindow()); }
    std::function<void(WindowRef)> m_answer;
    EventLoopTimerRef m_timer = nullptr;
};

// Clicks the alert's button of a title.
void ClickButton(WindowRef window, const std::string& title)
{
    for (ControlRef control = HIViewGetFirstSubview(HIViewGetRoot(window)); control;
         control = HIViewGetNextView(control)) {
        ControlKind kind = {0, 0};
        (void)GetControlKind(control, &kind);
        if (kind.kind == kControlKindPushButton && TitleOf(control) == title) {
            Rect bounds = {0, 0, 0, 0};
            (void)GetWindowBounds(window, kWindowContentRgn, &bounds);
            // Buttons stand in the bottom row, 20 high above a margin of 24; OK is the rightmost.
            const double y = bounds.bottom - bounds.top - 34;
            const double x = bounds.right - bounds.left - (title == "OK" ? 34 : 34 + 82);
            (void)CVPostPointer(window, kCVPointerPress, x, y, kCVButtonLeft, 0);
            (void)CVPostPointer(window, kCVPointerRelease, x, y, kCVButtonLeft, 0);
            return;
        }
    }
}

} // namespace

TEST(DialogToolkit, ControlIdHasItsFieldsInArgumentOrder)
{
    const ControlID id = Toolkit::MakeControlId('CLOS', 1);
    EXPECT_EQ(id.signature, OSType{'CLOS'});
    EXPECT_EQ(id.id, 1);
}

TEST(DialogToolkit, ControlIdFindsTheCancelButton)
{
    const CDialog dialog;
    const ControlRef found = Toolkit::GetControl(dialog.Window(), Toolkit::MakeControlId('CLOS', 1));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(TitleOf(found), "Cancel");
}

TEST(DialogToolkit, MissingControlIsNull)
{
    const CDialog dialog;
    EXPECT_EQ(Toolkit::GetControl(dialog.Window(), kMissing), nullptr);
}

TEST(DialogToolkit, NullWindowHasNoControl)
{
    EXPECT_EQ(Toolkit::GetControl(nullptr, kOk), nullptr);
}

TEST(DialogToolkit, ShowControlHidesAndShowsAgain)
{
    const CDialog dialog;
    CCommands commands;
    const ControlRef control = dialog.Control('HELP');
    Toolkit::ShowControl(dialog.Window(), {'HELP', 0}, false);
    EXPECT_FALSE(IsControlVisible(control));
    ClickOn(control);
    EXPECT_EQ(commands.Take(), "");
    Toolkit::ShowControl(dialog.Window(), {'HELP', 0}, true);
    EXPECT_TRUE(IsControlVisible(control));
    ClickOn(control);
    EXPECT_EQ(commands.Take(), "help");
}

TEST(DialogToolkit, NullWindowAndMissingControlDoNothing)
{
    const CDialog dialog;
    char buffer[4] = "abc";
    for (const WindowRef window : {WindowRef{}, dialog.Window()}) {
        Toolkit::ShowControl(window, kMissing, false);
        Toolkit::MakeEditTextControlReadOnly(window, kMissing);
        Toolkit::SetControlTitle(window, kMissing, "x");
        Toolkit::SetStaticControlText(window, kMissing, "x");
        Toolkit::SetEditBoxControlText(window, kMissing, "x");
        Toolkit::GetEditBoxControlText(window, kMissing, buffer, sizeof buffer);
    }
    EXPECT_STREQ(buffer, "abc");
}

class ReadOnly : public testing::TestWithParam<SInt32> {
protected:
    void Protect()
    {
        m_dialog.SetText('EDIT', GetParam(), "kept text");
        ClickOn(m_dialog.Control('EDIT', GetParam()));
        Toolkit::MakeEditTextControlReadOnly(m_dialog.Window(), {'EDIT', GetParam()});
    }
    std::string Text() const { return m_dialog.Text('EDIT', GetParam()); }

    const CDialog m_dialog;
};

TEST_P(ReadOnly, TypingPastingCuttingAndDeletingChangeNothing)
{
    Protect();
    TypeKeys("x");
    EXPECT_EQ(Text(), "kept text");
    (void)CVSetClipboardText("pasted");
    PressKey('v', kCVModifierControl);
    EXPECT_EQ(Text(), "kept text");
    PressKey('a', kCVModifierControl);
    PressKey('x', kCVModifierControl);
    EXPECT_EQ(Text(), "kept text");
    PressKey(kBackspaceKey);
    PressKey(kDeleteKey);
    EXPECT_EQ(Text(), "kept text");
    (void)CVPostText("\xE6\xBC\xA2");
    Pump();
    EXPECT_EQ(Text(), "kept text");
}

TEST_P(ReadOnly, SelectingAndCopyingStillWork)
{
    Protect();
    (void)CVSetClipboardText("");
    PressKey('a', kCVModifierControl);
    PressKey('c', kCVModifierControl);
    const auto copied = Own(CVCopyClipboardText());
    EXPECT_EQ(TextOf(copied.get()), "kept text");
}

TEST_P(ReadOnly, SecondHandlerKeepsItReadOnly)
{
    Protect();
    Toolkit::MakeEditTextControlReadOnly(m_dialog.Window(), {'EDIT', GetParam()});
    TypeKeys("x");
    EXPECT_EQ(Text(), "kept text");
}

TEST_P(ReadOnly, ProgrammaticSettingIsNoChangeOfTheUsers)
{
    Protect();
    Toolkit::SetEditBoxControlText(m_dialog.Window(), {'EDIT', GetParam()}, "set");
    EXPECT_EQ(Text(), "set");
}

// 0 is a Unicode edit text, 1 a classic one.
INSTANTIATE_TEST_SUITE_P(EditTexts, ReadOnly, testing::Values(0, 1),
                         [](const auto& instance) { return instance.param == 0 ? "Unicode" : "Classic"; });

TEST(DialogToolkit, ReadOnlyHandlerAnswersOtherEventsWithNoErr)
{
    UseHeadlessDesktop();
    const struct {
        OSType eventClass;
        UInt32 kind;
        OSStatus answer;
    } kCases[] = {{'txfd', 2, userCanceledErr}, {'txfd', 3, noErr}, {'cntl', 2, noErr}, {'cmds', 1, noErr}};
    for (const auto& one : kCases) {
        EventRef event = nullptr;
        ASSERT_EQ(CreateEvent(nullptr, one.eventClass, one.kind, 0, kEventAttributeNone, &event), noErr);
        EXPECT_EQ(Toolkit::ReadOnlyEditTextHandler(nullptr, event, nullptr), one.answer);
        ReleaseEvent(event);
    }
}

TEST(DialogToolkit, NullTextLeavesTheControlAsItWas)
{
    const CDialog dialog;
    Toolkit::SetStaticControlText(dialog.Window(), kName, "before");
    Toolkit::SetStaticControlText(dialog.Window(), kName, nullptr);
    EXPECT_EQ(StaticText(dialog.Control('NAME')), "before");
    Toolkit::SetControlTitle(dialog.Window(), kOk, nullptr);
    EXPECT_EQ(TitleOf(dialog.Control('CLOS')), "OK");
    Toolkit::SetEditBoxControlText(dialog.Window(), {'EDIT', 1}, nullptr);
    EXPECT_EQ(dialog.Text('EDIT', 1), "classic");
}

TEST(DialogToolkit, InvalidUtf8LeavesTheControlAsItWas)
{
    const CDialog dialog;
    Toolkit::SetStaticControlText(dialog.Window(), kName, "before");
    Toolkit::SetStaticControlText(dialog.Window(), kName, "\xFF\xFE");
    EXPECT_EQ(StaticText(dialog.Control('NAME')), "before");
}

TEST(DialogToolkit, SettersSetEachItsOwnText)
{
    const CDialog dialog;
    Toolkit::SetControlTitle(dialog.Window(), kOk,
                             "Schlie\xC3\x9F"
                             "en");
    EXPECT_EQ(TitleOf(dialog.Control('CLOS')), "Schlie\xC3\x9F"
                                               "en");
    Toolkit::SetStaticControlText(dialog.Window(), kName, "Quillets");
    EXPECT_EQ(StaticText(dialog.Control('NAME')), "Quillets");
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "edited");
    EXPECT_EQ(dialog.Text('EDIT'), "edited");
}

TEST(DialogToolkit, EachSetterLeavesOneReferenceBesideTheControls)
{
    const CDialog dialog;
    Toolkit::SetStaticControlText(dialog.Window(), kName, "counted");
    EXPECT_EQ(ReferencesOf(dialog.Control('NAME'), kControlStaticTextCFStringTag), 2);
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "counted");
    EXPECT_EQ(ReferencesOf(dialog.Control('EDIT'), kControlEditTextCFStringTag), 2);
    Toolkit::SetControlTitle(dialog.Window(), kOk, "counted");
    CFStringRef title = nullptr;
    ASSERT_EQ(CopyControlTitleAsCFString(dialog.Control('CLOS'), &title), noErr);
    EXPECT_EQ(CFGetRetainCount(title) - 1, 2);
    CFRelease(title);
}

TEST(DialogToolkit, ReadingBackReleasesWhatItWasGiven)
{
    const CDialog dialog;
    char buffer[32] = "";
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "counted");
    const CFIndex before = ReferencesOf(dialog.Control('EDIT'), kControlEditTextCFStringTag);
    Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "counted");
    EXPECT_EQ(ReferencesOf(dialog.Control('EDIT'), kControlEditTextCFStringTag), before);
}

TEST(DialogToolkit, AccentedLetterSetAsUtf8ReadsBackAsMacRoman)
{
    const CDialog dialog;
    char buffer[32] = "";
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "caf\xC3\xA9");
    Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "caf\x8E");
}

TEST(DialogToolkit, LetterThatMacRomanLacksFailsUnreported)
{
    const CDialog dialog;
    char buffer[32] = "untouched";
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "\xD0\x96");
    Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "untouched");
}

TEST(DialogToolkit, EveryMacRomanByteReadsBack)
{
    const CDialog dialog;
    for (int byte = 1; byte < 256; ++byte) {
        const char roman[2] = {static_cast<char>(byte), '\0'};
        const auto string = Own(CFStringCreateWithCString(nullptr, roman, kCFStringEncodingMacRoman));
        ASSERT_TRUE(string);
        char utf8[8] = "";
        ASSERT_TRUE(CFStringGetCString(string.get(), utf8, sizeof utf8, kCFStringEncodingUTF8));
        Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, utf8);
        char buffer[4] = "";
        Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, buffer, sizeof buffer);
        EXPECT_STREQ(buffer, roman) << byte;
    }
}

TEST(DialogToolkit, NullBufferWritesNothing)
{
    const CDialog dialog;
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "text");
    Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, nullptr, 32);
    EXPECT_EQ(dialog.Text('EDIT'), "text");
}

TEST(DialogToolkit, BufferTooSmallFailsUnreported)
{
    const CDialog dialog;
    char buffer[8] = "abcdefg";
    Toolkit::SetEditBoxControlText(dialog.Window(), kEdit, "ten letter");
    Toolkit::GetEditBoxControlText(dialog.Window(), kEdit, buffer, 4);
    EXPECT_STREQ(buffer, "abcdefg");
}

TEST(DialogToolkit, ReadingAControlThatIsNoEditBoxLeavesTheBuffer)
{
    const CDialog dialog;
    char buffer[8] = "kept";
    Toolkit::GetEditBoxControlText(dialog.Window(), kOk, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "kept");
}

class YesNoAlert : public testing::Test {
protected:
    YesNoAlert() { UseHeadlessDesktop(); }
    static bool Ask() { return Toolkit::ShowYesNoAlert("Error", "Explanation", kAlertCautionAlert); }
};

TEST_F(YesNoAlert, OkButtonIsYes)
{
    const CAnswer answer([](WindowRef alert) { ClickButton(alert, "OK"); });
    EXPECT_TRUE(Ask());
}

TEST_F(YesNoAlert, ReturnKeyIsYes)
{
    const CAnswer answer([](WindowRef) { (void)CVPostKey(kReturnKey, nullptr, 0); });
    EXPECT_TRUE(Ask());
}

TEST_F(YesNoAlert, CancelButtonIsNo)
{
    const CAnswer answer([](WindowRef alert) { ClickButton(alert, "Cancel"); });
    EXPECT_FALSE(Ask());
}

TEST_F(YesNoAlert, EscapeKeyIsNo)
{
    const CAnswer answer([](WindowRef) { (void)CVPostKey(kEscapeKey, nullptr, 0); });
    EXPECT_FALSE(Ask());
}

TEST_F(YesNoAlert, AlertTakenAwayIsNo)
{
    const CAnswer answer([](WindowRef alert) { (void)CVPostSurfaceLost(alert); });
    EXPECT_FALSE(Ask());
}

TEST_F(YesNoAlert, DialogsButtonsCarryOkAndCancel)
{
    std::string titles;
    const CAnswer answer([&titles](WindowRef alert) {
        for (ControlRef control = HIViewGetFirstSubview(HIViewGetRoot(alert)); control;
             control = HIViewGetNextView(control)) {
            ControlKind kind = {0, 0};
            (void)GetControlKind(control, &kind);
            if (kind.kind == kControlKindPushButton)
                titles += TitleOf(control) + " ";
        }
        (void)CVPostKey(kReturnKey, nullptr, 0);
    });
    (void)Ask();
    EXPECT_EQ(titles, "Cancel OK ");
}

TEST_F(YesNoAlert, PlainAlertReturnsWhenDismissedAndItsWindowIsGone)
{
    WindowRef seen = nullptr;
    const CAnswer answer([&seen](WindowRef alert) {
        seen = alert;
        (void)CVPostKey(kReturnKey, nullptr, 0);
    });
    Toolkit::ShowPlainAlert("Error", nullptr, kAlertNoteAlert);
    EXPECT_NE(seen, nullptr);
    EXPECT_FALSE(IsValidWindowPtr(seen));
}

TEST_F(YesNoAlert, UnknownAlertTypeShowsNothing)
{
    EXPECT_FALSE(Toolkit::ShowYesNoAlert("Error", "Explanation", -7));
    EXPECT_EQ(FrontNonFloatingWindow(), nullptr);
}

TEST(DialogToolkit, AttachedHandlerGetsDisposeAndCommandsOnly)
{
    static std::vector<UInt32> kinds;
    kinds.clear();
    static const EventHandlerProcPtr kHandler = [](EventHandlerCallRef, EventRef event, void* data) -> OSStatus {
        auto* const params = static_cast<EventHandlerParams*>(data);
        kinds.push_back(GetEventKind(event));
        if (GetEventKind(event) == kEventWindowDispose)
            delete params;
        return noErr;
    };
    CBaseProductManager manager;
    {
        const CDialog dialog;
        auto* const params = new EventHandlerParams();
        params->owner = &manager;
        params->window = dialog.Window();
        EXPECT_EQ(manager.AttachDialogEvents(dialog.Window(), kHandler, params), noErr);
        ClickOn(dialog.Control('CLOS'));
        HideWindow(dialog.Window());
        ShowWindow(dialog.Window());
    }
    EXPECT_EQ(kinds, (std::vector<UInt32>{kEventCommandProcess, kEventWindowDispose}));
}

TEST(DialogToolkit, AttachingToNoWindowAnswersAnError)
{
    CBaseProductManager manager;
    static const EventHandlerProcPtr kHandler = [](EventHandlerCallRef, EventRef, void*) -> OSStatus {
        return noErr;
    };
    EXPECT_NE(manager.AttachDialogEvents(nullptr, kHandler, nullptr), noErr);
}

TEST(SendCVEvent, ReachesTheApplicationTarget)
{
    UInt32 kind = 0;
    const CListener listener(GetApplicationEventTarget(), {{'cvev', 'iend'}},
                             [&kind](EventHandlerCallRef, EventRef event) {
                                 kind = GetEventKind(event);
                                 return OSStatus{noErr};
                             });
    Toolkit::SendCVEvent('iend');
    EXPECT_EQ(kind, UInt32{'iend'});
}

TEST(Destructor, DisposesOfTheDialogStillHeld)
{
    class CManager : public CBaseProductManager {
    public:
        void Hold(WindowRef window) { infoDialogWindow = window; }
    };
    const CDialog dialog;
    const WindowRef window = dialog.Window();
    {
        CManager manager;
        manager.Hold(window);
    }
    EXPECT_FALSE(IsValidWindowPtr(window));
    CManager second;
    second.Hold(window); // stale by now: its end must be harmless
}
