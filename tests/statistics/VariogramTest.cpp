#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Samples = std::vector<Point3D>;
using Shape = ExperimentalVariogram::Shape;

// The pairs one by one; of each fit, that no other parameters fit the lags better, near or far.
TEST(ExperimentalVariogramTest, GathersPairsAndFitsThemBest) {
    RandomNumbers random(20240612);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE(round);
        Samples samples;
        for (int i = 0; i < 150; ++i) {
            const double x = random(0, 400), y = random(0, 400);
            const double z = 8.0 * std::sin(0.02 * x) * std::cos(0.015 * y) + random(-1, 1);
            samples.emplace_back(385000 + x, 6672000 + y, z);
        }
        const double step = 15.0, bearing = random(-4, 4), tolerance = round % 2 == 0 ? 2.0 : 0.4;
        ExperimentalVariogram variogram;
        ASSERT_TRUE(variogram.Build(samples, step, 12, Angle(bearing), Angle(tolerance)));
        std::vector<std::array<double, 3>> sums(12);
        for (const Point3D& a : samples) {
            for (const Point3D& b : samples) {
                const double h = a.Distance2D(b), turn = std::atan2(b.GetX() - a.GetX(), b.GetY() - a.GetY()) - bearing;
                if (&a == &b || h >= 12 * step || std::cos(turn) < std::cos(std::min(tolerance, kPi / 2))) continue;
                auto& [pairs, distance, squares] = sums[static_cast<std::size_t>(h / step)];
                pairs += 1.0, distance += h, squares += (a.GetZ() - b.GetZ()) * (a.GetZ() - b.GetZ());
            }
        }
        ASSERT_EQ(variogram.GetLags().size(), 12U);
        for (std::size_t i = 0; i < 12; ++i) {
            const ExperimentalVariogram::Lag& lag = variogram.GetLags()[i];
            EXPECT_EQ(static_cast<double>(lag.pairs), sums[i][0]);
            EXPECT_NEAR(lag.distance, sums[i][1] / sums[i][0], 1e-9);
            EXPECT_NEAR(lag.semivariance, 0.5 * sums[i][2] / sums[i][0], 1e-9);
        }
        for (const Shape shape : {Shape::Exponential, Shape::Gaussian, Shape::Power, Shape::Linear}) {
            ExperimentalVariogram::Fit best;
            ASSERT_TRUE(variogram.FitModel(shape, best));
            const std::unique_ptr<VariogramModelBase> model(best.MakeModel());
            for (int i = 0; i < 600; ++i) {
                ExperimentalVariogram::Fit other = best;
                const double reach = i < 300 ? 1e-3 : 3.0;
                other.nugget = std::max(0.0, best.nugget + reach * random(-1, 1) * (best.nugget + best.sill));
                other.sill *= std::exp(reach * random(-1, 1));
                if (shape == Shape::Exponential || shape == Shape::Gaussian) {
                    other.range = std::clamp(best.range * std::exp(reach * random(-1, 1)), 2.0, 1600.0);
                }
                if (shape == Shape::Power)
                    other.exponent = std::clamp(best.exponent + reach * random(-1, 1), 0.05, 1.95);
                double misfit = 0.0, least = 0.0;
                for (const ExperimentalVariogram::Lag& lag : variogram.GetLags()) {
                    const auto pairs = static_cast<double>(lag.pairs);
                    misfit += pairs * std::pow(lag.semivariance / other.Evaluate(lag.distance) - 1.0, 2);
                    least += pairs * std::pow(lag.semivariance / model->Evaluate(lag.distance) - 1.0, 2);
                }
                ASSERT_NEAR(best.misfit, least, 1e-9 * least);
                ASSERT_GE(misfit, least * (1.0 - 1e-9));
            }
        }
    }
    ExperimentalVariogram none;
    ExperimentalVariogram::Fit fit;
    EXPECT_FALSE(none.FitModel(Shape::Linear, fit) || none.Build({{0, 0, 1}, {9, 0, 1}}, 3.0, 2) ||
                 none.Build({{0, 0, 1}, {1, 0, kNan}}, 3.0, 2) || none.Build(Samples(5), kNan, 2));
    EXPECT_TRUE(none.Build({{0, 0, 1}, {1, 0, 1}, {3, 0, 1}, {7, 0, 1}}, 1.0, 9));
    EXPECT_FALSE(none.FitModel(Shape::Gaussian, fit)) << "no differences";
    EXPECT_FALSE(none.Build({{0, 0, 1}, {5e307, 0, 1}, {1e308, 0, 2}, {1.5e308, 0, 2}}, 1.6e308, 1)) << "sum of lags";
    ExperimentalVariogram::Fit small, large;
    for (const auto& [scale, scaled] : {std::pair(0x1p-300, &small), std::pair(0x1p300, &large)}) {
        ASSERT_TRUE(none.Build({{0, 0, 0}, {1, 0, scale}, {3, 0, 2 * scale}, {7, 0, 9 * scale}}, 1.0, 9));
        ASSERT_TRUE(none.FitModel(Shape::Power, *scaled)) << "squares of semivariances are no numbers";
    }
    EXPECT_EQ(std::tuple(small.sill * 0x1p600, small.exponent), std::tuple(large.sill * 0x1p-600, large.exponent));
}

TEST(VariogramModelTest, ModelsFollowTheirFormulas) {
    EXPECT_DOUBLE_EQ(ExponentialVariogramModel(2.0, 10.0).Evaluate(10.0), 1.2642411176571153);
    EXPECT_DOUBLE_EQ(ExponentialVariogramModel(2.0, 10.0).Evaluate(1e-7), 1.99999999000000003e-8) << "no digits lost";
    EXPECT_EQ(SphericalVariogramModel(2.0, 10.0).Evaluate(10.0), 0.0);
    EXPECT_EQ(SphericalVariogramModel(2.0, 10.0).Evaluate(20.0), 4.0) << "grows again beyond the range";
    EXPECT_DOUBLE_EQ(GaussianVariogramModel(2.0, 10.0).Evaluate(5.0), 0.44239843385719036);
    EXPECT_DOUBLE_EQ(GaussianVariogramModel(2.0, 10.0).Evaluate(1e-7), 2e-16) << "no digits lost near 0";
    EXPECT_DOUBLE_EQ(PowerVariogramModel(2.0, 9.0, 1.5).Evaluate(4.0), 16.0 / 27.0);
    EXPECT_EQ(PowerVariogramModel(2.0, 8.0).Evaluate(20.0), 5.0) << "linear";
    const NuggetVariogramModel rising(0.5, new PowerVariogramModel(2.0, 8.0));
    const NuggetVariogramModel falling(0.5, new SphericalVariogramModel(2.0, 10.0));
    EXPECT_TRUE(rising.Evaluate(0.0) == 0.0 && rising.Evaluate(8.0) == 2.5 && rising.GetRange() == 8.0);
    EXPECT_TRUE(falling.Evaluate(0.0) == 2.5 && falling.Evaluate(10.0) == 0.0) << "a covariance";
}

}  // namespace
}  // namespace Kalvio::Math
