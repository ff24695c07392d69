// tests/prefs/PreferenceFilesTest.cpp
//
// The store and its files: what they look like, what is done about those that are not as they
// should be, and that no change of theirs goes unseen.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "tests/support/PreferencesSupport.h"
#include <CVPlatform/CVPlatform.h>

namespace {

namespace fs = std::filesystem;

class PreferenceFiles : public CPreferencesTest {
protected:
    static std::string FolderOf(const std::string& path) { return fs::path(path).parent_path().string(); }
};

// A file of the store's own with one key.
std::string BytesWith(const std::string& section, const std::string& key, const std::string& value,
                      const std::string& path)
{
    EXPECT_TRUE(SetKey(section, key, value));
    return ReadFile(path);
}

TEST_F(PreferenceFiles, LieInTheFirstFolderForTheMachineAndInTheUsersOwn)
{
    const CEnvironment dirs("XDG_CONFIG_DIRS",
                            ("relative:" + (m_folder / "first") + ":" + (m_folder / "second")).c_str());
    EXPECT_EQ(MachineFile().rfind((m_folder / "first") + "/corvane/ByHost/com.corvane.common.", 0), 0U);
    EXPECT_EQ(UserFile().rfind((m_folder / "home") + "/.config/corvane/ByHost/com.corvane.common.", 0), 0U);
    const CEnvironment none("XDG_CONFIG_DIRS", nullptr);
    EXPECT_EQ(MachineFile().rfind("/etc/xdg/corvane/ByHost/", 0), 0U);
    const CEnvironment relative("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(UserFile().rfind((m_folder / "home") + "/.config/corvane/", 0), 0U);
}

TEST_F(PreferenceFiles, FollowAChangeOfTheEnvironment)
{
    ASSERT_TRUE(SetKey("Common", "Key", "here"));
    {
        const CEnvironment dirs("XDG_CONFIG_DIRS", (m_folder / "elsewhere").c_str());
        EXPECT_EQ(GetKey("Common", "Key"), "(none)");
        ASSERT_TRUE(SetKey("Common", "Key", "there"));
    }
    EXPECT_EQ(GetKey("Common", "Key"), "here");
}

TEST_F(PreferenceFiles, WithoutHomeThePasswordDatabaseServes)
{
    const CEnvironment config("XDG_CONFIG_HOME", nullptr);
    const CEnvironment home("HOME", nullptr);
    const std::string path = UserFile();
    EXPECT_EQ(path[0], '/');
    EXPECT_NE(path.find("/.config/corvane/ByHost/"), std::string::npos);
}

TEST_F(PreferenceFiles, NamesAreShortEnoughAndOwn)
{
    for (const std::string& domain : {std::string(258, 'a'), std::string(258, '/'), std::string("\xF0\x9F\x8E\x9B")}) {
        const std::string path = MachineFile("com." + domain);
        EXPECT_LE(fs::path(path).filename().string().size(), 240U) << "room is left for companions";
        EXPECT_EQ(FolderOf(path), (m_folder / "machine") + "/corvane/ByHost");
    }
    EXPECT_NE(MachineFile("a/b"), MachineFile("a%2Fb"));
    EXPECT_NE(MachineFile(".."), MachineFile("."));
    EXPECT_NE(MachineFile(std::string(200, 'a')), MachineFile(std::string(201, 'a')));
    EXPECT_EQ(FolderOf(MachineFile("../../up")), (m_folder / "machine") + "/corvane/ByHost");
}

TEST_F(PreferenceFiles, HaveTheRightsOfTheirScopeWhateverTheMask)
{
    const mode_t before = umask(077);
    EXPECT_TRUE(SetKey("Common", "Key", "value"));
    (void)umask(0);
    EXPECT_EQ(RunAsUser([] { return SetKey("Common", "Key", "value") ? 0 : 1; }), 0);
    (void)umask(before);
    EXPECT_EQ(ModeOf(MachineFile()), 0644U);
    EXPECT_EQ(ModeOf(m_folder / "machine/corvane"), 0755U);
    EXPECT_EQ(ModeOf(m_folder / "machine/corvane/ByHost"), 0755U);
    EXPECT_EQ(ModeOf(UserFile()), 0600U);
    EXPECT_EQ(ModeOf(m_folder / "home/.config/corvane"), 0700U);
    EXPECT_EQ(ModeOf(m_folder / "home/.config/corvane/ByHost"), 0700U);
    EXPECT_EQ(ModeOf(MachineFile() + ".lock"), 0600U) << "who can open it can keep writers out";
}

TEST_F(PreferenceFiles, OfAUserStayThatUsersWhenRootWrites)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    ASSERT_EQ(RunAsUser([] { return SetKey("Common", "Key", "first") ? 0 : 1; }), 0);
    CFPreferencesSetValue(CFSTR("Key"), CFSTR("second"), CFSTR("com.corvane.other"), kCFPreferencesCurrentUser,
                          kCFPreferencesCurrentHost);
    ASSERT_TRUE(
        CFPreferencesSynchronize(CFSTR("com.corvane.other"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(RunAsUser([] { return SetKey("Other", "Key", "third") && SetKey("Common", "Key", "third") ? 0 : 1; }), 0);
}

TEST_F(PreferenceFiles, AMalformedFileIsPutAsideWhenWrittenAndTheStoreGoesOn)
{
    const std::string good = BytesWith("Common", "Key", "value", MachineFile());
    const std::string broken[] = {"",
                                  "garbage",
                                  "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Key</key><str",
                                  "<plist version=\"1.0\"><array><string>no dictionary</string></array></plist>",
                                  good.substr(0, good.size() - 1),
                                  good.substr(0, 12),
                                  std::string(200, '\0')};
    std::size_t number = 0;
    for (const std::string& bytes : broken) {
        ReplaceFile(MachineFile(), bytes);
        EXPECT_EQ(GetKey("Common", "Key"), "(none)");
        EXPECT_EQ(ReadFile(MachineFile()), bytes) << "reading leaves it where it is";
        EXPECT_TRUE(SetKey("Common", "New", "value"));
        EXPECT_EQ(GetKey("Common", "New"), "value");
        EXPECT_EQ(ReadFile(MachineFile() + ".damaged-" + std::to_string(++number)), bytes);
    }
    EXPECT_EQ(ReadFile(MachineFile() + ".damaged-1"), broken[0]) << "an earlier one is never overwritten";
}

TEST_F(PreferenceFiles, AStaleTemporaryFileIsNeitherReadNorKept)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    WriteXml(MachineFile() + ".tmp", "<key>Key</key><string>half</string>");
    EXPECT_EQ(GetKey("Common", "Key"), "value");
    EXPECT_TRUE(SetKey("Common", "Other", "value"));
    EXPECT_EQ(GetKey("Common", "Key"), "value");
    EXPECT_FALSE(FileExists(MachineFile() + ".tmp"));
}

TEST_F(PreferenceFiles, ALinkIsFollowedAndKept)
{
    const std::string target = m_folder / "elsewhere/settings.plist";
    WriteXml(target, "<key>Key</key><string>linked</string>");
    fs::create_directories(FolderOf(MachineFile()));
    fs::create_symlink("../../../elsewhere/settings.plist", MachineFile());
    EXPECT_EQ(GetKey("Common", "Key"), "linked");
    EXPECT_TRUE(SetKey("Common", "Other", "value"));
    EXPECT_TRUE(fs::is_symlink(MachineFile()));
    EXPECT_FALSE(fs::is_symlink(target));
    EXPECT_EQ(ReadFile(target), ReadFile(MachineFile()));
    EXPECT_EQ(GetKey("Common", "Key"), "linked");
    EXPECT_EQ(NamesIn(FolderOf(MachineFile())).size(), 1U) << "lock and temporary lie beside the target";
}

TEST_F(PreferenceFiles, ALinkToNothingYetIsWrittenThrough)
{
    fs::create_directories(FolderOf(MachineFile()));
    fs::create_symlink(m_folder / "later.plist", MachineFile());
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    EXPECT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_TRUE(FileExists(m_folder / "later.plist"));
    EXPECT_EQ(GetKey("Common", "Key"), "value");
}

TEST_F(PreferenceFiles, LinksInACircleFailQuietly)
{
    fs::create_directories(FolderOf(MachineFile()));
    fs::create_symlink(MachineFile(), MachineFile());
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    EXPECT_TRUE(SetKey("Common", "Key", "value")) << "the user's scope serves";
    EXPECT_TRUE(fs::is_symlink(MachineFile()));
    EXPECT_TRUE(FileExists(UserFile()));
}

TEST_F(PreferenceFiles, AFolderWhereTheFileShouldBeIsLeftAlone)
{
    fs::create_directories(MachineFile() + "/inside");
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    EXPECT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_TRUE(FileExists(MachineFile() + "/inside"));
    EXPECT_EQ(GetKey("Common", "Key"), "value");
    EXPECT_TRUE(FileExists(UserFile()));
}

TEST_F(PreferenceFiles, APipeWhereTheFileShouldBeDoesNotHang)
{
    fs::create_directories(FolderOf(MachineFile()));
    ASSERT_EQ(mkfifo(MachineFile().c_str(), 0600), 0);
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    EXPECT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_TRUE(FileExists(UserFile()));
}

TEST_F(PreferenceFiles, AMachineWideFileThatMayNotBeReadFallsBack)
{
    ASSERT_TRUE(SetKey("Common", "Key", "secret"));
    const std::string before = ReadFile(MachineFile());
    ASSERT_EQ(chmod(MachineFile().c_str(), 0), 0);
    EXPECT_EQ(RunAsUser([] {
                  return GetKey("Common", "Key") == "(none)" && SetKey("Common", "Key", "own") &&
                                 GetKey("Common", "Key") == "own"
                             ? 0
                             : 1;
              }),
              0);
    ASSERT_EQ(chmod(MachineFile().c_str(), 0644), 0);
    EXPECT_EQ(ReadFile(MachineFile()), before);
}

TEST_F(PreferenceFiles, WhereNothingMayBeWrittenTheAnswerIsFalse)
{
    const int code = RunAsUser([&] {
        (void)chmod((m_folder / "home/.config").c_str(), 0555);
        return !SetKey("Common", "Key", "value") && GetKey("Common", "Key") == "(none)" ? 0 : 1;
    });
    (void)chmod((m_folder / "home/.config").c_str(), 0755);
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(NamesIn(m_folder / "home/.config").empty());
}

TEST_F(PreferenceFiles, ChangesWithinATickAreSeen)
{
    const std::string path = MachineFile();
    const std::string one = BytesWith("Common", "Key", "a", path);
    const std::string two = BytesWith("Common", "Key", "b", path);
    ASSERT_EQ(one.size(), two.size());
    for (int round = 0; round < 300; ++round) {
        ReplaceFile(path, round % 2 ? one : two);
        ASSERT_EQ(GetKey("Common", "Key"), round % 2 ? "a" : "b") << "replaced, round " << round;
        WriteFile(path, round % 2 ? two : one);
        ASSERT_EQ(GetKey("Common", "Key"), round % 2 ? "b" : "a") << "in place, round " << round;
    }
}

// Reads until the store has gone over to change notification.
void ReadOften()
{
    CBaseProductManager manager;
    char buffer[8];
    for (int round = 0; round < 5000; ++round)
        (void)manager.GetRegistryKey("Common", "Key", buffer, sizeof buffer);
}

// Each way in which the file may change, with what is read before and after it.
class PreferenceFreshness : public PreferenceFiles, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override
    {
        m_one = BytesWith("Common", "Key", "a", MachineFile());
        m_two = BytesWith("Common", "Key", "b", MachineFile());
        if (GetParam())
            ReadOften();
        ASSERT_EQ(GetKey("Common", "Key"), "b");
    }
    std::string m_one;
    std::string m_two;
};

TEST_P(PreferenceFreshness, AReplacedFileIsSeen)
{
    for (int round = 0; round < 50; ++round) {
        ReplaceFile(MachineFile(), m_one);
        ASSERT_EQ(GetKey("Common", "Key"), "a");
        ReplaceFile(MachineFile(), m_two);
        ReplaceFile(MachineFile(), m_one);
        ReplaceFile(MachineFile(), m_two); // the inode's number may be the first one's again
        ASSERT_EQ(GetKey("Common", "Key"), "b");
    }
}

TEST_P(PreferenceFreshness, AFileWrittenInPlaceIsSeen)
{
    for (int round = 0; round < 50; ++round) {
        WriteFile(MachineFile(), m_one);
        ASSERT_EQ(GetKey("Common", "Key"), "a");
        WriteFile(MachineFile(), m_two);
        ASSERT_EQ(GetKey("Common", "Key"), "b");
    }
}

TEST_P(PreferenceFreshness, AnOlderBackupIsSeen)
{
    const std::string path = MachineFile();
    WriteFile(path + ".bak", m_one);
    const timespec old[2] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (path + ".bak").c_str(), old, 0), 0);
    ASSERT_EQ(rename((path + ".bak").c_str(), path.c_str()), 0);
    EXPECT_EQ(GetKey("Common", "Key"), "a");
    WriteFile(path, m_two);
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), old, 0), 0);
    EXPECT_EQ(GetKey("Common", "Key"), "b") << "same size, same times of modification";
}

