// tools/quillets/Prefs.cpp
//
// `quillets prefs`: reads and writes the settings that the plug-ins share, through the same store.
#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Output.h"
#include "tools/quillets/Preferences.h"

namespace {

constexpr int kWatchPause = 100; // milliseconds; a look costs microseconds

constexpr struct {
    const char* name;
    const CFStringRef* user;
} kScopes[] = {
    {"machine", &kCFPreferencesAnyUser},
    {"user", &kCFPreferencesCurrentUser},
};

struct Request {
    std::string_view section, key, value;
    bool json = false;
    bool once = false;
    IProductManager* manager = nullptr;
};

// What each scope says of one key; absent where it says nothing.
using Found = std::optional<std::string>[2];

CFStringRef MakeText(std::string_view utf8)
{
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
                                   static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false);
}

std::string TextOf(CFStringRef text)
{
    if (!text)
        return {};
    std::string bytes(
        static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8)) + 1,
        '\0');
    if (!CFStringGetCString(text, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8))
        return {};
    bytes.resize(bytes.find('\0'));
    return bytes;
}

std::string TakeText(CFStringRef text)
{
    std::string bytes = TextOf(text);
    CFRelease(text);
    return bytes;
}

// The value as plug-ins read it; what they read as not found is described in angle brackets.
std::string Show(CFPropertyListRef value)
{
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID())
        return TextOf(static_cast<CFStringRef>(value));
    const std::string text = TakeText(CFCopyDescription(value));
    const bool readable = type == CFNumberGetTypeID() || type == CFBooleanGetTypeID();
    return readable ? text : "<no text: " + text + ">";
}

// Looks at one scope of the domain after synchronising it.
std::map<std::string, std::string> ReadScope(CFStringRef domain, CFStringRef user)
{
    std::map<std::string, std::string> values;
    (void)CFPreferencesSynchronize(domain, user, kCFPreferencesCurrentHost);
    const CFArrayRef keys = CFPreferencesCopyKeyList(domain, user, kCFPreferencesCurrentHost);
    for (CFIndex index = 0; index < CFArrayGetCount(keys); ++index) {
        const auto key = static_cast<CFStringRef>(CFArrayGetValueAtIndex(keys, index));
        const CFPropertyListRef value = CFPreferencesCopyValue(key, domain, user, kCFPreferencesCurrentHost);
        if (!value)
            continue; // removed meanwhile
        values.emplace(TextOf(key), Show(value));
        CFRelease(value);
    }
    CFRelease(keys);
    return values;
}

std::map<std::string, Found> ReadSection(std::string_view section)
{
    std::map<std::string, Found> all;
    const CFStringRef domain = MakeText(PreferenceDomain(section));
    for (std::size_t scope = 0; scope < 2; ++scope) {
        for (auto& [key, value] : ReadScope(domain, *kScopes[scope].user))
            all[key][scope] = value;
    }
    CFRelease(domain);
    return all;
}

std::string JsonOrNull(const std::optional<std::string>& text)
{
    return text ? JsonString(*text) : "null";
}

// "machine" where it has a value, for that one comes first.
const char* WinnerOf(const Found& found)
{
    return found[0] ? kScopes[0].name : found[1] ? kScopes[1].name : "none";
}

int Get(const Request& request)
{
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const bool found =
            request.manager->GetRegistryKey(std::string(request.section).c_str(), std::string(request.key).c_str(),
                                            buffer.data(), static_cast<int>(buffer.size()));
        if (found)
            break;
        if (buffer.size() >= (std::size_t{256} << 20U))
            return Failure("there is no " + std::string(request.key) + " in " + std::string(request.section));
        buffer.resize(buffer.size() * 16); // it may only have been too long
    }
    if (request.json)
        std::printf("{\"section\": %s, \"key\": %s, \"value\": %s}\n", JsonString(request.section).c_str(),
                    JsonString(request.key).c_str(), JsonString(buffer.data()).c_str());
    else
        std::printf("%s\n", buffer.data());
    return kExitOk;
}

