// tests/support/Program.h
//
// Programs that run beside whoever starts them, and waiting for what they do. Needs nothing of the
// system under test, so that benchmarks have it too.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A program that runs beside this one; ended, if need be by force, at the end of the scope, and
/// with this process however that ends.
class CProgram {
public:
    /// @param words  the program, looked for in PATH, and its arguments.
    explicit CProgram(const std::vector<std::string>& words);
    ~CProgram();
    CProgram(const CProgram&) = delete;
    CProgram& operator=(const CProgram&) = delete;

    bool IsRunning();
    pid_t Id() const { return m_process; }
    /// Sends a signal, unless it has ended.
    void Signal(int number);
    /// Waits for its end, at most `seconds`.
    /// @return its exit status, 128 and the signal's number where one ended it; -1 while it runs.
    int Wait(double seconds = 60.0);
    /// Asks it to end and waits, at most 10 seconds; answers as Wait does, -1 where it had to be killed.
    int End();
    /// What it has printed, errors too.
    std::string Log() const;

private:
    int m_log = -1;
    pid_t m_process = 0;
    std::optional<int> m_status;
};

/// Asks `condition` until it holds, at most `seconds`.
bool WaitFor(const std::function<bool()>& condition, double seconds = 60.0);