TEST_P(PreferenceFreshness, ADeletedFileAndItsReturnAreSeen)
{
    fs::remove(MachineFile());
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    ReplaceFile(MachineFile(), m_one);
    EXPECT_EQ(GetKey("Common", "Key"), "a");
}

TEST_P(PreferenceFreshness, ARemovedFolderAndItsReturnAreSeen)
{
    fs::remove_all(m_folder / "machine");
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    if (GetParam())
        ReadOften(); // with the folder awaited
    WriteFile(MachineFile(), m_one);
    EXPECT_EQ(GetKey("Common", "Key"), "a");
}

TEST_P(PreferenceFreshness, AMovedFolderOnTheWayIsSeen)
{
    fs::rename(m_folder / "machine", m_folder / "away");
    EXPECT_EQ(GetKey("Common", "Key"), "(none)");
    WriteFile(MachineFile(), m_one);
    EXPECT_EQ(GetKey("Common", "Key"), "a");
    fs::remove_all(m_folder / "machine");
    fs::rename(m_folder / "away", m_folder / "machine");
    EXPECT_EQ(GetKey("Common", "Key"), "b");
}

TEST_P(PreferenceFreshness, AFolderThatBecomesALinkElsewhereIsSeen)
{
    fs::rename(m_folder / "machine", m_folder / "first");
    fs::create_directory_symlink(m_folder / "first", m_folder / "machine");
    EXPECT_EQ(GetKey("Common", "Key"), "b");
    if (GetParam())
        ReadOften();
    fs::copy(m_folder / "first", m_folder / "second", fs::copy_options::recursive);
    fs::create_directory_symlink(m_folder / "second", m_folder / "turned");
    const std::string name = fs::path(MachineFile()).filename().string();
    WriteFile((m_folder / "second/corvane/ByHost/") + name, m_one);
    fs::rename(m_folder / "turned", m_folder / "machine");
    EXPECT_EQ(GetKey("Common", "Key"), "a");
}

