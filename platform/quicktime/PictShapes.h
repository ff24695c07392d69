// platform/quicktime/PictShapes.h
//
// The areas that operations of a picture cover, as pixels: each answers, row by row from the top,
// where it begins and ends. Nothing is drawn here.
#pragma once

#include <memory>
#include <vector>

#include "platform/quicktime/PictGeometry.h"

/// Rising positions at which a row goes inside, outside, inside ...; an even number of them.
using Edges = std::vector<int>;

/// Answers what lies inside both.
Edges Intersect(const Edges& first, const Edges& second);
/// Answers what lies inside exactly one of them.
Edges Differ(const Edges& first, const Edges& second);

class CPictShape {
public:
    virtual ~CPictShape() = default;
    /// Answers a rectangle that holds the shape.
    virtual PictRect Bounds() const = 0;
    /// Answers the edges of row `y`; rows must be asked for from the top downwards.
    virtual Edges EdgesAt(int y) = 0;
    /// Answers the work done since this was last asked, in pixels' worth.
    virtual std::size_t TakeWork() { return 1; }
};

using ShapePtr = std::unique_ptr<CPictShape>;

ShapePtr MakeRectShape(const PictRect& rect);
/// A rectangle with corners that are quarters of an oval of this size.
ShapePtr MakeRoundRectShape(const PictRect& rect, int ovalWidth, int ovalHeight);
ShapePtr MakeOvalShape(const PictRect& rect);
/// The slice of a plane from `start` degrees, clockwise from the top, over `angle` degrees, seen from
/// the middle of an oval; angles are stretched as the oval is.
ShapePtr MakeSliceShape(const PictRect& oval, int start, int angle);
/// What lies inside the outline an odd number of times.
ShapePtr MakePolygonShape(const std::vector<PictPoint>& points);
/// The way of a pen of this size from one point to another; it hangs below and right of them.
ShapePtr MakeLineShape(PictPoint from, PictPoint to, int penWidth, int penHeight);
/// What lies inside one shape but not inside another that lies inside the first.
ShapePtr MakeDifference(ShapePtr outer, ShapePtr inner);
/// What lies inside both.
ShapePtr MakeIntersection(ShapePtr first, ShapePtr second);
