#include "kalvio/Math.h"
#include "support/Concurrently.h"
#include "support/Rings.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Position = PointInPolygon::Position;
using Ring = std::vector<Point2D>;

Ring RingOf(const std::string& coordinates) { return MakePolygon(coordinates).GetPoints(); }

Ring Rectangle(double x, double y, double width, double height) {
    return {Point2D(x, y), Point2D(x + width, y), Point2D(x + width, y + height), Point2D(x, y + height)};
}

// With points added on the edges of its ring until that has more than 100.
Polygon2D Densified(const Polygon2D& polygon) {
    Polygon2D dense(polygon);
    dense.RemoveAllPoints();
    const int parts = static_cast<int>(100 / polygon.GetSize()) + 1;
    for (unsigned int i = 0; i < polygon.GetSize(); ++i) {
        const Vec2D edge = polygon.GetPoint((i + 1) % polygon.GetSize()) - polygon.GetPoint(i);
        for (int k = 0; k < parts; ++k)
            dense.AppendPoint(polygon.GetPoint(i) + edge * (static_cast<double>(k) / parts));
    }
    return dense;
}

// Three teeth of width 2 that stand on a bar.
constexpr char kComb[] = "0 0 10 0 10 20 8 20 8 2 6 2 6 20 4 20 4 2 2 2 2 20 0 20";

std::vector<std::pair<const char*, Polygon2D>> Cases(RandomNumbers& random) {
    Polygon2D star(RandomStar(random, Point2D(0, 0), 20.0, 60)), noise, steps = MakePolygon("-5 4 -5 -3 3 -3 3 -2");
    star.AppendHoleBoundary(RandomStar(random, Point2D(0, 0), 3.0, 15));
    for (const Ring& hole :
         {Rectangle(30, 0, 2, 2), Rectangle(-0.5, -0.5, 1, 1), Rectangle(1, 1, 3, -3), Rectangle(2, 0, 4, 2)}) {
        star.AppendHoleBoundary(hole);
    }
    noise = Densified(MakePolygon("0 0 16 0 16 16 0 16 / 4 4 12 4 12 12 4 12"));
    for (Point2D& p : noise.GetPoints()) p += Vec2D(0.0, random(-1e-13, 1e-13));
    for (int i = 0; i < 120; ++i) steps.AppendPoint(Point2D(i % 2 == 0 ? 0.0 : 1e-7, 4e-9 * i));
    std::vector<std::pair<const char*, Polygon2D>> cases = {
        {"square on integers, hole on integers", MakePolygon("0 0 16 0 16 16 0 16 / 4 4 12 4 12 12 4 12")},
        {"C", MakePolygon("0 0 20 0 20 5 5 5 5 15 20 15 20 20 0 20 / 1 1 3 1 3 19 1 19")},
        {"comb", MakePolygon(kComb)},
        {"holes, one of them outside, one in another, two over each other", star},
        {"hole that shares a side", MakePolygon("0 0 16 0 16 12 0 12 / 0 4 4 4 4 8 0 8")},
        {"pentagram, wound twice in the middle", MakePolygon("0 10 6 -8 -9.5 3 9.5 3 -6 -8")},
        {"figure of eight, no area", MakePolygon("0 0 10 10 10 0 0 10")},
        {"sliver", MakePolygon("0 0 30 10 30 10.001")},
        {"wide and low", MakePolygon("0 0 1000 0 1000 2 0 2 / 500 0.5 501 0.5 501 1.5 500 1.5")},
        {"holes of no extent", MakePolygon("0 0 9 0 9 9 0 9 / / 3 3 / 4 4 6 4")},
        {"level sides with noise, where the margin decides", noise},
        {"edges of 4 nm, too flat for the margin", steps},
    };
    for (auto& [why, polygon] : cases) {
        if (polygon.GetSize() <= 100) polygon = Densified(polygon);
    }
    return cases;
}

double CellSide(const PointInPolygon& tester) {
    return std::min(tester.GetGrid().GetCellWidth(), tester.GetGrid().GetCellHeight());
}

