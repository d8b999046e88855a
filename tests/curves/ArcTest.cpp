#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/GeometryCreator.h"
#include "kalvio/queries/Intersection.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

using Sample = IPolyline2DElement::PolylineElementPoint;

constexpr double kPi = std::numbers::pi;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Tolerances kTolerances(1e-4, 1e-10);

TEST(ArcTest, DerivedValues) {
    struct Row {
        const char* why;
        double sweep, signedRadius, length, bulge, height, area;
        Point2D middle, end;
        Vec2D endTangent;
        double endAngle;
    };
    const double h = std::sqrt(0.5);
    const Row rows[] = {
        {"quarter", kPi / 2, 2, kPi, 0.41421356237309503, 2 - 2 * h, kPi - 2, Point2D(2 * h, 2 * h), Point2D(0, 2),
         Vec2D(-1, 0), kPi / 2},
        {"clockwise", -kPi / 2, -2, kPi, -0.41421356237309503, 2 - 2 * h, kPi - 2, Point2D(2 * h, -2 * h),
         Point2D(0, -2), Vec2D(-1, 0), -kPi / 2},
        {"half", kPi, 2, 2 * kPi, 1, 2, 2 * kPi, Point2D(0, 2), Point2D(-2, 0), Vec2D(0, -1), kPi},
        {"three quarters", -3 * kPi / 2, -2, 3 * kPi, -2.4142135623730950, 2 + 2 * h, 3 * kPi + 2,
         Point2D(-2 * h, -2 * h), Point2D(0, 2), Vec2D(1, 0), kPi / 2},
        {"nothing", 0, 2, 0, 0, 0, 0, Point2D(2, 0), Point2D(2, 0), Vec2D(0, 1), 0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Arc2D arc(origin + Vec2D(2, 0), origin, Angle(row.sweep));
            EXPECT_EQ(arc.GetSignedRadius(), row.signedRadius);
            EXPECT_NEAR(arc.GetLength(), row.length, 1e-14);
            EXPECT_NEAR(arc.GetBulge(), row.bulge, 1e-15);
            EXPECT_NEAR(arc.GetHeight(), row.height, 1e-15);
            EXPECT_NEAR(arc.GetArea(), row.area, 1e-14);
            EXPECT_THAT(arc.GetMiddlePoint(), IsNear(origin + row.middle, 1.4e-9));
            EXPECT_THAT(arc.GetEnd(), IsNear(origin + row.end, 1.4e-9));
            EXPECT_THAT(arc.GetStartTangent(), IsNear(Vec2D(0, row.sweep < 0 ? -1 : 1), 1e-15));
            EXPECT_THAT(arc.GetEndTangent(), IsNear(row.endTangent, 1e-15));
            EXPECT_NEAR(arc.GetEndAngle().GetRadians(), row.endAngle, 1e-9);
            if (std::abs(row.bulge) > 0.0) {
                EXPECT_TRUE(Arc2D(arc.GetStart(), row.bulge, arc.GetEnd()).IsEqualTo(arc, 3e-9));
            }
        }
    }
    EXPECT_EQ(Arc2D::SignAngle(Vec2D(-1.0, -0.0)).GetRadians(), kPi) << "minus zero is not below the axis";
    EXPECT_EQ(Arc2D::SignAngle(Vec2D(-0.0, 0.0)).GetRadians(), 0.0);
}

