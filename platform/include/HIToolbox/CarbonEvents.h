// HIToolbox/CarbonEvents.h
//
// Events, their targets and handlers, the queue, the loop and its timers.
//
// The usual order of calls: InstallEventHandler on a target, RunApplicationEventLoop (or a host's
// own loop) brings the events, RemoveEventHandler or the end of the target takes the handler away.
//
// Threads: creating, posting and sending events, their parameters, and timers work on every thread.
// Handlers run on the thread that sends; those of windows and controls, and timers, on the thread
// that runs the event loop. The layer has one loop and one queue, which all threads share.
//
// Every call answers paramErr for a null, stale or foreign reference unless it says otherwise.
#ifndef HITOOLBOX_CARBONEVENTS_H
#define HITOOLBOX_CARBONEVENTS_H

#include <CoreFoundation/CFBase.h>
#include <HIToolbox/HITypes.h>

CV_BEGIN_DECLS

/// Seconds since the machine started, and waits in seconds.
typedef double EventTime;
typedef double EventTimeout;
typedef double EventTimerInterval;
typedef OSType EventParamName;
typedef OSType EventParamType;
typedef UInt32 EventAttributes;
typedef SInt16 EventPriority;
typedef void (*EventLoopTimerProcPtr)(EventLoopTimerRef timer, void* userData);
typedef EventLoopTimerProcPtr EventLoopTimerUPP;
typedef struct OpaqueMenuRef* MenuRef;
typedef UInt16 MenuItemIndex;

#pragma pack(push, 2)
/// Names a kind of events.
typedef struct EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
} EventTypeSpec;
/// A command; the menu is null and 0 unless one sent it.
typedef struct HICommand {
    UInt32 attributes;
    UInt32 commandID;
    struct {
        MenuRef menuRef;
        MenuItemIndex menuItemIndex;
    } menu;
} HICommand;
/// A command with what sent it; `attributes` tells which member of `source` holds.
typedef struct HICommandExtended {
    UInt32 attributes;
    UInt32 commandID;
    union {
        ControlRef control;
        WindowRef window;
        struct {
            MenuRef menuRef;
            MenuItemIndex menuItemIndex;
        } menu;
    } source;
} HICommandExtended;
#pragma pack(pop)

enum {
    eventAlreadyPostedErr = -9860,
    eventHandlerAlreadyInstalledErr = -9866,
    eventParameterNotFoundErr = -9870,
    eventNotHandledErr = -9874,
    eventLoopTimedOutErr = -9875,
    eventLoopQuitErr = -9876
};

enum { kEventAttributeNone = 0, kEventAttributeUserEvent = 1 };
enum { kEventPriorityLow = 0, kEventPriorityStandard = 1, kEventPriorityHigh = 2 };

/// Options of SendEventToEventTargetWithOptions.
enum {
    kEventTargetDontPropagate = 1,    ///< The event stays on the one target.
    kEventTargetSendToAllHandlers = 2 ///< A handler's answer does not keep it from the next one.
};

#define kEventDurationForever (-1.0)
#define kEventDurationNoWait (0.0)

enum {
    kEventClassWindow = 'wind',
    kEventClassCommand = 'cmds',
    kEventClassControl = 'cntl',
    kEventClassTextField = 'txfd',
    kEventClassApplication = 'appl'
};

