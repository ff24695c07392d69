// platform/corefoundation/Value.cpp
//
// Data, numbers, booleans and dates.
#include "platform/corefoundation/Value.h"

#include <cmath>
#include <ctime>
#include <functional>
#include <limits>
#include <string_view>

#include "platform/base/Guard.h"
#include "platform/base/NeutralLocale.h"

namespace {

constexpr std::int64_t kUnixTimeOf2001 = 978307200;

template <typename Integer>
bool StoreInteger(const __CFNumber& number, void* to)
{
    constexpr double kLimit = -2.0 * static_cast<double>(std::numeric_limits<std::int64_t>::min() / 2);
    std::int64_t whole = number.integer;
    bool exact = true;
    if (number.isFloat) {
        const bool inside = number.number >= -kLimit && number.number < kLimit;
        whole = inside              ? static_cast<std::int64_t>(number.number)
                : number.number < 0 ? std::numeric_limits<std::int64_t>::min()
                                    : std::numeric_limits<std::int64_t>::max();
        exact = inside && static_cast<double>(whole) == number.number;
    }
    const std::int64_t lowest = std::numeric_limits<Integer>::min();
    const std::int64_t highest = std::numeric_limits<Integer>::max();
    const std::int64_t bounded = whole < lowest ? lowest : whole > highest ? highest : whole;
    *static_cast<Integer*>(to) = static_cast<Integer>(bounded);
    return exact && bounded == whole;
}

template <typename Float>
bool StoreFloat(const __CFNumber& number, void* to)
{
    const Float value = static_cast<Float>(number.number);
    *static_cast<Float*>(to) = value;
    if (!number.isFloat) {
        // 2^63 is no 64-bit integer; everything below it converts back.
        return value < static_cast<Float>(9223372036854775808.0) && static_cast<std::int64_t>(value) == number.integer;
    }
    return std::isnan(number.number) || static_cast<double>(value) == number.number;
}

} // namespace

bool __CFData::EqualTo(const CObject& other) const
{
    return bytes == static_cast<const __CFData&>(other).bytes;
}

CFHashCode __CFData::Hash() const
{
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::string __CFData::Describe() const
{
    return "<data of " + std::to_string(bytes.size()) + " bytes>";
}

bool __CFNumber::EqualTo(const CObject& other) const
{
    const auto& number2 = static_cast<const __CFNumber&>(other);
    return !isFloat && !number2.isFloat ? integer == number2.integer : number == number2.number;
}

CFHashCode __CFNumber::Hash() const
{
    return std::hash<double>()(number); // a whole number and its floating equal are equal
}

std::string __CFNumber::Describe() const
{
    if (!isFloat)
        return std::to_string(integer);
    const CNeutralLocale neutral;
    char text[40] = "";
    snprintf(text, sizeof text, "%.17g", number);
    char shorter[40] = "";
    snprintf(shorter, sizeof shorter, "%.15g", number);
    return strtod(shorter, nullptr) == number ? shorter : text;
}

bool __CFDate::EqualTo(const CObject& other) const
{
    return time == static_cast<const __CFDate&>(other).time;
}

CFHashCode __CFDate::Hash() const
{
    return std::hash<double>()(time);
}

std::string __CFDate::Describe() const
{
    const double seconds = std::floor(time) + static_cast<double>(kUnixTimeOf2001);
    char text[40] = "";
    tm parts = {};
    if (std::abs(seconds) < 1e15) {
        const auto clock = static_cast<time_t>(seconds);
        if (gmtime_r(&clock, &parts))
            strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
    }
    return text;
}

CFTypeID CFDataGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Data);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length)
{
    if (length < 0 || (!bytes && length > 0))
        return nullptr;
    return Guarded<CFDataRef>(nullptr, [&] {
        std::vector<UInt8> content;
        if (length > 0)
            content.assign(bytes, bytes + length);
        return new __CFData(std::move(content));
    });
}

CFIndex CFDataGetLength(CFDataRef theData)
{
    return theData ? static_cast<CFIndex>(theData->bytes.size()) : 0;
}

const UInt8* CFDataGetBytePtr(CFDataRef theData)
{
    return theData ? theData->bytes.data() : nullptr;
}

namespace {
ConstantObject<__CFBoolean> g_true(true);
ConstantObject<__CFBoolean> g_false(false);
} // namespace

const CFBooleanRef kCFBooleanTrue = &g_true.object;
const CFBooleanRef kCFBooleanFalse = &g_false.object;

CFTypeID CFBooleanGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Truth);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean)
{
    return boolean && boolean->value;
}

CFTypeID CFNumberGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Number);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void* valuePtr)
{
    if (!valuePtr)
        return nullptr;
    return Guarded<CFNumberRef>(nullptr, [&]() -> CFNumberRef {
        const auto whole = [](auto value) {
            return new __CFNumber(static_cast<std::int64_t>(value));
        };
        switch (theType) {
        case kCFNumberSInt8Type:
        case kCFNumberCharType:
            return whole(*static_cast<const SInt8*>(valuePtr));
        case kCFNumberSInt16Type:
        case kCFNumberShortType:
            return whole(*static_cast<const SInt16*>(valuePtr));
        case kCFNumberSInt32Type:
        case kCFNumberIntType:
            return whole(*static_cast<const int*>(valuePtr));
        case kCFNumberSInt64Type:
        case kCFNumberLongLongType:
            return whole(*static_cast<const SInt64*>(valuePtr));
        case kCFNumberLongType:
        case kCFNumberCFIndexType:
            return whole(*static_cast<const long*>(valuePtr));
        case kCFNumberFloat32Type:
        case kCFNumberFloatType:
            return new __CFNumber(static_cast<double>(*static_cast<const float*>(valuePtr)));
        case kCFNumberFloat64Type:
        case kCFNumberDoubleType:
            return new __CFNumber(*static_cast<const double*>(valuePtr));
        default:
            return nullptr;
        }
    });
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr)
{
    if (!number || !valuePtr)
        return false;
    switch (theType) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return StoreInteger<SInt8>(*number, valuePtr);
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return StoreInteger<SInt16>(*number, valuePtr);
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return StoreInteger<int>(*number, valuePtr);
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
        return StoreInteger<SInt64>(*number, valuePtr);
    case kCFNumberLongType:
    case kCFNumberCFIndexType:
        return StoreInteger<long>(*number, valuePtr);
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        return StoreFloat<float>(*number, valuePtr);
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
        return StoreFloat<double>(*number, valuePtr);
    default:
        return false;
    }
}

Boolean CFNumberIsFloatType(CFNumberRef number)
{
    return number && number->isFloat;
}

CFTypeID CFDateGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Date);
}

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime at)
{
    return Guarded<CFDateRef>(nullptr, [&] { return new __CFDate(at); });
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate)
{
    return theDate ? theDate->time : 0;
}