// Points that are hard to place, and some that are not.
std::vector<Point2D> Queries(const Polygon2D& polygon, const PointInPolygon& tester, RandomNumbers& random) {
    std::vector<Point2D> queries;
    Point2D low, high;
    tester.GetMinMaxPoints(low, high);
    const Vec2D size = high - low;
    const auto nearby = [&](const Point2D& p) {
        const double steps[] = {0.0, 0.0, 1e-13, 1e-10, 5e-5, 1e-4, 0.25, 0.4 * CellSide(tester)};
        const auto step = [&] { return steps[random() % 8] * (random() % 2 == 0 ? 1.0 : -1.0); };
        queries.push_back(p + Vec2D(step(), step()));
    };
    for (int k = 0; k < 120; ++k) {
        queries.push_back(low + Vec2D(size.GetX() * random(-0.1, 1.1), size.GetY() * random(-0.1, 1.1)));
        const auto hole = static_cast<unsigned int>(random() % (polygon.GetNumHoleBoundaries() + 1U));
        const Ring& ring = hole == 0 ? polygon.GetPoints() : polygon.GetHoleBoundary(hole - 1).GetPoints();
        if (ring.empty()) continue;
        const std::size_t i = random() % ring.size();
        nearby(ring[i]);
        queries.push_back(ring[i] + Vec2D(random(-0.1, 0.1), 0.0));
        nearby(ring[i] + (ring[(i + 1) % ring.size()] - ring[i]) * random(0.0, 1.0));
        nearby(Point2D(low.GetX() + size.GetX() * random(0.0, 1.0), ring[i].GetY()));
        const auto& grid = tester.GetGrid();
        nearby(low + Vec2D(grid.GetCellWidth() * static_cast<double>(random() % 20),
                           grid.GetCellHeight() * static_cast<double>(random() % 20)));
    }
    for (const double far : {-1e9, 1e9, -1e300, kInfinity, kNan}) {
        queries.emplace_back(far, polygon.GetPoint(7).GetY());
        queries.emplace_back(polygon.GetPoint(7).GetX(), far);
    }
    return queries;
}

