// tests/corefoundation/ObjectTest.cpp
//
// What all objects share: counts, kinds, equality, descriptions.
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "tests/support/Owner.h"

TEST(Object, CountsItsReferences)
{
    const auto string = Own(MakeString("counted"));
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
    EXPECT_EQ(CFRetain(string.get()), string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2);
    CFRelease(string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(Object, CountsFromManyThreads)
{
    const auto string = Own(MakeString("counted"));
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&string] {
            for (int round = 0; round < 10000; ++round)
                CFRelease(CFRetain(string.get()));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(Object, NullIsAnsweredQuietly)
{
    EXPECT_EQ(CFRetain(nullptr), nullptr);
    CFRelease(nullptr);
    EXPECT_EQ(CFGetRetainCount(nullptr), 0);
    EXPECT_EQ(CFGetTypeID(nullptr), 0U);
    EXPECT_EQ(CFHash(nullptr), 0U);
    EXPECT_TRUE(CFEqual(nullptr, nullptr));
    EXPECT_FALSE(CFEqual(nullptr, kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, nullptr));
    EXPECT_EQ(TextOf(Own(CFCopyDescription(nullptr)).get()), "(null)");
}

TEST(Object, EveryKindHasItsOwnNumber)
{
    const std::set<CFTypeID> kinds = {CFStringGetTypeID(),     CFDataGetTypeID(),   CFArrayGetTypeID(),
                                      CFDictionaryGetTypeID(), CFNumberGetTypeID(), CFBooleanGetTypeID(),
                                      CFDateGetTypeID(),       CFURLGetTypeID(),    CFBundleGetTypeID()};
    EXPECT_EQ(kinds.size(), 9U);
    EXPECT_EQ(kinds.count(0), 0U);
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(CFSTR("a")), CFStringGetTypeID());
}

// A program holds copies of these pointers, made before any initialiser of the layer has run.
TEST(Object, ConstantsAreThereForPrograms)
{
    ASSERT_NE(kCFBooleanTrue, nullptr);
    ASSERT_NE(kCFBooleanFalse, nullptr);
    EXPECT_NE(kCFBooleanTrue, kCFBooleanFalse);
    EXPECT_NE(kCFTypeArrayCallBacks.retain, nullptr);
}

TEST(Object, ConstantsAreNeverFreed)
{
    for (int round = 0; round < 10; ++round) {
        CFRelease(CFSTR("constant"));
        CFRelease(kCFBooleanTrue);
    }
    EXPECT_EQ(TextOf(CFSTR("constant")), "constant");
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
}

TEST(Object, DifferentKindsAreNeverEqual)
{
    const SInt32 one = 1;
    const auto number = Own(CFNumberCreate(nullptr, kCFNumberSInt32Type, &one));
    EXPECT_FALSE(CFEqual(number.get(), kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(CFSTR("1"), number.get()));
}

TEST(Object, ShowWritesToStandardError)
{
    testing::internal::CaptureStderr();
    CFShow(CFSTR("shown"));
    CFShow(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "shown\n(null)\n");
}
