#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

/// The plan tests against lines on which every class relies, defined here once. `Intersection` and `Distance` offer
/// them to callers.
namespace Kalvio::Math::detail {

/// Twice the signed area of the triangle a, b, c: positive when the turn a -> b -> c is counter-clockwise.
template <class PointType>
double DoubledTurn(const PointType& a, const PointType& b, const PointType& c) {
    return (b.GetX() - a.GetX()) * (c.GetY() - a.GetY()) - (c.GetX() - a.GetX()) * (b.GetY() - a.GetY());
}

/// True when the turn a -> b -> c is counter-clockwise by more than 4e-10 of doubled signed area.
template <class PointType>
bool ArePointsCCW(const PointType& a, const PointType& b, const PointType& c) {
    return (b.GetX() - a.GetX()) * (c.GetY() - a.GetY()) >
           (c.GetX() - a.GetX()) * (b.GetY() - a.GetY()) + windingMargin;
}

/// Signed distance of p from the infinite line a -> b, positive to the right of the direction of travel. A line of
/// length at most 1e-10 measures the plain distance from a.
///
///     a -------> b
///          |  result > 0
///          p
template <class Real>
Real SignedDistanceToLine(Real px, Real py, Real ax, Real ay, Real bx, Real by) {
    const Real dx = bx - ax;
    const Real dy = by - ay;
    const Real length = std::sqrt(dx * dx + dy * dy);
    if (length <= numericalZero) return std::sqrt((ax - px) * (ax - px) + (ay - py) * (ay - py));
    return ((ay - py) * dx - (ax - px) * dy) / length;
}
inline double SignedDistanceToLine(const Point2D& p, const Point2D& a, const Point2D& b) {
    return SignedDistanceToLine(p.GetX(), p.GetY(), a.GetX(), a.GetY(), b.GetX(), b.GetY());
}

/// True when p lies on the infinite line a -> b: |cross| / length <= |tolerance|, inclusive. Never for a length that is
/// zero or not finite.
inline bool IsPointOnLine(const Point2D& p, const Point2D& a, const Point2D& b, double tolerance) {
    const double dx = b.GetX() - a.GetX();
    const double dy = b.GetY() - a.GetY();
    const double cross = (p.GetX() - a.GetX()) * dy - (p.GetY() - a.GetY()) * dx;
    const double length = std::sqrt(dx * dx + dy * dy);
    return length <= largestDouble && std::abs(cross) / length <= std::abs(tolerance);
}

/// True when p lies on the segment a -> b: inside its box widened by |tolerance| and on its line, both inclusive. A
/// segment of zero length holds a point within |tolerance| of it in both coordinates.
inline bool IsPointOnSegment(const Point2D& p, const Point2D& a, const Point2D& b, double tolerance) {
    const double t = std::abs(tolerance);
    const auto beyond = [t](double value, double first, double second) {
        return (value - first < -t && value - second < -t) || (value - first > t && value - second > t);
    };
    if (beyond(p.GetX(), a.GetX(), b.GetX()) || beyond(p.GetY(), a.GetY(), b.GetY())) return false;
    if (IsPointOnLine(p, a, b, t)) return true;
    return a.GetX() == b.GetX() && a.GetY() == b.GetY() && std::abs(p.GetX() - a.GetX()) <= t &&
           std::abs(p.GetY() - a.GetY()) <= t;
}

/// Parameter in [0, 1] of the point of a -> b nearest to p; 0 when the squared length is below `zeroSquared`.
inline double NearestParameter(const Point2D& p, const Point2D& a, const Point2D& b, double zeroSquared) {
    const Vec2D d = b - a;
    const double squared = d.NormSquared();
    if (squared < zeroSquared || squared == 0.0) return 0.0;
    const double t = (p - a).DotProduct(d) / squared;
    return t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
}

/// Height of the segment a -> b at the foot of p on its plan projection, linear along the plan length; beyond an end
/// the height of that end. The height of a for a segment without plan length.
inline double HeightOnSegment(const Point2D& p, const Point3D& a, const Point3D& b) {
    const double t = NearestParameter(p, a.GetPoint2D(), b.GetPoint2D(), 0.0);
    return t == 1.0 ? b.GetZ() : a.GetZ() + (b.GetZ() - a.GetZ()) * t;
}

}  // namespace Kalvio::Math::detail
