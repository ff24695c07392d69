// tools/quillets/Help.cpp
//
// `quillets help`: the help page of a topic. The rule for which page that is stands in the
// component alone; it is asked by letting it open the page.
#include "tools/quillets/Help.h"

#include <unistd.h>

#include <charconv>
#include <cstdio>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Output.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr double kLongestHandOver = 30; // seconds that a desktop's service may take to answer

CFURLRef UrlOf(const std::string& path)
{
    return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                   static_cast<CFIndex>(path.size()), false);
}

bool ReadTopic(std::string_view word, unsigned& topic)
{
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), topic);
    return error == std::errc() && end == word.data() + word.size();
}

int Run(const Arguments& arguments)
{
    std::vector<std::string_view> words = arguments.words;
    const bool print = TakeFlag(words, "--print");
    unsigned topic = 0;
    if (words.size() > 1)
        return UsageError("help", "unexpected argument " + std::string(words[1]));
    if (!words.empty() && !ReadTopic(words.front(), topic))
        return UsageError("help", std::string(words.front()) + " is no number from 0 to 4294967295");
    const LoadedBundle loaded = LoadBundle(arguments);
    if (!loaded.manager)
        return Failure(loaded.problem);

    const HelpPage page = FindHelpPage(*loaded.manager, topic);
    if (page.path.empty())
        return Failure("there is no page for topic " + std::to_string(topic) + " and no index");
    if (access(page.path.c_str(), R_OK) != 0)
        return Failure("the page of topic " + std::to_string(topic) + " cannot be read: " + page.path);
    if (print) {
        std::printf("%s\n", page.path.c_str());
        return kExitOk;
    }
    switch (OpenHelpPage(page)) {
    case noErr:
        return kExitOk;
    case kLSApplicationNotFoundErr:
        return Failure("there is no application for help pages; the page is " + page.path);
    default:
        return Failure("the application for help pages cannot be started; the page is " + page.path);
    }
}

} // namespace

OSStatus OpenHelpPage(const HelpPage& page)
{
    FSRef viewer = {};
    const CFURLRef viewerUrl = UrlOf(page.viewer);
    (void)CFURLGetFSRef(viewerUrl, &viewer); // else it stays zeros, and the default is taken
    LSApplicationParameters parameters = {};
    parameters.flags = kLSLaunchDefaults;
    parameters.application = &viewer;
    const void* pages[] = {UrlOf(page.path)};
    const CFArrayRef list = CFArrayCreate(nullptr, pages, 1, &kCFTypeArrayCallBacks);
    const OSStatus status = LSOpenURLsWithRole(list, kLSRolesViewer, nullptr, &parameters, nullptr, 0);
    (void)CVFinishLaunches(kLongestHandOver); // a service that does not answer has been asked all the same
    for (const CFTypeRef object : {CFTypeRef(list), CFTypeRef(pages[0]), CFTypeRef(viewerUrl)})
        CFRelease(object);
    return status;
}

HelpPage FindHelpPage(IProductManager& manager, unsigned topic)
{
    HelpPage page;
    const auto take = [](CFURLRef url, CFURLRef application, void* data) -> OSStatus {
        HelpPage& taken = *static_cast<HelpPage*>(data);
        taken.path = TakePath(static_cast<CFURLRef>(CFRetain(url)));
        if (application)
            taken.viewer = TakePath(static_cast<CFURLRef>(CFRetain(application)));
        return noErr;
    };
    CVSetLaunchHandler(take, &page);
    manager.OpenHelp(nullptr, topic);
    CVSetLaunchHandler(nullptr, nullptr);
    return page;
}

std::string DescribeViewer(const HelpPage& page)
{
    CFURLRef viewer = nullptr;
    if (!page.viewer.empty()) {
        viewer = UrlOf(page.viewer);
    } else {
        if (CVLaunchesThroughPortal())
            return "whatever the desktop's portal chooses";
        const CFURLRef url = UrlOf(page.path);
        (void)LSGetApplicationForURL(url, kLSRolesViewer, nullptr, &viewer); // none leaves null
        CFRelease(url);
    }
    CFStringRef name = nullptr;
    (void)LSCopyDisplayNameForURL(viewer, &name); // none leaves null
    char text[256] = "";
    (void)CFStringGetCString(name, text, sizeof text, kCFStringEncodingUTF8); // the path says enough
    CFRelease(name);
    const std::string path = TakePath(viewer);
    return path.empty() || *text == '\0' ? path : text + (" (" + path + ")");
}

const Command kHelpCommand = {"help", "open the help page of a topic, or print where it is",
                              "Usage: quillets [--bundle PATH] help [--print] [TOPIC]\n"
                              "\n"
                              "Opens the help page of a topic, as a plug-in would: the page that the help folder's\n"
                              "context map gives for the number, else the index.\n"
                              "\n"
                              "  TOPIC          a number from 0 to 4294967295; 0 when it is left out\n"
                              "  --print        print the page's path and open nothing\n"
                              "  --bundle PATH  use this bundle instead of the one beside the program\n"
                              "\n"
                              "Exit status: 0 handed to an application or printed, 1 there is no page, no\n"
                              "application, or it cannot be started, 2 wrong arguments.\n",
                              Run};
