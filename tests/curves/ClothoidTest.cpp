#include "kalvio/curves/Clothoid.h"

#include "kalvio/core/Matrix2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "support/Concurrently.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

using Sample = IPolyline2DElement::PolylineElementPoint;

constexpr double kPi = 3.141592653589793;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Tolerances kTolerances(1e-4, 1e-10);

// Ends from a start at the origin along +X: the integrals of cos and sin of the direction, by quadrature with 40
// digits.
struct Reference {
    double startRadius, endRadius, parameter, length, x, y, turn;
};
const Reference kReferences[] = {
    {0, 300, 150, 75.0, 74.8828972404903837, 3.12151401026604514, 0.125},
    {0, -300, 150, 75.0, 74.8828972404903837, -3.12151401026604514, -0.125},
    {300, 0, 150, 75.0, 74.6878098843762926, 6.238846329361903, 0.125},
    {-300, 0, 150, 75.0, 74.6878098843762926, -6.238846329361903, -0.125},
    {600, 300, 200, 66.6666666666666667, 66.4063813672703868, 4.92772085918179512, 1.0 / 6.0},
    {300, 600, 200, 66.6666666666666667, 66.3036933514509651, 6.15712328268064261, 1.0 / 6.0},
    {-600, -300, 200, 66.6666666666666667, 66.4063813672703868, -4.92772085918179512, -1.0 / 6.0},
    {-300, -600, 200, 66.6666666666666667, 66.3036933514509651, -6.15712328268064261, -1.0 / 6.0},
    {-25, -100, 30, 27.0, 24.3309209336339931, -10.445669395819226, -0.675},
};

// Both axes exactly, due west from above and below, and the four quadrants.
const Vec2D kDirections[] = {{1, 0},     {0, 1},      {-1, 0.0},    {-1, -0.0}, {0, -1},
                             {0.6, 0.8}, {-0.6, 0.8}, {-0.8, -0.6}, {0.8, -0.6}};

Vec2D Turned(const Vec2D& v, const Vec2D& direction) {
    return {v.GetX() * direction.GetX() - v.GetY() * direction.GetY(),
            v.GetX() * direction.GetY() + v.GetY() * direction.GetX()};
}

// Calls check(clothoid, reference, direction) for all references, directions and origins.
template <class Check>
void ForEachClothoid(Check&& check) {
    for (const Point2D& origin : surveyOrigins) {
        for (const Vec2D& direction : kDirections) {
            for (const Reference& reference : kReferences) {
                SCOPED_TRACE(testing::Message()
                             << "radii " << reference.startRadius << ", " << reference.endRadius << " from "
                             << testing::PrintToString(origin) << " along " << testing::PrintToString(direction));
                check(Clothoid(reference.startRadius, reference.endRadius, reference.parameter, origin, direction),
                      reference, direction);
            }
        }
    }
}

std::vector<Sample> SamplesOf(const Clothoid& clothoid, double step) {
    std::vector<Sample> samples;
    EXPECT_TRUE(clothoid.MakePointsAndTangents(0.0, clothoid.GetLength(), samples, step));
    return samples;
}

TEST(ClothoidTest, SeriesHasTheStatedAccuracy) {
    struct Row {
        double tau, x, y, bound;
    };
    const Row rows[] = {// quadrature of the Fresnel integrals with 40 digits
                        {0.5, 0.97528768820034454, 0.16371404737570059, 2e-16},
                        {1.0, 1.2791904447337526958, 0.43878564027167309, 6e-13},
                        {1.5, 1.3808899724892165293, 0.736425007446963086, 2e-10},
                        {2.0, 1.3351936962943366222, 0.99762371132542130, 1.3e-8},
                        {2.5, 1.1892914936326670572, 1.1800765363152375207, 3.3e-7},
                        {3.0, 0.99438264253358135, 1.2614288571800419886, 4.6e-6}};
    const Clothoid unit(0.0, 1.0, 1.0, Point2D(), Vec2D(1, 0));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.tau);
        EXPECT_THAT(unit.ComputePoint(row.tau, 7), IsNear(Point2D(row.x, row.y), row.bound));
        EXPECT_THAT(unit.ComputePoint(row.tau, 20), IsNear(Point2D(row.x, row.y), 4e-15));
        EXPECT_THAT(unit.ComputePoint(row.tau, 1000), IsNear(Point2D(row.x, row.y), 4e-15));
    }
    const double scale = 150.0 * std::sqrt(1.4);
    const Clothoid wide(0.0, 300.0, 150.0, Point2D(), Vec2D(1, 0));
    EXPECT_THAT(wide.ComputePoint(0.7, 1), IsNear(Point2D(scale, scale * 0.7 / 3.0), 1e-13));
    EXPECT_THAT(wide.ComputePoint(0.7, 0), IsNear(Point2D(), 0.0));
    EXPECT_THAT(wide.ComputePoint(0.0, 7), IsNear(Point2D(), 0.0));
}

