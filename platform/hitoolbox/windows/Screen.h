// platform/hitoolbox/windows/Screen.h
//
// Joins the windows to the drawing: what shows them on the desktop and draws them into files.
#pragma once

class IDesktop;
class IDrawing;

namespace Screen {

/// Answers the drawing, loading it at the first call; null where it cannot be had. Needs no
/// display. Event-loop thread.
IDrawing* OpenDrawing();
/// Has windows drawn on a desktop, and texts measured as they are drawn. Nothing happens where
/// there is no drawing.
void ShowOn(IDesktop& desktop);

} // namespace Screen
