// tests/files/FilesTest.cpp
//
// A file reference must lead back to its file, and nothing else may be taken for one.
#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <thread>

#include "tests/support/Support.h"

namespace {

const UInt8* Bytes(const std::string& path)
{
    return reinterpret_cast<const UInt8*>(path.c_str());
}

std::string PathOf(const FSRef& ref)
{
    UInt8 path[PATH_MAX] = "";
    EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), noErr);
    return reinterpret_cast<const char*>(path);
}

TEST(FileReference, TakesTheRoomThatTheMacGivesIt)
{
    EXPECT_EQ(sizeof(FSRef), 80U);
}

TEST(FileReference, LeadsBackToItsFile)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "a b%20\xC3\xA4#.html";
    WriteFile(path, "x");
    FSRef ref = {};
    Boolean isFolder = true;
    ASSERT_EQ(FSPathMakeRef(Bytes(path), &ref, &isFolder), noErr);
    EXPECT_FALSE(isFolder);
    EXPECT_EQ(PathOf(ref), path);
    const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
    FSRef again = {};
    EXPECT_TRUE(CFURLGetFSRef(url, &again));
    EXPECT_EQ(std::memcmp(&ref, &again, sizeof ref), 0);
    CFRelease(url);
}

TEST(FileReference, KnowsFoldersAndTheirUrls)
{
    const CTemporaryFolder folder;
    FSRef ref = {};
    Boolean isFolder = false;
    ASSERT_EQ(FSPathMakeRef(Bytes(folder.Path()), &ref, &isFolder), noErr);
    EXPECT_TRUE(isFolder);
    const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
    EXPECT_TRUE(CFURLHasDirectoryPath(url));
    CFRelease(url);
}

TEST(FileReference, IsNotMadeOfWhatDoesNotExist)
{
    const CTemporaryFolder folder;
    FSRef ref;
    std::memset(&ref, 7, sizeof ref);
    const FSRef before = ref;
    EXPECT_EQ(FSPathMakeRef(Bytes(folder / "none"), &ref, nullptr), fnfErr);
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, Bytes(folder / "none"),
                                                                 static_cast<CFIndex>((folder / "none").size()), false);
    EXPECT_FALSE(CFURLGetFSRef(url, &ref));
    CFRelease(url);
    EXPECT_FALSE(CFURLGetFSRef(nullptr, &ref));
    EXPECT_EQ(std::memcmp(&ref, &before, sizeof ref), 0);
}

TEST(FileReference, OfZerosOrOfChanceNamesNothing)
{
    FSRef ref = {};
    UInt8 path[16] = "kept";
    EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), paramErr);
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
    std::memset(&ref, 0xA5, sizeof ref);
    EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), paramErr);
    EXPECT_EQ(FSRefMakePath(nullptr, path, sizeof path), paramErr);
    EXPECT_STREQ(reinterpret_cast<const char*>(path), "kept");
}

TEST(FileReference, OutlivesItsFile)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "page", "x");
    FSRef ref = {};
    ASSERT_EQ(FSPathMakeRef(Bytes(folder / "page"), &ref, nullptr), noErr);
    std::filesystem::remove(folder / "page");
    EXPECT_EQ(PathOf(ref), folder / "page");
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
}

TEST(FileReference, NeedsABufferThatItsPathFits)
{
    FSRef ref = {};
    ASSERT_EQ(FSPathMakeRef(Bytes("/usr"), &ref, nullptr), noErr);
    UInt8 path[5] = "";
    EXPECT_EQ(FSRefMakePath(&ref, path, 4), pathTooLongErr);
    EXPECT_EQ(FSRefMakePath(&ref, path, 5), noErr);
    EXPECT_STREQ(reinterpret_cast<const char*>(path), "/usr");
}

TEST(FileReference, IsMadeFromManyThreads)
{
    const CTemporaryFolder folder;
    const auto work = [&folder](int first) {
        for (int index = first; index < 300; index += 3) {
            const std::string path = folder / std::to_string(index / 2);
            WriteFile(path, "x");
            FSRef ref = {};
            ASSERT_EQ(FSPathMakeRef(Bytes(path), &ref, nullptr), noErr);
            EXPECT_EQ(PathOf(ref), path);
        }
    };
    std::thread threads[] = {std::thread(work, 0), std::thread(work, 1), std::thread(work, 2)};
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
