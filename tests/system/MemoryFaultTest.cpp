// tests/system/MemoryFaultTest.cpp
//
// Every allocation of a use of the component fails in turn, once or from then on. Each use runs in a
// process of its own: nothing may crash, hang or be lost, and once there is memory again everything
// works again.
#include <CVPlatform/CVPlatform.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "tests/support/PreferencesSupport.h"

// This program's own names stand before the C library's, for all that it loads.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

enum class Failing { Once, FromThenOn };

std::atomic<bool> g_armed = false;
std::atomic<int> g_left = 0; // allocations until the first that fails
std::atomic<bool> g_fired = false;
Failing g_failing = Failing::Once;

// The layer, its modules, the bundle and the C++ library on their behalf. GLib ends the process when it
// gets no memory and libplist does not look whether it did, so those always get some.
bool IsOurs(const void* caller)
{
    Dl_info image;
    if (dladdr(caller, &image) == 0)
        return false;
    for (const char* const name : {"libcvplatform", "/Quillets", "libstdc++"}) {
        if (std::strstr(image.dli_fname, name))
            return true;
    }
    return false;
}

bool Fails(const void* caller)
{
    if (!g_armed || !IsOurs(caller))
        return false;
    const int left = g_left.fetch_sub(1) - 1;
    const bool fails = left == 0 || (left < 0 && g_failing == Failing::FromThenOn);
    if (fails) {
        g_fired = true;
        errno = ENOMEM;
    }
    return fails;
}

} // namespace

#define EXPORT __attribute__((visibility("default")))

