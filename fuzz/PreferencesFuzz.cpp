// fuzz/PreferencesFuzz.cpp
//
// The reader of a domain's file, and the writer on what it read: the second reading is the first.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fuzz/Fuzz.h"
#include "platform/corefoundation/PreferencesFile.h"
#include "platform/corefoundation/PropertyListBinary.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int file = memfd_create("settings", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    Require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    const PreferencesFile settings = ReadPreferencesFile(path, nullptr);
    Require(settings.bytes.size() == size && settings.stamp == CurrentStamp(path, settings.isLocal));
    Require(settings.state == FileState::Read || settings.state == FileState::Malformed);
    if (settings.state == FileState::Malformed)
        return 0;
    Require(ReadPreferencesFile(path, &settings).values.Get() ==
            settings.values.Get()); // it is known and not read again
    const auto bytes = WriteBinaryPropertyList(*settings.values);
    const auto again = bytes ? ParsePreferences(*bytes) : CRef<const __CFDictionary>();
    Require(!bytes || (again && WriteBinaryPropertyList(*again) == bytes));
    return 0;
}
