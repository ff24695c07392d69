// platform/hitoolbox/windows/TextEditor.cpp
//
// Editing. Every change of the user's goes through Ask and Apply; undo records what Apply did.
#include "platform/hitoolbox/windows/TextEditor.h"

#include <algorithm>

#include "platform/base/Text.h"

namespace {

constexpr std::size_t kMaximumUndoSteps = 1000;
constexpr std::size_t kMaximumUndoBytes = std::size_t{4} << 20U;

/// Lines of equally wide graphemes, one unit wide and high.
class CPlainCaretMap : public ICaretMap {
public:
    CaretSpot SpotOf(std::string_view text, std::size_t offset) const override
    {
        const std::size_t line = LineStart(text, offset);
        double column = 0;
        for (std::size_t at = line; at < offset; at = NextGrapheme(text, at))
            ++column;
        return {column, static_cast<double>(LinesBefore(text, line)), 1};
    }

    std::size_t OffsetAt(std::string_view text, double x, double y) const override
    {
        std::size_t at = 0;
        for (int line = 0; line + 1 <= y && at < text.size(); ++line) {
            const std::size_t end = LineEnd(text, at);
            if (end == text.size())
                break; // below the last line
            at = end + LineBreakLength(text, end);
        }
        const std::size_t end = LineEnd(text, at);
        for (int column = 0; at < end && column + 0.5 <= x; ++column)
            at = NextGrapheme(text, at);
        return at;
    }

private:
    static std::size_t LinesBefore(std::string_view text, std::size_t line)
    {
        std::size_t count = 0;
        for (std::size_t at = 0; at < line; ++count) {
            at = LineEnd(text, at);
            at += LineBreakLength(text, at);
        }
        return count;
    }
};

bool BeginsWithBlank(std::string_view text)
{
    return !text.empty() && (text[0] == ' ' || text[0] == '\t' || LineBreakLength(text, 0) > 0);
}

} // namespace

void CTextEditor::SetOptions(const TextEditorOptions& options)
{
    m_options = options;
    m_mergeable = false;
}

bool CTextEditor::SetText(std::string_view utf8)
{
    if (!CountUtf16Units(utf8))
        return false;
    m_text = utf8;
    ++m_version;
    m_undo.clear();
    m_redo.clear();
    Place(m_text.size(), m_text.size());
    return true;
}

// ---- Selection

TextSpan CTextEditor::Selection() const
{
    return {std::min(m_anchor, m_caret), std::max(m_anchor, m_caret)};
}

std::string_view CTextEditor::SelectedText() const
{
    const TextSpan range = Selection();
    return std::string_view(m_text).substr(range.begin, range.end - range.begin);
}

void CTextEditor::Place(std::size_t anchor, std::size_t caret)
{
    m_anchor = anchor;
    m_caret = caret;
    m_unit = TextUnit::Grapheme;
    m_unitSelected = {anchor, anchor};
    m_goal.reset();
    m_mergeable = false;
}

void CTextEditor::SetCaret(std::size_t offset)
{
    Select(offset, offset);
}

void CTextEditor::Select(std::size_t anchor, std::size_t caret)
{
    Place(GraphemeStart(m_text, anchor), GraphemeStart(m_text, caret));
}

TextSpan CTextEditor::UnitAt(std::size_t offset, TextUnit unit) const
{
    if (unit == TextUnit::Grapheme)
        return {offset, offset};
    if (m_options.password)
        return {0, m_text.size()};
    if (unit == TextUnit::Word)
        return WordAt(m_text, offset);
    const std::size_t end = LineEnd(m_text, offset);
    return {LineStart(m_text, offset), end + LineBreakLength(m_text, end)};
}

void CTextEditor::SelectUnit(std::size_t offset, TextUnit unit)
{
    const TextSpan span = UnitAt(GraphemeStart(m_text, offset), unit);
    Place(span.begin, span.end);
    m_unit = unit;
    m_unitSelected = span;
}

