// tests/hitoolbox/HandleTest.cpp
//
// Every call with null, stale, foreign and random references: statuses only.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <thread>

#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

template <typename Ref>
Ref As(const void* reference)
{
    return reinterpret_cast<Ref>(const_cast<void*>(reference));
}

OSStatus Ignore(EventHandlerCallRef, EventRef, void*)
{
    return eventNotHandledErr;
}

// Calls everything that takes a reference with `bad` in its place.
void UseAsWindow(WindowRef bad)
{
    UInt32 word = 0;
    Rect bounds = {};
    WindowRef window = nullptr;
    CFStringRef string = nullptr;
    ControlRef control = nullptr;
    const ControlID id = {'EDIT', 0};
    EXPECT_FALSE(IsValidWindowPtr(bad));
    DisposeWindow(bad);
    ShowWindow(bad);
    HideWindow(bad);
    SelectWindow(bad);
    EXPECT_FALSE(IsWindowVisible(bad));
    EXPECT_FALSE(IsWindowActive(bad));
    EXPECT_EQ(GetNextWindow(bad), nullptr);
    EXPECT_EQ(SetWindowModality(bad, kWindowModalityNone, nullptr), errInvalidWindowPtr);
    EXPECT_EQ(GetWindowModality(bad, &word, &window), errInvalidWindowPtr);
    EXPECT_EQ(SetWindowTitleWithCFString(bad, CFSTR("x")), errInvalidWindowPtr);
    EXPECT_EQ(CopyWindowTitleAsCFString(bad, &string), errInvalidWindowPtr);
    EXPECT_EQ(GetWindowClass(bad, &word), errInvalidWindowPtr);
    EXPECT_EQ(GetWindowAttributes(bad, &word), errInvalidWindowPtr);
    EXPECT_EQ(GetWindowBounds(bad, kWindowContentRgn, &bounds), errInvalidWindowPtr);
    EXPECT_EQ(GetControlByID(bad, &id, &control), errInvalidWindowPtr);
    EXPECT_EQ(GetRootControl(bad, &control), errInvalidWindowPtr);
    EXPECT_EQ(HIViewGetRoot(bad), nullptr);
    EXPECT_EQ(GetWindowEventTarget(bad), nullptr);
    EXPECT_EQ(AdvanceKeyboardFocus(bad), errInvalidWindowPtr);
    EXPECT_EQ(GetKeyboardFocus(bad, &control), errInvalidWindowPtr);
    EXPECT_EQ(SetWindowDefaultButton(bad, nullptr), errInvalidWindowPtr);
}

