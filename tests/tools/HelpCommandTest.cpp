// tests/tools/HelpCommandTest.cpp
//
// `quillets help` and what `doctor` says about help.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/launchservices/Viewers.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string EnglishPage(const std::string& name)
{
    return BuiltBundle() + "/Contents/Resources/en.lproj/Quillets/VST/" + name;
}

class HelpCommand : public testing::Test {
protected:
    ProgramResult Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), BuiltTool());
        return RunProgram(words);
    }
    CViewers viewers;
};

TEST_F(HelpCommand, PrintsThePageOfATopic)
{
    EXPECT_EQ(Run({"help", "--print", "300"}).out, EnglishPage("knobs.html") + "\n");
    EXPECT_EQ(Run({"help", "300", "--print"}).out, EnglishPage("knobs.html") + "\n");
    EXPECT_EQ(Run({"help", "--print", "7"}).out, EnglishPage("index.html") + "\n");
    EXPECT_EQ(Run({"help", "--print"}).out, EnglishPage("index.html") + "\n");
    EXPECT_EQ(Run({"help", "--print", "4294967295"}).code, 0);
}

TEST_F(HelpCommand, PrintsWithoutStartingAnything)
{
    viewers.Install("com.apple.HelpViewer");
    EXPECT_THAT(viewers.VisitsOf([this] { EXPECT_EQ(Run({"help", "--print", "300"}).code, 0); }), IsEmpty());
}

TEST_F(HelpCommand, OpensThePageInTheHelpViewer)
{
    viewers.Install("com.apple.HelpViewer", "help %f");
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "text/html");
    const auto visits = viewers.VisitsOf([this] { EXPECT_EQ(Run({"help", "300"}).code, 0); });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_THAT(visits.front().arguments, ElementsAre("help", EnglishPage("knobs.html")));
}

TEST_F(HelpCommand, OpensThePageInTheDefaultViewerOtherwise)
{
    viewers.Install("org.example.Browser", "%f");
    viewers.MakeDefault("org.example.Browser", "text/html");
    const auto visits = viewers.VisitsOf([this] { EXPECT_EQ(Run({"help"}).code, 0); });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_THAT(visits.front().arguments, ElementsAre(EnglishPage("index.html")));
}

TEST_F(HelpCommand, SaysWhereThePageIsWhenNobodyShowsIt)
{
    const ProgramResult result = Run({"help", "300"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr(EnglishPage("knobs.html")));
}

TEST_F(HelpCommand, FailsWithoutPages)
{
    const CTemporaryFolder folder;
    const std::string bundle = folder / "Quillets.bundle";
    std::filesystem::create_directories(bundle + "/Contents/MacOS");
    std::filesystem::copy(BuiltBundle() + "/Contents/MacOS/Quillets", bundle + "/Contents/MacOS/Quillets");
    const ProgramResult none = Run({"--bundle", bundle, "help", "--print", "300"});
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.out, "");
    EXPECT_THAT(none.err, HasSubstr("no page for topic 300"));

    WriteFile(bundle + "/Contents/Resources/Quillets/VST/ContextMap.xml",
              "<plist version=\"1.0\"><dict><key>300</key><string>gone.html</string></dict></plist>");
    const ProgramResult gone = Run({"--bundle", bundle, "help", "--print", "300"});
    EXPECT_EQ(gone.code, 1);
    EXPECT_EQ(gone.out, "");
    EXPECT_THAT(gone.err, HasSubstr("gone.html"));
}

TEST_F(HelpCommand, RefusesWhatIsNoTopic)
{
    for (const char* topic : {"x", "-1", "1x", "4294967296", "", " 1", "0x10"})
        EXPECT_EQ(Run({"help", topic}).code, 2) << topic;
    EXPECT_EQ(Run({"help", "1", "2"}).code, 2);
    EXPECT_EQ(Run({"help", "--frob"}).code, 2);
    EXPECT_THAT(Run({"help", "--help"}).out, HasSubstr("--print"));
}

TEST_F(HelpCommand, DoctorNamesTheViewer)
{
    EXPECT_THAT(Run({"doctor"}).out, HasSubstr("MISSING help viewer"));
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "text/html");
    EXPECT_THAT(Run({"doctor"}).out, HasSubstr("Viewer org.example.Browser (" + viewers.Entry("org.example.Browser")));
    viewers.Install("com.apple.HelpViewer");
    EXPECT_THAT(Run({"doctor"}).out,
                HasSubstr("Viewer com.apple.HelpViewer (" + viewers.Entry("com.apple.HelpViewer")));
    EXPECT_THAT(Run({"doctor"}).out, HasSubstr(EnglishPage("knobs.html")));
}

TEST_F(HelpCommand, DoctorNamesThePortalInASandbox)
{
    const CEnvironment sandboxed("GTK_USE_PORTAL", "1");
    EXPECT_THAT(Run({"doctor"}).out, HasSubstr("portal"));
}

} // namespace
