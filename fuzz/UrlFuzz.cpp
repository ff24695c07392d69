// fuzz/UrlFuzz.cpp
//
// URLs: the first line is a base, the second a reference, the whole a path. A path has to come back
// from its URL; a resolved URL is a URL.
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
    std::string expected = path;
    while (expected.size() > 1 && expected.back() == '/')
        expected.pop_back();
    std::string back(path.size() + 1, 'x');
    Require(CFURLGetFileSystemRepresentation(url, false, reinterpret_cast<UInt8*>(back.data()),
                                             static_cast<CFIndex>(back.size())));
    Require(expected == back.c_str());
    UseUrl(url);
    CFRelease(url);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    TryPath(text);
    TryPath("/" + text);
    const std::size_t end = text.find('\n');
    const CFStringRef baseText = MakeString(text.substr(0, end));
    const CFStringRef referenceText = MakeString(end == std::string::npos ? "" : text.substr(end + 1));
    const CFURLRef base = CFURLCreateWithString(nullptr, baseText, nullptr);
    const CFURLRef url = CFURLCreateWithString(nullptr, referenceText, base);
    for (const CFURLRef each : {base, url}) {
        if (!each)
            continue;
        UseUrl(each);
        const CFURLRef absolute = CFURLCopyAbsoluteURL(each);
        Require(absolute && !CFURLGetBaseURL(absolute));
        UseUrl(absolute);
        CFRelease(absolute);
    }
    for (const CFTypeRef object : {CFTypeRef(baseText), CFTypeRef(referenceText), CFTypeRef(base), CFTypeRef(url)})
        CFRelease(object);
    return 0;
}
