// Panel.h
//
// The plug-in's face: two knobs, the logo and two buttons. Knows where each stands, what the pointer
// does to it and how it looks; windows are Window.h's business, what a button opens Ui.cpp's.
#pragma once

#include <cairo.h>

#include <array>
#include <functional>
#include <optional>

#include "Knob.h"

namespace quillet {

enum class Button { Logo, Info, Help };
constexpr int kKnobCount = 2;

/// What the panel asks of whoever owns it.
struct PanelActions {
    std::function<void(int knob, float value)> changed; ///< The user turned a knob.
    std::function<void(Button button)> pressed;         ///< Clicked: pressed and let go on it.
    std::function<DragKind()> dragKind;                 ///< Asked at the beginning of every drag.
};

/// All places are in points of the panel.
class CPanel {
public:
    static constexpr int kWidth = 340;
    static constexpr int kHeight = 210;

    explicit CPanel(PanelActions actions);

    /// Shows or hides what needs the product services: the logo stays as a picture.
    void OfferServices(bool offered);
    /// What the panel says about the way of dragging.
    void SetDragKind(DragKind kind);
    void SetValue(int knob, float value);
    float Value(int knob) const;
    /// Where the middle of a knob or a button is.
    Place PlaceOf(int knob) const;
    static Place PlaceOf(Button button);

    void PointerMoved(Place pointer, bool fine);
    void PointerPressed(Place pointer, bool twice);
    void PointerReleased(Place pointer);
    void PointerLeft();
    /// @param steps  upwards is more.
    void Scrolled(Place pointer, double steps, bool fine);

    /// Answers whether what is shown changed since it was drawn.
    bool IsStale() const { return m_stale; }
    /// Draws all of it; one unit of `cairo` is one point.
    void Draw(cairo_t* cairo);

private:
    struct Target {
        std::optional<int> knob;
        std::optional<Button> button;
        bool operator==(const Target& other) const { return knob == other.knob && button == other.button; }
    };
    Target TargetAt(Place pointer) const;
    void Hover(Place pointer);
    void Changed(int knob);
    void DrawKnob(cairo_t* cairo, int knob) const;
    void DrawButton(cairo_t* cairo, Button button) const;
    void DrawLogo(cairo_t* cairo) const;

    PanelActions m_actions;
    std::array<CKnob, kKnobCount> m_knobs;
    DragKind m_kind = DragKind::Circular;
    bool m_offered = false;
    Target m_hovered, m_held;
    bool m_stale = true;
};

} // namespace quillet
