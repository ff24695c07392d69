// platform/hitoolbox/events/Loop.cpp
//
// Waiting on the desktop, or on an idle one of our own while no window needs a real one.
#include "platform/hitoolbox/events/Loop.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "platform/base/Clock.h"
#include "platform/base/Guard.h"
#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/events/LoopRecord.h"
#include "platform/hitoolbox/events/Queue.h"
#include "platform/hitoolbox/events/Target.h"
#include "platform/hitoolbox/events/Timers.h"

namespace {

std::atomic<std::thread::id> g_thread{std::thread::id()};
std::atomic<std::thread::id> g_pumper{std::thread::id()};
int g_pumps = 0; // nested ones of the pumping thread
std::atomic<bool> g_quitApplication{false};
std::atomic<int> g_quitLoops{0};
// How many ReceiveNextEvent wait for queued events. Event-loop thread only.
int g_receivers = 0;
void (*g_afterWork)() = nullptr;

CLoopRecord& TheLoop()
{
    static auto& loop = *new CLoopRecord;
    if (loop.Handle() == 0)
        Handles().Register(loop);
    return loop;
}

/// Tells DoWhatIsDue that somebody waits for the queued events.
class CReceiving {
public:
    CReceiving() { ++g_receivers; }
    ~CReceiving() { --g_receivers; }
    CReceiving(const CReceiving&) = delete;
    CReceiving& operator=(const CReceiving&) = delete;
};

/// Makes the calling thread the one that pumps, unless another one does.
class CPumping {
public:
    CPumping() noexcept
    {
        const std::thread::id self = std::this_thread::get_id();
        std::thread::id pumper;
        m_entered = g_pumper.compare_exchange_strong(pumper, self) || pumper == self;
        if (m_entered)
            ++g_pumps;
    }
    ~CPumping()
    {
        if (m_entered && --g_pumps == 0)
            g_pumper.store(std::thread::id());
    }
    CPumping(const CPumping&) = delete;
    CPumping& operator=(const CPumping&) = delete;
    explicit operator bool() const noexcept { return m_entered; }

private:
    bool m_entered;
};

/// A wait that may begin anew after each thing handled.
class CWait {
public:
    explicit CWait(double seconds) noexcept : m_end(seconds < 0 ? -1 : Clock::Now() + seconds) {}
    /// Answers the seconds that are left; below 0 for no limit.
    double Left() const noexcept { return m_end < 0 ? -1 : std::max(m_end - Clock::Now(), 0.0); }
    bool Over() const noexcept { return m_end >= 0 && Clock::Now() >= m_end; }

private:
    const double m_end;
};

bool TakeQuit() noexcept
{
    int quits = g_quitLoops.load();
    while (quits > 0 && !g_quitLoops.compare_exchange_weak(quits, quits - 1)) {
    }
    return quits > 0;
}

bool IsForeignThread() noexcept
{
    return g_thread.load() != std::thread::id() && !Loop::IsCurrent();
}

} // namespace

void Loop::Claim() noexcept
{
    g_thread.store(std::this_thread::get_id());
}

void Loop::ClaimIfFree() noexcept
{
    std::thread::id none;
    (void)g_thread.compare_exchange_strong(none, std::this_thread::get_id());
}

bool Loop::IsCurrent() noexcept
{
    return g_thread.load() == std::this_thread::get_id();
}

void Loop::SetAfterWork(void (*work)())
{
    g_afterWork = work;
}

int Loop::DispatchQueued()
{
    int dispatched = 0;
    for (std::size_t left = Queue::Count(); left > 0; --left) {
        const CRef<CEvent> event = Queue::Pull();
        if (!event)
            break;
        CTarget* dispatcher = nullptr;
        {
            const EventTargetRef target = GetEventDispatcherTarget();
            const CToolboxLock lock;
            dispatcher = FindTarget(target);
        }
        (void)SendEvent(*event, *dispatcher); // posted: nobody waits for the answer
        const CToolboxLock lock;
        ReleaseLocked(*event);
        ++dispatched;
    }
    return dispatched;
}

