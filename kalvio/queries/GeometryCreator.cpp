#include "kalvio/queries/GeometryCreator.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PlaneCoordinates.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/ThreePoints.h"

#include <cmath>

namespace Kalvio::Math {

Point2D GeometryCreator::Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane) {
    return detail::CoordinatesInPlane(point, plane);
}

bool GeometryCreator::CircleFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Circle2D& circle,
                                        double tolerance) {
    return detail::CircleThrough(p1, p2, p3, circle, tolerance);
}

bool GeometryCreator::ArcFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Arc2D& arc,
                                     double tolerance) {
    return detail::ArcThrough(p1, p2, p3, arc, tolerance);
}

IGeometry* GeometryCreator::Append(const IGeometry& first, const IGeometry& second) {
    return detail::AppendElements(first, second);
}

bool GeometryCreator::Arc2DFrom3D(const Arc3D& arc, Arc2D& plan) {
    const double up = arc.GetPlane().GetNormal().GetZ();
    if (!(arc.GetRadius() * (1.0 - std::abs(up)) <= detail::standardUserTolerance)) return false;
    const double sweep = arc.GetAngle().GetRadians();
    const bool turned = up < 0.0 && sweep < detail::twoPi;  // a full circle has no direction
    plan.Set(arc.GetStart().GetPoint2D(), arc.GetCenter().GetPoint2D(), Angle(turned ? -sweep : sweep));
    return true;
}

}  // namespace Kalvio::Math
