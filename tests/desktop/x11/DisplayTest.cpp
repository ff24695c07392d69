// tests/desktop/x11/DisplayTest.cpp
//
// Displays that are not there, that refuse, and that go while windows are open: statuses, a sentence
// for people, and a process that lives on. Each in a process of its own: it has one display.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/Desk.h"

namespace {

using testing::HasSubstr;

std::string Problem()
{
    CFStringRef problem = CVCopyDesktopProblem();
    std::string text = TextOf(problem);
    if (problem)
        CFRelease(problem);
    return text;
}

OSStatus MakeWindow()
{
    const Rect content = {0, 0, 100, 100};
    WindowRef window = nullptr;
    const OSStatus status = CreateNewWindow(kDocumentWindowClass, kWindowNoAttributes, &content, &window);
    EXPECT_EQ(window != nullptr, status == noErr);
    return status;
}

DialogRef MakeAlert(OSStatus expected)
{
    CFStringRef text = MakeString("Alert");
    DialogRef alert = nullptr;
    EXPECT_EQ(CreateStandardAlert(kAlertNoteAlert, text, nullptr, nullptr, &alert), expected);
    CFRelease(text);
    return alert;
}

void ExpectNoWindows()
{
    EXPECT_EQ(MakeWindow(), kCVNoDesktopErr);
    EXPECT_EQ(MakeAlert(kCVNoDesktopErr), nullptr);
    EXPECT_EQ(CVGetDescriptor(), -1);
    const CLoadedBundle component; // which stays quiet
    component.Manager()->InfoDialog(nullptr, false);
}

/// Fires a function once.
class CTimer {
public:
    CTimer(double seconds, std::function<void()> work) : m_work(std::move(work))
    {
        EXPECT_EQ(InstallEventLoopTimer(GetMainEventLoop(), seconds, 0, Fire, this, &m_timer), noErr);
    }
    ~CTimer() { (void)RemoveEventLoopTimer(m_timer); }
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

private:
    static void Fire(EventLoopTimerRef, void* self) { static_cast<CTimer*>(self)->m_work(); }

