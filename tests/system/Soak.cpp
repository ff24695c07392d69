// tests/system/Soak.cpp
//
// Random use for some time, as fast as it goes: soak SECONDS [SEED]. One process loads and unloads
// the bundle, uses the dialog, help and preferences; two others write preferences beside it. What
// was written has to be read, and memory, descriptors, threads and mappings (on a display also what
// the server keeps for us) have to stay where they were once all was used. DISPLAY decides whether
// windows are real. Settings go to a folder of its own.
#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>
#include <dirent.h>
#include <dlfcn.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/res.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "frame/IProductManager.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPeers = 2;
constexpr const char* kSection = "Soak";
// On purpose some references stay behind with each dialog (its eight texts and the event of its end)
// and with each visit to the web site (its address). What they cost is no leak: 495 and 32 bytes, a
// slot of the table of references, which doubles as it grows, and what malloc adds to each block.
constexpr long kLeftByADialog = 800;
constexpr long kLeftByAVisit = 64;
constexpr long kHeapSlack = 512 * 1024;
constexpr long kResidentSlackKiB = 6 * 1024;

[[noreturn]] __attribute__((format(printf, 1, 2))) void Fail(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::fprintf(stderr, "soak: ");
    std::vfprintf(stderr, format, arguments);
    std::fprintf(stderr, "\n");
    va_end(arguments);
    _exit(1);
}

std::mt19937 g_random;

unsigned Any(unsigned below)
{
    return static_cast<unsigned>(g_random() % below);
}

/// The bundle, loaded from its first use until Unload.
class CBundle {
public:
    IProductManager& Manager()
    {
        if (!m_code)
            m_code = dlopen(CV_BUNDLE_CODE, RTLD_NOW | RTLD_LOCAL);
        if (!m_code)
            Fail("%s", dlerror());
        return *reinterpret_cast<GetLibProductManagerProc>(dlsym(m_code, "GetLibProductManager"))();
    }
    void Unload()
    {
        if (m_code && dlclose(m_code) != 0)
            Fail("%s", dlerror());
        m_code = nullptr;
        if (void* const still = dlopen(CV_BUNDLE_CODE, RTLD_NOW | RTLD_NOLOAD)) {
            (void)still;
            Fail("the bundle is still there after it was unloaded");
        }
    }

private:
    void* m_code = nullptr;
};

// Numbers that this process has written and read under `key`; they never go back.
void Write(IProductManager& manager, const std::string& key, long number)
{
    const std::string text = std::to_string(number);
    char back[32] = "";
    if (!manager.SetRegistryKey(kSection, key.c_str(), text.c_str()))
        Fail("%s=%ld was not stored", key.c_str(), number);
    if (!manager.GetRegistryKey(kSection, key.c_str(), back, sizeof back) || text != back)
        Fail("%s: %s was stored, %s read", key.c_str(), text.c_str(), back);
}

void CheckOthers(IProductManager& manager, std::vector<long>& last)
{
    for (int peer = 0; peer <= kPeers; ++peer) {
        char text[32] = "";
        const std::string key = "peer" + std::to_string(peer);
        const bool found = manager.GetRegistryKey(kSection, key.c_str(), text, sizeof text);
        long& before = last[static_cast<std::size_t>(peer)];
        const long now = found ? std::atol(text) : 0;
        if (now < before)
            Fail("%s went back from %ld to %ld", key.c_str(), before, now);
        before = now;
    }
}

[[noreturn]] void RunPeer(int peer, unsigned seed, Clock::time_point end, int report)
{
    g_random.seed(seed);
    CBundle bundle;
    std::vector<long> last(kPeers + 1, 0);
    long writes = 0;
    while (Clock::now() < end) {
        if (Any(4) == 0)
            CheckOthers(bundle.Manager(), last);
        else
            Write(bundle.Manager(), "peer" + std::to_string(peer), ++writes);
        if (Any(200) == 0)
            bundle.Unload();
    }
    if (write(report, &writes, sizeof writes) != sizeof writes)
        _exit(1);
    _exit(0);
}

int CountIn(const char* folder)
{
    int count = 0;
    DIR* const entries = opendir(folder);
    if (!entries)
        Fail("no %s", folder);
    while (readdir(entries))
        ++count;
    closedir(entries);
    return count;
}

