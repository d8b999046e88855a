#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

using Type = Spiral2D::Spiral2DType;

// Ends from the origin along +X by quadrature with 30 digits; of the cubic parabola in closed form.
struct Reference {
    Type type;
    double startRadius, endRadius, length, x, y, turn;
    Spiral2D Make(const Point2D& origin, const Vec2D& direction) const {
        return {type, startRadius, endRadius, length, origin, direction};
    }
};
const Reference kReferences[] = {
    {Type::Clothoid, 0, 300, 75, 74.8828972404903837, 3.12151401026604514, 0.125},
    {Type::Clothoid, 300, -200, 120, 119.800084110946375, 3.99714353527768969, -0.1},
    {Type::Clothoid, 500, 499.9999, 200, 194.709170368462207, 39.4695055384386254, 0.400000040000008},
    {Type::Clothoid, 20, -15, 500, -37.0259317962961364, -151.2769519301709, -4.16666666666666667},
    {Type::Bloss, -600, -300, 100, 99.1521161334862303, -10.7818251389962051, -0.25},
    {Type::Bloss, 500, 500, 200, 194.709171154325246, 39.4695029985574586, 0.4},
    {Type::Bloss, 20, -15, 500, 121.598095021494404, 18.6363361352702717, -4.16666666666666667},
    {Type::Sine, 0, 300, 75, 74.8974159398254476, 2.6469259219752472, 0.125},
    {Type::Sine, 20, -15, 500, 35.1740995478501953, 118.550408941006682, -4.16666666666666667},
    {Type::Cosine, 0, 40, 240, 112.310335930240236, 107.571308529710698, 3.0},
    {Type::Cosine, 500, 499.9999, 200, 194.709170425479914, 39.4695052571614592, 0.400000040000008},
    {Type::Biquadratic, 0, 40, 240, 114.42325910439303, 104.551866681916035, 3.0},
    {Type::Biquadratic, 300, -200, 120, 119.615803291447242, 6.48903584546680548, -0.1},
    {Type::Viennese, 0, 300, 75, 74.8984840605614045, 2.60105721767929631, 0.125},
    {Type::Viennese, 300, -200, 120, 119.533050441101626, 7.3178203754610268, -0.1},
    {Type::Viennese, 20, -15, 500, -3.50807747454853568, 123.379803098009311, -4.16666666666666667},
    {Type::Cubic, 0, 300, 75, 74.8778463593190297, 3.19153443795628656, 0.127179481889868884},
    {Type::Cubic, -600, -300, 60, 59.8032348296316675, -4.06280687990885637, -0.152488970632387613},
    {Type::Cubic, 300, -200, 120, 119.797109559483621, 3.44190419131833722, -0.112621861380591979},
    {Type::Cubic, 500, 500, 200, 194.709171154325246, 39.4695029985574586, 0.4},
};

TEST(Spiral2DTest, EndsMatchTheQuadratureToTenDigitsOfAMetre) {
    ForEachPlaced(kReferences, [](const Spiral2D& spiral, const Reference& r, const Vec2D& direction) {
        CheckEnds(spiral, r, direction, 1e-13);
        const auto curvature = [](double radius) { return radius == 0.0 ? 0.0 : 1.0 / radius; };
        EXPECT_NEAR(spiral.GetCurvature(0.0), curvature(r.startRadius), 1e-15);
        EXPECT_NEAR(spiral.GetCurvature(r.length), curvature(r.endRadius), 1e-15);
        const bool extended = Spiral2D(spiral).ExtendEnd(spiral.GetEnd() + spiral.GetEndTangent(), kTolerances);
        EXPECT_TRUE(extended == (r.type == Type::Clothoid) || r.length > 400.0) << "longer ones coil";
    });
}

