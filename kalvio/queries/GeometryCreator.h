#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/ProjectionPlane.h"

namespace Kalvio::Math {

class Arc2D;
class Arc3D;
class Circle2D;
class IGeometry;
class Point2D;
class Point3D;

/// Static functions that build geometries from others.
class KALVIO_MATH_API GeometryCreator {
public:
    /// The two coordinates of the plane; any value but YZ and XZ counts as XY.
    [[nodiscard]] static Point2D Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane);

    /// The circle through three points. Where only the first and the last coincide, exactly, it is the one with the way
    /// to the second as its diameter.
    /// @param tolerance  three points of which the middle one is at most this far from the line of the outer two are
    ///                   collinear
    /// @return false, `circle` untouched, for collinear points
    [[nodiscard]] static bool CircleFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3,
                                                Circle2D& circle, double tolerance);
    /// The arc from p1 by p2 to p3; the full circle where p3 equals p1. False, `arc` untouched, as for the circle.
    [[nodiscard]] static bool ArcFrom3Points(const Point2D& p1, const Point2D& p2, const Point2D& p3, Arc2D& arc,
                                             double tolerance);
    /// The plan projection of an arc in a horizontal plane.
    /// @return false, `plan` untouched, when the tilt of the plane moves the circle in plan by more than 1e-4
    [[nodiscard]] static bool Arc2DFrom3D(const Arc3D& arc, Arc2D& plan);
    /// First followed by second: a `LineString2D` of three points for two lines, else a `Polyline2D` of clones (the
    /// elements of polylines are taken one by one). That the second starts where the first ends is for the caller to
    /// see to.
    /// @return a new geometry owned by the caller; null when one of the two is no plan element
    [[nodiscard]] static IGeometry* Append(const IGeometry& first, const IGeometry& second);
};

}  // namespace Kalvio::Math
