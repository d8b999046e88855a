#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace Kalvio::Math::SpatialIndexes::detail {

/// NaN, the difference of infinite areas, ranks last: it would break an order.
inline double Ranked(double value) { return value == value ? value : std::numeric_limits<double>::infinity(); }

/// Volume that a box has in common with box i of a list; 0 when they are disjoint.
inline double OverlapArea(const FlatBox& box, const BoxPairs& boxes, unsigned int i) {
    double area = 1.0;
    for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) {
        const double low = (std::max)(box.Low(axis), boxes.Low(axis, i));
        const double high = (std::min)(box.High(axis), boxes.High(axis, i));
        if (!(low < high)) return 0.0;
        area *= high - low;
    }
    return area;
}

/// Growth of the overlap of box i with the others of the first n, at most 64, when it is widened to hold one more;
/// adding up ends when it passes the limit.
inline double OverlapGrowth(const BoxPairs& boxes, unsigned int n, unsigned int i, const FlatBox& added, double limit) {
    const FlatBox before = boxes.Get(i);
    FlatBox after = before;
    after.Cover(added);
    if (before.Contains(after)) return 0.0;
    double growth = 0.0;
    std::uint64_t others = boxes.Match(OverlapQuery{after}, 0, n) & ~(std::uint64_t{1} << i);
    for (; others != 0 && growth <= limit; others &= others - 1) {
        const auto other = static_cast<unsigned int>(std::countr_zero(others));
        growth += OverlapArea(after, boxes, other) - OverlapArea(before, boxes, other);
    }
    return Ranked(growth);
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
