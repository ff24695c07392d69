// bench/LoadBench.cpp
//
// What it costs a host to load the bundle: from dlopen to a configured object, beside dlopen of a
// C++ library with nothing in it. The goal is at most one millisecond more. The layer stays in a
// process once it is there, so the first load of a process and the later ones are measured apart;
// for the first, each round is a process of its own that measures itself.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

// What is loaded: the code and the function that answers its object.
struct Library {
    const char* name;
    const char* path;
    const char* factory;
};

const Library kBundle = {"bundle", CV_BUILD_DIR "/Quillets.bundle/Contents/MacOS/Quillets", "GetLibProductManager"};
const Library kEmpty = {"empty", CV_EMPTY_LIBRARY, "GetObject"};

// Loads and answers the seconds that it took; the caller unloads. Ends the program on failure.
double TimeLoad(const Library& library, void*& code)
{
    const auto start = std::chrono::steady_clock::now();
    code = dlopen(library.path, RTLD_NOW | RTLD_LOCAL);
    void* const factory = code ? dlsym(code, library.factory) : nullptr;
    const void* const object = factory ? reinterpret_cast<const void* (*)()>(factory)() : nullptr;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    if (!object) {
        std::fprintf(stderr, "cannot load %s\n", library.path);
        std::exit(1);
    }
    return time.count();
}

// Runs this program again; it prints the time of its one load.
double TimeFirstLoad(const Library& library)
{
    int ends[2] = {};
    if (pipe(ends) != 0)
        std::abort();
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        execl("/proc/self/exe", "LoadBench", library.name, static_cast<char*>(nullptr));
        _exit(1);
    }
    close(ends[1]);
    char text[64] = "";
    const ssize_t size = read(ends[0], text, sizeof text - 1);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (size <= 0 || status != 0)
        std::abort();
    return std::strtod(text, nullptr);
}

void FirstLoad(benchmark::State& state, const Library& library)
{
    for (auto _ : state)
        state.SetIterationTime(TimeFirstLoad(library));
}

void LaterLoad(benchmark::State& state, const Library& library)
{
    for (auto _ : state) {
        void* code = nullptr;
        state.SetIterationTime(TimeLoad(library, code));
        dlclose(code);
    }
}

} // namespace

int main(int count, char** words)
{
    for (const Library* library : {&kBundle, &kEmpty}) {
        if (count == 2 && std::strcmp(words[1], library->name) == 0) {
            void* code = nullptr;
            std::printf("%.9f\n", TimeLoad(*library, code));
            return 0;
        }
        const std::string name = library->name;
        benchmark::RegisterBenchmark(("FirstLoad/" + name).c_str(), FirstLoad, *library)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond)
            ->Iterations(100)
            ->Repetitions(5)
            ->ReportAggregatesOnly();
        benchmark::RegisterBenchmark(("LaterLoad/" + name).c_str(), LaterLoad, *library)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond)
            ->Iterations(500)
            ->Repetitions(5)
            ->ReportAggregatesOnly();
    }
    benchmark::Initialize(&count, words);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
