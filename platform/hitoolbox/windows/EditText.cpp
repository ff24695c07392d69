// platform/hitoolbox/windows/EditText.cpp
//
// Keys are a table. The clipboard is the desktop's, which is asked without the lock.
#include "platform/hitoolbox/windows/EditText.h"

#include <algorithm>
#include <cstring>

#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/windows/Input.h"
#include "platform/hitoolbox/windows/Notify.h"

namespace {

/// Lends a lock for a scope; edits nest when a handler runs a loop of its own.
class CLockScope {
public:
    CLockScope(CToolboxLock*& place, CToolboxLock& lock) : m_place(place), m_outer(place) { place = &lock; }
    ~CLockScope() { m_place = m_outer; }
    CLockScope(const CLockScope&) = delete;
    CLockScope& operator=(const CLockScope&) = delete;

private:
    CToolboxLock*& m_place;
    CToolboxLock* const m_outer;
};

} // namespace

CEditText::CEditText(CControl& control) : m_control(control), m_given(__CFString::Create(""))
{
    m_editor.SetCaretMap(this);
    m_editor.SetProposalHandler(
        [this](const TextProposal& proposal, std::string& replacement) { return Ask(proposal, replacement); });
}

void CEditText::SetText(const __CFString& text)
{
    (void)m_editor.SetText(text.Utf8()); // a string object is valid UTF-8
    m_given = CRef<const __CFString>::Share(&text);
    m_scrollX = m_scrollY = 0;
}

CRef<const __CFString> CEditText::CopyText()
{
    if (!m_given)
        m_given = __CFString::Create(m_editor.Text());
    return m_given;
}

void CEditText::SelectUnits(CFIndex start, CFIndex end)
{
    const auto offset = [this](CFIndex units) {
        return OffsetOfUtf16(m_editor.Text(), units < 0 ? 0 : static_cast<std::size_t>(units));
    };
    m_editor.Select(offset(std::min(start, end)), offset(std::max(start, end)));
}

CFRange CEditText::SelectionInUnits() const
{
    const TextSpan span = m_editor.Selection();
    const auto units = [this](std::size_t offset) {
        return static_cast<CFIndex>(Utf16OffsetOf(m_editor.Text(), offset));
    };
    return CFRangeMake(units(span.begin), units(span.end) - units(span.begin));
}

void CEditText::SelectAll()
{
    m_editor.SelectAll();
}

void CEditText::ClickAt(double x, double y, int clicks, bool extending)
{
    const Rect& bounds = m_control.bounds;
    const std::size_t offset = OffsetAt(m_editor.Text(), x - bounds.left + m_scrollX, y - bounds.top + m_scrollY);
    if (extending)
        m_editor.ExtendTo(offset);
    else
        m_editor.SelectUnit(offset, clicks >= 3 ? TextUnit::Line : clicks == 2 ? TextUnit::Word : TextUnit::Grapheme);
    Reveal();
}

void CEditText::ScrollBy(double x, double y)
{
    constexpr double kStep = 16;
    const Rect& bounds = m_control.bounds;
    const TextLayout layout = Layout(m_editor.Text());
    const TextSize size = MetricsFor(layout).Measure(layout);
    const auto limited = [](double place, double text, double room) {
        return std::clamp(place, 0.0, std::max(text - room, 0.0));
    };
    m_scrollX = limited(m_scrollX + x * kStep, size.width, bounds.right - bounds.left);
    m_scrollY = limited(m_scrollY + y * kStep, size.height, bounds.bottom - bounds.top);
}

void CEditText::Reveal()
{
    const Rect& bounds = m_control.bounds;
    const CaretSpot spot = SpotOf(m_editor.Text(), m_editor.Caret());
    const double width = bounds.right - bounds.left;
    const double height = bounds.bottom - bounds.top;
    m_scrollX = IsSingleLine() ? std::clamp(m_scrollX, std::max(spot.x + 1 - width, 0.0), spot.x) : 0;
    const double lowest = std::max(spot.y + spot.height - height, 0.0);
    m_scrollY = IsSingleLine() ? 0 : std::clamp(m_scrollY, std::min(lowest, spot.y), spot.y);
}

void CEditText::SetPassword(bool password)
{
    TextEditorOptions options = m_editor.Options();
    options.password = password;
    options.singleLine = options.singleLine || password;
    m_editor.SetOptions(options);
}

void CEditText::SetSingleLine(bool singleLine)
{
    TextEditorOptions options = m_editor.Options();
    options.singleLine = singleLine;
    m_editor.SetOptions(options);
}

TextLayout CEditText::Layout(std::string_view text) const
{
    TextLayout layout;
    layout.text = text;
    layout.font = m_control.font;
    layout.justification = m_control.justification;
    layout.width = m_control.bounds.right - m_control.bounds.left;
    layout.wrapped = !IsSingleLine();
    layout.concealed = IsPassword();
    return layout;
}

