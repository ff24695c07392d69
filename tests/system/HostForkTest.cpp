// tests/system/HostForkTest.cpp
//
// A host forks while another of its threads is writing a setting, once at each step of the write. The
// child has a copy of everything the writer holds, and nobody who will ever give it back.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

#include "tests/support/PreferencesSupport.h"

namespace {

/// Where the writing thread waits while the host forks.
class CStep {
public:
    /// Forgets the last round; before the writing thread is there.
    void Begin() { m_reached = m_ended = m_mayGoOn = false; }
    /// Has the calling thread wait at its `at`-th step from now on.
    static void WaitAt(int at) { t_left = at; }
    /// A step of whatever thread.
    void Pass()
    {
        if (t_left == 0 || --t_left != 0)
            return;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_reached = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_mayGoOn; });
    }
    /// The writing thread has no more steps.
    void End()
    {
        t_left = 0;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ended = true;
        m_changed.notify_all();
    }
    /// Waits until the writing thread waits; false where it ended before.
    bool Await()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_reached || m_ended; });
        return m_reached;
    }
    void LetGo()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_mayGoOn = true;
        m_changed.notify_all();
    }

private:
    static thread_local int t_left;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_reached = false, m_ended = false, m_mayGoOn = false;
};

thread_local int CStep::t_left = 0;
CStep g_step;

template <typename Function>
Function* Real(const char* name)
{
    g_step.Pass();
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#ifdef __SANITIZE_THREAD__
// A forked child has only one of the threads that the checker knows.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}
#endif

// This program's own names stand before the C library's, for all that it loads. None of these is
// called while a fork has to wait for it.
#pragma GCC visibility push(default)
extern "C" {

int mkdir(const char* path, mode_t mode)
{
    return Real<int(const char*, mode_t)>("mkdir")(path, mode);
}
int fchmod(int descriptor, mode_t mode)
{
    return Real<int(int, mode_t)>("fchmod")(descriptor, mode);
}
ssize_t write(int descriptor, const void* bytes, size_t size)
{
    return Real<ssize_t(int, const void*, size_t)>("write")(descriptor, bytes, size);
}
ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t at)
{
    return Real<ssize_t(int, const void*, size_t, off_t)>(sizeof(void*) == 4 ? "pwrite64" : "pwrite")(descriptor, bytes,
                                                                                                      size, at);
}
int fsync(int descriptor)
{
    return Real<int(int)>("fsync")(descriptor);
}
int rename(const char* from, const char* to)
{
    return Real<int(const char*, const char*)>("rename")(from, to);
}

} // extern "C"
#pragma GCC visibility pop

namespace {

class HostFork : public CPreferencesTest {
protected:
    /// Tries a write whose folders are there or have to be made.
    static void ForkAtEachStep(bool folders);
    /// A child that writes a key of its own, with `ends` only when the parent has closed the pipe.
    static pid_t StartChild(const char* key, const int* ends = nullptr)
    {
        const pid_t child = fork();
        if (child != 0)
            return child;
        alarm(30);
        char nothing = 0;
        if (ends) {
            close(ends[1]);
            (void)!read(ends[0], &nothing, 1);
        }
        _exit(SetKey("Common", key, "own") ? 0 : 1);
    }
};

void HostFork::ForkAtEachStep(bool folders)
{
    int steps = 0;
    for (bool reached = true; reached; ++steps) {
        ASSERT_LT(steps, 200);
        std::filesystem::remove_all(std::filesystem::path(MachineFile()).parent_path());
        if (folders) {
            ASSERT_TRUE(SetKey("Common", "Kept", "kept"));
        }
        const std::string kept = folders ? "kept" : "(none)";

        bool saved = false;
        g_step.Begin();
        std::thread writer([&] {
            CStep::WaitAt(steps + 1);
            saved = SetKey("Common", "Parent's", "new");
            g_step.End();
        });
        reached = g_step.Await();
        // A child that only looks, and ends while the writer is where it is.
        EXPECT_EQ(RunInChild([&] {
                      alarm(30);
                      const std::string now = GetKey("Common", "Parent's");
                      EXPECT_TRUE(now == "new" || (reached && now == "(none)")) << now;
                      EXPECT_EQ(GetKey("Common", "Kept"), kept);
                      return 0;
                  }),
                  0)
            << "step " << steps;
        // One that writes itself and has to wait for the writer, and one that nobody holds up any more.
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const pid_t children[] = {StartChild("Child's"), StartChild("Later child's", ends)};
        g_step.LetGo();
        writer.join();
        close(ends[0]);
        close(ends[1]);
        for (const pid_t child : children) {
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            EXPECT_EQ(status, 0) << "step " << steps;
        }
        EXPECT_TRUE(saved) << "step " << steps;
        EXPECT_EQ(GetKey("Common", "Parent's"), "new") << "step " << steps;
        EXPECT_EQ(GetKey("Common", "Child's"), "own") << "step " << steps;
        EXPECT_NE(ReadFile(MachineFile()).find("Later child's"), std::string::npos) << "step " << steps;
        EXPECT_EQ(GetKey("Common", "Kept"), kept) << "step " << steps;
        EXPECT_EQ(NamesIn(std::filesystem::path(MachineFile()).parent_path()).size(), 2U) << "the file and its lock";
    }
    RecordProperty("steps", steps - 1);
    EXPECT_GT(steps, 8);
}

TEST_F(HostFork, InMidWriteHarmsNeitherTheChildNorTheWrite)
{
    ForkAtEachStep(true);
}

TEST_F(HostFork, WhileFoldersAreMadeHarmsNeitherTheChildNorTheWrite)
{
    ForkAtEachStep(false);
}

} // namespace
