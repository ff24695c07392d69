// platform/launchservices/LaunchServices.cpp
//
// Launch Services' calls: what they are given is checked here and handed to the launcher, whose
// module is loaded when the first call needs it.
#include <LaunchServices/LaunchServices.h>

#include <dlfcn.h>

#include <algorithm>
#include <mutex>
#include <optional>

#include "platform/base/Descriptor.h"
#include "platform/base/Guard.h"
#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/Url.h"
#include "platform/files/Files.h"
#include "platform/launchservices/ILauncher.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr char kModuleName[] = "libcvplatform-launch.so";
constexpr std::string_view kLocalHost = "file://localhost/";

struct Handler {
    CVLaunchProc proc = nullptr;
    void* userData = nullptr;
};

std::mutex& g_mutex = *new std::mutex;
Handler g_handler;
ILauncher* g_launcher = nullptr;

Handler CurrentHandler()
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    return g_handler;
}

ILauncher* LoadLauncher()
{
    const char* const library = CVGetLibraryPath();
    if (!library)
        return nullptr;
    std::string path(library);
    path.erase(path.find_last_of('/') + 1);
    // It stays loaded, as the layer does: GLib could not be unloaded anyway.
    void* const module = dlopen((path + kModuleName).c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto getLauncher = module ? reinterpret_cast<GetLauncherProc>(dlsym(module, kGetLauncherName)) : nullptr;
    return getLauncher ? getLauncher() : nullptr;
}

ILauncher* LoadedLauncher()
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    return g_launcher;
}

// Null on a machine without GLib and where descriptors are short; that is looked at anew each time,
// for things may change.
ILauncher* Launcher()
{
    if (!HasSpareDescriptors(kDescriptorsToBegin))
        return nullptr;
    if (ILauncher* const known = LoadedLauncher())
        return known;
    ILauncher* const loaded = LoadLauncher(); // not under the lock: initialisers of GLib run in here
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_launcher = loaded;
    return loaded;
}

std::optional<LaunchItem> ItemOf(CFTypeRef object)
{
    if (!IsOfType(object, TypeId::Url))
        return std::nullopt;
    const auto absolute = CRef<const __CFURL>::Adopt(CFURLCopyAbsoluteURL(static_cast<CFURLRef>(object)));
    if (!absolute)
        return std::nullopt;
    std::string uri(absolute->string->Utf8());
    if (!SplitUrl(uri).scheme)
        return std::nullopt;
    // Many programs know no host but the empty one.
    if (uri.compare(0, kLocalHost.size(), kLocalHost) == 0)
        uri.replace(0, kLocalHost.size(), "file:///");
    return LaunchItem{uri, PathOfUrl(absolute.Get()).value_or("")};
}

OSStatus StatusOf(Launch launch)
{
    switch (launch) {
    case Launch::Started:
        return noErr;
    case Launch::NoApplication:
        return kLSApplicationNotFoundErr;
    case Launch::Failed:
        break;
    }
    return kLSNoExecutableErr;
}

// Gives the application of `entry` to a caller who may want it in either form.
OSStatus AnswerApplication(const std::string& entry, FSRef* outAppRef, CFURLRef* outAppURL)
{
    const auto ref = RefOfPath(entry);
    if (!ref)
        return kLSApplicationNotFoundErr;
    auto url = UrlOfPath(entry, false);
    if (outAppRef)
        *outAppRef = *ref;
    if (outAppURL)
        *outAppURL = url.Detach();
    return noErr;
}

OSStatus OpenItems(const std::vector<CFURLRef>& urls, const std::vector<LaunchItem>& items, const std::string& entry)
{
    if (const Handler handler = CurrentHandler(); handler.proc) {
        const auto application = UrlOfPath(entry, false);
        OSStatus status = noErr;
        for (const CFURLRef url : urls) {
            if (const OSStatus one = handler.proc(url, application.Get(), handler.userData); one != noErr)
                status = one;
        }
        return status;
    }
    ILauncher* const launcher = Launcher();
    return launcher ? StatusOf(launcher->Open(entry, items)) : static_cast<OSStatus>(kLSApplicationNotFoundErr);
}

} // namespace

void CVSetLaunchHandler(CVLaunchProc proc, void* userData)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_handler = {proc, userData};
}

