#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// A simple ring like a shore, counter-clockwise around (500, 500) and inside [0, 1000] x [0, 1000]: waves of all
/// lengths on a circle. Plain numbers, so that peers measure the same ring.
inline std::vector<std::pair<double, double>> ShoreRing(std::int64_t count) {
    std::vector<std::pair<double, double>> ring;
    ring.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
        const double angle = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(count);
        double radius = 300.0;
        for (double wave = 5.0; wave < 0.2 * static_cast<double>(count); wave *= 3.0) {
            radius += 350.0 / wave * std::sin(wave * angle + wave);
        }
        ring.emplace_back(500.0 + radius * std::cos(angle), 500.0 + radius * std::sin(angle));
    }
    return ring;
}

/// Points spread evenly over the extent of `ShoreRing`.
inline std::vector<std::pair<double, double>> SpreadPoints(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> coordinate(0.0, 1000.0);
    std::vector<std::pair<double, double>> points;
    for (std::int64_t i = 0; i < count; ++i) points.emplace_back(coordinate(random), coordinate(random));
    return points;
}

/// Eight small shores that lie inside `ShoreRing` and apart from each other: holes of count / 16 points each.
inline std::vector<std::vector<std::pair<double, double>>> Islands(std::int64_t count) {
    std::vector<std::vector<std::pair<double, double>>> islands(8, ShoreRing(count / 16));
    for (std::size_t i = 0; i < islands.size(); ++i) {
        const double angle = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(islands.size());
        for (auto& [x, y] : islands[i]) {
            x = 500.0 + 120.0 * std::cos(angle) + 0.08 * (x - 500.0);
            y = 500.0 + 120.0 * std::sin(angle) + 0.08 * (y - 500.0);
        }
    }
    return islands;
}

/// Points at most 0.5 in x and in y from points of `ShoreRing(vertices)`.
inline std::vector<std::pair<double, double>> BesidePoints(std::int64_t vertices, std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> offset(-0.5, 0.5);
    const std::vector<std::pair<double, double>> ring = ShoreRing(vertices);
    std::vector<std::pair<double, double>> points;
    for (std::int64_t i = 0; i < count; ++i) {
        const auto& [x, y] = ring[random() % ring.size()];
        points.emplace_back(x + offset(random), y + offset(random));
    }
    return points;
}

}  // namespace Kalvio::Math
