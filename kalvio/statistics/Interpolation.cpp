#include "kalvio/statistics/Interpolation.h"

#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/PointOnLine.h"

namespace Kalvio::Math {

double Interpolation::ZCoordinateBy2DProjection(const Point2D& p, const Point3D& start, const Point3D& end) {
    const double t = detail::NearestParameter(p, start.GetPoint2D(), end.GetPoint2D(), 0.0);
    return t == 1.0 ? end.GetZ() : start.GetZ() + (end.GetZ() - start.GetZ()) * t;
}

}  // namespace Kalvio::Math
