// platform/base/Clock.h
//
// The clock of events and timers: seconds since the machine started, unless a test drives it.
#pragma once

namespace Clock {

/// Answers the time. Any thread.
double Now() noexcept;
/// Stops the clock; from now on only Advance moves it. Any thread.
void Drive() noexcept;
/// Moves a driven clock.
void Advance(double seconds) noexcept;
bool IsDriven() noexcept;

} // namespace Clock
