#include "kalvio/curves/IPolyline2DElement.h"

#include <memory>

namespace Kalvio::Math {

bool IPolyline2DElement::BreakAt(const std::vector<Point2D>& points, std::vector<IGeometry*>& out, bool modifyThis,
                                 const Tolerances& tolerances) {
    std::map<double, const Point2D> breaks;
    for (const Point2D& point : points) {
        if (IsPointOnGeometry(point, tolerances)) {
            breaks.emplace(LengthFromStartPoint(point, tolerances.UserTolerance()), point);
        }
    }
    return BreakAtPreSorted(breaks, 0.0, out, modifyThis, tolerances);
}

bool IPolyline2DElement::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                          std::vector<IGeometry*>& out, const Tolerances& tolerances) const {
    const std::unique_ptr<IGeometry> copy(Clone());
    return copy->BreakAtPreSorted(breaks, startStation, out, false, tolerances);
}

bool IPolyline2DElement::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                          std::vector<std::unique_ptr<IGeometry>>& out,
                                          const Tolerances& tolerances) const {
    const std::unique_ptr<IGeometry> copy(Clone());
    return copy->BreakAtPreSorted(breaks, startStation, out, false, tolerances);
}

double IPolyline2DElement::LengthFromStartPoint(const Point2D& point, double tolerance) const {
    double length = 0.0;
    (void)GetLengthFromStartPoint(point, length, tolerance);
    return length;
}

double IPolyline2DElement::LengthFromEndPoint(const Point2D& point, double tolerance) const {
    double length = 0.0;
    (void)GetLengthFromEndPoint(point, length, tolerance);
    return length;
}

Point2D IPolyline2DElement::GetNearestPoint(const Point2D& point, const Tolerances&) const { return point; }

const Point2D IPolyline2DElement::GetMiddlePoint() const { return (GetStart() + GetEnd()) * 0.5; }

}  // namespace Kalvio::Math
