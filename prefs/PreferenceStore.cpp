// prefs/PreferenceStore.cpp
//
// The store of small settings that all plug-ins share, and the one setting of the component's own.
#include "frame/BaseProductManager.h"
#include "frame/Owned.h"

namespace {

const char kCommonSection[] = "Common";
const char kKnobKey[] = "Knobs Drag Vertical";

CFStringRef MakeText(const char* utf8)
{
    return utf8 ? CFStringCreateWithCString(kCFAllocatorDefault, utf8, kCFStringEncodingUTF8) : nullptr;
}

// Answers whether memory lacks for `utf8`, rather than that it is not valid: any bytes are a text in
// Mac OS Roman.
bool LacksMemoryFor(const char* utf8)
{
    const COwned<CFStringRef> any(CFStringCreateWithCString(kCFAllocatorDefault, utf8, kCFStringEncodingMacRoman));
    const COwned<CFStringRef> again(any ? MakeText(utf8) : nullptr);
    return !any || again;
}

// Names the domain of a section; the caller releases it.
CFStringRef MakeDomain(const char* section)
{
    enum { kPrefix = 12, kLongest = 258 };
    char identifier[kPrefix + CBaseProductManager::kTextSize] = "com.corvane.";
    CBaseProductManager::Normalize(identifier + kPrefix, section);
    // Cut on purpose: a longer section shares its beginning's domain.
    identifier[kLongest] = '\0';
    return MakeText(identifier);
}

bool WriteValue(CFStringRef domain, CFStringRef key, CFStringRef value, CFStringRef user)
{
    CFPreferencesSetValue(key, value, domain, user, kCFPreferencesCurrentHost);
    return CFPreferencesSynchronize(domain, user, kCFPreferencesCurrentHost) != 0;
}

CFPropertyListRef CopyValue(CFStringRef domain, CFStringRef key, CFStringRef user)
{
    // The result is of no use here: what cannot be synchronised may still be read.
    (void)CFPreferencesSynchronize(domain, user, kCFPreferencesCurrentHost);
    return CFPreferencesCopyValue(key, domain, user, kCFPreferencesCurrentHost);
}

// Answers what a value reads as, the caller's; null for what has no text. Other programs may have
// stored a number or a boolean.
CFStringRef CopyText(CFPropertyListRef value)
{
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID())
        return static_cast<CFStringRef>(CFRetain(value));
    if (type == CFBooleanGetTypeID())
        return MakeText(CFBooleanGetValue(static_cast<CFBooleanRef>(value)) ? "true" : "false");
    if (type == CFNumberGetTypeID())
        return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@"), value);
    return nullptr;
}

} // namespace

void CBaseProductManager::Normalize(char* output, const char* input)
{
    char* const last = output + kTextSize - 1;
    for (; *input && output < last; ++input) {
        const char byte = *input;
        const bool upper = byte >= 'A' && byte <= 'Z';
        const bool kept = upper || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '.' ||
                          byte == '_' || byte == '-';
        if (kept)
            *output++ = upper ? static_cast<char>(byte - 'A' + 'a') : byte;
        *output = '\0';
    }
}

bool CBaseProductManager::SetRegistryKey(const char* section, const char* key, const char* value)
{
    if (!section || !key)
        return false;
    const COwned<CFStringRef> domain(MakeDomain(section));
    const COwned<CFStringRef> name(MakeText(key));
    const COwned<CFStringRef> text(MakeText(value)); // null removes the key
    if (!domain || !name || (value && !text && LacksMemoryFor(value)))
        return false;
    return WriteValue(domain.Get(), name.Get(), text.Get(), kCFPreferencesAnyUser) ||
           WriteValue(domain.Get(), name.Get(), text.Get(), kCFPreferencesCurrentUser);
}

bool CBaseProductManager::GetRegistryKey(const char* section, const char* key, char* buffer, int size)
{
    if (!section || !key || !buffer || size <= 0)
        return false;
    const COwned<CFStringRef> domain(MakeDomain(section));
    const COwned<CFStringRef> name(MakeText(key));
    if (!domain || !name)
        return false;
    const CFStringRef users[] = {kCFPreferencesAnyUser, kCFPreferencesCurrentUser};
    for (const CFStringRef user : users) {
        const COwned<CFPropertyListRef> value(CopyValue(domain.Get(), name.Get(), user));
        const COwned<CFStringRef> text(value ? CopyText(value.Get()) : nullptr);
        if (text)
            return CFStringGetCString(text.Get(), buffer, size, kCFStringEncodingUTF8) != 0;
    }
    return false;
}

bool CBaseProductManager::KnobsDragVertical()
{
    return LoadDragFlag();
}

void CBaseProductManager::SetDragVertical(bool flag)
{
    StoreDragFlag(flag);
    (void)SetRegistryKey(kCommonSection, kKnobKey, flag ? "yes" : "no");
}
