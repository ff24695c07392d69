// platform/corefoundation/PreferencesCommit.cpp
//
// The steps of one write. The order of flushes is what a power cut tests: the content before the
// name, the name before the answer.
#include "platform/corefoundation/PreferencesCommit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/base/Descriptor.h"
#include "platform/corefoundation/PropertyListBinary.h"

namespace {

constexpr int kMostLinks = 40;
constexpr int kMostPutAside = 10000;

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool FlushFolder(const std::string& path) noexcept
{
    const CDescriptor folder(Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    // Some file systems have nothing to flush for a folder and say that the call is invalid.
    return folder && (Uninterrupted([&] { return fsync(folder.Get()); }) == 0 || errno == EINVAL);
}

bool MakeFolder(const std::string& path, mode_t mode) noexcept
{
    if (Uninterrupted([&] { return mkdir(path.c_str(), mode); }) != 0)
        return errno == EEXIST;
    const CDescriptor folder(Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder)
        return false;
    GiveToOwnerOfFolder(folder.Get(), FolderOf(path));
    return Uninterrupted([&] { return fchmod(folder.Get(), mode); }) == 0; // whatever the umask took away
}

bool MakeFolders(const std::string& path, mode_t mode)
{
    struct stat status = {};
    if (Uninterrupted([&] { return stat(path.c_str(), &status); }) == 0)
        return true;
    const std::string parent = FolderOf(path);
    return MakeFolders(parent, mode) && MakeFolder(path, mode) && FlushFolder(parent);
}

// Sees to it that the names of the folders are on disk. Another process may have made them and have
// been killed before it came to that: each process makes sure once.
bool FlushWayTo(const std::string& path)
{
    constexpr int kLevelsOfOurs = 3;            // by host, the maker's, and the user's for settings
    std::mutex& mutex = PreferencesForkMutex(); // free in a forked child
    static auto& flushed = *new std::set<std::string>;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (flushed.count(path) != 0)
            return true;
    }
    std::string parent = path;
    for (int level = 0; level < kLevelsOfOurs; ++level) {
        parent = FolderOf(parent);
        if (!FlushFolder(parent) && errno != EACCES) // nothing of ours is new in a folder closed to us
            return false;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    flushed.insert(path);
    return true;
}

// Follows the links that stand in the file's own place, so that a write keeps them. A link that
// belongs to neither this user nor root would let its owner choose what is overwritten.
std::optional<std::string> ResolveLinks(std::string path)
{
    for (int links = 0; links <= kMostLinks; ++links) {
        struct stat status = {};
        if (Uninterrupted([&] { return lstat(path.c_str(), &status); }) != 0)
            return errno == ENOENT ? std::optional<std::string>(path) : std::nullopt;
        if (!S_ISLNK(status.st_mode))
            return path;
        char target[PATH_MAX] = "";
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length >= static_cast<ssize_t>(sizeof target) ||
            (status.st_uid != geteuid() && status.st_uid != 0))
            return std::nullopt;
        const std::string name(target, static_cast<std::size_t>(length));
        path = name[0] == '/' ? name : FolderOf(path).append("/").append(name);
    }
    return std::nullopt;
}

// Takes the lock beside the file that will be replaced. While it was waited for, the link may have
// been turned elsewhere.
std::optional<std::string> LockTarget(const std::string& path, CPreferencesLock& lock, Deadline deadline)
{
    auto target = ResolveLinks(path);
    while (target && lock.Acquire(*target + ".lock", deadline)) {
        auto again = ResolveLinks(path);
        if (again == target)
            return target;
        lock.Reset();
        target = std::move(again);
    }
    return std::nullopt;
}

// Answers the merged dictionary; null where the changes change nothing.
CRef<const __CFDictionary> Merged(const __CFDictionary& stored, const PreferenceChanges& changes)
{
    bool differs = false;
    for (const auto& [name, change] : changes) {
        const void* value = nullptr;
        const bool found = stored.Find(change.key.Get(), value);
        differs = differs || (change.value ? !found || !CFEqual(value, change.value.Get()) : found);
    }
    if (!differs)
        return {};
    auto merged = CRef<__CFDictionary>::Adopt(new __CFDictionary(
        kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, stored.pairs.size() + changes.size()));
    for (const auto& [name, change] : changes) {
        if (change.value)
            merged->Set(change.key.Get(), change.value.Get(), true);
    }
    for (const auto& [key, value] : stored.pairs) {
        if (changes.count(static_cast<CFStringRef>(key)->Utf8()) == 0)
            merged->Set(key, value, false);
    }
    return CRef<const __CFDictionary>::Adopt(merged.Detach());
}

bool WriteWhole(int descriptor, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t count = Uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// The new content beside the file; removed unless it was renamed. Only the holder of the lock has
// one, so that one name is enough, and what is found under it was left by a process that died.
class CTemporaryFile {
public:
    explicit CTemporaryFile(const std::string& target) : m_path(target + ".tmp"), m_target(target) {}
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile()
    {
        if (m_descriptor)
            (void)unlink(m_path.c_str());
    }

    bool Write(std::string_view bytes, mode_t mode)
    {
        if (!Create() && (errno != EEXIST || Uninterrupted([&] { return unlink(m_path.c_str()); }) != 0 || !Create()))
            return false;
        GiveToOwnerOfFolder(m_descriptor.Get(), FolderOf(m_target));
        return Uninterrupted([&] { return fchmod(m_descriptor.Get(), mode); }) == 0 &&
               WriteWhole(m_descriptor.Get(), bytes) && Uninterrupted([&] { return fsync(m_descriptor.Get()); }) == 0;
    }

    /// Puts it in the file's place; `stamp` receives its stamp there.
    bool Rename(FileStamp& stamp) noexcept
    {
        if (Uninterrupted([&] { return rename(m_path.c_str(), m_target.c_str()); }) != 0)
            return false;
        struct stat status = {};
        stamp = Uninterrupted([&] { return fstat(m_descriptor.Get(), &status); }) == 0 ? StampOf(status) : FileStamp();
        m_descriptor.Close();
        return true;
    }

private:
    bool Create() noexcept
    {
        constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
        m_descriptor = CDescriptor(Uninterrupted([&] { return open(m_path.c_str(), kFlags, 0600); }));
        return static_cast<bool>(m_descriptor);
    }

    const std::string m_path;
    const std::string m_target;
    CDescriptor m_descriptor;
};

// Gives a file that cannot be understood a second name, under which it stays when the first one
// goes to the new file. An earlier one is never overwritten.
bool PutAside(const std::string& target)
{
    for (int number = 1; number <= kMostPutAside; ++number) {
        const std::string aside = target + ".damaged-" + std::to_string(number);
        if (Uninterrupted([&] { return link(target.c_str(), aside.c_str()); }) == 0)
            return true;
        if (errno == EEXIST)
            continue;
        if (errno != EPERM && errno != EOPNOTSUPP && errno != EMLINK)
            return false;
        // A file system without second names: the file moves.
        if (Uninterrupted(
                [&] { return renameat2(AT_FDCWD, target.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE); }) == 0)
            return true;
        if (errno != EEXIST)
            return false;
    }
    return false;
}

// Sees to it that what is stored already is on disk: who stored it may have been killed, or may be
// about to flush the folder.
bool EnsureDurable(const PreferencesPlace& place, const std::string& target, const PreferencesFile& file,
                   const CPreferencesLock& lock)
{
    const std::string folder = FolderOf(target);
    if (Uninterrupted([&] { return faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS); }) != 0)
        return false;
    DurabilityRecord record = lock.Record();
    if (record.magic != 0 && record.renamed == record.durable && record.stamp == file.stamp)
        return true;
    if (!FlushWayTo(place.folder))
        return false;
    if (file.state != FileState::Absent) {
        const CDescriptor descriptor(Uninterrupted([&] { return open(target.c_str(), O_RDONLY | O_CLOEXEC); }));
        if (!descriptor || Uninterrupted([&] { return fsync(descriptor.Get()); }) != 0)
            return false;
    }
    if (!FlushFolder(folder))
        return false;
    record.stamp = file.stamp;
    record.durable = ++record.renamed;
    lock.SetRecord(record);
    return true;
}

} // namespace

