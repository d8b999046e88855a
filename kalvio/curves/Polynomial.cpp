#include "kalvio/curves/Polynomial.h"

#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/curves/detail/Quadratic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace Kalvio::Math {

namespace {

constexpr unsigned int mostIterations = 500;    // of one run of Bairstow's method
constexpr double stepTolerance = 1e-15;         // relative to the quadratic
constexpr double wantedError = 1e-13;           // relative, of the product; a larger one is worth a second method
constexpr double acceptedResidual = 1e-7;       // relative; a quadratic that leaves more is no factor
constexpr unsigned int deepestDerivative = 8;   // where the estimate from derivatives ends
constexpr unsigned int mostStarts = 32;         // scattered starts, after the derivative has failed
constexpr unsigned int mostImprovements = 120;  // of all factors on the whole polynomial
// Rounding error of a remainder, relative to the sum of the magnitudes of its terms.
constexpr double remainderRounding = 4.0 * std::numeric_limits<double>::epsilon();

// x^2 + u x + v
struct Quadratic {
    double u = 0.0;
    double v = 0.0;
};

// r x + s, each with the sum of the magnitudes of the terms it was summed up from.
struct Remainder {
    double r = 0.0, s = 0.0;
    double sumR = 0.0, sumS = 0.0;

    double Relative() const {
        const double relativeR = r == 0.0 ? 0.0 : std::abs(r) / sumR;
        const double relativeS = s == 0.0 ? 0.0 : std::abs(s) / sumS;
        return std::isnan(relativeR) ? relativeR : std::max(relativeS, relativeR);  // NaN stays NaN
    }
};

// Divides a by the quadratic. b gets the size of a; b[i] becomes the quotient's coefficient of x^(i - 2) for i >= 2.
Remainder DivideByQuadratic(std::span<const double> a, const Quadratic& q, std::vector<double>& b) {
    b.resize(a.size());
    const double absU = std::abs(q.u);
    const double absV = std::abs(q.v);
    double above = 0.0, twoAbove = 0.0;
    double sumAbove = 0.0, sumTwoAbove = 0.0;
    for (std::size_t i = a.size() - 1; i >= 1; --i) {
        const double value = a[i] - q.u * above - q.v * twoAbove;
        const double sum = std::abs(a[i]) + absU * sumAbove + absV * sumTwoAbove;
        b[i] = value;
        twoAbove = above;
        above = value;
        sumTwoAbove = sumAbove;
        sumAbove = sum;
    }
    return {above, a[0] - q.v * twoAbove, sumAbove, std::abs(a[0]) + absV * sumTwoAbove};
}

// Newton's step for (u, v). With r1 x + s1 the remainder of a second division, of the quotient, the derivatives are
// d(r, s)/du = (u r1 - s1, v r1) and d(r, s)/dv = (-r1, -s1).
Quadratic NewtonStep(const Quadratic& q, const Remainder& first, const Remainder& second) {
    const double determinant = second.s * second.s - q.u * second.r * second.s + q.v * second.r * second.r;
    return {(first.r * second.s - first.s * second.r) / determinant,
            ((second.s - q.u * second.r) * first.s + q.v * second.r * first.r) / determinant};
}

// Quotient of a by a monic divisor, given by ascending power, that is a factor to rounding. Division from the highest
// power down is stable for roots smaller than the others, from the lowest power up for larger ones: both are made and
// joined where they agree best (G. Peters, J. H. Wilkinson, 1971, composite deflation).
std::vector<double> Deflate(std::span<const double> a, std::initializer_list<double> divisor) {
    const double* const d = divisor.begin();
    const std::size_t m = divisor.size() - 1;
    const std::size_t n = a.size() - m;
    std::vector<double> down(n), up(n);
    for (std::size_t i = n; i-- > 0;) {
        down[i] = a[i + m];
        for (std::size_t j = 1; j <= m && i + j < n; ++j) down[i] -= d[m - j] * down[i + j];
    }
    for (std::size_t i = 0; i < n; ++i) {
        double value = a[i];
        for (std::size_t j = 1; j <= m && j <= i; ++j) value -= d[j] * up[i - j];
        up[i] = value / d[0];
    }
    std::size_t joint = 0;
    double smallest = 1.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double difference = std::abs(down[i] - up[i]) / (std::abs(down[i]) + std::abs(up[i]));
        if (difference < smallest) {
            smallest = difference;
            joint = i;
        }
    }
    std::copy(up.begin(), up.begin() + static_cast<std::ptrdiff_t>(joint), down.begin());
    return down;
}

