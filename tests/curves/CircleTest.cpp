#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(CircleTest, TangentsOfTwoCircles) {
    const std::tuple<const char*, Point2D, double, double, int, int> rows[] = {
        {"apart", Point2D(8, 6), 3.0, 2.0, 2, 2},
        {"apart, equal radii", Point2D(-8, 6), 2.0, 2.0, 2, 2},
        {"touching from outside", Point2D(3, 4), 3.0, 2.0, 1, 2},
        {"overlapping", Point2D(3, 0), 3.0, 2.0, 0, 2},
        {"touching from inside", Point2D(0, 2), 3.0, 1.0, 0, 1},
        {"touching from inside the second", Point2D(0, 2), 1.0, 3.0, 0, 1},
        {"one in the other", Point2D(1, 0), 4.0, 1.0, 0, 0},
        {"equal", Point2D(0, 0), 2.0, 2.0, 0, 0},
        {"a point close to a circle", Point2D(0, 3.001), 0.0, 3.0, 2, 2},
        {"a point on a circle", Point2D(0, 3), 0.0, 3.0, 1, 1},
        {"two points", Point2D(5, 0), 0.0, 0.0, 1, 1},
        {"NaN", Point2D(kNan, 0), 1.0, 2.0, 0, 0},
    };
    for (const auto& [why, other, r1, r2, inner, outer] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(why);
            const double sign = origin.GetX() > 0.0 ? -1.0 : 1.0;  // only the size of a radius counts
            const Circle2D first(origin, sign * r1), second(other + origin, sign * r2);
            for (const bool crossing : {true, false}) {
                Line2D lines[2];
                const int count = crossing ? first.GetCrossingTangents(second, lines[0], lines[1], 1e-8)
                                           : first.GetNonCrossingTangents(second, lines[0], lines[1]);
                ASSERT_EQ(count, crossing ? inner : outer);
                EXPECT_TRUE(r1 != 0.0 || second.GetTangentsThroughPoint(origin, lines[0], lines[1]) == outer);
                for (int i = 0; i < count; ++i) {
                    const Point2D &from = lines[i].GetStart(), &to = lines[i].GetEnd(), &center = second.GetCenter();
                    const double sides =
                        Distance::PointToLine(origin, lines[i]) * Distance::PointToLine(center, lines[i]);
                    EXPECT_NEAR(sides, (crossing ? -1.0 : 1.0) * r1 * r2, 1e-7);
                    EXPECT_NEAR(from.Distance(origin), r1, 1e-8);
                    if (count < 2) continue;
                    EXPECT_NEAR(to.Distance(center), r2, 1e-8);
                    if (crossing && r1 == 0.0) continue;
                    EXPECT_EQ(Distance::PointToLine(crossing ? from : to, origin, center) > 0.0, i == 1);
                }
            }
        }
    }
}

// As a set of points a circle is that of its radius without the sign.
TEST(CircleTest, RingsKeepStepAndHeight) {
    for (const double radius : {10.0, -10.0}) {
        for (const Point2D& origin : surveyOrigins) {
            const Circle2D circle(origin, radius);
            EXPECT_NEAR(circle.GetLength(), 62.83185307179586, 1e-13);
            LineString2D ring, fine;
            ASSERT_TRUE(circle.MakeLineString(ring, 7.0) && circle.MakeLineStringUsingHeight(fine, 0.001));
            EXPECT_EQ(ring.GetSize(), 10u) << "nine steps and the closing point";
            EXPECT_EQ(Polygon2D(ring.GetPoints()).GetWinding(), WindingValue::CounterClockwise);
            EXPECT_TRUE(circle.MakePoints(7.0).size() == 9u && ring.IsClosed(1e-12));
            ASSERT_TRUE(circle.MakeLineString(ring, 4u)) << "appended";
            EXPECT_THAT(ring.GetPoint(11u), IsNear(origin + Vec2D(0, radius), 2e-9));
            EXPECT_EQ(fine.GetNrOfElements(), 223u);  // smallest n with 10 (1 - cos(pi / n)) <= 0.001
            const Point2D foot = circle.NormalProjectionPointOnCircle(origin + Vec2D(3, -4));
            EXPECT_THAT(foot, IsNear(origin + Vec2D(6, -8), 2e-9));
            EXPECT_EQ(circle.NormalProjectionPointOnCircle(origin), origin + Vec2D(10, 0));
            EXPECT_TRUE(circle.IsPointInside(origin + Vec2D(6, 8)));
            EXPECT_EQ(circle.GetBoundingBox().GetMaxPoint(), origin + Vec2D(10, 10));
            EXPECT_EQ(circle.GetBoundingBox().GetMinPoint(), origin - Vec2D(10, 10));
            EXPECT_FALSE(circle.IsEqualTo(Circle2D(origin, radius + 0.25), 0.25)) << "strict";
        }
    }
    LineString2D none;
    const Circle2D circle(Point2D(), 10.0);
    for (const double bad : {0.0, -1.0, kNan})
        EXPECT_FALSE(circle.MakeLineString(none, bad) || circle.MakeLineStringUsingHeight(none, bad));
    EXPECT_FALSE(circle.MakeLineString(none, 2u) || Circle2D(Point2D(), 0.0).MakeLineString(none, 5u));
}

