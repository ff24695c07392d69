// platform/hitoolbox/events/Timers.h
//
// Timers of the event loop. Without the lock.
#pragma once

namespace Timers {

/// Fires the timers that are due now, each once at most.
/// @return how many.
int FireDue();
/// Answers the seconds until the next timer is due, 0 when one is; below 0 for none.
double UntilNext();

} // namespace Timers
