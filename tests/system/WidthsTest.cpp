// tests/system/WidthsTest.cpp
//
// Programs of 32 and of 64 bits share preferences: files, the lock and what it records. This
// program is of the one kind; PreferenceWriter of the build folder CV_OTHER_BUILD is of the other.
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/PreferencesSupport.h"

namespace {

class Widths : public CPreferencesTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(FileExists(Writer(CV_OTHER_BUILD))) << "build the other kind first: " << CV_OTHER_BUILD;
        // The fifth byte of an ELF file tells 32 bits from 64.
        ASSERT_NE(ReadFile(Writer(CV_OTHER_BUILD))[4], ReadFile(Writer(CV_BUILD_DIR))[4]);
    }
    static std::string Writer(const std::string& build) { return build + "/tests/system/PreferenceWriter"; }
    static void Write(const std::string& build, const std::string& key, const std::string& value)
    {
        const ProgramResult result = RunProgram({Writer(build), key, value});
        EXPECT_EQ(result.out, "saved=1 read=" + value + "\n") << result.err;
    }
    static std::string Read(const std::string& key)
    {
        const CFStringRef name = MakeString(key);
        CFPreferencesSynchronize(CFSTR("test"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
        const CFPropertyListRef value =
            CFPreferencesCopyValue(name, CFSTR("test"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
        const CFStringRef description = CFCopyDescription(value);
        const std::string text = TextOf(description);
        for (const CFTypeRef object : {CFTypeRef(name), value, CFTypeRef(description)})
            CFRelease(object);
        return text;
    }
};

} // namespace

TEST_F(Widths, EveryKindOfValueSurvivesBoth)
{
    WriteXml(UserFile("test"),
             "<key>Large</key><integer>-9223372036854775808</integer>"
             "<key>Larger</key><integer>9223372036854775807</integer>"
             "<key>Real</key><real>0.1</real><key>Yes</key><true/>"
             "<key>Date</key><date>2040-02-29T12:30:00Z</date><key>Data</key><data>AAEC/w==</data>"
             "<key>List</key><array><string>\xC3\xA9</string><dict><key>a</key><false/></dict></array>");
    std::vector<std::string> before;
    const std::vector<std::string> keys = {"Large", "Larger", "Real", "Yes", "Date", "Data", "List"};
    for (const std::string& key : keys)
        before.push_back(Read(key));
    EXPECT_EQ(before.front(), "-9223372036854775808");
    EXPECT_EQ(before[4], "2040-02-29 12:30:00 +0000");

    Write(CV_OTHER_BUILD, "Key", "a");
    const std::string theirs = ReadFile(UserFile("test"));
    for (std::size_t index = 0; index < keys.size(); ++index)
        EXPECT_EQ(Read(keys[index]), before[index]);
    Write(CV_BUILD_DIR, "Key", "b");
    EXPECT_NE(ReadFile(UserFile("test")), theirs);
    Write(CV_OTHER_BUILD, "Key", "a");
    EXPECT_EQ(ReadFile(UserFile("test")), theirs) << "nothing else has changed on the way";
    EXPECT_EQ(Read("Key"), "a");
}

TEST_F(Widths, OneReadsTheOthersRecord)
{
    Write(CV_OTHER_BUILD, "Key", "a");
    const ProgramResult result =
        RunProgram({Writer(CV_BUILD_DIR), "Key", "a"}, {{"LD_PRELOAD", CV_TEST_BIN_DIR "/system/libfaults.so"}});
    EXPECT_NE(result.out.find(" flushes=0 "), std::string::npos) << result.out << ": what is stored costs no flush";
}

TEST_F(Widths, ACrowdOfBothLosesNothing)
{
    constexpr int kEach = 12;
    std::vector<std::thread> threads;
    for (const std::string build : {CV_BUILD_DIR, CV_OTHER_BUILD}) {
        for (const char* const hand : {"left", "right"})
            threads.emplace_back([build, hand] {
                for (int number = 0; number < kEach; ++number)
                    Write(build, build + hand + std::to_string(number), "value");
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string build : {CV_BUILD_DIR, CV_OTHER_BUILD}) {
        for (const char* const hand : {"left", "right"}) {
            for (int number = 0; number < kEach; ++number)
                EXPECT_EQ(Read(build + hand + std::to_string(number)), "value");
        }
    }
}
