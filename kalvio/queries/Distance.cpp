#include "kalvio/queries/Distance.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/VecND.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/queries/GeometryCreator.h"
#include "kalvio/queries/Intersection.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math {

namespace {

Point2D InPlane(const Point3D& point, ProjectionPlane plane) {
    return GeometryCreator::Point2DFromPoint3D(point, plane);
}

template <class PointType>
double DistanceToPoints(const std::vector<PointType>& points, const PointType& point, double tolerance) {
    detail::ChainFoot<PointType> foot;
    return detail::FindNearest(points, point, tolerance, foot) ? foot.distance : detail::largestDouble;
}

// To a line string or to the outer ring of a polygon.
template <class Chain>
double DistanceToChain(const Chain& chain, const Point2D& point, double tolerance, bool withClosing = false) {
    detail::ChainFoot<Point2D> foot;
    const detail::SegmentSearch& search = detail::SearchAccess::Of(chain);
    const bool isFound = search.FindNearest(chain.GetPoints(), point, tolerance, foot, withClosing);
    return isFound ? foot.distance : detail::largestDouble;
}

template <class Curve>
double DistanceToCurve(const Point2D& point, const Curve& curve) {
    return point.Distance(curve.GetNearestPoint(point, Tolerances::Standard()));
}

bool IsOutside(const Point2D& point, const Polygon2D& polygon) {
    const detail::SegmentSearch& search = detail::SearchAccess::Of(polygon);
    return search.FindRingSide(polygon.GetPoints(), point, detail::numericalZero) == detail::RingSide::Outside;
}

// The smallest distance from a vertex of one ring to the other, or `best` where that is smaller.
double NearestVertex(const std::vector<Point2D>& vertices, const std::vector<Point2D>& ring, double best) {
    if (ring.size() < 2) {
        for (const Point2D& vertex : vertices) best = std::min(best, DistanceToPoints(ring, vertex, 0.0));
        return best;
    }
    const detail::SegmentBoxes boxes(ring, detail::SegmentBoxes::Closing::Ring);
    const auto reachOf = [](double distance) {
        return detail::WidenedSquare(distance * distance, detail::numericalZero);
    };
    double squaredReach = reachOf(best);
    for (const Point2D& vertex : vertices) {
        if (!std::isfinite(vertex.GetX()) || !std::isfinite(vertex.GetY())) continue;
        boxes.ForEachNearest(vertex, squaredReach, [&](std::size_t i) {
            const detail::SegmentFoot foot(vertex, boxes.GetStart(i), boxes.GetEnd(i), detail::numericalZero);
            const double distance = std::sqrt(foot.squaredDistance);
            if (!(distance < best)) return;
            best = distance;
            squaredReach = reachOf(best);
        });
    }
    return best;
}

double Positive(double gap) { return gap <= 0.0 ? 0.0 : gap; }

// Between intervals of these lengths whose centres are `offset` apart.
double IntervalGap(double offset, double lengthA, double lengthB) {
    return Positive(std::abs(offset) - 0.5 * (lengthA + lengthB));
}

double BoxGap(const Vec2D& offset, const Vec2D& a, const Vec2D& b) {
    return Vec2D(IntervalGap(offset.GetX(), a.GetX(), b.GetX()), IntervalGap(offset.GetY(), a.GetY(), b.GetY()))
        .Length();
}

double BoxGap(const Vec3D& offset, const Vec3D& a, const Vec3D& b) {
    return Vec3D(IntervalGap(offset.GetX(), a.GetX(), b.GetX()), IntervalGap(offset.GetY(), a.GetY(), b.GetY()),
                 IntervalGap(offset.GetZ(), a.GetZ(), b.GetZ()))
        .Length();
}

}  // namespace

double Distance::PointToPoint(const Point2D& a, const Point2D& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point2DM& a, const Point2DM& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point3D& a, const Point3D& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point3D& a, const Point3D& b, ProjectionPlane plane) {
    return InPlane(a, plane).Distance(InPlane(b, plane));
}

double Distance::PointToPoint(const PointND& a, const PointND& b) { return a.Distance(b); }

double Distance::PointToPoint(long double ax, long double ay, long double bx, long double by) {
    return PointToPoint(ax, ay, 0.0L, bx, by, 0.0L);
}

