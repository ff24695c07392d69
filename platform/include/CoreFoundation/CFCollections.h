// CoreFoundation/CFCollections.h
//
// Arrays, dictionaries, data, numbers, booleans and dates: what property lists are made of.
#ifndef COREFOUNDATION_CFCOLLECTIONS_H
#define COREFOUNDATION_CFCOLLECTIONS_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

typedef const void* (*CFArrayRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFArrayEqualCallBack)(const void* value1, const void* value2);
/// How an array treats its values. Callbacks may be null: then nothing is retained or released,
/// and values are equal when their pointers are.
typedef struct CFArrayCallBacks {
    CFIndex version; ///< 0
    CFArrayRetainCallBack retain;
    CFArrayReleaseCallBack release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack equal;
} CFArrayCallBacks;
/// For arrays of Core Foundation objects.
extern const CFArrayCallBacks kCFTypeArrayCallBacks CV_LINK(kCFTypeArrayCallBacks);

CFTypeID CFArrayGetTypeID(void) CV_LINK(CFArrayGetTypeID);
/// Makes an array of `numValues` values; `callBacks` null retains nothing.
/// @return the array, the caller's; null for a negative count or null values with a count.
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                         const CFArrayCallBacks* callBacks) CV_LINK(CFArrayCreate);
CFIndex CFArrayGetCount(CFArrayRef theArray) CV_LINK(CFArrayGetCount);
/// Answers the value at `idx`, not retained; null outside the array.
const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx) CV_LINK(CFArrayGetValueAtIndex);

typedef const void* (*CFDictionaryRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFDictionaryEqualCallBack)(const void* value1, const void* value2);
typedef CFHashCode (*CFDictionaryHashCallBack)(const void* value);
/// How a dictionary treats its keys; null callbacks as in an array.
typedef struct CFDictionaryKeyCallBacks {
    CFIndex version; ///< 0
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
    CFDictionaryHashCallBack hash;
} CFDictionaryKeyCallBacks;
/// How a dictionary treats its values; null callbacks as in an array.
typedef struct CFDictionaryValueCallBacks {
    CFIndex version; ///< 0
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
} CFDictionaryValueCallBacks;
/// For dictionaries of Core Foundation objects.
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks CV_LINK(kCFTypeDictionaryKeyCallBacks);
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks CV_LINK(kCFTypeDictionaryValueCallBacks);

CFTypeID CFDictionaryGetTypeID(void) CV_LINK(CFDictionaryGetTypeID);
/// Makes a dictionary of `numValues` pairs; of equal keys the first counts.
/// @return the dictionary, the caller's; null for a negative count or null lists with a count.
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) CV_LINK(CFDictionaryCreate);
/// Makes an empty dictionary that can be changed. `capacity` is a hint.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks)
    CV_LINK(CFDictionaryCreateMutable);
/// Sets or replaces a value. Does nothing to an immutable dictionary, or for a null object where
/// the dictionary retains what it holds.
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value)
    CV_LINK(CFDictionarySetValue);
CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) CV_LINK(CFDictionaryGetCount);
Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key) CV_LINK(CFDictionaryContainsKey);
/// Answers the key's value, not retained; null when it is absent.
const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key) CV_LINK(CFDictionaryGetValue);
/// Fills lists of CFDictionaryGetCount places each, in no particular order; either may be null.
void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values)
    CV_LINK(CFDictionaryGetKeysAndValues);

CFTypeID CFDataGetTypeID(void) CV_LINK(CFDataGetTypeID);
/// Makes a copy of `length` bytes.
/// @return the data, the caller's; null for a negative length or null bytes with a length.
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) CV_LINK(CFDataCreate);
CFIndex CFDataGetLength(CFDataRef theData) CV_LINK(CFDataGetLength);
const UInt8* CFDataGetBytePtr(CFDataRef theData) CV_LINK(CFDataGetBytePtr);

extern const CFBooleanRef kCFBooleanTrue CV_LINK(kCFBooleanTrue);
extern const CFBooleanRef kCFBooleanFalse CV_LINK(kCFBooleanFalse);
CFTypeID CFBooleanGetTypeID(void) CV_LINK(CFBooleanGetTypeID);
Boolean CFBooleanGetValue(CFBooleanRef boolean) CV_LINK(CFBooleanGetValue);

/// The type of the variable that a number is made of or read into.
typedef CFIndex CFNumberType;
enum {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
    kCFNumberCharType = 7,
    kCFNumberShortType = 8,
    kCFNumberIntType = 9,
    kCFNumberLongType = 10,
    kCFNumberLongLongType = 11,
    kCFNumberFloatType = 12,
    kCFNumberDoubleType = 13,
    kCFNumberCFIndexType = 14
};
CFTypeID CFNumberGetTypeID(void) CV_LINK(CFNumberGetTypeID);
/// Makes a number of the variable of type `theType` at `valuePtr`.
/// @return the number, the caller's; null for a null pointer or an unknown type.
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void* valuePtr)
    CV_LINK(CFNumberCreate);
/// Writes the number into the variable at `valuePtr`.
/// @return whether it fitted without loss; when not, what is written is the nearest value.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) CV_LINK(CFNumberGetValue);
Boolean CFNumberIsFloatType(CFNumberRef number) CV_LINK(CFNumberIsFloatType);

/// Seconds since 2001-01-01 00:00:00 UTC.
typedef double CFAbsoluteTime;
CFTypeID CFDateGetTypeID(void) CV_LINK(CFDateGetTypeID);
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at) CV_LINK(CFDateCreate);
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate) CV_LINK(CFDateGetAbsoluteTime);

CV_END_DECLS

#endif