// Magnitude of the root number `index` in ascending order, to a factor that depends on the degree only: the slope of
// the Newton polygon (upper hull of the logarithms of the coefficients) where it leaves the coefficient `index`.
double EstimateMagnitude(std::span<const double> a, std::size_t index) {
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t low = 0; low <= index; ++low) {
        double slope = std::numeric_limits<double>::infinity();
        for (std::size_t i = index + 1; i < a.size(); ++i) {
            slope = std::min(slope, std::pow(std::abs(a[low] / a[i]), 1.0 / static_cast<double>(i - low)));
        }
        smallest = low == 0 ? slope : std::max(smallest, slope);
    }
    return smallest;
}

// A real root of a monic polynomial of odd degree: bisection of the interval that holds all roots (Cauchy's bound),
// down to neighbouring numbers.
double RealRootOfOddDegree(const Polynomial& p) {
    double bound = 0.0;
    for (unsigned int i = 0; i < p.GetDegree(); ++i) bound = std::max(bound, 1.0 + std::abs(p[i]));
    double low = -bound;
    double high = bound;
    for (;;) {
        const double middle = 0.5 * low + 0.5 * high;
        if (!(low < middle && middle < high)) return middle;
        (p.Evaluate(middle) < 0.0 ? low : high) = middle;
    }
}

// A monic polynomial as a product of quadratic factors and of x - root for each of the roots.
struct Factors {
    std::vector<Quadratic> quadratics;
    std::vector<double> roots;
};

// Pairs real roots anew, so that the two of a quadratic are of one magnitude; the others become single. The smaller
// root of an unequal pair has no digits of its own in the two coefficients.
void PairRoots(Factors& factors) {
    constexpr double equalMagnitude = 4.0;
    std::vector<double> real(factors.roots);
    const auto split = [&real](const Quadratic& q) {
        std::complex<double> x1, x2;
        detail::SolveQuadratic(1.0, q.u, q.v, x1, x2);
        if (x1.imag() != 0.0) return false;
        real.insert(real.end(), {x1.real(), x2.real()});
        return true;
    };
    std::erase_if(factors.quadratics, split);
    factors.roots.clear();
    std::stable_sort(real.begin(), real.end(), [](double a, double b) { return std::abs(a) < std::abs(b); });
    for (std::size_t i = 0; i < real.size(); ++i) {
        if (i + 1 < real.size() && std::abs(real[i + 1]) < equalMagnitude * std::abs(real[i])) {
            factors.quadratics.push_back({-(real[i] + real[i + 1]), real[i] * real[i + 1]});
            ++i;
        } else {
            factors.roots.push_back(real[i]);
        }
    }
}

// r x + s modulo a quadratic.
struct Linear {
    double r = 0.0;
    double s = 0.0;
};

Linear MultiplyModulo(const Linear& a, const Linear& b, const Quadratic& q) {
    const double square = a.r * b.r;  // of x^2, which is -u x - v
    return {a.r * b.s + a.s * b.r - square * q.u, a.s * b.s - square * q.v};
}

// error = a - product of the factors; returns the largest coefficient of it relative to its terms' magnitudes.
double ComputeError(const std::vector<double>& a, const Factors& factors, std::vector<double>& error) {
    std::vector<double> product{1.0};
    std::vector<double> sums{1.0};
    const auto multiply = [](std::vector<double>& values, double u, double v) {
        values.resize(values.size() + 2, 0.0);
        for (std::size_t i = values.size(); i-- > 0;) {
            values[i] = v * values[i] + (i >= 1 ? u * values[i - 1] : 0.0) + (i >= 2 ? values[i - 2] : 0.0);
        }
    };
    const auto multiplyByRoot = [](std::vector<double>& values, double root) {
        values.push_back(0.0);
        for (std::size_t i = values.size(); i-- > 0;) values[i] = (i >= 1 ? values[i - 1] : 0.0) - root * values[i];
    };
    for (const Quadratic& q : factors.quadratics) {
        multiply(product, q.u, q.v);
        multiply(sums, std::abs(q.u), std::abs(q.v));
    }
    for (const double root : factors.roots) {
        multiplyByRoot(product, root);
        multiplyByRoot(sums, -std::abs(root));
    }
    double largest = 0.0;
    error.resize(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        error[i] = a[i] - product[i];
        const double relative = error[i] == 0.0 ? 0.0 : std::abs(error[i]) / sums[i];
        if (!(relative <= largest)) largest = relative;
        if (std::isnan(largest)) break;
    }
    return largest;
}

