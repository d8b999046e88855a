#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/ElementChecks.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using R = IntersectionResult;
using P = Point2D;
using PolylinePoints = std::vector<Polyline2D::PolylinePoint>;
using ElementPoints = std::vector<IPolyline2DElement::PolylineElementPoint>;

// Lines, clothoids and arcs that join smoothly, with a line string now and then.
Polyline2D Alignment(RandomNumbers& random, P start, int count) {
    Polyline2D alignment;
    const double heading = random(0.0, 2.0 * kPi);
    Vec2D along(std::cos(heading), std::sin(heading));
    for (int i = 0; i < count; ++i) {
        IPolyline2DElement* element = nullptr;
        const double radius = (random(0, 1) < 0.5 ? -1.0 : 1.0) * random(30.0, 200.0);
        if (i % 4 == 0) {
            element = new Line2D(start, along * random(10, 120));
        } else if (i % 4 == 1) {
            element = new Clothoid(0.0, radius, std::abs(radius) * random(0.4, 0.9), start, along);
        } else if (i % 4 == 2) {
            element = new Arc2D(start, start + along.GetNormalVector(true) * radius,
                                Angle(random(0.2, 4.0) * (radius > 0 ? 1 : -1)));
        } else {
            const P middle = start + along * random(5, 20);
            element =
                new LineString2D{start, middle, middle + along * 10 + along.GetNormalVector(true) * random(-9, 9)};
        }
        alignment.AppendElement(element);
        const auto end = At(alignment, alignment.GetLength());
        start = end.point;
        along = end.tangent;
    }
    return alignment;
}

LineString2D Chords(const Polyline2D& polyline, double height) {
    LineString2D chords;
    EXPECT_TRUE(polyline.MakeLineStringUsingHeight(0.0, polyline.GetLength(), chords, height, 1e-10));
    return chords;
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
        const Polyline2D a = Alignment(random, origin, 12);
        const Polyline2D b = Alignment(random, origin + Vec2D(random(-40, 40), random(-40, 40)), 15);
        PolylinePoints onA, onB, alone, swapped;
        const R result = Intersection::PolylinePolyline(a, b, onA, onB, kTolerances);
        EXPECT_EQ(result, onA.empty() ? R::NoIntersection : R::Intersecting);
        EXPECT_EQ(Intersection::PolylinePolyline(a, b, alone, 1e-4), static_cast<int>(onA.size()));
        EXPECT_EQ(Intersection::PolylinePolyline(b, a, swapped, kTolerances), result);
        std::vector<P> chordPoints;
        Intersection::LineStringLineString(Chords(a, 1e-6), Chords(b, 1e-6), chordPoints, 1e-9);
        ASSERT_EQ(onA.size(), chordPoints.size());
        ASSERT_EQ(onB.size(), onA.size());
        ASSERT_EQ(swapped.size(), onA.size());
        std::vector<std::pair<double, double>> fromB;
        for (std::size_t i = 0; i < onA.size(); ++i) {
            ExpectOn(a, onA[i]);
            ExpectOn(b, onB[i]);
            EXPECT_THAT(onA[i].point, IsNear(chordPoints[i], 1e-3));
            EXPECT_TRUE(i == 0 || onA[i].station >= onA[i - 1].station);
            fromB.emplace_back(onB[i].station, onA[i].station);
        }
        std::sort(fromB.begin(), fromB.end());
        for (std::size_t i = 0; i < swapped.size(); ++i) EXPECT_NEAR(swapped[i].station, fromB[i].first, 1e-7);
        total += onA.size();
    }
    EXPECT_GT(total, 20U);
}

