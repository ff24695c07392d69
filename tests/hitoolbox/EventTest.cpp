// tests/hitoolbox/EventTest.cpp
//
// Events, parameters, targets, handlers, the queue, the loop and its timers.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

namespace {

constexpr OSType kOwnClass = 'test';

/// An event of our own, released at the end.
class COwnEvent {
public:
    explicit COwnEvent(UInt32 kind = 1) { (void)CreateEvent(nullptr, kOwnClass, kind, 0, 0, &m_event); }
    ~COwnEvent() { ReleaseEvent(m_event); }
    COwnEvent(const COwnEvent&) = delete;
    COwnEvent& operator=(const COwnEvent&) = delete;
    EventRef Get() const { return m_event; }

private:
    EventRef m_event = nullptr;
};

OSStatus Send(EventRef event, EventTargetRef target, OptionBits options = 0)
{
    return SendEventToEventTargetWithOptions(event, target, options);
}

CListener::Answer Note(std::string& log, const char* name, OSStatus answer = eventNotHandledErr)
{
    return [&log, name, answer](EventHandlerCallRef, EventRef) {
        log += name;
        return answer;
    };
}

const std::vector<EventTypeSpec> kOwn = {{kOwnClass, 1}};

} // namespace

TEST(Event, HasClassKindAndTime)
{
    EventRef event = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, 'abcd', 7, 12.5, kEventAttributeNone, &event), noErr);
    EXPECT_EQ(GetEventClass(event), OSType{'abcd'});
    EXPECT_EQ(GetEventKind(event), 7u);
    EXPECT_EQ(GetEventTime(event), 12.5);
    EXPECT_EQ(GetEventRetainCount(event), 1u);
    EXPECT_EQ(RetainEvent(event), event);
    EXPECT_EQ(GetEventRetainCount(event), 2u);
    ReleaseEvent(event);
    ReleaseEvent(event);
    EXPECT_EQ(GetEventRetainCount(event), 0u);
    ReleaseEvent(event); // stale
}

TEST(Event, TimeZeroIsNow)
{
    UseHeadlessDesktop();
    const COwnEvent event;
    EXPECT_EQ(GetEventTime(event.Get()), GetCurrentEventTime());
}

TEST(Event, ParameterComesBackWithTypeAndSize)
{
    const COwnEvent event;
    const UInt32 value = 42;
    ASSERT_EQ(SetEventParameter(event.Get(), 'parm', typeUInt32, sizeof value, &value), noErr);
    UInt32 read = 0;
    EventParamType type = 0;
    ByteCount size = 0;
    EXPECT_EQ(GetEventParameter(event.Get(), 'parm', typeWildCard, &type, sizeof read, &size, &read), noErr);
    EXPECT_EQ(read, 42u);
    EXPECT_EQ(type, EventParamType{typeUInt32});
    EXPECT_EQ(size, sizeof value);
}

TEST(Event, MissingParameterAndWrongTypeTouchNothing)
{
    const COwnEvent event;
    const UInt32 value = 42;
    (void)SetEventParameter(event.Get(), 'parm', typeUInt32, sizeof value, &value);
    UInt32 read = 7;
    ByteCount size = 9;
    EXPECT_EQ(GetEventParameter(event.Get(), 'none', typeWildCard, nullptr, sizeof read, &size, &read),
              eventParameterNotFoundErr);
    EXPECT_EQ(GetEventParameter(event.Get(), 'parm', typeWindowRef, nullptr, sizeof read, &size, &read),
              eventParameterNotFoundErr);
    EXPECT_EQ(read, 7u);
    EXPECT_EQ(size, 9u);
}

TEST(Event, SmallBufferGetsTheBeginningAndTheWholeSize)
{
    const COwnEvent event;
    (void)SetEventParameter(event.Get(), 'parm', 'TEXT', 6, "abcdef");
    char read[4] = "...";
    ByteCount size = 0;
    EXPECT_EQ(GetEventParameter(event.Get(), 'parm', 'TEXT', nullptr, 2, &size, read), noErr);
    EXPECT_STREQ(read, "ab.");
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(GetEventParameter(event.Get(), 'parm', 'TEXT', nullptr, 0, &size, nullptr), noErr);
}

