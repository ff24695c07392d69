// tests/corefoundation/PreferencesTest.cpp
//
// The calls themselves: scopes, domains, pending changes.
#include <gtest/gtest.h>

#include "tests/support/PreferencesSupport.h"
#include <CVPlatform/CVPlatform.h>

namespace {

class Preferences : public CPreferencesTest {
protected:
    static std::string Take(CFPropertyListRef value)
    {
        const std::string text = TextOf(static_cast<CFStringRef>(value));
        CFRelease(value);
        return text;
    }
    static std::string Copy(CFStringRef key, CFStringRef user, CFStringRef host = kCFPreferencesCurrentHost)
    {
        return Take(CFPreferencesCopyValue(key, CFSTR("an.app"), user, host));
    }
    static void Set(CFStringRef key, CFPropertyListRef value, CFStringRef user,
                    CFStringRef host = kCFPreferencesCurrentHost)
    {
        CFPreferencesSetValue(key, value, CFSTR("an.app"), user, host);
    }
    static bool Synchronize(CFStringRef user, CFStringRef host = kCFPreferencesCurrentHost)
    {
        return CFPreferencesSynchronize(CFSTR("an.app"), user, host) != 0;
    }
};

TEST_F(Preferences, ScopesAreApart)
{
    const CFStringRef users[] = {kCFPreferencesAnyUser, kCFPreferencesCurrentUser};
    const CFStringRef hosts[] = {kCFPreferencesAnyHost, kCFPreferencesCurrentHost};
    int number = 0;
    for (const CFStringRef user : users) {
        for (const CFStringRef host : hosts) {
            const CFStringRef value = MakeString(std::to_string(++number));
            Set(CFSTR("k"), value, user, host);
            EXPECT_TRUE(Synchronize(user, host));
            CFRelease(value);
        }
    }
    number = 0;
    for (const CFStringRef user : users) {
        for (const CFStringRef host : hosts)
            EXPECT_EQ(Copy(CFSTR("k"), user, host), std::to_string(++number));
    }
}

TEST_F(Preferences, ASetValueIsSeenAtOnceAndOnDiskAfterSynchronize)
{
    Set(CFSTR("k"), CFSTR("v"), kCFPreferencesCurrentUser);
    EXPECT_EQ(Copy(CFSTR("k"), kCFPreferencesCurrentUser), "v");
    EXPECT_EQ(RunInChild([] { return Copy(CFSTR("k"), kCFPreferencesCurrentUser) == "(null)" ? 0 : 1; }), 0)
        << "a child begins anew";
    EXPECT_FALSE(FileExists(UserFile("an.app")));
    EXPECT_TRUE(Synchronize(kCFPreferencesCurrentUser));
    EXPECT_TRUE(FileExists(UserFile("an.app")));
}

TEST_F(Preferences, ManyChangesTakeOneWrite)
{
    Set(CFSTR("a"), CFSTR("1"), kCFPreferencesCurrentUser);
    Set(CFSTR("b"), CFSTR("1"), kCFPreferencesCurrentUser);
    Set(CFSTR("b"), CFSTR("2"), kCFPreferencesCurrentUser);
    Set(CFSTR("c"), CFSTR("1"), kCFPreferencesCurrentUser);
    Set(CFSTR("c"), nullptr, kCFPreferencesCurrentUser);
    EXPECT_TRUE(Synchronize(kCFPreferencesCurrentUser));
    EXPECT_EQ(RunInChild([] {
                  return Copy(CFSTR("a"), kCFPreferencesCurrentUser) == "1" &&
                                 Copy(CFSTR("b"), kCFPreferencesCurrentUser) == "2" &&
                                 Copy(CFSTR("c"), kCFPreferencesCurrentUser) == "(null)"
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(Preferences, AValueChangedAfterwardsByItsGiverIsKeptAsItWas)
{
    const CFMutableDictionaryRef given =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(given, CFSTR("k"), CFSTR("before"));
    Set(CFSTR("d"), given, kCFPreferencesCurrentUser);
    CFDictionarySetValue(given, CFSTR("k"), CFSTR("after"));
    const auto kept = static_cast<CFDictionaryRef>(
        CFPreferencesCopyValue(CFSTR("d"), CFSTR("an.app"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(TextOf(static_cast<CFStringRef>(CFDictionaryGetValue(kept, CFSTR("k")))), "before");
    CFRelease(given);
    CFRelease(kept);
}

TEST_F(Preferences, WhatIsNoPropertyListIsNotSet)
{
    const CFURLRef url = CFURLCreateWithString(nullptr, CFSTR("http://example.com/"), nullptr);
    Set(CFSTR("k"), CFSTR("before"), kCFPreferencesCurrentUser);
    Set(CFSTR("k"), url, kCFPreferencesCurrentUser);
    EXPECT_EQ(Copy(CFSTR("k"), kCFPreferencesCurrentUser), "before");
    CFRelease(url);
}

TEST_F(Preferences, NullArgumentsAndUnknownScopesChangeNothing)
{
    CFPreferencesSetValue(nullptr, CFSTR("v"), CFSTR("an.app"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    CFPreferencesSetValue(CFSTR("k"), CFSTR("v"), nullptr, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    Set(CFSTR("k"), CFSTR("v"), nullptr);
    Set(CFSTR("k"), CFSTR("v"), CFSTR("somebody"));
    EXPECT_FALSE(Synchronize(CFSTR("somebody")));
    EXPECT_FALSE(Synchronize(nullptr));
    EXPECT_FALSE(CFPreferencesSynchronize(nullptr, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(CFPreferencesCopyValue(nullptr, CFSTR("an.app"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost),
              nullptr);
    EXPECT_EQ(Copy(CFSTR("k"), kCFPreferencesCurrentUser), "(null)");
    EXPECT_EQ(CVPreferencesCopyPath(nullptr, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost), nullptr);
}

TEST_F(Preferences, ScopesAreKnownByTheirText)
{
    Set(CFSTR("k"), CFSTR("v"), CFSTR("kCFPreferencesCurrentUser"), CFSTR("kCFPreferencesCurrentHost"));
    EXPECT_EQ(Copy(CFSTR("k"), kCFPreferencesCurrentUser), "v");
}

TEST_F(Preferences, KeyListHoldsStoredAndPendingKeys)
{
    const auto count = [] {
        const CFArrayRef keys =
            CFPreferencesCopyKeyList(CFSTR("an.app"), kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
        const CFIndex number = keys ? CFArrayGetCount(keys) : -1;
        CFRelease(keys);
        return number;
    };
    EXPECT_EQ(count(), -1) << "none is null";
    Set(CFSTR("a"), CFSTR("1"), kCFPreferencesCurrentUser);
    Set(CFSTR("b"), CFSTR("1"), kCFPreferencesCurrentUser);
    EXPECT_EQ(count(), 2);
    EXPECT_TRUE(Synchronize(kCFPreferencesCurrentUser));
    Set(CFSTR("a"), nullptr, kCFPreferencesCurrentUser);
    Set(CFSTR("b"), CFSTR("2"), kCFPreferencesCurrentUser);
    Set(CFSTR("c"), CFSTR("1"), kCFPreferencesCurrentUser);
    EXPECT_EQ(count(), 2);
}

TEST_F(Preferences, AppCallsSearchTheScopesInOrder)
{
    const CFStringRef app = CFSTR("an.app");
    const auto appValue = [&] {
        return Take(CFPreferencesCopyAppValue(CFSTR("k"), app));
    };
    EXPECT_EQ(appValue(), "(null)");
    CFPreferencesSetValue(CFSTR("k"), CFSTR("any"), kCFPreferencesAnyApplication, kCFPreferencesAnyUser,
                          kCFPreferencesAnyHost);
    EXPECT_EQ(appValue(), "any");
    Set(CFSTR("k"), CFSTR("machine"), kCFPreferencesAnyUser);
    EXPECT_EQ(appValue(), "machine");
    CFPreferencesSetAppValue(CFSTR("k"), CFSTR("user"), app);
    EXPECT_EQ(appValue(), "user");
    Set(CFSTR("k"), CFSTR("user and host"), kCFPreferencesCurrentUser);
    EXPECT_EQ(appValue(), "user and host");
    EXPECT_TRUE(CFPreferencesAppSynchronize(app));
    EXPECT_EQ(RunInChild([&] { return appValue() == "user and host" ? 0 : 1; }), 0);
    EXPECT_FALSE(CFPreferencesAppSynchronize(nullptr));
    EXPECT_EQ(CFPreferencesCopyAppValue(nullptr, app), nullptr);
}

TEST_F(Preferences, TheCurrentApplicationIsTheProgram)
{
    CFPreferencesSetAppValue(CFSTR("k"), CFSTR("v"), kCFPreferencesCurrentApplication);
    EXPECT_EQ(Take(CFPreferencesCopyAppValue(CFSTR("k"), CFSTR("PreferencesTest"))), "v");
}

TEST_F(Preferences, ManyDomainsDoNotPileUp)
{
    for (int number = 0; number < 10000; ++number) {
        const CFStringRef domain = MakeString("domain." + std::to_string(number));
        EXPECT_EQ(CFPreferencesCopyValue(CFSTR("k"), domain, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost),
                  nullptr);
        CFRelease(domain);
    }
    Set(CFSTR("k"), CFSTR("v"), kCFPreferencesCurrentUser);
    EXPECT_TRUE(Synchronize(kCFPreferencesCurrentUser));
}

} // namespace
