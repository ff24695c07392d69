// tests/launchservices/LaunchServicesTest.cpp
//
// A launch must reach the right program with the right words, and leave no trace in the host.
#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "tests/launchservices/Viewers.h"

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

using Words = std::vector<std::string>;

OSStatus OpenWith(const FSRef* application, const Words& addresses)
{
    std::vector<const void*> urls;
    for (const std::string& address : addresses)
        urls.push_back(address[0] == '/' ? MakeFileUrl(address) : MakeUrl(address));
    const CFArrayRef list =
        CFArrayCreate(nullptr, urls.data(), static_cast<CFIndex>(urls.size()), &kCFTypeArrayCallBacks);
    LSApplicationParameters parameters = {};
    parameters.flags = kLSLaunchDefaults;
    parameters.application = application;
    const OSStatus status = LSOpenURLsWithRole(list, kLSRolesViewer, nullptr, &parameters, nullptr, 0);
    CFRelease(list);
    for (const void* url : urls)
        CFRelease(url);
    return status;
}

OSStatus OpenAddress(const std::string& address)
{
    const CFURLRef url = address[0] == '/' ? MakeFileUrl(address) : MakeUrl(address);
    const OSStatus status = LSOpenCFURLRef(url, nullptr);
    CFRelease(url);
    return status;
}

FSRef Find(const std::string& id)
{
    FSRef ref = {};
    const CFStringRef name = MakeString(id);
    EXPECT_EQ(LSFindApplicationForInfo(kLSUnknownCreator, name, nullptr, &ref, nullptr), noErr);
    CFRelease(name);
    return ref;
}

std::vector<Words> ArgumentsOf(const std::vector<Visit>& visits)
{
    std::vector<Words> all;
    for (const Visit& visit : visits)
        all.push_back(visit.arguments);
    return all;
}

class LaunchServices : public testing::Test {
protected:
    CViewers viewers;
};

TEST_F(LaunchServices, FindsAnApplicationByTheIdOfItsEntry)
{
    viewers.Install("org.example.Viewer");
    EXPECT_EQ(
        RunInChild([this] {
            FSRef ref = {};
            CFURLRef url = nullptr;
            EXPECT_EQ(LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("org.example.Viewer"), nullptr, &ref, &url),
                      noErr);
            UInt8 path[PATH_MAX] = "";
            EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), noErr);
            EXPECT_EQ(reinterpret_cast<const char*>(path), viewers.Entry("org.example.Viewer"));
            FSRef same = {};
            EXPECT_TRUE(CFURLGetFSRef(url, &same));
            EXPECT_EQ(std::memcmp(&ref, &same, sizeof ref), 0);
            EXPECT_EQ(
                LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("org.example.Viewer"), nullptr, nullptr, nullptr),
                noErr);
            CFRelease(url);
            return 0;
        }),
        0);
}

TEST_F(LaunchServices, ClearsItsOutputsWhereNothingIsFound)
{
    viewers.InstallLine("org.example.Gone", "/nowhere/at/all %u");
    viewers.Install("org.example.Hidden", "%u", "Hidden=true");
    EXPECT_EQ(RunInChild([] {
                  for (const char* id : {"org.example.None", "org.example.Gone", "org.example.Hidden", "../x", ""}) {
                      FSRef ref;
                      std::memset(&ref, 1, sizeof ref);
                      CFURLRef url = reinterpret_cast<CFURLRef>(&ref);
                      const CFStringRef name = MakeString(id);
                      EXPECT_EQ(LSFindApplicationForInfo(kLSUnknownCreator, name, nullptr, &ref, &url),
                                kLSApplicationNotFoundErr)
                          << id;
                      CFRelease(name);
                      const FSRef zeros = {};
                      EXPECT_EQ(std::memcmp(&ref, &zeros, sizeof ref), 0) << id;
                      EXPECT_EQ(url, nullptr) << id;
                  }
                  EXPECT_EQ(LSFindApplicationForInfo(kLSUnknownCreator, nullptr, nullptr, nullptr, nullptr),
                            kLSApplicationNotFoundErr);
                  return 0;
              }),
              0);
}

TEST_F(LaunchServices, OpensPagesWithTheApplicationGiven)
{
    viewers.Install("org.example.Viewer");
    viewers.Install("org.example.Other", "other %u");
    viewers.MakeDefault("org.example.Other", "text/html");
    const auto visits = viewers.VisitsOf([] {
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/tmp/a page.html"}), noErr);
    });
    EXPECT_THAT(ArgumentsOf(visits), ElementsAre(Words{"file:///tmp/a%20page.html"}));
}

