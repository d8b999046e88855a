#include "kalvio/core/Matrix2D.h"
#include "kalvio/polygons/PointInPolygon.h"
#include "support/Concurrently.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Rings.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

using Position = PointInPolygon::Position;
using Ring = std::vector<Point2D>;

// Four corners, counter-clockwise from (x, y) for positive sizes.
Ring Rectangle(double x, double y, double width, double height) {
    return {Point2D(x, y), Point2D(x + width, y), Point2D(x + width, y + height), Point2D(x, y + height)};
}

// The ring with points added on its edges until it has more than 100.
Ring Densified(const Ring& ring) {
    const int parts = static_cast<int>(100 / ring.size()) + 1;
    Ring dense;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Vec2D edge = ring[(i + 1) % ring.size()] - ring[i];
        for (int k = 0; k < parts; ++k) dense.push_back(ring[i] + edge * (static_cast<double>(k) / parts));
    }
    return dense;
}

// Teeth of width 2 that stand on a bar, on integer coordinates.
Ring Comb(int teeth) {
    Ring ring{Point2D(0, 0), Point2D(4 * teeth - 2, 0)};
    for (int i = teeth - 1; i >= 0; --i) {
        ring.emplace_back(4 * i + 2, 20);
        ring.emplace_back(4 * i, 20);
        if (i > 0) {
            ring.emplace_back(4 * i, 2);
            ring.emplace_back(4 * i - 2, 2);
        }
    }
    return ring;
}

struct Case {
    std::string why;
    Polygon2D polygon;
};

std::vector<Case> Cases(std::mt19937_64& random) {
    std::vector<Case> cases;
    const auto add = [&](const char* why, const Ring& ring, const std::vector<Ring>& holes) {
        Polygon2D polygon(Densified(ring));
        for (const Ring& hole : holes) polygon.AppendHoleBoundary(LineString2D(hole));
        cases.push_back({why, polygon});
    };
    add("square on integers, hole on integers", Rectangle(0, 0, 16, 16), {Rectangle(4, 4, 8, 8)});
    add("C",
        {Point2D(0, 0), Point2D(20, 0), Point2D(20, 5), Point2D(5, 5), Point2D(5, 15), Point2D(20, 15), Point2D(20, 20),
         Point2D(0, 20)},
        {Rectangle(1, 1, 2, 18)});
    add("comb", Comb(6), {});
    add("star and holes, one of them outside, one in another, two over each other",
        RandomStar(random, Point2D(0, 0), 20.0, 60),
        {RandomStar(random, Point2D(0, 0), 3.0, 15), Rectangle(30, 0, 2, 2), Rectangle(-0.5, -0.5, 1, 1),
         Rectangle(1, 1, 3, -3), Rectangle(2, 0, 4, 2)});
    add("hole that shares a side", Rectangle(0, 0, 16, 12), {Rectangle(0, 4, 4, 4)});
    add("pentagram, wound twice in the middle",
        {Point2D(0, 10), Point2D(6, -8), Point2D(-9.5, 3), Point2D(9.5, 3), Point2D(-6, -8)}, {});
    add("figure of eight, no area", {Point2D(0, 0), Point2D(10, 10), Point2D(10, 0), Point2D(0, 10)}, {});
    add("sliver", {Point2D(0, 0), Point2D(30, 10), Point2D(30, 10.001)}, {});
    add("wide and low", Rectangle(0, 0, 1000, 2), {Rectangle(500, 0.5, 1, 1)});
    add("holes of no extent", Rectangle(0, 0, 9, 9), {{}, {Point2D(3, 3)}, {Point2D(4, 4), Point2D(6, 4)}});
    Ring noise = Densified(Rectangle(0, 0, 16, 16));
    for (Point2D& p : noise) p += Vec2D(0.0, std::uniform_real_distribution<double>(-1e-13, 1e-13)(random));
    add("level sides with noise, where the margin decides", noise, {Rectangle(4, 4, 8, 8)});
    Ring steps{Point2D(-5, 4), Point2D(-5, -3), Point2D(3, -3), Point2D(3, -2)};
    for (int i = 0; i < 120; ++i) steps.emplace_back(i % 2 == 0 ? 0.0 : 1e-7, 4e-9 * i);
    add("edges of 4 nm, too flat for the margin", steps, {});
    return cases;
}

double CellSide(const PointInPolygon& tester) {
    return std::min(tester.GetGrid().GetCellWidth(), tester.GetGrid().GetCellHeight());
}

