#include "kalvio/queries/Projection.h"

#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/curves/detail/UnitDirection.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/queries/Distance.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

using Candidate = GeometryDistancePair<Point2D>;

template <class PointType, class Line>
PointType NearestOnSegment(const PointType& point, const Line& line) {
    const detail::SegmentFoot foot(point, line.GetStart(), line.GetEnd(), 0.0);
    return foot.PointOn(line.GetStart(), line.GetEnd());
}

bool FindNearest(const Point3D& point, const std::vector<Point3D>& points, detail::ChainFoot<Point3D>& foot) {
    return detail::FindNearest(points, point, 0.0, foot);
}

// On a line string or on the outer ring of a polygon.
template <class Chain>
bool FindNearest(const Point2D& point, const Chain& chain, detail::ChainFoot<Point2D>& foot, bool withClosing = false) {
    return detail::SearchAccess::Of(chain).FindNearest(chain.GetPoints(), point, 0.0, foot, withClosing);
}

double StationOf(const LineString2D& lineString, const detail::ChainFoot<Point2D>& foot) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    return detail::SearchAccess::Of(lineString).LengthTo(points, foot.segment) +
           points[foot.segment].Distance(foot.point);
}

// The nearest points of the segments of chains, gathered into the ordered set that goes to the caller.
class Candidates {
public:
    Candidates(const Point2D& query, double reach) : point(query), tolerance(reach) {}

    void AddChain(const std::vector<Point2D>& points) {
        for (std::size_t i = 1; i < points.size(); ++i) Add(Line2D(points[i - 1], points[i]));
    }
    void AddRing(const std::vector<Point2D>& ring) {
        AddChain(ring);
        if (ring.size() > 1 && detail::HasClosingEdge(ring)) Add(Line2D(ring.back(), ring.front()));
    }
    std::uint64_t AppendTo(std::vector<Candidate>& out) {
        const auto nearer = [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; };
        std::stable_sort(found.begin(), found.end(), nearer);
        const auto last = std::unique(found.begin(), found.end(),
                                      [](const Candidate& a, const Candidate& b) { return a.distance == b.distance; });
        out.insert(out.end(), found.begin(), last);
        return out.size();
    }

private:
    void Add(const Line2D& segment) {
        const double distance = Distance::PointToLineSegment(segment, point, tolerance);
        if (std::isfinite(distance)) found.push_back({NearestOnSegment(point, segment), distance, index});
        ++index;
    }

    Point2D point;
    double tolerance;
    std::uint64_t index = 0;
    std::vector<Candidate> found;
};

/// Of a vector of any length but 0: scaled by its largest component first, so that short ones keep their direction.
template <class Vector>
Vector UnitOf(const Vector& vector, double largest) {
    Vector unit = vector / largest;
    return unit.Normalize();
}

// Projection along one direction, prepared for many points.
class PlaneProjector {
public:
    PlaneProjector(const Vec3D& along, const Plane3D& plane) : direction(along), normal(plane.GetNormal()) {
        direction = UnitOf(along, std::max({std::abs(along.GetX()), std::abs(along.GetY()), std::abs(along.GetZ())}));
        slope = normal.DotProduct(direction);
        origin = plane.GetPoint();
    }

    bool Project(const Point3D& point, Point3D& projected) const {
        return std::abs(slope) >= detail::numericalZero &&
               detail::Store(point - direction * (normal.DotProduct(point - origin) / slope), projected);
    }
    template <class Chain>
    bool ProjectRing(const std::vector<Point3D>& ring, Chain& projected) const {
        return std::all_of(ring.begin(), ring.end(), [&](Point3D point) {
            const bool exists = Project(point, point);
            projected.AppendPoint(point);
            return exists;
        });
    }

private:
    Vec3D direction;
    Vec3D normal;
    Point3D origin;
    double slope = 0.0;  // sine of the angle between direction and plane
};

}  // namespace

Point2D Projection::NormalPointOnLine(const Point2D& point, const Line2D& line) {
    return detail::FootOnLine(point, line.GetStart(), line.GetEnd());
}

Point3D Projection::NormalPointOnLine(const Point3D& point, const Line3D& line) {
    return detail::FootOnLine(point, line.GetStart(), line.GetEnd());
}

bool Projection::NormalPointOnLineSegment(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance) {
    const detail::SegmentFoot onSegment(point, line.GetStart(), line.GetEnd(), tolerance);
    return onSegment.isFoot && detail::Store(onSegment.PointOn(line.GetStart(), line.GetEnd()), foot);
}

bool Projection::NormalPointOnLineSegment2(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance) {
    Point2D onSegment;
    const bool isOnSegment = NormalPointOnLineSegment(point, line, onSegment, tolerance);
    foot = NormalPointOnLine(point, line);
    return isOnSegment;
}

Point2D Projection::NearestPointOnLineSegment(const Point2D& point, const Line2D& line, double /*tolerance*/) {
    return NearestOnSegment(point, line);
}

Point3D Projection::NearestPointOnLineSegment(const Point3D& point, const Line3D& line, double /*tolerance*/) {
    return NearestOnSegment(point, line);
}

Point2D Projection::NearestPoint(const Point2D& point, const LineString2D& lineString, double /*tolerance*/) {
    detail::ChainFoot<Point2D> foot;
    FindNearest(point, lineString, foot);
    return foot.point;
}

