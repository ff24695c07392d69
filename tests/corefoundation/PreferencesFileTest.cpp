// tests/corefoundation/PreferencesFileTest.cpp
//
// Stamps, set by hand: which of them tell a later change, and which tell files apart.
#include "platform/corefoundation/PreferencesFile.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/support/Support.h"

namespace {

constexpr long kMillisecond = 1000000;

FileStamp StampAt(std::int64_t seconds, long nanoseconds)
{
    FileStamp stamp;
    stamp.exists = true;
    stamp.changed.tv_sec = stamp.modified.tv_sec = static_cast<time_t>(seconds);
    stamp.changed.tv_nsec = stamp.modified.tv_nsec = nanoseconds;
    return stamp;
}

TEST(FileStamp, YoungerThanATickTellsNothing)
{
    const FileStamp stamp = StampAt(1000, 500 * kMillisecond);
    EXPECT_FALSE(ShowsLaterChanges(stamp, {1000, 500 * kMillisecond})) << "read at once";
    EXPECT_FALSE(ShowsLaterChanges(stamp, {1000, 510 * kMillisecond})) << "a clock of 100 Hz may still say the same";
    EXPECT_TRUE(ShowsLaterChanges(stamp, {1000, 520 * kMillisecond}));
    EXPECT_TRUE(ShowsLaterChanges(stamp, {1001, 0}));
}

TEST(FileStamp, OfTheFutureTellsNothing)
{
    EXPECT_FALSE(ShowsLaterChanges(StampAt(1000, 1), {999, 0})) << "the clock was set back";
    EXPECT_FALSE(ShowsLaterChanges(StampAt(INT64_MAX, 1), {1000, 0}));
    EXPECT_TRUE(ShowsLaterChanges(StampAt(INT64_MIN, 1), {1000, 0}));
}

TEST(FileStamp, InWholeSecondsNeedsLonger)
{
    EXPECT_FALSE(ShowsLaterChanges(StampAt(1000, 0), {1002, 0})) << "some file systems count two seconds";
    EXPECT_TRUE(ShowsLaterChanges(StampAt(1000, 0), {1002, 200 * kMillisecond}));
}

TEST(FileStamp, AgesByTheLastChangeNotByTheModification)
{
    FileStamp stamp = StampAt(1000, 1);
    stamp.modified = {10, 1}; // a backup brings an old time back
    EXPECT_FALSE(ShowsLaterChanges(stamp, {1000, 2}));
}

TEST(FileStamp, OfNothingTellsThatSomethingCame)
{
    EXPECT_TRUE(ShowsLaterChanges(FileStamp(), {1000, 0}));
    EXPECT_FALSE(FileStamp() == StampAt(0, 0));
    EXPECT_TRUE(FileStamp() == FileStamp());
}

TEST(FileStamp, DiffersInEachOfItsParts)
{
    const FileStamp stamp = StampAt(1000, 1);
    EXPECT_TRUE(stamp == StampAt(1000, 1));
    FileStamp other = stamp;
    other.inode = 1;
    EXPECT_FALSE(stamp == other);
    other = stamp;
    other.device = 1;
    EXPECT_FALSE(stamp == other);
    other = stamp;
    other.size = 1;
    EXPECT_FALSE(stamp == other);
    other = stamp;
    other.modified.tv_nsec = 2;
    EXPECT_FALSE(stamp == other);
    other = stamp;
    other.changed.tv_sec = 999;
    EXPECT_FALSE(stamp == other);
}

TEST(PreferencesFile, IsUnsettledWhenJustWritten)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "a.plist", "<plist version=\"1.0\"><dict/></plist>");
    const PreferencesFile file = ReadPreferencesFile(folder / "a.plist", nullptr);
    EXPECT_EQ(file.state, FileState::Read);
    EXPECT_FALSE(file.isSettled);
}

TEST(PreferencesFile, TakesTheValuesOverWhereTheBytesAreTheSame)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "a.plist", "<plist version=\"1.0\"><dict><key>k</key><string>v</string></dict></plist>");
    const PreferencesFile first = ReadPreferencesFile(folder / "a.plist", nullptr);
    const PreferencesFile second = ReadPreferencesFile(folder / "a.plist", &first);
    EXPECT_EQ(first.values.Get(), second.values.Get());
}

TEST(PreferencesFile, OnProcIsNotLocal)
{
    EXPECT_FALSE(IsOnLocalFileSystem("/proc/self/status")) << "not known to be: stamps are asked for anew";
    EXPECT_FALSE(ReadPreferencesFile("/proc/self/status", nullptr).isSettled);
}

TEST(PreferencesFile, TakesTheNearestFolderThatExists)
{
    EXPECT_EQ(IsOnLocalFileSystem(OwnFolder() + "/not/there/yet.plist"), IsOnLocalFileSystem(OwnFolder()));
}

TEST(PreferencesFile, OfAListThatIsNestedTooDeepIsMalformed)
{
    std::string deep = "<plist version=\"1.0\"><dict><key>k</key>";
    for (int level = 0; level < 100000; ++level)
        deep += "<array>";
    for (int level = 0; level < 100000; ++level)
        deep += "</array>";
    EXPECT_FALSE(ParsePreferences(deep + "</dict></plist>"));
}

} // namespace
