// HIToolbox/MacWindows.h
//
// Windows. All calls belong to the thread that runs the event loop; from another one they change
// the window's record at once and the screen when that thread comes round.
//
// A null, stale or foreign reference gives errInvalidWindowPtr, false, null, or nothing done.
#ifndef HITOOLBOX_MACWINDOWS_H
#define HITOOLBOX_MACWINDOWS_H

#include <CoreFoundation/CFString.h>
#include <HIToolbox/HITypes.h>

CV_BEGIN_DECLS

typedef UInt32 WindowClass;
typedef UInt32 WindowAttributes;
typedef UInt32 WindowModality;
typedef UInt16 WindowRegionCode;

enum { errInvalidWindowPtr = -5600 };

enum {
    kAlertWindowClass = 1,
    kMovableAlertWindowClass = 2,
    kModalWindowClass = 3,
    kMovableModalWindowClass = 4,
    kFloatingWindowClass = 5,
    kDocumentWindowClass = 6,
    kUtilityWindowClass = 8,
    kSheetWindowClass = 11,
    kPlainWindowClass = 13
};
enum {
    kWindowNoAttributes = 0,
    kWindowCloseBoxAttribute = 1,
    kWindowResizableAttribute = 16,
    kWindowCompositingAttribute = 0x00080000,
    kWindowStandardHandlerAttribute = 0x02000000
};
enum {
    kWindowModalityNone = 0,
    kWindowModalitySystemModal = 1, ///< Taken as application-modal.
    kWindowModalityAppModal = 2,    ///< While it is visible, no window but it and its own take input.
    kWindowModalityWindowModal = 3  ///< While it is visible, the one window named takes no input.
};
enum { kWindowContentRgn = 33 };

/// Makes a hidden window.
/// @param contentBounds  its content, in points from the screen's top left; sides 1 to 16384.
/// @param outWindow      receives the window, the caller's to dispose of, or null.
/// @return noErr, paramErr, memFullErr, or kCVNoDesktopErr where no window can be shown.
OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes, const Rect* contentBounds,
                         WindowRef* outWindow) CV_LINK(CreateNewWindow);
/// Destroys a window: its dispose handlers run, windows modal to it are disposed of, then its
/// controls, tracking areas and all handlers go. Doing so again meanwhile does nothing.
void DisposeWindow(WindowRef window) CV_LINK(DisposeWindow);
void ShowWindow(WindowRef window) CV_LINK(ShowWindow);
void HideWindow(WindowRef window) CV_LINK(HideWindow);
/// Brings a window to the front and gives it the keyboard; one that a modal window blocks hands
/// that on to the modal window.
void SelectWindow(WindowRef window) CV_LINK(SelectWindow);
Boolean IsWindowVisible(WindowRef window) CV_LINK(IsWindowVisible);
/// Answers whether the keyboard goes to the window.
Boolean IsWindowActive(WindowRef window) CV_LINK(IsWindowActive);
/// Answers whether a reference is a window that still exists.
Boolean IsValidWindowPtr(WindowRef possibleWindow) CV_LINK(IsValidWindowPtr);
/// Answer windows from front to back, hidden ones included; null at the end.
WindowRef GetWindowList(void) CV_LINK(GetWindowList);
WindowRef GetNextWindow(WindowRef window) CV_LINK(GetNextWindow);
/// Answers the first visible window that is not of the floating class.
WindowRef FrontNonFloatingWindow(void) CV_LINK(FrontNonFloatingWindow);

/// Sets whose input a window takes away while it is visible.
/// @param inUnavailableWindow  the parent, for kWindowModalityWindowModal; else not used.
/// @return noErr, errInvalidWindowPtr, or paramErr for an unknown kind or a window as its own
///         parent, also through other windows.
OSStatus SetWindowModality(WindowRef inWindow, WindowModality inModalKind, WindowRef inUnavailableWindow)
    CV_LINK(SetWindowModality);
/// Answers the modality and the parent; either may be null.
OSStatus GetWindowModality(WindowRef inWindow, WindowModality* outModalKind, WindowRef* outUnavailableWindow)
    CV_LINK(GetWindowModality);
/// Sets the title, retained; the caller keeps its reference. A null string is paramErr.
OSStatus SetWindowTitleWithCFString(WindowRef inWindow, CFStringRef inString) CV_LINK(SetWindowTitleWithCFString);
/// Answers the title, the caller's to release.
OSStatus CopyWindowTitleAsCFString(WindowRef inWindow, CFStringRef* outString) CV_LINK(CopyWindowTitleAsCFString);
OSStatus GetWindowClass(WindowRef window, WindowClass* outClass) CV_LINK(GetWindowClass);
OSStatus GetWindowAttributes(WindowRef window, WindowAttributes* outAttributes) CV_LINK(GetWindowAttributes);
/// Answers where a window is, in points from the screen's top left; kWindowContentRgn only, else
/// paramErr.
OSStatus GetWindowBounds(WindowRef window, WindowRegionCode regionCode, Rect* globalBounds) CV_LINK(GetWindowBounds);

CV_END_DECLS

#endif