TEST(ArcTest, EndsAndSeamHaveStationsWithinTheTolerance) {
    constexpr double none = -1.0;
    struct Row {
        const char* why;
        double sweep, radius, direction;  // of the point, seen from the centre
        double fromStart, fromEnd;
    };
    const double l = 5 * kPi;
    const Row rows[] = {
        {"inside", kPi / 2, 10.0, kPi / 4, l / 2, l / 2},
        {"off the circle by less than the tolerance", kPi / 2, 10.009, kPi / 4, l / 2, l / 2},
        {"off the circle by more", kPi / 2, 10.011, kPi / 4, none, none},
        {"just before the start", kPi / 2, 10.0, -0.0009, 0.0, l},
        {"further before the start", kPi / 2, 10.0, -0.0011, none, none},
        {"just beyond the end", kPi / 2, 10.0, kPi / 2 + 0.0009, l, 0.0},
        {"on the other side", kPi / 2, 10.0, 4.0, none, none},
        {"clockwise", -kPi / 2, 10.0, -kPi / 4, l / 2, l / 2},
        {"just before a clockwise start", -kPi / 2, 10.0, 0.0009, 0.0, l},
        {"just beyond a clockwise end", -kPi / 2, 10.0, -kPi / 2 - 0.0009, l, 0.0},
        {"just before the seam of a full circle", 2 * kPi, 10.0, -0.0009, 0.0, 0.009},
        {"just behind the seam", 2 * kPi, 10.0, 0.0009, 0.009, 0.0},
        {"on the seam", 2 * kPi, 10.0, 0.0, 0.0, 0.0},
        {"opposite the seam", 2 * kPi, 10.0, kPi, 2 * l, 2 * l},
        {"NaN", kPi / 2, kNan, 0.0, none, none},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Arc2D arc(origin + Vec2D(10, 0), origin, Angle(row.sweep));
            const Point2D p = origin + Vec2D(std::cos(row.direction), std::sin(row.direction)) * row.radius;
            double fromStart = none;
            double fromEnd = none;
            Vec2D tangent(9, 9);
            const bool on = row.fromStart != none;
            EXPECT_EQ(arc.GetLengthFromStartPoint(p, fromStart, -0.01), on) << "the sign of a tolerance is ignored";
            EXPECT_EQ(arc.GetLengthFromEndPoint(p, fromEnd, 0.01), on);
            EXPECT_EQ(arc.IsPointOnGeometry(p, Tolerances(0.01, 1e-10)), on);
            EXPECT_EQ(arc.ComputeTangent(p, tangent, Tolerances(0.01, 1e-10)), on);
            EXPECT_NEAR(fromStart, row.fromStart, 2e-8);
            EXPECT_NEAR(fromEnd, row.fromEnd, 2e-8);
            const Vec2D ahead = Vec2D(-std::sin(row.direction), std::cos(row.direction)) * (row.sweep < 0 ? -1.0 : 1.0);
            EXPECT_THAT(tangent, IsNear(on ? ahead : Vec2D(9, 9), 1e-9));
        }
    }
}

