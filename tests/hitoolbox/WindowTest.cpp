// tests/hitoolbox/WindowTest.cpp
//
// Windows and their controls: life, modality, look-up, mouse and keyboard, on the headless desktop.
#include <gtest/gtest.h>

#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

WindowRef MakeWindow(WindowClass windowClass = kDocumentWindowClass)
{
    UseHeadlessDesktop();
    const Rect bounds = {100, 100, 300, 400};
    WindowRef window = nullptr;
    EXPECT_EQ(CreateNewWindow(windowClass, kWindowStandardHandlerAttribute, &bounds, &window), noErr);
    return window;
}

SInt32 Value(ControlRef control)
{
    return GetControl32BitValue(control);
}

ControlRef Focused(WindowRef window)
{
    ControlRef control = nullptr;
    (void)GetKeyboardFocus(window, &control);
    return control;
}

} // namespace

TEST(Window, DisposeIsToldOnceToTheWindowsHandlersBeforeAnythingGoes)
{
    const CDialog dialog;
    const WindowRef window = dialog.Window();
    const ControlRef control = dialog.Control('NAME');
    std::string log;
    const CListener atApplication(GetApplicationEventTarget(), {{kEventClassWindow, kEventWindowDispose}},
                                  [&](EventHandlerCallRef, EventRef) {
                                      log += "a";
                                      return OSStatus{noErr};
                                  });
    const auto tell = [&](const char* name) {
        return [&log, name, window, control](EventHandlerCallRef, EventRef event) {
            EXPECT_EQ(ParameterOf<WindowRef>(event, kEventParamDirectObject, typeWindowRef), window);
            EXPECT_EQ(GetControlOwner(control), window);
            DisposeWindow(window); // again, meanwhile: nothing
            log += name;
            return OSStatus{noErr};
        };
    };
    const CListener older(GetWindowEventTarget(window), {{kEventClassWindow, kEventWindowDispose}}, tell("1"));
    const CListener newer(GetWindowEventTarget(window), {{kEventClassWindow, kEventWindowDispose}}, tell("2"));
    DisposeWindow(window);
    EXPECT_EQ(log, "21");
    EXPECT_EQ(GetControlOwner(control), nullptr);
    EXPECT_EQ(RemoveEventHandler(older.Get()), paramErr);
    DisposeWindow(window);
    EXPECT_EQ(log, "21");
}

TEST(Window, ControlsAreToldAfterTheWindow)
{
    const CDialog dialog;
    std::string log;
    const CListener atControl(GetControlEventTarget(dialog.Control('INNR')),
                              {{kEventClassControl, kEventControlDispose}}, [&](EventHandlerCallRef, EventRef) {
                                  log += "c";
                                  return OSStatus{noErr};
                              });
    const CListener atWindow(GetWindowEventTarget(dialog.Window()), {{kEventClassWindow, kEventWindowDispose}},
                             [&](EventHandlerCallRef, EventRef) {
                                 log += "w";
                                 return OSStatus{noErr};
                             });
    DisposeWindow(dialog.Window());
    EXPECT_EQ(log, "wc");
}

TEST(Window, CloseBoxAsksAndTheStandardHandlerDisposes)
{
    const WindowRef window = MakeWindow();
    ShowWindow(window);
    Pump();
    {
        const CListener keeps(GetWindowEventTarget(window), {{kEventClassWindow, kEventWindowClose}},
                              [](EventHandlerCallRef, EventRef) { return OSStatus{noErr}; });
        EXPECT_EQ(CVPostCloseRequest(window), noErr);
        Pump();
        EXPECT_TRUE(IsValidWindowPtr(window));
    }
    EXPECT_EQ(CVPostCloseRequest(window), noErr);
    Pump();
    EXPECT_FALSE(IsValidWindowPtr(window));
}

