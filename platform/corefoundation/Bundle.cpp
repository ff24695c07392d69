// platform/corefoundation/Bundle.cpp
//
// Bundles: one object for one folder, its resources and its code.
#include "platform/corefoundation/Bundle.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <map>

#include "platform/base/Guard.h"
#include "platform/corefoundation/Languages.h"
#include "platform/corefoundation/String.h"
#include "platform/corefoundation/Url.h"
#include <CoreFoundation/CFPropertyList.h>
#include <mach-o/dyld.h>

namespace {

constexpr std::string_view kResources = "/Contents/Resources";
constexpr std::string_view kExecutables = "/Contents/MacOS";

// One folder, one object: by path, for through a symbolic link the same folder has another URL.
std::mutex& g_bundlesMutex = *new std::mutex;
auto& g_bundles = *new std::map<std::string, __CFBundle*>;

bool IsFolder(const std::string& path, struct stat& status)
{
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0;
}

std::string FolderOf(const std::string& path, int levels)
{
    std::string folder = path;
    for (int level = 0; level < levels; ++level)
        folder.erase(folder.find_last_of('/') == std::string::npos ? 0 : folder.find_last_of('/'));
    return folder;
}

CFURLRef CreateUrlIfThere(const std::string& path, bool isDirectory)
{
    return !path.empty() && Exists(path) ? UrlOfPath(path, isDirectory).Detach() : nullptr;
}

CRef<__CFBundle> OpenFolder(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    struct stat status = {};
    if (!IsFolder(path, status))
        return {};
    const std::lock_guard<std::mutex> lock(g_bundlesMutex);
    __CFBundle*& place = g_bundles[path];
    // The folder may have been replaced by another of the same name; that is another bundle.
    if (place && place->device == status.st_dev && place->node == status.st_ino && place->TryRetain())
        return CRef<__CFBundle>::Adopt(place);
    place = new __CFBundle(path, status.st_dev, status.st_ino);
    return CRef<__CFBundle>::Adopt(place);
}

std::string FindFile(const std::string& resources, const std::string& file, ResourceOrder order, struct stat& status)
{
    const auto exists = [&status](const std::string& path) {
        return stat(path.c_str(), &status) == 0;
    };
    std::string plain = resources + file;
    if (order == ResourceOrder::PlainFirst && exists(plain))
        return plain;
    for (const std::string& folder : LanguageFolders()) {
        std::string localised = resources;
        localised.append("/").append(folder).append(file);
        if (exists(localised))
            return localised;
    }
    return order == ResourceOrder::LocalisedFirst && exists(plain) ? plain : "";
}

std::string ExecutablePath(CFBundleRef bundle)
{
    const std::string path = bundle->Path();
    const std::string folder = path + std::string(kExecutables) + "/";
    const CFDictionaryRef information = CFBundleGetInfoDictionary(bundle);
    const void* const named = CFDictionaryGetValue(information, CFSTR("CFBundleExecutable"));
    if (IsOfType(named, TypeId::String)) {
        const std::string_view name = Utf8Of(static_cast<CFStringRef>(named));
        if (!name.empty() && name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos)
            return folder + std::string(name);
    }
    const std::string name = path.substr(path.find_last_of('/') + 1);
    return folder + name.substr(0, name.find_last_of('.'));
}

bool EnsureLoaded(CFBundleRef bundle)
{
    {
        const std::lock_guard<std::mutex> lock(bundle->mutex);
        if (bundle->code)
            return true;
    }
    // Not under the lock: the code's initialisers run in here, and may ask for the bundle.
    void* const code = dlopen(ExecutablePath(bundle).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!code)
        return false;
    const std::lock_guard<std::mutex> lock(bundle->mutex);
    if (bundle->code)
        dlclose(code); // another thread was faster; this only counts back
    else
        bundle->code = code;
    return true;
}

} // namespace

__CFBundle::~__CFBundle()
{
    const std::lock_guard<std::mutex> lock(g_bundlesMutex);
    for (auto place = g_bundles.begin(); place != g_bundles.end(); ++place) {
        if (place->second == this) {
            g_bundles.erase(place);
            break;
        }
    }
}

std::string __CFBundle::Path() const
{
    const std::lock_guard<std::mutex> lock(m_pathMutex);
    struct stat status = {};
    if (Exists(m_path))
        return m_path;
    for (std::uint32_t index = 1, count = _dyld_image_count(); index < count; ++index) {
        const char* const image = _dyld_get_image_name(index);
        const std::string folder = image ? FolderOf(image, 3) : "";
        if (!folder.empty() && IsFolder(folder, status) && status.st_dev == device && status.st_ino == node) {
            m_path = folder;
            break;
        }
    }
    return m_path;
}