void CTextEditor::ExtendTo(std::size_t offset)
{
    const TextSpan begun = m_unitSelected;
    const TextUnit unit = m_unit;
    const std::size_t at = GraphemeStart(m_text, offset);
    const TextSpan span = UnitAt(at, unit);
    if (at < begun.begin)
        Place(begun.end, std::min(span.begin, begun.begin));
    else
        Place(begun.begin, std::max(at > begun.end ? span.end : at, begun.end));
    m_unit = unit;
    m_unitSelected = begun;
}

void CTextEditor::SelectAll()
{
    Place(0, m_text.size());
}

// ---- Moving

bool CTextEditor::CaretLineRunsLeft() const
{
    const std::size_t begin = LineStart(m_text, m_caret);
    return IsRightToLeft(std::string_view(m_text).substr(begin, LineEnd(m_text, begin) - begin));
}

std::size_t CTextEditor::WordBackward(std::size_t offset) const
{
    return m_options.password ? 0 : PreviousWordStart(m_text, offset);
}

std::size_t CTextEditor::WordForward(std::size_t offset) const
{
    return m_options.password ? m_text.size() : NextWordEnd(m_text, offset);
}

std::size_t CTextEditor::Destination(TextMove move) const
{
    const bool forwardIsLeft = CaretLineRunsLeft();
    switch (move) {
    case TextMove::Left:
    case TextMove::Right:
        return (move == TextMove::Left) == forwardIsLeft ? NextGrapheme(m_text, m_caret)
                                                         : PreviousGrapheme(m_text, m_caret);
    case TextMove::WordLeft:
    case TextMove::WordRight:
        return (move == TextMove::WordLeft) == forwardIsLeft ? WordForward(m_caret) : WordBackward(m_caret);
    case TextMove::LineStart:
        return LineStart(m_text, m_caret);
    case TextMove::LineEnd:
        return LineEnd(m_text, m_caret);
    case TextMove::DocumentStart:
        return 0;
    default:
        return m_text.size();
    }
}

/// Answers the place one line up or down, as near to the goal as that line allows; from the first line the
/// text's beginning, from the last one its end. Sets the goal unless there is one.
std::size_t CTextEditor::Vertical(bool up)
{
    const CPlainCaretMap plain;
    const ICaretMap& map = m_map ? *m_map : static_cast<const ICaretMap&>(plain);
    const CaretSpot spot = map.SpotOf(m_text, m_caret);
    if (!m_goal)
        m_goal = spot.x;
    const double y = spot.y + spot.height * (up ? -0.5 : 1.5);
    const std::size_t found = GraphemeStart(m_text, map.OffsetAt(m_text, *m_goal, y));
    const double moved = map.SpotOf(m_text, found).y - spot.y;
    if (up)
        return moved < 0 ? found : 0;
    return moved > 0 ? found : m_text.size();
}

void CTextEditor::Move(TextMove move, Extend extend)
{
    const bool collapses = extend == Extend::No && m_anchor != m_caret;
    const TextSpan range = Selection();
    const bool isVertical = move == TextMove::Up || move == TextMove::Down;
    std::size_t to = 0;
    std::optional<double> goal;
    if (collapses && (move == TextMove::Left || move == TextMove::Right)) {
        to = (move == TextMove::Left) == CaretLineRunsLeft() ? range.end : range.begin;
    } else if (isVertical) {
        if (collapses)
            Place(move == TextMove::Up ? range.begin : range.end, move == TextMove::Up ? range.begin : range.end);
        to = Vertical(move == TextMove::Up);
        goal = m_goal;
    } else {
        to = Destination(move);
    }
    Place(extend == Extend::Yes ? m_anchor : to, to);
    m_goal = goal;
}

// ---- Changing

