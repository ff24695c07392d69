// platform/corefoundation/PreferencesDomain.h
//
// One domain in one scope as this process knows it: what is stored, what is still to be written,
// and whether what is known is what is on disk. Any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "platform/corefoundation/PreferencesCommit.h"
#include "platform/corefoundation/PreferencesFile.h"
#include "platform/corefoundation/PreferencesPlace.h"

class CPreferencesDomain {
public:
    explicit CPreferencesDomain(PreferencesPlace place);
    CPreferencesDomain(const CPreferencesDomain&) = delete;
    CPreferencesDomain& operator=(const CPreferencesDomain&) = delete;

    const PreferencesPlace& Place() const noexcept { return m_place; }

    /// Sets a key for this process; null removes it.
    void Set(CRef<const __CFString> key, CRef<const CObject> value);
    /// Answers a key's value as this process knows it; empty when it is absent.
    CRef<const CObject> Copy(CFStringRef key);
    /// Answers the keys as this process knows them.
    CRef<const __CFArray> CopyKeys();

    /// Writes what is to be written, of every thread; then, or where nothing is, takes in what
    /// others wrote. Changes that cannot be written within two seconds are dropped.
    /// @param news  the watch's generation if the domain's folder is covered.
    /// @return false if changes that this thread set are not on disk.
    bool Synchronize(std::optional<std::uint64_t> news);

    bool HasChanges();

private:
    bool Flush(std::unique_lock<std::mutex>& lock);
    void Settle(const PreferenceChanges& committed, bool saved);
    void Refresh(std::optional<std::uint64_t> news);
    void Load();
    bool HasOwnChanges() const;

    const PreferencesPlace m_place;

    std::mutex m_mutex;
    bool m_loaded = false;
    std::uint64_t m_loads = 0;
    PreferencesFile m_file;
    std::int64_t m_stampSeen = 0; // when the stamp was first seen, as below
    std::int64_t m_looked = 0;    // when the file was last looked at, by the clock of this machine
    std::uint64_t m_news = 0;     // the watch's generation at that time; 0 is none

    PreferenceChanges m_changes;
    std::uint64_t m_order = 0;
    std::set<std::uint64_t> m_losers; // threads whose changes another thread failed to write
    bool m_writing = false;
    std::condition_variable m_written;
};
