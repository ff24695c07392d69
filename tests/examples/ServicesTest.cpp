// tests/examples/ServicesTest.cpp
//
// How the example plug-in comes to the product services: found, shared, done without, let go.
#include "examples/quillet/Services.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/support/Support.h"

namespace {

using namespace quillet;

constexpr auto kCopyAll = std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks;

// A plug-in's folder with the bundle in it.
class CPluginFolder {
public:
    CPluginFolder() { std::filesystem::copy(BuiltBundle(), m_folder / "Quillets.bundle", kCopyAll); }
    const std::string& Path() const { return m_folder.Path(); }

private:
    CTemporaryFolder m_folder;
};

bool IsMapped(const std::string& part)
{
    return ReadFile("/proc/self/maps").find(part) != std::string::npos;
}

TEST(Services, AreFoundBesideThePlugin)
{
    const CPluginFolder plugin;
    const auto services = CServices::Load(plugin.Path());
    ASSERT_NE(services, nullptr);
    EXPECT_STREQ(services->Manager().GetProductName(), "Corvane Audio Quillets for Mac");
    char path[260] = "";
    EXPECT_TRUE(services->Manager().GetResourcesBundlePath(path, sizeof path));
    EXPECT_EQ(std::string(path), plugin.Path() + "/Quillets.bundle");
}

TEST(Services, MissingBundleIsNoServices)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(CServices::Load(folder.Path()), nullptr);
}

TEST(Services, DamagedBundleIsNoServices)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "Quillets.bundle/Contents/MacOS/Quillets", "no code");
    EXPECT_EQ(CServices::Load(folder.Path()), nullptr);
}

TEST(Services, TwoInstancesShareOneObject)
{
    const CPluginFolder plugin;
    const auto first = CServices::Load(plugin.Path());
    const auto second = CServices::Load(plugin.Path());
    ASSERT_TRUE(first && second);
    EXPECT_EQ(&first->Manager(), &second->Manager());
}

TEST(Services, TwoPluginsWithABundleEachShareOneObject)
{
    const CPluginFolder one;
    const CPluginFolder other;
    const auto first = CServices::Load(one.Path());
    const auto second = CServices::Load(other.Path());
    ASSERT_TRUE(first && second);
    EXPECT_EQ(&first->Manager(), &second->Manager());
    EXPECT_FALSE(IsMapped(other.Path()));
}

TEST(Services, ObjectLivesAsLongAsOneUserDoes)
{
    const CPluginFolder plugin;
    auto first = CServices::Load(plugin.Path());
    const auto second = CServices::Load(plugin.Path());
    ASSERT_TRUE(first && second);
    first.reset();
    EXPECT_STREQ(second->Manager().GetProductName(), "Corvane Audio Quillets for Mac");
}

TEST(Services, LoadedFiveHundredTimesLeaveOnlyTheLayerBehind)
{
    const auto load = [] {
        const auto services = CServices::Load(CV_BUILD_DIR);
        ASSERT_NE(services, nullptr);
        services->OnDialogEnd([] {});
        services->Pump();
    };
    load();
    EXPECT_FALSE(IsMapped("Contents/MacOS/Quillets"));
    const auto count = [](const char* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    };
    const auto descriptors = count("/proc/self/fd");
    const auto threads = count("/proc/self/task");
    for (int time = 0; time < 500 && !HasFailure(); ++time)
        load();
    EXPECT_FALSE(IsMapped("Contents/MacOS/Quillets"));
    for (const char* library : {"libX11", "libxcb", "libcairo", "libpango", "libglib", "cvplatform-"})
        EXPECT_FALSE(IsMapped(library)) << library;
    EXPECT_LE(count("/proc/self/fd"), descriptors + 1); // the layer may watch the preferences that we read so often
    EXPECT_EQ(count("/proc/self/task"), threads);
}

TEST(Services, EveryUserHearsThatADialogEnded)
{
    const auto first = CServices::Load(CV_BUILD_DIR);
    const auto second = CServices::Load(CV_BUILD_DIR);
    ASSERT_TRUE(first && second);
    int ended = 0;
    first->OnDialogEnd([&] { ++ended; });
    second->OnDialogEnd([&] { ++ended; });
    EventRef event = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, 'cvev', 'iend', 0, kEventAttributeNone, &event), noErr);
    EXPECT_EQ(SendEventToEventTarget(event, GetApplicationEventTarget()), eventNotHandledErr);
    ReleaseEvent(event);
    EXPECT_EQ(ended, 2);
}

} // namespace