// Points that are hard to place, and some that are not.
std::vector<Point2D> Queries(const Polygon2D& polygon, const PointInPolygon& tester, std::mt19937_64& random) {
    std::vector<Point2D> queries;
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Point2D low;
    Point2D high;
    tester.GetMinMaxPoints(low, high);
    const Vec2D size = high - low;
    const auto nearby = [&](const Point2D& p) {
        const double steps[] = {0.0, 0.0, 1e-13, 1e-10, 5e-5, 1e-4, 0.25, 0.4 * CellSide(tester)};
        const auto step = [&] { return steps[random() % 8] * (random() % 2 == 0 ? 1.0 : -1.0); };
        queries.push_back(p + Vec2D(step(), step()));
    };
    for (int k = 0; k < 120; ++k) {
        queries.push_back(low +
                          Vec2D(size.GetX() * (1.2 * unit(random) - 0.1), size.GetY() * (1.2 * unit(random) - 0.1)));
        const std::size_t rings = polygon.GetNumHoleBoundaries() + 1U;
        const auto ringIndex = static_cast<unsigned int>(random() % rings);
        const Ring& ring = ringIndex == 0 ? polygon.GetPoints() : polygon.GetHoleBoundary(ringIndex - 1).GetPoints();
        if (ring.empty()) continue;
        const std::size_t i = random() % ring.size();
        nearby(ring[i]);
        queries.push_back(ring[i] + Vec2D(0.2 * unit(random) - 0.1, 0.0));
        nearby(ring[i] + (ring[(i + 1) % ring.size()] - ring[i]) * unit(random));
        nearby(Point2D(low.GetX() + size.GetX() * unit(random), ring[i].GetY()));
        const auto& grid = tester.GetGrid();
        nearby(Point2D(low.GetX() + grid.GetCellWidth() * static_cast<double>(random() % 20),
                       low.GetY() + grid.GetCellHeight() * static_cast<double>(random() % 20)));
    }
    for (const double far :
         {-1e9, 1e9, -1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        queries.emplace_back(far, polygon.GetPoint(7).GetY());
        queries.emplace_back(polygon.GetPoint(7).GetX(), far);
    }
    return queries;
}

TEST(PointInPolygonTest, AnswersExactlyAsThePolygonDoes) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240612));
    for (const Case& source : Cases(random)) {
        for (int variant = 0; variant < 12; ++variant) {
            SCOPED_TRACE(source.why);
            Polygon2D polygon(source.polygon);
            if (variant % 2 != 0) polygon.Reverse();
            if (variant % 3 == 1) polygon.Close();
            if (variant % 3 == 2) polygon.Transform(Matrix2D().Rotate(Angle(0.5 * 3.141592653589793)));
            polygon.Translate(surveyOrigins[variant / 2 % 2] - Point2D());
            // 17 puts cell sides on integers, 11 one close to the tiny edges.
            const std::uint64_t rows = variant == 0 ? 17 : variant == 4 ? 11 : 2 + random() % 60;
            constexpr double gridTolerances[] = {0.0, 1e-4, -1e-4, 5.0};
            const PointInPolygon tester(polygon, rows, gridTolerances[variant % 4]);
            ASSERT_TRUE(tester.GetGrid().IsBuilt());
            int known = 0;
            for (const Point2D& p : Queries(polygon, tester, random)) {
                for (const double t : {0.0, 1e-10, 1e-4, -1e-4, 0.25, 0.49 * CellSide(tester), std::nan("")}) {
                    for (const bool includeBorders : {true, false}) {
                        ASSERT_EQ(tester.IsPointInsideAndBorders(p, t, includeBorders),
                                  polygon.IsPointInsideAndBorders(p, t, includeBorders))
                            << testing::PrintToString(p) << " tolerance " << t << " borders " << includeBorders
                            << " rows " << rows << " variant " << variant;
                    }
                }
                known += tester.GetGrid().Classify(p, 1e-10, true) != Position::Border ? 1 : 0;
            }
            EXPECT_GT(known, 300) << "the grid itself has to know nearly all";
        }
    }
}

