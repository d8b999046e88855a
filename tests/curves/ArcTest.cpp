#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

TEST(ArcTest, DerivedValues) {
    const double h = std::sqrt(0.5);
    const std::tuple<const char*, double, double, double, double, double, double, Point2D, Point2D> rows[] = {
        {"quarter", kPi / 2, 2, kPi, 0.41421356237309503, 2 - 2 * h, kPi - 2, Point2D(2 * h, 2 * h), Point2D(0, 2)},
        {"half", -kPi, -2, 2 * kPi, -1, 2, 2 * kPi, Point2D(0, -2), Point2D(-2, 0)},
        {"three quarters", -3 * kPi / 2, -2, 3 * kPi, -2.414213562373095, 2 + 2 * h, 3 * kPi + 2,
         Point2D(-2 * h, -2 * h), Point2D(0, 2)},
    };
    for (const auto& [why, sweep, signedRadius, length, bulge, height, area, middle, end] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(why);
            const Arc2D arc(origin + Vec2D(2, 0), origin, Angle(sweep));
            EXPECT_EQ(arc.GetSignedRadius(), signedRadius);
            EXPECT_NEAR(arc.GetLength(), length, 1e-14);
            EXPECT_NEAR(arc.GetBulge(), bulge, 1e-15);
            EXPECT_NEAR(arc.GetHeight(), height, 1e-15);
            EXPECT_NEAR(arc.GetArea(), area, 1e-14);
            EXPECT_THAT(arc.GetMiddlePoint(), IsNear(origin + middle, 1.4e-9));
            EXPECT_THAT(arc.GetEnd(), IsNear(origin + end, 1.4e-9));
            EXPECT_TRUE(Arc2D(arc.GetStart(), bulge, arc.GetEnd()).IsEqualTo(arc, 3e-9));
        }
    }
    EXPECT_EQ(Arc2D::SignAngle(Vec2D(-1.0, -0.0)).GetRadians(), kPi) << "minus zero is not below the axis";
    const Point2D start = surveyOrigins[1], end = start + Vec2D(100.0, 0.0);
    const Arc2D flat(start, -1e-8, end);  // radius 2.5e9, sagitta 5e-7
    EXPECT_THAT(flat.GetEnd(), IsNear(end, 2e-9));
    EXPECT_NEAR(flat.GetHeight(), 5e-7, 1e-15);
    EXPECT_NEAR(flat.GetArea(), 2.0 / 3.0 * 100.0 * 5e-7, 1e-12) << "of a parabola";
    EXPECT_NEAR(flat.LengthFromStartPoint(start + Vec2D(30.0, 0.0), 1e-6), 30.0, 1e-9);
}

TEST(ArcTest, EndsAndSeamHaveStationsWithinTheTolerance) {
    constexpr double none = -1.0;
    const double l = 5 * kPi;
    const std::tuple<const char*, double, double, double, double, double> rows[] = {
        {"off the circle by less than the tolerance", kPi / 2, 10.009, kPi / 4, l / 2, l / 2},
        {"off the circle by more", kPi / 2, 10.011, kPi / 4, none, none},
        {"just before the start", kPi / 2, 10.0, -0.0009, 0.0, l},
        {"just beyond the end", kPi / 2, 10.0, kPi / 2 + 0.0009, l, 0.0},
        {"just before a clockwise start", -kPi / 2, 10.0, 0.0009, 0.0, l},
        {"just before the seam of a full circle", 2 * kPi, 10.0, -0.0009, 0.0, 0.009},
        {"just behind the seam", 2 * kPi, 10.0, 0.0009, 0.009, 0.0},
        {"the end, within the tolerance of the start", 6.2827, 10.0, 6.2827, 62.827, 0.0},
        {"NaN", kPi / 2, kNan, 0.0, none, none},
    };
    for (const auto& [why, sweep, radius, direction, toStart, toEnd] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(why);
            const Arc2D arc(origin + Vec2D(10, 0), origin, Angle(sweep));
            const Point2D p = origin + Vec2D(std::cos(direction), std::sin(direction)) * radius;
            double fromStart = none, fromEnd = none;
            const bool on = toStart != none;
            EXPECT_EQ(arc.GetLengthFromStartPoint(p, fromStart, -0.01), on) << "the sign of a tolerance is ignored";
            EXPECT_EQ(arc.GetLengthFromEndPoint(p, fromEnd, 0.01), on);
            EXPECT_EQ(arc.IsPointOnGeometry(p, Tolerances(0.01, 1e-10)), on);
            EXPECT_NEAR(fromStart, toStart, 2e-8);
            EXPECT_NEAR(fromEnd, toEnd, 2e-8);
        }
    }
    const Arc2D small(Point2D(0.001, 0), Point2D(0, 0), Angle(3.0));
    double length = none;
    ASSERT_TRUE(small.GetLengthFromStartPoint(small.GetMiddlePoint(), length, 0.01)) << "within it of both ends";
    EXPECT_NEAR(length, 0.0015, 1e-12);
}

