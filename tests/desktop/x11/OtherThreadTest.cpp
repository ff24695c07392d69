// tests/desktop/x11/OtherThreadTest.cpp
//
// Hosts in which another thread runs GLib's default main context: it serves our windows like any
// main loop, but for an alert, which is served by the thread that waits for it.
#include <glib.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <ctime>
#include <thread>

#include "tests/support/Desk.h"

namespace {

double SecondsOf(clockid_t clock)
{
    timespec time = {};
    (void)clock_gettime(clock, &time); // the clock of a thread that lives
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// A thread that runs the context, and a source of its own that shows whether it does.
class CContextThread {
public:
    CContextThread() : m_loop(g_main_loop_new(nullptr, FALSE))
    {
        m_source = g_timeout_source_new(20);
        g_source_set_callback(
            m_source,
            [](gpointer self) -> gboolean {
                ++static_cast<CContextThread*>(self)->m_ticks;
                return G_SOURCE_CONTINUE;
            },
            this, nullptr);
        g_source_attach(m_source, nullptr);
        m_thread = std::thread([this] { g_main_loop_run(m_loop); });
        if (!WaitFor([this] { return Ticks() > 0; }))
            throw std::runtime_error("the context does not run");
    }
    ~CContextThread()
    {
        End();
        g_source_destroy(m_source);
        g_source_unref(m_source);
        g_main_loop_unref(m_loop);
    }
    CContextThread(const CContextThread&) = delete;
    CContextThread& operator=(const CContextThread&) = delete;

    void End()
    {
        g_main_loop_quit(m_loop);
        if (m_thread.joinable())
            m_thread.join();
    }
    int Ticks() const { return m_ticks; }
    std::thread::id Id() const { return m_thread.get_id(); }
    /// What it has worked so far.
    double Seconds()
    {
        clockid_t clock = 0;
        return pthread_getcpuclockid(m_thread.native_handle(), &clock) == 0 ? SecondsOf(clock) : -1;
    }

private:
    std::atomic<int> m_ticks{0};
    GMainLoop* const m_loop;
    GSource* m_source = nullptr;
    std::thread m_thread;
};

/// Answers an alert with the Return key when it has had the keyboard for a while; looks from a timer of ours.
class CUser {
public:
    explicit CUser(CScreen& screen) : m_screen(screen)
    {
        EXPECT_EQ(InstallEventLoopTimer(GetMainEventLoop(), 0, 0.025, Look, this, &m_timer), noErr);
    }
    ~CUser() { (void)RemoveEventLoopTimer(m_timer); }
    CUser(const CUser&) = delete;
    CUser& operator=(const CUser&) = delete;

private:
    static void Look(EventLoopTimerRef, void* self) { static_cast<CUser*>(self)->Look(); }
    void Look()
    {
        constexpr int kPatience = 40;
        if (m_screen.BytesOf(m_screen.Focus(), "WM_CLASS").find("Corvane") != std::string::npos &&
            ++m_looks == kPatience)
            m_screen.Tap(kReturnKey);
    }

    CScreen& m_screen;
    EventLoopTimerRef m_timer = nullptr;
    int m_looks = 0;
};

DialogRef MakeAlert()
{
    DialogRef alert = nullptr;
    EXPECT_EQ(CreateStandardAlert(kAlertNoteAlert, CFSTR("Alert"), nullptr, nullptr, &alert), noErr);
    return alert;
}

TEST(OtherThread, AlertIsServedWhereItWaitsAndNobodySpins)
{
    constexpr double kLittle = 0.3; // seconds of work; the alert stands for one at least
    CScreen& screen = TheScreen();
    CContextThread other;
    DialogRef const alert = MakeAlert();
    std::thread::id heard;
    const CListener listener(GetWindowEventTarget(GetDialogWindow(alert)), {{kEventClassControl, kEventControlHit}},
                             [&](EventHandlerCallRef, EventRef) {
                                 heard = std::this_thread::get_id();
                                 return OSStatus{eventNotHandledErr};
                             });
    const CUser user(screen);
    const int ticks = other.Ticks();
    const double worked = SecondsOf(CLOCK_THREAD_CPUTIME_ID), otherWorked = other.Seconds();
    DialogItemIndex hit = 0;
    EXPECT_EQ(RunStandardAlert(alert, nullptr, &hit), noErr);
    EXPECT_EQ(hit, kAlertStdAlertOKButton);
    EXPECT_EQ(heard, std::this_thread::get_id());
    EXPECT_LT(SecondsOf(CLOCK_THREAD_CPUTIME_ID) - worked, kLittle);
    EXPECT_LT(other.Seconds() - otherWorked, kLittle);
    EXPECT_GT(other.Ticks(), ticks) << "the host's own sources stand still";
}

TEST(OtherThread, ContextThatIsLeftRunsInTheAlert)
{
    CScreen& screen = TheScreen();
    CContextThread other;
    DialogRef const alert = MakeAlert();
    int ticks = 0;
    EventLoopTimerRef timer = nullptr;
    struct Work {
        CContextThread& other;
        int& ticks;
    } work = {other, ticks};
    ASSERT_EQ(InstallEventLoopTimer(
                  GetMainEventLoop(), 0.2, 0,
                  [](EventLoopTimerRef, void* data) {
                      static_cast<Work*>(data)->other.End();
                      static_cast<Work*>(data)->ticks = static_cast<Work*>(data)->other.Ticks();
                  },
                  &work, &timer),
              noErr);
    const CUser user(screen);
    EXPECT_EQ(RunStandardAlert(alert, nullptr, nullptr), noErr);
    EXPECT_GT(ticks, 0);
    EXPECT_GT(other.Ticks(), ticks) << "the host's own sources stand still";
    (void)RemoveEventLoopTimer(timer);
}

TEST(OtherThread, ServesOurWindows)
{
    CScreen& screen = TheScreen();
    const CDialog dialog(Stand::OnScreen);
    const ScreenSpot help = MiddleOn(screen, dialog.Control('HELP'));
    (void)ActiveOn(screen, dialog.Window());
    std::atomic<std::thread::id> heard{std::thread::id()};
    const CListener listener(GetWindowEventTarget(dialog.Window()), {{kEventClassCommand, kEventCommandProcess}},
                             [&](EventHandlerCallRef, EventRef) {
                                 heard = std::this_thread::get_id();
                                 return OSStatus{noErr};
                             });
    CContextThread other;
    screen.Click(help.x, help.y);
    EXPECT_TRUE(WaitFor([&] { return heard.load() == other.Id(); }));
}

} // namespace
