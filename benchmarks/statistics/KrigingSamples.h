#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace Kalvio::Benchmarks {

/// The work measured: places of a grid of 100 x 100 over a square of 1000 m, kriged from scattered samples of a field,
/// under the exponential variogram of this sill and range.
constexpr int gridSide = 100;
constexpr double gridStep = 10.0;
constexpr double sill = 500.0;
constexpr double range = 300.0;

struct Sample {
    double x, y, z;
};

inline std::vector<Sample> ScatteredSamples(std::size_t n) {
    std::mt19937_64 random(n);
    std::uniform_real_distribution<double> place(0.0, gridSide * gridStep);
    std::uniform_real_distribution<double> height(90.0, 110.0);
    std::vector<Sample> samples(n);
    for (Sample& sample : samples) sample = {place(random), place(random), height(random)};
    return samples;
}

}  // namespace Kalvio::Benchmarks
