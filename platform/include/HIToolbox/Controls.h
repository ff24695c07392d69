// HIToolbox/Controls.h
//
// Controls: what stands in a window and answers to mouse and keyboard. All calls belong to the
// thread that runs the event loop; from another one they change the control's record at once and
// the screen when that thread comes round.
//
// A null, stale or foreign reference gives controlHandleInvalidErr, false, 0, null or nothing done.
#ifndef HITOOLBOX_CONTROLS_H
#define HITOOLBOX_CONTROLS_H

#include <CoreFoundation/CFString.h>
#include <HIToolbox/HITypes.h>

CV_BEGIN_DECLS

typedef SInt16 ControlPartCode;
typedef ControlPartCode ControlFocusPart;

enum {
    errDataNotSupported = -30581,
    errUnknownControl = -30584,
    errCouldntSetFocus = -30585,
    errDataSizeMismatch = -30591,
    errNeedsCompositedWindow = -30598,
    controlHandleInvalidErr = -30599
};

#pragma pack(push, 2)
/// Names a control within its window: a group's four-character code and a number.
typedef struct ControlID {
    OSType signature;
    SInt32 id;
} ControlID;
/// Names a class of controls.
typedef struct ControlKind {
    OSType signature;
    OSType kind;
} ControlKind;
/// How a control's text looks: `flags` tells which members hold (1 font, 4 size, 64 justification).
typedef struct ControlFontStyleRec {
    SInt16 flags;
    SInt16 font; ///< Theme fonts: -1 system, -2 small, -3 small bold, -4 views, -5 mini.
    SInt16 size;
    SInt16 style;
    SInt16 mode;
    SInt16 just; ///< 0 by the script, 1 centre, -1 right, -2 left.
    RGBColor foreColor;
    RGBColor backColor;
} ControlFontStyleRec;
/// A selection in UTF-16 units.
typedef struct ControlEditTextSelectionRec {
    SInt16 selStart;
    SInt16 selEnd;
} ControlEditTextSelectionRec;
#pragma pack(pop)

/// Part codes.
enum {
    kControlEntireControl = 0,
    kControlNoPart = 0,
    kControlEditTextPart = 5,
    kControlButtonPart = 10,
    kControlCheckBoxPart = 11,
    kControlRadioButtonPart = 11,
    kControlMenuPart = 2,
    kControlPicturePart = 6,
    kControlIndicatorPart = 129
};
enum { kControlFocusNoPart = 0, kControlFocusNextPart = -1, kControlFocusPrevPart = -2 };

/// Tags of SetControlData and GetControlData. For the string tags the datum is one CFStringRef.
enum {
    kControlStaticTextCFStringTag = 'cfst',
    kControlEditTextCFStringTag = 'cfst',
    kControlEditTextPasswordCFStringTag = 'pwcf', ///< The text of a password field.
    kControlEditTextLockedTag = 'lock',           ///< Boolean: the user may not change the text.
    kControlEditTextSelectionTag = 'sele'         ///< ControlEditTextSelectionRec
};
enum { kControlCheckBoxUncheckedValue = 0, kControlCheckBoxCheckedValue = 1, kControlCheckBoxMixedValue = 2 };
enum {
    kControlKindSignatureApple = 'appl',
    kControlKindPushButton = 'push',
    kControlKindCheckBox = 'cbox',
    kControlKindRadioButton = 'rdio',
    kControlKindRadioGroup = 'rgrp', ///< Its value is the number of the button chosen, from 1; 0 for none.
    kControlKindStaticText = 'stxt',
    kControlKindEditText = 'etxt',
    kControlKindEditUnicodeText = 'eutx',
    kControlKindHIImageView = 'imag',
    kControlKindGroupBox = 'grpb',
    kControlKindSeparator = 'sepa',
    kControlKindUserPane = 'upan',
    kControlKindIcon = 'icon',
    kControlKindPicture = 'pict',
    kControlKindImageWell = 'well',
    kControlKindPopupButton = 'popb',
    kControlKindSlider = 'sldr',
    kControlKindProgressBar = 'prgb',
    kControlKindRoot = 'root'
};

