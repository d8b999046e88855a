#include "kalvio/curves/CubicFunction.h"

#include "kalvio/curves/detail/Quadratic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

constexpr int mostNewtonSteps = 60;
constexpr double rounding = 2.0 * std::numeric_limits<double>::epsilon();  // of a value, relative to its terms

int ExponentOf(double x) { return x == 0.0 ? -std::numeric_limits<int>::max() / 8 : std::ilogb(x); }

// Real roots ascending, then the complex ones.
bool ComesBefore(const std::complex<double>& x1, const std::complex<double>& x2) {
    if ((x1.imag() == 0.0) != (x2.imag() == 0.0)) return x1.imag() == 0.0;
    return x1.imag() == 0.0 ? x1.real() < x2.real() : x1.imag() > x2.imag();
}

// Both roots of a x^2 + b x + c; one real double root where the discriminant vanishes against its terms.
void SolveQuadraticWithin(double epsilon, double a, double b, double c, std::complex<double>& x1,
                          std::complex<double>& x2) {
    detail::SolveQuadratic(a, b, c, x1, x2);
    if (std::norm(x1 - x2) <= epsilon * std::norm(x1 + x2)) x1 = x2 = 0.5 * (x1 + x2).real();
}

}  // namespace

std::atomic<double> CubicFunction::s_Epsilon{1e-12};

void CubicFunction::SetEpsilon(double value) {
    if (value >= 0.0) s_Epsilon.store(value, std::memory_order_relaxed);
}

std::complex<double> CubicFunction::GetFactor1() { return 1.0; }
std::complex<double> CubicFunction::GetFactor2() { return {-0.5, 0.8660254037844386}; }
std::complex<double> CubicFunction::GetFactor3() { return {-0.5, -0.8660254037844386}; }

