#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/SegmentContact.h"
#include "kalvio/queries/Intersection.h"
#include "support/Rings.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using R = IntersectionResult;
using P = Point2D;
using Points = std::vector<Point2D>;

constexpr double kTol = 1e-4;

Points Common(const LineString2D& a, const LineString2D& b, R expected, double tolerance = kTol) {
    Points points{P(7, 7)};
    EXPECT_EQ(Intersection::LineStringLineString(a, b, points, Tolerances(tolerance, 1e-10)), expected);
    const int added = static_cast<int>(points.size()) - 1;
    EXPECT_EQ(Intersection::LineStringLineString(a, b, points, tolerance), added);
    points.resize(static_cast<std::size_t>(added) + 1);
    EXPECT_EQ(points.front(), P(7, 7)) << "appended behind what was there";
    points.erase(points.begin());
    return points;
}

void ExpectPoints(const Points& found, const Points& expected, const Vec2D& shift = {}, double near = 1e-8) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_THAT(found[i], IsNear(expected[i] + shift, near)) << i;
}

void ExpectSamePoints(Points found, Points expected, double near) {
    ASSERT_EQ(found.size(), expected.size());
    for (const P& p : found) {
        const auto twin =
            std::find_if(expected.begin(), expected.end(), [&](const P& q) { return p.IsEqualTo(q, near); });
        ASSERT_NE(twin, expected.end()) << p.GetX() << ' ' << p.GetY();
        expected.erase(twin);
    }
}

// The crossings of all pairs of segments, in order along the first, for chains in general position.
Points BruteForce(const Points& a, const Points& b) {
    Points found;
    for (std::size_t i = 1; i < a.size(); ++i) {
        std::map<double, P> onSegment;
        for (std::size_t j = 1; j < b.size(); ++j) {
            const Vec2D u = a[i] - a[i - 1];
            const Vec2D v = b[j] - b[j - 1];
            const double s = (b[j - 1] - a[i - 1]).PerpDotProduct(v) / u.PerpDotProduct(v);
            const double t = (b[j - 1] - a[i - 1]).PerpDotProduct(u) / u.PerpDotProduct(v);
            if (s > 0.0 && s < 1.0 && t > 0.0 && t < 1.0) onSegment[s] = a[i - 1] + u * s;
        }
        for (const auto& [s, p] : onSegment) found.push_back(p);
    }
    return found;
}

Points RandomChain(RandomNumbers& random, int count, const P& start, double turn) {
    Points points{start};
    for (double direction = random(0.0, 2.0 * kPi); count > 0; --count, direction += random(-turn, turn)) {
        points.push_back(points.back() + Vec2D(std::cos(direction), std::sin(direction)) * random(0.1, 2.0));
    }
    return points;
}

Points Closed(Points ring) {
    ring.push_back(ring.front());
    return ring;
}

