// platform/quicktime/PictRegion.cpp
//
// A region that is not a rectangle lists, from the top, the rows that differ from the row above
// them and the positions at which they do.
#include "platform/quicktime/PictRegion.h"

#include <utility>

namespace {
constexpr std::size_t kRectangleSize = 10; // its own size and the bounding rectangle
constexpr int kListEnd = 0x7FFF;
} // namespace

/// Follows the rows downwards; `m_inside` is the state of the row reached, in picture coordinates.
class CPictRegion::CShape final : public CPictShape {
public:
    CShape(const CPictRegion& region, const CPictMap& map) : m_region(region), m_map(map) {}
    PictRect Bounds() const override { return m_map.Of(m_region.m_bounds); }
    Edges EdgesAt(int y) override
    {
        for (; m_next < m_region.m_rows.size() && m_map.Y(m_region.m_rows[m_next].y) <= y; ++m_next) {
            m_inside = Differ(m_inside, m_region.m_rows[m_next].switches);
            m_work += m_inside.size();
        }
        m_work += m_inside.size() + 1;
        Edges edges;
        edges.reserve(m_inside.size());
        for (const int x : m_inside)
            edges.push_back(m_map.X(x));
        if (edges.size() % 2 != 0)
            edges.push_back(Bounds().right);
        return edges;
    }
    std::size_t TakeWork() override { return std::exchange(m_work, 0); }

private:
    const CPictRegion& m_region;
    CPictMap m_map;
    std::size_t m_next = 0;
    std::size_t m_work = 0;
    Edges m_inside;
};

std::optional<CPictRegion> CPictRegion::Read(CByteReader& reader)
{
    const std::size_t size = reader.U16();
    if (size < kRectangleSize) {
        reader.Fail();
        return std::nullopt;
    }
    CPictRegion region(ReadRect(reader));
    const Bytes list = reader.Take(size - kRectangleSize);
    if (reader.Failed())
        return std::nullopt;
    if (list.size > 0) {
        if (auto rows = ReadRows(CByteReader(list)))
            region.m_rows = std::move(*rows);
    }
    return region;
}

std::optional<std::vector<CPictRegion::Row>> CPictRegion::ReadRows(CByteReader reader)
{
    std::vector<Row> rows;
    for (int y = reader.S16(); y != kListEnd; y = reader.S16()) {
        if (reader.Failed() || (!rows.empty() && y <= rows.back().y))
            return std::nullopt;
        Row row = {y, {}};
        for (int x = reader.S16(); x != kListEnd; x = reader.S16()) {
            if (reader.Failed() || (!row.switches.empty() && x <= row.switches.back()))
                return std::nullopt;
            row.switches.push_back(x);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

bool CPictRegion::Covers(const PictRect& pixels, const CPictMap& map) const
{
    return m_rows.empty() && pixels.Within(map.Of(m_bounds)) == pixels;
}

ShapePtr CPictRegion::MakeShape(const CPictMap& map) const
{
    if (m_rows.empty())
        return MakeRectShape(map.Of(m_bounds));
    return std::make_unique<CShape>(*this, map);
}
