#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Distance.h"
#include "support/Near.h"
#include "support/Origins.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Both ends of the line are at the circles' radii from their centres, and the line is square to both radii.
void ExpectTangent(const Line2D& line, const Circle2D& from, const Circle2D& to, double tol) {
    EXPECT_NEAR(line.GetStart().Distance(from.GetCenter()), from.GetRadius(), tol);
    EXPECT_NEAR(line.GetEnd().Distance(to.GetCenter()), to.GetRadius(), tol);
    EXPECT_NEAR(std::abs(Distance::PointToLine(from.GetCenter(), line)), from.GetRadius(), tol);
    EXPECT_NEAR(std::abs(Distance::PointToLine(to.GetCenter(), line)), to.GetRadius(), tol);
}

TEST(CircleTest, TangentsThroughAPoint) {
    struct Row {
        const char* why;
        Point2D p;
        double radius;
        int expected;
    };
    const Row rows[] = {
        {"outside", Point2D(5, 0), 3.0, 2},
        {"far away and oblique", Point2D(-4000, 900), 3.0, 2},
        {"close to the circle", Point2D(0, 3.001), 3.0, 2},
        {"on the circle", Point2D(0, 3), 3.0, 1},
        {"inside", Point2D(1, 1), 3.0, 0},
        {"the centre", Point2D(0, 0), 3.0, 0},
        {"circle of radius 0", Point2D(3, 4), 0.0, 1},
        {"the point circle itself", Point2D(0, 0), 0.0, 0},
        {"NaN", Point2D(kNan, 0), 3.0, 0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Circle2D circle(origin, row.radius);
            const Point2D p = row.p + origin;
            Line2D left;
            Line2D right;
            ASSERT_EQ(circle.GetTangentsThroughPoint(p, left, right), row.expected);
            if (row.expected == 0) {
                EXPECT_EQ(left.GetLength(), 0.0);
            }
            if (row.expected < 2) {
                EXPECT_EQ(right.GetLength(), 0.0);
            }
            if (row.expected == 0) continue;
            EXPECT_TRUE(left.GetStart() == p);
            EXPECT_NEAR(std::abs(Distance::PointToLine(origin, left)), row.radius, 2e-8);
            if (row.expected < 2) continue;
            ExpectTangent(left, Circle2D(p, 0.0), circle, 2e-8);
            ExpectTangent(right, Circle2D(p, 0.0), circle, 2e-8);
            EXPECT_LT(Distance::PointToLine(left.GetEnd(), p, origin), 0.0);  // touches left of the way to the centre
            EXPECT_GT(Distance::PointToLine(right.GetEnd(), p, origin), 0.0);
        }
    }
}

TEST(CircleTest, TangentsOfTwoCircles) {
    struct Row {
        const char* why;
        Point2D other;
        double r1, r2;
        int crossing, outer;
    };
    const Row rows[] = {
        {"apart", Point2D(8, 6), 3.0, 2.0, 2, 2},
        {"apart, equal radii", Point2D(-8, 6), 2.0, 2.0, 2, 2},
        {"touching from outside", Point2D(3, 4), 3.0, 2.0, 1, 2},
        {"overlapping", Point2D(3, 0), 3.0, 2.0, 0, 2},
        {"touching from inside", Point2D(0, 2), 3.0, 1.0, 0, 1},
        {"the larger one second", Point2D(0, 2), 1.0, 3.0, 0, 1},
        {"one in the other", Point2D(1, 0), 4.0, 1.0, 0, 0},
        {"same centre", Point2D(0, 0), 2.0, 1.0, 0, 0},
        {"equal", Point2D(0, 0), 2.0, 2.0, 0, 0},
        {"a point and a circle", Point2D(5, 0), 0.0, 2.0, 2, 2},
        {"two points", Point2D(5, 0), 0.0, 0.0, 1, 1},
        {"NaN", Point2D(kNan, 0), 1.0, 2.0, 0, 0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : surveyOrigins) {
            SCOPED_TRACE(row.why);
            const Circle2D first(origin, row.r1);
            const Circle2D second(row.other + origin, row.r2);
            for (const bool crossing : {true, false}) {
                Line2D left;
                Line2D right;
                const int count = crossing ? first.GetCrossingTangents(second, left, right, 1e-8)
                                           : first.GetNonCrossingTangents(second, left, right);
                ASSERT_EQ(count, crossing ? row.crossing : row.outer);
                if (count == 1) {
                    EXPECT_NEAR(std::abs(Distance::PointToLine(origin, left)), row.r1, 1e-8);
                }
                if (count == 1) {
                    EXPECT_NEAR(std::abs(Distance::PointToLine(second.GetCenter(), left)), row.r2, 1e-8);
                }
                if (count < 2) continue;
                for (const Line2D& line : {left, right}) {
                    ExpectTangent(line, first, second, 1e-8);
                    const double sides =
                        Distance::PointToLine(origin, line) * Distance::PointToLine(second.GetCenter(), line);
                    EXPECT_NEAR(sides, (crossing ? -1.0 : 1.0) * row.r1 * row.r2, 1e-7);
                }
                if (row.r1 > 0.0) {
                    EXPECT_LT(Distance::PointToLine(left.GetStart(), origin, second.GetCenter()), 0.0);
                }
                if (row.r1 > 0.0) {
                    EXPECT_GT(Distance::PointToLine(right.GetStart(), origin, second.GetCenter()), 0.0);
                }
            }
        }
    }
}

