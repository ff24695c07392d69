// tests/system/KeepModules.cpp
//
// Loaded before Debian's Audacity, which sets the folder of the modules that wrap foreign interfaces
// to an empty name, so that it finds none of them and no plug-in's own interface comes up. Keeps it
// from that and from nothing else.
#include <dlfcn.h>

#include <cstring>

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT int setenv(const char* name, const char* value, int replace) noexcept
{
    using Call = int (*)(const char*, const char*, int);
    static const auto real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "setenv"));
    return std::strcmp(name, "SUIL_MODULE_DIR") == 0 ? 0 : real(name, value, replace);
}
