// platform/corefoundation/PreferencesWatch.cpp
//
// inotify speaks of inodes, preferences lie at paths: a folder is only as good as the way to it, so
// that each part of the way is watched for being moved or deleted, from the root down. Whatever
// happens on the way ends the whole watch; its owner looks at the files and may begin anew.
#include "platform/corefoundation/PreferencesWatch.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include "platform/base/Descriptor.h"
#include "platform/corefoundation/PreferencesFile.h"

namespace {

constexpr std::uint32_t kWayEvents = IN_MOVE_SELF | IN_DELETE_SELF | IN_DONT_FOLLOW;
constexpr std::uint32_t kLinkEvents = kWayEvents | IN_ATTRIB; // a link that is replaced loses its name first
constexpr std::uint32_t kFolderEvents = kWayEvents | IN_ONLYDIR | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                        IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB;
constexpr std::uint32_t kAwaitingEvents = kWayEvents | IN_ONLYDIR | IN_CREATE | IN_MOVED_TO;
constexpr std::string_view kExtension = ".plist";
constexpr int kMostLinks = 40;

// In reverse, so that the next one is at the end.
void PushParts(std::vector<std::string>& parts, std::string_view path)
{
    while (!path.empty()) {
        const std::size_t slash = path.rfind('/');
        const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
        const std::string_view part = path.substr(start);
        if (!part.empty() && part != ".")
            parts.emplace_back(part);
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
}

bool IsPreferenceFile(std::string_view name)
{
    return name.size() > kExtension.size() && name.substr(name.size() - kExtension.size()) == kExtension;
}

} // namespace

void CPreferencesWatch::Forget() noexcept
{
    if (m_descriptor >= 0)
        (void)close(m_descriptor);
    m_descriptor = -1;
    m_watched.clear();
    m_covered.clear();
    ++m_generation;
    ++m_epoch;
}

void CPreferencesWatch::Abandon() const noexcept
{
    if (m_descriptor >= 0)
        (void)close(m_descriptor);
}

CPreferencesWatch::Watched* CPreferencesWatch::Add(const std::string& path, std::uint32_t events)
{
    if (!IsOnLocalFileSystem(path))
        return nullptr;
    const int watch = inotify_add_watch(m_descriptor, path.c_str(), events | IN_MASK_ADD);
    return watch >= 0 ? &m_watched[watch] : nullptr;
}

bool CPreferencesWatch::Follow(const std::string& folder)
{
    std::vector<std::string> parts;
    PushParts(parts, folder);
    std::string way; // without links; empty is the root
    int links = 0;
    if (!Add("/", kWayEvents))
        return false;
    while (!parts.empty()) {
        const std::string part = parts.back();
        parts.pop_back();
        if (part == "..") {
            way = way.substr(0, way.empty() ? 0 : way.rfind('/'));
            continue;
        }
        std::string next = way;
        next.append("/").append(part);
        struct stat status = {};
        if (lstat(next.c_str(), &status) != 0) {
            if (errno != ENOENT)
                return false;
            Watched* const last = Add(way.empty() ? "/" : way, kAwaitingEvents);
            if (!last)
                return false;
            last->awaited.insert(part);
            if (lstat(next.c_str(), &status) != 0) // it may have come before it was awaited
                return errno == ENOENT;
        }
        if (S_ISLNK(status.st_mode)) {
            char target[PATH_MAX] = "";
            if (!Add(next, kLinkEvents) || ++links > kMostLinks)
                return false;
            const ssize_t length = readlink(next.c_str(), target, sizeof target - 1);
            if (length <= 0)
                return false;
            PushParts(parts, target);
            if (target[0] == '/')
                way.clear();
            continue;
        }
        Watched* const watched = Add(next, parts.empty() ? kFolderEvents : kWayEvents | IN_ONLYDIR);
        if (!watched)
            return false;
        watched->holdsFiles = watched->holdsFiles || parts.empty();
        way = next;
    }
    return true;
}

bool CPreferencesWatch::Cover(const std::string& folder)
{
    if (m_covered.count(folder) != 0)
        return true;
    if (m_descriptor < 0)
        m_descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_descriptor < 0)
        return false;
    if (!Follow(folder)) {
        if (m_covered.empty())
            Forget();
        return false;
    }
    m_covered.insert(folder);
    return true;
}

void CPreferencesWatch::Drain()
{
    int waiting = 0;
    if (m_descriptor < 0)
        return;
    if (ioctl(m_descriptor, FIONREAD, &waiting) == 0 && waiting == 0)
        return; // cheaper than a read that finds nothing
    alignas(inotify_event) char events[16 * 1024];
    while (m_descriptor >= 0) {
        const ssize_t count = Uninterrupted([&] { return read(m_descriptor, events, sizeof events); });
        if (count < 0 && errno == EAGAIN)
            return;
        if (count <= 0)
            Forget();
        else
            Handle(events, static_cast<std::size_t>(count));
    }
}

void CPreferencesWatch::Handle(const char* events, std::size_t size)
{
    while (size >= sizeof(inotify_event)) {
        inotify_event event = {};
        std::memcpy(&event, events, sizeof event);
        const char* const name = events + sizeof event;
        const std::size_t length = sizeof event + event.len;
        if (length > size)
            break;
        const auto watched = m_watched.find(event.wd);
        // An overflow has lost events, an unmount or a deletion the watch, a move the way.
        if (watched == m_watched.end() || event.len == 0)
            return Forget();
        const std::string_view text(name, strnlen(name, event.len));
        if (watched->second.awaited.count(std::string(text)) != 0)
            return Forget();
        if (watched->second.holdsFiles && IsPreferenceFile(text))
            ++m_generation;
        events += length;
        size -= length;
    }
}
