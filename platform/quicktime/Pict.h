// platform/quicktime/Pict.h
//
// QuickDraw pictures: bytes in, pixels out. Versions 1 and 2, every bitmap operation, compressed
// images, clipping, scaling and shapes; text is not drawn. Image files inside a picture are left
// to a decoder that the caller names.
#pragma once

#include <optional>

#include "platform/coregraphics/Raster.h"
#include "platform/quicktime/ByteReader.h"

/// Decodes a whole image file of another format; nullopt when it cannot, or when the image has more
/// than `mostPixels` pixels.
using ImageDecoder = std::optional<Raster> (*)(Bytes file, std::uint64_t mostPixels);

/// What the bytes say about being a picture.
enum class PictSignature {
    None,
    Weak,  ///< Version 1: two bytes, which other formats may have in this place by chance.
    Strong ///< Version 2.
};

/// Looks for the version in both places where it may stand.
PictSignature FindPictSignature(Bytes file);

/// Plays a picture, with or without the 512 bytes that a file has in front.
/// @return white where nothing was drawn, with alpha where the first image drawn there has it; what
///         was drawn when an operation is cut off or damaged; nullopt when nothing was drawn until
///         then, for an empty frame and for one that is too large.
std::optional<Raster> DecodePict(Bytes file, ImageDecoder decodeImage);
