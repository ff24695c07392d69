// platform/launchservices/GioLauncher.cpp
//
// The launcher's module. GIO knows the user's applications; starting them is our own, because GIO's
// way hands the host's signal mask down, may talk to the session bus before it returns, and ties
// the host's life to that bus.
#include <gio/gdesktopappinfo.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/base/Forever.h"
#include "platform/launchservices/Bus.h"
#include "platform/launchservices/ExecLine.h"
#include "platform/launchservices/Gio.h"
#include "platform/launchservices/ILauncher.h"
#include "platform/launchservices/Spawn.h"

namespace {

using AppInfo = GOwned<GDesktopAppInfo>;

constexpr char kHtml[] = "text/html";
constexpr char kEntrySuffix[] = ".desktop";

// What a desktop entry means by a terminal; the desktops have no common word for it.
constexpr struct {
    const char* program;
    const char* beforeCommand; // may be null
} kTerminals[] = {
    {"xdg-terminal-exec", nullptr},
    {"x-terminal-emulator", "-e"},
    {"gnome-terminal", "--"},
    {"konsole", "-e"},
    {"xterm", "-e"},
};

// Threads that GLib starts at its first use, and ours, inherit this: the host's signals are for
// the host's threads.
class CSignalsBlocked {
public:
    CSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_mask);
    }
    ~CSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_mask, nullptr); }
    CSignalsBlocked(const CSignalsBlocked&) = delete;
    CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;

private:
    sigset_t m_mask;
};

std::string TextOf(const char* text)
{
    return text ? text : "";
}

std::string TakeText(char* text)
{
    const GText owner(text);
    return TextOf(text);
}

AppInfo OpenEntry(const std::string& file)
{
    return AppInfo(file.empty() ? nullptr : g_desktop_app_info_new_from_filename(file.c_str()));
}

AppInfo DefaultForType(const std::string& type)
{
    return AppInfo(G_DESKTOP_APP_INFO(g_app_info_get_default_for_type(type.c_str(), FALSE)));
}

AppInfo DefaultFor(const LaunchItem& item)
{
    if (item.path.empty()) {
        const GText scheme(g_ascii_strdown(item.uri.c_str(), static_cast<gssize>(item.uri.find(':'))));
        return AppInfo(G_DESKTOP_APP_INFO(g_app_info_get_default_for_uri_scheme(scheme.get())));
    }
    gboolean uncertain = FALSE;
    const std::string type = TakeText(g_content_type_guess(item.path.c_str(), nullptr, 0, &uncertain));
    AppInfo application = DefaultForType(uncertain ? kHtml : type);
    return application ? std::move(application) : DefaultForType(kHtml);
}

// The id by which the bus knows an application: its file's name.
std::string BusName(GDesktopAppInfo* entry)
{
    const std::string file = TakeText(g_path_get_basename(TextOf(g_desktop_app_info_get_filename(entry)).c_str()));
    const std::size_t suffix = sizeof kEntrySuffix - 1;
    return file.size() > suffix ? file.substr(0, file.size() - suffix) : "";
}

// Work that may block, each piece on a thread of its own.
class CBusWork {
public:
    void Start(std::function<void()> work)
    {
        Change(+1);
        try {
            std::thread([this, work = std::move(work)] {
                try {
                    work();
                } catch (...) { // out of memory; what was asked for does not open
                }
                Change(-1);
            }).detach();
        } catch (...) {
            Change(-1);
            throw;
        }
    }

    bool Finish(double seconds)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return m_running == 0; });
    }

private:
    void Change(int by)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_running += by;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_running = 0;
};

CForever<CBusWork> g_busWork;

bool StartInPath(const Arguments& arguments, const std::string& folder)
{
    const std::string program = arguments.empty() ? "" : TakeText(g_find_program_in_path(arguments[0].c_str()));
    return !program.empty() && StartProgram(program, arguments, folder) == 0;
}

