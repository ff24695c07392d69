// tests/corefoundation/CollectionsTest.cpp
//
// Arrays and dictionaries: what they retain, what they refuse, when they are equal.
#include <gtest/gtest.h>

#include "tests/support/Owner.h"

namespace {

Owner<CFArrayRef> Array(std::vector<const void*> values)
{
    return Own(CFArrayCreate(nullptr, values.data(), static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
}

Owner<CFMutableDictionaryRef> Dictionary()
{
    return Own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

int g_retained = 0;
int g_released = 0;

const void* CountRetain(CFAllocatorRef, const void* value)
{
    ++g_retained;
    return value;
}

void CountRelease(CFAllocatorRef, const void*)
{
    ++g_released;
}

} // namespace

TEST(Array, RetainsWhatItHolds)
{
    const auto string = Own(MakeString("held"));
    {
        const auto array = Array({string.get(), kCFBooleanTrue, string.get()});
        EXPECT_EQ(CFGetRetainCount(string.get()), 3);
        EXPECT_EQ(CFArrayGetCount(array.get()), 3);
        EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), kCFBooleanTrue);
        EXPECT_EQ(CFGetRetainCount(string.get()), 3) << "getting does not retain";
    }
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(Array, WithoutCallBacksHoldsPlainPointers)
{
    const void* values[] = {reinterpret_cast<const void*>(1), nullptr};
    const auto array = Own(CFArrayCreate(nullptr, values, 2, nullptr));
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 0), values[0]);
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), nullptr);
    EXPECT_FALSE(TextOf(Own(CFCopyDescription(array.get())).get()).empty());
}

TEST(Array, CallsTheCallBacksItIsGiven)
{
    g_retained = g_released = 0;
    const CFArrayCallBacks callBacks = {0, CountRetain, CountRelease, nullptr, nullptr};
    const void* values[] = {&g_retained, &g_released};
    CFRelease(CFArrayCreate(nullptr, values, 2, &callBacks));
    EXPECT_EQ(g_retained, 2);
    EXPECT_EQ(g_released, 2);
}

TEST(Array, RefusesNonsense)
{
    const auto string = Own(MakeString("a"));
    const void* values[] = {string.get(), nullptr};
    EXPECT_EQ(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks), nullptr) << "null is no object";
    EXPECT_EQ(CFGetRetainCount(string.get()), 1) << "and nothing stays retained";
    EXPECT_EQ(CFArrayCreate(nullptr, nullptr, 1, nullptr), nullptr);
    EXPECT_EQ(CFArrayCreate(nullptr, values, -1, nullptr), nullptr);
    const auto array = Array({string.get()});
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), nullptr);
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), -1), nullptr);
    EXPECT_EQ(CFArrayGetCount(nullptr), 0);
    EXPECT_EQ(CFArrayGetValueAtIndex(nullptr, 0), nullptr);
}

TEST(Array, IsEqualByContent)
{
    const auto one = Array({Own(MakeString("a")).get(), kCFBooleanTrue});
    const auto two = Array({Own(MakeString("a")).get(), kCFBooleanTrue});
    EXPECT_TRUE(CFEqual(one.get(), two.get()));
    EXPECT_EQ(CFHash(one.get()), CFHash(two.get()));
    EXPECT_FALSE(CFEqual(one.get(), Array({kCFBooleanTrue, Own(MakeString("a")).get()}).get()));
    EXPECT_FALSE(CFEqual(one.get(), Array({}).get()));
}

TEST(Dictionary, FindsByContentAndRetains)
{
    const auto key = Own(MakeString("key"));
    const auto value = Own(MakeString("value"));
    {
        const auto dictionary = Dictionary();
        CFDictionarySetValue(dictionary.get(), key.get(), value.get());
        EXPECT_EQ(CFGetRetainCount(key.get()), 2);
        EXPECT_EQ(CFGetRetainCount(value.get()), 2);
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("key")), value.get());
        EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), CFSTR("key")));
        EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), CFSTR("other")));
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("other")), nullptr);
        EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    }
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
}

