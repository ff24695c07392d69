// bench/PreferencesBench.cpp
//
// The preference store beside what the operating system sets as a floor, and beside other stores
// that do the same work: read one string after looking for foreign changes, write one string and
// have it on disk. All in one run; the ratios at the end are what counts.
#include "bench/PreferencesBench.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <vector>

#include "frame/IProductManager.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr int kProcesses = 8;
constexpr int kWritesOfEach = 50;

std::string g_folder;

IProductManager& Manager()
{
    static IProductManager& manager = *[] {
        void* const code = dlopen(CV_BUILD_DIR "/Quillets.bundle/Contents/MacOS/Quillets", RTLD_NOW | RTLD_LOCAL);
        if (!code)
            throw std::runtime_error(dlerror());
        return reinterpret_cast<GetLibProductManagerProc>(dlsym(code, "GetLibProductManager"))();
    }();
    return manager;
}

std::string PathOf(const std::string& section, CFStringRef user)
{
    const CFStringRef domain =
        CFStringCreateWithCString(nullptr, ("com.corvane." + section).c_str(), kCFStringEncodingUTF8);
    const CFStringRef path = CVPreferencesCopyPath(domain, user, kCFPreferencesCurrentHost);
    char text[4096] = "";
    (void)CFStringGetCString(path, text, sizeof text, kCFStringEncodingUTF8);
    CFRelease(domain);
    CFRelease(path);
    return text;
}

// Fills a domain with `count` keys in one write.
void Fill(const std::string& section, CFStringRef user, int count)
{
    const CFStringRef domain =
        CFStringCreateWithCString(nullptr, ("com.corvane." + section).c_str(), kCFStringEncodingUTF8);
    for (int number = 0; number < count; ++number) {
        const CFStringRef key =
            CFStringCreateWithCString(nullptr, ("Key " + std::to_string(number)).c_str(), kCFStringEncodingUTF8);
        CFPreferencesSetValue(key, CFSTR("some value"), domain, user, kCFPreferencesCurrentHost);
        CFRelease(key);
    }
    if (!CFPreferencesSynchronize(domain, user, kCFPreferencesCurrentHost))
        throw std::runtime_error("cannot fill " + section);
    CFRelease(domain);
}

// ---- reading

void ReadFloor(benchmark::State& state)
{
    Fill("floor", kCFPreferencesAnyUser, 1);
    Fill("floor", kCFPreferencesCurrentUser, 1);
    const std::string paths[] = {PathOf("floor", kCFPreferencesAnyUser), PathOf("floor", kCFPreferencesCurrentUser)};
    struct stat status = {};
    for (auto _ : state) {
        benchmark::DoNotOptimize(stat(paths[0].c_str(), &status));
        benchmark::DoNotOptimize(stat(paths[1].c_str(), &status));
    }
}
BENCHMARK(ReadFloor)->Name("read/floor: two stat calls");

void ReadOwn(benchmark::State& state, const std::string& section, CFStringRef user, bool byStamps)
{
    Fill(section, user, static_cast<int>(state.range(0)));
    if (byStamps) { // changes behind a link reach no watch
        const std::string path = PathOf(section, user);
        std::filesystem::rename(path, g_folder + "/linked.plist");
        std::filesystem::create_symlink(g_folder + "/linked.plist", path);
    }
    char buffer[64];
    for (auto _ : state) {
        if (!Manager().GetRegistryKey(section.c_str(), "Key 0", buffer, sizeof buffer))
            state.SkipWithError("not found");
    }
    if (byStamps)
        std::filesystem::remove(PathOf(section, user));
}
BENCHMARK_CAPTURE(ReadOwn, machine, "machine", kCFPreferencesAnyUser, false)
    ->Name("read/ours, machine-wide, keys")
    ->Arg(1)
    ->Arg(10000);
BENCHMARK_CAPTURE(ReadOwn, user, "user", kCFPreferencesCurrentUser, false)
    ->Name("read/ours, the user's, keys")
    ->Arg(1)
    ->Arg(10000);
BENCHMARK_CAPTURE(ReadOwn, stamps, "stamps", kCFPreferencesAnyUser, true)->Name("read/ours, by stamps, keys")->Arg(1);

// ---- writing

