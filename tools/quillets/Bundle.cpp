// tools/quillets/Bundle.cpp
//
// Finds and loads the bundle.
#include "tools/quillets/Bundle.h"

#include <climits>

namespace {

constexpr std::string_view kBundleName = "Quillets.bundle";

CFBundleRef OpenBundle(const std::string& path)
{
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                                 static_cast<CFIndex>(path.size()), true);
    const CFBundleRef bundle = CFBundleCreate(nullptr, url);
    CFRelease(url);
    return bundle;
}

// The folder that holds this program.
std::string ProgramFolder()
{
    return TakePath(CFBundleCopyBundleURL(CFBundleGetMainBundle()));
}

} // namespace

std::string TakePath(CFURLRef url)
{
    UInt8 path[PATH_MAX] = "";
    (void)CFURLGetFileSystemRepresentation(url, true, path, sizeof path); // else it stays empty
    CFRelease(url);
    return reinterpret_cast<const char*>(path);
}

LoadedBundle LoadBundle(const Arguments& arguments)
{
    LoadedBundle loaded;
    const std::string folder = ProgramFolder();
    const std::string places[] = {arguments.bundlePath, folder + "/" + std::string(kBundleName),
                                  folder + "/../lib/corvane/" + std::string(kBundleName)};
    for (const std::string& place : places) {
        if (place.empty())
            continue;
        loaded.path = place;
        loaded.bundle = OpenBundle(place);
        if (loaded.bundle || !arguments.bundlePath.empty())
            break;
    }
    if (!loaded.bundle) {
        loaded.problem = "no bundle at " + loaded.path;
        return loaded;
    }
    const auto factory = reinterpret_cast<GetLibProductManagerProc>(
        CFBundleGetFunctionPointerForName(loaded.bundle, CFSTR("GetLibProductManager")));
    if (factory)
        loaded.manager = factory();
    else
        loaded.problem = CFBundleLoadExecutable(loaded.bundle) ? loaded.path + " has no product services in it"
                                                               : "the code of " + loaded.path + " cannot be loaded";
    return loaded;
}
