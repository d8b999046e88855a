#include "kalvio/alignments/Cant.h"

#include "kalvio/curves/detail/TransitionLaw.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math {

bool Cant::Set(std::span<const Knot> added, Pivot edge, double armLength) {
    if (!std::isfinite(armLength) || armLength < 0.0) return false;
    for (std::size_t i = 0; i < added.size(); ++i) {
        if (!std::isfinite(added[i].station) || !std::isfinite(added[i].left + added[i].right)) return false;
        if (i > 0 && !(added[i].station > added[i - 1].station)) return false;
    }
    knots.assign(added.begin(), added.end());
    pivot = edge;
    arm = armLength;
    return true;
}

Cant::Place Cant::GetPlace(double station) const {
    Place place;
    if (knots.empty()) return place;
    const auto next = std::upper_bound(knots.begin(), knots.end(), station,
                                       [](double value, const Knot& knot) { return value < knot.station; });
    if (next == knots.begin() || next == knots.end()) {
        const Knot& knot = next == knots.begin() ? knots.front() : knots.back();
        place = {knot.left, knot.right, 0.0};
    } else {
        const Knot& from = *(next - 1);
        const double f = detail::TransitionShape(from.law, (station - from.station) / (next->station - from.station));
        place = {from.left + (next->left - from.left) * f, from.right + (next->right - from.right) * f, 0.0};
    }
    // What turns about an edge lifts the axis by what that edge would sink.
    const double aboutLeft = place.left * arm;
    const double aboutRight = -place.right * arm;
    const bool isLeftInner = place.left + place.right >= 0.0;
    switch (pivot) {
        case Pivot::Axis:
            break;
        case Pivot::Left:
            place.lift = aboutLeft;
            break;
        case Pivot::Right:
            place.lift = aboutRight;
            break;
        case Pivot::Inner:
            place.lift = isLeftInner ? aboutLeft : aboutRight;
            break;
        case Pivot::Outer:
            place.lift = isLeftInner ? aboutRight : aboutLeft;
            break;
    }
    return place;
}

}  // namespace Kalvio::Math
