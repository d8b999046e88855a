#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/ProjectionPlane.h"

namespace Kalvio::Math {

class Point2D;
class Point3D;

/// Static functions that build geometries from others.
class KALVIO_MATH_API GeometryCreator {
public:
    /// The two coordinates of the plane; any value but YZ and XZ counts as XY.
    static Point2D Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane);
};

}  // namespace Kalvio::Math
