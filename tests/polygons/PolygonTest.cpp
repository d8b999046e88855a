#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Rings.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(PolygonTest, AreaWindingCentroidAndPerimeterFollowTheOuterRing) {
    struct Row {
        const char* why;
        std::vector<Point2D> ring;
        std::vector<std::vector<Point2D>> holes;
        double area;
        Point2D centroid;
        double perimeter;
    };
    const Row rows[] = {
        {"unit square", Rectangle(0, 0, 1, 1), {}, 1.0, Point2D(0.5, 0.5), 4.0},
        {"hole turning left", Rectangle(0, 0, 10, 10), {Rectangle(6, 6, 2, 2)}, 96.0, Point2D(5, 5), 40.0},
        {"hole turning right", Rectangle(0, 0, 10, 10), {Rectangle(8, 6, -2, 2)}, 96.0, Point2D(5, 5), 40.0},
        {"holes larger than the ring", Rectangle(0, 0, 2, 2), {Rectangle(0, 0, 3, 3)}, -5.0, Point2D(1, 1), 8.0},
        {"triangle", {Point2D(0, 0), Point2D(3, 0), Point2D(0, 4)}, {}, 6.0, Point2D(1, 4.0 / 3), 12.0},
        {"no area: mean", {Point2D(0, 0), Point2D(1, 1), Point2D(5, 5)}, {}, 0.0, Point2D(2, 2), 10 * std::sqrt(2.0)},
        {"one point", {Point2D(3, 4)}, {}, 0.0, Point2D(3, 4), 0.0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : {Point2D(0, 0), Point2D(385000, 6672000), Point2D(500123.38, 6612345.61)}) {
            for (const bool isClosed : {false, true}) {
                SCOPED_TRACE(row.why);
                Polygon2D polygon(row.ring);
                for (const auto& hole : row.holes) polygon.AppendHoleBoundary(hole);
                if (isClosed) polygon.Close();
                polygon.Translate(origin - Point2D());
                const auto check = [&](double area) {
                    EXPECT_NEAR(polygon.GetArea(), area, 2e-8);
                    EXPECT_EQ(polygon.GetWinding() == WindingValue::CounterClockwise, polygon.GetArea() > 0.0);
                    EXPECT_THAT(polygon.GetCentroid(), IsNear(row.centroid + (origin - Point2D()), 1e-6));
                    EXPECT_NEAR(polygon.GetLength(), row.perimeter, 1e-8);
                };
                check(row.area);
                polygon.Reverse();
                check(-row.area);
            }
        }
    }
    EXPECT_EQ(Polygon2D().GetArea(), 0.0);
    EXPECT_EQ(Polygon2D().GetCentroid(), Point2D(0, 0));
}

TEST(PolygonTest, SetWindingReversesOnlyWhatHasAnotherWinding) {
    Polygon2D square{Point2D(0, 0), Point2D(0, 1), Point2D(1, 1), Point2D(1, 0)};
    square.AppendHoleBoundary(Rectangle(0.25, 0.25, 0.5, 0.5));
    EXPECT_EQ(square.GetWinding(), WindingValue::Clockwise);
    EXPECT_FALSE(square.SetWinding(WindingValue::Clockwise));
    EXPECT_TRUE(square.SetWinding(WindingValue::CounterClockwise));
    EXPECT_EQ(square.GetWinding(), WindingValue::CounterClockwise);
    EXPECT_EQ(square.GetHoleBoundary(0).GetPoint(1), Point2D(0.75, 0.25)) << "holes keep their direction";
    EXPECT_EQ(Polygon2D({Point2D(0, 0), Point2D(1, 0)}).GetWinding(), WindingValue::Clockwise);
}

