#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/GeometryCreator.h"
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
    };
    const double h = std::sqrt(0.5);
    const Row rows[] = {
        {"quarter", kPi / 2, 2, kPi, 0.41421356237309503, 2 - 2 * h, kPi - 2, Point2D(2 * h, 2 * h), Point2D(0, 2)},
        {"half", -kPi, -2, 2 * kPi, -1, 2, 2 * kPi, Point2D(0, -2), Point2D(-2, 0)},
        {"three quarters", -3 * kPi / 2, -2, 3 * kPi, -2.414213562373095, 2 + 2 * h, 3 * kPi + 2,
         Point2D(-2 * h, -2 * h), Point2D(0, 2)},
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
            EXPECT_TRUE(Arc2D(arc.GetStart(), row.bulge, arc.GetEnd()).IsEqualTo(arc, 3e-9));
        }
    }
    EXPECT_EQ(Arc2D::SignAngle(Vec2D(-1.0, -0.0)).GetRadians(), kPi) << "minus zero is not below the axis";
}

TEST(ArcTest, EndsAndSeamHaveStationsWithinTheTolerance) {
    constexpr double none = -1.0;
    struct Row {
        const char* why;
        double sweep, radius, direction, fromStart, fromEnd;  // radius and direction of the point from the centre
    };
    const double l = 5 * kPi;
    const Row rows[] = {
        {"off the circle by less than the tolerance", kPi / 2, 10.009, kPi / 4, l / 2, l / 2},
        {"off the circle by more", kPi / 2, 10.011, kPi / 4, none, none},
        {"just before the start", kPi / 2, 10.0, -0.0009, 0.0, l},
        {"just beyond the end", kPi / 2, 10.0, kPi / 2 + 0.0009, l, 0.0},
        {"just before a clockwise start", -kPi / 2, 10.0, 0.0009, 0.0, l},
        {"just before the seam of a full circle", 2 * kPi, 10.0, -0.0009, 0.0, 0.009},
        {"just behind the seam", 2 * kPi, 10.0, 0.0009, 0.009, 0.0},
        {"NaN", kPi / 2, kNan, 0.0, none, none},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Arc2D arc(origin + Vec2D(10, 0), origin, Angle(row.sweep));
            const Point2D p = origin + Vec2D(std::cos(row.direction), std::sin(row.direction)) * row.radius;
            double fromStart = none;
            double fromEnd = none;
            const bool on = row.fromStart != none;
            EXPECT_EQ(arc.GetLengthFromStartPoint(p, fromStart, -0.01), on) << "the sign of a tolerance is ignored";
            EXPECT_EQ(arc.GetLengthFromEndPoint(p, fromEnd, 0.01), on);
            EXPECT_EQ(arc.IsPointOnGeometry(p, Tolerances(0.01, 1e-10)), on);
            EXPECT_NEAR(fromStart, row.fromStart, 2e-8);
            EXPECT_NEAR(fromEnd, row.fromEnd, 2e-8);
        }
    }
}

