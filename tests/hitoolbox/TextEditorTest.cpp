// tests/hitoolbox/TextEditorTest.cpp
//
// Edit text as people expect it: by what they see, not by bytes, and with nothing lost that they wrote.
#include "platform/hitoolbox/windows/TextEditor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr const char* kFamily = "\U0001F469\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466";
constexpr const char* kGermany = "\U0001F1E9\U0001F1EA";
constexpr const char* kShalom = "\u05E9\u05DC\u05D5\u05DD"; // four letters of two bytes each

/// The text with the caret as | and, with a selection, the anchor as ^.
std::string Shown(const CTextEditor& editor)
{
    std::string text = editor.Text();
    const TextSpan range = editor.Selection();
    const bool caretLast = editor.Caret() == range.end;
    text.insert(range.end, caretLast ? "|" : "^");
    if (range.begin != range.end)
        text.insert(range.begin, caretLast ? "^" : "|");
    return text;
}

/// An editor with a text in which | stands for the caret and ^ for the anchor.
CTextEditor Editor(const std::string& shown, const TextEditorOptions& options = {})
{
    std::string text;
    std::size_t caret = std::string::npos;
    std::size_t anchor = std::string::npos;
    for (const char byte : shown) {
        if (byte == '|')
            caret = text.size();
        else if (byte == '^')
            anchor = text.size();
        else
            text.push_back(byte);
    }
    CTextEditor editor(options);
    EXPECT_TRUE(editor.SetText(text));
    if (caret != std::string::npos)
        editor.Select(anchor == std::string::npos ? caret : anchor, caret);
    EXPECT_EQ(Shown(editor), caret == std::string::npos ? shown + "|" : shown);
    return editor;
}

std::string Moved(const std::string& shown, TextMove move, Extend extend = Extend::No)
{
    CTextEditor editor = Editor(shown);
    editor.Move(move, extend);
    return Shown(editor);
}

TextEditorOptions SingleLine()
{
    TextEditorOptions options;
    options.singleLine = true;
    return options;
}

TextEditorOptions Password()
{
    TextEditorOptions options;
    options.password = true;
    return options;
}

TextEditorOptions AtMost(std::size_t units)
{
    TextEditorOptions options;
    options.maximumLength = units;
    return options;
}

void TypeEach(CTextEditor& editor, const std::string& text)
{
    for (const char byte : text)
        EXPECT_TRUE(editor.Type(std::string(1, byte)));
}

/// What was proposed, as "location,length:text".
struct CProposals {
    std::vector<std::string> seen;
    TextAnswer answer = TextAnswer::Accept;
    std::string replacement;

    TextProposalHandler Handler()
    {
        return [this](const TextProposal& proposal, std::string& text) {
            seen.push_back(std::to_string(proposal.location) + "," + std::to_string(proposal.length) + ":" +
                           std::string(proposal.text));
            text = replacement;
            return answer;
        };
    }
};

} // namespace

// ---- Moving

TEST(TextEditor, MovesByGrapheme)
{
    EXPECT_EQ(Moved("a|bc", TextMove::Right), "ab|c");
    EXPECT_EQ(Moved("a|bc", TextMove::Left), "|abc");
    EXPECT_EQ(Moved("|abc", TextMove::Left), "|abc");
    EXPECT_EQ(Moved("abc|", TextMove::Right), "abc|");
    EXPECT_EQ(Moved("|", TextMove::Right), "|");
    EXPECT_EQ(Moved("|e\u0301x", TextMove::Right), "e\u0301|x");
    EXPECT_EQ(Moved(std::string("|") + kFamily + "x", TextMove::Right), std::string(kFamily) + "|x");
    EXPECT_EQ(Moved(std::string(kGermany) + kGermany + "|", TextMove::Left), std::string(kGermany) + "|" + kGermany);
    EXPECT_EQ(Moved("a|\r\nb", TextMove::Right), "a\r\n|b");
    EXPECT_EQ(Moved("a\r\n|b", TextMove::Left), "a|\r\nb");
}

