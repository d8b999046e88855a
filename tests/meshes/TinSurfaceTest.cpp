#include "kalvio/core/Angle.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "meshes/Meshes.h"
#include "support/Concurrently.h"

namespace Kalvio::Math {
namespace {

using Ground = TinSurfacePatch3D::Ground;
using Conflicts = std::vector<TinSurfacePatch3D::HeightConflict>;

LineString3D Shifted(LineString3D chain, const Point2D& origin) {
    return chain.Translate(Vec3D(origin.GetX(), origin.GetY(), 0.0));
}

TEST(TinSurfaceTest, BuildsFromPointsChainsAndRings) {
    const LineString3D square = {{0, 0, 0}, {8, 0, 0}, {8, 8, 0}, {0, 8, 0}};
    const LineString3D inner = {{2, 2, 0}, {6, 2, 0}, {6, 6, 0}, {2, 6, 0}, {2, 2, 0}};
    const LineString3D rising = {{1, 1, 1}, {7, 7, 7}}, falling = {{1, 7, 5}, {7, 1, 4}};
    struct Row {
        const char* why;
        std::vector<LineString3D> breaklines, borders, holes;
        double rim;
        std::uint64_t triangles;
        double area;
        std::vector<Point3D> conflicts;  // x, y and the height kept
    };
    const Row rows[] = {
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
        {"rim", {square, {{4, -1, 0}}, {{12, 12, 0}}}, {}, {}, 8.5, 3, 68, {}},
        {"one line", {{{0, 0, 0}, {3, 3, 1}, {9, 9, 0}}}, {}, {}, 0, 0, 0, {}},
        {"not finite", {square, {{kNan, 1, 1}}}, {}, {}, 0, 0, 0, {}},
        {"infinite height", {square, {{4, 4, kInfinity}}}, {}, {}, 0, 0, 0, {}},
        {"nothing", {}, {}, {}, 0, 0, 0, {}},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : {Point2D(), Point2D(385000, 6672000)}) {
            SCOPED_TRACE(row.why);
            Ground ground{{}, {}, {}, {}, row.rim};
            for (const LineString3D& chain : row.breaklines) ground.breaklines.push_back(Shifted(chain, origin));
            for (const LineString3D& chain : row.borders) ground.borders.push_back(Shifted(chain, origin));
            for (const LineString3D& chain : row.holes) ground.holes.push_back(Shifted(chain, origin));
            TinSurfacePatch3D surface;
            Conflicts conflicts(7);
            ASSERT_EQ(surface.Build(ground, kTolerances, conflicts), row.area > 0.0);
            EXPECT_EQ(surface.GetTrianglesCount(), row.triangles);
            EXPECT_NEAR(surface.GetPlanArea(), row.area, 1e-6);
            if (row.area == 0.0) continue;
            ASSERT_EQ(conflicts.size(), row.conflicts.size());
            for (std::size_t i = 0; i < conflicts.size(); ++i) {
                EXPECT_THAT(conflicts[i].kept + Vec3D(-origin.GetX(), -origin.GetY(), 0.0),
                            IsNear(row.conflicts[i], 1e-6));
                EXPECT_GT(std::abs(conflicts[i].other - conflicts[i].kept.GetZ()), 1e-4);
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
        const std::int64_t extent = std::array{9, 40, 1000}[static_cast<std::size_t>(round % 3)];
        const Point2D origin = round % 2 == 0 ? Point2D() : Point2D(385000, 6672000);
        Ground ground;
        std::vector<Point2D> places;
        for (int i = 0; i < 10 + 5 * round; ++i) {
            places.push_back(origin +
                             Vec2D(static_cast<double>(random() % extent), static_cast<double>(random() % extent)));
            ground.points.emplace_back(places.back(), random(0, 20));
        }
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.Build(ground, kTolerances));
        const IndexedTriangleSet3D& set = surface.GetTriangles();
        Polygon2D hull;
        Geometry::ConvexHull(places, hull);
        EXPECT_NEAR(surface.GetPlanArea(), std::abs(hull.GetArea()), 1e-6);
        std::size_t rim = 0;
        std::vector<std::array<std::int64_t, 2>> at;
        for (const Point3D& v : set.GetVertices()) {
            at.push_back({std::llround(v.GetX() - origin.GetX()), std::llround(v.GetY() - origin.GetY())});
        }
        for (unsigned int t = 0; t < surface.GetTrianglesCount(); ++t) {
            const unsigned int* const corner = set.GetIndexes().data() + 3 * t;
            for (std::size_t d = 0; d < at.size(); ++d) {
                std::int64_t row[3][3];
                for (std::size_t i = 0; i < 3; ++i) {
                    row[i][0] = at[corner[i]][0] - at[d][0];
                    row[i][1] = at[corner[i]][1] - at[d][1];
                    row[i][2] = row[i][0] * row[i][0] + row[i][1] * row[i][1];
                }
                std::int64_t sum = 0;
                for (std::size_t i = 0; i < 3; ++i) {
                    const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
                    sum += row[i][2] * (row[j][0] * row[k][1] - row[k][0] * row[j][1]);
                }
                ASSERT_LE(sum, 0) << "vertex " << d << " in the circle of triangle " << t;
            }
            for (unsigned int i = 0; i < 3; ++i) {
                const unsigned int next = surface.GetNeighbor(t, i);
                if (next == TinSurfacePatch3D::noTriangle) {
                    ++rim;
                    continue;
                }
                EXPECT_TRUE(surface.GetNeighbor(next, 0) == t || surface.GetNeighbor(next, 1) == t ||
                            surface.GetNeighbor(next, 2) == t);
            }
        }
        EXPECT_EQ(surface.GetTrianglesCount(), 2 * at.size() - 2 - rim) << "Euler";

        TinSurfacePatch3D again;
        ASSERT_TRUE(again.SetTriangles(set));
        EXPECT_TRUE(again.IsEqualTo(static_cast<const IGeometry&>(surface), 1e-12));
        unsigned int hint = 12345;
        const double size = static_cast<double>(extent);
        for (int k = 0; k < 40; ++k) {
            const Point2D p = origin + Vec2D(random(-0.1, 1.1) * size, random(-0.1, 1.1) * size);
            double expected = kNan, z = kNan, hinted = kNan;
            for (std::uint64_t t = 0; t < set.GetTrianglesCount(); ++t) {
                Point3D a, b, c;
                ASSERT_TRUE(set.GetTriangleAt(t, a, b, c));
                if (!Polygon2D({a.GetPoint2D(), b.GetPoint2D(), c.GetPoint2D()}).IsPointInside(p, 0.0)) continue;
                const Vec3D n = (b - a).CrossProduct(c - a);
                expected = a.GetZ() - (n.GetX() * (p.GetX() - a.GetX()) + n.GetY() * (p.GetY() - a.GetY())) / n.GetZ();
            }
            ASSERT_EQ(surface.GetHeight(p, z), !std::isnan(expected));
            ASSERT_EQ(again.GetHeight(p, hinted, hint), !std::isnan(expected));
            if (std::isnan(expected)) continue;
            EXPECT_NEAR(z, expected, 1e-7);
            EXPECT_NEAR(hinted, expected, 1e-7);
            Vec3D normal;
            double slope = -1.0, farther = kNan;
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
                double other = kNan;
                if (!surface.GetHeight(q, other)) continue;
                EXPECT_GE(above.Distance(Point3D(q, other)), above.Distance(nearest) - 1e-7);
            }
        }
        const LineString2D chain(
            {origin + Vec2D(-1, 0.3 * size), origin + Vec2D(0.5, 0.5) * size, origin + Vec2D(0.7 * size, -2.0)});
        std::vector<LineString3D> draped, sections;
        EXPECT_TRUE(surface.Drape(chain, draped));
        set.GetSections(chain, sections);
        ASSERT_EQ(draped.size(), sections.size());
        for (std::size_t i = 0; i < draped.size(); ++i) EXPECT_TRUE(draped[i].IsEqualTo(sections[i], 1e-12));
    }
}

TEST(TinSurfaceTest, RandomChainsBecomeEdges) {
    RandomNumbers random(20240603);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        const Point2D origin = round % 2 == 0 ? Point2D() : Point2D(385000, 6672000);
        // All on one plane: no heights differ, wherever chains cross, touch and overlap.
        const auto place = [&] {
            const Vec2D v = round % 3 == 0
                                ? Vec2D(random(0, 9), random(0, 9))
                                : Vec2D(static_cast<double>(random() % 9), static_cast<double>(random() % 9));
            return Point3D(origin + v, v.GetX() - 2.0 * v.GetY());
        };
        Ground ground;
        for (int i = 0; i < 40; ++i) ground.points.push_back(place());
        for (int i = 0; i < 6; ++i) ground.breaklines.push_back({place(), place(), place()});
        TinSurfacePatch3D surface;
        Conflicts conflicts;
        ASSERT_TRUE(surface.Build(ground, kTolerances, conflicts));
        for (const auto& conflict : conflicts) EXPECT_NEAR(conflict.other, conflict.kept.GetZ(), 5e-4);
        for (const LineString3D& chain : ground.breaklines) {
            std::vector<LineString3D> draped;
            if (!(chain.GetElementAtIndex(0).GetLength() > 0.0)) continue;
            ASSERT_TRUE(surface.Drape(LineString2D{chain[0].GetPoint2D(), chain[1].GetPoint2D()}, draped));
            ASSERT_EQ(draped.size(), 1U);
            // Where it is an edge, it leads over vertices alone.
            for (const Point3D& p : draped[0].GetPoints()) {
                const auto& vertices = surface.GetTriangles().GetVertices();
                EXPECT_TRUE(std::any_of(vertices.begin(), vertices.end(),
                                        [&p](const Point3D& v) { return v.Distance2D(p) < 3e-4; }));
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
    const std::unique_ptr<IGeometry> copy(surface.Clone());
    EXPECT_TRUE(Geometry::AreEqual(*copy, static_cast<const IGeometry&>(surface), 1e-12));
    Concurrently(4, [&surface] {
        double z = 0.0;
        EXPECT_TRUE(surface.GetHeight({15.25, 27.5}, z));
        EXPECT_NEAR(z, 12.75, 1e-12);
        EXPECT_FALSE(surface.IsInside({17.5, 29.5}) || surface.IsInside({1e308, 1e308}) || surface.IsInside({9.9, 30}));
        EXPECT_TRUE(surface.IsInside({17, 29.5}) && surface.IsInside({10, 50})) << "borders belong to it";
    });
}

// By brute force: the cuts of each triangle, vertices on a level counted as above it.
TEST(TinSurfaceTest, ContoursAreTheCutsOfTheTrianglesInFewestStrings) {
    RandomNumbers random(20240604);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const bool hasFlats = round % 3 == 0;  // heights on the levels: flats, ridges and saddles
        Ground ground;
        for (int i = 0; i < 20 + 10 * round; ++i) {
            const double z = random(-3, 3);
            ground.points.emplace_back(385000 + random(0, 30), 6672000 + random(0, 30), hasFlats ? std::round(z) : z);
        }
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.Build(ground, kTolerances));
        std::vector<LineString3D> contours;
        ASSERT_TRUE(surface.GetContours(1.0, contours));
        std::map<double, double> lengths, expected;
        std::map<double, int> open, borders;
        double last = -kInfinity;
        for (const LineString3D& contour : contours) {
            const double level = contour.GetStart().GetZ();
            EXPECT_GE(level, last) << "by level";
            last = level;
            lengths[level] += contour.GetLength2D();
            const bool isClosed = contour.GetStart().Distance(contour.GetEnd()) == 0.0;
            if (!isClosed) ++open[level];
            for (unsigned int i = 0; i + 1 < contour.GetSize(); ++i) {
                EXPECT_EQ(contour[i + 1].GetZ(), level);
                const Point2D from = contour[i].GetPoint2D(), to = contour[i + 1].GetPoint2D();
                const Vec2D right = (to - from).GetNormalVector(false);
                double higher = kNan, lower = kNan;
                if (from.Distance(to) < 1e-2 || !surface.GetHeight(from + (to - from) * 0.5 + right * 1e-5, higher) ||
                    !surface.GetHeight(from + (to - from) * 0.5 - right * 1e-5, lower)) {
                    continue;
                }
                EXPECT_LE(lower, level + 1e-8);
                EXPECT_TRUE(hasFlats || higher >= level - 1e-8) << higher;
            }
            for (const LineString3D& other : contours) {
                for (unsigned int i = 0; round < 8 && &other != &contour && i + 1 < contour.GetSize(); ++i) {
                    for (unsigned int k = 0; k + 1 < other.GetSize(); ++k) {
                        const auto side = [](const Point3D& a, const Point3D& b, const Point3D& p) {
                            return (b - a).PerpDotProduct(p - a);
                        };
                        const double products[] = {
                            side(contour[i], contour[i + 1], other[k]) * side(contour[i], contour[i + 1], other[k + 1]),
                            side(other[k], other[k + 1], contour[i]) * side(other[k], other[k + 1], contour[i + 1])};
                        EXPECT_FALSE(products[0] < -1e-12 && products[1] < -1e-12) << "contours cross";
                    }
                }
            }
        }
        for (unsigned int t = 0; t < surface.GetTrianglesCount(); ++t) {
            std::array<Point3D, 3> corner;
            ASSERT_TRUE(surface.GetTriangles().GetTriangleAt(t, corner[0], corner[1], corner[2]));
            for (double level = -3.0; level <= 3.0; ++level) {
                std::vector<Point2D> cuts;
                for (unsigned int i = 0; i < 3; ++i) {
                    const Point3D &a = corner[i], &b = corner[(i + 1) % 3];
                    if ((a.GetZ() >= level) == (b.GetZ() >= level)) continue;
                    const double share = (level - a.GetZ()) / (b.GetZ() - a.GetZ());
                    cuts.push_back(a.GetPoint2D() + (b.GetPoint2D() - a.GetPoint2D()) * share);
                    if (surface.GetNeighbor(t, i) == TinSurfacePatch3D::noTriangle) ++borders[level];
                }
                if (cuts.size() == 2) expected[level] += cuts[0].Distance(cuts[1]);
            }
        }
        for (const auto& [level, length] : expected) {
            EXPECT_NEAR(lengths[level], length, 1e-6);
            EXPECT_TRUE(hasFlats || 2 * open[level] == borders[level]) << "the fewest";
        }
    }
    TinSurfacePatch3D hill;
    std::vector<LineString3D> contours;
    ASSERT_TRUE(hill.SetTriangles(Grid({0, 0}, 4, [](double x, double y) { return x == 2 && y == 2 ? 2.0 : 0.0; })));
    EXPECT_TRUE(hill.GetContours(std::vector{2.0, 1.0, 1.0}, contours) && contours.size() == 1) << "none at the top";
    EXPECT_FALSE(hill.GetContours(0.0, contours) || hill.GetContours(kNan, contours) ||
                 hill.GetContours(1e-9, contours) || hill.GetContours({kNan}, contours));
}

TEST(TinSurfaceTest, VolumesAreThoseOfBodiesAndAddUp) {
    for (const Point2D& origin : {Point2D(), Point2D(385000, 6672000)}) {
        // A slope from -4 to 8 over a square, against the level and a flat design.
        TinSurfacePatch3D slope, flat;
        ASSERT_TRUE(slope.SetTriangles(Grid(origin, 12, [](double x, double) { return x - 4.0; })));
        ASSERT_TRUE(flat.SetTriangles(Grid(origin - Vec2D(0.5, 0.25), 13, [](double, double) { return 0.0; })));
        const auto ring = [&](double low, double high) {
            return LineString2D({origin + Vec2D(low, low), origin + Vec2D(high, low), origin + Vec2D(high, high),
                                 origin + Vec2D(low, high)});
        };
        Polygon2D frame(ring(0, 12));
        frame.AppendHoleBoundary(ring(4, 8));
        const std::tuple<const Polygon2D*, double, double, double> rows[] = {{nullptr, 384, 96, 144},
                                                                             {&frame, 352, 96, 128}};
        for (const auto& [area, cut, fill, plan] : rows) {
            TinSurfacePatch3D::Volumes first, second, third;
            ASSERT_TRUE(area != nullptr ? slope.GetVolumes(flat, *area, first) : slope.GetVolumes(flat, first));
            ASSERT_TRUE(area != nullptr ? slope.GetVolumes(0.0, *area, second) : slope.GetVolumes(0.0, second));
            ASSERT_TRUE(area != nullptr ? flat.GetVolumes(slope, *area, third) : flat.GetVolumes(slope, third));
            std::swap(third.cut, third.fill);
            for (const auto& volumes : {first, second, third}) {
                EXPECT_NEAR(volumes.cut, cut, 1e-6);
                EXPECT_NEAR(volumes.fill, fill, 1e-6);
                EXPECT_NEAR(volumes.area, plan, 1e-6);
            }
        }
        TinSurfacePatch3D::Volumes untouched{1, 2, 3};
        EXPECT_FALSE(slope.GetVolumes(kNan, untouched) || slope.GetVolumes(TinSurfacePatch3D(), untouched) ||
                     TinSurfacePatch3D().GetVolumes(0.0, untouched) ||
                     slope.GetVolumes(0.0, Polygon2D(LineString2D{{0, 0}, {1, 1}}), untouched));
        EXPECT_EQ(untouched.cut + untouched.fill + untouched.area, 6.0);
    }
    // Of rough ground: halves add up to the whole, and the difference is that of the volumes over a height.
    RandomNumbers random(20240605);
    for (int round = 0; round < 20; ++round) {
        std::array<TinSurfacePatch3D, 2> surfaces;
        for (TinSurfacePatch3D& surface : surfaces) {
            Ground ground;
            for (const Vec2D& v : {Vec2D(0, 0), Vec2D(20, 0), Vec2D(20, 20), Vec2D(0, 20)}) {
                ground.points.emplace_back(Point2D(385000, 6672000) + v, random(0, 5));
            }
            for (int i = 0; i < 10 * round; ++i) {
                ground.points.emplace_back(385000 + random(0, 20), 6672000 + random(0, 20), random(0, 5));
            }
            ASSERT_TRUE(surface.Build(ground, kTolerances));
        }
        const double split = 385000 + random(1, 19);
        const auto half = [](double from, double to) {
            return Polygon2D(LineString2D({{from, 6672000}, {to, 6672000}, {to, 6672020}, {from, 6672020}}));
        };
        TinSurfacePatch3D::Volumes whole, left, right;
        ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], whole));
        ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], half(385000, split), left));
        ASSERT_TRUE(surfaces[0].GetVolumes(surfaces[1], half(split, 385020), right));
        EXPECT_NEAR(whole.cut, left.cut + right.cut, 1e-6);
        EXPECT_NEAR(whole.fill, left.fill + right.fill, 1e-6);
        EXPECT_NEAR(whole.area, 400.0, 1e-6);
        EXPECT_NEAR(whole.cut - whole.fill,
                    surfaces[0].GetTriangles().GetVolume(0.0) - surfaces[1].GetTriangles().GetVolume(0.0), 1e-6);
    }
}

}  // namespace
}  // namespace Kalvio::Math