// What must hold for every arc, told from samples every hundredth of its length.
void CheckLaws(const Arc2D& arc, std::mt19937_64& random) {
    const double length = arc.GetLength();
    const double r = arc.GetRadius();
    const Tolerances tight(1e-8, 1e-10);
    std::vector<Sample> samples;
    ASSERT_TRUE(arc.MakePointsAndTangents(0.0, length, samples, length / 100.0));
    ASSERT_EQ(samples.size(), 101u);
    EXPECT_THAT(samples.back().point, IsNear(arc.GetEnd(), 3e-9));

    Arc2D reversed = arc;
    reversed.Reverse();
    const Point2D low = arc.GetBoundingBox().GetMinPoint();
    const Point2D high = arc.GetBoundingBox().GetMaxPoint();
    Point2D least = samples.front().point;
    Point2D most = least;
    Point2D previous = least;
    double twiceArea = 0.0;
    for (const Sample& sample : samples) {
        double fromStart = -1.0;
        double fromEnd = -1.0;
        Vec2D tangent;
        ASSERT_TRUE(arc.GetLengthFromStartPoint(sample.point, fromStart, 1e-8));
        ASSERT_TRUE(reversed.GetLengthFromEndPoint(sample.point, fromEnd, 1e-8));
        ASSERT_TRUE(reversed.ComputeTangent(sample.point, tangent, tight));
        EXPECT_NEAR(fromStart, sample.station, 1e-8);
        EXPECT_NEAR(fromEnd, sample.station, 1e-8);
        EXPECT_THAT(tangent, IsNear(-sample.tangent, 1e-8));
        EXPECT_TRUE(arc.IsPointInside(sample.point, 1e-8));
        for (const int axis : {0, 1}) {
            least[axis] = std::min(least[axis], sample.point[axis]);
            most[axis] = std::max(most[axis], sample.point[axis]);
        }
        twiceArea += (previous - arc.GetStart()).PerpDotProduct(sample.point - arc.GetStart());
        previous = sample.point;
    }
    // The polygon of the samples and a hundred parabolic segments, good to the fifth power of a step.
    const double segments = 100.0 * r * r * std::pow(length / r / 100.0, 3) / 12.0;
    EXPECT_NEAR(std::abs(twiceArea) / 2 + segments, arc.GetArea(), 1e-6 * r * r + 1e-8 * r);
    // A sample lies within half a step of every extreme; the box allows itself 0.005.
    const double slack = r * (1 - std::cos(length / r / 200)) + 0.005;
    for (const int axis : {0, 1}) {
        EXPECT_TRUE(low[axis] <= least[axis] + 4e-9 && least[axis] <= low[axis] + slack);
        EXPECT_TRUE(high[axis] >= most[axis] - 4e-9 && most[axis] >= high[axis] - slack);
    }

    std::uniform_real_distribution<double> around(-2.0, 2.0);
    for (int i = 0; i < 20; ++i) {
        const Point2D query = arc.GetCenter() + Vec2D(around(random), around(random)) * r;
        const Point2D nearest = arc.GetNearestPoint(query, tight);
        EXPECT_TRUE(arc.IsPointOnGeometry(nearest, tight));
        for (const Sample& sample : samples) EXPECT_LE(query.Distance(nearest), query.Distance(sample.point) + 1e-8);
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
    Point2D joint = arc.GetStart();
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& piece = static_cast<const Arc2D&>(*pieces[i]);
        Arc2D part;
        ASSERT_TRUE(arc.MakeArc(ends[i], ends[i + 1], part));
        EXPECT_TRUE(piece.IsEqualTo(part, 1e-8));
        EXPECT_NEAR(piece.GetLength(), ends[i + 1] - ends[i], 1e-8);
        EXPECT_THAT(piece.GetStart(), IsNear(joint, 0.0));
        joint = piece.GetEnd();
    }
    EXPECT_THAT(joint, IsNear(arc.GetEnd(), 0.0));

    std::vector<Point2D> points;
    const double height = 1e-4 * r;
    ASSERT_TRUE(arc.MakePointsUsingHeight(0.0, length, points, height));
    const auto sagitta = [&](std::size_t chords) {
        return r * (1 - std::cos(length / r / static_cast<double>(chords) / 2));
    };
    EXPECT_LE(sagitta(points.size() - 1), height * 1.000001);
    EXPECT_TRUE(points.size() == 2 || sagitta(points.size() - 2) > height) << "fewer would not do";
}

TEST(ArcTest, LawsOnRandomArcs) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240611));
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (const Point2D& origin : surveyOrigins) {
        for (int i = 0; i < 60; ++i) {
            const double sweep = (unit(random) < 0.5 ? -1 : 1) * (0.05 + 6.2 * unit(random));
            const double radius = std::pow(10.0, 4.0 * unit(random));
            const double direction = 2 * kPi * unit(random);
            SCOPED_TRACE(testing::Message() << "sweep " << sweep << " radius " << radius << " from " << direction);
            CheckLaws(Arc2D(origin + Vec2D(std::cos(direction), std::sin(direction)) * radius, origin, Angle(sweep)),
                      random);
            if (HasFailure()) return;
        }
    }
}

TEST(ArcTest, ThreePoints) {
    struct Row {
        const char* why;
        Point2D p1, p2, p3;
        double sweep;  // 0: no arc
    };
    const Row rows[] = {
        {"counter-clockwise", Point2D(5, 0), Point2D(4, 3), Point2D(0, 5), kPi / 2},
        {"clockwise", Point2D(0, 5), Point2D(4, 3), Point2D(5, 0), -kPi / 2},
        {"closed", Point2D(5, 0), Point2D(-5, 0), Point2D(5, 0), 2 * kPi},
        {"collinear", Point2D(0, 0), Point2D(1, 1), Point2D(3, 3), 0},
        {"not finite", Point2D(0, 0), Point2D(kInfinity, 1), Point2D(3, 3), 0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            Arc2D arc(Point2D(1, 0), Point2D(0, 0), Angle(1.0));
            ASSERT_EQ(arc.Set(origin + row.p1, origin + row.p2, origin + row.p3), row.sweep != 0.0);
            EXPECT_NEAR(arc.GetAngle().GetRadians(), row.sweep == 0.0 ? 1.0 : row.sweep, 1e-14);
            if (row.sweep == 0.0) continue;
            EXPECT_THAT(arc.GetCenter(), IsNear(origin, 2e-9));
            EXPECT_THAT(arc.GetEnd(), IsNear(origin + row.p3, 3e-9));
        }
    }
    Circle2D circle;  // 0.01 out of line: flat within 0.1, not within 0.001
    const Point2D p[] = {Point2D(0, 0), Point2D(50, 0.01), Point2D(100, 0)};
    EXPECT_FALSE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.1));
    EXPECT_TRUE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.001));
    EXPECT_NEAR(circle.GetRadius(), 125000.005, 1e-6);  // (c^2 / 4 + h^2) / 2h
}

