#pragma once

#include "kalvio/Math.h"
#include "support/ElementChecks.h"
#include "support/RandomCurves.h"
#include "support/Rings.h"

/// What the tests of queries name in every row.
namespace Kalvio::Math {

using D = Distance;
using I = Intersection;
using J = Projection;
using R = IntersectionResult;
using P = Point2D;
using Q = Point3D;
using Points = std::vector<Point2D>;

/// Points one for one, in this order or in any.
inline void ExpectPoints(const Points& found, const Points& expected, double near = 1e-8) {
    EXPECT_THAT(found, testing::Pointwise(AreNear(near), expected));
}
inline void ExpectSamePoints(const Points& found, const Points& expected, double near) {
    EXPECT_THAT(found, testing::UnorderedPointwise(AreNear(near), expected));
}

}  // namespace Kalvio::Math
