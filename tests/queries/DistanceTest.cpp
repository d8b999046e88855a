#include "queries/QueryNames.h"

namespace Kalvio::Math {
namespace {

TEST(DistanceTest, PointsBesideASegment) {
    const std::tuple<const char*, P, double, bool, bool, double, P> rows[] = {
        // on the line, on the segment; the distance from the line, and the nearest point of the segment
        {"on it", P(1, 0), 0.25, true, true, 0.0, P(1, 0)},
        {"exactly the tolerance to the left", P(1, 0.25), 0.25, true, true, -0.25, P(1, 0)},
        {"to the right, the sign of the tolerance ignored", P(1, -0.25), -0.25, true, true, 0.25, P(1, 0)},
        {"left", P(1, 1), 0.25, false, false, -1.0, P(1, 0)},
        {"right", P(1, -1), 0.25, false, false, 1.0, P(1, 0)},
        {"beyond the end, left", P(3, 1), 0.25, false, false, -1.0, P(2, 0)},
        {"beyond the start, right", P(-1, -1), 0.25, false, false, 1.0, P(0, 0)},
        {"before the start", P(-0.5, 0), 0.25, true, false, 0.0, P(0, 0)},
        {"exactly the tolerance beyond the end", P(2.25, 0), 0.25, true, true, 0.0, P(2, 0)},
        {"the same, off it", P(2.25, -1), 0.25, false, false, 1.0, P(2, 0)},
        {"beyond the end by more", P(2.375, 0), 0.25, true, false, 0.0, P(2, 0)},
    };
    for (const Vec2D& shift : {Vec2D(), Vec2D(524288, 6291456)}) {  // sums with the rows stay exact
        const Line2D line(P(0, 0) + shift, P(2, 0) + shift);
        const Line3D level(Q(line.GetStart(), 1.0), Q(line.GetEnd(), 1.0));
        for (const auto& [why, place, tolerance, onLine, onSegment, fromLine, nearest] : rows) {
            SCOPED_TRACE(why);
            const P p = place + shift;
            EXPECT_EQ(I::PointOnLine(p, line, tolerance), onLine);
            EXPECT_EQ(line.IsPointOnInfiniteLine(p, tolerance), onLine);
            EXPECT_EQ(I::PointOnLineSegment(p, line, tolerance), onSegment);
            EXPECT_EQ(line.IsPointOnGeometry(p, Tolerances(std::abs(tolerance), 1e-10)), onSegment);
            EXPECT_EQ(I::PointOnLineSegment(p, level, tolerance), onSegment);
            EXPECT_EQ(D::PointToLine(p, line), fromLine);
            EXPECT_EQ(D::PointToLine(p, line.GetEnd(), line.GetStart()), -fromLine);
            const bool isFoot = place.GetX() >= -0.25 && place.GetX() <= 2.25;
            const double distance = isFoot ? fromLine : std::copysign(place.Distance(nearest), fromLine);
            EXPECT_NEAR(D::PointToLineSegment(line, p, tolerance), distance, 1e-12);
            const Q high(p, 5.0);
            EXPECT_NEAR(D::PointToLineSegment(level, high, tolerance), std::hypot(distance, 4.0), 1e-12);
            const P inPlan = J::NearestPointOnLineSegment(p, line, tolerance);
            EXPECT_THAT(inPlan, IsNear(nearest + shift, 1e-9));
            EXPECT_THAT(J::NearestPointOnLineSegment(high, level, tolerance), IsNear(Q(inPlan, 1.0), 1e-9));
            P foot(7, 7), always;
            EXPECT_EQ(J::NormalPointOnLineSegment(p, line, foot, tolerance), isFoot);
            EXPECT_EQ(J::NormalPointOnLineSegment2(p, line, always, tolerance), isFoot);
            EXPECT_THAT(always, IsNear(P(place.GetX(), 0) + shift, 1e-9));
            EXPECT_THAT(foot, IsNear(isFoot ? always : P(7, 7), 1e-9));
        }
        EXPECT_FALSE(I::PointOnLine(P(kNan, 0), line, 0.25) || I::PointOnLineSegment(P(kNan, 0), line, 0.25));
    }
    EXPECT_EQ(D::PointToLineSegment(Line2D(P(1, 1), Vec2D()), P(4, 5), 1.0), 5.0);
    const LineString2D ray{P(1, 0), P(kInfinity, 0)};
    EXPECT_EQ(J::NearestPointOnLineString(P(0, 0), ray, 0.0).point, P(1, 0)) << "its finite end";
}

TEST(DistanceTest, SignsAndGaps) {
    using PlaneOf = ProjectionPlane;
    const Line2D east(P(0, 0), P(2, 0)), point(P(1, 1), P(1, 1));
    const Line3D rising(Q(0, 0, 0), Q(3, 4, 5));
    const LineString2D remote{P(-kInfinity, 5), P(kInfinity, kInfinity)};
    const LineString3D climbing{Q(0, 0, 0), Q(1, 0, 0), Q(1, 0, 4)};
    const Q high(4, -3, 9), low(1, 1, 7);
    const Polygon2D square = MakePolygon("-1 -1 1 -1 1 1 -1 1 / -.5 -.5 .5 -.5 .5 .5 -.5 .5");
    const Circle2D circle(P(0, 0), 5.0);
    const BoundingBox2D box(P(0, 0), P(2, 2));
    const BoundingBox3D unit(Q(), Q(1, 1, 1));
    const double largest = std::numeric_limits<double>::max();
    const std::tuple<const char*, double, double> rows[] = {
        {"left of the line", D::PointToLine(P(0, 1), east), -1.0},
        {"right of the line, other order", D::LineToPoint(east, P(0, -1)), 1.0},
        {"three points, other order", D::LineToPoint(P(0, 0), P(0, 2), P(3, 1)), 3.0},
        {"six coordinates", D::PointToLine(-3, 1, 0, 0, 0, 2), -3.0},
        {"six coordinates, other order", D::LineToPoint(0, 0, 0, 2, -3, 1), -3.0},
        {"digits beyond a double", D::PointToLine(0x1p29L, 0.5L + 0x1p-60L, 0, 0, 0x1p30L, 1), -0x1p-60},
        {"a line of zero length", D::PointToLine(P(4, 5), point), 5.0},
        {"in space, no sign", D::LineToPoint(rising, high), std::sqrt(65.5)},
        {"in XY", D::PointToLine(high, rising, PlaneOf::XY), 5.0},
        {"in YZ", D::LineToPoint(rising, Q(9, 5, 0), PlaneOf::YZ), 25.0 / std::sqrt(41.0)},
        {"in plan, no sign", D::PointToLine2D(Q(1, 1, 8), Q(), Q(9, 0, 5)), 1.0},
        {"points in space", D::PointToPoint(high, low), std::sqrt(29.0)},
        {"points in XZ", D::PointToPoint(high, low, PlaneOf::XZ), std::sqrt(13.0)},
        {"points in plan", D::PointToPoint2D(high, low), 5.0},
        {"squares", D::PointToPointSquare(high, low) + D::PointToPointSquare(P(1, 2), P(4, 6)), 54.0},
        {"squares in YZ", D::PointToPointSquare(high, low, PlaneOf::YZ), 20.0},
        {"measures do not count", D::PointToPointSquare(Point2DM(0, 0, 9), Point2DM(3, 4, 0)), 25.0},
        {"other dimensions", D::PointToPointSquare(PointND(std::vector{1.0, 2.0, 2.0}), PointND(3U)), 9.0},
        {"four and six coordinates", D::PointToPoint(0, 0, 3, 4) + D::PointToPointSquare(1, 1, 1, 2, 3, 3), 14.0},
        {"a difference no double holds", D::PointToPoint(1.0L, 0, 1.0L + 0x1p-60L, 0), 0x1p-60},
        {"inside the outer ring, in the hole", D::PointToPolygon(P(0, 0), square), -1.0},
        {"on the border", D::PointToPolygon(P(1, 0.5), square), 0.0},
        {"outside, at the closing edge", D::PointToPolygon(P(-3, 0), square), 2.0},
        {"an empty polygon", D::PointToPolygon(P(0, 0), Polygon2D()), largest},
        {"a string of no segment", D::PointToLineString(LineString2D{P(4, 5)}, P(1, 1), 1e-4), 5.0},
        {"of no point", D::PointToLineString(LineString2D(), P(1, 1), 1e-4), largest},
        {"without finite points: a zero record", J::NearestPointOnLineString(P(1, 1), remote, 1e-4).distance, 0.0},
        {"in space, beyond the end", D::PointToLineString(climbing, Q(1, 3, 8), 1e-4), 5.0},
        {"inside the circle", D::PointToCircle(P(3, 0), circle) + D::CircleToPoint(circle, P(0, 7)), 4.0},
        {"circles apart", D::CircleToCircle(circle, Circle2D(P(0, 8), 1.0)), 2.0},
        {"circles that meet", D::CircleToCircle(circle, Circle2D(P(0, 8), 4.0)), 0.0},
        {"a circle inside", D::CircleToCircle(circle, Circle2D(P(0, 1), 2.0)), 2.0},
        {"a line beside", D::LineToCircle(Line2D(P(9, 7), P(8, 7)), circle), 2.0},
        {"a line through", D::LineToCircle(Line2D(P(9, 1), P(8, 1)), circle), 0.0},
        {"a line that is a point inside", D::LineToCircle(Line2D(P(3, 0), P(3, 0)), circle), 2.0},
        {"below a plane", D::PointToPlane(Q(9, 9, -1), Plane3D(0, 0, 2, -4)), 3.0},
        {"a degenerate plane", D::PlaneToPoint(Plane3D(), high), largest},
        {"boxes that overlap on x", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(1, 5), P(9, 6))), 3.0},
        {"below, over the corner", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(-5, -6), P(-3, -4))), 5.0},
        {"a box inside", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(0.5, 0.5), P(1, 1))), 0.0},
        {"a point over a corner", D::PointToBoundingBox(P(5, -4), box), 5.0},
        {"a box in space", D::PointToBoundingBox(low, unit), 6.0},
        {"boxes in space", D::BoundingBoxToBoundingBox(unit, BoundingBox3D(Q(2, 3, 3), Q(4, 4, 4))), 3.0},
    };
    for (const auto& [why, value, expected] : rows) EXPECT_NEAR(value, expected, 1e-14 * std::abs(expected)) << why;
}

