#pragma once

#include <cmath>

/// Signs without any rounding (J. R. Shewchuk, Adaptive Precision Floating-Point Arithmetic, 1997). Most are decided by
/// the plain determinant and its error bound, the others by sums of products as expansions. Exact for coordinates whose
/// products neither overflow nor underflow.
namespace Kalvio::Math::detail {

/// A bare position in some plane.
struct PlanePoint {
    double x = 0.0;
    double y = 0.0;
};

/// What the error bound of the plain determinant leaves open, rounded once or twice.
double TurnByExpansion(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c);
double InCircleByExpansion(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d);

/// The plain determinant, and whether its sign is sure.
struct PlainTurn {
    PlainTurn(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
        : left((a.x - c.x) * (b.y - c.y)), right((a.y - c.y) * (b.x - c.x)), value(left - right) {}
    bool IsSure() const {
        constexpr double relativeError = 3.3306690738754716e-16;  // (3 + 16 e) e with e = 2^-53
        return std::abs(value) > relativeError * (std::abs(left) + std::abs(right));
    }

    double left;
    double right;
    double value;
};

/// The turn a -> b -> c: positive counter-clockwise, 0 on one line.
inline double ExactTurn(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c) {
    const PlainTurn plain(a, b, c);
    return plain.IsSure() ? plain.value : TurnByExpansion(a, b, c);
}

/// Positive for d inside the circle through a, b, c (counter-clockwise), 0 on it.
inline double ExactInCircle(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d) {
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
    if (std::abs(determinant) > relativeError * magnitude) return determinant;
    return InCircleByExpansion(a, b, c, d);
}

}  // namespace Kalvio::Math::detail
