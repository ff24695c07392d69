// HIToolbox/Dialogs.h
//
// Standard alerts: an icon, one or two texts and up to four buttons. Event-loop thread only.
#ifndef HITOOLBOX_DIALOGS_H
#define HITOOLBOX_DIALOGS_H

#include <CoreFoundation/CFBase.h>
#include <HIToolbox/HITypes.h>

CV_BEGIN_DECLS

typedef struct OpaqueDialogPtr* DialogRef;
typedef struct OpaqueIconRef* IconRef;
typedef SInt16 AlertType;
typedef SInt16 DialogItemIndex;
struct EventRecord;
typedef Boolean (*ModalFilterProcPtr)(DialogRef dialog, struct EventRecord* event, DialogItemIndex* itemHit);
typedef ModalFilterProcPtr ModalFilterUPP;

enum { kAlertStopAlert = 0, kAlertNoteAlert = 1, kAlertCautionAlert = 2, kAlertPlainAlert = 3 };
enum { kStdCFStringAlertVersionOne = 1 };
/// In place of a text: the system's own wording, in the user's language (English or German).
enum { kAlertDefaultOKText = -1, kAlertDefaultCancelText = -1, kAlertDefaultOtherText = -1 };
enum {
    kAlertStdAlertOKButton = 1,
    kAlertStdAlertCancelButton = 2,
    kAlertStdAlertOtherButton = 3,
    kAlertStdAlertHelpButton = 4
};
enum { kWindowDefaultPosition = 0, kWindowAlertPositionParentWindowScreen = 0x700A };

#pragma pack(push, 2)
/// What differs from an alert with one OK button. A null text means no such button.
typedef struct AlertStdCFStringAlertParamRec {
    UInt32 version;     ///< kStdCFStringAlertVersionOne.
    Boolean movable;    ///< Not used: every alert can be moved.
    Boolean helpButton; ///< A fourth button; pressing it ends the alert too.
    CFStringRef defaultText;
    CFStringRef cancelText;
    CFStringRef otherText;
    SInt16 defaultButton; ///< Which button Return presses; 0 for none.
    SInt16 cancelButton;  ///< Which button Escape presses; 0 for none.
    UInt16 position;      ///< Not used: alerts stand where the desktop puts dialogs.
    OptionBits flags;     ///< 0.
    IconRef icon;         ///< Read with a later version only, which the layer does not have.
} AlertStdCFStringAlertParamRec;
#pragma pack(pop)

/// Makes an alert, hidden.
/// @param error        the main text; null is empty.
/// @param explanation  a second, smaller text; may be null.
/// @param param        null for one OK button.
/// @param outAlert     receives the alert for RunStandardAlert or DisposeDialog, or null.
/// @return noErr, paramErr (unknown type or version too), memFullErr, or kCVNoDesktopErr.
OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec* param, DialogRef* outAlert)
    CV_LINK(CreateStandardAlert);
/// Shows an alert, waits for the user and disposes of it. Timers fire and other windows are drawn
/// meanwhile.
/// @param filterProc  null: events have no old-style record here, so a filter is refused.
/// @param outItemHit  receives the button's number; the cancel button's, or 0 without one, when the
///                    alert went away unanswered. Untouched on failure.
/// @return noErr, paramErr, or kCVNoDesktopErr when the display is gone.
OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP filterProc, DialogItemIndex* outItemHit)
    CV_LINK(RunStandardAlert);
/// Fills a record with the values of an alert with one OK button.
/// @return noErr, or paramErr for null or an unknown version.
OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamRec* param, UInt32 version)
    CV_LINK(GetStandardAlertDefaultParams);
/// Answers an alert's window; null for what is no alert.
WindowRef GetDialogWindow(DialogRef dialog) CV_LINK(GetDialogWindow);
/// Disposes of an alert that was not run, or ends one that runs.
void DisposeDialog(DialogRef theDialog) CV_LINK(DisposeDialog);

CV_END_DECLS

#endif