// Cardano's closed form finds the root farthest from the inflection point, which is real and simple (or triple).
// Newton's method sharpens it; dividing by it leaves a quadratic, so that no root depends on the cancellation in the
// depressed form (after W. Kahan, "To solve a real cubic equation", 1986).
int CubicFunction::GetCubicRoots(std::complex<double> (&roots)[3]) const {
    const double epsilon = GetEpsilon();
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c) || !std::isfinite(d)) return 0;
    if (std::abs(a) < epsilon || a == 0.0) {
        if (std::abs(b) < epsilon || b == 0.0) {
            if (std::abs(c) < epsilon || c == 0.0) return 0;
            roots[0] = -d / c;
            return 1;
        }
        SolveQuadraticWithin(epsilon, b, c, d, roots[0], roots[1]);
        std::sort(roots, roots + 2, ComesBefore);
        return 2;
    }

    // x = 2^scale y makes the cubic monic with its other coefficients at most about 1: y^3 + p2 y^2 + p1 y + p0.
    const int exponent = std::ilogb(a);
    const int scale =
        std::max({ExponentOf(b) - exponent, (ExponentOf(c) - exponent) / 2, (ExponentOf(d) - exponent) / 3, -2000});
    const double mantissa = std::ldexp(a, -exponent);
    const double p2 = std::ldexp(b / mantissa, -exponent - scale);
    const double p1 = std::ldexp(c / mantissa, -exponent - 2 * scale);
    const double p0 = std::ldexp(d / mantissa, -exponent - 3 * scale);

    // y = t - p2/3: t^3 + p t + q; t = u + v with u^3, v^3 = -q/2 +- sqrt(q^2/4 + p^3/27), u v = -p/3.
    const double p = p1 - p2 * p2 / 3.0;
    const double q = p2 * (2.0 * p2 * p2 - 9.0 * p1) / 27.0 + p0;
    double discriminant = q * q / 4.0 + p * p * p / 27.0;
    if (std::abs(discriminant) <= epsilon * (q * q / 4.0 + std::abs(p * p * p) / 27.0)) discriminant = 0.0;
    // In parts: standard libraries differ in the last digit of complex roots, powers and quotients.
    const double part = std::sqrt(std::abs(discriminant));
    const std::complex<double> root(discriminant < 0.0 ? 0.0 : part, discriminant < 0.0 ? part : 0.0);
    const std::complex<double> cube = q > 0.0 ? -0.5 * q - root : -0.5 * q + root;
    const std::complex<double> u =
        cube == 0.0 ? 0.0 : std::polar(std::pow(std::abs(cube), 1.0 / 3.0), std::arg(cube) / 3.0);
    const std::complex<double> v = u == 0.0 ? 0.0 : std::conj(u) * (-p / (3.0 * std::norm(u)));
    double t = 0.0;
    double smallest = std::numeric_limits<double>::infinity();
    for (const std::complex<double>& factor : {GetFactor1(), GetFactor2(), GetFactor3()}) {
        const std::complex<double> candidate = factor * u + std::conj(factor) * v;
        if (discriminant > 0.0 ? std::abs(candidate.imag()) < smallest : std::abs(candidate.real()) > std::abs(t)) {
            smallest = std::abs(candidate.imag());
            t = candidate.real();
        }
    }

    // The inflection point itself is the start where it is a root to rounding, as for triple roots.
    const auto isZero = [&](double y, double value) {
        const double magnitude = std::abs(y);
        return std::abs(value) <=
               rounding * (((magnitude + std::abs(p2)) * magnitude + std::abs(p1)) * magnitude + std::abs(p0));
    };
    const auto valueAt = [&](double y) { return ((y + p2) * y + p1) * y + p0; };
    double y = -p2 / 3.0;
    double value = valueAt(y);
    if (!isZero(y, value)) {
        y += t;
        value = valueAt(y);
    }
    for (int i = 0; i < mostNewtonSteps && !isZero(y, value); ++i) {
        const double next = y - value / ((3.0 * y + 2.0 * p2) * y + p1);
        const double nextValue = valueAt(next);
        if (!(std::abs(nextValue) < std::abs(value))) break;
        y = next;
        value = nextValue;
    }

    // The quotient y^2 + r y + s: from the end of the cubic that decides its coefficients.
    double r = y + p2;
    double s = r * y + p1;
    if (std::abs(y * y * y) > std::abs(p0)) {
        s = -p0 / y;
        r = (s - p1) / y;
    }
    std::complex<double> others[2];
    SolveQuadraticWithin(epsilon, 1.0, r, s, others[0], others[1]);
    roots[0] = std::ldexp(y, scale);
    for (int i = 0; i < 2; ++i) {
        roots[i + 1] = {std::ldexp(others[i].real(), scale), std::ldexp(others[i].imag(), scale)};
    }
    std::sort(roots, roots + 3, ComesBefore);
    return 3;
}

int CubicFunction::GetRoots(double (&roots)[3]) const {
    std::complex<double> all[3];
    const int number = GetCubicRoots(all);
    int real = 0;
    for (int i = 0; i < number; ++i) {
        if (all[i].imag() == 0.0) roots[real++] = all[i].real();
    }
    return real;
}

int CubicFunction::GetRoots(std::complex<double>& first, std::complex<double>& second,
                            std::complex<double>& third) const {
    std::complex<double> all[3];
    const int number = GetCubicRoots(all);
    if (number > 0) first = all[0];
    if (number > 1) second = all[1];
    if (number > 2) third = all[2];
    return number;
}

std::complex<double> CubicFunction::GetRoot(int index) const {
    std::complex<double> all[3];
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    if (index < 0 || index >= GetCubicRoots(all)) return {none, none};
    return all[index];
}

bool CubicFunction::GetRoot(int index, double& root) const {
    const std::complex<double> found = GetRoot(index);
    if (found.imag() != 0.0) return false;
    root = found.real();
    return true;
}

}  // namespace Kalvio::Math
