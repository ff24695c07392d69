// tests/corefoundation/PreferencesLockTest.cpp
//
// The lock by itself: whom it keeps out, for how long, and what ends it.
#include "platform/corefoundation/PreferencesLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "tests/support/Support.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::chrono::nanoseconds g_longestPause;

class PreferencesLock : public testing::Test {
protected:
    static Deadline In(int wait) { return Clock::now() + milliseconds(wait); }
    bool IsFree()
    {
        CPreferencesLock lock;
        return lock.Acquire(m_path, In(0));
    }
    /// A process that holds the lock, does `more` and waits for its end.
    template <typename More>
    pid_t StartHolder(More more)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            CPreferencesLock lock;
            const bool held = lock.Acquire(m_path, In(1000));
            more();
            const char said = held ? 'y' : 'n';
            if (write(ready[1], &said, 1) == 1)
                pause();
            _exit(1);
        }
        char said = 'n';
        close(ready[1]);
        EXPECT_EQ(read(ready[0], &said, 1), 1);
        EXPECT_EQ(said, 'y');
        close(ready[0]);
        return child;
    }
    static void End(pid_t child)
    {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder / "lock";
};

TEST_F(PreferencesLock, KeepsOutAnotherOfTheSameProcess)
{
    CPreferencesLock lock;
    ASSERT_TRUE(lock.Acquire(m_path, In(0)));
    EXPECT_FALSE(IsFree()) << "two copies of the layer are two holders";
    lock.Unlock();
    EXPECT_TRUE(IsFree());
}

TEST_F(PreferencesLock, IsNotDroppedWhenAnotherDescriptorIsClosed)
{
    CPreferencesLock lock;
    ASSERT_TRUE(lock.Acquire(m_path, In(0)));
    close(open(m_path.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_FALSE(IsFree());
}

TEST_F(PreferencesLock, OfAStoppedProcessIsWaitedForUntilTheDeadline)
{
    const pid_t holder = StartHolder([] {});
    kill(holder, SIGSTOP);
    CPreferencesLock lock;
    const auto before = Clock::now();
    EXPECT_FALSE(lock.Acquire(m_path, In(50)));
    EXPECT_GE(Clock::now() - before, milliseconds(50));
    End(holder);
}

TEST_F(PreferencesLock, OfAKilledProcessIsFreeAtOnce)
{
    End(StartHolder([] {}));
    CPreferencesLock lock;
    EXPECT_TRUE(lock.Acquire(m_path, In(0)));
}

TEST_F(PreferencesLock, WaitersTryAgainWithinFiveMilliseconds)
{
    CPreferencesLock held;
    ASSERT_TRUE(held.Acquire(m_path, In(0)));
    g_longestPause = milliseconds(0);
    CPreferencesLock waiter;
    EXPECT_FALSE(waiter.Acquire(m_path, In(50)));
    EXPECT_GT(g_longestPause, milliseconds(0));
    EXPECT_LE(g_longestPause, milliseconds(5));
}

TEST_F(PreferencesLock, StaysOutOfStartedPrograms)
{
    pid_t program = 0;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t holder = StartHolder([&] {
        char name[] = "sleep";
        char time[] = "600";
        char* const words[] = {name, time, nullptr};
        if (posix_spawnp(&program, "sleep", nullptr, nullptr, words, environ) == 0)
            (void)!write(ends[1], &program, sizeof program);
    });
    ASSERT_EQ(read(ends[0], &program, sizeof program), static_cast<ssize_t>(sizeof program));
    End(holder);
    EXPECT_EQ(kill(program, 0), 0);
    EXPECT_TRUE(IsFree());
    kill(program, SIGKILL);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(PreferencesLock, IsNotKeptByAForkedChild)
{
    pid_t child = 0;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t holder = StartHolder([&] {
        pthread_atfork(HoldPreferencesLocks, ReleasePreferencesLocks, AbandonPreferencesLocks);
        if (fork() == 0) {
            const pid_t own = getpid();
            (void)!write(ends[1], &own, sizeof own); // it has closed its copy before it comes here
            for (;;)
                pause();
        }
    });
    ASSERT_EQ(read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
    EXPECT_FALSE(IsFree()) << "the parent has it still";
    End(holder);
    EXPECT_EQ(kill(child, 0), 0);
    EXPECT_TRUE(IsFree());
    kill(child, SIGKILL);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(PreferencesLock, FollowsALockFileThatWasReplaced)
{
    CPreferencesLock old;
    ASSERT_TRUE(old.Acquire(m_path, In(0)));
    unlink(m_path.c_str());
    CPreferencesLock lock;
    EXPECT_TRUE(lock.Acquire(m_path, In(0)));
    EXPECT_FALSE(IsFree());
}

TEST_F(PreferencesLock, KeepsItsRecord)
{
    CPreferencesLock lock;
    ASSERT_TRUE(lock.Acquire(m_path, In(0)));
    EXPECT_EQ(lock.Record().magic, 0U);
    DurabilityRecord record;
    record.renamed = 7;
    record.stamp.inode = 5;
    lock.SetRecord(record);
    EXPECT_EQ(lock.Record().renamed, 7U);
    EXPECT_EQ(lock.Record().durable, 0U);
    lock.SetDurable(7);
    EXPECT_EQ(lock.Record().durable, 7U);
    lock.Reset();
    WriteFile(m_path, "no record");
    ASSERT_TRUE(lock.Acquire(m_path, In(0)));
    EXPECT_EQ(lock.Record().magic, 0U);
}

} // namespace

// Stands before the system's own: it keeps how long a waiter meant to sleep, on however busy a machine.
extern "C" int nanosleep(const timespec* time, timespec* left)
{
    g_longestPause =
        std::max(g_longestPause, std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
    return clock_nanosleep(CLOCK_MONOTONIC, 0, time, left) == 0 ? 0 : -1;
}
