// platform/quicktime/PictOpcodes.cpp
//
// The list of opcodes as data.
#include "platform/quicktime/PictOpcodes.h"

namespace {

enum class Length {
    Fixed,       // `size` bytes
    Counted,     // `size` bytes, then a length of 2 bytes, then as many
    CountedLong, // a length of 4 bytes, then as many
    Text,        // `size` bytes, then a length of 1 byte, then as many
    SelfCounted, // a length of 2 bytes that counts itself too, as regions and polygons have
    ByHighByte,  // two bytes for each in the opcode's high byte
    Unknown      // only the operation itself knows
};

constexpr struct {
    unsigned first;
    unsigned last;
    Length length;
    unsigned size;
} kLengths[] = {
    {0x00, 0x00, Length::Fixed, 0},     {0x01, 0x01, Length::SelfCounted, 0}, // clip
    {0x02, 0x02, Length::Fixed, 8},                                           // patterns
    {0x03, 0x03, Length::Fixed, 2},     {0x04, 0x04, Length::Fixed, 1},
    {0x05, 0x05, Length::Fixed, 2},     {0x06, 0x07, Length::Fixed, 4},
    {0x08, 0x08, Length::Fixed, 2},     {0x09, 0x0A, Length::Fixed, 8},
    {0x0B, 0x0C, Length::Fixed, 4},     {0x0D, 0x0D, Length::Fixed, 2},
    {0x0E, 0x0F, Length::Fixed, 4},     {0x10, 0x10, Length::Fixed, 8},
    {0x11, 0x11, Length::Fixed, 1},     {0x12, 0x14, Length::Unknown, 0}, // pixel patterns
    {0x15, 0x16, Length::Fixed, 2},     {0x17, 0x19, Length::Fixed, 0},
    {0x1A, 0x1B, Length::Fixed, 6},     {0x1C, 0x1C, Length::Fixed, 0},
    {0x1D, 0x1D, Length::Fixed, 6},     {0x1E, 0x1E, Length::Fixed, 0},
    {0x1F, 0x1F, Length::Fixed, 6},     {0x20, 0x20, Length::Fixed, 8}, // lines
    {0x21, 0x21, Length::Fixed, 4},     {0x22, 0x22, Length::Fixed, 6},
    {0x23, 0x23, Length::Fixed, 2},     {0x24, 0x27, Length::Counted, 0},
    {0x28, 0x28, Length::Text, 4},      {0x29, 0x2A, Length::Text, 1},
    {0x2B, 0x2B, Length::Text, 2},      {0x2C, 0x2F, Length::Counted, 0},
    {0x30, 0x37, Length::Fixed, 8}, // rectangles
    {0x38, 0x3F, Length::Fixed, 0},     {0x40, 0x47, Length::Fixed, 8},
    {0x48, 0x4F, Length::Fixed, 0},     {0x50, 0x57, Length::Fixed, 8},
    {0x58, 0x5F, Length::Fixed, 0},     {0x60, 0x67, Length::Fixed, 12},      // arcs
    {0x68, 0x6F, Length::Fixed, 4},     {0x70, 0x77, Length::SelfCounted, 0}, // polygons
    {0x78, 0x7F, Length::Fixed, 0},     {0x80, 0x87, Length::SelfCounted, 0}, // regions
    {0x88, 0x8F, Length::Fixed, 0},     {0x90, 0x91, Length::Unknown, 0},     // bitmaps
    {0x92, 0x97, Length::Counted, 0},   {0x98, 0x9B, Length::Unknown, 0},     // bitmaps
    {0x9C, 0x9F, Length::Counted, 0},   {0xA0, 0xA0, Length::Fixed, 2},       // comments
    {0xA1, 0xA1, Length::Counted, 2},   {0xA2, 0xAF, Length::Counted, 0},
    {0xB0, 0xCF, Length::Fixed, 0},     {0xD0, 0xFE, Length::CountedLong, 0},
    {0xFF, 0xFF, Length::Fixed, 0},     {0x0100, 0x7FFF, Length::ByHighByte, 0},
    {0x8000, 0x80FF, Length::Fixed, 0}, {0x8100, 0xFFFF, Length::CountedLong, 0},
};

} // namespace

void SkipOperation(CByteReader& reader, unsigned opcode)
{
    for (const auto& range : kLengths) {
        if (opcode < range.first || opcode > range.last)
            continue;
        switch (range.length) {
        case Length::Fixed:
            return reader.Skip(range.size);
        case Length::Counted:
            reader.Skip(range.size);
            return reader.Skip(reader.U16());
        case Length::CountedLong:
            return reader.Skip(reader.U32());
        case Length::Text:
            reader.Skip(range.size);
            return reader.Skip(reader.U8());
        case Length::SelfCounted: {
            const std::size_t size = reader.U16();
            return size < 2 ? reader.Fail() : reader.Skip(size - 2);
        }
        case Length::ByHighByte:
            return reader.Skip(2 * static_cast<std::size_t>(opcode >> 8U));
        case Length::Unknown:
            return reader.Fail();
        }
    }
    reader.Fail();
}
