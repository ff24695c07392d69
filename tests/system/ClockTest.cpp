// tests/system/ClockTest.cpp
//
// The wall clock is set back under a running host: by its user, by a server of time, by a battery.
// This process's wall clock, and the stamps that files get from it, are put back here.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <vector>

#include "tests/support/PreferencesSupport.h"
#include "tests/support/Toolbox.h"
#if CV_MODULES
#include "tests/support/Screen.h"
#endif

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kHour = 3600 * kSecond;

// The system's names of the calls below; 32-bit programs with large files and times have others.
constexpr bool kOtherNames = sizeof(void*) == 4;
constexpr const char* kClockGetTime = kOtherNames ? "__clock_gettime64" : "clock_gettime";
constexpr const char* kStat = kOtherNames ? "__stat64_time64" : "stat";
constexpr const char* kLStat = kOtherNames ? "__lstat64_time64" : "lstat";
constexpr const char* kFStat = kOtherNames ? "__fstat64_time64" : "fstat";

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::int64_t Count(const timespec& time)
{
    return std::int64_t(time.tv_sec) * kSecond + time.tv_nsec;
}

/// When, by the machine's clock, and how far from it the process's was then set.
struct Setting {
    std::int64_t at, by;
};
std::vector<Setting> g_settings;
std::int64_t g_eachTime = 0; // how far the clock goes back whenever somebody looks at it

std::int64_t Now(clockid_t clock)
{
    timespec now = {};
    (void)Real<int(clockid_t, timespec*)>(kClockGetTime)(clock, &now);
    return Count(now);
}

void Shift(timespec& time)
{
    std::int64_t by = 0;
    for (const Setting& setting : g_settings) {
        if (Count(time) >= setting.at)
            by = setting.by;
    }
    const std::int64_t shifted = Count(time) + by;
    time.tv_sec = static_cast<time_t>(shifted / kSecond);
    time.tv_nsec = static_cast<long>(shifted % kSecond);
}

int ShiftStamps(int result, struct stat* status)
{
    if (result == 0) {
        Shift(status->st_ctim);
        Shift(status->st_mtim);
    }
    return result;
}

// Files get the time of the last tick: a clock that is set within one would not be theirs yet.
void AwaitTick()
{
    const std::int64_t before = Now(CLOCK_REALTIME);
    while (Now(CLOCK_REALTIME_COARSE) <= before) {
    }
}

void SetBack(std::int64_t by)
{
    AwaitTick();
    g_settings.push_back({Now(CLOCK_REALTIME), (g_settings.empty() ? 0 : g_settings.back().by) - by});
    AwaitTick();
}

} // namespace

// This program's own names stand before the C library's, for all that it loads.
#pragma GCC visibility push(default)
extern "C" {

int clock_gettime(clockid_t clock, timespec* time)
{
    const int result = Real<int(clockid_t, timespec*)>(kClockGetTime)(clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        if (g_eachTime != 0)
            SetBack(g_eachTime);
        Shift(*time);
    }
    return result;
}
int stat(const char* path, struct stat* status)
{
    return ShiftStamps(Real<int(const char*, struct stat*)>(kStat)(path, status), status);
}
int lstat(const char* path, struct stat* status)
{
    return ShiftStamps(Real<int(const char*, struct stat*)>(kLStat)(path, status), status);
}
int fstat(int descriptor, struct stat* status)
{
    return ShiftStamps(Real<int(int, struct stat*)>(kFStat)(descriptor, status), status);
}

} // extern "C"
#pragma GCC visibility pop

