// platform/hitoolbox/windows/LongText.cpp
//
// Sums over all pieces are taken each time: they are some thousands, and a layout costs more than
// all of them together.
#include "platform/hitoolbox/windows/LongText.h"

#include <algorithm>
#include <functional>

#include "platform/hitoolbox/windows/TextMetrics.h"
#include "platform/hitoolbox/windows/TextUnits.h"

namespace {

constexpr std::size_t kLong = 4096;         ///< Bytes; what is shorter is laid out at once.
constexpr std::size_t kLongestPiece = 2048; ///< Bytes, without the line break.

bool IsSameKind(const TextLayout& one, const TextLayout& other) noexcept
{
    return one.font == other.font && one.justification == other.justification && one.width == other.width &&
           one.wrapped == other.wrapped && one.concealed == other.concealed;
}

/// Another size tells that the user's font is another one.
TextSize Probe(const TextLayout& layout)
{
    TextLayout probe = layout;
    probe.text = "Hamburgefonstiv";
    probe.width = 0;
    return Metrics().Measure(probe);
}

/// Answers where a line is cut: behind a blank if there is one. Of several it is the one that what follows
/// picks, so that a change earlier in the line leaves the cuts behind it where they are.
std::size_t CutWithin(std::string_view text, std::size_t first, std::size_t limit)
{
    const bool hasBlank = text.substr(first, limit - first).find(' ') != std::string_view::npos;
    std::size_t best = limit;
    std::size_t lowest = 0;
    for (std::size_t at = first + 1; at <= limit; ++at) {
        if (hasBlank && text[at - 1] != ' ')
            continue;
        constexpr std::size_t kLooksAt = 8;
        const std::size_t hash = std::hash<std::string_view>()(text.substr(at, kLooksAt));
        if (best == limit || hash < lowest) {
            best = at;
            lowest = hash;
        }
    }
    return GraphemeStart(text, best);
}

} // namespace

bool CLongText::Suits(const TextLayout& layout) noexcept
{
    return layout.text.size() > kLong && !layout.concealed;
}

TextLayout CLongText::LayoutOf(const TextLayout& layout, std::size_t begin, std::size_t length) const
{
    TextLayout piece = layout;
    piece.text = layout.text.substr(begin, length);
    piece.width = layout.wrapped ? layout.width : 0; // else the last, short one would be justified
    return piece;
}

CLongText::Piece CLongText::PieceAt(const TextLayout& layout, std::size_t begin) const
{
    const std::string_view text = layout.text;
    const std::size_t limit = std::min(begin + kLongestPiece, text.size());
    Piece piece;
    std::size_t end = begin;
    if (layout.wrapped) {
        while (end < limit && LineBreakLength(text, end) == 0)
            ++end;
    } else {
        end = limit;
    }
    if (end == limit && limit < text.size() && (!layout.wrapped || LineBreakLength(text, limit) == 0)) {
        end = CutWithin(text, begin + kLongestPiece / 2, limit);
        if (end <= begin)
            end = NextGrapheme(text, begin); // longer than a piece
    }
    piece.shown = end - begin;
    piece.length = piece.shown + (layout.wrapped ? LineBreakLength(text, end) : 0);
    const TextSize size = Metrics().Measure(LayoutOf(layout, begin, piece.shown));
    piece.extent = layout.wrapped ? size.height : size.width;
    return piece;
}

void CLongText::Update(const TextLayout& layout) const
{
    const TextSize probe = Probe(layout);
    if (!IsSameKind(layout, m_layout) || probe.width != m_probe.width || probe.height != m_probe.height) {
        m_pieces.clear();
        m_text.clear();
    } else if (m_text == layout.text) {
        return;
    }
    m_layout = layout;
    m_layout.text = {};
    m_probe = probe;
    const std::size_t most = std::min(m_text.size(), layout.text.size());
    const auto prefix = static_cast<std::size_t>(
        std::mismatch(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(most), layout.text.begin()).first -
        m_text.begin());
    const auto suffix = static_cast<std::size_t>(
        std::mismatch(m_text.rbegin(), m_text.rbegin() + static_cast<std::ptrdiff_t>(most - prefix),
                      layout.text.rbegin())
            .first -
        m_text.rbegin());
    Cut(layout, prefix, suffix);
    m_text = layout.text;
    m_runsLeft = !layout.wrapped && IsRightToLeft(layout.text);
}

