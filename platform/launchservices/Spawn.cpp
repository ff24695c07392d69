// platform/launchservices/Spawn.cpp
//
// Starts a program by way of a middle process, which ends as soon as the program runs: what it
// leaves behind belongs to the system's first process, not to the host.
//
// Both processes share the host's memory until the program takes over (as posix_spawn does it),
// each on a stack of its own, so nothing of a big host is copied, no fork handler of the host runs,
// and an error comes back through plain memory. Until then they may only make system calls, and the
// library's checked or instrumented wrappers of some of these are passed by.
#include "platform/launchservices/Spawn.h"

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

// The C library's own name for clone(): thread checkers wrap the plain name and then take the two
// processes, which share memory on purpose, for threads that they have lost.
extern "C" int __clone(int (*run)(void*), void* stackEnd, int flags, void* data, ...);

#if defined(__clang__)
#define CV_UNCHECKED __attribute__((no_sanitize("address", "thread", "undefined")))
#else
#define CV_UNCHECKED __attribute__((no_sanitize("address"), no_sanitize("thread"), no_sanitize("undefined")))
#endif

namespace {

constexpr std::size_t kStackBytes = std::size_t{64} * 1024;
constexpr long kKernelSignalSetBytes = 8;
constexpr rlim_t kMostDescriptorsTried = 65536;

constexpr std::string_view kHostsOwnVariables[] = {
    "LD_LIBRARY_PATH",           "LD_PRELOAD",
    "DESKTOP_STARTUP_ID",        "XDG_ACTIVATION_TOKEN",
    "GIO_LAUNCHED_DESKTOP_FILE", "GIO_LAUNCHED_DESKTOP_FILE_PID",
};

struct Start {
    const char* program;
    char* const* arguments;
    char* const* environment;
    const char* folder;
    char* programStack; // its upper end
    rlim_t descriptors;
    int error;
};

[[noreturn]] CV_UNCHECKED void Leave()
{
    for (;;)
        syscall(SYS_exit_group, 127); // runs nothing of the host's
}

CV_UNCHECKED void ResetSignals()
{
    // All of them, for a handler of the host's must not run here and what is ignored stays ignored.
    // The kernel's own record, of which all zeros is the default whatever its layout.
    const char defaultAction[64] = {};
    for (int signal = 1; signal <= SIGRTMAX; ++signal)
        syscall(SYS_rt_sigaction, signal, defaultAction, nullptr, kKernelSignalSetBytes);
}

CV_UNCHECKED bool ReplaceDescriptors(rlim_t most)
{
    const long null = syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR, 0);
    if (null < 0)
        return false;
    for (int standard = 0; standard <= 2; ++standard) {
        if (null != standard && syscall(SYS_dup3, null, standard, 0) < 0)
            return false;
    }
    if (syscall(SYS_close_range, 3U, ~0U, 0U) == 0)
        return true;
    for (rlim_t descriptor = 3; descriptor < most; ++descriptor) // a kernel or a sandbox without it
        syscall(SYS_close, descriptor);
    return true;
}

CV_UNCHECKED int RunProgram(void* data)
{
    Start& start = *static_cast<Start*>(data);
    ResetSignals();
    syscall(SYS_setsid);
    const bool inFolder = !*start.folder || syscall(SYS_chdir, start.folder) == 0;
    if (inFolder && ReplaceDescriptors(start.descriptors)) {
        const char noSignals[kKernelSignalSetBytes] = {};
        syscall(SYS_rt_sigprocmask, SIG_SETMASK, noSignals, nullptr, kKernelSignalSetBytes);
        syscall(SYS_execve, start.program, start.arguments, start.environment);
    }
    start.error = errno;
    Leave();
}

CV_UNCHECKED int RunMiddle(void* data)
{
    Start& start = *static_cast<Start*>(data);
    // Waits until the program has taken over or failed.
    if (__clone(RunProgram, start.programStack, CLONE_VM | CLONE_VFORK | SIGCHLD, data) < 0)
        start.error = errno;
    Leave();
}

bool IsHostsOwn(const char* variable)
{
    const std::string_view text(variable);
    for (const std::string_view name : kHostsOwnVariables) {
        if (text.size() > name.size() && text.substr(0, name.size()) == name && text[name.size()] == '=')
            return true;
    }
    return false;
}

std::vector<char*> CopyEnvironment()
{
    std::vector<char*> variables;
    for (char** variable = environ; variable && *variable; ++variable) {
        if (!IsHostsOwn(*variable))
            variables.push_back(*variable);
    }
    variables.push_back(nullptr);
    return variables;
}

class CStacks {
public:
    CStacks()
        : m_memory(
              mmap(nullptr, 2 * kStackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0))
    {
    }
    ~CStacks()
    {
        if (IsValid())
            munmap(m_memory, 2 * kStackBytes);
    }
    CStacks(const CStacks&) = delete;
    CStacks& operator=(const CStacks&) = delete;

    bool IsValid() const { return m_memory != MAP_FAILED; }
    char* MiddleEnd() const { return static_cast<char*>(m_memory) + kStackBytes; }
    char* ProgramEnd() const { return static_cast<char*>(m_memory) + 2 * kStackBytes; }

private:
    void* const m_memory;
};

// No handler of the host's may run while its memory is shared, and no thread may be cancelled.
class CUndisturbed {
public:
    CUndisturbed()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_mask);
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
    }
    ~CUndisturbed()
    {
        pthread_setcancelstate(m_cancelState, nullptr);
        pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }
    CUndisturbed(const CUndisturbed&) = delete;
    CUndisturbed& operator=(const CUndisturbed&) = delete;

private:
    sigset_t m_mask;
    int m_cancelState = PTHREAD_CANCEL_ENABLE;
};

} // namespace

int StartProgram(const std::string& program, const std::vector<std::string>& arguments, const std::string& folder)
{
    std::vector<char*> words;
    words.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str())); // execve's type; it writes nothing
    words.push_back(nullptr);
    const std::vector<char*> environment = CopyEnvironment();
    const CStacks stacks;
    if (!stacks.IsValid())
        return ENOMEM;
    rlimit limit = {};
    const bool known = getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < kMostDescriptorsTried;
    Start start = {program.c_str(),
                   words.data(),
                   environment.data(),
                   folder.c_str(),
                   stacks.ProgramEnd(),
                   known ? limit.rlim_cur : kMostDescriptorsTried,
                   0};

    const CUndisturbed undisturbed;
    const int savedErrno = errno;
    // Without an exit signal: the host gets none, and a wait for just any child does not see it.
    const int middle = __clone(RunMiddle, stacks.MiddleEnd(), CLONE_VM | CLONE_VFORK, &start);
    if (middle < 0)
        start.error = errno;
    else
        while (waitpid(middle, nullptr, __WALL) < 0 && errno == EINTR) {
        }
    errno = savedErrno;
    return start.error;
}