// What must hold for every arc, told from samples every hundredth of its length.
void CheckLaws(const Arc2D& arc, std::mt19937_64& random) {
    const double length = arc.GetLength();
    const double r = arc.GetRadius();
    std::vector<Sample> samples;
    ASSERT_TRUE(arc.MakePointsAndTangents(0.0, length, samples, length / 100.0));
    ASSERT_EQ(samples.size(), 101u);
    EXPECT_THAT(samples.back().point, IsNear(arc.GetEnd(), 3e-9));

    Arc2D reversed = arc;
    reversed.Reverse();
    const Point2D low = arc.GetBoundingBox().GetMinPoint() - Vec2D(4e-9, 4e-9);
    const Point2D high = arc.GetBoundingBox().GetMaxPoint() + Vec2D(4e-9, 4e-9);
    Point2D least = samples.front().point;
    Point2D most = least;
    Point2D previous = least;
    double twiceArea = 0.0;
    for (const Sample& sample : samples) {
        double fromStart = -1.0;
        double fromEnd = -1.0;
        double shortest = -1.0;
        Vec2D tangent;
        ASSERT_TRUE(arc.GetLengthFromStartPoint(sample.point, fromStart, 1e-8));
        ASSERT_TRUE(reversed.GetLengthFromEndPoint(sample.point, fromEnd, 1e-8));
        ASSERT_TRUE(reversed.GetShortestLengthFromEndPoint(sample.point, shortest, 1e-8));
        EXPECT_NEAR(fromStart, sample.station, 1e-8);
        EXPECT_NEAR(fromEnd, sample.station, 1e-8);
        EXPECT_NEAR(shortest, std::min(sample.station, 2 * kPi * r - sample.station), 1e-8);
        ASSERT_TRUE(arc.ComputeTangent(sample.point, tangent, kTolerances));
        EXPECT_THAT(tangent, IsNear(sample.tangent, 1e-8));
        EXPECT_THAT(reversed.ComputeTangent(sample.point), IsNear(-sample.tangent, 1e-8));
        for (const int axis : {0, 1}) {
            EXPECT_GE(sample.point[axis], low[axis]);
            EXPECT_LE(sample.point[axis], high[axis]);
            least[axis] = std::min(least[axis], sample.point[axis]);
            most[axis] = std::max(most[axis], sample.point[axis]);
        }
        const Vec2D inward = (arc.GetCenter() - sample.point).Normalize();
        EXPECT_FALSE(arc.IsPointInside(sample.point - inward * 1e-6, 1e-8));
        EXPECT_TRUE(arc.IsPointInside(sample.point, 1e-8));
        twiceArea += (previous - arc.GetStart()).PerpDotProduct(sample.point - arc.GetStart());
        previous = sample.point;
    }
    // The polygon of the samples and a hundred parabolic segments, good to the fifth power of a step.
    const double segments = 100.0 * r * r * std::pow(length / r / 100.0, 3) / 12.0;
    EXPECT_NEAR(std::abs(twiceArea) / 2 + segments, arc.GetArea(), 1e-6 * r * r + 1e-8 * r);
    for (const int axis : {0, 1}) {  // a sample lies within half a step of every extreme; 0.005 the box allows itself
        const double slack = r * (1 - std::cos(length / r / 200)) + 0.005;
        EXPECT_NEAR(least[axis], low[axis], slack);
        EXPECT_NEAR(most[axis], high[axis], slack);
    }

    std::uniform_real_distribution<double> around(-2.0, 2.0);
    const Tolerances tight(1e-8, 1e-10);
    for (int i = 0; i < 20; ++i) {
        const Point2D query = arc.GetCenter() + Vec2D(around(random), around(random)) * r;
        const Point2D nearest = arc.GetNearestPoint(query, tight);
        EXPECT_TRUE(arc.IsPointOnGeometry(nearest, tight));
        double best = kInfinity;
        for (const Sample& sample : samples) best = std::min(best, query.Distance(sample.point));
        EXPECT_LE(query.Distance(nearest), best + 1e-8);
        EXPECT_GE(query.Distance(nearest), best - length / 200.0);
    }
    EXPECT_THAT(arc.GetNearestPoint(arc.GetCenter(), tight), IsNear(arc.GetStart(), 0.0));

    std::map<double, const Point2D> breaks;
    for (const double share : {0.2, 0.2000001, 0.7, 1.5}) breaks.emplace(7.0 + share * length, Point2D());
    std::vector<IGeometry*> out;
    Arc2D first = arc;
    ASSERT_TRUE(first.BreakAtPreSorted(breaks, 7.0, out, true, Tolerances(1e-6 * length, 1e-10)));
    std::vector<std::unique_ptr<IGeometry>> pieces;
    pieces.emplace_back(first.Clone());
    for (IGeometry* const piece : out) pieces.emplace_back(piece);
    ASSERT_EQ(pieces.size(), 3u) << "two cuts closer than the tolerance are one, a cut beyond the end is none";
    const double ends[] = {0.0, 0.2 * length, 0.7 * length, length};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& piece = static_cast<const Arc2D&>(*pieces[i]);
        Arc2D part;
        ASSERT_TRUE(arc.MakeArc(ends[i], ends[i + 1], part));
        EXPECT_TRUE(piece.IsEqualTo(part, 1e-8));
        EXPECT_NEAR(piece.GetLength(), ends[i + 1] - ends[i], 1e-8);
        if (i > 0) {
            EXPECT_THAT(piece.GetStart(), IsNear(static_cast<const Arc2D&>(*pieces[i - 1]).GetEnd(), 0.0));
        }
    }
    EXPECT_THAT(static_cast<const Arc2D&>(*pieces.back()).GetEnd(), IsNear(arc.GetEnd(), 0.0));

    for (const double height : {1e-5 * r, 0.01 * r}) {
        std::vector<Point2D> points;
        ASSERT_TRUE(arc.MakePointsUsingHeight(0.0, length, points, height));
        const double chord = length / static_cast<double>(points.size() - 1) / r;
        EXPECT_LE(r * (1 - std::cos(chord / 2)), height * 1.000001);
        const double longer = length / std::max(1.0, static_cast<double>(points.size()) - 2.0) / r;
        if (points.size() > 2) {
            EXPECT_GT(r * (1 - std::cos(longer / 2)), height) << "fewer would not do";
        }
    }
}

