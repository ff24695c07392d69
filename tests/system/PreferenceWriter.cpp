// tests/system/PreferenceWriter.cpp
//
// A program that sets one key of the current user's domain "test" and prints what came of it, with
// the library of Faults.cpp preloaded or without it: PreferenceWriter KEY VALUE.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include <CoreFoundation/CoreFoundation.h>

namespace {

void Call(const char* name)
{
    const auto function = reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, name));
    if (function)
        function();
}

} // namespace

int main(int count, char** words)
{
    if (count != 3)
        return 2;
    const CFStringRef domain = CFSTR("test");
    const CFStringRef key = CFStringCreateWithCString(nullptr, words[1], kCFStringEncodingUTF8);
    const CFStringRef value = CFStringCreateWithCString(nullptr, words[2], kCFStringEncodingUTF8);
    Call("FaultsArm");
    CFPreferencesSetValue(key, value, domain, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    const bool saved = CFPreferencesSynchronize(domain, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost) != 0;
    std::printf("saved=%d", saved ? 1 : 0);
    Call("FaultsReport");
    CFPreferencesSynchronize(domain, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    const CFPropertyListRef read =
        CFPreferencesCopyValue(key, domain, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    char text[100] = "(none)";
    if (read)
        CFStringGetCString(static_cast<CFStringRef>(read), text, sizeof text, kCFStringEncodingUTF8);
    std::printf(" read=%s\n", text);
    CFRelease(key);
    CFRelease(value);
    CFRelease(read);
    return 0;
}
