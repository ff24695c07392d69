// platform/hitoolbox/windows/Look.h
//
// What windows and controls look like: their state turned into strokes. What a control is and does
// stands elsewhere; what a stroke is, in platform/drawing/.
#pragma once

#include "platform/drawing/ICanvas.h"
#include "platform/hitoolbox/windows/WindowView.h"

namespace Look {

/// Draws a window's content, or what of it lies within the canvas's clip.
/// @param damage  controls outside of it may be left out; points.
void Draw(ICanvas& canvas, const WindowView& window, Appearance appearance, const CanvasRect& damage);

/// Answers all that drawing a control may touch, its focus ring and shadow included.
CanvasRect ExtentOf(const ControlView& control);

/// Whether a control looks different while its window has the keyboard.
bool TellsActivity(const ControlView& control);

/// Whether two states of one control look alike in a window that has the keyboard, or has it not, both times.
bool IsAlike(const ControlView& one, const ControlView& other);

} // namespace Look