// Newton's step for all factors at once. To first order error = sum over k of delta_k times the other factors, so
// delta_k = error / (product of the others) modulo factor k. Unlike an improvement of one factor on the whole
// polynomial this keeps two factors from running to the same roots.
Factors ImproveOnce(const Factors& factors, const std::vector<double>& error) {
    Factors better = factors;
    std::vector<double> b;
    for (std::size_t k = 0; k < factors.quadratics.size(); ++k) {
        const Quadratic& q = factors.quadratics[k];
        Linear others{0.0, 1.0};
        for (const double root : factors.roots) others = MultiplyModulo(others, {1.0, -root}, q);
        for (std::size_t j = 0; j < factors.quadratics.size(); ++j) {
            const Quadratic& other = factors.quadratics[j];
            if (j != k) others = MultiplyModulo(others, {other.u - q.u, other.v - q.v}, q);
        }
        const Remainder e = DivideByQuadratic(error, q, b);
        // others (du x + dv) = e: the conjugate (-r, s - u r) of r x + s turns the product into a number.
        const Linear conjugate{-others.r, others.s - q.u * others.r};
        const double norm = others.s * others.s - q.u * others.r * others.s + q.v * others.r * others.r;
        const Linear delta = MultiplyModulo({e.r, e.s}, conjugate, q);
        better.quadratics[k] = {q.u + delta.r / norm, q.v + delta.s / norm};
    }
    for (std::size_t k = 0; k < factors.roots.size(); ++k) {
        const double x = factors.roots[k];
        double others = 1.0;
        for (const Quadratic& q : factors.quadratics) others *= (x + q.u) * x + q.v;
        for (std::size_t j = 0; j < factors.roots.size(); ++j) others *= j == k ? 1.0 : x - factors.roots[j];
        better.roots[k] = x - Polynomial(error).Evaluate(x) / others;
    }
    return better;
}

// Improves the factors of a as far as they go; returns the error of the best. Around clusters of roots the way there
// leads over worse ones.
double Improve(const std::vector<double>& a, Factors& factors) {
    std::vector<double> difference;
    double error = ComputeError(a, factors, difference);
    Factors moving = factors;
    for (unsigned int i = 0; i < mostImprovements && error > 0.0; ++i) {
        moving = ImproveOnce(moving, difference);
        const double movedError = ComputeError(a, moving, difference);
        if (!std::isfinite(movedError)) break;
        if (movedError < error) {
            error = movedError;
            factors = moving;
        }
    }
    return error;
}

// Newton's correction p / p' at z; above 1 in terms of 1/z, so that nothing overflows.
std::complex<double> NewtonCorrection(const std::vector<double>& a, std::complex<double> z) {
    const bool inside = std::abs(z) <= 1.0;
    const std::complex<double> w = inside ? z : 1.0 / z;
    const std::size_t n = a.size() - 1;
    std::complex<double> value, slope;
    for (std::size_t i = 0; i <= n; ++i) {
        slope = slope * w + value;
        value = value * w + a[inside ? n - i : i];
    }
    return value == 0.0 ? 0.0 : inside ? value / slope : z * value / (static_cast<double>(n) * value - w * slope);
}

