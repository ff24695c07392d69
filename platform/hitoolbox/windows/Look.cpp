// platform/hitoolbox/windows/Look.cpp
//
// One function per class of control, under a switch that only dispatches.
#include "platform/hitoolbox/windows/Look.h"

#include <algorithm>
#include <cmath>

#include "platform/base/Text.h"
#include "platform/hitoolbox/windows/Palette.h"

namespace {

constexpr double kRadius = 6;
constexpr double kFocusWidth = 3;    ///< The ring stands this far outside a control.
constexpr double kButtonHeight = 26; ///< Descriptions give buttons 20 points and keep room around them.
constexpr double kMarkSide = 15;     ///< Check boxes and radio buttons.
constexpr double kMarkGap = 7;       ///< Between a mark and its title.
constexpr double kButtonMargin = 8;  ///< Beside a button's title.
constexpr double kFieldMargin = 4;   ///< An edit text's frame stands this far outside its text.
constexpr double kTitleSlack = 3;    ///< A title may be this much higher than its control.
constexpr double kExtentMargin = 8;  ///< No control draws farther outside its bounds.

CanvasRect BoundsOf(const ControlView& control)
{
    const Rect& bounds = control.bounds;
    return {static_cast<double>(bounds.left), static_cast<double>(bounds.top),
            std::max(0.0, static_cast<double>(bounds.right - bounds.left)),
            std::max(0.0, static_cast<double>(bounds.bottom - bounds.top))};
}

/// Whether a text's first letter belongs to a script that runs from right to left.
bool IsRightToLeft(std::string_view text)
{
    for (std::size_t position = 0; position < text.size();) {
        const char32_t letter = NextCodePoint(text, position);
        if ((letter >= 0x590 && letter <= 0x8FF) || (letter >= 0xFB1D && letter <= 0xFDFF) ||
            (letter >= 0xFE70 && letter <= 0xFEFF) || (letter >= 0x10800 && letter <= 0x10FFF) ||
            (letter >= 0x1E800 && letter <= 0x1EFFF))
            return true;
        if ((letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z') || letter >= 0xC0)
            return false;
    }
    return false;
}

/// A long translation loses size before it loses letters.
TextFont SmallerFont(TextFont font)
{
    return font == TextFont::System ? TextFont::Small : font == TextFont::SystemBold ? TextFont::SmallBold : font;
}

/// Draws the controls of one window.
class CLook {
public:
    CLook(ICanvas& canvas, const WindowView& window, Appearance appearance)
        : m_canvas(canvas),
          m_window(window),
          m_dark(appearance == Appearance::Dark),
          m_palette(m_dark ? kDarkPalette : kLightPalette)
    {
    }

    void DrawBackground() { m_canvas.Clear(m_palette.window); }
    void DrawControl(const ControlView& control);

private:
    void DrawPushButton(const ControlView& control);
    void DrawCheckBox(const ControlView& control);
    void DrawRadioButton(const ControlView& control);
    void DrawStaticText(const ControlView& control);
    void DrawEditText(const ControlView& control);
    void DrawImage(const ControlView& control);
    void DrawImageWell(const ControlView& control);
    void DrawAlertIcon(AlertIcon icon, const CanvasRect& area);
    void DrawGroupBox(const ControlView& control);
    void DrawSeparator(const ControlView& control);
    void DrawPopupButton(const ControlView& control);
    void DrawSlider(const ControlView& control);
    void DrawProgressBar(const ControlView& control);
    void DrawMenuItem(const ControlView& control);

    /// Draws a button's face and answers the colour of what stands on it.
    Colour DrawFace(const ControlView& control, const CanvasRect& area, double radius, bool accented);
    void DrawFocus(const ControlView& control, const CanvasRect& area, double radius);
    /// Draws the title beside a mark, on the side where its script begins; answers the mark's area.
    CanvasRect DrawMarkTitle(const ControlView& control);
    /// Draws a text wrapped into an area, in the middle of its height.
    void DrawTextIn(const CanvasRect& area, const ControlView& control, std::string_view text,
                    Justification justification, Colour colour, bool wrapped);

    Colour Dimmed(const ControlView& control, Colour colour) const
    {
        return control.enabled ? colour : colour.WithAlpha(m_palette.disabled);
    }
    Colour TextColourOf(const ControlView& control) const;
    double PartOf(const ControlView& control) const;

    ICanvas& m_canvas;
    const WindowView& m_window;
    const bool m_dark;
    const Palette& m_palette;
};

CanvasRect ButtonArea(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    if (bounds.height >= kButtonHeight || bounds.height < 14)
        return bounds;
    return {bounds.x, bounds.y - (kButtonHeight - bounds.height) / 2, bounds.width, kButtonHeight};
}

void CLook::DrawControl(const ControlView& control)
{
    switch (control.kind) {
    case ControlClass::PushButton:
        return DrawPushButton(control);
    case ControlClass::CheckBox:
        return DrawCheckBox(control);
    case ControlClass::RadioButton:
        return DrawRadioButton(control);
    case ControlClass::StaticText:
        return DrawStaticText(control);
    case ControlClass::EditText:
    case ControlClass::EditUnicodeText:
        return DrawEditText(control);
    case ControlClass::ImageView:
    case ControlClass::Icon:
    case ControlClass::Picture:
        return DrawImage(control);
    case ControlClass::ImageWell:
        return DrawImageWell(control);
    case ControlClass::GroupBox:
        return DrawGroupBox(control);
    case ControlClass::Separator:
        return DrawSeparator(control);
    case ControlClass::PopupButton:
        return DrawPopupButton(control);
    case ControlClass::Slider:
        return DrawSlider(control);
    case ControlClass::ProgressBar:
        return DrawProgressBar(control);
    case ControlClass::MenuItem:
        return DrawMenuItem(control);
    case ControlClass::Root:
    case ControlClass::UserPane:
    case ControlClass::RadioGroup:
        return; // nothing but what is in them
    }
}

Colour CLook::TextColourOf(const ControlView& control) const
{
    if (!control.textColor)
        return Dimmed(control, m_palette.text);
    const auto byte = [](unsigned part) {
        return static_cast<std::uint32_t>(part >> 8);
    };
    const std::uint32_t red = byte(control.textColor->red), green = byte(control.textColor->green),
                        blue = byte(control.textColor->blue);
    // A description's dark colour was chosen for a light window, and would be lost on a dark one.
    const bool unreadable = m_dark && 2 * red + 5 * green + blue < 8 * 96;
    return Dimmed(control, unreadable ? m_palette.text : Colour{red << 24 | green << 16 | blue << 8 | 0xFF});
}

void CLook::DrawFocus(const ControlView& control, const CanvasRect& area, double radius)
{
    if (control.focused && m_window.active)
        m_canvas.Stroke(area.Inset(-kFocusWidth), radius + kFocusWidth, kFocusWidth, m_palette.focus);
}

Colour CLook::DrawFace(const ControlView& control, const CanvasRect& area, double radius, bool accented)
{
    DrawFocus(control, area, radius);
    const double opacity = control.enabled ? 1 : 0.5;
    if (control.enabled)
        m_canvas.Fill(area.Moved(0, 1), radius, m_palette.shadow);
    if (accented) {
        m_canvas.FillGraded(area, radius, m_palette.accentTop.WithAlpha(opacity),
                            m_palette.accentBottom.WithAlpha(opacity));
    } else {
        m_canvas.Fill(area, radius, m_palette.face.WithAlpha(opacity));
    }
    if (control.enabled && control.pressed)
        m_canvas.Fill(area, radius, m_palette.pressed);
    else if (control.enabled && control.hovered)
        m_canvas.Fill(area, radius, m_palette.hover);
    m_canvas.Stroke(area, radius, 1, (accented ? m_palette.accentEdge : m_palette.faceEdge).WithAlpha(opacity));
    return accented ? m_palette.onAccent.WithAlpha(control.enabled ? 1 : 0.7) : TextColourOf(control);
}

void CLook::DrawTextIn(const CanvasRect& area, const ControlView& control, std::string_view text,
                       Justification justification, Colour colour, bool wrapped)
{
    if (text.empty() || area.width <= 0)
        return;
    TextLayout layout;
    layout.text = text;
    layout.font = control.font;
    layout.justification = justification;
    layout.width = area.width;
    layout.wrapped = wrapped;
    TextSize size = m_canvas.Metrics().Measure(layout);
    if (size.width > area.width || size.height > area.height + kTitleSlack) {
        layout.font = SmallerFont(layout.font);
        size = m_canvas.Metrics().Measure(layout);
    }
    double height = size.height;
    if (height > area.height + kTitleSlack) { // what stays are whole lines
        TextLayout line = layout;
        line.wrapped = false;
        const double lineHeight = m_canvas.Metrics().Measure(line).height;
        height = std::max(1.0, std::floor((area.height + kTitleSlack) / lineHeight)) * lineHeight;
    }
    TextStyle style;
    style.colour = colour;
    style.height = area.height + kTitleSlack;
    m_canvas.DrawText(layout, style, area.x, area.y + (area.height - height) / 2);
}

void CLook::DrawPushButton(const ControlView& control)
{
    const CanvasRect area = ButtonArea(control);
    const Colour colour = DrawFace(control, area, kRadius, control.isDefault && m_window.active);
    const CanvasRect inner = {area.x + kButtonMargin, area.y, area.width - 2 * kButtonMargin, area.height};
    DrawTextIn(inner, control, control.text, Justification::Centre, colour, false);
}

CanvasRect CLook::DrawMarkTitle(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    const double taken = kMarkSide + kMarkGap;
    const bool mirrored = IsRightToLeft(control.text);
    const CanvasRect title = {mirrored ? bounds.x : bounds.x + taken, bounds.y, bounds.width - taken, bounds.height};
    DrawTextIn(title, control, control.text, Justification::ByScript, TextColourOf(control), true);
    return {mirrored ? bounds.x + bounds.width - kMarkSide : bounds.x, bounds.y + (bounds.height - kMarkSide) / 2,
            kMarkSide, kMarkSide};
}

void CLook::DrawCheckBox(const ControlView& control)
{
    const CanvasRect mark = DrawMarkTitle(control);
    const Colour ink = DrawFace(control, mark, 4, control.value != 0);
    const auto at = [&](double x, double y) {
        return CanvasPoint{mark.x + x, mark.y + y};
    };
    if (control.value == 1)
        m_canvas.StrokeLine({at(3.9, 7.8), at(6.4, 10.4), at(11.1, 4.8)}, 1.9, ink);
    else if (control.value != 0)
        m_canvas.StrokeLine({at(4.2, 7.5), at(10.8, 7.5)}, 1.9, ink);
}

void CLook::DrawRadioButton(const ControlView& control)
{
    const CanvasRect mark = DrawMarkTitle(control);
    const Colour ink = DrawFace(control, mark, kMarkSide / 2, control.value != 0);
    if (control.value != 0)
        m_canvas.Fill(mark.Inset(4.5), kMarkSide, ink);
}

void CLook::DrawStaticText(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    if (control.text.empty() || bounds.width <= 0)
        return;
    TextLayout layout;
    layout.text = control.text;
    layout.font = control.font;
    layout.justification = control.justification;
    layout.width = bounds.width;
    layout.wrapped = true;
    TextStyle style;
    style.colour = TextColourOf(control);
    style.height = bounds.height + kTitleSlack;
    double height = m_canvas.Metrics().Measure(layout).height;
    if (height > style.height) {
        layout.font = SmallerFont(layout.font);
        height = m_canvas.Metrics().Measure(layout).height;
    }
    const double excess = height - bounds.height;
    m_canvas.DrawText(layout, style, bounds.x, bounds.y - std::clamp(excess / 2, 0.0, kTitleSlack / 2));
}

void CLook::DrawEditText(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    const CanvasRect frame = bounds.Inset(-kFieldMargin);
    const bool active = control.focused && m_window.active;
    DrawFocus(control, frame, kRadius);
    m_canvas.Fill(frame, kRadius, control.locked || !control.enabled ? m_palette.lockedField : m_palette.field);
    m_canvas.Stroke(frame, kRadius, 1, active ? m_palette.accentTop : Dimmed(control, m_palette.fieldEdge));

    TextLayout layout;
    layout.text = control.text;
    layout.font = control.font;
    layout.justification = control.justification;
    layout.width = bounds.width;
    layout.wrapped = !control.singleLine;
    layout.concealed = control.concealed;
    TextStyle style;
    style.colour = TextColourOf(control);
    style.ellipsised = false;
    style.selectionStart = control.selectionStart;
    style.selectionEnd = control.selectionEnd;
    style.selectedColour = active ? m_palette.selectedText : m_palette.text;
    style.selectionColour = active ? m_palette.selection : m_palette.idleSelection;

    m_canvas.PushClip({frame.x + 2, frame.y + 1, frame.width - 4, frame.height - 2});
    const CaretPlace caret = m_canvas.Metrics().PlaceOf(layout, control.caret);
    // A line alone stands in the middle, whatever the user's font is; several begin at the top.
    const double left = bounds.x - control.scrollX;
    const double top =
        control.singleLine ? bounds.y + (bounds.height - caret.height) / 2 - caret.y : bounds.y - control.scrollY;
    if (!control.text.empty())
        m_canvas.DrawText(layout, style, left, top);
    // The caret is steady: one that blinks wakes the machine twice a second for as long as a dialog is open.
    if (active && control.enabled && !control.locked && control.selectionStart == control.selectionEnd)
        m_canvas.Fill({left + caret.x, top + caret.y, 1, caret.height}, 0, m_palette.text);
    m_canvas.PopClip();
}

void CLook::DrawImage(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    if (control.icon != AlertIcon::None)
        return DrawAlertIcon(control.icon, bounds);
    if (!control.image || bounds.width <= 0 || bounds.height <= 0)
        return;
    const CGImage& image = *control.image;
    const PixelBuffer picture = {reinterpret_cast<const std::uint8_t*>(image.Pixels()), image.Width() * 4,
                                 static_cast<int>(image.Width()), static_cast<int>(image.Height())};
    const double width = picture.width, height = picture.height;
    const double fit = control.scaleToFit ? std::min(bounds.width / width, bounds.height / height) : 1;
    const CanvasRect area = {bounds.x + (bounds.width - width * fit) / 2, bounds.y + (bounds.height - height * fit) / 2,
                             width * fit, height * fit};
    m_canvas.PushClip(bounds);
    m_canvas.DrawPicture(picture, area, std::clamp(control.alpha, 0.0, 1.0) * (control.enabled ? 1 : 0.5));
    m_canvas.PopClip();
    DrawFocus(control, bounds, 4);
}

void CLook::DrawImageWell(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    m_canvas.Fill(bounds, kRadius, m_palette.field);
    m_canvas.Stroke(bounds, kRadius, 1, Dimmed(control, m_palette.fieldEdge));
    DrawImage(control);
}

void CLook::DrawAlertIcon(AlertIcon icon, const CanvasRect& area)
{
    constexpr Colour kRed = {0xD9363EFF}, kBlue = {0x2F74E0FF}, kAmber = {0xF2A91BFF}, kWhite = {0xFFFFFFFF},
                     kInk = {0x3A2A00FF};
    const double side = std::min(area.width, area.height);
    const double left = area.x + (area.width - side) / 2, top = area.y + (area.height - side) / 2;
    const auto at = [&](double x, double y) {
        return CanvasPoint{left + x * side, top + y * side};
    };
    const CanvasRect disc = CanvasRect{left, top, side, side}.Inset(side * 0.06);
    switch (icon) {
    case AlertIcon::None:
        return;
    case AlertIcon::Stop:
        m_canvas.Fill(disc, side, kRed);
        m_canvas.StrokeLine({at(.36, .36), at(.64, .64)}, side * .085, kWhite);
        m_canvas.StrokeLine({at(.64, .36), at(.36, .64)}, side * .085, kWhite);
        return;
    case AlertIcon::Note:
        m_canvas.Fill(disc, side, kBlue);
        m_canvas.StrokeLine({at(.5, .47), at(.5, .71)}, side * .085, kWhite);
        m_canvas.StrokeLine({at(.5, .31), at(.5, .31)}, side * .105, kWhite);
        return;
    case AlertIcon::Caution:
        m_canvas.FillShape({at(.5, .14), at(.92, .86), at(.08, .86)}, kAmber);
        m_canvas.StrokeLine({at(.5, .14), at(.92, .86), at(.08, .86), at(.5, .14)}, side * .1, kAmber);
        m_canvas.StrokeLine({at(.5, .40), at(.5, .60)}, side * .085, kInk);
        m_canvas.StrokeLine({at(.5, .76), at(.5, .76)}, side * .1, kInk);
        return;
    }
}

void CLook::DrawGroupBox(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    double titleHeight = 0;
    if (!control.text.empty()) {
        TextLayout layout;
        layout.text = control.text;
        layout.font = control.font;
        titleHeight = m_canvas.Metrics().Measure(layout).height + 3;
        DrawTextIn({bounds.x + 2, bounds.y, bounds.width - 4, titleHeight - 3}, control, control.text,
                   Justification::ByScript, TextColourOf(control), false);
    }
    const CanvasRect box = {bounds.x, bounds.y + titleHeight, bounds.width, bounds.height - titleHeight};
    if (box.height <= 0)
        return;
    m_canvas.Fill(box, kRadius, m_palette.groupFill);
    m_canvas.Stroke(box, kRadius, 1, m_palette.separator);
}

void CLook::DrawSeparator(const ControlView& control)
{
    const CanvasRect bounds = BoundsOf(control);
    if (control.vertical || bounds.height > bounds.width)
        m_canvas.Fill({bounds.x + std::floor(bounds.width / 2), bounds.y, 1, bounds.height}, 0, m_palette.separator);
    else
        m_canvas.Fill({bounds.x, bounds.y + std::floor(bounds.height / 2), bounds.width, 1}, 0, m_palette.separator);
}

void CLook::DrawPopupButton(const ControlView& control)
{
    const CanvasRect area = ButtonArea(control);
    const Colour colour = DrawFace(control, area, kRadius, false);
    const double arrows = area.x + area.width - 14, middle = area.y + area.height / 2;
    m_canvas.StrokeLine({{arrows - 3.5, middle - 2.5}, {arrows, middle - 6}, {arrows + 3.5, middle - 2.5}}, 1.4,
                        colour);
    m_canvas.StrokeLine({{arrows - 3.5, middle + 2.5}, {arrows, middle + 6}, {arrows + 3.5, middle + 2.5}}, 1.4,
                        colour);
    const std::size_t chosen = static_cast<std::size_t>(std::max<SInt32>(control.value, 0));
    const std::string_view text =
        chosen >= 1 && chosen <= control.items.size() ? std::string_view(control.items[chosen - 1]) : control.text;
    DrawTextIn({area.x + kButtonMargin + 2, area.y, area.width - 3 * kButtonMargin - 10, area.height}, control, text,
               Justification::ByScript, colour, false);
}

void CLook::DrawMenuItem(const ControlView& control)
{
    constexpr double kMarkWidth = 22;
    const CanvasRect area = BoundsOf(control);
    if (control.pressed)
        m_canvas.Fill(area, 4, m_palette.accentBottom);
    const Colour colour = control.pressed ? m_palette.onAccent : m_palette.text;
    const auto at = [&area](double x, double y) {
        return CanvasPoint{area.x + x, area.y + area.height / 2 + y};
    };
    if (control.value != 0)
        m_canvas.StrokeLine({at(7, 0), at(9.5, 3), at(14.5, -3.5)}, 1.7, colour);
    DrawTextIn({area.x + kMarkWidth, area.y, area.width - kMarkWidth - kButtonMargin, area.height}, control,
               control.text, Justification::ByScript, colour, false);
}

double CLook::PartOf(const ControlView& control) const
{
    const double range = static_cast<double>(control.maximum) - static_cast<double>(control.minimum);
    return range > 0 ? std::clamp((static_cast<double>(control.value) - control.minimum) / range, 0.0, 1.0) : 0;
}

void CLook::DrawSlider(const ControlView& control)
{
    constexpr double kTrack = 4, kKnob = 16;
    const CanvasRect bounds = BoundsOf(control);
    const double part = PartOf(control);
    const double length = (control.vertical ? bounds.height : bounds.width) - kKnob;
    const double across = control.vertical ? bounds.x + bounds.width / 2 : bounds.y + bounds.height / 2;
    const double done = length * part;
    const auto along = [&](double from, double size, double width) {
        return control.vertical
                   ? CanvasRect{across - width / 2, bounds.y + bounds.height - kKnob / 2 - from - size, width, size}
                   : CanvasRect{bounds.x + kKnob / 2 + from, across - width / 2, size, width};
    };
    m_canvas.Fill(along(0, length, kTrack), kTrack / 2, m_palette.track);
    m_canvas.Fill(along(0, done, kTrack), kTrack / 2, Dimmed(control, m_palette.accentBottom));
    for (int tick = 0; tick < control.tickMarks && control.tickMarks > 1; ++tick) {
        const CanvasRect mark = along(length * tick / (control.tickMarks - 1) - .5, 1, 4);
        m_canvas.Fill(control.vertical ? mark.Moved(kKnob / 2 + 3, 0) : mark.Moved(0, kKnob / 2 + 3), 0,
                      m_palette.fieldEdge);
    }
    (void)DrawFace(control, along(done - kKnob / 2, kKnob, kKnob), kKnob / 2, false);
}

void CLook::DrawProgressBar(const ControlView& control)
{
    constexpr double kBar = 6;
    const CanvasRect bounds = BoundsOf(control);
    const bool vertical = control.vertical || bounds.height > bounds.width;
    CanvasRect bar = vertical ? CanvasRect{bounds.x + (bounds.width - kBar) / 2, bounds.y, kBar, bounds.height}
                              : CanvasRect{bounds.x, bounds.y + (bounds.height - kBar) / 2, bounds.width, kBar};
    m_canvas.Fill(bar, kBar / 2, m_palette.track);
    // An indeterminate bar stands still: it would wake the machine for nothing but show.
    const double start = control.indeterminate ? 0.35 : 0, size = control.indeterminate ? 0.3 : PartOf(control);
    if (vertical)
        bar = {bar.x, bar.y + bar.height * (1 - start - size), bar.width, bar.height * size};
    else
        bar = {bar.x + bar.width * start, bar.y, bar.width * size, bar.height};
    m_canvas.Fill(bar, kBar / 2, Dimmed(control, m_palette.accentBottom));
}

bool SameColour(const std::optional<RGBColor>& one, const std::optional<RGBColor>& other)
{
    if (!one || !other)
        return one.has_value() == other.has_value();
    return one->red == other->red && one->green == other->green && one->blue == other->blue;
}

} // namespace

void Look::Draw(ICanvas& canvas, const WindowView& window, Appearance appearance, const CanvasRect& damage)
{
    CLook look(canvas, window, appearance);
    look.DrawBackground();
    for (const ControlView& control : window.controls)
        if (ExtentOf(control).Meets(damage))
            look.DrawControl(control);
}

CanvasRect Look::ExtentOf(const ControlView& control)
{
    return BoundsOf(control).Inset(-kExtentMargin);
}

bool Look::TellsActivity(const ControlView& control)
{
    return control.focused || control.isDefault;
}

bool Look::IsAlike(const ControlView& one, const ControlView& other)
{
    const Rect &a = one.bounds, &b = other.bounds;
    return one.kind == other.kind && a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right &&
           one.text == other.text && one.font == other.font && one.justification == other.justification &&
           SameColour(one.textColor, other.textColor) && one.enabled == other.enabled && one.hovered == other.hovered &&
           one.pressed == other.pressed && one.focused == other.focused && one.isDefault == other.isDefault &&
           one.value == other.value && one.minimum == other.minimum && one.maximum == other.maximum &&
           one.concealed == other.concealed && one.singleLine == other.singleLine && one.locked == other.locked &&
           one.selectionStart == other.selectionStart && one.selectionEnd == other.selectionEnd &&
           one.caret == other.caret && one.scrollX == other.scrollX && one.scrollY == other.scrollY &&
           one.image.Get() == other.image.Get() && one.alpha == other.alpha && one.scaleToFit == other.scaleToFit &&
           one.opaque == other.opaque && one.icon == other.icon && one.items == other.items &&
           one.indeterminate == other.indeterminate && one.tickMarks == other.tickMarks &&
           one.vertical == other.vertical;
}
