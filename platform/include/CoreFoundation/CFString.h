// CoreFoundation/CFString.h
//
// Immutable strings of Unicode text. Conversion is strict both ways: bytes that are not valid in
// their encoding make no string, and a character that an encoding lacks makes the conversion fail.
#ifndef COREFOUNDATION_CFSTRING_H
#define COREFOUNDATION_CFSTRING_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

typedef UInt32 CFStringEncoding;

enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingUnicode = 0x0100, ///< UTF-16 in the machine's byte order.
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100
};

CFTypeID CFStringGetTypeID(void) CV_LINK(CFStringGetTypeID);

/// Makes a string of a NUL-terminated byte string in UTF-8, ASCII or Mac OS Roman.
/// @return the string, the caller's; null for null, invalid bytes or another encoding.
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding)
    CV_LINK(CFStringCreateWithCString);
/// Makes a string of `numBytes` bytes in any of the four encodings; bytes may be 0. A byte-order
/// mark is taken as one only where `isExternalRepresentation` says so.
/// @return the string, the caller's; null for invalid bytes.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation)
    CV_LINK(CFStringCreateWithBytes);
/// Makes a string of `numChars` UTF-16 units.
/// @return the string, the caller's; null for an unpaired surrogate.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars)
    CV_LINK(CFStringCreateWithCharacters);
/// Formats as printf does (d i u x X o c s p f e g a, with flags, width, precision, the lengths
/// h hh l ll z t j q, and positions `%2$d`), and `%@` for an object. `%s` takes UTF-8; bytes that
/// are not valid there are read as Mac OS Roman. `formatOptions` is not used.
/// @return the string, the caller's; null for a null or malformed format.
CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, ...)
    CV_LINK(CFStringCreateWithFormat);
/// As CFStringCreateWithFormat, with the arguments as a list.
CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                                 CFStringRef format, va_list arguments)
    CV_LINK(CFStringCreateWithFormatAndArguments);
/// Answers a string of the same text, the caller's; the string itself, retained once more.
CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString) CV_LINK(CFStringCreateCopy);
/// Writes the text and a NUL into `buffer` of `bufferSize` bytes (UTF-8, ASCII or Mac OS Roman).
/// @return false, with the buffer as it was, when it does not fit whole, holds a character that
///         the encoding lacks or a NUL of its own, or an argument is null.
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding)
    CV_LINK(CFStringGetCString);
/// Answers the string's own bytes, NUL-terminated, valid while it lives; null where it does not
/// hold them in that encoding.
const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding) CV_LINK(CFStringGetCStringPtr);
/// Writes the UTF-16 units of `range` into `buffer`, which must have room for them; a range
/// outside the string writes nothing.
void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer) CV_LINK(CFStringGetCharacters);
/// Answers the length in UTF-16 units.
CFIndex CFStringGetLength(CFStringRef theString) CV_LINK(CFStringGetLength);
/// Answers the most bytes, without a NUL, that `length` UTF-16 units take in `encoding`.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
    CV_LINK(CFStringGetMaximumSizeForEncoding);
/// Compares unit by unit in UTF-16 order. Only the literal comparison (no options) is offered;
/// options are ignored. Null comes before every string.
CFComparisonResult CFStringCompare(CFStringRef string1, CFStringRef string2, CFOptionFlags compareOptions)
    CV_LINK(CFStringCompare);

/// Answers the one constant string of an ASCII text; use CFSTR.
CFStringRef __CFStringMakeConstantString(const char* cStr) CV_LINK(__CFStringMakeConstantString);
/// A constant string of an ASCII literal, which nobody releases.
#define CFSTR(text) __CFStringMakeConstantString("" text "")

CV_END_DECLS

#endif