void Loop::DoWhatIsDue()
{
    Claim();
    (void)Timers::FireDue();
    if (g_receivers == 0)
        (void)DispatchQueued();
    if (g_afterWork)
        g_afterWork();
    Desktop::ForLoop().SetDeadline(Timers::UntilNext());
}

int Loop::Pump(double seconds)
{
    const CPumping pumping;
    if (!pumping)
        return -1;
    const CTurn turn(Desktop::ForLoop(), seconds);
    if (!turn)
        return 0; // the process's main loop handles what there is, in another thread
    Claim();
    int handled = Timers::FireDue();
    if (g_afterWork)
        g_afterWork();
    IDesktop& desktop = Desktop::ForLoop();
    const CTurn again(desktop, 0); // it may be another one by now
    if (!again)
        return handled;
    desktop.SetDeadline(Timers::UntilNext());
    const int inputs = desktop.PumpInput(handled > 0 ? 0 : seconds);
    if (g_afterWork)
        g_afterWork();
    return inputs < 0 ? -1 : handled + inputs;
}

bool Loop::RunUntil(const std::function<bool()>& isOver)
{
    const CPumping pumping;
    if (!pumping)
        return false;
    const CTurn turn(Desktop::ForLoop(), -1);
    while (!isOver()) {
        const int dispatched = DispatchQueued();
        if (Pump(dispatched > 0 ? 0 : -1) < 0)
            return false;
    }
    return true;
}

void Loop::Wake() noexcept
{
    Desktop::ForLoop().Wake();
}

OSStatus ReceiveNextEvent(ItemCount inNumTypes, const EventTypeSpec* inList, EventTimeout inTimeout,
                          Boolean inPullEvent, EventRef* outEvent)
{
    if (outEvent)
        *outEvent = nullptr;
    if (!outEvent || (inNumTypes != 0 && !inList) || IsForeignThread())
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CWait wait(inTimeout);
        for (bool last = false;;) {
            {
                const CToolboxLock lock;
                if (const CRef<CEvent> event = Queue::Receive(inList, inNumTypes, inPullEvent != 0)) {
                    *outEvent = event->Ref();
                    return noErr;
                }
            }
            if (TakeQuit() || g_quitApplication.load())
                return eventLoopQuitErr;
            if (last)
                return eventLoopTimedOutErr;
            last = wait.Over();
            const CReceiving receiving;
            if (Loop::Pump(last ? 0 : wait.Left()) < 0)
                return eventLoopQuitErr;
        }
    });
}

void RunApplicationEventLoop(void)
{
    Loop::Claim();
    EventRef event = nullptr;
    while (ReceiveNextEvent(0, nullptr, kEventDurationForever, true, &event) == noErr) {
        (void)SendEventToEventTarget(event, GetEventDispatcherTarget());
        ReleaseEvent(event);
    }
    g_quitApplication.store(false);
}

void QuitApplicationEventLoop(void)
{
    g_quitApplication.store(true);
    Loop::Wake();
}

EventLoopRef GetMainEventLoop(void)
{
    return Guarded<EventLoopRef>(nullptr, [] {
        const CToolboxLock lock;
        return RefOf<EventLoopRef>(TheLoop());
    });
}

EventLoopRef GetCurrentEventLoop(void)
{
    return GetMainEventLoop();
}

OSStatus RunCurrentEventLoop(EventTimeout inTimeout)
{
    if (IsForeignThread())
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CWait wait(inTimeout);
        for (bool last = false;;) {
            if (TakeQuit())
                return eventLoopQuitErr;
            if (last)
                return eventLoopTimedOutErr;
            last = wait.Over();
            const int handled = Loop::DispatchQueued();
            if (Loop::Pump(last || handled > 0 ? 0 : wait.Left()) < 0)
                return eventLoopQuitErr;
        }
    });
}

OSStatus QuitEventLoop(EventLoopRef inEventLoop)
{
    {
        const CToolboxLock lock;
        if (!Find<CLoopRecord>(inEventLoop))
            return paramErr;
    }
    g_quitLoops.fetch_add(1);
    Loop::Wake();
    return noErr;
}
