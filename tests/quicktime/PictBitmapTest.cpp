// tests/quicktime/PictBitmapTest.cpp
//
// Every depth, packing and row length of the bitmap operations, and how they are placed.
#include <gtest/gtest.h>

#include <numeric>

#include "tests/quicktime/PictMaker.h"

namespace {

std::string Repeat(const std::string& text, std::size_t count)
{
    std::string all;
    for (std::size_t index = 0; index < count; ++index)
        all += text;
    return all;
}

std::string Padded(std::string row, std::size_t size)
{
    row.resize(size, '\0');
    return row;
}

FrameRect FrameOf(const BitmapMaker& bitmap)
{
    return {0, 0, bitmap.height, bitmap.width};
}

std::string Draw(const BitmapMaker& bitmap)
{
    return Drawing(Play(PictureV2(FrameOf(bitmap), bitmap.Make())));
}

// Indices of any depth, most significant bits first.
std::string IndexRow(const std::vector<unsigned>& indices, unsigned depth, std::size_t rowBytes)
{
    std::string row(rowBytes, '\0');
    for (std::size_t index = 0; index < indices.size(); ++index) {
        const std::size_t bit = index * depth;
        row[bit / 8] = static_cast<char>(row[bit / 8] | static_cast<int>(indices[index] << (8 - depth - bit % 8)));
    }
    return row;
}

BitmapMaker Indexed(unsigned depth, std::size_t rowBytes)
{
    BitmapMaker bitmap;
    bitmap.depth = depth;
    bitmap.rowBytes = static_cast<unsigned>(rowBytes);
    bitmap.width = 6;
    bitmap.height = 2;
    bitmap.colours = {0xFFFFFF, 0xFF0000};
    std::vector<unsigned> indices = {0, 1, 0, 1, 1, 0};
    if (depth > 1) {
        bitmap.colours = {0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF};
        indices = {0, 1, 2, 3, 2, 0};
    }
    bitmap.rows.assign(2, IndexRow(indices, depth, rowBytes));
    bitmap.isPacked = rowBytes >= 8;
    return bitmap;
}

TEST(PictBitmap, EveryIndexedDepthPackedAndNot)
{
    for (const unsigned depth : {1U, 2U, 4U, 8U}) {
        const char* const expected = depth == 1 ? ".r.rr.\n.r.rr.\n" : ".rgbg.\n.rgbg.\n";
        for (const std::size_t rowBytes : {6U, 8U, 200U, 201U, 250U, 252U})
            EXPECT_EQ(Draw(Indexed(depth, rowBytes)), expected) << depth << " bits, rows of " << rowBytes;
        BitmapMaker raw = Indexed(depth, 10);
        raw.opcode = 0x90;
        raw.isPacked = false;
        EXPECT_EQ(Draw(raw), expected) << depth << " bits, raw";
    }
}

TEST(PictBitmap, RowLengthsOfEitherSizeAreFound)
{
    for (const int lengthSize : {1, 2}) {
        for (const std::size_t rowBytes : {8U, 200U, 201U, 214U, 250U, 252U, 264U}) {
            BitmapMaker bitmap = Indexed(8, rowBytes);
            bitmap.lengthSize = lengthSize;
            EXPECT_EQ(Draw(bitmap), ".rgbg.\n.rgbg.\n") << rowBytes << " bytes with lengths of " << lengthSize;
        }
    }
}

TEST(PictBitmap, OperationsBehindAnOddLengthAreFoundInEitherSize)
{
    for (const int lengthSize : {1, 2}) {
        BitmapMaker bitmap = Indexed(8, 208);
        bitmap.lengthSize = lengthSize;
        bitmap.rows.push_back(bitmap.rows[0]);
        bitmap.height = 3;
        const std::string after = CBytes().U16(0x31).Rect(0, 0, 1, 6).Text();
        EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 3, 6}, bitmap.Make() + after))), "######\n.rgbg.\n.rgbg.\n");
    }
}

TEST(PictBitmap, ColourTableByValueAndByPlace)
{
    BitmapMaker bitmap = Indexed(8, 8);
    bitmap.values = {3, 2, 1, 0};
    EXPECT_EQ(Draw(bitmap), ".rgbg.\n.rgbg.\n") << "values mean nothing";
    bitmap.tableFlags = 0;
    EXPECT_EQ(Draw(bitmap), "bgr.rb\nbgr.rb\n");
}

