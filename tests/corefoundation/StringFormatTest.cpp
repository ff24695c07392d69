// tests/corefoundation/StringFormatTest.cpp
//
// Formatting: printf's rules hold, and what printf leaves undefined gives null.
#include <gtest/gtest.h>
#include <locale.h>
#include <stdint.h>

#include <cstdarg>
#include <cstdio>

#include "tests/support/Owner.h"

namespace {

std::string Format(const char* format, ...)
{
    const auto string = Own(CFStringCreateWithCString(nullptr, format, kCFStringEncodingUTF8));
    va_list arguments;
    va_start(arguments, format);
    const auto result = Own(CFStringCreateWithFormatAndArguments(nullptr, nullptr, string.get(), arguments));
    va_end(arguments);
    return TextOf(result.get());
}

} // namespace

TEST(StringFormat, NumbersAsPrintfHasThem)
{
    EXPECT_EQ(Format("%d %i %u", -5, 6, 4294967295U), "-5 6 4294967295");
    EXPECT_EQ(Format("%x %X %o %#x", 255, 255, 8, 255), "ff FF 10 0xff");
    EXPECT_EQ(Format("[%5d|%-5d|%05d|%+d|% d|%.3d]", 42, 42, 42, 42, 42, 7), "[   42|42   |00042|+42| 42|007]");
    EXPECT_EQ(Format("%ld %lu %lld %llu", -1L, ~0UL, -1LL, ~0ULL),
              "-1 " + std::to_string(~0UL) + " -1 18446744073709551615");
    EXPECT_EQ(Format("%zu %td %jd %qd", sizeof(char), static_cast<ptrdiff_t>(-3), static_cast<intmax_t>(-4), 5LL),
              "1 -3 -4 5");
    EXPECT_EQ(Format("%hhd %hhu %hd %hu", 257, 511, 65537, 131071), "1 255 1 65535");
    EXPECT_EQ(Format("%x", -1), "ffffffff");
    EXPECT_EQ(Format("%f %.2f %e %g %G", 1.5, 2.345, 1.0, 0.0001, 1e20), "1.500000 2.35 1.000000e+00 0.0001 1E+20");
    EXPECT_EQ(Format("%lf %Lf", 1.5, 2.5L), "1.500000 2.500000");
    EXPECT_EQ(Format("%a", 1.0), "0x1p+0");
    EXPECT_EQ(Format("%.400f", 1.0).size(), 402U);
    EXPECT_EQ(Format("%*d|%-*d|%.*f", 4, 7, 4, 7, 1, 2.25), "   7|7   |2.2");
    EXPECT_EQ(Format("%*d|", -4, 7), "7   |");
    EXPECT_EQ(Format("%.*f", -1, 1.5), "1.500000") << "a negative precision is none";
    EXPECT_EQ(Format("%p", nullptr), "(nil)");
}

TEST(StringFormat, TextsAndCharacters)
{
    EXPECT_EQ(Format("%s|%5s|%-5s|%.2s", "abc", "ab", "ab", "abc"), "abc|   ab|ab   |ab");
    EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
    EXPECT_EQ(Format("%s", "\xC3\xA9"), "\xC3\xA9");
    EXPECT_EQ(Format("%s", "\x8E"), "\xC3\xA9") << "no UTF-8: Mac OS Roman";
    EXPECT_EQ(Format("%c%c", 'a', 0x8E), "a\xC3\xA9");
    EXPECT_EQ(Format("%4s|", "\xC3\xA9"), "   \xC3\xA9|") << "widths count characters";
    EXPECT_EQ(Format("100%%"), "100%");
    EXPECT_EQ(Format(""), "");
    EXPECT_EQ(Format("plain \xC3\xA9"), "plain \xC3\xA9");
}

TEST(StringFormat, ObjectsDescribeThemselves)
{
    const SInt32 seven = 7;
    const auto number = Own(CFNumberCreate(nullptr, kCFNumberSInt32Type, &seven));
    EXPECT_EQ(Format("%@ and %@", CFSTR("text"), number.get()), "text and 7");
    EXPECT_EQ(Format("[%6@]", CFSTR("abc")), "[   abc]");
    EXPECT_EQ(Format("%@", nullptr), "(null)");
}

TEST(StringFormat, PositionsChooseTheArgument)
{
    EXPECT_EQ(Format("%2$s %1$s %2$s", "a", "b"), "b a b");
    EXPECT_EQ(Format("%2$@ %1$d %3$.1f", 1, CFSTR("two"), 3.0), "two 1 3.0");
    EXPECT_EQ(Format("%1$*2$d|", 7, 3), "  7|");
}

TEST(StringFormat, MalformedFormatsGiveNull)
{
    const char* const bad[] = {
        "%",       "%5",        "%y",   "%n",    "%hn",           "%1$n",     "%2$d", "%1$d %d",
        "%d %1$d", "%1$d %1$s", "%0$d", "%65$d", "%99999999999d", "%.99999f", "%ls",  "%lc",
        "%hf",     "%hhhd",     "%l@",  "%-",    "%1$",           "%*1$",     "%5%",  "%Ld",
        "%C",      "%S",        "%.",   "% ",    "%1$*d",         "%l",
    };
    for (const char* const format : bad)
        EXPECT_EQ(Format(format, 1, 2, 3), "(null)") << format;
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, nullptr), nullptr);
}

TEST(StringFormat, SixtyFourArgumentsAtMost)
{
    std::string format;
    for (int index = 0; index < 65; ++index)
        format += "%%";
    EXPECT_EQ(Format(format.c_str()).size(), 65U);
    std::string many;
    for (int index = 0; index < 65; ++index)
        many += "%d";
    EXPECT_EQ(Format(many.c_str()), "(null)");
}

// A host may have set a locale whose numbers have a comma.
TEST(StringFormat, NumbersHaveAPointInEveryLocale)
{
    const CTemporaryFolder folder;
    const ProgramResult made = RunProgram({"localedef", "-i", "de_DE", "-f", "UTF-8", folder / "de_DE.UTF-8"});
    ASSERT_EQ(made.code, 0) << made.err;
    const int code = RunInChild([&folder] {
        setenv("LOCPATH", folder.Path().c_str(), 1);
        EXPECT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        char text[8] = "";
        snprintf(text, sizeof text, "%.1f", 1.5);
        EXPECT_STREQ(text, "1,5") << "the locale has no comma";
        EXPECT_EQ(Format("%.1f", 1.5), "1.5");
        const double half = 0.5;
        const auto number = Own(CFNumberCreate(nullptr, kCFNumberDoubleType, &half));
        EXPECT_EQ(Format("%@", number.get()), "0.5");
        const char list[] = "<plist><real>2.5</real></plist>";
        const auto data = Own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(list), sizeof list - 1));
        const auto read = Own(CFPropertyListCreateFromXMLData(nullptr, data.get(), 0, nullptr));
        EXPECT_EQ(Format("%@", read.get()), "2.5");
        const auto written = Own(CFPropertyListCreateXMLData(nullptr, read.get()));
        const auto again = Own(CFPropertyListCreateFromXMLData(nullptr, written.get(), 0, nullptr));
        EXPECT_EQ(Format("%@", again.get()), "2.5");
        snprintf(text, sizeof text, "%.1f", 1.5);
        EXPECT_STREQ(text, "1,5") << "the host's locale is gone";
        return 0;
    });
    EXPECT_EQ(code, 0);
}
