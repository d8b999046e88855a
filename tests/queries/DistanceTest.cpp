#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/PointND.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/Projection.h"
#include "support/Rings.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(DistanceTest, PointToLineSegmentHasTheSideOfTheLineAndTheNearestPointOfTheSegment) {
    const double tolerance = 0.25;
    const std::tuple<const char*, Point2D, double, bool, Point2D> rows[] = {
        {"left", Point2D(1, 1), -1.0, true, Point2D(1, 0)},
        {"right", Point2D(1, -1), 1.0, true, Point2D(1, 0)},
        {"beyond the end, left", Point2D(3, 1), -std::sqrt(2.0), false, Point2D(2, 0)},
        {"beyond the start, right", Point2D(-1, -1), std::sqrt(2.0), false, Point2D(0, 0)},
        {"exactly the tolerance beyond the end", Point2D(2.25, -1), 1.0, true, Point2D(2, 0)},
        {"beyond the end by more", Point2D(2.375, 0), 0.375, false, Point2D(2, 0)},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - Point2D()}) {
        const Line2D line(Point2D(0, 0) + shift, Point2D(2, 0) + shift);
        const Line3D level(Point3D(line.GetStart(), 1.0), Point3D(line.GetEnd(), 1.0));
        for (const auto& [why, place, distance, isFoot, nearest] : rows) {
            SCOPED_TRACE(why);
            const Point2D p = place + shift;
            EXPECT_NEAR(Distance::PointToLineSegment(line, p, tolerance), distance, 1e-12);
            EXPECT_NEAR(Distance::PointToLineSegment(level, Point3D(p, 5.0), tolerance), std::hypot(distance, 4.0),
                        1e-12);
            EXPECT_THAT(Projection::NearestPointOnLineSegment(p, line, tolerance), IsNear(nearest + shift, 1e-9));
            EXPECT_THAT(Projection::NearestPointOnLineSegment(Point3D(p, 5.0), level, tolerance),
                        IsNear(Point3D(nearest + shift, 1.0), 1e-9));
            Point2D foot(7, 7), always;
            EXPECT_EQ(Projection::NormalPointOnLineSegment(p, line, foot, tolerance), isFoot);
            EXPECT_EQ(Projection::NormalPointOnLineSegment2(p, line, always, tolerance), isFoot);
            EXPECT_THAT(always, IsNear(Point2D(place.GetX(), 0) + shift, 1e-9));
            EXPECT_THAT(foot, IsNear(isFoot ? always : Point2D(7, 7), 1e-9));
        }
    }
    EXPECT_EQ(Distance::PointToLineSegment(Line2D(Point2D(1, 1), Vec2D()), Point2D(4, 5), 1.0), 5.0);
    const LineString2D ray{Point2D(1, 0), Point2D(kInfinity, 0)};
    EXPECT_EQ(Projection::NearestPointOnLineString(Point2D(0, 0), ray, 0.0).point, Point2D(1, 0)) << "its finite end";
}

TEST(DistanceTest, LineStringsInSpaceAndWithoutSegments) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Distance::PointToLineString(LineString2D(), Point2D(1, 1), 1e-4), std::numeric_limits<double>::max());
    EXPECT_EQ(Distance::PointToLineString(LineString2D{Point2D(4, 5)}, Point2D(1, 1), 1e-4), 5.0);
    const LineString2D remote{Point2D(-inf, 5), Point2D(inf, inf)};
    EXPECT_EQ(Projection::NearestPointOnLineString(Point2D(1, 1), remote, 1e-4).distance, 0.0) << "a zero record";
    unsigned int segment = 7;
    const LineString3D rising{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(1, 0, 4)};
    const Point3D nearest = Projection::NearestPointOnLineString(Point3D(2, 0, 3), rising, segment, 1e-4);
    EXPECT_THAT(nearest, IsNear(Point3D(1, 0, 3), 1e-15));
    EXPECT_EQ(segment, 1U);
    EXPECT_EQ(Distance::PointToLineString(rising, Point3D(1, 3, 8), 1e-4), 5.0);
}