TEST(ArcTest, LawsOnRandomArcs) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240611));
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (const Point2D& origin : surveyOrigins) {
        for (int i = 0; i < 60; ++i) {
            const double sweep = (unit(random) < 0.5 ? -1 : 1) * (0.05 + 6.2 * unit(random));
            const double radius = std::pow(10.0, 4.0 * unit(random));
            const double direction = 2 * kPi * unit(random);
            const Arc2D arc(origin + Vec2D(std::cos(direction), std::sin(direction)) * radius, origin, Angle(sweep));
            SCOPED_TRACE(testing::Message() << "sweep " << sweep << " radius " << radius << " from " << direction);
            CheckLaws(arc, random);
            if (testing::Test::HasFailure()) return;

            Arc2D again;  // any three of its points determine the arc
            std::vector<Sample> samples;
            ASSERT_TRUE(arc.MakePointsAndTangents(0.0, arc.GetLength() * (0.1 + 0.8 * unit(random)), samples, 1e9));
            ASSERT_TRUE(again.Set(arc.GetStart(), samples.back().point, arc.GetEnd()));
            EXPECT_NEAR(again.GetAngle().GetRadians(), sweep, 1e-6 / radius + 1e-4 * 4 / (sweep * sweep) / radius);
            EXPECT_THAT(again.GetEnd(), IsNear(arc.GetEnd(), 1e-8));
            EXPECT_LE(std::abs(again.GetRadius() - radius), 1e-5);
        }
    }
}

TEST(ArcTest, BoxOfAQuarterReachesTheTwoExtremesOnIt) {
    const BoundingBox2D box = Arc2D(Point2D(3, 0), Point2D(0, 0), Angle(kPi / 2)).GetBoundingBox();
    EXPECT_THAT(box.GetMinPoint(), IsNear(Point2D(0, 0), 1e-15));
    EXPECT_THAT(box.GetMaxPoint(), IsNear(Point2D(3, 3), 1e-15));
    // 0.004 short of the north: within the fixed 0.005 the box keeps the circle's side.
    const Arc2D almost(Point2D(3, 0), Point2D(0, 0), Angle(kPi / 2 - 0.004 / 3));
    EXPECT_EQ(almost.GetBoundingBox3D().GetMaxPoint().GetY(), 3.0);
    EXPECT_LT(Arc2D(Point2D(3, 0), Point2D(0, 0), Angle(kPi / 2 - 0.006 / 3)).GetBoundingBox().GetMaxPoint().GetY(),
              3.0);
}

