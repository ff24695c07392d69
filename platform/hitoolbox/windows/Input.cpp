// platform/hitoolbox/windows/Input.cpp
//
// Each input first looks records up with the lock held, then acts without it: handlers may dispose
// of anything, so nothing that was found before is used after.
#include "platform/hitoolbox/windows/Input.h"

#include <cmath>
#include <unordered_map>

#include "platform/base/Guard.h"
#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/windows/Behaviour.h"
#include "platform/hitoolbox/windows/EditText.h"
#include "platform/hitoolbox/windows/Focus.h"
#include "platform/hitoolbox/windows/Menu.h"
#include "platform/hitoolbox/windows/Notify.h"
#include "platform/hitoolbox/windows/Surfaces.h"

namespace {

constexpr double kDoubleClickSeconds = 0.4;
constexpr double kDoubleClickDistance = 4; // points
constexpr int kEditFrame = 3;              // the frame of edit text is drawn outside its bounds

struct Place {
    double x, y; // points from the top left of the window's content
};

bool Contains(const CControl& control, Place at) noexcept
{
    const int outset = control.IsEditText() ? kEditFrame : 0;
    const Rect& bounds = control.bounds;
    return at.x >= bounds.left - outset && at.x < bounds.right + outset && at.y >= bounds.top - outset &&
           at.y < bounds.bottom + outset;
}

// The front control at a place that takes clicks; null too where that one is disabled.
CControl* ControlAt(CWindow& window, Place at)
{
    CControl* front = nullptr;
    for (CControl* const control : Flatten(*window.root)) {
        if (TakesClicks(*control) && Contains(*control, at) && control->IsShown())
            front = control;
    }
    return front && front->IsUsable() ? front : nullptr;
}

UInt32 ModifiersOf(unsigned modifiers) noexcept
{
    constexpr UInt32 kCommandKey = 0x100;
    constexpr UInt32 kShiftKey = 0x200;
    constexpr UInt32 kOptionKey = 0x800;
    UInt32 bits = 0;
    bits |= (modifiers & kModifierControl) != 0 ? kCommandKey : 0;
    bits |= (modifiers & kModifierShift) != 0 ? kShiftKey : 0;
    bits |= (modifiers & kModifierAlt) != 0 ? kOptionKey : 0;
    return bits;
}

struct Crossing {
    CRef<CControl> control;
    HIViewTrackingAreaRef area;
    UInt32 kind;
};

// Notes which tracking areas the pointer entered and left; a null place is outside of all.
std::vector<Crossing> NoteCrossings(CWindow& window, const Place* at)
{
    std::vector<Crossing> crossings;
    for (CControl* const control : Flatten(*window.root)) {
        for (const CRef<CTrackingArea>& area : control->areas) {
            const bool inside = at && control->IsShown() && Contains(*control, *at);
            if (inside == area->inside)
                continue;
            area->inside = inside;
            const UInt32 kind = inside ? kEventControlTrackingAreaEntered : kEventControlTrackingAreaExited;
            crossings.push_back({CRef<CControl>::Share(control), RefOf<HIViewTrackingAreaRef>(*area), kind});
        }
    }
    return crossings;
}

CursorShape CursorFor(const CControl* control) noexcept
{
    if (control && control->IsEditText())
        return CursorShape::Text;
    const bool link = control && control->controlClass == ControlClass::ImageView && control->command != 0;
    return link ? CursorShape::Hand : CursorShape::Arrow;
}

class CInput final : public IInputSink {
public:
    void PointerEntered(const PointerInput& input) override { PointerMoved(input); }
    void PointerMoved(const PointerInput& input) override
    {
        Handle([&] { Move(input); });
    }
    void PointerLeft(SurfaceId surface) override
    {
        Handle([&] { Leave(surface); });
    }
    void PointerPressed(const PointerInput& input) override
    {
        Handle([&] { Press(input); });
    }
    void PointerReleased(const PointerInput& input) override
    {
        Handle([&] { Release(input); });
    }
    void Scrolled(const PointerInput& input, double x, double y) override
    {
        Handle([&] { Scroll(input, x, y); });
    }
    void KeyPressed(const KeyInput& input) override
    {
        Handle([&] { PressKey(input); });
    }
    void TextEntered(SurfaceId surface, std::string_view text) override
    {
        Handle([&] { EnterText(surface, text); });
    }
    void FocusGained(SurfaceId surface) override
    {
        Handle([&] { GainFocus(surface); });
    }
    void FocusLost(SurfaceId surface) override
    {
        Handle([&] { LoseFocus(surface); });
    }
    void CloseRequested(SurfaceId surface) override
    {
        Handle([&] { RequestClose(surface); });
    }
    void Resized(SurfaceId surface, int width, int height) override
    {
        Handle([&] { Resize(surface, width, height); });
    }
    void Exposed(SurfaceId surface, const PixelRect&) override
    {
        Handle([&] { Damage(surface); });
    }
    void SurfaceLost(SurfaceId surface) override
    {
        Handle([&] { Lose(surface); });
    }
    void TextReceived(std::uint32_t request, std::string_view text) override
    {
        Handle([&] { Receive(request, text); });
    }
    void ScaleChanged(SurfaceId surface) override
    {
        Handle([&] { Rescale(surface); });
    }
    void AppearanceChanged() override
    {
        Handle([&] { DamageAll(); });
    }
    void DeadlineReached() override
    {
        Handle([] { Loop::DoWhatIsDue(); });
    }
    void Woken() override
    {
        Handle([] { Loop::DoWhatIsDue(); });
    }

