// platform/quicktime/Components.cpp
//
// The importers that programs hold: handles, and the files behind them.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>
#include <string>

#include "platform/base/Guard.h"
#include "platform/coregraphics/Image.h"
#include "platform/files/Files.h"
#include "platform/quicktime/Importer.h"
#include <QuickTime/QuickTime.h>

namespace {

constexpr off_t kLargestFile = off_t(1) << 28;

class CDescriptor {
public:
    // Without waiting: a pipe may stand where a file is looked for.
    explicit CDescriptor(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
    }
    ~CDescriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;

    /// Answers the size of a regular file; -1 for what is none or cannot be read.
    off_t Size() const
    {
        struct stat status = {};
        return m_descriptor >= 0 && fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
    }
    bool Read(std::vector<std::uint8_t>& bytes) const
    {
        for (std::size_t at = 0; at < bytes.size();) {
            const ssize_t count = read(m_descriptor, bytes.data() + at, bytes.size() - at);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return false;
            at += static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    int m_descriptor;
};

/// A handle is a number, never an address, so that a stale one is recognised.
class CImporterTable {
public:
    ComponentInstance Open(const std::string& path)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (auto& [handle, importer] : m_importers) {
            if (importer.path == path) {
                ++importer.openings;
                return reinterpret_cast<ComponentInstance>(handle);
            }
        }
        const std::uintptr_t handle = m_last + 1;
        m_importers.emplace(handle, Importer{path, 1});
        m_last = handle;
        return reinterpret_cast<ComponentInstance>(handle);
    }

    bool Close(ComponentInstance instance)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_importers.find(reinterpret_cast<std::uintptr_t>(instance));
        if (found == m_importers.end())
            return false;
        if (--found->second.openings == 0)
            m_importers.erase(found);
        return true;
    }

    std::optional<std::string> PathOf(ComponentInstance instance)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_importers.find(reinterpret_cast<std::uintptr_t>(instance));
        return found == m_importers.end() ? std::nullopt : std::optional<std::string>(found->second.path);
    }

private:
    struct Importer {
        std::string path;
        std::uint64_t openings;
    };

    std::mutex m_mutex;
    std::uintptr_t m_last = 0;
    std::map<std::uintptr_t, Importer> m_importers;
};

CImporterTable& g_importers = *new CImporterTable;

} // namespace

OSErr GetGraphicsImporterForFile(const FSSpec* theFile, ComponentInstance* gi)
{
    if (!gi)
        return paramErr;
    *gi = nullptr;
    if (!theFile)
        return paramErr;
    return Guarded<OSErr>(memFullErr, [&]() -> OSErr {
        const auto path = PathOfSpec(*theFile);
        if (!path || CDescriptor(*path).Size() < 0)
            return fnfErr;
        *gi = g_importers.Open(*path);
        return noErr;
    });
}

ComponentResult GraphicsImportCreateCGImage(GraphicsImportComponent ci, CGImageRef* imageRefOut, UInt32)
{
    if (!imageRefOut)
        return paramErr;
    *imageRefOut = nullptr;
    return Guarded<ComponentResult>(memFullErr, [&]() -> ComponentResult {
        const auto path = g_importers.PathOf(ci);
        if (!path)
            return badComponentInstance;
        const CDescriptor file(*path);
        const off_t size = file.Size();
        if (size < 0)
            return fnfErr;
        if (size > kLargestFile)
            return codecBadDataErr;
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
        if (!file.Read(bytes))
            return fnfErr;
        auto picture = ImportPicture({bytes.data(), bytes.size()});
        if (!picture)
            return codecBadDataErr;
        *imageRefOut = CGImage::Create(static_cast<std::size_t>(picture->width),
                                       static_cast<std::size_t>(picture->height), std::move(picture->argb))
                           .Detach();
        return noErr;
    });
}

OSErr CloseComponent(ComponentInstance aComponentInstance)
{
    return g_importers.Close(aComponentInstance) ? OSErr(noErr) : OSErr(invalidComponentID);
}
