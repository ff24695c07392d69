// QuickTime/QuickTime.h
//
// Graphics importers: from picture files to images. Every call works on every thread.
//
// The usual order of calls: GetGraphicsImporterForFile, GraphicsImportCreateCGImage (as often as
// wanted), CloseComponent.
#ifndef QUICKTIME_QUICKTIME_H
#define QUICKTIME_QUICKTIME_H

#include <Carbon/Carbon.h>

CV_BEGIN_DECLS

/// An open component. References are handles: null, closed and foreign ones are recognised.
typedef struct ComponentInstanceRecord* ComponentInstance;
typedef ComponentInstance GraphicsImportComponent;
typedef long ComponentResult;

enum { kGraphicsImportCreateCGImageUsingCurrentSettings = 1 };

enum {
    invalidComponentID = -3000, ///< What was to be closed is not open.
    codecBadDataErr = -8969     ///< The file holds no picture, or a damaged or too large one.
};

/// Opens an importer for a file. Which format the file has is decided by its content when an image
/// is made, never by its name. Importers of one file are one and the same while it is open, so one
/// that is never closed costs memory once.
/// @param gi  receives the importer, to be closed as often as it was opened; null on failure.
/// @return noErr; fnfErr where no readable file is, paramErr for null.
OSErr GetGraphicsImporterForFile(const FSSpec* theFile, ComponentInstance* gi) CV_LINK(GetGraphicsImporterForFile);
/// Reads the file and makes an image of it: QuickDraw pictures, PNG, JPEG, GIF, BMP, TIFF and what
/// else the machine has decoders for. Of several frames it takes the first. Alpha is kept.
/// @param imageRefOut  receives the image, the caller's to release; null on failure.
/// @param flags        not used.
/// @return noErr; badComponentInstance, paramErr for a null out-parameter, fnfErr for a file that
///         is gone, codecBadDataErr, memFullErr.
ComponentResult GraphicsImportCreateCGImage(GraphicsImportComponent ci, CGImageRef* imageRefOut, UInt32 flags)
    CV_LINK(GraphicsImportCreateCGImage);
/// Closes a component once.
/// @return noErr, or invalidComponentID for what is not open.
OSErr CloseComponent(ComponentInstance aComponentInstance) CV_LINK(CloseComponent);

CV_END_DECLS

#endif
