// ui/DialogToolkit.cpp
//
// The utilities through which every window of the component is filled, wired and read, and its
// modal alerts. Controls are found anew by each call; nothing is kept.
#include "frame/BaseProductManager.h"

namespace {

// Answers a string with one reference more than its creation gave; null for invalid UTF-8.
CFStringRef CreateRetainedString(const char* text)
{
    const CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
    if (string)
        CFRetain(string); // on purpose: every call of the toolkit leaves one reference of its own behind
    return string;
}

// Neither text of an alert is checked for null by the operations that take them; a null text makes
// no string.
CFStringRef CreateAlertString(const char* text)
{
    return text ? CreateRetainedString(text) : nullptr;
}

void ReleaseString(CFStringRef string)
{
    if (string)
        CFRelease(string);
}

void SetTitle(ControlRef control, CFStringRef string)
{
    (void)SetControlTitleWithCFString(control, string);
}

void SetStaticText(ControlRef control, CFStringRef string)
{
    (void)SetControlData(control, kControlEntireControl, kControlStaticTextCFStringTag, sizeof string, &string);
}

void SetEditText(ControlRef control, CFStringRef string)
{
    (void)SetControlData(control, kControlEntireControl, kControlEditTextCFStringTag, sizeof string, &string);
}

// What the three text setters share. A text that is not valid UTF-8 is handed on as a null string.
void SetText(WindowRef window, const ControlID& id, const char* text, void (*set)(ControlRef, CFStringRef))
{
    if (!text)
        return;
    const CFStringRef string = CreateRetainedString(text);
    const ControlRef control = CBaseProductManager::GetControl(window, id);
    if (control)
        set(control, string);
    ReleaseString(string);
}

// Shows an alert and answers the button that was hit, 0 when it could not be shown.
DialogItemIndex RunAlert(const char* error, const char* explanation, short alertType,
                         const AlertStdCFStringAlertParamRec* param)
{
    const CFStringRef errorString = CreateAlertString(error);
    const CFStringRef explanationString = CreateAlertString(explanation);
    DialogRef dialog = nullptr;
    DialogItemIndex itemHit = 0;
    (void)CreateStandardAlert(alertType, errorString, explanationString, param, &dialog);
    if (dialog)
        (void)RunStandardAlert(dialog, nullptr, &itemHit); // disposes of it
    ReleaseString(explanationString);
    ReleaseString(errorString);
    return itemHit;
}

// The default texts are enumerators where a reference is expected.
CFStringRef DefaultText(intptr_t which)
{
    return reinterpret_cast<CFStringRef>(which);
}

} // namespace

ControlID CBaseProductManager::MakeControlId(UInt32 signature, SInt32 id)
{
    ControlID made;
    made.signature = signature;
    made.id = id;
    return made;
}

ControlRef CBaseProductManager::GetControl(WindowRef window, const ControlID& id)
{
    ControlRef control = nullptr;
    (void)GetControlByID(window, &id, &control); // no such control leaves null, which is the answer
    return control;
}

void CBaseProductManager::ShowControl(WindowRef window, const ControlID& id, bool show)
{
    if (!window)
        return;
    const ControlRef control = GetControl(window, id);
    if (!control)
        return;
    if (show)
        ::ShowControl(control);
    else
        ::HideControl(control);
}

void CBaseProductManager::MakeEditTextControlReadOnly(WindowRef window, const ControlID& id)
{
    if (!window)
        return;
    const ControlRef control = GetControl(window, id);
    if (!control)
        return;
    static const EventTypeSpec kTypes[] = {{kEventClassTextField, kEventTextShouldChangeInRange}};
    (void)InstallEventHandler(GetControlEventTarget(control), ReadOnlyEditTextHandler, GetEventTypeCount(kTypes),
                              kTypes, nullptr, nullptr); // the handler goes with the control
}

OSStatus CBaseProductManager::ReadOnlyEditTextHandler(EventHandlerCallRef, EventRef event, void*)
{
    const bool changes =
        GetEventClass(event) == kEventClassTextField && GetEventKind(event) == kEventTextShouldChangeInRange;
    // noErr, not eventNotHandledErr, for other events is intended; none are registered for.
    return changes ? static_cast<OSStatus>(userCanceledErr) : static_cast<OSStatus>(noErr);
}

OSStatus CBaseProductManager::AttachDialogEvents(WindowRef window, EventHandlerProcPtr handler,
                                                 EventHandlerParams* params)
{
    static const EventTypeSpec kTypes[] = {{kEventClassWindow, kEventWindowDispose},
                                           {kEventClassCommand, kEventCommandProcess}};
    return InstallEventHandler(GetWindowEventTarget(window), handler, GetEventTypeCount(kTypes), kTypes, params,
                               nullptr);
}

void CBaseProductManager::SetControlTitle(WindowRef window, const ControlID& id, const char* text)
{
    SetText(window, id, text, SetTitle);
}

void CBaseProductManager::SetStaticControlText(WindowRef window, const ControlID& id, const char* text)
{
    SetText(window, id, text, SetStaticText);
}

void CBaseProductManager::SetEditBoxControlText(WindowRef window, const ControlID& id, const char* text)
{
    SetText(window, id, text, SetEditText);
}

void CBaseProductManager::GetEditBoxControlText(WindowRef window, const ControlID& id, char* buffer, long bufferSize)
{
    CFStringRef string = nullptr;
    const ControlRef control = GetControl(window, id);
    if (buffer && control) {
        (void)GetControlData(control, kControlEntireControl, kControlEditTextCFStringTag, sizeof string, &string,
                             nullptr);
        // Set as UTF-8, read as Mac OS Roman: the asymmetry is intended.
        if (string) // a control that is no edit text gives none, and the Mac's call takes no null
            (void)CFStringGetCString(string, buffer, bufferSize, kCFStringEncodingMacRoman);
    }
    ReleaseString(string); // GetControlData hands a string out that is the caller's
}

void CBaseProductManager::ShowPlainAlert(const char* error, const char* explanation, short alertType)
{
    (void)RunAlert(error, explanation, alertType, nullptr);
}

bool CBaseProductManager::ShowYesNoAlert(const char* error, const char* explanation, short alertType)
{
    AlertStdCFStringAlertParamRec param;
    memset(&param, 0, sizeof param);
    param.version = kStdCFStringAlertVersionOne;
    param.movable = false;
    param.helpButton = false;
    param.defaultText = DefaultText(kAlertDefaultOKText); // OK and Cancel in spite of the operation's name
    param.cancelText = DefaultText(kAlertDefaultCancelText);
    param.otherText = nullptr;
    param.defaultButton = kAlertStdAlertOKButton;
    param.cancelButton = kAlertStdAlertCancelButton;
    param.position = kWindowAlertPositionParentWindowScreen;
    param.flags = 0;
    return RunAlert(error, explanation, alertType, &param) == kAlertStdAlertOKButton;
}
