// CarbonCore/Multiprocessing.h
//
// Critical regions: locks that their holder may enter again. Every call works on every thread.
#ifndef CARBONCORE_MULTIPROCESSING_H
#define CARBONCORE_MULTIPROCESSING_H

#include <CVPlatform/CVLink.h>
#include <CarbonCore/MacTypes.h>

CV_BEGIN_DECLS

typedef struct OpaqueMPCriticalRegionID* MPCriticalRegionID;

enum {
    kDurationImmediate = 0,
    kDurationMillisecond = 1,
    kDurationMicrosecond = -1,
    kDurationForever = 0x7FFFFFFF,
    kInvalidID = 0,
    kMPTimeoutErr = -29296,
    kMPInsufficientResourcesErr = -29298,
    kMPInvalidIDErr = -29299
};

/// Makes a region that nobody holds.
/// @param region  receives the region, the caller's to delete, or null.
/// @return noErr, paramErr for null, or kMPInsufficientResourcesErr.
OSStatus MPCreateCriticalRegion(MPCriticalRegionID* region) CV_LINK(MPCreateCriticalRegion);
/// Deletes a region. Threads that wait for it still enter; leaving it is then an invalid ID.
/// @return noErr, or kMPInvalidIDErr for what is no region.
OSStatus MPDeleteCriticalRegion(MPCriticalRegionID region) CV_LINK(MPDeleteCriticalRegion);
/// Enters a region, waiting at most `timeout`: milliseconds when positive, microseconds when
/// negative, kDurationImmediate or kDurationForever. The holder may enter again.
/// @return noErr, kMPTimeoutErr, or kMPInvalidIDErr for what is no region.
OSStatus MPEnterCriticalRegion(MPCriticalRegionID region, Duration timeout) CV_LINK(MPEnterCriticalRegion);
/// Leaves a region once.
/// @return noErr, kMPInsufficientResourcesErr when the calling thread does not hold it, or
///         kMPInvalidIDErr for what is no region.
OSStatus MPExitCriticalRegion(MPCriticalRegionID region) CV_LINK(MPExitCriticalRegion);

CV_END_DECLS

#endif
