#include "areas/Areas.h"

namespace Kalvio::Math {
namespace {

using Boolean = PolygonsBooleanOperation;
using Areas = std::vector<Polygon2D>;

constexpr double tolerance = 1e-4;  // of kTolerances

// Every bit of two results.
bool AreSame(const Areas& a, const Areas& b) {
    return std::ranges::equal(a, b, [](const auto& p, const auto& q) { return RingsOf(p) == RingsOf(q); });
}

void ExpectValid(const Areas& areas) {
    for (const Polygon2D& area : areas) {
        Point2D where;
        EXPECT_TRUE(area.Validate(where, true, tolerance)) << testing::PrintToString(where);
        EXPECT_GT(area.GetArea(), 0.0);
        for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) {
            EXPECT_LT(Polygon2D(area.GetHoleBoundary(i)).GetArea(), 0.0);
        }
    }
}

// Union, intersection, difference, symmetric difference.
template <class Area>
auto AllOf(const std::vector<Area>& a, const std::vector<Area>& b, Boolean::FillRule rule) {
    std::array<std::vector<Area>, 4> results;
    EXPECT_TRUE(Boolean::Union(a, b, results[0], kTolerances, rule));
    EXPECT_TRUE(Boolean::Intersection(a, b, results[1], kTolerances, rule));
    EXPECT_TRUE(Boolean::Difference(a, b, results[2], kTolerances, rule));
    EXPECT_TRUE(Boolean::SymmetricDifference(a, b, results[3], kTolerances, rule));
    return results;
}

TEST(PolygonsBooleanOperationTest, BordersThatMeetInEveryWay) {
    struct Row {
        const char* why;
        const char* first;
        const char* second;
        double united;         // area
        std::size_t areas;     // of the union
        unsigned int corners;  // of the union
        double common;         // area
        std::size_t intersections;
    };
    const char* const square = "0 0 4 0 4 4 0 4";
    const char* const comb = "0 0 9 0 9 9 8 9 8 1 7 1 7 9 6 9 6 1 5 1 5 9 4 9 4 1 3 1 3 9 2 9 2 1 1 1 1 9 0 9";
    const char* const lyingComb = "0 0 0 9 9 9 9 8 1 8 1 7 9 7 9 6 1 6 1 5 9 5 9 4 1 4 1 3 9 3 9 2 1 2 1 1 9 1 9 0";
    const Row rows[] = {
        {"the same", square, square, 16, 1, 4, 16, 1},
        {"an edge in common", square, "4 0 8 0 8 4 4 4", 32, 1, 6, 0, 0},
        {"part of an edge in common", square, "4 1 8 1 8 3 4 3", 24, 1, 8, 0, 0},
        {"a corner in common", square, "4 4 8 4 8 8 4 8", 32, 2, 8, 0, 0},
        {"a corner on an edge", square, "4 2 8 0 8 4", 24, 2, 7, 0, 0},
        {"crossing", square, "2 -1 3 -1 3 5 2 5", 18, 1, 12, 4, 1},
        {"a hole filled", "0 0 9 0 9 9 0 9 / 3 3 6 3 6 6 3 6", "3 3 6 3 6 6 3 6", 81, 1, 4, 0, 0},
        {"in a hole, touching it twice", "0 0 9 0 9 9 0 9 / 3 3 3 6 6 6 6 3", "3 3 5 4 6 6 4 5", 75, 2, 12, 0, 0},
        {"inside, touching a corner: a hole of the difference", square, "0 0 2 1 1 2", 16, 1, 4, 1.5, 1},
        {"a hair apart", square, "4.00005 0 8 0 8 4 4.00005 4", 32, 1, 6, 0, 0},
        {"a gap that closes", square, "4.00005 1 8 1 8 3 4.00005 3", 24, 1, 8, 0, 0},
        {"a gap wide enough", square, "4.0002 1 8 1 8 3 4.0002 3", 24, 2, 8, 0, 0},
        {"crosses itself", "0 0 4 4 4 0 0 4", "0 0 4 4 4 0 0 4", 8, 2, 6, 8, 2},
        {"no area", square, "1 1 3 1 2 1", 16, 1, 4, 0, 0},
        {"a spike", "0 0 4 0 4 4 9 4 4 4 0 4", square, 16, 1, 4, 16, 1},
        {"a spike about a border that nothing is near",
         "9 4 12 4 12 9 -3 9 12 9 12 4 9 4 8 6 7 7 6 8 5 8 3 8 2 7 1 6 0 5 0 4 0 3 0 2 1 1 2 0 3 0 4 0 6 0 7 0 8 1 9 2",
         "20 0 24 0 24 4 20 4", 74.5, 2, 24, 0, 0},
        {"nothing", square, "", 16, 1, 4, 0, 0},
        {"comb on comb", comb, lyingComb, 65, 1, 68, 33, 17},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            const Vec2D shift = origin - Point2D();
            const Areas a{MakePolygon(row.first).Translate(shift)};
            const Areas b{MakePolygon(row.second).Translate(shift)};
            const auto [united, common, less, either] = AllOf(a, b, Boolean::FillRule::NonZero);
            const double slack = 8.0 * tolerance;
            EXPECT_NEAR(AreaOf(united), row.united, slack);
            EXPECT_EQ(united.size(), row.areas);
            unsigned int corners = 0;
            for (const Polygon2D& area : united) corners += area.GetTotalSize();
            EXPECT_EQ(corners, row.corners);
            EXPECT_NEAR(AreaOf(common), row.common, slack);
            EXPECT_EQ(common.size(), row.intersections);
            EXPECT_NEAR(AreaOf(either), row.united - row.common, slack);
            for (const Areas* areas : {&united, &common, &less, &either}) ExpectValid(*areas);
        }
    }
}

