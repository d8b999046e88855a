#include "meshes/Meshes.h"
#include "support/Concurrently.h"

namespace Kalvio::Math {
namespace {

using Ground = TinSurfacePatch3D::Ground;
using Conflicts = std::vector<TinSurfacePatch3D::HeightConflict>;

// In a square beside the origin, at whole numbers or anywhere.
Point2D Place(RandomNumbers& random, const Point2D& origin, double size, bool isWhole) {
    const Vec2D v(random(0, size), random(0, size));
    return origin + (isWhole ? Vec2D(std::floor(v.GetX()), std::floor(v.GetY())) : v);
}

TEST(TinSurfaceTest, BuildsFromPointsChainsAndRings) {
    using Chains = std::vector<LineString3D>;
    const LineString3D square = {{0, 0, 0}, {8, 0, 0}, {8, 8, 0}, {0, 8, 0}};
    const LineString3D inner = {{2, 2, 0}, {6, 2, 0}, {6, 6, 0}, {2, 6, 0}, {2, 2, 0}};
    const LineString3D rising = {{1, 1, 1}, {7, 7, 7}}, falling = {{1, 7, 5}, {7, 1, 4}};
    using Points = std::vector<Point3D>;
    // Breaklines, borders, holes, longest edge at the rim; triangles, area, and where heights conflict the one kept.
    const std::tuple<const char*, Chains, Chains, Chains, double, std::uint64_t, double, Points> rows[] = {
        {"hull of a chain", {square}, {}, {}, 0, 2, 64, {}},
        {"border", {{{20, 20, 0}, {30, 20, 0}}}, {square}, {}, 0, 2, 64, {}},
        {"border twice encloses nothing", {}, {square, square}, {}, 0, 0, 0, {}},
        {"hole, closed", {}, {square}, {inner}, 0, 8, 48, {}},
        {"hole without a border", {square}, {}, {inner}, 0, 8, 48, {}},
        {"hole that leaves the border", {}, {square}, {{{6, 2, 0}, {12, 2, 0}, {12, 6, 0}, {6, 6, 0}}}, 0, 6, 56, {}},
        {"crossing with other heights: the first stays", {rising, falling}, {square}, {}, 0, 12, 64, {{4, 4, 4}}},
        {"crossing the other way round", {falling, rising}, {square}, {}, 0, 12, 64, {{4, 4, 4.5}}},
        {"end on a line, lower", {rising, {{4, 4, 3}, {7, 1, 3}}}, {square}, {}, 0, 10, 64, {{4, 4, 3}}},
        {"overlap", {rising, {{3, 3, 3}, {5, 5, 5}}}, {square}, {}, 0, 10, 64, {}},
        {"point twice", {{{4, 4, 1}, {4, 4.00005, 2}, {4, 4, 1.00005}}}, {square}, {}, 0, 4, 64, {{4, 4, 1}}},
        {"along the border, higher", {{{2, 0, 1}, {6, 0, 1}}}, {square}, {}, 0, 4, 64, {{2, 0, 1}, {6, 0, 1}}},
        {"third beside two", {{{4, 4, 0}, {4.00012, 4, 0}}, {{4.00007713, 4.00009193, 0}}}, {square}, {}, 0, 8, 64, {}},
        {"rim", {square, {{4, -1, 0}}, {{12, 12, 0}}}, {}, {}, 8.5, 3, 68, {}},
        {"one line", {{{0, 0, 0}, {3, 3, 1}, {9, 9, 0}}}, {}, {}, 0, 0, 0, {}},
        {"not finite", {square, {{kNan, 1, 1}}}, {}, {}, 0, 0, 0, {}},
        {"infinite height", {square, {{4, 4, kInfinity}}}, {}, {}, 0, 0, 0, {}},
        {"nothing", {}, {}, {}, 0, 0, 0, {}},
    };
    for (const auto& [why, breaklines, borders, holes, rim, triangles, area, kept] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(why);
            const Vec3D shift(origin - Point2D(), 0.0);
            Ground ground{{}, breaklines, borders, holes, rim};
            for (Chains* const chains : {&ground.breaklines, &ground.borders, &ground.holes}) {
                for (LineString3D& chain : *chains) chain.Translate(shift);
            }
            TinSurfacePatch3D surface;
            Conflicts conflicts(7);
            ASSERT_EQ(surface.Build(ground, kTolerances, conflicts), area > 0.0);
            EXPECT_EQ(surface.GetTrianglesCount(), triangles);
            EXPECT_NEAR(surface.GetPlanArea(), area, 1e-6);
            ASSERT_EQ(conflicts.size(), area > 0.0 ? kept.size() : 7U);
            for (std::size_t i = 0; i < kept.size(); ++i) {
                EXPECT_THAT(conflicts[i].kept, IsNear(kept[i] + shift, 1e-6));
                EXPECT_GT(std::abs(conflicts[i].other - kept[i].GetZ()), 1e-4);
            }
        }
    }
}

// No vertex in a circle, by whole numbers; hull and Euler's formula; a plane stays a plane, heights, neighbours,
// sections and the nearest point are what a look at all triangles finds.
TEST(TinSurfaceTest, RandomPointsAndGridsAreDelaunayAndAnswerAsAllTriangles) {
    RandomNumbers random(20240602);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const double size = std::array{9, 40, 1000}[static_cast<std::size_t>(round % 3)];
        const Point2D origin = surveyOrigins[round % 2];
        Ground ground;
        std::vector<Point2D> places;
        for (int i = 0; i < 10 + 5 * round; ++i) {
            places.push_back(Place(random, origin, size, true));
            ground.points.emplace_back(places.back(), random(0, 20));
        }
        TinSurfacePatch3D surface, again;
        ASSERT_TRUE(surface.Build(ground, kTolerances) && again.SetTriangles(surface.GetTriangles()));
        EXPECT_TRUE(again.IsEqualTo(static_cast<const IGeometry&>(surface), 1e-12));
        Polygon2D hull;
        Geometry::ConvexHull(places, hull);
        EXPECT_NEAR(surface.GetPlanArea(), std::abs(hull.GetArea()), 1e-6);
        const IndexedTriangleSet3D& set = surface.GetTriangles();
        std::size_t rim = 0;
        for (unsigned int t = 0; t < set.size(); ++t) {
            const Triangle3D triangle = set[t];
            for (const Point3D& d : set.GetVertices()) {
                const auto lifted = [&](int corner) {
                    const Vec2D v = triangle[corner].GetPoint2D() - d.GetPoint2D();
                    return Vec3D(v, v.NormSquared());
                };
                ASSERT_LE(lifted(0).DotProduct(lifted(1).CrossProduct(lifted(2))), 0.0) << d << " in a circle, " << t;
            }
            for (unsigned int i = 0; i < 3; ++i) {
                const unsigned int next = surface.GetNeighbor(t, i);
                if (next == TinSurfacePatch3D::noTriangle) ++rim;
                unsigned int kept = t;
                EXPECT_TRUE(surface.FindTriangle(triangle[static_cast<int>(i)].GetPoint2D(), kept) && kept == t);
                EXPECT_TRUE(next == TinSurfacePatch3D::noTriangle || surface.GetNeighbor(next, 0) == t ||
                            surface.GetNeighbor(next, 1) == t || surface.GetNeighbor(next, 2) == t);
            }
        }
        EXPECT_EQ(set.size(), 2 * set.GetVerticesSize() - 2 - rim) << "Euler";

        unsigned int hint = 12345;
        std::vector<Point2D> asked;
        std::vector<double> answers, together;
        for (int k = 0; k < 40; ++k) {
            const Point2D p = origin + Vec2D(random(-0.1, 1.1) * size, random(-0.1, 1.1) * size);
            double expected = kNan, z = kNan, hinted = kNan, slope = -1.0, farther = kNan;
            for (const Triangle3D& triangle : set) {
                const Point3D a = triangle[0], b = triangle[1], c = triangle[2];
                if (!Polygon2D({a.GetPoint2D(), b.GetPoint2D(), c.GetPoint2D()}).IsPointInside(p, 0.0)) continue;
                const Vec3D n = (b - a).CrossProduct(c - a);
                expected = a.GetZ() - n.DotProduct(Point3D(p, a.GetZ()) - a) / n.GetZ();
            }
            ASSERT_EQ(surface.GetHeight(p, z), !std::isnan(expected));
            asked.push_back(p), answers.push_back(z);
            const Point3D beside(origin + (p - origin) * 4.0, random(-20, 20));
            Point3D foot = beside;
            ASSERT_TRUE(surface.GetNearestPoint(foot));
            for (const Point3D& v : set.GetVertices()) EXPECT_LE(beside.Distance(foot), beside.Distance(v) + 1e-9);
            ASSERT_EQ(again.GetHeight(p, hinted, hint), !std::isnan(expected));
            if (std::isnan(expected)) continue;
            EXPECT_NEAR(z, expected, 1e-7);
            EXPECT_NEAR(hinted, expected, 1e-7);
            Vec3D normal;
            Angle fall;
            ASSERT_TRUE(surface.GetNormal(p, normal) && surface.GetSlope(p, slope, fall));
            EXPECT_NEAR(slope * normal.GetZ(), normal.Length2D(), 1e-9);
            const Vec2D down(std::sin(fall.GetRadians()), std::cos(fall.GetRadians()));
            unsigned int first = hint, second = hint;
            if (surface.FindTriangle(p, first) && surface.FindTriangle(p + down * 1e-4, second) && first == second) {
                ASSERT_TRUE(surface.GetHeight(p + down * 1e-4, farther));
                EXPECT_NEAR(farther, z - 1e-4 * slope, 1e-7);
            }
            const Point3D above(p, z + random(-20, 20));
            Point3D nearest = above;
            ASSERT_TRUE(surface.GetNearestPoint(nearest) && surface.GetHeight(nearest.GetPoint2D(), farther));
            EXPECT_NEAR(farther, nearest.GetZ(), 1e-4 * (1.0 + slope)) << "on the surface";
            for (int i = 0; i < 50; ++i) {
                const Point2D q = nearest.GetPoint2D() + Vec2D(random(-1, 1), random(-1, 1));
                if (!surface.GetHeight(q, farther)) continue;
                EXPECT_GE(above.Distance(Point3D(q, farther)), above.Distance(nearest) - 1e-7);
            }
        }
        surface.GetHeights(asked, together);
        EXPECT_THAT(together, testing::Pointwise(testing::NanSensitiveDoubleEq(), answers));
        IndexedTriangleSet3D withFarOne = set;
        const Point3D far(origin - Vec2D(4e5, 6e6), 0.0);
        withFarOne.AddTriangle(far, far + Vec3D(9, 0, 0), far + Vec3D(0, 9, 0), false, false);
        ASSERT_TRUE(again.SetTriangles(withFarOne));
        again.GetHeights(asked, together);
        EXPECT_THAT(together, testing::Pointwise(testing::NanSensitiveDoubleNear(1e-9), answers));
        const Vec2D first(-1, 0.3 * size), middle(0.5 * size, 0.5 * size), last(0.7 * size, -2.0);
        const LineString2D chain{origin + first, origin + middle, origin + last};
        std::vector<LineString3D> draped, sections;
        set.GetSections(chain, sections);
        EXPECT_EQ(surface.Drape(chain, draped), !sections.empty());
        ASSERT_EQ(draped.size(), sections.size());
        for (std::size_t i = 0; i < draped.size(); ++i) EXPECT_TRUE(draped[i].IsEqualTo(sections[i], 1e-12));
    }
}

