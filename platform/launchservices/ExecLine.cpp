// platform/launchservices/ExecLine.cpp
//
// The field codes of a desktop entry's command line.
#include "platform/launchservices/ExecLine.h"

#include <cstring>

namespace {

bool IsOneOf(char code, const char* codes)
{
    return code != '\0' && std::strchr(codes, code) != nullptr;
}

bool HasCode(const std::string& word, const char* codes)
{
    for (std::size_t at = 0; at + 1 < word.size(); ++at) {
        if (word[at] == '%' && IsOneOf(word[++at], codes))
            return true;
    }
    return false;
}

bool AnyHasCode(const Arguments& words, const char* codes)
{
    for (const std::string& word : words) {
        if (HasCode(word, codes))
            return true;
    }
    return false;
}

std::string SafeForShells(const std::string& uri)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : uri) {
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || IsOneOf(byte, "-._~:/?@%+,=");
        if (plain) {
            text.push_back(byte);
        } else {
            const auto code = static_cast<unsigned char>(byte);
            text.push_back('%');
            text.push_back(kDigits[code >> 4U]);
            text.push_back(kDigits[code & 0xFU]);
        }
    }
    return text;
}

// A thing that has no path is still better given by its address than left out.
const std::string& ItemFor(char code, const LaunchItem& item)
{
    return IsOneOf(code, "fF") && !item.path.empty() ? item.path : item.uri;
}

std::string ExpandWord(const std::string& word, const LaunchItem* item, const EntryTexts& texts)
{
    const bool isCommandText = word.find_first_of(" \t\n") != std::string::npos;
    std::string text;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '%' || at + 1 == word.size()) {
            text.push_back(word[at]);
            continue;
        }
        const char code = word[++at];
        if (code == '%')
            text.push_back('%');
        else if (code == 'c')
            text += texts.name;
        else if (code == 'k')
            text += texts.file;
        else if (item && IsOneOf(code, "uUfF"))
            text += isCommandText ? SafeForShells(item->uri) : ItemFor(code, *item);
        // Other codes are deprecated or unknown; both stand for nothing.
    }
    return text;
}

Arguments ExpandFor(const Arguments& words, const std::vector<const LaunchItem*>& items, const EntryTexts& texts)
{
    Arguments arguments;
    for (const std::string& word : words) {
        if (word == "%U" || word == "%F") {
            for (const LaunchItem* item : items)
                arguments.push_back(ItemFor(word[1], *item));
            continue;
        }
        if (word == "%i") {
            if (!texts.icon.empty())
                arguments.insert(arguments.end(), {"--icon", texts.icon});
            continue;
        }
        std::string text = ExpandWord(word, items.empty() ? nullptr : items.front(), texts);
        const bool vanished = text.empty() && !word.empty();
        if (!vanished)
            arguments.push_back(std::move(text));
    }
    return arguments;
}

} // namespace

std::vector<Arguments> ExpandExecLine(const Arguments& words, const std::vector<LaunchItem>& items,
                                      const EntryTexts& texts)
{
    Arguments line = words;
    if (!items.empty() && !AnyHasCode(line, "uUfF"))
        line.push_back("%f"); // as the desktops do with a line that says nothing about files
    std::vector<const LaunchItem*> all;
    all.reserve(items.size());
    for (const LaunchItem& item : items)
        all.push_back(&item);
    if (all.size() < 2 || AnyHasCode(line, "UF"))
        return {ExpandFor(line, all, texts)};
    std::vector<Arguments> lines;
    lines.reserve(all.size());
    for (const LaunchItem* item : all)
        lines.push_back(ExpandFor(line, {item}, texts));
    return lines;
}
