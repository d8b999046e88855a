#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// A rough chain of `count` segments that winds along the x axis: waves of the given number per chain, and noise. Two
/// of different numbers of waves cross some hundred times. Plain numbers, so that peers measure the same chains.
inline std::vector<std::pair<double, double>> RoughChain(std::int64_t count, double waves) {
    std::mt19937_64 random(static_cast<std::uint64_t>(waves));
    std::uniform_real_distribution<double> noise(-1.0, 1.0);
    std::vector<std::pair<double, double>> chain;
    chain.reserve(static_cast<std::size_t>(count) + 1);
    for (std::int64_t i = 0; i <= count; ++i) {
        const double angle = waves * 6.283185307179586 * static_cast<double>(i) / static_cast<double>(count);
        chain.emplace_back(static_cast<double>(i) + noise(random), 500.0 * std::sin(angle) + noise(random));
    }
    return chain;
}

}  // namespace Kalvio::Math
