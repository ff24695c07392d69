// platform/hitoolbox/windows/WindowView.h
//
// What there is to see of a window: a copy of the state of its visible controls, taken at once, so
// that drawing needs no lock. Turning it into strokes is left to Look.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/coregraphics/Image.h"
#include "platform/desktop/IDesktop.h"
#include "platform/hitoolbox/windows/TextMetrics.h"
#include <CarbonCore/MacTypes.h>
#include <HIToolbox/HITypes.h>

enum class ControlClass : std::uint8_t {
    Root,
    PushButton,
    CheckBox,
    RadioButton,
    StaticText,
    EditText,
    EditUnicodeText,
    ImageView,
    GroupBox,
    Separator,
    UserPane,
    Icon,
    Picture,
    ImageWell,
    PopupButton,
    Slider,
    ProgressBar,
    RadioGroup,
    MenuItem ///< Of an open menu; no control is one.
};

enum class AlertIcon : std::uint8_t { None, Stop, Note, Caution };

struct ControlView {
    ControlRef reference = nullptr;
    ControlClass kind = ControlClass::UserPane;
    Rect bounds = {}; ///< Points from the top left of the window's content.
    std::string text; ///< The title, or the text of a static or edit text, of a long one what is seen; UTF-8.
    TextFont font = TextFont::System;
    Justification justification = Justification::ByScript;
    std::optional<RGBColor> textColor;
    bool enabled = true;
    bool hovered = false;
    bool pressed = false;   ///< To be drawn as held down.
    bool focused = false;   ///< Has its window's keyboard focus.
    bool isDefault = false; ///< Return presses it.
    SInt32 value = 0, minimum = 0, maximum = 0;

    // Edit text.
    bool concealed = false;
    bool singleLine = false;
    bool locked = false;
    std::size_t selectionStart = 0, selectionEnd = 0; ///< Bytes of `text`; equal for a caret alone.
    std::size_t caret = 0;
    double scrollX = 0, scrollY = 0; ///< Points by which the text is moved to the left and upwards.

    // Images.
    CRef<CGImage> image;
    double alpha = 1;
    bool scaleToFit = false;
    bool opaque = true;
    AlertIcon icon = AlertIcon::None;

    std::vector<std::string> items; ///< Of a pop-up button; `value` counts them from 1.
    bool indeterminate = false;     ///< Of a progress bar.
    int tickMarks = 0;              ///< Of a slider.
    bool vertical = false;          ///< Of a slider, separator or progress bar.
};

struct WindowView {
    WindowRef reference = nullptr;
    UInt32 windowClass = 0;
    std::string title;
    int width = 0, height = 0;         ///< Of the content, in points.
    bool active = false;               ///< Has the keyboard.
    std::vector<ControlView> controls; ///< The visible ones, in the order of drawing.
};

/// Copies what there is to see of a window, hidden or not; nothing for what is no window. Takes
/// the lock.
std::optional<WindowView> LookAt(WindowRef window);

/// Shows windows on their surfaces. Event-loop thread.
class IPainter {
public:
    /// Draws a window and presents it. What was drawn before is to be remembered where less is to
    /// be drawn next time.
    /// @param size  of the surface in pixels.
    virtual void Paint(SurfaceId surface, const WindowView& window, double scale, int width, int height) = 0;
    /// The whole surface is to be presented at the next Paint.
    virtual void Invalidate(SurfaceId surface) = 0;
    /// The surface is about to be destroyed.
    virtual void Forget(SurfaceId surface) = 0;

protected:
    ~IPainter() = default;
};

/// Sets who shows windows, never destroyed; null, as at the start, shows nothing.
void SetPainter(IPainter* painter) noexcept;
/// Answers who shows windows, or null.
IPainter* CurrentPainter() noexcept;