TEST_F(LaunchServices, OpensPagesWithTheDefaultForHtmlWhereTheApplicationIsUnknown)
{
    viewers.Install("org.example.Browser", "%f");
    viewers.MakeDefault("org.example.Browser", "text/html");
    const auto visits = viewers.VisitsOf([] {
        const FSRef none = {};
        FSRef chance;
        std::memset(&chance, 0x5A, sizeof chance);
        FSRef notAnEntry = {};
        EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>("/etc"), &notAnEntry, nullptr), noErr);
        EXPECT_EQ(OpenWith(&none, {"/1.html"}), noErr);
        EXPECT_EQ(OpenWith(&chance, {"/2.html"}), noErr);
        EXPECT_EQ(OpenWith(&notAnEntry, {"/3.html"}), noErr);
        EXPECT_EQ(OpenWith(nullptr, {"/4.html#x"}), noErr); // a name that tells no type
    });
    EXPECT_THAT(ArgumentsOf(visits),
                UnorderedElementsAre(Words{"/1.html"}, Words{"/2.html"}, Words{"/3.html"}, Words{"/4.html#x"}));
}

TEST_F(LaunchServices, OpensAddressesWithTheDefaultBrowser)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "x-scheme-handler/https");
    const auto visits = viewers.VisitsOf([] {
        EXPECT_EQ(OpenAddress("https://example.org/?a=1&b=$(touch%20x)';x#top"), noErr);
        EXPECT_EQ(OpenAddress("HTTPS://example.org/"), noErr);
        EXPECT_EQ(OpenAddress("http://example.org/"), kLSApplicationNotFoundErr);
    });
    EXPECT_THAT(ArgumentsOf(visits), UnorderedElementsAre(Words{"https://example.org/?a=1&b=$(touch%20x)';x#top"},
                                                          Words{"HTTPS://example.org/"}));
}

TEST_F(LaunchServices, SaysWhichApplicationItLaunched)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "x-scheme-handler/https");
    const auto visits = viewers.VisitsOf([this] {
        const CFURLRef site = MakeUrl("https://example.org/");
        CFURLRef launched = nullptr;
        EXPECT_EQ(LSOpenCFURLRef(site, &launched), noErr);
        const CFURLRef entry = MakeFileUrl(viewers.Entry("org.example.Browser"));
        EXPECT_TRUE(CFEqual(launched, entry));
        for (const CFURLRef url : {site, launched, entry})
            CFRelease(url);
    });
    EXPECT_THAT(visits, SizeIs(1));
}

TEST_F(LaunchServices, NamesTheDefaultApplication)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "text/html");
    EXPECT_EQ(RunInChild([] {
                  const CFURLRef page = MakeFileUrl("/tmp/page.html");
                  const CFURLRef site = MakeUrl("https://example.org/");
                  CFURLRef application = nullptr;
                  CFStringRef name = nullptr;
                  EXPECT_EQ(LSGetApplicationForURL(page, kLSRolesViewer, nullptr, &application), noErr);
                  EXPECT_EQ(LSCopyDisplayNameForURL(application, &name), noErr);
                  EXPECT_EQ(TextOf(name), "Viewer org.example.Browser");
                  CFRelease(name);
                  EXPECT_EQ(LSCopyDisplayNameForURL(page, &name), noErr);
                  EXPECT_EQ(TextOf(name), "page.html");
                  CFRelease(name);
                  EXPECT_EQ(LSCopyDisplayNameForURL(site, &name), paramErr);
                  EXPECT_EQ(name, nullptr);
                  CFRelease(application);
                  EXPECT_EQ(LSGetApplicationForURL(site, kLSRolesAll, nullptr, &application),
                            kLSApplicationNotFoundErr);
                  EXPECT_EQ(application, nullptr);
                  EXPECT_EQ(LSGetApplicationForURL(nullptr, kLSRolesAll, nullptr, &application), paramErr);
                  CFRelease(page);
                  CFRelease(site);
                  return 0;
              }),
              0);
}

TEST_F(LaunchServices, HandsSeveralPagesToOneProgramThatTakesThem)
{
    viewers.Install("org.example.Many", "%U");
    viewers.Install("org.example.One", "%u");
    const auto visits = viewers.VisitsOf([] {
        const FSRef many = Find("org.example.Many");
        const FSRef one = Find("org.example.One");
        EXPECT_EQ(OpenWith(&many, {"/1.html", "/2.html"}), noErr);
        EXPECT_EQ(OpenWith(&one, {"/3.html", "/4.html"}), noErr);
    });
    EXPECT_THAT(ArgumentsOf(visits), UnorderedElementsAre(Words{"file:///1.html", "file:///2.html"},
                                                          Words{"file:///3.html"}, Words{"file:///4.html"}));
}