TEST(IntersectionChainsTest, LineStrings) {
    const LineString2D axis{P(0, 0), P(4, 0), P(10, 0)};
    const LineString2D square{P(0, 0), P(4, 0), P(4, 4), P(0, 4), P(0, 0)};
    const std::tuple<const char*, LineString2D, LineString2D, R, Points> rows[] = {
        {"at a joint of both", axis, {P(4, 3), P(4, 0), P(4, -3)}, R::Intersecting, {P(4, 0)}},
        {"a joint that just fails to reach", axis, {P(4, 3), P(4, 9e-5), P(5, 3)}, R::Intersecting, {P(4, 0)}},
        {"too far", axis, {P(4, 3), P(4, 2e-4), P(5, 3)}, R::NoIntersection, {}},
        {"ordered along the first", axis, {P(9, 1), P(9, -1), P(2, -1), P(2, 1)}, R::Intersecting, {P(2, 0), P(9, 0)}},
        {"end to end", axis, {P(10, 0), P(12, 5)}, R::Intersecting, {P(10, 0)}},
        {"collinear, end to end", axis, {P(10, 0), P(12, 0)}, R::Intersecting, {P(10, 0)}},
        {"a run over joints",
         axis,
         {P(12, 0), P(8, 0), P(6, 0), P(2, 0), P(2, 5)},
         R::Intersecting,
         {P(2, 0), P(10, 0)}},
        {"within", axis, {P(2, 0), P(3, 0)}, R::Intersecting, {P(2, 0), P(3, 0)}},
        {"a run with noise",
         axis,
         {P(-2, 0), P(1, 5e-5), P(3, -5e-5), P(8, 5e-5), P(8, 3)},
         R::Intersecting,
         {P(0, 0), P(8, 5e-5)}},
        {"there and back again",
         axis,
         {P(1, 2), P(1, 0), P(7, 0), P(3, 0), P(3, 2)},
         R::Intersecting,
         {P(1, 0), P(3, 0), P(7, 0)}},
        {"shallow, a vertex near the crossing",
         axis,
         {P(1, -1), P(5, -5e-5), P(9, 4e-3)},
         R::Intersecting,
         {P(5 + 4 * 5e-5 / 405e-5, 0)}},
        {"the same", axis, {P(0, 0), P(5, 0), P(10, 0)}, R::Coincident, {P(0, 0), P(10, 0)}},
        {"the same, reversed", axis, {P(10, 0), P(4, 0), P(0, 0)}, R::Coincident, {P(0, 0), P(10, 0)}},
        {"one point passed twice",
         {P(2, 1), P(2, -1), P(8, -1), P(2, 1)},
         {P(1, 1), P(3, 1)},
         R::Intersecting,
         {P(2, 1)}},
        {"the joint of a closed string", square, {P(-1, -1), P(1, 1)}, R::Intersecting, {P(0, 0)}},
        {"a run over that joint", square, {P(0, 2), P(0, 0), P(2, 0)}, R::Intersecting, {P(2, 0), P(0, 2)}},
        {"closed, the same from elsewhere",
         square,
         {P(4, 4), P(4, 0), P(0, 0), P(0, 4), P(4, 4)},
         R::Coincident,
         {P(0, 0)}},
        {"no length", axis, {P(4, 0), P(4, 5e-5)}, R::Degenerate, {}},
        {"no points", axis, {}, R::Degenerate, {}},
        {"NaN", axis, {P(4, 1), P(4, -1), P(kNan, 0)}, R::Degenerate, {}},
        {"beyond measure", axis, {P(4, 1e300), P(4, -1e300)}, R::Degenerate, {}},
    };
    for (const P& origin : surveyOrigins) {
        const Vec2D shift = origin - P();
        for (const auto& [why, a, b, result, expected] : rows) {
            SCOPED_TRACE(why);
            const Points found = Common(a.Translate(shift), b.Translate(shift), result);
            ExpectPoints(found, expected, shift, 1e-4);
            LineString2D reversed = b.Translate(shift);
            reversed.Reverse();
            ExpectPoints(Common(a.Translate(shift), reversed, result), found);
            if (result != R::Coincident) ExpectSamePoints(Common(reversed, a.Translate(shift), result), found, 2e-4);
        }
    }
}

TEST(IntersectionChainsTest, ChainsCrossWhereAllPairsOfSegmentsDo) {
    RandomNumbers random(501);
    std::size_t total = 0;
    for (int round = 0; round < 60; ++round) {
        const P origin = surveyOrigins[round % 2];
        const LineString2D a(RandomChain(random, 10 + 8 * round, origin, 1.0));
        const LineString2D b(RandomChain(random, 400 - 6 * round, origin + Vec2D(1.3, 0.7), 1.5));
        const Points expected = BruteForce(a.GetPoints(), b.GetPoints());
        const R result = expected.empty() ? R::NoIntersection : R::Intersecting;
        const Points found = Common(a, b, result, 1e-8);
        ExpectPoints(found, expected);
        ExpectSamePoints(Common(b, a, result, 1e-8), found, 1e-7);
        total += found.size();
        for (const P& p : found) EXPECT_TRUE(Intersection::PointOnLineString(p, a, 1e-8));
        Points ofSegment;
        const Line2D segment(a.GetStart(), a.GetEnd());
        const int count = Intersection::LineStringLineSegment(b, segment, ofSegment, 1e-8);
        EXPECT_EQ(ofSegment.size(), count);
        ExpectPoints(ofSegment, BruteForce(b.GetPoints(), {segment.GetStart(), segment.GetEnd()}));
    }
    EXPECT_GT(total, 100U);
}

