// platform/hitoolbox/windows/Controls.cpp
//
// The calls of Controls.h: each looks its control up, does one thing to its record, and leaves.
#include <cstring>

#include "platform/base/Guard.h"
#include "platform/base/Text.h"
#include "platform/hitoolbox/windows/ControlCalls.h"
#include "platform/hitoolbox/windows/EditText.h"
#include "platform/hitoolbox/windows/Notify.h"
#include "platform/hitoolbox/windows/Surfaces.h"

namespace {

TextFont FontOfTheme(SInt16 font) noexcept
{
    switch (font) {
    case -2:
        return TextFont::Small;
    case -3:
        return TextFont::SmallBold;
    case -4:
        return TextFont::Views;
    case -5:
        return TextFont::Mini;
    default:
        return TextFont::System;
    }
}

Justification JustificationOf(SInt16 just) noexcept
{
    switch (just) {
    case 1:
        return Justification::Centre;
    case -1:
        return Justification::Right;
    case -2:
        return Justification::Left;
    default:
        return Justification::ByScript;
    }
}

void SetStyle(CControl& control, const ControlFontStyleRec* style)
{
    constexpr SInt16 kUseFont = 1;
    constexpr SInt16 kUseForeColor = 8;
    constexpr SInt16 kUseJust = 64;
    if (!style)
        return;
    if ((style->flags & kUseFont) != 0)
        control.font = FontOfTheme(style->font);
    if ((style->flags & kUseForeColor) != 0)
        control.textColor = style->foreColor;
    if ((style->flags & kUseJust) != 0)
        control.justification = JustificationOf(style->just);
}

// Makes a control, hands it to `fill`, and puts it into a window where one is given.
template <typename Fill>
OSStatus MakeControl(WindowRef window, ControlClass kind, const Rect* bounds, ControlRef* outControl, Fill&& fill)
{
    if (outControl)
        *outControl = nullptr;
    if (!bounds || !outControl)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CToolboxLock lock;
        CWindow* const owner = Find<CWindow>(window);
        if (window && !owner)
            return errInvalidWindowPtr;
        const CRef<CControl> control = NewControl(kind, *bounds);
        fill(*control);
        if (owner)
            Attach(*control, *owner->root);
        *outControl = control->Ref();
        return noErr;
    });
}

/// A datum of SetControlData and GetControlData: its size, and how to set and get it. Setting or
/// getting null is refused.
struct DataTag {
    ResType tag;
    bool (*applies)(const CControl& control);
    Size size;
    OSErr (*set)(CControl& control, const void* data);
    OSErr (*get)(CControl& control, void* buffer);
};

template <typename T>
T ReadAs(const void* data)
{
    T value = {};
    std::memcpy(&value, data, sizeof value);
    return value;
}

bool IsStaticText(const CControl& control)
{
    return control.controlClass == ControlClass::StaticText;
}

bool IsEdit(const CControl& control)
{
    return control.IsEditText();
}

bool IsPassword(const CControl& control)
{
    return control.IsEditText() && control.edit->IsPassword();
}

OSErr SetStaticText(CControl& control, const void* data)
{
    const auto text = ReadAs<CFStringRef>(data);
    if (!text)
        return paramErr;
    control.text = CRef<const __CFString>::Share(text);
    return noErr;
}

OSErr GetStaticText(CControl& control, void* buffer)
{
    CFStringRef text = (control.text ? CRef<const __CFString>(control.text) : __CFString::Create("")).Detach();
    std::memcpy(buffer, &text, sizeof text);
    return noErr;
}

OSErr SetEditText(CControl& control, const void* data)
{
    const auto text = ReadAs<CFStringRef>(data);
    if (!text)
        return paramErr;
    control.edit->SetText(*text);
    return noErr;
}

OSErr GetEditText(CControl& control, void* buffer)
{
    CFStringRef text = control.edit->CopyText().Detach();
    std::memcpy(buffer, &text, sizeof text);
    return noErr;
}

OSErr SetLocked(CControl& control, const void* data)
{
    control.edit->locked = ReadAs<Boolean>(data) != 0;
    return noErr;
}

OSErr GetLocked(CControl& control, void* buffer)
{
    const Boolean locked = control.edit->locked;
    std::memcpy(buffer, &locked, sizeof locked);
    return noErr;
}

OSErr SetSelection(CControl& control, const void* data)
{
    const auto selection = ReadAs<ControlEditTextSelectionRec>(data);
    control.edit->SelectUnits(selection.selStart, selection.selEnd);
    return noErr;
}