TEST(PolygonTest, EveryEditOfTheRingRenewsTheBox) {
    Polygon2D polygon;
    const auto reaches = [&polygon](double x) { return polygon.GetBoundingBox().GetMaxPoint() == Point2D(x, x); };
    EXPECT_TRUE(reaches(0));
    polygon.AppendPoints(std::vector<Point2D>{Point2D(0, 0), Point2D(1, 0), Point2D(1, 1)});
    EXPECT_TRUE(reaches(1));
    polygon.AppendPoints(std::list<Point2D>{Point2D(2, 2)});
    EXPECT_TRUE(reaches(2));
    polygon.GetPoint(3) = Point2D(3, 3);
    EXPECT_TRUE(reaches(3));
    polygon.GetPoints().emplace_back(0, 4);
    polygon.AppendPoint(Point2D(4, 4));
    EXPECT_TRUE(reaches(4));
    EXPECT_TRUE(polygon.Insert(6, Point2D(5, 5)));
    EXPECT_FALSE(polygon.Insert(8, Point2D(9, 9)));
    EXPECT_TRUE(reaches(5));
    polygon.Translate(Vec2D(1, 1));
    EXPECT_TRUE(reaches(6));
    EXPECT_FALSE(polygon.IsClosed(1e-4));
    polygon.Close();
    polygon.Close();
    EXPECT_TRUE(polygon.IsClosed(1e-4));
    polygon.AppendHoleBoundary(Rectangle(0, 0, 1, 1));
    EXPECT_EQ(polygon.GetTotalSize(), 12U) << "closing twice closes once";
    polygon.Clear();
    EXPECT_TRUE(reaches(0));
    EXPECT_EQ(polygon.GetTotalSize(), 0U);
    EXPECT_FALSE(polygon.IsClosed(1.0));
}

TEST(PolygonTest, EqualityComparesPointsAndHolesInOrder) {
    Polygon2D polygon(Rectangle(0, 0, 4, 4));
    polygon.AppendHoleBoundary(Rectangle(1, 1, 1, 1));
    const std::unique_ptr<IGeometry> copy(polygon.Clone());
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 1e-9));
    auto& other = static_cast<Polygon2D&>(*copy);
    other.GetHoleBoundary(0).GetPoint(2) = Point2D(2.0, 2.25);
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 0.25)) << "strict, holes too";
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 0.2501));
    other.RemoveHoleBoundaries();
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 10.0));
    EXPECT_FALSE(polygon.IsEqualTo(LineString2D(Rectangle(0, 0, 4, 4)), 10.0));
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetY(), 4.0);
}

