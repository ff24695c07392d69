// platform/hitoolbox/events/Event.h
//
// The event record: what happened, with its typed parameters.
#pragma once

#include <vector>

#include "platform/hitoolbox/events/Toolbox.h"
#include <HIToolbox/CarbonEvents.h>

class CEvent final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Event;

    /// Makes an event with one reference, the caller's. Takes the lock.
    static CRef<CEvent> Create(OSType eventClass, UInt32 kind, EventTime when = 0);

    CEvent(OSType classId, UInt32 eventKind, EventTime when) noexcept
        : CRecord(kKind), eventClass(classId), kind(eventKind), time(when)
    {
    }

    /// Sets a parameter; throws std::bad_alloc. With the lock held, or before others know the event.
    void Set(EventParamName name, EventParamType type, const void* data, std::size_t size);
    template <typename T>
    void Set(EventParamName name, EventParamType type, const T& value)
    {
        Set(name, type, &value, sizeof value);
    }
    /// Reads a parameter of exactly that type and size. With the lock held.
    template <typename T>
    bool Get(EventParamName name, EventParamType type, T& value) const noexcept
    {
        return Get(name, type, &value, sizeof value);
    }
    bool Get(EventParamName name, EventParamType type, void* data, std::size_t size) const noexcept;

    struct Parameter {
        EventParamName name;
        EventParamType type;
        std::vector<unsigned char> bytes;
        CRef<const CObject> held; // the string that the bytes name
    };
    const Parameter* Find(EventParamName name) const noexcept;

    EventRef Ref() const noexcept { return RefOf<EventRef>(*this); }

    const OSType eventClass;
    const UInt32 kind;
    const EventTime time;
    ItemCount references = 1; // those that calls have handed out
    bool queued = false;

private:
    std::vector<Parameter> m_parameters;
};

/// Gives one of the references back that calls hand out. With the lock held.
void ReleaseLocked(CEvent& event) noexcept;
