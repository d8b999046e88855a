#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/ProjectionPlane.h"

namespace Kalvio::Math {

class Arc2D;
class Circle2D;
class Point2D;
class Point3D;

/// Static functions that build geometries from others.
class KALVIO_MATH_API GeometryCreator {
public:
    /// The two coordinates of the plane; any value but YZ and XZ counts as XY.
    static Point2D Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane);

    /// The circle through three points. Where only the first and the last coincide, exactly, it is the one with the way
    /// to the second as its diameter.
    /// @param tolerance  three points of which the middle one is at most this far from the line of the outer two are
    ///                   collinear
    /// @return false, `circle` untouched, for collinear points
    static bool CircleFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Circle2D& circle,
                                  double tolerance);
    /// The arc from p1 by p2 to p3; the full circle where p3 equals p1. False, `arc` untouched, as for the circle.
    static bool ArcFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Arc2D& arc, double tolerance);
};

}  // namespace Kalvio::Math
