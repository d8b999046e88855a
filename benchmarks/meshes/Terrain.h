#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Benchmarks {

/// The work measured: the triangles of a grid over hilly ground at survey coordinates, each with three vertices of its
/// own, off the grid by some hundredths of the tolerance, in rows or in any order.
struct Soup {
    static constexpr double tolerance = 1e-3;

    struct Vertex {
        double x, y, z;
    };

    Soup(std::size_t positions, bool isShuffled) {
        std::mt19937_64 random(positions);
        std::uniform_real_distribution<double> noise(-0.02 * tolerance, 0.02 * tolerance);
        const auto n = static_cast<std::size_t>(std::sqrt(static_cast<double>(positions) / 6.0));
        std::vector<std::pair<std::size_t, std::size_t>> quads;
        for (std::size_t i = 0; i < n * n; ++i) quads.emplace_back(i % n, i / n);
        for (std::size_t i = n * n; isShuffled && i > 1; --i) std::swap(quads[i - 1], quads[random() % i]);
        for (const auto& [column, row] : quads) {
            for (const auto& [dx, dy] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}}) {
                const double x = static_cast<double>(column) + dx;
                const double y = static_cast<double>(row) + dy;
                const double z = 100.0 + 5.0 * std::sin(0.05 * x) * std::cos(0.03 * y);
                vertices.push_back({385000.0 + x + noise(random), 6672000.0 + y + noise(random), z + noise(random)});
            }
        }
    }

    std::vector<Vertex> vertices;
};

}  // namespace Kalvio::Benchmarks
