// platform/hitoolbox/events/Event.cpp
//
// Making events, counting their references, and their parameters.
#include "platform/hitoolbox/events/Event.h"

#include <algorithm>
#include <cstring>

#include "platform/base/Clock.h"
#include "platform/base/Guard.h"
#include "platform/corefoundation/String.h"

CRef<CEvent> CEvent::Create(OSType eventClass, UInt32 kind, EventTime when)
{
    auto event = CRef<CEvent>::Adopt(new CEvent(eventClass, kind, when == 0 ? Clock::Now() : when));
    const CToolboxLock lock;
    Handles().Register(*event);
    return event;
}

const CEvent::Parameter* CEvent::Find(EventParamName name) const noexcept
{
    const auto found = std::find_if(m_parameters.begin(), m_parameters.end(),
                                    [name](const Parameter& parameter) { return parameter.name == name; });
    return found == m_parameters.end() ? nullptr : &*found;
}

void CEvent::Set(EventParamName name, EventParamType type, const void* data, std::size_t size)
{
    const auto* const bytes = static_cast<const unsigned char*>(data);
    Parameter parameter = {name, type, {}, {}};
    if (size != 0)
        parameter.bytes.assign(bytes, bytes + size);
    if (type == typeCFStringRef && size == sizeof(CFStringRef)) {
        CFStringRef string = nullptr;
        std::memcpy(&string, data, sizeof string);
        parameter.held = CRef<const CObject>::Share(string);
    }
    if (const Parameter* const old = Find(name))
        m_parameters[static_cast<std::size_t>(old - m_parameters.data())] = std::move(parameter);
    else
        m_parameters.push_back(std::move(parameter));
}

bool CEvent::Get(EventParamName name, EventParamType type, void* data, std::size_t size) const noexcept
{
    const Parameter* const parameter = Find(name);
    if (!parameter || parameter->type != type || parameter->bytes.size() != size)
        return false;
    std::memcpy(data, parameter->bytes.data(), size);
    return true;
}

void ReleaseLocked(CEvent& event) noexcept
{
    if (--event.references == 0)
        Handles().Forget(event);
}

OSStatus CreateEvent(CFAllocatorRef, OSType inClassID, UInt32 inKind, EventTime inWhen, EventAttributes,
                     EventRef* outEvent)
{
    if (!outEvent)
        return paramErr;
    *outEvent = nullptr;
    return Guarded<OSStatus>(memFullErr, [&] {
        *outEvent = CEvent::Create(inClassID, inKind, inWhen)->Ref();
        return noErr;
    });
}

EventRef RetainEvent(EventRef inEvent)
{
    const CToolboxLock lock;
    if (CEvent* const event = Find<CEvent>(inEvent))
        ++event->references;
    return inEvent;
}

void ReleaseEvent(EventRef inEvent)
{
    const CToolboxLock lock;
    if (CEvent* const event = Find<CEvent>(inEvent))
        ReleaseLocked(*event);
}

ItemCount GetEventRetainCount(EventRef inEvent)
{
    const CToolboxLock lock;
    const CEvent* const event = Find<CEvent>(inEvent);
    return event ? event->references : 0;
}

OSType GetEventClass(EventRef inEvent)
{
    const CToolboxLock lock;
    const CEvent* const event = Find<CEvent>(inEvent);
    return event ? event->eventClass : 0;
}

UInt32 GetEventKind(EventRef inEvent)
{
    const CToolboxLock lock;
    const CEvent* const event = Find<CEvent>(inEvent);
    return event ? event->kind : 0;
}

EventTime GetEventTime(EventRef inEvent)
{
    const CToolboxLock lock;
    const CEvent* const event = Find<CEvent>(inEvent);
    return event ? event->time : 0;
}

EventTime GetCurrentEventTime(void)
{
    return Clock::Now();
}

OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType* outActualType, ByteCount inBufferSize, ByteCount* outActualSize,
                           void* outData)
{
    const CToolboxLock lock;
    const CEvent* const event = Find<CEvent>(inEvent);
    if (!event)
        return paramErr;
    const CEvent::Parameter* const parameter = event->Find(inName);
    if (!parameter || (inDesiredType != typeWildCard && inDesiredType != parameter->type))
        return eventParameterNotFoundErr;
    if (outActualType)
        *outActualType = parameter->type;
    if (outActualSize)
        *outActualSize = static_cast<ByteCount>(parameter->bytes.size());
    const std::size_t size = std::min<std::size_t>(inBufferSize, parameter->bytes.size());
    if (outData && size != 0)
        std::memcpy(outData, parameter->bytes.data(), size);
    return noErr;
}

OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType, ByteCount inSize,
                           const void* inDataPtr)
{
    if (inSize != 0 && !inDataPtr)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CToolboxLock lock;
        CEvent* const event = Find<CEvent>(inEvent);
        if (!event)
            return paramErr;
        event->Set(inName, inType, inDataPtr, inSize);
        return noErr;
    });
}
