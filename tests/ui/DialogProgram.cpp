// tests/ui/DialogProgram.cpp
//
// A host that ends while the information dialog is open, without a word to anybody.
#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>
#include <dlfcn.h>

#include <cstdio>

#include "frame/IProductManager.h"

namespace {

OSStatus SayEnd(EventHandlerCallRef, EventRef, void*)
{
    std::puts("ended");
    return eventNotHandledErr;
}

} // namespace

int main()
{
    void* const code = dlopen(CV_BUILD_DIR "/Quillets.bundle/Contents/MacOS/Quillets", RTLD_NOW | RTLD_LOCAL);
    const auto factory =
        reinterpret_cast<GetLibProductManagerProc>(code ? dlsym(code, "GetLibProductManager") : nullptr);
    if (!factory)
        return 1;
    static const EventTypeSpec kEnd = {'cvev', 'iend'};
    (void)InstallApplicationEventHandler(SayEnd, 1, &kEnd, nullptr, nullptr);
    factory()->InfoDialog(nullptr, false);
    if (CVPump() != noErr)
        return 1;
    std::puts(IsWindowVisible(FrontNonFloatingWindow()) ? "shown" : "not shown");
    std::puts("leaving");
    return 0;
}