/// Looks a control up by its identifier, in constant time. Of several with the same identifier it
/// is the one that has had it longest. The identifier {0, 0} means none and finds nothing.
/// @param outControl  receives the control, not counted, or null.
/// @return noErr, errUnknownControl, errInvalidWindowPtr, or paramErr.
OSStatus GetControlByID(WindowRef inWindow, const ControlID* inID, ControlRef* outControl) CV_LINK(GetControlByID);
OSStatus SetControlID(ControlRef inControl, const ControlID* inID) CV_LINK(SetControlID);
OSStatus GetControlID(ControlRef inControl, ControlID* outID) CV_LINK(GetControlID);
/// Sets the command that a click sends; 0 for none.
OSStatus SetControlCommandID(ControlRef inControl, UInt32 inCommandID) CV_LINK(SetControlCommandID);
OSStatus GetControlCommandID(ControlRef inControl, UInt32* outCommandID) CV_LINK(GetControlCommandID);
OSStatus GetControlKind(ControlRef inControl, ControlKind* outControlKind) CV_LINK(GetControlKind);

/// Sets the title, retained. That of a static or edit text is not the text that it shows. A null
/// string is paramErr.
OSStatus SetControlTitleWithCFString(ControlRef inControl, CFStringRef inString) CV_LINK(SetControlTitleWithCFString);
/// Answers the title, the caller's to release.
OSStatus CopyControlTitleAsCFString(ControlRef inControl, CFStringRef* outString) CV_LINK(CopyControlTitleAsCFString);
/// Sets the title from a Pascal string in Mac OS Roman.
void SetControlTitle(ControlRef theControl, ConstStr255Param title) CV_LINK(SetControlTitle);

/// Sets what a tag names. Strings are retained. Setting an edit text's text is no change of the
/// user's: no event is sent, and nothing is left to undo.
/// @param inPart  not used.
/// @param inSize  size of the tag's datum: sizeof(CFStringRef) for strings.
/// @return noErr, errDataNotSupported for a tag that the control does not have,
///         errDataSizeMismatch, paramErr for null data or a null string, or
///         controlHandleInvalidErr.
OSErr SetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inSize, const void* inData)
    CV_LINK(SetControlData);
/// Answers what a tag names. A string is the caller's to release.
/// @param inBufferSize   at least the size of the tag's datum, else errDataSizeMismatch.
/// @param outActualSize  receives the datum's size; may be null.
OSErr GetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inBufferSize, void* inBuffer,
                     Size* outActualSize) CV_LINK(GetControlData);

/// Values stay within minimum and maximum: one outside becomes the nearer of the two.
void SetControl32BitValue(ControlRef theControl, SInt32 newValue) CV_LINK(SetControl32BitValue);
SInt32 GetControl32BitValue(ControlRef theControl) CV_LINK(GetControl32BitValue);
void SetControl32BitMinimum(ControlRef theControl, SInt32 newMinimum) CV_LINK(SetControl32BitMinimum);
SInt32 GetControl32BitMinimum(ControlRef theControl) CV_LINK(GetControl32BitMinimum);
void SetControl32BitMaximum(ControlRef theControl, SInt32 newMaximum) CV_LINK(SetControl32BitMaximum);
SInt32 GetControl32BitMaximum(ControlRef theControl) CV_LINK(GetControl32BitMaximum);

void ShowControl(ControlRef theControl) CV_LINK(ShowControl);
void HideControl(ControlRef theControl) CV_LINK(HideControl);
/// Answers whether a control and all controls around it are shown.
Boolean IsControlVisible(ControlRef inControl) CV_LINK(IsControlVisible);
OSStatus EnableControl(ControlRef inControl) CV_LINK(EnableControl);
OSStatus DisableControl(ControlRef inControl) CV_LINK(DisableControl);
/// Answers whether a control and all controls around it are enabled.
Boolean IsControlEnabled(ControlRef inControl) CV_LINK(IsControlEnabled);
/// Shows a part as pressed; kControlNoPart for none.
void HiliteControl(ControlRef theControl, ControlPartCode hiliteState) CV_LINK(HiliteControl);
/// Answers the part that is shown as pressed.
ControlPartCode GetControlHilite(ControlRef theControl) CV_LINK(GetControlHilite);
WindowRef GetControlOwner(ControlRef control) CV_LINK(GetControlOwner);
/// Disposes of a control and all in it; its handlers and tracking areas go too.
void DisposeControl(ControlRef theControl) CV_LINK(DisposeControl);

