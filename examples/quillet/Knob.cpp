// Knob.cpp
#include "Knob.h"

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

constexpr double kDegreesPerRadian = 57.295779513082321;
// Nearer to the centre than this an angle says nothing.
constexpr double kBlindRadius = 4.0;

// Degrees clockwise from upwards, -180 to 180.
double AngleOf(Place pointer, Place centre)
{
    return std::atan2(pointer.x - centre.x, centre.y - pointer.y) * kDegreesPerRadian;
}

bool IsBlind(Place pointer, Place centre)
{
    return std::hypot(pointer.x - centre.x, pointer.y - centre.y) < kBlindRadius;
}

} // namespace

double CKnob::Position() const
{
    return static_cast<double>((m_value - m_range.minimum) / (m_range.maximum - m_range.minimum));
}

void CKnob::SetPosition(double position)
{
    const double limited = std::clamp(position, 0.0, 1.0);
    m_value = m_range.minimum + static_cast<float>(limited) * (m_range.maximum - m_range.minimum);
}

void CKnob::BeginDrag(Place pointer, DragKind kind)
{
    m_dragging = true;
    m_kind = kind;
    m_last = pointer;
    m_travelled = Position();
}

void CKnob::Drag(Place pointer, bool fine)
{
    if (!m_dragging)
        return;
    double step = 0;
    if (m_kind == DragKind::Vertical) {
        step = (m_last.y - pointer.y) / kVerticalTravel;
    } else {
        if (IsBlind(pointer, m_centre))
            return; // the angle counts again from where the pointer leaves the middle
        if (!IsBlind(m_last, m_centre))
            step = std::remainder(AngleOf(pointer, m_centre) - AngleOf(m_last, m_centre), 360.0) / kSweepDegrees;
    }
    m_last = pointer;
    m_travelled += fine ? step / 10.0 : step;
    SetPosition(m_travelled);
}

} // namespace quillet