TEST(ArcTest, ThreePoints) {
    struct Row {
        const char* why;
        Point2D p1, p2, p3;
        bool expected;
        double sweep;
        Point2D center;
    };
    const Row rows[] = {
        {"counter-clockwise", Point2D(5, 0), Point2D(4, 3), Point2D(0, 5), true, kPi / 2, Point2D(0, 0)},
        {"clockwise", Point2D(0, 5), Point2D(4, 3), Point2D(5, 0), true, -kPi / 2, Point2D(0, 0)},
        {"the long way round", Point2D(5, 0), Point2D(-4, -3), Point2D(0, 5), true, -3 * kPi / 2, Point2D(0, 0)},
        {"half", Point2D(5, 0), Point2D(0, -5), Point2D(-5, 0), true, -kPi, Point2D(0, 0)},
        {"closed", Point2D(5, 0), Point2D(-5, 0), Point2D(5, 0), true, 2 * kPi, Point2D(0, 0)},
        {"collinear", Point2D(0, 0), Point2D(1, 1), Point2D(3, 3), false, 0, Point2D()},
        {"first two equal", Point2D(0, 0), Point2D(0, 0), Point2D(3, 3), false, 0, Point2D()},
        {"all equal", Point2D(1, 0), Point2D(1, 0), Point2D(1, 0), false, 0, Point2D()},
        {"NaN", Point2D(0, 0), Point2D(kNan, 1), Point2D(3, 3), false, 0, Point2D()},
        {"infinite", Point2D(0, 0), Point2D(kInfinity, 1), Point2D(3, 3), false, 0, Point2D()},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Arc2D untouched(Point2D(1, 0), Point2D(0, 0), Angle(1.0));
            Arc2D arc = untouched;
            ASSERT_EQ(arc.Set(origin + row.p1, origin + row.p2, origin + row.p3), row.expected);
            if (!row.expected) {
                EXPECT_TRUE(arc.IsEqualTo(untouched, 1e-15));
                continue;
            }
            EXPECT_NEAR(arc.GetAngle().GetRadians(), row.sweep, 1e-14);
            EXPECT_THAT(arc.GetCenter(), IsNear(origin + row.center, 2e-9));
            EXPECT_THAT(arc.GetEnd(), IsNear(origin + row.p3, 3e-9));
        }
    }
    Circle2D circle(Point2D(7, 7), 7.0);  // 0.01 out of line: flat within 0.1, not within 0.001
    const Point2D p[] = {Point2D(0, 0), Point2D(50, 0.01), Point2D(100, 0)};
    EXPECT_FALSE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.1));
    EXPECT_EQ(circle.GetRadius(), 7.0);
    EXPECT_TRUE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.001));
    EXPECT_NEAR(circle.GetRadius(), 125000.005, 1e-6);  // (c^2 / 4 + h^2) / 2h
}

TEST(ArcTest, FlatArcsKeepTheAccuracyOfTheirCoordinates) {
    const Point2D start(385000.0, 6672000.0);
    const Point2D end(385100.0, 6672000.0);
    const Arc2D arc(start, -1e-8, end);  // radius 2.5e9, sagitta 5e-7
    EXPECT_THAT(arc.GetEnd(), IsNear(end, 2e-9));
    EXPECT_NEAR(arc.GetHeight(), 5e-7, 1e-15);
    EXPECT_NEAR(arc.GetLength(), 100.0, 1e-12);
    double station = 0.0;
    const Point2D on = start + Vec2D(30.0, 0.0);
    ASSERT_TRUE(arc.GetLengthFromStartPoint(on, station, 1e-6));
    EXPECT_NEAR(station, 30.0, 1e-9);
    EXPECT_THAT(arc.GetNearestPoint(on, kTolerances), IsNear(on, 1e-6));
    EXPECT_NEAR(arc.GetArea(), 2.0 / 3.0 * 100.0 * 5e-7, 1e-12);  // of a parabola
    int count = 0;
    double y = 0.0;
    EXPECT_EQ(count = arc.GetY(start.GetX() + 50.0, y, 1e-6), 1);
    EXPECT_NEAR(y, start.GetY() + 5e-7, 1.4e-9);
}