// By brute force: each segment became edges, on which no other vertex lies within the tolerance.
TEST(TinSurfaceTest, RandomChainsBecomeEdges) {
    const auto besideLine = [](const Point2D& p, const Point2D& a, const Point2D& b) {
        const Vec2D along = b - a, v = p - a;
        return std::abs(along.GetX() * v.GetY() - along.GetY() * v.GetX()) / along.Length();
    };
    RandomNumbers random(20240603);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        // All on one plane: no heights differ, wherever chains cross, touch and overlap. In a third of the rounds some
        // tolerances beside whole numbers.
        const auto place = [&, origin = surveyOrigins[round % 2]] {
            Point2D p = Place(random, origin, 9, round % 3 != 0);
            if (round % 3 == 1) p += Vec2D(random(-2e-4, 2e-4), random(-2e-4, 2e-4));
            return Point3D(p, (p - origin).GetX() - 2.0 * (p - origin).GetY());
        };
        Ground ground;
        for (int i = 0; i < 40; ++i) ground.points.push_back(place());
        for (int i = 0; i < 6; ++i) ground.breaklines.push_back({place(), place(), place()});
        TinSurfacePatch3D surface;
        Conflicts conflicts;
        ASSERT_TRUE(surface.Build(ground, kTolerances, conflicts));
        for (const auto& conflict : conflicts) EXPECT_NEAR(conflict.other, conflict.kept.GetZ(), 5e-4);
        std::vector<Point2D> vertices;
        for (const Point3D& v : surface.GetTriangles().GetVertices()) vertices.push_back(v.GetPoint2D());
        constexpr double tolerance = 1e-4, rounding = 5e-9;
        std::vector<std::pair<unsigned int, unsigned int>> edges;  // those that no vertex lies on
        const Indexes& corners = surface.GetTriangles().GetIndexes();
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const unsigned int from = corners[i], to = corners[i % 3 == 2 ? i - 2 : i + 1];
            const Point2D &a = vertices[from], &b = vertices[to];
            if (std::ranges::any_of(vertices, [&](const Point2D& v) {
                    const double length = a.Distance(b) - rounding;
                    return v.Distance(a) < length && v.Distance(b) < length &&
                           besideLine(v, a, b) < tolerance - rounding && v != a && v != b;
                })) {
                continue;
            }
            edges.insert(edges.end(), {{from, to}, {to, from}});
        }
        for (const LineString3D& chain : ground.breaklines) {
            const Point2D a = chain[0].GetPoint2D(), b = chain[1].GetPoint2D();
            std::vector<bool> isReached;
            for (const Point2D& v : vertices) isReached.push_back(v.Distance(a) <= tolerance + rounding);
            for (bool isNew = true; isNew;) {
                isNew = false;
                for (const auto& [from, to] : edges) {
                    if (!isReached[from] || isReached[to]) continue;
                    // Each division within another moves it by the tolerance at most.
                    if (!(besideLine(vertices[to], a, b) < 4.0 * tolerance)) continue;
                    isReached[to] = isNew = true;
                }
            }
            bool isThere = false;
            for (std::size_t v = 0; v < vertices.size(); ++v) {
                isThere = isThere || (isReached[v] && vertices[v].Distance(b) <= tolerance + rounding);
            }
            EXPECT_TRUE(isThere) << chain[0] << chain[1];
        }
    }
}