std::string __CFBundle::LastKnownPath() const
{
    const std::lock_guard<std::mutex> lock(m_pathMutex);
    return m_path;
}

std::string __CFBundle::FindResource(std::string_view name, std::string_view type, std::string_view subFolder,
                                     ResourceOrder order) const
{
    struct stat status = {};
    return FindResource(name, type, subFolder, order, status);
}

std::string __CFBundle::FindResource(std::string_view name, std::string_view type, std::string_view subFolder,
                                     ResourceOrder order, struct stat& status) const
{
    std::string file;
    if (!subFolder.empty())
        file.append("/").append(subFolder);
    file.append("/").append(name);
    if (!type.empty())
        file.append(".").append(type);
    if (name.empty() || file.find('\0') != std::string::npos)
        return "";
    // What is found needs no look at the folder itself; where nothing is, the folder may have moved.
    const std::string known = LastKnownPath();
    std::string found = FindFile(known + std::string(kResources), file, order, status);
    if (found.empty()) {
        if (const std::string now = Path(); now != known)
            found = FindFile(now + std::string(kResources), file, order, status);
    }
    return found;
}

CFTypeID CFBundleGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Bundle);
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL)
{
    return Guarded<CFBundleRef>(nullptr, [&]() -> CFBundleRef {
        const auto path = PathOfUrl(bundleURL);
        return path ? OpenFolder(*path).Detach() : nullptr;
    });
}

CFBundleRef CFBundleGetMainBundle(void)
{
    return Guarded<CFBundleRef>(nullptr, [] {
        static const CFBundleRef bundle = []() -> CFBundleRef {
            const char* const program = _dyld_get_image_name(0);
            if (!program)
                return nullptr;
            const std::string folder = FolderOf(program, 1);
            const bool isBundle = folder.size() > kExecutables.size() &&
                                  folder.compare(folder.size() - kExecutables.size(), folder.npos, kExecutables) == 0;
            return OpenFolder(isBundle ? FolderOf(program, 3) : folder).Detach();
        }();
        return bundle;
    });
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&] { return UrlOfPath(bundle->Path(), true).Detach(); });
}

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&] { return CreateUrlIfThere(bundle->Path() + std::string(kResources), true); });
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                 CFStringRef subDirName)
{
    if (!bundle)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        struct stat status = {};
        const std::string path = bundle->FindResource(Utf8Of(resourceName), Utf8Of(resourceType), Utf8Of(subDirName),
                                                      ResourceOrder::PlainFirst, status);
        return path.empty() ? nullptr : UrlOfPath(path, S_ISDIR(status.st_mode)).Detach();
    });
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&] { return CreateUrlIfThere(ExecutablePath(bundle), false); });
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle)
{
    if (!bundle)
        return nullptr;
    return Guarded<CFDictionaryRef>(nullptr, [&]() -> CFDictionaryRef {
        const std::string file = bundle->Path() + "/Contents/Info.plist";
        const std::lock_guard<std::mutex> lock(bundle->mutex);
        if (!bundle->informationRead) {
            const auto url = UrlOfPath(file, false);
            CFDataRef data = nullptr;
            if (CFURLCreateDataAndPropertiesFromResource(nullptr, url.Get(), &data, nullptr, nullptr, nullptr)) {
                const CFPropertyListRef list =
                    CFPropertyListCreateFromXMLData(nullptr, data, kCFPropertyListImmutable, nullptr);
                CFRelease(data);
                if (IsOfType(list, TypeId::Dictionary))
                    bundle->information = CRef<const __CFDictionary>::Adopt(static_cast<CFDictionaryRef>(list));
                else
                    CFRelease(list);
            }
            bundle->informationRead = true;
        }
        return bundle->information.Get();
    });
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle)
{
    if (!bundle)
        return false;
    return Guarded<Boolean>(false, [&]() -> Boolean { return EnsureLoaded(bundle); });
}

void CFBundleUnloadExecutable(CFBundleRef bundle)
{
    if (!bundle)
        return;
    void* code = nullptr;
    {
        const std::lock_guard<std::mutex> lock(bundle->mutex);
        std::swap(code, bundle->code);
    }
    if (code)
        dlclose(code); // destructors run in here, and may ask for the bundle
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName)
{
    if (!bundle || !functionName)
        return nullptr;
    return Guarded<void*>(nullptr, [&]() -> void* {
        if (!EnsureLoaded(bundle))
            return nullptr;
        const std::lock_guard<std::mutex> lock(bundle->mutex);
        return bundle->code ? dlsym(bundle->code, functionName->Utf8().data()) : nullptr;
    });
}