TEST(Window, ShownHiddenAndActive)
{
    const WindowRef one = MakeWindow();
    const WindowRef two = MakeWindow();
    EXPECT_FALSE(IsWindowVisible(one));
    ShowWindow(one);
    ShowWindow(two);
    SelectWindow(two);
    Pump();
    EXPECT_TRUE(IsWindowActive(two));
    EXPECT_EQ(FrontNonFloatingWindow(), two);
    SelectWindow(one);
    EXPECT_TRUE(IsWindowActive(one));
    EXPECT_EQ(GetWindowList(), one);
    EXPECT_EQ(GetNextWindow(one), two);
    HideWindow(one);
    Pump();
    EXPECT_FALSE(IsWindowVisible(one));
    EXPECT_TRUE(IsWindowActive(two));
    DisposeWindow(one);
    DisposeWindow(two);
}

TEST(Modality, WindowModalChildTakesTheParentsInputUntilItIsGone)
{
    const CDialog dialog;
    const WindowRef child = MakeWindow();
    CCommands commands;
    EXPECT_EQ(SetWindowModality(child, kWindowModalityWindowModal, dialog.Window()), noErr);
    ShowWindow(child);
    Pump();
    ClickOn(dialog.Control('HELP'));
    PressKey(kReturnKey);
    EXPECT_EQ(commands.Take(), "");
    EXPECT_TRUE(IsWindowActive(child));
    (void)CVPostCloseRequest(dialog.Window());
    Pump();
    EXPECT_TRUE(IsValidWindowPtr(dialog.Window()));
    DisposeWindow(child);
    Pump();
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "help");
}

TEST(Modality, AppModalWindowTakesEverybodysInput)
{
    const CDialog dialog;
    CCommands commands;
    const WindowRef modal = MakeWindow(kMovableModalWindowClass);
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "help"); // not visible yet
    ShowWindow(modal);
    Pump();
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "");
    HideWindow(modal);
    Pump();
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "help");
    DisposeWindow(modal);
}

TEST(Modality, IsAnsweredAndRefusesCircles)
{
    const WindowRef one = MakeWindow();
    const WindowRef two = MakeWindow();
    WindowModality kind = 99;
    WindowRef parent = one;
    EXPECT_EQ(GetWindowModality(one, &kind, &parent), noErr);
    EXPECT_EQ(kind, WindowModality{kWindowModalityNone});
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(SetWindowModality(one, kWindowModalityWindowModal, one), paramErr);
    EXPECT_EQ(SetWindowModality(one, kWindowModalityWindowModal, two), noErr);
    EXPECT_EQ(SetWindowModality(two, kWindowModalityWindowModal, one), paramErr);
    EXPECT_EQ(SetWindowModality(one, 17, two), paramErr);
    EXPECT_EQ(GetWindowModality(one, &kind, &parent), noErr);
    EXPECT_EQ(kind, WindowModality{kWindowModalityWindowModal});
    EXPECT_EQ(parent, two);
    DisposeWindow(two); // and with it what is modal to it
    EXPECT_FALSE(IsValidWindowPtr(one));
}

TEST(Modality, ForeignParentThatIsDestroyedTakesItsChildAlong)
{
    UseHeadlessDesktop();
    WindowRef foreign = nullptr;
    ASSERT_EQ(CVCreateForeignWindow(0x1400007, &foreign), noErr);
    const WindowRef child = MakeWindow();
    EXPECT_EQ(SetWindowModality(child, kWindowModalityWindowModal, foreign), noErr);
    ShowWindow(child);
    int told = 0;
    const CListener listener(GetWindowEventTarget(child), {{kEventClassWindow, kEventWindowDispose}},
                             [&told](EventHandlerCallRef, EventRef) {
                                 ++told;
                                 return OSStatus{noErr};
                             });
    EXPECT_EQ(CVPostSurfaceLost(child), noErr);
    Pump();
    EXPECT_FALSE(IsValidWindowPtr(child));
    EXPECT_EQ(told, 1);
    DisposeWindow(foreign);
}

TEST(Nib, WindowHasItsControlsAndButtons)
{
    const CDialog dialog;
    CFStringRef title = nullptr;
    ASSERT_EQ(CopyWindowTitleAsCFString(dialog.Window(), &title), noErr);
    const auto owned = Own(title);
    EXPECT_EQ(TextOf(title), "Dialog");
    Rect bounds = {};
    ASSERT_EQ(GetWindowBounds(dialog.Window(), kWindowContentRgn, &bounds), noErr);
    EXPECT_EQ(bounds.bottom - bounds.top, 320);
    EXPECT_EQ(bounds.right - bounds.left, 400);
    EXPECT_EQ(Value(dialog.Control('PROG')), 40);
    EXPECT_FALSE(IsControlEnabled(dialog.Control('DSBL')));
    EXPECT_EQ(HIViewGetSuperview(dialog.Control('INNR')), dialog.Control('PANE', 1));
    UInt32 command = 0;
    EXPECT_EQ(GetControlCommandID(dialog.Control('LOGO'), &command), noErr);
    EXPECT_EQ(command, UInt32{'site'});
}