// The second chain follows a part of the first, cut elsewhere, and leaves it sideways; then it crosses it at vertices.
TEST(IntersectionChainsTest, RunsHaveTwoEndsAndVerticesAreCrossedOnce) {
    RandomNumbers random(502);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        Points points{surveyOrigins[round % 2]};
        while (points.size() < 60) points.push_back(points.back() + Vec2D(random(0.5, 2.0), random(-2.0, 2.0)));
        const LineString2D a(points);
        const double from = random(1.0, 20.0);
        const double to = random(from + 1.0, 50.0);
        LineString2D part;
        ASSERT_TRUE(a.ExtractLineString(from, to, part));
        Points b = part.GetPoints();
        for (std::size_t i = b.size() - 1; i > 0; --i) {
            b.insert(b.begin() + static_cast<std::ptrdiff_t>(i), b[i - 1] + (b[i] - b[i - 1]) * random(0.2, 0.8));
        }
        Points expected{b.front(), b.back()};
        b.insert(b.begin(), b.front() + Vec2D(0, 500));
        b.push_back(b.back() + Vec2D(0, -500));
        for (std::size_t i = 40; i < 60; i += 3) {
            if (!(points[i].GetX() > expected[1].GetX() + 2.0)) continue;
            const double side = b.back().GetY() < points[i].GetY() ? 500.0 : -500.0;
            b.push_back(P(points[i].GetX(), points[i].GetY() - side));
            b.push_back(points[i]);
            b.push_back(points[i] + Vec2D(0, side));
            expected.push_back(points[i]);
        }
        const Points found = Common(a, b, R::Intersecting, 1e-8);
        ExpectPoints(found, expected, {}, 1e-7);
        LineString2D reversed(b);
        reversed.Reverse();
        ExpectPoints(Common(a, reversed, R::Intersecting, 1e-8), expected, {}, 1e-7);
        ExpectSamePoints(Common(b, a, R::Intersecting, 1e-8), expected, 1e-7);
    }
}

TEST(IntersectionChainsTest, SetsOfLineStrings) {
    RandomNumbers random(503);
    for (const P& origin : surveyOrigins) {
        std::vector<LineString2D> strings;
        Points expected;
        for (int i = 0; i < 150; ++i) {
            strings.emplace_back(RandomChain(random, 1 + i % 17, origin + Vec2D(random(0, 25), random(0, 25)), 1.0));
        }
        for (std::size_t i = 0; i < strings.size(); ++i) {
            for (std::size_t j = i + 1; j < strings.size(); ++j) {
                const Points pair =
                    BruteForce(std::as_const(strings[i]).GetPoints(), std::as_const(strings[j]).GetPoints());
                expected.insert(expected.end(), pair.begin(), pair.end());
            }
        }
        strings.insert(strings.begin() + 9, {LineString2D(), LineString2D{origin}, LineString2D{origin, P(kNan, 0)}});
        Points found;
        EXPECT_EQ(Intersection::LineStrings(strings, found, Tolerances(1e-8, 1e-10)), R::Intersecting);
        found.clear();
        const int count = Intersection::LineStrings(strings, found, 1e-8);
        EXPECT_EQ(found.size(), count);
        ExpectSamePoints(found, expected, 1e-7);
        EXPECT_GT(found.size(), 100U);
    }
    const LineString2D a{P(0, 0), P(4, 0)};
    const LineString2D b{P(4, 0), P(2, 0), P(0, 0)};
    const LineString2D c{P(2, 2), P(2, -2)};
    Points points;
    EXPECT_EQ(Intersection::LineStrings({a, b}, points, kTolerances), R::Coincident);
    EXPECT_EQ(Intersection::LineStrings({a}, points, kTolerances), R::Degenerate);
    EXPECT_EQ(points.size(), 2U);
    EXPECT_EQ(Intersection::LineStrings({a, b, c}, points, kTolerances), R::Intersecting);
    ExpectPoints({points.begin() + 2, points.end()}, {P(0, 0), P(2, 0), P(4, 0)});
}

