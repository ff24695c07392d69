// platform/hitoolbox/windows/EditText.h
//
// Edit text in a control: keys, clicks and the clipboard become edits, and each change of the
// user's is first put to the control's handlers. The editing itself is CTextEditor's.
#pragma once

#include "platform/desktop/IDesktop.h"
#include "platform/hitoolbox/windows/Control.h"
#include "platform/hitoolbox/windows/LongText.h"
#include "platform/hitoolbox/windows/TextEditor.h"

/// With the lock held, as everything here.
class CEditText final : private ICaretMap {
public:
    explicit CEditText(CControl& control);
    CEditText(const CEditText&) = delete;
    CEditText& operator=(const CEditText&) = delete;

    /// Sets the text, which is no change of the user's.
    void SetText(const __CFString& text);
    CRef<const __CFString> CopyText();
    /// Sets a selection in UTF-16 units, which are put in order and limited to the text.
    void SelectUnits(CFIndex start, CFIndex end);
    CFRange SelectionInUnits() const;
    void SelectAll();

    /// Does what a click or, `extending`, a drag does at a place in the window, in points.
    /// @param clicks  2 selects by words, 3 by lines.
    void ClickAt(double x, double y, int clicks, bool extending);
    void ScrollBy(double x, double y);
    /// Has the caret in sight.
    void Reveal();

    /// Makes it a password field, which has one line.
    void SetPassword(bool password);
    bool IsPassword() const { return m_editor.Options().password; }
    void SetSingleLine(bool singleLine);
    bool IsSingleLine() const { return m_editor.Options().singleLine; }
    /// What the text looks like as it is drawn.
    TextLayout Layout(std::string_view text) const;

    const CTextEditor& Editor() const { return m_editor; }
    /// What is seen of the text; its place counts from the top left of the control.
    TextPart ShownPart() const;

    /// Runs an edit of the user's; `lock` is given up while handlers are asked. Nothing of a locked
    /// text is changed.
    /// @return whether the text changed.
    bool Edit(CToolboxLock& lock, const std::function<bool(CTextEditor&)>& edit);
    /// Runs something that moves the caret or selects.
    void Move(const std::function<void(CTextEditor&)>& move);

    bool locked = false;

private:
    TextAnswer Ask(const TextProposal& proposal, std::string& replacement);
    const ITextMetrics& MetricsFor(const TextLayout& layout) const;
    CaretSpot SpotOf(std::string_view text, std::size_t offset) const override;
    std::size_t OffsetAt(std::string_view text, double x, double y) const override;

    CControl& m_control;
    CTextEditor m_editor;
    CRef<const __CFString> m_given; // the text as an object, while it is that
    CToolboxLock* m_lock = nullptr; // of the edit under way
    double m_scrollX = 0, m_scrollY = 0;
    CLongText m_long;
};

// What the user does, without the lock. A control that is gone or no edit text takes nothing.

/// Types a text, or puts one in that an input method or the clipboard brings.
void TypeText(ControlRef control, std::string_view text);
void PasteText(ControlRef control, std::string_view text);
/// Does what a key does.
/// @return false where it means nothing to edit text.
bool EditByKey(ControlRef control, const KeyInput& input);
/// Offers what is selected to whoever pastes with the middle button.
void OfferSelection(ControlRef control);
