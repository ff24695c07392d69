// platform/base/Text.h
//
// Conversion between UTF-8, UTF-16 and Mac OS Roman. Strict: what is not valid is refused whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Checks UTF-8 (no overlong forms, no surrogates, nothing above U+10FFFF) and counts its UTF-16
/// units; nullopt when it is not valid.
std::optional<std::size_t> CountUtf16Units(std::string_view utf8) noexcept;

/// Answers the code point at `position` of valid UTF-8 and moves `position` past it.
char32_t NextCodePoint(std::string_view utf8, std::size_t& position) noexcept;

/// Appends one code point.
void AppendUtf8(std::string& utf8, char32_t codePoint);

/// Converts UTF-16; nullopt for an unpaired surrogate.
std::optional<std::string> Utf8OfUtf16(const std::uint16_t* units, std::size_t count);

/// Converts bytes of Mac OS Roman; every byte has a character.
std::string Utf8OfMacRoman(std::string_view bytes);

/// Converts valid UTF-8 to Mac OS Roman; nullopt for a character that it lacks.
std::optional<std::string> MacRomanOfUtf8(std::string_view utf8);
