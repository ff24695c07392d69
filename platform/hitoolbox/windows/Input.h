// platform/hitoolbox/windows/Input.h
//
// Where the desktop's input arrives: finds the window and control that it is for and does to them
// what people expect. What a control does is left to Behaviour and EditText.
#pragma once

#include "platform/desktop/IDesktop.h"

/// Answers the one sink, never destroyed.
IInputSink& InputSink();
/// Asks the desktop for text that goes into an edit text when it arrives. Event-loop thread,
/// without the lock.
void RequestPaste(struct OpaqueControlRef* control, TextExchange where);