TEST(PolygonsBooleanOperationTest, LawsOnRandomAreas) {
    RandomNumbers number(31);
    // Free, on a grid, and within tolerances of one: corners meet, edges run along each other and across.
    const auto takeRing = [&](int kind, double most) {
        std::vector<Point2D> ring;
        for (double i = number(0.25 * most, most); i > 1.0; i -= 1.0) {
            const Point2D p(number(-4, 4), number(-4, 4));
            const Point2D cell(std::round(p.GetX()), std::round(p.GetY()));
            const Vec2D noise(number(-tolerance, tolerance), number(-tolerance, tolerance));
            ring.push_back(kind == 0 ? p : kind == 1 ? cell : cell + noise);
        }
        return ring;
    };
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const Vec2D shift = surveyOrigins[round % 2] - Point2D();
        const auto rule = round % 4 < 2 ? Boolean::FillRule::NonZero : Boolean::FillRule::EvenOdd;
        const double most = round < 48 ? 12.0 : 60.0;  // or hundreds of crossings
        std::array<Areas, 2> layers;
        for (int i = 0; i < 4; ++i) {
            Polygon2D area(takeRing(round % 3, most));
            area.AppendHoleBoundary(LineString2D(takeRing(round % 3, most)));
            layers[i % 2].push_back(area.Translate(shift));
        }
        const std::array<Areas, 4> results = AllOf(layers[0], layers[1], rule);
        const auto& [united, common, less, either] = results;
        Areas first;
        ASSERT_TRUE(Boolean::Union(layers[0], first, kTolerances, rule));
        constexpr double slack = 1000.0 * tolerance;  // border length times a few tolerances
        EXPECT_NEAR(AreaOf(united), AreaOf(common) + AreaOf(either), slack);
        EXPECT_NEAR(AreaOf(first), AreaOf(common) + AreaOf(less), slack);

        // The order and the directions of what comes in do not matter; what comes out stays as it is.
        std::array<Areas, 2> turned{layers[1], layers[0]};
        for (Areas& layer : turned) {
            std::reverse(layer.begin(), layer.end());
            for (Polygon2D& area : layer) area.Reverse();
        }
        const auto back = AllOf(turned[0], turned[1], rule);
        EXPECT_TRUE(AreSame(back[0], united) && AreSame(back[1], common));
        for (const Areas& result : results) {
            ExpectValid(result);
            Areas again;
            ASSERT_TRUE(Boolean::Union(result, again, kTolerances));
            EXPECT_TRUE(AreSame(result, again));
        }

        // Parity and winding of the rings themselves, far enough from all borders.
        const auto isIn = [&](const std::vector<Point2D>& ring, const Point2D& p) {
            int winding = 0;
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const Point2D& a = ring[i];
                const Point2D& b = ring[(i + 1) % ring.size()];
                const double side = (b - a).PerpDotProduct(p - a);
                if (a.GetY() <= p.GetY() && b.GetY() > p.GetY() && side > 0.0) ++winding;
                if (a.GetY() > p.GetY() && b.GetY() <= p.GetY() && side < 0.0) --winding;
            }
            return rule == Boolean::FillRule::NonZero ? winding != 0 : winding % 2 != 0;
        };
        int asked = 0;
        for (int i = 0; i < 100; ++i) {
            const Point2D p = Point2D(number(-4, 4), number(-4, 4)) + shift;
            std::array<bool, 2> isWithin{};
            double away = kInfinity;
            for (int k = 0; k < 4; ++k) {
                const Polygon2D& area = layers[k % 2][k / 2];
                away = std::min(away, FromBorder(area, p));
                isWithin[k % 2] |= isIn(area.GetPoints(), p) && !isIn(area.GetHoleBoundary(0).GetPoints(), p);
            }
            if (away < 6.0 * tolerance) continue;
            ++asked;
            const auto [a, b] = isWithin;
            const bool expected[] = {a || b, a && b, a && !b, a != b};
            for (std::size_t k = 0; k < results.size(); ++k) {
                const auto holds = [&p](const Polygon2D& area) { return area.IsPointInside(p, 0.0); };
                EXPECT_EQ(std::ranges::any_of(results[k], holds), expected[k]) << testing::PrintToString(p);
            }
        }
        EXPECT_GT(asked, 50);
    }
}

