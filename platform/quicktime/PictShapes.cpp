// platform/quicktime/PictShapes.cpp
//
// A pixel belongs to a shape when its centre does.
#include "platform/quicktime/PictShapes.h"

#include <cmath>
#include <iterator>
#include <utility>

namespace {

constexpr double kPi = 3.14159265358979323846;

/// The first pixel whose centre lies at or right of `x`.
int PixelAt(double x)
{
    return static_cast<int>(std::ceil(std::clamp(x, -1e8, 1e8) - 0.5));
}

class CRectShape final : public CPictShape {
public:
    explicit CRectShape(const PictRect& rect) : m_rect(rect) {}
    PictRect Bounds() const override { return m_rect; }
    Edges EdgesAt(int y) override
    {
        return !m_rect.IsEmpty() && y >= m_rect.top && y < m_rect.bottom ? Edges{m_rect.left, m_rect.right} : Edges{};
    }

private:
    PictRect m_rect;
};

/// An oval is a rectangle whose corners meet.
class CRoundRectShape final : public CPictShape {
public:
    CRoundRectShape(const PictRect& rect, int ovalWidth, int ovalHeight)
        : m_rect(rect),
          m_radiusX(std::clamp(ovalWidth, 0, std::max(rect.Width(), 0)) / 2.0),
          m_radiusY(std::clamp(ovalHeight, 0, std::max(rect.Height(), 0)) / 2.0)
    {
    }
    PictRect Bounds() const override { return m_rect; }
    Edges EdgesAt(int y) override
    {
        if (m_rect.IsEmpty() || y < m_rect.top || y >= m_rect.bottom)
            return {};
        const double centre = y + 0.5;
        const double above = m_rect.top + m_radiusY - centre;
        const double below = centre - (m_rect.bottom - m_radiusY);
        const double depth = std::max(above, below); // how far into the corners this row lies
        double inset = 0;
        if (depth > 0)
            inset = m_radiusX * (1 - std::sqrt(std::max(0.0, 1 - (depth / m_radiusY) * (depth / m_radiusY))));
        const int left = PixelAt(m_rect.left + inset);
        const int right = PixelAt(m_rect.right - inset);
        return left < right ? Edges{left, right} : Edges{};
    }

private:
    PictRect m_rect;
    double m_radiusX;
    double m_radiusY;
};

struct Corner {
    double x;
    double y;
};

class CPolygonShape final : public CPictShape {
public:
    explicit CPolygonShape(std::vector<Corner> corners) : m_corners(std::move(corners))
    {
        if (m_corners.empty())
            return;
        Corner low = m_corners[0];
        Corner high = low;
        for (const Corner& corner : m_corners) {
            low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
            high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
        }
        m_bounds = {PixelAt(low.y), PixelAt(low.x), PixelAt(high.y), PixelAt(high.x)};
    }
    PictRect Bounds() const override { return m_bounds; }
    Edges EdgesAt(int y) override
    {
        Edges edges;
        const double centre = y + 0.5;
        for (std::size_t index = 0; index < m_corners.size(); ++index) {
            const Corner& from = m_corners[index];
            const Corner& to = m_corners[(index + 1) % m_corners.size()];
            if ((from.y <= centre) != (to.y <= centre))
                edges.push_back(PixelAt(from.x + (centre - from.y) * (to.x - from.x) / (to.y - from.y)));
        }
        std::sort(edges.begin(), edges.end());
        return edges;
    }
    std::size_t TakeWork() override { return m_corners.size(); }

private:
    std::vector<Corner> m_corners;
    PictRect m_bounds;
};

/// Two shapes and what their rows make together.
class CCombinedShape final : public CPictShape {
public:
    using Combine = Edges (*)(const Edges&, const Edges&);
    CCombinedShape(ShapePtr first, ShapePtr second, Combine combine)
        : m_first(std::move(first)), m_second(std::move(second)), m_combine(combine)
    {
    }
    /// The first shape's: the second only takes away from it.
    PictRect Bounds() const override { return m_first->Bounds(); }
    Edges EdgesAt(int y) override { return m_combine(m_first->EdgesAt(y), m_second->EdgesAt(y)); }
    std::size_t TakeWork() override { return m_first->TakeWork() + m_second->TakeWork(); }

private:
    ShapePtr m_first;
    ShapePtr m_second;
    Combine m_combine;
};

} // namespace