OSErr GetSelection(CControl& control, void* buffer)
{
    const CFRange range = control.edit->SelectionInUnits();
    const auto limited = [](CFIndex place) {
        return static_cast<SInt16>(place > 32767 ? 32767 : place);
    };
    const ControlEditTextSelectionRec selection = {limited(range.location), limited(range.location + range.length)};
    std::memcpy(buffer, &selection, sizeof selection);
    return noErr;
}

constexpr DataTag kDataTags[] = {
    {kControlStaticTextCFStringTag, IsStaticText, sizeof(CFStringRef), SetStaticText, GetStaticText},
    {kControlEditTextCFStringTag, IsEdit, sizeof(CFStringRef), SetEditText, GetEditText},
    {kControlEditTextPasswordCFStringTag, IsPassword, sizeof(CFStringRef), SetEditText, GetEditText},
    {kControlEditTextLockedTag, IsEdit, sizeof(Boolean), SetLocked, GetLocked},
    {kControlEditTextSelectionTag, IsEdit, sizeof(ControlEditTextSelectionRec), SetSelection, GetSelection},
};

const DataTag* FindTag(const CControl& control, ResType name)
{
    for (const DataTag& tag : kDataTags) {
        if (tag.tag == name && tag.applies(control))
            return &tag;
    }
    return nullptr;
}

void SetVisible(ControlRef reference, bool visible)
{
    (void)WithControl<OSStatus>(reference, controlHandleInvalidErr, [visible](CControl& control) {
        control.visible = visible;
        control.Touch();
        return noErr;
    });
}

OSStatus SetEnabled(ControlRef reference, bool enabled)
{
    return WithControl<OSStatus>(reference, controlHandleInvalidErr, [enabled](CControl& control) {
        control.enabled = enabled;
        control.Touch();
        return noErr;
    });
}

OSStatus SetButton(WindowRef inWindow, ControlRef inControl, ControlRef CWindow::*button)
{
    const CToolboxLock lock;
    CWindow* const window = Find<CWindow>(inWindow);
    if (!window)
        return errInvalidWindowPtr;
    const CControl* const control = Find<CControl>(inControl);
    if (inControl && !control)
        return controlHandleInvalidErr;
    if (control && control->window != window)
        return paramErr;
    window->*button = inControl;
    Surfaces::Touched(*window);
    return noErr;
}

} // namespace

OSStatus GetControlByID(WindowRef inWindow, const ControlID* inID, ControlRef* outControl)
{
    if (outControl)
        *outControl = nullptr;
    if (!inID || !outControl)
        return paramErr;
    const CToolboxLock lock;
    const CWindow* const window = Find<CWindow>(inWindow);
    if (!window)
        return errInvalidWindowPtr;
    const CControl* const control = window->FindById(*inID);
    if (!control)
        return errUnknownControl;
    *outControl = control->Ref();
    return noErr;
}

OSStatus SetControlID(ControlRef inControl, const ControlID* inID)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!inID)
            return paramErr;
        SetIdentifier(control, *inID);
        return noErr;
    });
}

OSStatus GetControlID(ControlRef inControl, ControlID* outID)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!outID)
            return paramErr;
        *outID = control.id;
        return noErr;
    });
}

OSStatus SetControlCommandID(ControlRef inControl, UInt32 inCommandID)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) {
        control.command = inCommandID;
        return noErr;
    });
}

OSStatus GetControlCommandID(ControlRef inControl, UInt32* outCommandID)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!outCommandID)
            return paramErr;
        *outCommandID = control.command;
        return noErr;
    });
}

OSStatus GetControlKind(ControlRef inControl, ControlKind* outControlKind)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!outControlKind)
            return paramErr;
        *outControlKind = {kControlKindSignatureApple, TraitsOf(control.controlClass).kind};
        return noErr;
    });
}

OSStatus SetControlTitleWithCFString(ControlRef inControl, CFStringRef inString)
{
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!inString)
            return paramErr;
        control.title = CRef<const __CFString>::Share(inString);
        control.Touch();
        return noErr;
    });
}

OSStatus CopyControlTitleAsCFString(ControlRef inControl, CFStringRef* outString)
{
    if (!outString)
        return paramErr;
    *outString = nullptr;
    return WithControl<OSStatus>(inControl, controlHandleInvalidErr, [&](CControl& control) {
        *outString = (control.title ? CRef<const __CFString>(control.title) : __CFString::Create("")).Detach();
        return noErr;
    });
}

void SetControlTitle(ControlRef theControl, ConstStr255Param title)
{
    (void)WithControl<OSStatus>(theControl, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        if (!title)
            return paramErr;
        control.title =
            __CFString::Create(Utf8OfMacRoman({reinterpret_cast<const char*>(title + 1), std::size_t{title[0]}}));
        control.Touch();
        return noErr;
    });
}

