#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(IntersectionTest, LineLine) {
    using R = IntersectionResult;
    using P = Point2D;
    const std::tuple<const char*, Line2D, Line2D, R, Point2D> rows[] = {
        {"cross", {P(0, 0), P(4, 4)}, {P(0, 4), P(4, 0)}, R::Intersecting, P(2, 2)},
        {"beyond both", {P(0, 0), P(1, 0)}, {P(5, 3), P(5, 1)}, R::Intersecting, P(5, 0)},
        {"the same line", {P(0, 0), P(4, 2)}, {P(8, 4), P(6, 3)}, R::Coincident, P(7, 7)},
        {"parallel", {P(0, 0), P(4, 2)}, {P(0, 1), P(4, 3)}, R::NoIntersection, P(7, 7)},
        {"parallel within tol", {P(0, 0), P(4, 0)}, {P(0, 0.125), P(4, 0.125)}, R::Coincident, P(7, 7)},
        {"as short as tol", {P(0, 0), P(0.125, 0)}, {P(0, 1), P(0, 2)}, R::Degenerate, P(7, 7)},
        {"short, at a slight angle", {P(0, 0), P(0.25, 2e-11)}, {P(-8, 0), P(8, 0)}, R::Intersecting, P(0, 0)},
        {"NaN", {P(0, 0), P(4, kNan)}, {P(0, 4), P(4, 0)}, R::NoIntersection, P(7, 7)},
        {"to infinity", {P(0, 0), P(kInfinity, 0)}, {P(1, -1), P(1, 1)}, R::Degenerate, P(7, 7)},
        {"too long to square", {P(0, 0), P(1e160, 0)}, {P(1, -1e160), P(1, 1e160)}, R::Degenerate, P(7, 7)},
        {"too far", {P(1, 1e305), P(1e9, 1e305)}, {P(1e305, 1), P(1e305, 1e9)}, R::NoIntersection, P(7, 7)},
    };
    const Tolerances tolerances(0.125, 1e-10);
    for (const auto& [why, a, b, result, expected] : rows) {
        Point2D p(7, 7), q(7, 7);
        EXPECT_EQ(Intersection::LineLine(a, b, p, tolerances), result) << why;
        EXPECT_EQ(Intersection::LineLine(b.GetStart(), b.GetEnd(), a.GetStart(), a.GetEnd(), q, tolerances), result);
        EXPECT_THAT(p, IsNear(expected, 1e-9)) << why;
        EXPECT_THAT(q, IsNear(expected, 1e-9)) << why;
        const Vec2D alongA = a.GetEnd() - a.GetStart(), alongB = b.GetEnd() - b.GetStart();
        Point2D r(7, 7);
        const int count = result == R::Intersecting ? 1 : 0;
        EXPECT_EQ(Intersection::LineLine(a.GetStart(), alongA, b.GetStart(), alongB, r, tolerances), result) << why;
        EXPECT_THAT(r, IsNear(expected, 1e-9)) << why;
        EXPECT_EQ(Intersection::LineLine(a, b, r, 0.125), count) << why;
    }
}

TEST(IntersectionTest, LineSegmentLine) {
    using R = IntersectionResult;
    using P = Point2D;
    const std::tuple<const char*, Line2D, R, Point2D> rows[] = {
        {"beyond the two points", {P(8, -1), P(9, 1)}, R::Intersecting, P(8.5, 0)},
        {"an end within tol", {P(-3, 5), P(-3, 0.0625)}, R::Intersecting, P(-3, 0.0625)},
        {"an end too far", {P(-3, 5), P(-3, 0.25)}, R::NoIntersection, P(7, 7)},
        {"along it", {P(3, 0), P(4, 0)}, R::Coincident, P(7, 7)},
        {"too short", {P(3, 0), P(3, 0.125)}, R::Degenerate, P(7, 7)},
    };
    const Line2D line(P(0, 0), P(2, 0));
    for (const auto& [why, segment, result, expected] : rows) {
        Point2D p(7, 7);
        EXPECT_EQ(Intersection::LineSegmentLine(segment, line, p, Tolerances(0.125, 1e-10)), result) << why;
        EXPECT_THAT(p, IsNear(expected, 1e-9)) << why;
        EXPECT_EQ(Intersection::LineSegmentLine(segment, line, p, 0.125), result == R::Intersecting ? 1 : 0) << why;
    }
}

