// tests/system/DescriptorFaultTest.cpp
//
// Hosts run out of file descriptors. Each use of the component finds none left, one, two and so on
// until it has all it needs, each time in a process of its own: nothing may crash, hang or be lost,
// and once there are descriptors again everything works again.
#include <CVPlatform/CVPlatform.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <thread>

#include "tests/support/PreferencesSupport.h"
#include "tests/support/Shortage.h"
#if CV_MODULES
#include "tests/launchservices/Viewers.h"
#include "tests/support/Screen.h"
#endif

namespace {

constexpr int kWorked = 10; // what a child answers when the use did all it had to
constexpr int kMostNeeded = 200;
constexpr int kFewest = CV_SANITIZED ? 8 : 0; // a checker of types takes some to look at an object

/// What `use` needs is done by `prepare`, with descriptors; `worked` says whether the last use did.
struct Scenario {
    std::function<void()> prepare;
    std::function<void()> use;
    std::function<bool()> worked;
};

/// Calls `check` after each; answers how many descriptors the use needs.
int TryEach(const Scenario& scenario, const std::function<void(bool worked)>& check = {})
{
    const char* const first = std::getenv("FAULT_AT"); // for who looks for the reason
    for (int left = first ? std::atoi(first) : kFewest;; ++left) {
        const int code = RunInChild([&] {
            alarm(60);
            scenario.prepare();
            {
                const CShortage shortage(left);
                scenario.use();
            }
            const bool worked = scenario.worked();
            scenario.use();
            EXPECT_TRUE(scenario.worked()) << "not even with descriptors again";
            return worked ? kWorked : 0;
        });
        EXPECT_TRUE(code == 0 || code == kWorked) << left << " left: " << code;
        if (check)
            check(code == kWorked);
        if (code == kWorked || left > kMostNeeded || testing::Test::HasFailure()) {
            testing::Test::RecordProperty("needed", left);
            return left;
        }
    }
}

class DescriptorFault : public CPreferencesTest {};

IProductManager& Manager()
{
    static const CLoadedBundle& bundle = *new CLoadedBundle;
    return *bundle.Manager();
}

void LoadManager()
{
    (void)Manager();
}

// A setting as the last use read it.
std::string g_read;

void ReadKey()
{
    char value[20] = "as it was";
    g_read = Manager().GetRegistryKey("Common", "Key", value, sizeof value) ? value : "(none)";
    EXPECT_TRUE(g_read != "(none)" || std::string_view(value) == "as it was") << value;
}

// What was changed within a tick of the clock is read again in any case.
void AwaitTickOf(const std::string& file)
{
    constexpr auto kTick = std::chrono::milliseconds(50);
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    const auto changed = std::chrono::seconds(status.st_ctim.tv_sec) + std::chrono::nanoseconds(status.st_ctim.tv_nsec);
    std::this_thread::sleep_until(std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(changed + kTick)));
}

bool g_shown = false;
std::string g_picture;

// The dialog opens and ends. A picture of it tells whether it has the fonts it should have; there is
// none where the file cannot be written.
void UseDialog(const std::string& file)
{
    Manager().InfoDialog(nullptr, false);
    const WindowRef window = GetWindowList();
    (void)CVPump();
    g_shown = window && IsWindowVisible(window);
    g_picture.clear();
    if (CVSaveWindowPicture(window, file.c_str(), 1, false) == noErr)
        g_picture = ReadFile(file);
    if (window)
        DisposeWindow(window);
    (void)CVPump();
    EXPECT_FALSE(GetWindowList());
}

} // namespace

TEST_F(DescriptorFault, WhileTheBundleIsLoaded)
{
    ASSERT_TRUE(SetKey("Common", "Knobs Drag Vertical", "yes"));
    bool worked = false;
    const auto load = [&] {
        const CLoadedBundle loaded;
        IProductManager* const manager = loaded.Manager();
        worked = manager && manager->KnobsDragVertical();
    };
    EXPECT_GT(TryEach({[] {}, load,
                       [&] {
                           return worked;
                       }}),
              0);
}