TEST(CircleTest, RingsKeepStepAndHeight) {
    for (const Point2D& origin : surveyOrigins) {
        const Circle2D circle(origin, 10.0);
        LineString2D ring;
        ASSERT_TRUE(circle.MakeLineString(ring, 7.0));  // 62.83 m of perimeter: 9 steps
        EXPECT_EQ(ring.GetSize(), 10u);
        EXPECT_EQ(circle.MakePoints(7.0).size(), 9u);
        EXPECT_TRUE(ring.IsClosed(1e-12));
        ASSERT_TRUE(circle.MakeLineString(ring, 4u));  // appended
        ASSERT_EQ(ring.GetSize(), 15u);
        EXPECT_THAT(ring.GetPoint(11u), IsNear(origin + Vec2D(0, 10), 2e-9));

        LineString2D fine;
        ASSERT_TRUE(circle.MakeLineStringUsingHeight(fine, 0.001));
        const double sagitta = 10.0 * (1.0 - std::cos(std::numbers::pi / fine.GetNrOfElements()));
        EXPECT_LE(sagitta, 0.001);
        EXPECT_GT(sagitta, 0.00096);  // one segment less would exceed the height
        LineString2D coarse;
        ASSERT_TRUE(circle.MakeLineStringUsingHeight(coarse, 1e6));
        EXPECT_EQ(coarse.GetNrOfElements(), 4u);

        EXPECT_THAT(circle.NormalProjectionPointOnCircle(origin + Vec2D(3, -4)), IsNear(origin + Vec2D(6, -8), 2e-9));
        EXPECT_THAT(circle.NormalProjectionPointOnCircle(origin), IsNear(origin + Vec2D(10, 0), 0.0));
        EXPECT_TRUE(circle.IsPointInside(origin + Vec2D(6, 8)));
        EXPECT_FALSE(circle.IsPointInside(origin + Vec2D(6, 8.001)));
        EXPECT_THAT(circle.GetBoundingBox().GetMaxPoint(), IsNear(origin + Vec2D(10, 10), 0.0));
    }
    LineString2D none;
    for (const double bad : {0.0, -1.0, kNan}) {
        EXPECT_FALSE(Circle2D(Point2D(), 10.0).MakeLineString(none, bad));
        EXPECT_FALSE(Circle2D(Point2D(), 10.0).MakeLineStringUsingHeight(none, bad));
        EXPECT_TRUE(Circle2D(Point2D(), 10.0).MakePoints(bad).empty());
    }
    EXPECT_FALSE(Circle2D(Point2D(), 10.0).MakeLineString(none, 2u));
    EXPECT_FALSE(Circle2D(Point2D(), 0.0).MakeLineString(none, 5u));
    EXPECT_FALSE(Circle2D(Point2D(), kNan).MakeLineString(none, 1.0));
    EXPECT_EQ(none.GetSize(), 0u);
}

TEST(CircleTest, MeasuresAndComparison) {
    const Circle2D circle(Point2D(1, 2), -3.0);
    EXPECT_EQ(circle.GetRadius(), 3.0);
    EXPECT_NEAR(circle.GetArea(), 28.274333882308138, 1e-13);
    EXPECT_NEAR(circle.GetLength(), 18.84955592153876, 1e-13);
    const std::unique_ptr<Circle2D> copy(circle.Clone());
    EXPECT_TRUE(copy->IsEqualTo(static_cast<const IGeometry&>(circle), 1e-12));
    copy->SetRadius(3.25);
    EXPECT_FALSE(copy->IsEqualTo(circle, 0.25)) << "strict";
    EXPECT_FALSE(circle.IsEqualTo(Point2D(1, 2), 9.0));
}

}  // namespace
}  // namespace Kalvio::Math
