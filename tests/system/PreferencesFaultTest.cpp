// tests/system/PreferencesFaultTest.cpp
//
// Each file-system call that a write makes is made to fail, to do half its work and to be the
// process's last, one after the other; the loops end when no call is left.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/PreferencesSupport.h"

namespace {

class PreferencesFault : public CPreferencesTest {
protected:
    static std::string Read(const char* key)
    {
        const CFStringRef name = MakeString(key);
        CFPreferencesSynchronize(CFSTR("test"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
        const auto value = static_cast<CFStringRef>(
            CFPreferencesCopyValue(name, CFSTR("test"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
        const std::string text = TextOf(value);
        CFRelease(name);
        CFRelease(value);
        return text;
    }
    static ProgramResult Write(const char* value, const std::string& kind, int at)
    {
        return RunProgram({CV_TEST_BIN_DIR "/system/PreferenceWriter", "Key", value},
                          {{"LD_PRELOAD", kind.empty() ? "" : CV_TEST_BIN_DIR "/system/libfaults.so"},
                           {"FAULT_KIND", kind},
                           {"FAULT_AT", std::to_string(at)}});
    }
    static bool Has(const ProgramResult& result, const char* text)
    {
        return result.out.find(text) != std::string::npos;
    }

    void TryEachCall(const std::string& kind);
};

// What holds after every fault.
void PreferencesFault::TryEachCall(const std::string& kind)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "a sanitizer's library has to be the first";
    const std::string folder = std::filesystem::path(UserFile("test")).parent_path().string();
    const bool must = kind == "short" || kind == std::to_string(EINTR);
    int tried = 0;
    for (int at = 1;; ++at) {
        ASSERT_LT(at, 500);
        std::filesystem::remove_all(folder);
        if (at % 2 == 0) { // with and without folders to be made
            ASSERT_EQ(Write("old", "", 0).code, 0);
        } else {
            std::filesystem::remove_all(m_folder / "home/.config/corvane");
        }
        const std::string before = at % 2 == 0 ? "old" : "(null)";

        const ProgramResult result = Write("new", kind, at);
        const std::string now = Read("Key");
        const std::string about = kind + " at call " + std::to_string(at) + ": " + result.out;
        if (kind == "kill" && result.code != 0) {
            ASSERT_EQ(result.code, 128 + 9) << about;
            EXPECT_TRUE(now == before || now == "new") << about << now;
        } else {
            ASSERT_EQ(result.code, 0) << about;
            EXPECT_TRUE(Has(result, "saved=1") ? now == "new" : now == before || now == "new") << about << now;
            EXPECT_TRUE(Has(result, ("read=" + (now == "(null)" ? "(none)" : now)).c_str())) << about << now;
            EXPECT_TRUE(!must || Has(result, "saved=1")) << about;
        }
        // The store goes on, keeps what it has, and nothing is left behind.
        ASSERT_EQ(RunProgram({CV_TEST_BIN_DIR "/system/PreferenceWriter", "Other", "kept"}).code, 0);
        EXPECT_EQ(Read("Key"), now) << about;
        EXPECT_EQ(Read("Other"), "kept") << about;
        EXPECT_EQ(NamesIn(folder).size(), 2U) << about << "the file and its lock";
        if (result.code == 0 && Has(result, "fired=0"))
            break;
        ++tried;
    }
    EXPECT_GT(tried, 20);
}

TEST_F(PreferencesFault, KilledAtEachCall)
{
    TryEachCall("kill");
}
TEST_F(PreferencesFault, AFullDiskAtEachCall)
{
    TryEachCall(std::to_string(ENOSPC));
}
TEST_F(PreferencesFault, ABrokenDiskAtEachCall)
{
    TryEachCall(std::to_string(EIO));
}
TEST_F(PreferencesFault, ASignalAtEachCall)
{
    TryEachCall(std::to_string(EINTR));
}
TEST_F(PreferencesFault, HalfTheWorkAtEachCall)
{
    TryEachCall("short");
}

TEST_F(PreferencesFault, TheStoredValueCostsNoFlush)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "a sanitizer's library has to be the first";
    EXPECT_FALSE(Has(Write("value", "0", 0), " flushes=0 "));
    EXPECT_TRUE(Has(Write("value", "0", 0), "saved=1")) << "from another process";
    const ProgramResult again = Write("value", "0", 0);
    EXPECT_TRUE(Has(again, " flushes=0 ")) << again.out;
    // Another program's file may not be on disk yet.
    ReplaceFile(UserFile("test"), ReadFile(UserFile("test")));
    const ProgramResult foreign = Write("value", "0", 0);
    EXPECT_FALSE(Has(foreign, " flushes=0 ")) << foreign.out;
}

} // namespace
