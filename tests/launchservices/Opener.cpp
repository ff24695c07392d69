// tests/launchservices/Opener.cpp
//
// A host that asks Launch Services for everything once and prints the statuses.
#include <ApplicationServices/ApplicationServices.h>
#include <CVPlatform/CVPlatform.h>

#include <cstdio>
#include <initializer_list>

int main()
{
    const CFURLRef page = CFURLCreateWithString(nullptr, CFSTR("file:///page.html"), nullptr);
    const void* pages[] = {page};
    const CFArrayRef list = CFArrayCreate(nullptr, pages, 1, &kCFTypeArrayCallBacks);
    CFURLRef found = nullptr, preferred = nullptr, launched = nullptr;
    CFStringRef name = nullptr;
    std::printf("%ld ", static_cast<long>(LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("org.example.Viewer"),
                                                                   nullptr, nullptr, &found)));
    std::printf("%ld ", static_cast<long>(LSGetApplicationForURL(page, kLSRolesAll, nullptr, &preferred)));
    std::printf("%ld ", static_cast<long>(LSOpenURLsWithRole(list, kLSRolesViewer, nullptr, nullptr, nullptr, 0)));
    std::printf("%ld ", static_cast<long>(LSOpenCFURLRef(page, &launched)));
    std::printf("%ld ",
                static_cast<long>(LSCopyDisplayNameForURL(page, &name))); // which a file has without an application
    std::printf("%d %d", CVLaunchesThroughPortal(), CVFinishLaunches(1));
    const bool consistent = name && !found == !preferred && !found == !launched;
    for (const CFTypeRef object : {CFTypeRef(found), CFTypeRef(preferred), CFTypeRef(launched), CFTypeRef(name),
                                   CFTypeRef(list), CFTypeRef(page)})
        CFRelease(object);
    return consistent ? 0 : 1;
}