TEST(PointInPolygonTest, CellsAreOfTheStatedNumberAndSize) {
    // 20 x 10, and a hole from (5, 2) to (11, 8).
    Polygon2D polygon(Densified(Rectangle(0, 0, 20, 10)));
    polygon.AppendHoleBoundary(Rectangle(5, 2, 6, 6));
    const PointInPolygon tester(polygon, 11, 1e-4);
    const PointInPolygon::PolygonGrid& grid = tester.GetGrid();
    ASSERT_TRUE(grid.IsBuilt());
    EXPECT_EQ(grid.GetRows(), 11U);
    EXPECT_EQ(grid.GetColumns(), 22U);
    EXPECT_DOUBLE_EQ(grid.GetCellHeight(), 1.0) << "the last row reaches a cell beyond the box";
    EXPECT_DOUBLE_EQ(grid.GetCellWidth(), 20.0 / 21.0);
    struct Row {
        const char* why;
        double x, y;
        Position position;
    };
    const Row rows[] = {
        {"in the corner", 0.2, 0.2, Position::Border},
        {"between border and hole", 3.5, 4.5, Position::Inside},
        {"left of the hole", 5.1, 4.5, Position::Border},
        {"in the hole", 8.5, 5.5, Position::Outside},
        {"right of the hole", 15.5, 4.5, Position::Inside},
        {"last row: its lower side", 7.5, 10.5, Position::Border},
        {"row whose upper side an edge lies on", 7.5, 1.5, Position::Border},
    };
    for (const Row& row : rows) {
        const auto column = static_cast<std::size_t>(row.x / grid.GetCellWidth());
        EXPECT_EQ(grid.GetPosition(column, static_cast<std::size_t>(row.y)), row.position) << row.why;
    }
    EXPECT_EQ(grid.GetPosition(22, 0), Position::Undefined);
    EXPECT_EQ(PointInPolygon(polygon, 0, 1e-4).GetGrid().GetRows(), 2U);
    EXPECT_EQ(PointInPolygon(Polygon2D(Densified(Rectangle(0, 0, 1, 50))), 10, 0).GetGrid().GetColumns(), 3U);
}

TEST(PointInPolygonTest, WithoutAGridThePolygonAnswers) {
    std::mt19937_64 random(7);
    const double nan = std::nan("");
    Polygon2D broken(RandomStar(random, Point2D(0, 0), 10.0, 200));
    broken.GetPoint(50) = Point2D(1.0, nan);
    Polygon2D endless(RandomStar(random, Point2D(0, 0), 10.0, 200));
    endless.GetPoint(50) = Point2D(std::numeric_limits<double>::infinity(), 1.0);
    const Polygon2D star(RandomStar(random, Point2D(0, 0), 10.0, 101));
    struct Row {
        const char* why;
        Polygon2D polygon;
        std::uint64_t rows;
        bool isBuilt;
    };
    const Row rows[] = {
        {"empty", Polygon2D(), 50, false},
        {"100 points", Polygon2D(RandomStar(random, Point2D(0, 0), 10.0, 100)), 50, false},
        {"101 points", star, 50, true},
        {"more cells than are built", star, 100000, false},
        {"no end of cells", star, std::numeric_limits<std::uint64_t>::max(), false},
        {"not a number", broken, 50, false},
        {"not finite", endless, 50, false},
        {"too far away for its cells", star.Translate(Vec2D(1e14, 0)), 50, false},
    };
    std::uniform_real_distribution<double> coordinate(-12.0, 12.0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const PointInPolygon tester(row.polygon, row.rows, 1e-4);
        EXPECT_EQ(tester.GetGrid().IsBuilt(), row.isBuilt);
        EXPECT_EQ(tester.GetGrid().Classify(Point2D(0, 0), 0.0, true) == Position::Border, !row.isBuilt);
        for (int k = 0; k < 50; ++k) {
            const Point2D p(coordinate(random), coordinate(random));
            ASSERT_EQ(tester.IsPointInside(p, 1e-4), row.polygon.IsPointInside(p, 1e-4));
        }
    }
    EXPECT_FALSE(PointInPolygon().IsPointInside(Point2D(0, 0), 1.0));
    const PointInPolygon tiny(LineString2D(Rectangle(0, 0, 1e-7, 1e-7)), 50, 1e-4);
    EXPECT_FALSE(tiny.IsPointInside(Point2D(0.003, 5e-8), 1e-4)) << "beside the box and the tolerance";

    const PointInPolygon flat(LineString2D(Densified(Rectangle(3, 4, 20, 1e-11))), 50, 1e-4);
    EXPECT_EQ(flat.GetPolygon().GetSize(), 2U) << "the corners of the box";
    EXPECT_TRUE(flat.IsPointInside(Point2D(10, 4), 1e-4));
    EXPECT_FALSE(flat.IsPointInside(Point2D(10, 4.1), 1e-4));
}

