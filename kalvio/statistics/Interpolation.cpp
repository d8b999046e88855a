#include "kalvio/statistics/Interpolation.h"

#include "kalvio/core/detail/PointOnLine.h"

namespace Kalvio::Math {

double Interpolation::ZCoordinateBy2DProjection(const Point2D& p, const Point3D& start, const Point3D& end) {
    return detail::HeightOnSegment(p, start, end);
}

}  // namespace Kalvio::Math
