// CoreFoundation/CFBase.h
//
// What all Core Foundation objects share: opaque references with atomic reference counts.
//
// Ownership: what a call with Create or Copy in its name answers is the caller's to CFRelease;
// what a call with Get answers is not. Objects may be used from every thread; mutable ones by one
// thread at a time. A null object is answered with null, false or 0, never a crash.
#ifndef COREFOUNDATION_CFBASE_H
#define COREFOUNDATION_CFBASE_H

#include <CVPlatform/CVLink.h>
#include <CarbonCore/MacTypes.h>
#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

CV_BEGIN_DECLS

/// A count, a position or a size.
typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFHashCode;
typedef unsigned long CFOptionFlags;
/// Any object.
typedef const void* CFTypeRef;
/// Any object of the kinds that a property list holds.
typedef CFTypeRef CFPropertyListRef;
/// The layer has the one allocator; every call takes null and ignores what it is given.
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFData* CFDataRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFDate* CFDateRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFBundle* CFBundleRef;

/// A stretch of a string or list: `length` items from `location` on.
typedef struct CFRange {
    CFIndex location;
    CFIndex length;
} CFRange;

/// The result of an ordered comparison.
typedef enum { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 } CFComparisonResult;

enum { kCFNotFound = -1 };

#define kCFAllocatorDefault ((CFAllocatorRef)NULL)

/// Answers a range.
static inline CFRange CFRangeMake(CFIndex location, CFIndex length)
{
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}

/// Adds one reference and answers its argument.
CFTypeRef CFRetain(CFTypeRef cf) CV_LINK(CFRetain);
/// Gives one reference back; the last one frees the object. Constant objects are never freed.
void CFRelease(CFTypeRef cf) CV_LINK(CFRelease);
/// Answers the number of references; without meaning for constant objects.
CFIndex CFGetRetainCount(CFTypeRef cf) CV_LINK(CFGetRetainCount);
/// Answers the number that all objects of one kind share; 0 for null.
CFTypeID CFGetTypeID(CFTypeRef cf) CV_LINK(CFGetTypeID);
/// Answers whether two objects have the same kind and content.
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2) CV_LINK(CFEqual);
/// Answers a number that is the same for equal objects.
CFHashCode CFHash(CFTypeRef cf) CV_LINK(CFHash);
/// Answers a new string that describes the object, for people who look for a fault.
CFStringRef CFCopyDescription(CFTypeRef cf) CV_LINK(CFCopyDescription);
/// Writes the object's description to stderr.
void CFShow(CFTypeRef cf) CV_LINK(CFShow);

CV_END_DECLS

#endif
