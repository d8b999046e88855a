#pragma once

#include "kalvio/Export.h"

#include <atomic>
#include <complex>

namespace Kalvio::Math {

/// The cubic a x^3 + b x^2 + c x + d.
///
/// A leading coefficient with |a| < epsilon counts as 0: the function is then a quadratic, and so on down for b and c.
/// Roots are counted with their multiplicity. The order is: real roots ascending, then a complex pair, the root with
/// the positive imaginary part first. Simple roots are accurate to a few units in the last place of their condition;
/// two that agree to about sqrt(epsilon) of their magnitude, or whose imaginary parts are that small, come out as one
/// real double root. Coefficients that are not finite have no roots.
class KALVIO_MATH_API CubicFunction {
public:
    CubicFunction(double cubic, double quadratic, double linear, double constant)
        : a(cubic), b(quadratic), c(linear), d(constant) {}

    double GetA() const { return a; }
    double GetB() const { return b; }
    double GetC() const { return c; }
    double GetD() const { return d; }
    void SetA(double value) { a = value; }
    void SetB(double value) { b = value; }
    void SetC(double value) { c = value; }
    void SetD(double value) { d = value; }

    double GetValue(double x) const { return ((a * x + b) * x + c) * x + d; }

    /// @param roots  the real roots; elements beyond their number are untouched
    /// @return number of real roots: 0 to 3
    int GetRoots(double (&roots)[3]) const;
    /// @return number of roots, real and complex: the degree; outputs beyond it are untouched
    [[nodiscard]] int GetRoots(std::complex<double>& first, std::complex<double>& second,
                               std::complex<double>& third) const;
    /// The root of index 0 to 2; NaN when there is none.
    std::complex<double> GetRoot(int index) const;
    /// The same where it is real; false, `root` untouched, for a complex root and for none.
    [[nodiscard]] bool GetRoot(int index, double& root) const;

    /// What counts as zero in the root computation, for all cubics of the program. Default 1e-12.
    static double GetEpsilon() { return s_Epsilon.load(std::memory_order_relaxed); }
    /// Ignores negative values and NaN.
    static void SetEpsilon(double value);

private:
    int GetCubicRoots(std::complex<double> (&roots)[3]) const;
    // The cube roots of 1.
    static std::complex<double> GetFactor1();
    static std::complex<double> GetFactor2();
    static std::complex<double> GetFactor3();

    static std::atomic<double> s_Epsilon;

    double a;
    double b;
    double c;
    double d;
};

}  // namespace Kalvio::Math
