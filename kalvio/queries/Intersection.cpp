#include "kalvio/queries/Intersection.h"

#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"

namespace Kalvio::Math {

bool Intersection::PointOnArc(const Point2D& point, const Arc2D& arc, double tolerance) {
    return arc.IsPointOnCircle(point, tolerance) && arc.IsCirclePointInside(point, tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Line2D& line, double tolerance) {
    return detail::IsPointOnLine(point, line.GetStart(), line.GetEnd(), tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance) {
    return detail::IsPointOnLine(point, a, b, tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Line3D& line, double tolerance) {
    return detail::IsPointOnLine(point, line.GetStart().GetPoint2D(), line.GetEnd().GetPoint2D(), tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance) {
    return detail::IsPointOnSegment(point, line.GetStart(), line.GetEnd(), tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance) {
    return detail::IsPointOnSegment(point, a, b, tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Line3D& line, double tolerance) {
    return detail::IsPointOnSegment(point, line.GetStart().GetPoint2D(), line.GetEnd().GetPoint2D(), tolerance);
}

}  // namespace Kalvio::Math
