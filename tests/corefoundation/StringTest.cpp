// tests/corefoundation/StringTest.cpp
//
// Strings: strict both ways, measured and compared in UTF-16.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/Owner.h"

namespace {

Owner<CFStringRef> Bytes(const std::string& bytes, CFStringEncoding encoding, bool external = false)
{
    return Own(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                       static_cast<CFIndex>(bytes.size()), encoding, external));
}

std::string OfUnits(const std::u16string& units)
{
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

CFComparisonResult Compare(const std::string& first, const std::string& second)
{
    return CFStringCompare(Own(MakeString(first)).get(), Own(MakeString(second)).get(), 0);
}

} // namespace

TEST(String, CStringsComeInThreeEncodings)
{
    EXPECT_EQ(TextOf(Own(CFStringCreateWithCString(nullptr, "\xC3\xA9", kCFStringEncodingUTF8)).get()), "\xC3\xA9");
    EXPECT_EQ(TextOf(Own(CFStringCreateWithCString(nullptr, "\x8E", kCFStringEncodingMacRoman)).get()), "\xC3\xA9");
    EXPECT_EQ(TextOf(Own(CFStringCreateWithCString(nullptr, "e", kCFStringEncodingASCII)).get()), "e");
    EXPECT_EQ(CFStringGetLength(Own(CFStringCreateWithCString(nullptr, "", kCFStringEncodingUTF8)).get()), 0);
}

TEST(String, InvalidBytesMakeNoString)
{
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "\xFF", kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "\xED\xA0\x80", kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "\x80", kCFStringEncodingASCII), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "a", kCFStringEncodingUnicode), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "a", 0x12345), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 1, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>("a"), -1, kCFStringEncodingUTF8, false),
              nullptr);
    EXPECT_FALSE(Bytes("abc", kCFStringEncodingUnicode)) << "half a unit";
    EXPECT_FALSE(Bytes(OfUnits(u"\xD83D"), kCFStringEncodingUnicode));
    const UniChar lone = 0xDE00;
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, &lone, 1), nullptr);
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 1), nullptr);
}

TEST(String, ByteOrderMarksCountOnlyInExternalForm)
{
    EXPECT_EQ(TextOf(Bytes("\xEF\xBB\xBF"
                           "a",
                           kCFStringEncodingUTF8, true)
                         .get()),
              "a");
    EXPECT_EQ(TextOf(Bytes("\xEF\xBB\xBF"
                           "a",
                           kCFStringEncodingUTF8)
                         .get()),
              "\xEF\xBB\xBF"
              "a");
    EXPECT_EQ(TextOf(Bytes(OfUnits(u"\xFEFF"
                                   u"a"),
                           kCFStringEncodingUnicode, true)
                         .get()),
              "a");
    EXPECT_EQ(TextOf(Bytes(OfUnits(u"\xFFFE\x6100"), kCFStringEncodingUnicode, true).get()), "a") << "swapped";
    EXPECT_EQ(TextOf(Bytes(OfUnits(u"\xFEFF"
                                   u"a"),
                           kCFStringEncodingUnicode)
                         .get()),
              "\xEF\xBB\xBF"
              "a");
}

TEST(String, EveryMacRomanByteMakesTheRoundTrip)
{
    std::string bytes;
    for (int code = 1; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    const auto string = Bytes(bytes, kCFStringEncodingMacRoman);
    ASSERT_TRUE(string);
    EXPECT_EQ(CFStringGetLength(string.get()), 255);
    char back[256] = "";
    ASSERT_TRUE(CFStringGetCString(string.get(), back, sizeof back, kCFStringEncodingMacRoman));
    EXPECT_EQ(back, bytes);
}

TEST(String, GetCStringNeedsRoomForAllAndTheNul)
{
    const auto string = Own(MakeString("caf\xC3\xA9"));
    char buffer[8] = "xxxxxxx";
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer, 5, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "xxxxxxx") << "as it was";
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer, 6, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "caf\xC3\xA9");
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer, 5, kCFStringEncodingMacRoman)) << "one byte fewer there";
    EXPECT_STREQ(buffer, "caf\x8E");
}