TEST(DistanceTest, SignsAndGaps) {
    using D = Distance;
    using P = Point2D;
    using PlaneOf = ProjectionPlane;
    const Line2D east(P(0, 0), P(2, 0)), point(P(1, 1), P(1, 1));
    const Line3D rising(Point3D(0, 0, 0), Point3D(3, 4, 5));
    const Point3D high(4, -3, 9), low(1, 1, 7);
    const Polygon2D square = MakePolygon("-1 -1 1 -1 1 1 -1 1 / -.5 -.5 .5 -.5 .5 .5 -.5 .5");
    const Circle2D circle(P(0, 0), 5.0);
    const BoundingBox2D box(P(0, 0), P(2, 2));
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
        {"in YZ", D::LineToPoint(rising, Point3D(9, 5, 0), PlaneOf::YZ), 25.0 / std::sqrt(41.0)},
        {"in plan, no sign", D::PointToLine2D(Point3D(1, 1, 8), Point3D(), Point3D(9, 0, 5)), 1.0},
        {"beyond the end, left", D::PointToLineSegment(Line2D(P(0, 0), P(1, 0)), P(2, 1), 0.0), -std::sqrt(2.0)},
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
        {"inside the circle", D::PointToCircle(P(3, 0), circle) + D::CircleToPoint(circle, P(0, 7)), 4.0},
        {"circles apart", D::CircleToCircle(circle, Circle2D(P(0, 8), 1.0)), 2.0},
        {"circles that meet", D::CircleToCircle(circle, Circle2D(P(0, 8), 4.0)), 0.0},
        {"a circle inside", D::CircleToCircle(circle, Circle2D(P(0, 1), 2.0)), 2.0},
        {"a line beside", D::LineToCircle(Line2D(P(9, 7), P(8, 7)), circle), 2.0},
        {"a line through", D::LineToCircle(Line2D(P(9, 1), P(8, 1)), circle), 0.0},
        {"a line that is a point inside", D::LineToCircle(Line2D(P(3, 0), P(3, 0)), circle), 2.0},
        {"below a plane", D::PointToPlane(Point3D(9, 9, -1), Plane3D(0, 0, 2, -4)), 3.0},
        {"a degenerate plane", D::PlaneToPoint(Plane3D(), high), largest},
        {"boxes that overlap on x", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(1, 5), P(9, 6))), 3.0},
        {"below, over the corner", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(-5, -6), P(-3, -4))), 5.0},
        {"a box inside", D::BoundingBoxToBoundingBox(box, BoundingBox2D(P(0.5, 0.5), P(1, 1))), 0.0},
        {"a point over a corner", D::PointToBoundingBox(P(5, -4), box), 5.0},
        {"in space", D::PointToBoundingBox(low, BoundingBox3D(Point3D(), Point3D(2, 2, 2))), 5.0},
        {"boxes in space",
         D::BoundingBoxToBoundingBox(BoundingBox3D(Point3D(), Point3D(1, 1, 1)),
                                     BoundingBox3D(Point3D(2, 3, 3), Point3D(4, 4, 4))),
         3.0},
    };
    for (const auto& [why, value, expected] : rows) EXPECT_NEAR(value, expected, 1e-14 * std::abs(expected)) << why;
}

