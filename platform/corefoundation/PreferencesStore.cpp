// platform/corefoundation/PreferencesStore.cpp
//
// The table of domains. A watch is worth its descriptor only to a process that reads again and
// again: until then, and wherever there can be no watch, the files' stamps tell.
#include "platform/corefoundation/PreferencesStore.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/corefoundation/PreferencesLock.h"

namespace {

constexpr std::size_t kMostEntries = 4096;
// A host that loads and unloads the component reads some settings each time and shall keep no
// descriptor from that; thousands of reads a second are something else.
constexpr int kManyLooks = 1024;
constexpr std::int64_t kShortWhile = 10'000'000;
constexpr std::int64_t kPauseAfterRefusal = 10'000'000'000;

std::atomic<CPreferencesStore*> g_store{nullptr};
CPreferencesStore* g_abandoned = nullptr;

std::int64_t CoarseNow() noexcept
{
    timespec now = {};
    (void)clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

} // namespace

CPreferencesStore& CPreferencesStore::Get()
{
    CPreferencesStore* store = g_store.load(std::memory_order_acquire);
    if (store)
        return *store;
    static const int registered = pthread_atfork(PrepareFork, FinishForkInParent, FinishForkInChild);
    (void)registered; // without memory for it, forked children share a little more than they should
    auto made = std::make_unique<CPreferencesStore>();
    made->m_abandoned = g_abandoned;
    if (g_store.compare_exchange_strong(store, made.get(), std::memory_order_acq_rel))
        store = made.release();
    return *store;
}

void CPreferencesStore::PrepareFork()
{
    HoldPreferencesLocks();
}

void CPreferencesStore::FinishForkInParent()
{
    ReleasePreferencesLocks();
}

// Another thread of the parent may have held any lock of its store, and its changes are not ours.
void CPreferencesStore::FinishForkInChild()
{
    AbandonPreferencesLocks();
    CPreferencesStore* const parents = g_store.exchange(nullptr);
    if (!parents)
        return;
    parents->m_watch.Abandon();
    g_abandoned = parents;
}

CPreferencesStore::Entry* CPreferencesStore::FindEntry(std::string_view application, PreferencesScope scope)
{
    if (!m_environment.IsUnchanged()) { // the folders may be others now
        m_environment = CPreferencesEnvironment();
        std::fill_n(&m_latest[0][0], 4, nullptr);
        m_entries.clear();
        m_watch.Forget();
    }
    Entry*& latest = m_latest[static_cast<int>(scope.user)][static_cast<int>(scope.host)];
    if (latest && latest->application == application)
        return latest;
    const auto found = m_entries.find(Key{application, scope});
    if (found != m_entries.end())
        return latest = found->second.get();
    auto place = FindPreferencesPlace(application, scope);
    if (!place)
        return nullptr;
    if (m_entries.size() >= kMostEntries)
        Trim();
    auto entry = std::make_unique<Entry>();
    entry->application = application;
    entry->domain = std::make_shared<CPreferencesDomain>(std::move(*place));
    const Key key{entry->application, scope};
    return latest = m_entries.emplace(key, std::move(entry)).first->second.get();
}

// Forgets what nobody uses and nobody has to write; it is on disk.
void CPreferencesStore::Trim()
{
    std::fill_n(&m_latest[0][0], 4, nullptr);
    for (auto entry = m_entries.begin(); entry != m_entries.end();) {
        const auto& domain = entry->second->domain;
        entry = domain.use_count() == 1 && !domain->HasChanges() ? m_entries.erase(entry) : std::next(entry);
    }
}

std::shared_ptr<CPreferencesDomain> CPreferencesStore::Find(std::string_view application, PreferencesScope scope)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Entry* const entry = FindEntry(application, scope);
    return entry ? entry->domain : nullptr;
}

CPreferencesStore::Found CPreferencesStore::FindWithNews(std::string_view application, PreferencesScope scope)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Entry* const entry = FindEntry(application, scope);
    if (!entry)
        return {};
    if (entry->epoch != m_watch.Epoch() && IsReadOften(*entry)) {
        if (m_watch.Cover(entry->domain->Place().folder))
            entry->epoch = m_watch.Epoch();
        else
            entry->since = CoarseNow() + kPauseAfterRefusal;
    }
    if (entry->epoch == m_watch.Epoch())
        m_watch.Drain();
    Found found{entry->domain, std::nullopt};
    if (entry->epoch == m_watch.Epoch())
        found.news = m_watch.Generation();
    return found;
}

bool CPreferencesStore::IsReadOften(Entry& entry) const noexcept
{
    if (++entry.looks < kManyLooks)
        return false;
    const std::int64_t now = CoarseNow();
    const bool often = now - entry.since >= 0 && now - entry.since < kShortWhile;
    entry.looks = 0;
    if (now > entry.since)
        entry.since = now;
    return often;
}
