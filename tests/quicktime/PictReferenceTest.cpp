// tests/quicktime/PictReferenceTest.cpp
//
// Pictures that other programs write, beside what an independent decoder makes of them.
#include <gtest/gtest.h>

#include "tests/support/Support.h"

namespace {

constexpr const char* kConvert = "/usr/bin/convert";

class PictReference : public testing::Test {
protected:
    CTemporaryFolder m_folder;

    std::string Run(const std::vector<std::string>& words)
    {
        const ProgramResult result = RunProgram(words);
        EXPECT_EQ(result.code, 0) << words[0] << ": " << result.err;
        return result.out;
    }
    /// The pixels of any file that the other decoder reads.
    std::string PixelsOf(const std::string& path) { return Run({kConvert, path, "-depth", "8", "ppm:-"}); }
    std::string Ours(const std::string& picture)
    {
        Run({BuiltTool(), "picture", picture, "--png", m_folder / "ours.png"});
        return PixelsOf(m_folder / "ours.png");
    }
};

TEST_F(PictReference, DirectColoursOfManyWidths)
{
    for (const char* size : {"3x5", "50x4", "51x4", "62x4", "63x4", "66x4", "67x4", "301x7"}) {
        SCOPED_TRACE(size);
        Run({kConvert, "-size", size, "-seed", "7", "plasma:red-blue", "-depth", "8", "-type", "TrueColor",
             m_folder / "in.ppm"});
        Run({kConvert, m_folder / "in.ppm", "-type", "TrueColor", m_folder / "out.pict"});
        const std::string ours = Ours(m_folder / "out.pict");
        EXPECT_TRUE(ours == PixelsOf(m_folder / "out.pict")) << "another decoder sees something else";
        EXPECT_TRUE(ours == PixelsOf(m_folder / "in.ppm")) << "not what went in";
    }
}

TEST_F(PictReference, IndexedColoursOfManyWidths)
{
    for (const char* size : {"8x3", "200x3", "201x3", "250x3", "252x3", "411x3"}) {
        SCOPED_TRACE(size);
        Run({kConvert, "-size", size, "-seed", "7", "plasma:red-blue", "-depth", "8", "-colors", "60",
             m_folder / "in.ppm"});
        Run({kConvert, m_folder / "in.ppm", "-type", "Palette", m_folder / "out.pict"});
        const std::string ours = Ours(m_folder / "out.pict");
        EXPECT_TRUE(ours == PixelsOf(m_folder / "out.pict")) << "another decoder sees something else";
        EXPECT_TRUE(ours == PixelsOf(m_folder / "in.ppm")) << "not what went in";
    }
}

TEST_F(PictReference, IndexedColoursOfAnotherWriter)
{
    for (const char* size : {"8x3", "200x3", "201x3", "252x3"}) {
        SCOPED_TRACE(size);
        Run({kConvert, "-size", size, "-seed", "9", "plasma:green-white", "-depth", "8", "-colors", "16",
             m_folder / "in.ppm"});
        WriteFile(m_folder / "out.pict", Run({"/usr/bin/ppmtopict", m_folder / "in.ppm"}));
        // Not beside the other decoder, which does not know this writer's row lengths.
        EXPECT_TRUE(Ours(m_folder / "out.pict") == PixelsOf(m_folder / "in.ppm"));
    }
}

} // namespace
