// tests/quicktime/ImporterTest.cpp
//
// The importer as programs see it: by handles and files, and by content alone.
#include <gtest/gtest.h>

#include <QuickTime/QuickTime.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/quicktime/PictMaker.h"
#include "tests/support/Support.h"

namespace {

FSSpec SpecOf(const std::string& path)
{
    FSRef ref = {};
    FSSpec spec = {};
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr), noErr) << path;
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), noErr) << path;
    return spec;
}

/// Imports a file; the size and alpha as text, or the status.
std::string Import(const std::string& path)
{
    const FSSpec spec = SpecOf(path);
    ComponentInstance importer = nullptr;
    CGImageRef image = nullptr;
    EXPECT_EQ(GetGraphicsImporterForFile(&spec, &importer), noErr);
    const ComponentResult status = GraphicsImportCreateCGImage(importer, &image, 1);
    EXPECT_EQ(CloseComponent(importer), noErr);
    if (status != noErr) {
        EXPECT_EQ(image, nullptr);
        return std::to_string(status);
    }
    const std::string text = std::to_string(CGImageGetWidth(image)) + " x " + std::to_string(CGImageGetHeight(image)) +
                             (CGImageGetAlphaInfo(image) == kCGImageAlphaPremultipliedFirst ? " alpha" : "");
    CGImageRelease(image);
    return text;
}

std::string BlackPicture()
{
    return PictureV2({0, 0, 5, 7}, CBytes().U16(0x31).Rect(0, 0, 5, 7).Text());
}

class Importer : public testing::Test {
protected:
    CTemporaryFolder m_folder;

    std::string Put(const std::string& name, const std::string& bytes)
    {
        WriteFile(m_folder / name, bytes);
        return m_folder / name;
    }
    /// Has ImageMagick write a small picture in any format.
    std::string Convert(const std::string& name, const std::vector<std::string>& options = {"-size", "7x5", "xc:red"})
    {
        std::vector<std::string> words = {"/usr/bin/convert"};
        words.insert(words.end(), options.begin(), options.end());
        words.push_back(m_folder / name);
        const ProgramResult result = RunProgram(words);
        EXPECT_EQ(result.code, 0) << result.err;
        return m_folder / name;
    }
};

TEST_F(Importer, GoesByTheContentWhateverTheName)
{
    SKIP_WITHOUT_MODULES();
    EXPECT_EQ(Import(Put("a.png", BlackPicture())), "7 x 5");
    for (const std::string format : {"png", "jpeg", "gif", "bmp", "tiff"}) {
        const std::string path = Convert("picture." + format);
        EXPECT_EQ(Import(path), "7 x 5") << format;
        std::filesystem::rename(path, m_folder / "picture.pict");
        EXPECT_EQ(Import(m_folder / "picture.pict"), "7 x 5") << format << " by another name";
    }
}

TEST_F(Importer, AlphaIsKept)
{
    SKIP_WITHOUT_MODULES();
    EXPECT_EQ(Import(Convert("a.png", {"-size", "7x5", "xc:#FF000080"})), "7 x 5 alpha");
}

TEST_F(Importer, SomethingElseIsNoPicture)
{
    const std::string bad = std::to_string(codecBadDataErr);
    EXPECT_EQ(Import(Put("empty.pict", "")), bad);
    EXPECT_EQ(Import(Put("text.pict", "no picture")), bad);
    EXPECT_EQ(Import(Put("zeros.pict", std::string(4000, '\0'))), bad);
}

TEST_F(Importer, CutOffFilesAreNullAtEveryByte)
{
    SKIP_WITHOUT_MODULES();
    for (const std::string format : {"png", "jpeg", "gif", "bmp", "tiff"}) {
        const std::string whole = ReadFile(Convert("whole." + format));
        ASSERT_EQ(Import(m_folder / ("whole." + format)), "7 x 5");
        // This writer's TIFF files end with the values of their resolution, which pixels do without.
        const std::size_t unneeded = format == "tiff" ? 64 : 1;
        const std::size_t step = whole.size() > 400 ? 3 : 1;
        for (std::size_t size = 0; size + unneeded < whole.size(); size += step)
            EXPECT_NE(Import(Put("cut", whole.substr(0, size))), "7 x 5") << format << " " << size;
    }
}

TEST_F(Importer, ClaimedSizesAreRefusedBeforeMemoryIsTaken)
{
    const std::string bad = std::to_string(codecBadDataErr);
    std::string png = ReadFile(Convert("a.png"));
    png.replace(16, 8, std::string("\x00\x00\x7F\xFF\x00\x00\x7F\xFF", 8));
    EXPECT_EQ(Import(Put("large.png", png)), bad);
    std::string bmp = ReadFile(Convert("a.bmp"));
    bmp.replace(18, 8, std::string("\xFF\x7F\x00\x00\xFF\x7F\x00\x00", 8));
    EXPECT_EQ(Import(Put("large.bmp", bmp)), bad);
    EXPECT_EQ(Import(Put("large.pict", PictureV2({0, 0, 32767, 32767}, ""))), bad);
}

