// platform/corefoundation/PreferencesLock.cpp
//
// The lock file and what it records.
#include "platform/corefoundation/PreferencesLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/base/Forever.h"

namespace {

constexpr std::uint64_t kMagic = 0x31304B4C50565143; // also tells another layout of the record
constexpr auto kFirstPause = std::chrono::microseconds(50);
constexpr auto kLongestPause = std::chrono::microseconds(1000);

// The descriptors of all lock files that are open.
std::vector<int>& OpenLocks()
{
    static CForever<std::vector<int>> descriptors;
    return *descriptors;
}

int SetLock(int descriptor, short type) noexcept
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    const int result = Uninterrupted([&] { return fcntl(descriptor, F_OFD_SETLK, &lock); });
    if (result == 0 || errno != EINVAL)
        return result;
    // An old file system without these; flock belongs to the descriptor too.
    return Uninterrupted([&] { return flock(descriptor, type == F_UNLCK ? LOCK_UN : LOCK_EX | LOCK_NB); });
}

} // namespace

CPreferencesLock::~CPreferencesLock()
{
    Reset();
}

CPreferencesLock::Attempt CPreferencesLock::Try(const std::string& path)
{
    if (!m_descriptor) {
        const std::lock_guard<std::mutex> guard(PreferencesForkMutex());
        OpenLocks().reserve(OpenLocks().size() + 1);
        m_descriptor = CDescriptor(Uninterrupted([&] {
            return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
        }));
        if (!m_descriptor)
            return Attempt::Failed;
        OpenLocks().push_back(m_descriptor.Get());
        GiveToOwnerOfFolder(m_descriptor.Get(), path.substr(0, path.rfind('/')));
    }
    if (SetLock(m_descriptor.Get(), F_WRLCK) != 0)
        return errno == EAGAIN || errno == EACCES ? Attempt::Busy : Attempt::Failed;
    m_held = true;
    struct stat mine = {};
    struct stat named = {};
    const bool same = Uninterrupted([&] { return fstat(m_descriptor.Get(), &mine); }) == 0 &&
                      Uninterrupted([&] { return lstat(path.c_str(), &named); }) == 0 && mine.st_dev == named.st_dev &&
                      mine.st_ino == named.st_ino;
    return same ? Attempt::Taken : Attempt::Gone;
}

void CPreferencesLock::Reset() noexcept
{
    Unlock();
    if (!m_descriptor)
        return;
    const std::lock_guard<std::mutex> guard(PreferencesForkMutex());
    OpenLocks().erase(std::find(OpenLocks().begin(), OpenLocks().end(), m_descriptor.Get()));
    m_descriptor.Close();
}

bool CPreferencesLock::Acquire(const std::string& path, Deadline deadline)
{
    auto pause = kFirstPause;
    for (;;) {
        switch (Try(path)) {
        case Attempt::Taken:
            return true;
        case Attempt::Failed:
            return false;
        case Attempt::Gone: // somebody removed the file meanwhile: others lock its successor
            Reset();
            break;
        case Attempt::Busy:
            break;
        }
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline)
            return false;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(pause, deadline - now));
        pause = std::min(pause * 2, kLongestPause);
    }
}

void CPreferencesLock::Unlock() noexcept
{
    if (!m_held)
        return;
    // Not left to close: a child that is about to start a program shares the lock until it has.
    (void)SetLock(m_descriptor.Get(), F_UNLCK);
    m_held = false;
}

DurabilityRecord CPreferencesLock::Record() const noexcept
{
    static_assert(std::is_trivially_copyable_v<DurabilityRecord>, "read and written as bytes");
    static_assert(sizeof(DurabilityRecord) == 88, "shared between 32-bit and 64-bit programs");
    DurabilityRecord record;
    const ssize_t count = Uninterrupted([&] { return pread(m_descriptor.Get(), &record, sizeof record, 0); });
    return count == static_cast<ssize_t>(sizeof record) && record.magic == kMagic ? record : DurabilityRecord();
}

void CPreferencesLock::SetRecord(const DurabilityRecord& record) const noexcept
{
    DurabilityRecord written = record;
    written.magic = kMagic;
    (void)Uninterrupted([&] { return pwrite(m_descriptor.Get(), &written, sizeof written, 0); });
}

void CPreferencesLock::SetDurable(std::uint64_t renamed) const noexcept
{
    constexpr off_t kPlace = offsetof(DurabilityRecord, durable);
    (void)Uninterrupted([&] { return pwrite(m_descriptor.Get(), &renamed, sizeof renamed, kPlace); });
}

std::mutex& PreferencesForkMutex()
{
    static CForever<std::mutex> mutex;
    return *mutex;
}

void HoldPreferencesLocks()
{
    PreferencesForkMutex().lock();
}

void ReleasePreferencesLocks()
{
    PreferencesForkMutex().unlock();
}

void AbandonPreferencesLocks()
{
    for (const int descriptor : OpenLocks())
        (void)close(descriptor);
    OpenLocks().clear();
    PreferencesForkMutex().unlock();
}

void GiveToOwnerOfFolder(int descriptor, const std::string& folder) noexcept
{
    struct stat status = {};
    if (geteuid() == 0 && stat(folder.c_str(), &status) == 0 && status.st_uid != 0)
        (void)!fchown(descriptor, status.st_uid, status.st_gid); // what cannot be given away works for root
}