/// Answers the control that holds all others of a window; every window has it from the start.
OSErr CreateRootControl(WindowRef inWindow, ControlRef* outControl) CV_LINK(CreateRootControl);
OSErr GetRootControl(WindowRef inWindow, ControlRef* outControl) CV_LINK(GetRootControl);
/// Puts a control into another one, on top of those there. Both keep their places on the screen.
/// @return noErr, controlHandleInvalidErr, or paramErr when one already holds the other.
OSErr EmbedControl(ControlRef inControl, ControlRef inContainer) CV_LINK(EmbedControl);

/// Make controls in a window, or in none where `window` is null (push button to edit text).
/// @param boundsRect  points from the top left of the window's content.
/// @param title, text  may be null, as may `style`.
/// @param outControl   receives the control, the window's, or null.
/// @return noErr, paramErr, errInvalidWindowPtr, or memFullErr.
OSStatus CreatePushButtonControl(WindowRef window, const Rect* boundsRect, CFStringRef title, ControlRef* outControl)
    CV_LINK(CreatePushButtonControl);
/// @param autoToggle  a click switches the box before its command is sent.
OSStatus CreateCheckBoxControl(WindowRef window, const Rect* boundsRect, CFStringRef title, SInt32 initialValue,
                               Boolean autoToggle, ControlRef* outControl) CV_LINK(CreateCheckBoxControl);
OSStatus CreateStaticTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text,
                                 const ControlFontStyleRec* style, ControlRef* outControl)
    CV_LINK(CreateStaticTextControl);
/// Makes an edit text of several lines, or a password field of one.
OSStatus CreateEditUnicodeTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text, Boolean isPassword,
                                      const ControlFontStyleRec* style, ControlRef* outControl)
    CV_LINK(CreateEditUnicodeTextControl);
/// Makes a classic edit text, which behaves as the Unicode one does.
/// @param useInlineInput  not used: input methods always work.
OSStatus CreateEditTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text, Boolean isPassword,
                               Boolean useInlineInput, const ControlFontStyleRec* style, ControlRef* outControl)
    CV_LINK(CreateEditTextControl);

/// Gives a control the keyboard within its window.
/// @param inPart  kControlFocusNoPart takes it away, the next and previous parts are those around
///                the control in the order of the Tab key, any other part is the control itself.
/// @return noErr, errCouldntSetFocus where the control cannot have it, errInvalidWindowPtr, or
///         controlHandleInvalidErr.
OSErr SetKeyboardFocus(WindowRef inWindow, ControlRef inControl, ControlFocusPart inPart) CV_LINK(SetKeyboardFocus);
/// Answers the focused control, null for none.
OSErr GetKeyboardFocus(WindowRef inWindow, ControlRef* outControl) CV_LINK(GetKeyboardFocus);
/// Do what Tab and Shift-Tab do.
OSErr AdvanceKeyboardFocus(WindowRef inWindow) CV_LINK(AdvanceKeyboardFocus);
OSErr ReverseKeyboardFocus(WindowRef inWindow) CV_LINK(ReverseKeyboardFocus);
/// Set the button that Return or Escape presses; null for none.
/// @return noErr, errInvalidWindowPtr, controlHandleInvalidErr, or paramErr for another window's.
OSStatus SetWindowDefaultButton(WindowRef inWindow, ControlRef inControl) CV_LINK(SetWindowDefaultButton);
OSStatus SetWindowCancelButton(WindowRef inWindow, ControlRef inControl) CV_LINK(SetWindowCancelButton);

CV_END_DECLS

#endif