// The bare sequence that a durable replacement takes.
bool Replace(const std::string& folder, const std::string& name, const std::string& bytes)
{
    const std::string path = folder + "/" + name;
    const int file = open((path + ".tmp").c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    bool done =
        file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) && fsync(file) == 0;
    close(file);
    done = done && rename((path + ".tmp").c_str(), path.c_str()) == 0;
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    done = done && fsync(directory) == 0;
    close(directory);
    return done;
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFloor(benchmark::State& state)
{
    const std::string section = "sized" + std::to_string(state.range(0));
    Fill(section, kCFPreferencesAnyUser, static_cast<int>(state.range(0)));
    const std::string bytes = ReadBytes(PathOf(section, kCFPreferencesAnyUser));
    const std::string folder = g_folder + "/floor";
    std::filesystem::create_directories(folder);
    for (auto _ : state) {
        if (!Replace(folder, "file", bytes))
            state.SkipWithError("cannot write");
    }
}
BENCHMARK(WriteFloor)->Name("write/floor: create, write, fsync, rename, fsync folder, keys")->Arg(1)->Arg(200);

void WriteOwn(benchmark::State& state)
{
    const std::string section = "write" + std::to_string(state.range(0));
    Fill(section, kCFPreferencesAnyUser, static_cast<int>(state.range(0)));
    int number = 0;
    for (auto _ : state) {
        if (!Manager().SetRegistryKey(section.c_str(), "Key 0", std::to_string(++number).c_str()))
            state.SkipWithError("cannot write");
    }
}
BENCHMARK(WriteOwn)->Name("write/ours, keys")->Arg(1)->Arg(200);

void WriteSame(benchmark::State& state)
{
    (void)Manager().SetRegistryKey("same", "Key", "value");
    for (auto _ : state) {
        if (!Manager().SetRegistryKey("same", "Key", "value"))
            state.SkipWithError("cannot write");
    }
}
BENCHMARK(WriteSame)->Name("write/ours, the stored value");

// ---- many writers

template <typename Write>
void RunProcesses(benchmark::State& state, Write write)
{
    for (auto _ : state) {
        std::vector<pid_t> children;
        for (int process = 0; process < kProcesses; ++process) {
            children.push_back(fork());
            if (children.back() == 0) {
                bool done = true;
                for (int number = 0; number < kWritesOfEach; ++number)
                    done = write(process, number) && done;
                _exit(done ? 0 : 1);
            }
        }
        for (const pid_t child : children) {
            int status = 0;
            (void)waitpid(child, &status, 0);
            if (status != 0)
                state.SkipWithError("a write failed");
        }
    }
    state.SetItemsProcessed(state.iterations() * kProcesses * kWritesOfEach);
}

void CrowdFloor(benchmark::State& state)
{
    Fill("crowdfloor", kCFPreferencesAnyUser, kProcesses);
    const std::string bytes = ReadBytes(PathOf("crowdfloor", kCFPreferencesAnyUser));
    const std::string folder = g_folder + "/crowd";
    std::filesystem::create_directories(folder);
    RunProcesses(state, [&](int, int) {
        const int lock = open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        const bool done = flock(lock, LOCK_EX) == 0 && Replace(folder, "file", bytes);
        close(lock);
        return done;
    });
}
BENCHMARK(CrowdFloor)->Name("crowd/floor: the same under one lock, 8 processes")->UseRealTime();

void CrowdOwn(benchmark::State& state)
{
    Fill("crowd", kCFPreferencesAnyUser, kProcesses);
    RunProcesses(state, [&](int process, int number) {
        return Manager().SetRegistryKey("crowd", ("Key " + std::to_string(process)).c_str(),
                                        std::to_string(number).c_str());
    });
}
BENCHMARK(CrowdOwn)->Name("crowd/ours, 8 processes")->UseRealTime();

// ---- the outcome

// Keeps the medians and prints each as a multiple of its group's floor.
class CRatios : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median" && !run.error_occurred)
                m_medians.emplace_back(run.run_name.str(), TimeOf(run));
        }
    }
    void Finalize() override
    {
        std::printf("\n%-72s %14s %8s\n", "median", "ns", "ratio");
        for (const auto& [name, time] : m_medians)
            std::printf("%-72s %14.0f %8.2f\n", name.c_str(), time, time / FloorOf(name));
    }

private:
    // Reading takes no other time than the processor's; writing waits for the disk.
    static double TimeOf(const Run& run)
    {
        const bool reads = run.run_name.str().rfind("read/", 0) == 0;
        return reads ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
    }
    double FloorOf(const std::string& name) const
    {
        const std::string group = name.substr(0, name.find('/'));
        const bool many = name.size() > 4 && name.find("keys/200") != std::string::npos;
        for (const auto& [floor, time] : m_medians) {
            if (floor.rfind(group + "/floor", 0) == 0 && (floor.find("keys/200") != std::string::npos) == many)
                return time;
        }
        return 1;
    }
    std::vector<std::pair<std::string, double>> m_medians;
};

} // namespace

const std::string& BenchFolder()
{
    return g_folder;
}

int main(int count, char** words)
{
    std::string pattern = (count > 1 && words[1][0] == '/' ? std::string(words[1]) : "/tmp") + "/quillets-bench-XXXXXX";
    if (!mkdtemp(pattern.data()))
        return 1;
    g_folder = pattern;
    setenv("HOME", g_folder.c_str(), 1);
    setenv("XDG_CONFIG_DIRS", (g_folder + "/etc/xdg").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (g_folder + "/home/.config").c_str(), 1);
    std::vector<std::string> defaults = {words[0], "--benchmark_repetitions=5", "--benchmark_min_time=0.2",
                                         "--benchmark_report_aggregates_only=true"};
    for (int word = 1; word < count; ++word) {
        if (words[word][0] != '/')
            defaults.emplace_back(words[word]);
    }
    std::vector<char*> pointers;
    for (std::string& word : defaults)
        pointers.push_back(word.data());
    int number = static_cast<int>(pointers.size());
    benchmark::Initialize(&number, pointers.data());
    RegisterPeers();
    CRatios ratios;
    benchmark::RunSpecifiedBenchmarks(&ratios);
    std::error_code ignored;
    std::filesystem::remove_all(g_folder, ignored);
    return 0;
}
