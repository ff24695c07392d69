// frame/Entry.cpp
//
// What runs when the bundle is loaded. The two initialisers stand in one file because their order
// here is the order in which they run; no other file of the component may have one.
#include "frame/BaseProductManager.h"

extern "C" {

__attribute__((constructor)) static void StoreBuildNumber()
{
    g_VersionInf.build = static_cast<int32_t>(g_CVGetCurrentBuildNumber());
}

__attribute__((constructor)) void DllMain()
{
    CBaseProductManager* const manager = static_cast<CBaseProductManager*>(GetLibProductManager());
    (void)manager->Init(nullptr, "Quillets/VST");
    manager->SetProductName("Corvane Audio Quillets for Mac");
}

} // extern "C"