// Cuts anew what lies between an unchanged beginning and an unchanged end.
void CLongText::Cut(const TextLayout& layout, std::size_t prefix, std::size_t suffix) const
{
    const std::vector<Piece> before = std::move(m_pieces);
    m_pieces = {};
    std::size_t old = 0;   // the next one of before
    std::size_t begin = 0; // of the next piece
    // Where a piece ends depends on what follows it up to the length of one.
    while (old < before.size() && begin + before[old].length + kLongestPiece <= prefix) {
        begin += before[old].length;
        m_pieces.push_back(before[old++]);
    }
    std::size_t oldBegin = begin;
    for (;;) {
        const std::size_t left = layout.text.size() - begin;
        while (old < before.size() && m_text.size() - oldBegin > left)
            oldBegin += before[old++].length;
        if (old < before.size() && m_text.size() - oldBegin == left && left <= suffix) {
            m_pieces.insert(m_pieces.end(), before.begin() + static_cast<std::ptrdiff_t>(old), before.end());
            return;
        }
        m_pieces.push_back(PieceAt(layout, begin));
        const Piece& last = m_pieces.back();
        begin += last.length;
        if (begin == layout.text.size() && last.length == last.shown)
            return; // a break at the end begins one more line
    }
}

template <typename IsPast>
CLongText::Position CLongText::Find(IsPast&& isPast) const
{
    Position position;
    while (position.index + 1 < m_pieces.size()) {
        const Piece& piece = m_pieces[position.index];
        if (isPast(position.begin + piece.length, position.before + piece.extent))
            break;
        ++position.index;
        position.begin += piece.length;
        position.before += piece.extent;
    }
    return position;
}

CLongText::Position CLongText::FindOffset(std::size_t offset) const
{
    return Find([offset](std::size_t end, double) { return offset < end; });
}

CLongText::Position CLongText::FindPlace(double place) const
{
    return Find([place](std::size_t, double after) { return place < after; });
}

double CLongText::Total() const
{
    double total = 0;
    for (const Piece& piece : m_pieces)
        total += piece.extent;
    return total;
}

double CLongText::LeftOf(const Position& position) const
{
    return m_runsLeft ? Total() - position.before - m_pieces[position.index].extent : position.before;
}

TextSize CLongText::Measure(const TextLayout& layout) const
{
    Update(layout);
    if (layout.wrapped)
        return {layout.width, Total()};
    return {Total(), m_probe.height};
}

CaretPlace CLongText::PlaceOf(const TextLayout& layout, std::size_t offset) const
{
    Update(layout);
    const Position at = FindOffset(offset);
    const Piece& piece = m_pieces[at.index];
    CaretPlace place =
        Metrics().PlaceOf(LayoutOf(layout, at.begin, piece.shown), std::min(offset - at.begin, piece.shown));
    (layout.wrapped ? place.y : place.x) += layout.wrapped ? at.before : LeftOf(at);
    return place;
}

std::size_t CLongText::OffsetAt(const TextLayout& layout, double x, double y) const
{
    Update(layout);
    const Position at = FindPlace(layout.wrapped ? y : m_runsLeft ? Total() - x : x);
    const double left = layout.wrapped ? 0 : LeftOf(at);
    const double top = layout.wrapped ? at.before : 0;
    return at.begin + Metrics().OffsetAt(LayoutOf(layout, at.begin, m_pieces[at.index].shown), x - left, y - top);
}

TextPart CLongText::PartIn(const TextLayout& layout, double left, double top, double width, double height,
                           const TextPart& marked) const
{
    Update(layout);
    const double from = layout.wrapped ? top : m_runsLeft ? Total() - left - width : left;
    Position first = FindPlace(from);
    if (first.index > 0) {
        --first.index;
        first.begin -= m_pieces[first.index].length;
        first.before -= m_pieces[first.index].extent;
    }
    const std::size_t seen = FindPlace(from + (layout.wrapped ? height : width)).index;
    const std::size_t last = std::min(seen + 1, m_pieces.size() - 1);

    TextPart part;
    Position at = first;
    const auto note = [&](std::size_t offset, std::size_t& noted) {
        const std::size_t shown = m_pieces[at.index].shown;
        if (offset >= at.begin) // what lies behind the last piece goes to its end
            noted = part.text.size() + std::min(offset - at.begin, shown);
    };
    double extent = 0;
    for (; at.index <= last; ++at.index) {
        const Piece& piece = m_pieces[at.index];
        note(marked.caret, part.caret);
        note(marked.selectionStart, part.selectionStart);
        note(marked.selectionEnd, part.selectionEnd);
        part.text += layout.text.substr(at.begin, piece.shown);
        if (layout.wrapped && at.index < last)
            part.text += '\n';
        at.begin += piece.length;
        extent += piece.extent;
    }
    if (layout.wrapped)
        part.y = first.before;
    else
        part.x = m_runsLeft ? Total() - first.before - extent : first.before;
    return part;
}
