// platform/quicktime/PictInk.cpp
//
// QuickDraw's transfer modes on pixels of 32 bits.
#include "platform/quicktime/PictInk.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kColourBits = 0x00FFFFFF;

enum Mode {
    kCopy = 0,
    kOr = 1,
    kXor = 2,
    kBic = 3,
    kInverted = 4, // added to the four above
    kPattern = 8,  // added to the eight above
    kBlend = 32,
    kAddPin = 33,
    kAddOver = 34,
    kSubPin = 35,
    kTransparent = 36,
    kAddMax = 37,
    kSubOver = 38,
    kAdMin = 39,
    kDitherCopy = 64
};

std::uint32_t Channel(std::uint32_t pixel, unsigned shift)
{
    return (pixel >> shift) & 0xFFU;
}

std::uint32_t Opaque(std::uint32_t pixel)
{
    if (pixel == kUntouched)
        return kWhite;
    const std::uint32_t missing = 255 - Channel(pixel, 24);
    return 0xFF000000U | (pixel + missing * 0x010101U); // white shows through; premultiplied, so no carry
}

template <typename Work>
std::uint32_t PerChannel(std::uint32_t over, std::uint32_t below, const PictInks& inks, Work work)
{
    std::uint32_t result = 0xFF000000U;
    for (unsigned shift = 0; shift < 24; shift += 8)
        result |= (work(Channel(over, shift), Channel(below, shift), Channel(inks.operand, shift)) & 0xFFU) << shift;
    return result;
}

/// Porter and Duff's "over" on premultiplied colours.
std::uint32_t Over(std::uint32_t over, std::uint32_t below)
{
    const std::uint32_t rest = 255 - Channel(over, 24);
    std::uint32_t result = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
        result |= std::min(255U, Channel(over, shift) + (Channel(below, shift) * rest + 127) / 255) << shift;
    return result;
}

} // namespace

std::uint32_t CombineColour(int mode, std::uint32_t colour, std::uint32_t below, const PictInks& inks)
{
    if (Channel(colour, 24) != 0xFF) // only images with alpha get here; modes do not apply to them
        return below == kUntouched ? colour : Over(colour, below);
    using Value = std::uint32_t;
    switch (mode) {
    case kOr: // black is all ones in QuickDraw's logic, and all zeros here
        return 0xFF000000U | (Opaque(below) & colour);
    case kOr + kInverted:
        return 0xFF000000U | (Opaque(below) & ~colour);
    case kXor:
        return 0xFF000000U | ((Opaque(below) ^ ~colour) & kColourBits);
    case kXor + kInverted:
        return 0xFF000000U | ((Opaque(below) ^ colour) & kColourBits);
    case kBic:
        return Opaque(below) | (~colour & kColourBits);
    case kBic + kInverted:
        return Opaque(below) | colour;
    case kCopy + kInverted:
        return colour ^ kColourBits;
    case kBlend:
        return PerChannel(colour, Opaque(below), inks, [](Value over, Value under, Value weight) {
            return (over * weight + under * (255 - weight)) / 255;
        });
    case kAddPin:
        return PerChannel(colour, Opaque(below), inks,
                          [](Value over, Value under, Value most) { return std::min(over + under, most); });
    case kAddOver:
        return PerChannel(colour, Opaque(below), inks, [](Value over, Value under, Value) { return over + under; });
    case kSubPin:
        return PerChannel(colour, Opaque(below), inks, [](Value over, Value under, Value least) {
            return under > over + least ? under - over : least;
        });
    case kTransparent:
        return colour == inks.background ? below : colour;
    case kAddMax:
        return PerChannel(colour, Opaque(below), inks,
                          [](Value over, Value under, Value) { return std::max(over, under); });
    case kSubOver:
        return PerChannel(colour, Opaque(below), inks, [](Value over, Value under, Value) { return under - over; });
    case kAdMin:
        return PerChannel(colour, Opaque(below), inks,
                          [](Value over, Value under, Value) { return std::min(over, under); });
    default:
        return colour;
    }
}

bool IsCopy(int mode)
{
    return mode == kCopy || mode == kDitherCopy;
}

std::uint32_t CombineBit(int mode, bool bit, std::uint32_t below, const PictInks& inks)
{
    if (mode >= 2 * kPattern)
        return CombineColour(mode, bit ? inks.foreground : inks.background, below, inks);
    const bool set = bit != ((mode & kInverted) != 0);
    switch (mode & 3) {
    case kOr:
        return set ? inks.foreground : below;
    case kXor:
        return set ? Opaque(below) ^ kColourBits : below;
    case kBic:
        return set ? inks.background : below;
    default:
        return set ? inks.foreground : inks.background;
    }
}
