// tests/hitoolbox/AlertTest.cpp
//
// Standard alerts: their buttons, texts, keys and ends.
#include <gtest/gtest.h>

#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

CFStringRef DefaultText()
{
    return reinterpret_cast<CFStringRef>(static_cast<intptr_t>(kAlertDefaultOKText));
}

AlertStdCFStringAlertParamRec AllButtons()
{
    AlertStdCFStringAlertParamRec param = {};
    param.version = kStdCFStringAlertVersionOne;
    param.defaultText = DefaultText();
    param.cancelText = DefaultText();
    param.otherText = CFSTR("Other");
    param.helpButton = true;
    param.defaultButton = kAlertStdAlertOKButton;
    param.cancelButton = kAlertStdAlertCancelButton;
    return param;
}

DialogRef MakeAlert(const AlertStdCFStringAlertParamRec* param)
{
    UseHeadlessDesktop();
    DialogRef dialog = nullptr;
    EXPECT_EQ(CreateStandardAlert(kAlertStopAlert, CFSTR("Error"), CFSTR("Why"), param, &dialog), noErr);
    return dialog;
}

std::vector<ControlRef> Buttons(DialogRef dialog)
{
    std::vector<ControlRef> buttons;
    for (ControlRef control = HIViewGetFirstSubview(HIViewGetRoot(GetDialogWindow(dialog))); control;
         control = HIViewGetNextView(control)) {
        ControlKind kind = {0, 0};
        (void)GetControlKind(control, &kind);
        if (kind.kind == kControlKindPushButton)
            buttons.insert(buttons.begin(), control);
    }
    return buttons;
}

std::string Titles(DialogRef dialog)
{
    std::string titles;
    for (const ControlRef button : Buttons(dialog)) {
        CFStringRef title = nullptr;
        (void)CopyControlTitleAsCFString(button, &title);
        const auto owned = Own(title);
        titles += TextOf(title) + ";";
    }
    return titles;
}

// Runs an alert, doing something once its loop runs.
DialogItemIndex RunAlertOf(DialogRef dialog, std::function<void()> act)
{
    EventLoopTimerRef timer = nullptr;
    (void)InstallEventLoopTimer(
        GetMainEventLoop(), 0.1, 0,
        [](EventLoopTimerRef, void* what) { (*static_cast<std::function<void()>*>(what))(); }, &act, &timer);
    DialogItemIndex hit = -5;
    EXPECT_EQ(RunStandardAlert(dialog, nullptr, &hit), noErr);
    (void)RemoveEventLoopTimer(timer);
    EXPECT_EQ(GetDialogWindow(dialog), nullptr);
    return hit;
}

void PostKey(UInt32 symbol)
{
    (void)CVPostKey(symbol, nullptr, 0);
}

} // namespace

TEST(Alert, WithoutParametersHasOneOkButton)
{
    const DialogRef dialog = MakeAlert(nullptr);
    EXPECT_EQ(Titles(dialog), "OK;");
    EXPECT_EQ(RunAlertOf(dialog, [] { PostKey(kReturnKey); }), kAlertStdAlertOKButton);
}

TEST(Alert, DefaultTextsAndOwnTexts)
{
    const AlertStdCFStringAlertParamRec param = AllButtons();
    const DialogRef dialog = MakeAlert(&param);
    EXPECT_EQ(Titles(dialog), "OK;Cancel;Other;Help;");
    DisposeDialog(dialog);
    DisposeDialog(dialog); // stale
}

TEST(Alert, DefaultTextsAreInTheUsersLanguageAndOwnTextsAsTheyAre)
{
    const AlertStdCFStringAlertParamRec param = AllButtons();
    const auto titlesFor = [&param](const char* locale, const char* languages) {
        const CEnvironment wanted("LC_ALL", locale);
        const CEnvironment list("LANGUAGE", languages);
        const DialogRef dialog = MakeAlert(&param);
        const std::string titles = Titles(dialog);
        DisposeDialog(dialog);
        return titles;
    };
    EXPECT_EQ(titlesFor("de_AT.UTF-8", nullptr), "OK;Abbrechen;Other;Hilfe;");
    EXPECT_EQ(titlesFor("fr_FR.UTF-8", "fr:de"), "OK;Abbrechen;Other;Hilfe;");
    EXPECT_EQ(titlesFor("fr_FR.UTF-8", nullptr), "OK;Cancel;Other;Help;");
    EXPECT_EQ(titlesFor("C", "de"), "OK;Cancel;Other;Help;");
}