TEST(PointInPolygonTest, LongEdgesDoNotFillTheMemory) {
    Ring teeth;
    for (int i = 0; i <= 1000; ++i) teeth.emplace_back(i, i % 2 == 0 ? 0.0 : 1000.0);
    teeth.emplace_back(1000.0, -1.0);
    teeth.emplace_back(0.0, -1.0);
    const PointInPolygon tester(Polygon2D(teeth), 200, 1e-4);
    EXPECT_EQ(tester.GetGrid().GetRows(), 6U) << "teeth run upward, so cells grow upward";
    EXPECT_EQ(tester.GetGrid().GetColumns(), 199U);
    EXPECT_TRUE(tester.IsPointInside(Point2D(501.0, 999.0), 1e-4));
    EXPECT_FALSE(tester.IsPointInside(Point2D(502.0, 1.0), 1e-4));
}

TEST(PointInPolygonTest, HolesAreAddedUnlessTheyAreThin) {
    PointInPolygon tester(LineString2D(Densified(Rectangle(0, 0, 20, 20))), 20, 0.125);
    struct Row {
        const char* why;
        Ring hole;
        Point2D inHole;
        bool isAdded;
    };
    const Row rows[] = {
        {"exactly twice the tolerance wide", Rectangle(2, 2, 10, 0.25), Point2D(7, 2.125), false},
        {"a sliver across", {Point2D(2, 2), Point2D(12, 12), Point2D(11.9, 12.1)}, Point2D(11.95, 12.03), false},
        {"wider", Rectangle(2, 2, 10, 0.3125), Point2D(7, 2.125), true},
        {"no ring", {Point2D(4, 4), Point2D(9, 9)}, Point2D(4.5, 4.5), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_TRUE(tester.IsPointInside(row.inHole, 1e-4));
        EXPECT_EQ(tester.AddHoleAndRecompute(LineString2D(row.hole)), row.isAdded);
        EXPECT_EQ(tester.IsPointInside(row.inHole, 1e-4), !row.isAdded);
    }
    EXPECT_EQ(tester.GetPolygon().GetNumHoleBoundaries(), 1U);
    tester.Recompute(Polygon2D(tester.GetPolygon()), 30, 0.125);
    EXPECT_EQ(tester.GetGrid().GetRows(), 30U);
    const PointInPolygon copy(tester);
    Concurrently(4, [&copy] { EXPECT_FALSE(copy.IsPointInside(Point2D(7, 2.125), 1e-4)); });
    Point2D low;
    Point2D high;
    copy.GetMinMaxPoints(low, high);
    EXPECT_EQ(high, Point2D(20, 20));
    EXPECT_EQ(copy.GetBoundingBox().GetMaxPoint(), Point2D(20, 20));
}

double AreaOf(const std::vector<Polygon2D>& pieces) {
    double area = 0.0;
    for (const Polygon2D& piece : pieces) area += piece.GetArea();
    return area;
}

TEST(PointInPolygonTest, StripsCutThePolygonIntoPiecesThatCoverItOnce) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240613));
    Polygon2D star(RandomStar(random, Point2D(0, 0), 20.0, 60));
    star.AppendHoleBoundary(RandomStar(random, Point2D(0, 0), 3.0, 15));
    star.AppendHoleBoundary(Rectangle(-2.75, -2.75, 0.5, 0.5));
    Polygon2D comb(Comb(6));
    comb.AppendHoleBoundary(Rectangle(8.5, 4, 1, 4));
    comb.AppendHoleBoundary(Rectangle(8.5, 9, 1, 1));
    for (Polygon2D polygon : {star, comb}) {
        for (const Point2D& origin : surveyOrigins) {
            for (const bool isHorizontal : {true, false}) {
                polygon.Reverse();
                const Polygon2D placed = std::as_const(polygon).Translate(origin - Point2D());
                const auto clip =
                    isHorizontal ? PointInPolygon::PolygonClipHoriStrip : PointInPolygon::PolygonClipVertStrip;
                const double base = isHorizontal ? origin.GetY() : origin.GetX();
                double total = 0.0;
                std::uniform_real_distribution<double> coordinate(-21.0, 24.0);
                for (int i = -12; i < 13; ++i) {  // two wide: sides of strips lie on sides of the comb
                    std::vector<Polygon2D> pieces;
                    const double low = base + 2.0 * i;
                    clip(placed, pieces, low, low + 2.0, 0.0);
                    total += AreaOf(pieces);
                    Point2D where;
                    for (const Polygon2D& piece : pieces) {
                        EXPECT_TRUE(piece.Validate(where, true, 1e-9)) << testing::PrintToString(where);
                        EXPECT_EQ(piece.GetWinding(), placed.GetWinding());
                    }
                    for (int k = 0; k < 40; ++k) {
                        Point2D p = origin + Vec2D(coordinate(random), coordinate(random));
                        p[isHorizontal ? 1 : 0] = low + 0.01 + 0.0495 * k;
                        const auto holders = std::count_if(pieces.begin(), pieces.end(), [&](const Polygon2D& piece) {
                            return piece.IsPointInsideAndBorders(p, 1e-7, false);
                        });
                        if (placed.IsPointInsideAndBorders(p, 1e-6, false) ==
                            placed.IsPointInsideAndBorders(p, 1e-6, true)) {
                            ASSERT_EQ(holders, placed.IsPointInside(p, 1e-7) ? 1 : 0) << testing::PrintToString(p);
                        }
                    }
                }
                EXPECT_NEAR(total, placed.GetArea(), 1e-6);
            }
        }
    }
}

