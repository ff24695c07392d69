// platform/hitoolbox/windows/Alert.cpp
//
// Standard alerts: an ordinary modal window of ordinary controls, and a loop until a button is hit.
#include <algorithm>
#include <cmath>

#include "platform/base/Guard.h"
#include "platform/corefoundation/Languages.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/windows/ControlCalls.h"
#include <CVPlatform/CVPlatform.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/Dialogs.h>

namespace {

constexpr int kMargin = 24;
constexpr int kIconSide = 64;
constexpr int kTextLeft = kMargin + kIconSide + 16;
constexpr int kTextWidth = 320;
constexpr int kWidth = kTextLeft + kTextWidth + kMargin;
constexpr int kGap = 12;
constexpr int kButtonHeight = 20;
constexpr int kButtonMinimum = 70;
constexpr int kButtonPadding = 32;
constexpr int kMaximumTextHeight = 2000;

struct Button {
    DialogItemIndex item;
    CRef<const __CFString> title;
};

class CAlert final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Dialog;
    CAlert() : CRecord(kKind) {}

    WindowRef window = nullptr;
    std::vector<std::pair<ControlRef, DialogItemIndex>> buttons;
    DialogItemIndex unanswered = 0; // what it answers when it goes away by itself
    DialogItemIndex hit = 0;
    bool answered = false;
};

/// What CreateStandardAlert is asked for, with the defaults filled in.
struct Request {
    AlertType type = kAlertPlainAlert;
    CFStringRef error = nullptr;
    CFStringRef explanation = nullptr;
    std::vector<Button> buttons; // from the right
    DialogItemIndex defaultButton = kAlertStdAlertOKButton;
    DialogItemIndex cancelButton = 0;
};

// The constants for default texts are numbers where a reference is expected.
bool IsDefaultText(CFStringRef text) noexcept
{
    return reinterpret_cast<std::intptr_t>(text) == kAlertDefaultOKText;
}

/// The titles that a caller leaves to the system.
struct Wording {
    std::string_view folder; // of the language
    const char* ok;
    const char* cancel;
    const char* other;
    const char* help;
};
constexpr Wording kWordings[] = {
    {"en.lproj", "OK", "Cancel", "Don\xE2\x80\x99t Save", "Help"},
    {"de.lproj", "OK", "Abbrechen", "Nicht sichern", "Hilfe"},
};

// In the user's first language that there is one for, as a bundle's resources are chosen.
const Wording& WordingForUser()
{
    for (const std::string& folder : LanguageFolders()) {
        for (const Wording& wording : kWordings) {
            if (wording.folder == folder)
                return wording;
        }
    }
    return kWordings[0];
}

void AddButton(Request& request, DialogItemIndex item, CFStringRef text, const char* wording)
{
    if (text)
        request.buttons.push_back(
            {item, IsDefaultText(text) ? __CFString::Create(wording) : CRef<const __CFString>::Share(text)});
}

void AddButtons(Request& request, const AlertStdCFStringAlertParamRec& param)
{
    const Wording& wording = WordingForUser();
    AddButton(request, kAlertStdAlertOKButton, param.defaultText, wording.ok);
    AddButton(request, kAlertStdAlertCancelButton, param.cancelText, wording.cancel);
    AddButton(request, kAlertStdAlertOtherButton, param.otherText, wording.other);
    if (param.helpButton)
        request.buttons.push_back({kAlertStdAlertHelpButton, __CFString::Create(wording.help)});
    request.defaultButton = param.defaultButton;
    request.cancelButton = param.cancelButton;
}

int HeightOf(std::string_view text, TextFont font)
{
    TextLayout layout;
    layout.text = text;
    layout.font = font;
    layout.width = kTextWidth;
    layout.wrapped = true;
    const double height = std::ceil(Metrics().Measure(layout).height);
    return static_cast<int>(std::clamp<double>(height, 16, kMaximumTextHeight));
}

int WidthOf(const Button& button)
{
    TextLayout layout;
    layout.text = Utf8Of(button.title.Get());
    const double width = std::ceil(Metrics().Measure(layout).width) + kButtonPadding;
    return static_cast<int>(std::clamp<double>(width, kButtonMinimum, kWidth));
}

