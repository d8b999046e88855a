#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

Parabola Between(double x1, double x2, double a, double b, double c) {
    Parabola parabola(a, b, c);
    parabola.SetStart(Point2D(x1, parabola.Evaluate(x1)));
    parabola.SetEnd(Point2D(x2, parabola.Evaluate(x2)));
    return parabola;
}

// A sag curve, a crest curve, a steep one that turns back, one towards smaller x, a straight grade.
std::vector<Parabola> Elements() {
    return {Between(0.0, 200.0, 1e-4, -0.03, 2.0), Between(-40.0, 320.0, -5e-5, 0.01, 30.0),
            Between(-3.0, 2.0, 1.5, 0.4, -1.0), Between(120.0, 20.0, 0.002, -0.3, 0.0),
            Between(5.0, 90.0, 0.0, 0.04, 7.0)};
}

TEST(ParabolaTest, FocusAndDirectrixAreEquallyFarFromEveryPoint) {
    for (const Parabola& parabola : Elements()) {
        Point2D summit(7.0, 7.0), focus(7.0, 7.0);
        double directrix = 7.0, a = 0.0, b = 0.0, c = 0.0;
        parabola.GetParameters(a, b, c);
        EXPECT_EQ(parabola.GetSummit(summit), a != 0.0);
        EXPECT_EQ(parabola.GetFocus(focus), a != 0.0);
        EXPECT_EQ(parabola.GetDirectix(directrix), a != 0.0);
        EXPECT_THAT(summit, IsNear(Point2D(focus.GetX(), 0.5 * (focus.GetY() + directrix)), 1e-12));
        for (const double x : {-50.0, 0.0, summit.GetX()}) {
            const Point2D p(x, parabola.Evaluate(x));
            const double fromFocus = a == 0.0 ? std::abs(p.GetY() - 7.0) : p.Distance(focus);
            EXPECT_NEAR(fromFocus, std::abs(p.GetY() - directrix), 1e-11 * fromFocus);
        }
    }
    EXPECT_TRUE(Parabola(0.0005, 0.0, 0.0).GetParameterK() == 10.0 && Parabola().GetParameterK() == kInfinity);
}

TEST(ParabolaTest, VerticalCurvesRoundOffTheCornerOfTheirGrades) {
    for (const double x : {0.0, 12400.0}) {
        for (const auto& [in, out] : {std::pair(0.03, -0.02), std::pair(-0.06, 0.04), std::pair(0.01, 0.01)}) {
            Parabola curve;
            ASSERT_TRUE(curve.SetVerticalCurve(Point2D(x, 80.0), in, out, 160.0));
            EXPECT_THAT(curve.GetStart(), IsNear(Point2D(x - 80.0, 80.0 - 80.0 * in), 1e-12));
            EXPECT_THAT(curve.GetEnd(), IsNear(Point2D(x + 80.0, 80.0 + 80.0 * out), 1e-12));
            EXPECT_THAT(curve.GetStartTangent(), IsNear(Vec2D(1.0, in, 1.0), 1e-13));
            EXPECT_THAT(curve.GetEndTangent(), IsNear(Vec2D(1.0, out, 1.0), 1e-13));
            EXPECT_NEAR(curve.Evaluate(x + 80.0), curve.GetEnd().GetY(), 1e-10);
            EXPECT_NEAR(curve.Evaluate(x), 80.0 + 160.0 * (out - in) / 8.0, 1e-10) << "the external distance";
            EXPECT_FALSE(curve.SetVerticalCurve(Point2D(), in, out, 0.0) || curve.SetVerticalCurve({}, in, kNan, 9.0));
        }
    }
}

