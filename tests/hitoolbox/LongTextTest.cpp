// tests/hitoolbox/LongTextTest.cpp
//
// A long text has its places where a layout of all of it would have them, and costs what its changes
// cost. The work is counted in bytes that are laid out.
#include "platform/hitoolbox/windows/LongText.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/hitoolbox/windows/TextMetrics.h"

namespace {

/// Counts what it is asked to lay out, and answers as the fixed metrics do.
class CCountingMetrics final : public ITextMetrics {
public:
    CCountingMetrics() : m_fixed(Metrics()) { SetMetrics(this); }
    ~CCountingMetrics() { SetMetrics(nullptr); }
    CCountingMetrics(const CCountingMetrics&) = delete;
    CCountingMetrics& operator=(const CCountingMetrics&) = delete;

    TextSize Measure(const TextLayout& layout) const override
    {
        m_bytes += layout.text.size();
        const TextSize size = m_fixed.Measure(layout);
        return {size.width * factor, size.height * factor};
    }
    CaretPlace PlaceOf(const TextLayout& layout, std::size_t offset) const override
    {
        m_bytes += layout.text.size();
        return m_fixed.PlaceOf(layout, offset);
    }
    std::size_t OffsetAt(const TextLayout& layout, double x, double y) const override
    {
        m_bytes += layout.text.size();
        return m_fixed.OffsetAt(layout, x, y);
    }
    std::size_t TakeBytes() const { return std::exchange(m_bytes, 0); }

    double factor = 1; ///< Another font's.

private:
    const ITextMetrics& m_fixed;
    mutable std::size_t m_bytes = 0;
};

constexpr std::size_t kMegabyte = 1U << 20;
constexpr std::size_t kFewPieces = 20000; // bytes

std::string Words(std::size_t bytes, int wordsInALine)
{
    std::string text;
    for (int word = 1; text.size() < bytes; ++word)
        text += std::to_string(word) + (wordsInALine > 0 && word % wordsInALine == 0 ? "\n" : " ");
    return text;
}

TextLayout LayoutOf(const std::string& text, bool wrapped = true)
{
    TextLayout layout;
    layout.text = text;
    layout.width = 200;
    layout.wrapped = wrapped;
    return layout;
}

void ExpectSame(const ITextMetrics& one, const ITextMetrics& other, const TextLayout& layout)
{
    EXPECT_EQ(one.Measure(layout).height, other.Measure(layout).height);
    for (std::size_t offset = 0; offset <= layout.text.size(); offset += 137) {
        const CaretPlace place = one.PlaceOf(layout, offset), wanted = other.PlaceOf(layout, offset);
        ASSERT_EQ(place.x, wanted.x) << offset;
        ASSERT_EQ(place.y, wanted.y) << offset;
        ASSERT_EQ(one.OffsetAt(layout, wanted.x, wanted.y + 1), other.OffsetAt(layout, wanted.x, wanted.y + 1));
    }
}

TEST(LongText, PlacesAreThoseOfTheWholeText)
{
    for (const bool wrapped : {true, false}) {
        const std::string text = Words(20000, wrapped ? 50 : 0) + (wrapped ? "\n" : "");
        const TextLayout layout = LayoutOf(text, wrapped);
        const CLongText pieces;
        ExpectSame(pieces, Metrics(), layout);
        EXPECT_EQ(pieces.OffsetAt(layout, -100, -100), 0U);
        EXPECT_EQ(pieces.OffsetAt(layout, 1e9, 1e9), text.size());
    }
}

TEST(LongText, ChangeLaysOutLittleAnew)
{
    for (const int wordsInALine : {0, 10}) {
        for (const bool wrapped : {true, false}) {
            const CCountingMetrics metrics;
            const CLongText pieces;
            std::string text = Words(kMegabyte, wrapped ? wordsInALine : 0);
            (void)pieces.PlaceOf(LayoutOf(text, wrapped), text.size());
            EXPECT_LT(metrics.TakeBytes(), text.size() + kFewPieces);
            (void)pieces.Measure(LayoutOf(text, wrapped));
            EXPECT_LT(metrics.TakeBytes(), kFewPieces) << "nothing has changed";
            for (const std::size_t place : {std::size_t{0}, text.size() / 2, text.size()}) {
                text.insert(place, "x");
                (void)pieces.PlaceOf(LayoutOf(text, wrapped), place + 1);
                EXPECT_LT(metrics.TakeBytes(), kFewPieces) << place;
            }
            text.erase(text.size() / 3, text.size() / 3);
            (void)pieces.PlaceOf(LayoutOf(text, wrapped), text.size() / 3);
            EXPECT_LT(metrics.TakeBytes(), kFewPieces) << "what was left out";
        }
    }
}

TEST(LongText, ChangesLeaveWhatAFreshLayoutHas)
{
    std::mt19937 random(7);
    const auto upTo = [&random](std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random);
    };
    std::string text = Words(30000, 30);
    const CLongText kept;
    for (int change = 0; change < 50; ++change) {
        const std::size_t place = upTo(text.size());
        text.replace(place, upTo(200), Words(upTo(3000), static_cast<int>(upTo(40))));
        const CLongText fresh;
        const TextLayout layout = LayoutOf(text);
        ASSERT_EQ(kept.Measure(layout).height, fresh.Measure(layout).height) << change;
        for (std::size_t offset = 0; offset <= text.size(); offset += 997) {
            ASSERT_EQ(kept.PlaceOf(layout, offset).y, fresh.PlaceOf(layout, offset).y) << change << " " << offset;
            ASSERT_EQ(kept.PlaceOf(layout, offset).x, fresh.PlaceOf(layout, offset).x) << change << " " << offset;
        }
    }
}