TEST(Nib, UnknownNamesGiveTheirErrors)
{
    UseHeadlessDesktop();
    const CDataBundle bundle("windows");
    IBNibRef nib = nullptr;
    WindowRef window = nullptr;
    EXPECT_EQ(CreateNibReferenceWithCFBundle(bundle.Get(), CFSTR("Absent"), &nib), kIBCarbonRuntimeCantFindNibFile);
    EXPECT_EQ(nib, nullptr);
    ASSERT_EQ(CreateNibReferenceWithCFBundle(bundle.Get(), CFSTR("Dialog"), &nib), noErr);
    EXPECT_EQ(CreateWindowFromNib(nib, CFSTR("Absent"), &window), kIBCarbonRuntimeCantFindObject);
    EXPECT_EQ(CreateWindowFromNib(nib, CFSTR("File's Owner"), &window), kIBCarbonRuntimeObjectNotOfRequestedType);
    EXPECT_EQ(window, nullptr);
    DisposeNibReference(nib);
    EXPECT_EQ(CreateWindowFromNib(nib, CFSTR("Dialog"), &window), paramErr);
}

TEST(Nib, UsersLanguageComesBeforeTheUnlocalisedOne)
{
    UseHeadlessDesktop();
    const CDataBundle bundle("windows");
    std::string german = ReadFile(DataFile("windows/Dialog.nib/objects.xib"));
    const std::string title = "<string name=\"title\">Dialog</string>";
    german.replace(german.find(title), title.size(), "<string name=\"title\">Fenster</string>");
    WriteFile(bundle.Path() + "/Contents/Resources/de.lproj/Dialog.nib/objects.xib", german);
    const CEnvironment language("LANG", "de_DE.UTF-8");
    const WindowRef window = BuildWindow(bundle.Get(), "Dialog", "Dialog");
    CFStringRef found = nullptr;
    (void)CopyWindowTitleAsCFString(window, &found);
    const auto owned = Own(found);
    EXPECT_EQ(TextOf(found), "Fenster");
    DisposeWindow(window);
}

TEST(Nib, BrokenFileIsAnError)
{
    UseHeadlessDesktop();
    const CDataBundle bundle("windows");
    WriteFile(bundle.Path() + "/Contents/Resources/Broken.nib/objects.xib", "<object class=\"NSIBObjectData\">");
    IBNibRef nib = nullptr;
    EXPECT_EQ(CreateNibReferenceWithCFBundle(bundle.Get(), CFSTR("Broken"), &nib), kIBCarbonRuntimeCantFindNibFile);
}

TEST(Mouse, PressDragOutAndBackInAndRelease)
{
    const CDialog dialog;
    CCommands commands;
    const ControlRef help = dialog.Control('HELP');
    PressAt(dialog.Window(), 50, 290);
    EXPECT_EQ(GetControlHilite(help), kControlButtonPart);
    MoveTo(dialog.Window(), 200, 290);
    EXPECT_EQ(GetControlHilite(help), kControlNoPart);
    MoveTo(dialog.Window(), 50, 290);
    EXPECT_EQ(GetControlHilite(help), kControlButtonPart);
    ReleaseAt(dialog.Window(), 50, 290);
    EXPECT_EQ(GetControlHilite(help), kControlNoPart);
    EXPECT_EQ(commands.Take(), "help");
    PressAt(dialog.Window(), 50, 290);
    ReleaseAt(dialog.Window(), 200, 290);
    EXPECT_EQ(commands.Take(), "");
}

