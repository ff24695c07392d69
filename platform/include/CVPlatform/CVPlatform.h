// CVPlatform/CVPlatform.h
//
// What a host or a tool on Linux needs of the layer and the Mac's API has no word for.
#ifndef CVPLATFORM_CVPLATFORM_H
#define CVPLATFORM_CVPLATFORM_H

#include <CVPlatform/CVLink.h>
#include <CoreFoundation/CFBase.h>
#include <CoreGraphics/CGImage.h>

CV_BEGIN_DECLS

/// Answers the layer's version as text, for example "1.3.0"; never freed.
const char* CVGetVersion(void) CV_LINK(CVGetVersion);
/// Answers the absolute path of the layer's own file, never freed; null where it is unknown.
const char* CVGetLibraryPath(void) CV_LINK(CVGetLibraryPath);
/// Writes an image into a PNG file, with its alpha where it has any. Any thread.
/// @param path  replaced as a whole if it is a file: on failure it is as it was.
/// @return false for what is no image, and when the file or the image module is not to be had.
Boolean CVWriteImageAsPNG(CGImageRef image, const char* path) CV_LINK(CVWriteImageAsPNG);

/// Opens `url` in the system's place. `application` is the URL of the application that was asked
/// for, or null where the user's default is meant; both are borrowed. Runs on the thread that opens.
/// @return the status that the opening call answers.
typedef OSStatus (*CVLaunchProc)(CFURLRef url, CFURLRef application, void* userData);
/// Lets a host open pages and addresses itself: from now on every one goes to `proc` and no program
/// is started. Null gives the task back. Any thread; a call under way ends with the earlier one.
void CVSetLaunchHandler(CVLaunchProc proc, void* userData) CV_LINK(CVSetLaunchHandler);
/// Answers whether this process is in a sandbox, where the desktop's portal opens what has no
/// application inside.
Boolean CVLaunchesThroughPortal(void) CV_LINK(CVLaunchesThroughPortal);

/// Waits until no service of the desktop is being asked to open something any more, at most `seconds`.
/// Programs that are started live on without us, but who asks a service and ends at once may not
/// be heard: for programs that do not stay.
/// @return whether none is being asked.
Boolean CVFinishLaunches(double seconds) CV_LINK(CVFinishLaunches);

/// Answers where a domain's file lies or would lie, an absolute path, the caller's to release; the
/// arguments are those of CFPreferencesCopyValue. Null for an unknown scope or without a home.
CFStringRef CVPreferencesCopyPath(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
    CV_LINK(CVPreferencesCopyPath);

CV_END_DECLS

#endif