TEST(PolygonTest, PositionCodesAroundTwoHolesInEveryDirectionClosedAndOpen) {
    using Result = Polygon2D::PositionResult;
    struct Row {
        const char* why;
        double x, y;
        Result expected;
        int hole;
    };
    const Row rows[] = {
        {"outside", 11, 4, Result::Outside, -1},
        {"outside, level with a vertex", -1, 0, Result::Outside, -1},
        {"outside, level with a hole's edge", -1, 2, Result::Outside, -1},
        {"outer corner", 0, 0, Result::OnOuterBorder, -1},
        {"outer edge", 5, 0, Result::OnOuterBorder, -1},
        {"on the closing edge", 0, 4, Result::OnOuterBorder, -1},
        {"half a tolerance outside", 10.00005, 4, Result::OnOuterBorder, -1},
        {"half a tolerance inside", 9.99995, 4, Result::OnOuterBorder, -1},
        {"two tolerances outside", 10.0002, 4, Result::Outside, -1},
        {"two tolerances inside", 9.9998, 4, Result::Inside, -1},
        {"between the holes", 5, 4, Result::Inside, -1},
        {"level with the holes' vertices", 5, 2, Result::Inside, -1},
        {"corner of hole 0", 2, 2, Result::OnHoleBorder, -1},
        {"edge of hole 0", 3, 2, Result::OnHoleBorder, -1},
        {"edge of hole 1 from outside", 5.99995, 3, Result::OnHoleBorder, -1},
        {"edge of hole 1 from inside", 6.00005, 3, Result::OnHoleBorder, -1},
        {"two tolerances into hole 1", 6.0002, 3, Result::InsideHole, 1},
        {"inside hole 0", 3, 4, Result::InsideHole, 0},
        {"inside hole 1", 8, 3, Result::InsideHole, 1},
        {"not a number", kNan, 3, Result::Outside, -1},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (int form = 0; form < 16; ++form) {
            const auto make = [&](std::vector<Point2D> ring, bool isReversed) {
                if (isReversed) std::reverse(ring.begin(), ring.end());
                if ((form & 4) != 0) ring.push_back(Point2D(ring.front()));
                if ((form & 8) != 0) ring.insert(ring.begin() + 2, Point2D(ring[1]));  // a repeated vertex
                return ring;
            };
            Polygon2D polygon(make(Rectangle(0, 0, 10, 8), (form & 1) != 0));
            polygon.AppendHoleBoundary(make(Rectangle(2, 2, 2, 4), (form & 2) != 0));
            polygon.AppendHoleBoundary(make(Rectangle(6, 2, 3, 4), (form & 2) == 0));
            polygon.Translate(origin - Point2D());
            for (const Row& row : rows) {
                SCOPED_TRACE(testing::Message() << row.why << ", form " << form);
                const Point2D p = origin + Vec2D(row.x, row.y);
                const bool isOnBorder = row.expected == Result::OnOuterBorder || row.expected == Result::OnHoleBorder;
                const bool isInside = row.expected == Result::Inside;
                int hole = 7;
                EXPECT_EQ(polygon.CheckPositionOf(p, hole, 1e-4), row.expected);
                EXPECT_EQ(hole, row.hole);
                EXPECT_EQ(polygon.IsPointInside(p, 1e-4), isInside || isOnBorder);
                EXPECT_EQ(polygon.IsPointInside(p, -1e-4), isInside || isOnBorder) << "the sign plays no part";
                EXPECT_EQ(polygon.IsPointInsideAndBorders(p, 1e-4, false), isInside);
                EXPECT_EQ(polygon.IsPointInsideByRay(p, 1e-4), isInside || isOnBorder);
            }
        }
    }
    EXPECT_FALSE(Polygon2D().IsPointInside(Point2D(0, 0), 1.0));
    EXPECT_FALSE(Polygon2D().IsPointInsideByRay(Point2D(0, 0), 1.0));
    EXPECT_TRUE(Polygon2D({Point2D(1, 1)}).IsPointInside(Point2D(1, 1), 1e-4)) << "a lone point is its own border";
}

// The rule as it is written down: walked clockwise, border first, then the winding number. A closing point adds no
// edge.
int SideByTheRule(std::vector<Point2D> ring, const Point2D& p, double tolerance) {
    if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
    double area = 0.0;
    const auto at = [&ring](std::size_t i) { return ring[i % ring.size()]; };
    for (std::size_t i = 0; i < ring.size(); ++i) area += (at(i) - ring[0]).PerpDotProduct(at(i + 1) - ring[0]);
    if (area > 0.0) std::reverse(ring.begin(), ring.end());
    const auto isLeft = [&p](const Point2D& a, const Point2D& b) {
        return (b - a).GetX() * (p - a).GetY() > (p - a).GetX() * (b - a).GetY() + 4e-10;
    };
    int winding = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point2D a = at(i);
        const Point2D b = at(i + 1);
        if (Intersection::PointOnLineSegment(p, a, b, tolerance)) return 0;
        if (a.GetY() <= p.GetY() && b.GetY() > p.GetY() && isLeft(a, b)) ++winding;
        if (a.GetY() > p.GetY() && b.GetY() <= p.GetY() && !isLeft(a, b)) --winding;
    }
    return winding != 0 ? 1 : -1;
}

