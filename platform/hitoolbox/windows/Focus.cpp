// platform/hitoolbox/windows/Focus.cpp
//
// The order of the Tab key is the order of the tree.
#include "platform/hitoolbox/windows/Focus.h"

#include <algorithm>

#include "platform/base/Guard.h"
#include "platform/hitoolbox/windows/EditText.h"
#include "platform/hitoolbox/windows/Surfaces.h"

namespace {

class CUserFocusTarget final : public CTarget {
public:
    CUserFocusTarget() : CTarget(RecordKind::Target) {}
    CRef<CTarget> Resolve(const CEvent&) override
    {
        CWindow* const window = Find<CWindow>(Windows::Active());
        CControl* const focus = window ? window->Focus() : nullptr;
        if (focus)
            return CRef<CTarget>::Share(focus);
        return window ? CRef<CTarget>::Share(window) : CTarget::Outwards();
    }
};

} // namespace

bool Focus::CanHave(const CControl& control) noexcept
{
    return TraitsOf(control.controlClass).takesFocus && control.IsShown() && control.IsUsable();
}

void Focus::Give(CWindow& window, CControl* control) noexcept
{
    const ControlRef reference = control ? control->Ref() : nullptr;
    if (window.focus == reference)
        return;
    window.focus = reference;
    Surfaces::Touched(window);
}

bool Focus::Advance(CWindow& window, bool backwards)
{
    std::vector<CControl*> stops = Flatten(*window.root);
    CControl* const current = window.Focus();
    stops.erase(std::remove_if(stops.begin(), stops.end(),
                               [current](const CControl* control) { return control != current && !CanHave(*control); }),
                stops.end());
    if (stops.empty())
        return false;
    if (backwards)
        std::reverse(stops.begin(), stops.end());
    const auto place = std::find(stops.begin(), stops.end(), current);
    const bool wraps = place == stops.end() || place + 1 == stops.end();
    CControl* const next = wraps ? stops.front() : *(place + 1);
    Give(window, next);
    if (next->edit && next != current)
        next->edit->SelectAll();
    return true;
}

CTarget& UserFocusTarget()
{
    static auto& target = *new CUserFocusTarget;
    if (target.Handle() == 0)
        Handles().Register(target);
    return target;
}

namespace {

template <typename Work>
OSErr WithWindow(WindowRef reference, Work&& work)
{
    return Guarded<OSErr>(memFullErr, [&]() -> OSErr {
        const CToolboxLock lock;
        CWindow* const window = Find<CWindow>(reference);
        return window ? work(*window) : OSErr{errInvalidWindowPtr};
    });
}

} // namespace

OSErr SetKeyboardFocus(WindowRef inWindow, ControlRef inControl, ControlFocusPart inPart)
{
    return WithWindow(inWindow, [&](CWindow& window) -> OSErr {
        CControl* const control = Find<CControl>(inControl);
        if (!control || control->window != &window)
            return controlHandleInvalidErr;
        if (inPart == kControlFocusNoPart) {
            if (window.focus == inControl)
                Focus::Give(window, nullptr);
            return noErr;
        }
        if (!Focus::CanHave(*control))
            return errCouldntSetFocus;
        Focus::Give(window, control);
        if (inPart == kControlFocusNextPart || inPart == kControlFocusPrevPart)
            (void)Focus::Advance(window, inPart == kControlFocusPrevPart);
        return noErr;
    });
}

OSErr GetKeyboardFocus(WindowRef inWindow, ControlRef* outControl)
{
    if (!outControl)
        return paramErr;
    *outControl = nullptr;
    return WithWindow(inWindow, [&](CWindow& window) -> OSErr {
        const CControl* const control = window.Focus();
        *outControl = control ? control->Ref() : nullptr;
        return noErr;
    });
}

OSErr AdvanceKeyboardFocus(WindowRef inWindow)
{
    return WithWindow(inWindow, [](CWindow& window) -> OSErr {
        return Focus::Advance(window, false) ? OSErr{noErr} : OSErr{errCouldntSetFocus};
    });
}

OSErr ReverseKeyboardFocus(WindowRef inWindow)
{
    return WithWindow(inWindow, [](CWindow& window) -> OSErr {
        return Focus::Advance(window, true) ? OSErr{noErr} : OSErr{errCouldntSetFocus};
    });
}
