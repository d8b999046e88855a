#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math::detail {

/// The circle through three points. Where only the first and the last coincide, exactly, it is the one with the way to
/// the second as its diameter. @return false, `circle` untouched, when the middle point is at most |tolerance| from the
/// line of the outer two
inline bool CircleThrough(const Point2D& p1, const Point2D& p2, const Point2D& p3, Circle2D& circle, double tolerance) {
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

/// The arc from p1 by p2 to p3; the full circle where p3 equals p1. False, `arc` untouched, as for the circle.
inline bool ArcThrough(const Point2D& p1, const Point2D& p2, const Point2D& p3, Arc2D& arc, double tolerance) {
    Circle2D circle;
    if (!CircleThrough(p1, p2, p3, circle, tolerance)) return false;
    const Vec2D toStart = p1 - circle.GetCenter();
    const Vec2D toEnd = p3 - circle.GetCenter();
    // Counter-clockwise angle from p1 to p3 in (-pi, pi]; the chord in the cross product keeps it accurate on flat
    // arcs.
    double sweep = std::atan2(toStart.PerpDotProduct(p3 - p1), toStart.DotProduct(toEnd));
    const bool clockwise = SignedDistanceToLine(p2, p1, p3) < 0.0;
    if (clockwise && sweep > 0.0) sweep -= twoPi;
    if (!clockwise && sweep <= 0.0) sweep += twoPi;
    arc.Set(p1, circle.GetCenter(), Angle(sweep));
    return true;
}

}  // namespace Kalvio::Math::detail
