#pragma once

#include <cmath>
#include <complex>

namespace Kalvio::Math::detail {

/// b^2 - 4 a c without cancellation (Kahan's difference of products).
inline double Discriminant(double a, double b, double c) {
    const double product = 4.0 * a * c;
    return std::fma(b, b, -product) + std::fma(-4.0 * a, c, product);
}

/// The two roots of a x^2 + b x + c for finite coefficients with a not 0; a complex pair comes with the positive
/// imaginary part first. Neither root suffers from cancellation, and nothing overflows but a root itself.
inline void SolveQuadratic(double a, double b, double c, std::complex<double>& x1, std::complex<double>& x2) {
    if (c == 0.0) {
        x1 = -b / a;
        x2 = 0.0;
        return;
    }
    // x = 2^scale y makes the outer coefficients p and r about equal, near 1.
    const int exponent = std::ilogb(c);
    const int scale = (exponent - std::ilogb(a)) / 2;
    const double p = std::ldexp(a, 2 * scale - exponent);
    const double q = std::ldexp(b, scale - exponent);
    const double r = std::ldexp(c, -exponent);
    constexpr double farApart = 0x1p60;  // from here on the roots are -b/a and -c/b to the last digit
    if (std::abs(q) > farApart) {
        x1 = -b / a;
        x2 = -c / b;
        return;
    }
    const double discriminant = Discriminant(p, q, r);
    if (discriminant < 0.0) {
        const double imaginary = std::ldexp(std::sqrt(-discriminant) / (2.0 * std::abs(p)), scale);
        x1 = {std::ldexp(-q / (2.0 * p), scale), imaginary};
        x2 = std::conj(x1);
        return;
    }
    const double larger = -0.5 * (q + std::copysign(std::sqrt(discriminant), q));
    x1 = std::ldexp(larger / p, scale);
    x2 = std::ldexp(r / larger, scale);
}

}  // namespace Kalvio::Math::detail