void UseAsControl(ControlRef bad)
{
    UInt32 word = 0;
    ControlID id = {'x', 1};
    ControlKind kind = {};
    CFStringRef string = nullptr;
    ControlRef control = nullptr;
    const HIRect frame = {{0, 0}, {1, 1}};
    EXPECT_EQ(SetControlID(bad, &id), controlHandleInvalidErr);
    EXPECT_EQ(GetControlID(bad, &id), controlHandleInvalidErr);
    EXPECT_EQ(SetControlCommandID(bad, 1), controlHandleInvalidErr);
    EXPECT_EQ(GetControlCommandID(bad, &word), controlHandleInvalidErr);
    EXPECT_EQ(GetControlKind(bad, &kind), controlHandleInvalidErr);
    EXPECT_EQ(SetControlTitleWithCFString(bad, CFSTR("x")), controlHandleInvalidErr);
    EXPECT_EQ(CopyControlTitleAsCFString(bad, &string), controlHandleInvalidErr);
    EXPECT_EQ(SetControlData(bad, 0, 'cfst', sizeof string, &string), controlHandleInvalidErr);
    EXPECT_EQ(GetControlData(bad, 0, 'cfst', sizeof string, &string, nullptr), controlHandleInvalidErr);
    SetControl32BitValue(bad, 1);
    SetControl32BitMinimum(bad, 1);
    SetControl32BitMaximum(bad, 1);
    EXPECT_EQ(GetControl32BitValue(bad), 0);
    ShowControl(bad);
    HideControl(bad);
    EXPECT_FALSE(IsControlVisible(bad));
    EXPECT_EQ(EnableControl(bad), controlHandleInvalidErr);
    EXPECT_EQ(DisableControl(bad), controlHandleInvalidErr);
    HiliteControl(bad, 10);
    EXPECT_EQ(GetControlOwner(bad), nullptr);
    DisposeControl(bad);
    EXPECT_EQ(EmbedControl(bad, bad), controlHandleInvalidErr);
    EXPECT_EQ(HIImageViewSetImage(bad, nullptr), controlHandleInvalidErr);
    EXPECT_EQ(HIImageViewCopyImage(bad), nullptr);
    EXPECT_EQ(HIImageViewSetAlpha(bad, 1), controlHandleInvalidErr);
    EXPECT_EQ(HIViewNewTrackingArea(bad, nullptr, 1, nullptr), controlHandleInvalidErr);
    EXPECT_EQ(HIViewFindByID(bad, id, &control), controlHandleInvalidErr);
    EXPECT_EQ(HIViewGetSuperview(bad), nullptr);
    EXPECT_EQ(HIViewGetFirstSubview(bad), nullptr);
    EXPECT_EQ(HIViewGetNextView(bad), nullptr);
    EXPECT_EQ(HIViewSetFrame(bad, &frame), controlHandleInvalidErr);
    EXPECT_EQ(HIViewSimulateClick(bad, 0, 0, nullptr), controlHandleInvalidErr);
    EXPECT_EQ(GetControlEventTarget(bad), nullptr);
}

void UseAsTheRest(const void* bad)
{
    EventRef made = nullptr;
    HIViewTrackingAreaID areaId = 0;
    const EventTypeSpec type = {'test', 1};
    const auto event = As<EventRef>(bad);
    UInt32 word = 0;
    ReleaseEvent(event);
    EXPECT_EQ(GetEventClass(event), 0u);
    EXPECT_EQ(GetEventRetainCount(event), 0u);
    EXPECT_EQ(GetEventParameter(event, 'x', typeWildCard, nullptr, 4, nullptr, &word), paramErr);
    EXPECT_EQ(SetEventParameter(event, 'x', 'y', 4, &word), paramErr);
    ASSERT_EQ(CreateEvent(nullptr, 'test', 1, 0, 0, &made), noErr);
    EXPECT_EQ(SendEventToEventTarget(made, As<EventTargetRef>(bad)), paramErr);
    EXPECT_EQ(SendEventToEventTarget(event, GetApplicationEventTarget()), paramErr);
    EXPECT_EQ(CallNextEventHandler(As<EventHandlerCallRef>(bad), made), paramErr);
    EXPECT_EQ(PostEventToQueue(As<EventQueueRef>(bad), made, 1), paramErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), event, 1), paramErr);
    ReleaseEvent(made);
    EXPECT_EQ(InstallEventHandler(As<EventTargetRef>(bad), Ignore, 1, &type, nullptr, nullptr), paramErr);
    EXPECT_EQ(RemoveEventHandler(As<EventHandlerRef>(bad)), paramErr);
    EXPECT_EQ(RemoveEventLoopTimer(As<EventLoopTimerRef>(bad)), paramErr);
    EXPECT_EQ(QuitEventLoop(As<EventLoopRef>(bad)), paramErr);
    EXPECT_EQ(HIViewGetTrackingAreaID(As<HIViewTrackingAreaRef>(bad), &areaId), paramErr);
    WindowRef window = nullptr;
    EXPECT_EQ(CreateWindowFromNib(As<IBNibRef>(bad), CFSTR("x"), &window), paramErr);
    DisposeNibReference(As<IBNibRef>(bad));
    EXPECT_EQ(GetDialogWindow(As<DialogRef>(bad)), nullptr);
    EXPECT_EQ(RunStandardAlert(As<DialogRef>(bad), nullptr, nullptr), paramErr);
    DisposeDialog(As<DialogRef>(bad));
}

} // namespace

