#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/ProjectionPlane.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/queries/IntersectionResult.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <map>
#include <type_traits>
#include <vector>

namespace Kalvio::Math {

class Arc2D;
class BoundingBox2D;
class BoundingBox3D;
class Circle2D;
class Clothoid;
class Line2D;
class Line3D;
class LineString2D;
class LineString3D;
class OrientedBoundingBox2D;
class Parabola;
class Plane3D;
class Point2D;
class Point3D;
class Polygon2D;
class Polygon3D;
class PolygonCurve3D;
class RingCurve3D;
class Spiral2D;
class Triangle3D;
class TriangleStrip3D;
class Vec2D;

/// What a form answers: with `Tolerances` a result, with a plain tolerance the number of points appended.
template <class Limit>
using IntersectionAnswer = std::conditional_t<std::is_convertible_v<Limit, double>, int, IntersectionResult>;

/// Static functions that intersect pairs of geometries and test points against them.
///
/// `Line` in a name is the infinite line through the two points of a `Line2D`, `LineSegment` the line between them.
/// Each group of functions below opens with what holds for all of it.
class KALVIO_MATH_API Intersection {
public:
    // Lines and curves.
    //
    // Unless their comments say otherwise, all common points are appended, in order along the first operand, each once.
    // Curves meet on the curves themselves, not on chords. The user tolerance bounds what counts as common: an end that
    // lies that near to the other operand, the nearest point of curves that pass each other that closely without
    // crossing (once), and crossings nearer to each other than it (one of them). What lies within it all along, from an
    // end of one operand to an end of one, is `Coincident`, and the ends of that stretch are appended. `Degenerate`,
    // with nothing appended: an operand not longer than the user tolerance, or not finite.
    //
    // The forms with a plain tolerance take it as the user tolerance and return the number of points written.

