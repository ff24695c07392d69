// tests/system/PreferencesPowerCutTest.cpp
//
// The power goes while settings are written: the file system is shut down by its own call without
// its log being flushed, and mounted again. What was reported as written has to be there, which it
// is only if the folder was flushed too. Needs root, loop devices and the file systems' tools.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>

#include "tests/support/PreferencesSupport.h"

namespace {

#ifdef QUILLETS_FULL
constexpr int kCuts = 40;
#else
constexpr int kCuts = 5;
#endif
constexpr int kWriters = 3;
constexpr unsigned long kShutDown = _IOR('X', 125, std::uint32_t);
constexpr std::uint32_t kWithoutFlushingTheLog = 2;
constexpr int kSkipped = 77;

struct FileSystem {
    const char* name;
    std::vector<std::string> make;
    const char* size;
};

void PrintTo(const FileSystem& system, std::ostream* out)
{
    *out << system.name; // instead of its bytes, which are addresses
}

class PreferencesPowerCut : public CPreferencesTest, public testing::WithParamInterface<FileSystem> {
protected:
    bool Run(const std::vector<std::string>& words) const
    {
        try {
            return RunProgram(words).code == 0;
        } catch (const std::exception&) {
            return false; // not installed
        }
    }
    bool Mount() const { return Run({"mount", "-o", "loop", "-t", GetParam().name, m_image, m_disk}); }
    bool CutPower() const
    {
        const int root = open(m_disk.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        std::uint32_t how = kWithoutFlushingTheLog;
        const bool cut = root >= 0 && ioctl(root, kShutDown, &how) == 0;
        close(root);
        return cut;
    }
    std::vector<std::string> MakeWords() const
    {
        std::vector<std::string> words = GetParam().make;
        words.push_back(m_image);
        return words;
    }
    int TryAll();

    const std::string m_image = m_folder / "image";
    const std::string m_disk = m_folder / "disk";
};

// In a process with mounts of its own, which end with it.
int PreferencesPowerCut::TryAll()
{
    std::filesystem::create_directories(m_disk);
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        !Run({"truncate", "-s", GetParam().size, m_image}) || !Run(MakeWords()) || !Mount())
        return kSkipped;
    setenv("XDG_CONFIG_DIRS", (m_disk + "/etc").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (m_disk + "/config").c_str(), 1);
    using Numbers = std::atomic<int>[kWriters];
    auto& reported = *static_cast<Numbers*>(
        mmap(nullptr, sizeof(Numbers), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    std::mt19937 random(20110311);
    int total = 0;
    for (int cut = 0; cut < kCuts; ++cut) {
        pid_t children[kWriters];
        for (int writer = 0; writer < kWriters; ++writer) {
            children[writer] = fork();
            if (children[writer] == 0) {
                const std::string key = std::to_string(writer);
                int number = reported[writer];
                while (SetKey("Power", key, std::to_string(number + 1)))
                    reported[writer] = ++number;
                _exit(0);
            }
        }
        // Not before something was reported, however slow the machine.
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        const auto sum = [&] {
            int all = 0;
            for (const auto& number : reported)
                all += number;
            return all;
        };
        const int before = sum();
        while (sum() == before && std::chrono::steady_clock::now() < limit)
            usleep(500);
        usleep(static_cast<useconds_t>(random() % 60000));
        int told[kWriters];
        for (int writer = 0; writer < kWriters; ++writer)
            told[writer] = reported[writer];
        if (!CutPower()) {
            for (const pid_t child : children)
                kill(child, SIGKILL);
            for (const pid_t child : children)
                waitpid(child, nullptr, 0);
            return cut == 0 ? kSkipped : 1;
        }
        for (const pid_t child : children)
            waitpid(child, nullptr, 0);
        EXPECT_EQ(umount2(m_disk.c_str(), 0), 0);
        EXPECT_TRUE(Mount());
        for (int writer = 0; writer < kWriters; ++writer) {
            const std::string there = GetKey("Power", std::to_string(writer));
            const int number = there == "(none)" ? 0 : std::stoi(there);
            EXPECT_GE(number, told[writer]) << "cut " << cut << ", writer " << writer;
            total += told[writer];
            reported[writer] = number;
        }
    }
    EXPECT_GE(total, kCuts);
    EXPECT_EQ(umount2(m_disk.c_str(), 0), 0);
    return 0;
}

TEST_P(PreferencesPowerCut, LosesNothingThatWasReportedAsWritten)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const int code = RunInChild([this] { return TryAll(); });
    if (code == kSkipped)
        GTEST_SKIP() << "this machine cannot make, mount or shut down " << GetParam().name << " in an image";
    EXPECT_EQ(code, 0);
}

INSTANTIATE_TEST_SUITE_P(On, PreferencesPowerCut,
                         testing::Values(FileSystem{"ext4", {"mkfs.ext4", "-q", "-F"}, "64M"},
                                         FileSystem{"xfs", {"mkfs.xfs", "-q", "-f"}, "320M"}),
                         [](const auto& system) { return system.param.name; });

} // namespace
