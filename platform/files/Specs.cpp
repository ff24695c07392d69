// platform/files/Specs.cpp
//
// The older file references. Mac OS finds a file by the number of its folder and a short name; ours
// carry what an FSRef carries, behind a name that only people read.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/base/Guard.h"
#include "platform/base/Text.h"
#include "platform/files/Files.h"

namespace {

constexpr std::size_t kLongestShownName = sizeof(FSSpec::name) - 1 - kRefContentSize;
constexpr std::size_t kContentOffset = sizeof(FSSpec::name) - kRefContentSize;

static_assert(sizeof(FSSpec) == 70);

std::string ShownName(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    std::string shown;
    if (!CountUtf16Units(name))
        return "?";
    for (std::size_t at = 0; at < name.size() && shown.size() < kLongestShownName;) {
        std::string character;
        AppendUtf8(character, NextCodePoint(name, at));
        shown += MacRomanOfUtf8(character).value_or("?");
    }
    return shown;
}

} // namespace

FSSpec SpecOfRef(const FSRef& ref, const std::string& path)
{
    FSSpec spec = {};
    spec.vRefNum = -1; // as the first volume has
    spec.parID = 1;
    const std::string name = ShownName(path);
    spec.name[0] = static_cast<UInt8>(name.size());
    std::memcpy(spec.name + 1, name.data(), name.size());
    std::memcpy(spec.name + kContentOffset, ref.hidden, kRefContentSize);
    return spec;
}

std::optional<std::string> PathOfSpec(const FSSpec& spec)
{
    FSRef ref = {};
    std::memcpy(ref.hidden, spec.name + kContentOffset, kRefContentSize);
    return PathOfRef(&ref);
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef)
{
    if (whichInfo != kFSCatInfoNone || catalogInfo || outName || parentRef)
        return paramErr;
    return Guarded<OSErr>(memFullErr, [&]() -> OSErr {
        const auto path = PathOfRef(ref);
        if (!path)
            return paramErr;
        if (access(path->c_str(), F_OK) != 0)
            return fnfErr;
        if (fsSpec)
            *fsSpec = SpecOfRef(*ref, *path);
        return noErr;
    });
}
