#include "kalvio/queries/Intersection.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

bool LieOnOneLine(const Line2D& a, const Line2D& b, double tolerance) {
    return (detail::IsPointOnLine(a.GetStart(), b.GetStart(), b.GetEnd(), tolerance) &&
            detail::IsPointOnLine(a.GetEnd(), b.GetStart(), b.GetEnd(), tolerance)) ||
           (detail::IsPointOnLine(b.GetStart(), a.GetStart(), a.GetEnd(), tolerance) &&
            detail::IsPointOnLine(b.GetEnd(), a.GetStart(), a.GetEnd(), tolerance));
}

}  // namespace

IntersectionResult Intersection::LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                          Point2D& out, const Tolerances& tolerances) {
    return LineLine(Line2D(a1, a2), Line2D(b1, b2), out, tolerances);
}

IntersectionResult Intersection::LineLine(const Line2D& a, const Line2D& b, Point2D& out,
                                          const Tolerances& tolerances) {
    const double user = tolerances.UserTolerance();
    const double epsilon = tolerances.SystemEpsilon();
    const Vec2D along = a.GetEnd() - a.GetStart();
    const Vec2D other = b.GetEnd() - b.GetStart();
    if (along.NormSquared() <= user * user || other.NormSquared() <= user * user) return IntersectionResult::Degenerate;

    // Two short lines at a small angle pass any test over their own length: the longer length decides as well.
    const double length = along.Length();
    const double otherLength = other.Length();
    const Line2D stretched(a.GetStart(), length < otherLength ? along * (otherLength / length) : along);
    const Line2D otherStretched(b.GetStart(), otherLength < length ? other * (length / otherLength) : other);
    if (LieOnOneLine(a, b, epsilon) && LieOnOneLine(stretched, otherStretched, epsilon)) {
        return IntersectionResult::Coincident;
    }
    const double cross = along.PerpDotProduct(other);
    if (std::abs(cross) >= epsilon) {
        // Relative to a line's start, so that survey coordinates lose nothing.
        out = a.GetStart() + along * ((b.GetStart() - a.GetStart()).PerpDotProduct(other) / cross);
        return IntersectionResult::Intersecting;
    }
    return detail::IsPointOnLine(a.GetStart(), b.GetStart(), b.GetEnd(), user) ? IntersectionResult::Coincident
                                                                               : IntersectionResult::NoIntersection;
}

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
