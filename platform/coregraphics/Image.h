// platform/coregraphics/Image.h
//
// The image object: pixels ready for drawing. Who reads files makes it, who draws reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/corefoundation/Object.h"
#include <CoreGraphics/CGImage.h>

struct CGImage final : CObject {
    /// Makes an image.
    /// @param pixels  rows from the top, without gaps: 0xAARRGGBB in native byte order, colour
    ///                premultiplied by alpha. Their number must be width * height.
    /// @return the image; empty when the sides are 0 or do not fit the pixels.
    static CRef<CGImage> Create(std::size_t width, std::size_t height, std::vector<std::uint32_t> pixels);

    std::size_t Width() const noexcept { return m_width; }
    std::size_t Height() const noexcept { return m_height; }
    /// The first pixel of the top row; rows follow each other without gaps.
    const std::uint32_t* Pixels() const noexcept { return m_pixels.data(); }

    TypeId Type() const noexcept override { return TypeId::Image; }
    std::string Describe() const override;

private:
    CGImage(std::size_t width, std::size_t height, std::vector<std::uint32_t> pixels) noexcept
        : m_width(width), m_height(height), m_pixels(std::move(pixels))
    {
    }

    const std::size_t m_width;
    const std::size_t m_height;
    const std::vector<std::uint32_t> m_pixels;
};
