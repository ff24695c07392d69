// platform/corefoundation/PreferencesFile.cpp
//
// Reading, and telling whether to read again.
#include "platform/corefoundation/PreferencesFile.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "platform/base/Descriptor.h"
#include "platform/corefoundation/PropertyListBinary.h"
#include "platform/corefoundation/String.h"
#include "platform/corefoundation/Value.h"
#include <CoreFoundation/CFPropertyList.h>

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
// Twice the longest tick of a kernel (100 Hz).
constexpr std::int64_t kTick = 20'000'000;
// FAT counts two seconds; ext3 and old network file systems one.
constexpr std::int64_t kCoarseTick = 2'100'000'000;
constexpr off_t kLargestFile = 256L * 1024 * 1024;

// File systems that another machine or a program of the user may change behind the kernel's back
// are not among these, and neither is what is not known.
constexpr std::uint64_t kLocalFileSystems[] = {
    EXT4_SUPER_MAGIC,  XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC, TMPFS_MAGIC,
    F2FS_SUPER_MAGIC,  OVERLAYFS_SUPER_MAGIC, RAMFS_MAGIC,       REISERFS_SUPER_MAGIC,
    NILFS_SUPER_MAGIC, ECRYPTFS_SUPER_MAGIC,  SQUASHFS_MAGIC,    EROFS_SUPER_MAGIC_V1,
    MSDOS_SUPER_MAGIC,
    0x2FC12FC1, // ZFS
    0xCA451A4E, // bcachefs
    0x3153464A, // JFS
    0x2011BAB0, // exFAT
};

std::int64_t NanosecondsFrom(const timespec& from, const timespec& to) noexcept
{
    // Stamps may hold any date; half the range is more than anybody's clock is wrong.
    constexpr std::int64_t kMostSeconds = INT64_MAX / kNanosecondsPerSecond / 2;
    const std::int64_t seconds = std::clamp<std::int64_t>(std::int64_t(to.tv_sec) / 2 - std::int64_t(from.tv_sec) / 2,
                                                          -kMostSeconds / 2, kMostSeconds / 2) *
                                     2 +
                                 (to.tv_sec % 2 - from.tv_sec % 2);
    return seconds * kNanosecondsPerSecond + (to.tv_nsec - from.tv_nsec);
}

bool IsSame(const timespec& left, const timespec& right) noexcept
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

CDescriptor OpenForReading(const std::string& path) noexcept
{
    // Without O_NONBLOCK the open of a pipe would wait for somebody to write to it.
    return CDescriptor(Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
}

bool ReadWhole(int descriptor, off_t expected, std::string& bytes)
{
    bytes.resize(static_cast<std::size_t>(expected));
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size())
            bytes.resize(bytes.size() + (filled == static_cast<std::size_t>(expected) ? 1 : 65536));
        const ssize_t count = Uninterrupted([&] { return read(descriptor, &bytes[filled], bytes.size() - filled); });
        if (count < 0 || filled > static_cast<std::size_t>(kLargestFile))
            return false;
        filled += static_cast<std::size_t>(count);
        if (count == 0)
            break;
    }
    bytes.resize(filled);
    return true;
}

bool HasOtherNames(const std::string& path, const struct stat& status) noexcept
{
    struct stat own = {};
    return status.st_nlink != 1 || Uninterrupted([&] { return lstat(path.c_str(), &own); }) != 0 ||
           S_ISLNK(own.st_mode);
}

bool IsLocalMagic(const struct statfs& system) noexcept
{
    const auto magic = static_cast<std::uint64_t>(system.f_type) & 0xFFFFFFFFU;
    return std::find(std::begin(kLocalFileSystems), std::end(kLocalFileSystems), magic) != std::end(kLocalFileSystems);
}

bool IsXml(std::string_view bytes) noexcept
{
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    const std::size_t start = bytes.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && bytes[start] == '<';
}

} // namespace

bool operator==(const FileStamp& left, const FileStamp& right) noexcept
{
    if (!left.exists || !right.exists)
        return left.exists == right.exists;
    return left.device == right.device && left.inode == right.inode && left.size == right.size &&
           IsSame(left.modified, right.modified) && IsSame(left.changed, right.changed);
}

