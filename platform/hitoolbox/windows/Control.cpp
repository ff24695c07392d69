// platform/hitoolbox/windows/Control.cpp
//
// The tree of controls and the index of their identifiers.
#include "platform/hitoolbox/windows/Control.h"

#include <algorithm>

#include "platform/hitoolbox/windows/EditText.h"
#include "platform/hitoolbox/windows/Surfaces.h"
#include "platform/hitoolbox/windows/Window.h"

namespace {

// In the order of ControlClass.
constexpr ControlTraits kTraits[] = {
    {kControlKindRoot, kControlNoPart, false},
    {kControlKindPushButton, kControlButtonPart, true},
    {kControlKindCheckBox, kControlCheckBoxPart, true},
    {kControlKindRadioButton, kControlRadioButtonPart, true},
    {kControlKindStaticText, kControlNoPart, false},
    {kControlKindEditText, kControlEditTextPart, true},
    {kControlKindEditUnicodeText, kControlEditTextPart, true},
    {kControlKindHIImageView, kControlPicturePart, false},
    {kControlKindGroupBox, kControlNoPart, false},
    {kControlKindSeparator, kControlNoPart, false},
    {kControlKindUserPane, kControlNoPart, false},
    {kControlKindIcon, kControlPicturePart, false},
    {kControlKindPicture, kControlPicturePart, false},
    {kControlKindImageWell, kControlPicturePart, false},
    {kControlKindPopupButton, kControlMenuPart, true},
    {kControlKindSlider, kControlIndicatorPart, true},
    {kControlKindProgressBar, kControlNoPart, false},
    {kControlKindRadioGroup, kControlNoPart, false},
    {0, kControlNoPart, false},
};

std::uint64_t KeyOf(const ControlID& id) noexcept
{
    return (static_cast<std::uint64_t>(id.signature) << 32U) | static_cast<std::uint32_t>(id.id);
}

} // namespace

const ControlTraits& TraitsOf(ControlClass kind) noexcept
{
    return kTraits[static_cast<std::size_t>(kind)];
}

CControl::CControl(ControlClass kind) : CTarget(kKind), controlClass(kind)
{
    if (kind == ControlClass::EditText || kind == ControlClass::EditUnicodeText)
        edit = std::make_unique<CEditText>(*this);
    if (kind == ControlClass::CheckBox || kind == ControlClass::RadioButton)
        maximum = kControlCheckBoxMixedValue;
    else if (kind != ControlClass::UserPane)
        maximum = 1;
}

CControl::~CControl() = default;

CRef<CTarget> CControl::Outwards()
{
    if (parent)
        return CRef<CTarget>::Share(parent);
    return window ? CRef<CTarget>::Share(window) : CTarget::Outwards();
}

bool CControl::IsShown() const noexcept
{
    const CControl* control = this;
    while (control && control->visible)
        control = control->parent;
    return control == nullptr;
}

bool CControl::IsUsable() const noexcept
{
    const CControl* control = this;
    while (control && control->enabled)
        control = control->parent;
    return control == nullptr;
}

bool CControl::IsIn(const CControl& other) const noexcept
{
    const CControl* control = this;
    while (control && control != &other)
        control = control->parent;
    return control != nullptr;
}

void CControl::SetValue(SInt32 newValue) noexcept
{
    value = newValue < minimum ? minimum : newValue > maximum ? maximum : newValue;
    if (controlClass == ControlClass::RadioGroup) {
        SInt32 number = 0;
        for (const CRef<CControl>& child : children) {
            if (child->controlClass == ControlClass::RadioButton)
                child->value = ++number == value ? kControlCheckBoxCheckedValue : kControlCheckBoxUncheckedValue;
        }
    }
    Touch();
}

void CControl::MoveBy(int right, int down) noexcept
{
    const auto limited = [](int place) {
        return static_cast<short>(std::clamp(place, -32768, 32767));
    };
    for (CControl* const control : Flatten(*this)) {
        Rect& moved = control->bounds;
        moved = {limited(moved.top + down), limited(moved.left + right), limited(moved.bottom + down),
                 limited(moved.right + right)};
    }
}

void CControl::Touch() noexcept
{
    if (window)
        Surfaces::Touched(*window);
}

std::vector<CControl*> Flatten(CControl& top)
{
    std::vector<CControl*> flat;
    std::vector<CControl*> open = {&top};
    while (!open.empty()) {
        CControl* const control = open.back();
        open.pop_back();
        flat.push_back(control);
        for (auto child = control->children.rbegin(); child != control->children.rend(); ++child)
            open.push_back(child->Get());
    }
    return flat;
}

namespace {

void Index(CWindow& window, CControl& control)
{
    if (const std::uint64_t key = KeyOf(control.id))
        window.byId[key].push_back(&control);
}

void Unindex(CWindow& window, CControl& control) noexcept
{
    const auto found = window.byId.find(KeyOf(control.id));
    if (found == window.byId.end())
        return;
    auto& controls = found->second;
    controls.erase(std::remove(controls.begin(), controls.end(), &control), controls.end());
    if (controls.empty())
        window.byId.erase(found);
}

} // namespace

void Attach(CControl& control, CControl& parent)
{
    parent.children.push_back(CRef<CControl>::Share(&control));
    control.parent = &parent;
    for (CControl* const one : Flatten(control)) {
        one->window = parent.window;
        if (parent.window)
            Index(*parent.window, *one);
    }
    parent.Touch();
}

CRef<CControl> Detach(CControl& control) noexcept
{
    control.Touch();
    CWindow* const window = control.window;
    for (CControl* const one : Flatten(control)) {
        if (window)
            Unindex(*window, *one);
        one->window = nullptr;
    }
    CRef<CControl> held;
    if (CControl* const parent = control.parent) {
        const auto place = std::find_if(parent->children.begin(), parent->children.end(),
                                        [&control](const CRef<CControl>& child) { return child.Get() == &control; });
        held = std::move(*place);
        parent->children.erase(place);
        control.parent = nullptr;
    }
    return held;
}

void Retire(CControl& control) noexcept
{
    control.RemoveAllHandlers();
    for (const CRef<CTrackingArea>& area : control.areas)
        Handles().Forget(*area);
    control.areas.clear();
    Handles().Forget(control);
}

CRef<CControl> NewControl(ControlClass kind, const Rect& bounds)
{
    auto control = CRef<CControl>::Adopt(new CControl(kind));
    control->bounds = bounds;
    Handles().Register(*control);
    return control;
}

CControl* CWindow::FindById(const ControlID& id) const noexcept
{
    const auto found = byId.find(KeyOf(id));
    return found == byId.end() ? nullptr : found->second.front();
}

void SetIdentifier(CControl& control, const ControlID& id)
{
    if (control.window)
        Unindex(*control.window, control);
    control.id = id;
    if (control.window)
        Index(*control.window, control);
}
