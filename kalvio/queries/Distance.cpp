#include "kalvio/queries/Distance.h"

#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/Chain.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

template <class PointType>
double DistanceToChain(const std::vector<PointType>& points, const PointType& point, double tolerance) {
    detail::ChainFoot<PointType> foot;
    return detail::FindNearest(points, point, tolerance, foot) ? foot.distance : detail::largestDouble;
}

}  // namespace

double Distance::PointToPoint(const Point2D& a, const Point2D& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point2DM& a, const Point2DM& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point3D& a, const Point3D& b) { return a.Distance(b); }

double Distance::PointToPoint(const PointND& a, const PointND& b) { return a.Distance(b); }

double Distance::PointToLine(const Point2D& point, const Line2D& line) {
    return detail::SignedDistanceToLine(point, line.GetStart(), line.GetEnd());
}

double Distance::PointToLine(const Point2D& point, const Point2D& a, const Point2D& b) {
    return detail::SignedDistanceToLine(point, a, b);
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
    return DistanceToChain(lineString.GetPoints(), point, tolerance);
}

double Distance::PointToLineString(const LineString3D& lineString, const Point3D& point, double tolerance) {
    return DistanceToChain(lineString.GetPoints(), point, tolerance);
}

}  // namespace Kalvio::Math