TEST(IntersectionChainsTest, PolygonsTellWhetherTheirAreasMeet) {
    const char* const frame = "0 0 10 0 10 10 0 10 / 2 2 8 2 8 8 2 8";
    const std::tuple<const char*, const char*, R, Points> rows[] = {
        {"inside the area", "0.5 0.5 1 0.5 1 1", R::Intersecting, {}},
        {"around it", "-9 -9 19 -9 19 19 -9 19 -9 -9", R::Intersecting, {}},
        {"around the hole", "1 1 9 1 9 9 1 9", R::Intersecting, {}},
        {"in the hole", "3 3 7 3 7 7", R::NoIntersection, {}},
        {"apart", "13 3 17 3 17 7", R::NoIntersection, {}},
        {"across both borders", "-1 4 4 4 4 6 -1 6", R::Intersecting, {P(0, 6), P(0, 4), P(2, 6), P(2, 4)}},
        {"at a corner, with a closing point", "-5 -5 0 0 -5 0 -5 -5", R::Intersecting, {P(0, 0)}},
        {"along a side and beyond its corner", "0 12 0 5 -5 5", R::Intersecting, {P(0, 10), P(0, 5)}},
        {"along, around the first corner", "0 3 0 0 3 0 -5 -5", R::Intersecting, {P(3, 0), P(0, 3)}},
        {"fills the hole", "2 2 8 2 8 8 2 8 2 2", R::Intersecting, {P(2, 2)}},
        {"the same", "10 10 10 0 0 0 0 10 / 8 8 2 8 2 2 8 2", R::Coincident, {P(0, 0), P(2, 2)}},
        {"no area", "3 3", R::Degenerate, {}},
        {"no number", "3 3 5 5 nan 7", R::Degenerate, {}},
    };
    for (const P& origin : surveyOrigins) {
        const Vec2D shift = origin - P();
        for (const auto& [why, other, result, expected] : rows) {
            SCOPED_TRACE(why);
            const Polygon2D a = MakePolygon(frame).Translate(shift);
            Polygon2D b = MakePolygon(other).Translate(shift);
            if (result == R::Degenerate && b.GetSize() > 1) b.AppendPoint(P(kNan, 0));
            for (int turn = 0; turn < 2; ++turn, b.Reverse()) {
                Points points, swapped;
                EXPECT_EQ(Intersection::PolygonPolygon(a, b, points, kTolerances), result);
                ExpectPoints(points, expected, shift);
                EXPECT_EQ(Intersection::PolygonPolygon(b, a, swapped, kTolerances), result);
                if (result != R::Coincident) ExpectSamePoints(swapped, points, 1e-8);
            }
        }
    }
}

TEST(IntersectionChainsTest, PolygonsCrossWhereAllPairsOfEdgesDo) {
    RandomNumbers random(504);
    for (int round = 0; round < 40; ++round) {
        const P center = surveyOrigins[round % 2];
        std::vector<Points> rings[2];
        Polygon2D polygons[2];
        for (int k = 0; k < 2; ++k) {
            rings[k].push_back(RandomStar(random, center + Vec2D(3.0 * k, 1.0), 40.0, 50));
            for (int i = 0; i < 12; ++i) {
                const P hole = center + Vec2D(random(-20, 20), random(-20, 20));
                rings[k].push_back(RandomStar(random, hole, 6.0, 10));
            }
            polygons[k] = Polygon2D(rings[k][0]);
            for (std::size_t i = 1; i < rings[k].size(); ++i) polygons[k].AppendHoleBoundary(rings[k][i]);
        }
        const LineString2D string(RandomChain(random, 60, center, 0.5));
        Points expected, ofString;
        for (const Points& a : rings[0]) {
            for (const Points& b : rings[1]) {
                const Points pair = BruteForce(Closed(a), Closed(b));
                expected.insert(expected.end(), pair.begin(), pair.end());
            }
            const Points pair = BruteForce(string.GetPoints(), Closed(a));
            ofString.insert(ofString.end(), pair.begin(), pair.end());
        }
        Points found, swapped, foundOfString;
        EXPECT_EQ(Intersection::PolygonPolygon(polygons[0], polygons[1], found, 1e-8),
                  static_cast<int>(expected.size()));
        EXPECT_EQ(Intersection::PolygonPolygon(polygons[1], polygons[0], swapped, 1e-8),
                  static_cast<int>(expected.size()));
        ExpectSamePoints(found, expected, 1e-7);
        ExpectSamePoints(swapped, expected, 1e-7);
        Intersection::LineStringPolygon(string, polygons[0], foundOfString, 1e-8);
        ExpectSamePoints(foundOfString, ofString, 1e-7);
        double length = 0.0, last = 0.0;
        for (const P& p : foundOfString) {
            ASSERT_TRUE(string.GetLengthFromStartPoint(p, length, 1e-8));
            EXPECT_TRUE(length >= last || string.IsSelfCrossing(1e-8));
            last = length;
        }
    }
}

