#include "queries/QueryNames.h"

namespace Kalvio::Math {
namespace {

using PolylinePoints = std::vector<Polyline2D::PolylinePoint>;
using ElementPoints = std::vector<IPolyline2DElement::PolylineElementPoint>;

LineString2D Chords(const Polyline2D& polyline) {
    LineString2D chords;
    EXPECT_TRUE(polyline.MakeLineStringUsingHeight(0.0, polyline.GetLength(), chords, 1e-5, 1e-10));
    return chords;
}

std::vector<double> StationsOf(const PolylinePoints& points) {
    std::vector<double> stations;
    for (const auto& p : points) stations.push_back(p.station);
    return stations;
}

void ExpectNear(const PolylinePoints& points, const std::vector<double>& stations, double near) {
    EXPECT_THAT(StationsOf(points), testing::Pointwise(testing::DoubleNear(near), stations));
}

void ExpectOn(const Polyline2D& polyline, const Polyline2D::PolylinePoint& place) {
    const auto there = At(polyline, place.station);
    EXPECT_THAT(there.point, IsNear(place.point, 1e-7));
    EXPECT_THAT(there.tangent, IsNear(place.tangent, 1e-7));
    EXPECT_EQ(there.elementIndex, place.elementIndex);
}

TEST(IntersectionPolylinesTest, AlignmentsCrossWhereTheirChordsDo) {
    RandomNumbers random(601);
    std::size_t total = 0;
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const P origin = surveyOrigins[round % 2];
        const Polyline2D a = RandomRoad(random, 12, origin);
        const Polyline2D b = RandomRoad(random, 15, origin + Vec2D(random(-40, 40), random(-40, 40)));
        PolylinePoints onA, onB, alone, swapped;
        const R result = I::PolylinePolyline(a, b, onA, onB, kTolerances);
        EXPECT_EQ(result, onA.empty() ? R::NoIntersection : R::Intersecting);
        EXPECT_EQ(I::PolylinePolyline(a, b, alone, 1e-4), static_cast<int>(onA.size()));
        EXPECT_EQ(I::PolylinePolyline(b, a, swapped, kTolerances), result);
        std::vector<P> chordPoints;
        I::LineStringLineString(Chords(a), Chords(b), chordPoints, 1e-9);
        ASSERT_EQ(onA.size(), chordPoints.size());
        ASSERT_EQ(onB.size(), onA.size());
        for (std::size_t i = 0; i < onA.size(); ++i) {
            ExpectOn(a, onA[i]);
            ExpectOn(b, onB[i]);
            EXPECT_THAT(onA[i].point, IsNear(chordPoints[i], 5e-3));
            EXPECT_TRUE(i == 0 || onA[i].station >= onA[i - 1].station);
        }
        std::vector<double> fromB = StationsOf(onB);
        std::sort(fromB.begin(), fromB.end());
        ExpectNear(swapped, fromB, 1e-7);
        total += onA.size();

        // Single elements cross as polylines of one.
        const auto& line = dynamic_cast<const Line2D&>(b.GetElementAtIndex(0));
        const auto& clothoid = dynamic_cast<const Clothoid&>(b.GetElementAtIndex(1));
        const auto& arc = dynamic_cast<const Arc2D&>(b.GetElementAtIndex(2));
        const auto check = [&](const IPolyline2DElement& one, const auto& element, double ahead, const auto& meet) {
            PolylinePoints expected, onOne, found, counted;
            ElementPoints onElement;
            I::PolylinePolyline(a, ChainOf(one), expected, onOne, kTolerances);
            meet(a, element, found, onElement, kTolerances);
            EXPECT_EQ(expected.size(), meet(a, element, counted, 1e-4));
            ASSERT_EQ(onElement.size(), found.size());
            ExpectNear(found, StationsOf(expected), 1e-8);
            for (std::size_t i = 0; i < found.size(); ++i) {
                ExpectOn(a, found[i]);
                EXPECT_NEAR(onElement[i].station + ahead, onOne[i].station, 1e-8);
                EXPECT_THAT(onElement[i].tangent, IsNear(onOne[i].tangent, 1e-8));
            }
        };
        const Vec2D along = line.GetDirection() * 1e4;
        const Line2D far(line.GetStart() - along, along * 2.0);
        check(line, line, 0.0, [](auto&&... with) { return I::PolylineLineSegment(with...); });
        check(clothoid, clothoid, 0.0, [](auto&&... with) { return I::PolylineClothoid(with...); });
        check(arc, arc, 0.0, [](auto&&... with) { return I::PolylineArc(with...); });
        check(far, line, 1e4, [](auto&&... with) { return I::PolylineLine(with...); });
    }
    EXPECT_GT(total, 20U);
}

// Across every joint, along some elements, and the whole of it, taken apart differently.
TEST(IntersectionPolylinesTest, JointsRunsAndNests) {
    RandomNumbers random(603);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const Polyline2D road = RandomRoad(random, 12, surveyOrigins[round % 2]);
        Polyline2D nested = ChainOf(Polyline2D()), part;
        double joint = 0.0, joints[12];
        for (unsigned int i = 0; i < 12; ++i) {
            const auto at = At(road, joint);
            const Vec2D across = at.tangent.GetNormalVector(true) * 0.5 + at.tangent * random(-0.6, 0.6);
            PolylinePoints crossing, onCrossing;
            const Polyline2D cut = ChainOf(Line2D(at.point - across, at.point), Line2D(at.point, at.point + across));
            EXPECT_EQ(I::PolylinePolyline(road, cut, crossing, onCrossing, kTolerances), R::Intersecting);
            for (PolylinePoints* const points : {&crossing, &onCrossing}) {
                std::erase_if(*points, [&](const auto& p) { return p.point.Distance(at.point) > 0.01; });
            }
            ASSERT_EQ(crossing.size(), 1U);
            ExpectOn(road, crossing.front());
            EXPECT_NEAR(crossing.front().station, joint, 1e-6);
            EXPECT_NEAR(onCrossing.front().station, across.Length(), 1e-6);
            joints[i] = joint;
            if (i >= 3 && i < 8) part.AppendElement(road.GetElementAtIndex(i));
            nested.AppendElement(road.GetElementAtIndex(i));
            joint += road.GetElementAtIndex(i).GetLength();
        }
        part.Reverse();
        PolylinePoints run, same, reversed;
        I::PolylinePolyline(road, part, run, kTolerances);
        for (const int i : {3, 5, 8}) {
            const auto times =
                testing::Contains(testing::DoubleNear(joints[i], 2e-4)).Times(testing::Eq(i == 5 ? 0 : 1));
            EXPECT_THAT(StationsOf(run), times);
        }
        EXPECT_EQ(I::PolylinePolyline(road, nested, same, kTolerances), R::Coincident);
        nested.Reverse();
        EXPECT_EQ(I::PolylinePolyline(nested, road, reversed, kTolerances), R::Coincident);
        for (const PolylinePoints& ends : {same, reversed}) {  // and where it crosses itself
            EXPECT_NEAR(ends.front().station, 0.0, 1e-6);
            EXPECT_NEAR(ends.back().station, road.GetLength(), 1e-6);
        }
    }
}

