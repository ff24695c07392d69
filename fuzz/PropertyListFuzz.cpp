// fuzz/PropertyListFuzz.cpp
//
// Property lists from anywhere: read, described, written and read again. What was written has to
// come back equal.
#include <initializer_list>

#include "fuzz/Fuzz.h"

namespace {

CFPropertyListRef Read(CFDataRef data)
{
    return CFPropertyListCreateFromXMLData(nullptr, data, kCFPropertyListImmutable, nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    const CFDataRef data = CFDataCreate(nullptr, bytes, static_cast<CFIndex>(size));
    const CFPropertyListRef list = Read(data);
    CFRelease(CFCopyDescription(list));
    const CFDataRef written = list ? CFPropertyListCreateXMLData(nullptr, list) : nullptr;
    // Dates lose their fractions and numbers their last digits on the way; what was read from the
    // written form has lost them already.
    const CFPropertyListRef once = Read(written);
    Require(!written || once);
    const CFDataRef again = once ? CFPropertyListCreateXMLData(nullptr, once) : nullptr;
    const CFPropertyListRef twice = Read(again);
    Require(!once || CFHash(once) == CFHash(twice));
    for (const CFTypeRef object : {CFTypeRef(data), list, CFTypeRef(written), once, CFTypeRef(again), twice})
        CFRelease(object);
    return 0;
}
