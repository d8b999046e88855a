#include "kalvio/queries/GeometryCreator.h"

#include "kalvio/core/Point3D.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Distance.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace Kalvio::Math {

Point2D GeometryCreator::Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane) {
    switch (plane) {
        case ProjectionPlane::YZ:
            return {point.GetY(), point.GetZ()};
        case ProjectionPlane::XZ:
            return {point.GetX(), point.GetZ()};
        default:
            return {point.GetX(), point.GetY()};
    }
}

bool GeometryCreator::CircleFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Circle2D& circle,
                                        double tolerance) {
    const Vec2D a = p2 - p1;  // relative to p1: survey coordinates lose nothing
    const Vec2D b = p3 - p1;
    const double aSquared = a.NormSquared();
    const double bSquared = b.NormSquared();
    const double longest = std::sqrt(std::max({aSquared, bSquared, (b - a).NormSquared()}));
    const double minimum = std::abs(tolerance);
    Vec2D toCenter;
    if (bSquared == 0.0) {
        if (!(longest > minimum)) return false;
        toCenter = a * 0.5;
    } else {
        const double cross = a.PerpDotProduct(b);
        if (!(std::abs(cross) > minimum * longest)) return false;
        toCenter =
            Vec2D(b.GetY() * aSquared - a.GetY() * bSquared, a.GetX() * bSquared - b.GetX() * aSquared) / (2.0 * cross);
    }
    const double radius = toCenter.Length();
    if (!std::isfinite(radius)) return false;
    circle = Circle2D(p1 + toCenter, radius);
    return true;
}

bool GeometryCreator::ArcFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Arc2D& arc,
                                     double tolerance) {
    Circle2D circle;
    if (!CircleFrom3Points(p1, p2, p3, circle, tolerance)) return false;
    const Vec2D toStart = p1 - circle.GetCenter();
    const Vec2D toEnd = p3 - circle.GetCenter();
    // Counter-clockwise angle from p1 to p3 in (-pi, pi]; the chord in the cross product keeps it accurate on flat
    // arcs.
    double sweep = std::atan2(toStart.PerpDotProduct(p3 - p1), toStart.DotProduct(toEnd));
    const bool clockwise = Distance::PointToLine(p2, p1, p3) < 0.0;
    if (clockwise && sweep > 0.0) sweep -= detail::twoPi;
    if (!clockwise && sweep <= 0.0) sweep += detail::twoPi;
    arc.Set(p1, circle.GetCenter(), Angle(sweep));
    return true;
}

IGeometry* GeometryCreator::Append(const IGeometry& first, const IGeometry& second) {
    if (first.GetType() == MathTypes::Line2D && second.GetType() == MathTypes::Line2D) {
        const auto& line = static_cast<const Line2D&>(first);
        return new LineString2D({line.GetStart(), line.GetEnd(), static_cast<const Line2D&>(second).GetEnd()});
    }
    auto chain = std::make_unique<Polyline2D>();
    for (const IGeometry* const part : {&first, &second}) {
        const IPolyline2DElement* const element = detail::AsPlanElement(*part);
        if (element == nullptr) return nullptr;
        if (element->GetType() != MathTypes::Polyline2D) {
            chain->AppendElement(static_cast<IPolyline2DElement*>(element->Clone()));
            continue;
        }
        const auto& polyline = static_cast<const Polyline2D&>(*element);
        for (unsigned int i = 0; i < polyline.GetNrOfElements(); ++i) {
            chain->AppendElement(static_cast<IPolyline2DElement*>(polyline.GetElementAtIndex(i).Clone()));
        }
    }
    return chain.release();
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