/// Kinds of kEventClassWindow; the direct object is the window. All but the request to close go to
/// every handler of the window, whatever the first ones answer, and to the window alone.
enum {
    kEventWindowShown = 24,
    kEventWindowHidden = 25,
    kEventWindowClose = 72,    ///< A request; a standard handler disposes of the window.
    kEventWindowDispose = 1005 ///< Inside DisposeWindow, once, before anything is torn down.
};
/// Of kEventClassCommand; the direct object is an HICommand.
enum { kEventCommandProcess = 1 };
/// Kinds of kEventClassControl; the direct object is the control. The tracking kinds carry the area
/// as kEventParamHIViewTrackingArea and, like the dispose kind, go to the control alone.
enum {
    kEventControlHit = 1, ///< Carries the part as kEventParamControlPart.
    kEventControlSimulateHit = 2,
    kEventControlTrackingAreaEntered = 23,
    kEventControlTrackingAreaExited = 24,
    kEventControlDispose = 1001
};
/// Kinds of kEventClassTextField; the direct object is the control, and they go to it alone.
enum {
    /// Before each change that the user makes to an edit text of any kind: the range of the text
    /// to be replaced, in UTF-16 units, and the text proposed. userCanceledErr, or any other
    /// error, drops the change; eventNotHandledErr lets it happen; noErr takes the text set as
    /// kEventParamReplacementText, or without one deletes the selected text and drops the new one.
    kEventTextShouldChangeInRange = 2,
    kEventTextDidChange = 3 ///< After each change that the user made.
};
enum { kEventAppQuit = 3 };

enum {
    kEventParamDirectObject = '----',
    kEventParamHIViewTrackingArea = 'ctra',
    kEventParamWindowRef = 'wind',
    kEventParamControlRef = 'ctrl',
    kEventParamControlPart = 'cprt',
    kEventParamTextSelection = 'txsl',
    kEventParamCandidateText = 'tstx',
    kEventParamReplacementText = 'trtx',
    kEventParamPostTarget = 'ptrg',
    kEventParamMouseLocation = 'mloc',
    kEventParamKeyModifiers = 'kmod'
};
enum {
    typeHICommand = 'hcmd',
    typeHIViewTrackingAreaRef = 'ctra',
    typeWindowRef = 'wind',
    typeControlRef = 'ctrl',
    typeControlPartCode = 'cprt',
    typeCFRange = 'cfrn',
    typeCFStringRef = 'cfst',
    typeUInt32 = 'magn',
    typeEventTargetRef = 'etrg',
    typeHIPoint = 'hipt',
    typeWildCard = '****'
};

enum { kHICommandFromMenu = 1, kHICommandFromControl = 2, kHICommandFromWindow = 4 };
enum { kHICommandOK = 'ok  ', kHICommandCancel = 'not!', kHICommandQuit = 'quit', kHICommandClose = 'clos' };

/// Makes an event without parameters.
/// @param inAllocator  null.
/// @param inWhen       its time; 0 is now.
/// @param outEvent     receives the event, the caller's to release, or null.
/// @return noErr, paramErr for a null `outEvent`, or memFullErr.
OSStatus CreateEvent(CFAllocatorRef inAllocator, OSType inClassID, UInt32 inKind, EventTime inWhen,
                     EventAttributes inAttributes, EventRef* outEvent) CV_LINK(CreateEvent);
/// Adds one reference and answers its argument, also where that is no event.
EventRef RetainEvent(EventRef inEvent) CV_LINK(RetainEvent);
/// Gives one reference back; the last one frees the event. What is no event is left alone.
void ReleaseEvent(EventRef inEvent) CV_LINK(ReleaseEvent);
/// Answers the number of references, those of queues included; 0 for what is no event.
ItemCount GetEventRetainCount(EventRef inEvent) CV_LINK(GetEventRetainCount);
/// Answer an event's class, kind and time; 0 for what is no event.
OSType GetEventClass(EventRef inEvent) CV_LINK(GetEventClass);
UInt32 GetEventKind(EventRef inEvent) CV_LINK(GetEventKind);
EventTime GetEventTime(EventRef inEvent) CV_LINK(GetEventTime);
/// Answers the time now.
EventTime GetCurrentEventTime(void) CV_LINK(GetCurrentEventTime);

/// Reads a parameter.
/// @param inDesiredType   the type wanted, or typeWildCard.
/// @param outActualType   receives the type; may be null.
/// @param inBufferSize    bytes in `outData`; what does not fit is left out.
/// @param outActualSize   receives the parameter's size in bytes; may be null.
/// @param outData         receives the bytes; may be null. References are not retained.
/// @return noErr; eventParameterNotFoundErr, with all outputs untouched, when there is none of
///         that name and type.
OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType* outActualType, ByteCount inBufferSize, ByteCount* outActualSize,
                           void* outData) CV_LINK(GetEventParameter);
