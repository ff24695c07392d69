// bench/windows/OurInfo.cpp
//
// The information dialog of the bundle, opened as a plug-in opens it.
#include <Carbon/Carbon.h>
#include <dlfcn.h>

#include "bench/windows/Peer.h"
#include "frame/IProductManager.h"

void OpenDialog()
{
    static void* const code = dlopen(CV_BUILD_DIR "/Quillets.bundle/Contents/MacOS/Quillets", RTLD_NOW | RTLD_LOCAL);
    static const auto factory =
        reinterpret_cast<GetLibProductManagerProc>(code ? dlsym(code, "GetLibProductManager") : nullptr);
    if (factory)
        factory()->InfoDialog(nullptr, false);
}

void CloseDialog()
{
    DisposeWindow(FrontNonFloatingWindow());
}
