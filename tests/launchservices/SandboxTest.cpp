// tests/launchservices/SandboxTest.cpp
//
// Launching through a session bus: what has no application in a sandbox goes to the desktop's
// portal, and an application that only the bus can start is started by it.
#include <CVPlatform/CVPlatform.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/launchservices/Viewers.h"

namespace {

using testing::IsEmpty;
using testing::SizeIs;

// A session bus of the test's own, which starts the services that it has entries for.
class CSessionBus {
public:
    explicit CSessionBus(const std::vector<std::string>& services)
    {
        for (const std::string& name : services)
            WriteFile(m_folder / ("services/" + name + ".service"),
                      "[D-BUS Service]\nName=" + name + "\nExec=" CV_TEST_BIN_DIR "/launchservices/desktopservice " +
                          m_folder.Path() + " " + name + "\n");
        WriteFile(m_folder / "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + (m_folder / "bus") +
                                             "</listen><auth>EXTERNAL</auth><servicedir>" + (m_folder / "services") +
                                             "</servicedir><policy context='default'><allow send_destination='*'/>"
                                             "<allow own='*'/><allow eavesdrop='true'/></policy></busconfig>");
        int ready[2] = {-1, -1};
        if (pipe2(ready, O_CLOEXEC) != 0)
            return;
        const std::string config = "--config-file=" + (m_folder / "bus.conf");
        m_daemon = fork();
        if (m_daemon == 0) {
            (void)fcntl(ready[1], F_SETFD, 0); // the one that it inherits
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), 2);
            const std::string print = "--print-address=" + std::to_string(ready[1]);
            execlp("dbus-daemon", "dbus-daemon", config.c_str(), "--nofork", print.c_str(), nullptr);
            _exit(127);
        }
        close(ready[1]);
        char byte = 0;
        m_runs = read(ready[0], &byte, 1) == 1; // it prints when it listens
        close(ready[0]);
    }
    ~CSessionBus()
    {
        if (m_daemon > 0) {
            kill(m_daemon, SIGTERM);
            waitpid(m_daemon, nullptr, 0);
        }
    }
    CSessionBus(const CSessionBus&) = delete;
    CSessionBus& operator=(const CSessionBus&) = delete;

    bool Runs() const { return m_runs; }
    std::string Address() const { return "unix:path=" + (m_folder / "bus"); }
    std::string Asked() const { return FileExists(m_folder / "asked") ? ReadFile(m_folder / "asked") : ""; }
    void AnswerWith(const std::string& number) const { WriteFile(m_folder / "answer", number); }

private:
    const CTemporaryFolder m_folder;
    pid_t m_daemon = -1;
    bool m_runs = false;
};

void Open(const std::string& address)
{
    const CFURLRef url = address[0] == '/' ? MakeFileUrl(address) : MakeUrl(address);
    EXPECT_EQ(LSOpenCFURLRef(url, nullptr), noErr);
    CFRelease(url);
    EXPECT_TRUE(CVFinishLaunches(60));
}

class Sandbox : public testing::Test {
protected:
    Sandbox() : bus({"org.freedesktop.portal.Desktop", "org.example.On-bus"}) {}
    void SetUp() override { ASSERT_TRUE(bus.Runs()); }

    const CSessionBus bus;
    CViewers viewers;
    const CEnvironment address{"DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str()};
    const CEnvironment sandboxed{"GTK_USE_PORTAL", "1"};
    const CTemporaryFolder folder;
};

TEST_F(Sandbox, HandsPagesToThePortalAsOpenFiles)
{
    const std::string page = folder / "a b%20$(x)\xC3\xA4.html";
    WriteFile(page, "x");
    const auto visits = viewers.VisitsOf([&] {
        EXPECT_TRUE(CVLaunchesThroughPortal());
        Open(page);
    });
    EXPECT_EQ(bus.Asked(), "OpenFile " + page + "\n");
    EXPECT_THAT(visits, IsEmpty());
}

TEST_F(Sandbox, HandsAddressesToThePortalByName)
{
    (void)viewers.VisitsOf([] { Open("https://example.org/?a=1&b=2"); });
    EXPECT_EQ(bus.Asked(), "OpenURI https://example.org/?a=1&b=2\n");
}

TEST_F(Sandbox, StartsTheApplicationThatIsInsideItself)
{
    viewers.Install("com.apple.HelpViewer");
    const auto visits = viewers.VisitsOf([] {
        const CLoadedBundle loaded;
        loaded.Manager()->OpenHelp(nullptr, 300);
        EXPECT_TRUE(CVFinishLaunches(60));
    });
    EXPECT_THAT(visits, SizeIs(1));
    EXPECT_EQ(bus.Asked(), "");
}

TEST_F(Sandbox, OpensHelpThroughThePortal)
{
    (void)viewers.VisitsOf([] {
        const CLoadedBundle loaded;
        loaded.Manager()->OpenHelp(nullptr, 300);
        EXPECT_TRUE(CVFinishLaunches(60));
    });
    EXPECT_EQ(bus.Asked(), "OpenFile " + BuiltBundle() + "/Contents/Resources/en.lproj/Quillets/VST/knobs.html\n");
}

TEST_F(Sandbox, TakesTheUsersRefusalForAnAnswer)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "x-scheme-handler/https");
    bus.AnswerWith("1");
    EXPECT_THAT(viewers.VisitsOf([] { Open("https://example.org/"); }), IsEmpty());
}

TEST_F(Sandbox, FallsBackToAnApplicationInsideWhereThePortalFails)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "x-scheme-handler/https");
    bus.AnswerWith("2");
    EXPECT_THAT(viewers.VisitsOf([] { Open("https://example.org/"); }), SizeIs(1));
}

TEST_F(Sandbox, IsQuietWithoutABus)
{
    const CEnvironment nowhere("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    testing::internal::CaptureStderr();
    EXPECT_THAT(viewers.VisitsOf([] { Open("https://example.org/"); }), IsEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Sandbox, IsQuietWithoutAPortal)
{
    const CSessionBus empty({});
    ASSERT_TRUE(empty.Runs());
    const CEnvironment other("DBUS_SESSION_BUS_ADDRESS", empty.Address().c_str());
    testing::internal::CaptureStderr();
    EXPECT_THAT(viewers.VisitsOf([] { Open("https://example.org/"); }), IsEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Sandbox, HasTheBusStartAnApplicationWithoutACommandLine)
{
    const CEnvironment notSandboxed("GTK_USE_PORTAL", nullptr);
    viewers.InstallLine("org.example.On-bus", "", "DBusActivatable=true");
    viewers.MakeDefault("org.example.On-bus", "x-scheme-handler/https");
    const auto visits = viewers.VisitsOf([] { Open("https://example.org/%20"); });
    EXPECT_EQ(bus.Asked(), "Open https://example.org/%20\n");
    EXPECT_THAT(visits, IsEmpty());
}

} // namespace
