// tests/hitoolbox/LookTest.cpp
//
// What becomes of texts that do not fit. A canvas writes down the texts that are drawn on it.
#include "platform/hitoolbox/windows/Look.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// Fonts whose characters are squares, the small ones with the smaller side.
class CSquareMetrics final : public ITextMetrics {
public:
    static double SideOf(TextFont font)
    {
        return font == TextFont::System || font == TextFont::SystemBold ? kSide : kSmallSide;
    }
    TextSize Measure(const TextLayout& layout) const override
    {
        const double side = SideOf(layout.font);
        const double width = static_cast<double>(layout.text.size()) * side;
        if (!layout.wrapped || width <= layout.width)
            return {width, side};
        return {layout.width, std::ceil(width / layout.width) * side};
    }
    CaretPlace PlaceOf(const TextLayout&, std::size_t) const override { return {0, 0, kSide}; }
    std::size_t OffsetAt(const TextLayout&, double, double) const override { return 0; }

    static constexpr double kSide = 20, kSmallSide = 16;
};

class CTextCanvas final : public ICanvas {
public:
    struct Drawn {
        TextLayout layout;
        TextStyle style;
        double y;
    };
    std::vector<Drawn> texts;

    double Scale() const override { return 1; }
    const ITextMetrics& Metrics() const override { return m_metrics; }
    PixelBuffer Pixels() override { return {}; }
    bool SavePng(const std::string&) override { return false; }
    void PushClip(const CanvasRect&) override {}
    void PopClip() override {}
    void Clear(Colour) override {}
    void Fill(const CanvasRect&, double, Colour) override {}
    void FillGraded(const CanvasRect&, double, Colour, Colour) override {}
    void Stroke(const CanvasRect&, double, double, Colour) override {}
    void FillShape(const std::vector<CanvasPoint>&, Colour) override {}
    void StrokeLine(const std::vector<CanvasPoint>&, double, Colour) override {}
    void DrawText(const TextLayout& layout, const TextStyle& style, double, double y) override
    {
        texts.push_back({layout, style, y});
    }
    void DrawPicture(const PixelBuffer&, const CanvasRect&, double) override {}

private:
    CSquareMetrics m_metrics;
};

/// Draws one control of 200 by 34 points.
CTextCanvas::Drawn Drawn(ControlClass kind, TextFont font, std::size_t characters)
{
    static const std::string text(100, 'x'); // which the layout goes on borrowing
    WindowView window;
    ControlView control;
    control.kind = kind;
    control.font = font;
    control.bounds = {0, 0, 34, 200};
    control.text = text.substr(0, characters);
    window.controls.push_back(control);
    CTextCanvas canvas;
    Look::Draw(canvas, window, Appearance::Light, {0, 0, 200, 34});
    EXPECT_EQ(canvas.texts.size(), 1U);
    canvas.texts.at(0).layout.text = std::string_view(text).substr(0, characters);
    return canvas.texts.at(0);
}

TEST(Look, TextThatFitsKeepsItsFont)
{
    EXPECT_EQ(Drawn(ControlClass::StaticText, TextFont::SystemBold, 10).layout.font, TextFont::SystemBold);
    EXPECT_EQ(Drawn(ControlClass::CheckBox, TextFont::System, 8).layout.font, TextFont::System);
    EXPECT_EQ(Drawn(ControlClass::PushButton, TextFont::System, 9).layout.font, TextFont::System);
}

TEST(Look, LongTextLosesSizeBeforeItLosesLetters)
{
    // Two lines of 20 points each are more than there is room for, two of 16 are not.
    const CTextCanvas::Drawn title = Drawn(ControlClass::StaticText, TextFont::SystemBold, 20);
    EXPECT_EQ(title.layout.font, TextFont::SmallBold);
    EXPECT_LE(CSquareMetrics().Measure(title.layout).height, title.style.height);
    EXPECT_EQ(Drawn(ControlClass::StaticText, TextFont::System, 20).layout.font, TextFont::Small);
    EXPECT_EQ(Drawn(ControlClass::CheckBox, TextFont::System, 18).layout.font, TextFont::Small);
    EXPECT_EQ(Drawn(ControlClass::PushButton, TextFont::System, 11).layout.font, TextFont::Small);
}

TEST(Look, TextTooLongForAnyFontEndsInAnEllipsisInItsRoom)
{
    for (const ControlClass kind : {ControlClass::StaticText, ControlClass::CheckBox, ControlClass::PushButton}) {
        const CTextCanvas::Drawn text = Drawn(kind, TextFont::System, 100);
        EXPECT_EQ(text.layout.font, TextFont::Small);
        EXPECT_TRUE(text.style.ellipsised);
        const double side = CSquareMetrics::kSmallSide;
        const double lines = text.layout.wrapped ? std::floor(text.style.height / side) : 1;
        EXPECT_GE(lines, 1);
        EXPECT_GE(text.y, -2);
        EXPECT_LE(text.y + lines * side, 34 + 2) << "into what stands below";
        EXPECT_LE(text.layout.width, 200);
    }
}

} // namespace
