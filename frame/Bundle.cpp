// frame/Bundle.cpp
//
// Finds the component's own bundle from the code's own image. The executable lies in
// Contents/MacOS, so the bundle is three levels up, whatever the folders are called.
#include <mach-o/dyld.h>
#include <string.h>

#include "frame/BaseProductManager.h"
#include "frame/Owned.h"

extern "C" void* __dso_handle; // the linker makes it; its address is that of the own image's header

namespace {

CFURLRef CreateUrlOfPath(const char* path)
{
    return CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path),
                                                   static_cast<CFIndex>(strlen(path)), false);
}

CFURLRef CreateUrlOfFolder(CFURLRef url)
{
    return url ? CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url) : nullptr;
}

bool WritePath(CFURLRef url, char* buffer, int size)
{
    return url && buffer && CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8*>(buffer), size);
}

const char* GetOwnImagePath()
{
    const mach_header* const own = reinterpret_cast<const mach_header*>(&__dso_handle);
    // Index 0 is the host's program and never the component, even where the code is linked into it.
    for (uint32_t index = 1, count = _dyld_image_count(); index < count; ++index) {
        if (_dyld_get_image_header(index) == own)
            return _dyld_get_image_name(index);
    }
    return nullptr;
}

} // namespace

CFURLRef CBaseProductManager::GetCurrentBundle()
{
    const char* const path = GetOwnImagePath();
    if (!path)
        return nullptr;
    const COwned<CFURLRef> executable(CreateUrlOfPath(path));
    const COwned<CFURLRef> code(CreateUrlOfFolder(executable.Get()));
    const COwned<CFURLRef> contents(CreateUrlOfFolder(code.Get()));
    return CreateUrlOfFolder(contents.Get());
}

CFURLRef CBaseProductManager::GetCurrentBundlePath()
{
    const COwned<CFURLRef> folder(GetCurrentBundle());
    return CreateUrlOfFolder(folder.Get());
}

bool CBaseProductManager::GetCurrentBundlePath(char* buffer, int size)
{
    const COwned<CFURLRef> folder(GetCurrentBundlePath());
    return WritePath(folder.Get(), buffer, size);
}

bool CBaseProductManager::GetResourcesBundlePath(char* buffer, int size)
{
    const COwned<CFURLRef> folder(GetCurrentBundle());
    return WritePath(folder.Get(), buffer, size);
}

CFBundleRef CBaseProductManager::OpenBundle(const char* path)
{
    if (!path)
        return nullptr;
    const COwned<CFURLRef> url(CreateUrlOfPath(path));
    return url ? CFBundleCreate(kCFAllocatorDefault, url.Get()) : nullptr;
}