TEST(ParabolaTest, RootsInTheOrderOfTheirFormula) {
    const std::tuple<const char*, Parabola, int, double, double> rows[] = {
        {"none: untouched", Parabola(1.0, 0.0, 1.0), 0, 7.0, 7.0},
        {"opening downward: the first is the smaller", Parabola(-2.0, 0.0, 8.0), 2, -2.0, 2.0},
        {"touching", Parabola(1.0, -2.2, 1.1 * 1.1), 1, 1.1, 1.1},
        {"no cancellation", Parabola(1.0, 1e9, 1.0), 2, -1e-9, -1e9},
        {"flat: D below 1e-10 is one root, by the formula", Parabola(0x1p-20, 0.0, -0x1p-20), 1, 1.0, -1.0},
        {"flat: a negative D beyond its rounding is none", Parabola(0x1p-20, 0.0, 0x1p-20), 0, 7.0, 7.0},
        {"numbers that overflow", Parabola(1.0, 1e200, 1.0), 0, 7.0, 7.0},
    };
    for (const auto& [why, parabola, count, first, second] : rows) {
        double x1 = 7.0, x2 = 7.0;
        EXPECT_TRUE(parabola.FindRoots(x1, x2) == count && x1 == first && x2 == second) << why;
    }
    for (double a = -2.0; a < 2.0; a += 0.0371) {  // a (x - r)^2, its coefficients rounded: the sign of D is chance
        for (double r = -1000.0; r < 1000.0; r += 17.3) {
            double x1 = kNan, x2 = kNan;
            ASSERT_EQ(Parabola(a, -2.0 * a * r, a * r * r).FindRoots(x1, x2), 1) << a << " " << r;
            ASSERT_TRUE(x1 == x2 && std::abs(x1 - r) <= 4e-16 * std::abs(r)) << a << " " << r;
        }
    }
}

TEST(ParabolaTest, ArcLengthKeepsItsDigits) {
    const double sqrt5 = std::sqrt(5.0);
    const std::tuple<const char*, double, double, double, double, double> rows[] = {
        {"y = x^2 over [0, 1]: sqrt(5) / 2 + asinh(2) / 4", 1.0, 0.0, 0.0, 1.0, 1.478942857544597433828},
        {"both sides of the summit", 1.0, 0.0, -1.0, 1.0, 2.957885715089194867656},
        {"opening downward, backwards", -1.0, 0.0, 0.0, -1.0, 1.478942857544597433828},
        {"a so small that the difference of two primitives is noise", 1e-17, 2.0, -1.0, 3.0, 4.0 * sqrt5},
        {"a below the tolerance, far from x = 0: the chord", 5e-11, 2.0 - 4e-5, 399999.0, 400001.0, 2.0 * sqrt5},
        {"a small part far out", 0.5, 0.0, 2.0, 2.0 + 0x1p-30, 0x1p-30 * std::hypot(1.0, 2.0 + 0x1p-31)},
        {"steep falling grade, where ln(u + sqrt(u^2 + 1)) is infinite", 1.0, -1e9, 0.0, 1.0, 999999999.0},
        {"slopes whose squares overflow, both signs", 1e180, 0.0, -1.0, 3.0, 1e181},
        {"slopes whose squares overflow, one sign", 1e180, 0.0, 1.0, 3.0, 8e180},
        {"no extent", 3.0, 1.0, 2.0, 2.0, 0.0},
    };
    for (const auto& [why, a, b, x1, x2, expected] : rows) {
        SCOPED_TRACE(why);
        const Parabola parabola = Between(x1, x2, a, b, 0.0);
        EXPECT_NEAR(parabola.GetLength(), expected, 5e-16 * expected);
        EXPECT_NEAR(parabola.GetLength(Point2D(x2, kNan), Point2D(x1, 0.0), 0.0), expected, 5e-16 * expected);
    }
    EXPECT_NEAR(Parabola(1e-3, 0.0, 0.0).GetLength(Point2D(0.0, 0.0), Point2D(100.0, 0.0), 1e-2),
                std::hypot(100.0, 10.0), 1e-13);
}

