// tests/tools/PrefsTest.cpp
//
// `quillets prefs` and what `quillets doctor` says of settings.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/PreferencesSupport.h"

namespace {

class Prefs : public CPreferencesTest {
protected:
    static ProgramResult Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {BuiltTool(), "prefs"});
        return RunProgram(words);
    }
};

TEST_F(Prefs, SetsGetsAndDeletesWhatPlugInsRead)
{
    EXPECT_EQ(Run({"set", "Common", "Skin", "dark"}).code, 0);
    EXPECT_EQ(GetKey("Common", "Skin"), "dark");
    EXPECT_EQ(Run({"get", "common", "Skin"}).out, "dark\n");
    EXPECT_EQ(Run({"get", "Common", "Skin", "--json"}).out,
              "{\"section\": \"Common\", \"key\": \"Skin\", \"value\": \"dark\"}\n");
    EXPECT_EQ(Run({"delete", "Common", "Skin"}).code, 0);
    EXPECT_EQ(GetKey("Common", "Skin"), "(none)");
    const ProgramResult gone = Run({"get", "Common", "Skin"});
    EXPECT_EQ(gone.code, 1);
    EXPECT_EQ(gone.err, "quillets: there is no Skin in Common\n");
}

TEST_F(Prefs, ListsBothScopesAndWhichOneWins)
{
    ASSERT_TRUE(SetKey("Common", "Both", "machine's"));
    CFPreferencesSetValue(CFSTR("Both"), CFSTR("user's"), CFSTR("com.corvane.common"), kCFPreferencesCurrentUser,
                          kCFPreferencesCurrentHost);
    CFPreferencesSetValue(CFSTR("Own"), CFSTR("a\nb"), CFSTR("com.corvane.common"), kCFPreferencesCurrentUser,
                          kCFPreferencesCurrentHost);
    ASSERT_TRUE(
        CFPreferencesSynchronize(CFSTR("com.corvane.common"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(Run({"list", "Common"}).out, "Both\n  machine  machine's  (wins)\n  user     user's\n"
                                           "Own\n  user     a\\nb  (wins)\n");
    EXPECT_EQ(Run({"list", "Common", "--json"}).out,
              "{\"section\": \"Common\", \"keys\": [\n"
              "  {\"key\": \"Both\", \"machine\": \"machine's\", \"user\": \"user's\", \"wins\": \"machine\"},\n"
              "  {\"key\": \"Own\", \"machine\": null, \"user\": \"a\\nb\", \"wins\": \"user\"}]}\n");
}

TEST_F(Prefs, PrintsWhereTheFilesLie)
{
    EXPECT_EQ(Run({"path", "Com Mon"}).out, "machine  " + MachineFile() + "\nuser     " + UserFile() + "\n");
    const std::string longest(300, 'A');
    EXPECT_EQ(Run({"path", longest}).out.rfind("machine  " + MachineFile("com.corvane." + std::string(246, 'a')), 0),
              0U);
}

TEST_F(Prefs, WatchBeginsWithWhatIsThere)
{
    ASSERT_TRUE(SetKey("Common", "Skin", "dark"));
    ASSERT_TRUE(SetKey("Common", "Other", "x"));
    EXPECT_EQ(Run({"watch", "Common", "--once"}).out, "Other = x\nSkin = dark\n");
    EXPECT_EQ(Run({"watch", "Common", "Skin", "--once", "--json"}).out, "{\"key\": \"Skin\", \"value\": \"dark\"}\n");
}

TEST_F(Prefs, WhatFollowsTwoDashesIsNoOption)
{
    EXPECT_EQ(Run({"set", "Common", "--", "--json", "--once"}).code, 0);
    EXPECT_EQ(GetKey("Common", "--json"), "--once");
}

TEST_F(Prefs, WrongArgumentsAreNamed)
{
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{{},
                                                                                       {"get"},
                                                                                       {"get", "Common"},
                                                                                       {"get", "a", "b", "c"},
                                                                                       {"set", "a", "b"},
                                                                                       {"move", "a"},
                                                                                       {"list", "a", "--x"}}) {
        const ProgramResult result = Run(words);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.err.rfind("quillets: prefs: ", 0), 0U) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(Prefs, DoctorTellsOfFilesRightsAndWhatWasPutAside)
{
    SKIP_WITHOUT_MODULES();
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    WriteFile(MachineFile("com.corvane.bad"), "garbage");
    ASSERT_TRUE(SetKey("bad", "Key", "value"));
    const ProgramResult result = RunProgram({BuiltTool(), "doctor"});
    EXPECT_EQ(result.code, 0) << result.out;
    EXPECT_NE(result.out.find("com.corvane.common."), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("mode 0644"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("put aside: com.corvane.bad."), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("(not there yet)"), std::string::npos) << result.out;
    std::filesystem::create_directories(MachineFile("com.corvane.folder"));
    const ProgramResult wrong = RunProgram({BuiltTool(), "doctor"});
    EXPECT_EQ(wrong.code, 1);
    EXPECT_NE(wrong.out.find("cannot be read"), std::string::npos) << wrong.out;
}

} // namespace