TEST(TinSurfaceTest, PointsAreAddedAndRemovedLater) {
    const Ground square{{}, {{{0, 0, 0}, {8, 8, 8}}}, {{{0, 0, 0}, {8, 0, 0}, {8, 8, 8}, {0, 8, 0}}}, {}, 0.0};
    constexpr unsigned int none = TinSurfacePatch3D::noVertex;
    const std::tuple<const char*, Point3D, unsigned int, std::uint64_t> rows[] = {
        {"near a vertex, higher", {8, 7.99995, 99}, 2, 2},
        {"inside", {6, 2, 1}, 4, 4},
        {"beside the breakline", {4, 4.00005, 5}, 4, 4},
        {"on the border", {8, 4, 1}, 4, 3},
        {"beside the border, outside", {8.00005, 4, 1}, none, 2},
        {"beside border and breakline", {2e-4, 0.9e-4, 1}, none, 2},
    };
    std::vector<unsigned int> added, stayed;
    double z = 0.0, there = 1.0;
    for (const auto& [why, point, vertex, count] : rows) {
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.Build(square, kTolerances) && surface.AddPoints({point}, kTolerances, added)) << why;
        EXPECT_TRUE(added[0] == vertex && surface.GetTrianglesCount() == count) << why;
        EXPECT_TRUE(vertex != 4 || (surface.GetHeight(point.GetPoint2D(), z) && z == point.GetZ())) << why;
        ASSERT_TRUE(surface.RemoveVertices({0, vertex == 4 ? 4U : 1U}, stayed)) << why;
        EXPECT_EQ(stayed.size(), point.GetX() == 6 ? 1U : 2U) << why;
        EXPECT_FALSE(surface.AddPoints({{kNan, 1, 1}}, kTolerances, added) || surface.RemoveVertices({9}, stayed));
    }
    // The chain moves out of the circle of a triangle far away.
    Ground wide{{{4, -100, 0}, {4, 100, 0}}, {{{0, 0, 0}, {8, 0, 0}}}, {}, {}, 0.0};
    TinSurfacePatch3D moved, whole;
    ASSERT_TRUE(moved.Build(wide, Tolerances(0.6)) && moved.AddPoints({{4, 0.5, 1}}, Tolerances(0.6), added));
    wide.points.emplace_back(4, 0.5, 1);
    ASSERT_TRUE(whole.Build(wide, Tolerances(0.6)) && whole.GetHeight({4, 0.25}, there));
    EXPECT_TRUE(there == 0.5 && moved.GetHeight({4, 0.25}, z) && z == there);
    RandomNumbers random(20240609);
    for (int round = 0; round < 40; ++round) {
        const Point2D origin = surveyOrigins[round % 2];
        const auto place = [&] { return Point3D(Place(random, origin, 100, false), random(0, 20)); };
        Ground ground{{}, {{place(), place()}}, {}, {}, 0.0};
        for (const Vec2D& v : {Vec2D(-50, -53), {147, -53}, {-50, 150}, {147, 151}})
            ground.points.emplace_back(origin + v, 0);
        TinSurfacePatch3D before, edited, built;
        ASSERT_TRUE(before.Build(ground, kTolerances));
        edited = before;
        std::vector<Point3D> more;
        for (int i = 0; i < 3 * round + 1; ++i) ground.points.push_back(more.emplace_back(place()));
        ASSERT_TRUE(edited.AddPoints(more, kTolerances, added) && built.Build(ground, kTolerances));
        for (const TinSurfacePatch3D* const expected : {&built, &before}) {
            EXPECT_EQ(edited.GetTrianglesCount(), expected->GetTrianglesCount());
            for (int k = 0; k < 50; ++k) {
                const Point2D p = place().GetPoint2D();
                ASSERT_TRUE(edited.GetHeight(p, z) && expected->GetHeight(p, there));
                EXPECT_NEAR(z, there, 1e-6);
            }
            ASSERT_TRUE(edited.RemoveVertices(expected == &built ? added : stayed, stayed) && stayed.empty());
        }
    }
}