TEST(IntersectionTest, CollinearSegments) {
    using R = IntersectionResult;
    const std::tuple<const char*, double, double, double, R, std::vector<double>> rows[] = {
        {"a gap below the tolerance", 4.0625, 6, 0.125, R::Intersecting, {4.0625}},
        {"a gap of the tolerance", 4.125, 6, 0.125, R::NoIntersection, {}},
        {"an overlap below it", 3.9375, 6, 0.125, R::Intersecting, {3.9375}},
        {"an overlap of it", 6, 3.875, 0.125, R::Intersecting, {3.875, 4}},
        {"both ends agree", 4.125, -0.125, 0.125, R::Coincident, {0, 4}},
        {"they do not without a tolerance", 4.125, 0, 0, R::Intersecting, {0, 4}},
        {"end to end", 4, 6, 0, R::Intersecting, {4}},
    };
    for (const auto& [why, from, to, tolerance, result, expected] : rows) {
        std::vector<Point2D> found;
        const Line2D a(Point2D(0, 0), Point2D(4, 0)), b(Point2D(from, 0), Point2D(to, 0));
        EXPECT_EQ(Intersection::LineSegmentLineSegment(a, b, found, Tolerances(tolerance, 1e-10)), result) << why;
        ASSERT_EQ(found.size(), expected.size()) << why;
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i], Point2D(expected[i], 0)) << why;
    }
}

TEST(IntersectionTest, LineCircleTellsPointsAndTangentsByTheDiscriminant) {
    using P = Point2D;
    const std::tuple<const char*, Line2D, double, int, P, P> rows[] = {
        {"level", {P(0, 3), P(1, 3)}, 0.0, 2, P(-4, 3), P(4, 3)},
        {"level, the other way", {P(1, 3), P(0, 3)}, 0.0, 2, P(4, 3), P(-4, 3)},
        {"rising: the upper point first", {P(3, 0), P(3, 2)}, 0.0, 2, P(3, 4), P(3, -4)},
        {"falling: the upper point first", {P(3, 2), P(3, 0)}, 0.0, 2, P(3, 4), P(3, -4)},
        {"through the centre", {P(-3, -4), P(3, 4)}, 0.0, 2, P(3, 4), P(-3, -4)},
        {"a tangent", {P(-2, 5), P(2, 5)}, 1e-6, 1, P(0, 5), P(0, 5)},
        {"beside, the discriminant -11 within the tolerance", {P(0, 6), P(1, 6)}, 16.0, 1, P(0, 6), P(0, 6)},
        {"beside", {P(0, 6), P(1, 6)}, 8.0, 0, P(7, 7), P(7, 7)},
        {"no line", {P(0, 5), P(0, 5)}, 1e-6, 0, P(7, 7), P(7, 7)},
        {"NaN", {P(0, kNan), P(0, 5)}, 1e-6, 0, P(7, 7), P(7, 7)},
    };
    for (const auto& [why, line, tolerance, count, expected1, expected2] : rows) {
        Point2D p1(7, 7), p2(7, 7);
        EXPECT_EQ(Intersection::LineCircle(line, Circle2D(P(0, 0), 5), p1, p2, tolerance), count) << why;
        EXPECT_THAT(p1, IsNear(expected1, 1e-12)) << why;
        EXPECT_THAT(p2, IsNear(expected2, 1e-12)) << why;
    }
}

TEST(IntersectionTest, CircleCircle) {
    using R = IntersectionResult;
    using P = Point2D;
    const std::tuple<const char*, Circle2D, R, std::vector<P>> rows[] = {
        {"the right of the way first", {P(6, 0), 5}, R::Intersecting, {P(3, -4), P(3, 4)}},
        {"and back", {P(-6, 0), 5}, R::Intersecting, {P(-3, 4), P(-3, -4)}},
        {"touching outside", {P(0, 10), 5}, R::Intersecting, {P(0, 5)}},
        {"touching outside, of rounded numbers", {P(8.9, 0), 3.9}, R::Intersecting, {P(5, 0)}},
        {"touching inside", {P(3, 0), 2}, R::Intersecting, {P(5, 0)}},
        {"apart", {P(0, 10.001), 5}, R::NoIntersection, {}},
        {"inside", {P(0, 1), 2}, R::NoIntersection, {}},
        {"concentric", {P(0, 0), 2}, R::NoIntersection, {}},
        {"the same", {P(0, 0), 5}, R::Coincident, {}},
        {"a point", {P(5, 0), 0}, R::Degenerate, {}},
        {"NaN", {P(kNan, 0), 5}, R::NoIntersection, {}},
        {"NaN radius", {P(1, 0), kNan}, R::Degenerate, {}},
    };
    for (const auto& [why, circle, result, expected] : rows) {
        std::vector<P> points;
        EXPECT_EQ(Intersection::CircleCircle(Circle2D(P(0, 0), 5), circle, points, Tolerances(1e-4, 1e-10)), result);
        EXPECT_THAT(points, testing::Pointwise(AreNear(1e-12), expected)) << why;
        EXPECT_EQ(Intersection::CircleCircle(Circle2D(P(0, 0), 5), circle, points, 1e-4), expected.size()) << why;
        points.clear();
        EXPECT_EQ(Intersection::CircleCircle(circle, circle, points, 0.0), 0) << why;
    }
}

