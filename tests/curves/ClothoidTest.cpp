#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

// Ends from a start at the origin along +X: the integrals of cos and sin of the direction, by quadrature with 40
// digits.
struct Reference {
    double startRadius, endRadius, parameter, length, x, y, turn;
    Clothoid Make(const Point2D& origin, const Vec2D& direction) const {
        return {startRadius, endRadius, parameter, origin, direction};
    }
};
const Reference kReferences[] = {
    {0, 300, 150, 75.0, 74.8828972404903837, 3.12151401026604514, 0.125},
    {300, 0, 150, 75.0, 74.6878098843762926, 6.238846329361903, 0.125},
    {-300, 0, 150, 75.0, 74.6878098843762926, -6.238846329361903, -0.125},
    {600, 300, 200, 66.6666666666666667, 66.4063813672703868, 4.92772085918179512, 1.0 / 6.0},
    {300, 600, 200, 66.6666666666666667, 66.3036933514509651, 6.15712328268064261, 1.0 / 6.0},
    {-300, -600, 200, 66.6666666666666667, 66.3036933514509651, -6.15712328268064261, -1.0 / 6.0},
    {-25, -100, 30, 27.0, 24.3309209336339931, -10.445669395819226, -0.675},
};

TEST(ClothoidTest, SeriesHasTheStatedAccuracy) {
    const std::tuple<double, double, double, double> rows[] = {
        // quadrature of the Fresnel integrals with 40 digits
        {2.0, 1.3351936962943366222, 0.99762371132542130, 1.3e-8},
        {3.0, 0.99438264253358135, 1.2614288571800419886, 4.6e-6},
        {5.0, 0.58217420960192209499, 0.82585980024003497894, 7.4e-3}};
    const Clothoid unit(0.0, 1.0, 1.0, Point2D(), Vec2D(1, 0));
    for (const auto& [tau, x, y, bound] : rows) {
        SCOPED_TRACE(tau);
        EXPECT_THAT(unit.ComputePoint(tau, 7), IsNear(Point2D(x, y), bound));
        EXPECT_GT(unit.ComputePoint(tau, 7).Distance(Point2D(x, y)), 0.85 * bound);
        for (const int terms : {20, 1000}) EXPECT_THAT(unit.ComputePoint(tau, terms), IsNear(Point2D(x, y), 1e-14));
    }
    const double scale = 150.0 * std::sqrt(1.4);
    const Clothoid wide(0.0, 300.0, 150.0, Point2D(), Vec2D(1, 0));
    EXPECT_THAT(wide.ComputePoint(0.7, 1), IsNear(Point2D(scale, scale * 0.7 / 3.0), 1e-13));
    for (const double tau : {0.7, 0.0}) EXPECT_THAT(wide.ComputePoint(tau, tau == 0.0 ? 7 : 0), IsNear(Point2D(), 0.0));
}

TEST(ClothoidTest, EndsSamplesAndFramesMatchTheIntegratedCurvature) {
    ForEachPlaced(kReferences, [](const Clothoid& clothoid, const Reference& reference, const Vec2D& direction) {
        CheckEnds(clothoid, reference, direction, 1e-14);
        EXPECT_EQ(NearestOn(clothoid, clothoid.GetEnd() + clothoid.GetEndTangent()), clothoid.GetEnd())
            << "a joint is one point to the last digit, or chains credit it to the wrong element";
        std::vector<Sample> samples;  // far apart and close together
        for (const double parts : {3.0, 41.0})
            EXPECT_TRUE(
                clothoid.MakePointsAndTangents(0.0, clothoid.GetLength(), samples, clothoid.GetLength() / parts));
        EXPECT_EQ(samples.size(), 46u);
        for (const Sample& sample : samples) {
            EXPECT_THAT(sample.point, IsNear(At(clothoid, sample.station).point, 0.0));
            EXPECT_THAT(sample.tangent, IsNear(At(clothoid, sample.station).tangent, 2e-15));
        }
        double tau1 = 0.0, length1 = 0.0, tau2 = 0.0, length2 = 0.0;
        clothoid.ComputeStartAndEndTausAndLengths(tau1, length1, tau2, length2, 1e-10);
        const Matrix2D toWorld = clothoid.GetLocalToWorldCoordinatesMatrix();
        const Point2D end = clothoid.ComputePoint(tau2, 7);
        EXPECT_THAT(clothoid.ComputePoint(tau1, 7) * toWorld, IsNear(clothoid.GetStart(), 4e-9));
        EXPECT_THAT(end * toWorld, IsNear(clothoid.GetEnd(), 4e-9));
        EXPECT_THAT(clothoid.GetEnd() * clothoid.GetWorldToLocalCoordinatesMatrix(), IsNear(end, 4e-9));
        EXPECT_NEAR(std::abs(length2 - length1), clothoid.GetLength(), 1e-12);
        if (reference.endRadius != 0.0) return;
        Clothoid changed(clothoid);
        EXPECT_FALSE(changed.ExtendEnd(clothoid.GetEnd() + clothoid.GetEndTangent(), kTolerances)) << "no more of it";
        EXPECT_TRUE(changed.IsEqualTo(static_cast<const IGeometry&>(clothoid), 4e-9));
    });
}