/// Sets a parameter to a copy of `inSize` bytes, replacing one of the same name. The event retains
/// a string of typeCFStringRef.
/// @return noErr, paramErr when bytes are promised and none given, or memFullErr.
OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType, ByteCount inSize,
                           const void* inDataPtr) CV_LINK(SetEventParameter);

/// Installs a handler on a target, above those that are there already. It is called for the listed
/// types only and goes with its target. Unlike on the Mac the same function may be installed again
/// with the same user data; it is then called once for each time.
/// @param inList  `inNumTypes` types; may be null for none.
/// @param outRef  receives the handler for RemoveEventHandler; may be null.
/// @return noErr, paramErr, or memFullErr.
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef)
    CV_LINK(InstallEventHandler);
/// Removes a handler, which may be running.
OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef) CV_LINK(RemoveEventHandler);
/// Sends an event on to the handlers after the calling one, each of which is called once at most.
/// @param inCallRef  what the calling handler was given; valid until it returns.
/// @return the answer, eventNotHandledErr if there is none.
OSStatus CallNextEventHandler(EventHandlerCallRef inCallRef, EventRef inEvent) CV_LINK(CallNextEventHandler);

/// Answer targets; null for a window or control that is not there. Not counted.
EventTargetRef GetApplicationEventTarget(void) CV_LINK(GetApplicationEventTarget);
EventTargetRef GetWindowEventTarget(WindowRef inWindow) CV_LINK(GetWindowEventTarget);
EventTargetRef GetControlEventTarget(ControlRef inControl) CV_LINK(GetControlEventTarget);
/// The target that sends an event where it belongs: to its kEventParamPostTarget, or else to the
/// application.
EventTargetRef GetEventDispatcherTarget(void) CV_LINK(GetEventDispatcherTarget);
/// The target that stands for the focused control of the active window, or else that window, or
/// else the application.
EventTargetRef GetUserFocusEventTarget(void) CV_LINK(GetUserFocusEventTarget);

/// Sends an event to a target's handlers, the newest first, then outwards: control, the controls
/// around it, window, application. eventNotHandledErr passes it on; any other answer ends it.
/// @return that answer; eventNotHandledErr when nobody handled it.
OSStatus SendEventToEventTarget(EventRef inEvent, EventTargetRef inTarget) CV_LINK(SendEventToEventTarget);
/// As SendEventToEventTarget, with kEventTarget... options.
OSStatus SendEventToEventTargetWithOptions(EventRef inEvent, EventTargetRef inTarget, OptionBits inOptions)
    CV_LINK(SendEventToEventTargetWithOptions);
/// Sends a command to the user focus and outwards.
OSStatus ProcessHICommand(const HICommand* inCommand) CV_LINK(ProcessHICommand);

/// Answer the layer's one queue, on every thread.
EventQueueRef GetMainEventQueue(void) CV_LINK(GetMainEventQueue);
EventQueueRef GetCurrentEventQueue(void) CV_LINK(GetCurrentEventQueue);
/// Queues an event, retained, behind those of its priority or a higher one, and wakes the loop.
/// @return noErr, paramErr, eventAlreadyPostedErr when it is queued already, or memFullErr.
OSStatus PostEventToQueue(EventQueueRef inQueue, EventRef inEvent, EventPriority inPriority) CV_LINK(PostEventToQueue);
/// Waits for an event. Timers fire and input to windows is handled meanwhile. Event-loop thread.
/// @param inList      the types wanted; null with 0 for any.
/// @param inTimeout   seconds, or kEventDurationForever.
/// @param inPullEvent true takes the event out of the queue: it is then the caller's to dispatch
///                    (to the dispatcher target) and to release. False leaves it there, not
///                    retained for the caller.
/// @return noErr; eventLoopTimedOutErr; eventLoopQuitErr when the loop was told to quit; paramErr.
OSStatus ReceiveNextEvent(ItemCount inNumTypes, const EventTypeSpec* inList, EventTimeout inTimeout,
                          Boolean inPullEvent, EventRef* outEvent) CV_LINK(ReceiveNextEvent);