TEST(TinSurfaceTest, ChainsRunOverTheCornersOfTrianglesThinAsRounding) {
    // The first three are on one line but for 5e-15; the others are on either side of it.
    const std::vector<Point3D> points = {
        {0, 80, 0}, {40, 72, -0.3}, {200.0 / 3, 200.0 / 3, 8.2}, {9, 9, 1}, {90, 90, 1}};
    for (const Indexes& indexes :
         {Indexes{0, 1, 2}, {0, 1, 2, 0, 3, 1}, {0, 1, 2, 0, 2, 4}, {1, 2, 0, 3, 2, 1, 0, 2, 4}}) {
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.SetTriangles(IndexedTriangleSet3D(points, indexes)));
        std::vector<LineString3D> draped;
        ASSERT_TRUE(surface.Drape(LineString2D{points[0].GetPoint2D(), points[1].GetPoint2D(), points[2].GetPoint2D()},
                                  draped));
        ASSERT_EQ(draped.size(), 1U);
        EXPECT_THAT(draped[0].GetPoints(), testing::Pointwise(AreNear(1e-9), {points[0], points[1], points[2]}));
    }
    // Beside lines of points, where the rounding of a place decides its height.
    RandomNumbers random(20240612);
    for (int round = 0; round < 400; ++round) {
        const auto place = [&] { return Place(random, surveyOrigins[1], 100, false); };
        const Point2D from = place(), to = place();
        const double width = std::pow(10.0, random(-14, -5));
        Ground ground;
        for (int i = 0; i < 14; ++i) {
            const Point2D on = from + (to - from) * random(0, 1) + Vec2D(random(-width, width), random(-width, width));
            ground.points.emplace_back(i < 8 ? on : place(), random(0, 10));
        }
        TinSurfacePatch3D surface;
        std::vector<LineString3D> draped;
        if (surface.Build(ground, Tolerances(1e-12)))
            (void)surface.Drape({ground.points[0].GetPoint2D(), to, from}, draped);
        for (const LineString3D& line : draped) {
            for (const Point3D& p : line.GetPoints()) {
                double z = kNan;
                EXPECT_TRUE(surface.GetHeight(p.GetPoint2D(), z) && std::abs(z - p.GetZ()) < 1e-5) << p << ", " << z;
            }
        }
    }
}