OSErr SetControlData(ControlRef inControl, ControlPartCode, ResType inTagName, Size inSize, const void* inData)
{
    return WithControl<OSErr>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSErr {
        const DataTag* const tag = FindTag(control, inTagName);
        if (!tag)
            return errDataNotSupported;
        if (inSize != tag->size)
            return errDataSizeMismatch;
        if (!inData)
            return paramErr;
        const OSErr status = tag->set(control, inData);
        control.Touch();
        return status;
    });
}

OSErr GetControlData(ControlRef inControl, ControlPartCode, ResType inTagName, Size inBufferSize, void* inBuffer,
                     Size* outActualSize)
{
    return WithControl<OSErr>(inControl, controlHandleInvalidErr, [&](CControl& control) -> OSErr {
        const DataTag* const tag = FindTag(control, inTagName);
        if (!tag)
            return errDataNotSupported;
        if (inBufferSize < tag->size)
            return errDataSizeMismatch;
        if (!inBuffer)
            return paramErr;
        if (outActualSize)
            *outActualSize = tag->size;
        return tag->get(control, inBuffer);
    });
}

void SetControl32BitValue(ControlRef theControl, SInt32 newValue)
{
    (void)WithControl<OSStatus>(theControl, controlHandleInvalidErr, [newValue](CControl& control) {
        control.SetValue(newValue);
        return noErr;
    });
}

SInt32 GetControl32BitValue(ControlRef theControl)
{
    return WithControl<SInt32>(theControl, 0, [](CControl& control) { return control.value; });
}

void SetControl32BitMinimum(ControlRef theControl, SInt32 newMinimum)
{
    (void)WithControl<OSStatus>(theControl, controlHandleInvalidErr, [newMinimum](CControl& control) {
        control.minimum = newMinimum;
        control.SetValue(control.value);
        return noErr;
    });
}

SInt32 GetControl32BitMinimum(ControlRef theControl)
{
    return WithControl<SInt32>(theControl, 0, [](CControl& control) { return control.minimum; });
}

void SetControl32BitMaximum(ControlRef theControl, SInt32 newMaximum)
{
    (void)WithControl<OSStatus>(theControl, controlHandleInvalidErr, [newMaximum](CControl& control) {
        control.maximum = newMaximum;
        control.SetValue(control.value);
        return noErr;
    });
}

SInt32 GetControl32BitMaximum(ControlRef theControl)
{
    return WithControl<SInt32>(theControl, 0, [](CControl& control) { return control.maximum; });
}

void ShowControl(ControlRef theControl)
{
    SetVisible(theControl, true);
}

void HideControl(ControlRef theControl)
{
    SetVisible(theControl, false);
}

Boolean IsControlVisible(ControlRef inControl)
{
    return WithControl<Boolean>(inControl, false, [](CControl& control) { return control.IsShown(); });
}

OSStatus EnableControl(ControlRef inControl)
{
    return SetEnabled(inControl, true);
}

OSStatus DisableControl(ControlRef inControl)
{
    return SetEnabled(inControl, false);
}

Boolean IsControlEnabled(ControlRef inControl)
{
    return WithControl<Boolean>(inControl, false, [](CControl& control) { return control.IsUsable(); });
}

void HiliteControl(ControlRef theControl, ControlPartCode hiliteState)
{
    (void)WithControl<OSStatus>(theControl, controlHandleInvalidErr, [hiliteState](CControl& control) {
        control.hilite = hiliteState;
        control.Touch();
        return noErr;
    });
}

ControlPartCode GetControlHilite(ControlRef theControl)
{
    return WithControl<ControlPartCode>(theControl, 0, [](CControl& control) { return control.hilite; });
}

WindowRef GetControlOwner(ControlRef control)
{
    return WithControl<WindowRef>(control, nullptr,
                                  [](CControl& found) { return found.window ? found.window->Ref() : nullptr; });
}

