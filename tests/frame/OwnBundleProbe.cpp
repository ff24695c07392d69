// tests/frame/OwnBundleProbe.cpp
//
// A bundle's code with the component in it, and the one question that only a class of its own can
// answer: whether the destructor lets a bundle go.
#include "frame/ProductManager.h"

namespace {

class CProbe : public CProductManager {
public:
    using CBaseProductManager::bundle;
};

} // namespace

/// Answers by how much the retain count of the bundle that Init opened, or of the one at `other`,
/// has fallen when the object is gone; -1 where none was opened. `meanwhile` is called between the two.
extern "C" __attribute__((visibility("default"))) long ReleasesOfDestructor(const char* other, void (*meanwhile)(void*),
                                                                            void* context)
{
    CProbe* const manager = new CProbe;
    if (other)
        manager->bundle = CProbe::OpenBundle(other);
    else
        (void)manager->Init(nullptr, nullptr);
    const CFBundleRef bundle = manager->bundle;
    if (!bundle) {
        delete manager;
        return -1;
    }
    CFRetain(bundle);
    if (meanwhile)
        meanwhile(context);
    const CFIndex before = CFGetRetainCount(bundle);
    delete manager;
    const CFIndex released = before - CFGetRetainCount(bundle);
    CFRelease(bundle);
    return released;
}
