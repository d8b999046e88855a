#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>
#include <cstdint>

namespace Kalvio::Math {

/// Number utilities. All comparisons are absolute, never relative to the magnitudes.
class KALVIO_MATH_API Numbers {
public:
    /// With t = |tolerance|, `Compare(a, op, b, tolerance)` is true when:
    enum class CompareOperator : std::uint32_t {
        Equal = 0,           ///< |a - b| <= t: inclusive, unlike Geometry::AreEqual
        LessOrEqual = 1,     ///< a - b <= t
        GreaterOrEqual = 2,  ///< b - a <= t
        Less = 3,            ///< a - b < -t
        Greater = 4,         ///< a - b > t
    };

    /// Any other operator gives false, and so does every comparison with NaN.
    static bool Compare(double a, CompareOperator op, double b, double tolerance) {
        const double t = std::abs(tolerance);
        switch (op) {
            case CompareOperator::Equal:
                return std::abs(a - b) <= t;
            case CompareOperator::LessOrEqual:
                return a - b <= t;
            case CompareOperator::GreaterOrEqual:
                return b - a <= t;
            case CompareOperator::Less:
                return a - b < -t;
            case CompareOperator::Greater:
                return a - b > t;
        }
        return false;
    }

    /// -1 for x < 0, otherwise +1 (zero, negative zero and NaN included).
    static double Sign(double x) { return x < 0.0 ? -1.0 : 1.0; }
    static bool IsOdd(int n) { return (n & 1) != 0; }
    static bool IsEven(int n) { return !IsOdd(n); }

    /// Digits before the decimal point: trunc(log10 x) + 1 in 32-bit arithmetic, so 0.001 wraps to 4294967294; 1 for
    /// x <= 0 and NaN. Callers pass lengths of at least 1.
    static unsigned int GetNumberOfDigits(double x);
    static unsigned int GetMaxNumberOfDigits(double a, double b, double c);

    /// Binomial coefficient n over k, accumulated in double precision and truncated; 0 for k < 0, 1 for n <= k. Exact
    /// while coefficient times n stays below 2^53, saturated at the largest 64-bit value.
    static std::int64_t Combination(int n, int k);
    /// Ordered selections of k out of n: the product n (n - 1) ... (n - k + 1); 0 for k < 0 and for k > n >= 0, 1 for
    /// k = 0. Exact up to 2^53, saturated at the 64-bit limits.
    static std::int64_t Permutations(int n, int k);
};

/// Order of maps keyed by a curve parameter or station: keys at most 0.0001 apart are one key, the first stays.
struct compareDouble {
    constexpr bool operator()(double a, double b) const { return (b - detail::stationMerge) > a; }
};

}  // namespace Kalvio::Math
