// platform/corefoundation/PreferencesLock.h
//
// Exclusion of all writers to one domain's file: of other processes, and of other copies of the
// layer in this one. Threads of one copy are kept apart before they come here.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/base/Descriptor.h"
#include "platform/corefoundation/PreferencesFile.h"

/// The clock and the end of a bounded wait.
using Deadline = std::chrono::steady_clock::time_point;

/// What the lock file holds: which replacement of the domain's file is known to be on disk. It says
/// so to the next process that sets a value which is stored already, and so need not flush.
struct DurabilityRecord {
    std::uint64_t magic = 0;
    std::uint64_t renamed = 0; ///< Counts replacements, written before the file is renamed.
    std::uint64_t durable = 0; ///< The replacement whose folder has been flushed.
    FileStamp stamp;           ///< Of that replacement; a foreign program's file has another.
};

/// Holds the lock until Unlock or the end of the scope. It is an open-file-description lock on a
/// file of its own, which stays: it belongs to this descriptor, so that another copy of the layer
/// in this process is kept out and closing another descriptor of the file does not drop it; the
/// kernel gives it back when the process dies; and O_CLOEXEC keeps it out of programs started
/// meanwhile. A forked child closes its copy of the descriptor (see AbandonPreferencesLocks).
class CPreferencesLock {
public:
    CPreferencesLock() = default;
    CPreferencesLock(const CPreferencesLock&) = delete;
    CPreferencesLock& operator=(const CPreferencesLock&) = delete;
    ~CPreferencesLock();

    /// Takes the lock; tries again in ever longer steps of up to a millisecond.
    /// @param path  of the lock file, made where it is missing, for the owner alone: who can open
    ///              it could keep writers out.
    /// @return false when it may not be opened or is not free before the deadline.
    bool Acquire(const std::string& path, Deadline deadline);
    void Unlock() noexcept;
    /// Unlocks and forgets the file, so that another can be locked.
    void Reset() noexcept;

    /// Answers the record; an empty one where none is.
    DurabilityRecord Record() const noexcept;
    /// Writes the record. A failure costs later writers a flush and nothing else.
    void SetRecord(const DurabilityRecord& record) const noexcept;
    /// Says that a replacement is on disk; also after Unlock.
    void SetDurable(std::uint64_t renamed) const noexcept;

private:
    enum class Attempt { Taken, Busy, Gone, Failed };
    Attempt Try(const std::string& path);

    CDescriptor m_descriptor;
    bool m_held = false;
};

/// For pthread_atfork. A forked child has copies of its parent's descriptors and with them a share
/// in their locks, which it would keep when the parent is killed: it closes them at once. No lock
/// file is being opened while a fork is under way. (A child of vfork or posix_spawn shares them only
/// until it starts its program, and Unlock frees them for all who share.)
std::mutex& PreferencesForkMutex(); ///< Held while one is opened, and during a fork.
void HoldPreferencesLocks();
void ReleasePreferencesLocks(); ///< In the parent.
void AbandonPreferencesLocks(); ///< In the child.

/// Gives a file that root makes in a user's folder to that user, who could not open it otherwise.
void GiveToOwnerOfFolder(int descriptor, const std::string& folder) noexcept;
