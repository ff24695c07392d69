// platform/quicktime/PictBitmap.h
//
// The raster data of a picture: bitmaps of one bit, pixel maps of 1 to 32 bits, their colour
// tables, their rows in every packing.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "platform/quicktime/PictCanvas.h"

/// A bitmap with its rows still packed; it refers to the bytes that it was read from.
class CPictBitmap {
public:
    /// The operations that draw bitmaps.
    static bool IsOpcode(unsigned opcode) { return (opcode & ~3U) == 0x98 || (opcode & ~1U) == 0x90; }
    /// Reads the data of one of them. When the rows end early the reader has failed, and the
    /// bitmap holds the rows that are whole.
    /// @return nullopt, with the reader failed, for data that cannot be drawn at all.
    static std::optional<CPictBitmap> Read(CByteReader& reader, unsigned opcode);
    /// Reads the pixel map of a colour pattern as the pattern's tile.
    /// @return no pixels, with the reader failed, where it is damaged; no pixels alone where the
    ///         tile is too large for a pattern.
    static Raster ReadTile(CByteReader& reader);

    const PictRect& Destination() const { return m_destination; }
    void SetDestination(const PictRect& destination) { m_destination = destination; }
    void Draw(CPictCanvas& canvas, const PictInks& inks);

private:
    enum class Packing { None, Bytes, Words, Planes, Triples };
    class CPainter;

    bool ReadHeader(CByteReader& reader, unsigned opcode);
    bool ReadColours(CByteReader& reader);
    bool ChoosePacking(bool mayPack, unsigned packType);
    bool ReadRows(CByteReader& reader);
    std::size_t UnpackedSize() const;

    bool m_isPixMap = false;
    PictRect m_bounds;
    PictRect m_source;
    PictRect m_destination;
    int m_mode = 0;
    std::size_t m_rowBytes = 0;
    unsigned m_depth = 1;
    unsigned m_components = 3;
    Packing m_packing = Packing::None;
    std::array<std::uint32_t, 256> m_colours = {};
    std::optional<CPictRegion> m_mask;
    std::vector<Bytes> m_rows;
};