TEST(DistanceTest, TheNearestSegmentIsThatOfATrialOfAll) {
    RandomNumbers random(20);
    for (int round = 0; round < 400; ++round) {
        const Vec2D shift = surveyOrigins[round % 2] - P();
        const double grid = round % 3 == 0 ? 1.0 : 1e-3;  // on the coarse grid many are equally near
        const auto coordinate = [&] { return grid * std::floor(random(-8.0, 8.0) / grid); };
        LineString2D plan;
        LineString3D space;
        // Seen from far away the distance has fewer digits than a tolerance; the string then begins at its nearest.
        const double run = round % 4 == 1 ? 16.0 : 0.0;
        for (int i = 0; i < (round % 7 == 0 ? 90 : 30); ++i) {
            plan.AppendPoint(P(coordinate() + run * i, coordinate() + run * i) + shift);
            space.AppendPoint(Q(plan.GetPoints().back(), coordinate() + run * i));
        }
        const Q p(P(coordinate(), coordinate()) + (run > 0.0 ? Vec2D() : shift), coordinate() - run);
        const double tolerance = std::array{0.5, 1e-4, 1e-10, 0.0, 1e-4}[static_cast<std::size_t>(round % 5)];
        const auto check = [&](const auto& string, const auto& query, const auto& nearest, unsigned int segment) {
            std::vector<double> onSegment, all;
            for (unsigned int i = 0; i < string.GetNrOfElements(); ++i) {
                const auto& line = string.GetElementAtIndex(i);
                onSegment.push_back(std::abs(D::PointToLineSegment(line, query, 0.0)));
                all.push_back(std::abs(D::PointToLineSegment(line, query, tolerance)));
            }
            unsigned int closest = 77;
            EXPECT_TRUE(string.GetClosestSegment(query, closest) && closest == segment);
            EXPECT_EQ(segment, std::min_element(onSegment.begin(), onSegment.end()) - onSegment.begin());
            const auto& line = string.GetElementAtIndex(segment);
            EXPECT_THAT(nearest, IsNear(J::NearestPointOnLineSegment(query, line, tolerance), 0.0));
            EXPECT_EQ(D::PointToLineString(string, query, tolerance), *std::min_element(all.begin(), all.end()));
        };
        const auto inPlan = J::NearestPointOnLineString(p.GetPoint2D(), plan, tolerance);
        check(plan, p.GetPoint2D(), inPlan.point, inPlan.elementIndex);
        std::map<double, std::uint64_t> firsts;  // those furthest to the left come first, once for each distance
        for (unsigned int i = 0; i < plan.GetNrOfElements(); ++i) {
            firsts.emplace(D::PointToLineSegment(plan.GetElementAtIndex(i), p.GetPoint2D(), tolerance), i);
        }
        std::vector<GeometryDistancePair<P>> listed(1);
        ASSERT_EQ(J::NearestPointsOnLineString(p.GetPoint2D(), plan, listed, tolerance), firsts.size() + 1);
        for (std::size_t at = 1; const auto& [distance, i] : firsts) {
            const auto& line = plan.GetElementAtIndex(static_cast<unsigned int>(i));
            EXPECT_TRUE(listed[at].index == i && listed[at].distance == distance) << "appended";
            EXPECT_EQ(listed[at++].geometry, J::NearestPointOnLineSegment(p.GetPoint2D(), line, tolerance));
        }
        unsigned int segment = 0;
        const Q inSpace = J::NearestPointOnLineString(p, space, segment, tolerance);
        check(space, p, inSpace, segment);
    }
}

