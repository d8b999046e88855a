#include "kalvio/Math.h"
#include "support/Rings.h"
#include "support/Testing.h"

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

namespace Kalvio::Math {
namespace {

constexpr char kSquare[] = "0 0 10 0 10 10 0 10";
const Point2D kOrigins[] = {Point2D(), surveyOrigins[1], Point2D(500123.38, 6612345.61)};

// One of four forms of a polygon: closed or not, its ring reversed or not; moved to an origin.
Polygon2D Form(Polygon2D polygon, int form, const Point2D& origin) {
    if ((form & 1) != 0) polygon.Close();
    if ((form & 2) != 0) polygon.Reverse();
    return polygon.Translate(origin - Point2D());
}

TEST(Polygon2DTest, AreaWindingCentroidAndPerimeterFollowTheOuterRing) {
    const std::tuple<const char*, const char*, double, Point2D, double> rows[] = {
        {"hole turning left", "0 0 10 0 10 10 0 10 / 6 6 8 6 8 8 6 8", 96.0, Point2D(5, 5), 40.0},
        {"hole turning right", "0 0 10 0 10 10 0 10 / 6 6 6 8 8 8 8 6", 96.0, Point2D(5, 5), 40.0},
        {"holes larger than the ring", "0 0 2 0 2 2 0 2 / 0 0 3 0 3 3 0 3", -5.0, Point2D(1, 1), 8.0},
        {"triangle", "0 0 3 0 0 4", 6.0, Point2D(1, 4.0 / 3), 12.0},
        {"no area: the mean", "0 0 1 1 5 5", 0.0, Point2D(2, 2), 10 * std::sqrt(2.0)},
        {"one point", "3 4", 0.0, Point2D(3, 4), 0.0},
        {"nothing", "", 0.0, Point2D(0, 0), 0.0},
    };
    for (const auto& [why, coordinates, area, centroid, perimeter] : rows) {
        for (int form = 0; form < 12; ++form) {
            SCOPED_TRACE(why);
            const Point2D& origin = kOrigins[form / 4];
            Polygon2D polygon = Form(MakePolygon(coordinates), form % 4, origin);
            EXPECT_NEAR(polygon.GetArea(), form % 4 < 2 ? area : -area, 2e-8);
            const Vec2D moved = polygon.GetSize() > 0 ? origin - Point2D() : Vec2D();
            EXPECT_THAT(polygon.GetCentroid(), IsNear(centroid + moved, 1e-6));
            EXPECT_NEAR(polygon.GetLength(), perimeter, 1e-8);
            const auto winding = polygon.GetArea() > 0.0 ? WindingValue::CounterClockwise : WindingValue::Clockwise;
            EXPECT_EQ(polygon.GetWinding(), winding);
            EXPECT_FALSE(polygon.SetWinding(winding));
            EXPECT_TRUE(polygon.SetWinding(static_cast<WindingValue>(1U - static_cast<unsigned int>(winding))));
            EXPECT_EQ(polygon.GetWinding() == winding, area == 0.0) << "no area is clockwise either way";
        }
    }
}

TEST(Polygon2DTest, EditsAlongTheRingCountTheClosingEdge) {
    // Points of the grid are named by x + 3 y: the corners 0, 2, 8, 6 and the middle 4.
    const auto names = [](const Polygon2D& polygon) {
        std::string text;
        for (const Point2D& p : polygon.GetPoints()) text += std::to_string(static_cast<int>(p.GetX() + 3 * p.GetY()));
        return text;
    };
    const std::tuple<double, bool, const char*> insertions[] = {
        {0, false, "04286"}, {2, false, "04286"},    {3, false, "02486"}, {7, false, "02864"},
        {7, true, "028640"}, {-1e-9, false, "0286"}, {8.1, true, "02860"}};
    for (const auto& [length, isClosed, expected] : insertions) {
        Polygon2D polygon = MakePolygon("0 0 2 0 2 2 0 2");
        for (int i = 0; isClosed && i < 2; ++i) polygon.Close();  // closing twice closes once
        EXPECT_EQ(polygon.InsertAtLength(length, Point2D(1, 1)), length >= 0.0 && length <= 8.0);
        EXPECT_EQ(names(polygon), expected) << length;
    }
    Polygon2D ring = MakePolygon("2 2 0 2 0.05 0 2 0 2.01 0 2 2");
    ring.ReducePoints(0.1);
    EXPECT_EQ(names(ring), "86028");
    Polygon2D::RearrangePointsByStartingFromMinXMinY(ring, 0.1);
    EXPECT_EQ(names(ring), "02860") << "closed before, closed after";
    Polygon2D::RearrangePointsByStartingFromMinXMinY(ring, 0.01);
    ring.RemoveClosingPoint(1e-4);
    EXPECT_EQ(names(ring), "6028");
}

// The winding number by the rule as it is written down, none on the border: walked clockwise, border first. A closing
// point adds no edge. The margin of the turn serves edges above and below the point only.
std::optional<int> WindingByTheRule(std::vector<Point2D> ring, const Point2D& p, double tolerance) {
    if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
    if (Polygon2D(ring).GetArea() > 0.0) std::reverse(ring.begin(), ring.end());
    const auto isLeft = [&p](const Point2D& a, const Point2D& b) {
        if ((p.GetX() < a.GetX()) == (p.GetX() < b.GetX()) && p.GetX() != a.GetX() && p.GetX() != b.GetX()) {
            return (p.GetX() < a.GetX()) == (a.GetY() < b.GetY());
        }
        return (b - a).GetX() * (p - a).GetY() > (p - a).GetX() * (b - a).GetY() + 4e-10;
    };
    int winding = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point2D& a = ring[i];
        const Point2D& b = ring[(i + 1) % ring.size()];
        if (Intersection::PointOnLineSegment(p, a, b, tolerance)) return std::nullopt;
        if (a.GetY() <= p.GetY() && b.GetY() > p.GetY() && isLeft(a, b)) ++winding;
        if (a.GetY() > p.GetY() && b.GetY() <= p.GetY() && !isLeft(a, b)) --winding;
    }
    return winding;
}

TEST(Polygon2DTest, PointTestsAreTheRulesForAnyRings) {
    using Result = Polygon2D::PositionResult;
    RandomNumbers random(20240601);
    const auto number = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    int inside = 0, hole = 7;
    for (int round = 0; round < 3000; ++round) {
        // Small integers put points on vertices and edges; the small scale brings the margin of 4e-10 into play.
        const double scale = round % 3 == 0 ? std::ldexp(1.0, -17) : 1.0;
        const Point2D& origin = surveyOrigins[round / 3 % 2];
        const auto makeRing = [&](int size, int reach) {
            std::vector<Point2D> ring;
            while (size-- > 0) ring.push_back(origin + Vec2D(number(0, reach) * scale, number(0, reach) * scale));
            if (number(0, 3) == 0 && !ring.empty()) ring.push_back(ring.front());
            return ring;
        };
        Polygon2D polygon(makeRing(number(0, 12), 8));
        for (int holes = number(0, 2); holes > 0; --holes) polygon.AppendHoleBoundary(makeRing(number(0, 5), 6));
        const double tolerance = number(0, 1) * 0.26 * scale;  // exactly at no point of the grid
        for (int i = 0; i < 10; ++i) {
            SCOPED_TRACE(round);
            const Point2D p = origin + Vec2D(number(-4, 36) * 0.25 * scale, number(-4, 36) * 0.25 * scale);
            // 1 inside, 0 on the border, -1 outside; rays count crossings, and whole squares around vertices as border
            const auto sideOf = [&](const std::vector<Point2D>& ring, bool byRay) {
                const std::optional<int> winding = WindingByTheRule(ring, p, tolerance);
                const auto isNear = [&](const Point2D& vertex) {
                    return BoundingBox2D(vertex, vertex).IsPointInside(p, tolerance);
                };
                if (!winding || (byRay && std::any_of(ring.begin(), ring.end(), isNear))) return 0;
                return (byRay ? *winding % 2 : *winding) != 0 ? 1 : -1;
            };
            const int side = sideOf(polygon.GetPoints(), false), sideByRay = sideOf(polygon.GetPoints(), true);
            bool isInside = side >= 0, isWithin = side > 0, isInsideByRay = sideByRay >= 0;
            Result position = sideByRay == 0 ? Result::OnOuterBorder : sideByRay < 0 ? Result::Outside : Result::Inside;
            int expectedHole = -1;
            for (unsigned int k = 0; k < polygon.GetNumHoleBoundaries(); ++k) {
                const auto& ring = std::as_const(polygon).GetHoleBoundary(k).GetPoints();
                const int holeSide = sideOf(ring, false), byRay = sideOf(ring, true);
                isInside = isInside && (side == 0 || holeSide <= 0);
                isWithin = isWithin && holeSide < 0;
                isInsideByRay = isInsideByRay && byRay <= 0;
                if (position != Result::Inside || byRay < 0) continue;
                position = byRay == 0 ? Result::OnHoleBorder : Result::InsideHole;
                expectedHole = byRay == 0 ? -1 : static_cast<int>(k);
            }
            ASSERT_EQ(polygon.IsPointInside(p, i % 2 == 0 ? tolerance : -tolerance), isInside) << "whatever the sign";
            ASSERT_EQ(polygon.IsPointInsideAndBorders(p, tolerance, false), isWithin);
            inside += isInside ? 1 : 0;
            if (scale < 1.0) continue;  // rays know no margin
            ASSERT_EQ(polygon.IsPointInsideByRay(p, tolerance), isInsideByRay);
            ASSERT_EQ(polygon.CheckPositionOf(p, hole, tolerance), position);
            ASSERT_EQ(hole, expectedHole);
        }
    }
    EXPECT_GT(inside, 4000);
    EXPECT_EQ(MakePolygon(kSquare).CheckPositionOf(Point2D(kNan, 3), hole, 1e-4), Result::Outside);
}

TEST(Polygon2DTest, OneRingPastAnotherIsJudgedAsTheirPointsAre) {
    using Result = Polygon2D::PositionResult;
    const Polygon2D ground = MakePolygon("0 0 20 0 20 10 12 10 10 6 8 10 0 10 / 2 2 4 2 4 4 2 4 / 12 1 16 1 16 5 12 5");
    const std::tuple<const char*, const char*, Result, int, bool> rows[] = {
        {"well inside", "6 1 7 1 7 2", Result::Inside, -1, true},
        {"around", "-1 -1 30 -1 30 30 -1 30", Result::Outside, -1, false},
        {"inside hole 1", "13 2 14 2 14 3", Result::InsideHole, 1, false},
        {"around hole 0", "1 1 5 1 5 5 1 5", Result::Inside, -1, false},
        {"its own hole takes in hole 0", "1 1 5 1 5 5 1 5 / 1.5 1.5 4.5 1.5 4.5 4.5 1.5 4.5", Result::Inside, -1, true},
        {"its own hole is elsewhere", "1 1 5 1 5 5 1 5 / 1.2 1.2 1.4 1.2 1.4 1.4", Result::Inside, -1, false},
        {"across hole 0", "1 3 5 3 5 5 1 5", Result::OnHoleBorder, -1, false},
        {"touching the outer ring from inside", "18 6 20 6 20 8 18 8", Result::OnOuterBorder, -1, true},
        {"touching the outer ring from outside", "20 6 22 6 22 8 20 8", Result::OnOuterBorder, -1, false},
        {"touching hole 0 from outside", "4 3 6 3 6 5 4 5", Result::OnHoleBorder, -1, true},
        {"the outer ring alone", "0 0 20 0 20 10 12 10 10 6 8 10 0 10", Result::OnOuterBorder, -1, false},
        {"bridging the notch between two of its corners", "8 10 8 7 12 10", Result::OnOuterBorder, -1, false},
        {"beside the notch", "10 6 8 10 7 8", Result::OnOuterBorder, -1, true},
        {"nothing", "", Result::Outside, -1, false},
    };
    for (const auto& [why, ring, position, expectedHole, isInside] : rows) {
        for (int form = 0; form < 8; ++form) {
            SCOPED_TRACE(why);
            const Polygon2D outer = Form(ground, 0, kOrigins[form / 4]);
            const Polygon2D inner = Form(MakePolygon(ring), form % 4, kOrigins[form / 4]);
            int hole = 7;
            EXPECT_EQ(outer.CheckPositionOf(inner, hole, 1e-4), position);
            EXPECT_EQ(hole, expectedHole);
            EXPECT_EQ(Polygon2D::IsPolygonInsideNotCrossing(inner, outer, 1e-4), isInside);
        }
    }
    EXPECT_TRUE(Polygon2D::IsPolygonInsideNotCrossing(ground, ground, 1e-4));
}

TEST(Polygon2DTest, ValidateFindsTheFirstFaultAndSaysWhere) {
    const std::string square(kSquare);
    const std::tuple<const char*, std::string, bool, Point2D> rows[] = {
        {"two holes", square + "/1 1 3 1 3 3 1 3/5 5 7 5 7 7", true, {}},
        {"holes that touch at a corner", square + "/1 1 3 1 3 3 1 3/3 3 5 3 5 5", true, {}},
        {"hole corner on the ring", square + "/0 5 2 4 2 6", true, {}},
        {"hole side along the ring", square + "/0 4 2 4 2 6 0 6", true, {}},
        {"hole that leaves the ring slowly", square + "/0 2 .00015 8 3 4", true, {}},
        {"two points", "3 4 5 4", false, Point2D(3, 4)},
        {"three points, two of them one", "3 4 5 4 5 4", false, Point2D(3, 4)},
        {"bow tie", "0 0 2 2 2 0 0 2", false, Point2D(1, 1)},
        {"no area", "0 0 4 0 2 0", false, Point2D(4, 0)},
        {"spike", "0 0 4 0 4 4 4 9 4 4 0 4", false, Point2D(4, 9)},
        {"hole across the ring", square + "/8 4 12 4 12 5 8 5", false, Point2D(11, 4)},
        {"hole equal to the ring", square + "/" + square, false, Point2D(0, 0)},
        {"hole in a hole", square + "/1 1 6 1 6 6 1 6/2 2 3 2 3 3", false, Point2D(2, 2)},
        {"hole around a hole", square + "/2 2 3 2 3 3/1 1 6 1 6 6 1 6", false, Point2D(2, 2)},
        {"hole twice", square + "/1 1 3 1 3 3/3 3 3 1 1 1", false, Point2D(3, 3)},
        {"hole bow tie", square + "/1 1 3 3 3 1 1 3", false, Point2D(2, 2)},
    };
    for (const auto& [why, coordinates, isValid, fault] : rows) {
        for (const int form : {0, 1, 4, 5}) {
            SCOPED_TRACE(why);
            const Polygon2D polygon = Form(MakePolygon(coordinates), form % 4, kOrigins[form / 4]);
            Point2D where(-1, -1);
            EXPECT_EQ(polygon.Validate(where, true, 1e-4), isValid);
            EXPECT_THAT(where, IsNear(isValid ? Point2D(-1, -1) : kOrigins[form / 4] + (fault - Point2D()), 1e-6));
            EXPECT_EQ(polygon.Validate(where, false, 1e-4), isValid || polygon.GetNumHoleBoundaries() > 0);
        }
    }
    // Between the tolerance and the corner of its square, 1.27 tolerances from a vertex: clear of it.
    Point2D where(7, 7);
    const Polygon2D beside = MakePolygon("10.09 10.09 12 10.5 12 12");
    EXPECT_FALSE(Polygon2D::IsPolygonInsideNotCrossing(beside, MakePolygon(kSquare), 0.1));
    const Polygon2D tip = MakePolygon("0 5 5 2 10.15 5 5 8");  // shorter than two tolerances outside
    EXPECT_FALSE(Polygon2D::IsPolygonInsideNotCrossing(tip, MakePolygon(kSquare), 0.1));
    EXPECT_TRUE(MakePolygon("0 0 10 0 10 5 5 5 5 10 0 10 / 4.91 4.91 2 4 2 2").Validate(where, true, 0.1));
    Polygon2D broken = MakePolygon(square + "/1 1 2 1 2 2");
    broken.GetHoleBoundary(0).GetPoint(1).SetY(kNan);
    EXPECT_FALSE(broken.Validate(where, true, 1e-4));
    EXPECT_EQ(where.GetX(), 2.0);
    const Polygon2D none{Point2D(kNan, 0), Point2D(1, kNan)};
    EXPECT_FALSE(broken.GetPointInsideBoundary(where, 0.0) || none.GetPointInsideBoundary(where, 1e-4));
    std::vector<Point2D> crossings;
    EXPECT_TRUE(MakePolygon("0 2 0 0 2 2 2 0").IsSelfCrossing(crossings, 1e-4));
    EXPECT_EQ(crossings, std::vector<Point2D>{Point2D(1, 1)});
    EXPECT_FALSE(MakePolygon(square).IsSelfCrossing(where, 1e-4));
}

TEST(Polygon2DTest, ConvexityToleratesStraightSidesOnlyAndAPointInsideIsWellInside) {
    const std::tuple<const char*, const char*, bool, double> rows[] = {
        // is it convex, and how far inside is the point at least
        {"square", kSquare, true, 4.0},
        {"points on the sides, one twice", "0.3 0.1 0.6 0.2 0.6 0.2 3 1 0 1 0 0.5 0 0", true, 0.2},
        {"a step back on a side", "0 0 2 0 1 0 3 0 0 3", false, 0.4},
        {"notch", "0 0 2 0 1 0.5 2 1 0 1", false, 0.1},
        {"pentagram: all left, twice round", "0 10 -6 -8 9.5 3 -9.5 3 6 -8", false, 0.5},
        {"no area", "0 0 1 1 2 2", false, 0.0},
        {"hole", "0 0 4 0 4 4 0 4 / 1 1 2 1 2 2", false, 0.45},
        {"filled by its hole", "0 0 1 0 1 1 / 0 0 1 0 1 1", false, 0.0},
        {"C", "0 0 10 0 10 1 1 1 1 9 10 9 10 10 0 10", false, 0.45},
        {"frame", "0 0 10 0 10 10 0 10 / 1 1 9 1 9 9 1 9", false, 0.45},
        {"sliver along the diagonal", "0 0 100 100 100 100.01", true, 0.001},
        {"flat body on a needle", "0 0 0.001 1000 -50 1001 50 1004 0.002 1000", false, 0.5},
    };
    for (const auto& [why, coordinates, isConvex, clearance] : rows) {
        for (int form = 0; form < 32; ++form) {
            SCOPED_TRACE(why);
            Polygon2D polygon = MakePolygon(coordinates);
            std::vector<Point2D>& ring = polygon.GetPoints();
            std::rotate(ring.begin(), ring.begin() + form / 8 % 3, ring.end());
            polygon = Form(polygon, form % 4, kOrigins[form / 4 % 2 * 2]);
            EXPECT_EQ(polygon.IsConvex(), isConvex);
            Point2D point(7, 7);
            EXPECT_FALSE(polygon.GetPointInsideBoundary(point, 1e3)) << "nothing is that far inside";
            EXPECT_EQ(polygon.GetPointInsideBoundary(point, 1e-4), clearance > 0.0);
            EXPECT_TRUE(clearance > 0.0 ? polygon.IsPointInsideAndBorders(point, clearance, false)
                                        : point == Point2D(7, 7));
        }
    }
}

// Width and box against the directions of all pairs of points.
void CheckWidthAndBox(const Polygon2D& polygon, double noise) {
    double width = polygon.GetSize() > 2 ? kInfinity : 0.0, area = width;
    const std::vector<Point2D>& points = polygon.GetPoints();
    const auto extent = [&points](const Vec2D& along) {
        const auto isBefore = [&along](const Point2D& p, const Point2D& q) { return (q - p).DotProduct(along) > 0.0; };
        const auto [low, high] = std::minmax_element(points.begin(), points.end(), isBefore);
        return (*high - *low).DotProduct(along);
    };
    for (const Point2D& a : points) {
        for (const Point2D& b : points) {
            if (a.Distance(b) < 1e-6) continue;
            const Vec2D along = Vec2D(b - a).Normalize();
            const double across = extent(along.GetNormalVector(true));
            width = std::min(width, across);
            area = std::min(area, across * extent(along));
        }
    }
    EXPECT_NEAR(polygon.GetMaxWidth(noise), width, noise);
    OrientedBoundingBox2D box = polygon.GetOrientedBoundingBox2D();
    EXPECT_TRUE(box.IsEqualTo(LineString2D(points).GetOrientedBoundingBox2D(), 1e-15));
    EXPECT_NEAR(box.GetSize().GetX() * box.GetSize().GetY(), area, 50 * noise);
    box.SetSize(box.GetSize() + Vec2D(noise, noise));
    for (const Point2D& p : points) EXPECT_TRUE(box.IsPointInside(p));
}

TEST(Polygon2DTest, WidthAndSmallestBoxAreTheLeastOverAllDirections) {
    RandomNumbers random(20240601);
    for (int round = 0; round < 360; ++round) {
        SCOPED_TRACE(round);
        Polygon2D polygon(RandomStar(random, Point2D(0, 0), 10.0, 1 + round / 12));
        if (round % 4 > 0) {  // a square, a rectangle, a line, with points on the sides
            polygon.Clear();
            const double height = round % 4 == 1 ? 15.0 : round % 4 == 2 ? 0.1 : 0.0;
            const Vec2D sides[] = {{15, 0}, {0, height}, {-15, 0}, {0, -height}};
            Point2D corner;
            for (int i = 0; i < 16; corner += sides[i++ / 4] * 0.25) polygon.AppendPoint(corner);
        }
        const bool isFar = round / 4 % 2 == 1;
        polygon.Transform(Matrix2D().Rotate(Angle(round * kPi / 180.0)));
        polygon.Translate(surveyOrigins[isFar ? 1 : 0] - Point2D());
        const unsigned int size = polygon.GetSize();
        for (unsigned int i = 0; i < size; i += 3) {  // some once more, a last digit away
            const Point2D p = polygon.GetPoint(i);
            polygon.AppendPoint({std::nextafter(p.GetX(), random(-1e9, 1e9)), p.GetY()});
        }
        CheckWidthAndBox(polygon, isFar ? 8e-9 : 1e-13);
    }
    CheckWidthAndBox({{-0.050587062634502272, -2.9995734611930835},
                      {9.9985782039770346, -0.16862354211492692},
                      {9.9985782039770346, -0.16862354211492722},
                      {0.050587062634450786, 2.999573461193104}},
                     1e-13);
    EXPECT_EQ(MakePolygon("0 0 1 1 3 3").GetMaxWidth(1e-10), 0.0);
    EXPECT_EQ(MakePolygon(kSquare).GetMaxWidth(10.0), 0.0) << "no wider than the tolerance";
}

// Rows of numbers of a CSV file without its heading; a name counts as 0.
std::vector<std::vector<double>> ReadTable(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::vector<double>> table;
    std::string line, cell;
    for (std::getline(file, line); std::getline(file, line);) {
        std::istringstream cells(line);
        table.emplace_back();
        while (std::getline(cells, cell, ',')) table.back().push_back(std::strtod(cell.c_str(), nullptr));
    }
    return table;
}

TEST(Polygon2DTest, CountriesHaveTheirStatedMeasures) {
    const char* const folder = std::getenv("KALVIO_TEST_DATA");
    if (folder == nullptr) GTEST_SKIP() << "KALVIO_TEST_DATA does not name the folder of the real polygons";
    const std::string prefix = std::string(folder) + "/polygons/countries50m_";
    std::map<double, Polygon2D> countries;
    std::map<std::pair<double, double>, LineString2D> holes;
    for (const std::vector<double>& row : ReadTable(prefix + "rings.csv")) {
        const Point2D point(row[2], row[3]);
        row[1] == 0.0 ? countries[row[0]].AppendPoint(point) : holes[{row[0], row[1]}].AppendPoint(point);
    }
    for (const auto& [key, hole] : holes) countries[key.first].AppendHoleBoundary(hole);
    ASSERT_FALSE(countries.empty());
    for (const std::vector<double>& row : ReadTable(prefix + "measures.csv")) {
        SCOPED_TRACE(testing::Message() << "country " << row[0]);
        const Polygon2D& country = countries[row[0]];
        EXPECT_NEAR(Polygon2D(country.GetPoints()).GetArea(), row[4], 1e-12 * std::abs(row[4]));
        EXPECT_NEAR(std::abs(country.GetArea()), std::abs(row[5]), 1e-12 * std::abs(row[5]));
        EXPECT_THAT(country.GetCentroid(), IsNear(Point2D(row[6], row[7]), 1e-11));
        EXPECT_NEAR(country.Perimeter(), row[8], 1e-12 * row[8]);
        Point2D point;
        EXPECT_TRUE(country.Validate(point, true, 1e-9)) << testing::PrintToString(point);
        EXPECT_TRUE(country.GetPointInsideBoundary(point, 1e-3));
        std::vector<Triangle3D> triangles;
        ASSERT_TRUE(Polygon3D(country, 0.0).Triangulate(triangles, 1e-10));
        double area = 0.0;
        for (const Triangle3D& triangle : triangles) area += triangle.GetArea();
        EXPECT_NEAR(area, std::abs(row[5]), 1e-10 * std::abs(row[5]));
        std::vector<Polygon2D> pieces;
        const BoundingBox2D box = country.GetBoundingBox();
        const double x = box.GetMinPoint().GetX(), width = box.GetSize().GetX() / 6.0;
        for (int i = -1; i < 7; ++i)
            PointInPolygon::PolygonClipVertStrip(country, pieces, x + i * width, x + (i + 1) * width, 0.0);
        for (const Polygon2D& piece : pieces) {
            area -= std::abs(piece.GetArea());
            EXPECT_TRUE(piece.Validate(point, true, 1e-9)) << testing::PrintToString(point);
        }
        EXPECT_NEAR(area, 0.0, 1e-10 * std::abs(row[5])) << "strips cover it once";
    }
}

}  // namespace
}  // namespace Kalvio::Math
