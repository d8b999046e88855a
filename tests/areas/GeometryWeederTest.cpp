#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(GeometryWeederTest, WhatStaysIsApartOrTurns) {
    LineString2D chain{Point2D(0, 0), Point2D(3, 0), Point2D(4, 0), Point2D(8, 0), Point2D(8, 0), Point2D(9, 0)};
    LineString2D result;
    ASSERT_TRUE(GeometryWeeder::WeedBySpacing(chain, 4.0, result));
    EXPECT_EQ(result.GetPoints(), (std::vector<Point2D>{{0, 0}, {4, 0}, {9, 0}}))
        << "4 apart stays, 1 before the end goes";
    const LineString2D closed{Point2D(0, 0), Point2D(1, 0), Point2D(5, 0), Point2D(0, 5), Point2D(0, 1), Point2D(0, 0)};
    ASSERT_TRUE(GeometryWeeder::WeedBySpacing(closed, 1.0, result));
    EXPECT_EQ(result.GetPoints(), closed.GetPoints()) << "near the end in place, not along the chain";
    ASSERT_TRUE(GeometryWeeder::WeedByAngle(chain, Angle(0.0), result));
    EXPECT_EQ(result.GetPoints(), (std::vector<Point2D>{{0, 0}, {9, 0}}));
    // A circle of steps of 0.1: from a point that stays, the k-th next is left at half (k + 1) steps of turn.
    LineString3D circle;
    for (int i = 0; i <= 60; ++i) circle.AppendPoint(Point3D(std::cos(0.1 * i), std::sin(0.1 * i), 2.0));
    LineString3D bends;
    ASSERT_TRUE(GeometryWeeder::WeedByAngle(circle, Angle(0.26), bends));
    ASSERT_EQ(bends.GetSize(), 13U);
    EXPECT_EQ(bends.GetPoints()[1].Distance(circle.GetPoints()[5]), 0.0) << "(5 + 1) / 2 * 0.1 > 0.26";
    for (const double bad : {-1.0, kNan}) {
        EXPECT_FALSE(GeometryWeeder::WeedBySpacing(chain, bad, chain));
        EXPECT_FALSE(GeometryWeeder::WeedBySpacing(LineString2D{Point2D(0, kNan)}, 1.0, chain));
    }
    ASSERT_TRUE(GeometryWeeder::WeedBySpacing(LineString2D(), 1.0, chain)) << "nothing stays nothing";
    EXPECT_EQ(chain.GetSize(), 0U);
}

}  // namespace
}  // namespace Kalvio::Math