TEST_F(Importer, JpegInsideAPictureIsRead)
{
    SKIP_WITHOUT_MODULES();
    const std::string jpeg = ReadFile(Convert("a.jpeg"));
    CBytes inner;
    inner.U16(0);
    for (const unsigned number : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 1U << 30U})
        inner.U32(number);
    inner.U32(0).Rect(0, 0, 0, 0).U16(0).Rect(0, 0, 5, 7).U32(0).U32(0);
    inner.U32(86).Raw("jpeg").Zeros(24).U16(7).U16(5).Zeros(12).U16(1).Zeros(32).U16(24).U16(0xFFFF).Raw(jpeg);
    const std::string operation =
        CBytes().U16(0x8200).U32(static_cast<unsigned>(inner.Size())).Raw(inner.Text()).Align().Text();
    const std::string picture = Put("jpeg.pict", PictureV2({0, 0, 5, 7}, operation));
    ASSERT_EQ(Import(picture), "7 x 5");
    const std::string png = m_folder / "out.png";
    ASSERT_EQ(RunProgram({BuiltTool(), "picture", picture, "--png", png}).code, 0);
    EXPECT_EQ(RunProgram({BuiltTool(), "picture", m_folder / "a.jpeg", "--png", m_folder / "ref.png"}).code, 0);
    EXPECT_EQ(ReadFile(png), ReadFile(m_folder / "ref.png"));
}

TEST_F(Importer, HandlesAreChecked)
{
    const FSSpec spec = SpecOf(Put("a.pict", BlackPicture()));
    const FSSpec nothing = {};
    ComponentInstance importer = reinterpret_cast<ComponentInstance>(1);
    CGImageRef image = nullptr;
    EXPECT_EQ(GetGraphicsImporterForFile(nullptr, &importer), paramErr);
    EXPECT_EQ(importer, nullptr);
    EXPECT_EQ(GetGraphicsImporterForFile(&spec, nullptr), paramErr);
    EXPECT_EQ(GetGraphicsImporterForFile(&nothing, &importer), fnfErr);
    EXPECT_EQ(GraphicsImportCreateCGImage(nullptr, &image, 1), badComponentInstance);
    EXPECT_EQ(CloseComponent(nullptr), invalidComponentID);

    ASSERT_EQ(GetGraphicsImporterForFile(&spec, &importer), noErr);
    EXPECT_EQ(GraphicsImportCreateCGImage(importer, nullptr, 1), paramErr);
    EXPECT_EQ(CloseComponent(importer), noErr);
    EXPECT_EQ(CloseComponent(importer), invalidComponentID) << "closed twice";
    EXPECT_EQ(GraphicsImportCreateCGImage(importer, &image, 1), badComponentInstance) << "stale";
    EXPECT_EQ(CloseComponent(reinterpret_cast<ComponentInstance>(&image)), invalidComponentID) << "foreign";
}

TEST_F(Importer, OneThatIsNeverClosedCostsMemoryOnce)
{
    const FSSpec spec = SpecOf(Put("a.pict", BlackPicture()));
    ComponentInstance first = nullptr;
    ASSERT_EQ(GetGraphicsImporterForFile(&spec, &first), noErr);
    for (int index = 0; index < 1000; ++index) {
        ComponentInstance again = nullptr;
        ASSERT_EQ(GetGraphicsImporterForFile(&spec, &again), noErr);
        ASSERT_EQ(again, first);
    }
}

TEST_F(Importer, FileThatIsGoneOrNoFileIsNotFound)
{
    const std::string path = Put("a.pict", BlackPicture());
    const FSSpec spec = SpecOf(path);
    ComponentInstance importer = nullptr;
    CGImageRef image = nullptr;
    ASSERT_EQ(GetGraphicsImporterForFile(&spec, &importer), noErr);
    std::filesystem::remove(path);
    EXPECT_EQ(GraphicsImportCreateCGImage(importer, &image, 1), fnfErr);
    EXPECT_EQ(CloseComponent(importer), noErr);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(GetGraphicsImporterForFile(&spec, &importer), fnfErr) << "and nobody waits for a pipe";
}

TEST_F(Importer, LongAndForeignNamesAreFound)
{
    const std::string folder = m_folder / (std::string(200, 'd') + "/" + std::string(200, 'e'));
    std::filesystem::create_directories(folder);
    for (const std::string& name :
         {std::string(250, 'n'), std::string("\xE5\x90\x8D\xE5\x89\x8D"), std::string("\xFF\xFE")}) {
        WriteFile(folder + "/" + name, BlackPicture());
        EXPECT_EQ(Import(folder + "/" + name), "7 x 5") << name;
    }
}

TEST(FileSpec, ShowsTheNameAsFarAsItGoes)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "Caf\xC3\xA9 \xE5\x90\x8D", "");
    const FSSpec spec = SpecOf(folder / "Caf\xC3\xA9 \xE5\x90\x8D");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(spec.name) + 1, spec.name[0]), "Caf\x8E ?");
    EXPECT_EQ(sizeof spec, 70U);
}

TEST(FileSpec, WhatIsNotOfferedIsRefused)
{
    const CTemporaryFolder folder;
    FSRef ref = {};
    FSSpec spec = {};
    HFSUniStr255 name = {};
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(folder.Path().c_str()), &ref, nullptr), noErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, 1, nullptr, nullptr, &spec, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, &spec, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(nullptr, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), noErr);
}

} // namespace
