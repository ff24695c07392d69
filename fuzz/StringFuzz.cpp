// fuzz/StringFuzz.cpp
//
// Strings of any bytes in every encoding, and formats: what a string holds has to come back from
// it, and no format may read or write where it should not.
#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"

namespace {

constexpr CFStringEncoding kEncodings[] = {kCFStringEncodingUTF8, kCFStringEncodingMacRoman, kCFStringEncodingASCII,
                                           kCFStringEncodingUnicode};

// What a format may take here.
enum class Taken { Numbers, Texts, Objects, Nothing };

// Arguments of one kind only, no position beyond the ninth, and no more than twenty.
Taken WhatIsTaken(const std::string& format)
{
    int conversions = 0;
    bool texts = false;
    bool objects = false;
    for (std::size_t at = 0; at < format.size(); ++at) {
        conversions += format[at] == '%' ? 1 : 0;
        texts = texts || format[at] == 's';
        objects = objects || format[at] == '@';
        if (format[at] == '$' && at >= 2 && format[at - 2] >= '0' && format[at - 2] <= '9')
            return Taken::Nothing;
    }
    if (conversions > 6 || (texts && objects))
        return Taken::Nothing;
    return texts ? Taken::Texts : objects ? Taken::Objects : Taken::Numbers;
}

template <typename T>
void Format(CFStringRef format, T a, T b, T c, T d)
{
    CFRelease(
        CFStringCreateWithFormat(nullptr, nullptr, format, a, b, c, d, a, b, c, d, a, b, c, d, a, b, c, d, a, b, c, d));
}

void UseAsFormat(CFStringRef string, const std::string& text)
{
    switch (WhatIsTaken(text)) {
    case Taken::Numbers:
        return Format<long long>(string, 1, -2, 3, 4);
    case Taken::Texts:
        return Format<const char*>(string, "text", "\xC3\xA9\xF0\x9F\x98\x80", "\xFF", nullptr);
    case Taken::Objects:
        return Format<CFTypeRef>(string, string, CFSTR("\xC3\xA9"), kCFBooleanTrue, nullptr);
    case Taken::Nothing:
        break;
    }
}

void UseString(CFStringRef string)
{
    const CFIndex length = CFStringGetLength(string);
    std::vector<UniChar> units(static_cast<std::size_t>(length) + 1);
    CFStringGetCharacters(string, CFRangeMake(0, length), units.data());
    const CFStringRef again = CFStringCreateWithCharacters(nullptr, units.data(), length);
    Require(again && CFEqual(string, again) && CFHash(string) == CFHash(again));
    Require(CFStringCompare(string, again, 0) == kCFCompareEqualTo);
    CFRelease(again);
    // Order is that of the units.
    const CFStringRef half = CFStringCreateWithCharacters(nullptr, units.data() + length / 2, length - length / 2);
    if (half) {
        const bool isLess =
            std::lexicographical_compare(units.begin(), units.end() - 1, units.begin() + length / 2, units.end() - 1);
        Require((CFStringCompare(string, half, 0) == kCFCompareLessThan) == isLess);
        Require(CFStringCompare(half, string, 0) == -CFStringCompare(string, half, 0));
    }
    CFRelease(half);
    char small[16];
    for (const CFStringEncoding encoding : kEncodings) {
        const char* const inside = CFStringGetCStringPtr(string, encoding);
        if (!CFStringGetCString(string, small, sizeof small, encoding))
            continue;
        const CFStringRef back = CFStringCreateWithCString(nullptr, small, encoding);
        Require(back && CFEqual(string, back));
        Require(!inside || std::string(inside) == small);
        CFRelease(back);
    }
    const std::size_t size = static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8));
    std::vector<char> text(size + 1);
    if (CFStringGetCString(string, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8))
        UseAsFormat(string, text.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    if (size < 2)
        return 0;
    const CFStringRef string = CFStringCreateWithBytes(nullptr, bytes + 1, static_cast<CFIndex>(size - 1),
                                                       kEncodings[bytes[0] % 4], bytes[0] & 4);
    Require(string || bytes[0] % 4 != 1); // every byte is Mac OS Roman
    if (string)
        UseString(string);
    CFRelease(string);
    return 0;
}