TEST(Event, StringParameterIsRetainedWithTheEvent)
{
    CFStringRef string = MakeString("retained");
    {
        const COwnEvent event;
        (void)SetEventParameter(event.Get(), 'parm', typeCFStringRef, sizeof string, &string);
        EXPECT_EQ(CFGetRetainCount(string), 2);
    }
    EXPECT_EQ(CFGetRetainCount(string), 1);
    CFRelease(string);
}

TEST(Target, NewestHandlerComesFirstAndPassesOn)
{
    std::string log;
    const CListener first(GetApplicationEventTarget(), kOwn, Note(log, "1"));
    const CListener second(GetApplicationEventTarget(), kOwn, Note(log, "2"));
    const COwnEvent event;
    EXPECT_EQ(Send(event.Get(), GetApplicationEventTarget()), eventNotHandledErr);
    EXPECT_EQ(log, "21");
}

TEST(Target, AnyOtherAnswerEndsTheEventAndIsTheSenders)
{
    std::string log;
    const CListener first(GetApplicationEventTarget(), kOwn, Note(log, "1"));
    const CListener second(GetApplicationEventTarget(), kOwn, Note(log, "2", userCanceledErr));
    const COwnEvent event;
    EXPECT_EQ(Send(event.Get(), GetApplicationEventTarget()), userCanceledErr);
    EXPECT_EQ(log, "2");
}

TEST(Target, HandlerIsCalledForItsTypesOnly)
{
    std::string log;
    const CListener listener(GetApplicationEventTarget(), {{kOwnClass, 2}, {'othr', 1}}, Note(log, "x"));
    const COwnEvent one(1);
    const COwnEvent two(2);
    (void)Send(one.Get(), GetApplicationEventTarget());
    EXPECT_EQ(log, "");
    (void)Send(two.Get(), GetApplicationEventTarget());
    EXPECT_EQ(log, "x");
}

TEST(Target, SameHandlerWithSameDataIsInstalledTwice)
{
    static int calls = 0;
    const EventHandlerProcPtr handler = [](EventHandlerCallRef, EventRef, void*) -> OSStatus {
        ++calls;
        return eventNotHandledErr;
    };
    EventHandlerRef refs[2] = {};
    for (EventHandlerRef& ref : refs)
        ASSERT_EQ(InstallEventHandler(GetApplicationEventTarget(), handler, 1, kOwn.data(), &calls, &ref), noErr);
    const COwnEvent event;
    (void)Send(event.Get(), GetApplicationEventTarget());
    EXPECT_EQ(calls, 2);
    for (const EventHandlerRef ref : refs)
        EXPECT_EQ(RemoveEventHandler(ref), noErr);
    EXPECT_EQ(RemoveEventHandler(refs[0]), paramErr);
}

TEST(Target, UnhandledEventGoesFromControlThroughParentsToWindowAndApplication)
{
    const CDialog dialog;
    std::string log;
    const ControlRef inner = dialog.Control('INNR');
    const CListener atControl(GetControlEventTarget(inner), kOwn, Note(log, "c"));
    const CListener atPane(GetControlEventTarget(dialog.Control('PANE', 1)), kOwn, Note(log, "p"));
    const CListener atOuter(GetControlEventTarget(dialog.Control('PANE', 0)), kOwn, Note(log, "P"));
    const CListener atWindow(GetWindowEventTarget(dialog.Window()), kOwn, Note(log, "w"));
    const CListener atApplication(GetApplicationEventTarget(), kOwn, Note(log, "a", noErr));
    const COwnEvent event;
    EXPECT_EQ(Send(event.Get(), GetControlEventTarget(inner)), noErr);
    EXPECT_EQ(log, "cpPwa");
    log.clear();
    EXPECT_EQ(Send(event.Get(), GetControlEventTarget(inner), kEventTargetDontPropagate), eventNotHandledErr);
    EXPECT_EQ(log, "c");
}

