// platform/corefoundation/PreferencesFile.h
//
// A domain's file as it is read: its content, and the stamp that tells whether it has changed since.
// Writing stands in PreferencesCommit.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "platform/corefoundation/Collections.h"

/// What the file system says of a file without opening it.
struct FileStamp {
    std::uint64_t exists = 0; ///< 0 or 1; as wide as the rest: stored as bytes, without gaps, alike in 32 and 64 bits.
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified = {};
    timespec changed = {};
};
bool operator==(const FileStamp& left, const FileStamp& right) noexcept;

/// Answers the stamp in `status`.
FileStamp StampOf(const struct stat& status) noexcept;

/// Answers whether every change after `readAt` (the real-time clock) shows in the stamp. Kernels
/// stamp files by a clock that stands still for 4 to 10 ms, some file systems by one of 1 or 2 s:
/// a second change within one tick may keep time and size, and the inode's number comes back after
/// two replacements. Such a stamp is worth nothing, and the file has to be read again.
bool ShowsLaterChanges(const FileStamp& stamp, const timespec& readAt) noexcept;

enum class FileState {
    Absent,
    Read,
    Malformed, ///< It is there, but no dictionary can be read from it.
    Unreadable ///< Something is there that this process cannot read, or that is no file.
};

/// One reading of a domain's file.
struct PreferencesFile {
    FileState state = FileState::Absent;
    CRef<const __CFDictionary> values; ///< Never null; empty unless `state` is Read.
    std::string bytes;
    FileStamp stamp;
    bool isSettled = false; ///< The same stamp later means the same content.
    bool isLinked = false;  ///< Reached by another name too: changes may show elsewhere only.
    bool isLocal = false;   ///< On a file system that only this machine's kernel writes to.
};

/// Reads the file; links are followed. Never blocks on what is no file.
/// @param known  an earlier reading, whose values are taken over where the bytes are the same.
PreferencesFile ReadPreferencesFile(const std::string& path, const PreferencesFile* known);

/// Answers the file's stamp now.
/// @param local  false asks a server for it instead of the kernel's memory.
FileStamp CurrentStamp(const std::string& path, bool local) noexcept;

/// Answers whether `path`, or else the nearest folder above it that exists, lies on a file system
/// that only this machine's kernel writes to.
bool IsOnLocalFileSystem(const std::string& path);

/// Makes the dictionary that a file's bytes hold; empty for malformed bytes.
CRef<const __CFDictionary> ParsePreferences(std::string_view bytes);

/// An empty, immutable dictionary.
CRef<const __CFDictionary> NoPreferences();