void DisposeControl(ControlRef theControl)
{
    Guarded(0, [&] {
        std::vector<std::pair<CRef<CControl>, ControlRef>> told;
        {
            const CToolboxLock lock;
            CControl* const control = Find<CControl>(theControl);
            if (!control || control->controlClass == ControlClass::Root)
                return 0; // the root goes with its window
            for (CControl* const one : Flatten(*control)) {
                if (one->Handlers())
                    told.emplace_back(CRef<CControl>::Share(one), one->Ref());
            }
        }
        for (const auto& [control, reference] : told)
            Notify(*control, reference, kEventControlDispose,
                   kEventTargetDontPropagate | kEventTargetSendToAllHandlers);
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(theControl);
        if (!control)
            return 0;
        const auto kept = CRef<CControl>::Share(control);
        const auto gone = Flatten(*control);
        const CRef<CControl> held = Detach(*control);
        std::vector<CRef<CControl>> owners; // so that a deep tree is not destroyed by recursion
        owners.reserve(gone.size());
        for (CControl* const one : gone)
            owners.push_back(CRef<CControl>::Share(one));
        for (CControl* const one : gone) {
            Retire(*one);
            one->parent = nullptr;
            one->children.clear();
        }
        return 0;
    });
}

OSErr CreateRootControl(WindowRef inWindow, ControlRef* outControl)
{
    return GetRootControl(inWindow, outControl);
}

OSErr GetRootControl(WindowRef inWindow, ControlRef* outControl)
{
    if (!outControl)
        return paramErr;
    *outControl = nullptr;
    const CToolboxLock lock;
    const CWindow* const window = Find<CWindow>(inWindow);
    if (!window)
        return errInvalidWindowPtr;
    *outControl = window->root->Ref();
    return noErr;
}

OSErr EmbedControl(ControlRef inControl, ControlRef inContainer)
{
    return static_cast<OSErr>(Embed(inControl, inContainer, false));
}

OSStatus Embed(ControlRef inControl, ControlRef inContainer, bool moves)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(inControl);
        CControl* const container = Find<CControl>(inContainer);
        if (!control || !container)
            return controlHandleInvalidErr;
        if (control->controlClass == ControlClass::Root || container->IsIn(*control))
            return paramErr;
        const CRef<CControl> kept = CRef<CControl>::Share(control);
        const CControl* const from = control->parent;
        const int right = container->bounds.left - (from ? from->bounds.left : 0);
        const int down = container->bounds.top - (from ? from->bounds.top : 0);
        (void)Detach(*control);
        Attach(*control, *container);
        if (moves)
            control->MoveBy(right, down);
        return noErr;
    });
}

OSStatus CreatePushButtonControl(WindowRef window, const Rect* boundsRect, CFStringRef title, ControlRef* outControl)
{
    return MakeControl(window, ControlClass::PushButton, boundsRect, outControl,
                       [=](CControl& control) { control.title = CRef<const __CFString>::Share(title); });
}

OSStatus CreateCheckBoxControl(WindowRef window, const Rect* boundsRect, CFStringRef title, SInt32 initialValue,
                               Boolean autoToggle, ControlRef* outControl)
{
    return MakeControl(window, ControlClass::CheckBox, boundsRect, outControl, [=](CControl& control) {
        control.title = CRef<const __CFString>::Share(title);
        control.autoToggle = autoToggle != 0;
        control.SetValue(initialValue);
    });
}

OSStatus CreateStaticTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text,
                                 const ControlFontStyleRec* style, ControlRef* outControl)
{
    return MakeControl(window, ControlClass::StaticText, boundsRect, outControl, [=](CControl& control) {
        control.text = CRef<const __CFString>::Share(text);
        SetStyle(control, style);
    });
}

OSStatus CreateEditUnicodeTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text, Boolean isPassword,
                                      const ControlFontStyleRec* style, ControlRef* outControl)
{
    return MakeControl(window, ControlClass::EditUnicodeText, boundsRect, outControl, [=](CControl& control) {
        control.edit->SetPassword(isPassword != 0);
        if (text)
            control.edit->SetText(*text);
        SetStyle(control, style);
    });
}

OSStatus CreateEditTextControl(WindowRef window, const Rect* boundsRect, CFStringRef text, Boolean isPassword, Boolean,
                               const ControlFontStyleRec* style, ControlRef* outControl)
{
    return MakeControl(window, ControlClass::EditText, boundsRect, outControl, [=](CControl& control) {
        control.edit->SetPassword(isPassword != 0);
        if (text)
            control.edit->SetText(*text);
        SetStyle(control, style);
    });
}

OSStatus SetWindowDefaultButton(WindowRef inWindow, ControlRef inControl)
{
    return SetButton(inWindow, inControl, &CWindow::defaultButton);
}

OSStatus SetWindowCancelButton(WindowRef inWindow, ControlRef inControl)
{
    return SetButton(inWindow, inControl, &CWindow::cancelButton);
}

EventTargetRef GetControlEventTarget(ControlRef inControl)
{
    return WithControl<EventTargetRef>(inControl, nullptr, [](CControl& control) { return control.TargetRef(); });
}