int Write(const Request& request, const char* value)
{
    if (!request.manager->SetRegistryKey(std::string(request.section).c_str(), std::string(request.key).c_str(), value))
        return Failure("it could not be written, neither for the machine nor for the user");
    if (request.json) {
        const auto values = ReadSection(request.section);
        const auto found = values.find(std::string(request.key));
        std::printf("{\"section\": %s, \"key\": %s, \"value\": %s, \"scope\": %s}\n",
                    JsonString(request.section).c_str(), JsonString(request.key).c_str(),
                    value ? JsonString(value).c_str() : "null",
                    JsonString(found == values.end() ? "none" : WinnerOf(found->second)).c_str());
    }
    return kExitOk;
}

int Set(const Request& request)
{
    return Write(request, std::string(request.value).c_str());
}

int Delete(const Request& request)
{
    return Write(request, nullptr);
}

int List(const Request& request)
{
    const auto values = ReadSection(request.section);
    if (request.json) {
        std::printf("{\"section\": %s, \"keys\": [", JsonString(request.section).c_str());
        const char* separator = "";
        for (const auto& [key, found] : values) {
            std::printf("%s\n  {\"key\": %s, \"machine\": %s, \"user\": %s, \"wins\": \"%s\"}", separator,
                        JsonString(key).c_str(), JsonOrNull(found[0]).c_str(), JsonOrNull(found[1]).c_str(),
                        WinnerOf(found));
            separator = ",";
        }
        std::printf("]}\n");
        return kExitOk;
    }
    for (const auto& [key, found] : values) {
        std::printf("%s\n", Printable(key).c_str());
        for (std::size_t scope = 0; scope < 2; ++scope) {
            if (found[scope])
                std::printf("  %-8s %s%s\n", kScopes[scope].name, Printable(*found[scope]).c_str(),
                            kScopes[scope].name == std::string_view(WinnerOf(found)) ? "  (wins)" : "");
        }
    }
    return kExitOk;
}

int Path(const Request& request)
{
    std::string paths[2];
    for (std::size_t scope = 0; scope < 2; ++scope)
        paths[scope] = PreferencePath(request.section, *kScopes[scope].user);
    if (request.json)
        std::printf("{\"section\": %s, \"domain\": %s, \"machine\": %s, \"user\": %s}\n",
                    JsonString(request.section).c_str(), JsonString(PreferenceDomain(request.section)).c_str(),
                    JsonString(paths[0]).c_str(), JsonString(paths[1]).c_str());
    else
        std::printf("machine  %s\nuser     %s\n", Printable(paths[0]).c_str(), Printable(paths[1]).c_str());
    return kExitOk;
}

void PrintChange(const Request& request, const std::string& key, const std::optional<std::string>& value)
{
    if (request.json)
        std::printf("{\"key\": %s, \"value\": %s}\n", JsonString(key).c_str(), JsonOrNull(value).c_str());
    else if (value)
        std::printf("%s = %s\n", Printable(key).c_str(), Printable(*value).c_str());
    else
        std::printf("%s is gone\n", Printable(key).c_str());
}

// Prints what plug-ins read, then each change of it, until it is stopped or nobody listens.
int Watch(const Request& request)
{
    std::map<std::string, std::string> before;
    for (;;) {
        std::map<std::string, std::string> now;
        for (const auto& [key, found] : ReadSection(request.section)) {
            if (request.key.empty() || request.key == key)
                now.emplace(key, found[0] ? *found[0] : found[1].value_or(""));
        }
        for (const auto& [key, value] : now) {
            const auto old = before.find(key);
            if (old == before.end() || old->second != value)
                PrintChange(request, key, value);
        }
        for (const auto& [key, value] : before) {
            if (now.find(key) == now.end())
                PrintChange(request, key, std::nullopt);
        }
        if (std::fflush(stdout) != 0 || request.once)
            return kExitOk;
        before = std::move(now);
        (void)poll(nullptr, 0, kWatchPause);
    }
}

