// tests/frame/OwnBundleTest.cpp
//
// The destructor never lets the component's own bundle go, by whatever way it was reached: it
// compares the bundle's URL with the one found through the loaded image.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "tests/support/Support.h"

namespace {

std::string CopyBundle(const std::string& bundle)
{
    std::filesystem::create_directories(bundle + "/Contents/MacOS");
    std::filesystem::copy_file(CV_OWN_BUNDLE_PROBE, bundle + "/Contents/MacOS/code");
    return bundle;
}

long ReleasesOf(const std::string& bundle, std::function<void()> meanwhile = {}, const char* other = nullptr)
{
    void* const code = dlopen((bundle + "/Contents/MacOS/code").c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(code, nullptr) << dlerror();
    if (!code)
        return -2;
    const auto ask =
        reinterpret_cast<long (*)(const char*, void (*)(void*), void*)>(dlsym(code, "ReleasesOfDestructor"));
    const long released = ask(
        other,
        [](void* context) {
            const auto& work = *static_cast<std::function<void()>*>(context);
            if (work)
                work();
        },
        &meanwhile);
    dlclose(code);
    return released;
}

} // namespace

TEST(OwnBundle, IsKeptByTheDestructor)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(ReleasesOf(CopyBundle(folder / "Own.bundle")), 0);
}

TEST(OwnBundle, IsKeptWhateverLettersItsPathHas)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(ReleasesOf(CopyBundle(folder / "with blank #1 100% \xC3\xA9/Own.bundle")), 0);
    EXPECT_EQ(ReleasesOf(CopyBundle(folder / "no UTF-8 \xFF/Own.bundle")), 0);
}

TEST(OwnBundle, IsKeptWhenReachedThroughASymbolicLink)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "Own.bundle");
    std::filesystem::create_directory_symlink(folder / "Own.bundle", folder / "Link.bundle");
    EXPECT_EQ(ReleasesOf(folder / "Link.bundle"), 0);
}

TEST(OwnBundle, IsKeptWhenLoadedByARelativePath)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "sub/Own.bundle");
    const int code = RunInChild([&folder] {
        if (chdir(folder.Path().c_str()) != 0)
            return 1;
        EXPECT_EQ(ReleasesOf("sub/Own.bundle", [] { EXPECT_EQ(chdir("/"), 0); }), 0);
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(OwnBundle, IsKeptWhenLoadedByARoundaboutPath)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "sub/Own.bundle");
    EXPECT_EQ(ReleasesOf(folder / "sub/./../sub//Own.bundle"), 0);
}

TEST(OwnBundle, IsKeptWhenMovedMeanwhile)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "Own.bundle");
    EXPECT_EQ(ReleasesOf(bundle, [&] { std::filesystem::rename(bundle, folder / "Moved.bundle"); }), 0);
}

TEST(OwnBundle, IsKeptWhenTheFolderAroundItIsMovedMeanwhile)
{
    const CTemporaryFolder folder;
    const std::string bundle = CopyBundle(folder / "old/Own.bundle");
    EXPECT_EQ(ReleasesOf(bundle, [&] { std::filesystem::rename(folder / "old", folder / "new"); }), 0);
}

TEST(OwnBundle, IsTheOnlyOneThatIsKept)
{
    const CTemporaryFolder folder;
    const std::string other = CopyBundle(folder / "Other.bundle");
    EXPECT_EQ(ReleasesOf(CopyBundle(folder / "Own.bundle"), {}, other.c_str()), 1);
}

// Init keeps at most 258 bytes of the path, so it opens nothing here; nothing else goes wrong.
TEST(OwnBundle, ThatLiesTooDeepIsNotOpened)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(ReleasesOf(CopyBundle(folder / std::string(200, 'a') + "/" + std::string(100, 'b') + "/Own.bundle")), -1);
}
