// platform/hitoolbox/events/Target.cpp
//
// Handlers come and go while events are under way: each event keeps the list of handlers that a
// target had when it got there, and leaves out those that were removed since.
#include "platform/hitoolbox/events/Target.h"

#include <algorithm>

#include "platform/base/Guard.h"
#include "platform/hitoolbox/events/Loop.h"

namespace {

/// The outermost target. Handles the command to quit when nobody else does.
class CApplicationTarget final : public CTarget {
public:
    CApplicationTarget() : CTarget(RecordKind::Target) {}
    CRef<CTarget> Outwards() override { return {}; }
    OSStatus HandleByDefault(const CEvent& event) override;
};

/// Sends an event where it belongs.
class CDispatcherTarget final : public CTarget {
public:
    CDispatcherTarget() : CTarget(RecordKind::Target) {}
    CRef<CTarget> Resolve(const CEvent& event) override;
};

/// One event's way; what an EventHandlerCallRef names. Lives on the sender's stack.
class CDispatch final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Dispatch;

    CDispatch(CTarget& first, const CEvent& event, OptionBits options)
        : CRecord(kKind), thread(std::this_thread::get_id()), m_options(options)
    {
        const CToolboxLock lock;
        Handles().Register(*this);
        Enter(first.Resolve(event));
    }
    ~CDispatch() override
    {
        const CToolboxLock lock;
        Handles().Forget(*this);
    }

    /// Brings the event to the handlers that it has not met yet. Without the lock.
    OSStatus Continue(CEvent& event);

    const std::thread::id thread;

private:
    void Enter(CRef<CTarget> target);
    CRef<CHandler> NextHandler(const CEvent& event);

    CRef<CTarget> m_target;
    std::shared_ptr<const CTarget::HandlerList> m_handlers;
    std::size_t m_left = 0; // handlers of the target that the event has not met
    const OptionBits m_options;
};

OSStatus CApplicationTarget::HandleByDefault(const CEvent& event)
{
    HICommand command = {};
    {
        const CToolboxLock lock;
        if (event.eventClass != kEventClassCommand || event.kind != kEventCommandProcess ||
            !event.Get(kEventParamDirectObject, typeHICommand, command) || command.commandID != kHICommandQuit)
            return eventNotHandledErr;
    }
    QuitApplicationEventLoop();
    return noErr;
}

CRef<CTarget> CDispatcherTarget::Resolve(const CEvent& event)
{
    EventTargetRef wanted = nullptr;
    CTarget* target = nullptr;
    if (event.Get(kEventParamPostTarget, typeEventTargetRef, wanted))
        target = FindTarget(wanted);
    return CRef<CTarget>::Share(target && target != this ? target : &ApplicationTarget());
}

void CDispatch::Enter(CRef<CTarget> target)
{
    m_target = std::move(target);
    m_handlers = m_target ? m_target->Handlers() : nullptr;
    m_left = m_handlers ? m_handlers->size() : 0;
}

CRef<CHandler> CDispatch::NextHandler(const CEvent& event)
{
    while (m_left > 0) {
        const CRef<CHandler>& handler = (*m_handlers)[--m_left];
        if (!handler->removed && handler->Wants(event))
            return handler;
    }
    return {};
}

OSStatus CDispatch::Continue(CEvent& event)
{
    const auto call = RefOf<EventHandlerCallRef>(*this);
    const bool toAll = (m_options & kEventTargetSendToAllHandlers) != 0;
    OSStatus result = eventNotHandledErr;
    CToolboxLock lock;
    while (m_target) {
        OSStatus answer = eventNotHandledErr;
        bool ofTarget = true;
        if (const CRef<CHandler> handler = NextHandler(event)) {
            lock.unlock();
            answer = handler->proc(call, event.Ref(), handler->userData);
        } else {
            const CRef<CTarget> target = m_target;
            Enter((m_options & kEventTargetDontPropagate) != 0 ? CRef<CTarget>() : target->Outwards());
            lock.unlock();
            answer = target->HandleByDefault(event);
            ofTarget = false;
        }
        if (answer != eventNotHandledErr && !(toAll && ofTarget))
            return answer;
        if (result == eventNotHandledErr)
            result = answer;
        lock.lock();
    }
    return result;
}

CTarget& TargetOf(CTarget& target)
{
    if (target.Handle() == 0)
        Handles().Register(target);
    return target;
}

CTarget& DispatcherTarget()
{
    static auto& target = *new CDispatcherTarget;
    return TargetOf(target);
}

} // namespace