TEST(PictBitmap, MissingColoursAreBlack)
{
    BitmapMaker bitmap = Indexed(8, 8);
    bitmap.colours = {0xFFFFFF};
    EXPECT_EQ(Draw(bitmap), ".####.\n.####.\n");
}

TEST(PictBitmap, ColourTableOf65536EntriesBeyondTheFileGivesNull)
{
    std::string operation = Indexed(8, 8).Make();
    operation[2 + 2 + 8 + 36 + 6] = operation[2 + 2 + 8 + 36 + 7] = static_cast<char>(0xFF);
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 2, 6}, operation))), "null");
}

TEST(PictBitmap, OneBitBitMapTakesTheInks)
{
    BitmapMaker bitmap;
    bitmap.isPixMap = false;
    bitmap.width = 8;
    bitmap.height = 1;
    bitmap.rowBytes = 2;
    bitmap.isPacked = false;
    bitmap.rows = {Padded("\xA5", 2)};
    EXPECT_EQ(Draw(bitmap), "#.#..#.#\n");
    const std::string inks = CBytes().U16(0x1A).U16(0xFFFF).U16(0).U16(0).U16(0x1B).U16(0).U16(0).U16(0xFFFF).Text();
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 1, 8}, inks + bitmap.Make()))), "rbrbbrbr\n");
    bitmap.mode = 1;
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 1, 8}, inks + bitmap.Make()))), "r.r..r.r\n") << "or paints the ones";
}

TEST(PictBitmap, PackedOneBitBitMapInVersion1)
{
    BitmapMaker bitmap;
    bitmap.isPixMap = false;
    bitmap.width = 8;
    bitmap.height = 2;
    bitmap.rowBytes = 10;
    bitmap.rows = {Padded("\xA5", 10), Padded("\x5A", 10)};
    std::string operation = bitmap.Make().substr(1); // an opcode of one byte
    EXPECT_EQ(Drawing(Play(PictureV1({0, 0, 2, 8}, operation))), "#.#..#.#\n.#.##.#.\n");
}

std::string Words(std::initializer_list<unsigned> pixels)
{
    CBytes bytes;
    for (const unsigned pixel : pixels)
        bytes.U16(pixel);
    return bytes.Text();
}

TEST(PictBitmap, SixteenBitsRawAndPackedInWords)
{
    BitmapMaker bitmap;
    bitmap.opcode = 0x9A;
    bitmap.depth = 16;
    bitmap.components = 3;
    bitmap.width = 5;
    bitmap.height = 1;
    bitmap.rowBytes = 10;
    bitmap.rows = {Words({0x7FFF, 0xFC00, 0x03E0, 0x001F, 0x0000})};
    bitmap.element = 2;
    for (const unsigned packType : {0U, 3U, 4U}) {
        bitmap.packType = packType;
        EXPECT_EQ(Draw(bitmap), ".rgb#\n") << packType;
    }
    bitmap.packType = 1;
    bitmap.isPacked = false;
    EXPECT_EQ(Draw(bitmap), ".rgb#\n");
}

TEST(PictBitmap, FiveBitsBecomeEight)
{
    BitmapMaker bitmap;
    bitmap.opcode = 0x9A;
    bitmap.depth = 16;
    bitmap.packType = 1;
    bitmap.width = bitmap.height = 1;
    bitmap.rowBytes = 2;
    bitmap.isPacked = false;
    bitmap.rows = {Words({0x4210})};
    const auto picture = Play(PictureV2({0, 0, 1, 1}, bitmap.Make()));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->argb[0], 0xFF848484U);
}

BitmapMaker Direct32(std::size_t components)
{
    BitmapMaker bitmap;
    bitmap.opcode = 0x9A;
    bitmap.depth = 32;
    bitmap.components = static_cast<unsigned>(components);
    bitmap.width = 4;
    bitmap.height = 2;
    bitmap.rowBytes = 16;
    const std::string planes =
        std::string("\xFF\xFF\x00\x00", 4) + std::string("\xFF\x00\xFF\x00", 4) + std::string("\xFF\x00\x00\xFF", 4);
    bitmap.rows.assign(2, (components == 4 ? std::string("\x12\x34\x56\x78") : std::string()) + planes);
    return bitmap;
}

