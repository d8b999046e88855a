#include "kalvio/curves/CubicFunction.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Complex = std::complex<double>;

TEST(CubicFunctionTest, RootsOfKnownFunctions) {
    // The real ones come first; the bound is relative to each root's magnitude.
    const std::tuple<const char*, CubicFunction, int, std::vector<Complex>, double> rows[] = {
        {"one real, sorted first", {1.0, -4.0, 9.0, -10.0}, 1, {2.0, {1.0, 2.0}, {1.0, -2.0}}, 1e-15},
        {"triple", {1.0, -3.3, 3.63, -1.331}, 3, {1.1, 1.1, 1.1}, 1e-15},
        {"double below simple", {1.0, -4.0, 5.0, -2.0}, 3, {1.0, 1.0, 2.0}, 1e-15},
        {"double above simple, coefficients rounded", {1.0, 0.1, -0.1892, 0.026136}, 3, {-0.54, 0.22, 0.22}, 2e-15},
        {"inflection at the middle root", {1.0, 0.0, -4.0, 0.0}, 3, {-2.0, 0.0, 2.0}, 1e-15},
        {"magnitudes far apart", {1.0, -(1e8 + 1.0 + 1e-8), 1e8 + 1.0 + 1e-8, -1.0}, 3, {1e-8, 1.0, 1e8}, 1e-15},
        {"small leading coefficient, above epsilon", {1e-11, 1.0, -3.0, 2.0}, 3, {-1.0e11 - 3.0, 1.0, 2.0}, 1e-10},
        {"roots of 1e-4 beside tiny values", {1.0, -6e-4, 11e-8, -6e-12}, 3, {1e-4, 2e-4, 3e-4}, 1e-14},
        {"leading coefficient within epsilon", {9e-13, 1.0, -5.0, 6.0}, 2, {2.0, 3.0}, 1e-15},
        {"quadratic with a complex pair", {0.0, 1.0, -2.0, 5.0}, 0, {{1.0, 2.0}, {1.0, -2.0}}, 1e-15},
        {"not a number", {1.0, kNan, 0.0, 1.0}, 0, {}, 0.0},
    };
    for (const auto& [why, f, reals, roots, bound] : rows) {
        SCOPED_TRACE(why);
        const Complex untouched(7.0, 7.0);
        Complex all[3] = {untouched, untouched, untouched};
        double real[3] = {7.0, 7.0, 7.0};
        ASSERT_EQ(f.GetRoots(all[0], all[1], all[2]), static_cast<int>(roots.size()));
        ASSERT_EQ(f.GetRoots(real), reals);
        for (int i = 0; i < 3; ++i) {
            double value = 7.0;
            EXPECT_EQ(f.GetRoot(i, value), i < reals);
            EXPECT_TRUE(value == (i < reals ? all[i].real() : 7.0) && real[i] == value);
            const bool isRoot = i < static_cast<int>(roots.size());
            const Complex expected = isRoot ? roots[i] : untouched;
            EXPECT_LE(std::abs(all[i] - expected), bound * std::abs(expected)) << all[i];
            EXPECT_TRUE(isRoot ? f.GetRoot(i) == all[i] : std::isnan(f.GetRoot(i).real()));
        }
    }
}

// Both ways from known roots: each is compared in units of its condition, the shift that one rounding of the
// coefficients brings about. Near-double roots are a class of their own.
TEST(CubicFunctionTest, RandomRootsAreFoundToTheirCondition) {
    RandomNumbers random(20240602);
    for (int run = 0; run < 20000 && !HasFailure(); ++run) {
        const double a = std::pow(10.0, random(-6.0, 6.0));
        const double spread = run % 2 == 0 ? 0.0 : 4.0;
        const double x = random(-2.0, 2.0) * std::pow(10.0, random(-spread, spread));
        const double m = random(-2.0, 2.0) * std::pow(10.0, random(-spread, spread));
        const Complex h = Complex(run % 3 != 0, run % 3 == 0) * random(0.01, 1.0) * m;
        const double product = ((m + h) * (m - h)).real();
        const CubicFunction f(a, -a * (x + 2.0 * m), a * (product + 2.0 * m * x), -a * x * product);
        const CubicFunction magnitudes(a, std::abs(f.GetB()), std::abs(f.GetC()), std::abs(f.GetD()));
        Complex roots[3];
        ASSERT_EQ(f.GetRoots(roots[0], roots[1], roots[2]), 3);
        for (const Complex& root : {Complex(x), m + h, m - h}) {
            const double slope = std::abs((3.0 * a * root + 2.0 * f.GetB()) * root + f.GetC());
            const double condition = magnitudes.GetValue(std::abs(root)) / slope;
            if (condition > 1e4 * std::abs(root)) continue;
            const bool found =
                std::ranges::any_of(roots, [&](const Complex& z) { return std::abs(z - root) <= 3e-15 * condition; });
            EXPECT_TRUE(found) << "run " << run << ", root " << root;
        }
    }
}

TEST(CubicFunctionTest, EpsilonDecidesWhatCountsAsZero) {
    const CubicFunction f(1e-9, 1.0, -5.0, 6.0);
    double roots[3];
    EXPECT_EQ(f.GetRoots(roots), 3);
    CubicFunction::SetEpsilon(1e-8);
    EXPECT_EQ(f.GetRoots(roots), 2);
    CubicFunction::SetEpsilon(-1.0);
    CubicFunction::SetEpsilon(kNan);
    EXPECT_EQ(CubicFunction::GetEpsilon(), 1e-8);
    CubicFunction::SetEpsilon(1e-12);
}

}  // namespace
}  // namespace Kalvio::Math