    void Request(ControlRef control, TextExchange where);

private:
    // Input arrives from whatever main loop the process has: no exception may reach it, and the
    // screen is to follow at once.
    template <typename Work>
    void Handle(Work&& work)
    {
        Loop::Claim();
        Guarded(0, [&] {
            work();
            return 0;
        });
        Surfaces::SyncAndPaint();
    }

    void Move(const PointerInput& input);
    void Leave(SurfaceId surface);
    void Press(const PointerInput& input);
    void PressInEdit(CControl& control, const PointerInput& input, Place at);
    bool OpenMenu(ControlRef button);
    void Release(const PointerInput& input);
    void Scroll(const PointerInput& input, double x, double y);
    void PressKey(const KeyInput& input);
    void EnterText(SurfaceId surface, std::string_view text);
    void GainFocus(SurfaceId surface);
    void LoseFocus(SurfaceId surface);
    void RequestClose(SurfaceId surface);
    void Resize(SurfaceId surface, int width, int height);
    void Damage(SurfaceId surface);
    void DamageAll();
    void Lose(SurfaceId surface);
    void Receive(std::uint32_t request, std::string_view text);
    void Rescale(SurfaceId surface);

    CWindow* OpenWindow(SurfaceId surface);
    void Track(SurfaceId surface, const Place* at, unsigned modifiers);
    void Drag(CWindow& window, Place at);
    void SetCursor(SurfaceId surface, CursorShape shape);