TEST(TinSurfaceTest, TrianglesWithTwoHeightsAreRefused) {
    const std::vector<Point3D> corners = {{0, 0, 0}, {4, 0, 0}, {4, 4, 1},   {0, 4, 1},
                                          {2, 0, 9}, {1, 3, 5}, {kNan, 0, 0}};
    const std::tuple<const char*, Indexes, std::uint64_t> rows[] = {
        {"either way round", {0, 1, 2, 0, 3, 2}, 2},
        {"a wall is left out", {0, 1, 2, 0, 4, 1}, 1},
        {"folded over an edge", {0, 1, 2, 0, 2, 1}, 0},
        {"three at an edge", {0, 1, 2, 0, 2, 3, 0, 2, 5}, 0},
        {"no such vertex", {0, 1, 2, 0, 2, 7}, 0},
        {"not a number", {0, 1, 2, 0, 2, 6}, 0},
        {"walls only", {0, 4, 1}, 0},
        {"none", {}, 0},
    };
    for (const auto& [why, indexes, count] : rows) {
        TinSurfacePatch3D surface;
        EXPECT_EQ(surface.SetTriangles(IndexedTriangleSet3D(corners, indexes)), count > 0) << why;
        EXPECT_EQ(surface.GetTrianglesCount(), count) << why;
        EXPECT_EQ(surface.IsInside({2, 1}), count > 0) << why;
        EXPECT_FALSE(surface.IsInside({kNan, 1}));
    }
}