TEST(PictBitmap, ThirtyTwoBitsInPlanesOfThreeAndFour)
{
    for (const unsigned packType : {0U, 4U}) {
        for (const std::size_t components : {3U, 4U}) {
            BitmapMaker bitmap = Direct32(components);
            bitmap.packType = packType;
            EXPECT_EQ(Draw(bitmap), ".rgb\n.rgb\n") << packType << " " << components;
        }
    }
}

TEST(PictBitmap, ThirtyTwoBitsRawWithAndWithoutTheFirstByte)
{
    BitmapMaker bitmap = Direct32(3);
    bitmap.isPacked = false;
    bitmap.packType = 1;
    bitmap.rows.assign(2, std::string("\x00\xFF\xFF\xFF\x80\xFF\x00\x00\x00\x00\xFF\x00\xFF\x00\x00\xFF", 16));
    EXPECT_EQ(Draw(bitmap), ".rgb\n.rgb\n");
    bitmap.packType = 2;
    bitmap.rows.assign(2, std::string("\xFF\xFF\xFF\xFF\x00\x00\x00\xFF\x00\x00\x00\xFF", 12));
    EXPECT_EQ(Draw(bitmap), ".rgb\n.rgb\n");
}

TEST(PictBitmap, NarrowThirtyTwoBitsAreRawWhateverThePackType)
{
    BitmapMaker bitmap;
    bitmap.opcode = 0x9A;
    bitmap.depth = 32;
    bitmap.components = 3;
    bitmap.packType = 4;
    bitmap.width = 1;
    bitmap.height = 2;
    bitmap.rowBytes = 4;
    bitmap.isPacked = false;
    bitmap.rows = {std::string("\0\xFF\0\0", 4), std::string("\0\0\xFF\0", 4)};
    EXPECT_EQ(Draw(bitmap), "r\ng\n");
}

TEST(PictBitmap, ThirtyTwoBitsWithAlphaAtTheWidthsWhereWritersDiffer)
{
    for (const int width : {49, 50, 51, 62, 63, 66, 67}) {
        for (const int lengthSize : {1, 2}) {
            BitmapMaker bitmap = Direct32(4);
            bitmap.width = width;
            bitmap.rowBytes = static_cast<unsigned>(4 * width);
            bitmap.lengthSize = lengthSize;
            const auto plane = static_cast<std::size_t>(width);
            bitmap.rows.assign(2, std::string(plane, '\0') + std::string(plane, '\xFF') + std::string(2 * plane, '\0'));
            EXPECT_EQ(Draw(bitmap), Repeat(std::string(plane, 'r') + "\n", 2)) << width << " " << lengthSize;
        }
    }
}

TEST(PictBitmap, RowsWiderThanTheirBytesCanSay)
{
    BitmapMaker bitmap = Direct32(3);
    bitmap.width = 5000;
    bitmap.height = 1;
    bitmap.rowBytes = 20000 & 0x3FFF;
    bitmap.lengthSize = 2;
    bitmap.rows = {std::string(5000, '\0') + std::string(5000, '\xFF') + std::string(5000, '\0')};
    EXPECT_EQ(Draw(bitmap), std::string(5000, 'g') + "\n");
}

TEST(PictBitmap, BoundsWiderThanTheSourceRectAndAwayFromZero)
{
    BitmapMaker bitmap = Indexed(8, 8);
    bitmap.bounds = {10, 20, 12, 26};
    bitmap.source = {11, 21, 12, 24};
    bitmap.destination = {0, 0, 1, 3};
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 1, 3}, bitmap.Make()))), "rgb\n");
}

TEST(PictBitmap, PlanesFollowTheBoundsNotTheSourceRect)
{
    BitmapMaker bitmap = Direct32(3);
    bitmap.source = {0, 1, 2, 4};
    bitmap.destination = {0, 0, 2, 3};
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 2, 3}, bitmap.Make()))), "rgb\nrgb\n");
}

TEST(PictBitmap, ScalesToTheDestination)
{
    BitmapMaker bitmap = Direct32(3);
    bitmap.destination = {0, 0, 2, 8};
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 2, 8}, bitmap.Make()))), "..rrggbb\n..rrggbb\n");
    bitmap.destination = {0, 0, 1, 2};
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 1, 2}, bitmap.Make()))), ".g\n");
}

TEST(PictBitmap, ScalesWithTheFrame)
{
    EXPECT_EQ(Drawing(Play(PictureExtended({0, 0, 4, 8}, {0, 0, 2, 4}, 144U << 16U, Direct32(3).Make()))),
              Repeat("..rrggbb\n", 4));
}

