// platform/multiprocessing/CriticalRegion.cpp
//
// Critical regions over recursive mutexes. An ID is a number, never an address, so that a stale
// one is recognised.
#include <pthread.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>

#include "platform/base/Guard.h"
#include <CarbonCore/Multiprocessing.h>

namespace {

class CRegion {
public:
    CRegion()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&m_mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~CRegion() { pthread_mutex_destroy(&m_mutex); }
    CRegion(const CRegion&) = delete;
    CRegion& operator=(const CRegion&) = delete;

    OSStatus Enter(Duration timeout)
    {
        switch (Lock(timeout)) {
        case 0:
            return noErr;
        case EBUSY:
        case ETIMEDOUT:
            return kMPTimeoutErr;
        default:
            return kMPInsufficientResourcesErr; // entered too often
        }
    }

    OSStatus Exit()
    {
        if (pthread_mutex_unlock(&m_mutex) != 0)
            return kMPInsufficientResourcesErr;
        return noErr;
    }

private:
    int Lock(Duration timeout)
    {
        if (timeout == kDurationForever)
            return pthread_mutex_lock(&m_mutex);
        if (timeout == kDurationImmediate)
            return pthread_mutex_trylock(&m_mutex);
        constexpr long long kSecond = 1000000000;
        const long long count = timeout;
        const long long wait = count > 0 ? count * 1000000 : -count * 1000;
        timespec until = {};
        clock_gettime(CLOCK_MONOTONIC, &until);
        const long long nanoseconds = until.tv_nsec + wait;
        until.tv_sec += static_cast<time_t>(nanoseconds / kSecond);
        until.tv_nsec = static_cast<long>(nanoseconds % kSecond);
        return pthread_mutex_clocklock(&m_mutex, CLOCK_MONOTONIC, &until);
    }

    pthread_mutex_t m_mutex;
};

struct Regions {
    std::mutex mutex;
    std::uintptr_t last = 0;
    std::map<std::uintptr_t, std::shared_ptr<CRegion>> byId;
};

Regions& g_regions = *new Regions;

std::uintptr_t NumberOf(MPCriticalRegionID region)
{
    return reinterpret_cast<std::uintptr_t>(region);
}

// Whoever waits keeps the region alive while somebody else deletes it.
std::shared_ptr<CRegion> FindRegion(MPCriticalRegionID region)
{
    const std::lock_guard<std::mutex> lock(g_regions.mutex);
    const auto found = g_regions.byId.find(NumberOf(region));
    return found == g_regions.byId.end() ? nullptr : found->second;
}

} // namespace

OSStatus MPCreateCriticalRegion(MPCriticalRegionID* region)
{
    if (!region)
        return paramErr;
    *region = nullptr;
    return Guarded<OSStatus>(kMPInsufficientResourcesErr, [&]() -> OSStatus {
        const std::lock_guard<std::mutex> lock(g_regions.mutex);
        const std::uintptr_t id = g_regions.last + 1;
        g_regions.byId.emplace(id, std::make_shared<CRegion>());
        g_regions.last = id;
        *region = reinterpret_cast<MPCriticalRegionID>(id);
        return noErr;
    });
}

OSStatus MPDeleteCriticalRegion(MPCriticalRegionID region)
{
    const std::lock_guard<std::mutex> lock(g_regions.mutex);
    if (g_regions.byId.erase(NumberOf(region)) == 0)
        return kMPInvalidIDErr;
    return noErr;
}

OSStatus MPEnterCriticalRegion(MPCriticalRegionID region, Duration timeout)
{
    const std::shared_ptr<CRegion> found = FindRegion(region);
    return found ? found->Enter(timeout) : static_cast<OSStatus>(kMPInvalidIDErr);
}

OSStatus MPExitCriticalRegion(MPCriticalRegionID region)
{
    const std::shared_ptr<CRegion> found = FindRegion(region);
    return found ? found->Exit() : static_cast<OSStatus>(kMPInvalidIDErr);
}