TEST(ParabolaTest, AbscissaeHaveTheirStations) {
    for (const Point2D& origin : surveyOrigins) {
        const double noise = origin.GetX() == 0.0 ? 1e-12 : 2e-8;  // of heights: a x^2 is 1e7 there
        for (Parabola parabola : Elements()) {
            double a = 0.0, b = 0.0, c = 0.0;
            parabola.GetParameters(a, b, c);
            if (std::abs(a) > 0.1 && origin.GetX() != 0.0) continue;
            parabola.Translate(origin - Point2D());
            const double length = parabola.GetLength();
            Sample across;
            for (int i = 0; i <= 8; ++i) {
                const Sample sample = At(parabola, length * i / 8.0);
                CheckStation(parabola, sample.station, 1e-5, 10.0 * noise + 1e-11);
                EXPECT_THAT(parabola.GetNearestPoint(sample.point).tangent, IsNear(sample.tangent, 1e-6));
                const Vec2D toTheRight = sample.tangent * (sample.tangent.GetX() < 0.0 ? -1.0 : 1.0);
                EXPECT_THAT(parabola.ComputeTangent(sample.point), IsNear(toTheRight, 1e-15 + noise));
                ASSERT_TRUE(parabola.MakePointAndTangentAtAbscissa(sample.point.GetX(), across));
                EXPECT_THAT(across.point, IsNear(sample.point, 10.0 * noise));
                EXPECT_THAT(across.tangent, IsNear(sample.tangent, noise));
                EXPECT_NEAR(across.station, sample.station, 10.0 * noise + 1e-11);
            }
            CheckPieces(parabola, false, 10.0 * noise, noise);
            EXPECT_FALSE(parabola.MakePointAndTangentAtAbscissa(origin.GetX() - 41.0, across));
            for (const double bad : {-1e-9, length + 1e-9, kNan})
                EXPECT_FALSE(parabola.MakePointAndTangentAt(bad, across));
        }
    }
}

TEST(ParabolaTest, NearestPointOfEqualFeetAndFarOut) {
    // Two feet equally near: the first in the direction of travel.
    Parabola sag = Between(-2.0, 2.0, 1.0, 0.0, 0.0);
    EXPECT_LT(sag.GetNearestPoint(Point2D(0.0, 3.0), kTolerances).GetX(), 0.0);
    sag.Reverse();
    EXPECT_GT(sag.GetNearestPoint(Point2D(0.0, 3.0), kTolerances).GetX(), 0.0);
    // Far out on the normal of a steep branch.
    const Point2D far = Point2D(6.0, 360.0) + Vec2D(120.0, -1.0) * (385000.0 / std::hypot(120.0, 1.0));
    const Parabola steep = Between(-10.0, 10.0, 10.0, 0.0, 0.0);
    EXPECT_THAT(steep.GetNearestPoint(far, kTolerances), IsNear(Point2D(6.0, 360.0), 1e-9));
}

TEST(ParabolaTest, ExtendsAndCompares) {
    for (const Parabola& whole : Elements()) {
        const double length = whole.GetLength();
        const Point2D inside = At(whole, 0.7 * length).point;
        Parabola part(whole);
        EXPECT_TRUE(part.ExtendEnd(inside, kTolerances) && std::abs(part.GetLength() - 0.7 * length) <= 1e-9);
        EXPECT_TRUE(part.ExtendEnd(whole.GetEnd() + Vec2D(0.0, 3.0), kTolerances));
        EXPECT_FALSE(part.ExtendStart(Point2D(kInfinity, 0.0), kTolerances));
        EXPECT_FALSE(part.ExtendEnd(Point2D(0.0, kNan), kTolerances));
        EXPECT_TRUE(part.IsEqualTo(static_cast<const IGeometry&>(whole), 1e-12));
        EXPECT_TRUE(part.ExtendStart(inside, kTolerances) && std::abs(part.GetLength() - 0.3 * length) <= 1e-9);
    }
    const Parabola base(0.5, 0.0, 0.0), raised(0.5, 0.0, 0x1p-20);
    EXPECT_FALSE(base.IsEqualTo(raised, 0x1p-20)) << "strict";
    EXPECT_TRUE(base.IsEqualTo(raised, 0x1p-19));
}

