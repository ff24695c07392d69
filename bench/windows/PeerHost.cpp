// bench/windows/PeerHost.cpp
//
// The fresh process of a measurement: loads one module, opens its dialog, and opens it again. Says
// on its output when each begins, by the monotonic clock, and at the end what it cost. Whoever
// started it watches the screen; nothing here does, so that watching costs none of its memory.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

constexpr double kSettleSeconds = 0.5;
constexpr double kClosedSeconds = 0.2;

long long Now(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

void Say(const char* what, long long number)
{
    std::printf("%s %lld\n", what, number);
    std::fflush(stdout);
}

// The most memory that this process ever had, in KiB. What getrusage knows is the starter's too.
long long PeakMemory()
{
    std::FILE* const status = std::fopen("/proc/self/status", "r");
    char line[256] = "";
    long long peak = 0;
    while (status && std::fgets(line, sizeof line, status)) {
        if (std::sscanf(line, "VmHWM: %lld", &peak) == 1)
            break;
    }
    if (status)
        std::fclose(status);
    return peak;
}

} // namespace

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    Say("first", Now(CLOCK_MONOTONIC));
    void* const code = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
    const auto open = reinterpret_cast<void (*)()>(code ? dlsym(code, "OpenDialog") : nullptr);
    const auto close = reinterpret_cast<void (*)()>(code ? dlsym(code, "CloseDialog") : nullptr);
    const auto run = reinterpret_cast<void (*)(double)>(code ? dlsym(code, "RunLoop") : nullptr);
    if (!open || !close || !run) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    open();
    run(kSettleSeconds);
    const long long firstMemory = PeakMemory();
    close();
    run(kClosedSeconds);
    const long long before = Now(CLOCK_PROCESS_CPUTIME_ID);
    Say("second", Now(CLOCK_MONOTONIC));
    open();
    run(kSettleSeconds);
    const long long work = Now(CLOCK_PROCESS_CPUTIME_ID) - before;
    Say("work", work);
    Say("first-memory", firstMemory);
    Say("memory", PeakMemory());
    _exit(0);
}