TEST_F(LaunchServices, RefusesWhatIsNoListOfUrls)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "text/html");
    const auto visits = viewers.VisitsOf([] {
        const auto open = [](CFTypeRef list, const LSApplicationParameters* parameters) {
            return LSOpenURLsWithRole(static_cast<CFArrayRef>(list), kLSRolesViewer, nullptr, parameters, nullptr, 0);
        };
        const CFURLRef page = MakeFileUrl("/1.html");
        const CFURLRef relative = MakeUrl("1.html");
        const void* values[] = {page, CFSTR("/2.html")};
        const void* relatives[] = {relative};
        const CFArrayRef mixed = CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks);
        const CFArrayRef empty = CFArrayCreate(nullptr, values, 0, &kCFTypeArrayCallBacks);
        const CFArrayRef based = CFArrayCreate(nullptr, relatives, 1, &kCFTypeArrayCallBacks);
        const CFArrayRef good = CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks);
        for (const CFTypeRef list :
             {CFTypeRef(nullptr), CFTypeRef(page), CFTypeRef(mixed), CFTypeRef(empty), CFTypeRef(based)})
            EXPECT_EQ(open(list, nullptr), paramErr);
        LSApplicationParameters newer = {};
        newer.version = 1;
        EXPECT_EQ(open(good, &newer), paramErr);
        LSApplicationParameters withArguments = {};
        withArguments.argv = good;
        EXPECT_EQ(open(good, &withArguments), paramErr);
        EXPECT_EQ(LSOpenCFURLRef(nullptr, nullptr), paramErr);
        EXPECT_EQ(LSOpenCFURLRef(relative, nullptr), paramErr);
        for (const CFTypeRef object : {CFTypeRef(mixed), CFTypeRef(empty), CFTypeRef(based), CFTypeRef(good),
                                       CFTypeRef(page), CFTypeRef(relative)})
            CFRelease(object);
    });
    EXPECT_THAT(visits, IsEmpty());
}

TEST_F(LaunchServices, GivesNoProcessNumbersAway)
{
    viewers.Install("org.example.Browser");
    viewers.MakeDefault("org.example.Browser", "text/html");
    const auto visits = viewers.VisitsOf([] {
        const void* page = MakeFileUrl("/1.html");
        const CFArrayRef list = CFArrayCreate(nullptr, &page, 1, &kCFTypeArrayCallBacks);
        ProcessSerialNumber numbers[2] = {{1, 2}, {3, 4}};
        EXPECT_EQ(LSOpenURLsWithRole(list, kLSRolesViewer, nullptr, nullptr, numbers, 1), noErr);
        EXPECT_EQ(numbers[0].highLongOfPSN + numbers[0].lowLongOfPSN, 0U);
        EXPECT_EQ(numbers[1].lowLongOfPSN, 4U);
        CFRelease(list);
        CFRelease(page);
    });
    EXPECT_THAT(visits, SizeIs(1));
}

TEST_F(LaunchServices, HandsDownNothingOfTheHosts)
{
    viewers.Install("org.example.Viewer");
    const auto visits = viewers.VisitsOf([] {
        setenv("LD_LIBRARY_PATH", "/host/lib", 1);
        setenv("LD_PRELOAD", "/host/hook.so", 1);
        setenv("DESKTOP_STARTUP_ID", "host", 1);
        setenv("LD_PRELOAD_SETTINGS", "kept", 1); // only looks alike
        setenv("QUILLETS_KEPT", "kept", 1);
        EXPECT_GE(open("/etc/passwd", O_RDONLY), 0); // not closed on exec
        EXPECT_GE(dup2(1, 700), 0);
        std::signal(SIGPIPE, SIG_IGN);
        std::signal(SIGTERM, SIG_IGN);
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTERM);
        sigaddset(&blocked, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), noErr);
        sigset_t after;
        pthread_sigmask(SIG_BLOCK, nullptr, &after);
        EXPECT_TRUE(sigismember(&after, SIGTERM) && sigismember(&after, SIGUSR1) && !sigismember(&after, SIGINT));
    });
    ASSERT_THAT(visits, SizeIs(1));
    const Visit& visit = visits.front();
    EXPECT_THAT(visit.environment, Not(Contains(AnyOf(StartsWith("LD_LIBRARY_PATH="), StartsWith("LD_PRELOAD="),
                                                      StartsWith("DESKTOP_STARTUP_ID=")))));
    EXPECT_THAT(visit.environment, AllOf(Contains("QUILLETS_KEPT=kept"), Contains("LD_PRELOAD_SETTINGS=kept")));
    EXPECT_THAT(visit.descriptors, UnorderedElementsAre("0 /dev/null", "1 /dev/null", "2 /dev/null"));
    EXPECT_THAT(visit.status, HasSubstr("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"));
    EXPECT_EQ(visit.session, "leads its session");
    EXPECT_EQ(visit.folder, std::filesystem::current_path().string());
}

