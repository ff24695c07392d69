// tests/quicktime/PictTest.cpp
//
// The frame of a picture: where it begins, its versions, its coordinates, its clip, what is
// skipped, and what is left of it when it is cut off.
#include <gtest/gtest.h>

#include "tests/quicktime/PictMaker.h"

namespace {

std::string PaintRect(int top, int left, int bottom, int right)
{
    return CBytes().U16(0x31).Rect(top, left, bottom, right).Text();
}

std::string PaintRectV1(int top, int left, int bottom, int right)
{
    return CBytes().U8(0x31).Rect(top, left, bottom, right).Text();
}

constexpr FrameRect kFrame = {0, 0, 3, 4};
const char* const kPainted = "....\n.##.\n....\n";

TEST(Pict, Version2WithAndWithoutFileHeader)
{
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, PaintRect(1, 1, 2, 3)))), kPainted);
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, PaintRect(1, 1, 2, 3), false))), kPainted);
}

TEST(Pict, Version1WithAndWithoutFileHeader)
{
    EXPECT_EQ(Drawing(Play(PictureV1(kFrame, PaintRectV1(1, 1, 2, 3)))), kPainted);
    EXPECT_EQ(Drawing(Play(PictureV1(kFrame, PaintRectV1(1, 1, 2, 3), false))), kPainted);
}

TEST(Pict, AnyBytesMayStandInTheFileHeader)
{
    std::string file = PictureV2(kFrame, PaintRect(1, 1, 2, 3));
    for (std::size_t index = 0; index < 512; ++index)
        file[index] = static_cast<char>(index * 7);
    EXPECT_EQ(Drawing(Play(file)), kPainted);
}

TEST(Pict, HeaderOfAnotherKindCountsAsPlain)
{
    std::string file = PictureV2(kFrame, PaintRect(1, 1, 2, 3), false);
    file[16] = file[17] = file[18] = file[19] = 0;
    EXPECT_EQ(Drawing(Play(file)), kPainted);
}

TEST(Pict, FrameAwayFromTheOrigin)
{
    EXPECT_EQ(Drawing(Play(PictureV2({-10, 100, -7, 104}, PaintRect(-9, 101, -8, 103)))), kPainted);
}

TEST(Pict, ExtendedHeaderMapsTheSourceOntoTheFrame)
{
    const std::string painted = PaintRect(20, 30, 40, 70);
    const FrameRect source = {0, 10, 60, 90};
    EXPECT_EQ(Drawing(Play(PictureExtended(kFrame, source, 72U << 16U, painted))), kPainted);
    EXPECT_EQ(Drawing(Play(PictureExtended(kFrame, source, 0, painted))), kPainted) << "0 dpi means 72";
    EXPECT_EQ(Drawing(Play(PictureExtended(kFrame, kFrame, 96U << 16U, PaintRect(1, 1, 2, 3)))), kPainted);
}

TEST(Pict, EmptyFrameGivesNull)
{
    for (const FrameRect& frame : {FrameRect{0, 0, 0, 4}, FrameRect{0, 0, 3, 0}, FrameRect{3, 4, 0, 0}})
        EXPECT_EQ(Drawing(Play(PictureV2(frame, PaintRect(0, 0, 9, 9)))), "null");
}

TEST(Pict, TooLargeFrameGivesNull)
{
    EXPECT_EQ(Drawing(Play(PictureV2({-32768, -32768, 32767, 32767}, PaintRect(0, 0, 1, 1)))), "null");
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 32767, 32767}, PaintRect(0, 0, 1, 1)))), "null");
}

TEST(Pict, LongThinFrameIsFine)
{
    const auto picture = Play(PictureV2({0, 0, 1, 32767}, PaintRect(0, 32766, 1, 32767)));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 32767);
    EXPECT_EQ(picture->argb.back(), 0xFF000000U);
}

TEST(Pict, PictureThatDrawsNothingIsWhite)
{
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, ""))), "....\n....\n....\n");
}

