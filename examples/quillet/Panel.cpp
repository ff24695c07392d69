// Panel.cpp
#include "Panel.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace quillet {

namespace {

struct Colour {
    double red, green, blue;
};
constexpr Colour kTop = {0.165, 0.180, 0.210};
constexpr Colour kBottom = {0.110, 0.120, 0.145};
constexpr Colour kText = {0.930, 0.940, 0.955};
constexpr Colour kFaint = {0.560, 0.590, 0.640};
constexpr Colour kTrack = {0.250, 0.270, 0.310};
constexpr Colour kAccent = {0.965, 0.640, 0.250};
constexpr Colour kRaised = {0.225, 0.245, 0.285};

constexpr double kPi = 3.14159265358979323846;
constexpr double kKnobRadius = 30.0;
constexpr double kReach = 40.0; // the pointer need not hit the knob exactly
constexpr double kScrollStep = 0.02;

struct Area {
    double x, y, width, height;
    bool Holds(Place place) const
    {
        return place.x >= x && place.x < x + width && place.y >= y && place.y < y + height;
    }
};
constexpr struct {
    Button button;
    Area area;
    const char* title;
} kButtons[] = {
    {Button::Logo, {14, 12, 36, 32}, nullptr},
    {Button::Info, {202, 16, 58, 24}, "Info"},
    {Button::Help, {268, 16, 58, 24}, "Help"},
};
constexpr struct {
    Place centre;
    const char* title;
    const Range* range;
} kKnobs[kKnobCount] = {
    {{102, 112}, "GAIN", &kGainRange},
    {{238, 112}, "TONE", &kToneRange},
};

const Area& AreaOf(Button button)
{
    return kButtons[static_cast<int>(button)].area;
}

void SetColour(cairo_t* cairo, const Colour& colour, double alpha = 1.0)
{
    cairo_set_source_rgba(cairo, colour.red, colour.green, colour.blue, alpha);
}

void DrawText(cairo_t* cairo, const std::string& text, double x, double y, double size, double align, bool bold)
{
    cairo_select_font_face(cairo, "Sans", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo, size);
    cairo_text_extents_t extents;
    cairo_text_extents(cairo, text.c_str(), &extents);
    cairo_move_to(cairo, x - align * extents.x_advance, y);
    cairo_show_text(cairo, text.c_str());
    cairo_new_path(cairo); // else the next arc is joined to where the text ended
}

void RoundedRectangle(cairo_t* cairo, const Area& area, double radius)
{
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, area.x + area.width - radius, area.y + radius, radius, -kPi / 2, 0);
    cairo_arc(cairo, area.x + area.width - radius, area.y + area.height - radius, radius, 0, kPi / 2);
    cairo_arc(cairo, area.x + radius, area.y + area.height - radius, radius, kPi / 2, kPi);
    cairo_arc(cairo, area.x + radius, area.y + radius, radius, kPi, 1.5 * kPi);
    cairo_close_path(cairo);
}

// Cairo's angle, clockwise from the right, of a position in a knob's range.
double AngleOf(double position)
{
    return (-90.0 - kSweepDegrees / 2.0 + position * kSweepDegrees) * kPi / 180.0;
}

std::string ValueText(int knob, float value)
{
    char text[32];
    if (knob == 0)
        std::snprintf(text, sizeof text, std::fabs(value) < 0.05F ? "0.0 dB" : "%+.1f dB", static_cast<double>(value));
    else if (std::fabs(value) < 0.005F)
        return "flat";
    else
        std::snprintf(text, sizeof text, "%.0f %% %s", std::fabs(static_cast<double>(value)) * 100.0,
                      value < 0 ? "dark" : "bright");
    return text;
}

} // namespace

CPanel::CPanel(PanelActions actions)
    : m_actions(std::move(actions)),
      m_knobs{CKnob(*kKnobs[0].range, kKnobs[0].centre), CKnob(*kKnobs[1].range, kKnobs[1].centre)}
{
}

void CPanel::OfferServices(bool offered)
{
    m_offered = offered;
    m_stale = true;
}

void CPanel::SetDragKind(DragKind kind)
{
    m_stale = m_stale || kind != m_kind;
    m_kind = kind;
}

