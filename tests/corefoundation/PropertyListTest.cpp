// tests/corefoundation/PropertyListTest.cpp
//
// Property lists in and out: what they become, what is refused, and that no list, however it was
// made, costs more than it should.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "tests/corefoundation/BinaryList.h"
#include "tests/support/Owner.h"

namespace {

Owner<CFPropertyListRef> Read(const std::string& bytes)
{
    const auto data =
        Own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
    return Own(CFPropertyListCreateFromXMLData(nullptr, data.get(), kCFPropertyListImmutable, nullptr));
}

std::string Xml(const std::string& value)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + value + "</plist>\n";
}

std::string Describe(const std::string& bytes)
{
    const auto list = Read(bytes);
    const auto text = Own(list ? CFCopyDescription(list.get()) : nullptr);
    return TextOf(text.get());
}

std::string Write(CFTypeRef list)
{
    const auto data = Own(CFPropertyListCreateXMLData(nullptr, list));
    return data ? std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
                              static_cast<std::size_t>(CFDataGetLength(data.get())))
                : "";
}

std::string Nested(int levels)
{
    std::string text;
    for (int level = 0; level < levels; ++level)
        text += "<array>";
    text += "<true/>";
    for (int level = 0; level < levels; ++level)
        text += "</array>";
    return text;
}

std::string Times(const std::string& piece, int count)
{
    std::string text;
    for (int index = 0; index < count; ++index)
        text += piece;
    return text;
}

} // namespace

