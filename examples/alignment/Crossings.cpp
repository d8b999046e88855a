#include "alignment/Crossings.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/queries/Intersection.h"

#include <cmath>
#include <numbers>

namespace Kalvio::Examples {

using namespace Math;

std::vector<Crossing> FindCrossings(const Alignment& first, const Alignment& other) {
    std::vector<Polyline2D::PolylinePoint> onFirst;
    std::vector<Polyline2D::PolylinePoint> onOther;
    Intersection::PolylinePolyline(first.plan, other.plan, onFirst, onOther, Tolerances(1e-4, 1e-10));
    std::vector<Crossing> crossings;
    for (std::size_t i = 0; i < onFirst.size(); ++i) {
        const Vec2D& from = onFirst[i].tangent;
        const Vec2D& to = onOther[i].tangent;
        const double turn = std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
        crossings.push_back({onFirst[i].point, first.GetStartStation() + onFirst[i].station,
                             other.GetStartStation() + onOther[i].station, turn * 180.0 / std::numbers::pi});
    }
    return crossings;
}

}  // namespace Kalvio::Examples
