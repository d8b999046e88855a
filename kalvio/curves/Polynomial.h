#pragma once

#include "kalvio/Export.h"

#include <complex>
#include <cstddef>
#include <initializer_list>
#include <list>
#include <vector>

namespace Kalvio::Math {

/// Real polynomial. `p[i]` is the coefficient of x^i, so sequences are given by ascending power:
///
///     const Polynomial p{6.0, -5.0, 1.0};  // x^2 - 5 x + 6
///     std::vector<std::complex<double>> roots;
///     p.FindQuadraticEquationRoots(roots);  // 2 roots: 3, 2
class KALVIO_MATH_API Polynomial {
public:
    /// No coefficients; it counts as 0.
    Polynomial() = default;
    /// `size` coefficients, all 0.
    explicit Polynomial(unsigned int size) : coefficients(size, 0.0) {}
    Polynomial(const std::vector<double>& values) : coefficients(values) {}
    Polynomial(const std::list<double>& values) : coefficients(values.begin(), values.end()) {}
    Polynomial(std::initializer_list<double> values) : coefficients(values) {}

    /// Coefficient of x^i; 0 beyond the size.
    double operator[](unsigned int i) const { return i < coefficients.size() ? coefficients[i] : 0.0; }
    /// The same to write; an index beyond the size lengthens the sequence by zeros.
    double& operator[](unsigned int i) {
        if (i >= coefficients.size()) coefficients.resize(std::size_t{i} + 1, 0.0);
        return coefficients[i];
    }
    /// Number of coefficients, leading zeros included.
    unsigned int GetSize() const { return static_cast<unsigned int>(coefficients.size()); }
    /// The highest power whose coefficient is not exactly 0; 0 for constants and the empty polynomial.
    unsigned int GetDegree() const;
    /// Divides every coefficient; nothing changes for a divisor of 0 or NaN.
    Polynomial& operator/=(double divisor);

    /// Value at x by Horner's rule; 0 for the empty polynomial.
    [[nodiscard]] double Evaluate(double x) const;
    /// The derivative. With `monic` it is divided by its leading coefficient, which keeps its roots and keeps repeated
    /// derivatives from growing.
    [[nodiscard]] Polynomial Derive(bool monic) const;
    /// Quotient of the division by a polynomial.
    /// @param remainder  for a linear divisor the remainder; for a longer one the remainder's coefficient of largest
    ///                   magnitude
    /// @return an empty polynomial for the divisor 0 and for coefficients that are not finite, `remainder` untouched
    Polynomial Divide(const Polynomial& divisor, double& remainder) const;

    /// Appends the roots of a polynomial of degree 1 or 2; a double root counts twice, complex roots come as a
    /// conjugate pair.
    /// @return the number of roots appended: the degree; 0 for any other degree and for values that are not finite
    int FindQuadraticEquationRoots(std::vector<std::complex<double>>& roots) const;

    /// Splits this polynomial into real quadratic factors: by Bairstow's method one after another, then improved all
    /// together; where roots of very different magnitude spoil that, from all complex roots at once.
    ///
    /// The coefficients of `rest` times the `factors` differ from this polynomial's by about 1e-15 of the magnitudes
    /// of the terms that make them up, by up to 1e-11 where roots are multiple and 1e-8 where those are of very
    /// different magnitudes. A root of multiplicity m comes out as a cluster of a radius about 1e-16^(1/m), the
    /// product being accurate all the same.
    ///
    /// @param rest     what is left: a constant, or for an odd degree a linear polynomial
    /// @param factors  appended to; monic, degree 2
    /// @return false, outputs untouched, when the polynomial is 0, holds a value that is not finite or overflows when
    ///         its roots are scaled to magnitudes around 1, or when the difference above would exceed 1e-7
    [[nodiscard]] bool FindQuadraticFactors(Polynomial& rest, std::vector<Polynomial>& factors) const;

    /// Bairstow's method (L. Bairstow, 1920): Newton's method for the two coefficients of a quadratic x^2 + u x + v
    /// whose division leaves no remainder. Ends when the remainder has sunk to its rounding error or the step is at
    /// most `tolerance` relative to the quadratic.
    ///
    /// @param quadratic  in: where to start; of a degree other than 2 the three lowest coefficients of this polynomial
    ///                   are the start. Out: the best quadratic met, monic
    /// @param quotient   this polynomial divided by it
    /// @param residual   remainder relative to the sum of the magnitudes it was summed up from: about 1e-16 when found
    /// @return iterations used; 0, outputs untouched, for a degree below 2 and for values that are not finite
    [[nodiscard]] int FindQuadraticFactorsByBairstow(Polynomial& quadratic, Polynomial& quotient, double& residual,
                                                     unsigned int maxIterations, double tolerance) const;

    /// Chebyshev polynomial of degree n at x: of the first kind, T_n(cos t) = cos(n t), or with `secondKind`
    /// U_n(cos t) = sin((n + 1) t) / sin t. Any x; the cost does not depend on n. Source: DLMF 18.5.1, 18.5.2.
    [[nodiscard]] static double EvaluateChebyshev(double x, unsigned int n, bool secondKind);

private:
    bool IsFinite() const;
    // A start for Bairstow's method on this polynomial: a quadratic factor of its derivative, found from a factor of
    // the second derivative, and so on for `depth` derivatives.
    Polynomial EstimateQuadraticFactorsByRecursion(unsigned int depth) const;
    bool FindQuadraticFactor(Polynomial& quadratic) const;

    std::vector<double> coefficients;
};

}  // namespace Kalvio::Math
