// platform/hitoolbox/windows/Notify.cpp
//
// Builds the events and sends them.
#include "platform/hitoolbox/windows/Notify.h"

#include "platform/hitoolbox/events/Event.h"

namespace {

/// An event of our own; gives its reference back at the end.
class COwnEvent {
public:
    COwnEvent(OSType eventClass, UInt32 kind) : m_event(CEvent::Create(eventClass, kind)) {}
    ~COwnEvent()
    {
        const CToolboxLock lock;
        ReleaseLocked(*m_event);
    }
    COwnEvent(const COwnEvent&) = delete;
    COwnEvent& operator=(const COwnEvent&) = delete;

    CEvent& operator*() const { return *m_event; }
    CEvent* operator->() const { return m_event.Get(); }

private:
    const CRef<CEvent> m_event;
};

OSStatus SendCommand(CControl& control, ControlRef reference, UInt32 command, UInt32 modifiers)
{
    HICommandExtended record = {};
    record.attributes = kHICommandFromControl;
    record.commandID = command;
    record.source.control = reference;
    static_assert(sizeof(HICommandExtended) == sizeof(HICommand), "handlers read either");
    const COwnEvent event(kEventClassCommand, kEventCommandProcess);
    event->Set(kEventParamDirectObject, typeHICommand, record);
    event->Set(kEventParamKeyModifiers, typeUInt32, modifiers);
    return SendEvent(*event, control);
}

} // namespace

void Notify(CWindow& window, WindowRef reference, UInt32 kind)
{
    const COwnEvent event(kEventClassWindow, kind);
    event->Set(kEventParamDirectObject, typeWindowRef, reference);
    // Nobody's answer matters, so that one handler cannot keep the end of a window from another.
    (void)SendEvent(*event, window, kEventTargetDontPropagate | kEventTargetSendToAllHandlers);
}

void Notify(CControl& control, ControlRef reference, UInt32 kind, OptionBits options)
{
    const COwnEvent event(kEventClassControl, kind);
    event->Set(kEventParamDirectObject, typeControlRef, reference);
    (void)SendEvent(*event, control, options);
}

void NotifyTextChanged(CControl& control, ControlRef reference)
{
    const COwnEvent event(kEventClassTextField, kEventTextDidChange);
    event->Set(kEventParamDirectObject, typeControlRef, reference);
    (void)SendEvent(*event, control, kEventTargetDontPropagate);
}

void NotifyTracking(CControl& control, HIViewTrackingAreaRef area, UInt32 kind, CGPoint where, UInt32 modifiers)
{
    ControlRef reference = nullptr;
    {
        const CToolboxLock lock;
        reference = control.Ref();
    }
    const COwnEvent event(kEventClassControl, kind);
    event->Set(kEventParamDirectObject, typeControlRef, reference);
    event->Set(kEventParamHIViewTrackingArea, typeHIViewTrackingAreaRef, area);
    event->Set(kEventParamMouseLocation, typeHIPoint, where);
    event->Set(kEventParamKeyModifiers, typeUInt32, modifiers);
    (void)SendEvent(*event, control, kEventTargetDontPropagate);
}

OSStatus SendHit(ControlRef reference, ControlPartCode part, UInt32 modifiers)
{
    CRef<CControl> control;
    {
        const CToolboxLock lock;
        control = Share<CControl>(reference);
    }
    if (!control)
        return eventNotHandledErr;
    OSStatus answer = eventNotHandledErr;
    {
        const COwnEvent event(kEventClassControl, kEventControlHit);
        event->Set(kEventParamDirectObject, typeControlRef, reference);
        event->Set(kEventParamControlPart, typeControlPartCode, part);
        event->Set(kEventParamKeyModifiers, typeUInt32, modifiers);
        answer = SendEvent(*event, *control);
    }
    UInt32 command = 0;
    {
        const CToolboxLock lock;
        if (Find<CControl>(reference)) // the handlers may have disposed of it
            command = control->command;
    }
    if (answer != eventNotHandledErr || command == 0)
        return answer;
    return SendCommand(*control, reference, command, modifiers);
}

void SendCloseRequest(CWindow& window, WindowRef reference)
{
    const COwnEvent event(kEventClassWindow, kEventWindowClose);
    event->Set(kEventParamDirectObject, typeWindowRef, reference);
    (void)SendEvent(*event, window);
}

OSStatus AskForChange(CControl& control, ControlRef reference, CFRange range, CFStringRef text,
                      CRef<const __CFString>& instead)
{
    const COwnEvent event(kEventClassTextField, kEventTextShouldChangeInRange);
    event->Set(kEventParamDirectObject, typeControlRef, reference);
    event->Set(kEventParamTextSelection, typeCFRange, range);
    event->Set(kEventParamCandidateText, typeCFStringRef, text);
    const OSStatus answer = SendEvent(*event, control, kEventTargetDontPropagate);
    const CToolboxLock lock;
    CFStringRef given = nullptr;
    if (event->Get(kEventParamReplacementText, typeCFStringRef, given))
        instead = CRef<const __CFString>::Share(given);
    return answer;
}