TEST(TextEditor, ArrowsFollowTheDirectionOfTheLine)
{
    const std::string shalom = kShalom;
    EXPECT_EQ(Moved("|" + shalom, TextMove::Left), shalom.substr(0, 2) + "|" + shalom.substr(2));
    EXPECT_EQ(Moved("|" + shalom, TextMove::Right), "|" + shalom);
    EXPECT_EQ(Moved(shalom + "|", TextMove::Right), shalom.substr(0, 6) + "|" + shalom.substr(6));
    EXPECT_EQ(Moved("|" + shalom + " " + shalom, TextMove::WordLeft), shalom + "| " + shalom);
    EXPECT_EQ(Moved("abc\n|" + shalom, TextMove::WordLeft), "abc\n" + shalom + "|");
    EXPECT_EQ(Moved("^" + shalom + "|", TextMove::Left), shalom + "|");
    EXPECT_EQ(Moved("^" + shalom + "|", TextMove::Right), "|" + shalom);
    EXPECT_EQ(Moved("abc " + shalom + "|", TextMove::Left), "abc " + shalom.substr(0, 6) + "|" + shalom.substr(6));
}

TEST(TextEditor, ArrowWithASelectionGoesToItsEdge)
{
    for (const char* shown : {"a^bc|d", "a|bc^d"}) {
        EXPECT_EQ(Moved(shown, TextMove::Left), "a|bcd");
        EXPECT_EQ(Moved(shown, TextMove::Right), "abc|d");
    }
}

TEST(TextEditor, MovesByWordLineAndDocument)
{
    EXPECT_EQ(Moved("one| two", TextMove::WordRight), "one two|");
    EXPECT_EQ(Moved("one two|", TextMove::WordLeft), "one |two");
    EXPECT_EQ(Moved("one\nt|wo\nthree", TextMove::LineStart), "one\n|two\nthree");
    EXPECT_EQ(Moved("one\nt|wo\nthree", TextMove::LineEnd), "one\ntwo|\nthree");
    EXPECT_EQ(Moved("one\r\nt|wo\r\n", TextMove::LineEnd), "one\r\ntwo|\r\n");
    EXPECT_EQ(Moved("one\nt|wo", TextMove::DocumentStart), "|one\ntwo");
    EXPECT_EQ(Moved("o|ne\ntwo", TextMove::DocumentEnd), "one\ntwo|");
}

TEST(TextEditor, MovingExtendsTheSelectionFromItsAnchor)
{
    EXPECT_EQ(Moved("a|bc", TextMove::Right, Extend::Yes), "a^b|c");
    EXPECT_EQ(Moved("a^b|c", TextMove::Left, Extend::Yes), "a|bc");
    EXPECT_EQ(Moved("ab|c", TextMove::Left, Extend::Yes), "a|b^c");
    EXPECT_EQ(Moved("ab|c d", TextMove::DocumentEnd, Extend::Yes), "ab^c d|");
    EXPECT_EQ(Moved("one\ntw|o", TextMove::Up, Extend::Yes), "on|e\ntw^o");
    EXPECT_EQ(Moved("^one| two", TextMove::WordRight, Extend::Yes), "^one two|");
}

TEST(TextEditor, UpAndDownKeepTheirColumn)
{
    CTextEditor editor = Editor("long line\nab\n\nanother|");
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "long line\nab\n|\nanother");
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "long line\nab|\n\nanother");
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "long li|ne\nab\n\nanother");
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "|long line\nab\n\nanother");
    editor.Move(TextMove::Down, Extend::No);
    editor.Move(TextMove::Down, Extend::No);
    editor.Move(TextMove::Down, Extend::No);
    EXPECT_EQ(Shown(editor), "long line\nab\n\nanother|");
}

TEST(TextEditor, ColumnIsForgottenByAnyOtherMove)
{
    CTextEditor editor = Editor("abcdef|\nab\nabcdef");
    editor.Move(TextMove::Down, Extend::No);
    editor.Move(TextMove::Left, Extend::No);
    editor.Move(TextMove::Down, Extend::No);
    EXPECT_EQ(Shown(editor), "abcdef\nab\na|bcdef");
}