TEST(ParabolaTest, TangentsThroughAPointTouch) {
    const Parabola parabola(0.5, -1.0, 2.0);
    Line2D left, right;
    ASSERT_EQ(parabola.GetTangentsThroughPoint(Point2D(3.0, -4.0), left, right), 2);
    for (const Line2D& line : {left, right}) {
        EXPECT_NEAR(line.GetEnd().GetY(), parabola.Evaluate(line.GetEnd().GetX()), 1e-13);
        EXPECT_NEAR(line.GetDirection().PerpDotProduct(parabola.ComputeTangent(line.GetEnd())), 0.0, 1e-15);
    }
    EXPECT_LT(left.GetEnd().GetX(), right.GetEnd().GetX());
    ASSERT_EQ(parabola.GetTangentsThroughPoint(Point2D(2.0, 2.0), left, right), 1);
    EXPECT_THAT(left.GetDirection(), IsNear(Vec2D(1.0, 1.0, 1.0), 1e-15));
    EXPECT_EQ(parabola.GetTangentsThroughPoint(Point2D(2.0, 2.1), left, right), 0);
    EXPECT_EQ(Parabola(0.0, 1.0, 0.0).GetTangentsThroughPoint(Point2D(2.0, 2.1), left, right), 0);
}

TEST(ParabolaTest, SamplesDoNotDriftAndCloseOnce) {
    const Parabola sag = Between(0.0, 1000.0, 1e-4, -0.05, 0.0);
    std::vector<Point2D> points;
    std::vector<Sample> samples;
    LineString2D lineString;
    EXPECT_TRUE(sag.MakePoints(0.0, 1000.0, 0.1, points, true));
    ASSERT_EQ(points.size(), 10001U);
    EXPECT_EQ(points[7001].GetX(), 7001 * 0.1);
    EXPECT_TRUE(sag.MakePoints(1000.0, 975.0, 10.0, points, false));
    ASSERT_EQ(points.size(), 10004U) << "appended";
    EXPECT_EQ(points.back().GetX(), 980.0);
    EXPECT_TRUE(sag.MakePointsAndTangents(-20.0, 5.0, samples, 10.0));
    ASSERT_EQ(samples.size(), 4U);
    EXPECT_NEAR(samples[0].station, -sag.GetLength(samples[0].point, sag.GetStart(), 0.0), 1e-13);
    EXPECT_EQ(samples[3].point.GetX(), 5.0);
    EXPECT_TRUE(sag.MakeLineString(10.0, 10.0, lineString, 1.0));

    for (const double height : {10.0, 0.3, 0.001}) {
        std::vector<Point2D> chain;
        ASSERT_TRUE(sag.MakePointsUsingHeight(1000.0, 0.0, chain, height));
        // The smallest number of steps whose chords keep the height a s^2 / 4, the same everywhere.
        EXPECT_EQ(chain.size(), 1 + static_cast<std::size_t>(std::ceil(1000.0 * std::sqrt(1e-4 / (4.0 * height)))));
    }
    for (const double bad : {0.0, -1.0, kNan}) {
        EXPECT_FALSE(sag.MakePoints(0.0, 10.0, bad, points, false));
        EXPECT_FALSE(sag.MakePointsAndTangentsUsingHeight(0.0, 10.0, samples, bad));
        EXPECT_FALSE(sag.MakeLineString(0.0, 10.0, lineString, bad));
    }
    EXPECT_FALSE(sag.MakePointsUsingHeight(0.0, kInfinity, points, 1.0));
    EXPECT_EQ(points.size() + samples.size() + lineString.GetSize(), 10004U + 4U + 1U);
}

}  // namespace
}  // namespace Kalvio::Math