TEST(Handles, NullAndNumbersAreErrors)
{
    UseHeadlessDesktop();
    std::mt19937_64 random(7);
    int local = 0;
    std::vector<const void*> bad = {nullptr, &local, reinterpret_cast<const void*>(1)};
    for (int count = 0; count < 200; ++count)
        bad.push_back(reinterpret_cast<const void*>(static_cast<std::uintptr_t>(random())));
    for (const void* one : bad) {
        UseAsWindow(As<WindowRef>(one));
        UseAsControl(As<ControlRef>(one));
        UseAsTheRest(one);
    }
}

TEST(Handles, ReferencesOfAnotherKindAreErrors)
{
    const CDialog dialog;
    const WindowRef window = dialog.Window();
    const ControlRef control = dialog.Control('EDIT');
    UseAsControl(As<ControlRef>(window));
    UseAsTheRest(window);
    UseAsWindow(As<WindowRef>(control));
    UseAsTheRest(control);
    const EventTargetRef target = GetWindowEventTarget(window);
    EXPECT_NE(As<const void*>(target), As<const void*>(window));
    UseAsWindow(As<WindowRef>(target));
    UseAsControl(As<ControlRef>(GetControlEventTarget(control)));
    EXPECT_TRUE(IsValidWindowPtr(window));
}

TEST(Handles, StaleReferencesAreErrors)
{
    std::vector<const void*> stale;
    for (int count = 0; count < 200; ++count) {
        const CDialog dialog;
        stale.push_back(dialog.Window());
        stale.push_back(dialog.Control('EDIT'));
        stale.push_back(GetWindowEventTarget(dialog.Window()));
    }
    const CDialog live; // may stand where the others stood
    for (const void* one : stale) {
        UseAsWindow(As<WindowRef>(one));
        UseAsControl(As<ControlRef>(one));
        UseAsTheRest(one);
    }
    EXPECT_TRUE(IsValidWindowPtr(live.Window()));
}

TEST(Threads, CallsFromWrongThreadsNeitherCorruptNorHang)
{
    const CDialog dialog;
    const WindowRef window = dialog.Window();
    const ControlRef edit = dialog.Control('EDIT');
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; ++number) {
        threads.emplace_back([&, number] {
            for (int count = 0; count < 300; ++count) {
                CFStringRef text = MakeString("from " + std::to_string(number));
                (void)SetControlData(edit, 0, kControlEditTextCFStringTag, sizeof text, &text);
                (void)SetWindowTitleWithCFString(window, text);
                CFRelease(text);
                HideControl(edit);
                ShowControl(edit);
                ShowWindow(window);
                SelectWindow(window);
                WindowRef own = nullptr;
                const Rect bounds = {0, 0, 10, 10};
                if (CreateNewWindow(kDocumentWindowClass, 0, &bounds, &own) == noErr) {
                    ShowWindow(own);
                    DisposeWindow(own);
                }
                (void)HIViewNewTrackingArea(dialog.Control('LOGO'), nullptr, 1, nullptr);
            }
        });
    }
    for (int count = 0; count < 300; ++count) {
        (void)CVPostPointer(window, kCVPointerPress, 40, 48, 0, 0);
        (void)CVPostPointer(window, kCVPointerRelease, 340, 40, 0, 0);
        (void)CVPostKey('x', "x", 0);
        Pump();
    }
    for (std::thread& thread : threads)
        thread.join();
    Pump();
    EXPECT_TRUE(IsValidWindowPtr(window));
}

TEST(Threads, WindowDisposedByAnotherThreadLeavesTheScreenWithTheNextPump)
{
    const CDialog dialog;
    std::thread([&dialog] { DisposeWindow(dialog.Window()); }).join();
    EXPECT_FALSE(IsValidWindowPtr(dialog.Window()));
    Pump();
    EXPECT_EQ(CVPostPointer(dialog.Window(), kCVPointerPress, 1, 1, 0, 0), paramErr);
}
