// bench/HelpBench.cpp
//
// What opening help costs up to the start of the viewer, beside reading and parsing the same
// context map with libplist alone. The counter "ratio" of OpenHelp is the one by the other, taken
// in turn in the same run, medians of both, so that other work of the machine spoils few turns; the
// goal is at most 1.5.
#include <CVPlatform/CVPlatform.h>
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <plist/plist.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "frame/IProductManager.h"

namespace {

using Clock = std::chrono::steady_clock;

// A copy of the built bundle whose context map has so many topics.
class CHelpBundle {
public:
    explicit CHelpBundle(long topics) : m_folder(MakeFolder())
    {
        std::filesystem::create_directories(m_folder + "/Contents/MacOS");
        std::filesystem::create_directories(m_folder + "/Contents/Resources/en.lproj/Quillets/VST");
        std::filesystem::copy(CV_BUILD_DIR "/Quillets.bundle/Contents/MacOS/Quillets",
                              m_folder + "/Contents/MacOS/Quillets");
        std::ofstream(Page("index.html")) << "<!DOCTYPE html><title>Index</title>";
        std::ofstream map(Map());
        map << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
        for (long topic = 0; topic < topics; ++topic)
            map << "  <key>" << topic << "</key>\n  <string>topic" << topic << ".html</string>\n";
        map << "</dict>\n</plist>\n";
    }
    ~CHelpBundle() { std::filesystem::remove_all(m_folder); }
    CHelpBundle(const CHelpBundle&) = delete;
    CHelpBundle& operator=(const CHelpBundle&) = delete;

    std::string Map() const { return Page("ContextMap.xml"); }
    std::string Code() const { return m_folder + "/Contents/MacOS/Quillets"; }

private:
    static std::string MakeFolder()
    {
        std::string pattern = std::filesystem::temp_directory_path().string() + "/quillets-bench-XXXXXX";
        return mkdtemp(pattern.data()) ? pattern : std::string();
    }
    std::string Page(const std::string& name) const
    {
        return m_folder + "/Contents/Resources/en.lproj/Quillets/VST/" + name;
    }

    const std::string m_folder;
};

void ReadWithLibplist(const std::string& path)
{
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    std::vector<char> bytes(std::filesystem::file_size(path));
    const std::size_t size = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    plist_t root = nullptr;
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(size), &root);
    benchmark::DoNotOptimize(root);
    plist_free(root);
}

double Median(std::vector<double>& times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

OSStatus TakePage(CFURLRef page, CFURLRef, void* count)
{
    benchmark::DoNotOptimize(page);
    ++*static_cast<long*>(count);
    return noErr;
}

void OpenHelp(benchmark::State& state)
{
    const CHelpBundle bundle(state.range(0));
    void* const code = dlopen(bundle.Code().c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto factory =
        reinterpret_cast<GetLibProductManagerProc>(code ? dlsym(code, "GetLibProductManager") : nullptr);
    if (!factory) {
        state.SkipWithError("the bundle cannot be loaded");
        return;
    }
    IProductManager& manager = *factory();
    const auto topic = static_cast<unsigned>(state.range(0) - 1);
    long opened = 0;
    CVSetLaunchHandler(TakePage, &opened);
    manager.OpenHelp(nullptr, topic); // loads GLib, once in a process
    using Microseconds = std::chrono::duration<double, std::micro>;
    std::vector<double> ours;
    std::vector<double> floor;
    for (auto step : state) {
        (void)step;
        const auto start = Clock::now();
        manager.OpenHelp(nullptr, topic);
        const auto middle = Clock::now();
        ReadWithLibplist(bundle.Map());
        floor.push_back(Microseconds(Clock::now() - middle).count());
        ours.push_back(Microseconds(middle - start).count());
        state.SetIterationTime(std::chrono::duration<double>(middle - start).count());
    }
    CVSetLaunchHandler(nullptr, nullptr);
    if (opened != static_cast<long>(state.iterations()) + 1)
        state.SkipWithError("not every call came to a page");
    state.counters["libplist_us"] = Median(floor);
    state.counters["ratio"] = Median(ours) / Median(floor);
    dlclose(code);
}

} // namespace

BENCHMARK(OpenHelp)->Arg(10)->Arg(1000)->Arg(100000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
