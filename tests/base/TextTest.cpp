// tests/base/TextTest.cpp
//
// Conversion between UTF-8, UTF-16 and Mac OS Roman. The C library's own converter is the witness
// for the Mac OS Roman table.
#include "platform/base/Text.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <vector>

namespace {

std::string MacRomanByIconv(unsigned char byte)
{
    const iconv_t converter = iconv_open("UTF-8", "MACINTOSH");
    if (converter == reinterpret_cast<iconv_t>(-1))
        return "(no converter)";
    char in = static_cast<char>(byte);
    char out[8] = "";
    char* from = &in;
    char* to = out;
    std::size_t inLeft = 1;
    std::size_t outLeft = sizeof out;
    (void)iconv(converter, &from, &inLeft, &to, &outLeft);
    iconv_close(converter);
    return std::string(out, sizeof out - outLeft);
}

std::string Utf8Of(char32_t codePoint)
{
    std::string text;
    AppendUtf8(text, codePoint);
    return text;
}

} // namespace

TEST(MacRoman, EveryByteHasItsCharacterAndComesBack)
{
    for (int code = 0; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        std::string expected = MacRomanByIconv(static_cast<unsigned char>(code));
        if (code == 0xC6)
            expected = Utf8Of(0x2206); // the converter has the Greek letter instead of the increment
        if (code == 0xF0)
            expected = Utf8Of(0xF8FF); // and another private character for the logo
        EXPECT_EQ(Utf8OfMacRoman(byte), expected) << code;
        EXPECT_EQ(MacRomanOfUtf8(expected), byte) << code;
    }
}

TEST(MacRoman, LacksMostCharacters)
{
    EXPECT_EQ(MacRomanOfUtf8("caf\xC3\xA9"), "caf\x8E");
    EXPECT_FALSE(MacRomanOfUtf8("\xC5\x82"));         // l with stroke
    EXPECT_FALSE(MacRomanOfUtf8("\xF0\x9F\x98\x80")); // outside the first plane
}

TEST(Utf8, EveryCodePointIsValidAndComesBack)
{
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        const std::string text = Utf8Of(codePoint);
        const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        const auto units = CountUtf16Units(text);
        ASSERT_EQ(units.has_value(), !isSurrogate) << static_cast<unsigned>(codePoint);
        if (isSurrogate)
            continue;
        ASSERT_EQ(*units, codePoint < 0x10000 ? 1U : 2U);
        std::size_t at = 0;
        ASSERT_EQ(NextCodePoint(text, at), codePoint);
        ASSERT_EQ(at, text.size());
    }
}

TEST(Utf8, MalformedBytesAreRefused)
{
    const char* const bad[] = {"\x80",
                               "\xBF",
                               "\xC0\x80",
                               "\xC1\xBF",
                               "\xC2",
                               "\xC2\x41",
                               "\xE0\x9F\xBF",
                               "\xE0\xA0",
                               "\xED\xA0\x80",
                               "\xED\xBF\xBF",
                               "\xEF\xBF",
                               "\xEF\xBF\xC0",
                               "\xF0\x8F\xBF\xBF",
                               "\xF0\x9F\x98",
                               "\xF4\x90\x80\x80",
                               "\xF5\x80\x80",
                               "\xFE",
                               "\xFF",
                               "\xF0\x9F\x98\x41",
                               "\xF8\x88\x80\x80\x80"};
    for (const char* const text : bad) {
        EXPECT_FALSE(CountUtf16Units(text)) << text;
        EXPECT_FALSE(CountUtf16Units("12345678" + std::string(text))) << "behind eight ASCII bytes";
        EXPECT_FALSE(CountUtf16Units(std::string(text) + "12345678")) << "in front of eight ASCII bytes";
    }
    EXPECT_EQ(CountUtf16Units(""), 0U);
    EXPECT_EQ(CountUtf16Units(std::string_view("a\0b", 3)), 3U);
}

TEST(Utf16, PairsBecomeOneCharacterAndOthersAreRefused)
{
    const auto convert = [](const std::vector<std::uint16_t>& units) {
        return Utf8OfUtf16(units.data(), units.size());
    };
    EXPECT_EQ(convert({}), "");
    EXPECT_EQ(convert({0x41, 0xE9, 0x20AC}), "A\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(convert({0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
    EXPECT_EQ(convert({0xDBFF, 0xDFFF}), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(convert({0xFEFF}), "\xEF\xBB\xBF");
    EXPECT_FALSE(convert({0xD83D}));
    EXPECT_FALSE(convert({0xDE00}));
    EXPECT_FALSE(convert({0xDE00, 0xD83D}));
    EXPECT_FALSE(convert({0xD83D, 0x41}));
    EXPECT_FALSE(convert({0xD83D, 0xD83D, 0xDE00}));
}
