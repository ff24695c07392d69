// tests/corefoundation/PreferencesWatchTest.cpp
//
// Change notification by itself: what is news, what ends the watch, and where there is none.
#include "platform/corefoundation/PreferencesWatch.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>

#include <cstring>
#include <filesystem>

#include "tests/support/Support.h"

namespace {

namespace fs = std::filesystem;

class PreferencesWatch : public testing::Test {
protected:
    PreferencesWatch()
    {
        fs::create_directories(m_folder / "a/b");
        WriteFile(m_folder / "a/b/x.plist", "1");
    }
    // What the last change was to the watch.
    enum class Told { Nothing, News, End };
    Told Tell()
    {
        const auto generation = m_watch.Generation();
        const auto epoch = m_watch.Epoch();
        m_watch.Drain();
        return m_watch.Epoch() != epoch ? Told::End : m_watch.Generation() != generation ? Told::News : Told::Nothing;
    }
    CTemporaryFolder m_folder;
    CPreferencesWatch m_watch;
};

TEST_F(PreferencesWatch, TellsOfPreferenceFilesOnly)
{
    ASSERT_TRUE(m_watch.Cover(m_folder / "a/b"));
    EXPECT_EQ(Tell(), Told::Nothing);
    WriteFile(m_folder / "a/b/x.plist", "2");
    EXPECT_EQ(Tell(), Told::News);
    EXPECT_EQ(Tell(), Told::Nothing);
    WriteFile(m_folder / "a/b/x.plist.lock", "");
    WriteFile(m_folder / "a/y.plist", "");
    EXPECT_EQ(Tell(), Told::Nothing);
    fs::remove(m_folder / "a/b/x.plist");
    EXPECT_EQ(Tell(), Told::News);
}

TEST_F(PreferencesWatch, EndsWhenTheFolderOrOneAboveItMoves)
{
    ASSERT_TRUE(m_watch.Cover(m_folder / "a/b"));
    fs::rename(m_folder / "a", m_folder / "c");
    EXPECT_EQ(Tell(), Told::End);
    ASSERT_TRUE(m_watch.Cover(m_folder / "c/b"));
    fs::remove_all(m_folder / "c/b");
    EXPECT_EQ(Tell(), Told::End);
}

TEST_F(PreferencesWatch, AwaitsAFolderThatIsNotThereYet)
{
    ASSERT_TRUE(m_watch.Cover(m_folder / "d/e"));
    WriteFile(m_folder / "other", "");
    EXPECT_EQ(Tell(), Told::Nothing);
    fs::create_directories(m_folder / "d");
    EXPECT_EQ(Tell(), Told::End);
}

TEST_F(PreferencesWatch, EndsWhenALinkOnTheWayIsTurned)
{
    fs::create_directory_symlink("a", m_folder / "link");
    ASSERT_TRUE(m_watch.Cover(m_folder / "link/b"));
    WriteFile(m_folder / "a/b/x.plist", "2");
    EXPECT_EQ(Tell(), Told::News);
    fs::create_directory_symlink("elsewhere", m_folder / "turned");
    fs::rename(m_folder / "turned", m_folder / "link");
    EXPECT_EQ(Tell(), Told::End);
}

TEST_F(PreferencesWatch, EndsOnOverflow)
{
    ASSERT_TRUE(m_watch.Cover(m_folder / "a/b"));
    inotify_event event = {};
    event.wd = -1;
    event.mask = IN_Q_OVERFLOW;
    char bytes[sizeof event];
    std::memcpy(bytes, &event, sizeof event);
    const auto epoch = m_watch.Epoch();
    m_watch.Handle(bytes, sizeof bytes);
    EXPECT_NE(m_watch.Epoch(), epoch);
}

TEST_F(PreferencesWatch, CannotBeHadWhereAnotherMachineMayWrite)
{
    EXPECT_FALSE(m_watch.Cover("/proc/self"));
}

TEST_F(PreferencesWatch, CannotBeHadAtTheSystemsLimit)
{
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 3;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool covered = m_watch.Cover(m_folder / "a/b");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(covered);
    EXPECT_TRUE(m_watch.Cover(m_folder / "a/b"));
}

} // namespace