volatile std::sig_atomic_t g_childSignals = 0;

TEST_F(LaunchServices, LeavesNoChildAndNoSignalBehind)
{
    viewers.Install("org.example.Viewer");
    ASSERT_EQ(mkfifo((viewers.Folder() + "/hold").c_str(), 0600), 0);
    EXPECT_EQ(RunInChild([this] {
                  std::signal(SIGCHLD, [](int) { g_childSignals = g_childSignals + 1; });
                  const FSRef viewer = Find("org.example.Viewer");
                  EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), noErr); // the viewer is running now, and waits
                  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG | __WALL), -1);
                  EXPECT_EQ(errno, ECHILD);
                  EXPECT_EQ(g_childSignals, 0);
                  const int hold = open((viewers.Folder() + "/hold").c_str(), O_WRONLY); // once the viewer reads it
                  EXPECT_GE(hold, 0);
                  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG | __WALL), -1);
                  close(hold);
                  return 0;
              }),
              0);
}

TEST_F(LaunchServices, WorksWhereTheHostIgnoresItsChildren)
{
    viewers.Install("org.example.Viewer");
    const auto visits = viewers.VisitsOf([] {
        std::signal(SIGCHLD, SIG_IGN);
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), noErr);
    });
    EXPECT_THAT(visits, SizeIs(1));
}

TEST_F(LaunchServices, SurvivesAProgramThatCannotBeStarted)
{
    WriteFile(viewers.Programs() + "/broken", "neither a program nor a script\n");
    std::filesystem::permissions(viewers.Programs() + "/broken", std::filesystem::perms::owner_all);
    viewers.InstallLine("org.example.Broken", "broken %u");
    viewers.InstallLine("org.example.Failing", "false %u");
    viewers.InstallLine("org.example.Nothing", "", "X-Nothing=1");
    viewers.Install("org.example.Astray", "%u", "Path=/no/such/folder");
    viewers.Install("org.example.Viewer");
    const auto visits = viewers.VisitsOf([] {
        for (const char* id : {"org.example.Broken", "org.example.Astray"}) {
            const FSRef viewer = Find(id);
            EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), kLSNoExecutableErr) << id;
        }
        const FSRef failing = Find("org.example.Failing");
        EXPECT_EQ(OpenWith(&failing, {"/1.html"}), noErr); // what it makes of the page is its own matter
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/2.html"}), noErr);
    });
    EXPECT_THAT(ArgumentsOf(visits), ElementsAre(Words{"file:///2.html"}));
}

TEST_F(LaunchServices, IsQuietWithoutAnyApplication)
{
    testing::internal::CaptureStderr();
    const auto visits = viewers.VisitsOf([] {
        EXPECT_EQ(OpenWith(nullptr, {"/1.html"}), kLSApplicationNotFoundErr);
        EXPECT_EQ(OpenAddress("https://example.org/"), kLSApplicationNotFoundErr);
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(visits, IsEmpty());
}

TEST_F(LaunchServices, IsQuietWhereItsModuleIsMissingOrCannotBeLoaded)
{
    viewers.Install("org.example.Viewer");
    viewers.MakeDefault("org.example.Viewer", "text/html");
    const CTemporaryFolder layer;
    std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform.so.1", layer / "libcvplatform.so.1");
    const auto check = [&layer](const char* answers) {
        const ProgramResult result =
            RunProgram({CV_TEST_BIN_DIR "/launchservices/opener"}, {{"LD_LIBRARY_PATH", layer.Path()}});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.out, answers);
        EXPECT_EQ(result.err, "");
    };
    const char* const nobody = "-10814 -10814 -10814 -10814 0 0 1";
    check(nobody);
    const std::string module = layer / "libcvplatform-launch.so";
    WriteFile(module, "no code");
    check(nobody);
    // A module of another version: its entry has another name.
    std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform-image.so", module,
                               std::filesystem::copy_options::overwrite_existing);
    check(nobody);
    EXPECT_THAT(viewers.TakeVisits(), IsEmpty());
    std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform-launch.so", module,
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_THAT(viewers.VisitsOf([&check] { check("0 0 0 0 0 0 1"); }), SizeIs(2));
}

