// platform/quicktime/Completeness.h
//
// Whether an image file is there to its end. Decoders answer a file that was cut off with the part
// that they have; we want none of it.
#pragma once

#include "platform/quicktime/ByteReader.h"

/// Answers false for a PNG, JPEG or BMP file that is cut off; true for every other one, whose decoders
/// notice it themselves.
bool IsCompleteImageFile(Bytes file);