TEST(ClothoidTest, SamplingHitsTheRangeOnce) {
    const std::tuple<const char*, double, double, double, std::size_t> rows[] = {
        {"a divisor of the length, no doubled end", 0, 100, 0.01, 10001},
        {"a remainder: the end itself follows", 0, 100, 30, 5},
        {"clipped to the curve", -50, 500, 50, 3},
        {"one station", 100, 100, 1, 1},
        {"beyond the end", 100.1, 200, 1, 0},
        {"before the start", -2, -1, 0.1, 0},
        {"backwards", 50, 40, 1, 0},
        {"no step", 0, 100, 0, 0},
        {"NaN step", 0, 100, kNan, 0},
        {"NaN from", kNan, 100, 1, 0},
        {"more samples than are asked for in earnest", 0, 100, 1e-5, 0},
    };
    const auto check = [&rows](const auto& curve) {
        for (const auto& [why, from, to, step, count] : rows) {
            SCOPED_TRACE(why);
            std::vector<Sample> samples;
            LineString2D lineString;
            EXPECT_EQ(curve.MakePointsAndTangents(from, to, samples, step), count > 0);
            EXPECT_EQ(curve.MakeLineString(from, to, lineString, step), count > 0);
            ASSERT_TRUE(samples.size() == count && lineString.GetSize() == count);
            if (count == 0) continue;
            EXPECT_EQ(samples.back().station, std::min(to, 100.0));
            EXPECT_EQ(lineString.GetEnd(), samples.back().point);
        }
        CheckAppending(curve, 0.0, 10.0);
    };
    const Clothoid clothoid(0.0, 225.0, 150.0, Point2D(), Vec2D(1, 0));
    check(clothoid);
    check(Spiral2D(Spiral2D::Spiral2DType::Sine, 0.0, 225.0, 100.0, Point2D(), Vec2D(1, 0)));
    check(Arc2D(Point2D(50, 0), Point2D(0, 0), Angle(-2.0)));
    std::vector<Sample> samples;
    for (const double bad : {-1e-9, 100.001, kNan})
        EXPECT_FALSE(clothoid.MakePointsAndTangentsAt(std::array{1.0, bad}, samples) || !samples.empty());
    std::list<Point2D> points;
    std::list<double> lengths;
    EXPECT_FALSE(clothoid.MakeLineString(100.1, 200.0, lengths, points, 1.0));
    EXPECT_TRUE(clothoid.MakeLineString(-50.0, 500.0, lengths, points, 30.0));
    ASSERT_TRUE(clothoid.MakePointsAndTangentsAt(std::vector(lengths.begin(), lengths.end()), samples));
    ASSERT_TRUE(points.size() == 5 && lengths.size() == 5 && samples.size() == 5);
    EXPECT_EQ(points.back(), samples.back().point);
    EXPECT_EQ(samples.back().station, 100.0);
}

TEST(ClothoidTest, FormulasFollowTheirDefinitions) {
    for (const auto& [r1, r2, a] : {std::tuple(300.0, 300.0, 0.0), {0.0, -300.0, 150.0}, {300.0, 0.0, 150.0}})
        EXPECT_EQ(Clothoid::ComputeParameter(r1, r2, 75.0), a);
    EXPECT_EQ(Clothoid::ComputeParameter(300.0, 75.0), 150.0);
    EXPECT_NEAR(Clothoid::ComputeParameter(600.0, 300.0, 200.0 / 3.0), 200.0, 1e-12);
    EXPECT_EQ(Clothoid::ComputeTauFromLength(75.0, 150.0, 1e-10), 0.125);
    EXPECT_EQ(Clothoid::ComputeTauFromLength(75.0, 0x1p-10, 0x1p-20), 0.0) << "A^2 exactly at the tolerance is zero";
    for (const double r : {-300.0, 0.0})
        EXPECT_EQ(Clothoid::ComputeTauFromRadius(r, 150.0, 1e-10), r == 0.0 ? 0.0 : 0.125);
    EXPECT_TRUE(Clothoid::ComputeLength(-300.0, 150.0) == -75.0 && Clothoid::ComputeRadius(0.0, 150.0) == 0.0);
    double tau = -1.0, value = -1.0;
    Clothoid::ComputeTauAndLength(0.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == -1.0 && value == -1.0) << "a straight leaves the outputs";
    Clothoid::ComputeTauAndLength(-300.0, 150.0, tau, value, 1e-10);
    EXPECT_TRUE(tau == 0.125 && value == -75.0);
    for (const double length : {75.0, 0.0}) {
        Clothoid::ComputeTauAndRadius(length, 150.0, tau, value, 1e-10);
        EXPECT_TRUE(tau == length / 600.0 && value == 4.0 * length) << "preset to 0";
    }
    EXPECT_THAT(Clothoid::ComputeTangentAtRadius(-300.0, 150.0, 1e-10),
                IsNear(Vec2D(std::cos(0.125), std::sin(0.125)), 1e-16));

    const Point2D o;
    const Vec2D east(1, 0);
    const Clothoid egg(600.0, 300.0, 200.0, o, east), in(0.0, 300.0, 150.0, o, east);
    EXPECT_NEAR(egg.GetRadiusFromStart(200.0 / 3.0), 300.0, 1e-9);
    EXPECT_NEAR(egg.GetRadiusFromEnd(200.0 / 3.0), 600.0, 1e-9);
    EXPECT_NEAR(egg.GetLengthFromStart(400.0), 100.0 - 40000.0 / 600.0, 1e-12);
    EXPECT_NEAR(in.GetRadiusFromStart(50.0), -450.0, 1e-9) << "a straight counts as radius 0 in the order";
    // Further out on the same clothoid: as far from its start as from the end of the one between the two radii.
    const Clothoid outer(1200.0, 600.0, 200.0, o, east);
    EXPECT_NEAR(egg.ComputePointFromRadius(1200.0, 7).Distance(o), outer.GetEnd().Distance(o), 1e-9);
    // Equal radii: no length, and the end tangent turned by 2 tau for positive ones.
    const Clothoid positive(300.0, 300.0, 150.0, o, east);
    EXPECT_EQ(positive.GetLength(), 0.0);
    EXPECT_THAT(positive.GetEndTangent(), IsNear(Vec2D(std::cos(0.25), std::sin(0.25)), 1e-15));
}