    /// Intersects the infinite lines a1 -> a2 and b1 -> b2, or through points in directions.
    ///
    /// `Degenerate` when a line is not longer than the user tolerance; `Coincident` when both points of one lie on the
    /// other within the system epsilon, also after the shorter one is stretched to the length of the longer, or when
    /// parallel lines lie within the user tolerance; parallel when |cross product| of the two differences is below the
    /// system epsilon.
    /// @param out  the common point; untouched unless the result is `Intersecting` (1 in the forms that count)
    [[nodiscard]] static IntersectionResult LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1,
                                                     const Point2D& b2, Point2D& out, const Tolerances& tolerances);
    [[nodiscard]] static IntersectionResult LineLine(const Point2D& a, const Vec2D& alongA, const Point2D& b,
                                                     const Vec2D& alongB, Point2D& out, const Tolerances& tolerances);
    [[nodiscard]] static IntersectionResult LineLine(const Line2D& a, const Line2D& b, Point2D& out,
                                                     const Tolerances& tolerances);
    [[nodiscard]] static int LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                      Point2D& out, double tolerance);
    [[nodiscard]] static int LineLine(const Point2D& a, const Vec2D& alongA, const Point2D& b, const Vec2D& alongB,
                                      Point2D& out, double tolerance);
    [[nodiscard]] static int LineLine(const Line2D& a, const Line2D& b, Point2D& out, double tolerance);
    /// Collinear segments (parallel within the angle tolerance, and within the user tolerance of each other where they
    /// overlap): `Coincident` when both ends agree, else `Intersecting`, with the two ends of the overlap, or the one
    /// point where they only touch, by a gap or an overlap below the user tolerance.
    static IntersectionResult LineSegmentLineSegment(const Line2D& a, const Line2D& b, std::vector<Point2D>& out,
                                                     const Tolerances& tolerances);
    static int LineSegmentLineSegment(const Line2D& a, const Line2D& b, std::vector<Point2D>& out, double tolerance);
    static IntersectionResult LineSegmentLineSegment(const Point2D& a1, const Point2D& a2, const Point2D& b1,
                                                     const Point2D& b2, std::vector<Point2D>& out,
                                                     const Tolerances& tolerances);
    static int LineSegmentLineSegment(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                      std::vector<Point2D>& out, double tolerance);
    /// @param out  the common point; untouched unless the result is `Intersecting` (1)
    [[nodiscard]] static IntersectionResult LineSegmentLine(const Line2D& segment, const Line2D& line, Point2D& out,
                                                            const Tolerances& tolerances);
    [[nodiscard]] static int LineSegmentLine(const Line2D& segment, const Line2D& line, Point2D& out, double tolerance);

    // Lines with curves.

    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineArc(const Line2D& line, const Arc2D& arc, std::vector<Point2D>& out,
                                             const Limit& tolerance) {
        return Meet(detail::CrossingOperand::InfiniteLine(line), arc, out, tolerance);
    }
    /// The tolerance is compared with the discriminant r^2 L^2 - D^2, in the fourth power of length, L the length of
    /// the line and D the cross product of its ends seen from the centre: pass small ones.
    /// @return 2; 1 for a tangent, |discriminant| < tolerance, p1 and p2 being the same; 0, p1 and p2 untouched, for no
    ///         common point, a line of length 0 and values that are not finite
    [[nodiscard]] static int LineCircle(const Line2D& line, const Circle2D& circle, Point2D& p1, Point2D& p2,
                                        double tolerance);
    /// With tolerances that are lengths, as for the other curves.
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineCircle(const Line2D& line, const Circle2D& circle, std::vector<Point2D>& out,
                                                const Limit& tolerance) {
        return Meet(detail::CrossingOperand::InfiniteLine(line), circle, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineClothoid(const Line2D& line, const Clothoid& clothoid,
                                                  std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(detail::CrossingOperand::InfiniteLine(line), clothoid, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSpiral(const Line2D& line, const Spiral2D& spiral, std::vector<Point2D>& out,
                                                const Limit& tolerance) {
        return Meet(detail::CrossingOperand::InfiniteLine(line), spiral, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineParabola(const Line2D& line, const Parabola& parabola,
                                                  std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(detail::CrossingOperand::InfiniteLine(line), parabola, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSegmentArc(const Line2D& segment, const Arc2D& arc, std::vector<Point2D>& out,
                                                    const Limit& tolerance) {
        return Meet(segment, arc, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSegmentCircle(const Line2D& segment, const Circle2D& circle,
                                                       std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(segment, circle, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSegmentClothoid(const Line2D& segment, const Clothoid& clothoid,
                                                         std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(segment, clothoid, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSegmentSpiral(const Line2D& segment, const Spiral2D& spiral,
                                                       std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(segment, spiral, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> LineSegmentParabola(const Line2D& segment, const Parabola& parabola,
                                                         std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(segment, parabola, out, tolerance);
    }

    // Curves with curves.

    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ArcArc(const Arc2D& a, const Arc2D& b, std::vector<Point2D>& out,
                                            const Limit& tolerance) {
        return Meet(a, b, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ArcCircle(const Arc2D& arc, const Circle2D& circle, std::vector<Point2D>& out,
                                               const Limit& tolerance) {
        return Meet(arc, circle, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ArcClothoid(const Arc2D& arc, const Clothoid& clothoid, std::vector<Point2D>& out,
                                                 const Limit& tolerance) {
        return Meet(arc, clothoid, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ArcSpiral(const Arc2D& arc, const Spiral2D& spiral, std::vector<Point2D>& out,
                                               const Limit& tolerance) {
        return Meet(arc, spiral, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ArcParabola(const Arc2D& arc, const Parabola& parabola, std::vector<Point2D>& out,
                                                 const Limit& tolerance) {
        return Meet(arc, parabola, out, tolerance);
    }
    /// The points to the right, then to the left of the way from the first centre to the second. With e the system
    /// epsilon: `Degenerate` for a radius below e, `Coincident` (nothing appended) for centres and radii that agree
    /// within e, one point where half the common chord is below e. Circles that miss each other by any distance do not
    /// intersect.
    static IntersectionResult CircleCircle(const Circle2D& a, const Circle2D& b, std::vector<Point2D>& out,
                                           const Tolerances& tolerances);
    static int CircleCircle(const Circle2D& a, const Circle2D& b, std::vector<Point2D>& out, double tolerance);
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> CircleClothoid(const Circle2D& circle, const Clothoid& clothoid,
                                                    std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(circle, clothoid, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> CircleSpiral(const Circle2D& circle, const Spiral2D& spiral,
                                                  std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(circle, spiral, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> CircleParabola(const Circle2D& circle, const Parabola& parabola,
                                                    std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(circle, parabola, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ClothoidClothoid(const Clothoid& a, const Clothoid& b, std::vector<Point2D>& out,
                                                      const Limit& tolerance) {
        return Meet(a, b, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ClothoidParabola(const Clothoid& clothoid, const Parabola& parabola,
                                                      std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(clothoid, parabola, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> SpiralClothoid(const Spiral2D& spiral, const Clothoid& clothoid,
                                                    std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(spiral, clothoid, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> SpiralSpiral(const Spiral2D& a, const Spiral2D& b, std::vector<Point2D>& out,
                                                  const Limit& tolerance) {
        return Meet(a, b, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> SpiralParabola(const Spiral2D& spiral, const Parabola& parabola,
                                                    std::vector<Point2D>& out, const Limit& tolerance) {
        return Meet(spiral, parabola, out, tolerance);
    }
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> ParabolaParabola(const Parabola& a, const Parabola& b, std::vector<Point2D>& out,
                                                      const Limit& tolerance) {
        return Meet(a, b, out, tolerance);
    }

    // Element polylines.
    //
    // Every element of the polyline is intersected on its own curve, those of line strings and polylines in it too. A
    // crossing at a joint is one; of a stretch along which both run, however many elements it has, the two ends count.
    // `out` receives points with tangent, station along the whole polyline and index of its element, in the order of
    // their stations; at a joint that of the element that starts there. Boxes over runs of elements find the pairs that
    // come near.
    //
    // The forms with a second list append to it the same places as points of the other operand, one for one: with
    // stations along it. Where the other operand passes a place more than once, they report every passage, the forms
    // without such a list the place.
    //
    // `Coincident` when both run along each other from end to end (all of the polyline on the infinite line), with the
    // two ends of the stretch; `Degenerate` for an operand not longer than the user tolerance or not finite.

    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> PolylineArc(const Polyline2D& polyline, const Arc2D& arc,
                                                 std::vector<Polyline2D::PolylinePoint>& out, const Limit& tolerance) {
        return Meet(polyline, arc, out, tolerance);
    }
    static IntersectionResult PolylineArc(const Polyline2D& polyline, const Arc2D& arc,
                                          std::vector<Polyline2D::PolylinePoint>& out,
                                          std::vector<IPolyline2DElement::PolylineElementPoint>& onArc,
                                          const Tolerances& tolerances);
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> PolylineClothoid(const Polyline2D& polyline, const Clothoid& clothoid,
                                                      std::vector<Polyline2D::PolylinePoint>& out,
                                                      const Limit& tolerance) {
        return Meet(polyline, clothoid, out, tolerance);
    }
    static IntersectionResult PolylineClothoid(const Polyline2D& polyline, const Clothoid& clothoid,
                                               std::vector<Polyline2D::PolylinePoint>& out,
                                               std::vector<IPolyline2DElement::PolylineElementPoint>& onClothoid,
                                               const Tolerances& tolerances);
    /// With the infinite line.
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> PolylineLine(const Polyline2D& polyline, const Line2D& line,
                                                  std::vector<Polyline2D::PolylinePoint>& out, const Limit& tolerance) {
        return MeetLine(polyline, line, out, tolerance);
    }
    /// @param onLine  stations before the start of the line are negative
    static IntersectionResult PolylineLine(const Polyline2D& polyline, const Line2D& line,
                                           std::vector<Polyline2D::PolylinePoint>& out,
                                           std::vector<IPolyline2DElement::PolylineElementPoint>& onLine,
                                           const Tolerances& tolerances);
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> PolylineLineSegment(const Polyline2D& polyline, const Line2D& segment,
                                                         std::vector<Polyline2D::PolylinePoint>& out,
                                                         const Limit& tolerance) {
        return Meet(polyline, segment, out, tolerance);
    }
    static IntersectionResult PolylineLineSegment(const Polyline2D& polyline, const Line2D& segment,
                                                  std::vector<Polyline2D::PolylinePoint>& out,
                                                  std::vector<IPolyline2DElement::PolylineElementPoint>& onSegment,
                                                  const Tolerances& tolerances);
    template <class Limit = Tolerances>
    static IntersectionAnswer<Limit> PolylinePolyline(const Polyline2D& a, const Polyline2D& b,
                                                      std::vector<Polyline2D::PolylinePoint>& out,
                                                      const Limit& tolerance) {
        return Meet(a, b, out, tolerance);
    }
    static IntersectionResult PolylinePolyline(const Polyline2D& a, const Polyline2D& b,
                                               std::vector<Polyline2D::PolylinePoint>& out,
                                               std::vector<Polyline2D::PolylinePoint>& onSecond,
                                               const Tolerances& tolerances);

    // Chains and areas.
    //
    // Two chains have in common the points where they cross, the points where an end or vertex of one touches the
    // other, and, of a part along which they run together, its two ends, however many segments it has, and the tip of a
    // spike, where both turn back. Three and more crossings, each at most four tolerances along both from the next,
    // count as such a part (of element polylines too). Points are appended in order along the first operand, each once:
    // points that differ by less than the tolerance in both coordinates are one, and so is a vertex at most the
    // tolerance from the one before it. The tolerance is a length: chains meet where they come at most that near, at
    // least 1e-10.
    // Results that leave room for doubt: `Coincident`, with the two ends (of closed chains, the first point), when both
    // run along each other from end to end, in either direction; `Degenerate`, with nothing appended, for an operand
    // not longer than the tolerance, or whose length is not finite. Boxes over runs of segments find the pairs that
    // come near: about n log n, plus what is found, and every pair of runs whose boxes overlap without a common point
    // (many long diagonals side by side: the square of their number).
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
    /// `Coincident` when the whole string lies on the line; `Degenerate` for a line of length at most 1e-10, too. The
    /// form that counts takes a string not longer than the tolerance for its first point.
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
    [[nodiscard]] static bool PointOnLineString(const Point2D& point, const LineString2D& lineString, double tolerance);
    [[nodiscard]] static bool PointOnLineString(const Point3D& point, const LineString3D& lineString, double tolerance);
    /// True when no side of the first box lies further out than |tolerance| beyond the second, inclusive.
    [[nodiscard]] static bool IsBoundingBoxInsideBoundingBox(const BoundingBox2D& inner, const BoundingBox2D& outer,
                                                             double tolerance);
    [[nodiscard]] static bool IsBoundingBoxInsideBoundingBox(const BoundingBox3D& inner, const BoundingBox3D& outer,
                                                             double tolerance);

    /// Point on the arc: |distance from the centre - radius| <= |tolerance| and within the sweep or |tolerance| of an
    /// end, inclusive.
    [[nodiscard]] static bool PointOnArc(const Point2D& point, const Arc2D& arc, double tolerance);
    /// Point on the infinite line: distance <= |tolerance|, inclusive; never on a line of zero length.
    [[nodiscard]] static bool PointOnLine(const Point2D& point, const Line2D& line, double tolerance);
    [[nodiscard]] static bool PointOnLine(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance);
    /// Plan projection of the line.
    [[nodiscard]] static bool PointOnLine(const Point2D& point, const Line3D& line, double tolerance);
    /// Point on the segment: inside its box widened by |tolerance| and on its line. A segment of zero length holds a
    /// point equal to it within the tolerance.
    [[nodiscard]] static bool PointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance);
    [[nodiscard]] static bool PointOnLineSegment(const Point2D& point, const Point2D& a, const Point2D& b,
                                                 double tolerance);
    /// Plan projection of the segment.
    [[nodiscard]] static bool PointOnLineSegment(const Point2D& point, const Line3D& line, double tolerance);
    /// Point in the box of the segment widened by |tolerance|, inclusive.
    [[nodiscard]] static bool IsPointInsideLineBounds(const Point2D& point, const Line2D& line, double tolerance);
    [[nodiscard]] static bool IsPointInsideLineBounds(const Point2D& point, const Point2D& a, const Point2D& b,
                                                      double tolerance);

    // Planes and solids.
    //
    // A point at most the user tolerance from a plane (inclusive) counts as on it. Sections are closed: where only a
    // point touches, it is a piece of zero length. `Degenerate`: a plane without a normal, a line not longer than the
    // user tolerance, a triangle whose altitude is no more than the system epsilon (or the rounding of its
    // coordinates), an area without a normal. Coordinates that are not finite never intersect. Unless the result is
    // `Intersecting`, outputs stay as they are. The forms with a plain tolerance take it as the user tolerance and
    // return the number of points or pieces written.

    /// Intersects the infinite lines through a and b in space, which meet where they come at most the user tolerance
    /// near each other. `Coincident`: parallel and at most that far apart.
    /// @param out  the middle of the shortest line between them
    [[nodiscard]] static IntersectionResult LineLine(const Line3D& a, const Line3D& b, Point3D& out,
                                                     const Tolerances& tolerances);
    [[nodiscard]] static int LineLine(const Line3D& a, const Line3D& b, Point3D& out, double tolerance);
    /// Intersects their projections, by the rules of the lines in plan.
    /// @param out  the point on a whose projection is the crossing; on b there is in general another one
    [[nodiscard]] static IntersectionResult LineLine(const Line3D& a, const Line3D& b, ProjectionPlane plane,
                                                     Point3D& out, const Tolerances& tolerances);
    [[nodiscard]] static int LineLine(const Line3D& a, const Line3D& b, ProjectionPlane plane, Point3D& out,
                                      double tolerance);
    /// The one shortest line between the infinite lines, from a point of a to a point of b, perpendicular to both and
    /// of length 0 where they meet. Parallel lines have many: `Coincident` at most the user tolerance apart, else
    /// `NoIntersection`. Lines are parallel when over the longer length they part by no more than the system epsilon
    /// (or the rounding of their coordinates).
    [[nodiscard]] static IntersectionResult ShortestLineBetweenLines(const Line3D& a, const Line3D& b, Line3D& out,
                                                                     const Tolerances& tolerances);
    [[nodiscard]] static int ShortestLineBetweenLines(const Line3D& a, const Line3D& b, Line3D& out, double tolerance);
    /// The same between the segments, which always have one: `Intersecting`. Of the many between segments that run
    /// along each other it is one from an end, from the start of a if that is one.
    [[nodiscard]] static IntersectionResult ShortestLineBetweenLineSegments(const Line3D& a, const Line3D& b,
                                                                            Line3D& out, const Tolerances& tolerances);
    [[nodiscard]] static int ShortestLineBetweenLineSegments(const Line3D& a, const Line3D& b, Line3D& out,
                                                             double tolerance);

    /// Where the segment passes the plane, or else its end on the plane. `Coincident` when both ends are on it.
    [[nodiscard]] static IntersectionResult LineSegmentPlane(const Line3D& segment, const Plane3D& plane, Point3D& out,
                                                             const Tolerances& tolerances);
    [[nodiscard]] static int LineSegmentPlane(const Line3D& segment, const Plane3D& plane, Point3D& out,
                                              double tolerance);
    /// Appends the pieces in which the plane cuts the area, holes left out, in order and each directed along the normal
    /// of the area x the normal of the plane. Pieces at most the user tolerance apart are one. `Coincident` when all
    /// points are on the plane. Arcs are cut on the arc itself.
    static IntersectionResult PolygonPlane(const Polygon3D& polygon, const Plane3D& plane, std::vector<Line3D>& out,
                                           const Tolerances& tolerances);
    static int PolygonPlane(const Polygon3D& polygon, const Plane3D& plane, std::vector<Line3D>& out, double tolerance);
    static IntersectionResult PolygonCurvePlane(const PolygonCurve3D& polygon, const Plane3D& plane,
                                                std::vector<Line3D>& out, const Tolerances& tolerances);
    static int PolygonCurvePlane(const PolygonCurve3D& polygon, const Plane3D& plane, std::vector<Line3D>& out,
                                 double tolerance);
    /// The area that the ring bounds. Gaps are bridged by straight lines.
    static IntersectionResult RingCurvePlane(const RingCurve3D& ring, const Plane3D& plane, std::vector<Line3D>& out,
                                             const Tolerances& tolerances);
    static int RingCurvePlane(const RingCurve3D& ring, const Plane3D& plane, std::vector<Line3D>& out,
                              double tolerance);
    /// @param out  directed along the normal of the triangle x the normal of the plane
    [[nodiscard]] static IntersectionResult TrianglePlane(const Triangle3D& triangle, const Plane3D& plane, Line3D& out,
                                                          const Tolerances& tolerances);
    [[nodiscard]] static int TrianglePlane(const Triangle3D& triangle, const Plane3D& plane, Line3D& out,
                                           double tolerance);
    /// Appends the cuts of the triangles, joined into the fewest line strings; triangles in the plane contribute their
    /// border. The strings are directed and ordered along the way from the first rung to the last; a closed one repeats
    /// its first point at the end. `Coincident` when the whole strip is on the plane; `Degenerate` without triangles.
    static IntersectionResult TriangleStripPlane(const TriangleStrip3D& strip, const Plane3D& plane,
                                                 std::vector<LineString3D>& out, const Tolerances& tolerances);
    static int TriangleStripPlane(const TriangleStrip3D& strip, const Plane3D& plane, std::vector<LineString3D>& out,
                                  double tolerance);

    /// Intersects two triangles, borders included. `Coincident` when they lie in one plane and have an area in common;
    /// in one plane, triangles that meet along an edge or in a point are `Intersecting`.
    /// @param out  the common segment, of zero length for a point, directed along the normal of a x the normal of b
    [[nodiscard]] static IntersectionResult TriangleTriangle(const Triangle3D& a, const Triangle3D& b, Line3D& out,
                                                             const Tolerances& tolerances);
    [[nodiscard]] static int TriangleTriangle(const Triangle3D& a, const Triangle3D& b, Line3D& out, double tolerance);
    /// Appends the corners of what is common: one point, the two ends of a segment, or (`Coincident`) the convex area
    /// of three to six corners, counter-clockwise about the normal of a. Corners are more than the user tolerance
    /// apart.
    static IntersectionResult TriangleTriangle(const Triangle3D& a, const Triangle3D& b, std::vector<Point3D>& out,
                                               const Tolerances& tolerances);
    static int TriangleTriangle(const Triangle3D& a, const Triangle3D& b, std::vector<Point3D>& out, double tolerance);

    /// True when the two have a point in common, borders included, or come at most the tolerance near each other (boxes
    /// along their axes x, y, z by that much on each; oriented boxes along one of their axes). Triangles collide as
    /// `TriangleTriangle` finds: never without area. A polygon inside a hole of the other does not collide with it.
    [[nodiscard]] static bool Collides(const Triangle3D& a, const Triangle3D& b, double tolerance);
    [[nodiscard]] static bool Collides(const Line3D& segment, const Triangle3D& triangle, double tolerance);
    [[nodiscard]] static bool Collides(const Triangle3D& triangle, const BoundingBox3D& box, double tolerance);
    [[nodiscard]] static bool Collides(const BoundingBox3D& a, const BoundingBox3D& b, double tolerance);
    [[nodiscard]] static bool Collides(const BoundingBox2D& a, const BoundingBox2D& b, double tolerance);
    [[nodiscard]] static bool Collides(const OrientedBoundingBox2D& a, const OrientedBoundingBox2D& b,
                                       double tolerance);
    [[nodiscard]] static bool Collides(const OrientedBoundingBox2D& a, const BoundingBox2D& b, double tolerance);
    [[nodiscard]] static bool Collides(const Polygon2D& a, const Polygon2D& b, double tolerance);
    template <class First, class Second>
    [[nodiscard]] static bool Collides(const First& a, const Second& b, const Tolerances& tolerances) {
        return Collides(a, b, tolerances.UserTolerance());
    }

    /// Point inside the triangle or at most the tolerance, inclusive, from one of its edges; in space at most the
    /// tolerance from its plane, too. A triangle without area has edges only.
    [[nodiscard]] static bool IsPointInsideTriangle(const Point2D& point, const Point2D& a, const Point2D& b,
                                                    const Point2D& c, double tolerance);
    [[nodiscard]] static bool IsPointInsideTriangle(const Point3D& point, const Point3D& a, const Point3D& b,
                                                    const Point3D& c, double tolerance);
    [[nodiscard]] static bool IsPointInsideTriangle(const Point3D& point, const Triangle3D& triangle, double tolerance);

private:
    // What the forms above share.
    static IntersectionResult Meet(const detail::CrossingOperand& a, const detail::CrossingOperand& b,
                                   std::vector<Point2D>& out, const Tolerances& tolerances);
    static int Meet(const detail::CrossingOperand& a, const detail::CrossingOperand& b, std::vector<Point2D>& out,
                    double tolerance);
    static IntersectionResult Meet(const IPolyline2DElement& a, const IPolyline2DElement& b,
                                   std::vector<Polyline2D::PolylinePoint>& out, const Tolerances& tolerances);
    static int Meet(const IPolyline2DElement& a, const IPolyline2DElement& b,
                    std::vector<Polyline2D::PolylinePoint>& out, double tolerance);
    static IntersectionResult MeetLine(const Polyline2D& polyline, const Line2D& line,
                                       std::vector<Polyline2D::PolylinePoint>& out, const Tolerances& tolerances);
    static int MeetLine(const Polyline2D& polyline, const Line2D& line, std::vector<Polyline2D::PolylinePoint>& out,
                        double tolerance);

    // Of two segments on one line, between the stations a1 < a2 and b1 < b2 along it. The ends of b are passed in that
    // order.
    static IntersectionResult AddOverlapPoints(std::vector<Point2D>& out, const Line2D& a, const Line2D& b, double a1,
                                               double a2, double b1, double b2, const Tolerances& tolerances);
    static IntersectionResult LineSegmentLineSegmentAddOverlapPoints(const Line2D& a, const Line2D& b,
                                                                     std::vector<Point2D>& out,
                                                                     const Tolerances& tolerances);
    /// Enters p under its station on the element plus `offset`, in place of what is there. Joints are no crossings of
    /// the element: a point that equals its start or end, strictly within the user tolerance per coordinate, is
    /// dropped. Where the element cannot tell the station of p, that of its nearest point is taken.
    static void AddSolution(std::map<double, Point2D>& solutions, const IPolyline2DElement& element, const Point2D& p,
                            double offset, const Tolerances& tolerances);
    static void AddSolutions(std::map<double, Point2D>& solutions, const IPolyline2DElement& element,
                             const std::vector<Point2D>& points, double offset, const Tolerances& tolerances);
    /// Of solutions within 1e-4 along the element, those in `target` stay.
    static void AddSolutions(const std::map<double, Point2D>& source, std::map<double, Point2D, compareDouble>& target);
    /// Appends the points of `source` that `target` does not hold yet at or behind position `from`, strictly within the
    /// user tolerance per coordinate.
    static void AddSolutions(const std::vector<Point2D>& source, std::vector<Point2D>& target, std::size_t from,
                             const Tolerances& tolerances);
    /// Removes the points that lie on one of the segments (`PointOnLineSegment`, user tolerance) at neither of its
    /// ends.
    static void RemovePointsInSegments(std::vector<Point2D>& points, const std::vector<Line2D>& segments,
                                       const Tolerances& tolerances);
    /// Enters the common points of two elements as solutions along the first.
    static void IPolyline2DElementIPolyline2DElement(const IPolyline2DElement& a, const IPolyline2DElement& b,
                                                     double offset, std::map<double, Point2D>& solutions,
                                                     const Tolerances& tolerances);
    static void IPolyline2DElementIPolyline2DElement(const Line2D& a, const Line2D& b, double offset,
                                                     std::map<double, Point2D>& solutions,
                                                     const Tolerances& tolerances);
    static void IPolyline2DElementIPolyline2DElement(const Line2D& a, const Arc2D& b, double offset,
                                                     std::map<double, Point2D>& solutions,
                                                     const Tolerances& tolerances);
    static void IPolyline2DElementIPolyline2DElement(const Arc2D& a, const Line2D& b, double offset,
                                                     std::map<double, Point2D>& solutions,
                                                     const Tolerances& tolerances);
    static void IPolyline2DElementIPolyline2DElement(const Arc2D& a, const Arc2D& b, double offset,
                                                     std::map<double, Point2D>& solutions,
                                                     const Tolerances& tolerances);

    friend class IntersectionExt;  // follows extended elements by their solutions
};

}  // namespace Kalvio::Math