TEST(ClothoidTest, EndAndTangentMatchTheIntegratedCurvature) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference& reference, const Vec2D& direction) {
        const Vec2D turn(std::cos(reference.turn), std::sin(reference.turn));
        const Point2D end = clothoid.GetStart() + Turned(Vec2D(reference.x, reference.y), direction);
        EXPECT_NEAR(clothoid.GetLength(), reference.length, 1e-12);
        EXPECT_THAT(clothoid.GetEnd(), IsNear(end, 3e-9));
        EXPECT_THAT(clothoid.GetEndTangent(), IsNear(Turned(turn, direction), 1e-14));

        const std::vector<Sample> samples = SamplesOf(clothoid, 0.7);
        EXPECT_THAT(samples.front().point, IsNear(clothoid.GetStart(), 1e-12));
        EXPECT_THAT(samples.front().tangent, IsNear(direction, 1e-15));
        EXPECT_THAT(samples.back().point, IsNear(clothoid.GetEnd(), 1e-9));
        EXPECT_THAT(samples.back().tangent, IsNear(clothoid.GetEndTangent(), 1e-14));
        // A chord of length c differs from its arc by k^2 c^3 / 24, and its direction from the mean tangent by c^2 /
        // (12 A^2).
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const Vec2D chord = samples[i].point - samples[i - 1].point;
            EXPECT_NEAR(chord.Length(), samples[i].station - samples[i - 1].station, 3e-5);
            const Vec2D mean = samples[i].tangent + samples[i - 1].tangent;
            EXPECT_NEAR(chord.PerpDotProduct(mean), 0.0, 1e-4);
            const double k =
                0.5 * (clothoid.GetCurvature(samples[i].station) + clothoid.GetCurvature(samples[i - 1].station));
            EXPECT_NEAR(samples[i - 1].tangent.PerpDotProduct(samples[i].tangent),
                        std::sin(k * (samples[i].station - samples[i - 1].station)), 1e-14);
        }
    });
}

TEST(ClothoidTest, MatricesCarryTheLocalFrame) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference&, const Vec2D&) {
        double tau1 = 0.0, length1 = 0.0, tau2 = 0.0, length2 = 0.0;
        clothoid.ComputeStartAndEndTausAndLengths(tau1, length1, tau2, length2, 1e-10);
        const Matrix2D toWorld = clothoid.GetLocalToWorldCoordinatesMatrix();
        const Matrix2D toLocal = clothoid.GetWorldToLocalCoordinatesMatrix();
        EXPECT_THAT(clothoid.ComputePoint(tau1, 7) * toWorld, IsNear(clothoid.GetStart(), 4e-9));
        EXPECT_THAT(clothoid.ComputePoint(tau2, 7) * toWorld, IsNear(clothoid.GetEnd(), 4e-9));
        EXPECT_THAT(clothoid.GetEnd() * toLocal, IsNear(clothoid.ComputePoint(tau2, 7), 4e-9));
        EXPECT_NEAR(std::abs(length2 - length1), clothoid.GetLength(), 1e-12);
        EXPECT_THAT(clothoid.ComputePointFromRadius(clothoid.GetEndRadius(), 7), IsNear(clothoid.GetEnd(), 0.0));
        EXPECT_THAT(clothoid.ComputePointFromRadius(clothoid.GetStartRadius(), 7), IsNear(clothoid.GetStart(), 0.0));
    });
}