TEST(Target, UserFocusIsTheFocusedControl)
{
    const CDialog dialog;
    std::string log;
    const CListener atWindow(GetWindowEventTarget(dialog.Window()), kOwn, Note(log, "w"));
    const CListener atControl(GetControlEventTarget(dialog.Control('EDIT')), kOwn, Note(log, "c"));
    const COwnEvent event;
    (void)Send(event.Get(), GetUserFocusEventTarget());
    EXPECT_EQ(log, "w");
    log.clear();
    ClickOn(dialog.Control('EDIT'));
    (void)Send(event.Get(), GetUserFocusEventTarget());
    EXPECT_EQ(log, "cw");
}

TEST(Target, CallNextReachesTheRestOnceOnly)
{
    std::string log;
    const CListener first(GetApplicationEventTarget(), kOwn, Note(log, "1"));
    const CListener second(GetApplicationEventTarget(), kOwn, [&log](EventHandlerCallRef call, EventRef event) {
        log += "(";
        const OSStatus answer = CallNextEventHandler(call, event);
        log += ")";
        return answer;
    });
    const COwnEvent event;
    EXPECT_EQ(Send(event.Get(), GetApplicationEventTarget()), eventNotHandledErr);
    EXPECT_EQ(log, "(1)");
}

TEST(Target, CallReferenceIsStaleAfterTheHandler)
{
    EventHandlerCallRef kept = nullptr;
    const CListener listener(GetApplicationEventTarget(), kOwn, [&kept](EventHandlerCallRef call, EventRef) {
        kept = call;
        return OSStatus{noErr};
    });
    const COwnEvent event;
    (void)Send(event.Get(), GetApplicationEventTarget());
    EXPECT_EQ(CallNextEventHandler(kept, event.Get()), paramErr);
}

TEST(Target, HandlerMayRemoveItselfAndOthersWhileItRuns)
{
    std::string log;
    const CListener first(GetApplicationEventTarget(), kOwn, Note(log, "1"));
    EventHandlerRef own = nullptr;
    const CListener second(GetApplicationEventTarget(), kOwn, [&](EventHandlerCallRef, EventRef) {
        log += "2";
        EXPECT_EQ(RemoveEventHandler(own), noErr);
        EXPECT_EQ(RemoveEventHandler(first.Get()), noErr);
        return OSStatus{eventNotHandledErr};
    });
    own = second.Get();
    const COwnEvent event;
    (void)Send(event.Get(), GetApplicationEventTarget());
    (void)Send(event.Get(), GetApplicationEventTarget());
    EXPECT_EQ(log, "2");
}

TEST(Target, HandlerInstalledMeanwhileWaitsForTheNextEvent)
{
    std::string log;
    std::unique_ptr<CListener> late;
    const CListener first(GetApplicationEventTarget(), kOwn, [&](EventHandlerCallRef, EventRef) {
        if (!late)
            late = std::make_unique<CListener>(GetApplicationEventTarget(), kOwn, Note(log, "late"));
        log += "1";
        return OSStatus{eventNotHandledErr};
    });
    const COwnEvent event;
    (void)Send(event.Get(), GetApplicationEventTarget());
    EXPECT_EQ(log, "1");
    (void)Send(event.Get(), GetApplicationEventTarget());
    EXPECT_EQ(log, "1late1");
}

TEST(Target, HandlerMayDisposeOfItsWindowAndTheEventGoesOnToTheApplication)
{
    const CDialog dialog;
    std::string log;
    const WindowRef window = dialog.Window();
    const CListener atWindow(GetWindowEventTarget(window), kOwn, Note(log, "w"));
    const CListener atApplication(GetApplicationEventTarget(), kOwn, Note(log, "a"));
    const ControlRef control = dialog.Control('INNR');
    const CListener atControl(GetControlEventTarget(control), kOwn, [&](EventHandlerCallRef, EventRef) {
        DisposeWindow(window);
        log += "c";
        return OSStatus{eventNotHandledErr};
    });
    const COwnEvent event;
    (void)Send(event.Get(), GetControlEventTarget(control));
    EXPECT_EQ(log, "ca");
    EXPECT_FALSE(IsValidWindowPtr(window));
}