TEST(ArcTest, FlatArcsKeepTheAccuracyOfTheirCoordinates) {
    const Point2D start(385000.0, 6672000.0);
    const Point2D end(385100.0, 6672000.0);
    const Arc2D arc(start, -1e-8, end);  // radius 2.5e9, sagitta 5e-7
    EXPECT_THAT(arc.GetEnd(), IsNear(end, 2e-9));
    EXPECT_NEAR(arc.GetHeight(), 5e-7, 1e-15);
    EXPECT_NEAR(arc.GetArea(), 2.0 / 3.0 * 100.0 * 5e-7, 1e-12);  // of a parabola
    double station = 0.0;
    ASSERT_TRUE(arc.GetLengthFromStartPoint(start + Vec2D(30.0, 0.0), station, 1e-6));
    EXPECT_NEAR(station, 30.0, 1e-9);
}

TEST(ArcTest, HeightAtAnAbscissa) {
    struct Row {
        const char* why;
        double sweep, x, tol;
        int expected;
        double y;
    };
    const Row rows[] = {
        {"start side of a clockwise arc comes first", -3 * kPi / 2, -3, 0, 2, -4},
        {"only one side swept", 3 * kPi / 2, 3, 0, 1, 4},
        {"tangent at the start", 2 * kPi, 5, 0, 1, 0},
        {"just beyond the circle within the tolerance", kPi, -5.001, 0.01, 1, 0},
        {"not swept", kPi / 2, -3, 0, 0, 9},
        {"NaN", kPi / 2, kNan, 0.1, 0, 9},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            double y = 9.0 + origin.GetY();
            const Arc2D arc(origin + Vec2D(5, 0), origin, Angle(row.sweep));
            EXPECT_EQ(arc.GetY(row.x + origin.GetX(), y, row.tol), row.expected);
            EXPECT_NEAR(y - origin.GetY(), row.y, 2e-9);
        }
    }
}

TEST(ArcTest, EditsMoveTheArc) {
    Arc2D arc(Point2D(5, 0), Point2D(0, 0), Angle(kPi / 2));
    EXPECT_FALSE(arc.IsPointInside(Point2D(2, 2), 1e-10)) << "in the sector, not in the segment";
    EXPECT_TRUE(arc.IsPointInside(Point2D(3, 3), 1e-10));
    arc.Reverse();
    arc.Reverse();
    EXPECT_TRUE(arc.IsEqualTo(Arc2D(Point2D(5, 0), Point2D(0, 0), Angle(kPi / 2)), 1e-300)) << "to the last bit";

    IPolyline2DElement& element = arc;
    EXPECT_FALSE(element.ExtendEnd(Point2D(-5, 0), kTolerances)) << "false although it has moved";
    EXPECT_TRUE(arc.IsEqualTo(Arc2D(Point2D(5, 0), Point2D(0, 0), Angle(kPi)), 1e-12));
    EXPECT_FALSE(element.ExtendStart(Point2D(4, -3), kTolerances));
    EXPECT_THAT(arc.GetStart(), IsNear(Point2D(4, -3), 0.0));
    EXPECT_NEAR(arc.GetAngle().GetRadians(), kPi + std::atan2(3, 4), 1e-12);
    arc.Move(arc.GetEnd());
    EXPECT_THAT(arc.GetStart(), IsNear(Point2D(-5, 0), 1e-12));
    arc.Set(arc.GetCenter(), arc.GetStart(), Angle(-kPi));  // its own points exchanged
    EXPECT_THAT(arc.GetChordMiddlePoint(), IsNear(Point2D(-5, 0), 1e-12));

    Arc2D circle(Point2D(5, 0), Point2D(0, 0), Angle(2 * kPi));
    circle.Reverse();
    EXPECT_EQ(circle.GetAngle().GetRadians(), 2 * kPi);
    EXPECT_TRUE(circle.IsPointInside(Point2D(4.9, 0), 1e-10));
    double length = 0.0;
    EXPECT_TRUE(circle.GetShortestLengthFromEndPoint(Point2D(0, -5), length, 1e-10));
    EXPECT_NEAR(length, 2.5 * kPi, 1e-14);

    // 0.004 short of the north: within the fixed 0.005 the box keeps the circle's side.
    circle.SetAngle(Angle(kPi / 2 - 0.004 / 5));
    EXPECT_THAT(circle.GetBoundingBox3D().GetMaxPoint(), IsNear(Point3D(5, 5, 0), 1e-15));
    EXPECT_THAT(circle.GetBoundingBox().GetMinPoint(), IsNear(Point2D(0.004, 0), 1e-9));
}