TEST(PolygonTest, PointTestIsTheRuleForAnyRings) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240601));
    const auto number = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    int inside = 0;
    for (int round = 0; round < 3000; ++round) {
        // Small integers put points on vertices and edges; the small scale brings the margin of 4e-10 into play.
        const double scale = round % 3 == 0 ? std::ldexp(1.0, -17) : 1.0;
        const auto makeRing = [&](int size, int reach) {
            std::vector<Point2D> ring;
            for (int i = 0; i < size; ++i) ring.emplace_back(number(0, reach) * scale, number(0, reach) * scale);
            return ring;
        };
        Polygon2D polygon(makeRing(number(1, 12), 8));
        const int holes = number(0, 2);
        for (int i = 0; i < holes; ++i) polygon.AppendHoleBoundary(makeRing(number(0, 5), 6));
        const double tolerance = number(0, 1) * 0.26 * scale;  // exactly at no point of the grid
        for (int i = 0; i < 10; ++i) {
            const Point2D p(number(-4, 36) * 0.25 * scale, number(-4, 36) * 0.25 * scale);
            for (const bool borders : {false, true}) {
                const int side = SideByTheRule(polygon.GetPoints(), p, tolerance);
                bool expected = side > 0 || (side == 0 && borders);
                for (unsigned int k = 0; k < polygon.GetNumHoleBoundaries() && side > 0; ++k) {
                    const int holeSide = SideByTheRule(polygon.GetHoleBoundary(k).GetPoints(), p, tolerance);
                    expected = expected && holeSide <= 0 && (holeSide < 0 || borders);
                }
                ASSERT_EQ(polygon.IsPointInsideAndBorders(p, tolerance, borders), expected) << "round " << round;
                inside += expected ? 1 : 0;
            }
        }
    }
    EXPECT_GT(inside, 5000);
}

TEST(PolygonTest, OneRingPastAnotherIsJudgedAsTheirPointsAre) {
    using Result = Polygon2D::PositionResult;
    Polygon2D ground(Rectangle(0, 0, 20, 10));
    ground.GetPoints().insert(ground.GetPoints().begin() + 3, {Point2D(12, 10), Point2D(10, 6), Point2D(8, 10)});
    ground.AppendHoleBoundary(Rectangle(2, 2, 2, 2));
    ground.AppendHoleBoundary(Rectangle(12, 1, 4, 4));
    struct Row {
        const char* why;
        std::vector<Point2D> ring;
        Result position;
        int hole;
        bool isInside;
    };
    const Row rows[] = {
        {"well inside", Rectangle(6, 1, 1, 1), Result::Inside, -1, true},
        {"beside", Rectangle(21, 1, 1, 1), Result::Outside, -1, false},
        {"around", Rectangle(-1, -1, 30, 30), Result::Outside, -1, false},
        {"inside hole 1", Rectangle(13, 2, 1, 1), Result::InsideHole, 1, false},
        {"around hole 0", Rectangle(1, 1, 4, 4), Result::Inside, -1, false},
        {"across hole 0", Rectangle(1, 3, 4, 2), Result::OnHoleBorder, -1, false},
        {"across the outer ring", Rectangle(18, 6, 4, 2), Result::OnOuterBorder, -1, false},
        {"touching the outer ring from inside", Rectangle(18, 6, 2, 2), Result::OnOuterBorder, -1, true},
        {"touching the outer ring from outside", Rectangle(20, 6, 2, 2), Result::OnOuterBorder, -1, false},
        {"touching hole 0 from outside", Rectangle(4, 3, 2, 2), Result::OnHoleBorder, -1, true},
        {"the outer ring itself", ground.GetPoints(), Result::OnOuterBorder, -1, false},
        {"bridging the notch between two of its corners",
         {Point2D(8, 10), Point2D(8, 7), Point2D(12, 10)},
         Result::OnOuterBorder,
         -1,
         false},
        {"beside the notch", {Point2D(10, 6), Point2D(8, 10), Point2D(7, 8)}, Result::OnOuterBorder, -1, true},
        {"nothing", {}, Result::Outside, -1, false},
    };
    for (const Point2D& origin : surveyOrigins) {
        const Polygon2D outer = std::as_const(ground).Translate(origin - Point2D());
        for (const Row& row : rows) {
            for (const bool isReversed : {false, true}) {
                SCOPED_TRACE(row.why);
                Polygon2D inner(row.ring);
                if (isReversed) inner.Reverse();
                if (isReversed) inner.Close();
                inner.Translate(origin - Point2D());
                int hole = 7;
                EXPECT_EQ(outer.CheckPositionOf(inner, hole, 1e-4), row.position);
                EXPECT_EQ(hole, row.hole);
                EXPECT_EQ(Polygon2D::IsPolygonInsideNotCrossing(inner, outer, 1e-4), row.isInside);
            }
        }
    }
    EXPECT_TRUE(Polygon2D::IsPolygonInsideNotCrossing(ground, ground, 1e-4));
    Polygon2D ring(Rectangle(1, 1, 4, 4));
    ring.AppendHoleBoundary(Rectangle(1.5, 1.5, 3, 3));
    EXPECT_TRUE(Polygon2D::IsPolygonInsideNotCrossing(ring, ground, 1e-4)) << "its own hole takes in hole 0";
}