TEST(ClothoidTest, StationsRoundTripAndReverse) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference& reference, const Vec2D&) {
        const std::unique_ptr<Clothoid> reversed(clothoid.Clone());
        reversed->Reverse();
        EXPECT_EQ(reversed->GetStartRadius(), -reference.endRadius);
        EXPECT_THAT(reversed->GetEnd(), IsNear(clothoid.GetStart(), 2e-9));
        for (const double share : {0.0, 0.013, 0.5, 0.77, 1.0}) {
            const double station = share * clothoid.GetLength();
            Sample sample, back;
            ASSERT_TRUE(clothoid.MakePointAndTangentAt(station, sample));
            ASSERT_TRUE(reversed->MakePointAndTangentAt(clothoid.GetLength() - station, back));
            EXPECT_THAT(back.point, IsNear(sample.point, 2e-9));
            EXPECT_THAT(back.tangent, IsNear(-sample.tangent, 1e-13));

            const double tolerance = 1e-6;
            double fromStart = -1.0, fromEnd = -1.0;
            ASSERT_TRUE(clothoid.GetLengthFromStartPoint(sample.point, fromStart, tolerance));
            ASSERT_TRUE(clothoid.GetLengthFromEndPoint(sample.point, fromEnd, tolerance));
            EXPECT_NEAR(fromStart, station, tolerance);
            EXPECT_NEAR(fromEnd, clothoid.GetLength() - station, tolerance);
            Vec2D tangent;
            ASSERT_TRUE(clothoid.ComputeTangent(sample.point, tangent, kTolerances));
            EXPECT_THAT(tangent, IsNear(sample.tangent, 1e-5));
            const Point2D beside = sample.point + sample.tangent.GetNormalVector(true) * 2e-4;
            EXPECT_FALSE(clothoid.IsPointOnGeometry(beside, kTolerances));
            EXPECT_FALSE(clothoid.GetLengthFromStartPoint(beside, fromStart, tolerance));
            EXPECT_NEAR(fromStart, station, tolerance) << "untouched";
            Sample nearest;
            ASSERT_TRUE(clothoid.GetNearestPoint(beside, 0.0, clothoid.GetLength(), nearest));
            EXPECT_NEAR(nearest.station, station, 4e-9);
        }
    });
}

double LeastSampledDistance(const Clothoid& clothoid, const Point2D& query) {
    double least = kInfinity;
    for (const Sample& sample : SamplesOf(clothoid, clothoid.GetLength() / 20000.0)) {
        least = std::min(least, sample.point.Distance(query));
    }
    return least;
}

TEST(ClothoidTest, NearestPointIsTheGlobalOne) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240611));
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int i = 0; i < 120; ++i) {
        // Tangent angles up to 3: several feet, and evolutes with cusps nearby.
        const double parameter = 20.0 + 180.0 * unit(random);
        const double tau = 0.05 + 2.95 * unit(random);
        const double small = parameter / std::sqrt(2.0 * tau);
        const double large = i % 3 == 0 ? 0.0 : small * (1.0 + std::pow(unit(random), 4.0));
        const double side = i % 2 == 0 ? 1.0 : -1.0;
        const Vec2D direction(std::cos(0.1 * i), std::sin(0.1 * i));
        Clothoid clothoid(side * small, side * large, parameter, surveyOrigins[0], direction);
        if (i % 5 < 2) clothoid.Reverse();
        Sample on;
        ASSERT_TRUE(clothoid.MakePointAndTangentAt(clothoid.GetLength() * unit(random), on));
        // From nothing to beyond the centre of curvature, both sides.
        const double offset =
            i % 4 == 0 ? 1.0 / clothoid.GetCurvature(on.station) : 3.0 * small * (2.0 * unit(random) - 1.0);
        if (!(std::abs(offset) < 1e4)) continue;
        const Point2D query = on.point + on.tangent.GetNormalVector(true) * offset;
        SCOPED_TRACE(testing::Message() << "case " << i << ", query " << testing::PrintToString(query));
        Sample nearest;
        ASSERT_TRUE(clothoid.GetNearestPoint(query, 0.0, clothoid.GetLength(), nearest));
        EXPECT_LE(nearest.point.Distance(query), LeastSampledDistance(clothoid, query) + (tau < 1.4 ? 1e-9 : 1e-6));
        Sample again;
        ASSERT_TRUE(clothoid.MakePointAndTangentAt(nearest.station, again));
        EXPECT_THAT(again.point, IsNear(nearest.point, 0.0));
        if (tau < 1.4 && nearest.station > 0.0 && nearest.station < clothoid.GetLength()) {
            EXPECT_NEAR((query - nearest.point).DotProduct(nearest.tangent), 0.0, 1e-8);
        }
    }
}

