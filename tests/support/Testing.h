#pragma once

// What nearly every test needs: the frameworks, the standard headers of tables and random input, the usual constants.

#include "kalvio/core/Tolerances.h"
#include "support/Near.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <numbers>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace Kalvio::Math {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline const Tolerances kTolerances(1e-4, 1e-10);
/// Where geometry rows run: at the origin, and at survey coordinates, where careless sums lose their digits.
inline const Point2D surveyOrigins[] = {Point2D(0.0, 0.0), Point2D(385000.0, 6672000.0)};

/// Seeded by the test or by KALVIO_TEST_SEED; `random(low, high)` is one uniform number.
class RandomNumbers : public std::mt19937_64 {
public:
    explicit RandomNumbers(std::uint64_t seed) : std::mt19937_64(SeedFromEnvironment(seed)) {}
    using std::mt19937_64::operator();
    double operator()(double low, double high) { return std::uniform_real_distribution<double>(low, high)(*this); }
};

}  // namespace Kalvio::Math