/// What the display's server keeps for all its clients; 0 without a display.
long CountServerResources()
{
    if (!std::getenv("DISPLAY"))
        return 0;
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    long count = 0;
    xcb_res_query_clients_reply_t* const clients =
        xcb_res_query_clients_reply(connection, xcb_res_query_clients(connection), nullptr);
    if (!clients)
        Fail("the display does not tell what it keeps");
    const xcb_res_client_t* const client = xcb_res_query_clients_clients(clients);
    for (int index = 0; index < xcb_res_query_clients_clients_length(clients); ++index) {
        xcb_res_query_client_resources_reply_t* const kinds = xcb_res_query_client_resources_reply(
            connection, xcb_res_query_client_resources(connection, client[index].resource_base), nullptr);
        if (!kinds)
            continue;
        for (int kind = 0; kind < xcb_res_query_client_resources_types_length(kinds); ++kind)
            count += static_cast<long>(xcb_res_query_client_resources_types(kinds)[kind].count);
        free(kinds);
    }
    free(clients);
    xcb_disconnect(connection);
    return count;
}

struct Figures {
    long heap = 0;     // bytes in use
    long resident = 0; // KiB
    int descriptors = 0;
    int threads = 0;
    int mappings = 0;
    long server = 0;
};

Figures Measure()
{
    Figures figures;
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    figures.heap = static_cast<long>(heap.uordblks + heap.hblkhd);
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    figures.resident = pages * (sysconf(_SC_PAGESIZE) / 1024);
    figures.descriptors = CountIn("/proc/self/fd");
    figures.threads = CountIn("/proc/self/task");
    std::ifstream maps("/proc/self/maps");
    figures.mappings =
        static_cast<int>(std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n'));
    figures.server = CountServerResources();
    return figures;
}

struct Counts {
    long dialogs = 0, helps = 0, settings = 0, unloads = 0, visits = 0, launches = 0;
};

OSStatus CountLaunch(CFURLRef, CFURLRef, void* data)
{
    ++static_cast<Counts*>(data)->launches;
    return noErr;
}

class CUser {
public:
    explicit CUser(bool onDisplay) : m_onDisplay(onDisplay) { CVSetLaunchHandler(CountLaunch, &m_counts); }

    void Act()
    {
        switch (Any(8)) {
        case 0:
            UseDialog();
            break;
        case 1:
            m_bundle.Manager().OpenHelp(nullptr, Any(2) ? 300 : Any(1000));
            ++m_counts.helps;
            break;
        case 2:
            if (Any(4) == 0)
                Unload();
            break;
        default:
            UseSettings();
            break;
        }
    }
    void Unload()
    {
        m_bundle.Unload();
        ++m_counts.unloads;
    }
    const Counts& Done() const { return m_counts; }

private:
    void UseSettings()
    {
        if (Any(3) == 0)
            CheckOthers(m_bundle.Manager(), m_last);
        else if (Any(4) == 0)
            m_bundle.Manager().SetDragVertical(Any(2) != 0);
        else
            Write(m_bundle.Manager(), "peer" + std::to_string(kPeers), ++m_writes);
        ++m_counts.settings;
    }

    static ControlRef ControlOf(WindowRef window, OSType signature, SInt32 id)
    {
        const ControlID wanted = {signature, id};
        ControlRef control = nullptr;
        (void)GetControlByID(window, &wanted, &control);
        return control;
    }
    static void Click(ControlRef control) { (void)HIViewSimulateClick(control, kControlButtonPart, 0, nullptr); }
    void Pump()
    {
        (void)CVPump();
        if (!m_onDisplay)
            CVAdvanceTime(0.05);
    }
    // Input as the display would report it; only windows in memory take it.
    void Fumble(WindowRef window)
    {
        static constexpr UInt32 kKeys[] = {0xFF09, ' ', 0xFF51, 0xFF53, 0xFF08};
        const UInt32 key = kKeys[Any(5)];
        if (m_onDisplay) {
            Click(ControlOf(window, 'KNOB', 0));
        } else if (Any(2)) {
            (void)CVPostPointer(window, Any(2), Any(500), Any(300), kCVButtonLeft, 0);
            (void)CVPostPointer(window, kCVPointerRelease, Any(500), Any(300), kCVButtonLeft, 0);
        } else {
            (void)CVPostKey(key, key == ' ' ? " " : nullptr, 0);
        }
        Pump();
    }
    void End(WindowRef window)
    {
        switch (Any(5)) {
        case 0:
            DisposeWindow(window);
            break;
        case 1:
            Click(ControlOf(window, 'CLOS', 1));
            break;
        case 2:
            if (!m_onDisplay)
                (void)CVPostKey(Any(2) ? 0xFF0D : 0xFF1B, nullptr, 0);
            break;
        default:
            Click(ControlOf(window, 'CLOS', 0));
            break;
        }
        Pump();
        DisposeWindow(window); // one that is gone already is no window
    }

    void UseDialog()
    {
        m_bundle.Manager().SetInfoDialogOptions(1, true);
        m_bundle.Manager().InfoDialog(nullptr, Any(2) != 0);
        const WindowRef window = GetWindowList();
        if (!window || !IsWindowVisible(window))
            Fail("there is no dialog");
        Pump();
        for (unsigned left = Any(6); left > 0 && IsValidWindowPtr(window); --left)
            Fumble(window);
        if (IsValidWindowPtr(window) && Any(4) == 0)
            Click(ControlOf(window, 'HELP', 0));
        if (IsValidWindowPtr(window) && Any(4) == 0) {
            m_bundle.Manager().GoToSite();
            ++m_counts.visits;
        }
        End(window);
        for (int turn = 0; turn < 3; ++turn)
            Pump();
        if (GetWindowList())
            Fail("a window stays behind");
        ++m_counts.dialogs;
    }

    const bool m_onDisplay;
    CBundle m_bundle;
    Counts m_counts;
    std::vector<long> m_last = std::vector<long>(kPeers + 1, 0);
    long m_writes = 0;
};

void Print(const char* when, const Figures& figures, const Counts& counts)
{
    std::printf("%-8s heap %8ld bytes, resident %6ld KiB, %3d descriptors, %2d threads, %4d mappings, %3ld on the "
                "server; %ld dialogs, %ld helps, %ld settings, %ld loads, %ld visits, %ld launches\n",
                when, figures.heap, figures.resident, figures.descriptors, figures.threads, figures.mappings,
                figures.server, counts.dialogs, counts.helps, counts.settings, counts.unloads, counts.visits,
                counts.launches);
    std::fflush(stdout);
}

void RequireFlat(const Figures& first, const Counts& before, const Figures& last, const Counts& after)
{
    // Every launch that a click on the logo asks for is a visit too.
    const long dialogs = after.dialogs - before.dialogs;
    const long left = dialogs * kLeftByADialog + (after.launches - before.launches) * kLeftByAVisit;
    if (last.heap > first.heap + left + kHeapSlack)
        Fail("the heap grew by %ld bytes, %ld are meant to stay", last.heap - first.heap, left);
    if (last.resident > first.resident + left / 1024 * 5 / 4 + kResidentSlackKiB)
        Fail("the process grew by %ld KiB", last.resident - first.resident);
    if (last.descriptors != first.descriptors || last.threads != first.threads)
        Fail("descriptors or threads stay behind");
    if (last.mappings > first.mappings + 8)
        Fail("%d mappings stay behind", last.mappings - first.mappings);
    if (last.server != first.server)
        Fail("the server keeps %ld things more", last.server - first.server);
}

void RunUser(bool onDisplay, Clock::time_point start, double seconds)
{
    if (!onDisplay && CVUseHeadlessDesktop(true) != noErr)
        Fail("no windows in memory");
    const auto until = [&](double share) {
        return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds * share));
    };
    CUser user(onDisplay);
    const auto use = [&](double share) {
        while (Clock::now() < until(share))
            user.Act();
        user.Unload();
        return Measure();
    };
    const Figures first = use(0.1); // by then everything has been used
    const Counts before = user.Done();
    Print("at 10 %", first, before);
    Figures last;
    for (int tenth = 2; tenth <= 10; ++tenth) {
        last = use(tenth / 10.0);
        Print(("at " + std::to_string(tenth * 10) + " %").c_str(), last, user.Done());
    }
    RequireFlat(first, before, last, user.Done());
}

} // namespace