TEST(PolygonTest, ValidateFindsTheFirstFaultAndSaysWhere) {
    using Ring = std::vector<Point2D>;
    const Ring square = Rectangle(0, 0, 10, 10);
    struct Row {
        const char* why;
        Ring ring;
        std::vector<Ring> holes;
        bool isValid;
        Point2D where;
    };
    const Row rows[] = {
        {"square", square, {}, true, Point2D()},
        {"two holes", square, {Rectangle(1, 1, 2, 2), Rectangle(5, 5, 2, 2)}, true, Point2D()},
        {"holes that touch at a corner", square, {Rectangle(1, 1, 2, 2), Rectangle(3, 3, 2, 2)}, true, Point2D()},
        {"hole corner on the ring", square, {{Point2D(0, 5), Point2D(2, 4), Point2D(2, 6)}}, true, Point2D()},
        {"hole side along the ring", square, {Rectangle(0, 4, 2, 2)}, true, Point2D()},
        {"two points", {Point2D(3, 4), Point2D(5, 4)}, {}, false, Point2D(3, 4)},
        {"three points, two of them one", {Point2D(3, 4), Point2D(5, 4), Point2D(5, 4)}, {}, false, Point2D(3, 4)},
        {"bow tie", {Point2D(0, 0), Point2D(2, 2), Point2D(2, 0), Point2D(0, 2)}, {}, false, Point2D(1, 1)},
        {"no area", {Point2D(0, 0), Point2D(4, 0), Point2D(2, 0)}, {}, false, Point2D(4, 0)},
        {"spike",
         {Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(4, 9), Point2D(4, 4), Point2D(0, 4)},
         {},
         false,
         Point2D(4, 9)},
        {"hole outside", square, {Rectangle(12, 1, 2, 2)}, false, Point2D(12, 1)},
        {"hole across the ring", square, {Rectangle(8, 4, 4, 1)}, false, Point2D(11, 4)},
        {"hole equal to the ring", square, {square}, false, Point2D(0, 0)},
        {"hole in a hole", square, {Rectangle(1, 1, 5, 5), Rectangle(2, 2, 1, 1)}, false, Point2D(2, 2)},
        {"hole around a hole", square, {Rectangle(2, 2, 1, 1), Rectangle(1, 1, 5, 5)}, false, Point2D(2, 2)},
        {"hole twice", square, {Rectangle(1, 1, 2, 2), Rectangle(3, 3, -2, -2)}, false, Point2D(3, 3)},
        {"hole bow tie", square, {{Point2D(1, 1), Point2D(3, 3), Point2D(3, 1), Point2D(1, 3)}}, false, Point2D(2, 2)},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (const Row& row : rows) {
            for (const bool isClosed : {false, true}) {
                SCOPED_TRACE(row.why);
                Polygon2D polygon(row.ring);
                for (const Ring& hole : row.holes) polygon.AppendHoleBoundary(hole);
                if (isClosed) polygon.Close();
                polygon.Translate(origin - Point2D());
                Point2D where(-1, -1);
                EXPECT_EQ(polygon.Validate(where, true, 1e-4), row.isValid);
                const Point2D expected = row.isValid ? Point2D(-1, -1) : row.where + (origin - Point2D());
                EXPECT_THAT(where, IsNear(expected, 1e-6));
                EXPECT_EQ(polygon.Validate(where, false, 1e-4), row.isValid || !row.holes.empty());
            }
        }
    }
    Point2D where;
    Polygon2D broken(square);
    broken.AppendHoleBoundary({Point2D(1, 1), Point2D(2, kNan), Point2D(2, 2)});
    EXPECT_FALSE(broken.Validate(where, true, 1e-4));
    EXPECT_EQ(where.GetX(), 2.0);
    EXPECT_FALSE(Polygon2D().Validate(where, true, 1e-4));
    std::vector<Point2D> crossings;
    EXPECT_TRUE(Polygon2D(rows[7].ring).IsSelfCrossing(crossings, 1e-4));
    EXPECT_EQ(crossings.size(), 1U);
    EXPECT_FALSE(Polygon2D(square).IsSelfCrossing(1e-4));
}

