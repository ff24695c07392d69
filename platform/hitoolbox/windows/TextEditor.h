// platform/hitoolbox/windows/TextEditor.h
//
// What edit text does with its text: caret and selection, moving, deleting, undo. It draws nothing and knows
// no window, no keys and no clipboard; a control hands it what the user wants.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hitoolbox/windows/TextUnits.h"

/// Where a caret stands in the laid out text, in points from its top left.
struct CaretSpot {
    double x, y, height;
};

/// Knows how the text is laid out; moving up and down asks it.
class ICaretMap {
public:
    virtual CaretSpot SpotOf(std::string_view text, std::size_t offset) const = 0;
    /// Answers the offset of the caret nearest to a point, which may lie outside the text.
    virtual std::size_t OffsetAt(std::string_view text, double x, double y) const = 0;

protected:
    ~ICaretMap() = default;
};

/// A change that the user wants to make: the text to come in place of a range, in UTF-16 units.
struct TextProposal {
    std::size_t location = 0;
    std::size_t length = 0;
    std::string_view text;
};

/// `Replace`: with the text that the handler gave instead. `DeleteOnly`: the range goes, the text does not come.
enum class TextAnswer { Accept, Refuse, Replace, DeleteOnly };

/// Decides on a change. It may call the editor's SetText, which makes the change void; other changes are
/// refused meanwhile. The editor has to live until it returns.
/// @param replacement  out: UTF-8 for the answer Replace; what is not valid refuses the change.
using TextProposalHandler = std::function<TextAnswer(const TextProposal& proposal, std::string& replacement)>;

enum class TextUnit : std::uint8_t { Grapheme, Word, Line };
enum class Extend : std::uint8_t { No, Yes };
/// Left and right as the keys say: in a line that runs from right to left, Left goes forward in the text.
enum class TextMove : std::uint8_t {
    Left,
    Right,
    WordLeft,
    WordRight,
    LineStart,
    LineEnd,
    Up,
    Down,
    DocumentStart,
    DocumentEnd,
};

struct TextEditorOptions {
    bool singleLine = false;               ///< line breaks that the user brings become blanks
    bool password = false;                 ///< nothing is copied, and all is one word
    std::size_t maximumLength = 1U << 20U; ///< in UTF-16 units, for what the user brings
};

/// An editable text in valid UTF-8. Offsets are in bytes and go to the beginning of their grapheme; one behind
/// the end means the end. Caret and anchor always stand between graphemes. One thread at a time.
class CTextEditor {
public:
    explicit CTextEditor(const TextEditorOptions& options = {}) : m_options(options) {}

    const TextEditorOptions& Options() const { return m_options; }
    void SetOptions(const TextEditorOptions& options);
    /// Sets who decides on the user's changes; none accepts them all.
    void SetProposalHandler(TextProposalHandler handler) { m_handler = std::move(handler); }
    /// Sets the layout, which is borrowed; null stands for unwrapped lines of equally wide graphemes.
    void SetCaretMap(const ICaretMap* map) { m_map = map; }

    const std::string& Text() const { return m_text; }
    /// Replaces all, exactly as given, without asking; the caret goes to the end and nothing can be undone.
    /// @return false, and nothing changes, if `utf8` is not valid.
    bool SetText(std::string_view utf8);

    std::size_t Caret() const { return m_caret; }
    std::size_t Anchor() const { return m_anchor; }
    TextSpan Selection() const;
    std::string_view SelectedText() const;
    /// Caret and anchor, both at `offset`.
    void SetCaret(std::size_t offset);
    void Select(std::size_t anchor, std::size_t caret);
    /// Selects the word or line at `offset`, as a double or triple click does; a Grapheme sets the caret.
    void SelectUnit(std::size_t offset, TextUnit unit);
    /// Moves the caret's end of the selection to `offset`, as a drag does: by the unit that was selected last.
    void ExtendTo(std::size_t offset);
    void SelectAll();
    void Move(TextMove move, Extend extend);

    // Changes of the user's. Each asks first, and answers whether the text changed.

    /// Puts text in place of the selection: typed, or confirmed by an input method. Neighbouring insertions
    /// are undone together, a word at a time.
    bool Type(std::string_view utf8);
    /// The same for a text from elsewhere, undone by itself.
    bool Paste(std::string_view utf8);
    /// Deletes the selection; without one, back to the beginning of the unit.
    bool DeleteBackward(TextUnit unit);
    /// Deletes the selection; without one, up to the end of the unit. At a line's end a Line is its break.
    bool DeleteForward(TextUnit unit);
    /// Answers what to put on the clipboard; nothing without a selection and of passwords.
    std::optional<std::string> Copy() const;
    /// The same, the selection being deleted; nothing if the deletion was refused.
    std::optional<std::string> Cut();
    bool CanUndo() const { return !m_undo.empty(); }
    bool CanRedo() const { return !m_redo.empty(); }
    bool Undo();
    bool Redo();

private:
    enum class Edit : std::uint8_t { Other, Typing, DeletingBackward, DeletingForward };
    struct Step {
        Edit edit;
        std::size_t position;
        std::string removed, inserted;
        std::size_t anchor, caret; // before the step
    };

    /// What comes of asking: the text to insert, and whether it is another than was proposed.
    struct Decision {
        std::string text;
        bool changed;
    };

    std::optional<Decision> Ask(TextSpan range, std::string_view text);
    bool Change(TextSpan range, std::string_view text, Edit edit);
    bool Replay(TextSpan range, const std::string& text, bool& exactly);
    void Apply(TextSpan range, std::string_view text, Edit edit);
    void Record(Step step);
    bool Merge(const Step& step);
    void Replace(TextSpan range, std::string_view text);
    std::string Fitting(TextSpan range, std::string_view text) const;
    void Place(std::size_t anchor, std::size_t caret);
    std::size_t Destination(TextMove move) const;
    std::size_t Vertical(bool up);
    std::size_t WordBackward(std::size_t offset) const;
    std::size_t WordForward(std::size_t offset) const;
    bool CaretLineRunsLeft() const;
    TextSpan UnitAt(std::size_t offset, TextUnit unit) const;

    TextEditorOptions m_options;
    TextProposalHandler m_handler;
    const ICaretMap* m_map = nullptr;
    std::string m_text;
    std::size_t m_anchor = 0;
    std::size_t m_caret = 0;
    TextUnit m_unit = TextUnit::Grapheme; // what a drag selects by
    TextSpan m_unitSelected;              // what it began with
    std::optional<double> m_goal;         // where moving up and down would like the caret
    std::deque<Step> m_undo;
    std::vector<Step> m_redo;
    bool m_mergeable = false; // nothing came between the last step and now
    bool m_asking = false;
    std::uint64_t m_version = 0; // counts the changes of the text
};
