#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace Kalvio::Math::detail {

/// A bare position in some plane.
struct PlanePoint {
    double x = 0.0;
    double y = 0.0;
};

/// The sign of the turn a -> b -> c without any rounding: positive counter-clockwise, 0 on one line. Most turns are
/// decided by the plain determinant and its error bound; the others by the sum of its six products as an expansion (J.
/// R. Shewchuk, Adaptive Precision Floating-Point Arithmetic, 1997). Exact for coordinates whose products neither
/// overflow nor underflow.
inline double ExactTurn(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c) {
    constexpr double relativeError = 3.3306690738754716e-16;  // (3 + 16 e) e with e = 2^-53
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double determinant = left - right;
    if (std::abs(determinant) > relativeError * (std::abs(left) + std::abs(right))) return determinant;

    // Components in ascending magnitude that do not overlap: the last one that is not 0 has the sign of the sum.
    std::array<double, 12> sum{};
    std::size_t size = 0;
    const auto add = [&](double value) {
        for (std::size_t i = 0; i < size; ++i) {
            const double high = value + sum[i];
            const double part = high - value;
            sum[i] = (value - (high - part)) + (sum[i] - part);
            value = high;
        }
        sum[size++] = value;
    };
    const auto addProduct = [&](double u, double v) {
        const double product = u * v;
        add(std::fma(u, v, -product));
        add(product);
    };
    addProduct(a.x, b.y);
    addProduct(-a.x, c.y);
    addProduct(-c.x, b.y);
    addProduct(-a.y, b.x);
    addProduct(a.y, c.x);
    addProduct(c.y, b.x);
    while (size > 0 && sum[size - 1] == 0.0) --size;
    return size > 0 ? sum[size - 1] : 0.0;
}

/// True when d lies inside the circle through a, b, c (counter-clockwise) by more than the rounding of the test.
inline bool IsSurelyInCircle(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d) {
    constexpr double relativeError = 1.1102230246251577e-15;  // (10 + 96 e) e with e = 2^-53
    const PlanePoint u{a.x - d.x, a.y - d.y};
    const PlanePoint v{b.x - d.x, b.y - d.y};
    const PlanePoint w{c.x - d.x, c.y - d.y};
    const double uu = u.x * u.x + u.y * u.y;
    const double vv = v.x * v.x + v.y * v.y;
    const double ww = w.x * w.x + w.y * w.y;
    const double determinant =
        uu * (v.x * w.y - w.x * v.y) + vv * (w.x * u.y - u.x * w.y) + ww * (u.x * v.y - v.x * u.y);
    const double magnitude = uu * (std::abs(v.x * w.y) + std::abs(w.x * v.y)) +
                             vv * (std::abs(w.x * u.y) + std::abs(u.x * w.y)) +
                             ww * (std::abs(u.x * v.y) + std::abs(v.x * u.y));
    return determinant > relativeError * magnitude;
}

}  // namespace Kalvio::Math::detail
