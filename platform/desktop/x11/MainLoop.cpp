// platform/desktop/x11/MainLoop.cpp
//
// One source with one descriptor, so that a foreign loop asks the kernel about one thing only.
//
// GLib lets one thread at a time run a context. While that is another thread than the one that
// pumps, an alert's for instance, both see the same descriptor: whose turn it is serves, and the
// context, in which it would be readable all the time, does without it as long.
#include "platform/desktop/x11/MainLoop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "platform/base/Clock.h"
#include "platform/base/Guard.h"

namespace {

void WatchIn(int epoll, int descriptor)
{
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    (void)epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event); // refused: it is watched already
}

itimerspec SpecOf(double seconds)
{
    itimerspec spec = {};
    const double whole = std::floor(seconds);
    spec.it_value.tv_sec = static_cast<time_t>(whole);
    spec.it_value.tv_nsec = static_cast<long>((seconds - whole) * 1e9);
    return spec;
}

void Drain(int descriptor)
{
    std::uint64_t count = 0;
    (void)!read(descriptor, &count, sizeof count); // empty is as good
}

} // namespace

struct CMainLoop::Source {
    GSource base;
    CMainLoop* loop;
};

CMainLoop::CMainLoop(std::function<void()> serve)
    : m_serve(std::move(serve)),
      m_inner(epoll_create1(EPOLL_CLOEXEC)),
      m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    static GSourceFuncs functions = {nullptr, nullptr, Dispatch, nullptr, nullptr, nullptr};
    WatchIn(m_inner, m_timer);
    WatchIn(m_inner, m_wake);
    GSource* const source = g_source_new(&functions, sizeof(Source));
    m_source = reinterpret_cast<Source*>(source);
    m_source->loop = this;
    g_source_set_name(source, "cvplatform");
    g_source_set_can_recurse(source, TRUE); // an alert runs the loop from within a click
    m_tag = g_source_add_unix_fd(source, m_inner, G_IO_IN);
    g_source_attach(source, nullptr);
}

gboolean CMainLoop::Dispatch(GSource* source, GSourceFunc, gpointer)
{
    CMainLoop& loop = *reinterpret_cast<Source*>(source)->loop;
    if (loop.TakeTurnOrStandBack()) {
        loop.ServeGuarded();
        loop.LeaveTurn();
    }
    return G_SOURCE_CONTINUE;
}

void CMainLoop::ServeGuarded()
{
    Drain(m_timer);
    Guarded(0, [this] {
        m_serve();
        return 0;
    });
}

bool CMainLoop::TakeTurn(double seconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto isFree = [this] {
        return m_turns == 0 || m_turn == std::this_thread::get_id();
    };
    if (seconds < 0)
        m_turnFree.wait(lock, isFree);
    else if (!m_turnFree.wait_for(lock, std::chrono::duration<double>(std::min(seconds, 3600.0)), isFree))
        return false;
    m_turn = std::this_thread::get_id();
    ++m_turns;
    return true;
}

void CMainLoop::LeaveTurn() noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (--m_turns > 0)
        return;
    StepForward();
    m_turnFree.notify_one();
}

void CMainLoop::StepForward()
{
    if (!m_tag)
        m_tag = g_source_add_unix_fd(&m_source->base, m_inner, G_IO_IN);
}

bool CMainLoop::TakeTurnOrStandBack()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_turns == 0 || m_turn == std::this_thread::get_id()) {
        m_turn = std::this_thread::get_id();
        ++m_turns;
        return true;
    }
    if (m_tag)
        g_source_remove_unix_fd(&m_source->base, std::exchange(m_tag, nullptr));
    return false;
}

void CMainLoop::Watch(int descriptor)
{
    WatchIn(m_inner, descriptor);
}

void CMainLoop::Unwatch(int descriptor)
{
    (void)epoll_ctl(m_inner, EPOLL_CTL_DEL, descriptor, nullptr);
}

void CMainLoop::SetTimer(double when)
{
    const itimerspec spec = when < 0 ? itimerspec{} : SpecOf(std::max(when, 1e-9)); // all zero disarms
    (void)timerfd_settime(m_timer, TFD_TIMER_ABSTIME, &spec, nullptr);
}

void CMainLoop::Wake() noexcept
{
    const std::uint64_t one = 1;
    (void)!write(m_wake, &one, sizeof one); // full is as good
}

bool CMainLoop::TakeWake()
{
    std::uint64_t count = 0;
    return read(m_wake, &count, sizeof count) > 0;
}