void CPanel::SetValue(int knob, float value)
{
    CKnob& turned = m_knobs[static_cast<std::size_t>(knob)];
    if (turned.IsDragging())
        return; // the user's hand counts, not the host's echo of what it did before
    turned.SetValue(value);
    m_stale = true;
}

float CPanel::Value(int knob) const
{
    return m_knobs[static_cast<std::size_t>(knob)].Value();
}

Place CPanel::PlaceOf(int knob) const
{
    return m_knobs[static_cast<std::size_t>(knob)].Centre();
}

Place CPanel::PlaceOf(Button button)
{
    const Area& area = AreaOf(button);
    return {area.x + area.width / 2, area.y + area.height / 2};
}

CPanel::Target CPanel::TargetAt(Place pointer) const
{
    for (int knob = 0; knob < kKnobCount; ++knob) {
        const Place centre = PlaceOf(knob);
        if (std::hypot(pointer.x - centre.x, pointer.y - centre.y) <= kReach)
            return {knob, std::nullopt};
    }
    if (m_offered) {
        for (const auto& entry : kButtons) {
            if (entry.area.Holds(pointer))
                return {std::nullopt, entry.button};
        }
    }
    return {};
}

void CPanel::Hover(Place pointer)
{
    const Target target = TargetAt(pointer);
    m_stale = m_stale || !(target == m_hovered);
    m_hovered = target;
}

void CPanel::Changed(int knob)
{
    m_stale = true;
    m_actions.changed(knob, Value(knob));
}

void CPanel::PointerMoved(Place pointer, bool fine)
{
    if (!m_held.knob) {
        Hover(pointer);
        return;
    }
    CKnob& knob = m_knobs[static_cast<std::size_t>(*m_held.knob)];
    const float before = knob.Value();
    knob.Drag(pointer, fine);
    if (knob.Value() != before)
        Changed(*m_held.knob);
}

void CPanel::PointerPressed(Place pointer, bool twice)
{
    m_held = TargetAt(pointer);
    m_stale = true;
    if (!m_held.knob)
        return;
    CKnob& knob = m_knobs[static_cast<std::size_t>(*m_held.knob)];
    if (twice) {
        knob.SetInitialValue();
        Changed(*m_held.knob);
    }
    SetDragKind(m_actions.dragKind());
    knob.BeginDrag(pointer, m_kind);
}

void CPanel::PointerReleased(Place pointer)
{
    const Target held = std::exchange(m_held, Target());
    m_stale = true;
    if (held.knob)
        m_knobs[static_cast<std::size_t>(*held.knob)].EndDrag();
    Hover(pointer);
    if (held.button && m_hovered == held)
        m_actions.pressed(*held.button);
}

void CPanel::PointerLeft()
{
    m_stale = m_stale || !(m_hovered == Target());
    m_hovered = Target();
}

void CPanel::Scrolled(Place pointer, double steps, bool fine)
{
    const Target target = TargetAt(pointer);
    if (!target.knob || m_held.knob)
        return;
    CKnob& knob = m_knobs[static_cast<std::size_t>(*target.knob)];
    knob.SetPosition(knob.Position() + steps * (fine ? kScrollStep / 10.0 : kScrollStep));
    Changed(*target.knob);
}

void CPanel::Draw(cairo_t* cairo)
{
    cairo_pattern_t* const ground = cairo_pattern_create_linear(0, 0, 0, kHeight);
    cairo_pattern_add_color_stop_rgb(ground, 0, kTop.red, kTop.green, kTop.blue);
    cairo_pattern_add_color_stop_rgb(ground, 1, kBottom.red, kBottom.green, kBottom.blue);
    cairo_set_source(cairo, ground);
    cairo_paint(cairo);
    cairo_pattern_destroy(ground);

    DrawLogo(cairo);
    SetColour(cairo, kText);
    DrawText(cairo, "Quillet", 60, 33, 17, 0, true);
    for (const Button button : {Button::Info, Button::Help}) {
        if (m_offered)
            DrawButton(cairo, button);
    }
    SetColour(cairo, kTrack);
    cairo_rectangle(cairo, 14, 54, kWidth - 28, 1);
    cairo_fill(cairo);

    for (int knob = 0; knob < kKnobCount; ++knob)
        DrawKnob(cairo, knob);
    SetColour(cairo, kFaint);
    DrawText(cairo, m_kind == DragKind::Vertical ? "drag up and down" : "drag round", kWidth / 2.0, kHeight - 10, 10,
             0.5, false);
    m_stale = false;
}