TEST(ClothoidTest, BoxIsTight) {
    for (double angle = 0.0; angle < 6.3; angle += 0.37) {
        for (const double radius : {20.0, -20.0, 60.0}) {
            const Clothoid clothoid(0.0, radius, 49.0, surveyOrigins[1], Vec2D(std::cos(angle), std::sin(angle)));
            const std::vector<Sample> samples = SamplesOf(clothoid, 0.002);
            Point2D low = samples[0].point, high = low;
            for (const Sample& sample : samples) {
                low = Point2D(std::min(low.GetX(), sample.point.GetX()), std::min(low.GetY(), sample.point.GetY()));
                high = Point2D(std::max(high.GetX(), sample.point.GetX()), std::max(high.GetY(), sample.point.GetY()));
            }
            const double seriesError =
                radius == 60.0 ? 1e-8 : 3e-3;  // tau 3 costs 2 x 4.6e-6 A twice, once in each term
            const BoundingBox2D box = clothoid.GetBoundingBox();
            EXPECT_TRUE(box.IsPointInside(low, 1e-9) && box.IsPointInside(high, 1e-9));
            EXPECT_THAT(box.GetMinPoint(), IsNear(low, seriesError));
            EXPECT_THAT(box.GetMaxPoint(), IsNear(high, seriesError));
        }
    }
}

TEST(ClothoidTest, PiecesAreClothoidsOfTheSameParameter) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference& reference, const Vec2D&) {
        const double length = clothoid.GetLength();
        std::vector<Point2D> points;
        for (const double share : {0.75, 0.25}) {
            Sample sample;
            ASSERT_TRUE(clothoid.MakePointAndTangentAt(share * length, sample));
            points.push_back(sample.point);
        }
        points.push_back(clothoid.GetStart() + Vec2D(1e3, 1e3));  // not on the curve
        points.push_back(clothoid.GetEnd());                      // at the end nothing is cut
        std::vector<IGeometry*> out;
        Clothoid first(clothoid);
        ASSERT_TRUE(first.BreakAt(points, out, true, Tolerances(1e-6, 1e-10)));
        ASSERT_EQ(out.size(), 2u);
        const std::unique_ptr<Clothoid> second(static_cast<Clothoid*>(out[0])), third(static_cast<Clothoid*>(out[1]));
        const Clothoid* const pieces[] = {&first, second.get(), third.get()};
        const double lengths[] = {0.25, 0.5, 0.25};
        Point2D joint = clothoid.GetStart();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(pieces[i]->GetParameter(), reference.parameter);
            EXPECT_NEAR(pieces[i]->GetLength(), lengths[i] * length, 2e-6);
            EXPECT_THAT(pieces[i]->GetStart(), IsNear(joint, 2e-9));
            Sample middle;
            ASSERT_TRUE(pieces[i]->MakePointAndTangentAt(0.5 * pieces[i]->GetLength(), middle));
            EXPECT_THAT(clothoid.GetNearestPoint(middle.point, kTolerances), IsNear(middle.point, 3e-9));
            joint = pieces[i]->GetEnd();
        }
        EXPECT_THAT(joint, IsNear(clothoid.GetEnd(), 4e-9));
    });
}