TEST(PolygonsBooleanOperationTest, OverlayNamesBothSources) {
    // Parcels 0 ... 3 of 10 x 10 in a row, a road across three of them, a pond in one.
    Areas parcels;
    for (int i = 0; i < 4; ++i) parcels.push_back(MakePolygon("0 0 10 0 10 10 0 10").Translate(Vec2D(10.0 * i, 0.0)));
    const Areas uses{MakePolygon("5 4 28 4 28 6 5 6"), MakePolygon("32 2 35 2 35 9 32 9 / 33 3 34 3 34 8 33 8")};
    std::vector<Boolean::CommonArea> pieces;
    ASSERT_TRUE(Boolean::Overlay(parcels, uses, pieces, kTolerances));
    const std::tuple<std::size_t, std::size_t, double> expected[] = {{0, 0, 10}, {1, 0, 20}, {2, 0, 16}, {3, 1, 16}};
    ASSERT_EQ(pieces.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [first, second, areas] = pieces[i];
        EXPECT_EQ(std::tuple(first, second, std::round(AreaOf(areas) * 1e12) / 1e12), expected[i]);
    }

    // Failure leaves everything as it was.
    Areas untouched{parcels[0]};
    for (const double bad : {kNan, kInfinity, 1e308}) {
        Areas broken{parcels[0]};
        broken.back().GetPoint(2).SetX(bad);
        EXPECT_FALSE(Boolean::Union(parcels, broken, untouched, kTolerances));
        EXPECT_FALSE(Boolean::Overlay(broken, parcels, pieces, kTolerances));
        EXPECT_TRUE(AreSame(untouched, {parcels[0]}));
        EXPECT_EQ(pieces.size(), 4U);
    }
    RingCurve2D vast;  // no numbers for its crossings
    vast.AppendElement(Arc2D(Point2D(0, 1.3e91), 1.0, Point2D(-7e78, 0)));
    std::vector<PolygonCurve2D> curves;
    EXPECT_FALSE(Boolean::Union(PolygonCurve2D(vast), curves, kTolerances));
}

