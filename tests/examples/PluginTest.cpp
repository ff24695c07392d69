// tests/examples/PluginTest.cpp
//
// The built plug-in as a host loads it, and as a host that scans its plug-ins loads it very often.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/core/lv2.h>

#include <array>
#include <filesystem>
#include <set>
#include <string>

#include "examples/quillet/Ports.h"
#include "tests/support/Support.h"

namespace {

using namespace quillet;

const std::string kPlugin = CV_BUILD_DIR "/quillet.lv2/quillet.so";

// Loads the plug-in's sound, runs a block of it, and unloads it.
void LoadAndRun()
{
    void* const code = dlopen(kPlugin.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(code, nullptr) << dlerror();
    const auto find = reinterpret_cast<LV2_Descriptor_Function>(dlsym(code, "lv2_descriptor"));
    ASSERT_NE(find, nullptr);
    const LV2_Descriptor* const plugin = find(0);
    ASSERT_NE(plugin, nullptr);
    EXPECT_STREQ(plugin->URI, kPluginUri);
    EXPECT_EQ(find(1), nullptr);

    const LV2_Feature* const features[] = {nullptr};
    const LV2_Handle instance = plugin->instantiate(plugin, 48000.0, "", features);
    float gain = 0.0F;
    float tone = 0.0F;
    std::array<std::array<float, 64>, kPortCount> audio{};
    audio[kFirstInput].fill(0.25F);
    for (std::uint32_t port = 0; port < kPortCount; ++port)
        plugin->connect_port(instance, port, audio[port].data());
    plugin->connect_port(instance, kGainPort, &gain);
    plugin->connect_port(instance, kTonePort, &tone);
    plugin->connect_port(instance, kPortCount, nullptr); // no port of ours
    plugin->activate(instance);
    plugin->run(instance, 0);
    plugin->run(instance, 64);
    EXPECT_EQ(audio[kFirstOutput], audio[kFirstInput]);
    plugin->cleanup(instance);
    EXPECT_EQ(dlclose(code), 0);
}

std::set<std::string> MappedFiles()
{
    std::set<std::string> files;
    const std::string maps = ReadFile("/proc/self/maps");
    for (std::size_t at = maps.find('/'); at != std::string::npos; at = maps.find('/', at)) {
        const std::size_t end = maps.find('\n', at);
        files.insert(maps.substr(at, end - at));
        at = end;
    }
    return files;
}

std::ptrdiff_t CountEntries(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

TEST(Plugin, LoadedFiveHundredTimesLeavesNothingBehind)
{
    LoadAndRun(); // what the loader keeps for itself is there afterwards
    const std::set<std::string> files = MappedFiles();
    const std::ptrdiff_t descriptors = CountEntries("/proc/self/fd");
    for (int time = 0; time < 500 && !HasFailure(); ++time)
        LoadAndRun();
    EXPECT_EQ(MappedFiles(), files);
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
    EXPECT_EQ(CountEntries("/proc/self/task"), 1);
}

TEST(Plugin, ScannedMapsNoDisplayLibrary)
{
    void* const code = dlopen(kPlugin.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(code, nullptr);
    for (const std::string& file : MappedFiles()) {
        for (const char* library : {"libX11", "libxcb", "libcairo", "libpango", "libglib", "libgtk", "cvplatform-"})
            EXPECT_EQ(file.find(library), std::string::npos) << file;
    }
    dlclose(code);
}

TEST(Plugin, UnconnectedPortsAreNoCrash)
{
    void* const code = dlopen(kPlugin.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(code, nullptr);
    const LV2_Descriptor* const plugin = reinterpret_cast<LV2_Descriptor_Function>(dlsym(code, "lv2_descriptor"))(0);
    const LV2_Handle instance = plugin->instantiate(plugin, 48000.0, "", nullptr);
    plugin->run(instance, 64);
    plugin->cleanup(instance);
    dlclose(code);
}

TEST(Plugin, DescriptionIsValid)
{
    const ProgramResult result =
        RunProgram({"sh", "-c", "exec lv2_validate /usr/lib/lv2/*.lv2/*.ttl " CV_BUILD_DIR "/quillet.lv2/*.ttl"});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE((result.out + result.err).find("Found 0 errors"), std::string::npos) << result.out << result.err;
}

} // namespace