TEST(Mouse, DisabledAndHiddenControlsTakeNothing)
{
    const CDialog dialog;
    CCommands commands;
    ClickOn(dialog.Control('DSBL'));
    EXPECT_EQ(commands.Take(), "");
    ShowControl(dialog.Control('INNR'));
    ClickOn(dialog.Control('INNR'));
    EXPECT_EQ(commands.Take(), "innr");
    DisableControl(dialog.Control('PANE', 0)); // and what it holds
    EXPECT_FALSE(IsControlEnabled(dialog.Control('INNR')));
    ClickOn(dialog.Control('INNR'));
    EXPECT_EQ(commands.Take(), "");
    EnableControl(dialog.Control('PANE', 0));
    HideControl(dialog.Control('PANE', 0));
    EXPECT_FALSE(IsControlVisible(dialog.Control('INNR')));
    ClickOn(dialog.Control('INNR'));
    EXPECT_EQ(commands.Take(), "");
}

TEST(Mouse, CheckBoxTogglesBeforeItsCommandIsSent)
{
    const CDialog dialog;
    const ControlRef box = dialog.Control('KNOB');
    (void)SetControlCommandID(box, 'knob');
    SInt32 seen = -1;
    const CListener listener(GetWindowEventTarget(dialog.Window()), {{kEventClassCommand, kEventCommandProcess}},
                             [&](EventHandlerCallRef, EventRef) {
                                 seen = Value(box);
                                 return OSStatus{noErr};
                             });
    ClickOn(box);
    EXPECT_EQ(seen, 1);
    ClickOn(box);
    EXPECT_EQ(seen, 0);
    SetControl32BitValue(box, kControlCheckBoxMixedValue);
    EXPECT_EQ(Value(box), 2);
    SetControl32BitValue(box, 5);
    EXPECT_EQ(Value(box), 2); // limited
    ClickOn(box);
    EXPECT_EQ(seen, 1);
}

TEST(Mouse, RadioButtonTakesTheMarkFromItsSiblings)
{
    const CDialog dialog;
    ClickOn(dialog.Control('RADI', 2));
    EXPECT_EQ(Value(dialog.Control('RADI', 1)), 0);
    EXPECT_EQ(Value(dialog.Control('RADI', 2)), 1);
}

TEST(Mouse, SliderFollowsThePointer)
{
    const CDialog dialog;
    PressAt(dialog.Window(), 45, 248);
    EXPECT_EQ(Value(dialog.Control('SLID')), 25);
    MoveTo(dialog.Window(), 300, 248);
    EXPECT_EQ(Value(dialog.Control('SLID')), 100);
    ReleaseAt(dialog.Window(), 300, 248);
}

TEST(Command, GoesFromTheControlOutwardsWithAHICommand)
{
    const CDialog dialog;
    std::string log;
    const std::vector<EventTypeSpec> types = {{kEventClassControl, kEventControlHit},
                                              {kEventClassCommand, kEventCommandProcess}};
    const auto note = [&log](const char* name) {
        return [&log, name](EventHandlerCallRef, EventRef event) {
            log += name + std::string(GetEventClass(event) == kEventClassControl ? "h" : "c");
            return OSStatus{eventNotHandledErr};
        };
    };
    const ControlRef inner = dialog.Control('INNR');
    const CListener atControl(GetControlEventTarget(inner), types, note("1"));
    const CListener atPane(GetControlEventTarget(dialog.Control('PANE', 0)), types, note("2"));
    const CListener atWindow(GetWindowEventTarget(dialog.Window()), types, note("3"));
    const CListener atApplication(GetApplicationEventTarget(), {{kEventClassCommand, kEventCommandProcess}},
                                  [&](EventHandlerCallRef, EventRef event) {
                                      const auto command =
                                          ParameterOf<HICommandExtended>(event, kEventParamDirectObject, typeHICommand);
                                      EXPECT_EQ(command.attributes, UInt32{kHICommandFromControl});
                                      EXPECT_EQ(command.commandID, UInt32{'innr'});
                                      EXPECT_EQ(command.source.control, inner);
                                      return OSStatus{noErr};
                                  });
    ClickOn(inner);
    EXPECT_EQ(log, "1h2h3h1c2c3c");
}

