// platform/base/Descriptor.cpp
//
// Descriptors are handed out from the lowest on, so that the highest are mostly free: one call sees
// whether they are. Where one is taken the rest is counted by trying.
#include "platform/base/Descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace {

bool AreHighestFree(int count)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return false;
    auto next = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, INT_MAX));
    std::vector<pollfd> highest(static_cast<std::size_t>(count));
    for (pollfd& place : highest)
        place.fd = --next;
    return next >= 0 && poll(highest.data(), highest.size(), 0) == count &&
           std::all_of(highest.begin(), highest.end(), [](const pollfd& place) { return place.revents == POLLNVAL; });
}

} // namespace

bool HasSpareDescriptors(int count)
{
    std::vector<CDescriptor> tried;
    tried.emplace_back(eventfd(0, EFD_CLOEXEC)); // the whole system may have none left
    if (tried.back() && AreHighestFree(count))
        return true;
    while (tried.back() && static_cast<int>(tried.size()) < count)
        tried.emplace_back(fcntl(tried.front().Get(), F_DUPFD_CLOEXEC, 0));
    return static_cast<bool>(tried.back());
}