TEST(IntersectionChainsTest, Boxes) {
    const BoundingBox2D box(P(0, 0), P(4, 2));
    const std::tuple<const char*, Line2D, R, Points> rows[] = {
        {"in and out", {P(9, 1), P(8, 1)}, R::Intersecting, {P(4, 1), P(0, 1)}},
        {"at a corner", {P(-1, 1), P(1, -1)}, R::Intersecting, {P(0, 0)}},
        {"from corner to corner", {P(-4, -2), P(-2, -1)}, R::Intersecting, {P(0, 0), P(4, 2)}},
        {"along a side", {P(1, 2), P(2, 2)}, R::Intersecting, {P(0, 2), P(4, 2)}},
        {"past it", {P(0, 3), P(4, 2.5)}, R::NoIntersection, {}},
        {"no line", {P(1, 1), P(1, 1)}, R::Degenerate, {}},
    };
    for (const auto& [why, line, result, expected] : rows) {
        Points points;
        EXPECT_EQ(Intersection::LineBoundingBox(line, box, points, kTolerances), result) << why;
        ExpectPoints(points, expected);
    }
    Points points;
    EXPECT_EQ(Intersection::PolygonBoundingBox(MakePolygon("1 1 2 1 2 5"), box, points, 1e-4), 2);
    ExpectPoints(points, {P(2, 2), P(1.25, 2)});
    EXPECT_EQ(Intersection::PolygonBoundingBox(MakePolygon("1 1 2 1 2 1.5"), box, points, kTolerances),
              R::Intersecting);
    EXPECT_TRUE(Intersection::IsBoundingBoxInsideBoundingBox(BoundingBox2D(P(-0.25, 1), P(4, 2)), box, 0.25));
    EXPECT_FALSE(Intersection::IsBoundingBoxInsideBoundingBox(BoundingBox2D(P(1, 1), P(2, 2.5)), box, 0.25));
    const BoundingBox3D low(Point3D(0, 0, 0), Point3D(1, 1, 1)), high(Point3D(0, 0, 0), Point3D(1, 1, 2));
    EXPECT_TRUE(Intersection::IsBoundingBoxInsideBoundingBox(low, high, 0.0));
    EXPECT_FALSE(Intersection::IsBoundingBoxInsideBoundingBox(high, low, 0.5));
    EXPECT_FALSE(Intersection::PointOnLineString(P(0, 0), LineString2D{P(0, 0)}, 0.5)) << "no segment";
    const LineString3D edge{Point3D(0, 0, 0), Point3D(2, 0, 0)};
    EXPECT_TRUE(Intersection::PointOnLineString(Point3D(1, 0, 0.25), edge, 0.25));
    EXPECT_FALSE(Intersection::PointOnLineString(Point3D(1, 0, 0.5), edge, 0.25));
    Points run;
    const LineString2D along{P(3, 3), P(1, 0), P(5, 0), P(2, 0), P(2, 3)};
    EXPECT_EQ(Intersection::LineStringLine(along, Line2D(P(0, 0), P(1, 0)), run, kTolerances), R::Intersecting);
    ExpectPoints(run, {P(1, 0), P(5, 0)});
}

}  // namespace
}  // namespace Kalvio::Math
