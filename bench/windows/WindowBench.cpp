// bench/windows/WindowBench.cpp
//
// How long a dialog takes to the screen and what memory that costs: ours beside a window drawn by
// hand, and beside the same in other toolkits. Each measurement is a process of its own
// (PeerHost.cpp), all of them in turn on one virtual X server; this program watches the screen.
//
// A frame is on the screen when the server has drawn nine tenths of what is seen in the end: at each
// change that the server reports the window is read, and its pixels that are unlike its corner are
// counted. The clock starts before the toolkit's code is loaded.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Screen.h"

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

// What is compared: the first of each group is what the others are set against.
struct Peer {
    const char* group;
    const char* name;
    const char* module;
};
const Peer kPeers[] = {
    {"window", "floor: xcb, cairo, Pango", CV_PEERS "/FloorWindow.so"},
    {"window", "ours", CV_PEERS "/OurWindow.so"},
    {"window", "GTK 3", CV_PEERS "/GtkWindow.so"},
    {"window", "Qt 6", CV_PEERS "/QtWindow.so"},
    {"window", "FLTK", CV_PEERS "/FltkWindow.so"},
    {"information", "ours", CV_PEERS "/OurInfo.so"},
    {"information", "GtkAboutDialog", CV_PEERS "/GtkInfo.so"},
    {"information", "QMessageBox::about", CV_PEERS "/QtInfo.so"},
};

constexpr int kDefaultRounds = 11;
constexpr int kSmallestSide = 100; // what is smaller is no dialog but a toolkit's helper
constexpr double kDrawn = 0.9;

struct Look {
    double seconds;
    long ink;
};

double Now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

[[noreturn]] void Fail(const std::string& what)
{
    std::fprintf(stderr, "WindowBench: %s\n", what.c_str());
    std::exit(1);
}

pid_t Start(std::vector<std::string> words, int output)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, 1);
    pid_t process = 0;
    if (posix_spawnp(&process, pointers[0], &actions, nullptr, pointers.data(), environ) != 0)
        Fail("cannot start " + words.front());
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

// Sees windows appear and change.
class CWatcher {
public:
    explicit CWatcher(const CScreen& screen) : m_connection(screen.Connection()), m_root(screen.Root())
    {
        const xcb_query_extension_reply_t* const damage = xcb_get_extension_data(m_connection, &xcb_damage_id);
        if (!damage || !damage->present)
            Fail("the server does not report damage");
        m_damageEvent = damage->first_event;
        constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, kEvents);
        xcb_damage_query_version_unchecked(m_connection, 1, 1);
        xcb_damage_create(m_connection, xcb_generate_id(m_connection), m_root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(m_connection);
    }

    int Descriptor() const { return xcb_get_file_descriptor(m_connection); }
    void Forget() { m_looks.clear(); }
    // Seconds from `start` to the frame that was there at `end`; below 0 when nothing was seen.
    double FrameTime(double start, double end) const
    {
        long ink = 0;
        for (const Look& look : m_looks) {
            if (look.seconds >= start && look.seconds < end)
                ink = look.ink;
        }
        for (const Look& look : m_looks) {
            if (ink > 0 && look.seconds >= start && static_cast<double>(look.ink) >= kDrawn * static_cast<double>(ink))
                return look.seconds - start;
        }
        return -1;
    }

    // Takes what the server has said, and looks at the window after each change. Looking brings
    // events along, which no descriptor shows: hence as long as there are any.
    void Take()
    {
        while (TakeEvents()) {
        }
    }

private:
    bool TakeEvents()
    {
        bool changed = false;
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
            const unsigned type = event->response_type & 0x7FU;
            changed = changed || type == m_damageEvent;
            if (type == XCB_MAP_NOTIFY) {
                TakeMap(reinterpret_cast<const xcb_map_notify_event_t*>(event.get())->window);
                changed = true;
            } else if (type == XCB_UNMAP_NOTIFY &&
                       reinterpret_cast<const xcb_unmap_notify_event_t*>(event.get())->window == m_window) {
                m_window = 0;
            }
        }
        if (changed && m_window != 0) {
            const long ink = Ink();
            m_looks.push_back({Now(), ink}); // at the latest then: what came since the event is in it too
        }
        return changed;
    }
    void TakeMap(xcb_window_t window)
    {
        const Owned<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        if (!size || size->width < kSmallestSide || size->height < kSmallestSide)
            return;
        m_window = window;
        m_width = size->width;
        m_height = size->height;
    }
    long Ink() const
    {
        const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(
            m_connection,
            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, 0, 0, m_width, m_height, ~0U), nullptr));
        if (!image)
            return 0;
        const std::uint32_t* const pixels = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(image.get()));
        const std::uint32_t ground = pixels[2 * m_width + 2];
        return std::count_if(pixels, pixels + std::size_t{m_width} * m_height,
                             [ground](std::uint32_t pixel) { return pixel != ground; });
    }

    xcb_connection_t* const m_connection;
    const xcb_window_t m_root;
    unsigned m_damageEvent = 0;
    xcb_window_t m_window = 0;
    std::uint16_t m_width = 0, m_height = 0;
    std::vector<Look> m_looks;
};