TextPart CEditText::ShownPart() const
{
    const TextLayout layout = Layout(m_editor.Text());
    const TextSpan selection = m_editor.Selection();
    TextPart part;
    part.caret = m_editor.Caret();
    part.selectionStart = selection.begin;
    part.selectionEnd = selection.end;
    const Rect& bounds = m_control.bounds;
    if (CLongText::Suits(layout))
        part =
            m_long.PartIn(layout, m_scrollX, m_scrollY, bounds.right - bounds.left, bounds.bottom - bounds.top, part);
    else
        part.text = m_editor.Text();
    part.x -= m_scrollX;
    part.y -= m_scrollY;
    return part;
}

const ITextMetrics& CEditText::MetricsFor(const TextLayout& layout) const
{
    return CLongText::Suits(layout) ? m_long : Metrics();
}

CaretSpot CEditText::SpotOf(std::string_view text, std::size_t offset) const
{
    const TextLayout layout = Layout(text);
    const CaretPlace place = MetricsFor(layout).PlaceOf(layout, offset);
    return {place.x, place.y, place.height};
}

std::size_t CEditText::OffsetAt(std::string_view text, double x, double y) const
{
    const TextLayout layout = Layout(text);
    return MetricsFor(layout).OffsetAt(layout, x, y);
}

bool CEditText::Edit(CToolboxLock& lock, const std::function<bool(CTextEditor&)>& edit)
{
    if (locked)
        return false;
    const auto kept = CRef<CControl>::Share(&m_control);
    const CLockScope scope(m_lock, lock);
    const bool changed = edit(m_editor);
    if (changed) {
        m_given = {};
        Reveal();
        m_control.Touch();
    }
    return changed;
}

void CEditText::Move(const std::function<void(CTextEditor&)>& move)
{
    move(m_editor);
    Reveal();
    m_control.Touch();
}

TextAnswer CEditText::Ask(const TextProposal& proposal, std::string& replacement)
{
    if (!m_control.Handlers() || !m_lock)
        return TextAnswer::Accept;
    const ControlRef reference = m_control.Ref();
    const auto text = __CFString::Create(proposal.text);
    const CFRange range = CFRangeMake(static_cast<CFIndex>(proposal.location), static_cast<CFIndex>(proposal.length));
    m_lock->unlock();
    CRef<const __CFString> instead;
    OSStatus answer = userCanceledErr;
    try {
        answer = AskForChange(m_control, reference, range, text.Get(), instead);
    } catch (...) {
        m_lock->lock();
        throw;
    }
    m_lock->lock();
    if (!Find<CControl>(reference))
        return TextAnswer::Refuse; // the handler disposed of it
    if (answer == eventNotHandledErr)
        return TextAnswer::Accept;
    if (answer != noErr)
        return TextAnswer::Refuse;
    if (!instead)
        return TextAnswer::DeleteOnly;
    replacement = instead->Utf8();
    return TextAnswer::Replace;
}

