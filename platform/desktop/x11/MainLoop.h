// platform/desktop/x11/MainLoop.h
//
// Hangs the desktop in GLib's default main context, and lets a host with a loop of its own serve
// that context through one descriptor.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <glib.h>

class CMainLoop {
public:
    /// @param serve  does all the work there is; may pump.
    explicit CMainLoop(std::function<void()> serve);
    CMainLoop(const CMainLoop&) = delete;
    CMainLoop& operator=(const CMainLoop&) = delete;

    void Watch(int descriptor);
    void Unwatch(int descriptor);
    /// Has `serve` called at a time of the event clock; below 0 never.
    void SetTimer(double when);
    /// Has `serve` called soon. Any thread.
    void Wake() noexcept;
    /// Answers whether it was woken since the last question.
    bool TakeWake();
    /// Runs the main context; where another thread does, serves what is ours beside it.
    /// @param seconds  0 runs what is due; above, also waits so long for `done`; below without end. May
    ///                 return earlier when the context is to be had that was not.
    void Run(double seconds, const std::function<bool()>& done);
    /// See IDesktop.
    bool TakeTurn(double seconds);
    void LeaveTurn() noexcept;
    /// Answers a descriptor that is readable while the context has something to do; -1 without.
    int Descriptor();

private:
    static gboolean Dispatch(GSource* source, GSourceFunc, gpointer);
    void ServeGuarded();
    void RunContext(GMainContext* context, double seconds, const std::function<bool()>& done);
    void RunBeside(GMainContext* context, double seconds, const std::function<bool()>& done);
    /// Takes the turn if it is free; else takes our descriptor out of the context until it is.
    bool TakeTurnOrStandBack();
    /// Puts it back; with the mutex held.
    void StepForward();
    /// Has the outer descriptor watch what the context watches now.
    void SyncOuter();

    struct Source;
    const std::function<void()> m_serve;
    int m_inner = -1; ///< Readable when the display, the timer or a wake-up is.
    int m_timer = -1;
    int m_wake = -1;
    int m_outer = -1; ///< Readable when anything in the context is; made when somebody asks.
    int m_outerTimer = -1;
    std::vector<int> m_outerWatched;
    Source* m_source = nullptr;

    std::mutex m_mutex; ///< Guards what follows.
    std::condition_variable m_turnFree;
    std::thread::id m_turn;   ///< Whose turn it is, while there are turns.
    int m_turns = 0;          ///< Nested ones of that thread.
    gpointer m_tag = nullptr; ///< Our descriptor in the context; null while that stands back.
};
