// ui/HelpViewer.cpp
//
// Opens the help page of a topic in the user's viewer. Which page that is, the help folder's context
// map says; nothing is kept between two calls, so an edited map takes effect at once.
#include "frame/BaseProductManager.h"
#include "frame/Owned.h"

namespace {

// The map's dictionary, the caller's; null for a map that cannot be read or is none.
CFDictionaryRef CopyContextMap(CFURLRef file)
{
    COwned<CFDataRef> bytes;
    SInt32 error = 0;
    if (!CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, file, bytes.Receive(), nullptr, nullptr, &error))
        return nullptr;
    COwned<CFPropertyListRef> list(
        CFPropertyListCreateFromXMLData(kCFAllocatorDefault, bytes.Get(), kCFPropertyListImmutable, nullptr));
    const bool isMap = list && CFGetTypeID(list.Get()) == CFDictionaryGetTypeID();
    return isMap ? static_cast<CFDictionaryRef>(list.Detach()) : nullptr;
}

// The page that the map names for the topic; null for none. It is not retained.
CFStringRef GetPageName(CFDictionaryRef map, unsigned int topic)
{
    // Signed on purpose: that is how the numbers from 2147483648 on stand in the maps.
    const COwned<CFStringRef> key(
        CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%d"), static_cast<int>(topic)));
    if (!key || !CFDictionaryContainsKey(map, key.Get()))
        return nullptr;
    const CFTypeRef value = CFDictionaryGetValue(map, key.Get());
    const bool isText = CFGetTypeID(value) == CFStringGetTypeID();
    return isText ? static_cast<CFStringRef>(value) : nullptr;
}

// The page to open, the caller's: the map's, even if it cannot be formed; else the index; else null.
CFURLRef CopyHelpPage(CFBundleRef bundle, const char* folder, unsigned int topic)
{
    const COwned<CFStringRef> folderName(CFStringCreateWithCString(kCFAllocatorDefault, folder, kCFStringEncodingUTF8));
    const COwned<CFURLRef> mapFile(
        CFBundleCopyResourceURL(bundle, CFSTR("ContextMap"), CFSTR("xml"), folderName.Get()));
    const COwned<CFDictionaryRef> map(mapFile ? CopyContextMap(mapFile.Get()) : nullptr);
    const CFStringRef page = map ? GetPageName(map.Get(), topic) : nullptr;
    if (!page)
        return CFBundleCopyResourceURL(bundle, CFSTR("index"), CFSTR("html"), folderName.Get());
    const COwned<CFURLRef> mapFolder(CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, mapFile.Get()));
    return mapFolder ? CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, mapFolder.Get(), page, false)
                     : nullptr;
}

void OpenInHelpViewer(CFURLRef page)
{
    FSRef viewer = FSRef();
    COwned<CFURLRef> viewerURL;
    // Where there is no such viewer, the launch is still worth trying: the system may know another.
    (void)LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("com.apple.HelpViewer"), nullptr, &viewer,
                                   viewerURL.Receive());
    LSApplicationParameters parameters = LSApplicationParameters();
    parameters.flags = kLSLaunchDefaults;
    parameters.application = &viewer;
    const void* pages[] = {page};
    const COwned<CFArrayRef> list(CFArrayCreate(kCFAllocatorDefault, pages, 1, &kCFTypeArrayCallBacks));
    if (list)
        (void)LSOpenURLsWithRole(list.Get(), kLSRolesViewer, nullptr, &parameters, nullptr, 0); // fails silently
}

} // namespace

void CBaseProductManager::OpenHelp(WindowRef, unsigned int topic)
{
    if (!bundle)
        return;
    const COwned<CFURLRef> page(CopyHelpPage(bundle, helpFolder, topic));
    if (page)
        OpenInHelpViewer(page.Get());
}
