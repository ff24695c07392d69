// ui/InfoDialog.cpp
//
// The information dialog: made from a nib, filled, wired and shown by one call that returns at
// once; everything after that happens in its two event handlers.
#include <new>

#include "frame/BaseProductManager.h"
#include "frame/Owned.h"

// CV_SITE_URL, the maker's web site, comes from the build (cmake/Component.cmake).

namespace {

const unsigned int kKnobOption = 0x1;
const unsigned int kKnobTopic = 300;
const UInt32 kDialogEnded = 'iend';
const UInt32 kCommandSite = 'site';
const UInt32 kCommandHelp = 'help';
const CGFloat kLogoBright = 1.0f;
const CGFloat kLogoDimmed = 0.7f;

const ControlID kNameText = {'NAME', 0};
const ControlID kVersionText = {'VERS', 0};
const ControlID kCopyrightText = {'CPRT', 0};
const ControlID kLogo = {'LOGO', 0};
const ControlID kOptionsText = {'OPTS', 0};
const ControlID kKnobBox = {'KNOB', 0};

// OK and Cancel share a signature; the number tells them apart.
const struct {
    ControlID control;
    const char* key;
} kButtons[] = {{{'CLOS', 0}, "OK"}, {{'CLOS', 1}, "Cancel"}, {{'HELP', 0}, "Help"}};

// The command that an event carries; 0 when it carries none.
UInt32 CommandOf(EventRef event)
{
    HICommand command = HICommand();
    const OSStatus status =
        GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command, nullptr, &command);
    return status == noErr ? command.commandID : 0;
}

} // namespace

void CBaseProductManager::InfoDialog(WindowRef parent, bool hideKnobOption)
{
    // Catches a request from within the dialog's construction: the region lets its holder in again.
    static bool s_bInInfo = false;
    const CCriticalScope scope(*this);
    if (s_bInInfo)
        return;
    s_bInInfo = true;
    ShowInfoDialog(parent, hideKnobOption);
    s_bInInfo = false;
}

void CBaseProductManager::SetInfoDialogOptions(unsigned int mask, bool clear)
{
    const CCriticalScope scope(*this);
    infoDialogOptions = clear ? infoDialogOptions & ~mask : infoDialogOptions | mask;
}

WindowRef CBaseProductManager::CreateInfoDialog()
{
    if (!bundle)
        return nullptr;
    IBNibRef nib = nullptr;
    const CFStringRef name = (infoDialogOptions & kKnobOption) ? CFSTR("InfoKnob") : CFSTR("Info");
    if (CreateNibReferenceWithCFBundle(bundle, name, &nib) != noErr)
        return nullptr;
    WindowRef window = nullptr;
    if (CreateWindowFromNib(nib, CFSTR("InfoDialog"), &window) != noErr)
        window = nullptr; // what a failed call leaves there does not count
    DisposeNibReference(nib);
    return window;
}

void CBaseProductManager::ShowInfoDialog(WindowRef parent, bool hideKnobOption)
{
    if (!bundle)
        return;
    SetInfoDialogOptions(kKnobOption, hideKnobOption);
    const WindowRef window = CreateInfoDialog();
    if (!window)
        return;
    if (parent)
        (void)SetWindowModality(window, kWindowModalityWindowModal, parent);

    const COwned<CFStringRef> title(TranslateCommonCFString(kEffectLangInfoDialog, "Title", GetProductName()));
    (void)SetWindowTitleWithCFString(window, title.Get());
    SetStaticControlText(window, kNameText, TranslateCommon(kEffectLangInfoDialog, "ProductName", GetProductName()));
    char version[100] = "";
    FormatVersionString(version, sizeof version - 1, GetProductVersion());
    SetStaticControlText(window, kVersionText, version);
    SetStaticControlText(window, kCopyrightText,
                         TranslateCommon(kEffectLangInfoDialog, "Copyright", GetProductVersion()->notice));
    const ControlRef logo = GetControl(window, kLogo);
    InitLogoControl(logo);
    SetStaticControlText(window, kOptionsText, TranslateCommon(kEffectLangInfoDialog, "Options", "Options"));
    if (const ControlRef box = GetControl(window, kKnobBox)) {
        SetControlTitle(window, kKnobBox,
                        TranslateCommon(kEffectLangInfoDialog, "Up/Down Knobs Control",
                                        "Up / Down mouse control of circular knobs"));
        SetControl32BitValue(box, KnobsDragVertical() ? 1 : 0);
    }
    for (size_t index = 0; index < sizeof kButtons / sizeof kButtons[0]; ++index)
        SetControlTitle(window, kButtons[index].control,
                        TranslateCommon(kEffectLangButton, kButtons[index].key, nullptr));

    EventHandlerParams* const params = new (std::nothrow) EventHandlerParams();
    if (!params) {
        DisposeWindow(window);
        return;
    }
    params->owner = this;
    params->window = window;
    params->control = logo;
    if (logo)
        (void)AttachLogoEvents(logo, params);
    if (AttachDialogEvents(window, InfoDialogHandler, params) != noErr) {
        DisposeWindow(window); // nobody would free the record
        delete params;
        return;
    }
    __atomic_store_n(&infoDialogWindow, window, __ATOMIC_RELAXED);
    ShowWindow(window);
    SelectWindow(window);
}

