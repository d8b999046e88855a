#include "kalvio/core/detail/PointOnLine.h"
#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

TEST(LineTest, ZeroLengthIsHarmless) {
    const Point2D at(3, 4), away(7, 7);
    const Line2D dot(at, at);
    Point2D p(9, 9);
    double s = 9.0;
    EXPECT_FALSE(dot.IsPointOnGeometry(at, kTolerances) || dot.GetLengthFromStartPoint(at, s, 1.0));
    EXPECT_TRUE(!dot.GetPointOffsetFromStart(0.0, p) && p == Point2D(9, 9) && s == 9.0);
    for (const double d : {0.25, 0.5})
        EXPECT_EQ(Intersection::PointOnLineSegment(at + Vec2D(0, d), dot, 0.25), d == 0.25);
    EXPECT_TRUE(Distance::PointToLine(Point2D(0, 0), dot) == 5.0 && dot.GetDirection().Length() == 0.0);
    EXPECT_TRUE(dot.GetNearestPoint(away, kTolerances) == at && Projection::NormalPointOnLine(away, dot) == at);
    // Nor is anything on a line whose length is beyond all numbers.
    const Line2D endless(Point2D(0, 0), Point2D(1e200, 0));
    std::vector<Point2D> points;
    EXPECT_FALSE(Intersection::PointOnLine(Point2D(0, 5), endless, 1e-4) || endless.GetPointOffsetFromStart(1.0, p));
    EXPECT_TRUE(!endless.MakePoints(0.0, 2.0, 1.0, points, true) && endless.GetY(kNan, s) == 0);
}

TEST(LineTest, SlopeAndAxisQueries) {
    double value = -1.0;
    const Line2D flat(Point2D(0, 2), Point2D(1000, 2.05));
    EXPECT_TRUE(flat.IsHorizontal(1e-4)) << "the slope counts, not the rise";
    EXPECT_FALSE(flat.IsHorizontal(1e-5) || flat.IsVertical(1e-4));
    const Line2D level(Point2D(0, 2), Point2D(4, 2));
    EXPECT_TRUE(level.IsHorizontal(0.0) && level.GetX(2.0, value) == 2);
    EXPECT_TRUE(level.GetX(3.0, value) == 0 && value == -1.0 && level.GetY(100.0, value) == 1 && value == 2.0);
    const Line2D upright(Point2D(1, 0), Point2D(1, -5));
    EXPECT_TRUE(upright.IsVertical(1e-9) && upright.GetY(1.0, value) == 2 && upright.GetY(1.5, value) == 0);
    Line2D turned(Point2D(0, 0), Point2D(2, 4));
    EXPECT_TRUE(turned.GetX(6.0, value) == 1 && value == 3.0);
    turned.SetPoints(turned.GetEnd(), turned.GetStart());
    EXPECT_TRUE(turned.IsEqualTo(Line2D(Point2D(2, 4), Point2D(0, 0)), 1e-12)) << "its own points as arguments";
    const Line2D tiny(Point2D(0, 0), Point2D(5e-6, 0)), across(Point2D(0, 0), Point2D(0, 5e-6));
    EXPECT_DOUBLE_EQ(tiny.GetAngleWithLine(across).GetRadians(), kPi / 2.0);
}

TEST(LineTest, OffsetsTurnCounterClockwiseFromTheDirection) {
    for (const Point2D& origin : surveyOrigins) {
        const Line2D line(origin, origin + Vec2D(6, 8));
        Point2D p;
        ASSERT_TRUE(line.GetPointOffsetFromStart(5.0, 10.0, Angle(std::atan2(4.0, 3.0)), p));
        EXPECT_THAT(p, IsNear(origin + Vec2D(0.2, 13.6), 1e-8));
        EXPECT_NEAR(Distance::PointToLine(p, line), -8.0, 1e-8);
        ASSERT_TRUE(line.GetPointOffsetFromStart(-5.0, 2.0, Vec2D(1, 0), p));
        EXPECT_THAT(p, IsNear(origin + Vec2D(-1, -4), 1e-8));
        for (const double s : {-0.5, 0.5}) {
            const Vec2D along = Vec2D(6, 8) * s;
            EXPECT_NEAR(line.GetDistanceFromStartPoint(line.GetStart() + along), 10.0 * s, 1e-8);
            EXPECT_NEAR(line.GetDistanceFromEndPoint(line.GetEnd() - along), 10.0 * s, 1e-8);
        }
        EXPECT_EQ(line.GetNearestPoint(origin + Vec2D(60, 80), kTolerances), line.GetEnd());
    }
}