TEST_F(LaunchServices, KeepsToTheFolderThatTheEntryNames)
{
    viewers.Install("org.example.Viewer", "%u", "Path=/usr");
    const auto visits = viewers.VisitsOf([] {
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), noErr);
    });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_EQ(visits.front().folder, "/usr");
}

TEST_F(LaunchServices, StartsATerminalForAnEntryThatWantsOne)
{
    WriteFile(viewers.Programs() + "/xdg-terminal-exec", "#!/bin/sh\nIN_TERMINAL=yes exec \"$@\"\n");
    std::filesystem::permissions(viewers.Programs() + "/xdg-terminal-exec", std::filesystem::perms::owner_all);
    viewers.Install("org.example.Reader", "%f", "Terminal=true");
    const auto visits = viewers.VisitsOf([] {
        const FSRef viewer = Find("org.example.Reader");
        EXPECT_EQ(OpenWith(&viewer, {"/a b$(x).html"}), noErr);
    });
    ASSERT_THAT(visits, SizeIs(1));
    EXPECT_THAT(visits.front().arguments, ElementsAre("/a b$(x).html"));
    EXPECT_THAT(visits.front().environment, Contains("IN_TERMINAL=yes"));
}

TEST_F(LaunchServices, NeverLetsAShellReadAnAddress)
{
    // The standard forbids a field code in quotes; people write such entries all the same.
    viewers.InstallLine("org.example.Shell", "sh -c \"exec " +
                                                 std::string(CV_TEST_BIN_DIR "/launchservices/recorder ") +
                                                 viewers.Folder() + " %f\"");
    const CTemporaryFolder trap;
    const auto visits = viewers.VisitsOf([&trap] {
        const FSRef viewer = Find("org.example.Shell");
        EXPECT_EQ(OpenWith(&viewer, {"/x;touch " + (trap / "sprung") + ";$(touch " + (trap / "sprung") + ").html"}),
                  noErr);
    });
    EXPECT_THAT(visits, SizeIs(1));
    EXPECT_FALSE(FileExists(trap / "sprung"));
}

TEST_F(LaunchServices, GoesToAHostThatOpensPagesItself)
{
    viewers.Install("org.example.Viewer");
    const auto visits = viewers.VisitsOf([] {
        struct Seen {
            std::string url, application;
            int count = 0;
        } seen;
        const auto record = [](CFURLRef url, CFURLRef application, void* data) -> OSStatus {
            Seen& now = *static_cast<Seen*>(data);
            now.url = TextOf(CFURLGetString(url));
            now.application = application ? TextOf(CFURLGetString(application)) : "";
            ++now.count;
            return -1;
        };
        CVSetLaunchHandler(record, &seen);
        const FSRef viewer = Find("org.example.Viewer");
        EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), -1);
        EXPECT_EQ(seen.url, "file://localhost/1.html");
        EXPECT_THAT(seen.application, EndsWith("org.example.Viewer.desktop"));
        EXPECT_EQ(OpenAddress("https://example.org/"), -1);
        EXPECT_EQ(seen.url, "https://example.org/");
        EXPECT_EQ(seen.application, "");
        EXPECT_EQ(seen.count, 2);
        CVSetLaunchHandler(nullptr, nullptr);
        EXPECT_EQ(OpenWith(&viewer, {"/2.html"}), noErr);
        EXPECT_EQ(seen.count, 2);
    });
    EXPECT_THAT(ArgumentsOf(visits), ElementsAre(Words{"file:///2.html"}));
}

TEST_F(LaunchServices, WorksFromSeveralThreadsAtOnce)
{
    viewers.Install("org.example.Viewer");
    const auto visits = viewers.VisitsOf([] {
        const auto work = [] {
            for (int count = 0; count < 5; ++count) {
                const FSRef viewer = Find("org.example.Viewer");
                EXPECT_EQ(OpenWith(&viewer, {"/1.html"}), noErr);
            }
        };
        std::thread threads[] = {std::thread(work), std::thread(work), std::thread(work)};
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_THAT(visits, SizeIs(15));
}

} // namespace
