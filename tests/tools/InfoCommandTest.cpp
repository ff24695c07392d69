// tests/tools/InfoCommandTest.cpp
//
// `quillets info`: what it prints while a dialog is open, in memory and on a screen, and what it
// makes of its arguments.
#include <gmock/gmock.h>

#include "tests/launchservices/Viewers.h"
#include "tests/support/Screen.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr const char* kTitle = "Corvane Audio Quillets for Mac";
const std::string kBefore = "preference before: knobs follow circular drags\nshown: Corvane Audio Quillets for Mac\n";
const std::string kAfter = "ended: the host was told\npreference after: knobs follow circular drags\n";

class InfoCommand : public testing::Test {
protected:
    // Runs it without a display; the viewers are the user's applications.
    static ProgramResult Run(std::vector<std::string> words, const std::string& desktop = "headless")
    {
        words.insert(words.begin(), {BuiltTool(), "info"});
        return RunProgram(words, {{"CV_DESKTOP", desktop}, {"DISPLAY", ""}});
    }
    // Width and height of a PNG file.
    static std::pair<unsigned, unsigned> SizeOfPng(const std::string& path)
    {
        const std::string bytes = ReadFile(path);
        const auto number = [&bytes](std::size_t at) {
            unsigned value = 0;
            for (const char byte : bytes.substr(at, 4))
                value = value << 8U | static_cast<unsigned char>(byte);
            return value;
        };
        return {number(16), number(20)};
    }

    CViewers m_viewers;
    const CTemporaryFolder m_folder;
};

TEST_F(InfoCommand, PressesOkAndCancelAndEndsWithTheDialog)
{
    for (const std::string button : {"ok", "cancel"}) {
        const ProgramResult result = Run({"--press", button});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.out, kBefore + "pressed: " + button + "\n" + kAfter);
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(InfoCommand, OkKeepsThePreferenceAndOnlyWithTheOption)
{
    const std::vector<std::string> set = {BuiltTool(), "prefs", "set", "Common", "Knobs Drag Vertical", "yes"};
    ASSERT_EQ(RunProgram(set).code, 0);
    for (const bool hidden : {true, false}) {
        const ProgramResult result = hidden ? Run({"--hide-knob-option", "--press", "ok"}) : Run({"--press", "ok"});
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.out, HasSubstr("preference before: knobs follow up and down drags\n"));
        EXPECT_THAT(result.out, HasSubstr("preference after: knobs follow up and down drags\n"));
    }
}

TEST_F(InfoCommand, OpensTheHelpPageAndCancels)
{
    m_viewers.Install("org.example.Browser", "%f");
    m_viewers.MakeDefault("org.example.Browser", "text/html");
    const std::string page = BuiltBundle() + "/Contents/Resources/en.lproj/Quillets/VST/knobs.html";
    const auto visits = m_viewers.VisitsOf([&] {
        EXPECT_EQ(Run({"--press", "help"}).out, kBefore + "pressed: help\nhelp page: " + page + "\n" + kAfter);
    });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_THAT(visits.front().arguments, ElementsAre(page));
}

TEST_F(InfoCommand, OpensTheAddressThatTheBuildNames)
{
    m_viewers.Install("org.example.Browser", "%u");
    m_viewers.MakeDefault("org.example.Browser", "x-scheme-handler/https");
    const auto visits = m_viewers.VisitsOf([] {
        EXPECT_EQ(Run({"--press", "logo"}).out, kBefore + "pressed: logo\naddress: " CV_SITE_URL "\n" + kAfter);
    });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_THAT(visits.front().arguments, ElementsAre(CV_SITE_URL));
}

TEST_F(InfoCommand, SaysThatNobodyOpensTheAddress)
{
    const ProgramResult result = Run({"--press", "logo"});
    EXPECT_EQ(result.code, 0) << "the dialog did its part";
    EXPECT_THAT(result.out, HasSubstr("address: " CV_SITE_URL "\nnot opened: "));
}

