// platform/quicktime/PictCanvas.h
//
// The pixels that a picture is played on, its clip, and the bound on the work that it may cause.
#pragma once

#include <optional>

#include "platform/coregraphics/Raster.h"
#include "platform/quicktime/PictInk.h"
#include "platform/quicktime/PictRegion.h"

class CPictCanvas {
public:
    /// Takes no memory yet: the first drawing does. The size must be allowed (IsSizeAllowed).
    CPictCanvas(const PictRect& source, int width, int height);

    const CPictMap& Map() const { return m_map; }
    /// Limits what follows to a region; none lifts the limit.
    void SetClip(std::optional<CPictRegion> clip) { m_clip = std::move(clip); }

    /// Calls `paint(pixels, y, left, right)` for every run of pixels, left to right and top to
    /// bottom, that the shape, the clip and the mask (unless null) have in common. `pixels` is the
    /// canvas's row. Stops early when the work allowed is used up.
    template <typename Paint>
    void Fill(CPictShape& shape, const CPictRegion* mask, Paint paint);

    /// Draws a part of an image over a rectangle of the picture, taking the nearest pixels.
    /// `image.SelectRow(y)` answers whether the image has a row y and readies it;
    /// `image.Paint(x, pixel)` puts its pixel x of that row over a pixel of the canvas.
    template <typename Image>
    void DrawImage(Image& image, const PictRect& source, const PictRect& destination, const CPictRegion* mask);

    /// Takes an image's pixels as its own, which spares drawing them, where they would be the first
    /// thing drawn and fill it one for one.
    /// @return false, with the image left alone, when they would not.
    bool Adopt(Raster& image, const PictRect& source, const PictRect& destination);

    /// Takes work, in pixels' worth, off what a picture is allowed.
    /// @return false when there is not enough left.
    bool Spend(std::uint64_t work);
    std::uint64_t WorkLeft() const { return m_workLeft; }
    /// Answers whether anything was drawn, be it outside of the clip.
    bool IsDrawn() const { return m_drawn; }

    /// Gives the pixels away; what nothing was drawn on is white.
    Raster Finish();

private:
    CPictMap m_map;
    PictRect m_area;
    std::optional<CPictRegion> m_clip;
    std::uint64_t m_workLeft;
    bool m_drawn = false;
    Raster m_pixels;
};

template <typename Paint>
void CPictCanvas::Fill(CPictShape& shape, const CPictRegion* mask, Paint paint)
{
    m_drawn = true;
    if (m_pixels.argb.empty())
        m_pixels.argb.assign(static_cast<std::size_t>(m_pixels.width) * static_cast<std::size_t>(m_pixels.height),
                             kUntouched);
    const PictRect bounds = shape.Bounds().Within(m_area);
    const ShapePtr clipShape = m_clip ? m_clip->MakeShape(m_map) : nullptr;
    const ShapePtr maskShape = mask ? mask->MakeShape(m_map) : nullptr;
    for (int y = bounds.top; y < bounds.bottom; ++y) {
        Edges edges = Intersect(shape.EdgesAt(y), {m_area.left, m_area.right});
        std::uint64_t work = shape.TakeWork();
        for (CPictShape* const limit : {clipShape.get(), maskShape.get()}) {
            if (limit) {
                edges = Intersect(edges, limit->EdgesAt(y));
                work += limit->TakeWork();
            }
        }
        for (std::size_t index = 0; index < edges.size(); index += 2)
            work += static_cast<std::uint64_t>(edges[index + 1] - edges[index]);
        if (!Spend(work))
            return;
        std::uint32_t* const row =
            m_pixels.argb.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_pixels.width);
        for (std::size_t index = 0; index < edges.size(); index += 2)
            paint(row, y, edges[index], edges[index + 1]);
    }
}

template <typename Image>
void CPictCanvas::DrawImage(Image& image, const PictRect& source, const PictRect& destination, const CPictRegion* mask)
{
    const PictRect device = m_map.Of(destination);
    if (source.IsEmpty() || device.IsEmpty())
        return;
    const ShapePtr shape = MakeRectShape(device);
    Fill(*shape, mask, [&](std::uint32_t* pixels, int y, int left, int right) {
        const auto scale = [](int distance, int from, int to) {
            return from == to ? distance : static_cast<int>(static_cast<std::int64_t>(distance) * from / to);
        };
        if (!image.SelectRow(source.top + scale(y - device.top, source.Height(), device.Height())))
            return;
        for (int x = left; x < right; ++x)
            image.Paint(source.left + scale(x - device.left, source.Width(), device.Width()), pixels[x]);
    });
}