std::string CTextEditor::Fitting(TextSpan range, std::string_view text) const
{
    std::string fitting = m_options.singleLine ? OnOneLine(text) : std::string(text);
    if (m_text.size() + fitting.size() <= m_options.maximumLength)
        return fitting; // there are no more units than bytes
    const std::size_t kept =
        Utf16OffsetOf(m_text, m_text.size()) - Utf16OffsetOf(m_text, range.end) + Utf16OffsetOf(m_text, range.begin);
    const std::size_t room = m_options.maximumLength > kept ? m_options.maximumLength - kept : 0;
    fitting.resize(GraphemeStart(fitting, OffsetOfUtf16(fitting, room)));
    return fitting;
}

std::optional<CTextEditor::Decision> CTextEditor::Ask(TextSpan range, std::string_view text)
{
    if (m_asking)
        return std::nullopt;
    const TextProposalHandler handler = m_handler; // which may be set anew while it runs
    if (!handler)
        return Decision{std::string(text), false};
    struct CAsking {
        bool& asking;
        explicit CAsking(bool& flag) : asking(flag) { asking = true; }
        ~CAsking() { asking = false; }
    } const asking(m_asking);

    const std::size_t location = Utf16OffsetOf(m_text, range.begin);
    const TextProposal proposal = {location, Utf16OffsetOf(m_text, range.end) - location, text};
    const std::uint64_t version = m_version;
    std::string replacement;
    const TextAnswer answer = handler(proposal, replacement);
    if (answer == TextAnswer::Refuse || version != m_version)
        return std::nullopt;
    if (answer == TextAnswer::Accept)
        return Decision{std::string(text), false};
    if (answer == TextAnswer::DeleteOnly)
        replacement.clear();
    if (!CountUtf16Units(replacement))
        return std::nullopt;
    std::string fitting = Fitting(range, replacement);
    if (fitting.empty() && range.begin == range.end)
        return std::nullopt; // nothing is left of the change
    return Decision{std::move(fitting), true};
}

bool CTextEditor::Change(TextSpan range, std::string_view text, Edit edit)
{
    if (!CountUtf16Units(text))
        return false;
    const std::string fitting = Fitting(range, text);
    const bool isNothing = fitting.empty() && (range.begin == range.end || !text.empty());
    if (isNothing)
        return false; // no room, or nothing to delete
    const std::optional<Decision> decision = Ask(range, fitting);
    if (!decision)
        return false;
    Apply(range, decision->text, decision->changed ? Edit::Other : edit);
    return true;
}

void CTextEditor::Apply(TextSpan range, std::string_view text, Edit edit)
{
    Record(
        {edit, range.begin, m_text.substr(range.begin, range.end - range.begin), std::string(text), m_anchor, m_caret});
    Replace(range, text);
    m_mergeable = true;
}

void CTextEditor::Replace(TextSpan range, std::string_view text)
{
    m_text.replace(range.begin, range.end - range.begin, text);
    ++m_version;
    // What was inserted may have become one grapheme with what stands behind it.
    const std::size_t caret = GraphemeCeiling(m_text, range.begin + text.size());
    Place(caret, caret);
}

void CTextEditor::Record(Step step)
{
    m_redo.clear();
    if (m_mergeable && !m_undo.empty() && Merge(step))
        return;
    m_undo.push_back(std::move(step));
    std::size_t bytes = 0;
    std::size_t kept = 0; // from the newest on; the newest always
    while (kept < std::min(m_undo.size(), kMaximumUndoSteps)) {
        const Step& older = m_undo[m_undo.size() - 1 - kept];
        bytes += older.removed.size() + older.inserted.size();
        if (kept > 0 && bytes > kMaximumUndoBytes)
            break;
        ++kept;
    }
    m_undo.erase(m_undo.begin(), m_undo.end() - static_cast<std::ptrdiff_t>(kept));
}