TEST(PolygonTest, ConvexityToleratesStraightSidesOnly) {
    struct Row {
        const char* why;
        std::vector<Point2D> ring;
        bool expected;
    };
    const Row rows[] = {
        {"square", Rectangle(0, 0, 1, 1), true},
        {"points on the sides, one twice",
         {Point2D(0.3, 0.1), Point2D(0.6, 0.2), Point2D(0.6, 0.2), Point2D(3, 1), Point2D(0, 1), Point2D(0, 0.5),
          Point2D(0, 0)},
         true},
        {"a step back on a side", {Point2D(0, 0), Point2D(2, 0), Point2D(1, 0), Point2D(3, 0), Point2D(0, 3)}, false},
        {"notch", {Point2D(0, 0), Point2D(2, 0), Point2D(1, 0.5), Point2D(2, 1), Point2D(0, 1)}, false},
        {"pentagram: all left, twice round",
         {Point2D(0, 10), Point2D(-6, -8), Point2D(9.5, 3), Point2D(-9.5, 3), Point2D(6, -8)},
         false},
        {"no area", {Point2D(0, 0), Point2D(1, 1), Point2D(2, 2)}, false},
        {"two points", {Point2D(0, 0), Point2D(1, 1)}, false},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : {Point2D(0, 0), Point2D(500123.38, 6612345.61)}) {
            for (std::size_t first = 0; first < 2 * row.ring.size(); ++first) {
                SCOPED_TRACE(row.why);
                Polygon2D polygon(row.ring);
                const auto start = polygon.GetPoints().begin() + static_cast<std::ptrdiff_t>(first % row.ring.size());
                std::rotate(polygon.GetPoints().begin(), start, polygon.GetPoints().end());
                if (first >= row.ring.size()) polygon.Reverse();
                if (first % 2 == 0) polygon.Close();
                polygon.Translate(origin - Point2D());
                EXPECT_EQ(polygon.IsConvex(), row.expected);
            }
        }
    }
    Polygon2D holed(Rectangle(0, 0, 4, 4));
    holed.AppendHoleBoundary(Rectangle(1, 1, 1, 1));
    EXPECT_FALSE(holed.IsConvex());
}

TEST(PolygonTest, PointInsideIsWellInside) {
    const std::vector<Point2D> letterC{Point2D(0, 0), Point2D(10, 0), Point2D(10, 1),  Point2D(1, 1),
                                       Point2D(1, 9), Point2D(10, 9), Point2D(10, 10), Point2D(0, 10)};
    Polygon2D frame(Rectangle(0, 0, 10, 10));
    frame.AppendHoleBoundary(Rectangle(1, 1, 8, 8));
    struct Row {
        const char* why;
        Polygon2D polygon;
        double clearance;
    };
    const Row rows[] = {
        {"square", Rectangle(0, 0, 10, 10), 4.0},
        {"C", letterC, 0.45},
        {"frame", frame, 0.45},
        {"sliver along the diagonal", {Point2D(0, 0), Point2D(100, 100), Point2D(100, 100.01)}, 0.001},
        {"flat body on a needle",
         {Point2D(0, 0), Point2D(0.001, 1000), Point2D(-50, 1001), Point2D(50, 1004), Point2D(0.002, 1000)},
         0.5},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Polygon2D polygon = std::as_const(row.polygon).Translate(origin - Point2D());
            Point2D point;
            ASSERT_TRUE(polygon.GetPointInsideBoundary(point, 1e-4));
            EXPECT_TRUE(polygon.IsPointInsideAndBorders(point, row.clearance, false));
            EXPECT_FALSE(polygon.GetPointInsideBoundary(point, 1e3)) << "nothing is that far inside";
        }
    }
    Point2D untouched(7, 7);
    Polygon2D filled(Rectangle(0, 0, 1, 1));
    filled.AppendHoleBoundary(Rectangle(0, 0, 1, 1));
    EXPECT_FALSE(filled.GetPointInsideBoundary(untouched, 1e-4));
    EXPECT_FALSE(Polygon2D({Point2D(kNan, 0), Point2D(1, kNan)}).GetPointInsideBoundary(untouched, 1e-4));
    EXPECT_EQ(untouched, Point2D(7, 7));
}