TEST(DistanceTest, TheNearestSegmentIsThatOfATrialOfAll) {
    RandomNumbers random(20);
    for (int round = 0; round < 400; ++round) {
        const Vec2D shift = surveyOrigins[round % 2] - Point2D();
        const double grid = round % 3 == 0 ? 1.0 : 1e-3;  // on the coarse grid many are equally near
        const auto coordinate = [&] { return grid * std::floor(random(-8.0, 8.0) / grid); };
        LineString2D plan;
        LineString3D space;
        // Seen from far away the distance has fewer digits than a tolerance; the string then begins at its nearest.
        const double run = round % 4 == 1 ? 16.0 : 0.0;
        for (int i = 0; i < (round % 7 == 0 ? 90 : 30); ++i) {
            plan.AppendPoint(Point2D(coordinate() + run * i, coordinate() + run * i) + shift);
            space.AppendPoint(Point3D(plan.GetPoints().back(), coordinate() + run * i));
        }
        const Point3D p(Point2D(coordinate(), coordinate()) + (run > 0.0 ? Vec2D() : shift), coordinate() - run);
        const double tolerance = std::array{0.5, 1e-4, 1e-10, 0.0, 1e-4}[static_cast<std::size_t>(round % 5)];
        const auto check = [&](const auto& string, const auto& query, const auto& nearest, unsigned int segment) {
            std::vector<double> onSegment, all;
            for (unsigned int i = 0; i < string.GetNrOfElements(); ++i) {
                const auto& line = string.GetElementAtIndex(i);
                onSegment.push_back(std::abs(Distance::PointToLineSegment(line, query, 0.0)));
                all.push_back(std::abs(Distance::PointToLineSegment(line, query, tolerance)));
            }
            EXPECT_EQ(segment, std::min_element(onSegment.begin(), onSegment.end()) - onSegment.begin());
            EXPECT_THAT(nearest, IsNear(Projection::NearestPointOnLineSegment(query, string.GetElementAtIndex(segment),
                                                                              tolerance),
                                        0.0));
            EXPECT_EQ(Distance::PointToLineString(string, query, tolerance), *std::min_element(all.begin(), all.end()));
        };
        const auto inPlan = Projection::NearestPointOnLineString(p.GetPoint2D(), plan, tolerance);
        check(plan, p.GetPoint2D(), inPlan.point, inPlan.elementIndex);
        unsigned int segment = 0;
        const Point3D inSpace = Projection::NearestPointOnLineString(p, space, segment, tolerance);
        check(space, p, inSpace, segment);
    }
}

TEST(DistanceTest, ThePolygonGapIsThatOfATrialOfAllVertices) {
    RandomNumbers random(24);
    int apart = 0, meeting = 0;
    for (int round = 0; round < 300; ++round) {
        const Point2D origin = surveyOrigins[round % 2];
        const auto star = [&](double spread) {
            const Point2D center = origin + Vec2D(random(-spread, spread), random(-spread, spread));
            Polygon2D polygon(RandomStar(random, center, random(0.5, 20.0), static_cast<int>(1 + random() % 60)));
            if (round % 3 == 0) polygon.Close();
            return polygon;
        };
        const Polygon2D a = star(10.0), b = star(40.0);
        double expected = kInfinity;
        const auto tryAll = [&](const Polygon2D& of, const Polygon2D& to) {
            for (const Point2D& p : of.GetPoints()) expected = std::min(expected, Distance::PointToPolygon(p, to));
        };
        tryAll(a, b);
        tryAll(b, a);
        std::vector<Point2D> common;
        const double tolerance = round % 7 == 0 ? 3.0 : 1e-4;
        const auto result = Intersection::PolygonPolygon(a, b, common, Tolerances(tolerance, 1e-10));
        if (result == IntersectionResult::Intersecting || expected < tolerance) expected = 0.0;
        (expected > 0.0 ? apart : meeting) += 1;
        EXPECT_EQ(Distance::PolygonToPolygon(a, b, tolerance), expected);
        EXPECT_EQ(Distance::PolygonToPolygon(b, a, tolerance), expected);
    }
    EXPECT_GT(std::min(apart, meeting), 20);
    EXPECT_EQ(Distance::PolygonToPolygon(Polygon2D(), Polygon2D(), 1e-4), std::numeric_limits<double>::max());
    const Polygon2D frame = MakePolygon("0 0 9 0 9 9 0 9 / 2 2 7 2 7 7 2 7");
    EXPECT_EQ(Distance::PolygonToPolygon(MakePolygon("4 4 5 4 5 5"), frame, 1e-4), 0.0) << "holes play no part";
}

}  // namespace
}  // namespace Kalvio::Math
