// platform/corefoundation/String.cpp
//
// Strings: making, reading, comparing. Formatting stands in StringFormat.cpp.
#include "platform/corefoundation/String.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <vector>

#include "platform/base/Guard.h"
#include "platform/base/Text.h"

namespace {

CFStringRef MakeOfMacRoman(std::string_view bytes)
{
    return __CFString::Create(Utf8OfMacRoman(bytes)).Detach();
}

CFStringRef MakeOfAscii(std::string_view bytes)
{
    const bool ascii =
        std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    return ascii ? __CFString::Create(bytes).Detach() : nullptr;
}

// UTF-16 in the machine's order, or as a byte-order mark says where one may stand.
CFStringRef MakeOfUtf16(std::string_view bytes, bool markAllowed)
{
    if (bytes.size() % 2 != 0)
        return nullptr;
    std::vector<std::uint16_t> units(bytes.size() / 2);
    if (!units.empty())
        std::memcpy(units.data(), bytes.data(), bytes.size());
    std::size_t first = 0;
    if (markAllowed && !units.empty() && (units[0] == 0xFEFF || units[0] == 0xFFFE)) {
        first = 1;
        if (units[0] == 0xFFFE)
            std::transform(units.begin(), units.end(), units.begin(),
                           [](std::uint16_t unit) { return static_cast<std::uint16_t>((unit << 8U) | (unit >> 8U)); });
    }
    const auto utf8 = Utf8OfUtf16(units.data() + first, units.size() - first);
    return utf8 ? __CFString::Create(*utf8).Detach() : nullptr;
}

bool WriteText(std::string_view bytes, char* buffer, CFIndex bufferSize)
{
    // A NUL inside would end the C string early and lose the rest.
    if (static_cast<std::size_t>(bufferSize) <= bytes.size() || bytes.find('\0') != std::string_view::npos)
        return false;
    if (!bytes.empty())
        std::memcpy(buffer, bytes.data(), bytes.size());
    buffer[bytes.size()] = '\0';
    return true;
}

// UTF-8 sorts as code points do; UTF-16 sorts U+E000 to U+FFFF behind the characters beyond.
int RankOfLeadByte(unsigned char byte)
{
    return byte >= 0xF0 ? byte - 2 : byte >= 0xEE ? byte + 0x10 : byte;
}

} // namespace

CRef<const __CFString> __CFString::Create(std::string_view utf8, Lifetime lifetime)
{
    const auto units = CountUtf16Units(utf8);
    if (!units)
        return {};
    void* const memory = ::operator new(sizeof(__CFString) + utf8.size() + 1);
    auto* const string = ::new (memory) __CFString(utf8.size(), static_cast<CFIndex>(*units), lifetime);
    char* const bytes = reinterpret_cast<char*>(string + 1);
    if (!utf8.empty())
        std::memcpy(bytes, utf8.data(), utf8.size());
    bytes[utf8.size()] = '\0';
    return CRef<const __CFString>::Adopt(string);
}

void __CFString::operator delete(void* memory) noexcept
{
    ::operator delete(memory);
}

bool __CFString::EqualTo(const CObject& other) const
{
    return Utf8() == static_cast<const __CFString&>(other).Utf8();
}

CFHashCode __CFString::Hash() const
{
    return std::hash<std::string_view>()(Utf8());
}

