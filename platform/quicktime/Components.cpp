// platform/quicktime/Components.cpp
//
// The importers that programs hold: handles, and the files behind them.
#include <cerrno>
#include <map>
#include <mutex>
#include <string>

#include "platform/base/Guard.h"
#include "platform/base/RegularFile.h"
#include "platform/coregraphics/Image.h"
#include "platform/files/Files.h"
#include "platform/quicktime/Importer.h"
#include <QuickTime/QuickTime.h>

namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t(1) << 28U;

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
        std::uint64_t size = 0;
        if (!path || !OpenRegularFile(*path, size))
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
        std::vector<std::uint8_t> bytes;
        if (const int error = ReadRegularFile(*path, kLargestFile, bytes))
            return error == EFBIG ? ComponentResult(codecBadDataErr) : ComponentResult(fnfErr);
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
