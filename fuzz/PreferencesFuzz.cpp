// fuzz/PreferencesFuzz.cpp
//
// The reader of a domain's file, and the writer on what it read: the second reading is the first.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/corefoundation/PreferencesFile.h"
#include "platform/corefoundation/PropertyListBinary.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto values = ParsePreferences({reinterpret_cast<const char*>(data), size});
    if (!values)
        return 0;
    const auto bytes = WriteBinaryPropertyList(*values);
    const auto again = bytes ? ParsePreferences(*bytes) : CRef<const __CFDictionary>();
    if (bytes && (!again || WriteBinaryPropertyList(*again) != bytes))
        std::abort();
    return 0;
}
