// platform/desktop/Module.cpp
//
// Loads with everything bound at once: a host that brings libraries of its own, older or stripped,
// shows here and not in the middle of drawing.
#include "platform/desktop/Module.h"

#include <dlfcn.h>

#include <mutex>

#include "platform/base/Descriptor.h"
#include "platform/base/Forever.h"
#include "platform/base/Guard.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr const char* kFile = "libcvplatform-x11.so";

struct Loaded {
    std::mutex mutex;
    void* code = nullptr;
    std::string problem;
};

Loaded& TheModule()
{
    static CForever<Loaded> loaded;
    return *loaded;
}

// A failure is tried again: what is missing may be installed while the host runs.
void* Load(Loaded& loaded)
{
    if (!HasSpareDescriptors(kDescriptorsToBegin)) { // whoever looks for a name is about to begin with it
        loaded.problem = "too few file descriptors are left";
        return nullptr;
    }
    loaded.problem.clear();
    if (loaded.code)
        return loaded.code;
    const char* const library = CVGetLibraryPath();
    const std::string path(library ? library : "");
    const std::string file = path.substr(0, path.rfind('/') + 1) + kFile;
    loaded.code = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (const char* const problem = loaded.code ? nullptr : dlerror())
        loaded.problem = problem;
    return loaded.code;
}

} // namespace

void* Module::Find(const char* name) noexcept
{
    return Guarded<void*>(nullptr, [name]() -> void* {
        Loaded& loaded = TheModule();
        const std::lock_guard<std::mutex> lock(loaded.mutex);
        return Load(loaded) ? dlsym(loaded.code, name) : nullptr;
    });
}

std::string Module::Problem()
{
    Loaded& loaded = TheModule();
    const std::lock_guard<std::mutex> lock(loaded.mutex);
    return loaded.problem;
}
