#include "kalvio/curves/Polynomial.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

void Multiply(std::vector<double>& p, const Polynomial& factor) {
    std::vector<double> product(p.size() + factor.GetDegree(), 0.0);
    for (std::size_t i = 0; i < p.size(); ++i) {
        for (unsigned int j = 0; j <= factor.GetDegree(); ++j) product[i + j] += p[i] * factor[j];
    }
    p = product;
}

// Builds lead (x - root)... from a list in which each complex root stands for its conjugate too, factors it, and
// compares the product of the factors with it, relative to lead (x + |root|)....
void CheckFactors(double lead, const std::vector<std::complex<double>>& roots, unsigned int leadingZeros,
                  double bound) {
    std::vector<double> p{lead}, magnitudes{std::abs(lead)}, product{1.0};
    for (const std::complex<double>& z : roots) {
        const bool real = z.imag() == 0.0;
        Multiply(p, real ? Polynomial{-z.real(), 1.0} : Polynomial{std::norm(z), -2.0 * z.real(), 1.0});
        for (int i = 0; i < (real ? 1 : 2); ++i) Multiply(magnitudes, {std::abs(z), 1.0});
    }
    const std::size_t size = p.size();
    p.resize(size + leadingZeros, 0.0);
    Polynomial rest;
    std::vector<Polynomial> factors(1);
    ASSERT_TRUE(Polynomial(p).FindQuadraticFactors(rest, factors));
    ASSERT_EQ(factors.size(), 1 + (size - 1) / 2) << "appended";
    ASSERT_EQ(rest.GetDegree(), (size - 1) % 2);
    Multiply(product, rest);
    for (std::size_t i = 1; i < factors.size(); ++i) {
        ASSERT_EQ(factors[i][2], 1.0);
        Multiply(product, factors[i]);
    }
    for (std::size_t i = 0; i < size; ++i) EXPECT_NEAR(product[i], p[i], bound * magnitudes[i]) << "x^" << i;
}

TEST(PolynomialTest, FactorsMultiplyUpToThePolynomial) {
    using Roots = std::vector<std::complex<double>>;
    const std::tuple<const char*, double, Roots, unsigned int, double> rows[] = {
        {"lone real root: the method itself runs to infinity", 1.0, {1.0, {0.0, 1.0}}, 0, 1e-15},
        {"zero roots, an odd number, with an odd degree", 2.0, {0.0, 0.0, 0.0, 5.0}, 1, 1e-15},
        {"all roots zero", 4.0, Roots(12, 0.0), 0, 0.0},
        {"12 times the same", -0.3, Roots(12, 1.5), 0, 1e-11},
        {"large roots", 1.0, {1e70, -2e70, {1e70, 1e70}}, 0, 1e-14},
        {"roots far apart", 1e-3, {1e-40, 1.0, -1e30}, 0, 1e-14},
    };
    for (const auto& [why, lead, roots, leadingZeros, bound] : rows) {
        SCOPED_TRACE(why);
        CheckFactors(lead, roots, leadingZeros, bound);
    }
    RandomNumbers random(20240601);
    for (int run = 0; run < 3000; ++run) {
        Roots roots;
        for (std::size_t degree = random() % 13, added = 0; added < degree;) {
            const double scale = run % 3 == 0 ? std::pow(10.0, random(-4.0, 4.0)) : 1.0;
            std::complex<double> z(random(-2.0, 2.0) * scale, random() % 2 == 0 ? 0.0 : random(-2.0, 2.0) * scale);
            if (random() % 8 == 0) z = 0.0;
            for (std::size_t times = run % 4 == 0 ? 1 + random() % 4 : 1; times > 0 && added < degree; --times) {
                if (added + 2 > degree) z = z.real();
                added += z.imag() == 0.0 ? 1 : 2;
                roots.push_back(z);
            }
        }
        CheckFactors(random(-3.0, -0.1), roots, 0, run % 4 == 0 ? 1e-7 : 1e-12);
        if (HasFailure()) FAIL() << "run " << run;
    }
}

TEST(PolynomialTest, WhatCannotBeFactoredFails) {
    for (const Polynomial& p : {Polynomial{}, Polynomial{0.0, 0.0}, Polynomial{1.0, kNan, 2.0, 1.0},
                                Polynomial{1.0, 2.0, kInfinity}, Polynomial{kNan}}) {
        Polynomial rest{9.0}, quadratic{8.0}, quotient{7.0};
        std::vector<Polynomial> factors;
        std::vector<std::complex<double>> roots;
        double residual = 6.0;
        EXPECT_FALSE(p.FindQuadraticFactors(rest, factors));
        EXPECT_EQ(p.FindQuadraticFactorsByBairstow(quadratic, quotient, residual, 500, 1e-15), 0);
        EXPECT_TRUE(p.FindQuadraticEquationRoots(roots) == 0 && roots.empty() && factors.empty());
        EXPECT_EQ(rest[0] + quadratic[0] + quotient[0] + residual, 30.0);
    }
}

