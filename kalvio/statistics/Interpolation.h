#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Point2D;
class Point3D;

/// Static functions that interpolate values between places.
class KALVIO_MATH_API Interpolation {
public:
    /// Height of the segment from `start` to `end` at the foot of p on its plan projection, linear along the plan
    /// length; beyond an end the height of that end, so never outside the two. The height of `start` for a segment
    /// without plan length.
    static double ZCoordinateBy2DProjection(const Point2D& p, const Point3D& start, const Point3D& end);
};

}  // namespace Kalvio::Math