FileStamp StampOf(const struct stat& status) noexcept
{
    return {true, status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

bool ShowsLaterChanges(const FileStamp& stamp, const timespec& readAt) noexcept
{
    if (!stamp.exists)
        return true; // whatever comes, it will exist
    // The time of the last change cannot be set by programs, the time of modification can: a backup
    // brings an old one back.
    const bool coarse = stamp.changed.tv_nsec == 0 && stamp.modified.tv_nsec == 0;
    return NanosecondsFrom(stamp.changed, readAt) >= (coarse ? kCoarseTick : kTick);
}

PreferencesFile ReadPreferencesFile(const std::string& path, const PreferencesFile* known)
{
    PreferencesFile file;
    file.values = NoPreferences();
    timespec readAt = {};
    (void)clock_gettime(CLOCK_REALTIME, &readAt);
    const CDescriptor descriptor = OpenForReading(path);
    struct stat status = {};
    if (!descriptor) {
        const bool absent = errno == ENOENT || errno == ENOTDIR;
        file.state = absent ? FileState::Absent : FileState::Unreadable;
        file.isLocal = IsOnLocalFileSystem(path);
        file.isLinked = Uninterrupted([&] { return lstat(path.c_str(), &status); }) == 0 && S_ISLNK(status.st_mode);
        file.stamp = absent ? FileStamp() : CurrentStamp(path, file.isLocal);
        file.isSettled = file.isLocal && ShowsLaterChanges(file.stamp, readAt);
        return file;
    }
    struct statfs system = {};
    const bool hasStatus = Uninterrupted([&] { return fstat(descriptor.Get(), &status); }) == 0;
    file.isLocal = fstatfs(descriptor.Get(), &system) == 0 && IsLocalMagic(system);
    file.state = FileState::Unreadable;
    if (!hasStatus)
        return file;
    file.stamp = StampOf(status);
    file.isSettled = file.isLocal && ShowsLaterChanges(file.stamp, readAt);
    file.isLinked = HasOtherNames(path, status);
    if (!S_ISREG(status.st_mode) || status.st_size > kLargestFile ||
        !ReadWhole(descriptor.Get(), status.st_size, file.bytes)) {
        file.bytes.clear();
        return file;
    }
    if (known && known->state == FileState::Read && known->bytes == file.bytes) {
        file.values = known->values;
        file.state = FileState::Read;
        return file;
    }
    const auto values = ParsePreferences(file.bytes);
    file.state = values ? FileState::Read : FileState::Malformed;
    if (values)
        file.values = values;
    return file;
}

FileStamp CurrentStamp(const std::string& path, bool local) noexcept
{
    struct stat status = {};
    if (local)
        return Uninterrupted([&] { return stat(path.c_str(), &status); }) == 0 ? StampOf(status) : FileStamp();
    // A network file system promises current attributes to those who open the file.
    const CDescriptor descriptor = OpenForReading(path);
    if (descriptor)
        return Uninterrupted([&] { return fstat(descriptor.Get(), &status); }) == 0 ? StampOf(status) : FileStamp();
    return Uninterrupted([&] { return stat(path.c_str(), &status); }) == 0 ? StampOf(status) : FileStamp();
}

bool IsOnLocalFileSystem(const std::string& path)
{
    struct statfs system = {};
    std::size_t length = path.size();
    while (length > 0 && statfs(length == path.size() ? path.c_str() : path.substr(0, length).c_str(), &system) != 0)
        length = path.rfind('/', length - 1) == std::string::npos ? 0 : path.rfind('/', length - 1);
    return (length > 0 || statfs("/", &system) == 0) && IsLocalMagic(system);
}

CRef<const __CFDictionary> ParsePreferences(std::string_view bytes)
{
    CRef<const CObject> root;
    if (IsBinaryPropertyList(bytes)) {
        root = ReadBinaryPropertyList(bytes);
    } else if (IsXml(bytes)) {
        const auto data = CRef<const __CFData>::Adopt(new __CFData(std::vector<UInt8>(bytes.begin(), bytes.end())));
        root = CRef<const CObject>::Adopt(ObjectOf(CFPropertyListCreateFromXMLData(nullptr, data.Get(), 0, nullptr)));
    }
    if (!root || root->Type() != TypeId::Dictionary)
        return {};
    return CRef<const __CFDictionary>::Adopt(static_cast<const __CFDictionary*>(root.Detach()));
}

CRef<const __CFDictionary> NoPreferences()
{
    static const auto& none = *new CRef<const __CFDictionary>(CRef<const __CFDictionary>::Adopt(
        new __CFDictionary(kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, 0)));
    return none;
}
