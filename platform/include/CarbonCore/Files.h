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

/// Names a file as still older calls do: a volume, a folder on it and a Pascal string. Here it is
/// as opaque as an FSRef, and as good for long names and long paths.
typedef struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    UInt8 name[64];
} FSSpec;
typedef FSSpec* FSSpecPtr;
#pragma pack(pop)

/// Which fields of a file's catalogue entry are wanted; the layer has none of them.
typedef UInt32 FSCatalogInfoBitmap;
enum { kFSCatInfoNone = 0 };
/// A file's catalogue entry, of which only the address is named.
typedef struct FSCatalogInfo FSCatalogInfo;
/// A file's name of at most 255 UTF-16 units.
typedef struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
} HFSUniStr255;

/// Makes the reference of something that exists. Any thread.
/// @param path         UTF-8, absolute or relative to the working folder as it is now.
/// @param isDirectory  receives whether it is a folder; may be null.
/// @return noErr; fnfErr where nothing is, with `ref` as it was; paramErr for null.
OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) CV_LINK(FSPathMakeRef);
/// Writes the absolute path and a NUL into `path` of `pathBufferSize` bytes. Any thread.
/// @return noErr; pathTooLongErr where it does not fit, paramErr for null or what is no reference:
///         the buffer is then as it was.
OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize) CV_LINK(FSRefMakePath);
/// Makes an FSSpec of an FSRef. Any thread.
/// @param whichInfo    kFSCatInfoNone; `catalogInfo`, `outName` and `parentRef` must be null.
/// @param fsSpec       receives the reference; may be null.
/// @return noErr; fnfErr where the file is gone, paramErr for what is no reference and for what is
///         not offered, with `fsSpec` as it was.
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef) CV_LINK(FSGetCatalogInfo);

CV_END_DECLS

#endif