constexpr struct {
    std::string_view name;
    std::size_t leastWords, mostWords; // behind the action
    bool usesComponent;
    int (*run)(const Request& request);
} kActions[] = {
    {"get", 2, 2, true, Get},    {"set", 3, 3, true, Set},    {"delete", 2, 2, true, Delete},
    {"list", 1, 1, false, List}, {"path", 1, 1, false, Path}, {"watch", 1, 2, false, Watch},
};

int Run(const Arguments& arguments)
{
    Request request;
    // What stands behind "--" is taken as it is: a value may begin with dashes.
    std::vector<std::string_view> words = arguments.words;
    std::vector<std::string_view> literal;
    const auto dashes = std::find(words.begin(), words.end(), "--");
    if (dashes != words.end()) {
        literal.assign(dashes + 1, words.end());
        words.erase(dashes, words.end());
    }
    request.json = TakeFlag(words, "--json");
    request.once = TakeFlag(words, "--once");
    for (const std::string_view word : words) {
        if (word.substr(0, 2) == "--")
            return UsageError("prefs", "unknown option " + std::string(word));
    }
    words.insert(words.end(), literal.begin(), literal.end());
    if (words.empty())
        return UsageError("prefs", "which action?");
    for (const auto& action : kActions) {
        if (action.name != words[0])
            continue;
        const std::size_t count = words.size() - 1;
        if (count < action.leastWords || count > action.mostWords)
            return UsageError("prefs", std::string(words[0]) +
                                           (count < action.leastWords ? " needs more" : " takes fewer") + " arguments");
        request.section = words[1];
        request.key = count > 1 ? words[2] : std::string_view();
        request.value = count > 2 ? words[3] : std::string_view();
        const LoadedBundle loaded = action.usesComponent ? LoadBundle(arguments) : LoadedBundle();
        if (action.usesComponent && !loaded.manager)
            return Failure(loaded.problem);
        request.manager = loaded.manager;
        return action.run(request);
    }
    return UsageError("prefs", "there is no action " + std::string(words[0]));
}

} // namespace

std::string PreferenceDomain(std::string_view section)
{
    // As the component does: its normalised name, cut at 258 characters.
    constexpr std::size_t kLongestName = 259;
    constexpr std::size_t kLongestDomain = 258;
    std::string name;
    for (const char byte : section) {
        const bool upper = byte >= 'A' && byte <= 'Z';
        const bool kept = upper || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '.' ||
                          byte == '_' || byte == '-';
        if (kept && name.size() < kLongestName)
            name.push_back(upper ? static_cast<char>(byte - 'A' + 'a') : byte);
    }
    return ("com.corvane." + name).substr(0, kLongestDomain);
}

std::string PreferencePath(std::string_view section, CFStringRef user)
{
    const CFStringRef domain = MakeText(PreferenceDomain(section));
    std::string path = TakeText(CVPreferencesCopyPath(domain, user, kCFPreferencesCurrentHost));
    CFRelease(domain);
    return path;
}

const Command kPrefsCommand = {
    "prefs", "read, write and watch the settings that the plug-ins share",
    "Usage: quillets prefs ACTION SECTION [KEY [VALUE]] [--json]\n"
    "\n"
    "Works on the store that the plug-ins use. A value for the whole machine comes before the\n"
    "user's; a value is written for the machine where the user may, else for the user.\n"
    "\n"
    "Actions:\n"
    "  get SECTION KEY        print the value that plug-ins read\n"
    "  set SECTION KEY VALUE  write a value\n"
    "  delete SECTION KEY     remove a key where a value would be written\n"
    "  list SECTION           print every key, what each scope has and which one wins\n"
    "  path SECTION           print where the two files lie\n"
    "  watch SECTION [KEY]    print what is read now and each change, until stopped\n"
    "\n"
    "  --json                 print JSON; watch prints one object a line\n"
    "  --once                 watch prints what is read now and ends\n"
    "  --                     what follows is no option, also where it begins with dashes\n"
    "\n"
    "Exit status: 0 done, 1 there is no such key or it cannot be written, 2 wrong arguments.\n",
    Run};
