// tests/support/TestMain.cpp
//
// The main of every test program: a folder of its own serves as home, settings and machine-wide
// settings, and the user's language is unset, so that no test depends on who runs it.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/support/Support.h"

namespace {

std::string g_folder;
pid_t g_owner = 0;

void RemoveFolder()
{
    std::error_code ignored;
    if (getpid() == g_owner) // children that a test forks leave it alone
        std::filesystem::remove_all(g_folder, ignored);
}

bool MakeFolder()
{
    const char* const base = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/quillets-test-XXXXXX";
    if (!mkdtemp(pattern.data()))
        return false;
    g_folder = std::filesystem::canonical(pattern).string();
    g_owner = getpid();
    atexit(RemoveFolder);
    return true;
}

} // namespace

std::string OwnFolder()
{
    return g_folder;
}

#ifdef __SANITIZE_ADDRESS__
// On purpose one reference stays behind with every text that the dialog toolkit sets or shows, and
// with every address that is opened.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:CreateRetainedString\nleak:CBaseProductManager::GoToSite\nleak:libfontconfig.so\n";
}
#endif

#ifdef __SANITIZE_THREAD__
// These libraries are not built for the thread checker, which therefore sees none of their locks: not
// what keeps Pango's thread from ours, nor two apart that take turns at GLib's main loop.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions()
{
    return "called_from_lib:libglib-2.0.so\n"
           "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libgobject-2.0.so\n"
           "called_from_lib:libgdk_pixbuf-2.0.so\n"
           "race:libfontconfig.so\n"
           "race:libQt6\n"
           "race:OtherThreadTest.cpp\n"
           "mutex:libpango-1.0.so\n"
           "mutex:libgdk-3.so\n"
           "mutex:cv_MPExitCriticalRegion\n"; // tests leave regions that they do not hold
}
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The programs that tests start are excused from the same.
static void ExcusePrograms(const char* variable, const char* suppressions)
{
    const std::string file = g_folder + "/excused";
    WriteFile(file, suppressions);
    setenv(variable, ("print_suppressions=0:suppressions=" + file).c_str(), 1);
}
#endif

int main(int count, char** words)
{
    if (!MakeFolder()) {
        std::perror("temporary folder");
        return 1;
    }
#ifdef __SANITIZE_ADDRESS__
    ExcusePrograms("LSAN_OPTIONS", __lsan_default_suppressions());
#endif
#ifdef __SANITIZE_THREAD__
    ExcusePrograms("TSAN_OPTIONS", __tsan_default_suppressions());
#endif
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "DISPLAY", "WAYLAND_DISPLAY"})
        unsetenv(name);
    const struct {
        const char* variable;
        const char* folder;
    } homes[] = {{"HOME", "home"},
                 {"XDG_CONFIG_HOME", "home/.config"},
                 {"XDG_DATA_HOME", "home/.local/share"},
                 {"XDG_CACHE_HOME", "home/.cache"},
                 {"XDG_CONFIG_DIRS", "etc/xdg"},
                 {"XDG_RUNTIME_DIR", "run"}};
    for (const auto& home : homes) {
        const std::string path = g_folder + "/" + home.folder;
        std::filesystem::create_directories(path);
        setenv(home.variable, path.c_str(), 1);
    }
    std::filesystem::permissions(g_folder + "/run", std::filesystem::perms::owner_all);
    testing::InitGoogleTest(&count, words);
    return RUN_ALL_TESTS();
}