namespace {

// Runs an edit of the user's on a control and tells its handlers afterwards.
void EditControl(ControlRef reference, const std::function<bool(CTextEditor&)>& edit)
{
    CRef<CControl> control;
    {
        CToolboxLock lock;
        control = Share<CControl>(reference);
        if (!control || !control->IsEditText() || !control->IsUsable())
            return;
        if (!control->edit->Edit(lock, edit))
            return;
    }
    NotifyTextChanged(*control, reference);
}

void MoveInControl(ControlRef reference, const std::function<void(CTextEditor&)>& move)
{
    const CToolboxLock lock;
    CControl* const control = Find<CControl>(reference);
    if (control && control->IsEditText())
        control->edit->Move(move);
}

void Offer(TextExchange where, const std::optional<std::string>& text)
{
    IDesktop* const desktop = Desktop::Current();
    if (desktop && text)
        desktop->OfferText(where, *text);
}

void CopyFrom(ControlRef reference, TextExchange where)
{
    std::optional<std::string> text;
    {
        const CToolboxLock lock;
        const CControl* const control = Find<CControl>(reference);
        if (control && control->IsEditText())
            text = control->edit->Editor().Copy();
    }
    Offer(where, text);
}

void CutFrom(ControlRef reference)
{
    std::optional<std::string> text;
    EditControl(reference, [&text](CTextEditor& editor) { return (text = editor.Cut()).has_value(); });
    Offer(TextExchange::Clipboard, text);
}

struct MoveKey {
    std::uint32_t symbol;
    TextMove plain;
    TextMove byWord;
};
constexpr MoveKey kMoveKeys[] = {
    {kKeyLeft, TextMove::Left, TextMove::WordLeft},           {kKeyRight, TextMove::Right, TextMove::WordRight},
    {kKeyHome, TextMove::LineStart, TextMove::DocumentStart}, {kKeyEnd, TextMove::LineEnd, TextMove::DocumentEnd},
    {kKeyUp, TextMove::Up, TextMove::DocumentStart},          {kKeyDown, TextMove::Down, TextMove::DocumentEnd},
};

bool MoveByKey(ControlRef control, const KeyInput& input)
{
    const auto key = std::find_if(std::begin(kMoveKeys), std::end(kMoveKeys),
                                  [&input](const MoveKey& one) { return one.symbol == input.symbol; });
    if (key == std::end(kMoveKeys))
        return false;
    const bool byWord = (input.modifiers & kModifierControl) != 0;
    const Extend extend = (input.modifiers & kModifierShift) != 0 ? Extend::Yes : Extend::No;
    MoveInControl(control, [=](CTextEditor& editor) { editor.Move(byWord ? key->byWord : key->plain, extend); });
    if (extend == Extend::Yes)
        OfferSelection(control);
    return true;
}

bool DeleteByKey(ControlRef control, const KeyInput& input)
{
    if (input.symbol != kKeyBackspace && input.symbol != kKeyDelete)
        return false;
    const TextUnit unit = (input.modifiers & kModifierControl) != 0 ? TextUnit::Word : TextUnit::Grapheme;
    const bool backward = input.symbol == kKeyBackspace;
    EditControl(control, [=](CTextEditor& editor) {
        return backward ? editor.DeleteBackward(unit) : editor.DeleteForward(unit);
    });
    return true;
}

// The clipboard's keys in both their spellings.
bool ExchangeByKey(ControlRef control, const KeyInput& input)
{
    const bool withControl = (input.modifiers & kModifierControl) != 0;
    const bool withShift = (input.modifiers & kModifierShift) != 0;
    const std::uint32_t letter = input.symbol >= 'A' && input.symbol <= 'Z' ? input.symbol + 32 : input.symbol;
    if (withControl && (letter == 'c' || input.symbol == kKeyInsert))
        CopyFrom(control, TextExchange::Clipboard);
    else if ((withControl && letter == 'x') || (withShift && input.symbol == kKeyDelete))
        CutFrom(control);
    else if ((withControl && letter == 'v') || (withShift && input.symbol == kKeyInsert))
        RequestPaste(control, TextExchange::Clipboard);
    else
        return false;
    return true;
}

bool HistoryByKey(ControlRef control, const KeyInput& input)
{
    const bool withShift = (input.modifiers & kModifierShift) != 0;
    const std::uint32_t letter = input.symbol >= 'A' && input.symbol <= 'Z' ? input.symbol + 32 : input.symbol;
    if ((input.modifiers & kModifierControl) == 0)
        return false;
    if (letter == 'a')
        MoveInControl(control, [](CTextEditor& editor) { editor.SelectAll(); });
    else if (letter == 'z' && !withShift)
        EditControl(control, [](CTextEditor& editor) { return editor.Undo(); });
    else if (letter == 'y' || letter == 'z')
        EditControl(control, [](CTextEditor& editor) { return editor.Redo(); });
    else
        return false;
    return true;
}

bool TypeByKey(ControlRef control, const KeyInput& input)
{
    const bool confirms = input.symbol == kKeyReturn || input.symbol == kKeyKeypadEnter;
    const bool withShortcut = (input.modifiers & (kModifierControl | kModifierSuper)) != 0;
    if (withShortcut)
        return false;
    if (confirms) {
        {
            const CToolboxLock lock;
            const CControl* const found = Find<CControl>(control);
            if (!found || !found->IsEditText() || found->edit->IsSingleLine())
                return false;
        }
        TypeText(control, "\n");
        return true;
    }
    const auto first = input.text.empty() ? '\0' : static_cast<unsigned char>(input.text.front());
    if (first < 0x20 || first == 0x7F)
        return false;
    TypeText(control, input.text);
    return true;
}

} // namespace

void TypeText(ControlRef control, std::string_view text)
{
    EditControl(control, [text](CTextEditor& editor) { return editor.Type(text); });
}

void PasteText(ControlRef control, std::string_view text)
{
    EditControl(control, [text](CTextEditor& editor) { return !text.empty() && editor.Paste(text); });
}

bool EditByKey(ControlRef control, const KeyInput& input)
{
    return ExchangeByKey(control, input) || HistoryByKey(control, input) || MoveByKey(control, input) ||
           DeleteByKey(control, input) || TypeByKey(control, input);
}

void OfferSelection(ControlRef control)
{
    CopyFrom(control, TextExchange::Selection);
}