TEST(ArcTest, LawsOnRandomArcs) {
    RandomNumbers random(20240611);
    for (int i = 0; i < 120 && !HasFailure(); ++i) {
        const Point2D& center = surveyOrigins[i % 2];
        const double sweep = std::copysign(random(0.05, 6.25), random(-1.0, 1.0));
        const double r = std::pow(10.0, random(0.0, 4.0)), direction = random(-kPi, kPi);
        const Arc2D arc(center + Vec2D(std::cos(direction), std::sin(direction)) * r, center, Angle(sweep));
        const double length = arc.GetLength();
        SCOPED_TRACE(testing::Message() << "sweep " << sweep << " radius " << r << " run " << i);
        Arc2D part, again;
        ASSERT_TRUE(arc.MakeArc(0.2 * length, 0.7 * length, part));
        EXPECT_THAT(part.GetMiddlePoint(), IsNear(At(arc, 0.45 * length).point, 1e-8));
        EXPECT_NEAR(part.GetLength(), 0.5 * length, 1e-8);
        ASSERT_TRUE(again.Set(part.GetStart(), part.GetMiddlePoint(), part.GetEnd()));
        EXPECT_THAT(again.GetEnd(), IsNear(part.GetEnd(), 4e-9));
        EXPECT_THAT(again.GetMiddlePoint(), IsNear(part.GetMiddlePoint(), 8e-9));
        EXPECT_TRUE(arc.IsPointInside(part.GetMiddlePoint(), 1e-8));
        EXPECT_THAT(NearestOn(arc, center), IsNear(arc.GetStart(), 0.0));

        std::vector<Point2D> points;
        const double height = 1e-4 * r;
        ASSERT_TRUE(arc.MakePointsUsingHeight(0.0, length, points, height));
        const auto chords = static_cast<double>(points.size() - 1);
        EXPECT_LE(r * (1 - std::cos(length / r / chords / 2)), height * 1.000001);
        EXPECT_TRUE(chords == 1 || r * (1 - std::cos(length / r / (chords - 1) / 2)) > height) << "fewer would not do";
    }
}

TEST(ArcTest, ThreePoints) {
    const Arc2D closed(Point2D(5, 0), Point2D(0, 0), Angle(2 * kPi));
    Arc2D arc(Point2D(1, 0), Point2D(0, 0), Angle(1.0));
    for (const double x : {1.0, kInfinity})
        EXPECT_FALSE(arc.Set(Point2D(0, 0), Point2D(x, 1), Point2D(3, 3)) || arc.GetAngle().GetRadians() != 1.0);
    EXPECT_TRUE(arc.Set(Point2D(5, 0), Point2D(-5, 0), Point2D(5, 0)) && arc.IsEqualTo(closed, 1e-14));
    Circle2D circle;  // 0.01 out of line: flat within 0.1, not within 0.001
    const Point2D p[] = {Point2D(0, 0), Point2D(50, 0.01), Point2D(100, 0)};
    EXPECT_FALSE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.1));
    EXPECT_TRUE(GeometryCreator::CircleFrom3Points(p[0], p[1], p[2], circle, 0.001));
    EXPECT_NEAR(circle.GetRadius(), 125000.005, 1e-6);  // (c^2 / 4 + h^2) / 2h
}

