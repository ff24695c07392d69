// fuzz/UrlFuzz.cpp
//
// URLs: the first line is a base, the second a reference, the whole a path. A path has to come back
// from its URL; a resolved URL is a URL. Only a file of ours is read through one, for any other might
// be a device.
#include <sys/mman.h>
#include <unistd.h>

#include <initializer_list>
#include <string>

#include "fuzz/Fuzz.h"

namespace {

CFStringRef MakeString(const std::string& text)
{
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                   static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

void UseUrl(CFURLRef url)
{
    UInt8 path[64];
    (void)CFURLGetFileSystemRepresentation(url, true, path, sizeof path);
    (void)CFURLGetFileSystemRepresentation(url, false, path, 8);
    CFRelease(CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle));
    CFRelease(CFURLCopyScheme(url));
    CFRelease(CFCopyDescription(url));
    CFRelease(CFURLCreateCopyAppendingPathComponent(nullptr, url, CFSTR("a b"), true));
    CFURLRef folder = CFURLCreateCopyDeletingLastPathComponent(nullptr, url);
    Require(!folder || CFURLHasDirectoryPath(folder));
    CFRelease(folder);
}

void TryPath(const std::string& path)
{
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                                 static_cast<CFIndex>(path.size()), false);
    if (!url)
        return;
    const bool isAbsolute = path.front() == '/'; // others get the working folder in front of them
    std::string expected = path;
    while (expected.size() > 1 && expected.back() == '/')
        expected.pop_back();
    std::string back(path.size() + 1, 'x');
    const bool hasPath = CFURLGetFileSystemRepresentation(url, false, reinterpret_cast<UInt8*>(back.data()),
                                                          static_cast<CFIndex>(back.size()));
    Require(hasPath && expected == back.c_str());
    Require(isAbsolute != (CFURLGetBaseURL(url) != nullptr));
    UseUrl(url);
    const CFStringRef text = CFURLGetString(url);
    const CFURLRef same = CFURLCreateWithString(nullptr, text, CFURLGetBaseURL(url));
    Require(same && CFEqual(url, same) && CFHash(url) == CFHash(same));
    CFRelease(same);
    CFRelease(url);
}

void TryReading(const UInt8* bytes, size_t size)
{
    static const int file = memfd_create("page", MFD_CLOEXEC);
    Require(ftruncate(file, 0) == 0 && pwrite(file, bytes, size, 0) == static_cast<ssize_t>(size));
    const CFStringRef text =
        CFStringCreateWithFormat(nullptr, nullptr, CFSTR("file:///%%70roc/self/fd/%d"), file); // p, escaped
    const CFURLRef url = CFURLCreateWithString(nullptr, text, nullptr);
    CFDataRef data = nullptr;
    SInt32 error = -1;
    Require(CFURLCreateDataAndPropertiesFromResource(nullptr, url, &data, nullptr, nullptr, &error) && error == 0);
    Require(CFDataGetLength(data) == static_cast<CFIndex>(size));
    const CFURLRef below = CFURLCreateCopyAppendingPathComponent(nullptr, url, CFSTR("none"), false);
    Require(!CFURLCreateDataAndPropertiesFromResource(nullptr, below, nullptr, nullptr, nullptr, &error));
    Require(error == kCFURLResourceNotFoundError);
    for (const CFTypeRef object : {CFTypeRef(text), CFTypeRef(url), CFTypeRef(data), CFTypeRef(below)})
        CFRelease(object);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    TryPath(text);
    TryPath("/" + text);
    TryReading(bytes, size);
    const std::size_t end = text.find('\n');
    const CFStringRef baseText = MakeString(text.substr(0, end));
    const CFStringRef referenceText = MakeString(end == std::string::npos ? "" : text.substr(end + 1));
    const CFURLRef base = CFURLCreateWithString(nullptr, baseText, nullptr);
    const CFURLRef url = CFURLCreateWithString(nullptr, referenceText, base);
    const CFURLRef folder = CFURLCreateWithFileSystemPath(nullptr, referenceText, kCFURLPOSIXPathStyle, true);
    Require(!folder || CFURLHasDirectoryPath(folder));
    for (const CFURLRef each : {base, url, folder}) {
        if (!each)
            continue;
        UseUrl(each);
        const CFURLRef absolute = CFURLCopyAbsoluteURL(each);
        Require(absolute && !CFURLGetBaseURL(absolute));
        UseUrl(absolute);
        CFRelease(absolute);
    }
    for (const CFTypeRef object :
         {CFTypeRef(baseText), CFTypeRef(referenceText), CFTypeRef(base), CFTypeRef(url), CFTypeRef(folder)})
        CFRelease(object);
    return 0;
}
