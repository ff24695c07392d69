// platform/quicktime/ImageModule.h
//
// The door to the module that knows the common image formats. It brings libraries with it, so it
// is loaded when the first such image comes, from the folder that the layer lies in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/coregraphics/Raster.h"
#include "platform/quicktime/ByteReader.h"

/// What the module offers. No call throws.
struct ImageModuleCalls {
    /// Decodes a whole image file.
    /// @return false, with `pixels` as it was, when it is damaged, cut off, of no known format or
    ///         of more than `mostPixels` pixels.
    bool (*decode)(Bytes file, std::uint64_t mostPixels, Raster& pixels);
    /// Makes a PNG file of rows of pixels (see Raster) without gaps; false when memory does not
    /// suffice.
    bool (*encodePng)(const std::uint32_t* argb, int width, int height, bool hasAlpha, std::string& file);
};

/// The one name that the module exports, a function of this type.
constexpr const char* kImageModuleSymbol = "cv_image_module_1";
using ImageModuleEntry = const ImageModuleCalls* (*)();

/// Answers the module, loaded; null where it or a library of its is missing.
const ImageModuleCalls* LoadImageModule();
