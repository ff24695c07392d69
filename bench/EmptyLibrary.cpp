// bench/EmptyLibrary.cpp
//
// The floor of LoadBench: a C++ library with one object, and nothing to do.
#include <string>

extern "C" __attribute__((visibility("default"))) const void* GetObject()
{
    static const std::string object("nothing");
    return &object;
}
