// tools/quillets/Output.cpp
//
// Text for people and for machines, and the ways to end with an error.
#include "tools/quillets/Output.h"

#include <algorithm>
#include <cstdio>

#include "tools/quillets/Command.h"

namespace {

// Answers how many bytes of valid UTF-8 begin here; 0 for none (RFC 3629).
std::size_t SequenceLength(std::string_view text)
{
    const auto byte = [text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < low || byte(1) > high)
        return 0;
    for (std::size_t at = 2; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

// The C1 control characters, U+0080 to U+009F.
bool IsUpperControl(std::string_view sequence)
{
    return sequence.size() == 2 && sequence[0] == '\xC2' && static_cast<unsigned char>(sequence[1]) < 0xA0;
}

std::string Escaped(std::string_view text, std::string_view alsoEscaped)
{
    std::string out;
    while (!text.empty()) {
        const std::size_t length = SequenceLength(text);
        const std::string_view piece = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(piece.size());
        const auto code = static_cast<unsigned char>(piece[0]);
        char escape[8] = "";
        if (length == 0) {
            out += "\xEF\xBF\xBD";
        } else if (alsoEscaped.find(piece[0]) != std::string_view::npos) {
            out.append("\\").append(piece);
        } else if (piece == "\n") {
            out += "\\n";
        } else if (code < 0x20 || code == 0x7F || IsUpperControl(piece)) {
            std::snprintf(escape, sizeof escape, "\\u%04x",
                          length == 1 ? static_cast<unsigned>(code) : static_cast<unsigned char>(piece[1]));
            out += escape;
        } else {
            out += piece;
        }
    }
    return out;
}

void PrintError(std::string_view message)
{
    std::fprintf(stderr, "quillets: %s\n", Printable(message).c_str());
}

} // namespace

std::string JsonString(std::string_view text)
{
    return "\"" + Escaped(text, "\"\\") + "\"";
}

std::string Printable(std::string_view text)
{
    return Escaped(text, "");
}

bool TakeFlag(std::vector<std::string_view>& words, std::string_view option)
{
    const auto found = std::find(words.begin(), words.end(), option);
    if (found == words.end())
        return false;
    words.erase(found);
    return true;
}

int UsageError(std::string_view command, std::string_view message)
{
    std::string text(command);
    text.append(command.empty() ? "" : ": ").append(message);
    PrintError(text + " (see quillets " + std::string(command) + (command.empty() ? "--help)" : " --help)"));
    return kExitUsage;
}

int Failure(std::string_view message)
{
    PrintError(message);
    return kExitFailed;
}
