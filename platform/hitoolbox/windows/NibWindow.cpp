// platform/hitoolbox/windows/NibWindow.cpp
//
// Nib references, and windows made of what a nib says.
#include <algorithm>

#include "platform/base/Guard.h"
#include "platform/base/RegularFile.h"
#include "platform/corefoundation/Bundle.h"
#include "platform/hitoolbox/nib/NibReader.h"
#include "platform/hitoolbox/windows/ControlCalls.h"
#include "platform/hitoolbox/windows/EditText.h"
#include <CVPlatform/CVPlatform.h>
#include <HIToolbox/IBCarbonRuntime.h>

namespace {

class CNib final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::Nib;
    explicit CNib(NibDocument contents) : CRecord(kKind), document(std::move(contents)) {}

    const NibDocument document;
};

OSStatus OpenNib(const std::string& folder, IBNibRef* outNibRef)
{
    std::vector<std::uint8_t> bytes;
    if (folder.empty() || ReadRegularFile(folder + "/objects.xib", kMaximumNibBytes, bytes) != 0)
        return kIBCarbonRuntimeCantFindNibFile;
    NibProblem problem;
    auto document = ReadNib({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, problem);
    if (!document)
        return kIBCarbonRuntimeCantFindNibFile;
    const auto nib = CRef<CNib>::Adopt(new CNib(std::move(*document)));
    const CToolboxLock lock;
    Handles().Register(*nib);
    *outNibRef = RefOf<IBNibRef>(*nib);
    return noErr;
}

// How a nib's classes are built; all others are plain panes.
constexpr struct {
    NibClass nib;
    ControlClass control;
} kClasses[] = {
    {NibClass::Button, ControlClass::PushButton},
    {NibClass::BevelButton, ControlClass::PushButton},
    {NibClass::RoundButton, ControlClass::PushButton},
    {NibClass::CheckBox, ControlClass::CheckBox},
    {NibClass::RadioButton, ControlClass::RadioButton},
    {NibClass::StaticText, ControlClass::StaticText},
    {NibClass::EditText, ControlClass::EditText},
    {NibClass::TextView, ControlClass::EditUnicodeText},
    {NibClass::ComboBox, ControlClass::EditUnicodeText},
    {NibClass::SearchField, ControlClass::EditUnicodeText},
    {NibClass::ImageView, ControlClass::ImageView},
    {NibClass::Picture, ControlClass::Picture},
    {NibClass::Icon, ControlClass::Icon},
    {NibClass::ImageWell, ControlClass::ImageWell},
    {NibClass::Separator, ControlClass::Separator},
    {NibClass::GroupBox, ControlClass::GroupBox},
    {NibClass::PopupButton, ControlClass::PopupButton},
    {NibClass::Slider, ControlClass::Slider},
    {NibClass::ProgressBar, ControlClass::ProgressBar},
    {NibClass::RadioGroup, ControlClass::RadioGroup},
};

ControlClass ClassOf(const NibControl& nib) noexcept
{
    if (nib.kind == NibClass::EditText && nib.isUnicode)
        return ControlClass::EditUnicodeText;
    for (const auto& one : kClasses) {
        if (one.nib == nib.kind)
            return one.control;
    }
    return ControlClass::UserPane;
}

TextFont FontOf(const NibControl& nib) noexcept
{
    switch (nib.fontStyle.value_or(0)) {
    case -2:
    case 1:
        return TextFont::Small;
    case -3:
    case 2:
        return TextFont::SmallBold;
    case -4:
    case 3:
        return TextFont::Views;
    case -5:
    case 109:
        return TextFont::Mini;
    case 4:
    case 107:
        return TextFont::SystemBold;
    default:
        break;
    }
    switch (nib.size) {
    case NibControlSize::Small:
        return TextFont::Small;
    case NibControlSize::Mini:
        return TextFont::Mini;
    default:
        return TextFont::System;
    }
}

Justification JustificationOf(std::int32_t just) noexcept
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

Rect RectOf(const NibRect& rect) noexcept
{
    return {rect.top, rect.left, rect.bottom, rect.right};
}

void FillText(CControl& control, const NibControl& nib)
{
    const auto text = __CFString::Create(nib.title);
    if (!text)
        return;
    if (control.controlClass == ControlClass::StaticText)
        control.text = text;
    else if (!control.IsEditText())
        control.title = text;
    else
        control.edit->SetText(*text);
}

void FillEdit(CControl& control, const NibControl& nib)
{
    control.edit->SetSingleLine(nib.isSingleLine || nib.kind == NibClass::ComboBox ||
                                nib.kind == NibClass::SearchField);
    if (nib.isPassword)
        control.edit->SetPassword(true);
    control.edit->locked = nib.readOnly;
}

void FillItems(CControl& control, const NibControl& nib)
{
    for (const NibMenuItem& item : nib.menu ? nib.menu->items : std::vector<NibMenuItem>())
        control.items.push_back(item.title);
    control.minimum = 1;
    control.maximum = std::max<SInt32>(1, static_cast<SInt32>(control.items.size()));
}

void FillValue(CControl& control, const NibControl& nib)
{
    switch (control.controlClass) {
    case ControlClass::CheckBox:
    case ControlClass::RadioButton:
        break;
    case ControlClass::PopupButton:
        FillItems(control, nib);
        break;
    default:
        control.minimum = std::min(nib.minimum, nib.maximum);
        control.maximum = std::max(nib.minimum, nib.maximum);
        break;
    }
    control.SetValue(nib.value);
}

// The buttons of a radio group are no objects of the nib; they fill its bounds, column after column.
void AddRadioButtons(CControl& group, const NibControl& nib)
{
    const int width = (group.bounds.right - group.bounds.left) / nib.columns;
    const int step = (group.bounds.bottom - group.bounds.top + nib.intercellHeight) / nib.rows;
    for (std::size_t number = 0; number < nib.radioTitles.size(); ++number) {
        const int column = static_cast<int>(number) / nib.rows;
        const int row = static_cast<int>(number) % nib.rows;
        const int left = group.bounds.left + column * width;
        const int top = group.bounds.top + row * step;
        const Rect bounds = {static_cast<short>(top), static_cast<short>(left),
                             static_cast<short>(top + std::max(step - nib.intercellHeight, 1)),
                             static_cast<short>(left + width)};
        const CRef<CControl> button = NewControl(ControlClass::RadioButton, bounds);
        button->title = __CFString::Create(nib.radioTitles[number]);
        button->font = group.font;
        button->autoToggle = true;
        Attach(*button, group);
    }
    group.SetValue(nib.value);
}

// The controls still to be built, so that a deep nib needs no deep stack.
struct Unbuilt {
    const NibControl* nib;
    CControl* parent;
};

CControl& Build(const NibControl& nib, CControl& parent)
{
    const CRef<CControl> control = NewControl(ClassOf(nib), RectOf(nib.bounds));
    control->id = {nib.signature, nib.id};
    control->command = nib.command;
    control->enabled = nib.enabled;
    control->visible = !nib.hidden;
    control->font = FontOf(nib);
    control->justification = JustificationOf(nib.justification);
    if (nib.foreColor)
        control->textColor = RGBColor{nib.foreColor->red, nib.foreColor->green, nib.foreColor->blue};
    control->autoToggle = nib.autoToggle;
    control->alpha = nib.alpha;
    control->scaleToFit = nib.scaleToFit;
    control->opaque = nib.opaque;
    control->indeterminate = nib.indeterminate;
    control->tickMarks = nib.tickMarks;
    if (control->IsEditText())
        FillEdit(*control, nib);
    FillText(*control, nib);
    FillValue(*control, nib);
    Attach(*control, parent);
    if (control->controlClass == ControlClass::RadioGroup)
        AddRadioButtons(*control, nib);
    return *control;
}

void BuildAll(const NibControl& root, CWindow& window)
{
    std::vector<Unbuilt> open;
    const auto addChildren = [&open](const NibControl& nib, CControl& parent) {
        for (auto child = nib.children.rbegin(); child != nib.children.rend(); ++child)
            open.push_back({&*child, &parent});
    };
    addChildren(root, *window.root);
    while (!open.empty()) {
        const Unbuilt next = open.back();
        open.pop_back();
        CControl& control = Build(*next.nib, *next.parent);
        if (next.nib->buttonType == NibButtonType::Default)
            window.defaultButton = control.Ref();
        if (next.nib->buttonType == NibButtonType::Cancel)
            window.cancelButton = control.Ref();
        addChildren(*next.nib, control);
    }
}

Placement PlacementOf(std::int32_t position) noexcept
{
    switch (position) {
    case 0:
    case 4:
    case 5:
    case 6:
    case 10:
        return Placement::Frame;
    case 1:
    case 3:
        return Placement::CentredOnScreen;
    case 2:
        return Placement::CentredOnOwner;
    default:
        return Placement::AlertOnScreen;
    }
}

// A resizable dialog is what Interface Builder writes when nobody thought about it; only document
// and floating windows may be.
WindowAttributes AttributesOf(const NibWindow& nib) noexcept
{
    const auto windowClass = static_cast<WindowClass>(nib.windowClass);
    const bool modal = windowClass >= kAlertWindowClass && windowClass <= kMovableModalWindowClass;
    const bool plain = modal || windowClass == kSheetWindowClass || windowClass == kPlainWindowClass;
    WindowAttributes attributes = kWindowNoAttributes;
    if (nib.hasCloseBox && !plain)
        attributes |= kWindowCloseBoxAttribute;
    if (nib.isResizable && !modal)
        attributes |= kWindowResizableAttribute;
    if (nib.standardHandler)
        attributes |= kWindowStandardHandlerAttribute;
    if (nib.compositing)
        attributes |= kWindowCompositingAttribute;
    return attributes;
}

// The content's place, with sides that a window may have.
Rect ContentOf(const NibRect& nib) noexcept
{
    const auto side = [](int begin, int end) {
        return static_cast<short>(std::min(begin + std::clamp(end - begin, 1, 16384), 32767));
    };
    Rect content = {std::min<short>(nib.top, 16000), std::min<short>(nib.left, 16000), 0, 0};
    content.bottom = side(content.top, content.top + (nib.bottom - nib.top));
    content.right = side(content.left, content.left + (nib.right - nib.left));
    return content;
}

WindowRef BuildWindow(const NibWindow& nib)
{
    const CRef<CWindow> window =
        Windows::Make(static_cast<WindowClass>(nib.windowClass), AttributesOf(nib), ContentOf(nib.content));
    WindowRef reference = nullptr;
    try {
        const CToolboxLock lock;
        reference = window->Ref();
        window->placement = PlacementOf(nib.position);
        if (auto title = __CFString::Create(nib.title))
            window->title = std::move(title);
        BuildAll(nib.root, *window);
        return reference;
    } catch (...) {
        DisposeWindow(reference);
        throw;
    }
}

} // namespace

