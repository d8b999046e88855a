#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/WindingValue.h"

#include <vector>

namespace Kalvio::Math {

class Point3D;

/// Static operations on the arrays of triangle sets, as `IndexedTriangleSet3D` holds them and by its rules.
class KALVIO_MATH_API IndexedTriangleSet3DCleanUp {
public:
    /// The winding of a triangle in plan, by the z component of its normal at unit length: counter-clockwise above
    /// 1e-11, clockwise below -1e-11, else `Vertical`, also for a triangle without area and where there is none.
    static WindingValue Get2DWindingOrVertical(const std::vector<Point3D>& vertices,
                                               const std::vector<unsigned int>& indexes, unsigned int triangle);
};

}  // namespace Kalvio::Math