TEST(PictBitmap, StripsFormOneImageWithoutGaps)
{
    std::string operations;
    for (int strip = 0; strip < 10; ++strip) {
        BitmapMaker bitmap = Direct32(3);
        bitmap.destination = {2 * strip, 0, 2 * strip + 2, 4};
        operations += bitmap.Make();
    }
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 20, 4}, operations))), Repeat(".rgb\n", 20));
    const auto shrunk = Drawing(Play(PictureExtended({0, 0, 13, 4}, {0, 0, 20, 4}, 0, operations)));
    EXPECT_EQ(shrunk, Repeat(".rgb\n", 13)) << "nor when they shrink";
}

TEST(PictBitmap, MaskRegionLimitsTheBitmap)
{
    for (const unsigned opcode : {0x91U, 0x99U, 0x9BU}) {
        BitmapMaker bitmap = opcode == 0x9B ? Direct32(3) : Indexed(8, 8);
        bitmap.opcode = opcode;
        bitmap.isPacked = opcode != 0x91;
        bitmap.mask = RectRegion(1, 1, 2, 3);
        const std::string line(static_cast<std::size_t>(bitmap.width) - 3, '.');
        EXPECT_EQ(Draw(bitmap), "..." + line + "\n.r" + "g" + line + "\n") << std::hex << opcode;
    }
}

TEST(PictBitmap, RowsThatAreCutOffLeaveTheWholeOnes)
{
    BitmapMaker bitmap = Indexed(8, 8);
    const std::string whole = PictureV2(FrameOf(bitmap), bitmap.Make(), true, false);
    const std::size_t rowSize = 1 + Pack(bitmap.rows[0]).size();
    const std::size_t begin =
        PictureV2(FrameOf(bitmap), "", true, false).size() + (2 + 2 + 8 + 36 + 8 + 4 * 8 + 8 + 8 + 2);
    for (std::size_t size = begin; size < begin + 2 * rowSize; ++size) {
        const char* const expected = size < begin + rowSize ? "null" : ".rgbg.\n......\n";
        EXPECT_EQ(Drawing(Play(whole.substr(0, size))), expected) << size;
    }
    EXPECT_EQ(Drawing(Play(whole)), ".rgbg.\n.rgbg.\n");
}

TEST(PictBitmap, ImpossibleDataGiveNull)
{
    BitmapMaker beyond = Indexed(8, 8);
    beyond.height = 32000; // rows beyond the file
    beyond.rows.clear();
    EXPECT_EQ(Draw(beyond), "null");
    BitmapMaker wide = Indexed(8, 8);
    wide.width = 9; // more pixels than bytes
    EXPECT_EQ(Draw(wide), "null");
    BitmapMaker reversed = Indexed(8, 8);
    reversed.bounds = {0, 6, 2, 0};
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 2, 6}, reversed.Make()))), "null");
    for (const unsigned depth : {0U, 3U, 16U, 24U, 65535U}) {
        BitmapMaker strange = Indexed(8, 8);
        strange.depth = depth;
        EXPECT_EQ(Draw(strange), "null") << depth;
    }
    BitmapMaker components = Direct32(3);
    components.components = 5;
    EXPECT_EQ(Draw(components), "null");
    BitmapMaker length = Indexed(8, 8);
    length.rows[0] = std::string(300, 'x'); // unpacks to more than a row
    EXPECT_EQ(Draw(length), "null");
}

TEST(PictBitmap, TransferModes)
{
    const struct {
        unsigned mode;
        const char* expected; // white, red, green, blue over red
    } kModes[] = {{0, ".rgb\n"}, {64, ".rgb\n"}, {1, "rr##\n"}, {36, "rrgb\n"}, {37, ".r??\n"}, {39, "rr##\n"}};
    for (const auto& mode : kModes) {
        BitmapMaker bitmap = Direct32(3);
        bitmap.height = 1;
        bitmap.rows.resize(1);
        bitmap.mode = mode.mode;
        const std::string red = CBytes().U16(0x1A).U16(0xFFFF).U16(0).U16(0).U16(0x31).Rect(0, 0, 1, 4).Text();
        EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 1, 4}, red + bitmap.Make()))), mode.expected) << mode.mode;
    }
}

} // namespace
