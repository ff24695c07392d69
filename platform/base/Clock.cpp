// platform/base/Clock.cpp
//
// Reads the system's monotonic clock, or the one that a test drives.
#include "platform/base/Clock.h"

#include <time.h>

#include <atomic>

namespace {

constexpr double kNotDriven = -1;
std::atomic<double> g_driven{kNotDriven};

double SystemTime() noexcept
{
    timespec now = {};
    (void)clock_gettime(CLOCK_MONOTONIC, &now); // cannot fail for this clock
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

double Clock::Now() noexcept
{
    const double driven = g_driven.load();
    return driven >= 0 ? driven : SystemTime();
}

void Clock::Drive() noexcept
{
    double expected = kNotDriven;
    (void)g_driven.compare_exchange_strong(expected, SystemTime()); // driven already: it goes on
}

void Clock::Advance(double seconds) noexcept
{
    double now = g_driven.load();
    while (now >= 0 && !g_driven.compare_exchange_weak(now, now + seconds)) {
    }
}

bool Clock::IsDriven() noexcept
{
    return g_driven.load() >= 0;
}