// A ring from its corners and the bulge of the element from each to the next; 0 is a line.
struct BulgeCorner {
    double x, y, bulge;
};
RingCurve2D MakeCurve(const std::vector<BulgeCorner>& corners, const Point2D& origin) {
    RingCurve2D ring;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const BulgeCorner &corner = corners[i], &next = corners[(i + 1) % corners.size()];
        const Point2D a = origin + Vec2D(corner.x, corner.y), b = origin + Vec2D(next.x, next.y);
        const bool isLine = corner.bulge == 0.0;
        EXPECT_TRUE(isLine ? ring.AppendElement(new Line2D(a, b)) : ring.AppendElement(new Arc2D(a, corner.bulge, b)));
    }
    return ring;
}

std::vector<BulgeCorner> Circle(double x, double y, double radius) { return {{x - radius, y, 1}, {x + radius, y, 1}}; }

const double eighth = std::tan(kPi / 8.0);  // bulge of a quarter turn

TEST(PolygonsBooleanOperationTest, ArcsStayArcs) {
    constexpr double pi = kPi;
    struct Row {
        const char* why;
        std::vector<BulgeCorner> first;
        std::vector<BulgeCorner> second;
        double common;  // area
        std::size_t intersections;
        double less;  // area of the first without the second
        std::size_t differences;
        std::size_t elements;  // of all differences
    };
    const std::vector<BulgeCorner> square{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    const std::vector<BulgeCorner> flat{{-1, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-1, 1, 0}};
    std::vector<BulgeCorner> filleted, bent = flat;
    for (std::size_t i = 0; i < 4; ++i) {
        const BulgeCorner &a = square[i], &b = square[(i + 1) % 4];
        filleted.push_back({0.75 * a.x + 0.25 * b.x, 0.75 * a.y + 0.25 * b.y, 0});
        filleted.push_back({0.25 * a.x + 0.75 * b.x, 0.25 * a.y + 0.75 * b.y, eighth});
    }
    bent[0].bulge = 1e-5;
    const double lens = 2.0 * pi / 3.0 - std::sqrt(3.0) / 2.0;
    const Row rows[] = {
        {"two circles through their centres", Circle(0, 0, 1), Circle(1, 0, 1), lens, 1, pi - lens, 1, 4},
        {"the same circle, cut elsewhere", Circle(0, 0, 1), {{0, 1, 1}, {0, -1, 1}}, pi, 1, 0, 0, 0},
        {"a circle that touches four sides", square, Circle(0, 0, 1), pi, 1, 4 - pi, 4, 12},
        {"a circle in a circle", Circle(0, 0, 2), Circle(0, 0, 1), pi, 1, 3 * pi, 1, 4},
        {"circles that touch", Circle(0, 0, 1), Circle(2, 0, 1), 0, 0, pi, 1, 2},
        {"circles that touch inside", Circle(0, 0, 2), Circle(1, 0, 1), pi, 1, 3 * pi, 1, 4},
        {"a tolerance apart", Circle(0, 0, 1), Circle(2.0001, 0, 1), 0, 0, pi, 1, 2},
        {"clear of each other", Circle(0, 0, 1), Circle(2.001, 0, 1), 0, 0, pi, 1, 2},
        {"fillets", square, filleted, 3 + pi / 4, 1, 1 - pi / 4, 4, 12},
        {"a line across", Circle(0, 0, 1), {{0, -2, 0}, {2, -2, 0}, {2, 2, 0}, {0, 2, 0}}, pi / 2, 1, pi / 2, 1, 3},
        {"a hair's breadth of a flat arc", bent, flat, 2, 1, 0, 0, 0},
    };
    for (const Point2D& origin : surveyOrigins) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            const std::vector<PolygonCurve2D> a{MakeCurve(row.first, origin)}, b{MakeCurve(row.second, origin)};
            const auto [united, common, less, either] = AllOf(a, b, Boolean::FillRule::NonZero);
            EXPECT_NEAR(AreaOf(common), row.common, 8.0 * tolerance);
            EXPECT_EQ(common.size(), row.intersections);
            EXPECT_NEAR(AreaOf(less), row.less, 8.0 * tolerance);
            EXPECT_EQ(less.size(), row.differences);
            std::vector<Arc2D> sources = ArcsOf(a[0].GetBoundary());
            for (const Arc2D& arc : ArcsOf(b[0].GetBoundary())) sources.push_back(arc);
            std::size_t elements = 0;
            for (const PolygonCurve2D& area : less) {
                EXPECT_TRUE(area.IsContinuous(1e-8));
                for (const RingCurve2D& ring : RingsOf(area)) {
                    elements += ring.GetSize();
                    for (const Arc2D& arc : ArcsOf(ring)) {
                        EXPECT_TRUE(std::ranges::any_of(sources, [&arc](const Arc2D& source) {
                            return arc.GetCenter().Distance(source.GetCenter()) < 2 * tolerance &&
                                   std::abs(arc.GetRadius() - source.GetRadius()) < 2 * tolerance;
                        }));
                    }
                }
            }
            EXPECT_EQ(elements, row.elements);
            Areas straight;
            EXPECT_FALSE(Boolean::Union(a, b, straight, kTolerances) && row.first[0].bulge != 0.0);
        }
    }
}

