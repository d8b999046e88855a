#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/Vec3D.h"

#include <gmock/gmock.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <ostream>
#include <tuple>

namespace Kalvio::Math {

inline Vec3D CoordinatesOf(const Point2D& p) { return {p.GetX(), p.GetY(), 0.0}; }
inline Vec3D CoordinatesOf(const Point3D& p) { return {p.GetX(), p.GetY(), p.GetZ()}; }
inline Vec3D CoordinatesOf(const Vec2D& v) { return {v, 0.0}; }
inline Vec3D CoordinatesOf(const Vec3D& v) { return v; }

// GoogleTest prints values with these, in all digits.
inline void PrintPair(double x, double y, std::ostream* out) {
    *out << std::setprecision(std::numeric_limits<double>::max_digits10) << '(' << x << ", " << y << ')';
}
inline void PrintTriple(const Vec3D& v, std::ostream* out) {
    *out << std::setprecision(std::numeric_limits<double>::max_digits10) << '(' << v.GetX() << ", " << v.GetY() << ", "
         << v.GetZ() << ')';
}
inline void PrintTo(const Point2D& p, std::ostream* out) { PrintPair(p.GetX(), p.GetY(), out); }
inline void PrintTo(const Vec2D& v, std::ostream* out) { PrintPair(v.GetX(), v.GetY(), out); }
inline void PrintTo(const Point3D& p, std::ostream* out) { PrintTriple(CoordinatesOf(p), out); }
inline void PrintTo(const Vec3D& v, std::ostream* out) { PrintTriple(v, out); }

/// `EXPECT_THAT(found, testing::Pointwise(AreNear(1e-9), expected))`, or `UnorderedPointwise`: points one for one.
MATCHER_P(AreNear, tolerance, "are within " + testing::PrintToString(tolerance) + " of each other") {
    return (CoordinatesOf(std::get<0>(arg)) - CoordinatesOf(std::get<1>(arg))).Length() <= tolerance;
}

/// `EXPECT_THAT(point, IsNear(Point2D(1.0, 2.0), 1e-9))`: the distance is at most the tolerance. Works for points and
/// vectors of two and three dimensions; NaN is near nothing.
MATCHER_P2(IsNear, expected, tolerance,
           "is within " + testing::PrintToString(tolerance) + " of " + testing::PrintToString(expected)) {
    const Vec3D difference = CoordinatesOf(arg) - CoordinatesOf(expected);
    *result_listener << "which is " << difference.Length() << " away, off by " << testing::PrintToString(difference);
    return difference.Length() <= tolerance;
}

}  // namespace Kalvio::Math
