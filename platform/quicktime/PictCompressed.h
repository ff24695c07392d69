// platform/quicktime/PictCompressed.h
//
// Image files inside a picture, with the matrix that places them.
#pragma once

#include "platform/quicktime/Pict.h"
#include "platform/quicktime/PictCanvas.h"

/// What became of a compressed image.
struct CompressedResult {
    bool isDrawn = false;
    PictRect destination; ///< Where it lies; a stand-in for it has the same.
};

/// Decodes and draws the data of a CompressedQuickTime operation. Damage stays inside: the data
/// have their own length.
CompressedResult DrawCompressed(Bytes data, CPictCanvas& canvas, const PictInks& inks, ImageDecoder decodeImage);

/// Draws the data of an UncompressedQuickTime operation: a bitmap operation behind a matrix.
void DrawUncompressed(Bytes data, CPictCanvas& canvas, const PictInks& inks);