/// Joins a step to the last one: typing goes on up to the end of a word with the blanks before it.
bool CTextEditor::Merge(const Step& step)
{
    Step& last = m_undo.back();
    if (last.edit != step.edit || last.inserted.size() + last.removed.size() > kMaximumUndoBytes)
        return false;
    switch (step.edit) {
    case Edit::Typing: {
        const bool beginsWord =
            BeginsWithBlank(step.inserted) &&
            !BeginsWithBlank(
                std::string_view(last.inserted).substr(PreviousGrapheme(last.inserted, last.inserted.size())));
        if (!step.removed.empty() || step.position != last.position + last.inserted.size() || beginsWord)
            return false;
        last.inserted += step.inserted;
        return true;
    }
    case Edit::DeletingBackward:
        if (step.position + step.removed.size() != last.position)
            return false;
        last.removed.insert(0, step.removed);
        last.position = step.position;
        return true;
    case Edit::DeletingForward:
        if (step.position != last.position)
            return false;
        last.removed += step.removed;
        return true;
    default:
        return false;
    }
}

bool CTextEditor::Type(std::string_view utf8)
{
    return !utf8.empty() && Change(Selection(), utf8, Edit::Typing);
}

bool CTextEditor::Paste(std::string_view utf8)
{
    return !utf8.empty() && Change(Selection(), utf8, Edit::Other);
}

bool CTextEditor::DeleteBackward(TextUnit unit)
{
    if (m_anchor != m_caret)
        return Change(Selection(), {}, Edit::Other);
    switch (unit) {
    case TextUnit::Grapheme:
        return Change({PreviousGrapheme(m_text, m_caret), m_caret}, {}, Edit::DeletingBackward);
    case TextUnit::Word:
        return Change({WordBackward(m_caret), m_caret}, {}, Edit::Other);
    default: {
        const std::size_t begin = LineStart(m_text, m_caret);
        return Change({begin == m_caret ? PreviousGrapheme(m_text, m_caret) : begin, m_caret}, {}, Edit::Other);
    }
    }
}

bool CTextEditor::DeleteForward(TextUnit unit)
{
    if (m_anchor != m_caret)
        return Change(Selection(), {}, Edit::Other);
    switch (unit) {
    case TextUnit::Grapheme:
        return Change({m_caret, NextGrapheme(m_text, m_caret)}, {}, Edit::DeletingForward);
    case TextUnit::Word:
        return Change({m_caret, WordForward(m_caret)}, {}, Edit::Other);
    default: {
        const std::size_t end = LineEnd(m_text, m_caret);
        return Change({m_caret, end == m_caret ? NextGrapheme(m_text, m_caret) : end}, {}, Edit::Other);
    }
    }
}

std::optional<std::string> CTextEditor::Copy() const
{
    if (m_options.password || m_anchor == m_caret)
        return std::nullopt;
    return std::string(SelectedText());
}

std::optional<std::string> CTextEditor::Cut()
{
    std::optional<std::string> text = Copy();
    if (!text || !Change(Selection(), {}, Edit::Other))
        return std::nullopt;
    return text;
}

/// Asks for the change that takes a step back or makes it again. If the answer is another text, that is a
/// change of its own; `exactly` tells that it was not.
bool CTextEditor::Replay(TextSpan range, const std::string& text, bool& exactly)
{
    const std::optional<Decision> decision = Ask(range, text);
    if (!decision)
        return false;
    exactly = !decision->changed || decision->text == text;
    if (exactly)
        Replace(range, text);
    else
        Apply(range, decision->text, Edit::Other);
    return true;
}

bool CTextEditor::Undo()
{
    if (m_undo.empty())
        return false;
    const Step step = m_undo.back();
    bool exactly = false;
    if (!Replay({step.position, step.position + step.inserted.size()}, step.removed, exactly))
        return false;
    if (exactly) {
        m_undo.pop_back();
        Place(step.anchor, step.caret);
        m_redo.push_back(step);
    }
    return true;
}

bool CTextEditor::Redo()
{
    if (m_redo.empty())
        return false;
    const Step step = m_redo.back();
    bool exactly = false;
    if (!Replay({step.position, step.position + step.removed.size()}, step.inserted, exactly))
        return false;
    if (exactly) {
        m_redo.pop_back();
        m_undo.push_back(step);
    }
    return true;
}