TEST(IntersectionTest, IsPointInsideLineBounds) {
    const Line2D line(Point2D(4, 0), Point2D(0, 2));
    EXPECT_TRUE(Intersection::IsPointInsideLineBounds(Point2D(4.25, -0.25), line, -0.25));
    EXPECT_FALSE(Intersection::IsPointInsideLineBounds(Point2D(4.3, 1), line, 0.25));
    EXPECT_FALSE(Intersection::IsPointInsideLineBounds(Point2D(1, 2.3), line, 0.25));
    EXPECT_FALSE(Intersection::IsPointInsideLineBounds(Point2D(kNan, 1), line, 0.25));
}

TEST(IntersectionTest, LineStringLine) {
    using P = Point2D;
    using R = IntersectionResult;
    const std::tuple<const char*, LineString2D, R, std::vector<Point2D>> rows[] = {
        {"nothing", {}, R::Degenerate, {}},
        {"a point on it, for the form that counts", {P(3, 0.25)}, R::Degenerate, {P(3, 0.25)}},
        {"through", {P(9, -2), P(9, 2), P(-7, -2)}, R::Intersecting, {P(9, 0), P(1, 0)}},
        {"a vertex on it once", {P(1, -1), P(2, 0), P(3, 1)}, R::Intersecting, {P(2, 0)}},
        {"a vertex that touches, just across", {P(1, 1), P(2, -0.125), P(3, 1)}, R::Intersecting, {P(2, -0.125)}},
        {"along it", {P(1, 1), P(2, 0), P(4, 0), P(6, -1)}, R::Intersecting, {P(2, 0), P(4, 0)}},
        {"there and back", {P(3, 3), P(1, 0), P(5, 0), P(2, 0), P(2, 3)}, R::Intersecting, {P(1, 0), P(5, 0)}},
        {"all on it", {P(1, 0), P(5, 0.125)}, R::Coincident, {P(1, 0), P(5, 0.125)}},
        {"a vertex twice", {P(1, -1), P(2, 0), P(2, 0), P(3, 1)}, R::Intersecting, {P(2, 0)}},
        {"closed through its start", {P(2, 0), P(3, 1), P(5, -1), P(2, 0)}, R::Intersecting, {P(2, 0), P(4, 0)}},
        {"no length", {P(1, 2), P(1, 2)}, R::Degenerate, {}},
        {"NaN", {P(1, -1), P(2, kNan), P(3, 1)}, R::Degenerate, {}},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - Point2D()}) {
        for (const auto& [why, string, result, expected] : rows) {
            SCOPED_TRACE(why);
            std::vector<Point2D> points, same;
            const Line2D line(Point2D() + shift, Point2D(1, 0) + shift), endless(P(0, 0), P(kInfinity, 0));
            const LineString2D moved = string.Translate(shift);
            EXPECT_EQ(Intersection::LineStringLine(moved, line, points, 0.25), static_cast<int>(expected.size()));
            for (Point2D& p : points) p -= shift;
            EXPECT_THAT(points, testing::Pointwise(AreNear(1e-9), expected));
            EXPECT_EQ(Intersection::LineStringLine(moved, line, same, Tolerances(0.25, 1e-10)), result);
            EXPECT_EQ(Intersection::LineStringLine(moved, Line2D(), points, 0.25), 0) << "no line";
            EXPECT_EQ(Intersection::LineStringLine(moved, endless, points, kTolerances), R::Degenerate);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