TEST_F(DescriptorFault, WhileASettingIsStored)
{
    ASSERT_TRUE(SetKey("Common", "Kept", "kept"));
    bool saved = false;
    const auto store = [&] {
        saved = Manager().SetRegistryKey("Common", "Key", "new");
    };
    const auto check = [](bool) {
        EXPECT_EQ(GetKey("Common", "Key"), "new");
        EXPECT_EQ(GetKey("Common", "Kept"), "kept");
        EXPECT_EQ(NamesIn(std::filesystem::path(MachineFile()).parent_path()).size(), 2U) << "the file and its lock";
        EXPECT_TRUE(Manager().SetRegistryKey("Common", "Key", nullptr));
    };
    EXPECT_GT(TryEach({LoadManager, store,
                       [&] {
                           return saved && GetKey("Common", "Key") == "new";
                       }},
                      check),
              1);
}

TEST_F(DescriptorFault, WhileASettingIsRead)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_GT(TryEach({LoadManager, ReadKey,
                       [] {
                           return g_read == "value";
                       }}),
              0);
}

TEST_F(DescriptorFault, WhileASettingIsReadThatHasChanged)
{
    WriteXml(MachineFile(), "<key>Key</key><string>old</string>");
    const auto prepare = [] {
        ReadKey();
        EXPECT_EQ(g_read, "old");
        WriteXml(MachineFile(), "<key>Key</key><string>new</string>"); // and no more from now on
        AwaitTickOf(MachineFile());
    };
    const auto check = [](bool) {
        WriteXml(MachineFile(), "<key>Key</key><string>old</string>");
    };
    EXPECT_GT(TryEach({prepare, ReadKey,
                       [] {
                           return g_read == "new";
                       }},
                      check),
              0);
}

TEST_F(DescriptorFault, WhileTheDialogOpensInMemory)
{
    const std::string file = m_folder / "dialog.png";
    const auto prepare = [] {
        (void)CVUseHeadlessDesktop(true);
        LoadManager();
    };
    ASSERT_EQ(RunInChild([&] {
                  prepare();
                  UseDialog(file);
                  return g_shown ? 0 : 1;
              }),
              0);
    const std::string usual = CV_MODULES ? ReadFile(file) : "";
    EXPECT_GT(TryEach({prepare, [&] { UseDialog(file); },
                       [&] {
                           return g_shown && g_picture == usual;
                       }}),
              0);
}

#if CV_MODULES

TEST_F(DescriptorFault, WhileTheDialogOpensOnAScreen)
{
    const CScreen screen;
    screen.MoveTo(0, 0); // a hovered control looks different
    const std::string file = m_folder / "dialog.png";
    const auto use = [&] {
        UseDialog(file);
    };
    ASSERT_EQ(RunInChild([&] {
                  use();
                  return g_shown ? 0 : 1;
              }),
              0);
    const std::string usual = ReadFile(file);
    const auto worked = [&] {
        return g_shown && g_picture == usual;
    };
    EXPECT_GT(TryEach({LoadManager, use, worked}), 4);
    EXPECT_LT(TryEach({use, use, worked}), kFewest + 4) << "the second one has what it needs";
}

TEST_F(DescriptorFault, WhileHelpIsOpened)
{
    CViewers viewers;
    viewers.Install("com.apple.HelpViewer", "%f");
    const auto prepare = [] {
        (void)prctl(PR_SET_CHILD_SUBREAPER, 1);
        LoadManager();
    };
    const auto open = [] {
        Manager().OpenHelp(nullptr, 300);
        while (wait(nullptr) >= 0 || errno == EINTR) {
        }
    };
    EXPECT_GT(TryEach({prepare, open,
                       [&] {
                           return viewers.TakeVisits().size() == 1;
                       }}),
              2);
}

#endif