int main(int count, char** words)
{
    const double seconds = count > 1 ? std::atof(words[1]) : 0;
    const unsigned seed =
        count > 2 ? static_cast<unsigned>(std::strtoul(words[2], nullptr, 10)) : std::random_device()();
    if (seconds <= 0) {
        std::fprintf(stderr, "Usage: soak SECONDS [SEED]\n");
        return 2;
    }
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    char folder[] = "/tmp/quillets-soak-XXXXXX";
    if (!mkdtemp(folder))
        Fail("no folder");
    setenv("XDG_CONFIG_DIRS", folder, 1);
    setenv("XDG_CONFIG_HOME", folder, 1);
    setenv("HOME", folder, 1);

    const auto start = Clock::now();
    int report[2];
    if (pipe(report) != 0)
        Fail("no pipe");
    std::vector<pid_t> peers;
    for (int peer = 0; peer < kPeers; ++peer) {
        const pid_t child = fork();
        if (child == 0)
            RunPeer(peer, seed + 1 + static_cast<unsigned>(peer),
                    start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)),
                    report[1]);
        peers.push_back(child);
    }
    g_random.seed(seed);
    RunUser(std::getenv("DISPLAY") != nullptr, start, seconds);
    long writes = 0;
    for (const pid_t peer : peers) {
        int status = 0;
        long more = 0;
        if (waitpid(peer, &status, 0) != peer || status != 0 || read(report[0], &more, sizeof more) != sizeof more)
            Fail("another process failed");
        writes += more;
    }
    std::printf("%ld settings were written by the other processes; all is as it was\n", writes);
    std::filesystem::remove_all(folder);
    return 0;
}
