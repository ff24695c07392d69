// platform/hitoolbox/windows/Painter.cpp
//
// A surface's picture is kept and compared with the window's next state, control by control.
#include "platform/hitoolbox/windows/Painter.h"

#include <algorithm>
#include <cmath>

#include "platform/hitoolbox/windows/Look.h"

namespace {

constexpr int kLargestKept = 1024 * 1024; ///< Pixels of a picture that outlives its window, 4 bytes each.

constexpr std::size_t kMostParts = 8; ///< That a window is drawn anew in.

CanvasRect United(const CanvasRect& one, const CanvasRect& other)
{
    const double left = std::min(one.x, other.x), top = std::min(one.y, other.y);
    return {left, top, std::max(one.x + one.width, other.x + other.width) - left,
            std::max(one.y + one.height, other.y + other.height) - top};
}

/// Whether only single controls differ; else all is drawn anew.
bool IsComparable(const WindowView& one, const WindowView& other)
{
    return one.width == other.width && one.height == other.height && one.controls.size() == other.controls.size();
}

/// What has to be drawn anew, in points.
std::vector<CanvasRect> DifferencesOf(const WindowView& one, const WindowView& other)
{
    std::vector<CanvasRect> differences;
    const bool activated = one.active != other.active;
    for (std::size_t index = 0; index < one.controls.size(); ++index) {
        const ControlView &before = one.controls[index], &now = other.controls[index];
        if (Look::IsAlike(before, now) && !(activated && Look::TellsActivity(now)))
            continue;
        const CanvasRect difference = United(Look::ExtentOf(before), Look::ExtentOf(now));
        if (differences.size() < kMostParts)
            differences.push_back(difference);
        else
            differences.back() = United(differences.back(), difference);
    }
    return differences;
}

PixelRect PixelsOf(const CanvasRect& area, double scale, int width, int height)
{
    const int left = std::clamp(static_cast<int>(std::floor(area.x * scale)), 0, width);
    const int top = std::clamp(static_cast<int>(std::floor(area.y * scale)), 0, height);
    const int right = std::clamp(static_cast<int>(std::ceil((area.x + area.width) * scale)), 0, width);
    const int bottom = std::clamp(static_cast<int>(std::ceil((area.y + area.height) * scale)), 0, height);
    return {left, top, right - left, bottom - top};
}

} // namespace

void CPainter::Paint(SurfaceId surface, const WindowView& window, double scale, int width, int height)
{
    const auto [place, isNew] = m_shown.try_emplace(surface);
    Shown& shown = place->second;
    if (isNew) {
        std::swap(shown, m_last);
        shown.whole = true;
        SetMetrics(&m_drawing.MetricsAt(scale)); // clicks into texts land where these are drawn
    }
    const Appearance appearance = m_desktop.CurrentAppearance();
    const unsigned fonts = m_drawing.FontGeneration();
    const bool sameCanvas = shown.canvas && shown.scale == scale && shown.width == width && shown.height == height;
    if (!sameCanvas)
        shown.canvas = m_drawing.CreateCanvas(width, height, scale);
    if (!shown.canvas) {
        m_shown.erase(surface); // out of memory: the screen keeps what it has, the next time may do
        return;
    }
    if (shown.scale != scale)
        SetMetrics(&m_drawing.MetricsAt(scale));
    const CanvasRect all = {0, 0, width / scale, height / scale};
    const bool comparable =
        sameCanvas && shown.appearance == appearance && shown.fonts == fonts && IsComparable(shown.window, window);
    const std::vector<CanvasRect> damages =
        comparable ? DifferencesOf(shown.window, window) : std::vector<CanvasRect>{all};
    for (const CanvasRect& damage : damages) {
        shown.canvas->PushClip(damage);
        Look::Draw(*shown.canvas, window, appearance, damage);
        shown.canvas->PopClip();
    }
    for (const CanvasRect& damage : shown.whole ? std::vector<CanvasRect>{all} : damages) {
        const PixelRect part = PixelsOf(damage, scale, width, height);
        if (part.width > 0 && part.height > 0)
            (void)m_desktop.Present(surface, shown.canvas->Pixels(), part); // gone meanwhile: nothing to show it on
    }
    shown.window = window;
    shown.scale = scale;
    shown.width = width;
    shown.height = height;
    shown.appearance = appearance;
    shown.fonts = fonts;
    shown.whole = false;
}

void CPainter::Invalidate(SurfaceId surface)
{
    const auto found = m_shown.find(surface);
    if (found != m_shown.end())
        found->second.whole = true;
}

void CPainter::Forget(SurfaceId surface)
{
    const auto found = m_shown.find(surface);
    if (found == m_shown.end())
        return;
    if (found->second.width * found->second.height <= kLargestKept)
        m_last = std::move(found->second);
    m_shown.erase(found);
}

bool SavePicture(IDrawing& drawing, const WindowView& window, double scale, Appearance appearance,
                 const std::string& path)
{
    const auto pixels = [scale](int points) {
        return std::max(1, static_cast<int>(std::lround(points * scale)));
    };
    const auto canvas = drawing.CreateCanvas(pixels(window.width), pixels(window.height), scale);
    if (!canvas)
        return false;
    WindowView shown = window;
    shown.active = true; // as the user meets it
    Look::Draw(*canvas, shown, appearance,
               {0, 0, static_cast<double>(window.width), static_cast<double>(window.height)});
    return canvas->SavePng(path);
}
