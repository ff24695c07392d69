// CarbonCore/Files.h
//
// References to files, as older calls name them.
#ifndef CARBONCORE_FILES_H
#define CARBONCORE_FILES_H

#include <CVPlatform/CVLink.h>
#include <CarbonCore/MacTypes.h>

CV_BEGIN_DECLS

enum { pathTooLongErr = -2110 };

/// Names a file or folder, without telling how; good as long as the process lives. One of zeros
/// names nothing, and what is no reference is recognised.
#pragma pack(push, 2)
typedef struct FSRef {
    UInt8 hidden[80];
} FSRef;
#pragma pack(pop)

/// Makes the reference of something that exists. Any thread.
/// @param path         UTF-8, absolute or relative to the working folder as it is now.
/// @param isDirectory  receives whether it is a folder; may be null.
/// @return noErr; fnfErr where nothing is, with `ref` as it was; paramErr for null.
OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) CV_LINK(FSPathMakeRef);
/// Writes the absolute path and a NUL into `path` of `pathBufferSize` bytes. Any thread.
/// @return noErr; pathTooLongErr where it does not fit, paramErr for null or what is no reference:
///         the buffer is then as it was.
OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize) CV_LINK(FSRefMakePath);

CV_END_DECLS

#endif