OSStatus CreateNibReferenceWithCFBundle(CFBundleRef inBundle, CFStringRef inNibName, IBNibRef* outNibRef)
{
    if (outNibRef)
        *outNibRef = nullptr;
    if (!IsOfType(inBundle, TypeId::Bundle) || !inNibName || !outNibRef)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&] {
        return OpenNib(inBundle->FindResource(Utf8Of(inNibName), "nib", {}, ResourceOrder::LocalisedFirst), outNibRef);
    });
}

OSStatus CreateNibReference(CFStringRef inNibName, IBNibRef* outNibRef)
{
    if (outNibRef)
        *outNibRef = nullptr;
    const CFBundleRef bundle = CFBundleGetMainBundle();
    if (!bundle)
        return kIBCarbonRuntimeCantFindNibFile;
    return CreateNibReferenceWithCFBundle(bundle, inNibName, outNibRef);
}

OSStatus CreateWindowFromNib(IBNibRef inNibRef, CFStringRef inName, WindowRef* outWindow)
{
    if (outWindow)
        *outWindow = nullptr;
    if (!inName || !outWindow)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        CRef<CNib> nib;
        {
            const CToolboxLock lock;
            nib = Share<CNib>(inNibRef);
        }
        if (!nib)
            return paramErr;
        NibLookup result = NibLookup::NoSuchObject;
        const NibWindow* const window = nib->document.FindWindow(Utf8Of(inName), result);
        if (!window)
            return result == NibLookup::AnotherClass ? kIBCarbonRuntimeObjectNotOfRequestedType
                                                     : kIBCarbonRuntimeCantFindObject;
        if (!Windows::EnsureDesktop())
            return kCVNoDesktopErr;
        *outWindow = BuildWindow(*window);
        return noErr;
    });
}

void DisposeNibReference(IBNibRef inNibRef)
{
    const CToolboxLock lock;
    if (CNib* const nib = Find<CNib>(inNibRef))
        Handles().Forget(*nib);
}
