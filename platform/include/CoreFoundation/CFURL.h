// CoreFoundation/CFURL.h
//
// URLs. A file URL's string begins "file://localhost/"; that of a directory ends in a slash. Paths
// are bytes as the file system has them; every byte outside the unreserved ASCII characters is
// percent-escaped in the string, so paths that are not valid UTF-8 survive too.
#ifndef COREFOUNDATION_CFURL_H
#define COREFOUNDATION_CFURL_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

struct FSRef;

typedef enum { kCFURLPOSIXPathStyle = 0 } CFURLPathStyle;

/// What CFURLCreateDataAndPropertiesFromResource reports.
enum {
    kCFURLUnknownError = -10,
    kCFURLUnknownSchemeError = -11,
    kCFURLResourceNotFoundError = -12,
    kCFURLResourceAccessViolationError = -13,
    kCFURLRemoteHostUnavailableError = -14,
    kCFURLImproperArgumentsError = -15
};

CFTypeID CFURLGetTypeID(void) CV_LINK(CFURLGetTypeID);
/// Makes a URL of a path of `bufLen` bytes; a relative one is based on the working folder as it
/// is now. `isDirectory` decides whether the string ends in a slash, whatever the path does.
/// @return the URL, the caller's; null for an empty path or one that holds a NUL.
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* buffer, CFIndex bufLen,
                                                 Boolean isDirectory) CV_LINK(CFURLCreateFromFileSystemRepresentation);
/// As above, with the path as a string.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle,
                                       Boolean isDirectory) CV_LINK(CFURLCreateWithFileSystemPath);
/// Makes a URL of its text, absolute or relative to `baseURL` (which may be null).
/// @return the URL, the caller's; null when the text is no URL (RFC 3986).
CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL)
    CV_LINK(CFURLCreateWithString);
/// Makes the URL of the folder that holds `url`, on the text alone.
/// @return a directory URL, the caller's; null for a URL without a path.
CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url)
    CV_LINK(CFURLCreateCopyDeletingLastPathComponent);
/// Makes the URL of something in the folder `url`. The component is a plain path, which may name
/// several levels; it is escaped as needed.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef pathComponent,
                                               Boolean isDirectory) CV_LINK(CFURLCreateCopyAppendingPathComponent);
/// Writes the path and a NUL into `buffer` of `maxBufLen` bytes, without a slash at its end.
/// @return false, with the buffer as it was, when it does not fit or the URL is no file URL.
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer, CFIndex maxBufLen)
    CV_LINK(CFURLGetFileSystemRepresentation);
/// Answers the path as a string, the caller's; null when it is no valid UTF-8 or no file URL.
CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle) CV_LINK(CFURLCopyFileSystemPath);
/// Answers the URL's text (relative where the URL is), which lives as long as the URL.
CFStringRef CFURLGetString(CFURLRef anURL) CV_LINK(CFURLGetString);
/// Answers the base, not retained; null for an absolute URL.
CFURLRef CFURLGetBaseURL(CFURLRef anURL) CV_LINK(CFURLGetBaseURL);
/// Answers the URL resolved against its base (RFC 3986, 5.2), the caller's.
CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL) CV_LINK(CFURLCopyAbsoluteURL);
/// Answers the scheme, the caller's; null where there is none.
CFStringRef CFURLCopyScheme(CFURLRef anURL) CV_LINK(CFURLCopyScheme);
/// Answers whether the URL's path ends in a slash.
Boolean CFURLHasDirectoryPath(CFURLRef anURL) CV_LINK(CFURLHasDirectoryPath);
/// Reads a file whole. `properties` is set to null; `desiredProperties` is not used.
/// @param resourceData  receives the bytes, the caller's, or null; may be null.
/// @param errorCode     receives 0 or one of the errors above; may be null.
/// @return whether the file was read.
Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef alloc, CFURLRef url, CFDataRef* resourceData,
                                                 CFDictionaryRef* properties, CFArrayRef desiredProperties,
                                                 SInt32* errorCode) CV_LINK(CFURLCreateDataAndPropertiesFromResource);

/// Makes the reference of the file or folder that `url` names.
/// @return false, with `fsRef` as it was, unless it exists.
Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* fsRef) CV_LINK(CFURLGetFSRef);
/// Answers the URL of what a reference names, the caller's; null for what is no reference and for
/// what is gone.
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const struct FSRef* fsRef) CV_LINK(CFURLCreateFromFSRef);

CV_END_DECLS

#endif
