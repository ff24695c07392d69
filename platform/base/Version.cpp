// platform/base/Version.cpp
//
// Which layer this is and where its file lies.
#include <dlfcn.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "platform/base/Guard.h"
#include <CVPlatform/CVPlatform.h>

const char* CVGetVersion(void)
{
    return CV_VERSION;
}

const char* CVGetLibraryPath(void)
{
    return Guarded<const char*>(nullptr, [] {
        static const std::string* const path = [] {
            Dl_info info = {};
            char resolved[PATH_MAX] = "";
            const bool found = dladdr(reinterpret_cast<const void*>(&CVGetVersion), &info) != 0 &&
                               realpath(info.dli_fname, resolved) != nullptr;
            return new std::string(found ? resolved : ""); // never destroyed, like all of the layer
        }();
        return path->empty() ? nullptr : path->c_str();
    });
}
