// platform/quicktime/Importer.h
//
// From the bytes of a picture file to pixels, whatever its format.
#pragma once

#include <optional>

#include "platform/coregraphics/Raster.h"
#include "platform/quicktime/ByteReader.h"

/// Decodes a picture by what its bytes say; nullopt when nothing knows it, when it is damaged or
/// too large.
std::optional<Raster> ImportPicture(Bytes file);
