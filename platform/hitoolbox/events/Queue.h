// platform/hitoolbox/events/Queue.h
//
// The one queue of posted events.
#pragma once

#include "platform/hitoolbox/events/Event.h"

namespace Queue {

/// Takes the first event out, with the queue's reference; empty when there is none. Takes the lock.
CRef<CEvent> Pull();
/// Answers how many events are queued. Takes the lock.
std::size_t Count();
/// Finds, and where `pull` says so takes out, the first event of the listed types, of any with no
/// list. With the lock held.
CRef<CEvent> Receive(const EventTypeSpec* types, std::size_t count, bool pull);

} // namespace Queue