TEST(ArcTest, FromCentreEndAndSense) {
    const auto left = WindingValue::CounterClockwise, right = WindingValue::Clockwise;
    const std::tuple<const char*, Point2D, WindingValue, double> rows[] = {
        {"the short way", {0, 10}, left, 0.5 * kPi},
        {"the long way", {0, 10}, right, -1.5 * kPi},
        {"half", {-10, -0.0}, right, -kPi},
        {"a radius off by the tolerance", {0, -10.25}, left, 1.5 * kPi},
        {"by more", {0, -10.26}, left, 0.0},
        {"an end at the start", {10, 0.25}, left, 2 * kPi},
        {"there is no clockwise full circle", {10, 0.25}, right, 0.0},
        {"hardly more than nothing", {9.99, 0.5}, left, std::atan2(0.5, 9.99)},
        {"no sense", {0, 10}, WindingValue::Vertical, 0.0},
        {"no end", {kNan, 10}, left, 0.0},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (const auto& [why, end, sense, sweep] : rows) {
            SCOPED_TRACE(why);
            const Vec2D shift = origin - Point2D();
            Arc2D arc;
            EXPECT_EQ(arc.Set(Point2D(10, 0) + shift, origin, end + shift, sense, 0.25), sweep != 0.0);
            EXPECT_NEAR(arc.GetAngle().GetRadians(), sweep, 1e-9);
        }
    }
}