TEST(TinSurfaceTest, IsAGeometryThatManyMayAsk) {
    TinSurfacePatch3D surface;
    ASSERT_TRUE(surface.SetTriangles(Grid(
        {10, 20}, 30, [](double x, double y) { return x + y; }, [](int x, int y) { return x != 7 || y != 9; })));
    EXPECT_EQ(std::pair(surface.GetType(), surface.GetTopologicalDimension()),
              std::pair(MathTypes::TinSurfacePatch3D, 2U));
    std::vector<Point3D> vertices;
    EXPECT_TRUE(Geometry::GetVertices(surface, vertices) && vertices.size() == 961);
    Concurrently(4, [&surface](unsigned int) {
        double z = 0.0;
        EXPECT_TRUE(surface.GetHeight({15.25, 27.5}, z));
        EXPECT_NEAR(z, 12.75, 1e-12);
        EXPECT_FALSE(surface.IsInside({17.5, 29.5}) || surface.IsInside({1e308, 1e308}) || surface.IsInside({9.9, 30}));
        EXPECT_TRUE(surface.IsInside({17, 29.5}) && surface.IsInside({10, 50})) << "borders belong to it";
    });
}

// By brute force: the cuts of each triangle, vertices on a level counted as above it, with that ground on the right.
TEST(TinSurfaceTest, ContoursAreTheCutsOfTheTrianglesInFewestStrings) {
    RandomNumbers random(20240604);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const bool hasFlats = round % 3 == 0;  // heights on the levels: flats, ridges and saddles
        Ground ground;
        for (int i = 0; i < 20 + 10 * round; ++i) {
            const double z = random(-3, 3);
            ground.points.emplace_back(Place(random, surveyOrigins[1], 30, false), hasFlats ? std::round(z) : z);
        }
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.Build(ground, kTolerances));
        std::vector<std::pair<Point3D, Point3D>> cuts;
        std::map<double, int> borders;
        for (unsigned int t = 0; t < surface.GetTrianglesCount(); ++t) {
            const Triangle3D triangle = surface.GetTriangles()[t];
            for (double level = -3.0; level <= 3.0; ++level) {
                Point3D up, down;
                for (unsigned int i = 0; i < 3; ++i) {
                    const Point3D a = triangle[static_cast<int>(i)], b = triangle[static_cast<int>(i + 1) % 3];
                    if ((a.GetZ() >= level) == (b.GetZ() >= level)) continue;
                    (a.GetZ() < level ? up : down) = a + (b - a) * ((level - a.GetZ()) / (b.GetZ() - a.GetZ()));
                    borders[level] += surface.GetNeighbor(t, i) == TinSurfacePatch3D::noTriangle;
                }
                if (up.Distance2D(down) > 0.0) cuts.emplace_back(up, down);
            }
        }
        std::vector<LineString3D> contours;
        ASSERT_TRUE(surface.GetContours(1.0, contours));
        double last = -kInfinity;
        for (const LineString3D& contour : contours) {
            EXPECT_GE(contour[0].GetZ(), last) << "by level";
            last = contour[0].GetZ();
            if (contour.GetStart().Distance(contour.GetEnd()) > 0.0) borders[last] -= 2;
            for (unsigned int i = 0; i + 1 < contour.GetSize(); ++i) {
                EXPECT_EQ(contour[i].GetZ(), last);
                const auto cut = std::ranges::find_if(cuts, [&](const auto& ends) {
                    return ends.first.Distance(contour[i]) < 1e-6 && ends.second.Distance(contour[i + 1]) < 1e-6;
                });
                ASSERT_NE(cut, cuts.end()) << contour[i] << contour[i + 1];
                cuts.erase(cut);
            }
        }
        EXPECT_TRUE(cuts.empty());
        for (const auto& [level, left] : borders) EXPECT_TRUE(hasFlats || left == 0) << "the fewest";
        // With corners cut none meets one of another level, or itself.
        std::vector<LineString3D> smooth;
        std::vector<Point2D> common;
        ASSERT_TRUE(surface.GetContours(1.0, smooth, 2) && smooth.size() == contours.size());
        for (const LineString3D& a : smooth) {
            EXPECT_TRUE(hasFlats || !a.GetLineString2D().IsSelfCrossing(1e-8));
            for (const LineString3D& b : smooth) {
                if (a[0].GetZ() == b[0].GetZ()) continue;
                Intersection::LineStringLineString(a.GetLineString2D(), b.GetLineString2D(), common, Tolerances(1e-8));
            }
        }
        EXPECT_TRUE(common.empty());
    }
    TinSurfacePatch3D hill;
    std::vector<LineString3D> contours;
    ASSERT_TRUE(hill.SetTriangles(Grid({0, 0}, 4, [](double x, double y) { return x == 2 && y == 2 ? 2.0 : 0.0; })));
    EXPECT_TRUE(hill.GetContours(std::vector{2.0, 1.0, 1.0}, contours) && contours.size() == 1) << "none at the top";
    EXPECT_FALSE(hill.GetContours(0.0, contours) || hill.GetContours(kNan, contours) ||
                 hill.GetContours(1e-9, contours) || hill.GetContours(1e-5, contours, 8) ||
                 hill.GetContours(std::vector{kNan}, contours) || hill.GetContours(1.0, contours, 9) ||
                 hill.GetContours(-1.0, contours));
}

