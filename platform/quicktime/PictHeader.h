// platform/quicktime/PictHeader.h
//
// Where a picture begins, what version it has and which rectangles it maps onto each other.
#pragma once

#include <optional>

#include "platform/quicktime/Pict.h"
#include "platform/quicktime/PictGeometry.h"

struct PictHeader {
    bool isVersion2 = false;
    PictRect frame;             ///< The image's size, at 72 dots per inch.
    PictRect source;            ///< The operations' coordinates, which map onto the frame.
    Bytes picture;              ///< From the picture's start on; opcodes are aligned to that.
    std::size_t operations = 0; ///< Where in it the operations begin.
};

/// @return nullopt when the bytes are no picture or its frame is empty.
std::optional<PictHeader> ReadPictHeader(Bytes file);