TEST(PropertyList, XmlBecomesObjectsOfEveryKind)
{
    EXPECT_EQ(Describe(Xml("<string>a&lt;b&amp;&#233;&#x1F600;</string>")), "a<b&\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(Describe(Xml("<string><![CDATA[x<y&amp;]]>z</string>")), "x<y&amp;z");
    EXPECT_EQ(Describe(Xml("<string>a<!-- no -->b</string>")), "ab");
    EXPECT_EQ(Describe(Xml("<string/>")), "");
    EXPECT_EQ(Describe(Xml("<integer>-42</integer>")), "-42");
    EXPECT_EQ(Describe(Xml("<integer> 0x1F </integer>")), "31");
    EXPECT_EQ(Describe(Xml("<integer>9223372036854775807</integer>")), "9223372036854775807");
    EXPECT_EQ(Describe(Xml("<integer>-9223372036854775808</integer>")), "-9223372036854775808");
    EXPECT_EQ(Describe(Xml("<real>1.5e3</real>")), "1500");
    EXPECT_EQ(Read(Xml("<true/>")).get(), kCFBooleanTrue);
    EXPECT_EQ(Read(Xml("<false/>")).get(), kCFBooleanFalse);
    EXPECT_EQ(Describe(Xml("<date>2011-03-11T12:30:00Z</date>")), "2011-03-11 12:30:00 +0000");
    EXPECT_EQ(Describe(Xml("<date>1999-12-31T23:59:59Z</date>")), "1999-12-31 23:59:59 +0000");
    EXPECT_EQ(Describe(Xml("<data> AA\n\tEC </data>")), "<data of 3 bytes>");
    EXPECT_EQ(Describe(Xml("<array><true/><array/><dict/></array>")), "(true, (), {})");
    EXPECT_EQ(Describe(Xml("<dict><key>a</key><string>b</string></dict>")), "{a = b}");
    EXPECT_EQ(Describe(Xml("<dict><key>CF$UID</key><integer>3</integer></dict>")), "{CF$UID = 3}");
}

TEST(PropertyList, PrologCommentsAndByteOrderMarkAreSkipped)
{
    EXPECT_TRUE(
        Read("\xEF\xBB\xBF<!-- > --><?xml?><!DOCTYPE plist PUBLIC \"a\" \"b\">\n<plist><true/></plist><!-- -->"));
}

TEST(PropertyList, MalformedXmlGivesNull)
{
    const char* const bad[] = {"",
                               "<key>a</key>",
                               "<string>a</strin>",
                               "<string>a",
                               "<foo/>",
                               "<dict><key>a</key></dict>",
                               "<dict><string>a</string></dict>",
                               "<dict><key>a</key><key>b</key></dict>",
                               "<dict><key>a</key><true/><true/></dict>",
                               "<array><key>a</key></array>",
                               "<array><true/>",
                               "<array></dict>",
                               "<true/><true/>",
                               "<true/>x",
                               "<true>x</true>",
                               "<string>&bad;</string>",
                               "<string>&</string>",
                               "<string>&#0;</string>",
                               "<string>&#xD800;</string>",
                               "<string>&#x110000;</string>",
                               "<string>&#1a;</string>",
                               "<string><b/></string>",
                               "<string><![CDATA[x</string>",
                               "<integer></integer>",
                               "<integer/>",
                               "<integer>x</integer>",
                               "<integer>1 2</integer>",
                               "<integer>0x</integer>",
                               "<integer>9223372036854775808</integer>",
                               "<integer>-9223372036854775809</integer>",
                               "<real>x</real>",
                               "<real>.</real>",
                               "<real>1e</real>",
                               "<real/>",
                               "<date>2011-02-29T00:00:00Z</date>",
                               "<date>2011-13-01T00:00:00Z</date>",
                               "<date>1901-01-01T00:00:00Z</date>",
                               "<date>today</date>",
                               "<data>A</data>",
                               "<data>AA=A</data>",
                               "<data>!</data>",
                               "<string>\xFF</string>",
                               "<string>\xC0\x80</string>",
                               "<!-- <true/>",
                               "<!ENTITY a \"b\"><true/>",
                               "<plist><true/></plist>"};
    for (const char* const value : bad)
        EXPECT_FALSE(Read(Xml(value))) << value;
    EXPECT_FALSE(Read(""));
    EXPECT_FALSE(Read("   "));
    EXPECT_FALSE(Read("<true/>"));
    EXPECT_FALSE(Read("<plist/>"));
    EXPECT_FALSE(Read("<plist><true/></plist>x"));
    EXPECT_FALSE(Read("<plist><true/></plist><plist><true/></plist>"));
    EXPECT_FALSE(Read("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"));
    EXPECT_FALSE(Read(std::string("<plist><string>a\0b</string></plist>", 35)));
}

// libplist would read the number as an octal one.
TEST(PropertyList, WholeNumbersWithALeadingZeroAreRefused)
{
    EXPECT_FALSE(Read(Xml("<integer>010</integer>")));
    EXPECT_TRUE(Read(Xml("<integer>0</integer>")));
}

TEST(PropertyList, EveryTruncationOfAListGivesNull)
{
    const std::string xml = Xml("<dict><key>a</key><array><string>b&amp;</string><integer>3</integer></array></dict>");
    for (std::size_t size = 0; size + 1 < xml.size(); ++size) // the last byte is a newline
        EXPECT_FALSE(Read(xml.substr(0, size))) << xml.substr(0, size);
    const std::string binary = BinaryList({String("ab"), Array({0, 0})}, 1);
    ASSERT_TRUE(Read(binary));
    for (std::size_t size = 0; size < binary.size(); ++size)
        EXPECT_FALSE(Read(binary.substr(0, size))) << size;
}

TEST(PropertyList, FailureTellsWhyAndSuccessDoesNot)
{
    const auto bad = Own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>("no"), 2));
    CFStringRef why = nullptr;
    EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, bad.get(), kCFPropertyListImmutable, &why), nullptr);
    ASSERT_NE(why, nullptr);
    EXPECT_GT(CFStringGetLength(why), 0);
    CFRelease(why);
    EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, nullptr, kCFPropertyListImmutable, nullptr), nullptr);
}

TEST(PropertyList, NestingIsBounded)
{
    EXPECT_TRUE(Read(Xml(Nested(512))));
    EXPECT_FALSE(Read(Xml(Nested(513))));
    EXPECT_FALSE(Read(Xml(Nested(200000))));
}