TEST(LineTest, SamplesDoNotDriftAndCloseAtTheEnd) {
    const std::tuple<const char*, double, double, double, bool, std::vector<double>> rows[] = {
        {"inside", 1.0, 2.0, 0.5, false, {1.0, 1.5, 2.0}},
        {"clipped at the end, not closed", 3.0, 9.0, 0.75, false, {3.0, 3.75}},
        {"closed by the end point", 3.0, 9.0, 0.75, true, {3.0, 3.75, 4.0}},
        {"closed by it also where a step fell on it", 3.0, 9.0, 0.5, true, {3.0, 3.5, 4.0, 4.0}},
        {"not closed when to is the end", 3.0, 4.0, 0.75, true, {3.0, 3.75}},
        {"beyond the end", 4.5, 9.0, 1.0, true, {}},
        {"before the start", -3.0, -1.0, 1.0, true, {}},
        {"an infinite step keeps its first sample", 1.0, 9.0, kInfinity, true, {1.0, 4.0}},
        {"step 0", 0.0, 4.0, 0.0, true, {}},
        {"step NaN", 0.0, 4.0, kNan, true, {}},
        {"more steps than anything holds", 0.0, 4.0, 1e-300, true, {}},
    };
    const auto check = [&rows](const auto& element, double turning) {
        for (const auto& [why, from, to, step, close, stations] : rows) {
            SCOPED_TRACE(why);
            auto samples = std::vector<decltype(At(element, 0.0))>();
            auto points = std::vector<decltype(At(element, 0.0).point)>();
            EXPECT_EQ(element.MakePoints(from, to, step, samples, close), !stations.empty());
            EXPECT_EQ(element.MakePoints(from, to, step, points, close), !stations.empty());
            ASSERT_TRUE(samples.size() == stations.size() && points.size() == stations.size());
            for (std::size_t i = 0; i < samples.size(); ++i) {
                EXPECT_DOUBLE_EQ(samples[i].station, stations[i]);
                EXPECT_THAT(points[i], IsNear(At(element, stations[i]).point, 1e-14));
                EXPECT_THAT(samples[i].point, IsNear(points[i], 0.0));
                EXPECT_THAT(samples[i].tangent, IsNear(At(element, stations[i]).tangent, turning));
            }
            EXPECT_TRUE(element.MakePoints(0.0, 4.0, 0.0004, points, true));
            EXPECT_EQ(points.size(), stations.size() + 10001U) << "no drift";
        }
    };
    check(Line2D(Point2D(1, 1), Point2D(1, 5)), 0.0);
    check(Line3D(Point3D(1, 1, 7), Point3D(1, 5, 7)), 0.0);
    check(Arc2D(Point2D(4, 0), Point2D(0, 0), Angle(-1.0)), 1e-15);
}

TEST(LineTest, BreakSkipsNearCutsAndKeepsTheTail) {
    using Values = std::vector<double>;
    const std::tuple<const char*, Values, bool, std::vector<Values>> rows[] = {
        {"one cut", {4}, false, {{0, 4}, {4, 10}}},
        {"one cut, in place", {4}, true, {{0, 4}, {4, 10}}},
        {"cuts outside", {-1, 10, 15}, false, {}},
        {"exactly tol from the start is skipped", {0.25}, false, {}},
        {"exactly tol after a cut is skipped", {4, 4.25, 5}, false, {{0, 4}, {4, 5}, {5, 10}}},
        {"a short tail is left out", {4, 9.875}, false, {{0, 4}, {4, 9.875}}},
        {"but not when it is the only new piece", {9.875}, true, {{0, 9.875}, {9.875, 10}}},
        {"left out in place too when another piece is there", {4, 9.875}, true, {{0, 4}, {4, 9.875}}},
    };
    for (const auto& [why, cuts, modifyThis, expected] : rows)
        CheckBreaks(why, Line2D(Point2D(0, 0), Point2D(10, 0)), cuts, modifyThis, expected);
}

TEST(Line3DTest, HeightsOverThePlan) {
    const Line3D line(Point3D(0, 0, 0), Point3D(3, 0, 4));
    // The foot in space of (3, 0, 0) lies 9/5 along the line of length 5.
    EXPECT_NEAR(line.GetZ(Point2D(3, 0), 1e-4), 9.0 / 5.0 * 4.0 / 5.0, 1e-14);
    EXPECT_NEAR(line.GetZ(Point2D(6, 0), 1e-4), 2.88, 1e-14);
    EXPECT_TRUE(line.GetZOnSegment(Point2D(6, 0), 1e-4) == 0.0 && line.GetZ(Point2D(3, 1), 1e-4) == 0.0);
    EXPECT_NEAR(line.GetZByInterpolation(Point2D(1.5, 99), 1e-4), 2.0, 1e-14);
    EXPECT_NEAR(Line3D(Point3D(0, 0, 1), Point3D(100, 1, 3)).GetZByInterpolation(Point2D(0, 0.5), 1e-4), 2.0, 1e-14)
        << "y goes first whatever the main direction";
    EXPECT_EQ(Line3D(Point3D(1, 1, 5), Point3D(1, 1, 9)).GetZByInterpolation(Point2D(7, 7), 1e-4), 5.0);
}

TEST(Line3DTest, ElementOperationsInSpace) {
    for (const Point2D& origin : surveyOrigins) {
        const Vec3D span(2, 3, 6);
        const Point3D start(origin, 100.0);
        const Line3D line(start, start + span);
        EXPECT_NEAR(line.GetLength2D(), std::sqrt(13.0), 1e-9);
        for (const double station : {0.0, 3.5, 7.0}) CheckStation(line, station, 1e-8, 1e-8);
        EXPECT_THAT(line.GetMiddlePoint(), IsNear(At(line, 3.5).point, 1e-8));
        double length = -1.0;
        EXPECT_FALSE(line.GetLengthFromStartPoint(line.GetEnd() + span, length, 1e-4));
        EXPECT_THAT(line.GetNearestPoint(start - Vec3D(1, 1, 1), kTolerances), IsNear(start, 0.0));
        Line3D longer(line);
        EXPECT_TRUE(longer.ExtendEnd(line.GetEnd() + span, kTolerances));
        EXPECT_NEAR(longer.GetLength(), 14.0, 1e-8);
        EXPECT_THAT(line.Translate(span).GetStart(), IsNear(line.GetEnd(), 0.0));
        const std::unique_ptr<IGeometry> joined(line.Append(&longer));
        ASSERT_EQ(joined->GetType(), MathTypes::LineString3D);
        EXPECT_NEAR(joined->GetLength(), 14.0, 1e-8) << "to the other's end, whose start is not looked at";
    }
}

}  // namespace
}  // namespace Kalvio::Math