TEST(Pict, ClipLimitsWhatFollows)
{
    const std::string clip = CBytes().U16(1).Raw(RectRegion(1, 1, 2, 3)).Text();
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, clip + PaintRect(0, 0, 3, 4)))), kPainted);
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, PaintRect(1, 1, 2, 3) + clip))), kPainted) << "not what came before";
}

TEST(Pict, ClipOfTheWholePlaneLimitsNothing)
{
    const std::string clip = CBytes().U16(1).Raw(RectRegion(-32767, -32767, 32767, 32767)).Text();
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, clip + PaintRect(1, 1, 2, 3)))), kPainted);
}

TEST(Pict, ClipNeverSetsTheSize)
{
    const std::string clip = CBytes().U16(1).Raw(RectRegion(0, 0, 100, 100)).Text();
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, clip + PaintRect(1, 1, 2, 3)))), kPainted);
}

// Rows switch relative to the row above: a ring of one pixel around a hole.
std::string Ring(int top, int left)
{
    CBytes rows;
    rows.S16(top).S16(left).S16(left + 3).S16(0x7FFF);
    rows.S16(top + 1).S16(left + 1).S16(left + 2).S16(0x7FFF);
    rows.S16(top + 2).S16(left + 1).S16(left + 2).S16(0x7FFF);
    rows.S16(top + 3).S16(left).S16(left + 3).S16(0x7FFF).S16(0x7FFF);
    return CBytes()
        .U16(static_cast<unsigned>(10 + rows.Size()))
        .Rect(top, left, top + 3, left + 3)
        .Raw(rows.Text())
        .Text();
}

TEST(Pict, ClipOfAnyForm)
{
    const std::string clip = CBytes().U16(1).Raw(Ring(0, 1)).Text();
    EXPECT_EQ(Drawing(Play(PictureV2({0, 0, 4, 5}, clip + PaintRect(0, 0, 4, 5)))), ".###.\n.#.#.\n.###.\n.....\n");
}

TEST(Pict, ClipIsScaledLikeEverythingElse)
{
    const std::string clip = CBytes().U16(1).Raw(Ring(0, 1)).Text();
    EXPECT_EQ(Drawing(Play(PictureExtended({0, 0, 8, 10}, {0, 0, 4, 5}, 0, clip + PaintRect(0, 0, 4, 5)))),
              "..######..\n..######..\n..##..##..\n..##..##..\n..######..\n..######..\n..........\n..........\n");
}

TEST(Pict, SenselessRegionCountsAsItsRectangle)
{
    const std::string region =
        CBytes().U16(18).Rect(1, 1, 2, 3).S16(5).S16(9).S16(2).S16(0x7FFF).Text(); // positions fall
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, CBytes().U16(1).Raw(region).Text() + PaintRect(0, 0, 3, 4)))), kPainted);
}

struct Skipped {
    unsigned opcode;
    std::string data;
};

