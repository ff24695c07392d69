// CarbonCore/MacTypes.h
//
// The basic integer, character and error types of the platform. On 32-bit targets UInt32 and
// SInt32 are `long`s, as the Mac's headers have them; on 64-bit targets they are `int`s.
#ifndef CARBONCORE_MACTYPES_H
#define CARBONCORE_MACTYPES_H

#include <stddef.h>
#include <stdint.h>

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef short SInt16;
#ifdef __LP64__
typedef unsigned int UInt32;
typedef int SInt32;
#else
typedef unsigned long UInt32;
typedef long SInt32;
#endif
#if defined(__cplusplus) && defined(__GNUC__)
__extension__ typedef unsigned long long UInt64;
__extension__ typedef long long SInt64;
#else
typedef unsigned long long UInt64;
typedef long long SInt64;
#endif

/// One UTF-16 code unit.
typedef UInt16 UniChar;
/// Results: 0 (noErr) for success, a negative number for an error.
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
/// A four-character code; the first character is the most significant byte.
typedef UInt32 OSType;
typedef UInt32 FourCharCode;
typedef UInt32 ResType;
typedef UInt32 ByteCount;
typedef UInt32 ItemCount;
typedef UInt32 OptionBits;
/// A size in bytes.
typedef long Size;
/// A wait: positive values are milliseconds, negative ones microseconds; see Multiprocessing.h.
typedef SInt32 Duration;
/// A Pascal string: its length in bytes, then the bytes (Mac OS Roman).
typedef unsigned char Str255[256];
typedef const unsigned char* ConstStr255Param;
typedef char* Ptr;
typedef Ptr* Handle;

#pragma pack(push, 2)
/// A point in pixels, vertical first.
typedef struct Point {
    short v;
    short h;
} Point;
/// A rectangle in pixels; bottom and right are exclusive.
typedef struct Rect {
    short top;
    short left;
    short bottom;
    short right;
} Rect;
/// A colour; 0 to 65535 per component.
typedef struct RGBColor {
    UInt16 red;
    UInt16 green;
    UInt16 blue;
} RGBColor;
/// Names a process; the layer puts the process id into the low half.
typedef struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
} ProcessSerialNumber;
#pragma pack(pop)

enum { noErr = 0, fnfErr = -43, paramErr = -50, memFullErr = -108, userCanceledErr = -128 };
/// Outside the range of an enumerator that shares its type with the ones above on 16-bit results.
enum { badComponentInstance = -2147450879 };

#endif
