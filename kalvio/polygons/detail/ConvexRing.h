#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// A length below which differences of these coordinates mean nothing: 1e-10, or the rounding of the largest of them if
/// that is more.
template <class PointType>
double CoordinateNoise(const std::vector<PointType>& points) {
    double largest = 0.0;
    for (const PointType& p : points) {
        for (int axis = 0; axis < static_cast<int>(p.GetDimension()); ++axis) {
            largest = std::max(largest, std::abs(p[axis]));
        }
    }
    return std::max(numericalZero, 4.0 * std::numeric_limits<double>::epsilon() * largest);
}

/// True when all turns of the ring go the same way once round. Points that are nearer than the tolerance to a straight
/// side do not matter.
inline bool IsRingConvex(const std::vector<Point2D>& points, double tolerance) {
    if (points.size() < 3) return false;
    // The leftmost point, of those the lowest, is a corner: from there the sides are gathered until the ring turns.
    const auto start = std::min_element(points.begin(), points.end(), [](const Point2D& a, const Point2D& b) {
        return a.GetX() < b.GetX() || (a.GetX() == b.GetX() && a.GetY() < b.GetY());
    });
    const auto first = static_cast<std::size_t>(start - points.begin());
    Point2D sideStart = *start;
    Point2D sideEnd = *start;
    bool hasSide = false;
    double turned = 0.0;
    bool isLeft = false;
    for (std::size_t i = 1; i <= points.size() + 1; ++i) {
        // One point more than the ring has: the turn at the start counts too.
        const Point2D& next = points[(first + i) % points.size()];
        const Vec2D step = next - sideEnd;
        if (!(step.Length() > tolerance)) continue;
        if (hasSide) {
            const Vec2D side = sideEnd - sideStart;
            const double cross = side.PerpDotProduct(step);
            const double dot = side.DotProduct(step);
            const bool isStraight = std::abs(cross) <= tolerance * (next - sideStart).Length();
            if (isStraight && !(dot > 0.0)) return false;
            if (!isStraight) {
                if (turned == 0.0) isLeft = cross > 0.0;
                if (isLeft != (cross > 0.0)) return false;
                turned += std::atan2(std::abs(cross), dot);
                sideStart = sideEnd;
            }
        }
        hasSide = true;
        sideEnd = next;
    }
    return turned > pi && turned < 3.0 * pi;
}

}  // namespace Kalvio::Math::detail
