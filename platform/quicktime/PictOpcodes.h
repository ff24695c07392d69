// platform/quicktime/PictOpcodes.h
//
// How long the data of every opcode are, so that each can be skipped.
#pragma once

#include "platform/quicktime/ByteReader.h"

/// Skips the data of an operation that is not drawn; the reader stands behind the opcode. The
/// operations that draw bitmaps have no length of their own and fail here.
void SkipOperation(CByteReader& reader, unsigned opcode);
