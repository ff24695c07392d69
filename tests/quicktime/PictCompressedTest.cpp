// tests/quicktime/PictCompressedTest.cpp
//
// Image files inside a picture, their place, and the stand-ins that writers add for those who
// cannot read them.
#include <gtest/gtest.h>

#include "tests/quicktime/PictMaker.h"

namespace {

struct CompressedMaker {
    std::string codec = "jpeg";
    std::string data;
    int width = 2, height = 2;
    unsigned depth = 24;
    FrameRect source = {0, 0, 2, 2};
    int moveX = 0, moveY = 0;
    unsigned scale = 0x10000;
    unsigned mode = 0;
    unsigned dataSize = 0;
    std::string matte;
    std::string mask;
    std::size_t appended = 0;

    std::string Make() const
    {
        CBytes inner;
        inner.U16(0);
        for (const unsigned number : {scale, 0U, 0U, 0U, scale, 0U})
            inner.U32(number);
        inner.S16(moveX).U16(0).S16(moveY).U16(0).U32(1U << 30U);
        inner.U32(static_cast<unsigned>(matte.size())).Rect(0, 0, 0, 0).U16(mode);
        inner.Rect(source.top, source.left, source.bottom, source.right);
        inner.U32(0).U32(static_cast<unsigned>(mask.size()));
        if (!matte.empty())
            inner.U32(86).Zeros(82).Raw(matte);
        inner.Raw(mask);
        inner.U32(static_cast<unsigned>(86 + appended)).Raw(codec).Zeros(8).U32(0).U32(0).U32(0).U32(0);
        inner.S16(width).S16(height).U32(72U << 16U).U32(72U << 16U).U32(dataSize).U16(1).Zeros(32).U16(depth);
        inner.U16(0xFFFF).Zeros(appended).Raw(data);
        return CBytes().U16(0x8200).U32(static_cast<unsigned>(inner.Size())).Raw(inner.Text()).Align().Text();
    }
};

CompressedMaker Red()
{
    CompressedMaker image;
    image.data = TestImage(2, 2, 0xFFFF0000);
    return image;
}

constexpr FrameRect kFrame = {0, 0, 2, 4};

std::string Draw(const std::string& operations)
{
    return Drawing(Play(PictureV2(kFrame, operations)));
}

// An opaque black bitmap over a rectangle, as old stand-ins are.
std::string BlackBitmap(const FrameRect& destination)
{
    BitmapMaker bitmap;
    bitmap.isPixMap = false;
    bitmap.width = 69;
    bitmap.height = 44;
    bitmap.rowBytes = 10;
    bitmap.destination = destination;
    bitmap.rows.assign(44, std::string(10, '\xFF'));
    return bitmap.Make();
}

std::string PenStandIn()
{
    const std::string sentence = CBytes().U16(0x31).Rect(0, 0, 2, 4).Text();
    return CBytes().U16(7).U16(0xAE).U16(static_cast<unsigned>(sentence.size())).Raw(sentence).Text();
}

std::string PaintLast()
{
    return CBytes().U16(0x31).Rect(0, 3, 2, 4).Text();
}

TEST(PictCompressed, ImageFileIsDrawn)
{
    EXPECT_EQ(Draw(Red().Make()), "rr..\nrr..\n");
}

TEST(PictCompressed, TranslatedAndScaled)
{
    CompressedMaker image = Red();
    image.moveX = 1;
    EXPECT_EQ(Draw(image.Make()), ".rr.\n.rr.\n");
    image = Red();
    image.scale = 0x20000;
    EXPECT_EQ(Draw(image.Make()), "rrrr\nrrrr\n");
    image.scale = 0x8000;
    EXPECT_EQ(Draw(image.Make()), "r...\n....\n");
}

TEST(PictCompressed, StripsFormOneImage)
{
    CompressedMaker left = Red();
    CompressedMaker right = Red();
    right.data = TestImage(2, 2, 0xFF0000FF);
    right.moveX = 2;
    EXPECT_EQ(Draw(left.Make() + right.Make()), "rrbb\nrrbb\n");
}

TEST(PictCompressed, MatteMaskAndAppendedDescriptionAreStepped)
{
    CompressedMaker image = Red();
    image.matte = "some bytes";
    image.mask = RectRegion(0, 0, 1, 2);
    image.appended = 14;
    EXPECT_EQ(Draw(image.Make()), "rr..\n....\n");
}

TEST(PictCompressed, ClipApplies)
{
    const std::string clip = CBytes().U16(1).Raw(RectRegion(0, 1, 2, 4)).Text();
    EXPECT_EQ(Draw(clip + Red().Make()), ".r..\n.r..\n");
}

TEST(PictCompressed, ImageThatFillsThePictureStillKeepsToClipMaskAndMode)
{
    CompressedMaker whole;
    whole.data = TestImage(4, 2, 0xFFFF0000);
    whole.source = {0, 0, 2, 4};
    const std::string image = whole.Make(), dot = CBytes().U16(0x31).Rect(0, 0, 1, 1).Text();
    EXPECT_EQ(Draw(image), "rrrr\nrrrr\n");
    EXPECT_EQ(Draw(dot + image), "rrrr\nrrrr\n");
    EXPECT_EQ(Draw(image + dot), "#rrr\nrrrr\n");
    const auto clip = [](int right) {
        return CBytes().U16(1).Raw(RectRegion(0, 0, 2, right)).Text();
    };
    EXPECT_EQ(Draw(clip(4) + image), "rrrr\nrrrr\n");
    EXPECT_EQ(Draw(clip(3) + image), "rrr.\nrrr.\n");
    whole.mask = RectRegion(0, 1, 2, 2);
    EXPECT_EQ(Draw(whole.Make()), ".r..\n.r..\n");
    whole.mask.clear();
    whole.mode = 3; // srcBic: white stays where the colour is not black
    EXPECT_EQ(Draw(whole.Make()), "....\n....\n");
    whole.mode = 0;
    whole.source = {0, 1, 2, 4};
    EXPECT_EQ(Draw(whole.Make()), ".rrr\n.rrr\n");
    whole.source = {0, 0, 2, 4};
    whole.data = TestImage(4, 2, 0);
    EXPECT_EQ(Draw(dot + whole.Make()), "#   \n    \n");
}

TEST(PictCompressed, AlphaIsKeptWhereNothingLiesBelow)
{
    CompressedMaker clear = Red();
    clear.data = TestImage(2, 2, 0);
    EXPECT_EQ(Draw(clear.Make()), "  ..\n  ..\n");
    EXPECT_EQ(Draw(CBytes().U16(0x31).Rect(0, 0, 1, 1).Text() + clear.Make()), "# ..\n  ..\n");
}

TEST(PictCompressed, RawPixels)
{
    CompressedMaker image;
    image.codec = "raw ";
    image.width = 2;
    image.height = 1;
    image.source = {0, 0, 1, 2};
    image.data = std::string("\xFF\0\0\0\0\xFF", 6);
    EXPECT_EQ(Draw(image.Make()), "rb..\n....\n");
    image.depth = 32;
    image.data = std::string("\x11\xFF\0\0\x22\0\0\xFF", 8);
    EXPECT_EQ(Draw(image.Make()), "rb..\n....\n");
    image.data.pop_back();
    EXPECT_EQ(Draw(image.Make() + PaintLast()), "...#\n...#\n") << "cut off: not drawn";
}

TEST(PictCompressed, RunsOfPixels)
{
    CompressedMaker image;
    image.codec = "rle ";
    image.source = {0, 0, 2, 4};
    image.width = 4;
    const auto rows = [&](const std::string& bytes, const std::string& flags = std::string(2, '\0')) {
        image.data = std::string(4, '\0') + flags + bytes;
        return Draw(image.Make());
    };
    const std::string red("\xFF\0\0", 3), blue("\0\0\xFF", 3), end = "\xFF", all = "\xFC";
    EXPECT_EQ(rows("\1" + all + red + end + "\1\4" + blue + blue + red + red + end), "rrrr\nbbrr\n");
    EXPECT_EQ(rows("\3\2" + red + blue + end + "\1\1" + red + std::string("\0\3", 2) + "\1" + blue + end),
              "  rb\nr  b\n")
        << "steps leave pixels out";
    EXPECT_EQ(rows("\1" + all + red + end, std::string("\0\10\0\1\0\0\0\1\0\0", 10)), "    \nrrrr\n")
        << "the second row alone";
    EXPECT_EQ(rows("\1" + all + red + end + std::string(1, '\0')), "rrrr\n    \n") << "an early end";
    image.depth = 32;
    const std::string clear(4, '\0'), solid = "\xFF" + red;
    EXPECT_EQ(rows("\1\xFE" + clear + "\xFE" + solid + end + "\1" + all + solid + end), "  rr\nrrrr\n");
}

TEST(PictCompressed, RunsThatLeaveTheirRowOrAreCutOffAreNotDrawn)
{
    CompressedMaker image;
    image.codec = "rle ";
    const std::string head(6, '\0'), red("\xFF\0\0", 3), row = "\1\xFE" + red + "\xFF";
    const auto drawn = [&](const std::string& data) {
        image.data = data;
        return Draw(image.Make() + PaintLast());
    };
    ASSERT_EQ(drawn(head + row + row), "rr.#\nrr.#\n");
    const std::string whole = head + row + row;
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(drawn(whole.substr(0, size)), "...#\n...#\n") << size << " bytes";
    EXPECT_EQ(drawn(head + "\1\xFD" + red + "\xFF" + row), "...#\n...#\n") << "three pixels in a row of two";
    EXPECT_EQ(drawn(head + "\4\1" + red + "\xFF" + row), "...#\n...#\n") << "begins beside the row";
    EXPECT_EQ(drawn(head + "\1\x80" + row), "...#\n...#\n") << "the longest run";
    EXPECT_EQ(drawn(std::string("\0\0\0\0\0\10\xFF\xFF\0\0\xFF\xFF\0\0", 14) + row), "  .#\n  .#\n")
        << "rows below the image";
}

TEST(PictCompressed, NewStandInIsSkippedWhetherTheImageWasReadOrNot)
{
    EXPECT_EQ(Draw(Red().Make() + PenStandIn() + PaintLast()), "rr.#\nrr.#\n");
    CompressedMaker unknown = Red();
    unknown.data = "unknown";
    EXPECT_EQ(Draw(unknown.Make() + PenStandIn() + PaintLast()), "...#\n...#\n");
}

TEST(PictCompressed, TallPenIsNoStandInWithoutAnImage)
{
    const std::string pen = CBytes().U16(7).U16(0xAE).U16(1).Text();
    EXPECT_EQ(Draw(pen + PaintLast()), "...#\n...#\n");
}

TEST(PictCompressed, OldStandInIsSkippedOnlyWhenTheImageWasRead)
{
    EXPECT_EQ(Draw(Red().Make() + BlackBitmap({0, 0, 2, 2}) + PaintLast()), "rr.#\nrr.#\n");
    CompressedMaker unknown = Red();
    unknown.data = "unknown";
    EXPECT_EQ(Draw(unknown.Make() + BlackBitmap({0, 0, 2, 2}) + PaintLast()), "##.#\n##.#\n");
}

TEST(PictCompressed, BitmapElsewhereIsNoStandIn)
{
    EXPECT_EQ(Draw(Red().Make() + BlackBitmap({0, 2, 2, 4})), "rr##\nrr##\n");
    EXPECT_EQ(Draw(Red().Make() + PaintLast() + BlackBitmap({0, 0, 2, 2})), "##.#\n##.#\n") << "nor one later on";
}

TEST(PictCompressed, OnlyDamagedImageGivesWhiteWithAnEndMarkAndNullWithout)
{
    CompressedMaker unknown = Red();
    unknown.data = "unknown";
    EXPECT_EQ(Draw(unknown.Make()), "....\n....\n");
    EXPECT_EQ(Drawing(Play(PictureV2(kFrame, unknown.Make(), true, false))), "null");
}

TEST(PictCompressed, CutOffAtEveryByteIsNull)
{
    const std::string whole = PictureV2(kFrame, Red().Make(), true, false);
    for (std::size_t size = 0; size + 1 < whole.size(); ++size)
        EXPECT_EQ(Drawing(Play(whole.substr(0, size))), "null") << size;
}

TEST(PictCompressed, UncompressedBitmapBehindAMatrix)
{
    BitmapMaker bitmap;
    bitmap.isPixMap = false;
    bitmap.width = 8;
    bitmap.height = 1;
    bitmap.rowBytes = 2;
    bitmap.isPacked = false;
    bitmap.rows = {std::string("\xC0\0", 2)};
    bitmap.destination = {0, 0, 1, 8};
    CBytes inner;
    inner.U16(0);
    for (const unsigned number : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0x10000U, 0x10000U, 1U << 30U})
        inner.U32(number);
    inner.U32(0).Rect(0, 0, 0, 0).Raw(bitmap.Make());
    EXPECT_EQ(Draw(CBytes().U16(0x8201).U32(static_cast<unsigned>(inner.Size())).Raw(inner.Text()).Text()),
              "....\n.##.\n");
}

} // namespace