CFTypeID CFStringGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::String);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding)
{
    if (!cStr || encoding == kCFStringEncodingUnicode)
        return nullptr;
    return CFStringCreateWithBytes(alloc, reinterpret_cast<const UInt8*>(cStr), static_cast<CFIndex>(std::strlen(cStr)),
                                   encoding, false);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex numBytes, CFStringEncoding encoding,
                                    Boolean isExternalRepresentation)
{
    if (numBytes < 0 || (!bytes && numBytes > 0))
        return nullptr;
    const std::string_view text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(numBytes));
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        switch (encoding) {
        case kCFStringEncodingUTF8: {
            const bool marked = isExternalRepresentation && text.substr(0, 3) == "\xEF\xBB\xBF";
            return __CFString::Create(marked ? text.substr(3) : text).Detach();
        }
        case kCFStringEncodingMacRoman:
            return MakeOfMacRoman(text);
        case kCFStringEncodingASCII:
            return MakeOfAscii(text);
        case kCFStringEncodingUnicode:
            return MakeOfUtf16(text, isExternalRepresentation);
        default:
            return nullptr;
        }
    });
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars, CFIndex numChars)
{
    if (numChars < 0 || (!chars && numChars > 0))
        return nullptr;
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        const auto utf8 = Utf8OfUtf16(chars, static_cast<std::size_t>(numChars));
        return utf8 ? __CFString::Create(*utf8).Detach() : nullptr;
    });
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef theString)
{
    return static_cast<CFStringRef>(CFRetain(theString));
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    if (!theString || !buffer || bufferSize <= 0)
        return false;
    const std::string_view text = theString->Utf8();
    return Guarded<Boolean>(false, [&]() -> Boolean {
        switch (encoding) {
        case kCFStringEncodingUTF8:
            return WriteText(text, buffer, bufferSize);
        case kCFStringEncodingASCII:
            return text.size() == static_cast<std::size_t>(theString->Utf16Length()) &&
                   WriteText(text, buffer, bufferSize);
        case kCFStringEncodingMacRoman: {
            const auto bytes = MacRomanOfUtf8(text);
            return bytes && WriteText(*bytes, buffer, bufferSize);
        }
        default:
            return false;
        }
    });
}

const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding)
{
    if (!theString)
        return nullptr;
    const bool ascii = theString->Utf8().size() == static_cast<std::size_t>(theString->Utf16Length());
    const bool holds = encoding == kCFStringEncodingUTF8 ||
                       (ascii && (encoding == kCFStringEncodingASCII || encoding == kCFStringEncodingMacRoman));
    return holds && theString->Utf8().find('\0') == std::string_view::npos ? theString->Utf8().data() : nullptr;
}

void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer)
{
    if (!theString || !buffer || range.location < 0 || range.length < 0 ||
        range.location > theString->Utf16Length() - range.length)
        return;
    const std::string_view text = theString->Utf8();
    CFIndex unit = 0;
    const auto put = [&](char32_t value) {
        if (unit >= range.location && unit < range.location + range.length)
            buffer[unit - range.location] = static_cast<UniChar>(value);
        ++unit;
    };
    for (std::size_t at = 0; at < text.size();) {
        const char32_t codePoint = NextCodePoint(text, at);
        if (codePoint < 0x10000) {
            put(codePoint);
        } else {
            put(0xD800 + ((codePoint - 0x10000) >> 10U));
            put(0xDC00 + (codePoint & 0x3FFU));
        }
    }
}

CFIndex CFStringGetLength(CFStringRef theString)
{
    return theString ? theString->Utf16Length() : 0;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    const CFIndex perUnit = encoding == kCFStringEncodingUTF8 ? 3 : encoding == kCFStringEncodingUnicode ? 2 : 1;
    return length < 0 || length > __LONG_MAX__ / perUnit ? static_cast<CFIndex>(kCFNotFound) : length * perUnit;
}

CFComparisonResult CFStringCompare(CFStringRef string1, CFStringRef string2, CFOptionFlags)
{
    if (!string1 || !string2)
        return string1 ? kCFCompareGreaterThan : string2 ? kCFCompareLessThan : kCFCompareEqualTo;
    const std::string_view first = string1->Utf8();
    const std::string_view second = string2->Utf8();
    const auto [left, right] = std::mismatch(first.begin(), first.end(), second.begin(), second.end());
    if (left == first.end() || right == second.end()) {
        if (left == first.end() && right == second.end())
            return kCFCompareEqualTo;
        return left == first.end() ? kCFCompareLessThan : kCFCompareGreaterThan;
    }
    return RankOfLeadByte(static_cast<unsigned char>(*left)) < RankOfLeadByte(static_cast<unsigned char>(*right))
               ? kCFCompareLessThan
               : kCFCompareGreaterThan;
}

CFStringRef __CFStringMakeConstantString(const char* cStr)
{
    if (!cStr)
        return nullptr;
    return Guarded<CFStringRef>(nullptr, [&] {
        static std::mutex& mutex = *new std::mutex;
        // By content, not by address: the literal's image may be unloaded and another take its place.
        static auto& strings = *new std::map<std::string, CRef<const __CFString>, std::less<>>;
        const std::lock_guard<std::mutex> lock(mutex);
        auto found = strings.find(std::string_view(cStr));
        if (found == strings.end())
            found = strings.emplace(cStr, __CFString::Create(cStr, Lifetime::Constant)).first;
        return found->second.Get();
    });
}