    std::function<void()> m_work;
    EventLoopTimerRef m_timer = nullptr;
};

TEST(Display, NoneIsAStatus)
{
    EXPECT_EQ(RunInChild([] {
                  ExpectNoWindows();
                  EXPECT_THAT(Problem(), HasSubstr("no display"));
                  return 0;
              }),
              0);
}

TEST(Display, OneThatRefusesIsAStatus)
{
    EXPECT_EQ(RunInChild([] {
                  const CTemporaryFolder folder;
                  sockaddr_un address = {};
                  address.sun_family = AF_UNIX;
                  const std::string path = folder / "socket";
                  path.copy(address.sun_path, sizeof address.sun_path - 1);
                  const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
                  if (bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
                      listen(server, 8) != 0)
                      return 1;
                  const pid_t refuser = fork();
                  if (refuser == 0) {
                      for (;;) {
                          // Failed, a reason of four bytes, version 11.0, one word more.
                          constexpr unsigned char kRefusal[] = {0, 4, 11, 0, 0, 0, 1, 0, 'n', 'o', '!', '\n'};
                          char question[64];
                          const int client = accept(server, nullptr, nullptr);
                          (void)!read(client, question, sizeof question);
                          (void)!write(client, kRefusal, sizeof kRefusal);
                          close(client);
                      }
                  }
                  const CEnvironment display("DISPLAY", ("unix:" + path).c_str());
                  ExpectNoWindows();
                  EXPECT_THAT(Problem(), HasSubstr("no display"));
                  kill(refuser, SIGKILL);
                  return 0;
              }),
              0);
}

TEST(Display, OneThatComesLaterIsUsed)
{
    EXPECT_EQ(RunInChild([] {
                  EXPECT_EQ(MakeWindow(), kCVNoDesktopErr);
                  CScreen screen;
                  EXPECT_EQ(MakeWindow(), noErr);
                  EXPECT_EQ(Problem(), "(null)");
                  return 0;
              }),
              0);
}

TEST(Display, WindowsGoWithItAndTheProcessLivesOn)
{
    EXPECT_EQ(RunInChild([] {
                  CScreen screen;
                  const CDialog dialog(Stand::OnScreen);
                  (void)ActiveOn(screen, dialog.Window());
                  int disposals = 0;
                  const CListener listener(GetWindowEventTarget(dialog.Window()),
                                           {{kEventClassWindow, kEventWindowDispose}},
                                           [&](EventHandlerCallRef, EventRef) {
                                               ++disposals;
                                               return OSStatus{eventNotHandledErr};
                                           });
                  (void)screen.Server().End();
                  // Before the loss is noticed nothing of this may end the process.
                  dialog.SetText('EDIT', 0, "text");
                  HideWindow(dialog.Window());
                  ShowWindow(dialog.Window());
                  SelectWindow(dialog.Window());
                  EXPECT_TRUE(ServeUntil([&] { return disposals > 0; }));
                  EXPECT_EQ(disposals, 1);
                  EXPECT_FALSE(IsValidWindowPtr(dialog.Window()));
                  EXPECT_EQ(CVPump(), kCVNoDesktopErr);
                  ExpectNoWindows();
                  EXPECT_THAT(Problem(), HasSubstr("gone"));
                  bool fired = false;
                  const CTimer timer(0.01, [&] { fired = true; });
                  EXPECT_TRUE(ServeUntil([&] { return fired; })) << "timers end with the display";
                  _exit(testing::Test::HasFailure() ? 99 : 0); // the dialog is gone, which its owner does not know
                  return 0;
              }),
              0);
}

TEST(Display, OpenMenuGoesWithIt)
{
    EXPECT_EQ(RunInChild([] {
                  CScreen screen;
                  const CDataBundle bundle("windows");
                  WindowRef const window = BuildWindow(bundle.Get(), "Popup", "Popup");
                  ShowWindow(window);
                  SelectWindow(window);
                  const ScreenWindow shown = ActiveOn(screen, window);
                  const std::uint32_t before = screen.PixelAt(shown.x + 30, shown.y + 100);
                  screen.Click(shown.x + 60, shown.y + 30);
                  EXPECT_TRUE(ServeUntil([&] { return screen.PixelAt(shown.x + 30, shown.y + 100) != before; }));
                  (void)screen.Server().End();
                  EXPECT_TRUE(ServeUntil([&] { return !IsValidWindowPtr(window); }));
                  EXPECT_EQ(CVPump(), kCVNoDesktopErr);
                  return 0;
              }),
              0);
}

TEST(Display, AlertEndsWithIt)
{
    EXPECT_EQ(RunInChild([] {
                  CScreen screen;
                  DialogRef const alert = MakeAlert(noErr);
                  const CTimer timer(0.1, [&] { (void)screen.Server().End(); });
                  DialogItemIndex hit = 77;
                  const OSStatus status = RunStandardAlert(alert, nullptr, &hit);
                  EXPECT_TRUE(status == kCVNoDesktopErr || (status == noErr && hit == 0)) << status << " " << hit;
                  EXPECT_EQ(GetDialogWindow(alert), nullptr);
                  ExpectNoWindows();
                  return 0;
              }),
              0);
}

TEST(Display, ApplicationsLoopEndsWithIt)
{
    EXPECT_EQ(RunInChild([] {
                  CScreen screen;
                  WindowRef window = nullptr;
                  const Rect content = {0, 0, 100, 100};
                  EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, kWindowNoAttributes, &content, &window), noErr);
                  ShowWindow(window);
                  const CTimer timer(0.1, [&] { (void)screen.Server().End(); });
                  RunApplicationEventLoop();
                  EXPECT_FALSE(IsValidWindowPtr(window));
                  return 0;
              }),
              0);
}

} // namespace