TEST(DistanceTest, ThePolygonGapIsThatOfATrialOfAllVertices) {
    RandomNumbers random(24);
    int apart = 0, meeting = 0;
    for (int round = 0; round < 300; ++round) {
        const P origin = surveyOrigins[round % 2];
        const auto star = [&](double spread) {
            const P center = origin + Vec2D(random(-spread, spread), random(-spread, spread));
            Polygon2D polygon(RandomStar(random, center, random(0.5, 20.0), static_cast<int>(1 + random() % 60)));
            if (round % 3 == 0) polygon.Close();
            return polygon;
        };
        const Polygon2D a = star(10.0), b = star(40.0);
        double expected = kInfinity;
        for (const auto& [of, to] : {std::pair(&a, &b), std::pair(&b, &a)}) {
            for (const P& p : of->GetPoints()) expected = std::min(expected, D::PointToPolygon(p, *to));
        }
        std::vector<P> common;
        const double tolerance = round % 7 == 0 ? 3.0 : 1e-4;
        const auto result = Intersection::PolygonPolygon(a, b, common, Tolerances(tolerance, 1e-10));
        if (result == IntersectionResult::Intersecting || expected < tolerance) expected = 0.0;
        (expected > 0.0 ? apart : meeting) += 1;
        EXPECT_EQ(D::PolygonToPolygon(a, b, tolerance), expected);
        EXPECT_EQ(D::PolygonToPolygon(b, a, tolerance), expected);
    }
    EXPECT_GT(std::min(apart, meeting), 20);
    EXPECT_EQ(D::PolygonToPolygon(Polygon2D(), Polygon2D(), 1e-4), std::numeric_limits<double>::max());
    const Polygon2D frame = MakePolygon("0 0 9 0 9 9 0 9 / 2 2 7 2 7 7 2 7");
    EXPECT_EQ(D::PolygonToPolygon(MakePolygon("4 4 5 4 5 5"), frame, 1e-4), 0.0) << "holes play no part";
}

}  // namespace
}  // namespace Kalvio::Math