TEST(Spiral2DTest, VienneseBendsComeInPartsThatTurnOneWay) {
    const std::tuple<Reference, double, std::size_t> rows[] = {
        {{Type::Viennese, 0, 300, 75, 74.9024131301178493, 2.42114522524329855, 0.125}, 0.1, 3},
        {{Type::Viennese, 0, -300, 75, 74.8938503575034582, -2.78095421046591373, -0.125}, 0.1, 1},
        {{Type::Viennese, 300, -200, 120, 119.551655304292947, 7.13888782609587162, -0.1}, 0.1, 1},
        {{Type::Viennese, 500, 500, 60, 59.8664552462572093, 3.41601629418374089, 0.12}, 0.1, 3},
        {{Type::Viennese, 0, 300, 75, 74.8984840605614045, 2.60105721767929631, 0.125}, 0.0, 1},
    };
    for (const auto& [r, roll, count] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            const auto parts =
                Spiral2D::MakeVienneseBend(r.startRadius, r.endRadius, r.length, 1.8, roll, origin, Vec2D(1, 0));
            ASSERT_EQ(parts.size(), count);
            EXPECT_THAT(parts.back().GetEnd(), IsNear(origin + Vec2D(r.x, r.y), 2e-9));
            EXPECT_NEAR(parts.back().GetEndTangent().PerpDotProduct(Vec2D(std::cos(r.turn), std::sin(r.turn))), 0,
                        1e-13);
            for (std::size_t i = 0; i < count; ++i) {
                CheckMotion(parts[i], 2e-9);
                CheckStation(parts[i], 0.4 * parts[i].GetLength(), 1e-7);
                CheckPieces(parts[i], true);
                CheckBox(parts[i]);
                const double joined =
                    i > 0 ? parts[i - 1].GetCurvature(parts[i - 1].GetLength()) : parts[0].GetCurvature(0);
                EXPECT_NEAR(parts[i].GetCurvature(0), joined, 1e-15);
            }
        }
    }
    EXPECT_TRUE(Spiral2D::MakeVienneseBend(0, 300, 75, kInfinity, 0.1, Point2D(), Vec2D(1, 0)).empty());
    EXPECT_TRUE(Spiral2D::MakeVienneseBend(0, 0, 1e-200, 1e-200, 0.1, Point2D(), Vec2D(1, 0)).empty());
    // Turns of many radians inside, next to none at the ends.
    const auto coils = Spiral2D::MakeVienneseBend(0, 300, 75, 3000, 0.5, Point2D(), Vec2D(1, 0));
    for (std::size_t i = 1; i < coils.size(); ++i)
        EXPECT_THAT(coils[i].GetStart(), IsNear(coils[i - 1].GetEnd(), 1e-10));
}

TEST(Spiral2DTest, WhatIsNoCurveAnswersFalse) {
    const Point2D start(7, 8);
    const Vec2D east(1, 0);
    const std::tuple<const char*, Spiral2D> rows[] = {
        {"NaN radius", {Type::Bloss, kNan, 300, 75, start, east}},
        {"negative length", {Type::Sine, 0, 300, -75, start, east}},
        {"NaN length", {Type::Clothoid, 0, 300, kNan, start, east}},
        {"NaN tangent", {Type::Clothoid, 0, 300, 75, start, Vec2D(0, kNan)}},
        {"unknown type", {static_cast<Type>(17), 0, 300, 75, start, east}},
        {"endless turning", {Type::Cosine, 0, 1e-3, 75, start, east}},
        {"cubic parabola beyond its culmination", {Type::Cubic, 0, 300, 208.2, start, east}},
        {"cubic parabola of nearly equal radii", {Type::Cubic, 300, 299, 75, start, east}},
    };
    for (const auto& [why, given] : rows) {
        SCOPED_TRACE(why);
        CheckNoCurve(given, false);
        EXPECT_THAT(given.GetEnd(), IsNear(start, 0.0));
        EXPECT_THAT(given.GetNearestPoint(Point2D(1, 1), kTolerances), IsNear(start, 0.0));
    }
    EXPECT_TRUE(Spiral2D(Type::Cubic, 0, 300, 208.0, start, east).GetCurvature(208.0) > 0.0) << "up to the culmination";
    const Spiral2D point(Type::Sine, 0, 300, 0, start, east);
    double station = -1.0;
    EXPECT_TRUE(point.GetLengthFromStartPoint(start, station, 1e-4) && station == 0.0);
}

TEST(Spiral2DTest, SettersMakeItAnew) {
    Spiral2D spiral(Type::Clothoid, 0, 300, 60, Point2D(1, 2), Vec2D(0, 1));
    spiral.SetSpiralType(Type::Bloss);
    spiral.SetStartRadius(-600);
    spiral.SetEndRadius(-300);
    spiral.SetLength(100);
    spiral.SetStart(Point2D());
    spiral.SetStartTangent(Vec2D(1, 0));
    for (const Type type : {Type::Bloss, Type::Sine})
        EXPECT_EQ(spiral.IsEqualTo(Spiral2D(type, -600, -300, 100, Point2D(), Vec2D(1, 0)), 1e-12),
                  type == Type::Bloss);
    EXPECT_THAT(spiral.GetEnd(), IsNear(Point2D(99.1521161334862303, -10.7818251389962051), 1e-12));
}

}  // namespace
}  // namespace Kalvio::Math
