// platform/hitoolbox/events/Target.h
//
// Targets of events, the handlers that stand on them, and the way of an event through both.
#pragma once

#include <memory>
#include <thread>
#include <vector>

#include "platform/hitoolbox/events/Event.h"

class CHandler final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Handler;

    CHandler(EventHandlerUPP procedure, const EventTypeSpec* types, std::size_t count, void* data)
        : CRecord(kKind), proc(procedure), userData(data), m_types(types, types + count)
    {
    }

    bool Wants(const CEvent& event) const noexcept;

    const EventHandlerUPP proc;
    void* const userData;
    EventTargetRef target = nullptr; // where it stands
    bool removed = false;

private:
    const std::vector<EventTypeSpec> m_types;
};

/// Where handlers stand; windows, controls and the application are targets. With the lock held.
class CTarget : public CRecord {
public:
    CTarget* AsTarget() noexcept override { return this; }
    EventTargetRef TargetRef() const noexcept
    {
        return reinterpret_cast<EventTargetRef>(Handle() ? Handle() | CHandleTable::kTargetBit : 0);
    }

    /// Answers the target outwards of this one; empty at the end.
    virtual CRef<CTarget> Outwards();
    /// Answers the target that stands for this one; itself unless it forwards.
    virtual CRef<CTarget> Resolve(const CEvent&) { return CRef<CTarget>::Share(this); }
    /// Does what is left to do when no handler on the target has answered. Without the lock.
    virtual OSStatus HandleByDefault(const CEvent&) { return eventNotHandledErr; }

    void Install(CHandler& handler);
    void Remove(CHandler& handler);
    /// Makes all handlers' references stale; running ones end by themselves.
    void RemoveAllHandlers() noexcept;

    using HandlerList = std::vector<CRef<CHandler>>;
    /// The handlers, the oldest first; null for none. Replaced when it changes, never changed, so
    /// that an event under way keeps the list that it began with.
    const std::shared_ptr<const HandlerList>& Handlers() const noexcept { return m_handlers; }

protected:
    explicit CTarget(RecordKind kind) noexcept : CRecord(kind) {}

private:
    std::shared_ptr<const HandlerList> m_handlers;
};

/// Answers the target behind a reference, or null. With the lock held.
CTarget* FindTarget(EventTargetRef target) noexcept;
/// Answers the application's target. With the lock held.
CTarget& ApplicationTarget();

/// Sends an event. Without the lock.
OSStatus SendEvent(CEvent& event, CTarget& target, OptionBits options = 0);
