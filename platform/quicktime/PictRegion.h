// platform/quicktime/PictRegion.h
//
// QuickDraw regions: areas of any form, used to clip and to mask.
#pragma once

#include <optional>
#include <vector>

#include "platform/quicktime/PictShapes.h"

/// An area in the picture's coordinates.
class CPictRegion {
public:
    explicit CPictRegion(const PictRect& rect) : m_bounds(rect) {}
    /// Reads a region with its size in front. One whose rows make no sense counts as its bounding
    /// rectangle.
    /// @return nullopt, with the reader failed, when it is cut off or smaller than a rectangle.
    static std::optional<CPictRegion> Read(CByteReader& reader);

    /// Answers whether it is known to have all of an area of pixels.
    bool Covers(const PictRect& pixels, const CPictMap& map) const;

    /// Answers the area as pixels. The shape refers to the region, which must outlive it.
    ShapePtr MakeShape(const CPictMap& map) const;

private:
    struct Row {
        int y;
        std::vector<int> switches; // where the row differs from the one above
    };
    class CShape;

    static std::optional<std::vector<Row>> ReadRows(CByteReader reader);

    PictRect m_bounds;
    std::vector<Row> m_rows; // empty: the whole bounding rectangle
};
