// platform/quicktime/PictGeometry.h
//
// Rectangles of a picture and the way from its coordinates to pixels.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/quicktime/ByteReader.h"

/// Bottom and right are exclusive.
struct PictRect {
    int top = 0;
    int left = 0;
    int bottom = 0;
    int right = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return bottom <= top || right <= left; }
    bool operator==(const PictRect& other) const
    {
        return top == other.top && left == other.left && bottom == other.bottom && right == other.right;
    }
    /// Answers the part that both have; empty when there is none.
    PictRect Within(const PictRect& other) const
    {
        return {std::max(top, other.top), std::max(left, other.left), std::min(bottom, other.bottom),
                std::min(right, other.right)};
    }
    PictRect Inset(int dx, int dy) const { return {top + dy, left + dx, bottom - dy, right - dx}; }
};

struct PictPoint {
    int v = 0;
    int h = 0;
};

inline PictRect ReadRect(CByteReader& reader)
{
    PictRect rect;
    rect.top = reader.S16();
    rect.left = reader.S16();
    rect.bottom = reader.S16();
    rect.right = reader.S16();
    return rect;
}

inline PictPoint ReadPoint(CByteReader& reader)
{
    PictPoint point;
    point.v = reader.S16();
    point.h = reader.S16();
    return point;
}

/// Maps the picture's coordinates to pixels: the source rectangle fills the canvas. Edges are
/// rounded alike wherever they come from, so strips meet without gaps.
class CPictMap {
public:
    CPictMap(const PictRect& source, int width, int height) : m_source(source), m_width(width), m_height(height) {}

    int X(int x) const { return Scale(x - m_source.left, m_width, m_source.Width()); }
    int Y(int y) const { return Scale(y - m_source.top, m_height, m_source.Height()); }
    PictRect Of(const PictRect& rect) const { return {Y(rect.top), X(rect.left), Y(rect.bottom), X(rect.right)}; }

private:
    static int Scale(std::int64_t distance, std::int64_t to, std::int64_t from)
    {
        const std::int64_t numerator = 2 * distance * to + from;
        const std::int64_t denominator = 2 * from;
        const std::int64_t rounded =
            numerator >= 0 ? numerator / denominator : -((-numerator + denominator - 1) / denominator);
        return static_cast<int>(std::clamp<std::int64_t>(rounded, -(1 << 28), 1 << 28));
    }

    PictRect m_source;
    int m_width;
    int m_height;
};
