// platform/quicktime/ImageModule.cpp
//
// Finds and loads the module beside the layer's own file.
#include "platform/quicktime/ImageModule.h"

#include <dlfcn.h>

#include <mutex>

#include <CVPlatform/CVPlatform.h>

namespace {

constexpr const char* kFileName = "libcvplatform-image.so";

const ImageModuleCalls* OpenModule()
{
    const char* const layer = CVGetLibraryPath();
    if (!layer)
        return nullptr;
    std::string path(layer);
    path.replace(path.rfind('/') + 1, std::string::npos, kFileName);
    // Local: a host's own libraries must not see what ours brings. Never closed: the libraries
    // behind it cannot be.
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = module ? dlsym(module, kImageModuleSymbol) : nullptr;
    return entry ? reinterpret_cast<ImageModuleEntry>(entry)() : nullptr;
}

} // namespace

const ImageModuleCalls* LoadImageModule()
{
    static std::mutex& mutex = *new std::mutex;
    static const ImageModuleCalls* module = nullptr;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!module)
        module = OpenModule();
    return module;
}