void CBaseProductManager::InitLogoControl(ControlRef logo)
{
    if (!logo)
        return;
    if (const CGImageRef image = LoadImageFromResourcesBundle(CFSTR("logo"), CFSTR("pict"))) {
        (void)HIImageViewSetImage(logo, image);
        CGImageRelease(image);
    }
    // The area lives and dies with the control. Older systems do not take null for the last one.
    HIViewTrackingAreaRef area = nullptr;
    (void)HIViewNewTrackingArea(logo, nullptr, static_cast<HIViewTrackingAreaID>(reinterpret_cast<uintptr_t>(logo)),
                                &area);
}

OSStatus CBaseProductManager::AttachLogoEvents(ControlRef logo, EventHandlerParams* params)
{
    static const EventTypeSpec kTypes[] = {{kEventClassCommand, kEventCommandProcess},
                                           {kEventClassControl, kEventControlTrackingAreaEntered},
                                           {kEventClassControl, kEventControlTrackingAreaExited}};
    return InstallEventHandler(GetControlEventTarget(logo), LogoControlHandler, GetEventTypeCount(kTypes), kTypes,
                               params, nullptr);
}

OSStatus CBaseProductManager::LogoControlHandler(EventHandlerCallRef, EventRef event, void* userData)
{
    const EventHandlerParams* const params = static_cast<const EventHandlerParams*>(userData);
    if (!params->owner)
        return eventNotHandledErr;
    switch (GetEventKind(event)) {
    case kEventControlTrackingAreaEntered:
    case kEventControlTrackingAreaExited:
        if (params->control) {
            const bool inside = GetEventKind(event) == kEventControlTrackingAreaEntered;
            (void)HIImageViewSetAlpha(params->control, inside ? kLogoBright : kLogoDimmed);
        }
        return eventNotHandledErr; // on purpose: others may watch the pointer as well
    case kEventCommandProcess:
        if (CommandOf(event) != kCommandSite)
            return eventNotHandledErr;
        params->owner->GoToSite();
        return noErr;
    default:
        return eventNotHandledErr;
    }
}

void CBaseProductManager::GoToSite()
{
    const CFStringRef address = CFSTR(CV_SITE_URL);
    const CFURLRef url = CFURLCreateWithString(kCFAllocatorDefault, address, nullptr);
    if (url)
        CFRetain(url); // on purpose: one reference stays behind with every call
    (void)LSOpenCFURLRef(url, nullptr);
    if (url)
        CFRelease(url);
}

OSStatus CBaseProductManager::InfoDialogHandler(EventHandlerCallRef, EventRef event, void* userData)
{
    EventHandlerParams* const params = static_cast<EventHandlerParams*>(userData);
    // Disposing of the window frees the record: what is needed afterwards is taken out first.
    CBaseProductManager* const owner = params->owner;
    const WindowRef window = params->window;
    if (!owner)
        return eventNotHandledErr;
    switch (GetEventKind(event)) {
    case kEventCommandProcess:
        return owner->HandleDialogCommand(window, CommandOf(event));
    case kEventWindowDispose:
        SendCVEvent(kDialogEnded);
        params->owner = nullptr;
        params->window = nullptr;
        params->control = nullptr;
        params->timer = nullptr;
        delete params;
        return noErr;
    default:
        return eventNotHandledErr;
    }
}

OSStatus CBaseProductManager::HandleDialogCommand(WindowRef window, UInt32 command)
{
    switch (command) {
    case kHICommandOK:
        if (const ControlRef box = GetControl(window, kKnobBox))
            SetDragVertical(GetControl32BitValue(box) == 1);
        break;
    case kHICommandCancel:
        break;
    case kCommandHelp:
        OpenHelp(window, kKnobTopic);
        return noErr;
    default:
        return eventNotHandledErr;
    }
    DisposeWindow(window);
    // Only here: a dialog that ends in another way leaves its name behind until the next one opens.
    __atomic_store_n(&infoDialogWindow, static_cast<WindowRef>(nullptr), __ATOMIC_RELAXED);
    return noErr;
}
