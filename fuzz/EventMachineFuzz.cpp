// fuzz/EventMachineFuzz.cpp
//
// Random input on windows whose handlers do what handlers may: dispose of windows, remove each
// other, install new ones, post and send events.
#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/Fuzz.h"

namespace {

/// The bytes that decide what happens; 0 from their end on.
class CBytes {
public:
    CBytes(const std::uint8_t* bytes, std::size_t size) : m_bytes(bytes), m_left(size) {}
    bool Over() const { return m_left == 0; }
    unsigned Next()
    {
        if (m_left == 0)
            return 0;
        --m_left;
        return *m_bytes++;
    }

private:
    const std::uint8_t* m_bytes;
    std::size_t m_left;
};

struct Machine {
    explicit Machine(CBytes& source) : bytes(source) {}

    CBytes& bytes;
    std::vector<WindowRef> windows;
    std::vector<ControlRef> controls;
    std::vector<EventHandlerRef> handlers;
    std::vector<EventLoopTimerRef> timers;
    int depth = 0;
    int runs = 0; // of the application's loop, one inside the other
};

template <typename Ref>
Ref Any(Machine& machine, const std::vector<Ref>& refs)
{
    return refs.empty() ? nullptr : refs[machine.bytes.Next() % refs.size()];
}

void Act(Machine& machine);

OSStatus Handle(EventHandlerCallRef call, EventRef event, void* data)
{
    static constexpr OSStatus kAnswers[] = {eventNotHandledErr, noErr, userCanceledErr, eventNotHandledErr};
    auto& machine = *static_cast<Machine*>(data);
    if (machine.depth > 8)
        return eventNotHandledErr;
    ++machine.depth;
    Act(machine);
    if (machine.bytes.Next() % 8 == 0)
        (void)CallNextEventHandler(call, event);
    --machine.depth;
    return kAnswers[machine.bytes.Next() % 4];
}

void Fire(EventLoopTimerRef, void* data)
{
    auto& machine = *static_cast<Machine*>(data);
    if (machine.depth > 8)
        return;
    ++machine.depth;
    Act(machine);
    --machine.depth;
}

void MakeWindow(Machine& machine)
{
    static constexpr WindowClass kClasses[] = {kDocumentWindowClass, kMovableModalWindowClass, kFloatingWindowClass};
    const Rect bounds = {0, 0, 200, 200};
    WindowRef window = nullptr;
    if (CreateNewWindow(kClasses[machine.bytes.Next() % 3], kWindowStandardHandlerAttribute, &bounds, &window) != noErr)
        abort();
    machine.windows.push_back(window);
}

void MakeControl(Machine& machine)
{
    const WindowRef window = Any(machine, machine.windows);
    const auto side = static_cast<short>(machine.bytes.Next() % 180);
    const Rect bounds = {side, side, static_cast<short>(side + 30), static_cast<short>(side + 60)};
    ControlRef control = nullptr;
    switch (machine.bytes.Next() % 5) {
    case 0:
        (void)CreatePushButtonControl(window, &bounds, CFSTR("Push"), &control);
        break;
    case 1:
        (void)CreateCheckBoxControl(window, &bounds, nullptr, 1, true, &control);
        break;
    case 2:
        (void)CreateEditTextControl(window, &bounds, CFSTR("text"), machine.bytes.Next() % 2, false, nullptr, &control);
        break;
    case 3:
        (void)HIImageViewCreate(nullptr, &control);
        break;
    default:
        (void)CreateEditUnicodeTextControl(window, &bounds, nullptr, false, nullptr, &control);
        break;
    }
    const ControlID id = {'fuzz', static_cast<SInt32>(machine.bytes.Next() % 4)};
    (void)SetControlID(control, &id);
    (void)SetControlCommandID(control, machine.bytes.Next());
    (void)HIViewNewTrackingArea(control, nullptr, 1, nullptr);
    machine.controls.push_back(control);
}

void InstallHandler(Machine& machine)
{
    static constexpr EventTypeSpec kTypes[] = {
        {kEventClassWindow, kEventWindowDispose},    {kEventClassWindow, kEventWindowClose},
        {kEventClassWindow, kEventWindowShown},      {kEventClassCommand, kEventCommandProcess},
        {kEventClassControl, kEventControlHit},      {kEventClassControl, kEventControlTrackingAreaEntered},
        {kEventClassControl, kEventControlDispose},  {kEventClassTextField, kEventTextShouldChangeInRange},
        {kEventClassTextField, kEventTextDidChange}, {'fuzz', 1}};
    EventTargetRef target = GetApplicationEventTarget();
    if (machine.bytes.Next() % 3 == 0)
        target = GetWindowEventTarget(Any(machine, machine.windows));
    else if (machine.bytes.Next() % 2 == 0)
        target = GetControlEventTarget(Any(machine, machine.controls));
    EventHandlerRef handler = nullptr;
    (void)InstallEventHandler(target, Handle, GetEventTypeCount(kTypes), kTypes, &machine, &handler);
    machine.handlers.push_back(handler);
}

// Gives an event parameters and asks for them, as their right and as a wrong type.
void UseParameters(Machine& machine, EventRef event)
{
    static constexpr EventParamName kNames[] = {kEventParamDirectObject, kEventParamPostTarget, 'fuzz'};
    const EventParamName name = kNames[machine.bytes.Next() % 3];
    const CFStringRef text = CFSTR("text");
    const EventTargetRef target = GetWindowEventTarget(Any(machine, machine.windows));
    const UInt32 number = machine.bytes.Next();
    switch (machine.bytes.Next() % 4) {
    case 0:
        (void)SetEventParameter(event, name, typeCFStringRef, sizeof text, &text);
        break;
    case 1:
        (void)SetEventParameter(event, name, typeEventTargetRef, sizeof target, &target);
        break;
    case 2:
        (void)SetEventParameter(event, name, typeUInt32, number % 5, &number);
        break;
    default:
        (void)SetEventParameter(event, name, typeUInt32, number % 2, nullptr);
        break;
    }
    EventParamType type = 0;
    ByteCount size = 0;
    unsigned char value[16];
    const OSStatus status = GetEventParameter(event, name, number % 2 ? EventParamType(typeWildCard) : typeUInt32,
                                              &type, sizeof value, &size, value);
    Require(status != noErr || (type != 0 && size <= sizeof value));
}

void SendOrPost(Machine& machine)
{
    EventRef event = nullptr;
    (void)CreateEvent(nullptr, 'fuzz', 1, 0, kEventAttributeNone, &event);
    UseParameters(machine, event);
    switch (machine.bytes.Next() % 4) {
    case 0:
        (void)PostEventToQueue(GetCurrentEventQueue(), event, kEventPriorityStandard);
        (void)PostEventToQueue(GetMainEventQueue(), event, kEventPriorityHigh); // posted already
        break;
    case 1:
        (void)PostEventToQueue(GetMainEventQueue(), event, kEventPriorityHigh);
        break;
    case 2:
        (void)SendEventToEventTarget(event, GetEventDispatcherTarget());
        break;
    default:
        (void)SendEventToEventTarget(event, GetControlEventTarget(Any(machine, machine.controls)));
        break;
    }
    Require(GetEventClass(event) == 'fuzz' && GetEventKind(event) == 1 && GetEventTime(event) <= GetCurrentEventTime());
    Require(GetEventRetainCount(RetainEvent(event)) >= 2);
    ReleaseEvent(event);
    ReleaseEvent(event);
    (void)GetEventClass(event); // stale unless it is queued
    (void)SetEventParameter(event, 'fuzz', typeUInt32, 0, nullptr);
}

void SendCommand(Machine& machine)
{
    static constexpr UInt32 kCommands[] = {kHICommandOK, kHICommandCancel, kHICommandQuit, 0};
    HICommand command = {};
    command.commandID = kCommands[machine.bytes.Next() % 4];
    (void)ProcessHICommand(machine.bytes.Next() % 8 == 0 ? nullptr : &command);
}

void ReceiveEvent(Machine& machine)
{
    static constexpr EventTypeSpec kTypes[] = {{'fuzz', 1}, {kEventClassCommand, kEventCommandProcess}};
    EventRef event = nullptr;
    const bool pull = machine.bytes.Next() % 2 == 0;
    const OSStatus status =
        ReceiveNextEvent(machine.bytes.Next() % 3, kTypes, machine.bytes.Next() / 1000.0, pull, &event);
    Require((status == noErr) == (event != nullptr));
    if (!event)
        return;
    Require(pull || GetNumEventsInQueue(GetMainEventQueue()) > 0);
    (void)SendEventToEventTarget(event, GetEventDispatcherTarget());
    if (pull)
        ReleaseEvent(event);
}

// What was asked to end ends soon: a run inside another takes the request of both, so it asks again.
void QuitAndRun(Machine& machine)
{
    if (machine.bytes.Next() % 2 == 0)
        (void)QuitEventLoop(GetCurrentEventLoop());
    if (machine.bytes.Next() % 2 == 0)
        QuitApplicationEventLoop();
    if (machine.depth >= 3)
        return;
    ++machine.runs;
    QuitApplicationEventLoop();
    RunApplicationEventLoop();
    if (--machine.runs > 0)
        QuitApplicationEventLoop();
}

void PostInput(Machine& machine)
{
    static constexpr UInt32 kKeys[] = {0xFF0D, 0xFF1B, 0xFF09, 0xFF08, 0xFFFF, 0xFF51, 0xFF53, ' ', 'a', 'v', 'x', 'z'};
    const WindowRef window = Any(machine, machine.windows);
    switch (machine.bytes.Next() % 4) {
    case 0: {
        const UInt32 key = kKeys[machine.bytes.Next() % (sizeof kKeys / sizeof kKeys[0])];
        (void)CVPostKey(key, key < 0x7F ? "x" : nullptr, machine.bytes.Next() % 4);
        break;
    }
    case 1:
        (void)CVPostCloseRequest(window);
        break;
    case 2:
        (void)CVPostText("\xC3\xA9\xF0\x9F\x9A\x80");
        break;
    default:
        (void)CVPostPointer(window, machine.bytes.Next() % 4, machine.bytes.Next(), machine.bytes.Next(),
                            machine.bytes.Next() % 3, machine.bytes.Next() % 4);
        break;
    }
}

// One thing, chosen by the bytes.
void Act(Machine& machine)
{
    switch (machine.bytes.Next() % 20) {
    case 0:
        MakeWindow(machine);
        break;
    case 1:
    case 2:
        MakeControl(machine);
        break;
    case 3:
    case 4:
        InstallHandler(machine);
        break;
    case 5:
        DisposeWindow(Any(machine, machine.windows));
        break;
    case 6:
        DisposeControl(Any(machine, machine.controls));
        break;
    case 7:
        (void)RemoveEventHandler(Any(machine, machine.handlers));
        break;
    case 8:
        ShowWindow(Any(machine, machine.windows));
        break;
    case 9:
        SelectWindow(Any(machine, machine.windows));
        HideWindow(Any(machine, machine.windows));
        break;
    case 10:
        (void)SetWindowModality(Any(machine, machine.windows), machine.bytes.Next() % 5, Any(machine, machine.windows));
        break;
    case 11:
        (void)EmbedControl(Any(machine, machine.controls), Any(machine, machine.controls));
        break;
    case 12:
        SendOrPost(machine);
        break;
    case 13: {
        EventLoopTimerRef timer = nullptr;
        const double delay = (static_cast<int>(machine.bytes.Next()) - 16) / 100.0; // below 0: never
        (void)InstallEventLoopTimer(GetMainEventLoop(), delay, machine.bytes.Next() % 2, Fire, &machine, &timer);
        machine.timers.push_back(timer);
        if (machine.bytes.Next() % 4 == 0)
            (void)RemoveEventLoopTimer(Any(machine, machine.timers));
        break;
    }
    case 14:
        if (machine.depth < 3)
            (void)RunCurrentEventLoop(0.1);
        break;
    case 15:
        SendCommand(machine);
        break;
    case 16:
        if (machine.depth < 3)
            ReceiveEvent(machine);
        break;
    case 17:
        QuitAndRun(machine);
        break;
    default:
        PostInput(machine);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (CVUseHeadlessDesktop(true) != noErr)
        abort();
    CBytes bytes(data, size < 4096 ? size : 4096);
    Machine machine(bytes);
    MakeWindow(machine);
    ShowWindow(machine.windows.front());
    while (!bytes.Over()) {
        Act(machine);
        PostInput(machine);
        (void)CVPump();
    }
    machine.depth = 100; // what still runs acts no more
    for (const EventLoopTimerRef timer : machine.timers)
        (void)RemoveEventLoopTimer(timer);
    for (const EventHandlerRef handler : machine.handlers)
        (void)RemoveEventHandler(handler);
    for (const ControlRef control : machine.controls)
        DisposeControl(control);
    for (const WindowRef window : machine.windows)
        DisposeWindow(window);
    (void)FlushEventQueue(GetMainEventQueue());
    Require(GetNumEventsInQueue(GetMainEventQueue()) == 0);
    QuitApplicationEventLoop();
    RunApplicationEventLoop();
    while (RunCurrentEventLoop(0) == eventLoopQuitErr) {
    }
    (void)CVPump();
    return 0;
}
