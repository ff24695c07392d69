// platform/hitoolbox/events/Timers.cpp
//
// Timers by the time when they are due. A repeating one that comes late does not catch up: the
// times that passed meanwhile are left out.
#include "platform/hitoolbox/events/Timers.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "platform/base/Clock.h"
#include "platform/base/Forever.h"
#include "platform/base/Guard.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/events/LoopRecord.h"
#include "platform/hitoolbox/events/Toolbox.h"

namespace {

class CTimer;
using Schedule = std::multimap<double, CRef<CTimer>>;

class CTimer final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Timer;
    CTimer(EventLoopTimerUPP procedure, void* data, double every) noexcept
        : CRecord(kKind), proc(procedure), userData(data), interval(every)
    {
    }

    const EventLoopTimerUPP proc;
    void* const userData;
    const double interval; // 0 fires once
    bool kept = true;      // somebody holds the reference and removes it
    bool scheduled = false;
    Schedule::iterator place;
};

Schedule& TheSchedule()
{
    static CForever<Schedule> schedule;
    return *schedule;
}

void Enter(CTimer& timer, double due)
{
    timer.place = TheSchedule().emplace(due, CRef<CTimer>::Share(&timer));
    timer.scheduled = true;
}

// Takes the first timer that was due at `now` out and schedules its next time.
CRef<CTimer> TakeDue(double now)
{
    Schedule& schedule = TheSchedule();
    if (schedule.empty() || schedule.begin()->first > now)
        return {};
    const double due = schedule.begin()->first;
    CRef<CTimer> timer = schedule.begin()->second;
    schedule.erase(schedule.begin());
    timer->scheduled = false;
    if (timer->interval > 0)
        Enter(*timer, due + timer->interval * (std::floor((now - due) / timer->interval) + 1));
    return timer;
}

} // namespace

int Timers::FireDue()
{
    const double now = Clock::Now();
    int fired = 0;
    CToolboxLock lock;
    while (const CRef<CTimer> timer = TakeDue(now)) {
        const auto reference = RefOf<EventLoopTimerRef>(*timer);
        lock.unlock();
        timer->proc(reference, timer->userData);
        ++fired;
        lock.lock();
        if (!timer->kept && !timer->scheduled)
            Handles().Forget(*timer);
    }
    return fired;
}

double Timers::UntilNext()
{
    const CToolboxLock lock;
    const Schedule& schedule = TheSchedule();
    return schedule.empty() ? -1 : std::max(schedule.begin()->first - Clock::Now(), 0.0);
}

OSStatus InstallEventLoopTimer(EventLoopRef inEventLoop, EventTimerInterval inFireDelay, EventTimerInterval inInterval,
                               EventLoopTimerUPP inTimerProc, void* inTimerData, EventLoopTimerRef* outTimer)
{
    if (outTimer)
        *outTimer = nullptr;
    if (!inTimerProc || !std::isfinite(inFireDelay) || !std::isfinite(inInterval) || inInterval < 0)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        {
            const CToolboxLock lock;
            if (!Find<CLoopRecord>(inEventLoop))
                return paramErr;
            // Intervals below a microsecond would fire without end.
            const double interval = inInterval == 0 ? 0 : std::max(inInterval, 1e-6);
            const auto timer = CRef<CTimer>::Adopt(new CTimer(inTimerProc, inTimerData, interval));
            timer->kept = outTimer != nullptr;
            Handles().Register(*timer);
            if (inFireDelay >= 0)
                Enter(*timer, Clock::Now() + inFireDelay);
            if (outTimer)
                *outTimer = RefOf<EventLoopTimerRef>(*timer);
        }
        Loop::Wake();
        return noErr;
    });
}

OSStatus RemoveEventLoopTimer(EventLoopTimerRef inTimer)
{
    const CToolboxLock lock;
    const CRef<CTimer> timer = Share<CTimer>(inTimer);
    if (!timer)
        return paramErr;
    if (timer->scheduled)
        TheSchedule().erase(timer->place);
    timer->scheduled = false;
    Handles().Forget(*timer);
    return noErr;
}
