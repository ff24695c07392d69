// platform/drawing/Text.h
//
// A text as it is laid out, and the questions to whoever knows its fonts. Whoever draws text
// answers them; the window code also has fixed answers, for when nothing is drawn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The user's interface font in the sizes that controls use.
enum class TextFont : std::uint8_t { System, SystemBold, Small, SmallBold, Mini, Views };
enum class Justification : std::uint8_t { ByScript, Left, Centre, Right };

/// A text as it is laid out. Widths and places are points.
struct TextLayout {
    std::string_view text; ///< Valid UTF-8.
    TextFont font = TextFont::System;
    Justification justification = Justification::ByScript;
    double width = 0; ///< Where lines are wrapped and justified; 0 does neither.
    bool wrapped = false;
    bool concealed = false; ///< Every character is shown as a bullet.
};

struct TextSize {
    double width, height;
};
/// The top of a caret between two characters, from the text's top left.
struct CaretPlace {
    double x, y, height;
};

class ITextMetrics {
public:
    virtual TextSize Measure(const TextLayout& layout) const = 0;
    /// Answers the caret's place at a byte offset.
    virtual CaretPlace PlaceOf(const TextLayout& layout, std::size_t offset) const = 0;
    /// Answers the byte offset of the character border nearest to a point, which may lie outside.
    virtual std::size_t OffsetAt(const TextLayout& layout, double x, double y) const = 0;

protected:
    ~ITextMetrics() = default;
};