TEST(ClothoidTest, EndIsTheSevenTermPointWhateverElseIsAsked) {
    Clothoid steep(0.0, 40.8248290463863, 100.0, Point2D(), Vec2D(1, 0));  // tau 3
    const Point2D seven = steep.GetEnd(), exact(99.438264253358134976, 126.14288571800419886);
    EXPECT_THAT(seven, IsNear(exact, 4.6e-4));
    EXPECT_THAT(steep.GetEnd(20), IsNear(exact, 1e-11));
    EXPECT_TRUE(steep.GetEnd(7) == seven && seven.Distance(steep.GetEnd(1)) > 10.0);
    Clothoid reversed(steep);
    EXPECT_EQ(reversed.GetEnd(), seven) << "of a copy";
    reversed.Reverse();
    EXPECT_TRUE(reversed.GetStart() == seven && steep.GetEnd() == seven);
    steep.SetStart(Point2D(1, 2));
    EXPECT_THAT(steep.GetEnd(), IsNear(seven + Vec2D(1, 2), 1e-13));
    steep.SetStartTangent(Vec2D(0, 1));
    EXPECT_THAT(steep.GetEnd(), IsNear(Point2D(1.0 - seven.GetY(), 2.0 + seven.GetX()), 1e-12));
    steep.SetEndRadius(0.0);
    EXPECT_THAT(steep.GetEnd(), IsNear(Point2D(1, 2), 0.0));
}

TEST(ClothoidTest, WhatIsNoClothoidAnswersFalse) {
    const Point2D start(7, 8);
    const Vec2D east(1, 0);
    const std::tuple<const char*, Clothoid, bool> rows[] = {
        {"opposite radii", Clothoid(300, -300, 150, start, east), false},
        {"negative parameter", Clothoid(0, 300, -150, start, east), false},
        {"NaN radius", Clothoid(0, kNan, 150, start, east), false},
        {"NaN start", Clothoid(0, 300, 150, Point2D(kNan, 0), east), false},
        {"infinite parameter", Clothoid(0, 300, kInfinity, start, east), false},
        {"tangent angle far beyond the series", Clothoid(0, 1e-3, 150, start, east), false},
        {"all zero", Clothoid(), true},
        {"no parameter", Clothoid(0, 300, 0, start, east), true},
        {"equal radii", Clothoid(300, 300, 150, start, east), true},
    };
    for (const auto& [why, given, hasStart] : rows) {
        SCOPED_TRACE(why);
        CheckNoCurve(given, hasStart);
    }
    const Clothoid opposite(300, -300, 150, start, east), good(0, 300, 150, start, east);
    EXPECT_TRUE(opposite.GetLength() == 150.0 && std::isfinite(opposite.GetEnd().GetX()));
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
    Sample untouched;
    EXPECT_FALSE(good.GetNearestPoint(Point2D(1e300, 0.0), 10.0, 20.0, untouched)) << "a distance beyond all numbers";
    EXPECT_FALSE(good.GetLengthFromStartPoint(Point2D(20, 8.02), length, kNan));
    EXPECT_TRUE(!good.GetLengthFromStartPoint(Point2D(20, 8.02), length, 0.0) && length == -1.0);
}

}  // namespace
}  // namespace Kalvio::Math
