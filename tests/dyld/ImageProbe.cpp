// tests/dyld/ImageProbe.cpp
//
// A library that tells its own image's header, for ImagesTest to load from many places.
#include <mach-o/dyld.h>

extern "C" __attribute__((visibility("default"))) const void* ProbeHeader()
{
    return &__dso_handle;
}