    // Event-loop thread only.
    ControlRef m_pressed = nullptr; // what the left button went down on
    bool m_inside = false;          // the pointer is over it
    double m_clickTime = -1;
    Place m_clickPlace = {};
    SurfaceId m_clickSurface = 0;
    int m_clicks = 0;
    SurfaceId m_cursorSurface = 0;
    CursorShape m_cursor = CursorShape::Arrow;
    std::unordered_map<std::uint32_t, ControlRef> m_requests;
    std::uint32_t m_lastRequest = 0;
};

CInput& TheInput()
{
    static auto& input = *new CInput;
    return input;
}

Place PlaceOf(const CWindow& window, const PointerInput& input) noexcept
{
    return {input.x / window.scale, input.y / window.scale};
}

// The window of a surface, where it takes input; with the lock held. A modal window that takes the
// input away comes to the front instead.
CWindow* CInput::OpenWindow(SurfaceId surface)
{
    CWindow* const window = Surfaces::WindowOf(surface);
    if (!window || !window->visible || window->disposing)
        return nullptr;
    if (!Windows::BlockerOf(*window))
        return window;
    Windows::Select(*window); // which selects the blocker
    return nullptr;
}

void CInput::SetCursor(SurfaceId surface, CursorShape shape)
{
    IDesktop* const desktop = Desktop::Current();
    if (!desktop || (m_cursorSurface == surface && m_cursor == shape))
        return;
    m_cursorSurface = surface;
    m_cursor = shape;
    desktop->SetCursor(surface, shape);
}

void CInput::Track(SurfaceId surface, const Place* at, unsigned modifiers)
{
    std::vector<Crossing> crossings;
    CursorShape cursor = CursorShape::Arrow;
    {
        const CToolboxLock lock;
        CWindow* const window = Surfaces::WindowOf(surface);
        if (!window || window->disposing)
            return;
        const Place* const inside = at && window->visible && !Windows::BlockerOf(*window) ? at : nullptr;
        crossings = NoteCrossings(*window, inside);
        const CControl* const hovered = inside ? ControlAt(*window, *inside) : nullptr;
        const ControlRef reference = hovered ? hovered->Ref() : nullptr;
        if (window->hovered != reference)
            Surfaces::Touched(*window);
        window->hovered = reference;
        cursor = CursorFor(hovered);
    }
    SetCursor(surface, cursor);
    const CGPoint where = {static_cast<CGFloat>(at ? at->x : -1), static_cast<CGFloat>(at ? at->y : -1)};
    for (const Crossing& crossing : crossings)
        NotifyTracking(*crossing.control, crossing.area, crossing.kind, where, ModifiersOf(modifiers));
}

void CInput::Drag(CWindow& window, Place at)
{
    CControl* const pressed = Find<CControl>(m_pressed);
    if (!pressed || pressed->window != &window)
        return;
    if (pressed->IsEditText()) {
        pressed->edit->ClickAt(at.x, at.y, m_clicks, true);
    } else if (pressed->controlClass == ControlClass::Slider) {
        SlideTo(*pressed, at.x, at.y);
    } else {
        m_inside = Contains(*pressed, at);
        pressed->hilite = m_inside ? TraitsOf(pressed->controlClass).part : ControlPartCode{kControlNoPart};
    }
    pressed->Touch();
}

void CInput::Move(const PointerInput& input)
{
    if (Menu::TakeMove(input))
        return;
    Place at = {};
    {
        const CToolboxLock lock;
        CWindow* const window = Surfaces::WindowOf(input.surface);
        if (!window)
            return;
        at = PlaceOf(*window, input);
        Drag(*window, at);
    }
    Track(input.surface, &at, input.modifiers);
}

void CInput::Leave(SurfaceId surface)
{
    Track(surface, nullptr, 0);
}

void CInput::PressInEdit(CControl& control, const PointerInput& input, Place at)
{
    Focus::Give(*control.window, &control);
    control.edit->ClickAt(at.x, at.y, m_clicks, (input.modifiers & kModifierShift) != 0);
    control.Touch();
}

void CInput::Press(const PointerInput& input)
{
    if (Menu::TakePress(input))
        return;
    Move(input);
    ControlRef paste = nullptr;
    ControlRef menu = nullptr;
    {
        const CToolboxLock lock;
        CWindow* const window = OpenWindow(input.surface);
        if (!window)
            return;
        if (!window->IsActive())
            Windows::Select(*window);
        const Place at = PlaceOf(*window, input);
        const bool again = input.time - m_clickTime <= kDoubleClickSeconds && m_clickSurface == input.surface &&
                           std::hypot(at.x - m_clickPlace.x, at.y - m_clickPlace.y) <= kDoubleClickDistance;
        m_clicks = again ? m_clicks + 1 : 1;
        m_clickTime = input.time;
        m_clickPlace = at;
        m_clickSurface = input.surface;
        CControl* const control = ControlAt(*window, at);
        if (!control || input.button == PointerButton::Right)
            return;
        if (input.button == PointerButton::Middle) {
            if (control->IsEditText()) {
                PressInEdit(*control, input, at);
                paste = control->Ref();
            }
        } else {
            m_pressed = control->Ref();
            m_inside = true;
            if (control->IsEditText())
                PressInEdit(*control, input, at);
            else
                Drag(*window, at);
            if (control->controlClass == ControlClass::PopupButton)
                menu = m_pressed;
        }
    }
    if (menu && OpenMenu(menu))
        return;
    if (paste)
        Request(paste, TextExchange::Selection);
}

// Opens a pop-up button's menu, which takes all further input.
bool CInput::OpenMenu(ControlRef button)
{
    if (!Menu::Open(button))
        return false; // the click steps through the items instead
    m_pressed = nullptr;
    const CToolboxLock lock;
    if (CControl* const control = Find<CControl>(button)) {
        control->hilite = kControlNoPart;
        control->Touch();
    }
    return true;
}

void CInput::Release(const PointerInput& input)
{
    if (Menu::TakeRelease(input, ModifiersOf(input.modifiers)))
        return;
    Move(input);
    if (input.button != PointerButton::Left || !m_pressed)
        return;
    const ControlRef pressed = m_pressed;
    m_pressed = nullptr;
    bool offers = false;
    bool slides = false;
    {
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(pressed);
        if (!control || !control->window || control->window->disposing)
            return;
        control->hilite = kControlNoPart;
        control->Touch();
        offers = control->IsEditText();
        slides = control->controlClass == ControlClass::Slider;
        if (!control->window->visible || Windows::BlockerOf(*control->window))
            return;
    }
    if (offers)
        OfferSelection(pressed);
    else if (slides || m_inside)
        (void)Click(pressed, kControlNoPart, ModifiersOf(input.modifiers), Simulated::No);
}

void CInput::Scroll(const PointerInput& input, double x, double y)
{
    if (Menu::TakeScroll(input, y))
        return;
    ControlRef stepped = nullptr;
    {
        const CToolboxLock lock;
        CWindow* const window = Surfaces::WindowOf(input.surface);
        if (!window || !window->visible || Windows::BlockerOf(*window))
            return;
        CControl* const control = ControlAt(*window, PlaceOf(*window, input));
        if (!control)
            return;
        if (control->IsEditText()) {
            control->edit->ScrollBy(x, y);
            control->Touch();
            return;
        }
        stepped = control->Ref();
    }
    const int steps = y > 0 ? -1 : y < 0 ? 1 : 0;
    if (steps != 0)
        (void)Step(stepped, steps, ModifiersOf(input.modifiers));
}

// How far a key moves a value; 0 for other keys.
int StepsOf(std::uint32_t symbol) noexcept
{
    switch (symbol) {
    case kKeyUp:
    case kKeyRight:
        return 1;
    case kKeyDown:
    case kKeyLeft:
        return -1;
    case kKeyPageUp:
        return 10;
    case kKeyPageDown:
        return -10;
    default:
        return 0;
    }
}

void CInput::PressKey(const KeyInput& input)
{
    if (Menu::TakeKey(input, ModifiersOf(input.modifiers)))
        return;
    ControlRef focus = nullptr;
    ControlRef button = nullptr;
    bool edits = false;
    bool popsUp = false;
    const unsigned shortcuts = input.modifiers & (kModifierControl | kModifierAlt | kModifierSuper);
    const bool tab = input.symbol == kKeyTab || input.symbol == kKeyBackTab;
    const bool confirms = input.symbol == kKeyReturn || input.symbol == kKeyKeypadEnter;
    {
        const CToolboxLock lock;
        CWindow* const window = OpenWindow(input.surface);
        if (!window)
            return;
        if (tab && shortcuts == 0) {
            const bool backwards = input.symbol == kKeyBackTab || (input.modifiers & kModifierShift) != 0;
            (void)Focus::Advance(*window, backwards); // nothing to go to: the key does nothing
            return;
        }
        if (CControl* const control = window->Focus()) {
            focus = control->Ref();
            edits = control->IsEditText();
            popsUp = control->controlClass == ControlClass::PopupButton;
        }
        button = confirms ? window->defaultButton : input.symbol == kKeyEscape ? window->cancelButton : nullptr;
    }
    if (edits && EditByKey(focus, input))
        return;
    if (confirms || input.symbol == kKeyEscape) {
        if (button)
            (void)Click(button, kControlNoPart, ModifiersOf(input.modifiers), Simulated::No);
        return;
    }
    if (!focus || edits || shortcuts != 0)
        return;
    if (input.symbol == ' ' && popsUp && OpenMenu(focus))
        return;
    if (input.symbol == ' ')
        (void)Click(focus, kControlNoPart, ModifiersOf(input.modifiers), Simulated::No);
    else if (const int steps = StepsOf(input.symbol))
        (void)Step(focus, steps, ModifiersOf(input.modifiers));
}

void CInput::EnterText(SurfaceId surface, std::string_view text)
{
    ControlRef focus = nullptr;
    {
        const CToolboxLock lock;
        CWindow* const window = OpenWindow(surface);
        const CControl* const control = window ? window->Focus() : nullptr;
        if (!control || !control->IsEditText())
            return;
        focus = control->Ref();
    }
    TypeText(focus, text);
}

void CInput::GainFocus(SurfaceId surface)
{
    const CToolboxLock lock;
    CWindow* const window = Surfaces::WindowOf(surface);
    if (!window)
        return;
    if (Windows::BlockerOf(*window))
        Windows::Select(*window);
    else
        Windows::SetActive(window->Ref());
}

void CInput::LoseFocus(SurfaceId surface)
{
    Menu::TakeFocusLoss(surface);
    const CToolboxLock lock;
    const CWindow* const window = Surfaces::WindowOf(surface);
    if (window && Windows::Active() == window->Ref())
        Windows::SetActive(nullptr);
}

void CInput::RequestClose(SurfaceId surface)
{
    CRef<CWindow> window;
    WindowRef reference = nullptr;
    {
        const CToolboxLock lock;
        window = CRef<CWindow>::Share(OpenWindow(surface));
        if (!window)
            return;
        reference = window->Ref();
    }
    SendCloseRequest(*window, reference);
}

void CInput::Resize(SurfaceId surface, int width, int height)
{
    const CToolboxLock lock;
    CWindow* const window = Surfaces::WindowOf(surface);
    if (!window)
        return;
    const auto points = [window](int pixels) {
        return static_cast<int>(std::lround(std::clamp(pixels / window->scale, 1.0, 16384.0)));
    };
    const auto limited = [](int place) {
        return static_cast<short>(std::min(place, 32767));
    };
    window->content.right = limited(window->content.left + points(width));
    window->content.bottom = limited(window->content.top + points(height));
    window->root->bounds.right = static_cast<short>(window->Width());
    window->root->bounds.bottom = static_cast<short>(window->Height());
    window->damaged = true;
    Surfaces::Touched(*window);
}

void CInput::Damage(SurfaceId surface)
{
    Menu::TakeExposure(surface);
    const CToolboxLock lock;
    if (CWindow* const window = Surfaces::WindowOf(surface)) {
        window->damaged = true;
        Surfaces::Touched(*window);
    }
}

void CInput::DamageAll()
{
    Menu::TakeFocusLoss(0); // it would have another size with another font
    const CToolboxLock lock;
    for (CWindow* const window : Windows::Stack()) {
        window->damaged = true;
        Surfaces::Touched(*window);
    }
}

void CInput::Lose(SurfaceId surface)
{
    Menu::TakeLoss(surface);
    WindowRef reference = nullptr;
    {
        const CToolboxLock lock;
        const CWindow* const window = Surfaces::WindowOf(surface);
        if (!window)
            return;
        reference = window->Ref();
    }
    DisposeWindow(reference);
}

void CInput::Rescale(SurfaceId surface)
{
    Menu::TakeFocusLoss(0); // it has the size and place of the scale before
    IDesktop* const desktop = Desktop::Current();
    const double scale = desktop ? desktop->ScaleOf(surface) : 1;
    const CToolboxLock lock;
    CWindow* const window = Surfaces::WindowOf(surface);
    if (!window || scale <= 0)
        return;
    window->scale = scale;
    window->sizeChanged = true;
    window->damaged = true;
    Surfaces::Changed(*window);
    Surfaces::Touched(*window);
}

void CInput::Request(ControlRef control, TextExchange where)
{
    IDesktop* const desktop = Desktop::Current();
    if (!desktop)
        return;
    m_requests[++m_lastRequest] = control;
    desktop->RequestText(where, m_lastRequest);
}

void CInput::Receive(std::uint32_t request, std::string_view text)
{
    const auto found = m_requests.find(request);
    if (found == m_requests.end())
        return;
    const ControlRef control = found->second;
    m_requests.erase(found);
    PasteText(control, text);
}

} // namespace

IInputSink& InputSink()
{
    return TheInput();
}

void RequestPaste(ControlRef control, TextExchange where)
{
    TheInput().Request(control, where);
}
