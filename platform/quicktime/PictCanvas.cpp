// platform/quicktime/PictCanvas.cpp
//
// The beginning and the end of a canvas.
#include "platform/quicktime/PictCanvas.h"

#include <utility>

namespace {
// A real picture draws each pixel a few times. One made to waste time ends here, in about a second.
constexpr std::uint64_t kMostWork = std::uint64_t(1) << 27U;
} // namespace

CPictCanvas::CPictCanvas(const PictRect& source, int width, int height)
    : m_map(source, width, height), m_area{0, 0, height, width}, m_workLeft(kMostWork)
{
    m_pixels.width = width;
    m_pixels.height = height;
}

bool CPictCanvas::Adopt(Raster& image, const PictRect& source, const PictRect& destination)
{
    const bool fills = image.width == m_pixels.width && image.height == m_pixels.height && source == m_area &&
                       m_map.Of(destination) == m_area && (!m_clip || m_clip->Covers(m_area, m_map));
    if (m_drawn || !fills)
        return false;
    m_pixels = std::move(image);
    m_drawn = true;
    return true;
}

bool CPictCanvas::Spend(std::uint64_t work)
{
    if (work > m_workLeft) {
        m_workLeft = 0;
        return false;
    }
    m_workLeft -= work;
    return true;
}

Raster CPictCanvas::Finish()
{
    if (m_pixels.argb.empty())
        m_pixels.argb.assign(static_cast<std::size_t>(m_pixels.width) * static_cast<std::size_t>(m_pixels.height),
                             kWhite);
    for (std::uint32_t& pixel : m_pixels.argb) {
        if (pixel == kUntouched)
            pixel = kWhite;
    }
    return std::move(m_pixels);
}
