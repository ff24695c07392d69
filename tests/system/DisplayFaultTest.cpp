// tests/system/DisplayFaultTest.cpp
//
// The display goes while the information dialog is on it: the server is killed at each step of the
// dialog's life, and the connection is cut at each call that has to do with it. The host lives on, is
// told of the dialog's end once, keeps its settings, and gets no dialog more.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/support/Desk.h"
#include "tests/support/PreferencesSupport.h"

namespace {

int g_eyes = -1;                  // the test's own connection, which does not count
int g_left = 0;                   // calls until the one before which the fault comes; 0 for never
bool g_reads = true;              // whether reads count
std::function<void(int)> g_fault; // takes the connection

void Pass(int descriptor)
{
    if (g_left == 0 || descriptor == g_eyes || --g_left != 0)
        return;
    g_fault(descriptor);
}

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// This program's own names stand before the C library's, for all that it loads: the calls by which
// the display's library writes and reads.
#pragma GCC visibility push(default)
extern "C" {

ssize_t writev(int descriptor, const iovec* parts, int count)
{
    Pass(descriptor);
    return Real<ssize_t(int, const iovec*, int)>("writev")(descriptor, parts, count);
}
ssize_t recvmsg(int descriptor, msghdr* message, int flags)
{
    if (g_reads)
        Pass(descriptor);
    return Real<ssize_t(int, msghdr*, int)>("recvmsg")(descriptor, message, flags);
}

} // extern "C"
#pragma GCC visibility pop

namespace {

IProductManager& Manager()
{
    static const CLoadedBundle& bundle = *new CLoadedBundle;
    return *bundle.Manager();
}

class DisplayFault : public CPreferencesTest {
protected:
    DisplayFault()
        : m_listener(GetApplicationEventTarget(), {{'cvev', 'iend'}}, [this](EventHandlerCallRef, EventRef) {
              ++m_ends;
              return OSStatus{eventNotHandledErr};
          })
    {
    }
    static WindowRef Open()
    {
        Manager().InfoDialog(nullptr, false);
        return GetWindowList();
    }
    // What holds whenever the display has gone.
    void ExpectTheHostLivesOn(int ends)
    {
        EXPECT_TRUE(ServeUntil([] { return CVPump() == kCVNoDesktopErr || CVGetDescriptor() < 0; }));
        EXPECT_EQ(GetWindowList(), nullptr);
        EXPECT_EQ(m_ends, ends);
        EXPECT_EQ(Open(), nullptr) << "a display that has gone does not come back";
        EXPECT_TRUE(Manager().SetRegistryKey("Common", "Key", "value"));
        EXPECT_EQ(GetKey("Common", "Key"), "value");
    }

