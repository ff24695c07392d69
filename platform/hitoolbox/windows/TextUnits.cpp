// platform/hitoolbox/windows/TextUnits.cpp
//
// Graphemes after Unicode's rules for extended grapheme clusters, by libutf8proc. Words are ours: its rules for
// words need a dictionary for some scripts, which a line of text in a dialog does not.
#include "platform/hitoolbox/windows/TextUnits.h"

#include <utf8proc.h>

#include <algorithm>

#include "platform/base/Text.h"

namespace {

enum class Kind { Other, Blank, Letter, Han, Hiragana, Katakana, Symbol };

constexpr struct {
    char32_t first, last;
    Kind kind;
} kScripts[] = {
    {0x2E80, 0x2FDF, Kind::Han},      {0x3005, 0x3007, Kind::Han},      {0x3041, 0x309F, Kind::Hiragana},
    {0x30A0, 0x30FF, Kind::Katakana}, {0x31F0, 0x31FF, Kind::Katakana}, {0x3400, 0x4DBF, Kind::Han},
    {0x4E00, 0x9FFF, Kind::Han},      {0xF900, 0xFAFF, Kind::Han},      {0xFF66, 0xFF9F, Kind::Katakana},
    {0x20000, 0x3FFFF, Kind::Han},
};

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

char32_t CodePointAt(std::string_view text, std::size_t offset)
{
    return NextCodePoint(text, offset);
}

std::size_t CodePointStart(std::string_view text, std::size_t offset)
{
    while (offset > 0 && offset < text.size() && IsContinuation(text[offset]))
        --offset;
    return offset;
}

const utf8proc_property_t& PropertyOf(char32_t codePoint)
{
    return *utf8proc_get_property(static_cast<utf8proc_int32_t>(codePoint));
}

/// Tells whether a grapheme ends between the two whatever stands around them.
bool IsSureBoundary(char32_t before, char32_t after)
{
    const auto one = PropertyOf(before).boundclass;
    const auto other = PropertyOf(after).boundclass;
    return (one == UTF8PROC_BOUNDCLASS_OTHER && other == UTF8PROC_BOUNDCLASS_OTHER) || one == UTF8PROC_BOUNDCLASS_LF ||
           one == UTF8PROC_BOUNDCLASS_CONTROL || other == UTF8PROC_BOUNDCLASS_CR ||
           other == UTF8PROC_BOUNDCLASS_CONTROL;
}

/// Answers a beginning of a grapheme not behind `offset`, mostly a near one.
std::size_t SureBoundary(std::string_view text, std::size_t offset)
{
    std::size_t at = CodePointStart(text, offset);
    while (at > 0) {
        const std::size_t before = CodePointStart(text, at - 1);
        if (IsSureBoundary(CodePointAt(text, before), CodePointAt(text, at)))
            return at;
        at = before;
    }
    return 0;
}

/// Answers the end of the grapheme that begins at `begin`, which is before the text's end.
std::size_t EndOfGrapheme(std::string_view text, std::size_t begin)
{
    utf8proc_int32_t state = 0;
    std::size_t at = begin;
    auto previous = static_cast<utf8proc_int32_t>(NextCodePoint(text, at));
    while (at < text.size()) {
        std::size_t next = at;
        const auto codePoint = static_cast<utf8proc_int32_t>(NextCodePoint(text, next));
        if (utf8proc_grapheme_break_stateful(previous, codePoint, &state))
            return at;
        previous = codePoint;
        at = next;
    }
    return at;
}

Kind KindAt(std::string_view text, std::size_t offset)
{
    const char32_t codePoint = CodePointAt(text, offset);
    switch (PropertyOf(codePoint).category) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ME:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
    case UTF8PROC_CATEGORY_PC:
        for (const auto& script : kScripts) {
            if (codePoint >= script.first && codePoint <= script.last)
                return script.kind;
        }
        return Kind::Letter;
    case UTF8PROC_CATEGORY_SO:
        return Kind::Symbol;
    case UTF8PROC_CATEGORY_ZS:
        return Kind::Blank;
    default:
        return codePoint == '\t' ? Kind::Blank : Kind::Other;
    }
}

bool IsWord(Kind kind)
{
    return kind != Kind::Other && kind != Kind::Blank;
}

bool IsApostrophe(char32_t codePoint)
{
    return codePoint == '\'' || codePoint == 0x2019;
}

/// Answers the end of the run that begins at `begin`, which is before the text's end. What is neither word nor
/// blank is a run of one.
std::size_t EndOfRun(std::string_view text, std::size_t begin)
{
    const Kind kind = KindAt(text, begin);
    std::size_t end = EndOfGrapheme(text, begin);
    while (kind != Kind::Other && end < text.size()) {
        const std::size_t next = EndOfGrapheme(text, end);
        const bool joins = kind == Kind::Letter && IsApostrophe(CodePointAt(text, end)) && next < text.size() &&
                           KindAt(text, next) == Kind::Letter;
        if (KindAt(text, end) != kind && !joins)
            break;
        end = next;
    }
    return end;
}

} // namespace