// All roots at once by the method of O. Aberth (1973), started at the magnitudes of the Newton polygon (D. A. Bini,
// 1996), and joined to real factors: each complex root with the one nearest to its conjugate.
Factors FactorsFromAllRoots(const std::vector<double>& a) {
    constexpr double flat = 1e-6;  // an imaginary part this small vanishes in the square that enters the factor
    std::vector<std::complex<double>> z(a.size() - 1);
    for (std::size_t k = 0; k < z.size(); ++k) {
        z[k] = std::polar(EstimateMagnitude(a, k), 2.4 * static_cast<double>(k) + 0.7);
    }
    for (unsigned int sweep = 0; sweep < mostIterations; ++sweep) {
        bool moved = false;
        for (std::size_t k = 0; k < z.size(); ++k) {
            const std::complex<double> correction = NewtonCorrection(a, z[k]);
            std::complex<double> repulsion;
            for (std::size_t j = 0; j < z.size(); ++j) {
                if (z[j] != z[k]) repulsion += 1.0 / (z[k] - z[j]);
            }
            const std::complex<double> step = correction / (1.0 - correction * repulsion);
            if (!std::isfinite(std::abs(step))) continue;
            z[k] -= step;
            moved = moved || std::abs(step) > stepTolerance * std::abs(z[k]);
        }
        if (!moved) break;
    }
    Factors factors;
    const auto flatness = [](const std::complex<double>& x) { return std::abs(x.imag()) / std::abs(x); };
    std::stable_sort(z.begin(), z.end(), [&](const auto& x1, const auto& x2) { return flatness(x1) < flatness(x2); });
    while (!z.empty()) {
        const std::complex<double> root = z.back();
        z.pop_back();
        if (z.empty() || !(flatness(root) > flat)) {
            factors.roots.push_back(root.real());
            continue;
        }
        const auto distance = [&](const auto& x1, const auto& x2) {
            return std::abs(x1 - std::conj(root)) < std::abs(x2 - std::conj(root));
        };
        const auto partner = std::min_element(z.begin(), z.end(), distance);
        const std::complex<double> mean = 0.5 * (root + std::conj(*partner));
        factors.quadratics.push_back({-2.0 * mean.real(), std::norm(mean)});
        z.erase(partner);
    }
    return factors;
}

}  // namespace

unsigned int Polynomial::GetDegree() const {
    unsigned int degree = GetSize();
    while (degree > 0 && coefficients[degree - 1] == 0.0) --degree;
    return degree > 0 ? degree - 1 : 0;
}

bool Polynomial::IsFinite() const {
    return std::all_of(coefficients.begin(), coefficients.end(), [](double value) { return std::isfinite(value); });
}

Polynomial& Polynomial::operator/=(double divisor) {
    if (!(divisor < 0.0 || divisor > 0.0)) return *this;
    for (double& value : coefficients) value /= divisor;
    return *this;
}

double Polynomial::Evaluate(double x) const {
    double value = 0.0;
    for (std::size_t i = coefficients.size(); i-- > 0;) value = value * x + coefficients[i];
    return value;
}

Polynomial Polynomial::Derive(bool monic) const {
    const unsigned int degree = GetDegree();
    if (degree == 0) return {0.0};
    Polynomial derivative(degree);
    for (unsigned int i = 1; i <= degree; ++i) derivative[i - 1] = coefficients[i] * i;
    if (monic) derivative /= derivative[degree - 1];
    return derivative;
}

Polynomial Polynomial::Divide(const Polynomial& divisor, double& remainder) const {
    const unsigned int degree = GetDegree();
    const unsigned int divisorDegree = divisor.GetDegree();
    const double lead = divisor[divisorDegree];
    if (lead == 0.0 || !IsFinite() || !divisor.IsFinite()) return {};
    std::vector<double> left(coefficients);
    left.resize(std::size_t{degree} + 1, 0.0);
    Polynomial quotient(degree >= divisorDegree ? degree - divisorDegree + 1 : 1U);
    for (unsigned int i = degree + 1; i-- > divisorDegree;) {
        const double factor = left[i] / lead;
        quotient[i - divisorDegree] = factor;
        for (unsigned int j = 0; j < divisorDegree; ++j) left[i - divisorDegree + j] -= factor * divisor[j];
        left.pop_back();
    }
    double largest = 0.0;
    for (const double value : left) {
        if (std::abs(value) > std::abs(largest)) largest = value;
    }
    remainder = largest;
    return quotient;
}

int Polynomial::FindQuadraticEquationRoots(std::vector<std::complex<double>>& roots) const {
    if (!IsFinite()) return 0;
    switch (GetDegree()) {
        case 1:
            roots.emplace_back(-coefficients[0] / coefficients[1]);
            return 1;
        case 2: {
            std::complex<double> x1, x2;
            detail::SolveQuadratic(coefficients[2], coefficients[1], coefficients[0], x1, x2);
            roots.push_back(x1);
            roots.push_back(x2);
            return 2;
        }
        default:
            return 0;
    }
}

