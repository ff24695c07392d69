// platform/quicktime/PictBitmap.cpp
//
// Rows are found and checked first and unpacked only when they are drawn, so the memory taken is
// that of one row, whatever the data claim.
#include "platform/quicktime/PictBitmap.h"

#include "platform/quicktime/PackBits.h"

namespace {

constexpr unsigned kRowBytesMask = 0x3FFF;
constexpr unsigned kPixMapFlag = 0x8000;
constexpr unsigned kIndexedByPosition = 0x8000;
constexpr std::size_t kSmallestPackedRow = 8;
constexpr std::size_t kMostRowBytesWithShortLength = 250;
constexpr int kMostTilePixels = 64 * 64;

std::uint32_t Colour(unsigned red, unsigned green, unsigned blue)
{
    return 0xFF000000U | (red << 16U) | (green << 8U) | blue;
}

struct RowList {
    std::vector<Bytes> rows;
    std::size_t end = 0; // where the reader is behind the last of them
};

/// Finds rows that each have a length of `lengthSize` bytes in front, as far as they are whole.
RowList FindPackedRows(CByteReader reader, std::size_t count, std::size_t lengthSize, std::size_t element,
                       std::size_t unpackedSize)
{
    RowList list;
    while (list.rows.size() < count) {
        const Bytes row = reader.Take(lengthSize == 1 ? reader.U8() : reader.U16());
        if (reader.Failed() || !UnpacksTo(row, element, unpackedSize))
            break;
        list.rows.push_back(row);
        list.end = reader.Position();
    }
    return list;
}

} // namespace

std::optional<CPictBitmap> CPictBitmap::Read(CByteReader& reader, unsigned opcode)
{
    CPictBitmap bitmap;
    if (!bitmap.ReadHeader(reader, opcode)) {
        reader.Fail();
        return std::nullopt;
    }
    bitmap.m_source = ReadRect(reader);
    bitmap.m_destination = ReadRect(reader);
    bitmap.m_mode = reader.U16();
    if ((opcode & 1U) != 0)
        bitmap.m_mask = CPictRegion::Read(reader);
    if (reader.Failed())
        return std::nullopt;
    if (!bitmap.ReadRows(reader)) {
        reader.Fail();
        if (bitmap.m_rows.empty())
            return std::nullopt;
    }
    return bitmap;
}

bool CPictBitmap::ReadHeader(CByteReader& reader, unsigned opcode)
{
    const bool isDirect = opcode >= 0x9A;
    if (isDirect)
        reader.Skip(4); // a base address
    const unsigned rowBytes = reader.U16();
    m_isPixMap = isDirect || (rowBytes & kPixMapFlag) != 0;
    m_rowBytes = rowBytes & kRowBytesMask;
    m_bounds = ReadRect(reader);
    unsigned packType = 0;
    if (m_isPixMap) {
        reader.Skip(2); // version
        packType = reader.U16();
        reader.Skip(4 + 4 + 4 + 2); // packed size, resolution, pixel type
        m_depth = reader.U16();
        m_components = reader.U16();
        reader.Skip(2 + 4 + 4 + 4); // component size, planes, table, reserved
    }
    if (m_isPixMap && !isDirect && !ReadColours(reader))
        return false;
    const bool isPossible = isDirect ? m_depth >= 16 : m_depth <= 8;
    const bool mayPack = opcode >= 0x98;
    return !reader.Failed() && isPossible && m_bounds.Width() >= 0 && m_bounds.Height() >= 0 &&
           ChoosePacking(mayPack, packType);
}

bool CPictBitmap::ReadColours(CByteReader& reader)
{
    reader.Skip(4); // seed
    const unsigned flags = reader.U16();
    const unsigned last = reader.U16();
    m_colours.fill(kBlack);
    for (unsigned index = 0; index <= last && !reader.Failed(); ++index) {
        const unsigned value = reader.U16();
        const unsigned red = reader.U16() >> 8U;
        const unsigned green = reader.U16() >> 8U;
        const unsigned blue = reader.U16() >> 8U;
        const unsigned pixel = (flags & kIndexedByPosition) != 0 ? index : value;
        if (pixel < m_colours.size() && !reader.Failed())
            m_colours[pixel] = Colour(red, green, blue);
    }
    return !reader.Failed();
}

bool CPictBitmap::ChoosePacking(bool mayPack, unsigned packType)
{
    const std::size_t width = static_cast<std::size_t>(m_bounds.Width());
    // A row of 32-bit pixels may be longer than its field can say.
    if (m_depth == 32 && width * 4 > kRowBytesMask)
        m_rowBytes = width * 4;
    const bool isPacked = mayPack && m_rowBytes >= kSmallestPackedRow;
    switch (m_depth) {
    case 1:
    case 2:
    case 4:
    case 8:
        m_packing = isPacked ? Packing::Bytes : Packing::None;
        break;
    case 16:
        m_packing = isPacked && packType != 1 && packType != 2 ? Packing::Words : Packing::None;
        break;
    case 32:
        if (m_rowBytes < kSmallestPackedRow || packType == 1)
            m_packing = Packing::None;
        else if (packType == 2)
            m_packing = Packing::Triples;
        else if (m_components == 3 || m_components == 4)
            m_packing = Packing::Planes;
        else
            return false;
        break;
    default:
        return false;
    }
    const std::size_t needed = m_packing == Packing::Triples ? width * 3 : (width * m_depth + 7) / 8;
    return m_packing == Packing::Planes || UnpackedSize() >= needed;
}

std::size_t CPictBitmap::UnpackedSize() const
{
    switch (m_packing) {
    case Packing::Planes:
        return static_cast<std::size_t>(m_bounds.Width()) * m_components;
    case Packing::Triples:
        return m_rowBytes / 4 * 3;
    default:
        return m_rowBytes;
    }
}