TEST(Target, HandlerMayReleaseTheEvent)
{
    std::string log;
    const CListener first(GetApplicationEventTarget(), kOwn, Note(log, "1"));
    const CListener second(GetApplicationEventTarget(), kOwn, [&](EventHandlerCallRef, EventRef event) {
        ReleaseEvent(event);
        return OSStatus{eventNotHandledErr};
    });
    EventRef event = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, kOwnClass, 1, 0, 0, &event), noErr);
    (void)Send(event, GetApplicationEventTarget());
    EXPECT_EQ(log, "1");
}

TEST(Queue, PostedEventsAreDispatchedByPriorityThenAge)
{
    UseHeadlessDesktop();
    std::string log;
    const CListener listener(GetApplicationEventTarget(), {{kOwnClass, 1}, {kOwnClass, 2}, {kOwnClass, 3}},
                             [&log](EventHandlerCallRef, EventRef event) {
                                 log += std::to_string(GetEventKind(event));
                                 return OSStatus{noErr};
                             });
    const COwnEvent one(1);
    const COwnEvent two(2);
    const COwnEvent three(3);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), one.Get(), kEventPriorityLow), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), two.Get(), kEventPriorityStandard), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), three.Get(), kEventPriorityStandard), noErr);
    EXPECT_EQ(PostEventToQueue(GetMainEventQueue(), three.Get(), kEventPriorityHigh), eventAlreadyPostedErr);
    EXPECT_EQ(GetNumEventsInQueue(GetMainEventQueue()), 3u);
    EXPECT_EQ(GetEventRetainCount(one.Get()), 2u);
    Pump();
    EXPECT_EQ(log, "231");
    EXPECT_EQ(GetEventRetainCount(one.Get()), 1u);
}

TEST(Queue, PostTargetDecidesWhereAnEventGoes)
{
    const CDialog dialog;
    std::string log;
    const CListener atWindow(GetWindowEventTarget(dialog.Window()), kOwn, Note(log, "w"));
    const COwnEvent event;
    const EventTargetRef target = GetWindowEventTarget(dialog.Window());
    (void)SetEventParameter(event.Get(), kEventParamPostTarget, typeEventTargetRef, sizeof target, &target);
    (void)PostEventToQueue(GetMainEventQueue(), event.Get(), kEventPriorityStandard);
    Pump();
    EXPECT_EQ(log, "w");
}

TEST(Queue, ReceiveFiltersByTypeAndTimesOut)
{
    UseHeadlessDesktop();
    const COwnEvent one(1);
    const COwnEvent two(2);
    (void)PostEventToQueue(GetMainEventQueue(), one.Get(), kEventPriorityStandard);
    (void)PostEventToQueue(GetMainEventQueue(), two.Get(), kEventPriorityStandard);
    const EventTypeSpec second = {kOwnClass, 2};
    EventRef received = nullptr;
    EXPECT_EQ(ReceiveNextEvent(1, &second, kEventDurationNoWait, false, &received), noErr);
    EXPECT_EQ(received, two.Get());
    EXPECT_EQ(GetNumEventsInQueue(GetMainEventQueue()), 2u);
    EXPECT_EQ(ReceiveNextEvent(1, &second, kEventDurationNoWait, true, &received), noErr);
    ReleaseEvent(received);
    const double before = GetCurrentEventTime();
    EXPECT_EQ(ReceiveNextEvent(1, &second, 5.0, true, &received), eventLoopTimedOutErr);
    EXPECT_NEAR(GetCurrentEventTime() - before, 5.0, 0.001);
    EXPECT_EQ(FlushEventQueue(GetMainEventQueue()), noErr);
    EXPECT_EQ(GetEventRetainCount(one.Get()), 1u);
}

