#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Line2D;
class Point2D;
class Point2DM;
class Point3D;
class PointND;

/// Static functions that measure between pairs of geometries.
///
/// Sign rule: a point to the right of a line's direction of travel has a positive distance, to the left a negative one.
///
///     a -------> b
///          |  result > 0
///          p
class KALVIO_MATH_API Distance {
public:
    static double PointToPoint(const Point2D& a, const Point2D& b);
    /// Positions only; the measures are ignored.
    static double PointToPoint(const Point2DM& a, const Point2DM& b);
    static double PointToPoint(const Point3D& a, const Point3D& b);
    /// 0 on different dimensions.
    static double PointToPoint(const PointND& a, const PointND& b);

    /// Signed distance to the infinite line; the plain distance to its start for a length of at most 1e-10.
    static double PointToLine(const Point2D& point, const Line2D& line);
    static double PointToLine(const Point2D& point, const Point2D& a, const Point2D& b);
};

}  // namespace Kalvio::Math
