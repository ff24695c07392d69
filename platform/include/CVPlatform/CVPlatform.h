// CVPlatform/CVPlatform.h
//
// What a host or a tool on Linux needs of the layer and the Mac's API has no word for.
#ifndef CVPLATFORM_CVPLATFORM_H
#define CVPLATFORM_CVPLATFORM_H

#include <CVPlatform/CVLink.h>
#include <CoreFoundation/CFBase.h>
#include <CoreGraphics/CGImage.h>
#include <HIToolbox/HITypes.h>

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

enum {
    /// No window can be shown or drawn: there is no display, or the module that would reach it
    /// cannot be loaded.
    kCVNoDesktopErr = -25290,
    /// A file could not be written.
    kCVNotWrittenErr = -25291
};

/// Does what is due now (input, timers, events that were posted, drawing) and returns without
/// waiting. For hosts that run a loop of their own. The calling thread becomes the event-loop thread.
/// @return noErr; kCVNoDesktopErr when the display is gone or another thread runs the loop.
OSStatus CVPump(void) CV_LINK(CVPump);
/// Answers a descriptor to watch for reading: it is readable while CVPump has something to do, due
/// timers included. It stays the same and is not the caller's to close. Opens the desktop; not
/// needed where GLib's default main context runs. Event-loop thread.
/// @return the descriptor, or -1 where no window can be shown or windows stand in memory.
int CVGetDescriptor(void) CV_LINK(CVGetDescriptor);
/// Answers in how many seconds CVPump next has a timer to fire: 0 now, below 0 never. For hosts
/// that wait by time; who watches the descriptor need not ask.
double CVGetNextDeadline(void) CV_LINK(CVGetNextDeadline);
/// Opens the desktop and answers why no window can be shown, for people to read; null when windows
/// can be shown. The string is the caller's to release.
CFStringRef CVCopyDesktopProblem(void) CV_LINK(CVCopyDesktopProblem);
/// Draws a window, shown or not, into a PNG file, as a screen would show it. Needs no display.
/// @param path   UTF-8. A file that is there is replaced, by a whole one only.
/// @param scale  pixels per point, 0.25 to 8.
/// @return noErr, errInvalidWindowPtr, paramErr, kCVNoDesktopErr when there is no drawing here,
///         kCVNotWrittenErr.
OSStatus CVSaveWindowPicture(WindowRef window, const char* path, double scale, Boolean dark)
    CV_LINK(CVSaveWindowPicture);
/// Makes a reference of another program's or toolkit's window (on X11 its window id), to which
/// windows of ours can be modal. It takes no other call but DisposeWindow, which leaves that window
/// alone. When that window is destroyed, those modal to it are disposed of.
OSStatus CVCreateForeignWindow(unsigned long long nativeWindow, WindowRef* outWindow) CV_LINK(CVCreateForeignWindow);

/// Has windows stand in memory instead of on a screen, as CV_DESKTOP=headless in the environment
/// does. To be called before the first window is made.
/// @param driveClock  stops the clock of events and timers: waiting then takes no time and moves it.
/// @return noErr, or kCVNoDesktopErr when windows stand on a screen already.
OSStatus CVUseHeadlessDesktop(Boolean driveClock) CV_LINK(CVUseHeadlessDesktop);

enum { kCVPointerMove = 0, kCVPointerPress = 1, kCVPointerRelease = 2, kCVPointerLeave = 3 };
enum { kCVButtonLeft = 0, kCVButtonMiddle = 1, kCVButtonRight = 2 };
enum { kCVModifierShift = 1, kCVModifierControl = 2, kCVModifierAlt = 4, kCVModifierSuper = 8 };

/// Post input to the headless desktop, in this order, for the next time that the event loop runs.
/// Any thread. Each answers kCVNoDesktopErr where no headless window was made yet, and paramErr for
/// a window that is not shown or a value without meaning.
/// @param x, y  points from the top left of the window's content; outside it for drags.
OSStatus CVPostPointer(WindowRef window, UInt32 action, double x, double y, UInt32 button, UInt32 modifiers)
    CV_LINK(CVPostPointer);
/// @param right, down  steps of the wheel.
OSStatus CVPostScroll(WindowRef window, double x, double y, double right, double down) CV_LINK(CVPostScroll);
/// Presses a key, for whichever window has the keyboard by then.
/// @param symbol  numbered as X11's key symbols: ASCII, and 0xFF0D for Return, for example.
/// @param text    what it types, UTF-8; may be null.
OSStatus CVPostKey(UInt32 symbol, const char* text, UInt32 modifiers) CV_LINK(CVPostKey);
/// Enters text as an input method does.
OSStatus CVPostText(const char* text) CV_LINK(CVPostText);
/// Does what the close box does.
OSStatus CVPostCloseRequest(WindowRef window) CV_LINK(CVPostCloseRequest);
/// Takes the window's surface away, as a foreign parent does that is destroyed.
OSStatus CVPostSurfaceLost(WindowRef window) CV_LINK(CVPostSurfaceLost);
/// Set and answer the text on the headless clipboard; the string is the caller's, null for none.
OSStatus CVSetClipboardText(const char* text) CV_LINK(CVSetClipboardText);
CFStringRef CVCopyClipboardText(void) CV_LINK(CVCopyClipboardText);
/// Moves a driven clock on; timers that become due fire when the event loop runs next.
void CVAdvanceTime(double seconds) CV_LINK(CVAdvanceTime);

CV_END_DECLS

#endif
