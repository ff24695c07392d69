// platform/hitoolbox/windows/TextUnits.h
//
// Where characters as people see them (graphemes), words and lines begin and end in a text. Offsets are in
// bytes of valid UTF-8. Each function looks once at the text it passes over, and at no more than that and the
// line around it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// From `begin` up to but without `end`.
struct TextSpan {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// The last beginning of a grapheme that is not behind `offset`, whatever that is; the text's end counts as one.
std::size_t GraphemeStart(std::string_view text, std::size_t offset);
/// The first beginning of a grapheme that is not before `offset`.
std::size_t GraphemeCeiling(std::string_view text, std::size_t offset);
/// The beginning of the grapheme before `offset`, or around it; 0 at the text's beginning.
std::size_t PreviousGrapheme(std::string_view text, std::size_t offset);
/// The end of the grapheme that begins at `offset`, which the caller knows it does: nothing before it is looked at.
std::size_t NextGrapheme(std::string_view text, std::size_t offset);

/// From here on offsets are those of a grapheme's beginning.
///
/// Words are runs of letters, marks, digits and connectors, with apostrophes inside them; runs of one of the
/// Japanese scripts; and runs of symbols, emoji among them.
/// Answers the beginning of the word at or before `offset`; 0 for none.
std::size_t PreviousWordStart(std::string_view text, std::size_t offset);
/// Answers the end of the word at or after `offset`; the text's end for none.
std::size_t NextWordEnd(std::string_view text, std::size_t offset);
/// Answers what a double click at `offset` selects: a word that begins, ends or goes on there, else a run of
/// blanks or one other character. At a line's end it is what stands before; nothing on an empty line.
TextSpan WordAt(std::string_view text, std::size_t offset);

/// Lines end in LF, CR, CR LF, or the Unicode separators of lines and paragraphs.
std::size_t LineStart(std::string_view text, std::size_t offset);
/// The line's end, before its line break.
std::size_t LineEnd(std::string_view text, std::size_t offset);
/// Answers how many bytes the line break at `offset` has; 0 where there is none.
std::size_t LineBreakLength(std::string_view text, std::size_t offset);
/// Answers the text with one blank for each line break.
std::string OnOneLine(std::string_view text);

/// Tells whether the first letter with a direction runs from right to left.
bool IsRightToLeft(std::string_view line);

/// Converts between offsets in bytes and in UTF-16 units; what lies inside a character goes to its beginning, what
/// lies behind the end to the end.
std::size_t Utf16OffsetOf(std::string_view text, std::size_t offset);
std::size_t OffsetOfUtf16(std::string_view text, std::size_t units);
