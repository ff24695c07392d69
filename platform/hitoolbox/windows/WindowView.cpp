// platform/hitoolbox/windows/WindowView.cpp
//
// Copies the records of a window's visible controls.
#include "platform/hitoolbox/windows/WindowView.h"

#include "platform/hitoolbox/windows/Behaviour.h"
#include "platform/hitoolbox/windows/EditText.h"

namespace {

void CopyEdit(ControlView& view, const CEditText& edit)
{
    TextPart part = edit.ShownPart();
    view.text = std::move(part.text);
    view.concealed = edit.IsPassword();
    view.singleLine = edit.IsSingleLine();
    view.locked = edit.locked;
    view.selectionStart = part.selectionStart;
    view.selectionEnd = part.selectionEnd;
    view.caret = part.caret;
    view.scrollX = -part.x;
    view.scrollY = -part.y;
}

ControlView ViewOf(const CControl& control, const CWindow& window)
{
    const ControlRef reference = control.Ref();
    ControlView view;
    view.reference = reference;
    view.kind = control.controlClass;
    view.bounds = control.bounds;
    view.text = std::string(
        Utf8Of(control.controlClass == ControlClass::StaticText ? control.text.Get() : control.title.Get()));
    view.font = control.font;
    view.justification = control.justification;
    view.textColor = control.textColor;
    view.enabled = control.IsUsable();
    view.hovered = window.hovered == reference;
    view.pressed = control.hilite != kControlNoPart;
    view.focused = window.Focus() == &control;
    view.isDefault = window.defaultButton == reference;
    view.value = control.value;
    view.minimum = control.minimum;
    view.maximum = control.maximum;
    view.image = control.image;
    view.alpha = control.alpha;
    view.scaleToFit = control.scaleToFit;
    view.opaque = control.opaque;
    view.icon = control.icon;
    view.items = control.items;
    view.indeterminate = control.indeterminate;
    view.tickMarks = control.tickMarks;
    view.vertical = IsVertical(control);
    if (control.edit)
        CopyEdit(view, *control.edit);
    return view;
}

} // namespace

std::optional<WindowView> LookAt(WindowRef reference)
{
    const CToolboxLock lock;
    const CWindow* const window = Find<CWindow>(reference);
    if (!window || window->foreign != 0)
        return std::nullopt;
    WindowView view;
    view.reference = reference;
    view.windowClass = window->windowClass;
    view.title = std::string(Utf8Of(window->title.Get()));
    view.width = window->Width();
    view.height = window->Height();
    view.active = window->IsActive();
    for (const CControl* const control : Flatten(*window->root)) {
        if (control->IsShown())
            view.controls.push_back(ViewOf(*control, *window));
    }
    return view;
}