TEST(Command, HandledHitSendsNone)
{
    const CDialog dialog;
    CCommands commands;
    const CListener listener(GetControlEventTarget(dialog.Control('HELP')), {{kEventClassControl, kEventControlHit}},
                             [](EventHandlerCallRef, EventRef) { return OSStatus{noErr}; });
    ClickOn(dialog.Control('HELP'));
    EXPECT_EQ(commands.Take(), "");
}

TEST(Command, HandlerMayDisposeOfTheWindowThatIsClicked)
{
    const CDialog dialog;
    const WindowRef window = dialog.Window();
    const CListener listener(GetControlEventTarget(dialog.Control('HELP')), {{kEventClassControl, kEventControlHit}},
                             [window](EventHandlerCallRef, EventRef) {
                                 DisposeWindow(window);
                                 return OSStatus{eventNotHandledErr};
                             });
    CCommands commands;
    ClickOn(dialog.Control('HELP'));
    EXPECT_FALSE(IsValidWindowPtr(window));
    EXPECT_EQ(commands.Take(), "");
}

TEST(Keyboard, ReturnPressesTheDefaultAndEscapeTheCancelButton)
{
    const CDialog dialog;
    CCommands commands;
    PressKey(kReturnKey);
    EXPECT_EQ(commands.Take(), "ok  ");
    PressKey(kEscapeKey);
    EXPECT_EQ(commands.Take(), "not!");
    ClickOn(dialog.Control('EDIT'));
    PressKey(kReturnKey, 0, "\r");
    EXPECT_EQ(commands.Take(), "ok  ");
    DisableControl(dialog.Control('CLOS'));
    PressKey(kReturnKey);
    EXPECT_EQ(commands.Take(), "");
}

TEST(Keyboard, TabGoesThroughTheControlsBothWays)
{
    const CDialog dialog;
    PressKey(kTabKey);
    EXPECT_EQ(Focused(dialog.Window()), dialog.Control('EDIT', 0));
    PressKey(kTabKey);
    EXPECT_EQ(Focused(dialog.Window()), dialog.Control('EDIT', 1));
    EXPECT_EQ(dialog.Selection('EDIT', 1).selEnd, 7); // all of "classic"
    PressKey(kTabKey, kCVModifierShift);
    EXPECT_EQ(Focused(dialog.Window()), dialog.Control('EDIT', 0));
    PressKey(kTabKey, kCVModifierShift);
    EXPECT_EQ(Focused(dialog.Window()), dialog.Control('INNR')); // around the end
    PressKey(kTabKey);
    HideControl(dialog.Control('EDIT', 1));
    PressKey(kTabKey);
    EXPECT_EQ(Focused(dialog.Window()), dialog.Control('PASS'));
}

TEST(Keyboard, SpacePressesTheFocusedControl)
{
    const CDialog dialog;
    CCommands commands;
    ASSERT_EQ(SetKeyboardFocus(dialog.Window(), dialog.Control('KNOB'), kControlButtonPart), noErr);
    PressKey(' ', 0, " ");
    EXPECT_EQ(Value(dialog.Control('KNOB')), 1);
    ASSERT_EQ(SetKeyboardFocus(dialog.Window(), dialog.Control('HELP'), kControlButtonPart), noErr);
    PressKey(' ', 0, " ");
    EXPECT_EQ(commands.Take(), "help");
    EXPECT_EQ(SetKeyboardFocus(dialog.Window(), dialog.Control('DSBL'), kControlButtonPart), errCouldntSetFocus);
}

