// platform/coregraphics/Raster.h
//
// A decoded picture as plain data: what the readers of image files make and an image object holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The most pixels that any reader makes; a picture that claims more is refused before memory is
/// taken for it.
constexpr std::uint64_t kMaxPixels = std::uint64_t(1) << 25U;
/// The longest side.
constexpr int kMaxSide = 32767;

/// `height` rows of `width` pixels without gaps, top row first; each 0xAARRGGBB in native byte
/// order, colour premultiplied by alpha.
struct Raster {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> argb;

    const std::uint32_t* Row(int y) const
    {
        return argb.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Answers whether a picture of this size may be made.
constexpr bool IsSizeAllowed(std::int64_t width, std::int64_t height)
{
    return width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide &&
           static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) <= kMaxPixels;
}

/// Answers the pixel of a colour that is not premultiplied; each part 0 to 255.
constexpr std::uint32_t PremultipliedPixel(std::uint32_t alpha, std::uint32_t red, std::uint32_t green,
                                           std::uint32_t blue)
{
    const auto scaled = [alpha](std::uint32_t part) {
        return (part * alpha + 127) / 255;
    };
    return alpha << 24U | scaled(red) << 16U | scaled(green) << 8U | scaled(blue);
}