TEST(ArcTest, SamplingRanges) {
    const Arc2D arc(Point2D(10, 0), Point2D(0, 0), Angle(-1.0));  // 10 m
    struct Row {
        const char* why;
        double from, to, step;
        std::size_t regular, withEnd;  // samples of MakePoints closed at the end, and with `to` itself
    };
    const Row rows[] = {
        {"beyond the end", 0, 20, 3, 5, 5},
        {"ends inside", 1, 9, 3, 3, 4},
        {"no drift, no doubled end", 0, 10, 0.001, 10001, 10001},
        {"starts behind", 11, 20, 1, 0, 0},
        {"NaN range", kNan, 10, 1, 0, 0},
        {"beyond memory", 0, 10, 1e-300, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<Point2D> regular;
        LineString2D lineString;
        EXPECT_EQ(arc.MakePoints(row.from, row.to, row.step, regular, true), row.regular > 0);
        EXPECT_EQ(arc.MakeLineString(row.from, row.to, lineString, row.step), row.withEnd > 0);
        EXPECT_EQ(regular.size(), row.regular);
        EXPECT_EQ(lineString.GetSize(), row.withEnd);
    }
    EXPECT_EQ(arc.MakeLines(3.0).size(), 4u);
}

TEST(ArcTest, DegenerateArcsAreHarmless) {
    const Point2D p(3, 4);
    for (const Arc2D& arc : {Arc2D(), Arc2D(p, p, Angle(2.0)), Arc2D(Point2D(kNan, 0), p, Angle(1.0)),
                             Arc2D(Point2D(1, 0), p, Angle(kInfinity)), Arc2D(p, 0.0, Point2D(9, 9))}) {
        Arc2D part;
        double value = 9.0;
        std::vector<IGeometry*> out;
        EXPECT_FALSE(arc.BreakAt({p, Point2D()}, out, kTolerances));
        EXPECT_FALSE(arc.MakeArc(0.0, 1.0, part));
        EXPECT_FALSE(arc.GetLengthFromStartPoint(Point2D(50, 50), value, 0.1));
        EXPECT_EQ(value, 9.0);
    }
    double station = 9.0;
    EXPECT_TRUE(Arc2D(p, p, Angle(2.0)).GetLengthFromStartPoint(p, station, 0.1));
    EXPECT_EQ(station, 0.0);
}

TEST(ArcTest, ArcsInSpaceFollowTheirCircle) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240612));
    std::uniform_real_distribution<double> around(-1.0, 1.0);
    const auto vector = [&] { return Vec3D(around(random), around(random), around(random)); };
    const Tolerances tight(1e-8, 1e-10);
    for (int i = 0; i < 100; ++i) {
        const Point3D center(i % 2 == 0 ? Point3D() : Point3D(385000.0, 6672000.0, 120.0));
        const double r = std::pow(10.0, 3.0 * std::abs(around(random)));
        const double sweep = std::copysign(0.1 + 6.1 * std::abs(around(random)), around(random));
        const Arc3D arc(center + vector().Normalize() * r, center, Angle(sweep), Plane3D(center, vector()));
        const Vec3D normal = arc.GetPlane().GetNormal();
        SCOPED_TRACE(testing::Message() << "arc " << i << " radius " << r << " sweep " << sweep);
        const double turn = arc.GetEndAngle().GetRadians() - arc.GetStartAngle().GetRadians();
        EXPECT_NEAR(std::remainder(turn - sweep, 2 * kPi), 0.0, 1e-8);

        std::vector<IPolyline3DElement::PolylineElementPoint> samples;
        ASSERT_TRUE(arc.MakePointsAndTangents(0.0, arc.GetLength(), samples, arc.GetLength() / 100.0));
        Arc3D reversed = arc;
        reversed.Reverse();
        const Point3D query = center + vector() * (2.0 * r);
        const Point3D nearest = arc.GetNearestPoint(query, tight);
        EXPECT_TRUE(arc.IsPointOnGeometry(nearest, tight));
        Vec3D beyond(-9, -9, -9);  // how far the samples reach out of the box
        for (const auto& sample : samples) {
            const Vec3D out = (sample.point - center) / r;
            EXPECT_NEAR(out.Length(), 1.0, 1e-9);
            EXPECT_THAT(sample.tangent, IsNear(normal.CrossProduct(out) * (sweep < 0 ? -1.0 : 1.0), 1e-8));
            double station = -1.0;
            ASSERT_TRUE(reversed.GetLengthFromEndPoint(sample.point, station, 1e-8));
            EXPECT_NEAR(station, sample.station, 1e-8);
            EXPECT_FALSE(arc.GetLengthFromStartPoint(sample.point + normal * 2e-8, station, 1e-8)) << "off its plane";
            EXPECT_LE(query.Distance(nearest), query.Distance(sample.point) + 1e-8);
            const Vec3D offset = sample.point - arc.GetBoundingBox3D().GetCenter();
            for (const int axis : {0, 1, 2}) {
                const double half = arc.GetBoundingBox3D().GetSize()[axis] / 2;
                beyond[axis] = std::max(beyond[axis], std::abs(offset[axis]) - half);
            }
        }
        const double slack = r * (1 - std::cos(sweep / 200)) + 0.005;  // half a step; 0.005 the box allows itself
        for (const int axis : {0, 1, 2}) EXPECT_NEAR(beyond[axis], -slack / 2, slack / 2 + 4e-9);
        Arc3D again;
        ASSERT_TRUE(again.Set(arc.GetStart(), arc.GetMiddlePoint(), arc.GetEnd()));
        EXPECT_THAT(again.GetEnd(), IsNear(arc.GetEnd(), 1e-8));
        EXPECT_NEAR(again.GetAngle().GetRadians(), std::abs(sweep), 1e-5) << "about the normal of the three points";
    }
}