// The formulas take the sign as it is.
TEST(CircleTest, NegativeRadiusStaysAsGiven) {
    const Point2D center(385000.0, 6672000.0);
    const Circle2D circle(center, -10.0), positive(center, 10.0);
    Circle3D inSpace(Point3D(center, 5.0), 1.0, Plane3D());
    inSpace.SetRadius(-10.0);
    EXPECT_TRUE(circle.GetRadius() == -10.0 && inSpace.GetRadius() == -10.0 && circle.GetDiameter() == -20.0);
    EXPECT_TRUE(circle.GetPerimeter() == -positive.GetLength() && inSpace.GetPerimeter() == circle.GetPerimeter());
    EXPECT_TRUE(inSpace.GetArea() == positive.GetArea() && !circle.IsEqualTo(positive, 1.0));
    EXPECT_THAT(circle.GetPointOnCircle(Angle(0.0)), IsNear(center - Vec2D(10, 0), 0.0));
    EXPECT_TRUE(inSpace.GetBoundingBox2D().IsEqualTo(positive.GetBoundingBox(), 1e-9));
    EXPECT_LT(Distance::PointToCircle(center + Vec2D(6, 7), circle), 0.8);
    EXPECT_NEAR(Distance::CircleToCircle(circle, Circle2D(center + Vec2D(30, 0), -5.0)), 15.0, 1e-9);
    Line2D left, right;
    EXPECT_EQ(circle.GetTangentsThroughPoint(center + Vec2D(26, 0), left, right), 2);
    EXPECT_NEAR(left.GetLength(), 24.0, 1e-8);
    std::vector<Point2D> crossings;
    const Line2D across(center + Vec2D(8, 0), center + Vec2D(13, 0));
    EXPECT_EQ(Intersection::LineSegmentCircle(across, circle, crossings, 1e-6), 1);
    EXPECT_EQ(Intersection::CircleCircle(circle, positive, crossings, kTolerances), IntersectionResult::Degenerate);
}

TEST(CircleTest, CirclesInSpaceMirrorThePlaneOnes) {
    const Point3D center(385000.0, 6672000.0, 10.0);
    const Circle3D circle(center, 5.0, Plane3D(0, 1, 0, 99));  // vertical, seen from the south
    EXPECT_THAT(circle.GetPointOnCircle(Angle(std::numbers::pi / 2)), IsNear(center + Vec3D(0, 0, -5), 2e-9));
    EXPECT_THAT(circle.GetBoundingBox3D().GetSize(), IsNear(Vec3D(10, 0, 10), 1e-12));
    EXPECT_THAT(circle.NormalProjectionPointOnCircle(center + Vec3D(3, 7, -4)), IsNear(center + Vec3D(3, 0, -4), 2e-9));
    for (const double off : {0.01, 0.03})
        EXPECT_EQ(circle.IsPointInside(center + Vec3D(3, off, -3.9), 0.02), off == 0.01);
    Line3D left, right;
    EXPECT_EQ(circle.GetTangentsThroughPoint(center + Vec3D(13, 0, 0), left, right, 1e-8), 2);
    EXPECT_NEAR(left.GetLength(), 12.0, 1e-8);
    EXPECT_EQ(circle.GetTangentsThroughPoint(center + Vec3D(13, 1, 0), left, right, 1e-8), 0);
    const Circle3D other(center + Vec3D(0, 0, 20), 5.0, Plane3D(0, -1, 0, 0));
    EXPECT_EQ(circle.GetCrossingTangents(other, left, right, 1e-8), 2);
    EXPECT_EQ(circle.GetNonCrossingTangents(other, left, right, 1e-8), 2);
    EXPECT_NEAR(right.GetLength(), 20.0, 1e-8);
    EXPECT_EQ(circle.GetCrossingTangents(Circle3D(other.GetCenter(), 5.0, Plane3D()), left, right, 1e-8), 0);
    LineString3D ring;
    EXPECT_TRUE(circle.MakeLineString(ring, 4u) && !circle.MakeLineString(ring, ~0U) &&
                !circle.MakeLineStringUsingHeight(ring, 0.0));
    ASSERT_EQ(ring.GetSize(), 5u);
    EXPECT_THAT(ring.GetPoint(2u), IsNear(center + Vec3D(-5, 0, 0), 2e-9));
}

}  // namespace
}  // namespace Kalvio::Math
