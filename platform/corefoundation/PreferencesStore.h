// platform/corefoundation/PreferencesStore.h
//
// All domains that this process knows, and the one watch over their folders. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/corefoundation/PreferencesDomain.h"
#include "platform/corefoundation/PreferencesPlace.h"
#include "platform/corefoundation/PreferencesWatch.h"

class CPreferencesStore {
public:
    /// A domain, and the watch's generation where the domain's folder is covered.
    struct Found {
        std::shared_ptr<CPreferencesDomain> domain;
        std::optional<std::uint64_t> news;
    };

    /// Answers the process's one store, a new one after a fork. It is never destroyed.
    static CPreferencesStore& Get();

    /// Answers a domain; null where the user has no home.
    std::shared_ptr<CPreferencesDomain> Find(std::string_view application, PreferencesScope scope);
    /// The same for a synchronization: asks for news first.
    Found FindWithNews(std::string_view application, PreferencesScope scope);

private:
    struct Key {
        std::string_view application;
        PreferencesScope scope;
        bool operator==(const Key& other) const noexcept
        {
            return scope.user == other.scope.user && scope.host == other.scope.host && application == other.application;
        }
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept
        {
            return std::hash<std::string_view>()(key.application) + static_cast<std::size_t>(key.scope.user) * 2 +
                   static_cast<std::size_t>(key.scope.host);
        }
    };
    struct Entry {
        std::string application; // what the key views
        std::shared_ptr<CPreferencesDomain> domain;
        std::uint64_t epoch = 0; // of the watch that covers it
        int looks = 0;           // since `since`
        std::int64_t since = 0;
    };

    Entry* FindEntry(std::string_view application, PreferencesScope scope);
    void Trim();
    bool IsReadOften(Entry& entry) const noexcept;

    static void PrepareFork();
    static void FinishForkInParent();
    static void FinishForkInChild();

    std::mutex m_mutex;
    CPreferencesEnvironment m_environment;
    std::unordered_map<Key, std::unique_ptr<Entry>, KeyHash> m_entries;
    Entry* m_latest[2][2] = {}; // found last, by user and host: a setting is asked for four times in a row
    CPreferencesWatch m_watch;
    CPreferencesStore* m_abandoned = nullptr; // the parent's, which a fork may have caught half changed
};