int Polynomial::FindQuadraticFactorsByBairstow(Polynomial& quadratic, Polynomial& quotient, double& residual,
                                               unsigned int maxIterations, double tolerance) const {
    const unsigned int degree = GetDegree();
    if (degree < 2 || !IsFinite()) return 0;
    const std::span<const double> a(coefficients.data(), degree + 1);
    const Polynomial& start = quadratic.GetDegree() == 2 ? quadratic : *this;
    Quadratic q{start[1] / start[2], start[0] / start[2]};
    if (!std::isfinite(q.u) || !std::isfinite(q.v)) q = Quadratic();

    Quadratic best = q;
    double smallest = std::numeric_limits<double>::infinity();
    std::vector<double> b, c;
    unsigned int iterations = 0;
    bool stepIsSmall = false;
    while (iterations < maxIterations) {
        ++iterations;
        const Remainder first = DivideByQuadratic(a, q, b);
        const double relative = first.Relative();
        if (!std::isfinite(relative)) break;
        if (relative < smallest) {
            smallest = relative;
            best = q;
        }
        if (relative <= remainderRounding || stepIsSmall) break;
        const std::span<const double> b2 = std::span<const double>(b).subspan(2);
        const Remainder second = b2.size() > 1 ? DivideByQuadratic(b2, q, c) : Remainder{0.0, b2[0], 0.0, 0.0};
        Quadratic step = NewtonStep(q, first, second);
        if (!std::isfinite(step.u) || !std::isfinite(step.v)) {  // singular: leave the place in no special direction
            step = {0.618 * (1.0 + std::abs(q.u)), -0.414 * (1.0 + std::abs(q.v))};
        }
        q.u += step.u;
        q.v += step.v;
        const double radius = std::sqrt(std::abs(q.v));
        stepIsSmall = std::abs(step.u) <= tolerance * (std::abs(q.u) + radius) &&
                      std::abs(step.v) <= tolerance * (std::abs(q.v) + std::abs(q.u) * radius);
    }
    if (!std::isfinite(smallest)) return 0;
    DivideByQuadratic(a, best, b);
    quadratic = Polynomial{best.v, best.u, 1.0};
    quotient = std::vector<double>(b.begin() + 2, b.end());
    residual = smallest;
    return static_cast<int>(iterations);
}

Polynomial Polynomial::EstimateQuadraticFactorsByRecursion(unsigned int depth) const {
    Polynomial derivative = Derive(true);
    if (derivative.GetDegree() <= 2) return derivative;
    Polynomial quadratic = depth > 0 ? derivative.EstimateQuadraticFactorsByRecursion(depth - 1) : Polynomial();
    Polynomial quotient;
    double residual = 0.0;
    (void)derivative.FindQuadraticFactorsByBairstow(quadratic, quotient, residual, mostIterations, stepTolerance);
    return quadratic;
}

// Starts: the low end, the derivative, then pairs of the two smallest estimated magnitudes in scattered directions.
bool Polynomial::FindQuadraticFactor(Polynomial& quadratic) const {
    const double first = EstimateMagnitude(coefficients, 0);
    const double second = EstimateMagnitude(coefficients, 1);
    double smallest = std::numeric_limits<double>::infinity();
    for (unsigned int start = 0; start < mostStarts; ++start) {
        Polynomial found, quotient;
        if (start == 1) found = EstimateQuadraticFactorsByRecursion(deepestDerivative);
        if (start > 1) found = Polynomial{first * second, (first + second) * std::cos(2.4 * start), 1.0};
        double residual = 0.0;
        const int iterations = FindQuadraticFactorsByBairstow(found, quotient, residual, mostIterations, stepTolerance);
        if (iterations == 0 || !(residual < smallest)) continue;
        smallest = residual;
        quadratic = found;
        if (residual <= acceptedResidual && iterations < static_cast<int>(mostIterations)) break;
    }
    return smallest <= acceptedResidual;
}

