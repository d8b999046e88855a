#include "kalvio/curves/IPolyline3DElement.h"

namespace Kalvio::Math {

double IPolyline3DElement::LengthFromStartPoint(const Point3D& point, double tolerance) const {
    double length = 0.0;
    (void)GetLengthFromStartPoint(point, length, tolerance);
    return length;
}

double IPolyline3DElement::LengthFromEndPoint(const Point3D& point, double tolerance) const {
    double length = 0.0;
    (void)GetLengthFromEndPoint(point, length, tolerance);
    return length;
}

Point3D IPolyline3DElement::GetNearestPoint(const Point3D& point, const Tolerances&) const { return point; }

}  // namespace Kalvio::Math