Boolean CVLaunchesThroughPortal(void)
{
    return Guarded<Boolean>(false, [&]() -> Boolean {
        ILauncher* const launcher = Launcher();
        return launcher && launcher->HasPortal();
    });
}

Boolean CVFinishLaunches(double seconds)
{
    return Guarded<Boolean>(false, [&]() -> Boolean {
        ILauncher* const launcher = LoadedLauncher();
        return !launcher || launcher->Finish(seconds);
    });
}

OSStatus LSFindApplicationForInfo(OSType, CFStringRef inBundleID, CFStringRef, FSRef* outAppRef, CFURLRef* outAppURL)
{
    if (outAppRef)
        *outAppRef = FSRef();
    if (outAppURL)
        *outAppURL = nullptr;
    return Guarded<OSStatus>(kLSUnknownErr, [&]() -> OSStatus {
        const std::string id(Utf8Of(inBundleID));
        ILauncher* const launcher = id.empty() || id.find('\0') != id.npos ? nullptr : Launcher();
        return AnswerApplication(launcher ? launcher->FindEntry(id) : "", outAppRef, outAppURL);
    });
}

OSStatus LSGetApplicationForURL(CFURLRef inURL, LSRolesMask, FSRef* outAppRef, CFURLRef* outAppURL)
{
    if (outAppRef)
        *outAppRef = FSRef();
    if (outAppURL)
        *outAppURL = nullptr;
    return Guarded<OSStatus>(kLSUnknownErr, [&]() -> OSStatus {
        const auto item = ItemOf(inURL);
        if (!item)
            return paramErr;
        ILauncher* const launcher = Launcher();
        return AnswerApplication(launcher ? launcher->DefaultEntry(*item) : "", outAppRef, outAppURL);
    });
}

OSStatus LSCopyDisplayNameForURL(CFURLRef inURL, CFStringRef* outName)
{
    if (!outName)
        return paramErr;
    *outName = nullptr;
    return Guarded<OSStatus>(kLSUnknownErr, [&]() -> OSStatus {
        const auto item = ItemOf(inURL);
        if (!item || item->path.empty())
            return paramErr;
        ILauncher* const launcher = Launcher();
        std::string name = launcher ? launcher->NameOfEntry(item->path) : "";
        if (name.empty())
            name = item->path.substr(item->path.find_last_of('/') + 1);
        *outName = __CFString::Create(name).Detach();
        return *outName ? noErr : paramErr; // a file may have a name that is no text
    });
}

OSStatus LSOpenURLsWithRole(CFArrayRef inURLs, LSRolesMask, const AEKeyDesc* inAEParam,
                            const LSApplicationParameters* inAppParams, ProcessSerialNumber* outPSNs,
                            CFIndex inMaxPSNCount)
{
    if (outPSNs && inMaxPSNCount > 0)
        std::fill_n(outPSNs, inMaxPSNCount, ProcessSerialNumber());
    const bool isPlain = !inAppParams || (inAppParams->version == 0 && !inAppParams->environment &&
                                          !inAppParams->argv && !inAppParams->initialEvent);
    if (!IsOfType(inURLs, TypeId::Array) || inURLs->values.empty() || inAEParam || !isPlain)
        return paramErr;
    return Guarded<OSStatus>(kLSUnknownErr, [&]() -> OSStatus {
        std::vector<CFURLRef> urls;
        std::vector<LaunchItem> items;
        for (const void* value : inURLs->values) {
            auto item = ItemOf(value);
            if (!item)
                return paramErr;
            urls.push_back(static_cast<CFURLRef>(value));
            items.push_back(std::move(*item));
        }
        const auto entry = inAppParams ? PathOfRef(inAppParams->application) : std::nullopt;
        return OpenItems(urls, items, entry.value_or(""));
    });
}

OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL)
{
    if (outLaunchedURL)
        *outLaunchedURL = nullptr;
    return Guarded<OSStatus>(kLSUnknownErr, [&]() -> OSStatus {
        auto item = ItemOf(inURL);
        if (!item)
            return paramErr;
        const OSStatus status = OpenItems({inURL}, {*item}, "");
        if (status == noErr && outLaunchedURL && !CurrentHandler().proc && !CVLaunchesThroughPortal())
            (void)LSGetApplicationForURL(inURL, kLSRolesAll, nullptr, outLaunchedURL); // else it stays null
        return status;
    });
}
