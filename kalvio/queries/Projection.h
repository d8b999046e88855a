#pragma once

#include "kalvio/Export.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/queries/GeometryDistancePair.h"

#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class Arc2D;
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
class Spiral2D;
class Vec2D;
class Vec3D;

/// Static functions that find nearest points and perpendicular feet on curves and chains.
///
/// A foot on a curve is a point whose connection with the query point is perpendicular to the curve: also on the far
/// side of a centre of curvature, where the curve is locally furthest. An end counts when the foot would lie beyond it
/// by at most the tolerance, measured along its tangent. Of several feet the nearest one is found, the first along the
/// curve of equally near ones, over the whole curve and to the rounding of its station.
///
///     Point2D foot;
///     Vec2D tangent;
///     double station = 0.0;
///     if (Projection::NormalPointOnClothoid(peg, transition, foot, station, tangent, 1e-4) > 0) {
///         const double offset = tangent.PerpDotProduct(foot - peg);  // positive to the right
///     }
class KALVIO_MATH_API Projection {
public:
    // Feet on lines.

    /// Foot of the perpendicular on the infinite line; the start for a line of zero length.
    [[nodiscard]] static Point2D NormalPointOnLine(const Point2D& point, const Line2D& line);
    [[nodiscard]] static Point3D NormalPointOnLine(const Point3D& point, const Line3D& line);
    /// Foot of the perpendicular, when it lies on the segment or beyond an end by at most the tolerance.
    /// @return false, `foot` untouched, when it does not, and for a line of zero length
    [[nodiscard]] static bool NormalPointOnLineSegment(const Point2D& point, const Line2D& line, Point2D& foot,
                                                       double tolerance);
    /// The same, but `foot` always receives the foot on the infinite line.
    [[nodiscard]] static bool NormalPointOnLineSegment2(const Point2D& point, const Line2D& line, Point2D& foot,
                                                        double tolerance);

    // Nearest points.
    //
    // Those of segments, strings and polygons lie on them, at the furthest at an end, to rounding whatever the
    // tolerance.