TEST(String, GetCStringRefusesWhatTheEncodingLacks)
{
    char buffer[32] = "as it was";
    EXPECT_FALSE(CFStringGetCString(Own(MakeString("\xC3\xA9")).get(), buffer, sizeof buffer, kCFStringEncodingASCII));
    EXPECT_FALSE(
        CFStringGetCString(Own(MakeString("\xC5\x82")).get(), buffer, sizeof buffer, kCFStringEncodingMacRoman));
    EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, sizeof buffer, kCFStringEncodingUnicode));
    EXPECT_FALSE(
        CFStringGetCString(Own(MakeString(std::string("a\0b", 3))).get(), buffer, sizeof buffer, kCFStringEncodingUTF8))
        << "the rest would be lost";
    EXPECT_FALSE(CFStringGetCString(nullptr, buffer, sizeof buffer, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(CFSTR("a"), nullptr, 10, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(CFSTR(""), buffer, 0, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, -1, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "as it was");
}

TEST(String, CStringPtrGivesTheBytesItHolds)
{
    const auto ascii = Own(MakeString("plain"));
    EXPECT_STREQ(CFStringGetCStringPtr(ascii.get(), kCFStringEncodingUTF8), "plain");
    EXPECT_STREQ(CFStringGetCStringPtr(ascii.get(), kCFStringEncodingMacRoman), "plain");
    EXPECT_EQ(CFStringGetCStringPtr(ascii.get(), kCFStringEncodingUnicode), nullptr);
    const auto other = Own(MakeString("\xC3\xA9"));
    EXPECT_STREQ(CFStringGetCStringPtr(other.get(), kCFStringEncodingUTF8), "\xC3\xA9");
    EXPECT_EQ(CFStringGetCStringPtr(other.get(), kCFStringEncodingMacRoman), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(Own(MakeString(std::string("a\0b", 3))).get(), kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(nullptr, kCFStringEncodingUTF8), nullptr);
}

TEST(String, LengthsAndCharactersAreUtf16Units)
{
    const auto string = Own(MakeString("a\xC3\xA9\xF0\x9F\x98\x80z"));
    ASSERT_EQ(CFStringGetLength(string.get()), 5);
    UniChar units[5] = {};
    CFStringGetCharacters(string.get(), CFRangeMake(0, 5), units);
    const UniChar expected[5] = {'a', 0xE9, 0xD83D, 0xDE00, 'z'};
    EXPECT_EQ(std::memcmp(units, expected, sizeof units), 0);
    UniChar middle = 0;
    CFStringGetCharacters(string.get(), CFRangeMake(3, 1), &middle);
    EXPECT_EQ(middle, 0xDE00);
    const auto again = Own(CFStringCreateWithCharacters(nullptr, units, 5));
    EXPECT_TRUE(CFEqual(string.get(), again.get()));

    middle = 7;
    for (const CFRange range : {CFRangeMake(5, 1), CFRangeMake(-1, 1), CFRangeMake(0, -1), CFRangeMake(4, 2),
                                CFRangeMake(__LONG_MAX__, __LONG_MAX__)})
        CFStringGetCharacters(string.get(), range, &middle);
    EXPECT_EQ(middle, 7) << "a range outside writes nothing";
    EXPECT_EQ(CFStringGetLength(nullptr), 0);
}

TEST(String, MaximumSizesHold)
{
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUTF8), 30);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingMacRoman), 10);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUnicode), 20);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(__LONG_MAX__, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(-1, kCFStringEncodingUTF8), kCFNotFound);
}

TEST(String, ComparesUnitByUnit)
{
    EXPECT_EQ(Compare("", ""), kCFCompareEqualTo);
    EXPECT_EQ(Compare("abc", "abc"), kCFCompareEqualTo);
    EXPECT_EQ(Compare("abc", "abd"), kCFCompareLessThan);
    EXPECT_EQ(Compare("b", "abc"), kCFCompareGreaterThan);
    EXPECT_EQ(Compare("ab", "abc"), kCFCompareLessThan);
    EXPECT_EQ(Compare("abc", ""), kCFCompareGreaterThan);
    EXPECT_EQ(Compare("Z", "a"), kCFCompareLessThan);
    EXPECT_EQ(Compare("e\xCC\x81", "\xC3\xA9"), kCFCompareLessThan) << "literal: e and an accent are two characters";
    EXPECT_EQ(CFStringCompare(nullptr, CFSTR(""), 0), kCFCompareLessThan);
    EXPECT_EQ(CFStringCompare(CFSTR(""), nullptr, 0), kCFCompareGreaterThan);
    EXPECT_EQ(CFStringCompare(nullptr, nullptr, 0), kCFCompareEqualTo);
}

// U+FFFD is one unit, 0xFFFD; U+1F600 begins with the smaller unit 0xD83D.
TEST(String, ComparesInUtf16OrderNotInThatOfCodePoints)
{
    const std::u16string characters[] = {u"\x7F",         u"\x80",         u"\x7FF",  u"\x800",  u"\xD7FF",
                                         u"\xD800\xDC00", u"\xDBFF\xDFFF", u"\xE000", u"\xFFFD", u"\xFFFF"};
    for (const std::u16string& first : characters) {
        for (const std::u16string& second : characters) {
            const auto one = Bytes(OfUnits(first + u"x"), kCFStringEncodingUnicode);
            const auto two = Bytes(OfUnits(second), kCFStringEncodingUnicode);
            const int order = (first + u"x").compare(second);
            EXPECT_EQ(CFStringCompare(one.get(), two.get(), 0), order < 0   ? kCFCompareLessThan
                                                                : order > 0 ? kCFCompareGreaterThan
                                                                            : kCFCompareEqualTo)
                << TextOf(one.get()) << " " << TextOf(two.get());
        }
    }
}

TEST(String, EqualStringsHaveEqualHashes)
{
    const auto one = Own(MakeString("\xC3\xA9t\xC3\xA9"));
    const auto two = Own(CFStringCreateWithCString(nullptr, "\x8Et\x8E", kCFStringEncodingMacRoman));
    EXPECT_TRUE(CFEqual(one.get(), two.get()));
    EXPECT_EQ(CFHash(one.get()), CFHash(two.get()));
    EXPECT_TRUE(CFEqual(CFSTR("same"), Own(MakeString("same")).get()));
    EXPECT_EQ(CFHash(CFSTR("same")), CFHash(Own(MakeString("same")).get()));
    EXPECT_FALSE(CFEqual(CFSTR("same"), CFSTR("Same")));
}

TEST(String, CopiesShareTheText)
{
    const auto string = Own(MakeString("text"));
    const auto copy = Own(CFStringCreateCopy(nullptr, string.get()));
    EXPECT_EQ(copy.get(), string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2);
}

TEST(String, OneLiteralIsOneObject)
{
    EXPECT_EQ(CFSTR("literal"), CFSTR("literal"));
    EXPECT_NE(CFSTR("literal"), CFSTR("other"));
    EXPECT_EQ(TextOf(CFSTR("")), "");
}
