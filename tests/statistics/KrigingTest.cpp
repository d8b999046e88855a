#include "kalvio/Math.h"
#include "support/Concurrently.h"
#include "support/Testing.h"

#include <cstdlib>
#include <fstream>

namespace Kalvio::Math {
namespace {

using Samples = std::vector<Point3D>;

struct Estimate {
    double value = -1.0;
    double variance = -1.0;
};

// Scattered evenly over a square of 1000 m, no two close to each other (Roberts 2018, the sequence R2).
Samples Scattered(int n, const Point2D& origin) {
    Samples samples;
    for (int i = 0; i < n; ++i) {
        const Vec2D place(std::fmod(0.7548776662466927 * i, 1.0), std::fmod(0.5698402909980532 * i, 1.0));
        samples.emplace_back(origin + place * 1000.0, 90.0 + 7 * i % 20);
    }
    return samples;
}

VariogramModelBase* Model(bool exponential, double sill, double range) {
    if (std::isnan(sill)) return nullptr;
    if (exponential) return new ExponentialVariogramModel(sill, range);
    return new SphericalVariogramModel(sill, range);
}

// The estimator and the system built from it; those that fail leave -1.
template <class Kriging>
void CheckEstimates(const Kriging& kriging, const Samples& samples, const Point2D& p, const Estimate& expected,
                    double rounding = 0.0) {
    const bool isSolvable = expected.value > 0.0;
    Estimate out;
    EXPECT_EQ(kriging.Interpolate(p, samples, out.value), isSolvable);
    EXPECT_NEAR(out.value, expected.value, rounding);
    Estimate whole;
    if constexpr (std::is_same_v<Kriging, SimpleKriging>) {
        EXPECT_EQ(kriging.Interpolate(p, samples, whole.value, whole.variance), isSolvable);
        EXPECT_NEAR(whole.value, expected.value, rounding);
        EXPECT_NEAR(whole.variance, expected.variance, rounding);
        whole = Estimate();
    }
    KrigingSystem system;
    EXPECT_EQ(system.Build(kriging, samples), isSolvable || std::isnan(p.GetX()));
    EXPECT_EQ(system.Interpolate(p, out.value), isSolvable);
    EXPECT_EQ(system.Interpolate(p, whole.value, whole.variance), isSolvable);
    EXPECT_EQ(whole.value, out.value);
    EXPECT_NEAR(whole.value, expected.value, rounding);
    EXPECT_NEAR(whole.variance, expected.variance, rounding);
}

TEST(KrigingTest, EstimatesAreThoseOfSixtyDigitsAndThoseOfTheSamples) {
    // Exponential or spherical, samples, place; value and variance of simple and of ordinary kriging and of that with a
    // linear trend, -1 where there is none: the matrices solved with 60 digits, the variances summed from their
    // definition.
    const std::array<double, 10> rows[] = {
        {0, 1, 420, 370, 92.257043786578613, 349.52382422506016, 90, 451.40875731572265, -1, -1},
        {1, 1, 420, 370, -1, -1, 90, 267.25847536989548, -1, -1},
        {1, 2, 420, 370, 93.924835181113366, -127.37411229907843, 94.120586480460066, 125.63397627510704, -1, -1},
        {1, 4, 420, 370, 97.98726373039782, -75.824023893597983, 97.900039352042888, 75.084615778547472,
         97.443464707642306, 75.41661938735917},
        {0, 5, 420, 370, 99.019844352731184, 109.94912093214634, 99.095266246974901, 111.43943576487244,
         99.078743175356247, 111.47622924434341},
        {0, 32, 1100, -50, 96.613610645904824, 225.3317586630514, 97.294882084572171, 252.28449374398395,
         94.664733700207034, 352.13956224744125},
        {1, 32, 1100, -50, 97.707949016557883, -168.83813051015792, 97.111105555266517, 154.90526260221713,
         94.756288096690039, 210.27126428093949},
        {0, 180, 0, 0, 90, 0, 90, 0, 90, 0},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (const auto& row : rows) {
            const bool exponential = row[0] > 0.0;
            SCOPED_TRACE(testing::Message() << row[1] << (exponential ? " exponential" : " spherical"));
            const Samples samples = Scattered(static_cast<int>(row[1]), origin);
            const Point2D p = origin + Vec2D(row[2], row[3]);
            const Estimate simple{row[4], row[5]}, ordinary{row[6], row[7]}, linear{row[8], row[9]};
            const double rounding = origin.GetX() == 0.0 ? 1e-12 : 2e-10;  // there that of the places counts
            CheckEstimates(SimpleKriging(Model(exponential, 500.0, 1800.0), 95.0), samples, p, simple, rounding);
            const OrdinaryKriging kriging(Model(exponential, 500.0, 1800.0));
            CheckEstimates(kriging, samples, p, ordinary, rounding);
            KrigingSystem system;
            Estimate out;
            EXPECT_EQ(system.BuildWithLinearTrend(kriging, samples), linear.value > 0.0);
            EXPECT_EQ(system.Interpolate(p, out.value, out.variance), linear.value > 0.0);
            EXPECT_NEAR(out.value, linear.value, rounding);
            EXPECT_NEAR(out.variance, linear.variance, rounding);
        }
    }
}

TEST(KrigingTest, FailsWithItsOutputsAsTheyWere) {
    const auto with = [](double x, double y, double z) {
        Samples samples = Scattered(6, Point2D());
        samples.back() = Point3D(x, y, z);
        return samples;
    };
    const std::tuple<const char*, double, double, Samples> rows[] = {
        {"no model", kNan, 300, with(10, 10, 1)},
        {"no samples", 1, 300, {}},
        {"two at one place, small sill", 1e-9, 300, with(0, 0, 9)},
        {"two at one place, large sill", 1e12, 300, with(0, 0, 90)},
        {"two of three at one place", 1e12, 300, {{5, 5, 1}, {7, 9, 2}, {5, 5, 2}}},
        {"value not a number", 1, 300, with(10, 10, kNan)},
        {"sample's place not a number", 1, 300, with(kNan, 10, 1)},
        {"range 0", 1, 0, with(10, 10, 1)},
    };
    for (const auto& [why, sill, range, samples] : rows) {
        SCOPED_TRACE(why);
        CheckEstimates(SimpleKriging(Model(false, sill, range), 95.0), samples, {30.0, 40.0}, Estimate());
        CheckEstimates(OrdinaryKriging(Model(true, sill, range)), samples, {30.0, 40.0}, Estimate());
    }
    CheckEstimates(SimpleKriging(Model(false, 1, 300), 95.0), with(10, 10, 1), {kNan, 0.0}, Estimate());
    CheckEstimates(OrdinaryKriging(Model(true, 1, 300)), with(10, 10, 1), {kNan, 0.0}, Estimate());
}

TEST(KrigingSystemTest, NoSillMakesItSingularAndAFailedBuildChangesNothing) {
    Samples samples = Scattered(40, Point2D());
    const Point2D p(410.0, 380.0);
    KrigingSystem system;
    Estimate unit;
    const OrdinaryKriging ofUnit(Model(true, 1.0, 1000.0));
    EXPECT_TRUE(system.Build(ofUnit, samples) && system.Interpolate(p, unit.value, unit.variance));
    for (const int power : {-900, -4, 9, 900}) {  // powers of two change no digit
        const OrdinaryKriging kriging(Model(true, std::ldexp(1.0, power), 1000.0));
        Estimate out;
        EXPECT_EQ(kriging.Interpolate(p, samples, out.value), power == 9) << "its determinant has a scale";
        EXPECT_TRUE(system.Build(kriging, samples) && system.Interpolate(p, out.value, out.variance));
        EXPECT_EQ(out.value, unit.value);
        EXPECT_EQ(out.variance, std::ldexp(unit.variance, power));
    }
    samples.emplace_back(1e-13, 0.0, 91.0);  // at the first one, to rounding
    EXPECT_TRUE(!system.Build(ofUnit, samples) && system.Interpolate(p, unit.variance));
    EXPECT_EQ(unit.variance, unit.value);
}

// Against a search of all samples and the whole system of those found, at places inside, far outside, on samples, and
// on samples left out.
TEST(LocalKrigingTest, IsTheKrigingOfTheNearestSamples) {
    RandomNumbers random(20240606);
    const Point2D origin(385000, 6672000);
    const LocalKriging::Neighborhood rows[] = {
        {1}, {7}, {900}, {5, 4, 150}, {4, 7}, {11, 1, 150}, {8, 3, kInfinity, true}};
    for (const auto& [count, sectors, radius, hasTrend] : rows) {
        for (const int shape : {0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << count << " of " << sectors << " within " << radius << ", " << shape);
            Samples samples;
            for (const Point3D& p : Scattered(300, Point2D())) {  // a square, a strip, two crowds, a strip northward
                const double y = shape == 1 ? 0.001 * p.GetY() : p.GetY();
                const double x = (shape == 2 && p.GetX() > 500.0 ? 1e5 : 0.0) + (shape == 3 ? 0.001 : 1.0) * p.GetX();
                samples.emplace_back(origin + Vec2D(x, y), p.GetZ());
            }
            const OrdinaryKriging kriging(
                sectors == 1 ? Model(true, 4.0, 800.0)
                             : new NuggetVariogramModel(0.3, new PowerVariogramModel(20.0, 300.0, 1.4)));
            LocalKriging local;
            ASSERT_TRUE(local.Build(kriging, samples, {count, sectors, radius, hasTrend}));
            std::vector<LocalKriging::Residual> residuals;
            ASSERT_TRUE(count > 1 && count < 100 ? local.Validate(residuals) : true);
            for (std::size_t i = 0; i < 30; ++i) {
                const bool isLeftOut = i % 3 == 0 && !residuals.empty();
                const Point2D p =
                    i % 3 < 2 ? samples[i].GetPoint2D() : origin + Vec2D(random(-900, 1900), random(-900, 1900));
                std::vector<Samples> around(sectors);
                for (std::size_t k = 0; k < samples.size(); ++k) {
                    const Vec2D away = samples[k].GetPoint2D() - p;
                    double turn = std::atan2(away.GetY(), away.GetX()) / (2.0 * kPi) * sectors;
                    if (turn < 0.0) turn += sectors;
                    if ((isLeftOut && k == i) || away.Length() > radius) continue;
                    around[static_cast<std::size_t>(turn)].push_back(samples[k]);
                }
                Samples chosen;
                for (Samples& in : around) {
                    std::stable_sort(in.begin(), in.end(), [&p](const Point3D& a, const Point3D& b) {
                        return a.GetPoint2D().Distance(p) < b.GetPoint2D().Distance(p);
                    });
                    in.resize(std::min<std::size_t>(in.size(), count));
                    chosen.insert(chosen.end(), in.begin(), in.end());
                }
                KrigingSystem system;
                Estimate expected, out;
                if (isLeftOut) {
                    out = {samples[i].GetZ() + residuals[i].error, residuals[i].variance};
                } else {
                    ASSERT_EQ(local.Interpolate(p, out.value, out.variance), !chosen.empty());
                }
                if (chosen.empty()) continue;
                ASSERT_TRUE(hasTrend ? system.BuildWithLinearTrend(kriging, chosen) : system.Build(kriging, chosen));
                ASSERT_TRUE(system.Interpolate(p, expected.value, expected.variance));
                // Beside a strip, a plane over it is not known: the variance says so.
                EXPECT_NEAR(out.value, expected.value, 1e-8);
                EXPECT_NEAR(out.variance, expected.variance, 1e-8 + 1e-10 * expected.variance);
            }
        }
    }
    LocalKriging local;
    const OrdinaryKriging kriging(Model(true, 4.0, 800.0));
    const Samples line = {{0, 0, 1}, {9, 9, 2}, {30, 30, 3}, {50, 50, 5}};
    KrigingSystem onLine;
    EXPECT_FALSE(onLine.BuildWithLinearTrend(kriging, line) || onLine.GetNrOfSamples() > 0);
    const Samples twins = {{0, 0, 1}, {9, 0, 2}, {9, 0, 3}, {80, 0, 4}, {90, 5, 5}};
    Estimate out;
    EXPECT_FALSE(local.Build(kriging, {}, 4) || local.Build(kriging, twins, 0) ||
                 local.Interpolate({}, out.value, out.variance) || local.Build(OrdinaryKriging(nullptr), twins, 2) ||
                 local.Build(kriging, {{0, kNan, 0}}, 1) || local.Build(kriging, twins, {4, 0, 9.0}) ||
                 local.Build(kriging, twins, {4, 65, 9.0}) || local.Build(kriging, twins, {4, 2, kNan}));
    EXPECT_TRUE(local.Build(kriging, twins, 2) && local.Interpolate({85, 0}, out.value, out.variance));
    EXPECT_FALSE(local.Interpolate({9, 1}, out.value, out.variance) ||
                 local.Interpolate({kInfinity, 0}, out.value, out.variance));
    for (int i = 0; i < 2000; ++i) {  // two, and three on a line: no plane, whatever the place rounds to
        const Point3D a(random(0, 9), random(0, 9), 1.0), b(random(0, 9), random(0, 9), 2.0);
        ASSERT_TRUE(local.Build(kriging, {a, b, a + (b - a) * 0.7}, {2U + i % 2U, 1, kInfinity, true}));
        EXPECT_FALSE(local.Interpolate({random(-9, 9), random(-9, 9)}, out.value, out.variance)) << i;
    }
}

TEST(KrigingTest, CopiesShareOneModelAndServeAllThreads) {
    SimpleKriging original(Model(false, 4.0, 1500.0), 95.0);
    const std::weak_ptr<const VariogramModelBase> model = original.GetModel();
    {
        const SimpleKriging copy(original);
        original = SimpleKriging(nullptr, 0.0);
        KrigingSystem system;
        EXPECT_TRUE(system.Build(copy, Scattered(7, Point2D())));
        Concurrently(4, [&](unsigned int i) {
            double values[] = {-1.0, 1.0};
            EXPECT_TRUE(copy.Interpolate({30.0 * i, 40}, Scattered(7, Point2D()), values[0]));
            EXPECT_TRUE(system.Interpolate({30.0 * i, 40}, values[1]));
            EXPECT_NEAR(values[0], values[1], 1e-12);
        });
    }
    EXPECT_TRUE(model.expired());
}

// 15 samples kriged by another program on a grid of 100 x 100; KALVIO_TEST_DATA names the folder that holds both.
TEST(KrigingTest, AgreesWithAnotherProgramOnRealSamples) {
    const char* const folder = std::getenv("KALVIO_TEST_DATA");
    const std::string path = std::string(folder != nullptr ? folder : ".") + "/kriging/kt3d/";
    std::ifstream sampleFile(path + "samples.txt"), answers(path + "answer_exponential.asc");
    if (!sampleFile || !answers) GTEST_SKIP() << path << " is not here";
    Samples samples;
    for (double x, y, z; sampleFile >> x >> y >> z;) samples.emplace_back(x, y, z);
    std::string word;
    for (int i = 0; i < 14; ++i) answers >> word;               // seven named header values
    const OrdinaryKriging kriging(Model(true, 500.0, 1000.0));  // a practical range of 3000
    for (int i = 0; i < 10000; ++i) {
        const Point2D p(1067275.0 + 50.0 * (i % 100), 243934.0 - 25.0 * (i / 100));  // rows from the north
        double answer = 0.0, value = 0.0;
        ASSERT_TRUE(answers >> answer && kriging.Interpolate(p, samples, value));
        ASSERT_NEAR(value, answer, 8e-6);  // the answers have single precision: 7.6e-6 from 64 on
    }
}

}  // namespace
}  // namespace Kalvio::Math