std::size_t GraphemeStart(std::string_view text, std::size_t offset)
{
    if (offset >= text.size())
        return text.size();
    std::size_t start = SureBoundary(text, offset);
    for (std::size_t end = start; end <= offset; end = EndOfGrapheme(text, start))
        start = end;
    return start;
}

std::size_t GraphemeCeiling(std::string_view text, std::size_t offset)
{
    const std::size_t start = GraphemeStart(text, offset);
    return start < offset && start < text.size() ? EndOfGrapheme(text, start) : start;
}

std::size_t PreviousGrapheme(std::string_view text, std::size_t offset)
{
    return offset == 0 ? 0 : GraphemeStart(text, std::min(offset, text.size()) - (text.empty() ? 0 : 1));
}

std::size_t NextGrapheme(std::string_view text, std::size_t offset)
{
    return offset < text.size() ? EndOfGrapheme(text, offset) : text.size();
}

std::size_t PreviousWordStart(std::string_view text, std::size_t offset)
{
    while (offset > 0) {
        const std::size_t line = LineStart(text, offset);
        std::size_t found = offset;
        for (std::size_t at = line; at < offset;) {
            const std::size_t end = EndOfRun(text, at);
            if (IsWord(KindAt(text, at)))
                found = at;
            at = end;
        }
        if (found < offset)
            return found;
        offset = PreviousGrapheme(text, line);
    }
    return 0;
}

std::size_t NextWordEnd(std::string_view text, std::size_t offset)
{
    while (offset < text.size()) {
        const std::size_t end = EndOfRun(text, offset);
        if (IsWord(KindAt(text, offset)))
            return end;
        offset = end;
    }
    return text.size();
}

TextSpan WordAt(std::string_view text, std::size_t offset)
{
    const std::string_view upToEnd = text.substr(0, LineEnd(text, offset));
    TextSpan run = {LineStart(text, offset), LineStart(text, offset)};
    TextSpan before = run;
    while (run.end < upToEnd.size() && run.end <= offset) {
        before = run;
        run = {run.end, EndOfRun(upToEnd, run.end)};
    }
    const bool touchesWord = run.begin == offset && before.begin < before.end && IsWord(KindAt(text, before.begin));
    return touchesWord && !IsWord(KindAt(text, run.begin)) ? before : run;
}

std::size_t LineStart(std::string_view text, std::size_t offset)
{
    std::size_t at = std::min(offset, text.size());
    for (; at > 0; --at) {
        const char last = text[at - 1];
        if (last == '\n' || last == '\r')
            break;
        if (at >= 3 && LineBreakLength(text, at - 3) == 3)
            break;
    }
    return at;
}

std::size_t LineEnd(std::string_view text, std::size_t offset)
{
    std::size_t at = std::min(offset, text.size());
    while (at < text.size() && LineBreakLength(text, at) == 0)
        ++at;
    return at;
}

std::size_t LineBreakLength(std::string_view text, std::size_t offset)
{
    const std::string_view rest = text.substr(std::min(offset, text.size()));
    constexpr std::string_view kFirstBytes = "\n\r\xE2";
    if (rest.empty() || kFirstBytes.find(rest.front()) == std::string_view::npos)
        return 0; // at once, for nearly every character
    for (const std::string_view lineBreak : {"\r\n", "\r", "\n", "\u2028", "\u2029"}) {
        if (rest.substr(0, lineBreak.size()) == lineBreak)
            return lineBreak.size();
    }
    return 0;
}

std::string OnOneLine(std::string_view text)
{
    std::string line;
    line.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = LineBreakLength(text, at);
        line.push_back(length > 0 ? ' ' : text[at]);
        at += std::max<std::size_t>(length, 1);
    }
    return line;
}

bool IsRightToLeft(std::string_view line)
{
    for (std::size_t at = 0; at < line.size();) {
        switch (PropertyOf(NextCodePoint(line, at)).bidi_class) {
        case UTF8PROC_BIDI_CLASS_L:
            return false;
        case UTF8PROC_BIDI_CLASS_R:
        case UTF8PROC_BIDI_CLASS_AL:
            return true;
        default:
            break;
        }
    }
    return false;
}

std::size_t Utf16OffsetOf(std::string_view text, std::size_t offset)
{
    std::size_t units = 0;
    const std::size_t end = CodePointStart(text, std::min(offset, text.size()));
    for (std::size_t at = 0; at < end;)
        units += NextCodePoint(text, at) >= 0x10000 ? 2 : 1;
    return units;
}

std::size_t OffsetOfUtf16(std::string_view text, std::size_t units)
{
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t next = at;
        const std::size_t width = NextCodePoint(text, next) >= 0x10000 ? 2 : 1;
        if (width > units)
            break;
        units -= width;
        at = next;
    }
    return at;
}
