#include "kalvio/core/Numbers.h"

#include <algorithm>
#include <limits>

namespace Kalvio::Math {

namespace {

std::int64_t Saturated(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (value >= limit) return std::numeric_limits<std::int64_t>::max();
    if (value <= -limit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

// n (n - 1) ... (n - factors + 1) / factors!, each partial product a binomial coefficient and so an integer.
double BinomialProduct(std::int64_t n, std::int64_t factors) {
    double result = 1.0;
    for (std::int64_t i = 1; i <= factors && std::isfinite(result); ++i) {
        result = result * static_cast<double>(n - i + 1) / static_cast<double>(i);
    }
    return result;
}

}  // namespace

unsigned int Numbers::GetNumberOfDigits(double x) {
    if (!(x > 0.0)) return 1;
    const double digits = std::min(std::log10(x), static_cast<double>(std::numeric_limits<std::int32_t>::max()));
    return static_cast<unsigned int>(static_cast<std::int32_t>(digits)) + 1U;
}

unsigned int Numbers::GetMaxNumberOfDigits(double a, double b, double c) {
    return std::max({GetNumberOfDigits(a), GetNumberOfDigits(b), GetNumberOfDigits(c)});
}

std::int64_t Numbers::Combination(int n, int k) {
    if (k < 0) return 0;
    const std::int64_t rest = static_cast<std::int64_t>(n) - k;
    // n over k is n over n - k: the shorter product stays below the larger numbers of the middle of the row.
    return Saturated(BinomialProduct(n, std::min<std::int64_t>(rest, k)));
}

std::int64_t Numbers::Permutations(int n, int k) {
    if (k < 0 || (n >= 0 && k > n)) return 0;  // beyond n the product holds a zero, behind what may overflow
    double result = 1.0;
    for (std::int64_t i = static_cast<std::int64_t>(n) - k + 1; i <= n && std::isfinite(result); ++i) {
        result *= static_cast<double>(i);
    }
    return Saturated(result);
}

}  // namespace Kalvio::Math