TEST(ArcTest, HeightAtAnAbscissa) {
    struct Row {
        const char* why;
        double sweep, x, tol;
        int expected;
        double y;
    };
    const Row rows[] = {
        {"upper quarter", kPi / 2, 3, 0, 1, 4},
        {"lower quarter", -kPi / 2, 3, 0, 1, -4},
        {"start side of a clockwise arc comes first", -3 * kPi / 2, -3, 0, 2, -4},
        {"only one side swept", 3 * kPi / 2, 3, 0, 1, 4},
        {"full circle", 2 * kPi, 3, 0, 2, 4},
        {"tangent at the start", 2 * kPi, 5, 0, 1, 0},
        {"just beyond the circle within the tolerance", kPi, -5.001, 0.01, 1, 0},
        {"beyond the tolerance", kPi, -5.001, 0.0001, 0, 9},
        {"not swept", kPi / 2, -3, 0, 0, 9},
        {"NaN", kPi / 2, kNan, 0.1, 0, 9},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Arc2D arc(origin + Vec2D(5, 0), origin, Angle(row.sweep));
            double y = 9.0 + origin.GetY();
            EXPECT_EQ(arc.GetY(row.x + origin.GetX(), y, row.tol), row.expected);
            EXPECT_NEAR(y - origin.GetY(), row.y, 2e-9);
        }
    }
}

TEST(ArcTest, EditsMoveTheArc) {
    Arc2D arc(Point2D(5, 0), Point2D(0, 0), Angle(kPi / 2));
    IPolyline2DElement& element = arc;
    const Point2D middle = arc.GetMiddlePoint();
    EXPECT_FALSE(element.ExtendEnd(Point2D(-5, 0), kTolerances)) << "false although it has moved";
    EXPECT_TRUE(arc.IsEqualTo(Arc2D(Point2D(5, 0), Point2D(0, 0), Angle(kPi)), 1e-12));
    EXPECT_FALSE(element.ExtendStart(Point2D(4, -3), kTolerances));
    EXPECT_THAT(arc.GetStart(), IsNear(Point2D(4, -3), 0.0));
    EXPECT_TRUE(arc.IsPointOnGeometry(middle, kTolerances));
    EXPECT_NEAR(arc.GetAngle().GetRadians(), kPi + std::atan2(3, 4), 1e-12);

    arc.Move(arc.GetEnd());
    EXPECT_THAT(arc.GetStart(), IsNear(Point2D(-5, 0), 1e-12));
    EXPECT_NEAR(arc.GetRadius(), 5.0, 1e-12);
    arc.Set(arc.GetCenter(), arc.GetStart(), Angle(-kPi));  // its own points exchanged
    EXPECT_THAT(arc.GetEnd(), IsNear(arc.GetCenter() * 2.0 - (arc.GetStart() - Point2D()), 1e-12));

    Arc2D circle(Point2D(5, 0), Point2D(0, 0), Angle(2 * kPi));
    circle.Reverse();
    EXPECT_EQ(circle.GetAngle().GetRadians(), 2 * kPi);
    EXPECT_TRUE(circle.IsPointInside(Point2D(4.9, 0), 1e-10));
    EXPECT_FALSE(circle.IsPointInside(Point2D(5.1, 0), 1e-10));

    Arc2D quarter(Point2D(5, 0), Point2D(0, 0), Angle(kPi / 2));
    EXPECT_FALSE(quarter.IsPointInside(Point2D(2, 2), 1e-10)) << "in the sector, not in the segment";
    EXPECT_TRUE(quarter.IsPointInside(Point2D(3, 3), 1e-10));
    EXPECT_FALSE(quarter.IsEqualTo(static_cast<const IGeometry&>(circle), 1.0));
    quarter.Reverse();
    quarter.Reverse();
    EXPECT_TRUE(quarter.IsEqualTo(Arc2D(Point2D(5, 0), Point2D(0, 0), Angle(kPi / 2)), 1e-300)) << "to the last bit";
}