extern "C" {

EXPORT void* malloc(size_t size)
{
    return Fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
EXPORT void* calloc(size_t count, size_t size)
{
    return Fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
EXPORT void* realloc(void* memory, size_t size)
{
    return Fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
EXPORT void* aligned_alloc(size_t alignment, size_t size)
{
    return Fails(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
}
EXPORT int posix_memalign(void** memory, size_t alignment, size_t size)
{
    if (Fails(__builtin_return_address(0)))
        return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}

namespace {

#ifdef QUILLETS_FULL
constexpr int kDialogStep = 1;
#else
constexpr int kDialogStep = 29; // each opens two dialogs, and there are more than a thousand
#endif
constexpr int kSaved = 10;   // what a child answers when the use said that it stored the value
constexpr int kNotFired = 1; // added where there were not so many allocations

/// What `use` needs is done by `prepare`, with memory; `afterwards` says whether all works again.
struct Scenario {
    std::function<void()> prepare;
    std::function<bool()> use;
    std::function<bool()> afterwards;
};

int Play(const Scenario& scenario, int at, Failing failing)
{
    return RunInChild([&] {
        alarm(60);
        scenario.prepare();
        g_left = at;
        g_failing = failing;
        g_fired = false;
        g_armed = true;
        bool saved = false;
        try {
            saved = scenario.use();
            g_armed = false;
        } catch (...) {
            g_armed = false;
            ADD_FAILURE() << "an exception came out";
        }
        EXPECT_TRUE(scenario.afterwards());
        return (saved ? kSaved : 0) + (g_fired ? 0 : kNotFired);
    });
}

/// Calls `check` after each; answers how many allocations there were.
int TryEach(const Scenario& scenario, Failing failing, const std::function<void(bool saved)>& check = {}, int step = 1)
{
    const char* const first = std::getenv("FAULT_AT"); // for who looks for the reason
    for (int at = first ? std::atoi(first) : 1;; at += step) {
        const int code = Play(scenario, at, failing);
        EXPECT_TRUE(code == 0 || code == kNotFired || code == kSaved || code == kSaved + kNotFired)
            << "allocation " << at << ": " << code;
        if (check)
            check(code >= kSaved);
        if (code == kNotFired || code == kSaved + kNotFired || at > 20000 || testing::Test::HasFailure())
            return at - 1;
    }
}

class MemoryFault : public CPreferencesTest, public testing::WithParamInterface<Failing> {};

IProductManager& Manager()
{
    static auto& manager = *(new CLoadedBundle())->Manager();
    return manager;
}

const std::string g_code = BuiltBundle() + "/Contents/MacOS/Quillets";

// As a plug-in does, without memory of this test's own.
bool LoadsAndUnloads()
{
    void* const code = dlopen(g_code.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!code)
        return false;
    const auto get = reinterpret_cast<GetLibProductManagerProc>(dlsym(code, "GetLibProductManager"));
    const bool named = get && std::string_view(get()->GetProductName()).rfind("Corvane", 0) == 0;
    return dlclose(code) == 0 && named;
}

bool DialogOpensAndEnds()
{
    Manager().InfoDialog(nullptr, true);
    const WindowRef window = GetWindowList();
    if (!window || !IsWindowVisible(window))
        return false;
    (void)CVPump();
    (void)CVPostKey(0xFF0D, nullptr, 0);
    (void)CVPump();
    return !IsValidWindowPtr(window) && !GetWindowList();
}

} // namespace

TEST_P(MemoryFault, WhileTheBundleIsLoaded)
{
    if (CV_COUNTS)
        GTEST_SKIP() << "code that counts takes memory of its own when it is unloaded";
    const auto nothing = [] {
    };
    const auto use = [] {
        (void)LoadsAndUnloads();
        return false;
    };
    const int tried = TryEach({nothing, use, LoadsAndUnloads}, GetParam());
    EXPECT_GT(tried, 20);
}

TEST_P(MemoryFault, WhileASettingIsStored)
{
    ASSERT_TRUE(SetKey("Common", "Kept", "kept"));
    std::string before = "(none)";
    const Scenario scenario = {[] { (void)Manager(); }, [] { return Manager().SetRegistryKey("Common", "Key", "new"); },
                               [] {
                                   char value[10] = "";
                                   return Manager().GetRegistryKey("Common", "Kept", value, sizeof value) &&
                                          std::string(value) == "kept";
                               }};
    int round = 0;
    const int tried = TryEach(scenario, GetParam(), [&](bool saved) {
        const std::string now = GetKey("Common", "Key");
        // What cannot be stored machine-wide is stored for the user, where an older one hides it.
        const bool hidden = now == before && FileExists(UserFile());
        EXPECT_TRUE(now == "new" || (!saved && now == before) || (saved && hidden)) << now << " after " << before;
        std::filesystem::remove(UserFile());
        EXPECT_EQ(GetKey("Common", "Kept"), "kept");
        // What was stored already takes another way than what is new.
        before = ++round % 2 ? "old" : "(none)";
        EXPECT_TRUE(Manager().SetRegistryKey("Common", "Key", round % 2 ? "old" : nullptr));
    });
    EXPECT_GT(tried, 50);
}

TEST_P(MemoryFault, WhileASettingIsRead)
{
    ASSERT_TRUE(SetKey("Other", "Key", "value")); // not what is read already when the bundle is loaded
    const auto read = [] {
        char value[10] = "as";
        const bool found = Manager().GetRegistryKey("Other", "Key", value, sizeof value);
        return found ? std::string(value) == "value" : (std::string(value) == "as" ? false : throw 1);
    };
    EXPECT_GT(TryEach({[] { (void)Manager(); }, read, read}, GetParam()), 5);
}

TEST_P(MemoryFault, WhileTheDialogOpensAndEnds)
{
    const auto prepare = [] {
        (void)CVUseHeadlessDesktop(true);
        (void)Manager();
    };
    const auto use = [] {
        (void)DialogOpensAndEnds();
        return false;
    };
    const auto afterwards = [] {
        while (const WindowRef window = GetWindowList()) {
            DisposeWindow(window); // one whose end had no memory
            if (GetWindowList() == window)
                return false;
        }
        (void)CVPump();
        return DialogOpensAndEnds();
    };
    EXPECT_GT(TryEach({prepare, use, afterwards}, GetParam(), {}, kDialogStep), 200);
}

TEST_P(MemoryFault, WhileHelpIsOpened)
{
    static int s_launches = 0;
    const auto prepare = [] {
        CVSetLaunchHandler(
            [](CFURLRef, CFURLRef, void*) -> OSStatus {
                ++s_launches;
                return noErr;
            },
            nullptr);
        (void)Manager();
    };
    const auto use = [] {
        Manager().OpenHelp(nullptr, 300);
        Manager().GoToSite();
        return false;
    };
    EXPECT_GT(TryEach({prepare, use,
                       [&] {
                           s_launches = 0;
                           use();
                           return s_launches == 2;
                       }},
                      GetParam()),
              50);
}

INSTANTIATE_TEST_SUITE_P(OfMemory, MemoryFault, testing::Values(Failing::Once, Failing::FromThenOn),
                         [](const testing::TestParamInfo<Failing>& which) {
                             return which.param == Failing::Once ? "Once" : "FromThenOn";
                         });
