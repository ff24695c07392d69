// platform/corefoundation/PreferencesCommit.h
//
// Writing: merging one process's changes into a domain's file so that nobody's are lost and what
// is reported as written is on disk.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "platform/corefoundation/PreferencesFile.h"
#include "platform/corefoundation/PreferencesLock.h"
#include "platform/corefoundation/PreferencesPlace.h"
#include "platform/corefoundation/String.h"

/// One key's new value.
struct PreferenceChange {
    CRef<const __CFString> key;
    CRef<const CObject> value; ///< Null removes the key.
    std::uint64_t author;      ///< The thread that set it.
    std::uint64_t order;       ///< Tells it from a later change of the same key.
};
/// By key; the name views the change's own string.
using PreferenceChanges = std::unordered_map<std::string_view, PreferenceChange>;

/// Takes the domain's lock, reads the file anew, merges the changes, writes a temporary file beside
/// it, flushes that, renames it over the file and flushes the folder. A file that cannot be
/// understood is put aside under a name that says so. Where nothing changes nothing is written,
/// and nothing flushed that is known to be on disk.
/// @param file  an earlier reading; receives what was read or written, where that is known.
/// @return whether the changes are on disk. False also where the user may not write there at all,
///         though nothing would have changed; what was there is then intact.
bool CommitPreferences(const PreferencesPlace& place, const PreferenceChanges& changes, Deadline deadline,
                       PreferencesFile& file);