TEST(IntersectionPolylinesTest, Results) {
    const Polyline2D road = ChainOf(Line2D(P(0, 0), P(50, 0)), Line2D(P(50, 0), P(100, 0)));
    const auto arc = [](double x, double turn) { return Arc2D(P(x, 0), P(50, 0), Angle(turn)); };
    const Polyline2D ring = ChainOf(arc(60, 2.0 * kPi)), halves = ChainOf(arc(60, kPi), arc(40, kPi)),
                     clockwise = ChainOf(arc(60, -kPi), arc(40, -kPi));
    LineString2D dense;
    for (int i = 0; i <= 1000; ++i) dense.AppendPoint(P(20, 0.02 - 4e-5 * i));
    PolylinePoints points;
    EXPECT_EQ(I::PolylinePolyline(road, Polyline2D(), points, kTolerances), R::Degenerate);
    EXPECT_EQ(I::PolylinePolyline(road, ring, points, kTolerances), R::Intersecting);
    EXPECT_EQ(I::PolylinePolyline(road, ChainOf(dense), points, kTolerances), R::Intersecting);
    ExpectNear(std::exchange(points, {}), {40, 60, 20}, 1e-4);
    const Line2D along(P(70, 0), P(120, 0));
    EXPECT_EQ(I::PolylineLine(road, along, points, kTolerances), R::Coincident);
    EXPECT_EQ(I::PolylineLine(road, Line2D(P(7, 0), P(7, 0)), points, kTolerances), R::Degenerate);
    EXPECT_EQ(I::PolylineLineSegment(road, Line2D(P(kNan, 0), P(1, 0)), points, kTolerances), R::Degenerate);
    EXPECT_EQ(I::PolylineLineSegment(road, along, points, kTolerances), R::Intersecting);
    ExpectNear(points, {0, 100, 70, 100}, 1e-9);
    EXPECT_EQ(points[2].elementIndex, 1U);
    // So flat a crossing leads into the joint behind it: they are one.
    const Polyline2D flat = ChainOf(Line2D(P(3, 2), P(0, 2)));
    Polyline2D bend = ChainOf(Arc2D(P(1, 0), P(1, 1.00003), Angle(kPi)), Line2D(P(1, 2.00006), P(1, 4)));
    for (int reversed = 0; reversed < 2; ++reversed, bend.Reverse()) {
        PolylinePoints crossing;
        EXPECT_EQ(I::PolylinePolyline(flat, bend, crossing, kTolerances), R::Intersecting);
        EXPECT_EQ(crossing.size(), 1U);
        EXPECT_EQ(I::PolylinePolyline(bend, flat, crossing, kTolerances), R::Intersecting);
        EXPECT_EQ(crossing.size(), 2U);
    }
    for (const double seam : {0.5, 2.0, 3.5, 6.0}) {
        const Arc2D full(P(50, 0) + (P(Angle(seam), 10.0) - P()), P(50, 0), Angle(2.0 * kPi));
        for (const Polyline2D* const round : {&ring, &halves, &clockwise}) {
            PolylinePoints once;
            EXPECT_EQ(I::PolylineArc(*round, full, once, kTolerances), R::Coincident) << seam;
            ExpectNear(once, {0}, 1e-9);  // whatever the seams
        }
        // A segment through the seam meets the circle once more; behind a line the chain passes the seam twice.
        for (const double turn : {-1.5, -0.6, 0.1, 0.9}) {
            const P start = full.GetStart();
            const Vec2D ahead = P(Angle(seam + kPi + turn), 1.0) - P();
            const Polyline2D behind = ChainOf(Line2D(start + full.GetStartTangent() * -4, start), full);
            PolylinePoints found;
            const Line2D cut(start - ahead * 3, start + ahead * 25);
            EXPECT_EQ(I::PolylineLineSegment(ChainOf(full), cut, found, 1e-4), 2) << seam << ' ' << turn;
            EXPECT_EQ(I::PolylineLineSegment(behind, cut, found, 1e-4), 3) << seam << ' ' << turn;
            const double again = 10 * (kPi + 2 * turn);
            ExpectNear(found, {0, again, 4, 4 + again, 4 + 20 * kPi}, 1e-7);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