TEST_P(PreferenceFreshness, ALinkedFilesTargetIsSeen)
{
    const std::string target = m_folder / "elsewhere/settings.plist";
    WriteFile(target, m_one);
    fs::remove(MachineFile());
    fs::create_symlink(target, MachineFile());
    if (GetParam())
        ReadOften();
    EXPECT_EQ(GetKey("Common", "Key"), "a");
    ReplaceFile(target, m_two);
    EXPECT_EQ(GetKey("Common", "Key"), "b");
    WriteFile(target, m_one);
    EXPECT_EQ(GetKey("Common", "Key"), "a");
}

TEST_P(PreferenceFreshness, AnotherProcessesWriteIsSeen)
{
    for (const char* value : {"x", "y", "x", "z"}) {
        EXPECT_EQ(RunInChild([value] { return SetKey("Common", "Key", value) ? 0 : 1; }), 0);
        EXPECT_EQ(GetKey("Common", "Key"), value);
    }
}

TEST_P(PreferenceFreshness, AForkedChildSeesChangesAndTakesNoneFromItsParent)
{
    EXPECT_EQ(RunInChild([&] {
                  ReplaceFile(MachineFile(), m_one);
                  return GetKey("Common", "Key") == "a" ? 0 : 1;
              }),
              0);
    EXPECT_EQ(GetKey("Common", "Key"), "a") << "the child has not eaten the parent's news";
}

