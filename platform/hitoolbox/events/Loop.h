// platform/hitoolbox/events/Loop.h
//
// The event loop: whose thread it is, waiting, and what is due in between. Without the lock.
#pragma once

#include <functional>

namespace Loop {

/// Makes the calling thread the event-loop thread. Called by all that only that thread does.
void Claim() noexcept;
/// The same, where no thread is the event-loop thread yet.
void ClaimIfFree() noexcept;
/// Whether the calling thread is the event-loop thread.
bool IsCurrent() noexcept;

/// Waits for input, a timer or a wake-up, handles it, and brings the screen up to date.
/// @param seconds  the longest wait; 0 polls, below 0 waits without limit.
/// @return how much was handled; -1 when the display is gone for good or another thread pumps.
int Pump(double seconds);
/// Pumps and dispatches until something holds, all of it in the calling thread, whichever runs the
/// process's main loop. Waits for one that is handling an input.
/// @return false when the display is gone for good or another thread pumps.
bool RunUntil(const std::function<bool()>& isOver);
/// Ends a wait, or has the process's main loop do what is due. Any thread.
void Wake() noexcept;
/// Does what is due when a wait ended or the process's main loop comes round: queued events, unless
/// a ReceiveNextEvent is waiting for them, timers, drawing, the next deadline.
void DoWhatIsDue();
/// Dispatches the events that are queued now.
/// @return how many.
int DispatchQueued();

/// Sets what brings the screen up to date, which the loop knows nothing of.
void SetAfterWork(void (*work)());

} // namespace Loop