TEST(ClothoidTest, ExtensionStaysOnTheClothoid) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference& reference, const Vec2D&) {
        // A part of the clothoid, given the foot points of the ends it lost, grows back to the whole.
        const double length = clothoid.GetLength();
        std::map<double, const Point2D> breaks;
        breaks.emplace(0.2 * length, Point2D());
        breaks.emplace(0.9 * length, Point2D());
        std::vector<IGeometry*> out;
        ASSERT_TRUE(clothoid.BreakAtPreSorted(breaks, 0.0, out, kTolerances));
        ASSERT_EQ(out.size(), 3u);
        std::vector<std::unique_ptr<Clothoid>> pieces;
        for (IGeometry* const piece : out) pieces.emplace_back(static_cast<Clothoid*>(piece));
        Clothoid& part = *pieces[1];
        const Vec2D beside = clothoid.GetEndTangent().GetNormalVector(reference.turn < 0.0) * 3.0;
        ASSERT_TRUE(part.ExtendEnd(clothoid.GetEnd() + beside, kTolerances));
        EXPECT_THAT(part.GetEnd(), IsNear(clothoid.GetEnd(), 1e-8));
        ASSERT_TRUE(part.ExtendStart(clothoid.GetStart(), kTolerances));
        EXPECT_TRUE(part.IsEqualTo(clothoid, 1e-6));
        // Beyond the inflection point there is none of it; a straight end has it there.
        if (reference.endRadius == 0.0) {
            EXPECT_FALSE(part.ExtendEnd(clothoid.GetEnd() + clothoid.GetEndTangent(), kTolerances));
            EXPECT_TRUE(part.IsEqualTo(clothoid, 1e-6));
        }
        EXPECT_FALSE(part.ExtendEnd(clothoid.GetStart(), kTolerances)) << "nothing would be left";
    });
}