Rect Box(int left, int top, int width, int height) noexcept
{
    return {static_cast<short>(top), static_cast<short>(left), static_cast<short>(top + height),
            static_cast<short>(left + width)};
}

CControl& AddText(CWindow& window, CFStringRef text, TextFont font, int top, int height)
{
    const CRef<CControl> control = NewControl(ControlClass::StaticText, Box(kTextLeft, top, kTextWidth, height));
    control->text = CRef<const __CFString>::Share(text);
    control->font = font;
    Attach(*control, *window.root);
    return *control;
}

AlertIcon IconOf(AlertType type) noexcept
{
    switch (type) {
    case kAlertStopAlert:
        return AlertIcon::Stop;
    case kAlertNoteAlert:
        return AlertIcon::Note;
    case kAlertCautionAlert:
        return AlertIcon::Caution;
    default:
        return AlertIcon::None;
    }
}

// Buttons stand in a row from the right; those that do not fit stand below it.
void AddButtonRow(CWindow& window, CAlert& alert, const Request& request, int& top)
{
    int right = kWidth - kMargin;
    for (const Button& button : request.buttons) {
        const int width = WidthOf(button);
        if (right - width < kMargin && right != kWidth - kMargin) {
            right = kWidth - kMargin;
            top += kButtonHeight + kGap;
        }
        const int left = std::max(right - width, kMargin);
        const CRef<CControl> control =
            NewControl(ControlClass::PushButton, Box(left, top, right - left, kButtonHeight));
        control->title = button.title;
        Attach(*control, *window.root);
        alert.buttons.emplace_back(control->Ref(), button.item);
        if (button.item == request.defaultButton)
            window.defaultButton = control->Ref();
        if (button.item == request.cancelButton)
            window.cancelButton = control->Ref();
        if (button.item == request.cancelButton)
            alert.unanswered = button.item;
        right = left - kGap;
    }
    top += kButtonHeight;
}

OSStatus TakeHit(EventHandlerCallRef, EventRef event, void* data)
{
    ControlRef control = nullptr;
    (void)GetEventParameter(event, kEventParamDirectObject, typeControlRef, nullptr, sizeof control, nullptr,
                            &control); // none leaves null, which is no button
    const CToolboxLock lock;
    CAlert* const alert = Find<CAlert>(static_cast<DialogRef>(data));
    if (!alert)
        return eventNotHandledErr;
    const auto hit = std::find_if(alert->buttons.begin(), alert->buttons.end(),
                                  [control](const auto& button) { return button.first == control; });
    if (hit == alert->buttons.end())
        return eventNotHandledErr;
    alert->hit = hit->second;
    alert->answered = true;
    return noErr;
}

// Closing the window is the same as the cancel button, where there is one.
OSStatus TakeClose(EventHandlerCallRef, EventRef, void* data)
{
    const CToolboxLock lock;
    CAlert* const alert = Find<CAlert>(static_cast<DialogRef>(data));
    if (alert && alert->unanswered != 0) {
        alert->hit = alert->unanswered;
        alert->answered = true;
    }
    return noErr;
}

void Fill(CWindow& window, CAlert& alert, const Request& request)
{
    const CRef<CControl> icon = NewControl(ControlClass::Icon, Box(kMargin, kMargin, kIconSide, kIconSide));
    icon->icon = IconOf(request.type);
    Attach(*icon, *window.root);
    int top = kMargin;
    const int errorHeight = HeightOf(Utf8Of(request.error), TextFont::SystemBold);
    (void)AddText(window, request.error, TextFont::SystemBold, top, errorHeight);
    top += errorHeight;
    if (request.explanation) {
        const int height = HeightOf(Utf8Of(request.explanation), TextFont::Small);
        (void)AddText(window, request.explanation, TextFont::Small, top + kGap, height);
        top += kGap + height;
    }
    top = std::max(top, kMargin + kIconSide) + kMargin;
    AddButtonRow(window, alert, request, top);
    window.content = Box(0, 0, kWidth, top + kMargin);
    window.root->bounds = window.content;
    window.placement = Placement::AlertOnScreen;
    // It stays above the window that people are working in.
    const CWindow* const front = Find<CWindow>(Windows::Active());
    window.owner = front ? front->Ref() : nullptr;
}