INSTANTIATE_TEST_SUITE_P(Ways, PreferenceFreshness, testing::Values(false, true),
                         [](const auto& way) { return way.param ? "ByNotification" : "ByStamps"; });

TEST_F(PreferenceFiles, AStoppedWriterHoldsUpAWriteForTwoSecondsOnly)
{
    ASSERT_TRUE(SetKey("Common", "Key", "before"));
    const int other = open((MachineFile() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    ASSERT_EQ(fcntl(other, F_OFD_SETLK, &whole), 0);
    const auto start = std::chrono::steady_clock::now();
    CFPreferencesSetValue(CFSTR("Key"), CFSTR("after"), CFSTR("com.corvane.common"), kCFPreferencesAnyUser,
                          kCFPreferencesCurrentHost);
    EXPECT_FALSE(
        CFPreferencesSynchronize(CFSTR("com.corvane.common"), kCFPreferencesAnyUser, kCFPreferencesCurrentHost));
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(1900));
    EXPECT_LT(waited, std::chrono::seconds(10)) << "two, on a machine that has nothing else to do";
    EXPECT_EQ(GetKey("Common", "Key"), "before") << "reading waits for nobody";
    close(other);
    EXPECT_TRUE(SetKey("Common", "Key", "after"));
}

std::size_t CountDescriptors()
{
    return NamesIn("/proc/self/fd").size();
}

TEST_F(PreferenceFiles, OnlyFrequentReadingTakesADescriptor)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    const std::size_t before = CountDescriptors();
    for (int round = 0; round < 20; ++round)
        (void)GetKey("Common", "Key");
    EXPECT_EQ(CountDescriptors(), before);
    if (CV_SANITIZED || CV_COUNTS)
        GTEST_SKIP() << "no reads are frequent enough in code that checks or counts";
    for (int attempt = 0; attempt < 50 && CountDescriptors() == before; ++attempt)
        ReadOften(); // a loaded machine may interrupt it
    EXPECT_EQ(CountDescriptors(), before + 1);
}

} // namespace