/// Answers how many events are queued; 0 for what is no queue.
ItemCount GetNumEventsInQueue(EventQueueRef inQueue) CV_LINK(GetNumEventsInQueue);
/// Drops and releases all that is queued.
OSStatus FlushEventQueue(EventQueueRef inQueue) CV_LINK(FlushEventQueue);

/// Runs the loop, dispatching events, until QuitApplicationEventLoop is called. The calling thread
/// becomes the event-loop thread.
void RunApplicationEventLoop(void) CV_LINK(RunApplicationEventLoop);
/// Ends RunApplicationEventLoop (of nested calls the innermost), or lets its next call return at once.
/// Requests made before one is followed count as one. Any thread.
void QuitApplicationEventLoop(void) CV_LINK(QuitApplicationEventLoop);
/// Answer the layer's one loop, on every thread.
EventLoopRef GetMainEventLoop(void) CV_LINK(GetMainEventLoop);
EventLoopRef GetCurrentEventLoop(void) CV_LINK(GetCurrentEventLoop);
/// Runs timers and input, and dispatches what is queued, for `inTimeout` seconds.
/// @return eventLoopTimedOutErr after that time, eventLoopQuitErr when QuitEventLoop ended it, or
///         paramErr on a thread other than the one that runs the loop already.
OSStatus RunCurrentEventLoop(EventTimeout inTimeout) CV_LINK(RunCurrentEventLoop);
/// Ends the innermost RunCurrentEventLoop or ReceiveNextEvent. Any thread.
OSStatus QuitEventLoop(EventLoopRef inEventLoop) CV_LINK(QuitEventLoop);
/// Installs a timer. Any thread; it fires on the event-loop thread.
/// @param inFireDelay  seconds until it fires first; kEventDurationForever: not by itself.
/// @param inInterval   seconds between later times; 0 fires once.
/// @param outTimer     receives the timer, the caller's to remove (one that fires once, too); may
///                     be null.
OSStatus InstallEventLoopTimer(EventLoopRef inEventLoop, EventTimerInterval inFireDelay, EventTimerInterval inInterval,
                               EventLoopTimerUPP inTimerProc, void* inTimerData, EventLoopTimerRef* outTimer)
    CV_LINK(InstallEventLoopTimer);
/// Removes a timer, which may be running.
OSStatus RemoveEventLoopTimer(EventLoopTimerRef inTimer) CV_LINK(RemoveEventLoopTimer);

CV_END_DECLS

#define GetEventTypeCount(types) ((ItemCount)(sizeof(types) / sizeof(EventTypeSpec)))
#define InstallApplicationEventHandler(handler, n, list, data, outRef)                                                 \
    InstallEventHandler(GetApplicationEventTarget(), (handler), (n), (list), (data), (outRef))
#define InstallWindowEventHandler(window, handler, n, list, data, outRef)                                              \
    InstallEventHandler(GetWindowEventTarget(window), (handler), (n), (list), (data), (outRef))
#define InstallControlEventHandler(control, handler, n, list, data, outRef)                                            \
    InstallEventHandler(GetControlEventTarget(control), (handler), (n), (list), (data), (outRef))
#define SendEventToApplication(event) SendEventToEventTarget((event), GetApplicationEventTarget())
#define SendEventToWindow(event, window) SendEventToEventTarget((event), GetWindowEventTarget(window))
#define SendEventToControl(event, control) SendEventToEventTarget((event), GetControlEventTarget(control))

/// On this platform a function is its own universal procedure pointer.
static inline EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr proc)
{
    return proc;
}
static inline EventLoopTimerUPP NewEventLoopTimerUPP(EventLoopTimerProcPtr proc)
{
    return proc;
}
static inline void DisposeEventHandlerUPP(EventHandlerUPP upp)
{
    (void)upp;
}

#endif