bool CommitPreferences(const PreferencesPlace& place, const PreferenceChanges& changes, Deadline deadline,
                       PreferencesFile& file)
{
    CPreferencesLock lock;
    if (!MakeFolders(place.folder, place.folderMode))
        return false;
    const auto target = LockTarget(place.file, lock, deadline);
    if (!target)
        return false;
    PreferencesFile now = ReadPreferencesFile(place.file, &file);
    if (now.state == FileState::Unreadable)
        return false;
    const auto merged = Merged(*now.values, changes);
    file = std::move(now);
    if (!merged)
        return EnsureDurable(place, *target, file, lock);

    auto bytes = WriteBinaryPropertyList(*merged);
    CTemporaryFile temporary(*target);
    if (!bytes || !FlushWayTo(place.folder) || !temporary.Write(*bytes, place.fileMode))
        return false;
    if (file.state == FileState::Malformed && !PutAside(*target))
        return false;
    DurabilityRecord record = lock.Record();
    ++record.renamed;
    lock.SetRecord(record);
    if (!temporary.Rename(record.stamp))
        return false;
    lock.SetRecord(record);
    file.state = FileState::Read;
    file.values = merged;
    file.bytes = std::move(*bytes);
    file.stamp = record.stamp;
    file.isSettled = false;
    // The next writer may go on while this one flushes the folder: what that one reads is in place,
    // and its own flush will cover both.
    lock.Unlock();
    if (!FlushFolder(FolderOf(*target)))
        return false;
    lock.SetDurable(record.renamed);
    return true;
}
