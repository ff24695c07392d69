// platform/desktop/x11/Presenting.cpp
//
// Pictures on their way to the server: as the background of a window that is not on the screen yet,
// into the window itself later.
#include <algorithm>
#include <cstring>

#include "platform/desktop/x11/X11Desktop.h"

namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kMostPacked = 16384; ///< Bytes copied together for one request.

PixelRect Within(const PixelRect& part, int width, int height)
{
    const int left = std::clamp(part.x, 0, width), top = std::clamp(part.y, 0, height);
    return {left, top, std::clamp(part.x + part.width, left, width) - left,
            std::clamp(part.y + part.height, top, height) - top};
}

const std::uint8_t* PixelAt(const PixelBuffer& picture, int x, int y)
{
    return picture.bytes + static_cast<std::size_t>(y) * picture.stride + static_cast<std::size_t>(x) * kPixelBytes;
}

bool IsPixel(const std::uint8_t* pixel, std::uint32_t value)
{
    return std::memcmp(pixel, &value, kPixelBytes) == 0;
}

/// Widens [left, right) to what is not of the ground in a row.
void Cover(const PixelBuffer& picture, int y, std::uint32_t ground, int& left, int& right)
{
    int first = 0, last = picture.width;
    while (first < left && IsPixel(PixelAt(picture, first, y), ground))
        ++first;
    while (last > right && last > first && IsPixel(PixelAt(picture, last - 1, y), ground))
        --last;
    left = std::min(left, first);
    right = std::max(right, last);
}

/// Answers the next part, from row `top` downwards, that is not all of the ground; of no height at
/// the end.
PixelRect NextPart(const PixelBuffer& picture, int top, std::uint32_t ground)
{
    const auto isGround = [&](int y) {
        const std::uint8_t* const row = PixelAt(picture, 0, y);
        return IsPixel(row, ground) &&
               std::memcmp(row, row + kPixelBytes, static_cast<std::size_t>(picture.width - 1) * kPixelBytes) == 0;
    };
    while (top < picture.height && isGround(top))
        ++top;
    int left = picture.width, right = 0, bottom = top;
    for (; bottom < picture.height && !isGround(bottom); ++bottom)
        Cover(picture, bottom, ground, left, right);
    return {left, top, right - left, bottom - top};
}

} // namespace

void CX11Desktop::Upload(xcb_drawable_t target, const PixelBuffer& picture, const PixelRect& part)
{
    const std::size_t row = static_cast<std::size_t>(part.width) * kPixelBytes;
    const bool hasGaps = row != picture.stride;
    constexpr std::size_t kHeader = 64;
    std::size_t mostAtOnce = m_connection->LongestRequest() - kHeader;
    if (hasGaps)
        mostAtOnce = std::min(mostAtOnce, kMostPacked);
    const std::size_t rowsAtOnce = std::max<std::size_t>(mostAtOnce / row, 1);
    std::vector<std::uint8_t> packed;
    for (int done = 0; done < part.height;) {
        const int rows = std::min(part.height - done, static_cast<int>(std::min<std::size_t>(rowsAtOnce, 16384)));
        const std::uint8_t* source = PixelAt(picture, part.x, part.y + done);
        if (hasGaps) {
            packed.resize(row * static_cast<std::size_t>(rows));
            for (int line = 0; line < rows; ++line)
                std::memcpy(packed.data() + static_cast<std::size_t>(line) * row,
                            source + static_cast<std::size_t>(line) * picture.stride, row);
            source = packed.data();
        }
        xcb_put_image(m_connection->Get(), XCB_IMAGE_FORMAT_Z_PIXMAP, target, m_connection->Gc(),
                      static_cast<std::uint16_t>(part.width), static_cast<std::uint16_t>(rows),
                      static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y + done), 0,
                      m_connection->Depth(), static_cast<std::uint32_t>(row * static_cast<std::size_t>(rows)), source);
        done += rows;
    }
}

xcb_pixmap_t CX11Desktop::UploadWhole(const Surface& surface, const PixelBuffer& picture)
{
    xcb_connection_t* const display = m_connection->Get();
    const xcb_pixmap_t pixmap = xcb_generate_id(display);
    xcb_create_pixmap(display, m_connection->Depth(), pixmap, surface.window, static_cast<std::uint16_t>(picture.width),
                      static_cast<std::uint16_t>(picture.height));
    // Most of a dialog is its ground, which need not travel.
    std::uint32_t ground = 0;
    std::memcpy(&ground, picture.bytes, sizeof ground);
    xcb_change_gc(display, m_connection->Gc(), XCB_GC_FOREGROUND, &ground);
    const xcb_rectangle_t all = {0, 0, static_cast<std::uint16_t>(picture.width),
                                 static_cast<std::uint16_t>(picture.height)};
    xcb_poly_fill_rectangle(display, pixmap, m_connection->Gc(), 1, &all);
    for (PixelRect part = NextPart(picture, 0, ground); part.height > 0;
         part = NextPart(picture, part.y + part.height, ground))
        Upload(pixmap, picture, part);
    return pixmap;
}

void CX11Desktop::DropBackground(Surface& surface)
{
    if (surface.background == XCB_NONE)
        return;
    constexpr std::uint32_t kNone[] = {XCB_BACK_PIXMAP_NONE};
    if (surface.mapped) // else it is painted by the server until there is another
        xcb_change_window_attributes(m_connection->Get(), surface.window, XCB_CW_BACK_PIXMAP, kNone);
    xcb_free_pixmap(m_connection->Get(), surface.background);
    surface.background = XCB_NONE;
}

bool CX11Desktop::Present(SurfaceId id, const PixelBuffer& picture, const PixelRect& damage)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface)
        return false;
    if (!IsAlive())
        return true;
    xcb_connection_t* const display = m_connection->Get();
    const PixelRect part =
        Within(damage, std::min(picture.width, surface->width), std::min(picture.height, surface->height));
    if (!surface->mapped) {
        // What is drawn before the window is on the screen would be lost. As the window's background
        // the server itself paints it, in the moment in which the window appears.
        if (surface->background == XCB_NONE)
            surface->background = UploadWhole(*surface, picture);
        else if (part.width > 0 && part.height > 0)
            Upload(surface->background, picture, part);
        xcb_change_window_attributes(display, surface->window, XCB_CW_BACK_PIXMAP, &surface->background);
        if (surface->asked) { // it may have appeared already, with the background of before
            xcb_clear_area(display, 0, surface->window, 0, 0, 0, 0);
            Flush();
        }
        return true; // else sent when the window is shown
    }
    DropBackground(*surface);
    if (part.width > 0 && part.height > 0)
        Upload(surface->window, picture, part);
    Flush();
    return true;
}