TEST(Alert, EachButtonAnswersItsNumber)
{
    const AlertStdCFStringAlertParamRec param = AllButtons();
    for (std::size_t button = 0; button < 4; ++button) {
        const DialogRef dialog = MakeAlert(&param);
        const ControlRef control = Buttons(dialog)[button];
        EXPECT_EQ(RunAlertOf(dialog, [control] { (void)HIViewSimulateClick(control, 0, 0, nullptr); }),
                  static_cast<DialogItemIndex>(button + 1));
    }
}

TEST(Alert, ReturnAndEscapePressTheButtonsNamedForThem)
{
    AlertStdCFStringAlertParamRec param = AllButtons();
    EXPECT_EQ(RunAlertOf(MakeAlert(&param), [] { PostKey(kReturnKey); }), kAlertStdAlertOKButton);
    EXPECT_EQ(RunAlertOf(MakeAlert(&param), [] { PostKey(kEscapeKey); }), kAlertStdAlertCancelButton);
    param.defaultButton = kAlertStdAlertOtherButton;
    EXPECT_EQ(RunAlertOf(MakeAlert(&param), [] { PostKey(kReturnKey); }), kAlertStdAlertOtherButton);
    param.cancelButton = 0; // none: Escape does nothing
    EXPECT_EQ(RunAlertOf(MakeAlert(&param),
                         [] {
                             PostKey(kEscapeKey);
                             PostKey(kReturnKey);
                         }),
              kAlertStdAlertOtherButton);
}

TEST(Alert, TakesTheOtherWindowsInputAndGivesItBack)
{
    const CDialog dialog;
    CCommands commands;
    (void)RunAlertOf(MakeAlert(nullptr), [&] {
        ClickOn(dialog.Control('HELP'));
        EXPECT_EQ(commands.Take(), "");
        PostKey(kReturnKey);
    });
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "help");
}

TEST(Alert, DisposedWhileItRunsAnswersTheCancelButton)
{
    const AlertStdCFStringAlertParamRec param = AllButtons();
    const DialogRef dialog = MakeAlert(&param);
    EXPECT_EQ(RunAlertOf(dialog, [dialog] { DisposeDialog(dialog); }), kAlertStdAlertCancelButton);
    const DialogRef second = MakeAlert(nullptr);
    EXPECT_EQ(RunAlertOf(second, [second] { DisposeWindow(GetDialogWindow(second)); }), 0);
}

TEST(Alert, BadArgumentsAreErrors)
{
    UseHeadlessDesktop();
    DialogRef dialog = nullptr;
    AlertStdCFStringAlertParamRec param = AllButtons();
    EXPECT_EQ(CreateStandardAlert(9, CFSTR("x"), nullptr, nullptr, &dialog), paramErr);
    EXPECT_EQ(dialog, nullptr);
    param.version = 2;
    EXPECT_EQ(CreateStandardAlert(kAlertNoteAlert, CFSTR("x"), nullptr, &param, &dialog), paramErr);
    EXPECT_EQ(RunStandardAlert(nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(GetStandardAlertDefaultParams(&param, 1), noErr);
    const CFStringRef defaultText = param.defaultText; // the record is packed, and a reference is not
    const CFStringRef cancelText = param.cancelText;
    EXPECT_EQ(defaultText, DefaultText());
    EXPECT_EQ(cancelText, nullptr);
}

TEST(Alert, KeepsItsTextsWhileItLives)
{
    CFStringRef error = MakeString("error");
    UseHeadlessDesktop();
    DialogRef dialog = nullptr;
    ASSERT_EQ(CreateStandardAlert(kAlertPlainAlert, error, nullptr, nullptr, &dialog), noErr);
    EXPECT_EQ(CFGetRetainCount(error), 2);
    DisposeDialog(dialog);
    EXPECT_EQ(CFGetRetainCount(error), 1);
    CFRelease(error);
}