void CPanel::DrawLogo(cairo_t* cairo) const
{
    const Area& area = AreaOf(Button::Logo);
    const bool hovered = m_hovered.button == Button::Logo;
    SetColour(cairo, kAccent, m_offered && !hovered ? 0.85 : 1.0);
    // A quill's vane over three strokes of sound.
    const double x = area.x + 4;
    const double y = area.y + area.height - 3;
    cairo_move_to(cairo, x, y);
    cairo_curve_to(cairo, x + 2, y - 18, x + 14, y - 26, x + 28, y - 26);
    cairo_curve_to(cairo, x + 26, y - 12, x + 16, y - 4, x, y);
    cairo_close_path(cairo);
    cairo_fill(cairo);
    SetColour(cairo, kTop);
    cairo_set_line_width(cairo, 1.4);
    for (int stroke = 0; stroke < 3; ++stroke) {
        cairo_move_to(cairo, x + 6 + stroke * 5, y - 6 - stroke * 5);
        cairo_line_to(cairo, x + 13 + stroke * 5, y - 7 - stroke * 5);
    }
    cairo_move_to(cairo, x, y);
    cairo_line_to(cairo, x + 21, y - 21);
    cairo_stroke(cairo);
}

void CPanel::DrawButton(cairo_t* cairo, Button button) const
{
    const Area& area = AreaOf(button);
    const bool hovered = m_hovered.button == button;
    const bool pressed = hovered && m_held.button == button;
    RoundedRectangle(cairo, {area.x + 0.5, area.y + 0.5, area.width - 1, area.height - 1}, 6);
    SetColour(cairo, pressed ? kAccent : kRaised);
    cairo_fill_preserve(cairo);
    SetColour(cairo, hovered ? kAccent : kTrack);
    cairo_set_line_width(cairo, 1);
    cairo_stroke(cairo);
    SetColour(cairo, pressed ? kBottom : kText);
    DrawText(cairo, kButtons[static_cast<int>(button)].title, area.x + area.width / 2, area.y + 16.5, 12, 0.5, false);
}

void CPanel::DrawKnob(cairo_t* cairo, int index) const
{
    const CKnob& knob = m_knobs[static_cast<std::size_t>(index)];
    const Place centre = knob.Centre();
    const bool hot = m_held.knob == index || (!m_held.knob && m_hovered.knob == index);
    const double angle = AngleOf(knob.Position());
    const double middle = AngleOf(0.5);

    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_width(cairo, 4);
    SetColour(cairo, kTrack);
    cairo_arc(cairo, centre.x, centre.y, kKnobRadius + 6, AngleOf(0), AngleOf(1));
    cairo_stroke(cairo);
    SetColour(cairo, kAccent);
    cairo_arc(cairo, centre.x, centre.y, kKnobRadius + 6, std::fmin(angle, middle), std::fmax(angle, middle));
    cairo_stroke(cairo);

    cairo_pattern_t* const body = cairo_pattern_create_radial(centre.x - 9, centre.y - 12, 4, centre.x, centre.y, 34);
    const double light = hot ? 0.06 : 0.0;
    cairo_pattern_add_color_stop_rgb(body, 0, 0.36 + light, 0.39 + light, 0.45 + light);
    cairo_pattern_add_color_stop_rgb(body, 1, 0.17 + light, 0.185 + light, 0.22 + light);
    cairo_arc(cairo, centre.x, centre.y, kKnobRadius - 2, 0, 2 * kPi);
    cairo_set_source(cairo, body);
    cairo_fill(cairo);
    cairo_pattern_destroy(body);

    SetColour(cairo, kText);
    cairo_set_line_width(cairo, 3);
    cairo_move_to(cairo, centre.x + 13 * std::cos(angle), centre.y + 13 * std::sin(angle));
    cairo_line_to(cairo, centre.x + 23 * std::cos(angle), centre.y + 23 * std::sin(angle));
    cairo_stroke(cairo);

    SetColour(cairo, kText);
    DrawText(cairo, kKnobs[index].title, centre.x, centre.y + 52, 11, 0.5, true);
    SetColour(cairo, kFaint);
    DrawText(cairo, ValueText(index, knob.Value()), centre.x, centre.y + 68, 11, 0.5, false);
}

} // namespace quillet