Edges Intersect(const Edges& first, const Edges& second)
{
    Edges both;
    for (std::size_t a = 0, b = 0; a + 1 < first.size() && b + 1 < second.size();) {
        const int from = std::max(first[a], second[b]);
        const int to = std::min(first[a + 1], second[b + 1]);
        if (from < to)
            both.insert(both.end(), {from, to});
        (first[a + 1] < second[b + 1] ? a : b) += 2;
    }
    return both;
}

Edges Differ(const Edges& first, const Edges& second)
{
    Edges one;
    std::set_symmetric_difference(first.begin(), first.end(), second.begin(), second.end(), std::back_inserter(one));
    return one;
}

ShapePtr MakeRectShape(const PictRect& rect)
{
    return std::make_unique<CRectShape>(rect);
}

ShapePtr MakeRoundRectShape(const PictRect& rect, int ovalWidth, int ovalHeight)
{
    return std::make_unique<CRoundRectShape>(rect, ovalWidth, ovalHeight);
}

ShapePtr MakeOvalShape(const PictRect& rect)
{
    return MakeRoundRectShape(rect, rect.Width(), rect.Height());
}

ShapePtr MakeSliceShape(const PictRect& oval, int start, int angle)
{
    if (angle < 0) {
        start += angle;
        angle = -angle;
    }
    angle = std::min(angle, 360);
    // A fan of triangles that reach far outside the oval.
    const Corner centre = {(oval.left + oval.right) / 2.0, (oval.top + oval.bottom) / 2.0};
    std::vector<Corner> fan = {centre};
    const auto add = [&](double degrees) {
        const double radians = degrees * kPi / 180;
        fan.push_back(
            {centre.x + 2.0 * oval.Width() * std::sin(radians), centre.y - 2.0 * oval.Height() * std::cos(radians)});
    };
    for (int reached = 0; reached < angle; reached += 45)
        add(start + reached);
    add(start + angle);
    return std::make_unique<CPolygonShape>(std::move(fan));
}

ShapePtr MakePolygonShape(const std::vector<PictPoint>& points)
{
    std::vector<Corner> corners;
    corners.reserve(points.size());
    for (const PictPoint& point : points)
        corners.push_back({static_cast<double>(point.h), static_cast<double>(point.v)});
    return std::make_unique<CPolygonShape>(std::move(corners));
}

ShapePtr MakeLineShape(PictPoint from, PictPoint to, int penWidth, int penHeight)
{
    if (from.v > to.v)
        std::swap(from, to);
    const auto corner = [&](const PictPoint& point, bool right, bool low) {
        return Corner{static_cast<double>(point.h) + (right ? penWidth : 0),
                      static_cast<double>(point.v) + (low ? penHeight : 0)};
    };
    const bool rightwards = to.h >= from.h;
    // The hull of the pen at both ends: its outer corners and the two that lie across the way.
    return std::make_unique<CPolygonShape>(std::vector<Corner>{
        corner(from, false, false), corner(from, true, false),
        rightwards ? corner(to, true, false) : corner(from, true, true), corner(to, true, true),
        corner(to, false, true), rightwards ? corner(from, false, true) : corner(to, false, false)});
}

ShapePtr MakeDifference(ShapePtr outer, ShapePtr inner)
{
    return std::make_unique<CCombinedShape>(std::move(outer), std::move(inner), Differ);
}

ShapePtr MakeIntersection(ShapePtr first, ShapePtr second)
{
    return std::make_unique<CCombinedShape>(std::move(first), std::move(second), Intersect);
}
