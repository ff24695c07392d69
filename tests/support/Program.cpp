// tests/support/Program.cpp
#include "tests/support/Program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

[[noreturn]] void BecomeProgram(const std::vector<char*>& arguments, int log, pid_t parent)
{
    constexpr char kFailure[] = "cannot be started\n";
    (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool ready = getppid() == parent && dup2(nothing, 0) == 0 && dup2(log, 1) == 1 && dup2(log, 2) == 2;
    if (ready)
        execvp(arguments[0], arguments.data());
    (void)!write(log, kFailure, sizeof kFailure - 1);
    _exit(127);
}

} // namespace

CProgram::CProgram(const std::vector<std::string>& words) : m_log(memfd_create("log", MFD_CLOEXEC))
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t self = getpid();
    m_process = fork();
    if (m_process == 0)
        BecomeProgram(arguments, m_log, self);
    if (m_process < 0)
        throw std::runtime_error("cannot start " + words.front());
}

CProgram::~CProgram()
{
    (void)End();
    close(m_log);
}

bool CProgram::IsRunning()
{
    int status = 0;
    if (!m_status && waitpid(m_process, &status, WNOHANG) == m_process)
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return !m_status;
}

void CProgram::Signal(int number)
{
    if (IsRunning())
        kill(m_process, number);
}

int CProgram::Wait(double seconds)
{
    return WaitFor([this] { return !IsRunning(); }, seconds) ? *m_status : -1;
}

int CProgram::End()
{
    constexpr double kPatience = 10.0;
    Signal(SIGTERM);
    if (Wait(kPatience) < 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        m_status = -1;
    }
    return *m_status;
}

std::string CProgram::Log() const
{
    std::string text;
    char part[4096];
    for (;;) {
        const ssize_t count = pread(m_log, part, sizeof part, static_cast<off_t>(text.size()));
        if (count <= 0)
            return text;
        text.append(part, static_cast<std::size_t>(count));
    }
}

bool WaitFor(const std::function<bool()>& condition, double seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}