TEST(ClothoidTest, SamplingHitsTheRangeOnce) {
    const Clothoid clothoid(0.0, 225.0, 150.0, Point2D(), Vec2D(1, 0));  // 100 long
    struct Row {
        const char* why;
        double from, to, step;
        std::size_t count;
    };
    const Row rows[] = {
        {"a divisor of the length, no doubled end", 0, 100, 0.1, 1001},
        {"a remainder: the end itself follows", 0, 100, 30, 5},
        {"inside", 10, 35, 10, 4},
        {"clipped to the curve", -50, 500, 50, 3},
        {"one station", 100, 100, 1, 1},
        {"step beyond the range", 0, 10, 1e9, 2},
        {"beyond the end", 100.1, 200, 1, 0},
        {"before the start", -2, -1, 0.1, 0},
        {"backwards", 50, 40, 1, 0},
        {"no step", 0, 100, 0, 0},
        {"negative step", 0, 100, -1, 0},
        {"NaN step", 0, 100, kNan, 0},
        {"NaN from", kNan, 100, 1, 0},
        {"more samples than any memory", 0, 100, 1e-300, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<Sample> samples;
        std::list<Point2D> points;
        std::list<double> lengths;
        LineString2D lineString;
        EXPECT_EQ(clothoid.MakePointsAndTangents(row.from, row.to, samples, row.step), row.count > 0);
        EXPECT_EQ(clothoid.MakeLineString(row.from, row.to, lengths, points, row.step), row.count > 0);
        EXPECT_EQ(clothoid.MakeLineString(row.from, row.to, lineString, row.step), row.count > 0);
        ASSERT_EQ(samples.size(), row.count);
        EXPECT_EQ(points.size(), row.count);
        EXPECT_EQ(lengths.size(), row.count);
        if (row.count == 0) continue;
        EXPECT_EQ(samples.back().station, std::min(row.to, 100.0));
        EXPECT_EQ(lengths.back(), samples.back().station);
        EXPECT_THAT(points.back(), IsNear(samples.back().point, 0.0));
    }
}

TEST(ClothoidTest, ChordsKeepTheHeight) {
    ForEachClothoid([](const Clothoid& clothoid, const Reference&, const Vec2D&) {
        for (const double height : {0.001, 0.3}) {
            std::vector<Sample> samples;
            ASSERT_TRUE(clothoid.MakePointsAndTangentsUsingHeight(0.0, clothoid.GetLength(), samples, height));
            EXPECT_EQ(samples.back().station, clothoid.GetLength());
            double work = 0.0;  // chords of exactly that height: the integral of sqrt(k / (8 height))
            for (std::size_t i = 1; i < samples.size(); ++i) {
                const Vec2D chord = (samples[i].point - samples[i - 1].point).Normalize();
                for (const double share : {0.25, 0.5, 0.6, 0.75}) {
                    Sample inside;
                    const double a = samples[i - 1].station, b = samples[i].station;
                    ASSERT_TRUE(clothoid.MakePointAndTangentAt(a + share * (b - a), inside));
                    EXPECT_LE(std::abs(chord.PerpDotProduct(inside.point - samples[i - 1].point)),
                              height * (1.0 + 1e-6));
                    work +=
                        0.25 * (b - a) * std::sqrt(std::abs(clothoid.GetCurvature(inside.station)) / (8.0 * height));
                }
            }
            EXPECT_LE(static_cast<double>(samples.size()), 1.35 * work + 4.0) << "no more samples than it takes";
        }
    });
}

TEST(ClothoidTest, StaticFunctionsFollowTheirDefinitions) {
    EXPECT_EQ(Clothoid::ComputeParameter(300.0, 75.0), 150.0);
    EXPECT_EQ(Clothoid::ComputeParameter(300.0, 300.0, 75.0), 0.0);
    EXPECT_EQ(Clothoid::ComputeParameter(0.0, -300.0, 75.0), 150.0);
    EXPECT_EQ(Clothoid::ComputeParameter(300.0, 0.0, 75.0), 150.0);
    EXPECT_NEAR(Clothoid::ComputeParameter(600.0, 300.0, 200.0 / 3.0), 200.0, 1e-12);
    EXPECT_EQ(Clothoid::ComputeTauFromLength(75.0, 150.0, 1e-10), 0.125);
    EXPECT_EQ(Clothoid::ComputeTauFromLength(75.0, 0.0009765625, 9.5367431640625e-07), 0.0)
        << "A^2 exactly at the tolerance is zero";
    EXPECT_EQ(Clothoid::ComputeTauFromRadius(-300.0, 150.0, 1e-10), 0.125);
    EXPECT_EQ(Clothoid::ComputeTauFromRadius(0.0, 150.0, 1e-10), 0.0);
    EXPECT_EQ(Clothoid::ComputeLength(-300.0, 150.0), -75.0);
    EXPECT_EQ(Clothoid::ComputeRadius(0.0, 150.0), 0.0);
    double tau = -1.0, value = -1.0;
    Clothoid::ComputeTauAndLength(0.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == -1.0 && value == -1.0) << "a straight leaves the outputs";
    Clothoid::ComputeTauAndLength(-300.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == 0.125 && value == -75.0);
    Clothoid::ComputeTauAndRadius(75.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == 0.125 && value == 300.0);
    Clothoid::ComputeTauAndRadius(0.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == 0.0 && value == 0.0) << "preset to 0";
    EXPECT_THAT(Clothoid::ComputeTangentAtRadius(-300.0, 150.0, 1e-10),
                IsNear(Vec2D(std::cos(0.125), std::sin(0.125)), 1e-16));
}

TEST(ClothoidTest, RadiusFormulasOfTheEnds) {
    const Clothoid egg(600.0, 300.0, 200.0, Point2D(), Vec2D(1, 0));
    EXPECT_NEAR(egg.GetRadiusFromStart(200.0 / 3.0), 300.0, 1e-9);
    EXPECT_NEAR(egg.GetRadiusFromEnd(200.0 / 3.0), 600.0, 1e-9);
    EXPECT_NEAR(egg.GetLengthFromStart(400.0), 100.0 - 40000.0 / 600.0, 1e-12);
    const Clothoid in(0.0, 300.0, 150.0, Point2D(), Vec2D(1, 0));
    EXPECT_NEAR(in.GetRadiusFromStart(50.0), -450.0, 1e-9) << "a straight counts as radius 0 in the order";
    EXPECT_NEAR(in.GetCurvature(50.0), 1.0 / 450.0, 1e-15);
    // Beyond the start, seen from the end, and between the ends: one clothoid.
    const Clothoid longer(1200.0, 300.0, 200.0, egg.ComputePointFromRadius(1200.0, 7), Vec2D(1, 0));
    EXPECT_NEAR(longer.GetStart().Distance(egg.GetStart()), 33.33, 0.01);
    EXPECT_THAT(egg.GetNearestPoint(egg.ComputePointFromRadius(400.0, 7), kTolerances),
                IsNear(egg.ComputePointFromRadius(400.0, 7), 1e-12));
    // Equal radii: no length, and the end tangent turned by 2 tau for positive ones.
    const Clothoid positive(300.0, 300.0, 150.0, Point2D(7, 8), Vec2D(1, 0));
    EXPECT_EQ(positive.GetLength(), 0.0);
    EXPECT_THAT(positive.GetEndTangent(), IsNear(Vec2D(std::cos(0.25), std::sin(0.25)), 1e-15));
}

TEST(ClothoidTest, EndIsCachedAndRefinedOnRequest) {
    Clothoid steep(0.0, 40.8248290463863, 100.0, Point2D(), Vec2D(1, 0));  // tau 3
    const Point2D seven = steep.GetEnd();
    EXPECT_THAT(seven, IsNear(Point2D(99.438264253358134976, 126.14288571800419886), 4.6e-4));
    EXPECT_GT(seven.Distance(steep.GetEnd(20)), 4e-4);
    EXPECT_THAT(steep.GetEnd(), IsNear(Point2D(99.438264253358134976, 126.14288571800419886), 1e-11)) << "kept";
    EXPECT_THAT(steep.GetEnd(7), IsNear(seven, 0.0));
    steep.SetStart(Point2D(1, 2));
    EXPECT_THAT(steep.GetEnd(), IsNear(seven + Vec2D(1, 2), 1e-13));
    steep.SetStartTangent(Vec2D(0, 1));
    EXPECT_THAT(steep.GetEnd(), IsNear(Point2D(1.0 - seven.GetY(), 2.0 + seven.GetX()), 1e-12));
    steep.SetEndRadius(0.0);
    EXPECT_THAT(steep.GetEnd(), IsNear(Point2D(1, 2), 0.0));
}

TEST(ClothoidTest, WhatIsNoClothoidAnswersFalse) {
    struct Row {
        const char* why;
        Clothoid clothoid;
        bool hasStart;  // it is just its start point
    };
    const Point2D start(7, 8);
    const Vec2D east(1, 0);
    const Row rows[] = {
        {"opposite radii", Clothoid(300, -300, 150, start, east), false},
        {"negative parameter", Clothoid(0, 300, -150, start, east), false},
        {"NaN radius", Clothoid(0, kNan, 150, start, east), false},
        {"NaN tangent", Clothoid(0, 300, 150, start, Vec2D(kNan, 0)), false},
        {"NaN start", Clothoid(0, 300, 150, Point2D(kNan, 0), east), false},
        {"infinite parameter", Clothoid(0, 300, kInfinity, start, east), false},
        {"tangent angle far beyond the series", Clothoid(0, 1e-3, 150, start, east), false},
        {"all zero", Clothoid(), true},
        {"no parameter", Clothoid(0, 300, 0, start, east), true},
        {"equal radii", Clothoid(300, 300, 150, start, east), true},
        {"both straight", Clothoid(0, 0, 150, start, east), true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Clothoid clothoid(row.clothoid);
        const Point2D from = clothoid.GetStart();
        std::vector<Sample> samples;
        std::vector<IGeometry*> out;
        Sample nearest;
        double length = -1.0;
        EXPECT_EQ(clothoid.MakePointsAndTangents(0.0, 10.0, samples, 1.0), row.hasStart);
        EXPECT_EQ(samples.size(), row.hasStart ? 1u : 0u);
        EXPECT_EQ(clothoid.GetLengthFromStartPoint(from, length, 1e-4), row.hasStart);
        EXPECT_EQ(length, row.hasStart ? 0.0 : -1.0);
        EXPECT_EQ(clothoid.GetNearestPoint(Point2D(1, 1), 0.0, 1.0, nearest), row.hasStart);
        EXPECT_FALSE(clothoid.BreakAt({start, Point2D(10, 10)}, out, false, kTolerances));
        EXPECT_FALSE(clothoid.ExtendEnd(Point2D(20, 20), kTolerances));
        (void)clothoid.GetBoundingBox3D();
        clothoid.Reverse();
        if (row.hasStart) {
            EXPECT_THAT(clothoid.GetEnd(), IsNear(from, 0.0));
        }
    }
    const Clothoid opposite(300, -300, 150, start, east);
    EXPECT_EQ(opposite.GetLength(), 150.0);
    EXPECT_TRUE(std::isfinite(opposite.GetEnd().GetX()));
    const Clothoid good(0, 300, 150, start, east);
    double length = -1.0;
    for (const double bad : {kNan, kInfinity, -kInfinity}) {
        EXPECT_FALSE(good.GetLengthFromStartPoint(Point2D(bad, 1.0), length, 1e-4));
        EXPECT_FALSE(good.IsPointOnGeometry(Point2D(0.0, bad), kTolerances));
        EXPECT_THAT(good.GetNearestPoint(Point2D(bad, 0.0), kTolerances), IsNear(start, 0.0));
    }
    // Numbers that overflow inside: the search ends, wherever.
    const Clothoid huge(1.1063927031522055e+74, 9.633714431665e-310, 1.1063927031522055e+74,
                        Point2D(1.1063927031522055e+74, 1.1063925353722221e+74), Vec2D(1.1063494003532771e+74, 1, 1));
    (void)huge.GetNearestPoint(Point2D(-4.926807924003149e+255, 2.2906209232063245e+77), kTolerances);
    EXPECT_FALSE(good.GetLengthFromStartPoint(Point2D(20, 8.02), length, kNan));
    EXPECT_FALSE(good.GetLengthFromStartPoint(Point2D(20, 8.02), length, 0.0));
    EXPECT_EQ(length, -1.0);
}

TEST(ClothoidTest, EqualityIsStrictInEveryField) {
    const Clothoid a(0, 300, 150, Point2D(1, 2), Vec2D(1, 0));
    EXPECT_TRUE(a.IsEqualTo(static_cast<const IGeometry&>(Clothoid(0, 300, 150, Point2D(1, 2), Vec2D(1, 0))), 1e-9));
    EXPECT_FALSE(a.IsEqualTo(Clothoid(0, 300.25, 150, Point2D(1, 2), Vec2D(1, 0)), 0.25));
    EXPECT_TRUE(a.IsEqualTo(Clothoid(0.125, 300, 150.125, Point2D(1.125, 2), Vec2D(1, 0.125)), 0.25));
    EXPECT_FALSE(a.IsEqualTo(static_cast<const IGeometry&>(Point2D(1, 2)), 1e9));
}

TEST(ClothoidTest, ConstCallsRunConcurrently) {
    const Clothoid shared(0.0, 300.0, 150.0, Point2D(385000, 6672000), Vec2D(-1, 0));
    const Point2D end = shared.GetEnd();
    std::vector<double> stations(8, -1.0);
    Concurrently(8, [&](unsigned int i) {
        (void)shared.GetBoundingBox2D();
        (void)shared.GetNearestPoint(end, kTolerances);
        shared.GetLengthFromStartPoint(shared.GetEnd(), stations[i], 1e-6);
    });
    for (const double station : stations) EXPECT_NEAR(station, 75.0, 1e-6);
}

}  // namespace
}  // namespace Kalvio::Math
