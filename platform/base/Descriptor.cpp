// platform/base/Descriptor.cpp
//
// Counts by trying: what the limit says, the system's own limit may not allow.
#include "platform/base/Descriptor.h"

#include <fcntl.h>
#include <sys/eventfd.h>

#include <vector>

bool HasSpareDescriptors(int count)
{
    std::vector<CDescriptor> tried;
    tried.reserve(static_cast<std::size_t>(count));
    tried.emplace_back(eventfd(0, EFD_CLOEXEC));
    while (tried.back() && static_cast<int>(tried.size()) < count)
        tried.emplace_back(fcntl(tried.front().Get(), F_DUPFD_CLOEXEC, 0));
    return static_cast<bool>(tried.back());
}
