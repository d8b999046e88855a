#pragma once

#include "kalvio/polygons/detail/ExactPredicates.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Kalvio::Math::detail {

/// The height of the plane of a triangle at a place in it, between those of its corners. Where the width of the
/// triangle is about the rounding of its area, that is computed without.
inline double HeightInTriangle(const std::array<double, 3>& a, const std::array<double, 3>& b,
                               const std::array<double, 3>& c, double x, double y) {
    const double ux = b[0] - a[0];
    const double uy = b[1] - a[1];
    const double vx = c[0] - a[0];
    const double vy = c[1] - a[1];
    const double px = x - a[0];
    const double py = y - a[1];
    double area = ux * vy - uy * vx;
    double ofB = px * vy - py * vx;
    double ofC = ux * py - uy * px;
    constexpr double leastRatio = 1e-7;
    if (!(std::abs(area) > leastRatio * (std::abs(ux * vy) + std::abs(uy * vx)))) {
        const auto turn = [](const std::array<double, 3>& from, double toX, double toY, double endX, double endY) {
            return TurnByExpansion({from[0], from[1]}, {toX, toY}, {endX, endY});
        };
        area = turn(a, b[0], b[1], c[0], c[1]);
        ofB = turn(a, x, y, c[0], c[1]);
        ofC = turn(a, b[0], b[1], x, y);
    }
    const double height = a[2] + (ofB * (b[2] - a[2]) + ofC * (c[2] - a[2])) / area;
    const double low = (std::min)({a[2], b[2], c[2]});
    return height >= low ? (std::min)(height, (std::max)({a[2], b[2], c[2]})) : low;
}

}  // namespace Kalvio::Math::detail