TEST(TextEditor, DownOnTheLastLineGoesToTheEndAndUpOnTheFirstToTheBeginning)
{
    EXPECT_EQ(Moved("a\nb|c", TextMove::Down), "a\nbc|");
    EXPECT_EQ(Moved("a|b\nc", TextMove::Up), "|ab\nc");
    EXPECT_EQ(Moved("|", TextMove::Up), "|");
    EXPECT_EQ(Moved("|", TextMove::Down), "|");
    EXPECT_EQ(Moved("ab|\n", TextMove::Down), "ab\n|");
    EXPECT_EQ(Moved("one\nt^w|o\nthree", TextMove::Up), "o|ne\ntwo\nthree");
    EXPECT_EQ(Moved("one\nt^w|o\nthree", TextMove::Down), "one\ntwo\nth|ree");
}

TEST(TextEditor, UpAndDownFollowTheLayoutThatIsGiven)
{
    // Wraps after every four bytes, each character 10 wide and 20 high.
    class CWrapped : public ICaretMap {
    public:
        CaretSpot SpotOf(std::string_view, std::size_t offset) const override
        {
            return {static_cast<double>(offset % 4) * 10, static_cast<double>(offset / 4) * 20, 20};
        }
        std::size_t OffsetAt(std::string_view text, double x, double y) const override
        {
            const double line = std::max(0.0, std::floor(y / 20));
            return std::min(text.size(), static_cast<std::size_t>(line * 4 + std::min(x / 10, 3.0)));
        }
    } const wrapped;
    CTextEditor editor = Editor("abcdef|ghijkl");
    editor.SetCaretMap(&wrapped);
    editor.Move(TextMove::Down, Extend::No);
    EXPECT_EQ(Shown(editor), "abcdefghij|kl");
    editor.Move(TextMove::Up, Extend::No);
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "ab|cdefghijkl");
    editor.Move(TextMove::Up, Extend::No);
    EXPECT_EQ(Shown(editor), "|abcdefghijkl");
}

// ---- Selecting

TEST(TextEditor, ClicksSelectWordsAndLines)
{
    CTextEditor editor = Editor("one two\nthree\n|");
    editor.SelectUnit(5, TextUnit::Word);
    EXPECT_EQ(Shown(editor), "one ^two|\nthree\n");
    editor.SelectUnit(5, TextUnit::Line);
    EXPECT_EQ(Shown(editor), "^one two\n|three\n");
    editor.SelectUnit(10, TextUnit::Line);
    EXPECT_EQ(Shown(editor), "one two\n^three\n|");
    editor.SelectUnit(99, TextUnit::Line);
    EXPECT_EQ(Shown(editor), "one two\nthree\n|");
    editor.SelectUnit(2, TextUnit::Grapheme);
    EXPECT_EQ(Shown(editor), "on|e two\nthree\n");
    editor.SelectAll();
    EXPECT_EQ(Shown(editor), "^one two\nthree\n|");
}

TEST(TextEditor, DragExtendsByWhatWasClicked)
{
    CTextEditor editor = Editor("one two three four|");
    editor.SetCaret(5);
    editor.ExtendTo(9);
    EXPECT_EQ(Shown(editor), "one t^wo t|hree four");
    editor.ExtendTo(2);
    EXPECT_EQ(Shown(editor), "on|e t^wo three four");

    editor.SelectUnit(5, TextUnit::Word);
    editor.ExtendTo(9);
    EXPECT_EQ(Shown(editor), "one ^two three| four");
    editor.ExtendTo(6);
    EXPECT_EQ(Shown(editor), "one ^two| three four");
    editor.ExtendTo(1);
    EXPECT_EQ(Shown(editor), "|one two^ three four");
}

TEST(TextEditor, OffsetsInsideAGraphemeGoToItsBeginning)
{
    CTextEditor editor = Editor(std::string("a") + kFamily + "|");
    editor.Select(3, 7);
    EXPECT_EQ(Shown(editor), std::string("a|") + kFamily);
    editor.Select(0, 9999);
    EXPECT_EQ(Shown(editor), std::string("^a") + kFamily + "|");
}

// ---- Inserting and deleting