TEST(PolygonTest, EditsAlongTheRingCountTheClosingEdge) {
    const auto order = [](const Polygon2D& polygon) {
        std::string names;
        for (const Point2D& p : polygon.GetPoints()) names += std::to_string(static_cast<int>(p.GetX() + 3 * p.GetY()));
        return names;
    };
    struct Row {
        const char* why;
        double length;
        bool isClosed;
        const char* expected;  // the corners are 0, 2, 8, 6, the inserted point is 4
    };
    const Row rows[] = {
        {"at the start", 0, false, "04286"},         {"on the second side", 3, false, "02486"},
        {"on the closing edge", 7, false, "02864"},  {"on the closing edge of a closed ring", 7, true, "028640"},
        {"before the start", -1e-9, false, nullptr}, {"beyond the end", 8.1, true, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Polygon2D polygon(Rectangle(0, 0, 2, 2));
        if (row.isClosed) polygon.Close();
        EXPECT_EQ(polygon.InsertAtLength(row.length, Point2D(1, 1)), row.expected != nullptr);
        EXPECT_EQ(order(polygon), row.expected != nullptr ? row.expected : row.isClosed ? "02860" : "0286");
    }
    Polygon2D ring{Point2D(2, 2), Point2D(0, 2), Point2D(0.05, 0), Point2D(2, 0), Point2D(2.01, 0), Point2D(2, 2)};
    ring.ReducePoints(0.1);
    EXPECT_EQ(order(ring), "86028");
    Polygon2D::RearrangePointsByStartingFromMinXMinY(ring, 0.1);
    EXPECT_EQ(order(ring), "02860") << "closed before, closed after";
    Polygon2D::RearrangePointsByStartingFromMinXMinY(ring, 0.01);
    EXPECT_EQ(order(ring), "60286");
    ring.RemoveClosingPoint(1e-4);
    EXPECT_EQ(order(ring), "6028");
    EXPECT_FALSE(Polygon2D().InsertAtLength(0, Point2D()));
}

TEST(PolygonTest, WidthAndSmallestBoxTurnWithThePolygon) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240601));
    for (int round = 0; round < 40; ++round) {
        const std::vector<Point2D> star = RandomStar(random, Point2D(0, 0), 10.0, 3 + round);
        double width = 1e9;
        for (const Point2D& a : star) {
            for (const Point2D& b : star) {
                const Vec2D normal = Vec2D(b - a).Normalize().GetNormalVector(true);
                if (&a == &b) continue;
                double low = 1e9;
                double high = -1e9;
                for (const Point2D& p : star) {
                    low = std::min(low, (p - a).DotProduct(normal));
                    high = std::max(high, (p - a).DotProduct(normal));
                }
                width = std::min(width, high - low);
            }
        }
        Matrix2D motion;
        motion.Rotate(Angle(0.1 * round)).Translate(385000.0, 6672000.0);
        const Polygon2D polygon = Polygon2D(star).Transform(motion);
        EXPECT_NEAR(polygon.GetMaxWidth(1e-10), width, 2e-8);
        const OrientedBoundingBox2D box = polygon.GetOrientedBoundingBox2D();
        EXPECT_GE(std::min(box.GetSize().GetX(), box.GetSize().GetY()), width - 2e-8);
        for (const Point2D& corner : polygon.GetPoints()) {
            OrientedBoundingBox2D wider(box);
            wider.SetSize(box.GetSize() + Vec2D(1e-8, 1e-8));
            EXPECT_TRUE(wider.IsPointInside(corner));
        }
    }
    const double root = std::sqrt(0.5);
    EXPECT_NEAR(Polygon2D({Point2D(0, 0), Point2D(9, 9), Point2D(9, 10), Point2D(0, 1)}).GetMaxWidth(0), root, 1e-12);
    EXPECT_EQ(Polygon2D({Point2D(0, 0), Point2D(1, 1), Point2D(3, 3)}).GetMaxWidth(1e-10), 0.0);
    EXPECT_EQ(Polygon2D().GetMaxWidth(1e-10), 0.0);
}