TEST(PolynomialTest, BairstowStartsWhereToldAndStopsWhenTold) {
    const Polynomial p{24.0, -50.0, 35.0, -10.0, 1.0};  // roots 1, 2, 3, 4
    Polynomial quadratic{11.0, -6.8, 1.0}, quotient;
    double residual = 1.0;
    EXPECT_LT(p.FindQuadraticFactorsByBairstow(quadratic, quotient, residual, 500, 1e-15), 10);
    EXPECT_LT(residual, 1e-15);
    EXPECT_NEAR(quadratic[0], 12.0, 1e-12) << "the roots 3 and 4, next to the start";
    EXPECT_NEAR(quotient[1], -3.0, 1e-12);
    quadratic = Polynomial{-1.0, 3.0, 1.0};
    EXPECT_EQ(p.FindQuadraticFactorsByBairstow(quadratic, quotient, residual, 2, 1e-15), 2);
    EXPECT_GT(residual, 1e-7);
}

TEST(PolynomialTest, QuadraticRootsKeepTheirDigits) {
    const std::tuple<const char*, double, double, double, std::complex<double>, std::complex<double>> rows[] = {
        {"the small root does not cancel", 1.0, -1e8, 1.0, 1e8, 1e-8},
        {"roots 2^-26 apart", 1.0, -2.0, 1.0 - 0x1p-52, 1.0 + 0x1p-26, 1.0 - 0x1p-26},
        {"squares overflow", 1e200, -5e200, 6e200, 3.0, 2.0},
        {"outer coefficients at the two ends", 1e-300, 0.0, -1e300, 1e300, -1e300},
        {"negative lead, complex", -1.0, 2.0, -5.0, {1.0, 2.0}, {1.0, -2.0}},
    };
    for (const auto& [why, a, b, c, x1, x2] : rows) {
        std::vector<std::complex<double>> roots;
        ASSERT_EQ((Polynomial{c, b, a, 0.0}.FindQuadraticEquationRoots(roots)), 2) << why;
        if (std::abs(roots[0] - x1) > std::abs(roots[1] - x1)) std::swap(roots[0], roots[1]);
        EXPECT_LE(std::abs(roots[0] - x1), 4e-16 * std::abs(x1)) << why;
        EXPECT_LE(std::abs(roots[1] - x2), 4e-16 * std::abs(x2)) << why;
    }
}

TEST(PolynomialTest, DividesAndDerives) {
    const Polynomial p{-5.0, 0.0, 3.0, 2.0, 0.0};  // 2 x^3 + 3 x^2 - 5
    EXPECT_EQ(p.GetSize() + 10 * p.GetDegree(), 35U);
    double remainder = 0.0;
    const Polynomial linear = p.Divide({-2.0, 1.0}, remainder);
    EXPECT_EQ(remainder, p.Evaluate(2.0)) << "the remainder theorem";
    EXPECT_EQ(linear.Evaluate(100.0), 2e4 + 700.0 + 14.0);
    EXPECT_EQ(p.Divide({1.0, 1.0, 2.0}, remainder).Evaluate(100.0), 101.0);
    EXPECT_EQ(remainder, -6.0) << "the larger coefficient of -x - 6";
    EXPECT_TRUE(p.Divide(Polynomial(4U), remainder).GetSize() == 0 && p.Derive(false).Evaluate(10.0) == 660.0);
    EXPECT_EQ(p.Derive(true).Evaluate(10.0), 110.0);
    Polynomial q(std::list<double>{2.0, 4.0});
    q /= 0.0;
    q /= 2.0;
    q[3] = 1.0;
    EXPECT_EQ(q.Evaluate(2.0), 1.0 + 4.0 + 8.0);
}

TEST(PolynomialTest, ChebyshevFollowsItsRecurrence) {
    for (const double x : {-1.5, -1.0, -0.999999, -0.3, 0.0, 0.7, 1.0, 1.0000001, 3.0}) {
        for (const bool secondKind : {false, true}) {
            double before = secondKind ? 0.0 : x, value = 1.0;  // degrees -1 and 0
            for (unsigned int n = 0; n < 40; before = std::exchange(value, 2.0 * x * value - before), ++n) {
                EXPECT_NEAR(Polynomial::EvaluateChebyshev(x, n, secondKind), value, 1e-12 * (1.0 + std::abs(value)));
            }
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