TEST(PointInPolygonTest, StripsMeetVerticesSidesAndHoles) {
    Polygon2D ring(Rectangle(0, 0, 10, 10));
    ring.AppendHoleBoundary(Rectangle(2, 2, 6, 6));
    const Polygon2D comb(Comb(3));
    Polygon2D touching(Rectangle(0, 0, 10, 10));
    touching.AppendHoleBoundary(LineString2D({Point2D(10, 5), Point2D(4, 3), Point2D(4, 7)}));
    touching.AppendHoleBoundary(LineString2D({Point2D(4, 3), Point2D(2, 2), Point2D(2, 6)}));
    const double nan = std::nan("");
    struct Row {
        const char* why;
        const Polygon2D& polygon;
        double low, high, tolerance;
        std::size_t pieces;
        double area;
    };
    const Row rows[] = {
        {"through the hole", ring, 3, 5, 0, 2, 8},
        {"along both sides of the hole", ring, 2, 8, 0, 2, 24},
        {"below the hole", ring, 0, 2, 0, 1, 20},
        {"all of it", ring, -1, 11, 0, 1, 64},
        {"a hole cut open on one side", ring, 1, 5, 0, 1, 22},
        {"teeth come apart at their foot", comb, 2, 20, 0, 3, 108},
        {"foot of the teeth within the tolerance", comb, 1.95, 20, 0.1, 3, 108.3},
        {"without the tolerance a sliver joins them", comb, 1.95, 20, 0, 1, 108.5},
        {"holes that touch a side and each other", touching, 2.5, 6, 0, 4, 20.75},
        {"a hole from the cut to a side", touching, 3, 11, 0, 2, 55},
        {"a hole that touches the cut stays a hole", touching, 2, 11, 0, 1, 64},
        {"touches from outside", ring, 10, 12, 0, 0, 0},
        {"outside", ring, 11, 12, 0, 0, 0},
        {"no height", ring, 5, 5, 0, 0, 0},
        {"upside down", ring, 5, 3, 0, 0, 0},
        {"not a number", ring, nan, 3, 0, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<Polygon2D> pieces;
        PointInPolygon::PolygonClipHoriStrip(row.polygon, pieces, row.low, row.high, row.tolerance);
        EXPECT_EQ(pieces.size(), row.pieces);
        EXPECT_NEAR(AreaOf(pieces), row.area, 1e-9);
        Point2D where;
        for (const Polygon2D& piece : pieces) EXPECT_TRUE(piece.Validate(where, true, 1e-9));
    }
    std::vector<Polygon2D> pieces;
    PointInPolygon::PolygonClipHoriStrip(Polygon2D{Point2D(0, 0), Point2D(1, nan), Point2D(1, 1)}, pieces, 0, 1, 0);
    PointInPolygon::PolygonClipHoriStrip(Polygon2D(), pieces, 0, 1, 0);
    EXPECT_TRUE(pieces.empty());
}

}  // namespace
}  // namespace Kalvio::Math
