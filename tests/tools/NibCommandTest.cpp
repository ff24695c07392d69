// tests/tools/NibCommandTest.cpp
//
// `quillets nib` as people and scripts call it: what it prints, what it says of broken folders, how it ends.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/Support.h"

namespace {

/// A nib folder with a file of tests/data/nib as its objects.
class NibCommand : public testing::Test {
protected:
    std::string Folder(const std::string& dataFile) const
    {
        WriteFile(m_folder / "Some.nib/objects.xib", ReadFile(DataFile("nib/" + dataFile)));
        return m_folder / "Some.nib";
    }

    static ProgramResult Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {BuiltTool(), "nib"});
        return RunProgram(words);
    }

    /// The line that a failing call leaves on stderr; nothing may stand on stdout.
    static std::string ErrorOf(const std::vector<std::string>& words, int code)
    {
        const ProgramResult result = Run(words);
        EXPECT_EQ(result.code, code);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        return result.err;
    }

    CTemporaryFolder m_folder;
};

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(NibCommand, ListsWindowsAndControls)
{
    const ProgramResult result = Run({Folder("every-class-nested.xib")});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    for (const char* line : {
             "Window \"Everything\": movable modal, at (200, 100) 340 x 1200, title \"Every \\\"class\\\" & more\"\n",
             "\n  IBCarbonImageView 'LOGO' 0 at (20, 178) 64 x 64 command 'site' scaled transparent\n",
             "\n  IBCarbonStaticText 'NAME' 0 at (20, 246) 300 x 32 \"Two lines\\nof text\"\n",
             "\n  IBCarbonCheckBox 'OPTN' 0 at (20, 330) 300 x 16 \"An option\" value 1 of 0 to 2\n",
             "\n  IBCarbonButton 'BUTN' 1 at (20, 396) 300 x 20 \"Cancel\" command 'not!' cancel\n",
             "\n  IBCarbonButton 0 12 at (20, 420) 300 x 20 \"Help\u2026\" command 'help' disabled hidden\n",
             "\n        IBCarbonButton 'DEEP' 0 at (60, 10) 80 x 20 \"Deep\"\n",
             "\n  XYPrivateDial (not known) 'DIAL' 0 at (20, 1113) 300 x 20 \"not of ours\"\n",
             "\nWindow \"Plain\": document, at (-60, -50) 200 x 100, title \"\", compositing\n",
         })
        EXPECT_TRUE(Contains(result.out, line)) << line;
    EXPECT_FALSE(Contains(result.out, "MenuBar"));
}

TEST_F(NibCommand, BothLayoutsPrintTheSame)
{
    const std::string nested = Run({Folder("every-class-nested.xib"), "--json"}).out;
    EXPECT_EQ(nested, Run({Folder("every-class-shuffled.xib"), "--json"}).out);
    EXPECT_GT(nested.size(), 5000u);
}

