#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Arc2D;
class Line2D;
class Line3D;
class Point2D;

/// Static functions that intersect pairs of geometries and test points against them.
class KALVIO_MATH_API Intersection {
public:
    /// Point on the arc: |distance from the centre - radius| <= |tolerance| and within the sweep or |tolerance| of an
    /// end, inclusive.
    static bool PointOnArc(const Point2D& point, const Arc2D& arc, double tolerance);
    /// Point on the infinite line: distance <= |tolerance|, inclusive; never on a line of zero length.
    static bool PointOnLine(const Point2D& point, const Line2D& line, double tolerance);
    static bool PointOnLine(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance);
    /// Plan projection of the line.
    static bool PointOnLine(const Point2D& point, const Line3D& line, double tolerance);
    /// Point on the segment: inside its box widened by |tolerance| and on its line. A segment of zero length holds a
    /// point equal to it within the tolerance.
    static bool PointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance);
    static bool PointOnLineSegment(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance);
    /// Plan projection of the segment.
    static bool PointOnLineSegment(const Point2D& point, const Line3D& line, double tolerance);
};

}  // namespace Kalvio::Math
