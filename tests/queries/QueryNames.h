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

}  // namespace Kalvio::Math