TEST(TextEditor, TypingReplacesTheSelection)
{
    CTextEditor editor = Editor("a^bc|d");
    EXPECT_TRUE(editor.Type("\u4E2D"));
    EXPECT_EQ(Shown(editor), "a\u4E2D|d");
    EXPECT_FALSE(editor.Type(""));
    EXPECT_FALSE(editor.Type("\xFF"));
    EXPECT_FALSE(editor.Paste("\xC3"));
    EXPECT_EQ(Shown(editor), "a\u4E2D|d");
}

TEST(TextEditor, CaretStaysBetweenGraphemesWhenTypingJoinsThem)
{
    CTextEditor marks = Editor("|\u0301x");
    EXPECT_TRUE(marks.Type("e"));
    EXPECT_EQ(Shown(marks), "e\u0301|x");
    EXPECT_TRUE(marks.Undo());
    EXPECT_EQ(Shown(marks), "|\u0301x");

    CTextEditor flags = Editor("|\U0001F1EAx");
    EXPECT_TRUE(flags.Type("\U0001F1E9"));
    EXPECT_EQ(Shown(flags), "\U0001F1E9\U0001F1EA|x");

    CTextEditor lines = Editor("\r^a|\nb");
    EXPECT_TRUE(lines.DeleteBackward(TextUnit::Grapheme));
    EXPECT_EQ(Shown(lines), "\r\n|b");
    EXPECT_TRUE(lines.Undo());
    EXPECT_EQ(Shown(lines), "\r^a|\nb");
}

TEST(TextEditor, DeletesByGrapheme)
{
    CTextEditor editor = Editor(std::string("ae\u0301") + kFamily + kGermany + "\r\n|b");
    const std::string expected[] = {std::string("ae\u0301") + kFamily + kGermany + "|b",
                                    std::string("ae\u0301") + kFamily + "|b", "ae\u0301|b", "a|b", "|b"};
    for (const std::string& shown : expected) {
        EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
        EXPECT_EQ(Shown(editor), shown);
    }
    EXPECT_FALSE(editor.DeleteBackward(TextUnit::Grapheme));
    EXPECT_TRUE(editor.DeleteForward(TextUnit::Grapheme));
    EXPECT_FALSE(editor.DeleteForward(TextUnit::Grapheme));
    EXPECT_EQ(Shown(editor), "|");
}

TEST(TextEditor, DeletesByWordAndLine)
{
    const auto backward = [](const std::string& shown, TextUnit unit) {
        CTextEditor editor = Editor(shown);
        (void)editor.DeleteBackward(unit);
        return Shown(editor);
    };
    const auto forward = [](const std::string& shown, TextUnit unit) {
        CTextEditor editor = Editor(shown);
        (void)editor.DeleteForward(unit);
        return Shown(editor);
    };
    EXPECT_EQ(backward("one two  |three", TextUnit::Word), "one |three");
    EXPECT_EQ(forward("one|  two three", TextUnit::Word), "one| three");
    EXPECT_EQ(backward("a\nbc|d", TextUnit::Line), "a\n|d");
    EXPECT_EQ(backward("a\n|d", TextUnit::Line), "a|d");
    EXPECT_EQ(forward("a|bc\nd", TextUnit::Line), "a|\nd");
    EXPECT_EQ(forward("a|\nd", TextUnit::Line), "a|d");
    EXPECT_EQ(backward("a^bc|d", TextUnit::Word), "a|d");
    EXPECT_EQ(forward("a^bc|d", TextUnit::Line), "a|d");
    EXPECT_EQ(backward("|", TextUnit::Word), "|");
    EXPECT_EQ(forward("|", TextUnit::Line), "|");
}

TEST(TextEditor, CopyAndCut)
{
    CTextEditor editor = Editor("a^bc|d");
    EXPECT_EQ(editor.Copy(), std::optional<std::string>("bc"));
    EXPECT_EQ(Shown(editor), "a^bc|d");
    EXPECT_EQ(editor.Cut(), std::optional<std::string>("bc"));
    EXPECT_EQ(Shown(editor), "a|d");
    EXPECT_EQ(editor.Copy(), std::nullopt);
    EXPECT_EQ(editor.Cut(), std::nullopt);
    EXPECT_TRUE(editor.Paste("bc"));
    EXPECT_EQ(Shown(editor), "abc|d");
}