TEST(PolygonsBooleanOperationTest, ArcsAreTheLimitOfTheirChords) {
    RandomNumbers random(32);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const bool isOnGrid = round % 4 == 3;  // half circles and quarters that touch and overlap
        const double quarters[] = {0.0, 1.0, -1.0, eighth};
        std::array<std::vector<PolygonCurve2D>, 2> curves;
        std::array<Areas, 2> chords;
        for (int i = 0; i < 4; ++i) {
            std::vector<BulgeCorner> corners;
            const auto isAt = [](const BulgeCorner& a, const BulgeCorner& b) { return a.x == b.x && a.y == b.y; };
            for (int k = 0; k < 5; ++k) {
                BulgeCorner corner{random(-3, 3), random(-3, 3), k % 2 == 0 ? random(-1.2, 1.2) : 0.0};
                if (isOnGrid) corner = {std::round(corner.x), std::round(corner.y), quarters[random() % 4]};
                if (corners.empty() || !isAt(corners.back(), corner)) corners.push_back(corner);
            }
            if (isAt(corners.back(), corners[0])) corners.back().bulge = 0.0;
            curves[i % 2].emplace_back(MakeCurve(corners, surveyOrigins[round % 2]));
            chords[i % 2].emplace_back(ChordsOf(curves[i % 2].back(), 1e-5));
        }
        const double slack = 1000.0 * tolerance;  // border length times a few tolerances
        const auto rule = round % 3 == 0 ? Boolean::FillRule::EvenOdd : Boolean::FillRule::NonZero;
        const auto results = AllOf(curves[0], curves[1], rule);
        const auto straight = AllOf(chords[0], chords[1], rule);
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(AreaOf(results[k]), AreaOf(straight[k]), slack) << k;
        // An overlay with areas of segments knows both.
        std::vector<Boolean::CommonCurveArea> pieces;
        ASSERT_TRUE(Boolean::Overlay(curves[0], chords[1], pieces, kTolerances, rule));
        for (const auto& [first, second, areas] : pieces) {
            Areas common;
            ASSERT_TRUE(Boolean::Intersection(chords[0][first], chords[1][second], common, kTolerances, rule));
            EXPECT_NEAR(AreaOf(areas), AreaOf(common), slack);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
