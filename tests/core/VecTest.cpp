#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(VecTest, LengthsAreSetWhereThereIsADirection) {
    const std::tuple<const char*, Vec2D, double, Vec2D> rows[] = {
        {"scaled", Vec2D(3, 4), 10, Vec2D(6, 8)},
        {"negative: as it was", Vec2D(3, 4), -1, Vec2D(3, 4)},
        {"to nothing", Vec2D(3, 4), 0, Vec2D(0, 0)},
        {"no direction", Vec2D(0, 0), 1, Vec2D(0, 0)},
        {"1e-10 is no direction", Vec2D(1e-10, 0), 1, Vec2D(1e-10, 0)},
        {"a little more is one", Vec2D(0, 2e-10), 1, Vec2D(0, 1)},
    };
    for (const auto& [why, v, length, expected] : rows) {
        SCOPED_TRACE(why);
        EXPECT_THAT(Vec2D(v).SetLength(length), IsNear(expected, 1e-15));
        EXPECT_THAT(Vec2D(v.GetX(), v.GetY(), length), IsNear(expected, 1e-15));
        EXPECT_THAT(Vec2D::MakeVector(Point2D(), Point2D() + v, length), IsNear(expected, 1e-15));
    }
    EXPECT_THAT(Vec3D(0, 3, 4).Normalize(), IsNear(Vec3D(0, 0.6, 0.8), 1e-15));
    EXPECT_THAT(Vec3D(0, 1e-10, 0).Normalize(), IsNear(Vec3D(0, 1e-10, 0), 0.0));
    EXPECT_TRUE(VecND({0.003, 0.0}).Normalize().IsEqualTo(VecND({0.003, 0.0}), 1e-15)) << "0.005 and less stays";
    EXPECT_TRUE(VecND({0.006, 0.0}).Normalize().IsEqualTo(VecND({1.0, 0.0}), 1e-15));

    EXPECT_THAT(Vec3D(3, 4, 0).Clamp(1.0), IsNear(Vec3D(0.6, 0.8, 0), 1e-15));
    EXPECT_THAT(Vec3D(3, 4, 0).Clamp(5.0), IsNear(Vec3D(3, 4, 0), 0.0));
    EXPECT_THAT(Vec3D(1e-6, 0, 0).Clamp(1e-9), IsNear(Vec3D(1e-6, 0, 0), 0.0)) << "too short to be scaled";
}

TEST(VecTest, SweepsGoTheAskedWayRound) {
    const std::tuple<const char*, Vec2D, Vec2D, double, double, double> rows[] = {
        {"a left turn", Vec2D(1, 0), Vec2D(0, 5), kPi / 2, kPi / 2, 1.5 * kPi},
        {"a right turn", Vec2D(2, 0), Vec2D(0, -1), kPi / 2, 1.5 * kPi, kPi / 2},
        {"back", Vec2D(1, 0), Vec2D(-1, 0), kPi, kPi, kPi},
        {"straight on, cosine above 1 by rounding", Vec2D(0.1, 0.7), Vec2D(0.1, 0.7), 0, 0, 0},
        {"nothing to measure", Vec2D(1e-6, 0), Vec2D(0, 1e-5), 0, 0, 2 * kPi},
    };
    for (const auto& [why, from, to, unsignedAngle, counterClockwise, clockwise] : rows) {
        SCOPED_TRACE(why);
        EXPECT_NEAR(from.GetAngle(to).GetRadians(), unsignedAngle, 3e-8);
        EXPECT_NEAR(from.GetAngle(to, WindingValue::CounterClockwise).GetRadians(), counterClockwise, 3e-8);
        EXPECT_NEAR(from.GetAngle(to, WindingValue::Clockwise).GetRadians(), clockwise, 3e-8);
        EXPECT_NEAR(from.GetAngle(to, WindingValue::Vertical).GetRadians(), unsignedAngle, 3e-8);
        EXPECT_NEAR(Vec3D(from, 0).GetAngle(Vec3D(to, 0)).GetRadians(), unsignedAngle, 3e-8);
    }
    EXPECT_EQ(Vec3D(1, 2, 3).Vec3DCosAngle(Vec3D()), 0.0);
}

TEST(VecTest, TheLaterAxisWinsATie) {
    const std::tuple<Vec3D, int, int, int> rows[] = {{Vec3D(1, 1, -1), 2, 1, 0},  {Vec3D(1, 1, 0), 1, 2, 0},
                                                     {Vec3D(1, 0, 1), 2, 0, 1},   {Vec3D(-3, 2, 1), 0, 2, 1},
                                                     {Vec3D(1, -2, -2), 2, 1, 0}, {Vec3D(0, 0, 0), 2, 0, 1}};
    for (const auto& [v, dominant, first, second] : rows) {
        int i = -1, j = -1;
        v.Find2MajorAxisForProjection(i, j);
        EXPECT_EQ(std::tuple(v.FindDominantAxis(), i, j), std::tuple(dominant, first, second)) << v;
    }
}

TEST(VecTest, DivisionByNothingAndUnequalDimensionsChangeNothing) {
    for (const double divisor : {0.0, -0.0, kNan}) {
        EXPECT_THAT(Vec2D(2, 4) / divisor, IsNear(Vec2D(2, 4), 0.0));
        EXPECT_THAT(Vec3D(2, 4, 6) / divisor, IsNear(Vec3D(2, 4, 6), 0.0));
        EXPECT_TRUE((VecND({2.0, 4.0}) / divisor).IsEqualTo(VecND({2.0, 4.0}), 1e-15));
    }
    EXPECT_EQ((VecND(2U) + VecND(3U)).GetDimension() + (VecND(2U) - VecND(3U)).GetDimension(), 0U);
    EXPECT_EQ(VecND({1.0, 1.0}).DotProduct(VecND({1.0, 1.0, 1.0})), 0.0);
    VecND sum({1.0, 2.0});
    EXPECT_TRUE((sum += VecND(3U)).IsEqualTo(VecND({1.0, 2.0}), 1e-15));
    EXPECT_TRUE((sum += sum).IsEqualTo(VecND({2.0, 4.0}), 1e-15)) << "added to itself";
}

TEST(VecTest, VectorsCompareWithTheirKin) {
    const Vec2D v(1.0, 2.0);
    EXPECT_TRUE(v.IsEqualTo(Vec2D(1.25, 2.25), 0.26)) << "a square, not a circle";
    EXPECT_TRUE(v.IsOppositeTo(Vec2D(-1.0, -2.0), 1e-9) && v.IsEqualTo(VecND({1.0, 2.0}), 1e-9));
    EXPECT_FALSE(v.IsEqualTo(VecND({1.0, 2.0, 0.0}), 1e-9) || v.IsEqualTo(Vec3D(1.0, 2.0, 0.0), 1e-9));
    EXPECT_TRUE(Vec3D(1, 2, 3).IsEqualTo(VecND({1.0, 2.0, 3.0}), 1e-9));
    EXPECT_FALSE(Vec2D(kNan, 0.0).IsEqualTo(Vec2D(kNan, 0.0), 1.0));
    EXPECT_TRUE(v[5] == 1.0 && Vec3D(1, 2, 3)[-1] == 1.0) << "any other index is x";
}

}  // namespace
}  // namespace Kalvio::Math
