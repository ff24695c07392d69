// tests/system/UnloadTest.cpp
//
// The bundle really goes: a host that scans plug-ins loads and unloads it again and again.
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/support/Owner.h"

namespace {

long CountEntries(const std::string& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

long CountMappings(const std::string& part)
{
    long count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        count += line.find(part) != std::string::npos ? 1 : 0;
    return count;
}

void LoadAndUse()
{
    const CLoadedBundle bundle;
    ASSERT_TRUE(bundle);
    IProductManager& manager = *bundle.Manager();
    char path[1024] = "";
    ASSERT_TRUE(manager.GetResourcesBundlePath(path, sizeof path));
    ASSERT_STREQ(manager.GetProductName(), "Corvane Audio Quillets for Mac");
    const auto text = Own(manager.TranslateCommonCFString(kEffectLangButton, "OK", nullptr));
    ASSERT_TRUE(text);
    ASSERT_EQ(manager.Init(nullptr, "Quillets/VST"), 1);
}

} // namespace

TEST(Unload, AThousandRoundsLeaveNothingBehind)
{
    // The own bundle is kept on purpose and the first round fills caches; both are outside the sum.
    for (int round = 0; round < 20; ++round)
        LoadAndUse();
    ASSERT_EQ(CountMappings("MacOS/Quillets"), 0) << "the bundle stays mapped";
    const long mappings = CountMappings("");
    const long descriptors = CountEntries("/proc/self/fd");
    const std::size_t memory = mallinfo2().uordblks;
    for (int round = 0; round < 1000; ++round) {
        LoadAndUse();
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
    EXPECT_EQ(CountMappings("MacOS/Quillets"), 0);
    EXPECT_EQ(CountEntries("/proc/self/task"), 1);
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
    if (!CV_SANITIZED) { // their own bookkeeping grows
        EXPECT_LE(CountMappings(""), mappings + 2) << "the heap may have been split";
        EXPECT_LE(mallinfo2().uordblks, memory + 16384) << "more than 16 bytes a round";
    }
}