CTarget& ApplicationTarget()
{
    static auto& target = *new CApplicationTarget;
    return TargetOf(target);
}

CTarget* FindTarget(EventTargetRef target) noexcept
{
    const auto number = reinterpret_cast<std::uintptr_t>(target);
    if ((number & CHandleTable::kTargetBit) == 0)
        return nullptr;
    CRecord* const record = Handles().Find(number & ~CHandleTable::kTargetBit);
    return record ? record->AsTarget() : nullptr;
}

bool CHandler::Wants(const CEvent& event) const noexcept
{
    return std::any_of(m_types.begin(), m_types.end(), [&event](const EventTypeSpec& type) {
        return type.eventClass == event.eventClass && type.eventKind == event.kind;
    });
}

CRef<CTarget> CTarget::Outwards()
{
    return CRef<CTarget>::Share(&ApplicationTarget());
}

void CTarget::Install(CHandler& handler)
{
    auto list = std::make_shared<HandlerList>();
    list->reserve((m_handlers ? m_handlers->size() : 0) + 1);
    if (m_handlers)
        *list = *m_handlers;
    list->push_back(CRef<CHandler>::Share(&handler));
    Handles().Register(handler);
    handler.target = TargetRef();
    m_handlers = std::move(list);
}

void CTarget::Remove(CHandler& handler)
{
    auto list = std::make_shared<HandlerList>();
    for (const CRef<CHandler>& other : *m_handlers) {
        if (other.Get() != &handler)
            list->push_back(other);
    }
    handler.removed = true;
    m_handlers = list->empty() ? nullptr : std::move(list);
}

void CTarget::RemoveAllHandlers() noexcept
{
    if (!m_handlers)
        return;
    for (const CRef<CHandler>& handler : *m_handlers) {
        handler->removed = true;
        Handles().Forget(*handler);
    }
    m_handlers = nullptr;
}

OSStatus SendEvent(CEvent& event, CTarget& target, OptionBits options)
{
    const auto kept = CRef<CEvent>::Share(&event); // a handler may release the sender's reference
    CDispatch dispatch(target, event, options);
    return dispatch.Continue(event);
}

OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef)
{
    if (outRef)
        *outRef = nullptr;
    if (!inHandler || (inNumTypes != 0 && !inList))
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CToolboxLock lock;
        CTarget* const target = FindTarget(inTarget);
        if (!target)
            return paramErr;
        const auto handler = CRef<CHandler>::Adopt(new CHandler(inHandler, inList, inNumTypes, inUserData));
        target->Install(*handler);
        if (outRef)
            *outRef = RefOf<EventHandlerRef>(*handler);
        return noErr;
    });
}

OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CToolboxLock lock;
        CHandler* const handler = Find<CHandler>(inHandlerRef);
        CTarget* const target = handler ? FindTarget(handler->target) : nullptr;
        if (!target)
            return paramErr;
        target->Remove(*handler);
        Handles().Forget(*handler);
        return noErr;
    });
}

OSStatus CallNextEventHandler(EventHandlerCallRef inCallRef, EventRef inEvent)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        CToolboxLock lock;
        CDispatch* const dispatch = Find<CDispatch>(inCallRef);
        const CRef<CEvent> event = Share<CEvent>(inEvent);
        if (!dispatch || !event || dispatch->thread != std::this_thread::get_id())
            return paramErr;
        lock.unlock();
        return dispatch->Continue(*event);
    });
}

EventTargetRef GetApplicationEventTarget(void)
{
    return Guarded<EventTargetRef>(nullptr, [] {
        const CToolboxLock lock;
        return ApplicationTarget().TargetRef();
    });
}

EventTargetRef GetEventDispatcherTarget(void)
{
    return Guarded<EventTargetRef>(nullptr, [] {
        const CToolboxLock lock;
        return DispatcherTarget().TargetRef();
    });
}

OSStatus SendEventToEventTarget(EventRef inEvent, EventTargetRef inTarget)
{
    return SendEventToEventTargetWithOptions(inEvent, inTarget, 0);
}

OSStatus SendEventToEventTargetWithOptions(EventRef inEvent, EventTargetRef inTarget, OptionBits inOptions)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        CToolboxLock lock;
        const CRef<CEvent> event = Share<CEvent>(inEvent);
        const CRef<CTarget> target = CRef<CTarget>::Share(FindTarget(inTarget));
        if (!event || !target)
            return paramErr;
        lock.unlock();
        return SendEvent(*event, *target, inOptions);
    });
}