void CMainLoop::Run(double seconds, const std::function<bool()>& done)
{
    if (seconds == 0 && g_main_depth() > 0) {
        m_serve(); // we are called from a loop that serves us; its other sources are not ours to run
        return;
    }
    GMainContext* const context = g_main_context_default();
    if (!g_main_context_acquire(context))
        return RunBeside(context, seconds, done);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        StepForward(); // the thread that ran it may have gone during our turn
    }
    RunContext(context, seconds, done);
    if (m_outer >= 0)
        SyncOuter();
    g_main_context_release(context);
}

void CMainLoop::RunBeside(GMainContext* context, double seconds, const std::function<bool()>& done)
{
    const double end = Clock::Now() + seconds;
    const auto isOver = [&] {
        return done() || (seconds >= 0 && Clock::Now() >= end);
    };
    do {
        constexpr double kLongest = 3600;
        const double left = std::clamp(end - Clock::Now(), 0.0, kLongest);
        pollfd inner = {m_inner, POLLIN, 0};
        if (poll(&inner, 1, seconds < 0 ? -1 : static_cast<int>(std::ceil(left * 1000))) > 0)
            ServeGuarded();
        if (g_main_context_acquire(context)) { // the other thread has done with it: its sources are to run again
            g_main_context_release(context);
            return;
        }
    } while (!isOver());
}

void CMainLoop::RunContext(GMainContext* context, double seconds, const std::function<bool()>& done)
{
    if (seconds == 0) {
        // What is due runs to its end, but a source that is always due does not keep the host here.
        constexpr int kMostRounds = 16;
        for (int round = 0; round < kMostRounds && g_main_context_iteration(context, FALSE); ++round) {
        }
        return;
    }
    GSource* end = nullptr;
    bool expired = false;
    if (seconds > 0) {
        end = g_timeout_source_new(0);
        g_source_set_ready_time(end, g_get_monotonic_time() + static_cast<gint64>(seconds * 1e6));
        g_source_set_callback(
            end,
            [](gpointer flag) -> gboolean {
                *static_cast<bool*>(flag) = true;
                return G_SOURCE_REMOVE;
            },
            &expired, nullptr);
        g_source_attach(end, context);
    }
    while (!done() && !expired)
        (void)g_main_context_iteration(context, TRUE);
    if (end) {
        g_source_destroy(end);
        g_source_unref(end);
    }
}

int CMainLoop::Descriptor()
{
    if (m_outer < 0) {
        m_outer = epoll_create1(EPOLL_CLOEXEC);
        m_outerTimer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
        WatchIn(m_outer, m_outerTimer);
        WatchIn(m_outer, m_inner);
    }
    GMainContext* const context = g_main_context_default();
    if (g_main_context_acquire(context)) {
        SyncOuter();
        g_main_context_release(context);
    }
    return m_outer;
}

void CMainLoop::SyncOuter()
{
    GMainContext* const context = g_main_context_default();
    gint priority = 0, timeout = -1;
    const bool ready = g_main_context_prepare(context, &priority) != FALSE;
    std::vector<GPollFD> polled(16);
    for (;;) {
        const int count =
            g_main_context_query(context, G_MAXINT, &timeout, polled.data(), static_cast<gint>(polled.size()));
        const bool fits = static_cast<std::size_t>(count) <= polled.size();
        polled.resize(static_cast<std::size_t>(count));
        if (fits)
            break;
    }
    std::vector<int> watched;
    for (const GPollFD& entry : polled)
        if ((entry.events & G_IO_IN) != 0 && entry.fd != m_inner)
            watched.push_back(entry.fd);
    for (const int before : m_outerWatched)
        if (std::find(watched.begin(), watched.end(), before) == watched.end())
            (void)epoll_ctl(m_outer, EPOLL_CTL_DEL, before, nullptr); // closed ones are gone already
    for (const int now : watched)
        WatchIn(m_outer, now);
    m_outerWatched = std::move(watched);
    // Preparing has to be followed by checking before anybody prepares again; nothing is polled.
    for (GPollFD& entry : polled)
        entry.revents = 0;
    (void)g_main_context_check(context, G_MAXINT, polled.data(), static_cast<gint>(polled.size()));
    Drain(m_outerTimer);
    const double wait = ready ? 0 : timeout / 1000.0;
    const itimerspec spec = ready || timeout >= 0 ? SpecOf(std::max(wait, 1e-9)) : itimerspec{};
    (void)timerfd_settime(m_outerTimer, 0, &spec, nullptr);
}