TEST(Queue, AnyThreadPostsAndWakesTheLoop)
{
    UseHeadlessDesktop();
    std::atomic<int> seen{0};
    const CListener listener(GetApplicationEventTarget(), kOwn, [&seen](EventHandlerCallRef, EventRef) {
        if (++seen == 400)
            QuitApplicationEventLoop();
        return OSStatus{noErr};
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([] {
            for (int count = 0; count < 100; ++count) {
                const COwnEvent event;
                (void)PostEventToQueue(GetMainEventQueue(), event.Get(), kEventPriorityStandard);
            }
        });
    }
    RunApplicationEventLoop();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(seen.load(), 400);
}

TEST(Loop, QuitCommandEndsIt)
{
    UseHeadlessDesktop();
    HICommand command = {};
    command.commandID = kHICommandQuit;
    EXPECT_EQ(ProcessHICommand(&command), noErr);
    RunApplicationEventLoop(); // returns at once
}

TEST(Loop, QuitEndsTheInnermostRunAndTheOuterOneNeedsAnother)
{
    UseHeadlessDesktop();
    struct Ran {
        bool inner = false;
        bool outer = false;
    } ran;
    const EventLoopTimerProcPtr runAnother = [](EventLoopTimerRef, void* data) {
        QuitApplicationEventLoop();
        QuitApplicationEventLoop(); // the same request
        RunApplicationEventLoop();
        static_cast<Ran*>(data)->inner = true;
    };
    const EventLoopTimerProcPtr quit = [](EventLoopTimerRef, void* data) {
        auto& seen = *static_cast<Ran*>(data);
        seen.outer = seen.inner;
        QuitApplicationEventLoop();
    };
    (void)InstallEventLoopTimer(GetMainEventLoop(), 1, 0, runAnother, &ran, nullptr);
    (void)InstallEventLoopTimer(GetMainEventLoop(), 2, 0, quit, &ran, nullptr);
    const double before = GetCurrentEventTime();
    RunApplicationEventLoop();
    EXPECT_TRUE(ran.outer);
    EXPECT_NEAR(GetCurrentEventTime() - before, 2.0, 0.001);
}

TEST(Timer, FiresOnceOrAgainAndAgain)
{
    UseHeadlessDesktop();
    static int once = 0;
    static int often = 0;
    const EventLoopTimerProcPtr count = [](EventLoopTimerRef, void* counter) {
        ++*static_cast<int*>(counter);
    };
    EventLoopTimerRef timers[2] = {};
    ASSERT_EQ(InstallEventLoopTimer(GetMainEventLoop(), 1.0, 0, count, &once, &timers[0]), noErr);
    ASSERT_EQ(InstallEventLoopTimer(GetMainEventLoop(), 0.5, 1.0, count, &often, &timers[1]), noErr);
    EXPECT_EQ(RunCurrentEventLoop(4.0), eventLoopTimedOutErr);
    EXPECT_EQ(once, 1);
    EXPECT_EQ(often, 4);
    for (const EventLoopTimerRef timer : timers)
        EXPECT_EQ(RemoveEventLoopTimer(timer), noErr);
    EXPECT_EQ(RemoveEventLoopTimer(timers[0]), paramErr);
    EXPECT_EQ(RunCurrentEventLoop(4.0), eventLoopTimedOutErr);
    EXPECT_EQ(often, 4);
}

TEST(Timer, MayRemoveItselfWhileItRuns)
{
    UseHeadlessDesktop();
    static int calls = 0;
    const EventLoopTimerProcPtr remove = [](EventLoopTimerRef timer, void*) {
        ++calls;
        EXPECT_EQ(RemoveEventLoopTimer(timer), noErr);
    };
    EventLoopTimerRef timer = nullptr;
    (void)InstallEventLoopTimer(GetMainEventLoop(), 0, 0.1, remove, nullptr, &timer);
    (void)RunCurrentEventLoop(1.0);
    EXPECT_EQ(calls, 1);
}

TEST(Timer, QuitEndsTheInnermostLoop)
{
    UseHeadlessDesktop();
    const EventLoopTimerProcPtr quit = [](EventLoopTimerRef, void*) {
        (void)QuitEventLoop(GetMainEventLoop());
    };
    (void)InstallEventLoopTimer(GetMainEventLoop(), 1, 0, quit, nullptr, nullptr);
    const double before = GetCurrentEventTime();
    EXPECT_EQ(RunCurrentEventLoop(100.0), eventLoopQuitErr);
    EXPECT_NEAR(GetCurrentEventTime() - before, 1.0, 0.001);
}
