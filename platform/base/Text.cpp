// platform/base/Text.cpp
//
// Text conversion. UTF-8 after RFC 3629, UTF-16 after RFC 2781, Mac OS Roman by its table.
#include "platform/base/Text.h"

#include <cstring>

namespace {

// Mac OS Roman from 0x80 on, as the system has read it since 8.5 (with the euro sign at 0xDB).
constexpr char16_t kMacRomanUpperHalf[128] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

unsigned char ByteAt(std::string_view text, std::size_t position) noexcept
{
    return static_cast<unsigned char>(text[position]);
}

} // namespace

std::optional<std::size_t> CountUtf16Units(std::string_view utf8) noexcept
{
    std::size_t units = 0;
    std::size_t at = 0;
    while (at < utf8.size()) {
        std::uint64_t eight = 0;
        if (utf8.size() - at >= sizeof eight) { // most text is ASCII
            std::memcpy(&eight, utf8.data() + at, sizeof eight);
            if ((eight & 0x8080808080808080U) == 0) {
                at += sizeof eight;
                units += sizeof eight;
                continue;
            }
        }
        const unsigned char first = ByteAt(utf8, at);
        if (first < 0x80) {
            ++at;
            ++units;
            continue;
        }
        const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
        if (first < 0xC2 || first > 0xF4 || utf8.size() - at <= more)
            return std::nullopt;
        const unsigned char second = ByteAt(utf8, at + 1);
        // The second byte's range rules out overlong forms, surrogates and what lies above U+10FFFF.
        const unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        if (second < low || second > high)
            return std::nullopt;
        for (std::size_t index = 2; index <= more; ++index) {
            if ((ByteAt(utf8, at + index) & 0xC0) != 0x80)
                return std::nullopt;
        }
        at += more + 1;
        units += more == 3 ? 2 : 1;
    }
    return units;
}

char32_t NextCodePoint(std::string_view utf8, std::size_t& position) noexcept
{
    const unsigned char first = ByteAt(utf8, position++);
    if (first < 0x80)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    char32_t codePoint = first & (0x3FU >> more);
    for (int index = 0; index < more; ++index)
        codePoint = (codePoint << 6U) | (ByteAt(utf8, position++) & 0x3FU);
    return codePoint;
}

void AppendUtf8(std::string& utf8, char32_t codePoint)
{
    const auto append = [&utf8](char32_t byte) {
        utf8.push_back(static_cast<char>(byte));
    };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | (codePoint >> 6U));
        append(0x80 | (codePoint & 0x3FU));
    } else if (codePoint < 0x10000) {
        append(0xE0 | (codePoint >> 12U));
        append(0x80 | ((codePoint >> 6U) & 0x3FU));
        append(0x80 | (codePoint & 0x3FU));
    } else {
        append(0xF0 | (codePoint >> 18U));
        append(0x80 | ((codePoint >> 12U) & 0x3FU));
        append(0x80 | ((codePoint >> 6U) & 0x3FU));
        append(0x80 | (codePoint & 0x3FU));
    }
}

std::optional<std::string> Utf8OfUtf16(const std::uint16_t* units, std::size_t count)
{
    std::string utf8;
    utf8.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        const char32_t unit = units[index];
        if (unit < 0xD800 || unit > 0xDFFF) {
            AppendUtf8(utf8, unit);
            continue;
        }
        const bool paired = unit < 0xDC00 && index + 1 < count && (units[index + 1] & 0xFC00) == 0xDC00;
        if (!paired)
            return std::nullopt;
        ++index;
        AppendUtf8(utf8, 0x10000 + ((unit & 0x3FFU) << 10U) + (units[index] & 0x3FFU));
    }
    return utf8;
}

std::string Utf8OfMacRoman(std::string_view bytes)
{
    std::string utf8;
    utf8.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        AppendUtf8(utf8, code < 0x80 ? code : kMacRomanUpperHalf[code - 0x80]);
    }
    return utf8;
}

std::optional<std::string> MacRomanOfUtf8(std::string_view utf8)
{
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t codePoint = NextCodePoint(utf8, at);
        if (codePoint < 0x80) {
            bytes.push_back(static_cast<char>(codePoint));
            continue;
        }
        std::size_t index = 0;
        while (index < 128 && kMacRomanUpperHalf[index] != codePoint)
            ++index;
        if (index == 128)
            return std::nullopt;
        bytes.push_back(static_cast<char>(0x80 + index));
    }
    return bytes;
}
