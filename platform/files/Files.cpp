// platform/files/Files.cpp
//
// File references. Linux cannot find a file by a number, so a reference holds the place of its path
// in a table that grows with the files referred to and is never shortened.
#include "platform/files/Files.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "platform/base/Guard.h"
#include "platform/corefoundation/Url.h"

namespace {

// What a reference holds; the rest of it is zeros.
struct Content {
    std::uint64_t mark; // tells a reference from chance, and one of this process from another's
    std::uint64_t place;
    std::uint64_t hash;
};
static_assert(sizeof(Content) == kRefContentSize);
static_assert(sizeof(FSRef) == 80);

class CPathTable {
public:
    Content Add(const std::string& path)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto known = m_places.find(path);
        if (known != m_places.end())
            return ContentOf(known->second);
        m_paths.push_back(path);
        try {
            m_places.emplace(m_paths.back(), m_paths.size() - 1);
        } catch (...) {
            m_paths.pop_back();
            throw;
        }
        return ContentOf(m_paths.size() - 1);
    }

    std::optional<std::string> Find(const Content& content)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (content.place >= m_paths.size())
            return std::nullopt;
        const Content known = ContentOf(content.place);
        const bool same = known.mark == content.mark && known.hash == content.hash;
        return same ? std::optional<std::string>(m_paths[static_cast<std::size_t>(content.place)]) : std::nullopt;
    }

private:
    Content ContentOf(std::uint64_t place) const
    {
        const std::string& path = m_paths[static_cast<std::size_t>(place)];
        return {reinterpret_cast<std::uintptr_t>(this), place, std::hash<std::string_view>()(path)};
    }

    std::mutex m_mutex;
    std::deque<std::string> m_paths;
    std::unordered_map<std::string_view, std::size_t> m_places; // the keys point into m_paths
};

auto& g_paths = *new CPathTable;

} // namespace

std::optional<FSRef> RefOfPath(const std::string& path)
{
    struct stat status = {};
    if (path.empty() || path.front() != '/' || stat(path.c_str(), &status) != 0)
        return std::nullopt;
    const Content content = g_paths.Add(path);
    FSRef ref = {};
    std::memcpy(ref.hidden, &content, sizeof content);
    return ref;
}

std::optional<std::string> PathOfRef(const FSRef* ref)
{
    if (!ref)
        return std::nullopt;
    Content content = {};
    std::memcpy(&content, ref->hidden, sizeof content);
    return g_paths.Find(content);
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory)
{
    if (!path || !ref)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CRef<const __CFURL> url = CRef<const __CFURL>::Adopt(CFURLCreateFromFileSystemRepresentation(
            nullptr, path, static_cast<CFIndex>(std::strlen(reinterpret_cast<const char*>(path))), false));
        const auto whole = PathOfUrl(url.Get());
        const auto made = whole ? RefOfPath(*whole) : std::nullopt;
        struct stat status = {};
        if (!made || stat(whole->c_str(), &status) != 0)
            return fnfErr;
        *ref = *made;
        if (isDirectory)
            *isDirectory = S_ISDIR(status.st_mode);
        return noErr;
    });
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize)
{
    if (!path)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const auto found = PathOfRef(ref);
        if (!found)
            return paramErr;
        if (found->size() >= pathBufferSize)
            return pathTooLongErr;
        std::memcpy(path, found->c_str(), found->size() + 1);
        return noErr;
    });
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* fsRef)
{
    if (!fsRef)
        return false;
    return Guarded<Boolean>(false, [&]() -> Boolean {
        const auto path = PathOfUrl(url);
        const auto made = path ? RefOfPath(*path) : std::nullopt;
        if (!made)
            return false;
        *fsRef = *made;
        return true;
    });
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* fsRef)
{
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        const auto path = PathOfRef(fsRef);
        struct stat status = {};
        if (!path || stat(path->c_str(), &status) != 0)
            return nullptr;
        return UrlOfPath(*path, S_ISDIR(status.st_mode)).Detach();
    });
}