double Distance::PointToPoint(long double ax, long double ay, long double az, long double bx, long double by,
                              long double bz) {
    const long double dx = bx - ax;
    const long double dy = by - ay;
    const long double dz = bz - az;
    return static_cast<double>(std::sqrt(dx * dx + dy * dy + dz * dz));
}

double Distance::PointToPointSquare(const Point2D& a, const Point2D& b) { return (b - a).NormSquared(); }

double Distance::PointToPointSquare(const Point2DM& a, const Point2DM& b) { return (b - a).NormSquared(); }

double Distance::PointToPointSquare(const Point3D& a, const Point3D& b) { return (b - a).NormSquared(); }

double Distance::PointToPointSquare(const Point3D& a, const Point3D& b, ProjectionPlane plane) {
    return (InPlane(b, plane) - InPlane(a, plane)).NormSquared();
}

double Distance::PointToPointSquare(const PointND& a, const PointND& b) { return (b - a).NormSquared(); }

double Distance::PointToPointSquare(long double ax, long double ay, long double bx, long double by) {
    return PointToPointSquare(ax, ay, 0.0L, bx, by, 0.0L);
}

double Distance::PointToPointSquare(long double ax, long double ay, long double az, long double bx, long double by,
                                    long double bz) {
    const long double dx = bx - ax;
    const long double dy = by - ay;
    const long double dz = bz - az;
    return static_cast<double>(dx * dx + dy * dy + dz * dz);
}

double Distance::PointToPoint2D(const Point3D& a, const Point3D& b) { return a.Distance2D(b); }

double Distance::PointToLine(const Point2D& point, const Line2D& line) {
    return detail::SignedDistanceToLine(point, line.GetStart(), line.GetEnd());
}

double Distance::PointToLine(const Point2D& point, const Point2D& a, const Point2D& b) {
    return detail::SignedDistanceToLine(point, a, b);
}

double Distance::PointToLine(long double px, long double py, long double ax, long double ay, long double bx,
                             long double by) {
    return static_cast<double>(detail::SignedDistanceToLine(px, py, ax, ay, bx, by));
}

double Distance::PointToLine(const Point3D& point, const Line3D& line) {
    const Vec3D along = line.GetEnd() - line.GetStart();
    const Vec3D toPoint = point - line.GetStart();
    const double length = along.Length();
    return length <= detail::numericalZero ? toPoint.Length() : toPoint.CrossProduct(along).Length() / length;
}

double Distance::PointToLine(const Point3D& point, const Line3D& line, ProjectionPlane plane) {
    return std::abs(PointToLine(InPlane(point, plane), InPlane(line.GetStart(), plane), InPlane(line.GetEnd(), plane)));
}

double Distance::LineToPoint(const Line2D& line, const Point2D& point) { return PointToLine(point, line); }

double Distance::LineToPoint(const Point2D& a, const Point2D& b, const Point2D& point) {
    return PointToLine(point, a, b);
}

double Distance::LineToPoint(long double ax, long double ay, long double bx, long double by, long double px,
                             long double py) {
    return PointToLine(px, py, ax, ay, bx, by);
}

double Distance::LineToPoint(const Line3D& line, const Point3D& point) { return PointToLine(point, line); }

double Distance::LineToPoint(const Line3D& line, const Point3D& point, ProjectionPlane plane) {
    return PointToLine(point, line, plane);
}

double Distance::PointToLine2D(const Point3D& point, const Point3D& a, const Point3D& b) {
    return std::abs(PointToLine(point.GetPoint2D(), a.GetPoint2D(), b.GetPoint2D()));
}

double Distance::PointToLineSegment(const Line2D& line, const Point2D& point, double tolerance) {
    const double distance =
        std::sqrt(detail::SegmentFoot(point, line.GetStart(), line.GetEnd(), tolerance).squaredDistance);
    return PointToLine(point, line) < 0.0 ? -distance : distance;
}

double Distance::PointToLineSegment(const Line3D& line, const Point3D& point, double tolerance) {
    return std::sqrt(detail::SegmentFoot(point, line.GetStart(), line.GetEnd(), tolerance).squaredDistance);
}

double Distance::PointToLineString(const LineString2D& lineString, const Point2D& point, double tolerance) {
    return DistanceToChain(lineString, point, tolerance);
}

double Distance::PointToLineString(const LineString3D& lineString, const Point3D& point, double tolerance) {
    return DistanceToPoints(lineString.GetPoints(), point, tolerance);
}

