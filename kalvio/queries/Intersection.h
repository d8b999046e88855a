#pragma once

#include "kalvio/Export.h"
#include "kalvio/queries/IntersectionResult.h"

#include <vector>

namespace Kalvio::Math {

class Arc2D;
class Line2D;
class Line3D;
class LineString2D;
class Point2D;
class Tolerances;

/// Static functions that intersect pairs of geometries and test points against them.
class KALVIO_MATH_API Intersection {
public:
    /// Intersects the infinite lines a1 -> a2 and b1 -> b2.
    ///
    /// `Degenerate` when a line is not longer than the user tolerance; `Coincident` when both points of one lie on the
    /// other within the system epsilon, also after the shorter one is stretched to the length of the longer, or when
    /// parallel lines lie within the user tolerance; parallel when |cross product| of the two differences is below the
    /// system epsilon.
    /// @param out  the common point; untouched unless the result is `Intersecting`
    static IntersectionResult LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                       Point2D& out, const Tolerances& tolerances);
    static IntersectionResult LineLine(const Line2D& a, const Line2D& b, Point2D& out, const Tolerances& tolerances);
    /// Appends the points of the string on the infinite line, in order along the string: vertices at most |tolerance|
    /// from the line, and crossings of segments whose ends lie further off on both sides. Of a part that runs along the
    /// line, that is every vertex.
    /// @return the number of points; 0 for a line of length at most 1e-10
    static int LineStringLine(const LineString2D& lineString, const Line2D& line, std::vector<Point2D>& out,
                              double tolerance);

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
