#pragma once

#include "kalvio/Print.h"  // GoogleTest prints values by it
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/Vec3D.h"

#include <gmock/gmock.h>

#include <tuple>

namespace Kalvio::Math {

inline Vec3D CoordinatesOf(const Point2D& p) { return {p.GetX(), p.GetY(), 0.0}; }
inline Vec3D CoordinatesOf(const Point3D& p) { return {p.GetX(), p.GetY(), p.GetZ()}; }
inline Vec3D CoordinatesOf(const Vec2D& v) { return {v, 0.0}; }
inline Vec3D CoordinatesOf(const Vec3D& v) { return v; }

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
