#pragma once

#include "kalvio/Export.h"
#include "kalvio/curves/Polyline2D.h"

namespace Kalvio::Math {

class Line2D;
class Line3D;
class LineString2D;
class LineString3D;
class Point2D;
class Point3D;

/// Static functions that find nearest points and perpendicular feet on curves and chains.
class KALVIO_MATH_API Projection {
public:
    /// Foot of the perpendicular on the infinite line; the start for a line of zero length.
    static Point2D NormalPointOnLine(const Point2D& point, const Line2D& line);
    static Point3D NormalPointOnLine(const Point3D& point, const Line3D& line);
    /// Foot of the perpendicular, when it lies on the segment or beyond an end by at most the tolerance.
    /// @return false, `foot` untouched, when it does not, and for a line of zero length
    static bool NormalPointOnLineSegment(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance);
    /// The same, but `foot` always receives the foot on the infinite line.
    static bool NormalPointOnLineSegment2(const Point2D& point, const Line2D& line, Point2D& foot, double tolerance);
    /// The foot when it lies on the segment as above, else the nearer end.
    static Point2D NearestPointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance);
    static Point3D NearestPointOnLineSegment(const Point3D& point, const Line3D& line, double tolerance);

    /// The point of the string nearest to `point`, on the earliest of equally near segments; the origin for an empty
    /// string and where no distance is finite.
    static Point2D NearestPoint(const Point2D& point, const LineString2D& lineString, double tolerance);
    static Point3D NearestPoint(const Point3D& point, const LineString3D& lineString, double tolerance);
    /// The nearest point with the unit direction and the index of the segment that holds it, its distance from `point`
    /// and its station; all zero where there is none.
    static Polyline2D::PolylinePoint NearestPointOnLineString(const Point2D& point, const LineString2D& lineString,
                                                              double tolerance);
    /// @param segment  the segment that holds the nearest point; untouched where there is none
    static Point3D NearestPointOnLineString(const Point3D& point, const LineString3D& lineString, unsigned int& segment,
                                            double tolerance);
};

}  // namespace Kalvio::Math