TEST(IntersectionPolylinesTest, SingleElementsCrossAsPolylinesOfOne) {
    RandomNumbers random(602);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const P origin = surveyOrigins[round % 2];
        const Polyline2D road = Alignment(random, origin, 12);
        const Polyline2D other = Alignment(random, origin + Vec2D(random(-60, 60), random(-60, 60)), 3);
        const auto& line = static_cast<const Line2D&>(other.GetElementAtIndex(0));
        const auto& clothoid = static_cast<const Clothoid&>(other.GetElementAtIndex(1));
        const auto& arc = static_cast<const Arc2D&>(other.GetElementAtIndex(2));
        const auto check = [&](const IPolyline2DElement& element, const PolylinePoints& found,
                               const ElementPoints& onElement) {
            Polyline2D one;
            one.AppendElement(static_cast<IPolyline2DElement*>(element.Clone()));
            PolylinePoints expected, onOne;
            Intersection::PolylinePolyline(road, one, expected, onOne, kTolerances);
            ASSERT_EQ(found.size(), expected.size());
            ASSERT_EQ(onElement.size(), expected.size());
            for (std::size_t i = 0; i < found.size(); ++i) {
                ExpectOn(road, found[i]);
                EXPECT_THAT(found[i].point, IsNear(expected[i].point, 1e-8));
                EXPECT_NEAR(onElement[i].station, onOne[i].station, 1e-8);
                EXPECT_THAT(onElement[i].tangent, IsNear(onOne[i].tangent, 1e-8));
            }
        };
        PolylinePoints found[4];
        ElementPoints on[4];
        Intersection::PolylineLineSegment(road, line, found[0], on[0], kTolerances);
        Intersection::PolylineClothoid(road, clothoid, found[1], on[1], kTolerances);
        Intersection::PolylineArc(road, arc, found[2], on[2], kTolerances);
        Intersection::PolylineLine(road, line, found[3], on[3], kTolerances);
        check(line, found[0], on[0]);
        check(clothoid, found[1], on[1]);
        check(arc, found[2], on[2]);
        const Vec2D along = line.GetDirection();
        for (auto& point : on[3]) point.station += 1e4;
        check(Line2D(line.GetStart() - along * 1e4, along * 2e4), found[3], on[3]);
        PolylinePoints counted;
        EXPECT_EQ(Intersection::PolylineLine(road, line, counted, 1e-4), static_cast<int>(on[3].size()));
        EXPECT_EQ(Intersection::PolylineArc(road, arc, counted, 1e-4), static_cast<int>(on[2].size()));
        EXPECT_EQ(Intersection::PolylineClothoid(road, clothoid, counted, 1e-4), static_cast<int>(on[1].size()));
        EXPECT_EQ(Intersection::PolylineLineSegment(road, line, counted, 1e-4), static_cast<int>(on[0].size()));
    }
}