double Distance::PointToPolygon(const Point2D& point, const Polygon2D& polygon) {
    const double distance = DistanceToChain(polygon, point, detail::numericalZero, true);
    return IsOutside(point, polygon) ? distance : 0.0 - distance;
}

double Distance::PolygonToPolygon(const Polygon2D& a, const Polygon2D& b, double tolerance) {
    if (a.GetSize() == 0 || b.GetSize() == 0) return detail::largestDouble;
    const Tolerances tolerances(tolerance);
    if (a.GetBoundingBox2D().Intersects(b.GetBoundingBox2D(), std::abs(tolerance) + detail::numericalZero)) {
        // Where the rings have no common point, one lies inside the other with all of its vertices or with none.
        if (!IsOutside(a.GetPoint(0), b) || !IsOutside(b.GetPoint(0), a)) return 0.0;
        std::vector<Point2D> common;
        const IntersectionResult result = Intersection::PolygonPolygon(a, b, common, tolerances);
        if (result == IntersectionResult::Intersecting || result == IntersectionResult::Coincident) return 0.0;
    }
    double gap = NearestVertex(a.GetPoints(), b.GetPoints(), detail::largestDouble);
    gap = NearestVertex(b.GetPoints(), a.GetPoints(), gap);
    return gap < tolerance ? 0.0 : gap;
}

double Distance::PointToArc(const Point2D& point, const Arc2D& arc) { return DistanceToCurve(point, arc); }

double Distance::PointToCircle(const Point2D& point, const Circle2D& circle) {
    return std::abs(point.Distance(circle.GetCenter()) - std::abs(circle.GetRadius()));
}

double Distance::CircleToPoint(const Circle2D& circle, const Point2D& point) { return PointToCircle(point, circle); }

double Distance::PointToClothoid(const Point2D& point, const Clothoid& clothoid) {
    return DistanceToCurve(point, clothoid);
}

double Distance::PointToSpiral(const Point2D& point, const Spiral2D& spiral) { return DistanceToCurve(point, spiral); }

double Distance::PointToParabola(const Point2D& point, const Parabola& parabola) {
    return DistanceToCurve(point, parabola);
}

double Distance::PointToPolyline(const Point2D& point, const Polyline2D& polyline) {
    Polyline2D::PolylinePoint nearest;
    return polyline.GetNearestPoint(point, nearest, Tolerances::Standard()) ? nearest.distance : detail::largestDouble;
}

double Distance::CircleToCircle(const Circle2D& a, const Circle2D& b) {
    const double distance = a.GetCenter().Distance(b.GetCenter());
    const double r1 = std::abs(a.GetRadius());
    const double r2 = std::abs(b.GetRadius());
    const double apart = distance - (r1 + r2);
    const double nested = std::abs(r1 - r2) - distance;
    return Positive(std::max(apart, nested));
}

double Distance::LineToCircle(const Line2D& line, const Circle2D& circle) {
    if (line.GetStart().Distance(line.GetEnd()) <= detail::numericalZero) return PointToCircle(line.GetStart(), circle);
    return Positive(std::abs(PointToLine(circle.GetCenter(), line)) - std::abs(circle.GetRadius()));
}

double Distance::PointToPlane(const Point3D& point, const Plane3D& plane) {
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
    plane.GetParameters(a, b, c, d);
    if (a == 0.0 && b == 0.0 && c == 0.0) return detail::largestDouble;
    return std::abs(a * point.GetX() + b * point.GetY() + c * point.GetZ() + d);
}

double Distance::PlaneToPoint(const Plane3D& plane, const Point3D& point) { return PointToPlane(point, plane); }

double Distance::PointToBoundingBox(const Point2D& point, const BoundingBox2D& box) {
    return BoxGap(point - box.GetCenter(), Vec2D(), box.GetSize());
}

double Distance::PointToBoundingBox(const Point3D& point, const BoundingBox3D& box) {
    return BoxGap(point - box.GetCenter(), Vec3D(), box.GetSize());
}

double Distance::BoundingBoxToBoundingBox(const BoundingBox2D& a, const BoundingBox2D& b) {
    return BoxGap(b.GetCenter() - a.GetCenter(), a.GetSize(), b.GetSize());
}

double Distance::BoundingBoxToBoundingBox(const BoundingBox3D& a, const BoundingBox3D& b) {
    return BoxGap(b.GetCenter() - a.GetCenter(), a.GetSize(), b.GetSize());
}

}  // namespace Kalvio::Math