TEST(TextEditor, SingleLineTurnsLineBreaksIntoBlanks)
{
    CTextEditor editor = Editor("|", SingleLine());
    EXPECT_TRUE(editor.Paste("a\nb\r\nc\rd\u2028e"));
    EXPECT_EQ(editor.Text(), "a b c d e");
    EXPECT_TRUE(editor.SetText("as\nset")); // not the user's, so kept as it is
    EXPECT_EQ(editor.Text(), "as\nset");
}

TEST(TextEditor, PasswordIsOneWordAndIsNotCopied)
{
    CTextEditor editor = Editor("my sec|ret word", Password());
    editor.Move(TextMove::WordLeft, Extend::No);
    EXPECT_EQ(editor.Caret(), 0u);
    editor.Move(TextMove::WordRight, Extend::Yes);
    EXPECT_EQ(Shown(editor), "^my secret word|");
    EXPECT_EQ(editor.Copy(), std::nullopt);
    EXPECT_EQ(editor.Cut(), std::nullopt);
    EXPECT_EQ(editor.Text(), "my secret word");
    editor.SelectUnit(4, TextUnit::Word);
    EXPECT_EQ(Shown(editor), "^my secret word|");
    editor.SetCaret(9);
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Word));
    EXPECT_EQ(Shown(editor), "| word");
    EXPECT_TRUE(editor.DeleteForward(TextUnit::Word));
    EXPECT_EQ(Shown(editor), "|");
}

TEST(TextEditor, LengthIsBoundedInUtf16UnitsAndGraphemesStayWhole)
{
    CTextEditor editor = Editor("|", AtMost(5));
    EXPECT_TRUE(editor.Paste("abcdefgh"));
    EXPECT_EQ(Shown(editor), "abcde|");
    EXPECT_FALSE(editor.Type("x"));
    editor.Select(0, 2);
    EXPECT_TRUE(editor.Type("\U0001F600\U0001F600")); // two units each, and room for two
    EXPECT_EQ(Shown(editor), "\U0001F600|cde");
    editor.SelectAll();
    EXPECT_FALSE(editor.Paste(kFamily)); // eleven units that do not come apart
    EXPECT_EQ(editor.Text(), "\U0001F600cde");
    EXPECT_TRUE(editor.SetText("programs may set more"));
    EXPECT_FALSE(editor.Type("x"));
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Word));
    EXPECT_EQ(editor.Text(), "programs may set ");
}

// ---- Asking first

TEST(TextEditor, EveryChangeOfTheUsersIsProposedInUtf16Units)
{
    CProposals proposals;
    CTextEditor editor = Editor("\u00E9\U0001F600^two|");
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.Type("x"));
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
    EXPECT_TRUE(editor.Paste("\u043C\u0438\u0440"));
    editor.SelectAll();
    EXPECT_TRUE(editor.Cut());
    EXPECT_TRUE(editor.Undo());
    EXPECT_TRUE(editor.Redo());
    EXPECT_EQ(proposals.seen, (std::vector<std::string>{"3,3:x", "3,1:", "1,2:", "1,0:\u043C\u0438\u0440",
                                                        "0,4:", "0,0:\u00E9\u043C\u0438\u0440", "0,4:"}));
}

TEST(TextEditor, WhatChangesNothingIsNotProposed)
{
    CProposals proposals;
    CTextEditor editor = Editor("|abc", AtMost(3));
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_FALSE(editor.DeleteBackward(TextUnit::Word));
    EXPECT_FALSE(editor.Type(""));
    EXPECT_FALSE(editor.Type("no room"));
    EXPECT_FALSE(editor.Undo());
    EXPECT_FALSE(editor.Cut());
    EXPECT_TRUE(editor.SetText("set by a program"));
    editor.SelectAll();
    EXPECT_TRUE(editor.Copy());
    EXPECT_TRUE(proposals.seen.empty());
}

TEST(TextEditor, ProposedIsWhatWouldBeInserted)
{
    CProposals proposals;
    TextEditorOptions options = SingleLine();
    options.maximumLength = 4;
    CTextEditor editor = Editor("a|", options);
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.Paste("1\n2345"));
    EXPECT_EQ(proposals.seen, (std::vector<std::string>{"1,0:1 2"}));
}

