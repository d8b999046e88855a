#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

/// Operations on coordinate lists that vectors and points of N dimensions share.
namespace Kalvio::Math::detail {

/// Strict per-coordinate comparison; false on different dimensions.
inline bool AreCoordinatesEqual(const std::vector<double>& a, const std::vector<double>& b, double tolerance) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!(std::abs(a[i] - b[i]) < tolerance)) return false;
    }
    return true;
}

/// a + factor b, or no coordinates at all on different dimensions.
inline std::vector<double> SumOfCoordinates(const std::vector<double>& a, double factor, const std::vector<double>& b) {
    if (a.size() != b.size()) return {};
    std::vector<double> sum(a);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += factor * b[i];
    return sum;
}

inline double SquaredNorm(const std::vector<double>& a) {
    double sum = 0.0;
    for (const double value : a) sum += value * value;
    return sum;
}

inline void Scale(std::vector<double>& a, double factor) {
    for (double& value : a) value *= factor;
}

/// Division by exactly 0 or NaN is a no-operation.
inline void Divide(std::vector<double>& a, double divisor) {
    if (!(divisor < 0.0 || divisor > 0.0)) return;
    for (double& value : a) value /= divisor;
}

}  // namespace Kalvio::Math::detail