TEST_F(NibCommand, ListsTheOneWindowThatIsNamed)
{
    const ProgramResult result = Run({Folder("every-class-nested.xib"), "Plain"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "Window \"Plain\": document, at (-60, -50) 200 x 100, title \"\", compositing\n");
}

TEST_F(NibCommand, JsonIsOneObject)
{
    const std::string folder = Folder("unknown-class-known-children.xib");
    const ProgramResult result = Run({"--json", folder, "W"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out,
              "{\"nib\": \"" + folder +
                  "\", \"windows\": [{\"name\": \"W\", \"class\": 6, \"className\": \"document\", \"title\": "
                  "\"Unknown\", \"bounds\": {\"top\": 100, \"left\": 200, \"bottom\": 300, \"right\": 540}, "
                  "\"position\": 0, \"compositing\": false, \"standardHandler\": true, \"controls\": [{\"class\": "
                  "\"ACMEKnob\", \"known\": false, \"signature\": \"KNOB\", \"id\": 0, \"bounds\": {\"top\": 20, "
                  "\"left\": 20, \"bottom\": 40, \"right\": 120}, \"title\": \"\", \"command\": null, \"enabled\": "
                  "true, \"visible\": true, \"value\": 0, \"minimum\": 0, \"maximum\": 0, \"states\": [], "
                  "\"controls\": [{\"class\": \"IBCarbonCheckBox\", \"known\": true, \"signature\": null, \"id\": 0, "
                  "\"bounds\": {\"top\": 1, \"left\": 2, \"bottom\": 3, \"right\": 4}, \"title\": \"inside\", "
                  "\"command\": null, \"enabled\": true, \"visible\": true, \"value\": 0, \"minimum\": 0, "
                  "\"maximum\": 2, \"states\": [], \"controls\": []}]}]}]}\n");
}

TEST_F(NibCommand, ControlCharactersNeverComeOutRaw)
{
    for (const std::vector<std::string>& option : {std::vector<std::string>{}, std::vector<std::string>{"--json"}}) {
        std::vector<std::string> words = {Folder("raw-control-bytes.xib")};
        words.insert(words.end(), option.begin(), option.end());
        const ProgramResult result = Run(words);
        EXPECT_EQ(result.code, 0);
        EXPECT_TRUE(Contains(result.out, "\"\\u0014\"")) << result.out;
        EXPECT_TRUE(Contains(result.out, "\"a\\u0000b\\u0000c\"")) << result.out;
        EXPECT_TRUE(std::all_of(result.out.begin(), result.out.end(),
                                [](char byte) { return byte == '\n' || static_cast<unsigned char>(byte) >= ' '; }));
    }
    // Codes that are no text are numbers.
    EXPECT_TRUE(Contains(Run({Folder("raw-control-bytes.xib")}).out, " 0x20201BB8 0 at "));
    EXPECT_TRUE(Contains(Run({Folder("raw-control-bytes.xib")}).out, " command 0x00001F40"));
}

TEST_F(NibCommand, BrokenFileIsNamedWithItsPlace)
{
    const std::string folder = Folder("control-inside-itself.xib");
    const std::size_t offset = ReadFile(folder + "/objects.xib").find("<object class=\"IBCarbonUserPane\"");
    EXPECT_EQ(ErrorOf({folder}, 1), "quillets: " + folder + "/objects.xib, line 14, byte " + std::to_string(offset) +
                                        ": object 20 stands in two places or inside itself\n");
}

TEST_F(NibCommand, FoldersWithoutCarbonObjectsAreTold)
{
    const std::string empty = m_folder / "Empty.nib";
    EXPECT_EQ(ErrorOf({empty}, 1), "quillets: " + empty + ": there is no such folder\n");
    WriteFile(empty + "/info.nib", "");
    EXPECT_EQ(ErrorOf({empty}, 1), "quillets: " + empty + ": no objects.xib in it\n");
    WriteFile(empty + "/keyedobjects.nib", "bplist00");
    EXPECT_TRUE(Contains(ErrorOf({empty}, 1), "a nib for Cocoa, not Carbon"));
    WriteFile(m_folder / "File.nib", "");
    EXPECT_TRUE(Contains(ErrorOf({m_folder / "File.nib"}, 1), "a file, not a folder"));
    EXPECT_TRUE(Contains(ErrorOf({Folder("cocoa-archive.xib")}, 1), "line 2, byte 39: not a Carbon nib"));
}

TEST_F(NibCommand, NameOfNoWindowIsAFailure)
{
    const std::string folder = Folder("every-class-nested.xib");
    EXPECT_EQ(ErrorOf({folder, "MenuBar"}, 1), "quillets: " + folder + ": MenuBar is no window\n");
    EXPECT_EQ(ErrorOf({folder, "No\x1B[31m"}, 1), "quillets: " + folder + ": No\\u001b[31m: no object of that name\n");
    EXPECT_EQ(ErrorOf({folder, ""}, 1), "quillets: " + folder + ": : no object of that name\n");
}

TEST_F(NibCommand, WrongArgumentsAreTold)
{
    EXPECT_TRUE(Contains(ErrorOf({}, 2), "which folder?"));
    EXPECT_TRUE(Contains(ErrorOf({""}, 2), "which folder?"));
    EXPECT_TRUE(Contains(ErrorOf({"a.nib", "b", "c"}, 2), "unexpected argument c"));
    EXPECT_TRUE(Contains(ErrorOf({"a.nib", "--xml"}, 2), "unknown option --xml"));
}

TEST_F(NibCommand, HelpNamesItsArguments)
{
    const ProgramResult result = Run({"--help"});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(Contains(result.out, "quillets nib FOLDER.nib [WINDOW] [--json]"));
}

TEST_F(NibCommand, DrawsAWindow)
{
    SKIP_WITHOUT_MODULES();
    const std::string picture = m_folder / "window.png";
    const ProgramResult result =
        Run({Folder("every-class-nested.xib"), "Plain", "--picture", picture, "--scale", "2", "--dark"});
    EXPECT_EQ(result.code, 0) << result.err;
    const std::string bytes = ReadFile(picture);
    // @source PNG specification, 11.2.2: width and height stand behind the signature and the chunk's head.
    ASSERT_GT(bytes.size(), 24U);
    EXPECT_EQ(bytes.substr(16, 8), std::string("\0\0\x01\x90\0\0\0\xC8", 8)); // 200 x 100 points
}

TEST_F(NibCommand, SaysWhyThereIsNoPicture)
{
    const std::string nib = Folder("every-class-nested.xib");
    EXPECT_TRUE(Contains(ErrorOf({nib, "--picture"}, 2), "--picture needs a path"));
    EXPECT_TRUE(Contains(ErrorOf({nib, "--picture", "x.png", "--scale", "9"}, 2), "--scale needs"));
    const ProgramResult several = Run({nib, "--picture", m_folder / "x.png"});
    EXPECT_EQ(several.code, 1);
    EXPECT_TRUE(Contains(several.err, "holds 2 windows")) << several.err;
    const ProgramResult nowhere = Run({nib, "Plain", "--picture", m_folder / "none/x.png"});
    EXPECT_EQ(nowhere.code, 1);
    EXPECT_TRUE(Contains(nowhere.err, "cannot be written")) << nowhere.err;
}
