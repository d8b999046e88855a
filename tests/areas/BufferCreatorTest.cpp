#include "areas/Areas.h"

namespace Kalvio::Math {
namespace {

using End = BufferCreator::End;
using Join = BufferCreator::Join;
using Side = BufferCreator::Side;

TEST(BufferCreatorTest, AreasAreThoseOfStripsSectorsAndKites) {
    struct Row {
        const char* why;
        const char* source;  // a polygon; a chain with | before it
        double distance;
        BufferCreator::Shape shape;
        double area;
    };
    const double pi = kPi;
    const Row rows[] = {
        {"round ends", "|0 0 10 0", 1, {}, 20 + pi},
        {"flat ends", "|0 0 10 0", 1, {End::Flat}, 20},
        {"square ends", "|0 0 10 0", 1, {End::Square}, 24},
        {"one side has no ends", "|0 0 10 0 10 10", 1, {End::Round, Join::Round, Side::Right}, 20 + pi / 4},
        {"the other has the overlap once", "|0 0 10 0 10 10", 1, {End::Round, Join::Round, Side::Left}, 19},
        {"mitred", "|0 0 10 0 10 10", 1, {End::Flat, Join::Mitred}, 40},
        {"mitre of 1.414 beyond the limit", "|0 0 10 0 10 10", 1, {End::Flat, Join::Mitred, Side::Both, 1.41}, 39.5},
        {"bevelled", "|0 0 10 0 10 10", 1, {End::Flat, Join::Bevelled}, 39.5},
        {"back over itself", "|0 0 10 0 5 0", 1, {}, 20 + pi},
        {"points repeat", "|3 3 3 3 3 3", 2, {}, 4 * pi},
        {"and nearly so", "|3 3 3 3.000001", 2, {}, 4 * pi},
        {"back to where points nearly repeat", "|0 0 0 -1e-9 10 1e-9 0 1e-9", 1, {}, 20 + pi},
        {"a point has square ends", "|3 3", 2, {End::Square}, 16},
        {"a point has no flat ends", "|3 3", 2, {End::Flat}, 0},
        {"closed: no ends", "|0 0 10 0 10 10 0 10 0 0", 1, {End::Flat}, 76 + pi},
        {"all of a closed one within reach", "|0 0 10 0 10 10 0 10 0 0", 6, {}, 100 + 240 + 36 * pi},
        {"nothing", "|0 0 10 0", -1, {}, 0},
        {"outward", "0 0 10 0 10 10 0 10", 1, {}, 140 + pi},
        {"outward, mitred", "0 0 10 0 10 10 0 10", 1, {End::Round, Join::Mitred}, 144},
        {"inward", "0 0 0 10 10 10 10 0", -1, {}, 64},
        {"inward, nothing left", "0 0 10 0 10 10 0 10", -5, {}, 0},
        {"mitre exactly at the limit", "0 0 5 0 2.5 4.33012701892219", 1, {End::Round, Join::Mitred}, 31.02146997001},
        {"a hole shrinks", "0 0 10 0 10 10 0 10 / 3 3 7 3 7 7 3 7", 1, {}, 136 + pi},
        {"and vanishes", "0 0 10 0 10 10 0 10 / 3 3 7 3 7 7 3 7", 2.5, {}, 200 + 6.25 * pi},
        {"and grows", "0 0 10 0 10 10 0 10 / 3 3 7 3 7 7 3 7", -1, {}, 32 - pi},
        {"a bow tie, two areas", "0 0 10 10 10 0 0 10", -1, {}, 2 * std::pow(4 - std::sqrt(2.0), 2)},
        {"cleaned only", "0 0 10 10 10 0 0 10", 0, {}, 50},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const std::string text = row.source;
        const Polygon2D polygon = MakePolygon(text[0] == '|' ? text.substr(1) : text);
        const LineString2D chain(polygon.GetPoints());
        const BufferCreator::Source source = text[0] == '|' ? BufferCreator::Source(chain) : Polygon2D(polygon);
        std::vector<PolygonCurve2D> arcs;
        std::vector<Polygon2D> chords;
        ASSERT_TRUE(BufferCreator::Create(source, row.distance, arcs, kTolerances, row.shape));
        ASSERT_TRUE(BufferCreator::Create(source, row.distance, 1e-3, chords, kTolerances, row.shape));
        EXPECT_NEAR(AreaOf(arcs), row.area, 1e-9);
        EXPECT_NEAR(AreaOf(chords), row.area, 1e-3 * 45.0) << "chords";
    }
}

// Points lie in the buffer when they lie within the distance, by the search for nearest points on the elements.
TEST(BufferCreatorTest, RandomSourcesKeepTheirDistance) {
    RandomNumbers random(20261122);
    constexpr double height = 0.01;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        const Point2D origin = surveyOrigins[i % 2];
        const bool isArea = i % 3 == 0;
        double distance = random(0.5, 12.0);
        Polyline2D chain;
        std::vector<Point2D> points = RandomStar(random, origin, 15.0, i % 10 > 7 ? 90 : 3 + i % 9);
        const Polygon2D star(points);
        if (isArea) {
            points.push_back(points.front());
            if (i % 2 == 1) distance *= -0.3;
        } else {
            points.erase(points.begin() + 1, points.begin() + i % 3);
            if (i % 5 == 0) points.push_back(points[points.size() / 2]);
        }
        chain.AppendElement(new LineString2D(points));
        if (!isArea && i % 4 == 0) {
            const Vec2D way = Point2D(Angle(random(0.0, 6.0)), 1.0) - Point2D();
            const double radius = random(3.0, 20.0);
            chain.AppendElement(new Clothoid(0.0, (i % 8 == 0 ? 1 : -1) * radius, std::sqrt(radius * 12.0),
                                             Point2D(chain.GetEnd()), way));
            const Vec2D out(random(-5.0, 5.0), random(-5.0, 5.0));
            chain.AppendElement(new Arc2D(chain.GetEnd(), chain.GetEnd() + out, Angle(random(-6.2, 6.2))));
        }
        std::vector<PolygonCurve2D> arcs;
        std::vector<Polygon2D> chords;
        const BufferCreator::Source source = isArea ? BufferCreator::Source(star) : chain;
        ASSERT_TRUE(BufferCreator::Create(source, distance, arcs, kTolerances));
        ASSERT_TRUE(BufferCreator::Create(source, distance, height, chords, kTolerances));
        for (const Polygon2D& part : chords) {
            Point2D where;
            EXPECT_TRUE(part.Validate(where, true, kTolerances.UserTolerance())) << testing::PrintToString(where);
        }
        std::vector<Polygon2D> nearlyArcs;
        for (const PolygonCurve2D& part : arcs) nearlyArcs.push_back(ChordsOf(part, 1e-5));
        for (int k = 0; k < 100; ++k) {
            const Point2D p = origin + Vec2D(random(-45.0, 45.0), random(-45.0, 45.0));
            const double away = chain.GetNearestPoint(p, kTolerances).Distance(p);
            const double depth = distance - (isArea && star.IsPointInside(p, 0.0) ? -away : away);
            const auto isIn = [&p](const Polygon2D& part) { return part.IsPointInside(p, 1e-9); };
            for (const auto* areas : {&nearlyArcs, &chords}) {
                const double slack = (areas == &chords ? height : 0.0) + 3.0 * kTolerances.UserTolerance();
                const bool isFound = std::ranges::any_of(*areas, isIn);
                EXPECT_TRUE(std::abs(depth) <= slack || isFound == (depth > 0.0)) << testing::PrintToString(p);
            }
        }
    }
}

PolygonCurve2D Disc(const Point2D& start, const Point2D& center, double turn = 2.0 * kPi) {
    return ChainOf<RingCurve2D>(Arc2D(start, center, Angle(turn)));
}

TEST(BufferCreatorTest, CirclesStayCircles) {
    const PolygonCurve2D disc = Disc(Point2D(5, 0), Point2D());
    std::vector<PolygonCurve2D> result;
    for (const double distance : {2.0, -2.0}) {
        ASSERT_TRUE(BufferCreator::Create(disc, distance, result, kTolerances));
        ASSERT_EQ(result.size(), 1U);
        const std::vector<Arc2D> arcs = ArcsOf(result[0].GetBoundary());
        EXPECT_EQ(arcs.size(), result[0].GetBoundary().GetSize());
        for (const Arc2D& arc : arcs) EXPECT_NEAR(arc.GetSignedRadius(), 5.0 + distance, 1e-12);
    }
    ASSERT_TRUE(BufferCreator::Create(disc, -5.0, result, kTolerances));
    EXPECT_TRUE(result.empty());
    const PolygonCurve2D open = Disc(Point2D(5, 0), Point2D(), 2.0 * kPi - 1e-4);  // by 0.5 mm
    EXPECT_TRUE(BufferCreator::Create(open, 3e4, result, kTolerances, {.join = Join::Mitred}));
    // Between a line and an arc lies a hole that is 0.07 wide, but nothing by the chords of its pieces.
    const Point2D bend(-9.013951606883417, -1.440012648847052), center(-1.5627095233099757, -2.8998022582079006);
    const Polyline2D chain = ChainOf(Line2D(Point2D(), bend), Arc2D(bend, center, Angle(-2.2)));
    ASSERT_TRUE(BufferCreator::Create(chain, 2.4557073874950262, result, kTolerances));
    EXPECT_EQ(result.at(0).GetNumInnerRings(), 1U);
}

// The hole reaches to where the disc touches it, however thin it is there.
TEST(BufferCreatorTest, ChordsLeaveCusps) {
    PolygonCurve2D around = Disc(Point2D(160, 0), Point2D());
    around.AppendInnerRing(Disc(Point2D(0, 80), Point2D()).GetBoundary());
    const std::vector areas{around, Disc(Point2D(80, 0), Point2D(58, 0))};
    std::vector<Polygon2D> result;
    ASSERT_TRUE(BufferCreator::Create(areas, -0.1, 0.01, result, Tolerances(1e-6)));
    ASSERT_EQ(result.size(), 2U);
    for (const Point2D& p : result[0].GetHoleBoundary(0).GetPoints()) EXPECT_NEAR(p.Distance(Point2D()), 80.1, 0.0101);
    for (const Point2D& p : result[1].GetPoints()) EXPECT_NEAR(p.Distance(Point2D(58, 0)), 21.9, 0.0101);
}

TEST(BufferCreatorTest, WhatCannotBeBufferedTouchesNothing) {
    std::vector<Polygon2D> result(3);
    const LineString2D chain{Point2D(0, 0), Point2D(1, 0)};
    for (const double bad : {kNan, kInfinity, -kInfinity, 1e300}) {
        SCOPED_TRACE(bad);
        const LineString2D broken{Point2D(0, 0), Point2D(1, 0), Point2D(bad, 1)};
        EXPECT_FALSE(BufferCreator::Create(chain, bad, 0.1, result, kTolerances));
        EXPECT_FALSE(BufferCreator::Create(chain, 1.0, 0.1, result, Tolerances(bad)));
        EXPECT_FALSE(BufferCreator::Create(Point2D(0, bad), 1.0, 0.1, result, kTolerances));
        EXPECT_FALSE(BufferCreator::Create(broken, -1.0, 0.1, result, kTolerances));
        EXPECT_FALSE(BufferCreator::Create(Polygon2D(broken), 1.0, 0.1, result, kTolerances));
    }
    EXPECT_FALSE(BufferCreator::Create(chain, 1.0, 0.0, result, kTolerances)) << "no height";
    EXPECT_FALSE(BufferCreator::Create(chain, 1.0, 0.1, result, kTolerances, {.mitreLimit = kNan}));
    EXPECT_EQ(result.size(), 3U);
    EXPECT_TRUE(BufferCreator::Create(std::vector<LineString2D>(2), 1.0, 0.1, result, kTolerances)) << "nothing";
    EXPECT_TRUE(result.empty());
}

}  // namespace
}  // namespace Kalvio::Math