std::vector<Skipped> EveryKindOfOpcode()
{
    const auto zeros = [](std::size_t count) {
        return CBytes().Zeros(count).Text();
    };
    const std::string counted = CBytes().U16(5).Raw("12345").Text();
    const std::string countedLong = CBytes().U32(7).Raw("1234567").Text();
    std::vector<Skipped> all = {{0x00, ""},
                                {0x02, zeros(8)},
                                {0x03, zeros(2)},
                                {0x04, zeros(1)},
                                {0x05, zeros(2)},
                                {0x06, zeros(4)},
                                {0x08, CBytes().U16(8).Text()},
                                {0x0A, zeros(8)},
                                {0x0B, zeros(4)},
                                {0x0C, zeros(4)},
                                {0x0D, zeros(2)},
                                {0x0F, zeros(4)},
                                {0x10, zeros(8)},
                                {0x11, zeros(1)},
                                {0x15, zeros(2)},
                                {0x16, zeros(2)},
                                {0x1B, zeros(6)},
                                {0x1C, ""},
                                {0x1D, zeros(6)},
                                {0x1E, ""},
                                {0x1F, zeros(6)},
                                {0x28, zeros(4) + "\x03"
                                                  "abc"},
                                {0x29, zeros(1) + "\x02"
                                                  "ab"},
                                {0x2A, zeros(1) + "\x01"
                                                  "a"},
                                {0x2B, zeros(2) + zeros(1)},
                                {0xA0, zeros(2)},
                                {0xA1, zeros(2) + counted},
                                {0x0C00, zeros(24)},
                                {0x0100, zeros(2)},
                                {0x7FFF, zeros(254)},
                                {0x8000, ""},
                                {0x80FF, ""},
                                {0x8100, countedLong},
                                {0x81FF, countedLong},
                                {0x8202, countedLong},
                                {0xFFFF, countedLong}};
    const auto range = [&](unsigned first, unsigned last, const std::string& data) {
        for (unsigned opcode = first; opcode <= last; ++opcode)
            all.push_back({opcode, data});
    };
    range(0x17, 0x19, "");
    range(0x24, 0x27, counted);
    range(0x2C, 0x2F, counted);
    range(0x35, 0x37, zeros(8));
    range(0x3D, 0x3F, "");
    range(0x45, 0x47, zeros(8));
    range(0x4D, 0x4F, "");
    range(0x55, 0x57, zeros(8));
    range(0x65, 0x67, zeros(12));
    range(0x6D, 0x6F, zeros(4));
    range(0x75, 0x77, CBytes().U16(14).Zeros(12).Text());
    range(0x7D, 0x7F, "");
    range(0x85, 0x87, RectRegion(0, 0, 1, 1));
    range(0x8D, 0x8F, "");
    range(0x92, 0x97, counted);
    range(0x9C, 0x9F, counted);
    range(0xA2, 0xAF, counted);
    range(0xB0, 0xCF, "");
    range(0xD0, 0xFE, countedLong);
    return all;
}

TEST(Pict, EveryOpcodeThatIsNotDrawnIsSkippedByItsLength)
{
    for (const Skipped& skipped : EveryKindOfOpcode()) {
        const std::string operation = CBytes().U16(skipped.opcode).Raw(skipped.data).Align().Text();
        EXPECT_EQ(Drawing(Play(PictureV2(kFrame, operation + PaintRect(1, 1, 2, 3)))), kPainted)
            << std::hex << skipped.opcode;
    }
}

TEST(Pict, Version1KnowsNoAlignment)
{
    for (const Skipped& skipped : EveryKindOfOpcode()) {
        if (skipped.opcode > 0xFF)
            continue;
        const std::string operation = CBytes().U8(skipped.opcode).Raw(skipped.data).Text();
        EXPECT_EQ(Drawing(Play(PictureV1(kFrame, operation + PaintRectV1(1, 1, 2, 3)))), kPainted)
            << std::hex << skipped.opcode;
    }
}

TEST(Pict, WhatFollowsTheEndMarkIsIgnored)
{
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, PaintRect(1, 1, 2, 3)) + PaintRect(0, 0, 3, 4))), kPainted);
}

TEST(Pict, WithoutAnEndMarkTheDataEndIt)
{
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, PaintRect(1, 1, 2, 3), true, false))), kPainted);
}

TEST(Pict, CutOffPictureKeepsWhatWasDrawnAndIsNullBeforeThat)
{
    const std::string first = PaintRect(1, 1, 2, 3);
    const std::string whole = PictureV2(kFrame, first + PaintRect(0, 0, 3, 4), true, false);
    const std::size_t drawn = PictureV2(kFrame, first, true, false).size();
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(Drawing(Play(whole.substr(0, size))), size < drawn ? "null" : kPainted) << size;
    EXPECT_EQ(Drawing(Play(whole)), "####\n####\n####\n");
}

TEST(Pict, OtherBytesAreNoPicture)
{
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string(2000, 'x'), std::string(2000, '\0')}) {
        EXPECT_EQ(Drawing(Play(bytes)), "null");
        EXPECT_EQ(FindPictSignature({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}),
                  PictSignature::None);
    }
}

TEST(Pict, EndlessDrawingStops)
{
    std::string operations;
    for (int index = 0; index < 20000; ++index)
        operations += PaintRect(0, 0, 5000, 5000);
    EXPECT_TRUE(Play(PictureV2({0, 0, 5000, 5000}, operations))); // in the time that a test may take
}

} // namespace
