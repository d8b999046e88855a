#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/Vec3D.h"

#include <cmath>

namespace Kalvio::Math::detail {

/// Right-handed axes in space: a plane curve is handled in the first two, its plane, by the plane classes.
struct PlaneFrame {
    Point3D origin;
    Vec3D first;   // unit, as the others
    Vec3D second;  // normal x first
    Vec3D normal;

    Point2D ToPlane(const Point3D& p) const {
        return {(p - origin).DotProduct(first), (p - origin).DotProduct(second)};
    }
    /// Signed distance from the plane.
    double HeightOf(const Point3D& p) const { return (p - origin).DotProduct(normal); }
    Point3D ToSpace(const Point2D& p) const { return origin + first * p.GetX() + second * p.GetY(); }
    Vec3D ToSpace(const Vec2D& v) const { return first * v.GetX() + second * v.GetY(); }
    /// What the circle of radius 1 in the plane reaches along a coordinate axis: in space, and the direction in the
    /// plane.
    double ReachAlong(int axis) const { return std::sqrt(first[axis] * first[axis] + second[axis] * second[axis]); }
    Vec2D DirectionAlong(int axis) const { return Vec2D(first[axis], second[axis]).Normalize(); }
};

/// The unit vector of a normal; the upward one for a normal that is zero or not finite.
inline Vec3D UnitNormal(const Vec3D& normal) {
    const double length = normal.Length();
    return length > 0.0 && std::isfinite(length) ? normal / length : Vec3D(0.0, 0.0, 1.0);
}

}  // namespace Kalvio::Math::detail
