#pragma once

#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Triangle3D.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

/// Heights over a plane, from a point near those that are asked for: survey coordinates lose nothing among each other.
struct PlaneHeights {
    PlaneHeights(const Plane3D& plane, const Point3D& local, double userTolerance)
        : normal(plane.GetNormal()), origin(local), tolerance(std::abs(userTolerance)) {
        double a, b, c, d;
        plane.GetParameters(a, b, c, d);
        originHeight = a * local.GetX() + b * local.GetY() + c * local.GetZ() + d;
    }
    PlaneHeights(const Point3D& onPlane, const Vec3D& unitNormal, double userTolerance)
        : normal(unitNormal), origin(onPlane), tolerance(std::abs(userTolerance)) {}

    bool IsDegenerate() const { return normal.NormSquared() == 0.0; }
    double HeightOf(const Point3D& p) const { return originHeight + normal.DotProduct(p - origin); }
    /// 1 above the plane, -1 below; 0 for points at most the tolerance away, which count as on it.
    int SideOf(double height) const { return height > tolerance ? 1 : height < -tolerance ? -1 : 0; }

    Vec3D normal;
    Point3D origin;
    double originHeight = 0.0;
    double tolerance;
};

/// A length below which the coordinates of a triangle mean nothing: the epsilon, or their rounding if that is more.
inline double NoiseOf(const Triangle3D& triangle, double epsilon) {
    double largest = 0.0;
    for (int i = 0; i < 3; ++i) {
        for (int axis = 0; axis < 3; ++axis) largest = std::max(largest, std::abs(triangle[i][axis]));
    }
    return std::max(epsilon, 4.0 * std::numeric_limits<double>::epsilon() * largest);
}

/// The unit normal; the zero vector when the least altitude of the triangle is noise.
inline Vec3D UnitNormalOf(const Triangle3D& triangle, double epsilon) {
    const Vec3D ab = triangle.GetPointB() - triangle.GetPointA();
    const Vec3D ac = triangle.GetPointC() - triangle.GetPointA();
    const double longest = std::max({ab.Length(), ac.Length(), (ac - ab).Length()});
    const Vec3D product = ab.CrossProduct(ac);
    return product.Length() > NoiseOf(triangle, epsilon) * longest ? product / product.Length() : Vec3D();
}

}  // namespace Kalvio::Math::detail
