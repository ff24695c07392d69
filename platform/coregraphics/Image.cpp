// platform/coregraphics/Image.cpp
//
// Making images and counting their references.
#include "platform/coregraphics/Image.h"

#include <algorithm>
#include <utility>

CRef<CGImage> CGImage::Create(std::size_t width, std::size_t height, std::vector<std::uint32_t> pixels)
{
    const bool fits = width != 0 && height != 0 && pixels.size() / width == height && pixels.size() % width == 0;
    return fits ? CRef<CGImage>::Adopt(new CGImage(width, height, std::move(pixels))) : CRef<CGImage>();
}

std::string CGImage::Describe() const
{
    return "<image " + std::to_string(m_width) + " x " + std::to_string(m_height) + ">";
}

CFTypeID CGImageGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Image);
}

CGImageRef CGImageRetain(CGImageRef image)
{
    if (image)
        image->Retain();
    return image;
}

void CGImageRelease(CGImageRef image)
{
    if (image)
        image->Release();
}

size_t CGImageGetWidth(CGImageRef image)
{
    return IsOfType(image, TypeId::Image) ? image->Width() : 0;
}

size_t CGImageGetHeight(CGImageRef image)
{
    return IsOfType(image, TypeId::Image) ? image->Height() : 0;
}

size_t CGImageGetBitsPerPixel(CGImageRef image)
{
    return IsOfType(image, TypeId::Image) ? 32 : 0;
}

CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image)
{
    if (!IsOfType(image, TypeId::Image))
        return kCGImageAlphaNone;
    const std::uint32_t* const pixels = image->Pixels();
    const bool isOpaque = std::all_of(pixels, pixels + image->Width() * image->Height(),
                                      [](std::uint32_t pixel) { return pixel >= 0xFF000000U; });
    return isOpaque ? kCGImageAlphaNoneSkipFirst : kCGImageAlphaPremultipliedFirst;
}