TEST(Dictionary, SettingAgainReplacesTheValueAndKeepsTheKey)
{
    const auto first = Own(MakeString("key"));
    const auto second = Own(MakeString("key"));
    const auto old = Own(MakeString("old"));
    const auto dictionary = Dictionary();
    CFDictionarySetValue(dictionary.get(), first.get(), old.get());
    CFDictionarySetValue(dictionary.get(), second.get(), kCFBooleanTrue);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), first.get()), kCFBooleanTrue);
    EXPECT_EQ(CFGetRetainCount(old.get()), 1);
    EXPECT_EQ(CFGetRetainCount(second.get()), 1);
    CFDictionarySetValue(dictionary.get(), first.get(), CFDictionaryGetValue(dictionary.get(), first.get()));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), first.get()), kCFBooleanTrue);
}

TEST(Dictionary, SettingAValueToItselfKeepsItAlive)
{
    const auto dictionary = Dictionary();
    CFDictionarySetValue(dictionary.get(), CFSTR("key"), Own(MakeString("only here")).get());
    CFDictionarySetValue(dictionary.get(), CFSTR("key"), CFDictionaryGetValue(dictionary.get(), CFSTR("key")));
    EXPECT_EQ(TextOf(static_cast<CFStringRef>(CFDictionaryGetValue(dictionary.get(), CFSTR("key")))), "only here");
}

TEST(Dictionary, FromListsTheFirstOfEqualKeysStays)
{
    const void* keys[] = {CFSTR("a"), CFSTR("b"), CFSTR("a")};
    const void* values[] = {kCFBooleanTrue, kCFBooleanFalse, kCFBooleanFalse};
    const auto dictionary = Own(
        CFDictionaryCreate(nullptr, keys, values, 3, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 2);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("a")), kCFBooleanTrue);
    const void* gotKeys[2] = {};
    const void* gotValues[2] = {};
    CFDictionaryGetKeysAndValues(dictionary.get(), gotKeys, gotValues);
    for (int index = 0; index < 2; ++index)
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), gotKeys[index]), gotValues[index]);
    CFDictionaryGetKeysAndValues(dictionary.get(), nullptr, nullptr);
}

TEST(Dictionary, AnImmutableOneDoesNotChange)
{
    const auto dictionary = Own(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                   &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(const_cast<CFMutableDictionaryRef>(dictionary.get()), CFSTR("a"), kCFBooleanTrue);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
}

TEST(Dictionary, WithoutCallBacksComparesPointers)
{
    const auto dictionary = Own(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    CFDictionarySetValue(dictionary.get(), nullptr, reinterpret_cast<const void*>(5));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), nullptr), reinterpret_cast<const void*>(5));
    const auto key = Own(MakeString("key"));
    CFDictionarySetValue(dictionary.get(), key.get(), nullptr);
    EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), key.get()));
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), Own(MakeString("key")).get()));
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
}

TEST(Dictionary, RefusesNonsense)
{
    EXPECT_EQ(CFDictionaryCreateMutable(nullptr, -1, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, 1, nullptr, nullptr), nullptr);
    const auto dictionary = Dictionary();
    CFDictionarySetValue(dictionary.get(), nullptr, kCFBooleanTrue);
    CFDictionarySetValue(dictionary.get(), kCFBooleanTrue, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
    CFDictionarySetValue(nullptr, kCFBooleanTrue, kCFBooleanTrue);
    EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
    EXPECT_EQ(CFDictionaryGetValue(nullptr, kCFBooleanTrue), nullptr);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), nullptr), nullptr);
    EXPECT_FALSE(CFDictionaryContainsKey(nullptr, nullptr));
}

TEST(Dictionary, IsEqualByContent)
{
    const auto one = Dictionary();
    const auto two = Dictionary();
    for (const auto& dictionary : {one.get(), two.get()})
        CFDictionarySetValue(dictionary, Own(MakeString("a")).get(), Own(MakeString("b")).get());
    EXPECT_TRUE(CFEqual(one.get(), two.get()));
    EXPECT_EQ(CFHash(one.get()), CFHash(two.get()));
    CFDictionarySetValue(two.get(), CFSTR("a"), CFSTR("c"));
    EXPECT_FALSE(CFEqual(one.get(), two.get()));
    CFDictionarySetValue(two.get(), CFSTR("a"), CFSTR("b"));
    CFDictionarySetValue(two.get(), CFSTR("d"), CFSTR("b"));
    EXPECT_FALSE(CFEqual(one.get(), two.get()));
}
