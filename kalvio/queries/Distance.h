#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/ProjectionPlane.h"

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
class Parabola;
class Plane3D;
class Point2D;
class Point2DM;
class Point3D;
class PointND;
class Polygon2D;
class Polyline2D;
class Spiral2D;

/// Static functions that measure between pairs of geometries.
///
/// Sign rule: a point to the right of a line's direction of travel has a positive distance, to the left a negative one.
/// Distances in space, in a projection plane, to curves and between figures have no sign.
///
///     a -------> b
///          |  result > 0
///          p
///
/// The forms with `long double` coordinates are computed in that type; those with a `ProjectionPlane` measure between
/// the projections. Coordinates that are not numbers give no number, or the largest double where there is nothing to
/// measure to.
class KALVIO_MATH_API Distance {
public:
    [[nodiscard]] static double PointToPoint(const Point2D& a, const Point2D& b);
    /// Positions only; the measures are ignored.
    [[nodiscard]] static double PointToPoint(const Point2DM& a, const Point2DM& b);
    [[nodiscard]] static double PointToPoint(const Point3D& a, const Point3D& b);
    [[nodiscard]] static double PointToPoint(const Point3D& a, const Point3D& b, ProjectionPlane plane);
    /// 0 on different dimensions.
    [[nodiscard]] static double PointToPoint(const PointND& a, const PointND& b);
    [[nodiscard]] static double PointToPoint(long double ax, long double ay, long double bx, long double by);
    [[nodiscard]] static double PointToPoint(long double ax, long double ay, long double az, long double bx,
                                             long double by, long double bz);

    /// The squares of the same, without a root.
    [[nodiscard]] static double PointToPointSquare(const Point2D& a, const Point2D& b);
    [[nodiscard]] static double PointToPointSquare(const Point2DM& a, const Point2DM& b);
    [[nodiscard]] static double PointToPointSquare(const Point3D& a, const Point3D& b);
    [[nodiscard]] static double PointToPointSquare(const Point3D& a, const Point3D& b, ProjectionPlane plane);
    [[nodiscard]] static double PointToPointSquare(const PointND& a, const PointND& b);
    [[nodiscard]] static double PointToPointSquare(long double ax, long double ay, long double bx, long double by);
    [[nodiscard]] static double PointToPointSquare(long double ax, long double ay, long double az, long double bx,
                                                   long double by, long double bz);

    /// Plan distance.
    [[nodiscard]] static double PointToPoint2D(const Point3D& a, const Point3D& b);

    /// Signed distance to the infinite line; the plain distance to its start for a length of at most 1e-10.
    [[nodiscard]] static double PointToLine(const Point2D& point, const Line2D& line);
    [[nodiscard]] static double PointToLine(const Point2D& point, const Point2D& a, const Point2D& b);
    [[nodiscard]] static double PointToLine(long double px, long double py, long double ax, long double ay,
                                            long double bx, long double by);
    /// In space, or in a plane, the same without a sign.
    [[nodiscard]] static double PointToLine(const Point3D& point, const Line3D& line);
    [[nodiscard]] static double PointToLine(const Point3D& point, const Line3D& line, ProjectionPlane plane);
    [[nodiscard]] static double LineToPoint(const Line2D& line, const Point2D& point);
    [[nodiscard]] static double LineToPoint(const Point2D& a, const Point2D& b, const Point2D& point);
    [[nodiscard]] static double LineToPoint(long double ax, long double ay, long double bx, long double by,
                                            long double px, long double py);
    [[nodiscard]] static double LineToPoint(const Line3D& line, const Point3D& point);
    [[nodiscard]] static double LineToPoint(const Line3D& line, const Point3D& point, ProjectionPlane plane);
    /// Plan distance, without a sign, to the infinite line a -> b.
    [[nodiscard]] static double PointToLine2D(const Point3D& point, const Point3D& a, const Point3D& b);

    /// Distance to the foot of the perpendicular where `Projection::NormalPointOnLineSegment` finds one, up to the
    /// tolerance beyond an end, else to the nearer end; negative to the left of the infinite line, also where an end is
    /// nearest. In space it has no sign.
    [[nodiscard]] static double PointToLineSegment(const Line2D& line, const Point2D& point, double tolerance);
    [[nodiscard]] static double PointToLineSegment(const Line3D& line, const Point3D& point, double tolerance);
    /// Distance to the nearest segment (`PointToLineSegment`), without sign; the largest double for an empty string and
    /// where no distance is finite.
    [[nodiscard]] static double PointToLineString(const LineString2D& lineString, const Point2D& point,
                                                  double tolerance);
    [[nodiscard]] static double PointToLineString(const LineString3D& lineString, const Point3D& point,
                                                  double tolerance);
    /// Distance to the outer ring, its closing edge included, negative for a point inside that ring: holes play no
    /// part. The largest double for an empty polygon.
    [[nodiscard]] static double PointToPolygon(const Point2D& point, const Polygon2D& polygon);

    /// Gap between two polygons: the smallest distance from a vertex of one to the outer ring of the other, 0 when that
    /// is less than the tolerance, and when the polygons overlap or touch (`Intersection::PolygonPolygon`) or one lies
    /// inside the outer ring of the other. The largest double when one has no points. About n log n.
    [[nodiscard]] static double PolygonToPolygon(const Polygon2D& a, const Polygon2D& b, double tolerance);

    /// Distance to the nearest point of the curve, an end included (`Projection::NearestPointOn...`). The largest
    /// double for a chain without elements.
    [[nodiscard]] static double PointToArc(const Point2D& point, const Arc2D& arc);
    [[nodiscard]] static double PointToCircle(const Point2D& point, const Circle2D& circle);
    [[nodiscard]] static double CircleToPoint(const Circle2D& circle, const Point2D& point);
    [[nodiscard]] static double PointToClothoid(const Point2D& point, const Clothoid& clothoid);
    [[nodiscard]] static double PointToSpiral(const Point2D& point, const Spiral2D& spiral);
    [[nodiscard]] static double PointToParabola(const Point2D& point, const Parabola& parabola);
    [[nodiscard]] static double PointToPolyline(const Point2D& point, const Polyline2D& polyline);

    /// Gap between two circles, as curves: 0 when they meet, the room left between them when one lies inside the other.
    [[nodiscard]] static double CircleToCircle(const Circle2D& a, const Circle2D& b);
    /// Gap between the infinite line and the circle, 0 when they meet. A line of length at most 1e-10 is its start.
    [[nodiscard]] static double LineToCircle(const Line2D& line, const Circle2D& circle);

    /// Distance to the plane, without sign; the largest double for a degenerate plane, on which no point lies.
    [[nodiscard]] static double PointToPlane(const Point3D& point, const Plane3D& plane);
    [[nodiscard]] static double PlaneToPoint(const Plane3D& plane, const Point3D& point);

    /// Gap between the boxes, or to the point: 0 when they touch or overlap.
    [[nodiscard]] static double PointToBoundingBox(const Point2D& point, const BoundingBox2D& box);
    [[nodiscard]] static double PointToBoundingBox(const Point3D& point, const BoundingBox3D& box);
    [[nodiscard]] static double BoundingBoxToBoundingBox(const BoundingBox2D& a, const BoundingBox2D& b);
    [[nodiscard]] static double BoundingBoxToBoundingBox(const BoundingBox3D& a, const BoundingBox3D& b);
};

}  // namespace Kalvio::Math