TEST(ArcTest, PlanArcsComeBack) {
    const Arc2D plan(Point2D(385005, 6672000), Point2D(385000, 6672000), Angle(-2.0));
    Arc2D back;
    ASSERT_TRUE(GeometryCreator::Arc2DFrom3D(Arc3D(plan, 42.0), back));
    EXPECT_TRUE(back.IsEqualTo(plan, 1e-8));
    const Point3D start(5, 0, 0);
    const Plane3D down(Point3D(), Vec3D(0, 0, -1));
    ASSERT_TRUE(GeometryCreator::Arc2DFrom3D(Arc3D(start, Point3D(), Angle(-2.0), down), back));
    EXPECT_EQ(back.GetAngle().GetRadians(), 2.0) << "seen from above";
    ASSERT_TRUE(GeometryCreator::Arc2DFrom3D(Arc3D(start, Point3D(), Angle(2 * kPi), down), back));
    EXPECT_EQ(back.GetAngle().GetRadians(), 2 * kPi);
    const Plane3D tilted(Point3D(), Vec3D(0, 0.1, 1));
    EXPECT_FALSE(GeometryCreator::Arc2DFrom3D(Arc3D(start, Point3D(), Angle(2.0), tilted), back));
    Arc3D arc;
    EXPECT_FALSE(arc.Set(start, Point3D(6, 1, 1), Point3D(7, 2, 2))) << "in line";
    EXPECT_EQ(Arc3D(Point3D(0, 0, 5), Point3D(), Angle(1.0), Plane3D()).GetPlane().GetNormal().GetX(), 1.0)
        << "the wanted normal is along the radius";
}

// The end lies within the tolerance of the start, and a point of a small arc within the tolerance of both.
TEST(ArcTest, NearlyFullTurnsKeepTheirStations) {
    const Arc2D arc(Point2D(10, 0), Point2D(0, 0), Angle(6.2827));
    double length = -1.0;
    ASSERT_TRUE(arc.GetLengthFromStartPoint(arc.GetEnd(), length, 0.01));
    EXPECT_NEAR(length, 62.827, 1e-9);
    const Arc2D small(Point2D(0.001, 0), Point2D(0, 0), Angle(3.0));
    ASSERT_TRUE(small.GetLengthFromStartPoint(small.GetMiddlePoint(), length, 0.01));
    EXPECT_NEAR(length, 0.0015, 1e-12);
}

}  // namespace
}  // namespace Kalvio::Math
