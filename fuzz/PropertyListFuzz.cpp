// fuzz/PropertyListFuzz.cpp
//
// Property lists from anywhere: read, described, written and read again. What was written has to
// come back equal.
#include <initializer_list>
#include <vector>

#include "fuzz/Fuzz.h"

namespace {

CFPropertyListRef Read(CFDataRef data)
{
    return CFPropertyListCreateFromXMLData(nullptr, data, kCFPropertyListImmutable, nullptr);
}

// A few hundred bytes may say a million values, which takes long with the sanitizers.
constexpr int kMostValues = 20000;

// Takes what is in the list from `left`; stops at 0.
void Count(CFTypeRef object, int& left)
{
    if (--left <= 0)
        return;
    if (CFGetTypeID(object) == CFArrayGetTypeID()) {
        const auto array = static_cast<CFArrayRef>(object);
        for (CFIndex index = 0; index < CFArrayGetCount(array) && left > 0; ++index)
            Count(CFArrayGetValueAtIndex(array, index), left);
    } else if (CFGetTypeID(object) == CFDictionaryGetTypeID()) {
        const auto dictionary = static_cast<CFDictionaryRef>(object);
        std::vector<const void*> values(static_cast<std::size_t>(CFDictionaryGetCount(dictionary)));
        CFDictionaryGetKeysAndValues(dictionary, nullptr, values.data());
        for (const void* value : values)
            Count(value, left);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, size_t size)
{
    const CFDataRef data = CFDataCreate(nullptr, bytes, static_cast<CFIndex>(size));
    const CFPropertyListRef list = Read(data);
    int left = kMostValues;
    if (list)
        Count(list, left);
    if (left <= 0) {
        CFRelease(list);
        CFRelease(data);
        return 0;
    }
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
