// HIToolbox/HIView.h
//
// Controls as views: image views, tracking areas and the tree. A view is a control. Threads and
// bad references as in Controls.h; a bad tracking area gives paramErr.
#ifndef HITOOLBOX_HIVIEW_H
#define HITOOLBOX_HIVIEW_H

#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGImage.h>
#include <HIToolbox/Controls.h>

CV_BEGIN_DECLS

typedef ControlRef HIViewRef;
typedef ControlID HIViewID;
typedef ControlPartCode HIViewPartCode;
typedef CGPoint HIPoint;
typedef CGSize HISize;
typedef CGRect HIRect;
typedef UInt64 HIViewTrackingAreaID;
typedef struct OpaqueHIViewTrackingAreaRef* HIViewTrackingAreaRef;
typedef const struct __HIShape* HIShapeRef;
typedef struct OpaqueHIObjectRef* HIObjectRef;

/// Makes an image view, hidden and in no window; the caller's until a view or window takes it in.
/// @param inImage  retained; may be null.
OSStatus HIImageViewCreate(CGImageRef inImage, HIViewRef* outView) CV_LINK(HIImageViewCreate);
/// Sets the image, retained; null for none.
/// @return noErr, controlHandleInvalidErr, errDataNotSupported for a control of another kind, or
///         paramErr for what is no image.
OSStatus HIImageViewSetImage(HIViewRef inView, CGImageRef inImage) CV_LINK(HIImageViewSetImage);
/// Answers the image, the caller's to release; null for none.
CGImageRef HIImageViewCopyImage(HIViewRef inView) CV_LINK(HIImageViewCopyImage);
/// Sets how opaque the image is drawn, limited to 0 (not at all) to 1, its value at the start. What
/// is no number is paramErr.
OSStatus HIImageViewSetAlpha(HIViewRef inView, CGFloat inAlpha) CV_LINK(HIImageViewSetAlpha);
/// Answers that; 0 for what is no image view.
CGFloat HIImageViewGetAlpha(HIViewRef inView) CV_LINK(HIImageViewGetAlpha);

/// Watches the pointer: its coming and going are sent to the view as tracking events.
/// @param inShape  null for the whole view; shapes are not offered, another value is paramErr.
/// @param outRef   receives the area, which goes with the view and is not counted; may be null.
OSStatus HIViewNewTrackingArea(HIViewRef inView, HIShapeRef inShape, HIViewTrackingAreaID inID,
                               HIViewTrackingAreaRef* outRef) CV_LINK(HIViewNewTrackingArea);
OSStatus HIViewGetTrackingAreaID(HIViewTrackingAreaRef inArea, HIViewTrackingAreaID* outID)
    CV_LINK(HIViewGetTrackingAreaID);

/// Looks for an identifier in a view and what it holds.
/// @return noErr, controlHandleInvalidErr, errUnknownControl, or paramErr.
OSStatus HIViewFindByID(HIViewRef inStartView, HIViewID inID, HIViewRef* outView) CV_LINK(HIViewFindByID);
/// Answers the control that holds all others of a window.
HIViewRef HIViewGetRoot(WindowRef inWindow) CV_LINK(HIViewGetRoot);
WindowRef HIViewGetWindow(HIViewRef inView) CV_LINK(HIViewGetWindow);
HIViewRef HIViewGetSuperview(HIViewRef inView) CV_LINK(HIViewGetSuperview);
/// Answer the views in a view, front to back; null at the end.
HIViewRef HIViewGetFirstSubview(HIViewRef inView) CV_LINK(HIViewGetFirstSubview);
HIViewRef HIViewGetNextView(HIViewRef inView) CV_LINK(HIViewGetNextView);
/// Puts a view into another one, on top of those there; its frame now counts from the new parent.
OSStatus HIViewAddSubview(HIViewRef inParent, HIViewRef inNewChild) CV_LINK(HIViewAddSubview);
OSStatus HIViewSetVisible(HIViewRef inView, Boolean inVisible) CV_LINK(HIViewSetVisible);
/// Sets place and size relative to the parent view; what it holds moves with it. Coordinates are
/// rounded to points and must fit 16 bits.
OSStatus HIViewSetFrame(HIViewRef inView, const HIRect* inRect) CV_LINK(HIViewSetFrame);
/// Answers where a view stands, in points from the top left of its superview.
/// @return noErr, controlHandleInvalidErr, or paramErr for a null `outRect`.
OSStatus HIViewGetFrame(HIViewRef inView, HIRect* outRect) CV_LINK(HIViewGetFrame);
/// Does what a click does.
/// @param inPartToClick   0 for the view's own part.
/// @param outPartClicked  receives the part, 0 where the view takes no clicks; may be null.
OSStatus HIViewSimulateClick(HIViewRef inView, HIViewPartCode inPartToClick, UInt32 inModifiers,
                             HIViewPartCode* outPartClicked) CV_LINK(HIViewSimulateClick);
/// Answers the target of a view; null for what is none.
EventTargetRef HIObjectGetEventTarget(HIObjectRef inObject) CV_LINK(HIObjectGetEventTarget);

CV_END_DECLS

#endif
