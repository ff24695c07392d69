// platform/hitoolbox/windows/Behaviour.cpp
//
// Values change before anybody is told of the click.
#include "platform/hitoolbox/windows/Behaviour.h"

#include <algorithm>
#include <cmath>

#include "platform/hitoolbox/windows/Focus.h"
#include "platform/hitoolbox/windows/Notify.h"

namespace {

bool IsReady(const CControl& control) noexcept
{
    return control.IsShown() && control.IsUsable();
}

bool IsInGroup(const CControl& radio) noexcept
{
    return radio.controlClass == ControlClass::RadioButton && radio.parent &&
           radio.parent->controlClass == ControlClass::RadioGroup;
}

void Choose(CControl& radio)
{
    if (IsInGroup(radio)) {
        SInt32 number = 0;
        for (const CRef<CControl>& sibling : radio.parent->children) {
            number += sibling->controlClass == ControlClass::RadioButton ? 1 : 0;
            if (sibling.Get() == &radio)
                break;
        }
        radio.parent->SetValue(number);
        return;
    }
    radio.SetValue(kControlCheckBoxCheckedValue);
    if (!radio.parent)
        return;
    for (const CRef<CControl>& sibling : radio.parent->children) {
        if (sibling.Get() != &radio && sibling->controlClass == ControlClass::RadioButton && sibling->autoToggle)
            sibling->SetValue(kControlCheckBoxUncheckedValue);
    }
}

void ChangeByClick(CControl& control)
{
    switch (control.controlClass) {
    case ControlClass::CheckBox:
        if (control.autoToggle)
            control.SetValue(control.value == kControlCheckBoxCheckedValue ? 0 : 1);
        break;
    case ControlClass::RadioButton:
        if (control.autoToggle)
            Choose(control);
        break;
    case ControlClass::PopupButton:
        control.SetValue(control.value >= control.maximum ? control.minimum : control.value + 1);
        break;
    default:
        break;
    }
}

// The radio button `steps` further among the siblings that can be chosen.
CControl* Neighbour(CControl& radio, int steps)
{
    std::vector<CControl*> group;
    if (!radio.parent)
        return nullptr;
    for (const CRef<CControl>& sibling : radio.parent->children) {
        if (sibling->controlClass == ControlClass::RadioButton && IsReady(*sibling))
            group.push_back(sibling.Get());
    }
    const auto place = std::find(group.begin(), group.end(), &radio) - group.begin();
    const auto count = static_cast<std::ptrdiff_t>(group.size());
    return group[static_cast<std::size_t>(((place + steps) % count + count) % count)];
}

// Sends the hit of a control; the buttons of a radio group are parts of the group, which is told.
void SendHitOf(ControlRef reference, ControlPartCode part, UInt32 modifiers)
{
    {
        const CToolboxLock lock;
        const CControl* const control = Find<CControl>(reference);
        if (control && IsInGroup(*control))
            reference = control->parent->Ref();
    }
    (void)SendHit(reference, part, modifiers); // what the handlers made of it is theirs
}

} // namespace

bool TakesClicks(const CControl& control) noexcept
{
    return TraitsOf(control.controlClass).part != kControlNoPart ||
           (control.command != 0 && control.controlClass != ControlClass::RadioGroup);
}

bool IsVertical(const CControl& control) noexcept
{
    return control.bounds.bottom - control.bounds.top > control.bounds.right - control.bounds.left;
}

void SlideTo(CControl& slider, double x, double y) noexcept
{
    const Rect& bounds = slider.bounds;
    const double length = IsVertical(slider) ? bounds.bottom - bounds.top : bounds.right - bounds.left;
    const double along = IsVertical(slider) ? bounds.bottom - y : x - bounds.left;
    const double part = length > 0 ? std::clamp(along / length, 0.0, 1.0) : 0;
    const double range = static_cast<double>(slider.maximum) - slider.minimum;
    slider.SetValue(static_cast<SInt32>(std::lround(slider.minimum + part * std::max(range, 0.0))));
}

ControlPartCode Click(ControlRef reference, ControlPartCode part, UInt32 modifiers, Simulated simulated)
{
    CRef<CControl> control;
    {
        const CToolboxLock lock;
        CControl* const found = Find<CControl>(reference);
        if (!found || !TakesClicks(*found) || !IsReady(*found) || found->IsEditText())
            return kControlNoPart;
        if (part == kControlNoPart)
            part = TraitsOf(found->controlClass).part;
        if (part == kControlNoPart)
            part = kControlButtonPart; // a plain pane that carries a command
        control = CRef<CControl>::Share(found);
    }
    if (simulated == Simulated::Yes)
        Notify(*control, reference, kEventControlSimulateHit, 0);
    {
        const CToolboxLock lock;
        if (CControl* const found = Find<CControl>(reference))
            ChangeByClick(*found);
    }
    SendHitOf(reference, part, modifiers);
    return part;
}

void ChooseItem(ControlRef reference, SInt32 item, UInt32 modifiers)
{
    {
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(reference);
        if (!control || !IsReady(*control))
            return;
        control->SetValue(item);
    }
    (void)SendHit(reference, kControlMenuPart, modifiers);
}

bool Step(ControlRef reference, int steps, UInt32 modifiers)
{
    ControlRef changed = reference;
    {
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(reference);
        if (!control || !IsReady(*control))
            return false;
        const SInt32 before = control->value;
        switch (control->controlClass) {
        case ControlClass::Slider:
            control->SetValue(static_cast<SInt32>(
                std::clamp<std::int64_t>(std::int64_t{before} + steps, control->minimum, control->maximum)));
            break;
        case ControlClass::PopupButton:
            control->SetValue(before - steps); // up is the item before
            break;
        case ControlClass::RadioButton: {
            CControl* const other = Neighbour(*control, -steps);
            if (!other || other == control)
                return true;
            Choose(*other);
            if (other->window)
                Focus::Give(*other->window, other);
            changed = other->Ref();
            break;
        }
        default:
            return false;
        }
        if (changed == reference && control->value == before)
            return true;
    }
    ControlPartCode part = kControlNoPart;
    {
        const CToolboxLock lock;
        const CControl* const control = Find<CControl>(changed);
        part = control ? TraitsOf(control->controlClass).part : part;
    }
    SendHitOf(changed, part, modifiers);
    return true;
}