std::string ManyKeys(int count)
{
    std::string keys;
    for (int index = 0; index < count; ++index)
        keys += "<key>" + std::to_string(index) + "</key><true/>";
    return Xml("<dict>" + keys + "</dict>");
}

TEST(PropertyList, CostlyListsAreRefused)
{
    EXPECT_FALSE(Read(Xml("<string>" + Times("&amp;", 1000000) + "</string>")));
    EXPECT_FALSE(Read(ManyKeys(150000)));
    EXPECT_FALSE(Read(Xml("<string>" + std::string(std::size_t{17} << 20U, 'x') + "</string>")));
}

TEST(PropertyList, HundredThousandKeysAreRead)
{
    EXPECT_TRUE(Read(ManyKeys(100000)));
}

TEST(PropertyList, BinaryBecomesObjectsOfEveryKind)
{
    EXPECT_EQ(Describe(BinaryList({String("abc")}, 0)), "abc");
    EXPECT_EQ(Describe(BinaryList({String("twenty characters ab")}, 0)), "twenty characters ab");
    EXPECT_EQ(Describe(BinaryList({std::string("\x62\x00\xE9\x20\xAC", 5)}, 0)), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(Describe(BinaryList({std::string("\x10\x2A", 2)}, 0)), "42");
    EXPECT_EQ(Describe(BinaryList({"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"}, 0)), "-2");
    EXPECT_EQ(Describe(BinaryList({std::string("\x23\x3F\xF8\0\0\0\0\0\0", 9)}, 0)), "1.5");
    EXPECT_EQ(Describe(BinaryList({std::string("\x33\xBF\xF4\0\0\0\0\0\0", 9)}, 0)), "2000-12-31 23:59:58 +0000");
    EXPECT_EQ(Describe(BinaryList({std::string("\x42\0\1", 3)}, 0)), "<data of 2 bytes>");
    EXPECT_EQ(Read(BinaryList({"\x09"}, 0)).get(), kCFBooleanTrue);
    EXPECT_EQ(Describe(BinaryList({String("k"), "\x09", Dictionary({0}, {1})}, 2)), "{k = true}");
    EXPECT_EQ(Describe(BinaryList({std::string("\x80\x03", 2)}, 0)), "{CF$UID = 3}");
    EXPECT_EQ(Describe(BinaryList({std::string("\x14\0\0\0\0\0\0\0\0\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 17)}, 0)),
              "9223372036854775807");
}

TEST(PropertyList, MalformedBinaryGivesNull)
{
    EXPECT_FALSE(Read(BinaryList({}, 0)));
    EXPECT_FALSE(Read(BinaryList({"\x09"}, 1))) << "root outside";
    EXPECT_FALSE(Read(BinaryList({Array({0})}, 0))) << "holds itself";
    EXPECT_FALSE(Read(BinaryList({Array({1}), Array({0})}, 0))) << "holds itself by way of another";
    EXPECT_FALSE(Read(BinaryList({Array({7})}, 0))) << "refers to what is not there";
    EXPECT_FALSE(Read(BinaryList({"\x09", Dictionary({0}, {0})}, 1))) << "a key that is no string";
    EXPECT_FALSE(Read(BinaryList({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}, 0))) << "a size beyond everything";
    EXPECT_FALSE(Read(BinaryList({std::string("\x5F\x12\0\1\0\0", 6)}, 0))) << "a size beyond the data";
    EXPECT_FALSE(Read(BinaryList({std::string("\x52\0a", 3)}, 0))) << "a text with a NUL";
    EXPECT_FALSE(Read(BinaryList({"\x61\xD8\x01"}, 0))) << "an unpaired surrogate";
    EXPECT_FALSE(Read(BinaryList({std::string("\0", 1)}, 0))) << "null";
    EXPECT_FALSE(Read(BinaryList({"\x70"}, 0))) << "an unknown kind";
    EXPECT_FALSE(Read(BinaryList({"\x33\x7F\xF8\0\0\0\0\0\0"}, 0))) << "a date that is no number";
    EXPECT_FALSE(Read(BinaryList({std::string("\x14\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 17)}, 0)))
        << "a number of more than 64 bits";
    EXPECT_FALSE(Read("bplist01" + BinaryList({"\x09"}, 0).substr(8)));
}

// Forty arrays, each holding the next one twice, are a few hundred bytes and 2^40 objects.
TEST(PropertyList, SharedPartsThatGrowWithoutBoundAreRefused)
{
    std::vector<std::string> objects;
    for (int level = 0; level < 40; ++level)
        objects.push_back(Array({level + 1, level + 1}));
    objects.push_back("\x09");
    EXPECT_FALSE(Read(BinaryList(objects, 0)));

    std::vector<int> many(2000, 1);
    EXPECT_FALSE(Read(BinaryList({Array(many), String(std::string(1000000, 'x'))}, 0))) << "2 GB of one string";
    EXPECT_EQ(Describe(BinaryList({Array({1, 1}), String("a")}, 0)), "(a, a)");
}

TEST(PropertyList, DeepBinaryListsAreRefused)
{
    for (const int levels : {512, 513, 60000}) {
        std::vector<std::string> objects;
        for (int level = 0; level < levels; ++level)
            objects.push_back(Array({level + 1}));
        objects.push_back("\x09");
        EXPECT_EQ(static_cast<bool>(Read(BinaryList(objects, 0))), levels == 512) << levels;
    }
}

TEST(PropertyList, WhatIsWrittenIsReadBackEqual)
{
    const std::string values[] = {
        "<string>a &lt;&amp;&gt; \"quoted\" 'text' ]]&gt; \xC3\xA9</string>",
        "<string> space at both ends </string>",
        "<string>line\nline\ttab</string>",
        "<string>\x01\x1F</string>",
        "<string/>",
        "<array/>",
        "<dict/>",
        "<data/>",
        "<data>AAECAwQ=</data>",
        "<integer>-9223372036854775808</integer>",
        "<integer>9223372036854775807</integer>",
        "<integer>0</integer>",
        "<real>0.1</real>",
        "<real>-1e300</real>",
        "<date>2011-03-11T12:30:00Z</date>",
        "<date>1950-03-11T12:30:00Z</date>",
        "<dict><key>&lt;k&amp;</key><array><true/><false/><dict><key>x</key><real>2.5</real></dict></array></dict>",
        "<dict><key>CF$UID</key><integer>3</integer></dict>",
    };
    for (const std::string& value : values) {
        const auto list = Read(Xml(value));
        ASSERT_TRUE(list) << value;
        const auto again = Read(Write(list.get()));
        EXPECT_TRUE(again && CFEqual(list.get(), again.get())) << value << "\n" << Write(list.get());
    }
}

TEST(PropertyList, AnEmptyKeySurvivesOrIsNotWritten)
{
    const auto list = Read(Xml("<dict><key></key><true/></dict>"));
    ASSERT_TRUE(list);
    const std::string text = Write(list.get());
    if (!text.empty()) {
        const auto again = Read(text);
        EXPECT_TRUE(again && CFEqual(list.get(), again.get())) << text;
    }
}

TEST(PropertyList, WhatNoListCanHoldIsNotWritten)
{
    EXPECT_EQ(Write(nullptr), "");
    const auto url = Own(CFURLCreateWithString(nullptr, CFSTR("http://a/"), nullptr));
    EXPECT_EQ(Write(url.get()), "");
    const auto withNul = Own(MakeString(std::string("a\0b", 3)));
    EXPECT_EQ(Write(withNul.get()), "");
    const auto dictionary =
        Own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(dictionary.get(), withNul.get(), kCFBooleanTrue);
    EXPECT_EQ(Write(dictionary.get()), "") << "the key would be cut";
    const auto numbered =
        Own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(numbered.get(), kCFBooleanTrue, kCFBooleanTrue);
    EXPECT_EQ(Write(numbered.get()), "") << "a key that is no string";
}