    int m_ends = 0;
    const CListener m_listener;
};

struct Step {
    const char* name;
    void (*play)(CScreen& screen);
    int ends;
};

void Kill(CScreen& screen)
{
    screen.Server().Signal(SIGKILL);
    (void)screen.Server().Wait();
}

// Kills the server before the `call`-th write from now on.
void KillAt(CScreen& screen, int call)
{
    g_reads = false;
    g_eyes = xcb_get_file_descriptor(screen.Connection());
    g_fault = [&screen](int) {
        Kill(screen);
    };
    g_left = call;
}

WindowRef OpenAndUse(CScreen& screen)
{
    Manager().InfoDialog(nullptr, false);
    const WindowRef window = GetWindowList();
    (void)ActiveOn(screen, window);
    return window;
}

ControlRef KnobBox(WindowRef window)
{
    const ControlID id = {'KNOB', 0};
    ControlRef box = nullptr;
    (void)GetControlByID(window, &id, &box); // gone with the window
    return box;
}

constexpr Step kSteps[] = {
    {"BeforeItOpens",
     [](CScreen& screen) {
         Kill(screen);
         Manager().InfoDialog(nullptr, false);
     },
     0},
    {"AfterTheFirstRequest",
     [](CScreen& screen) {
         KillAt(screen, 2);
         Manager().InfoDialog(nullptr, false);
     },
     0},
    {"BeforeItIsShown",
     [](CScreen& screen) {
         Manager().InfoDialog(nullptr, false);
         Kill(screen);
     },
     1},
    {"WhenItIsShown",
     [](CScreen& screen) {
         (void)OpenAndUse(screen);
         Kill(screen);
     },
     1},
    {"WhileItIsUsed",
     [](CScreen& screen) {
         (void)OpenAndUse(screen);
         screen.Tap(kTabKey);
         screen.Sync();
         Kill(screen);
     },
     1},
    {"WhileItIsDrawn",
     [](CScreen& screen) {
         const WindowRef window = OpenAndUse(screen);
         KillAt(screen, 1);
         SetControl32BitValue(KnobBox(window), 1);
         EXPECT_TRUE(ServeUntil([] { return g_left == 0; }));
     },
     1},
    {"AtOk",
     [](CScreen& screen) {
         const WindowRef window = OpenAndUse(screen);
         SetControl32BitValue(KnobBox(window), 1);
         KillAt(screen, 1);
         g_fault = [&screen](int) {
             if (!Manager().KnobsDragVertical())
                 g_left = 1; // not yet: OK sets the flag and then has the window destroyed
             else
                 Kill(screen);
         };
         screen.Tap(kReturnKey);
         EXPECT_TRUE(ServeUntil([] { return g_left == 0; }));
         EXPECT_EQ(GetKey("Common", "Knobs Drag Vertical"), "yes");
     },
     1},
    {"WhileItCloses",
     [](CScreen& screen) {
         const WindowRef window = OpenAndUse(screen);
         KillAt(screen, 1);
         DisposeWindow(window);
         EXPECT_TRUE(ServeUntil([] { return g_left == 0; }));
     },
     1},
};

class ServerKilled : public DisplayFault, public testing::WithParamInterface<Step> {};

TEST_P(ServerKilled, LeavesTheHostAlive)
{
    EXPECT_EQ(RunInChild([&] {
                  alarm(120);
                  CScreen screen;
                  GetParam().play(screen);
                  g_left = 0;
                  ExpectTheHostLivesOn(GetParam().ends);
                  return 0;
              }),
              0);
}

INSTANTIATE_TEST_SUITE_P(Steps, ServerKilled, testing::ValuesIn(kSteps),
                         [](const testing::TestParamInfo<Step>& step) { return step.param.name; });

// The dialog and a window with texts from the first to the last; input is left to the tests above.
void PlayLife()
{
    Manager().InfoDialog(nullptr, false);
    const WindowRef dialog = GetWindowList();
    (void)CVPump();
    if (!dialog || !IsValidWindowPtr(dialog))
        return;
    const auto serve = [] {
        pollfd wait = {CVGetDescriptor(), POLLIN, 0};
        (void)poll(&wait, 1, 20); // the server's answers, as far as they come
        (void)CVPump();
    };
    for (int round = 0; round < 4; ++round)
        serve();
    SetControl32BitValue(KnobBox(dialog), 1);
    serve();
    HideWindow(dialog);
    serve();
    ShowWindow(dialog);
    SelectWindow(dialog);
    serve();
    EventRef event = nullptr;
    HICommand command = {};
    command.commandID = kHICommandOK;
    EXPECT_EQ(CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, kEventAttributeNone, &event), noErr);
    EXPECT_EQ(SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command), noErr);
    (void)SendEventToEventTarget(event, GetWindowEventTarget(dialog));
    ReleaseEvent(event);
    serve();
}

TEST_F(DisplayFault, CutAtEachCallLeavesTheHostAlive)
{
    ScreenOptions options;
    options.manager = false; // the sooner all is answered
    const CScreen screen(options);
    int calls = 0;
    for (bool cut = true; cut; ++calls) {
        ASSERT_LT(calls, 500);
        const int code = RunInChild([&] {
            alarm(60);
            g_eyes = xcb_get_file_descriptor(screen.Connection());
            g_fault = [](int descriptor) {
                (void)shutdown(descriptor, SHUT_RDWR);
            };
            g_left = calls + 1;
            PlayLife();
            const bool came = g_left == 0;
            g_left = 0;
            if (came && m_ends == 0 && CVPump() == noErr) {
                EXPECT_NE(Open(), nullptr) << "what had not opened yet may open the next time";
            } else if (came) {
                ExpectTheHostLivesOn(m_ends);
                EXPECT_LE(m_ends, 1);
            }
            return came ? 1 : 0;
        });
        EXPECT_TRUE(code == 0 || code == 1) << "call " << calls + 1 << ": " << code;
        cut = code != 0;
        if (HasFailure())
            break;
    }
    RecordProperty("calls", calls);
    EXPECT_GT(calls, 10);
}

} // namespace
