#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

/// The unit cubic parabola y = u^3 / 3: slope u^2, length S(u), curvature 2 u / (1 + u^4)^(3/2).
namespace Kalvio::Math::detail {

inline constexpr double culmination = 0.66874030497642202;  ///< 5^(-1/4): u at the largest curvature

/// S(u) = integral of sqrt(1 + u^4), by the binomial series; 24 terms suffice for |u| up to the culmination.
inline double ParabolaLength(double u) {
    constexpr double vanishing = 1e-17;
    const double fourth = u * u * u * u;
    double term = 1.0;
    double sum = 1.0;
    for (double n = 1.0; n < 24.0 && std::abs(term) > vanishing; ++n) {
        term *= fourth * (1.5 - n) / n;
        sum += term / (4.0 * n + 1.0);
    }
    return u * sum;
}

/// The inverse of S. u / s is a polynomial of s^4, interpolated in Chebyshev's nodes with 50 digits up to the
/// culmination: its error is 1e-18.
inline double AbscissaAtLength(double s) {
    constexpr double longest = 0.6818;  // a little beyond the culmination
    constexpr double c[] = {1.0,
                            -0.099999999999998398911,
                            0.063888888888405646787,
                            -0.059252136694489789157,
                            0.064937747780167525223,
                            -0.078281085890261211297,
                            0.10036653703491045115,
                            -0.13432016306804866474,
                            0.18509303176850304382,
                            -0.25759883063987626563,
                            0.34617102249367036505,
                            -0.40813364512448231591,
                            0.35549967115470569048,
                            -0.16217204755002571664};
    s = std::clamp(s, -longest, longest);
    const double q = s * s * s * s;
    const double square = q * q;
    double even = c[12];
    double odd = c[13];
    for (std::size_t i = 12; i >= 2; i -= 2) {
        even = even * square + c[i - 2];
        odd = odd * square + c[i - 1];
    }
    return s * (even + q * odd);
}

}  // namespace Kalvio::Math::detail