TEST(TextEditor, RefusedChangeLeavesTextAndSelection)
{
    CProposals proposals;
    proposals.answer = TextAnswer::Refuse;
    CTextEditor editor = Editor("a|bc^d");
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_FALSE(editor.Type("x"));
    EXPECT_FALSE(editor.Paste("x"));
    EXPECT_FALSE(editor.DeleteBackward(TextUnit::Grapheme));
    EXPECT_FALSE(editor.DeleteForward(TextUnit::Word));
    EXPECT_EQ(editor.Cut(), std::nullopt);
    EXPECT_EQ(proposals.seen.size(), 5u);
    EXPECT_EQ(Shown(editor), "a|bc^d");
    EXPECT_EQ(editor.Copy(), std::optional<std::string>("bc"));
    EXPECT_FALSE(editor.CanUndo());
}

TEST(TextEditor, RefusedUndoCanBeUndoneLater)
{
    CProposals proposals;
    CTextEditor editor = Editor("|");
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.Type("x"));
    proposals.answer = TextAnswer::Refuse;
    EXPECT_FALSE(editor.Undo());
    EXPECT_EQ(editor.Text(), "x");
    proposals.answer = TextAnswer::Accept;
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(editor.Text(), "");
}

TEST(TextEditor, HandlerMayGiveAnotherText)
{
    CProposals proposals;
    proposals.answer = TextAnswer::Replace;
    proposals.replacement = "UP\nPER";
    CTextEditor editor = Editor("a^bc|d", SingleLine());
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.Type("u"));
    EXPECT_EQ(Shown(editor), "aUP PER|d");
    EXPECT_TRUE(editor.CanUndo());
    proposals.replacement = "\xFF";
    EXPECT_FALSE(editor.Type("u"));
    EXPECT_EQ(Shown(editor), "aUP PER|d");
    editor.SetProposalHandler({});
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "a^bc|d");
}

TEST(TextEditor, HandlerMayDropTheTextAndDeleteTheSelection)
{
    CProposals proposals;
    proposals.answer = TextAnswer::DeleteOnly;
    CTextEditor editor = Editor("a^bc|d");
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.Type("x"));
    EXPECT_EQ(Shown(editor), "a|d");
    EXPECT_FALSE(editor.Type("x")); // nothing is selected any more
    EXPECT_EQ(Shown(editor), "a|d");
}

TEST(TextEditor, UndoThatTheHandlerChangesIsAChangeOfItsOwn)
{
    CProposals proposals;
    CTextEditor editor = Editor("^abc|");
    editor.SetProposalHandler(proposals.Handler());
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
    proposals.answer = TextAnswer::Replace;
    proposals.replacement = "A";
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "A|");
    proposals.answer = TextAnswer::Accept;
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(editor.Text(), "");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "^abc|");
}

TEST(TextEditor, SettingTheTextWhileAskingMakesTheChangeVoid)
{
    CTextEditor editor = Editor("a^bc|d");
    bool nested = true;
    editor.SetProposalHandler([&](const TextProposal&, std::string&) {
        nested = editor.Type("y") || editor.DeleteBackward(TextUnit::Word) || editor.Cut();
        EXPECT_TRUE(editor.SetText("\u00E9"));
        editor.SetProposalHandler({}); // the handler that runs goes on
        return TextAnswer::Accept;
    });
    EXPECT_FALSE(editor.Type("x"));
    EXPECT_FALSE(nested);
    EXPECT_EQ(Shown(editor), "\u00E9|");
    EXPECT_TRUE(editor.Type("x"));
    EXPECT_EQ(Shown(editor), "\u00E9x|");
}

// ---- Undo

TEST(TextEditor, TypingIsUndoneAWordAtATime)
{
    CTextEditor editor = Editor("|");
    TypeEach(editor, "two words  more");
    const std::string expected[] = {"two words|", "two|", "|"};
    for (const std::string& shown : expected) {
        EXPECT_TRUE(editor.Undo());
        EXPECT_EQ(Shown(editor), shown);
    }
    EXPECT_FALSE(editor.Undo());
    const std::string again[] = {"two|", "two words|", "two words  more|"};
    for (const std::string& shown : again) {
        EXPECT_TRUE(editor.Redo());
        EXPECT_EQ(Shown(editor), shown);
    }
    EXPECT_FALSE(editor.Redo());
}