struct Result {
    double first = 0, second = 0; ///< Seconds to the frame.
    double work = 0;              ///< Seconds of the process's own time for the second.
    double memory = 0;            ///< Most that it ever had, in MB.
};

Result Measure(CWatcher& watcher, const Peer& peer)
{
    int ends[2] = {};
    if (pipe2(ends, O_CLOEXEC) != 0)
        Fail("no pipe");
    const pid_t process = Start({CV_PEERS "/PeerHost", peer.module}, ends[1]);
    close(ends[1]);
    watcher.Forget();
    std::map<std::string, double> said;
    Result result;
    std::FILE* const output = fdopen(ends[0], "r");
    setvbuf(output, nullptr, _IONBF, 0); // what is read is what poll sees
    for (;;) {
        pollfd waited[] = {{watcher.Descriptor(), POLLIN, 0}, {ends[0], POLLIN, 0}};
        (void)poll(waited, 2, -1);
        watcher.Take();
        if (waited[1].revents == 0)
            continue;
        char line[128] = "", what[32] = "";
        long long number = 0;
        if (!std::fgets(line, sizeof line, output) || std::sscanf(line, "%31s %lld", what, &number) != 2)
            break;
        said[what] = static_cast<double>(number);
    }
    std::fclose(output);
    int status = 0;
    waitpid(process, &status, 0);
    const double first = said["first"] * 1e-9, second = said["second"] * 1e-9;
    result.first = watcher.FrameTime(first, second);
    result.second = watcher.FrameTime(second, Now());
    result.work = said["work"] * 1e-9;
    result.memory = said["memory"] / 1024;
    if (status != 0 || result.first < 0 || result.second < 0)
        Fail(std::string("nothing was seen of ") + peer.name);
    return result;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double MedianOf(const std::vector<Result>& results, double Result::*part)
{
    std::vector<double> values;
    for (const Result& result : results)
        values.push_back(result.*part);
    return Median(values);
}

} // namespace

int main(int count, char** words)
{
    const int rounds = count > 1 ? std::max(std::atoi(words[1]), 1) : kDefaultRounds;
    // What a desktop would add is left out, for all alike.
    for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "GTK_THEME", "QT_STYLE_OVERRIDE"})
        unsetenv(name);
    setenv("NO_AT_BRIDGE", "1", 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("GDK_BACKEND", "x11", 1);
    std::vector<const Peer*> peers;
    for (const Peer& peer : kPeers) {
        if (access(peer.module, R_OK) == 0)
            peers.push_back(&peer);
    }
    ScreenOptions options;
    options.manager = false; // whose work would be counted for all alike
    const CScreen screen(options);
    CWatcher watcher(screen);
    std::map<const Peer*, std::vector<Result>> results;
    for (int round = -1; round < rounds; ++round) { // the one before brings files into memory
        for (const Peer* const peer : peers) {
            const Result result = Measure(watcher, *peer);
            if (round >= 0)
                results[peer].push_back(result);
        }
    }
    std::printf("%-12s %-26s %10s %10s %10s %10s\n", "", "", "first ms", "second ms", "its work", "memory MB");
    for (const Peer* const peer : peers) {
        const std::vector<Result>& all = results[peer];
        std::printf("%-12s %-26s %10.1f %10.2f %10.2f %10.1f\n", peer->group, peer->name,
                    MedianOf(all, &Result::first) * 1e3, MedianOf(all, &Result::second) * 1e3,
                    MedianOf(all, &Result::work) * 1e3, MedianOf(all, &Result::memory));
    }
    return 0;
}