TEST(PointInPolygonTest, AnswersExactlyAsThePolygonDoes) {
    RandomNumbers random(20240612);
    for (const auto& [why, source] : Cases(random)) {
        for (int variant = 0; variant < 12; ++variant) {
            Polygon2D polygon(source);
            if (variant % 2 != 0) polygon.Reverse();
            if (variant % 3 == 1) polygon.Close();
            if (variant % 3 == 2) polygon.Transform(Matrix2D().Rotate(Angle(0.5 * kPi)));
            polygon.Translate(surveyOrigins[variant / 2 % 2] - Point2D());
            // 17 puts cell sides on integers, 11 one close to the tiny edges.
            const std::uint64_t rows = variant == 0 ? 17 : variant == 4 ? 11 : 2 + random() % 60;
            constexpr double gridTolerances[] = {0.0, 1e-4, -1e-4, 5.0};
            const PointInPolygon tester(polygon, rows, gridTolerances[variant % 4]);
            ASSERT_TRUE(tester.GetGrid().IsBuilt());
            int known = 0;
            for (const Point2D& p : Queries(polygon, tester, random)) {
                for (const double t : {0.0, 1e-10, 1e-4, -1e-4, 0.25, 0.49 * CellSide(tester), kNan}) {
                    for (const bool borders : {true, false}) {
                        ASSERT_EQ(tester.IsPointInsideAndBorders(p, t, borders),
                                  polygon.IsPointInsideAndBorders(p, t, borders))
                            << why << testing::PrintToString(p) << " tolerance " << t << " borders " << borders
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
    const Polygon2D polygon = Densified(MakePolygon("0 0 20 0 20 10 0 10 / 5 2 11 2 11 8 5 8"));
    const PointInPolygon tester(polygon, 11, 1e-4);
    const PointInPolygon::PolygonGrid& grid = tester.GetGrid();
    EXPECT_TRUE(grid.IsBuilt() && grid.GetRows() == 11 && grid.GetColumns() == 22);
    EXPECT_DOUBLE_EQ(grid.GetCellHeight(), 1.0) << "the last row reaches a cell beyond the box";
    EXPECT_DOUBLE_EQ(grid.GetCellWidth(), 20.0 / 21.0);
    const std::tuple<const char*, double, std::size_t, Position> rows[] = {
        {"in the corner", 0.2, 0, Position::Border},
        {"between border and hole", 3.5, 4, Position::Inside},
        {"left of the hole", 5.1, 4, Position::Border},
        {"in the hole", 8.5, 5, Position::Outside},
        {"last row: its lower side", 7.5, 10, Position::Border},
        {"row whose upper side an edge lies on", 7.5, 1, Position::Border},
        {"no column", 21.0, 0, Position::Undefined},
    };
    for (const auto& [why, x, row, position] : rows) {
        EXPECT_EQ(grid.GetPosition(static_cast<std::size_t>(x / grid.GetCellWidth()), row), position) << why;
    }
    EXPECT_EQ(PointInPolygon(polygon, 0, 1e-4).GetGrid().GetRows(), 2U);
    EXPECT_EQ(PointInPolygon(Densified(Rectangle(0, 0, 1, 50)), 10, 0).GetGrid().GetColumns(), 3U);
    // Long edges do not fill the memory.
    Polygon2D teeth = MakePolygon("1000 -1 0 -1");
    for (int i = 0; i <= 1000; ++i) teeth.AppendPoint(Point2D(i, i % 2 == 0 ? 0.0 : 1000.0));
    const PointInPolygon comb(teeth, 200, 1e-4);
    EXPECT_EQ(comb.GetGrid().GetRows(), 6U) << "teeth run upward, so cells grow upward";
    EXPECT_EQ(comb.GetGrid().GetColumns(), 199U);
    EXPECT_TRUE(comb.IsPointInside(Point2D(501, 999), 1e-4) && !comb.IsPointInside(Point2D(502, 1), 1e-4));
}

TEST(PointInPolygonTest, WithoutAGridThePolygonAnswers) {
    RandomNumbers random(7);
    const Polygon2D star(RandomStar(random, Point2D(0, 0), 10.0, 101));
    Polygon2D broken(star), endless(star);
    broken.GetPoint(50) = Point2D(1.0, kNan);
    endless.GetPoint(50) = Point2D(kInfinity, 1.0);
    const std::tuple<const char*, Polygon2D, std::uint64_t, bool> rows[] = {
        {"empty", Polygon2D(), 50, false},
        {"100 points", Polygon2D(RandomStar(random, Point2D(0, 0), 10.0, 100)), 50, false},
        {"101 points", star, 50, true},
        {"more cells than are built", star, 100000, false},
        {"no end of cells", star, std::numeric_limits<std::uint64_t>::max(), false},
        {"not a number", broken, 50, false},
        {"not finite", endless, 50, false},
        {"too far away for its cells", star.Translate(Vec2D(1e14, 0)), 50, false},
    };
    for (const auto& [why, polygon, count, isBuilt] : rows) {
        SCOPED_TRACE(why);
        const PointInPolygon tester(polygon, count, 1e-4);
        EXPECT_EQ(tester.GetGrid().IsBuilt(), isBuilt);
        EXPECT_EQ(tester.GetGrid().Classify(Point2D(0, 0), 0.0, true) == Position::Border, !isBuilt);
        for (int k = 0; k < 50; ++k) {
            const Point2D p(random(-12.0, 12.0), random(-12.0, 12.0));
            ASSERT_EQ(tester.IsPointInside(p, 1e-4), polygon.IsPointInside(p, 1e-4));
        }
    }
    EXPECT_FALSE(PointInPolygon().IsPointInside(Point2D(0, 0), 1.0));
    const PointInPolygon tiny(LineString2D(Rectangle(0, 0, 1e-7, 1e-7)), 50, 1e-4);
    EXPECT_FALSE(tiny.IsPointInside(Point2D(0.003, 5e-8), 1e-4)) << "beside the box and the tolerance";
    const PointInPolygon flat(Densified(Rectangle(3, 4, 20, 1e-11)), 50, 1e-4);
    const PointInPolygon thin(Densified(Rectangle(3, 4, 1e-11, 20)), 50, 1e-4);
    EXPECT_TRUE(flat.GetPolygon().GetSize() == 2 && thin.GetPolygon().GetSize() == 2) << "the corners of the box";
    EXPECT_TRUE(flat.IsPointInside(Point2D(10, 4), 1e-4) && !flat.IsPointInside(Point2D(10, 4.1), 1e-4));
}

TEST(PointInPolygonTest, HolesAreAddedUnlessTheyAreThin) {
    PointInPolygon tester(Densified(Rectangle(0, 0, 20, 20)), 20, 0.125);
    const std::tuple<const char*, const char*, Point2D, bool> rows[] = {
        {"exactly twice the tolerance wide", "2 2 12 2 12 2.25 2 2.25", Point2D(7, 2.125), false},
        {"a sliver across", "2 2 12 12 11.9 12.1", Point2D(11.95, 12.03), false},
        {"wider", "2 2 12 2 12 2.3125 2 2.3125", Point2D(7, 2.125), true},
        {"no ring", "4 4 9 9", Point2D(4.5, 4.5), false},
    };
    for (const auto& [why, hole, inHole, isAdded] : rows) {
        EXPECT_TRUE(tester.IsPointInside(inHole, 1e-4)) << why;
        EXPECT_EQ(tester.AddHoleAndRecompute(RingOf(hole)), isAdded) << why;
        EXPECT_EQ(tester.IsPointInside(inHole, 1e-4), !isAdded) << why;
    }
    EXPECT_EQ(tester.GetPolygon().GetNumHoleBoundaries(), 1U);
    tester.Recompute(Polygon2D(tester.GetPolygon()), 30, 0.125);
    EXPECT_EQ(tester.GetGrid().GetRows(), 30U);
    const PointInPolygon copy(tester);
    Concurrently(4, [&copy](unsigned int) { EXPECT_FALSE(copy.IsPointInside(Point2D(7, 2.125), 1e-4)); });
    Point2D low, high;
    copy.GetMinMaxPoints(low, high);
    EXPECT_TRUE(high == Point2D(20, 20) && copy.GetBoundingBox().GetMaxPoint() == high);
}

// The area of the pieces, each of which is valid and runs like the polygon.
double AreaOf(const std::vector<Polygon2D>& pieces, const Polygon2D& polygon) {
    double area = 0.0;
    Point2D where;
    for (const Polygon2D& piece : pieces) {
        area += piece.GetArea();
        EXPECT_TRUE(piece.Validate(where, true, 1e-9)) << testing::PrintToString(where);
        EXPECT_EQ(piece.GetWinding(), polygon.GetWinding());
    }
    return area;
}

TEST(PointInPolygonTest, StripsMeetVerticesSidesAndHoles) {
    const Polygon2D ring = MakePolygon("0 0 10 0 10 10 0 10 / 2 2 8 2 8 8 2 8"), comb = MakePolygon(kComb);
    const Polygon2D touching = MakePolygon("0 0 10 0 10 10 0 10 / 10 5 4 3 4 7 / 4 3 2 2 2 6");
    // Two teeth, from below and from above, and a hole between them: tip to tip they part the strip.
    const Polygon2D teeth =
        MakePolygon("0 0 10 0 10 10 0 10 / 4 1 6 1 5 4 / 5 4 6 5 5 6 4 5 / 5 6 6 9 4 9 / 8 4 9 4 9 5 8 5");
    const std::tuple<const char*, const Polygon2D*, double, double, double, std::size_t, double> rows[] = {
        {"three holes tip to tip", &teeth, 2, 8, 0, 2, 60 - 2 - 1 - 2 * 4.0 / 3},
        {"a hole that touches the cut and another stays a hole", &teeth, 4, 10, 0, 1, 60 - 2 - 3 - 1},
        {"through the hole", &ring, 3, 5, 0, 2, 8},
        {"along both sides of the hole", &ring, 2, 8, 0, 2, 24},
        {"all of it", &ring, -1, 11, 0, 1, 64},
        {"a hole cut open on one side", &ring, 1, 5, 0, 1, 22},
        {"teeth come apart at their foot", &comb, 2, 20, 0, 3, 108},
        {"foot of the teeth within the tolerance", &comb, 1.95, 20, 0.1, 3, 108.3},
        {"head of the teeth within the tolerance", &comb, 3, 19.95, 0.1, 3, 101.7},
        {"without the tolerance a sliver joins them", &comb, 1.95, 20, 0, 1, 108.5},
        {"holes that touch a side and each other", &touching, 2.5, 6, 0, 4, 20.75},
        {"a hole from the cut to a side", &touching, 3, 11, 0, 2, 55},
        {"holes from the cut to each other and to a side", &touching, 2, 11, 0, 2, 64},
        {"touches from outside", &ring, 10, 12, 0, 0, 0},
        {"no height", &ring, 5, 5, 0, 0, 0},
        {"upside down", &ring, 5, 3, 0, 0, 0},
        {"not a number", &ring, kNan, 3, 0, 0, 0},
    };
    std::vector<Polygon2D> pieces;
    for (const auto& [why, polygon, low, high, tolerance, count, area] : rows) {
        for (int form = 0; form < 4; ++form) {
            SCOPED_TRACE(why);
            const Point2D& origin = surveyOrigins[form / 2];
            Polygon2D moved(*polygon);
            if (form % 2 != 0) moved.Transform(Matrix2D().Rotate(Angle(-0.5 * kPi)));  // upward is to the right
            moved.Translate(origin - Point2D());
            const auto clip =
                form % 2 == 0 ? PointInPolygon::PolygonClipHoriStrip : PointInPolygon::PolygonClipVertStrip;
            const double at = form % 2 == 0 ? origin.GetY() : origin.GetX();
            pieces.clear();
            clip(moved, pieces, at + low, at + high, tolerance);
            EXPECT_EQ(pieces.size(), count);
            EXPECT_NEAR(AreaOf(pieces, moved), area, 1e-7);
            for (const Polygon2D& piece : pieces) {
                const Point2D least = piece.GetBoundingBox().GetMinPoint(), most = piece.GetBoundingBox().GetMaxPoint();
                EXPECT_TRUE(least[1 - form % 2] >= at + low - 1e-7 - tolerance &&
                            most[1 - form % 2] <= at + high + 1e-7 + tolerance);
            }
        }
    }
    pieces.clear();
    for (const Point2D& unsound : {Point2D(1, kNan), Point2D(kNan, 1), Point2D(1e101, 1), Point2D(1, -1e101)})
        PointInPolygon::PolygonClipHoriStrip(Polygon2D{Point2D(0, 0), unsound, Point2D(1, 1)}, pieces, 0, 1, 0);
    PointInPolygon::PolygonClipHoriStrip(Polygon2D(), pieces, 0, 1, 0);
    EXPECT_TRUE(pieces.empty());
}

}  // namespace
}  // namespace Kalvio::Math
