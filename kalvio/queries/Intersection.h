#pragma once

#include "kalvio/Export.h"
#include "kalvio/queries/IntersectionResult.h"

#include <vector>

namespace Kalvio::Math {

class Arc2D;
class BoundingBox2D;
class BoundingBox3D;
class Line2D;
class Line3D;
class LineString2D;
class LineString3D;
class Point2D;
class Point3D;
class Polygon2D;
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
    // Chains and areas.
    //
    // Two chains have in common the points where they cross, the points where an end or vertex of one touches the
    // other, and, of a part along which they run together, its two ends, however many segments it has. Points are
    // appended in order along the first operand, each once: points that differ by less than the tolerance in both
    // coordinates are one. The tolerance is a length: chains meet where they come at most that near, at least 1e-10.
    // Results that leave room for doubt: `Coincident`, with the two ends (of closed chains, the first point), when both
    // run along each other from end to end, in either direction; `Degenerate`, with nothing appended, for an operand
    // not longer than the tolerance, or whose length is not finite. Boxes over runs of segments find the pairs that
    // come near: about n log n, plus what is found.
    //
    // The forms with a plain tolerance return the number of points appended.

    static IntersectionResult LineStringLineString(const LineString2D& a, const LineString2D& b,
                                                   std::vector<Point2D>& out, const Tolerances& tolerances);
    static int LineStringLineString(const LineString2D& a, const LineString2D& b, std::vector<Point2D>& out,
                                    double tolerance);
    static IntersectionResult LineStringLineSegment(const LineString2D& lineString, const Line2D& segment,
                                                    std::vector<Point2D>& out, const Tolerances& tolerances);
    static int LineStringLineSegment(const LineString2D& lineString, const Line2D& segment, std::vector<Point2D>& out,
                                     double tolerance);
    /// The points of the string on the infinite line: vertices at most |tolerance| from the line, and crossings of
    /// segments whose ends lie further off on both sides. Of a part that runs along the line, its outermost vertices.
    /// `Coincident` when the whole string lies on the line; `Degenerate` for a line of length at most 1e-10.
    static IntersectionResult LineStringLine(const LineString2D& lineString, const Line2D& line,
                                             std::vector<Point2D>& out, const Tolerances& tolerances);
    static int LineStringLine(const LineString2D& lineString, const Line2D& line, std::vector<Point2D>& out,
                              double tolerance);
    /// What different strings of the set have in common; a string's crossings with itself are none. Points come in the
    /// order of the first string that holds them, then along it. Degenerate strings are left out: `Degenerate` when
    /// fewer than two are left; `Coincident` when every two of them are.
    static IntersectionResult LineStrings(const std::vector<LineString2D>& lineStrings, std::vector<Point2D>& out,
                                          const Tolerances& tolerances);
    static int LineStrings(const std::vector<LineString2D>& lineStrings, std::vector<Point2D>& out, double tolerance);
    /// The points of the string on the outer ring and the borders of holes. A string that lies in the area without a
    /// point on a border is `Intersecting` with no point appended.
    static IntersectionResult LineStringPolygon(const LineString2D& lineString, const Polygon2D& polygon,
                                                std::vector<Point2D>& out, const Tolerances& tolerances);
    static int LineStringPolygon(const LineString2D& lineString, const Polygon2D& polygon, std::vector<Point2D>& out,
                                 double tolerance);
    /// The points that the borders of two polygons, those of their holes included, have in common: along the outer ring
    /// of the first, then along its holes. An area that lies inside the other without a common point of their borders
    /// is `Intersecting` with no point appended; so the result, unlike the number of points, tells whether the areas
    /// overlap or touch. An area inside a hole of the other is no intersection. `Coincident` when all rings are.
    static IntersectionResult PolygonPolygon(const Polygon2D& a, const Polygon2D& b, std::vector<Point2D>& out,
                                             const Tolerances& tolerances);
    static int PolygonPolygon(const Polygon2D& a, const Polygon2D& b, std::vector<Point2D>& out, double tolerance);
    /// The same with the area of a box.
    static IntersectionResult PolygonBoundingBox(const Polygon2D& polygon, const BoundingBox2D& box,
                                                 std::vector<Point2D>& out, const Tolerances& tolerances);
    static int PolygonBoundingBox(const Polygon2D& polygon, const BoundingBox2D& box, std::vector<Point2D>& out,
                                  double tolerance);
    /// The points where the infinite line enters and leaves the box, by the rules of `LineStringLine`: two, or one at a
    /// corner.
    static IntersectionResult LineBoundingBox(const Line2D& line, const BoundingBox2D& box, std::vector<Point2D>& out,
                                              const Tolerances& tolerances);
    static int LineBoundingBox(const Line2D& line, const BoundingBox2D& box, std::vector<Point2D>& out,
                               double tolerance);
    /// True when some segment holds the point (`PointOnLineSegment`); in space as `LineString3D::IsPointOnGeometry`.
    static bool PointOnLineString(const Point2D& point, const LineString2D& lineString, double tolerance);
    static bool PointOnLineString(const Point3D& point, const LineString3D& lineString, double tolerance);
    /// True when no side of the first box lies further out than |tolerance| beyond the second, inclusive.
    static bool IsBoundingBoxInsideBoundingBox(const BoundingBox2D& inner, const BoundingBox2D& outer,
                                               double tolerance);
    static bool IsBoundingBoxInsideBoundingBox(const BoundingBox3D& inner, const BoundingBox3D& outer,
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

private:
    /// Appends the points of `source` that `target` does not hold yet at or behind position `from`, strictly within the
    /// user tolerance per coordinate.
    static void AddSolutions(const std::vector<Point2D>& source, std::vector<Point2D>& target, std::size_t from,
                             const Tolerances& tolerances);
    /// Removes the points that lie on one of the segments (`PointOnLineSegment`, user tolerance) at neither of its
    /// ends.
    static void RemovePointsInSegments(std::vector<Point2D>& points, const std::vector<Line2D>& segments,
                                       const Tolerances& tolerances);
};

}  // namespace Kalvio::Math
