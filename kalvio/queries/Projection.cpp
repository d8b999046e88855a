#include "kalvio/queries/Projection.h"

#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/Chain.h"

namespace Kalvio::Math {

namespace {

template <class Line, class PointType>
PointType FootOnLine(const PointType& point, const Line& line) {
    const auto d = line.GetEnd() - line.GetStart();
    const double squared = d.NormSquared();
    return squared > 0.0 ? line.GetStart() + d * ((point - line.GetStart()).DotProduct(d) / squared) : line.GetStart();
}

template <class PointType, class Line>
PointType NearestOnSegment(const PointType& point, const Line& line, double tolerance) {
    const detail::SegmentFoot foot(point, line.GetStart(), line.GetEnd(), tolerance);
    return foot.PointOn(line.GetStart(), line.GetEnd());
}

template <class PointType>
detail::ChainFoot<PointType> NearestOnChain(const PointType& point, const std::vector<PointType>& points,
                                            double tolerance) {
    detail::ChainFoot<PointType> foot;
    detail::FindNearest(points, point, tolerance, foot);
    return foot;
}

}  // namespace

Point2D Projection::NormalPointOnLine(const Point2D& point, const Line2D& line) { return FootOnLine(point, line); }

Point3D Projection::NormalPointOnLine(const Point3D& point, const Line3D& line) { return FootOnLine(point, line); }

bool Projection::NormalPointOnLineSegment(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance) {
    const detail::SegmentFoot onSegment(point, line.GetStart(), line.GetEnd(), tolerance);
    if (onSegment.isFoot) foot = onSegment.PointOn(line.GetStart(), line.GetEnd());
    return onSegment.isFoot;
}

bool Projection::NormalPointOnLineSegment2(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance) {
    foot = NormalPointOnLine(point, line);
    return detail::SegmentFoot(point, line.GetStart(), line.GetEnd(), tolerance).isFoot;
}

Point2D Projection::NearestPointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance) {
    return NearestOnSegment(point, line, tolerance);
}

Point3D Projection::NearestPointOnLineSegment(const Point3D& point, const Line3D& line, double tolerance) {
    return NearestOnSegment(point, line, tolerance);
}

Point2D Projection::NearestPoint(const Point2D& point, const LineString2D& lineString, double tolerance) {
    return NearestOnChain(point, lineString.GetPoints(), tolerance).point;
}

Point3D Projection::NearestPoint(const Point3D& point, const LineString3D& lineString, double tolerance) {
    return NearestOnChain(point, lineString.GetPoints(), tolerance).point;
}

Polyline2D::PolylinePoint Projection::NearestPointOnLineString(const Point2D& point, const LineString2D& lineString,
                                                               double tolerance) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    detail::ChainFoot<Point2D> foot;
    if (!detail::FindNearest(points, point, tolerance, foot)) return {};
    Polyline2D::PolylinePoint nearest;
    nearest.point = foot.point;
    nearest.elementIndex = static_cast<std::uint32_t>(foot.segment);
    nearest.distance = foot.distance;
    if (points.size() < 2) return nearest;
    nearest.tangent = (points[foot.segment + 1] - points[foot.segment]).Normalize();
    for (std::size_t i = 0; i < foot.segment; ++i) nearest.station += points[i].Distance(points[i + 1]);
    nearest.station += points[foot.segment].Distance(foot.point);
    return nearest;
}

Point3D Projection::NearestPointOnLineString(const Point3D& point, const LineString3D& lineString,
                                             unsigned int& segment, double tolerance) {
    detail::ChainFoot<Point3D> foot;
    if (detail::FindNearest(lineString.GetPoints(), point, tolerance, foot)) {
        segment = static_cast<unsigned int>(foot.segment);
    }
    return foot.point;
}

}  // namespace Kalvio::Math