TEST(TinSurfaceTest, VolumesAreThoseOfBodiesAndAddUp) {
    using Volumes = TinSurfacePatch3D::Volumes;
    for (const Point2D& origin : surveyOrigins) {
        const auto box = [&](const Vec2D& low, const Vec2D& high) {
            return LineString2D({origin + low, origin + Vec2D(high.GetX(), low.GetY()), origin + high,
                                 origin + Vec2D(low.GetX(), high.GetY())});
        };
        // A slope from -4 to 8 over a square, against the level and a flat design.
        TinSurfacePatch3D slope, flat;
        ASSERT_TRUE(slope.SetTriangles(Grid(origin, 12, [](double x, double) { return x - 4.0; })));
        ASSERT_TRUE(flat.SetTriangles(Grid(origin - Vec2D(0.5, 0.25), 13, [](double, double) { return 0.0; })));
        Polygon2D frame(box({0, 0}, {12, 12}));
        frame.AppendHoleBoundary(box({4, 4}, {8, 8}));
        Volumes all[6];
        ASSERT_TRUE(slope.GetVolumes(flat, all[0]) && slope.GetVolumes(0.0, all[1]) && flat.GetVolumes(slope, all[2]));
        ASSERT_TRUE(slope.GetVolumes(flat, frame, all[3]) && slope.GetVolumes(0.0, frame, all[4]) &&
                    flat.GetVolumes(slope, frame, all[5]));
        for (int i = 0; i < 6; ++i) {
            EXPECT_NEAR(i % 3 == 2 ? all[i].fill : all[i].cut, i < 3 ? 384 : 352, 1e-6);
            EXPECT_NEAR(i % 3 == 2 ? all[i].cut : all[i].fill, 96, 1e-6);
            EXPECT_NEAR(all[i].area, i < 3 ? 144 : 128, 1e-6);
        }
        Volumes untouched{1, 2, 3};
        EXPECT_FALSE(slope.GetVolumes(kNan, untouched) || slope.GetVolumes(TinSurfacePatch3D(), untouched) ||
                     TinSurfacePatch3D().GetVolumes(0.0, untouched) ||
                     slope.GetVolumes(0.0, Polygon2D(LineString2D{{0, 0}, {1, 1}}), untouched));
        EXPECT_EQ(untouched.cut + untouched.fill + untouched.area, 6.0);

        // Of rough ground: halves add up to the whole, and the difference is that of the volumes over a height.
        RandomNumbers random(20240605);
        for (int round = 0; round < 20; ++round) {
            TinSurfacePatch3D surfaces[2];
            for (TinSurfacePatch3D& surface : surfaces) {
                Ground ground;
                for (const Point2D& p : box({0, 0}, {20, 20}).GetPoints()) ground.points.emplace_back(p, random(0, 5));
                for (int i = 0; i < 10 * round; ++i) {
                    ground.points.emplace_back(Place(random, origin, 20, false), random(0, 5));
                }
                ASSERT_TRUE(surface.Build(ground, kTolerances));
            }
            const double split = random(1, 19);
            Volumes whole, left, right;
            ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], whole));
            ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], Polygon2D(box({0, 0}, {split, 20})), left));
            ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], Polygon2D(box({split, 0}, {20, 20})), right));
            EXPECT_NEAR(whole.cut, left.cut + right.cut, 1e-6);
            EXPECT_NEAR(whole.fill, left.fill + right.fill, 1e-6);
            EXPECT_NEAR(whole.area, 400.0, 1e-6);
            EXPECT_NEAR(whole.cut - whole.fill,
                        surfaces[0].GetTriangles().GetVolume(0.0) - surfaces[1].GetTriangles().GetVolume(0.0), 1e-6);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