TEST(Tracking, PointerEntersAndLeaves)
{
    const CDialog dialog;
    const ControlRef logo = dialog.Control('LOGO');
    HIViewTrackingAreaRef area = nullptr;
    ASSERT_EQ(HIViewNewTrackingArea(logo, nullptr, 77, &area), noErr);
    EXPECT_EQ(HIViewNewTrackingArea(logo, nullptr, 78, nullptr), noErr);
    std::string log;
    const CListener atWindow(GetWindowEventTarget(dialog.Window()),
                             {{kEventClassControl, kEventControlTrackingAreaEntered}},
                             [&log](EventHandlerCallRef, EventRef) {
                                 log += "w"; // tracking events stay with the control
                                 return OSStatus{noErr};
                             });
    const CListener listener(
        GetControlEventTarget(logo),
        {{kEventClassControl, kEventControlTrackingAreaEntered}, {kEventClassControl, kEventControlTrackingAreaExited}},
        [&](EventHandlerCallRef, EventRef event) {
            EXPECT_EQ(ParameterOf<ControlRef>(event, kEventParamDirectObject, typeControlRef), logo);
            HIViewTrackingAreaID id = 0;
            (void)HIViewGetTrackingAreaID(
                ParameterOf<HIViewTrackingAreaRef>(event, kEventParamHIViewTrackingArea, typeHIViewTrackingAreaRef),
                &id);
            log += (GetEventKind(event) == kEventControlTrackingAreaEntered ? "+" : "-") + std::to_string(id);
            return OSStatus{eventNotHandledErr};
        });
    MoveTo(dialog.Window(), 340, 40);
    EXPECT_EQ(log, "+77+78");
    MoveTo(dialog.Window(), 341, 41);
    EXPECT_EQ(log, "+77+78");
    log.clear();
    MoveTo(dialog.Window(), 10, 10);
    EXPECT_EQ(log, "-77-78");
    log.clear();
    MoveTo(dialog.Window(), 340, 40);
    (void)CVPostPointer(dialog.Window(), kCVPointerLeave, 0, 0, 0, 0);
    Pump();
    EXPECT_EQ(log, "+77+78-77-78");
}

TEST(ImageView, AlphaIsLimited)
{
    const CDialog dialog;
    const ControlRef logo = dialog.Control('LOGO');
    EXPECT_EQ(HIImageViewGetAlpha(logo), CGFloat{1});
    EXPECT_EQ(HIImageViewSetAlpha(logo, CGFloat(0.5)), noErr);
    EXPECT_EQ(HIImageViewGetAlpha(logo), CGFloat(0.5));
    EXPECT_EQ(HIImageViewSetAlpha(logo, 3), noErr);
    EXPECT_EQ(HIImageViewGetAlpha(logo), CGFloat{1});
    EXPECT_EQ(HIImageViewSetAlpha(logo, -1), noErr);
    EXPECT_EQ(HIImageViewGetAlpha(logo), CGFloat{0});
    EXPECT_EQ(HIImageViewSetAlpha(dialog.Control('NAME'), 1), errDataNotSupported);
}

TEST(ControlIndex, FollowsIdentifiersAndTheTree)
{
    const CDialog dialog;
    const ControlID spare = {'SPAR', 3};
    const ControlID old = {'HELP', 0};
    const ControlRef help = dialog.Control('HELP');
    ControlRef found = help;
    EXPECT_EQ(GetControlByID(dialog.Window(), &spare, &found), errUnknownControl);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(SetControlID(help, &spare), noErr);
    EXPECT_EQ(dialog.Control('SPAR', 3), help);
    EXPECT_EQ(GetControlByID(dialog.Window(), &old, &found), errUnknownControl);
    EXPECT_EQ(HIViewFindByID(dialog.Control('PANE'), ControlID{'INNR', 0}, &found), noErr);
    DisposeControl(dialog.Control('PANE'));
    EXPECT_EQ(IsControlVisible(found), 0);
    const ControlID inner = {'INNR', 0};
    EXPECT_EQ(GetControlByID(dialog.Window(), &inner, &found), errUnknownControl);
    EXPECT_EQ(EmbedControl(help, help), paramErr);
}

TEST(ControlData, TagsAndSizesAreChecked)
{
    const CDialog dialog;
    const ControlRef edit = dialog.Control('EDIT');
    CFStringRef text = nullptr;
    EXPECT_EQ(GetControlData(edit, 0, kControlEditTextCFStringTag, sizeof text - 1, &text, nullptr),
              errDataSizeMismatch);
    EXPECT_EQ(SetControlData(edit, 0, kControlEditTextCFStringTag, 3, &text), errDataSizeMismatch);
    EXPECT_EQ(SetControlData(edit, 0, kControlEditTextCFStringTag, sizeof text, &text), paramErr);
    EXPECT_EQ(SetControlData(edit, 0, 'nope', sizeof text, &text), errDataNotSupported);
    EXPECT_EQ(GetControlData(dialog.Control('KNOB'), 0, kControlEditTextCFStringTag, sizeof text, &text, nullptr),
              errDataNotSupported);
}
