// platform/corefoundation/Preferences.cpp
//
// The calls: arguments, scopes and the order in which scopes are searched.
#include <unistd.h>

#include <climits>
#include <optional>
#include <string>
#include <utility>

#include "platform/base/Guard.h"
#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/PreferencesStore.h"
#include "platform/corefoundation/PropertyListBinary.h"
#include "platform/corefoundation/String.h"
#include <CVPlatform/CVPlatform.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFPreferences.h>

namespace {
const CConstantString g_anyUser("kCFPreferencesAnyUser");
const CConstantString g_currentUser("kCFPreferencesCurrentUser");
const CConstantString g_anyHost("kCFPreferencesAnyHost");
const CConstantString g_currentHost("kCFPreferencesCurrentHost");
const CConstantString g_anyApplication("kCFPreferencesAnyApplication");
const CConstantString g_currentApplication("kCFPreferencesCurrentApplication");
} // namespace

const CFStringRef kCFPreferencesAnyUser = g_anyUser.Get();
const CFStringRef kCFPreferencesCurrentUser = g_currentUser.Get();
const CFStringRef kCFPreferencesAnyHost = g_anyHost.Get();
const CFStringRef kCFPreferencesCurrentHost = g_currentHost.Get();
const CFStringRef kCFPreferencesAnyApplication = g_anyApplication.Get();
const CFStringRef kCFPreferencesCurrentApplication = g_currentApplication.Get();

namespace {

// Its leading dot keeps it apart: no application's identifier begins with one.
constexpr std::string_view kDomainOfAny = ".GlobalPreferences";

constexpr struct {
    bool ofAnyApplication;
    PreferencesScope scope;
} kSearched[] = {
    {false, {PreferencesUser::Current, PreferencesHost::Current}},
    {false, {PreferencesUser::Current, PreferencesHost::Any}},
    {true, {PreferencesUser::Current, PreferencesHost::Current}},
    {true, {PreferencesUser::Current, PreferencesHost::Any}},
    {false, {PreferencesUser::Any, PreferencesHost::Current}},
    {false, {PreferencesUser::Any, PreferencesHost::Any}},
    {true, {PreferencesUser::Any, PreferencesHost::Current}},
    {true, {PreferencesUser::Any, PreferencesHost::Any}},
};

bool Is(CFStringRef given, CFStringRef constant) noexcept
{
    return given == constant || (given && given->Utf8() == constant->Utf8());
}

// Which of two names is given; nullopt for neither. Nearly always it is the constant itself.
template <typename Name>
std::optional<Name> Which(CFStringRef given, CFStringRef anyName, CFStringRef currentName) noexcept
{
    if (given == anyName)
        return Name::Any;
    if (Is(given, currentName))
        return Name::Current;
    return Is(given, anyName) ? std::optional<Name>(Name::Any) : std::nullopt;
}

std::optional<PreferencesScope> ScopeOf(CFStringRef userName, CFStringRef hostName) noexcept
{
    const auto user = Which<PreferencesUser>(userName, kCFPreferencesAnyUser, kCFPreferencesCurrentUser);
    const auto host = Which<PreferencesHost>(hostName, kCFPreferencesAnyHost, kCFPreferencesCurrentHost);
    if (!user || !host)
        return std::nullopt;
    return PreferencesScope{*user, *host};
}

std::string FindProgramName()
{
    const CFDictionaryRef properties = CFBundleGetInfoDictionary(CFBundleGetMainBundle());
    const CFTypeRef identifier = CFDictionaryGetValue(properties, CFSTR("CFBundleIdentifier"));
    if (IsOfType(identifier, TypeId::String))
        return std::string(static_cast<CFStringRef>(identifier)->Utf8());
    char path[PATH_MAX] = "";
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string_view program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return std::string(program.substr(program.rfind('/') + 1));
}

std::string_view DomainOf(CFStringRef applicationID)
{
    if (Is(applicationID, kCFPreferencesAnyApplication))
        return kDomainOfAny;
    if (!Is(applicationID, kCFPreferencesCurrentApplication))
        return applicationID->Utf8();
    static const std::string& name = *new std::string(FindProgramName());
    return name;
}

std::shared_ptr<CPreferencesDomain> FindDomain(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    const auto scope = ScopeOf(userName, hostName);
    return applicationID && scope ? CPreferencesStore::Get().Find(DomainOf(applicationID), *scope) : nullptr;
}

// A change that could not even be noted (no memory, no home just now): this thread's next
// synchronisation must not say that all is on disk.
thread_local bool t_hasLostChange = false;

// Answers an object that its giver cannot change afterwards; empty where it is no property list.
CRef<const CObject> Frozen(CFPropertyListRef value)
{
    const CObject* const object = ObjectOf(value);
    if (object->Type() == TypeId::String)
        return CRef<const CObject>::Share(object); // without memory, whose lack would look like no list
    if (object->Type() != TypeId::Array && object->Type() != TypeId::Dictionary)
        return WriteBinaryPropertyList(*object) ? CRef<const CObject>::Share(object) : CRef<const CObject>();
    const auto bytes = WriteBinaryPropertyList(*object);
    return bytes ? ReadBinaryPropertyList(*bytes) : CRef<const CObject>();
}

} // namespace

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID, CFStringRef userName,
                           CFStringRef hostName)
{
    if (!key || !applicationID || !ScopeOf(userName, hostName))
        return;
    const bool done = Guarded<bool>(false, [&] {
        const auto kept = value ? Frozen(value) : CRef<const CObject>();
        if (value && !kept)
            return true; // no property list: nothing to do
        const auto domain = FindDomain(applicationID, userName, hostName);
        if (domain)
            domain->Set(CRef<const __CFString>::Share(key), kept);
        return domain != nullptr;
    });
    t_hasLostChange = t_hasLostChange || !done;
}

CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef applicationID, CFStringRef userName,
                                         CFStringRef hostName)
{
    if (!key)
        return nullptr;
    return Guarded<CFPropertyListRef>(nullptr, [&]() -> CFPropertyListRef {
        const auto domain = FindDomain(applicationID, userName, hostName);
        return domain ? domain->Copy(key).Detach() : nullptr;
    });
}

Boolean CFPreferencesSynchronize(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    return Guarded<Boolean>(false, [&]() -> Boolean {
        const auto scope = ScopeOf(userName, hostName);
        if (!applicationID || !scope)
            return false;
        const auto found = CPreferencesStore::Get().FindWithNews(DomainOf(applicationID), *scope);
        const bool synchronized = found.domain && found.domain->Synchronize(found.news);
        return !std::exchange(t_hasLostChange, false) && synchronized;
    });
}

CFArrayRef CFPreferencesCopyKeyList(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    return Guarded<CFArrayRef>(nullptr, [&]() -> CFArrayRef {
        const auto domain = FindDomain(applicationID, userName, hostName);
        auto keys = domain ? domain->CopyKeys() : CRef<const __CFArray>();
        return keys && !keys->values.empty() ? keys.Detach() : nullptr;
    });
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID)
{
    CFPreferencesSetValue(key, value, applicationID, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID)
{
    if (!key || !applicationID)
        return nullptr;
    return Guarded<CFPropertyListRef>(nullptr, [&]() -> CFPropertyListRef {
        for (const auto& searched : kSearched) {
            const auto domain = CPreferencesStore::Get().Find(
                searched.ofAnyApplication ? kDomainOfAny : DomainOf(applicationID), searched.scope);
            auto value = domain ? domain->Copy(key) : CRef<const CObject>();
            if (value)
                return value.Detach();
        }
        return nullptr;
    });
}

Boolean CFPreferencesAppSynchronize(CFStringRef applicationID)
{
    if (!applicationID)
        return false;
    return Guarded<Boolean>(false, [&]() -> Boolean {
        bool all = true;
        for (const auto& searched : kSearched) {
            const auto found = CPreferencesStore::Get().FindWithNews(
                searched.ofAnyApplication ? kDomainOfAny : DomainOf(applicationID), searched.scope);
            all = found.domain && found.domain->Synchronize(found.news) && all;
        }
        return !std::exchange(t_hasLostChange, false) && all;
    });
}

CFStringRef CVPreferencesCopyPath(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        const auto scope = ScopeOf(userName, hostName);
        const auto place =
            applicationID && scope ? FindPreferencesPlace(DomainOf(applicationID), *scope) : std::nullopt;
        return place ? __CFString::Create(place->file).Detach() : nullptr;
    });
}
