#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Line2D;
class Line3D;
class Point2D;
class Point3D;

/// Static functions that find nearest points and perpendicular feet on curves and chains.
class KALVIO_MATH_API Projection {
public:
    /// Foot of the perpendicular on the infinite line; the start for a line of zero length.
    static Point2D NormalPointOnLine(const Point2D& point, const Line2D& line);
    static Point3D NormalPointOnLine(const Point3D& point, const Line3D& line);
};

}  // namespace Kalvio::Math
