// platform/quicktime/PackBits.h
//
// The run-length packing of rows in pictures. Counted in elements of 1 byte, or of 2 bytes in
// 16-bit rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/quicktime/ByteReader.h"

/// Answers whether `packed` unpacks to exactly `size` bytes with nothing left over on either side.
bool UnpacksTo(Bytes packed, std::size_t element, std::size_t size);

/// Unpacks what UnpacksTo has approved for this `element` and the size of `row`.
void UnpackBits(Bytes packed, std::size_t element, std::vector<std::uint8_t>& row);