TEST_F(InfoCommand, DrawsAPictureWithoutADisplay)
{
    const std::string picture = m_folder / "a.png";
    const ProgramResult plain = Run({"--picture", picture}, "");
    EXPECT_EQ(plain.code, 0) << plain.err;
    EXPECT_EQ(plain.out, kBefore + "picture: " + picture + "\n" + kAfter);
    EXPECT_EQ(SizeOfPng(picture), std::make_pair(500U, 246U));
    const std::string light = ReadFile(picture);
    EXPECT_EQ(Run({"--picture", picture, "--dark"}, "").code, 0);
    EXPECT_NE(ReadFile(picture), light);
    EXPECT_EQ(Run({"--picture", picture, "--scale", "2", "--hide-knob-option"}, "").code, 0);
    EXPECT_EQ(SizeOfPng(picture), std::make_pair(1000U, 384U));
}

TEST_F(InfoCommand, PictureThatCannotBeWrittenIsExit1)
{
    const ProgramResult result = Run({"--picture", m_folder / "no/such.png"}, "");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, kBefore + kAfter) << "the dialog ends all the same";
    EXPECT_EQ(result.err, "quillets: " + m_folder.Path() + "/no/such.png: cannot be written\n");
}

TEST_F(InfoCommand, WithoutADisplayOrABundleIsOneLineAndExit1)
{
    const ProgramResult blind = Run({"--press", "ok"}, "");
    EXPECT_EQ(blind.code, 1);
    EXPECT_THAT(blind.err, HasSubstr("quillets doctor"));
    const ProgramResult bare = RunProgram({BuiltTool(), "--bundle", m_folder / "none", "info", "--press", "ok"});
    EXPECT_EQ(bare.code, 1);
    EXPECT_EQ(bare.out, "");
    EXPECT_EQ(bare.err, "quillets: no bundle at " + m_folder.Path() + "/none\n");
}

TEST_F(InfoCommand, WrongArgumentsAreOneLineAndExit2)
{
    const std::vector<std::vector<std::string>> wrong = {{"word"},
                                                         {"--frob"},
                                                         {"--press"},
                                                         {"--press", "logos"},
                                                         {"--parent"},
                                                         {"--parent", "0"},
                                                         {"--parent", "0x"},
                                                         {"--parent", "1z"},
                                                         {"--parent", "-1"},
                                                         {"--scale", "0.2"},
                                                         {"--scale", "8.1"},
                                                         {"--scale", "nan"},
                                                         {"--scale", "2x"},
                                                         {"--scale", ""},
                                                         {"--picture"},
                                                         {"--picture", ""},
                                                         {"--picture", "a.png", "more"}};
    for (const std::vector<std::string>& words : wrong) {
        const ProgramResult result = Run(words);
        EXPECT_EQ(result.code, 2) << testing::PrintToString(words);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    }
}

TEST_F(InfoCommand, HelpAndManualNameEveryOption)
{
    const std::string help = Run({"--help"}).out;
    const std::string manual = ReadFile(CV_SOURCE_DIR "/docs/man/quillets.1");
    for (const std::string option : {"hide-knob-option", "parent", "press", "picture", "scale", "dark"}) {
        EXPECT_THAT(help, HasSubstr("  --" + option));
        std::string escaped = "\\-\\-" + option;
        for (std::size_t at = 4; (at = escaped.find('-', at)) != std::string::npos; at += 2)
            escaped.insert(at, "\\");
        EXPECT_THAT(manual, HasSubstr(escaped));
    }
}

// The window manager has the settings of the machine here.
TEST(InfoCommandOnScreen, StandsOverTheWindowThatItIsGiven)
{
    const CScreen screen;
    const xcb_window_t parent = screen.MakeWindow(60, 60, 500, 400, "A host");
    ASSERT_TRUE(screen.WaitForWindow("A host"));
    CProgram program({BuiltTool(), "info", "--parent", std::to_string(parent)});
    const auto dialog = screen.WaitForWindow(kTitle);
    ASSERT_TRUE(dialog) << program.Log();
    EXPECT_EQ(screen.PropertyOf(dialog->id, "WM_TRANSIENT_FOR"), parent);
    EXPECT_TRUE(WaitFor([&] { return screen.HasState(dialog->id, "_NET_WM_STATE_MODAL"); }));
    screen.Close(dialog->id);
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_EQ(program.Log(), kBefore + kAfter);
}

} // namespace
