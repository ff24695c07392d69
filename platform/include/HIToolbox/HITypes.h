// HIToolbox/HITypes.h
//
// The references of windows, controls and events, and the shape of an event handler. A reference
// is a handle, never the address of anything: null, stale and foreign ones are recognised.
#ifndef HITOOLBOX_HITYPES_H
#define HITOOLBOX_HITYPES_H

#include <CVPlatform/CVLink.h>
#include <CarbonCore/MacTypes.h>

typedef struct OpaqueWindowPtr* WindowRef;
typedef struct OpaqueControlRef* ControlRef;
typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct OpaqueEventQueueRef* EventQueueRef;
typedef struct OpaqueEventLoopRef* EventLoopRef;
typedef struct OpaqueEventLoopTimerRef* EventLoopTimerRef;

/// Handles an event: noErr when it did, eventNotHandledErr to pass it on, any other status to end
/// it with that result. `event` is borrowed.
typedef OSStatus (*EventHandlerProcPtr)(EventHandlerCallRef call, EventRef event, void* userData);
typedef EventHandlerProcPtr EventHandlerUPP;

#endif
