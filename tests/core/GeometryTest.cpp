#include "kalvio/Math.h"
#include "support/Testing.h"

#include <set>

namespace Kalvio::Math {
namespace {

TEST(GeometryTest, EqualEitherWayAndTurnsBeyondTheMargin) {
    EXPECT_TRUE(Geometry::AreEqual2D(Point3D(1, 2, 3), Point3D(1, 2, 99), 0.1));
    const Point2D a(0, 0), b(1, 0);
    const Line2D line(a, b), back(b, a);
    EXPECT_TRUE(!Geometry::AreEqual(line, back, 1e-6) && Geometry::AreEqualEitherWay(line, back, 1e-6));
    EXPECT_FALSE(Geometry::AreEqualEitherWay(line, a, 1e-6));
    EXPECT_TRUE(Geometry::ArePointsCCW(a, b, Point2D(0, 1)));
    EXPECT_FALSE(Geometry::ArePointsCCW(a, Point2D(0, 1), b) || Geometry::ArePointsCCW(a, b, Point2D(1, 4e-10)));
    EXPECT_TRUE(Geometry::ArePointsCCW(Point2DM(0, 0, 9), Point2DM(1, 0, 8), Point2DM(1, 5e-10, 7)));
}

TEST(GeometryTest, TerminalsByType) {
    Polyline2D inner, outer, hollow;
    inner.AppendElement(new Arc2D(Point2D(1, 0), Point2D(0, 0), Angle(1.0)));
    hollow.AppendElement(new LineString2D());
    outer.AppendElement(inner.Clone());
    outer.AppendElement(new LineString2D({Point2D(5, 5), Point2D(6, 6), Point2D(7, 6)}));
    const LineString3D heights({Point3D(1, 2, 3), Point3D(4, 5, 6)});
    Point2D plan(9, 9);
    Point3D space(9, 9, 9);
    EXPECT_TRUE(Geometry::GetStartPoint(outer, plan) && plan == Point2D(1, 0));
    EXPECT_TRUE(Geometry::GetEndPoint(outer, space) && space.IsEqualTo(Point3D(7, 6, 0), 1e-300));
    EXPECT_TRUE(Geometry::GetStartPoint(heights, space) && space.IsEqualTo(Point3D(1, 2, 3), 1e-300));
    EXPECT_TRUE(Geometry::GetEndPoint(inner, plan) && plan == inner.GetEnd());
    EXPECT_TRUE(Geometry::GetEndPoint(heights, plan) && plan == Point2D(4, 5));
    EXPECT_FALSE(Geometry::GetStartPoint(Circle2D(), plan) || Geometry::GetStartPoint(LineString3D(), plan));
    EXPECT_EQ(plan, Point2D(4, 5)) << "untouched";
    for (const Polyline2D& chain : {Polyline2D(), hollow}) {
        EXPECT_TRUE(Geometry::GetEndPoint(chain, plan) && plan == Point2D()) << "that of the chain, the origin";
    }
    EXPECT_TRUE(Geometry::GetStartPoint(Polyline3D(), space) && space.IsEqualTo(Point3D(), 1e-300));

    EXPECT_EQ(Geometry::GetStartSegment(outer)->GetType(), MathTypes::Arc2D) << "through the nested chain";
    EXPECT_TRUE(Geometry::GetEndSegment(outer)->IsEqualTo(Line2D(Point2D(6, 6), Point2D(7, 6)), 1e-12));
    EXPECT_EQ(Geometry::GetStartSegment(heights)->GetType(), MathTypes::Line3D);
    EXPECT_TRUE(!Geometry::GetStartSegment(Polyline2D()) && !Geometry::GetEndSegment(Polygon2D()));

    std::vector<Point3D> vertices, corners;
    std::vector<const IGeometry*> several{&outer, &heights};
    EXPECT_TRUE(Geometry::GetVertices(several, vertices) && vertices.size() == 7);
    Polygon2D holed(std::vector<Point2D>{{0, 0}, {9, 0}, {0, 9}});
    holed.AppendHoleBoundary(LineString2D({{1, 1}, {2, 1}, {1, 2}}));
    EXPECT_TRUE(Geometry::GetVertices(holed, corners) && corners.size() == 6);
    several.push_back(nullptr);
    EXPECT_TRUE(!Geometry::GetVertices(several, vertices) && vertices.size() == 7);
}

TEST(GeometryTest, HullsWorkedOutByHand) {
    using Points = std::vector<Point2D>;
    const std::tuple<const char*, Points, Points> rows[] = {
        {"nothing", {}, {}},
        {"one point three times", {{1, 2}, {1, 2}, {1, 2}}, {{1, 2}}},
        {"level collinear points", {{1, 4}, {3, 4}, {0, 4}, {2, 4}}, {{0, 4}, {3, 4}}},
        {"points on the edges go",
         {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {0, 2}, {0, 1}},
         {{0, 0}, {2, 0}, {2, 2}, {0, 2}}},
        {"a nearer point that rounding lifts leaves the far corner",
         {{1, -1e-10}, {1.5, 0}, {4, 0}, {4, 2}, {0, 2}, {0, 0}},
         {{1, -1e-10}, {4, 0}, {4, 2}, {0, 2}, {0, 0}}},
        {"not a number is left out", {{kNan, 0}, {0, 0}, {1, 0}, {0, 1}}, {{0, 0}, {1, 0}, {0, 1}}},
    };
    for (const auto& [why, points, expected] : rows) {
        Polygon2D hull{{77, 77}};
        Geometry::ConvexHull(points, hull);
        EXPECT_THAT(hull.GetPoints(), testing::Pointwise(AreNear(0.0), expected)) << why;
    }
}

TEST(GeometryTest, RandomPointsStayInTheirBox) {
    std::list<Point2D> points{Point2D(-1, -1)};
    Geometry::RandomPoints(Point2D(100, 200), Point2D(111, 221), 2000, points);
    EXPECT_EQ(points.size(), 2001U);
    const BoundingBox2D box(Point2D(100, 200), Point2D(111, 221));
    std::set<double> different;
    for (const Point2D& p : points) {
        EXPECT_TRUE(box.IsPointInside(p, 0.0) || &p == &points.front());
        different.insert(p.GetX());
    }
    EXPECT_GT(different.size(), 1500U);
}

// Cuts random chains into strings, shuffles and turns some round: merging must give the chains back.
TEST(GeometryTest, MergingUndoesCutting) {
    RandomNumbers random(8);
    for (const Point2D& origin : surveyOrigins) {
        std::vector<LineString3D> strings, fromSegments;
        std::list<std::pair<Point3D, Point3D>> segments;
        double length = 0.0;
        for (int chain = 0; chain < 5; ++chain) {
            Point3D at(origin + Vec2D(0, 100.0 * chain), 0.0);
            for (int i = 0; i < 60; ++i) {
                if (i % 3 == 0) strings.push_back({at});
                const Point3D next = at + Vec3D(random(1.0, 6.0), random(0.0, 9.0), 1.0);
                length += next.Distance(at);
                segments.emplace_back(at, next);
                if (random() % 2 == 0) std::swap(segments.back().first, segments.back().second);
                strings.back().AppendPoint(at = next);
                if (i % 3 == 2 && random() % 2 == 0) strings.back().Reverse();
            }
        }
        std::shuffle(strings.begin(), strings.end(), random);
        Geometry::MergeLineStrings(strings, 1e-4);
        Geometry::LineSegmentsToLineStrings(segments, fromSegments, 1e-4);
        for (const auto& merged : {strings, fromSegments}) {
            ASSERT_EQ(merged.size(), 5U);
            double sum = 0.0;
            for (const LineString3D& string : merged) {
                EXPECT_EQ(string.GetSize(), 61U) << "junction points are not doubled";
                sum += string.GetLength();
            }
            EXPECT_NEAR(sum, length, 1e-6);
        }
    }
}

TEST(GeometryTest, MergingRules) {
    const auto from = [](double x0, double x1) { return LineString2D({Point2D(x0, 0), Point2D(x1, 0)}); };
    std::vector<LineString2D> strings{from(0, 1), {{4, 4}}, from(1.25, 2), from(3, 2), from(0, -1)};
    Geometry::MergeLineStrings(strings, 0.25);
    ASSERT_EQ(strings.size(), 3U) << "exactly the tolerance apart is apart; one point joins nothing";
    EXPECT_EQ(strings[0].GetPoints(), (std::vector<Point2D>{{-1, 0}, {0, 0}, {1, 0}}));
    EXPECT_EQ(strings[2].GetPoints(), (std::vector<Point2D>{{1.25, 0}, {2, 0}, {3, 0}}));
    std::vector<LineString2D> fork{from(0, 1), from(1, 5), from(1, 2)};
    Geometry::MergeLineStrings(fork, 0.25);
    ASSERT_EQ(fork.size(), 2U) << "the first that fits wins";
    EXPECT_EQ(fork[0].GetEnd(), Point2D(5, 0));
    std::vector<LineString2D> ring{from(0, 1), {{1, 0}, {1, 1}, {0, 0}}, from(0, -1)};
    Geometry::MergeLineStrings(ring, 0.25);
    ASSERT_EQ(ring.size(), 2U) << "a ring that closed takes nothing more";
    EXPECT_EQ(ring[0].GetSize(), 4U);

    // Stubs shorter than the tolerance join like any other; a far string does not disturb its neighbours.
    std::vector<LineString2D> stubs{from(1e18, 1e17)};
    for (int i = 0; i < 100; ++i) stubs.push_back(from(500000 + 0.125 * i, 500000 + 0.125 * (i + 1)));
    Geometry::MergeLineStrings(stubs, 0.25);
    ASSERT_EQ(stubs.size(), 2U);
    EXPECT_NEAR(stubs[1].GetLength(), 12.5, 0.25);

    std::vector<LineString3D> steps{{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 5}, {2, 0, 5}}}, plan = steps;
    Geometry::MergeLineStrings(steps, 0.1);
    Geometry::MergeLineStringsAs2D(plan, 0.1);
    ASSERT_TRUE(steps.size() == 2 && plan.size() == 1);
    EXPECT_THAT(plan[0].GetPoint(1), IsNear(Point3D(1, 0, 0), 0.0));
    EXPECT_FALSE(Geometry::MergeLineStrings(steps[0], steps[1], 0.1));
    EXPECT_TRUE(Geometry::MergeLineStrings(steps[0], LineString3D({Point3D(3, 0, 0), Point3D(1, 0, 0)}), 0.1));
    EXPECT_EQ(steps[0].GetSize(), 3U);
}

TEST(GeometryTest, RangesClippedToAnElement) {
    double start = -1.0, end = -1.0;
    EXPECT_TRUE(Geometry::ComputeStartEndLengthOnElement(10, 20, 5, 12, start, end, 1e-4));
    EXPECT_TRUE(start == 10.0 && end == 12.0);
    EXPECT_FALSE(Geometry::ComputeStartEndLengthOnElement(10, 20, 20, 30, start, end, 1e-4)) << "only touching";
    EXPECT_TRUE(!Geometry::ComputeStartEndLengthOnElement(10, 20, kNan, 30, start, end, 1e-4) && end == 12.0);
}

}  // namespace
}  // namespace Kalvio::Math
