// tests/frame/ResourceImageTest.cpp
//
// Images out of the object's bundle; the component is linked in, so that its state can be set.
#include <gtest/gtest.h>

#include <filesystem>

#include "frame/Owned.h"
#include "frame/ProductManager.h"
#include "tests/support/Support.h"

namespace {

class CManager final : public CProductManager {
public:
    CManager() { bundle = nullptr; }
    /// The destructor releases it.
    void UseBundle(const std::string& path) { bundle = OpenBundle(path.c_str()); }
    CGImageRef LoadLogo() { return LoadImageFromResourcesBundle(CFSTR("logo"), CFSTR("pict")); }
};

TEST(ResourceImage, WithoutABundleIsNull)
{
    CManager manager;
    EXPECT_EQ(manager.LoadLogo(), nullptr);
}

TEST(ResourceImage, LogoOfTheBuiltBundleHasItsSizeAndAlpha)
{
    CManager manager;
    manager.UseBundle(BuiltBundle());
    const COwned<CGImageRef> logo(manager.LoadLogo());
    ASSERT_TRUE(logo);
    EXPECT_EQ(CGImageGetWidth(logo.Get()), 192U);
    EXPECT_EQ(CGImageGetHeight(logo.Get()), 192U);
    EXPECT_EQ(CGImageGetAlphaInfo(logo.Get()), kCGImageAlphaPremultipliedFirst);
}

TEST(ResourceImage, MissingOrDamagedLogoIsNull)
{
    const CTemporaryFolder folder;
    const std::string resources = folder / "A.bundle/Contents/Resources";
    std::filesystem::create_directories(resources);
    CManager manager;
    manager.UseBundle(folder / "A.bundle");
    EXPECT_EQ(manager.LoadLogo(), nullptr) << "missing";
    WriteFile(resources + "/logo.pict", "no picture");
    EXPECT_EQ(manager.LoadLogo(), nullptr) << "damaged";
    std::filesystem::remove(resources + "/logo.pict");
    std::filesystem::create_directories(resources + "/logo.pict");
    EXPECT_EQ(manager.LoadLogo(), nullptr) << "a folder";
}

} // namespace
