// Host.cpp
//
// The least program that uses the bundle: loads it, asks who it is, keeps a setting and lets go.
#include <dlfcn.h>

#include <cstdio>

#include "frame/IProductManager.h"

int main(int count, char** words)
{
    const char* const bundle = count > 1 ? words[1] : CORVANE_BUNDLE;
    char code[1024];
    std::snprintf(code, sizeof code, "%s/Contents/MacOS/Quillets", bundle);
    void* const image = dlopen(code, RTLD_NOW | RTLD_LOCAL);
    if (!image) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto factory = reinterpret_cast<GetLibProductManagerProc>(dlsym(image, "GetLibProductManager"));
    if (!factory) {
        std::fprintf(stderr, "%s has no product services in it\n", code);
        return 1;
    }
    IProductManager* const services = factory();
    const CVProductVersion* const version = services->GetProductVersion();
    std::printf("%s %d.%d (%d)\n", services->GetProductName(), static_cast<int>(version->major),
                static_cast<int>(version->minor), static_cast<int>(version->build));
    std::printf("knobs: %s\n", services->KnobsDragVertical() ? "vertical" : "circular");

    char visits[8] = "never";
    (void)services->GetRegistryKey("Example Host", "Seen", visits, sizeof visits); // absent leaves "never"
    std::printf("seen before: %s\n", visits);
    if (!services->SetRegistryKey("Example Host", "Seen", "yes"))
        std::printf("the setting could not be stored\n");

    dlclose(image); // no call is under way, and nobody keeps `services`
    return 0;
}
