// platform/quicktime/PictInk.h
//
// Colours, patterns and transfer modes: what a drawn pixel makes of the pixel below it.
#pragma once

#include <array>
#include <cstdint>

#include "platform/coregraphics/Raster.h"

constexpr std::uint32_t kBlack = 0xFF000000;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;
/// A canvas pixel that nothing has been drawn on. It counts as white, but an image with alpha that
/// comes first keeps its alpha. No premultiplied colour has this value.
constexpr std::uint32_t kUntouched = 0x00FFFFFF;

/// Eight rows of eight pixels, or a tile of colours.
struct PictPattern {
    std::array<std::uint8_t, 8> bits = {};
    Raster tile; // used when it is not empty

    static PictPattern Solid(std::uint8_t row)
    {
        PictPattern pattern;
        pattern.bits.fill(row);
        return pattern;
    }
};

/// The colours that transfer modes refer to.
struct PictInks {
    std::uint32_t foreground = kBlack;
    std::uint32_t background = kWhite;
    std::uint32_t operand = kBlack;
};

/// Answers what becomes of `below` when a coloured pixel comes over it. Modes that are not known
/// copy.
std::uint32_t CombineColour(int mode, std::uint32_t colour, std::uint32_t below, const PictInks& inks);

/// Answers whether a mode is known to leave nothing of `below`, unless the colour has alpha: srcCopy and
/// ditherCopy.
bool IsCopy(int mode);

/// Answers what becomes of `below` when a pixel of one bit comes over it, of a picture or
/// pattern: modes 0 to 7, or 8 to 15 for patterns.
std::uint32_t CombineBit(int mode, bool bit, std::uint32_t below, const PictInks& inks);
