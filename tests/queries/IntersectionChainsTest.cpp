#include "queries/QueryNames.h"

namespace Kalvio::Math {
namespace {

Points PointsOf(const char* coordinates, const Vec2D& shift = {}) {
    return MakePolygon(coordinates).Translate(shift).GetPoints();
}

Points Common(const LineString2D& a, const LineString2D& b, R expected, double tolerance = 1e-4) {
    Points points{P(7, 7)};
    EXPECT_EQ(I::LineStringLineString(a, b, points, Tolerances(tolerance, 1e-10)), expected);
    const std::size_t size = points.size();
    EXPECT_EQ(I::LineStringLineString(a, b, points, tolerance), static_cast<int>(size) - 1);
    points.resize(size);
    EXPECT_EQ(points.front(), P(7, 7)) << "appended behind what was there";
    points.erase(points.begin());
    return points;
}

// Appends the crossings of all pairs of segments, in order along the first, for chains in general position.
Points& BruteForce(const Points& a, const Points& b, Points& found) {
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

TEST(IntersectionChainsTest, LineStrings) {
    const char* const axis = "0 0 4 0 10 0";
    const char* const square = "0 0 4 0 4 4 0 4 0 0";
    const std::tuple<const char*, const char*, const char*, R, const char*> rows[] = {
        {"at a joint of both", axis, "4 3 4 0 4 -3", R::Intersecting, "4 0"},
        {"a joint that just fails to reach", axis, "4 3 4 9e-5 5 3", R::Intersecting, "4 0"},
        {"too far", axis, "4 3 4 2e-4 5 3", R::NoIntersection, ""},
        {"ordered along the first", axis, "9 1 9 -1 2 -1 2 1", R::Intersecting, "2 0 9 0"},
        {"a run over joints", axis, "12 0 8 0 6 0 2 0 2 5", R::Intersecting, "2 0 10 0"},
        {"a run with noise", axis, "-2 0 1 5e-5 3 -5e-5 8 5e-5 8 3", R::Intersecting, "0 0 8 5e-5"},
        {"there and back again", axis, "1 2 1 0 7 0 3 0 3 2", R::Intersecting, "1 0 3 0 7 0"},
        {"a spike of both has a tip", "0 0 5 0 5 3 5 0 10 0", "5 -1 5 3 5 -1 9 -1", R::Intersecting, "5 0 5 3"},
        {"tips nearly as far", "0 0 5 0 5 3 5 0 10 0", "4 -2 5 0 5 3.00015 5 0 7 -3", R::Intersecting, "5 0 5 3"},
        {"a spike at the joint", "5 3 5 0 9 0 9 -4 5 0 5 3", "4 -2 5 0 5 3 5 0 6 -3", R::Intersecting, "5 0 5 3"},
        {"shallow, a vertex near the crossing", axis, "1 -1 5 -5e-5 9 4e-3", R::Intersecting, "5.0493827160 0"},
        {"the same", axis, "0 0 5 0 10 0", R::Coincident, "0 0 10 0"},
        {"one point passed twice", "2 1 2 -1 8 -1 2 1", "1 1 3 1", R::Intersecting, "2 1"},
        {"the joint of a closed string", square, "-1 -1 1 1", R::Intersecting, "0 0"},
        {"a run over that joint", square, "0 2 0 0 2 0", R::Intersecting, "2 0 0 2"},
        {"closed, the same from elsewhere", square, "4 4 4 0 0 0 0 4 4 4", R::Coincident, "0 0"},
        {"no length", axis, "4 0 4 5e-5", R::Degenerate, ""},
        {"beyond measure", axis, "4 1e300 4 -1e300", R::Degenerate, ""},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        for (const auto& [why, first, second, result, expected] : rows) {
            SCOPED_TRACE(why);
            const LineString2D a(PointsOf(first, shift));
            LineString2D b(PointsOf(second, shift));
            const Points found = Common(a, b, result);
            ExpectPoints(found, PointsOf(expected, shift), 1e-4);
            b.Reverse();
            ExpectPoints(Common(a, b, result), found);
            if (result != R::Coincident) ExpectSamePoints(Common(b, a, result), found, 2e-4);
        }
    }
    Common(LineString2D(PointsOf(axis)), {P(4, 1), P(4, -1), P(kNan, 0)}, R::Degenerate);
}

TEST(IntersectionChainsTest, LineStringLine) {
    const std::tuple<const char*, LineString2D, R, Points> rows[] = {
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
        {"NaN", {P(1, -1), P(2, kNan), P(3, 1)}, R::Degenerate, {}},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        for (const auto& [why, string, result, expected] : rows) {
            SCOPED_TRACE(why);
            Points points, same;
            const Line2D line(P() + shift, P(1, 0) + shift), endless(P(0, 0), P(kInfinity, 0));
            const LineString2D moved = string.Translate(shift);
            EXPECT_EQ(I::LineStringLine(moved, line, points, 0.25), static_cast<int>(expected.size()));
            for (P& p : points) p -= shift;
            EXPECT_THAT(points, testing::Pointwise(AreNear(1e-9), expected));
            EXPECT_EQ(I::LineStringLine(moved, line, same, Tolerances(0.25, 1e-10)), result);
            EXPECT_EQ(I::LineStringLine(moved, Line2D(), points, 0.25), 0) << "no line";
            EXPECT_EQ(I::LineStringLine(moved, endless, points, kTolerances), R::Degenerate);
        }
    }
}

TEST(IntersectionChainsTest, ChainsSetsAndPolygonsCrossWhereAllPairsOfSegmentsDo) {
    RandomNumbers random(501);
    std::size_t total = 0;
    for (int round = 0; round < 40; ++round) {
        const P origin = surveyOrigins[round % 2];
        std::vector<LineString2D> strings{RandomChain(random, 10 + 12 * round, origin, 1.0),
                                          RandomChain(random, 400 - 9 * round, origin + Vec2D(1.3, 0.7), 1.5)};
        for (int i = 0; i < 60; ++i) {
            strings.emplace_back(RandomChain(random, 1 + i % 17, origin + Vec2D(random(0, 20), random(0, 20)), 1.0));
        }
        const auto pointsOf = [&](std::size_t i) -> const Points& { return std::as_const(strings[i]).GetPoints(); };
        const LineString2D a = strings[0], b = strings[1];
        Points crossings, ofSet, all, ofSegment, crossingsOfSegment;
        BruteForce(pointsOf(0), pointsOf(1), crossings);
        const R result = crossings.empty() ? R::NoIntersection : R::Intersecting;
        const Points found = Common(a, b, result, 1e-8);
        ExpectPoints(found, crossings);
        ExpectSamePoints(Common(b, a, result, 1e-8), found, 1e-7);
        for (const P& p : found) EXPECT_TRUE(I::PointOnLineString(p, a, 1e-8));
        const Line2D segment(a.GetStart(), a.GetEnd());
        const int count = I::LineStringLineSegment(b, segment, ofSegment, 1e-8);
        EXPECT_EQ(ofSegment.size(), count);
        ExpectPoints(ofSegment, BruteForce(pointsOf(1), {segment.GetStart(), segment.GetEnd()}, crossingsOfSegment));
        for (std::size_t i = 0; i < strings.size(); ++i) {
            for (std::size_t j = i + 1; j < strings.size(); ++j) BruteForce(pointsOf(i), pointsOf(j), all);
        }
        strings.insert(strings.begin() + 9, {LineString2D(), LineString2D{origin}, LineString2D{origin, P(kNan, 0)}});
        EXPECT_EQ(I::LineStrings(strings, ofSet, 1e-8), static_cast<int>(all.size()));
        ExpectSamePoints(ofSet, all, 1e-7);
        total += found.size();

        std::vector<Points> rings[2];  // closed
        Polygon2D polygons[2];
        for (int i = 0; i < 26; ++i) {
            const int k = i % 2;
            const Vec2D aside = i < 2 ? Vec2D(3.0 * k, 1.0) : Vec2D(random(-20, 20), random(-20, 20));
            Points ring = RandomStar(random, origin + aside, i < 2 ? 40.0 : 6.0, i < 2 ? 50 : 10);
            i < 2 ? polygons[k].AppendPoints(ring) : polygons[k].AppendHoleBoundary(ring);
            ring.push_back(ring.front());
            rings[k].push_back(ring);
        }
        Points borders, ofString, foundBorders, swapped, foundOfString;
        for (const Points& ring : rings[0]) {
            for (const Points& other : rings[1]) BruteForce(ring, other, borders);
            BruteForce(pointsOf(0), ring, ofString);
        }
        I::PolygonPolygon(polygons[0], polygons[1], foundBorders, 1e-8);
        I::PolygonPolygon(polygons[1], polygons[0], swapped, 1e-8);
        I::LineStringPolygon(a, polygons[0], foundOfString, 1e-8);
        ExpectSamePoints(foundBorders, borders, 1e-7);
        ExpectSamePoints(swapped, borders, 1e-7);
        ExpectSamePoints(foundOfString, ofString, 1e-7);
        for (double last = 0.0, length = 0.0; const P& p : foundOfString) {
            ASSERT_TRUE(a.GetLengthFromStartPoint(p, length, 1e-8));
            EXPECT_TRUE(length >= std::exchange(last, length) || a.IsSelfCrossing(1e-8));
        }
    }
    EXPECT_GT(total, 100U);
    const LineString2D a{P(0, 0), P(4, 0)}, b{P(4, 0), P(2, 0), P(0, 0)}, c{P(2, 2), P(2, -2)};
    Points points;
    EXPECT_EQ(I::LineStrings({a, b}, points, kTolerances), R::Coincident);
    EXPECT_EQ(I::LineStrings({a}, points, kTolerances), R::Degenerate);
    EXPECT_EQ(points.size(), 2U);
    EXPECT_EQ(I::LineStrings({a, b, c}, points, kTolerances), R::Intersecting);
    ExpectPoints({points.begin() + 2, points.end()}, {P(0, 0), P(2, 0), P(4, 0)});
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
            b.insert(b.end(), {points[i] - Vec2D(0, side), points[i], points[i] + Vec2D(0, side)});
            expected.push_back(points[i]);
        }
        for (int turn = 0; turn < 2; ++turn, std::reverse(b.begin(), b.end())) {
            ExpectPoints(Common(a, b, R::Intersecting, 1e-8), expected, 1e-7);
            ExpectSamePoints(Common(b, a, R::Intersecting, 1e-8), expected, 1e-7);
        }
    }
}

// Steps of a tenth of the tolerance, by noise or steadily beside or across a straight line.
TEST(IntersectionChainsTest, StepsBelowTheToleranceMakeNoPlacesOfTheirOwn) {
    RandomNumbers random(505);
    for (const P& origin : surveyOrigins) {
        const LineString2D axis{origin - Vec2D(1, 0), origin + Vec2D(1, 0)};
        Points noisy, beside, across;
        for (int i = 0; i <= 10000; ++i) {
            noisy.push_back(origin + Vec2D(1e-5 * i, random(-9e-5, 9e-5)));
            beside.push_back(origin + Vec2D(1e-5 * i, 5e-5));
            across.push_back(origin + Vec2D(1e-5 * i, 0.05 - 1e-5 * i));
        }
        const Points ends{origin, origin + Vec2D(0.1, 0)};
        for (const Points& run : {noisy, beside}) ExpectPoints(Common(axis, run, R::Intersecting), ends, 4e-4);
        ExpectPoints(Common(across, axis, R::Intersecting), {origin + Vec2D(0.05, 0)}, 4e-4);
    }
}

TEST(IntersectionChainsTest, PolygonsTellWhetherTheirAreasMeet) {
    const char* const frame = "0 0 10 0 10 10 0 10 / 2 2 8 2 8 8 2 8";
    const std::tuple<const char*, const char*, R, const char*> rows[] = {
        {"inside the area", "0.5 0.5 1 0.5 1 1", R::Intersecting, ""},
        {"around it", "-9 -9 19 -9 19 19 -9 19 -9 -9", R::Intersecting, ""},
        {"around the hole", "1 1 9 1 9 9 1 9", R::Intersecting, ""},
        {"in the hole", "3 3 7 3 7 7", R::NoIntersection, ""},
        {"apart", "13 3 17 3 17 7", R::NoIntersection, ""},
        {"across both borders", "-1 4 4 4 4 6 -1 6", R::Intersecting, "0 6 0 4 2 6 2 4"},
        {"at a corner, with a closing point", "-5 -5 0 0 -5 0 -5 -5", R::Intersecting, "0 0"},
        {"along a side and beyond its corner", "0 12 0 5 -5 5", R::Intersecting, "0 10 0 5"},
        {"along, around the first corner", "0 3 0 0 3 0 -5 -5", R::Intersecting, "3 0 0 3"},
        {"fills the hole", "2 2 8 2 8 8 2 8 2 2", R::Intersecting, "2 2"},
        {"the same", "10 10 10 0 0 0 0 10 / 8 8 2 8 2 2 8 2", R::Coincident, "0 0 2 2"},
        {"no area", "3 3", R::Degenerate, ""},
        {"nothing", "", R::Degenerate, ""},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        for (const auto& [why, other, result, expected] : rows) {
            SCOPED_TRACE(why);
            const Polygon2D a = MakePolygon(frame).Translate(shift);
            Polygon2D b = MakePolygon(other).Translate(shift);
            for (int turn = 0; turn < 2; ++turn, b.Reverse()) {
                Points points, swapped;
                EXPECT_EQ(I::PolygonPolygon(a, b, points, kTolerances), result);
                ExpectPoints(points, PointsOf(expected, shift));
                EXPECT_EQ(I::PolygonPolygon(b, a, swapped, kTolerances), result);
                EXPECT_EQ(I::Collides(a, b, kTolerances), result == R::Intersecting || result == R::Coincident);
                if (result != R::Coincident) ExpectSamePoints(swapped, points, 1e-8);
            }
        }
    }
    Polygon2D spoilt = MakePolygon(frame);
    spoilt.AppendHoleBoundary({P(1, 1), P(kNan, 1), P(1, 2)});
    Points points;
    EXPECT_EQ(I::PolygonPolygon(MakePolygon(frame), spoilt, points, kTolerances), R::Degenerate);
}

TEST(IntersectionChainsTest, Boxes) {
    const BoundingBox2D box(P(0, 0), P(4, 2));
    const std::tuple<const char*, Line2D, R, const char*> rows[] = {
        {"in and out", {P(9, 1), P(8, 1)}, R::Intersecting, "4 1 0 1"},
        {"at a corner", {P(-1, 1), P(1, -1)}, R::Intersecting, "0 0"},
        {"from corner to corner", {P(-4, -2), P(-2, -1)}, R::Intersecting, "0 0 4 2"},
        {"along a side", {P(1, 2), P(2, 2)}, R::Intersecting, "0 2 4 2"},
        {"past it", {P(0, 3), P(4, 2.5)}, R::NoIntersection, ""},
        {"no line", {P(1, 1), P(1, 1)}, R::Degenerate, ""},
    };
    for (const auto& [why, line, result, expected] : rows) {
        Points found;
        EXPECT_EQ(I::LineBoundingBox(line, box, found, kTolerances), result) << why;
        ExpectPoints(found, PointsOf(expected));
    }
    Points points;
    EXPECT_EQ(I::PolygonBoundingBox(MakePolygon("1 1 2 1 2 5"), box, points, 1e-4), 2);
    ExpectPoints(points, {P(2, 2), P(1.25, 2)});
    EXPECT_EQ(I::PolygonBoundingBox(MakePolygon("1 1 2 1 2 1"), box, points, kTolerances), R::Intersecting);
    const BoundingBox2D wide(P(-0.25, 1), P(4, 2)), tall(P(1, 1), P(2, 2.5));
    const BoundingBox3D low(Point3D(0, 0, 0), Point3D(1, 1, 1)), high(Point3D(0, 0, 0), Point3D(1, 1, 2));
    EXPECT_TRUE(I::IsBoundingBoxInsideBoundingBox(wide, box, 0.25) &&
                I::IsBoundingBoxInsideBoundingBox(low, high, 0.0));
    EXPECT_FALSE(I::IsBoundingBoxInsideBoundingBox(tall, box, 0.25) ||
                 I::IsBoundingBoxInsideBoundingBox(high, low, 0.5));
    EXPECT_FALSE(I::PointOnLineString(P(0, 0), LineString2D{P(0, 0)}, 0.5)) << "no segment";
    EXPECT_TRUE(I::PointOnLine(P(9, 0.25), P(0, 0), P(2, 0), 0.25) &&
                I::PointOnLine(P(9, 0.25), Line2D(P(0, 0), P(2, 0)), 0.25) &&
                I::PointOnLine(P(9, 0.25), Line3D(Point3D(0, 0, 0), Point3D(2, 0, 5)), 0.25));
    const LineString3D edge{Point3D(0, 0, 0), Point3D(2, 0, 0)};
    EXPECT_TRUE(I::PointOnLineString(Point3D(1, 0, 0.25), edge, 0.25));
    EXPECT_FALSE(I::PointOnLineString(Point3D(1, 0, 0.5), edge, 0.25));
}

}  // namespace
}  // namespace Kalvio::Math
