// tests/launchservices/Opener.cpp
//
// A host that asks Launch Services for everything once and prints the statuses.
#include <ApplicationServices/ApplicationServices.h>
#include <CVPlatform/CVPlatform.h>

#include <cstdio>

int main()
{
    const CFURLRef page = CFURLCreateWithString(nullptr, CFSTR("file:///page.html"), nullptr);
    const void* pages[] = {page};
    const CFArrayRef list = CFArrayCreate(nullptr, pages, 1, &kCFTypeArrayCallBacks);
    CFURLRef application = nullptr;
    CFStringRef name = nullptr;
    std::printf("%d ", LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("org.example.Viewer"), nullptr, nullptr,
                                                &application));
    std::printf("%d ", LSGetApplicationForURL(page, kLSRolesAll, nullptr, &application));
    std::printf("%d ", LSOpenURLsWithRole(list, kLSRolesViewer, nullptr, nullptr, nullptr, 0));
    std::printf("%d ", LSOpenCFURLRef(page, &application));
    std::printf("%d ", LSCopyDisplayNameForURL(page, &name)); // which a file has without an application
    std::printf("%d %d", CVLaunchesThroughPortal(), CVFinishLaunches(1));
    const bool clear = !application && name;
    CFRelease(name);
    CFRelease(list);
    CFRelease(page);
    return clear ? 0 : 1;
}
