// tests/quicktime/PictShapesTest.cpp
//
// Lines and filled shapes, as far as they are drawn.
#include <gtest/gtest.h>

#include "tests/quicktime/PictMaker.h"

namespace {

std::string Shape(unsigned opcode, int top, int left, int bottom, int right)
{
    return CBytes().U16(opcode).Rect(top, left, bottom, right).Text();
}

std::string Draw(int height, int width, const std::string& operations)
{
    return Drawing(Play(PictureV2({0, 0, height, width}, operations)));
}

TEST(PictShapes, VerbsOfARectangle)
{
    EXPECT_EQ(Draw(4, 4, Shape(0x30, 0, 0, 4, 4)), "####\n#..#\n#..#\n####\n");
    EXPECT_EQ(Draw(2, 2, Shape(0x31, 0, 0, 2, 1)), "#.\n#.\n");
    EXPECT_EQ(Draw(2, 2, Shape(0x31, 0, 0, 2, 2) + Shape(0x32, 0, 0, 1, 1)), ".#\n##\n");
    EXPECT_EQ(Draw(2, 2, Shape(0x31, 0, 0, 2, 1) + Shape(0x33, 0, 0, 1, 2)), ".#\n#.\n");
    EXPECT_EQ(Draw(2, 2, Shape(0x34, 0, 0, 1, 2)), "##\n..\n");
}

TEST(PictShapes, SameFormsRepeatTheLastOfTheirKind)
{
    const std::string clip = CBytes().U16(1).Raw(RectRegion(0, 0, 0, 0)).Text();
    const std::string open = CBytes().U16(1).Raw(RectRegion(0, 0, 9, 9)).Text();
    EXPECT_EQ(Draw(2, 2, clip + Shape(0x31, 0, 0, 1, 1) + Shape(0x51, 0, 0, 2, 2) + open + CBytes().U16(0x39).Text()),
              "#.\n..\n");
}

TEST(PictShapes, PenSizeOfAFrame)
{
    const std::string pen = CBytes().U16(7).S16(1).S16(2).Text();
    EXPECT_EQ(Draw(4, 6, pen + Shape(0x30, 0, 0, 4, 6)), "######\n##..##\n##..##\n######\n");
}

TEST(PictShapes, OvalAndRoundRectangleLoseTheirCorners)
{
    EXPECT_EQ(Draw(6, 6, Shape(0x51, 0, 0, 6, 6)), ".####.\n######\n######\n######\n######\n.####.\n");
    const std::string corners = CBytes().U16(0x0B).S16(4).S16(4).Text();
    EXPECT_EQ(Draw(4, 8, corners + Shape(0x41, 0, 0, 4, 8)), ".######.\n########\n########\n.######.\n");
}

TEST(PictShapes, QuarterOfAnArc)
{
    const std::string quarter = CBytes().U16(0x61).Rect(0, 0, 8, 8).S16(0).S16(90).Text();
    const std::string drawing = Draw(8, 8, quarter);
    EXPECT_EQ(drawing.substr(0, 9), "....##..\n");
    EXPECT_EQ(drawing.substr(9 * 4), "........\n........\n........\n........\n");
}

TEST(PictShapes, LinesFollowThePen)
{
    const std::string line = CBytes().U16(0x20).S16(0).S16(0).S16(0).S16(3).U16(0x21).S16(2).S16(3).Text();
    EXPECT_EQ(Draw(3, 4, line), "####\n...#\n...#\n");
    const std::string shortLine = CBytes().U16(0x22).S16(1).S16(1).U8(2).U8(0).U16(0x23).U8(0).U8(0xFF).Text();
    EXPECT_EQ(Draw(3, 4, shortLine), "...#\n.###\n....\n");
}

TEST(PictShapes, PolygonInsideAndOutline)
{
    const std::string triangle = CBytes().U16(22).Rect(0, 0, 4, 4).S16(0).S16(0).S16(4).S16(0).S16(4).S16(4).Text();
    EXPECT_EQ(Draw(4, 4, CBytes().U16(0x71).Raw(triangle).Text()), "....\n#...\n##..\n###.\n");
    const std::string corner = CBytes().U16(22).Rect(0, 0, 2, 3).S16(0).S16(0).S16(2).S16(0).S16(2).S16(3).Text();
    EXPECT_EQ(Draw(3, 4, CBytes().U16(0x70).Raw(corner).Text()), "#...\n#...\n####\n");
}

TEST(PictShapes, RegionIsPainted)
{
    EXPECT_EQ(Draw(2, 3, CBytes().U16(0x81).Raw(RectRegion(0, 1, 2, 3)).Text()), ".##\n.##\n");
}

TEST(PictShapes, PatternsAndInks)
{
    const std::string half = CBytes().U16(0x0A).Raw("\xAA\x55\xAA\x55\xAA\x55\xAA\x55").Text();
    EXPECT_EQ(Draw(2, 4, half + Shape(0x34, 0, 0, 2, 4)), "#.#.\n.#.#\n");
    const std::string red = CBytes().U16(0x0E).U32(205).Text();
    EXPECT_EQ(Draw(1, 1, red + Shape(0x31, 0, 0, 1, 1)), "?\n");
}

TEST(PictShapes, ColourPatterns)
{
    const std::string solid = CBytes().U16(0x13).U16(2).Zeros(8).U16(0xFFFF).U16(0).U16(0).Text();
    EXPECT_EQ(Draw(1, 2, solid + Shape(0x31, 0, 0, 1, 2)), "rr\n");
    CBytes tile;
    tile.U16(0x13).U16(1).Zeros(8).U16(0x8002).Rect(0, 0, 1, 2);
    tile.U16(0).U16(0).U32(0).U32(0).U32(0).U16(0).U16(8).U16(1).U16(8).U32(0).U32(0).U32(0);
    tile.U32(0).U16(0).U16(1).U16(0).U16(0xFFFF).U16(0).U16(0).U16(1).U16(0).U16(0).U16(0xFFFF).U8(0).U8(1);
    EXPECT_EQ(Draw(2, 4, tile.Text() + Shape(0x31, 0, 0, 2, 4)), "rbrb\nrbrb\n");
    EXPECT_EQ(Draw(1, 1, CBytes().U16(0x13).U16(3).Zeros(8).Text() + Shape(0x31, 0, 0, 1, 1)), "null");
}

} // namespace
