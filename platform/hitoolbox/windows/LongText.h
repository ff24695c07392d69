// platform/hitoolbox/windows/LongText.h
//
// Laying out an edited text that is too long for it at once: whoever knows the fonts takes a time
// that grows faster than the text, and cannot tell places beyond some millions of points. It is
// laid out in pieces, of which only those are laid out anew that changed, and only those drawn that
// are seen. What a change is, and what a caret means, is left to others.
#pragma once

#include <string>
#include <vector>

#include "platform/drawing/Text.h"

/// What is seen of a text, as a text of its own. Offsets are its own, too.
struct TextPart {
    std::string text;
    double x = 0, y = 0; ///< Where it begins in the whole one, in points.
    std::size_t caret = 0, selectionStart = 0, selectionEnd = 0;
};

/// The places of one text, asked about again and again while it is edited. A wrapped text is cut at
/// its line breaks, and a line that is very long also at a blank, where it then is wrapped anyway.
class CLongText final : public ITextMetrics {
public:
    /// Answers whether a text is better laid out here than at once.
    static bool Suits(const TextLayout& layout) noexcept;

    TextSize Measure(const TextLayout& layout) const override;
    CaretPlace PlaceOf(const TextLayout& layout, std::size_t offset) const override;
    std::size_t OffsetAt(const TextLayout& layout, double x, double y) const override;

    /// Answers the part that shows in a field, and somewhat around it, so that a caret or an end of the
    /// selection that is elsewhere in the text is out of sight in the part as well.
    /// @param left, top, width, height  what is seen, in points from the text's top left.
    /// @param marked  caret and selection in the whole text, in bytes; the rest is not read.
    TextPart PartIn(const TextLayout& layout, double left, double top, double width, double height,
                    const TextPart& marked) const;

private:
    struct Piece {
        std::size_t length = 0; ///< In bytes, with its line break.
        std::size_t shown = 0;  ///< Without it.
        double extent = 0;      ///< Height; the width where the text is not wrapped.
    };
    /// A piece and what lies before it.
    struct Position {
        std::size_t index = 0, begin = 0;
        double before = 0;
    };

    void Update(const TextLayout& layout) const;
    void Cut(const TextLayout& layout, std::size_t prefix, std::size_t suffix) const;
    Piece PieceAt(const TextLayout& layout, std::size_t begin) const;
    TextLayout LayoutOf(const TextLayout& layout, std::size_t begin, std::size_t length) const;
    template <typename IsPast>
    Position Find(IsPast&& isPast) const;
    Position FindOffset(std::size_t offset) const;
    Position FindPlace(double place) const;
    double Total() const;
    /// Where a piece begins in its line that is not wrapped; the first is the last one from the left
    /// where the text runs to the left.
    double LeftOf(const Position& position) const;

    // What was asked about last.
    mutable std::string m_text;
    mutable TextLayout m_layout; ///< Without its text.
    mutable TextSize m_probe = {0, 0};
    mutable bool m_runsLeft = false;
    mutable std::vector<Piece> m_pieces;
};
