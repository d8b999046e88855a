#pragma once

#include "kalvio/SpatialIndexes/detail/FlatBox.h"

#include <cmath>

namespace Kalvio::Math::SpatialIndexes::detail {

/// The second of the two where one is NaN.
inline double Greater(double a, double b) { return a > b ? a : b; }

/// Box in plan as four numbers: an item's, or the square of a node of a quadtree.
struct PlanBox {
    double minX = 0.0;
    double minY = 0.0;
    double maxX = 0.0;
    double maxY = 0.0;

    PlanBox() = default;
    PlanBox(double lowX, double lowY, double highX, double highY) : minX(lowX), minY(lowY), maxX(highX), maxY(highY) {}
    bool operator==(const PlanBox&) const = default;
    /// The first two axes of a box that has them.
    explicit PlanBox(const FlatBox& box) : minX(box.Low(0)), minY(box.Low(1)), maxX(box.High(0)), maxY(box.High(1)) {}

    FlatBox GetFlatBox() const {
        FlatBox box(2);
        box.Set(0, minX, maxX);
        box.Set(1, minY, maxY);
        return box;
    }
    /// Finite bounds in order.
    bool IsProper() const {
        return std::isfinite(minX) && std::isfinite(maxX) && std::isfinite(minY) && std::isfinite(maxY) &&
               !(minX > maxX || minY > maxY);
    }
    bool HasExtent() const { return minX != maxX && minY != maxY; }
    bool Contains(const PlanBox& other) const {
        return minX <= other.minX && other.maxX <= maxX && minY <= other.minY && other.maxY <= maxY;
    }
    /// From a box without NaN, in the arithmetic of `BoxPairs::SquaredDistances`.
    double SquaredDistance(const FlatBox& from) const {
        const auto squaredGap = [&from](unsigned int axis, double low, double high) {
            const double gap = Greater(low - from.High(axis), Greater(from.Low(axis) - high, 0.0));
            return gap * gap;
        };
        return squaredGap(0, minX, maxX) + squaredGap(1, minY, maxY);
    }
    bool Intersects(const PlanBox& other) const {
        return other.minX <= maxX && minX <= other.maxX && other.minY <= maxY && minY <= other.maxY;
    }
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