TEST(TextEditor, MovingTheCaretEndsAGroup)
{
    CTextEditor editor = Editor("|");
    TypeEach(editor, "ab");
    editor.Move(TextMove::Left, Extend::No);
    editor.Move(TextMove::Right, Extend::No);
    TypeEach(editor, "cd");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "ab|");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "|");
}

TEST(TextEditor, DeletingIsUndoneByRunsOfOneKind)
{
    CTextEditor editor = Editor("abc|def");
    for (int count = 0; count < 2; ++count)
        EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
    for (int count = 0; count < 2; ++count)
        EXPECT_TRUE(editor.DeleteForward(TextUnit::Grapheme));
    EXPECT_EQ(Shown(editor), "a|f");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "a|def");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "abc|def");
    EXPECT_TRUE(editor.Redo());
    EXPECT_TRUE(editor.Redo());
    EXPECT_EQ(Shown(editor), "a|f");
}

TEST(TextEditor, UndoBringsTheSelectionBack)
{
    CTextEditor editor = Editor("a|bc^d");
    TypeEach(editor, "xy");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "a|bc^d");
    EXPECT_TRUE(editor.Redo());
    EXPECT_EQ(Shown(editor), "axy|d");
}

TEST(TextEditor, PastesAreUndoneOneByOne)
{
    CTextEditor editor = Editor("|");
    EXPECT_TRUE(editor.Paste("a"));
    EXPECT_TRUE(editor.Paste("b"));
    TypeEach(editor, "c");
    EXPECT_TRUE(editor.Undo());
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(Shown(editor), "a|");
}

TEST(TextEditor, NewChangeForgetsWhatCouldBeRedone)
{
    CTextEditor editor = Editor("|");
    TypeEach(editor, "a");
    EXPECT_TRUE(editor.Undo());
    EXPECT_TRUE(editor.CanRedo());
    TypeEach(editor, "b");
    EXPECT_FALSE(editor.CanRedo());
    EXPECT_FALSE(editor.Redo());
    EXPECT_EQ(editor.Text(), "b");
}

TEST(TextEditor, SettingTheTextForgetsAllUndo)
{
    CTextEditor editor = Editor("|");
    TypeEach(editor, "ab");
    EXPECT_TRUE(editor.SetText("new"));
    EXPECT_EQ(Shown(editor), "new|");
    EXPECT_FALSE(editor.CanUndo());
    EXPECT_FALSE(editor.CanRedo());
    TypeEach(editor, "!");
    EXPECT_FALSE(editor.SetText("\xED\xA0\x80")); // half of a pair
    EXPECT_EQ(editor.Text(), "new!");
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(editor.Text(), "new");
}

TEST(TextEditor, UndoKeepsTheNewestThousandSteps)
{
    CTextEditor editor = Editor("|");
    for (int count = 0; count < 1100; ++count)
        EXPECT_TRUE(editor.Paste("x"));
    int undone = 0;
    while (editor.Undo())
        ++undone;
    EXPECT_EQ(undone, 1000);
    EXPECT_EQ(editor.Text().size(), 100u);
}

TEST(TextEditor, UndoOfHugeChangesKeepsAtLeastTheNewest)
{
    TextEditorOptions options;
    options.maximumLength = std::size_t{1} << 24U;
    CTextEditor editor = Editor("|", options);
    const std::string huge(std::size_t{5} << 20U, 'x');
    EXPECT_TRUE(editor.Paste(huge));
    EXPECT_TRUE(editor.Paste(huge));
    EXPECT_TRUE(editor.Undo());
    EXPECT_EQ(editor.Text().size(), huge.size());
    EXPECT_FALSE(editor.Undo());
}

TEST(TextEditor, NulIsACharacterLikeOthers)
{
    CTextEditor editor;
    EXPECT_TRUE(editor.SetText(std::string_view("a\0b", 3)));
    editor.SetCaret(2);
    EXPECT_TRUE(editor.DeleteBackward(TextUnit::Grapheme));
    EXPECT_EQ(editor.Text(), "ab");
}
