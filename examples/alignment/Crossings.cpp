#include "alignment/Crossings.h"

#include "kalvio/core/Tolerances.h"

#include <cmath>
#include <numbers>

namespace Kalvio::Examples {

using namespace Math;

std::vector<Crossing> FindCrossings(const Alignment& first, const Alignment& other) {
    const Math::Alignment here = first.InSpace();
    const Math::Alignment there = other.InSpace();
    std::vector<Crossing> crossings;
    for (const Math::Alignment::Crossing& found : here.GetCrossings(there, Tolerances(1e-4, 1e-10))) {
        Vec2D from;
        Vec2D to;
        double curvature = 0.0;
        (void)here.GetDirection(found.station, from, curvature);
        (void)there.GetDirection(found.otherStation, to, curvature);
        const double turn = std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
        crossings.push_back({found.point, first.GetStartStation() + found.station,
                             other.GetStartStation() + found.otherStation, turn * 180.0 / std::numbers::pi,
                             found.clearance, found.hasClearance});
    }
    return crossings;
}

}  // namespace Kalvio::Examples
