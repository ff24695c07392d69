// platform/corefoundation/PreferencesDomain.cpp
//
// Threads of this process meet here; other processes and other copies of the layer meet in
// PreferencesCommit.
#include "platform/corefoundation/PreferencesDomain.h"

#include <time.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include "platform/base/Guard.h"

namespace {

constexpr auto kLongestWait = std::chrono::seconds(2);
constexpr std::int64_t kSecond = 1'000'000'000;
// Some changes reach no watch (a file system mounted over a folder, a write through shared memory).
constexpr std::int64_t kLongestTrust = kSecond;
// By a server's clock nothing is known of a stamp's age. What kept its stamp for so long since this
// machine first saw it was not changed within one tick of the server.
constexpr std::int64_t kForeignTick = 2 * kSecond;

// Stands still for some milliseconds and costs next to nothing.
std::int64_t CoarseNow() noexcept
{
    timespec now = {};
    (void)clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t(now.tv_sec) * kSecond + now.tv_nsec;
}

// A thread's number, which no other thread gets after it.
std::uint64_t ThisThread() noexcept
{
    static std::atomic<std::uint64_t> g_last{0};
    thread_local const std::uint64_t number = ++g_last;
    return number;
}

} // namespace

CPreferencesDomain::CPreferencesDomain(PreferencesPlace place) : m_place(std::move(place))
{
}

void CPreferencesDomain::Set(CRef<const __CFString> key, CRef<const CObject> value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string_view name = key->Utf8();
    m_changes.erase(name); // its name views the old change's string
    m_changes.emplace(name, PreferenceChange{std::move(key), std::move(value), ThisThread(), ++m_order});
}

CRef<const CObject> CPreferencesDomain::Copy(CFStringRef key)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_loaded)
        Load();
    if (!m_changes.empty()) {
        const auto change = m_changes.find(key->Utf8());
        if (change != m_changes.end())
            return change->second.value;
    }
    const void* value = nullptr;
    return m_file.values->Find(key, value) ? CRef<const CObject>::Share(ObjectOf(value)) : CRef<const CObject>();
}

CRef<const __CFArray> CPreferencesDomain::CopyKeys()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_loaded)
        Load();
    auto keys = CRef<__CFArray>::Adopt(new __CFArray(kCFTypeArrayCallBacks));
    keys->values.reserve(m_file.values->pairs.size() + m_changes.size());
    for (const auto& pair : m_file.values->pairs) {
        if (m_changes.count(static_cast<CFStringRef>(pair.first)->Utf8()) == 0)
            keys->values.push_back(CFRetain(pair.first));
    }
    for (const auto& pair : m_changes) {
        if (pair.second.value)
            keys->values.push_back(CFRetain(pair.second.key.Get()));
    }
    return CRef<const __CFArray>::Adopt(keys.Detach());
}

bool CPreferencesDomain::HasChanges()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_changes.empty() || m_writing;
}

bool CPreferencesDomain::HasOwnChanges() const
{
    const std::uint64_t thread = ThisThread();
    return std::any_of(m_changes.begin(), m_changes.end(),
                       [thread](const auto& pair) { return pair.second.author == thread; });
}

bool CPreferencesDomain::Synchronize(std::optional<std::uint64_t> news)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    // Who only reads does not wait for the thread that writes.
    const bool flushes = !m_changes.empty() && (!m_writing || HasOwnChanges());
    const bool saved = !flushes || Flush(lock);
    const bool kept = m_losers.empty() || m_losers.erase(ThisThread()) == 0;
    Refresh(news);
    return saved && kept;
}

bool CPreferencesDomain::Flush(std::unique_lock<std::mutex>& lock)
{
    const Deadline deadline = std::chrono::steady_clock::now() + kLongestWait;
    const bool free = m_written.wait_until(lock, deadline, [this] { return !m_writing; });
    if (m_changes.empty())
        return true; // the thread that wrote meanwhile took this one's changes along
    PreferenceChanges changes = m_changes;
    if (!free) {
        for (auto change = changes.begin(); change != changes.end();)
            change = change->second.author == ThisThread() ? std::next(change) : changes.erase(change);
        Settle(changes, false);
        return false;
    }
    m_writing = true;
    const std::uint64_t loads = m_loads;
    PreferencesFile file = m_file;
    lock.unlock();
    const bool saved = Guarded<bool>(false, [&] { return CommitPreferences(m_place, changes, deadline, file); });
    lock.lock();
    m_writing = false;
    m_written.notify_all();
    // What a reading thread found meanwhile may be newer than what was written. After a failure
    // nothing is known.
    m_loaded = saved && loads == m_loads;
    if (m_loaded) {
        m_file = std::move(file);
        m_stampSeen = CoarseNow();
        m_news = 0;
    }
    Settle(changes, saved);
    return saved;
}

// Ends changes that were or were not written. The threads that set them and have not come here yet
// learn of a failure when they do.
void CPreferencesDomain::Settle(const PreferenceChanges& committed, bool saved)
{
    for (const auto& [name, change] : committed) {
        if (!saved && change.author != ThisThread())
            m_losers.insert(change.author);
        const auto current = m_changes.find(name);
        if (current != m_changes.end() && current->second.order == change.order)
            m_changes.erase(current);
    }
}

void CPreferencesDomain::Refresh(std::optional<std::uint64_t> news)
{
    const std::int64_t now = CoarseNow();
    // The news were asked for before the file is looked at: what changes from now on is news again.
    // What could not be read may be read the next time, though nothing about the file changes: this
    // process was short of descriptors, or the disk failed once.
    const bool known = m_loaded && m_file.state != FileState::Unreadable;
    const bool trusted = known && news && *news == m_news && !m_file.isLinked && now - m_looked < kLongestTrust;
    if (trusted)
        return;
    if (!known || !m_file.isSettled || !(CurrentStamp(m_place.file, m_file.isLocal) == m_file.stamp))
        Load();
    m_looked = now;
    m_news = news.value_or(0);
}

void CPreferencesDomain::Load()
{
    const FileStamp before = m_file.stamp;
    const std::int64_t now = CoarseNow();
    PreferencesFile file = ReadPreferencesFile(m_place.file, m_loaded ? &m_file : nullptr);
    const bool seenBefore = m_loaded && file.stamp == before;
    if (!seenBefore)
        m_stampSeen = now;
    // Read once more after the stamp has stood long enough: only then it is known.
    file.isSettled = file.isSettled || (seenBefore && now - m_stampSeen >= kForeignTick);
    m_file = std::move(file);
    m_loaded = true;
    ++m_loads;
}