namespace {

class ClockSetBack : public CPreferencesTest {
protected:
    ~ClockSetBack() override
    {
        g_settings.clear();
        g_eachTime = 0;
    }
    // Another program's change, as short as the value before it.
    static void Write(const std::string& value)
    {
        const int file = open(MachineFile().c_str(), O_WRONLY | O_CLOEXEC);
        const std::string text = ReadFile(MachineFile());
        const std::size_t at = text.find("<string>") + 8;
        EXPECT_EQ(pwrite(file, value.data(), value.size(), static_cast<off_t>(at)), static_cast<ssize_t>(value.size()));
        close(file);
    }
};

TEST_F(ClockSetBack, ChangesOfOthersAreSeen)
{
    WriteXml(MachineFile(), "<key>Key</key><string>00</string>");
    EXPECT_EQ(GetKey("Common", "Key"), "00");
    for (int change = 10; change < 30; ++change) {
        if (change % 5 == 0)
            SetBack(change % 2 == 0 ? kHour : kSecond / 100);
        Write(std::to_string(change));
        EXPECT_EQ(GetKey("Common", "Key"), std::to_string(change));
    }
}

TEST_F(ClockSetBack, AStampOfTheFutureIsNotTrusted)
{
    WriteXml(MachineFile(), "<key>Key</key><string>00</string>");
    Write("aa");
    struct stat before = {};
    ASSERT_EQ(stat(MachineFile().c_str(), &before), 0);
    SetBack(kHour);
    EXPECT_EQ(GetKey("Common", "Key"), "aa");
    // An hour later, when the same moment has come again.
    AwaitTick();
    Write("bb");
    struct stat after = {};
    ASSERT_EQ(Real<int(const char*, struct stat*)>(kStat)(MachineFile().c_str(), &after), 0);
    g_settings.push_back({Count(after.st_ctim), Count(before.st_ctim) - Count(after.st_ctim)});
    ASSERT_EQ(stat(MachineFile().c_str(), &after), 0);
    ASSERT_EQ(Count(after.st_ctim), Count(before.st_ctim));
    EXPECT_EQ(GetKey("Common", "Key"), "bb");
}

TEST_F(ClockSetBack, SettingsAreStoredAndLocksAreWaitedFor)
{
    g_eachTime = kHour;
    EXPECT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_EQ(GetKey("Common", "Key"), "value");
    const int other = open((MachineFile() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    ASSERT_EQ(fcntl(other, F_OFD_SETLK, &whole), 0);
    const std::int64_t start = Now(CLOCK_MONOTONIC);
    EXPECT_TRUE(SetKey("Common", "Key", "later"));
    EXPECT_GE(Now(CLOCK_MONOTONIC) - start, 19 * kSecond / 10);
    EXPECT_LT(Now(CLOCK_MONOTONIC) - start, 20 * kSecond);
    EXPECT_TRUE(FileExists(UserFile())) << "what cannot be stored for all is stored for the user";
    close(other);
    EXPECT_TRUE(SetKey("Common", "Key", "last"));
    EXPECT_EQ(GetKey("Common", "Key"), "last");
}

// Fires a timer twice while the clock goes back.
int CountFires()
{
    int fires = 0;
    EventLoopTimerRef timer = nullptr;
    EXPECT_EQ(InstallEventLoopTimer(
                  GetMainEventLoop(), 0.01, 0.01,
                  [](EventLoopTimerRef, void* count) {
                      if (++*static_cast<int*>(count) == 2)
                          (void)QuitEventLoop(GetMainEventLoop());
                  },
                  &fires, &timer),
              noErr);
    g_eachTime = kHour;
    EXPECT_EQ(RunCurrentEventLoop(20), eventLoopQuitErr);
    g_eachTime = 0;
    (void)RemoveEventLoopTimer(timer);
    return fires;
}

TEST_F(ClockSetBack, TimersGoOn)
{
    EXPECT_EQ(CountFires(), 2);
    const std::int64_t start = Now(CLOCK_MONOTONIC);
    g_eachTime = kHour;
    EXPECT_EQ(RunCurrentEventLoop(0.05), eventLoopTimedOutErr);
    EXPECT_GE(Now(CLOCK_MONOTONIC) - start, kSecond / 20);
}

TEST_F(ClockSetBack, TimersGoOnWithADisplay)
{
    SKIP_WITHOUT_MODULES();
#if CV_MODULES
    const CScreen screen;
    EXPECT_EQ(RunInChild([] {
                  EXPECT_GE(CVGetDescriptor(), 0);
                  return CountFires();
              }),
              2);
#endif
}

} // namespace