// Across every joint, along some elements, and the whole of it, taken apart differently.
TEST(IntersectionPolylinesTest, JointsRunsAndNests) {
    RandomNumbers random(603);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const Polyline2D road = Alignment(random, surveyOrigins[round % 2], 12);
        Polyline2D nested, part;
        nested.AppendElement(new Polyline2D);
        const auto clone = [&](unsigned int i) {
            return static_cast<IPolyline2DElement*>(road.GetElementAtIndex(i).Clone());
        };
        double joint = 0.0, from = 0.0, to = 0.0;
        for (unsigned int i = 0; i < 12; ++i) {
            const auto at = At(road, joint);
            const Vec2D across = at.tangent.GetNormalVector(true) * 0.5 + at.tangent * random(-0.6, 0.6);
            PolylinePoints crossing, onCrossing;
            Polyline2D cut;
            cut.AppendElement(new Line2D(at.point - across, at.point));
            cut.AppendElement(new Line2D(at.point, at.point + across));
            EXPECT_EQ(Intersection::PolylinePolyline(road, cut, crossing, onCrossing, kTolerances), R::Intersecting);
            const auto here = std::find_if(crossing.begin(), crossing.end(),
                                           [&](const auto& p) { return std::abs(p.station - joint) < 1e-6; });
            ASSERT_NE(here, crossing.end());
            ExpectOn(road, *here);
            EXPECT_EQ(std::count_if(crossing.begin(), crossing.end(),
                                    [&](const auto& p) { return p.point.Distance(at.point) < 0.01; }),
                      1);
            EXPECT_NEAR(onCrossing[static_cast<std::size_t>(here - crossing.begin())].station, across.Length(), 1e-6);
            if (i == 3) from = joint;
            if (i >= 3 && i < 8) part.AppendElement(clone(i));
            joint += road.GetElementAtIndex(i).GetLength();
            if (i == 7) to = joint;
            nested.AppendElement(clone(i));
        }
        part.Reverse();
        PolylinePoints run, same, reversed;
        Intersection::PolylinePolyline(road, part, run, kTolerances);
        const auto isEnd = [&](const auto& p) {
            return std::abs(p.station - from) < 2e-4 || std::abs(p.station - to) < 2e-4;
        };
        EXPECT_EQ(std::count_if(run.begin(), run.end(), isEnd), 2);
        EXPECT_EQ(Intersection::PolylinePolyline(road, nested, same, kTolerances), R::Coincident);
        nested.Reverse();
        EXPECT_EQ(Intersection::PolylinePolyline(nested, road, reversed, kTolerances), R::Coincident);
        for (const PolylinePoints& ends : {same, reversed}) {
            ASSERT_GE(ends.size(), 2U);  // and where it crosses itself
            EXPECT_NEAR(ends.front().station, 0.0, 1e-6);
            EXPECT_NEAR(ends.back().station, road.GetLength(), 1e-6);
        }
    }
}

TEST(IntersectionPolylinesTest, Results) {
    Polyline2D empty, road, ring, dense;
    road.AppendElement(new Line2D(P(0, 0), P(50, 0)));
    road.AppendElement(new Line2D(P(50, 0), P(100, 0)));
    ring.AppendElement(new Arc2D(P(60, 0), P(50, 0), Angle(2.0 * kPi)));
    auto* const fine = new LineString2D;
    for (int i = 0; i <= 1000; ++i) fine->AppendPoint(P(20, 0.02 - 4e-5 * i));
    dense.AppendElement(fine);
    const std::tuple<const char*, const Polyline2D*, R, std::vector<double>> rows[] = {
        {"no elements", &empty, R::Degenerate, {}},
        {"a circle, from its seam", &ring, R::Intersecting, {40, 60}},
        {"segments shorter than the tolerance", &dense, R::Intersecting, {20}},
        {"itself", &road, R::Coincident, {0, 100}},
    };
    for (const auto& [why, other, result, stations] : rows) {
        PolylinePoints found;
        EXPECT_EQ(Intersection::PolylinePolyline(road, *other, found, kTolerances), result) << why;
        ASSERT_EQ(found.size(), stations.size()) << why;
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i].station, stations[i], 1e-4) << why;
    }
    PolylinePoints points;
    EXPECT_EQ(Intersection::PolylineLine(road, Line2D(P(7, 0), P(5, 0)), points, kTolerances), R::Coincident);
    EXPECT_EQ(Intersection::PolylineLine(road, Line2D(P(7, 0), P(7, 0)), points, kTolerances), R::Degenerate);
    EXPECT_EQ(Intersection::PolylineLineSegment(road, Line2D(P(70, 0), P(120, 0)), points, kTolerances),
              R::Intersecting);
    ASSERT_EQ(points.size(), 4U);
    EXPECT_NEAR(points[2].station, 70.0, 1e-9);
    EXPECT_EQ(points[2].elementIndex, 1U);
    EXPECT_EQ(Intersection::PolylineLineSegment(road, Line2D(P(kNan, 0), P(1, 0)), points, kTolerances), R::Degenerate);
    const Polyline2D* const ringAgain = &ring;
    EXPECT_EQ(Intersection::PolylinePolyline(ring, *ringAgain, points, kTolerances), R::Coincident);
    EXPECT_EQ(points.size(), 5U) << "a run all around has its first point";
}

}  // namespace
}  // namespace Kalvio::Math