    /// The foot where it lies on the segment, else the nearer end.
    [[nodiscard]] static Point2D NearestPointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance);
    [[nodiscard]] static Point3D NearestPointOnLineSegment(const Point3D& point, const Line3D& line, double tolerance);

    /// The point of the string nearest to `point`, on the earliest of equally near segments; the origin for an empty
    /// string and where no distance is finite.
    [[nodiscard]] static Point2D NearestPoint(const Point2D& point, const LineString2D& lineString, double tolerance);
    [[nodiscard]] static Point3D NearestPoint(const Point3D& point, const LineString3D& lineString, double tolerance);
    /// The nearest point with the unit direction and the index of the segment that holds it, its distance from `point`
    /// and its station; all zero where there is none.
    [[nodiscard]] static Polyline2D::PolylinePoint NearestPointOnLineString(const Point2D& point,
                                                                            const LineString2D& lineString,
                                                                            double tolerance);
    /// @param segment  the segment that holds the nearest point; untouched where there is none
    static Point3D NearestPointOnLineString(const Point3D& point, const LineString3D& lineString, unsigned int& segment,
                                            double tolerance);
    /// The nearest point of the string, an end or a vertex included.
    /// @param station  its length from the start: where the string first passes within 0.01 of it
    /// @return 1; 0, outputs untouched, for fewer than two points and where no distance is finite
    [[nodiscard]] static int NormalPointOnLineString(const Point2D& point, const LineString2D& lineString,
                                                     Point2D& foot, double& station, double tolerance);
    /// Appends the nearest point of every segment, in the order of its distance by `Distance::PointToLineSegment`,
    /// which is signed: those furthest to the left of their segments come first. Of equal distances, sign included, the
    /// first segment stays. Distances that are not finite are left out.
    /// @return the number of entries in `out` then
    static std::uint64_t NearestPointsOnLineString(const Point2D& point, const LineString2D& lineString,
                                                   std::vector<GeometryDistancePair<Point2D>>& out, double tolerance);
    /// The same over the edges of all rings, counted on from the outer ring through the holes. A ring whose last point
    /// repeats the first exactly has no further closing edge.
    static std::uint64_t NearestPointsOnPolygon(const Point2D& point, const Polygon2D& polygon,
                                                std::vector<GeometryDistancePair<Point2D>>& out, double tolerance);
    /// The nearest point of the outer ring (of any ring, the first of equally near ones), closing edges included; the
    /// origin where there is none.
    [[nodiscard]] static Point2D NearestPointOnPolygon(const Point2D& point, const Polygon2D& polygon,
                                                       double tolerance);
    [[nodiscard]] static Point2D NearestPointOnPolygonWithHoles(const Point2D& point, const Polygon2D& polygon,
                                                                double tolerance);

    // Arcs, circles and transition curves.

    /// The nearest point of the arc; see `Arc2D::GetNearestPoint`, which needs no tolerance.
    [[nodiscard]] static Point2D NearestPointOnArc(const Point2D& point, const Arc2D& arc, double tolerance);
    /// The nearest foot, its station and the unit direction of the curve there. For the centre of an arc it is the
    /// start, for that of a circle its easternmost point; a circle has no use for the tolerance.
    /// @return 1; 0, outputs untouched, where there is no foot, for curves of no length, and for values not finite
    [[nodiscard]] static int NormalPointOnArc(const Point2D& point, const Arc2D& arc, Point2D& foot, double tolerance);
    [[nodiscard]] static int NormalPointOnCircle(const Point2D& point, const Circle2D& circle, Point2D& foot,
                                                 double tolerance);
    [[nodiscard]] static int NormalPointOnClothoid(const Point2D& point, const Clothoid& clothoid, Point2D& foot,
                                                   double& station, Vec2D& tangent, double tolerance);
    [[nodiscard]] static int NormalPointOnSpiral(const Point2D& point, const Spiral2D& spiral, Point2D& foot,
                                                 double& station, Vec2D& tangent, double tolerance);
    [[nodiscard]] static int NormalPointOnParabola(const Point2D& point, const Parabola& parabola, Point2D& foot,
                                                   double& station, Vec2D& tangent, double tolerance);

    // Element polylines.

    /// The nearest point over all elements, the first of equals, to rounding whatever the tolerance; the origin for a
    /// chain without elements.
    [[nodiscard]] static Point2D NearestPointOnPolyline(const Point2D& point, const Polyline2D& polyline,
                                                        double tolerance);
    /// The same with its element, tangent, distance and station along the chain.
    /// @return false, `nearest` untouched, where there is none
    [[nodiscard]] static bool NearestPointOnPolyline(const Point2D& point, const Polyline2D& polyline,
                                                     Polyline2D::PolylinePoint& nearest, double tolerance);
    /// The nearest foot on the elements (`Polyline2D::GetNormalPoint`), by the rules above: a vertex where the chain
    /// turns away from the point is no foot.
    /// @param station  along the whole chain
    /// @return 1; 0, outputs untouched, where there is no foot
    [[nodiscard]] static int NormalPointOnPolyline(const Point2D& point, const Polyline2D& polyline, Point2D& foot,
                                                   double& station, double tolerance);
    [[nodiscard]] static int NormalPointOnPolyline(const Point2D& point, const Polyline2D& polyline,
                                                   Polyline2D::PolylinePoint& foot, double tolerance);
    /// The nearest of the feet on the elements and of those outside them, on the straight continuation of an element
    /// along its tangent beyond one of its ends; of equals one on an element. The station of a foot outside counts on
    /// from that end, below 0 before the start of the chain.
    /// @return 1 on an element; 2 outside; 0, outputs untouched, for a chain without elements that have a direction
    [[nodiscard]] static int NormalPointOnPolyline2(const Point2D& point, const Polyline2D& polyline, Point2D& foot,
                                                    double& station, double tolerance);
    [[nodiscard]] static int NormalPointOnPolyline2(const Point2D& point, const Polyline2D& polyline,
                                                    Polyline2D::PolylinePoint& foot, double tolerance);

    // Planes and axes.

    /// Projection along a direction of any length.
    /// @return false, `projected` untouched, for a direction parallel to the plane within 1e-10 rad or of zero length,
    ///         for a degenerate plane, and for a point that is not finite
    [[nodiscard]] static bool PointOnPlane(const Point3D& point, const Vec3D& direction, const Plane3D& plane,
                                           Point3D& projected);
    /// All rings projected point by point along the direction, or the normal of the plane; an empty polygon where
    /// `PointOnPlane` fails.
    [[nodiscard]] static Polygon3D PolygonOnPlane(const Polygon3D& polygon, const Vec3D& direction,
                                                  const Plane3D& plane);
    [[nodiscard]] static Polygon3D NormalPolygonOnPlane(const Polygon3D& polygon, const Plane3D& plane);
    /// Extent of the box along an axis of any length, as lengths from the origin of the axis.
    /// @return false, outputs untouched, for an axis of zero length
    [[nodiscard]] static bool OrientedBoundingBoxOnAxis(const OrientedBoundingBox2D& box, const Vec2D& axis,
                                                        const Point2D& origin, double& minimum, double& maximum);

private:
    // Between two stations, whose ends count as those of the curve.
    static int NormalPointOnClothoid(const Point2D& point, const Clothoid& clothoid, double from, double to,
                                     Point2D& foot, double& station, Vec2D& tangent, double tolerance);
    static int NormalPointOnSpiral(const Point2D& point, const Spiral2D& spiral, double from, double to, Point2D& foot,
                                   double& station, Vec2D& tangent, double tolerance);
};

}  // namespace Kalvio::Math
