// platform/hitoolbox/windows/Notify.h
//
// The events that windows and controls send about themselves. Without the lock, each.
#pragma once

#include "platform/hitoolbox/windows/Window.h"

/// Sends a window's notice to all of its handlers.
void Notify(CWindow& window, WindowRef reference, UInt32 kind);
/// Sends a control's notice to the control alone.
void Notify(CControl& control, ControlRef reference, UInt32 kind, OptionBits options = kEventTargetDontPropagate);
/// Sends an edit text that the user changed it.
void NotifyTextChanged(CControl& control, ControlRef reference);
/// Sends a tracking event.
void NotifyTracking(CControl& control, HIViewTrackingAreaRef area, UInt32 kind, CGPoint where, UInt32 modifiers);
/// Sends that a control was hit, then, if nobody handled that, its command.
/// @return the answer that ended it.
OSStatus SendHit(ControlRef control, ControlPartCode part, UInt32 modifiers);
/// Sends the request to close a window; nobody handling it, a standard handler disposes of it.
void SendCloseRequest(CWindow& window, WindowRef reference);
/// Asks an edit text's handlers about a change.
/// @param instead  receives the text that they want instead, where they gave one.
/// @return their answer.
OSStatus AskForChange(CControl& control, ControlRef reference, CFRange range, CFStringRef text,
                      CRef<const __CFString>& instead);