TEST(ArcTest, HeightAtAnAbscissa) {
    const std::tuple<const char*, double, double, double, int, double> rows[] = {
        {"start side of a clockwise arc comes first", -3 * kPi / 2, -3, 0, 2, -4},
        {"only one side swept", 3 * kPi / 2, 3, 0, 1, 4},
        {"tangent at the start", 2 * kPi, 5, 0, 1, 0},
        {"just beyond the circle within the tolerance", kPi, -5.001, 0.01, 1, 0},
        {"not swept", kPi / 2, -3, 0, 0, 9},
        {"NaN", kPi / 2, kNan, 0.1, 0, 9},
    };
    for (const auto& [why, sweep, x, tol, expected, height] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(why);
            double y = 9.0 + origin.GetY();
            const Arc2D arc(origin + Vec2D(5, 0), origin, Angle(sweep));
            EXPECT_EQ(arc.GetY(x + origin.GetX(), y, tol), expected);
            EXPECT_NEAR(y - origin.GetY(), height, 2e-9);
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
    EXPECT_TRUE(arc.IsEqualTo(Arc2D(Point2D(4, -3), Point2D(0, 0), Angle(kPi + std::atan2(3, 4))), 1e-12));
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

TEST(ArcTest, DegenerateArcsAreHarmless) {
    const Point2D p(3, 4);
    for (const Arc2D& arc : {Arc2D(), Arc2D(p, p, Angle(2.0)), Arc2D(Point2D(kNan, 0), p, Angle(1.0)),
                             Arc2D(Point2D(1, 0), p, Angle(kInfinity)), Arc2D(p, 0.0, Point2D(9, 9)),
                             Arc2D(p, 1e-155, Point2D(9, 9)), Arc2D(p, -1e155, Point2D(9, 9))}) {
        Arc2D part;
        double value = 9.0;
        EXPECT_EQ(std::isnan(arc.GetStart().GetX()) ? 0.0 : arc.GetLength(), 0.0) << "nor is it endless";
        std::vector<IGeometry*> out;
        EXPECT_FALSE(arc.BreakAt({p, Point2D()}, out, kTolerances) || arc.MakeArc(0.0, 1.0, part));
        EXPECT_TRUE(!arc.GetLengthFromStartPoint(Point2D(50, 50), value, 0.1) && value == 9.0);
    }
    double station = 9.0;
    EXPECT_TRUE(Arc2D(p, p, Angle(2.0)).GetLengthFromStartPoint(p, station, 0.1) && station == 0.0);
    EXPECT_DOUBLE_EQ(Arc2D(p, 1e-150, Point2D(6, 8)).GetLength(), 5.0) << "flat, but an arc";
}

TEST(ArcTest, ArcsInSpaceFollowTheirCircle) {
    RandomNumbers random(20240612);
    const auto vector = [&] { return Vec3D(random(-1.0, 1.0), random(-1.0, 1.0), random(-1.0, 1.0)); };
    const Tolerances tight(1e-8, 1e-10);
    for (int i = 0; i < 100; ++i) {
        const Point3D center(i % 2 == 0 ? Point3D() : Point3D(385000.0, 6672000.0, 120.0));
        const double r = std::pow(10.0, 3.0 * std::abs(random(-1.0, 1.0)));
        const double sweep = std::copysign(0.1 + 6.1 * std::abs(random(-1.0, 1.0)), random(-1.0, 1.0));
        const Arc3D arc(center + vector().Normalize() * r, center, Angle(sweep), Plane3D(center, vector()));
        const Vec3D normal = arc.GetPlane().GetNormal();
        SCOPED_TRACE(testing::Message() << "arc " << i << " radius " << r << " sweep " << sweep);
        const double turn = arc.GetEndAngle().GetRadians() - arc.GetStartAngle().GetRadians();
        EXPECT_NEAR(std::remainder(turn - sweep, 2 * kPi), 0.0, 1e-8);

        Arc3D reversed = arc;
        reversed.Reverse();
        const Point3D query = center + vector() * (2.0 * r);
        const Point3D nearest = arc.GetNearestPoint(query, tight);
        EXPECT_TRUE(arc.IsPointOnGeometry(nearest, tight));
        Vec3D beyond(-9, -9, -9);  // how far the samples reach out of the box
        for (int k = 0; k <= 100; ++k) {
            const auto sample = At(arc, arc.GetLength() * k / 100.0);
            const Vec3D out = (sample.point - center) / r, offset = sample.point - arc.GetBoundingBox3D().GetCenter();
            EXPECT_NEAR(out.Length() * r, r, 4e-9);  // a few last digits of the coordinates
            EXPECT_THAT(sample.tangent, IsNear(normal.CrossProduct(out) * (sweep < 0 ? -1.0 : 1.0), 1e-8));
            EXPECT_NEAR(reversed.LengthFromEndPoint(sample.point, 1e-8), sample.station, 1e-8);
            if (k % 20 == 0) CheckStation(arc, sample.station, 1e-8, 1e-8);
            Vec3D tangent;
            ASSERT_TRUE(arc.ComputeTangent(sample.point, tangent, tight));
            EXPECT_THAT(tangent, IsNear(sample.tangent, 1e-8));
            EXPECT_FALSE(arc.ComputeTangent(sample.point + normal * 2e-8, tangent, tight)) << "off its plane";
            EXPECT_LE(query.Distance(nearest), query.Distance(sample.point) + 1e-8);
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
    const Point3D start(5, 0, 0);
    const Plane3D down(Point3D(), Vec3D(0, 0, -1)), tilted(Point3D(), Vec3D(0, 0.1, 1));
    const std::tuple<Arc3D, bool, double> rows[] = {
        {Arc3D(Arc2D(Point2D(5, 0), Point2D(), Angle(-2.0)), 42.0), true, -2.0},
        {Arc3D(start, Point3D(), Angle(-2.0), down), true, 2.0},  // seen from above
        {Arc3D(start, Point3D(), Angle(2 * kPi), down), true, 2 * kPi},
        {Arc3D(start, Point3D(), Angle(2.0), tilted), false, 0.0},
    };
    for (const auto& [arc, flat, sweep] : rows) {
        Arc2D back;
        ASSERT_EQ(GeometryCreator::Arc2DFrom3D(arc, back), flat);
        EXPECT_TRUE(!flat || back.IsEqualTo(Arc2D(Point2D(5, 0), Point2D(), Angle(sweep)), 1e-8)) << sweep;
    }
    EXPECT_FALSE(Arc3D().Set(start, Point3D(6, 1, 1), Point3D(7, 2, 2))) << "in line";
    EXPECT_EQ(Arc3D(Point3D(0, 0, 5), Point3D(), Angle(1.0), Plane3D()).GetPlane().GetNormal().GetX(), 1.0)
        << "the wanted normal is along the radius";
    const Arc3D point(start, start, Angle(1.0), tilted);
    EXPECT_TRUE(point.IsPointOnGeometry(start, kTolerances));
    EXPECT_FALSE(point.IsPointOnGeometry(Point3D(7, 0, 0), kTolerances)) << "in its plane, but far away";
}

}  // namespace
}  // namespace Kalvio::Math