Point3D Projection::NearestPoint(const Point3D& point, const LineString3D& lineString, double /*tolerance*/) {
    detail::ChainFoot<Point3D> foot;
    FindNearest(point, lineString.GetPoints(), foot);
    return foot.point;
}

Polyline2D::PolylinePoint Projection::NearestPointOnLineString(const Point2D& point, const LineString2D& lineString,
                                                               double /*tolerance*/) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    detail::ChainFoot<Point2D> foot;
    if (!FindNearest(point, lineString, foot)) return {};
    Polyline2D::PolylinePoint nearest;
    nearest.point = foot.point;
    nearest.elementIndex = static_cast<std::uint32_t>(foot.segment);
    nearest.distance = foot.distance;
    if (points.size() < 2) return nearest;
    nearest.tangent = detail::UnitDirection(points[foot.segment + 1] - points[foot.segment]);
    nearest.station = StationOf(lineString, foot);
    return nearest;
}

Point3D Projection::NearestPointOnLineString(const Point3D& point, const LineString3D& lineString,
                                             unsigned int& segment, double /*tolerance*/) {
    detail::ChainFoot<Point3D> foot;
    if (FindNearest(point, lineString.GetPoints(), foot)) segment = static_cast<unsigned int>(foot.segment);
    return foot.point;
}

int Projection::NormalPointOnLineString(const Point2D& point, const LineString2D& lineString, Point2D& foot,
                                        double& station, double /*tolerance*/) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    detail::ChainFoot<Point2D> nearest;
    if (points.size() < 2 || !FindNearest(point, lineString, nearest)) return 0;
    double length = 0.0;
    if (!lineString.GetLengthFromStartPoint(nearest.point, length, detail::looseStationTolerance)) {
        length = StationOf(lineString, nearest);
    }
    foot = nearest.point;
    station = length;
    return 1;
}

std::uint64_t Projection::NearestPointsOnLineString(const Point2D& point, const LineString2D& lineString,
                                                    std::vector<Candidate>& out, double tolerance) {
    Candidates candidates(point, tolerance);
    candidates.AddChain(lineString.GetPoints());
    return candidates.AppendTo(out);
}

std::uint64_t Projection::NearestPointsOnPolygon(const Point2D& point, const Polygon2D& polygon,
                                                 std::vector<Candidate>& out, double tolerance) {
    Candidates candidates(point, tolerance);
    candidates.AddRing(polygon.GetPoints());
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        candidates.AddRing(polygon.GetHoleBoundary(i).GetPoints());
    }
    return candidates.AppendTo(out);
}

Point2D Projection::NearestPointOnPolygon(const Point2D& point, const Polygon2D& polygon, double /*tolerance*/) {
    detail::ChainFoot<Point2D> foot;
    FindNearest(point, polygon, foot, true);
    return foot.point;
}

Point2D Projection::NearestPointOnPolygonWithHoles(const Point2D& point, const Polygon2D& polygon,
                                                   double /*tolerance*/) {
    Point2D nearest;
    double best = std::numeric_limits<double>::infinity();
    const auto tryRing = [&](const auto& ring) {
        detail::ChainFoot<Point2D> foot;
        if (!FindNearest(point, ring, foot, true) || !(foot.distance < best)) return;
        nearest = foot.point;
        best = foot.distance;
    };
    tryRing(polygon);
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) tryRing(polygon.GetHoleBoundary(i));
    return nearest;
}

bool Projection::PointOnPlane(const Point3D& point, const Vec3D& direction, const Plane3D& plane, Point3D& projected) {
    return PlaneProjector(direction, plane).Project(point, projected);
}

Polygon3D Projection::PolygonOnPlane(const Polygon3D& polygon, const Vec3D& direction, const Plane3D& plane) {
    const PlaneProjector projector(direction, plane);
    Polygon3D projected;
    if (!projector.ProjectRing(polygon.GetPoints(), projected)) return {};
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        LineString3D hole;
        if (!projector.ProjectRing(polygon.GetHoleBoundary(i).GetPoints(), hole)) return {};
        projected.AppendHoleBoundary(hole);
    }
    return projected;
}

Polygon3D Projection::NormalPolygonOnPlane(const Polygon3D& polygon, const Plane3D& plane) {
    return PolygonOnPlane(polygon, plane.GetNormal(), plane);
}

bool Projection::OrientedBoundingBoxOnAxis(const OrientedBoundingBox2D& box, const Vec2D& axis, const Point2D& origin,
                                           double& minimum, double& maximum) {
    const Vec2D along = UnitOf(axis, std::max(std::abs(axis.GetX()), std::abs(axis.GetY())));
    Vec2D first, second;
    box.GetAxes(first, second);
    const double middle = along.DotProduct(box.GetCenter() - origin);
    const double half = 0.5 * (std::abs(along.DotProduct(first) * box.GetSize().GetX()) +
                               std::abs(along.DotProduct(second) * box.GetSize().GetY()));
    if (!(along.NormSquared() > 0.0) || !std::isfinite(middle) || !std::isfinite(half)) return false;
    minimum = middle - half;
    maximum = middle + half;
    return true;
}

}  // namespace Kalvio::Math