bool CPictBitmap::ReadRows(CByteReader& reader)
{
    const std::size_t count = static_cast<std::size_t>(m_bounds.Height());
    if (m_packing == Packing::None || m_packing == Packing::Triples) {
        while (m_rows.size() < count) {
            const Bytes row = reader.Take(UnpackedSize());
            if (reader.Failed())
                return false;
            m_rows.push_back(row);
        }
        return true;
    }
    const std::size_t element = m_packing == Packing::Words ? 2 : 1;
    const std::size_t rule = m_rowBytes > kMostRowBytesWithShortLength ? 2 : 1;
    RowList list = FindPackedRows(reader, count, rule, element, UnpackedSize());
    if (list.rows.size() < count) { // other programs draw the line elsewhere
        RowList other = FindPackedRows(reader, count, 3 - rule, element, UnpackedSize());
        if (other.rows.size() > list.rows.size())
            list = std::move(other);
    }
    m_rows = std::move(list.rows);
    if (m_rows.size() < count)
        return false;
    if (count > 0)
        reader.Skip(list.end - reader.Position());
    return true;
}

/// Unpacks the rows of a bitmap as they are drawn.
class CPictBitmap::CPainter {
public:
    CPainter(const CPictBitmap& bitmap, const PictInks& inks)
        : m_bitmap(bitmap), m_inks(inks), m_width(bitmap.m_bounds.Width())
    {
    }

    bool SelectRow(int y)
    {
        const std::int64_t index = static_cast<std::int64_t>(y) - m_bitmap.m_bounds.top;
        if (index < 0 || index >= static_cast<std::int64_t>(m_bitmap.m_rows.size()))
            return false;
        if (index == m_index)
            return true;
        const Bytes packed = m_bitmap.m_rows[static_cast<std::size_t>(index)];
        if (m_bitmap.m_packing == Packing::None || m_bitmap.m_packing == Packing::Triples) {
            m_row = packed.data;
        } else {
            m_unpacked.resize(m_bitmap.UnpackedSize());
            UnpackBits(packed, m_bitmap.m_packing == Packing::Words ? 2 : 1, m_unpacked);
            m_row = m_unpacked.data();
        }
        m_index = index;
        return true;
    }

    void Paint(int x, std::uint32_t& pixel) const
    {
        const int column = x - m_bitmap.m_bounds.left;
        if (column < 0 || column >= m_width)
            return;
        if (m_bitmap.m_isPixMap)
            pixel = CombineColour(m_bitmap.m_mode, ColourAt(static_cast<std::size_t>(column)), pixel, m_inks);
        else
            pixel = CombineBit(m_bitmap.m_mode, IndexAt(static_cast<std::size_t>(column)) != 0, pixel, m_inks);
    }

    std::uint32_t ColourAt(std::size_t column) const
    {
        if (m_bitmap.m_depth <= 8)
            return m_bitmap.m_colours[IndexAt(column)];
        if (m_bitmap.m_depth == 16) {
            const unsigned value = static_cast<unsigned>(m_row[2 * column] << 8U) | m_row[2 * column + 1];
            const auto widen = [](unsigned five) {
                return (five << 3U) | (five >> 2U);
            };
            return Colour(widen((value >> 10U) & 31U), widen((value >> 5U) & 31U), widen(value & 31U));
        }
        switch (m_bitmap.m_packing) {
        case Packing::Planes: {
            const std::size_t plane = static_cast<std::size_t>(m_width);
            const std::uint8_t* const red = m_row + (m_bitmap.m_components == 4 ? plane : 0) + column;
            return Colour(red[0], red[plane], red[2 * plane]);
        }
        case Packing::Triples:
            return Colour(m_row[3 * column], m_row[3 * column + 1], m_row[3 * column + 2]);
        default:
            return Colour(m_row[4 * column + 1], m_row[4 * column + 2], m_row[4 * column + 3]);
        }
    }

private:
    unsigned IndexAt(std::size_t column) const
    {
        const std::size_t bit = column * m_bitmap.m_depth;
        return (m_row[bit / 8] >> (8 - m_bitmap.m_depth - bit % 8)) & ((1U << m_bitmap.m_depth) - 1);
    }

    const CPictBitmap& m_bitmap;
    PictInks m_inks;
    int m_width;
    std::int64_t m_index = -1;
    const std::uint8_t* m_row = nullptr;
    std::vector<std::uint8_t> m_unpacked;
};

void CPictBitmap::Draw(CPictCanvas& canvas, const PictInks& inks)
{
    CPainter painter(*this, inks);
    canvas.DrawImage(painter, m_source, m_destination, m_mask ? &*m_mask : nullptr);
}

Raster CPictBitmap::ReadTile(CByteReader& reader)
{
    CPictBitmap bitmap;
    Raster tile;
    if (!bitmap.ReadHeader(reader, 0x98) || !bitmap.m_isPixMap || !bitmap.ReadRows(reader)) {
        reader.Fail();
        return tile;
    }
    const PictRect& bounds = bitmap.m_bounds;
    if (bounds.IsEmpty() || bounds.Width() > kMostTilePixels / bounds.Height())
        return tile;
    tile.width = bounds.Width();
    tile.height = bounds.Height();
    CPainter painter(bitmap, {});
    for (int y = bounds.top; y < bounds.bottom && painter.SelectRow(y); ++y) {
        for (int column = 0; column < tile.width; ++column)
            tile.argb.push_back(painter.ColourAt(static_cast<std::size_t>(column)));
    }
    return tile;
}
