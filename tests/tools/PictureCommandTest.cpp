// tests/tools/PictureCommandTest.cpp
//
// `quillets picture`, and the logo that it can look at.
#include <gtest/gtest.h>

#include "tests/support/Support.h"

namespace {

const std::string kLogo = std::string(CV_SOURCE_DIR) + "/resources/Resources/logo.pict";

TEST(PictureCommand, PrintsSizeDepthAndAlpha)
{
    SKIP_WITHOUT_MODULES();
    const ProgramResult result = RunProgram({BuiltTool(), "picture", kLogo});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "192 x 192 pixels, 32 bits, with alpha\n");
    EXPECT_EQ(result.err, "");
}

TEST(PictureCommand, DamagedOrMissingFileIsOneLineAndExit1)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "damaged.pict", ReadFile(kLogo).substr(0, 700));
    for (const std::string name : {"damaged.pict", "missing.pict", "."}) {
        const ProgramResult result = RunProgram({BuiltTool(), "picture", folder / name, "--png", folder / "out.png"});
        EXPECT_EQ(result.code, 1) << name;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        EXPECT_FALSE(FileExists(folder / "out.png"));
    }
}

TEST(PictureCommand, WrongArgumentsAreExit2)
{
    const std::vector<std::vector<std::string>> wrong = {{}, {"a", "b"}, {"a", "--png"}, {"a", "--unknown"}};
    for (const std::vector<std::string>& words : wrong) {
        std::vector<std::string> all = {BuiltTool(), "picture"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(RunProgram(all).code, 2);
    }
}

TEST(PictureCommand, PngThatCannotBeWrittenIsExit1)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(RunProgram({BuiltTool(), "picture", kLogo, "--png", folder / "no/such/out.png"}).code, 1);
    EXPECT_FALSE(FileExists(folder / "no"));
}

TEST(Logo, IsWhatItsSourceMakes)
{
    const CTemporaryFolder folder;
    const ProgramResult built =
        RunProgram({std::string(CV_SOURCE_DIR) + "/resources/build-logo", folder / "logo.pict"});
    ASSERT_EQ(built.code, 0) << built.err;
    EXPECT_TRUE(ReadFile(folder / "logo.pict") == ReadFile(kLogo)) << "run resources/build-logo";
}

} // namespace
