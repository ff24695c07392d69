// fuzz/StringFuzz.cpp
//
// Strings of any bytes in every encoding, and formats: what a string holds has to come back from
// it, and no format may read or write where it should not.
#include <initializer_list>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"

namespace {

// Whether twenty ints serve the format: no pointers, and no position beyond the ninth.
bool MayFormat(const char* format)
{
    int conversions = 0;
    for (const char* at = format; *at; ++at) {
        conversions += *at == '%' ? 1 : 0;
        const bool isLarge = *at == '$' && at - format >= 2 && at[-2] >= '0' && at[-2] <= '9';
        if (*at == 's' || *at == '@' || isLarge)
            return false;
    }
    return conversions <= 6;
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
    char small[16];
    for (const CFStringEncoding encoding : {static_cast<CFStringEncoding>(kCFStringEncodingUTF8),
                                            static_cast<CFStringEncoding>(kCFStringEncodingMacRoman),
                                            static_cast<CFStringEncoding>(kCFStringEncodingASCII)}) {
        if (CFStringGetCString(string, small, sizeof small, encoding)) {
            const CFStringRef back = CFStringCreateWithCString(nullptr, small, encoding);
            Require(back && CFEqual(string, back));
            CFRelease(back);
        }
    }
    const std::size_t size = static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8));
    std::vector<char> text(size + 1);
    if (CFStringGetCString(string, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8) &&
        MayFormat(text.data()))
        CFRelease(CFStringCreateWithFormat(nullptr, nullptr, string, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                           16, 17, 18, 19, 20));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    if (size < 2)
        return 0;
    static const CFStringEncoding kEncodings[] = {kCFStringEncodingUTF8, kCFStringEncodingMacRoman,
                                                  kCFStringEncodingASCII, kCFStringEncodingUnicode};
    const CFStringRef string = CFStringCreateWithBytes(nullptr, bytes + 1, static_cast<CFIndex>(size - 1),
                                                       kEncodings[bytes[0] % 4], bytes[0] & 4);
    Require(string || bytes[0] % 4 != 1); // every byte is Mac OS Roman
    if (string)
        UseString(string);
    CFRelease(string);
    return 0;
}
