// platform/corefoundation/PreferencesWatch.h
//
// Change notification for the folders of preferences (inotify): an answer to "has anything changed"
// at a fraction of what it costs to look at the files. Says only that something has changed; what
// has is told by the files' stamps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

/// Not for use by several threads at once; its owner locks.
class CPreferencesWatch {
public:
    CPreferencesWatch() = default;
    CPreferencesWatch(const CPreferencesWatch&) = delete;
    CPreferencesWatch& operator=(const CPreferencesWatch&) = delete;
    ~CPreferencesWatch() { Forget(); }

    /// Watches a folder, every folder and link on the way to it, and where it does not exist yet
    /// the folder in which its way ends.
    /// @return false where that cannot be had: a file system that another machine writes to, the
    ///         system's limits, a folder on the way that may not be read.
    bool Cover(const std::string& folder);
    /// Takes in what has happened since. Afterwards Generation has moved if a preference file may
    /// have changed in a covered folder, and Epoch if no folder is covered any longer.
    void Drain();

    std::uint64_t Generation() const noexcept { return m_generation; }
    std::uint64_t Epoch() const noexcept { return m_epoch; }

    /// Gives the descriptor back and covers nothing.
    void Forget() noexcept;
    /// Only closes the descriptor: for a forked child, whose copy would take the parent's events away.
    void Abandon() const noexcept;
    /// What Drain does with the events that it reads.
    void Handle(const char* events, std::size_t size);

private:
    struct Watched {
        bool holdsFiles = false;
        std::set<std::string> awaited; // names that would continue the way to a folder
    };
    Watched* Add(const std::string& path, std::uint32_t events);
    bool Follow(const std::string& folder);

    int m_descriptor = -1;
    std::uint64_t m_generation = 1;
    std::uint64_t m_epoch = 1;
    std::unordered_map<int, Watched> m_watched;
    std::set<std::string> m_covered;
};