bool Polynomial::FindQuadraticFactors(Polynomial& rest, std::vector<Polynomial>& factors) const {
    const unsigned int degree = GetDegree();
    const double lead = (*this)[degree];
    if (lead == 0.0 || !IsFinite()) return false;

    // Roots at 0 are set aside. The others are scaled by a power of two to magnitudes around 1: x = 2^scale y.
    unsigned int zeros = 0;
    while (coefficients[zeros] == 0.0) ++zeros;
    const unsigned int n = degree - zeros;
    const int scale = n == 0 ? 0 : (std::ilogb(coefficients[zeros]) - std::ilogb(lead)) / static_cast<int>(n);
    const double mantissa = std::ldexp(lead, -std::ilogb(lead));
    std::vector<double> scaled(n + 1);
    for (unsigned int i = 0; i <= n; ++i) {
        const int down = static_cast<int>(n - i) * scale + std::ilogb(lead);
        scaled[i] = std::ldexp(coefficients[zeros + i] / mantissa, -down);
    }
    scaled[n] = 1.0;

    Polynomial left(scaled);
    if (!left.IsFinite()) return false;
    Factors found;
    if (n % 2 == 1) {  // Bairstow's method may run to infinity along a lone real root: it is taken out first
        found.roots.push_back(RealRootOfOddDegree(left));
        left = Deflate(left.coefficients, {-found.roots[0], 1.0});
    }
    while (left.GetDegree() >= 2) {
        Polynomial quadratic;
        if (!left.FindQuadraticFactor(quadratic)) break;
        found.quadratics.push_back({quadratic[1], quadratic[0]});
        left = Deflate(left.coefficients, {quadratic[0], quadratic[1], 1.0});
    }

    // Each division leaves its rounding to the factors after it: the product is compared with the whole and improved.
    // Where roots of very different magnitude have spoiled it, all roots are sought at once.
    double error = std::numeric_limits<double>::infinity();
    if (left.GetDegree() < 2) {
        PairRoots(found);
        error = Improve(scaled, found);
    }
    if (!(error <= wantedError)) {
        Factors others = FactorsFromAllRoots(scaled);
        PairRoots(others);
        const double otherError = Improve(scaled, others);
        if (!(error <= otherError)) {
            error = otherError;
            found = std::move(others);
        }
    }
    if (!(error <= acceptedResidual)) return false;

    std::vector<Polynomial> result;
    for (const Quadratic& q : found.quadratics) {
        result.push_back({std::ldexp(q.v, 2 * scale), std::ldexp(q.u, scale), 1.0});
    }
    std::vector<double> single(zeros, 0.0);
    for (const double root : found.roots) single.push_back(std::ldexp(root, scale));
    for (std::size_t i = 0; i + 1 < single.size(); i += 2) {
        result.push_back({single[i] * single[i + 1], -(single[i] + single[i + 1]), 1.0});
    }
    const Polynomial last = single.size() % 2 == 1 ? Polynomial{-lead * single.back(), lead} : Polynomial{lead};
    for (const Polynomial& factor : result) {
        if (!factor.IsFinite()) return false;
    }
    if (!last.IsFinite()) return false;
    factors.insert(factors.end(), result.begin(), result.end());
    rest = last;
    return true;
}

double Polynomial::EvaluateChebyshev(double x, unsigned int n, bool secondKind) {
    // x = +-cos t, or +-cosh t outside [-1, 1], with the sign taken out: both kinds are even or odd like n.
    const double magnitude = std::abs(x);
    const double sign = x < 0.0 && n % 2 == 1 ? -1.0 : 1.0;
    const double order = n;
    if (magnitude > 1.0) {
        const double t = std::acosh(magnitude);
        return sign * (secondKind ? std::sinh((order + 1.0) * t) / std::sinh(t) : std::cosh(order * t));
    }
    const double t = 2.0 * std::asin(std::sqrt(0.5 * (1.0 - magnitude)));  // acos without its loss of digits near 1
    if (!secondKind) return sign * std::cos(order * t);
    return t == 0.0 ? sign * (order + 1.0) : sign * std::sin((order + 1.0) * t) / std::sin(t);
}

// Here and not with their classes: the matrices stand below the polynomials.

Polynomial Matrix2D::GetCharacteristicPolynomial() const {
    const std::array<double, 4> coefficients = detail::CharacteristicCoefficients(elements);
    return std::vector<double>(coefficients.begin(), coefficients.end());
}

Polynomial Matrix3D::GetCharacteristicPolynomial() const {
    const std::array<double, 5> coefficients = detail::CharacteristicCoefficients(elements);
    return std::vector<double>(coefficients.begin(), coefficients.end());
}

}  // namespace Kalvio::Math