TEST(LongText, OtherFontAndWidthAreLaidOutAnew)
{
    CCountingMetrics metrics;
    const CLongText pieces;
    const std::string text = Words(20000, 10);
    TextLayout layout = LayoutOf(text);
    const double height = pieces.Measure(layout).height;
    metrics.factor = 2;
    EXPECT_EQ(pieces.Measure(layout).height, 2 * height);
    layout.width = 100;
    EXPECT_GT(pieces.Measure(layout).height, 2 * height);
}

TEST(LongText, PartIsSmallAndHasItsMarksInPlace)
{
    const std::string text = Words(kMegabyte, 10);
    const TextLayout layout = LayoutOf(text);
    const CLongText pieces;
    const std::size_t middle = text.find("70000");
    const CaretPlace place = pieces.PlaceOf(layout, middle);
    TextPart marked;
    marked.caret = marked.selectionEnd = middle;
    const TextPart part = pieces.PartIn(layout, 0, place.y - 40, 200, 100, marked);
    EXPECT_LT(part.text.size(), kFewPieces);
    EXPECT_EQ(part.text.substr(part.caret, 5), "70000");
    EXPECT_EQ(part.selectionStart, 0U) << "from before the part";
    EXPECT_EQ(part.selectionEnd, part.caret);
    EXPECT_LT(part.y, place.y - 40);
    EXPECT_EQ(Metrics().PlaceOf(LayoutOf(part.text), part.caret).y, place.y - part.y);

    // A caret elsewhere is in sight nowhere.
    const TextPart beginning = pieces.PartIn(layout, 0, 0, 200, 100, marked);
    EXPECT_EQ(beginning.text.substr(0, 4), "1 2 ");
    EXPECT_GT(Metrics().PlaceOf(LayoutOf(beginning.text), beginning.caret).y, 100);
}

TEST(LongText, LineFromRightToLeftBeginsAtItsRight)
{
    std::string text;
    while (text.size() < 20000)
        text += "\u05E9\u05DC\u05D5\u05DD ";
    const TextLayout layout = LayoutOf(text, false);
    const CLongText pieces;
    const double width = pieces.Measure(layout).width;
    TextPart marked;
    marked.caret = text.size();
    const TextPart first = pieces.PartIn(layout, width - 200, 0, 200, 20, marked);
    EXPECT_EQ(first.text.substr(0, 4), text.substr(0, 4));
    EXPECT_NEAR(first.x + Metrics().Measure(LayoutOf(first.text, false)).width, width, 0.01);
    const TextPart last = pieces.PartIn(layout, 0, 0, 200, 20, marked);
    EXPECT_EQ(last.x, 0);
    EXPECT_EQ(last.caret, last.text.size());
}

TEST(LongText, WordLongerThanAPieceIsCutBetweenCharacters)
{
    std::string text;
    while (text.size() < 10000)
        text += "e\u0301"; // one character of three bytes
    const CCountingMetrics metrics;
    const CLongText pieces;
    const TextPart part = pieces.PartIn(LayoutOf(text), 0, 0, 200, 20, TextPart());
    for (std::size_t begin = 0; begin < part.text.size();) {
        const std::size_t end = std::min(part.text.find('\n', begin), part.text.size());
        EXPECT_EQ((end - begin) % 3, 0U);
        begin = end + 1;
    }
    std::string marks = "e";
    while (marks.size() < 10000)
        marks += "\u0301"; // a single character
    EXPECT_EQ(pieces.Measure(LayoutOf(marks)).width, 200);
}

} // namespace
