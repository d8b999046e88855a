#pragma once

#include "kalvio/core/Point2D.h"

#include <cmath>
#include <random>
#include <vector>

namespace Kalvio::Math {

/// Four corners, counter-clockwise from (x, y) for positive sizes, not closed.
inline std::vector<Point2D> Rectangle(double x, double y, double width, double height) {
    return {Point2D(x, y), Point2D(x + width, y), Point2D(x + width, y + height), Point2D(x, y + height)};
}

/// Simple ring of `count` points at random distances of at most `radius` around the center, counter-clockwise.
template <class Random>
std::vector<Point2D> RandomStar(Random& random, const Point2D& center, double radius, int count) {
    std::uniform_real_distribution<double> distance(0.2 * radius, radius);
    std::vector<Point2D> ring;
    for (int i = 0; i < count; ++i) {
        const double angle = 6.283185307179586 * i / count;
        ring.push_back(center + Vec2D(std::cos(angle), std::sin(angle)) * distance(random));
    }
    return ring;
}

}  // namespace Kalvio::Math