bool StartInTerminal(const Arguments& arguments, const std::string& folder)
{
    for (const auto& terminal : kTerminals) {
        Arguments whole = {terminal.program};
        if (terminal.beforeCommand)
            whole.push_back(terminal.beforeCommand);
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        if (StartInPath(whole, folder))
            return true;
    }
    return false;
}

Launch StartEntry(GDesktopAppInfo* entry, const std::vector<LaunchItem>& items)
{
    GAppInfo* const information = G_APP_INFO(entry);
    const char* const line = g_app_info_get_commandline(information);
    if (!line || !*line) { // an entry may name no program if the bus can start it
        if (!g_desktop_app_info_get_boolean(entry, "DBusActivatable"))
            return Launch::Failed;
        g_busWork->Start([id = BusName(entry), items] { (void)OpenThroughActivation(id, items); });
        return Launch::Started;
    }
    int count = 0;
    char** words = nullptr;
    if (!g_shell_parse_argv(line, &count, &words, nullptr)) // takes quotes off, runs nothing
        return Launch::Failed;
    const Arguments unquoted(words, words + count);
    g_strfreev(words);

    const EntryTexts texts = {TextOf(g_app_info_get_name(information)),
                              TakeText(g_desktop_app_info_get_string(entry, "Icon")),
                              TextOf(g_desktop_app_info_get_filename(entry))};
    const std::string folder = TakeText(g_desktop_app_info_get_string(entry, "Path"));
    const auto start = g_desktop_app_info_get_boolean(entry, "Terminal") ? StartInTerminal : StartInPath;
    bool started = true;
    for (const Arguments& arguments : ExpandExecLine(unquoted, items, texts))
        started = start(arguments, folder) && started;
    return started ? Launch::Started : Launch::Failed;
}

Launch StartDefault(const LaunchItem& item)
{
    const AppInfo application = DefaultFor(item);
    return application ? StartEntry(application.get(), {item}) : Launch::NoApplication;
}

// As GLib and the toolkits decide it, GTK_USE_PORTAL being the user's way to insist.
bool IsSandboxed()
{
    return access("/.flatpak-info", F_OK) == 0 || std::getenv("SNAP") || TextOf(std::getenv("GTK_USE_PORTAL")) == "1";
}

class CGioLauncher final : public ILauncher {
public:
    std::string FindEntry(const std::string& id) override
    {
        const CSignalsBlocked blocked;
        if (id.empty() || id.find('/') != std::string::npos)
            return "";
        const AppInfo entry(g_desktop_app_info_new((id + kEntrySuffix).c_str()));
        return entry ? TextOf(g_desktop_app_info_get_filename(entry.get())) : "";
    }

    std::string DefaultEntry(const LaunchItem& item) override
    {
        const CSignalsBlocked blocked;
        const AppInfo entry = DefaultFor(item);
        return entry ? TextOf(g_desktop_app_info_get_filename(entry.get())) : "";
    }

    std::string NameOfEntry(const std::string& entry) override
    {
        const CSignalsBlocked blocked;
        const AppInfo information = OpenEntry(entry);
        return information ? TextOf(g_app_info_get_display_name(G_APP_INFO(information.get()))) : "";
    }

    bool HasPortal() override { return IsSandboxed(); }

    bool Finish(double seconds) override { return g_busWork->Finish(seconds); }

    Launch Open(const std::string& entry, const std::vector<LaunchItem>& items) override
    {
        const CSignalsBlocked blocked;
        if (const AppInfo application = OpenEntry(entry))
            return StartEntry(application.get(), items);
        if (IsSandboxed()) {
            g_busWork->Start([items] {
                for (const LaunchItem& item : items) {
                    if (!OpenThroughPortal(item))
                        (void)StartDefault(item);
                }
            });
            return Launch::Started;
        }
        Launch result = Launch::Started;
        for (const LaunchItem& item : items) {
            const Launch one = StartDefault(item);
            if (one != Launch::Started)
                result = one;
        }
        return result;
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) ILauncher* CVGetLauncher1()
{
    static ILauncher* const launcher = new CGioLauncher;
    return launcher;
}
