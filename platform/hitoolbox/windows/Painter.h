// platform/hitoolbox/windows/Painter.h
//
// Draws windows for the screen, and of a changed window only what changed; and draws them into
// files. What they look like is Look's matter.
#pragma once

#include <string>
#include <unordered_map>

#include "platform/drawing/ICanvas.h"
#include "platform/hitoolbox/windows/WindowView.h"

class CPainter final : public IPainter {
public:
    CPainter(IDesktop& desktop, IDrawing& drawing) : m_desktop(desktop), m_drawing(drawing) {}

    void Paint(SurfaceId surface, const WindowView& window, double scale, int width, int height) override;
    void Invalidate(SurfaceId surface) override;
    void Forget(SurfaceId surface) override;

private:
    /// What a surface shows.
    struct Shown {
        std::unique_ptr<ICanvas> canvas;
        WindowView window;
        double scale = 0;
        int width = 0, height = 0;
        Appearance appearance = Appearance::Light;
        unsigned fonts = 0;
        bool whole = true; ///< All is to be presented anew, drawn or not.
    };

    IDesktop& m_desktop;
    IDrawing& m_drawing;
    std::unordered_map<SurfaceId, Shown> m_shown;
    Shown m_last; ///< Of the surface that was forgotten last: the same dialog opened again is drawn already.
};

/// Draws a window into a PNG file.
/// @return false when there is no drawing, no memory, or the file cannot be written.
bool SavePicture(IDrawing& drawing, const WindowView& window, double scale, Appearance appearance,
                 const std::string& path);