TEST(ArcTest, SamplingRanges) {
    const Arc2D arc(Point2D(10, 0), Point2D(0, 0), Angle(-1.0));  // 10 m
    struct Row {
        const char* why;
        double from, to, step;
        std::size_t regular, withEnd;  // samples of MakePoints closed at the end, and with `to` itself
    };
    const Row rows[] = {
        {"whole", 0, 10, 2.5, 5, 5},        {"a remainder", 0, 10, 3, 4, 5},   {"beyond the end", 0, 20, 3, 5, 5},
        {"ends inside", 1, 9, 3, 3, 4},     {"a single point", 4, 4, 1, 1, 1}, {"no drift", 0, 10, 0.001, 10001, 10001},
        {"starts behind", 11, 20, 1, 0, 0}, {"ends before", -5, -1, 1, 0, 0},  {"no step", 0, 10, 0, 0, 0},
        {"NaN", 0, 10, kNan, 0, 0},         {"NaN range", kNan, 10, 1, 0, 0},  {"beyond memory", 0, 10, 1e-300, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<Point2D> regular;
        std::vector<Sample> samples;
        LineString2D lineString;
        EXPECT_EQ(arc.MakePoints(row.from, row.to, row.step, regular, true), row.regular > 0);
        EXPECT_EQ(arc.MakePointsAndTangents(row.from, row.to, samples, row.step), row.withEnd > 0);
        EXPECT_EQ(arc.MakeLineString(row.from, row.to, lineString, row.step), row.withEnd > 0);
        EXPECT_EQ(regular.size(), row.regular);
        ASSERT_EQ(samples.size(), row.withEnd);
        EXPECT_EQ(lineString.GetSize(), row.withEnd);
        if (!samples.empty()) {
            EXPECT_EQ(samples.back().station, std::min(row.to, arc.GetLength()));
        }
    }
    LineString2D lineString;
    EXPECT_TRUE(arc.MakeLineStringUsingHeight(2.0, 8.0, lineString, 1e9));
    EXPECT_EQ(lineString.GetSize(), 2u);
    EXPECT_FALSE(arc.MakeLineStringUsingHeight(0.0, 10.0, lineString, 0.0));
    EXPECT_EQ(arc.MakeLines(3.0).size(), 4u);
    EXPECT_TRUE(arc.MakeLines(-3.0).empty());
}

TEST(ArcTest, DegenerateArcsAreHarmless) {
    const Arc2D arcs[] = {Arc2D(),
                          Arc2D(Point2D(3, 4), Point2D(3, 4), Angle(2.0)),
                          Arc2D(Point2D(kNan, 0), Point2D(), Angle(1.0)),
                          Arc2D(Point2D(1, 0), Point2D(), Angle(kInfinity)),
                          Arc2D(Point2D(3, 4), 0.0, Point2D(9, 9)),
                          Arc2D(Point2D(3, 4), kNan, Point2D(9, 9))};
    for (const Arc2D& arc : arcs) {
        Point2D p(9, 9);
        Arc2D part;
        double value = 9.0;
        std::vector<IGeometry*> out;
        EXPECT_FALSE(arc.BreakAt({Point2D(3, 4), Point2D(0, 0)}, out, kTolerances));
        EXPECT_TRUE(out.empty());
        EXPECT_FALSE(arc.MakeArc(0.0, 1.0, part));
        EXPECT_FALSE(arc.GetLengthFromStartPoint(Point2D(50, 50), value, 0.1));
        EXPECT_FALSE(arc.GetLengthFromStartPoint(Point2D(kNan, 50), value, 0.1));
        EXPECT_EQ(value, 9.0);
        std::vector<Point2D> points;
        EXPECT_FALSE(arc.MakePointsUsingHeight(0.0, kNan, points, 0.1));
        (void)arc.GetBoundingBox();
        (void)arc.GetNearestPoint(p, kTolerances);
    }
    const Arc2D dot(Point2D(3, 4), Point2D(3, 4), Angle(2.0));
    double station = 9.0;
    EXPECT_TRUE(dot.GetLengthFromStartPoint(Point2D(3, 4), station, 0.1));
    EXPECT_EQ(station, 0.0);
    EXPECT_THAT(dot.GetNearestPoint(Point2D(7, 7), kTolerances), IsNear(Point2D(3, 4), 0.0));
    EXPECT_THAT(Arc2D(Point2D(3, 4), 0.0, Point2D(9, 9)).GetEnd(), IsNear(Point2D(3, 4), 0.0));
}

}  // namespace
}  // namespace Kalvio::Math
