// tests/corefoundation/ValueTest.cpp
//
// Data, numbers, booleans and dates.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/support/Owner.h"

namespace {

template <typename T>
Owner<CFNumberRef> Number(CFNumberType type, T value)
{
    return Own(CFNumberCreate(nullptr, type, &value));
}

std::string Describe(CFTypeRef object)
{
    return TextOf(Own(CFCopyDescription(object)).get());
}

} // namespace

TEST(Data, CopiesItsBytes)
{
    UInt8 bytes[] = {1, 0, 3};
    const auto data = Own(CFDataCreate(nullptr, bytes, 3));
    bytes[0] = 9;
    ASSERT_EQ(CFDataGetLength(data.get()), 3);
    EXPECT_EQ(std::memcmp(CFDataGetBytePtr(data.get()), "\1\0\3", 3), 0);
    const auto same = Own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>("\1\0\3"), 3));
    EXPECT_TRUE(CFEqual(data.get(), same.get()));
    EXPECT_EQ(CFHash(data.get()), CFHash(same.get()));
    EXPECT_FALSE(CFEqual(data.get(), Own(CFDataCreate(nullptr, bytes, 3)).get()));
}

TEST(Data, MayBeEmptyAndRefusesNonsense)
{
    const auto empty = Own(CFDataCreate(nullptr, nullptr, 0));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFDataGetLength(empty.get()), 0);
    EXPECT_EQ(CFDataCreate(nullptr, nullptr, 1), nullptr);
    EXPECT_EQ(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>("a"), -1), nullptr);
    EXPECT_EQ(CFDataGetLength(nullptr), 0);
    EXPECT_EQ(CFDataGetBytePtr(nullptr), nullptr);
}

TEST(Number, EveryTypeMakesTheRoundTrip)
{
    SInt8 tiny = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<SInt8>(kCFNumberSInt8Type, -128).get(), kCFNumberCharType, &tiny));
    EXPECT_EQ(tiny, -128);
    SInt16 small = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<SInt16>(kCFNumberSInt16Type, -32768).get(), kCFNumberShortType, &small));
    EXPECT_EQ(small, -32768);
    int plain = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<int>(kCFNumberSInt32Type, -7).get(), kCFNumberIntType, &plain));
    EXPECT_EQ(plain, -7);
    SInt64 large = 0;
    constexpr auto kLowest = std::numeric_limits<SInt64>::min();
    EXPECT_TRUE(CFNumberGetValue(Number<SInt64>(kCFNumberSInt64Type, kLowest).get(), kCFNumberLongLongType, &large));
    EXPECT_EQ(large, kLowest);
    long index = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<long>(kCFNumberLongType, 5).get(), kCFNumberCFIndexType, &index));
    EXPECT_EQ(index, 5);
    float single = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<float>(kCFNumberFloat32Type, 1.5F).get(), kCFNumberFloatType, &single));
    EXPECT_EQ(single, 1.5F);
    double real = 0;
    EXPECT_TRUE(CFNumberGetValue(Number<double>(kCFNumberFloat64Type, 0.1).get(), kCFNumberDoubleType, &real));
    EXPECT_EQ(real, 0.1);
}

TEST(Number, TellsWhenAValueDoesNotFitAndGivesTheNearest)
{
    SInt8 tiny = 0;
    EXPECT_FALSE(CFNumberGetValue(Number<int>(kCFNumberIntType, 300).get(), kCFNumberSInt8Type, &tiny));
    EXPECT_EQ(tiny, 127);
    int whole = 0;
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, 2.5).get(), kCFNumberIntType, &whole));
    EXPECT_EQ(whole, 2);
    SInt64 large = 0;
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, 1e300).get(), kCFNumberSInt64Type, &large));
    EXPECT_EQ(large, std::numeric_limits<SInt64>::max());
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, -1e300).get(), kCFNumberSInt64Type, &large));
    EXPECT_EQ(large, std::numeric_limits<SInt64>::min());
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, 9223372036854775808.0).get(), kCFNumberSInt64Type,
                                  &large));
    EXPECT_EQ(large, std::numeric_limits<SInt64>::max());
    EXPECT_TRUE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, -9223372036854775808.0).get(), kCFNumberSInt64Type,
                                 &large));
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, std::nan("")).get(), kCFNumberIntType, &whole));
    double real = 0;
    EXPECT_FALSE(CFNumberGetValue(Number<SInt64>(kCFNumberSInt64Type, std::numeric_limits<SInt64>::max()).get(),
                                  kCFNumberDoubleType, &real));
    float single = 0;
    EXPECT_FALSE(CFNumberGetValue(Number<double>(kCFNumberDoubleType, 1e300).get(), kCFNumberFloatType, &single));
}

TEST(Number, RefusesNonsense)
{
    int value = 0;
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberIntType, nullptr), nullptr);
    EXPECT_EQ(CFNumberCreate(nullptr, 99, &value), nullptr);
    EXPECT_FALSE(CFNumberGetValue(nullptr, kCFNumberIntType, &value));
    EXPECT_FALSE(CFNumberGetValue(Number<int>(kCFNumberIntType, 1).get(), 99, &value));
    EXPECT_FALSE(CFNumberGetValue(Number<int>(kCFNumberIntType, 1).get(), kCFNumberIntType, nullptr));
    EXPECT_FALSE(CFNumberIsFloatType(nullptr));
}

TEST(Number, EqualNumbersHaveEqualHashesWhateverTheirTypes)
{
    const auto whole = Number<int>(kCFNumberIntType, 2);
    const auto real = Number<double>(kCFNumberDoubleType, 2.0);
    EXPECT_TRUE(CFEqual(whole.get(), real.get()));
    EXPECT_EQ(CFHash(whole.get()), CFHash(real.get()));
    const auto zero = Number<double>(kCFNumberDoubleType, 0.0);
    const auto minusZero = Number<double>(kCFNumberDoubleType, -0.0);
    EXPECT_TRUE(CFEqual(zero.get(), minusZero.get()));
    EXPECT_EQ(CFHash(zero.get()), CFHash(minusZero.get()));
    EXPECT_TRUE(CFNumberIsFloatType(real.get()));
    EXPECT_FALSE(CFNumberIsFloatType(whole.get()));
}

TEST(Number, DescribesItselfShortly)
{
    EXPECT_EQ(Describe(Number<double>(kCFNumberDoubleType, 0.1).get()), "0.1");
    EXPECT_EQ(Describe(Number<double>(kCFNumberDoubleType, 1.0 / 3).get()), "0.33333333333333331");
    EXPECT_EQ(Describe(Number<int>(kCFNumberIntType, -3).get()), "-3");
}

TEST(Truth, HasTwoObjects)
{
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
    EXPECT_FALSE(CFBooleanGetValue(nullptr));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
    EXPECT_EQ(Describe(kCFBooleanTrue), "true");
}

TEST(Date, CountsFrom2001)
{
    const auto date = Own(CFDateCreate(nullptr, 0));
    EXPECT_EQ(Describe(date.get()), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(CFDateGetAbsoluteTime(Own(CFDateCreate(nullptr, -1.5)).get()), -1.5);
    EXPECT_TRUE(CFEqual(date.get(), Own(CFDateCreate(nullptr, 0)).get()));
    EXPECT_EQ(CFHash(date.get()), CFHash(Own(CFDateCreate(nullptr, 0)).get()));
    EXPECT_EQ(CFDateGetAbsoluteTime(nullptr), 0);
    EXPECT_EQ(Describe(Own(CFDateCreate(nullptr, std::nan(""))).get()), "");
}