// Rows of numbers of a CSV file, without its heading; empty where the file is not there.
std::vector<std::vector<double>> ReadTable(const std::string& path, int skippedColumn) {
    std::ifstream file(path);
    std::vector<std::vector<double>> table;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream cells(line);
        std::string cell;
        std::vector<double>& row = table.emplace_back();
        for (int column = 0; std::getline(cells, cell, ','); ++column) {
            if (column != skippedColumn) row.push_back(std::stod(cell));
        }
    }
    return table;
}

TEST(PolygonTest, CountriesHaveTheirStatedMeasuresAndPoints) {
    const char* const folder = std::getenv("KALVIO_TEST_DATA");
    if (folder == nullptr) GTEST_SKIP() << "KALVIO_TEST_DATA does not name the folder of the real polygons";
    const std::string prefix = std::string(folder) + "/polygons/countries50m_";
    std::map<int, Polygon2D> countries;
    std::map<std::pair<int, int>, LineString2D> holes;
    for (const std::vector<double>& row : ReadTable(prefix + "rings.csv", -1)) {
        const int country = static_cast<int>(row[0]);
        const int ring = static_cast<int>(row[1]);
        const Point2D point(row[2], row[3]);
        ring == 0 ? countries[country].AppendPoint(point) : holes[{country, ring}].AppendPoint(point);
    }
    for (const auto& [key, hole] : holes) countries[key.first].AppendHoleBoundary(hole);
    ASSERT_FALSE(countries.empty());
    for (const std::vector<double>& row : ReadTable(prefix + "measures.csv", 1)) {
        SCOPED_TRACE(testing::Message() << "country " << row[0]);
        const Polygon2D& country = countries[static_cast<int>(row[0])];
        EXPECT_EQ(static_cast<double>(country.GetSize()), row[1]);
        EXPECT_EQ(static_cast<double>(country.GetNumHoleBoundaries()), row[2]);
        EXPECT_NEAR(Polygon2D(country.GetPoints()).GetArea(), row[3], 1e-12 * std::abs(row[3]));
        EXPECT_NEAR(std::abs(country.GetArea()), std::abs(row[4]), 1e-12 * std::abs(row[4]));
        EXPECT_THAT(country.GetCentroid(), IsNear(Point2D(row[5], row[6]), 1e-11));
        EXPECT_NEAR(country.Perimeter(), row[7], 1e-12 * row[7]);
        Point2D inside;
        EXPECT_TRUE(country.GetPointInsideBoundary(inside, 1e-3));
        Point2D fault;
        EXPECT_TRUE(country.Validate(fault, true, 1e-9)) << testing::PrintToString(fault);
        std::vector<Triangle3D> triangles;
        ASSERT_TRUE(Polygon3D(country, 0.0).Triangulate(triangles, 1e-10));
        double area = 0.0;
        for (const Triangle3D& triangle : triangles) area += triangle.GetArea();
        EXPECT_NEAR(area, std::abs(row[4]), 1e-10 * std::abs(row[4]));
    }
    for (const std::vector<double>& row : ReadTable(prefix + "points.csv", -1)) {
        const Polygon2D& country = countries[static_cast<int>(row[0])];
        const Point2D point(row[1], row[2]);
        int hole = 0;
        EXPECT_EQ(country.IsPointInside(point, 1e-9), row[3] == 1.0) << testing::PrintToString(point);
        EXPECT_EQ(country.CheckPositionOf(point, hole, 1e-9) == Polygon2D::PositionResult::Inside, row[3] == 1.0);
    }
}

}  // namespace
}  // namespace Kalvio::Math
