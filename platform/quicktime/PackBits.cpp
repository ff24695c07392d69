// platform/quicktime/PackBits.cpp
//
// A count byte below 128 copies the next count + 1 elements, one above it repeats the next element
// 257 - count times, and 128 itself means nothing.
#include "platform/quicktime/PackBits.h"

#include <cstring>

bool UnpacksTo(Bytes packed, std::size_t element, std::size_t size)
{
    std::size_t unpacked = 0;
    for (std::size_t at = 0; at < packed.size;) {
        const std::size_t count = packed.data[at++];
        if (count == 128)
            continue;
        const std::size_t bytes = (count < 128 ? count + 1 : 257 - count) * element;
        const std::size_t stored = count < 128 ? bytes : element;
        if (stored > packed.size - at || bytes > size - unpacked)
            return false;
        at += stored;
        unpacked += bytes;
    }
    return unpacked == size;
}

void UnpackBits(Bytes packed, std::size_t element, std::vector<std::uint8_t>& row)
{
    std::uint8_t* to = row.data();
    for (const std::uint8_t* from = packed.data; from < packed.data + packed.size;) {
        const std::size_t count = *from++;
        if (count < 128) {
            std::memcpy(to, from, (count + 1) * element);
            from += (count + 1) * element;
            to += (count + 1) * element;
        } else if (count > 128) {
            for (std::size_t index = 0; index < 257 - count; ++index, to += element)
                std::memcpy(to, from, element);
            from += element;
        }
    }
}