OSStatus MakeAlert(const Request& request, DialogRef* outAlert)
{
    const auto alert = CRef<CAlert>::Adopt(new CAlert);
    const CRef<CWindow> window = Windows::Make(kMovableAlertWindowClass, kWindowNoAttributes, Box(0, 0, kWidth, 100));
    DialogRef reference = nullptr;
    {
        const CToolboxLock lock;
        alert->window = window->Ref();
        Fill(*window, *alert, request);
        Handles().Register(*alert);
        reference = RefOf<DialogRef>(*alert);
    }
    static constexpr EventTypeSpec kHit = {kEventClassControl, kEventControlHit};
    static constexpr EventTypeSpec kClose = {kEventClassWindow, kEventWindowClose};
    const EventTargetRef target = GetWindowEventTarget(alert->window);
    if (InstallEventHandler(target, TakeHit, 1, &kHit, reference, nullptr) != noErr ||
        InstallEventHandler(target, TakeClose, 1, &kClose, reference, nullptr) != noErr) {
        DisposeDialog(reference);
        return memFullErr;
    }
    *outAlert = reference;
    return noErr;
}

bool IsOver(DialogRef reference)
{
    const CToolboxLock lock;
    const CAlert* const alert = Find<CAlert>(reference);
    return !alert || alert->answered || !Find<CWindow>(alert->window);
}

} // namespace

OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec* param, DialogRef* outAlert)
{
    if (outAlert)
        *outAlert = nullptr;
    if (!outAlert || alertType < kAlertStopAlert || alertType > kAlertPlainAlert ||
        (param && param->version != kStdCFStringAlertVersionOne))
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        if (!Windows::EnsureDesktop())
            return kCVNoDesktopErr;
        AlertStdCFStringAlertParamRec defaults;
        (void)GetStandardAlertDefaultParams(&defaults, kStdCFStringAlertVersionOne); // cannot fail for it
        Request request;
        request.type = alertType;
        request.error = error;
        request.explanation = explanation;
        AddButtons(request, param ? *param : defaults);
        if (request.buttons.empty())
            AddButtons(request, defaults); // nobody could answer an alert without buttons
        return MakeAlert(request, outAlert);
    });
}

OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP filterProc, DialogItemIndex* outItemHit)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        CRef<CAlert> alert;
        {
            const CToolboxLock lock;
            alert = Share<CAlert>(inAlert);
        }
        if (!alert || filterProc)
            return paramErr;
        ShowWindow(alert->window);
        SelectWindow(alert->window);
        const bool ran = Loop::RunUntil([inAlert] { return IsOver(inAlert); });
        DialogItemIndex hit = 0;
        {
            const CToolboxLock lock;
            hit = alert->answered ? alert->hit : alert->unanswered;
        }
        DisposeDialog(inAlert);
        if (ran && outItemHit)
            *outItemHit = hit;
        return ran ? OSStatus{noErr} : OSStatus{kCVNoDesktopErr};
    });
}

OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamRec* param, UInt32 version)
{
    if (!param || version != kStdCFStringAlertVersionOne)
        return paramErr;
    *param = AlertStdCFStringAlertParamRec();
    param->version = version;
    param->defaultText = reinterpret_cast<CFStringRef>(static_cast<std::intptr_t>(kAlertDefaultOKText));
    param->defaultButton = kAlertStdAlertOKButton;
    return noErr;
}

WindowRef GetDialogWindow(DialogRef dialog)
{
    const CToolboxLock lock;
    const CAlert* const alert = Find<CAlert>(dialog);
    return alert && Find<CWindow>(alert->window) ? alert->window : nullptr;
}

void DisposeDialog(DialogRef theDialog)
{
    WindowRef window = nullptr;
    {
        const CToolboxLock lock;
        CAlert* const alert = Find<CAlert>(theDialog);
        if (!alert)
            return;
        window = alert->window;
        Handles().Forget(*alert);
    }
    DisposeWindow(window);
    Loop::Wake();
}
