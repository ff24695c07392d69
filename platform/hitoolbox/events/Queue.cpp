// platform/hitoolbox/events/Queue.cpp
//
// Posting events from any thread, and taking them out.
#include "platform/hitoolbox/events/Queue.h"

#include <algorithm>
#include <deque>

#include "platform/base/Guard.h"
#include "platform/hitoolbox/events/Loop.h"

namespace {

struct Posted {
    CRef<CEvent> event;
    EventPriority priority;
};

class CQueue final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Queue;
    CQueue() : CRecord(kKind) {}

    std::deque<Posted> posted;
};

CQueue& TheQueue()
{
    static auto& queue = *new CQueue;
    if (queue.Handle() == 0)
        Handles().Register(queue);
    return queue;
}

} // namespace

CRef<CEvent> Queue::Receive(const EventTypeSpec* types, std::size_t count, bool pull)
{
    auto& posted = TheQueue().posted;
    const auto found = std::find_if(posted.begin(), posted.end(), [=](const Posted& one) {
        return count == 0 || std::any_of(types, types + count, [&one](const EventTypeSpec& type) {
                   return type.eventClass == one.event->eventClass && type.eventKind == one.event->kind;
               });
    });
    if (found == posted.end())
        return {};
    CRef<CEvent> event = found->event;
    if (pull) {
        posted.erase(found);
        event->queued = false;
    }
    return event;
}

CRef<CEvent> Queue::Pull()
{
    const CToolboxLock lock;
    return Receive(nullptr, 0, true);
}

std::size_t Queue::Count()
{
    const CToolboxLock lock;
    return TheQueue().posted.size();
}

EventQueueRef GetMainEventQueue(void)
{
    return Guarded<EventQueueRef>(nullptr, [] {
        const CToolboxLock lock;
        return RefOf<EventQueueRef>(TheQueue());
    });
}

EventQueueRef GetCurrentEventQueue(void)
{
    return GetMainEventQueue();
}

OSStatus PostEventToQueue(EventQueueRef inQueue, EventRef inEvent, EventPriority inPriority)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        {
            const CToolboxLock lock;
            CQueue* const queue = Find<CQueue>(inQueue);
            const CRef<CEvent> event = Share<CEvent>(inEvent);
            if (!queue || !event)
                return paramErr;
            if (event->queued)
                return eventAlreadyPostedErr;
            const auto place = std::find_if(queue->posted.begin(), queue->posted.end(),
                                            [=](const Posted& one) { return one.priority < inPriority; });
            queue->posted.insert(place, {event, inPriority});
            event->queued = true;
            ++event->references;
        }
        Loop::Wake();
        return noErr;
    });
}

ItemCount GetNumEventsInQueue(EventQueueRef inQueue)
{
    const CToolboxLock lock;
    const CQueue* const queue = Find<CQueue>(inQueue);
    return queue ? static_cast<ItemCount>(queue->posted.size()) : 0;
}

OSStatus FlushEventQueue(EventQueueRef inQueue)
{
    const CToolboxLock lock;
    CQueue* const queue = Find<CQueue>(inQueue);
    if (!queue)
        return paramErr;
    for (const Posted& one : queue->posted) {
        one.event->queued = false;
        ReleaseLocked(*one.event);
    }
    queue->posted.clear();
    return noErr;
}
