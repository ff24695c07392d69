// Knob.h
//
// One knob as a model: its value and what a drag makes of it. How it looks stands in Panel.cpp.
#pragma once

#include "Effect.h"

namespace quillet {

/// A place in points, y downwards.
struct Place {
    double x, y;
};

/// How a drag turns a knob; the user's choice for all of the maker's plug-ins.
enum class DragKind { Circular, Vertical };

/// From its lowest value at the lower left, a knob turns this far to the right, in degrees.
constexpr double kSweepDegrees = 270.0;
/// How far a vertical drag goes over the whole range, in points; ten times as far with fine steps.
constexpr double kVerticalTravel = 200.0;

class CKnob {
public:
    CKnob(const Range& range, Place centre) : m_range(range), m_centre(centre), m_value(range.initial) {}

    float Value() const { return m_value; }
    /// Sets the value, moved into the range.
    void SetValue(float value) { m_value = m_range.Clamp(value); }
    void SetInitialValue() { m_value = m_range.initial; }
    /// Answers where in its range the value is, 0 to 1.
    double Position() const;
    void SetPosition(double position);
    Place Centre() const { return m_centre; }
    const Range& Limits() const { return m_range; }

    /// Begins a drag: the value does not jump to the pointer.
    void BeginDrag(Place pointer, DragKind kind);
    /// Turns the knob after the pointer; does nothing outside a drag.
    /// @param fine  a tenth as far.
    void Drag(Place pointer, bool fine);
    void EndDrag() { m_dragging = false; }
    bool IsDragging() const { return m_dragging; }

private:
    Range m_range;
    Place m_centre;
    float m_value;
    bool m_dragging = false;
    DragKind m_kind = DragKind::Circular;
    Place m_last{};         // the pointer
    double m_travelled = 0; // position, not limited: a pointer that overshot has to come back first
};

} // namespace quillet
