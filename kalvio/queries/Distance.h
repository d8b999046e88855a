#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Line2D;
class Line3D;
class LineString2D;
class LineString3D;
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
    /// Distance to the nearest point of the segment (`Projection::NearestPointOnLineSegment`), negative to the left of
    /// the infinite line, also where an end is nearest. In space it has no sign.
    static double PointToLineSegment(const Line2D& line, const Point2D& point, double tolerance);
    static double PointToLineSegment(const Line3D& line, const Point3D& point, double tolerance);
    /// Distance to the nearest segment, without sign; the largest double for an empty string and where no distance is
    /// finite.
    static double PointToLineString(const LineString2D& lineString, const Point2D& point, double tolerance);
    static double PointToLineString(const LineString3D& lineString, const Point3D& point, double tolerance);
};

}  // namespace Kalvio::Math
