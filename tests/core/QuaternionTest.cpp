#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(QuaternionTest, TurnsOneDirectionIntoAnother) {
    RandomNumbers random(20240605);
    for (int i = 0; i < 400; ++i) {
        const Vec3D from(random(-1.0, 1.0), random(-1.0, 1.0), i % 3 == 0 ? 0.0 : random(-1.0, 1.0));
        const Vec3D away(random(-1.0, 1.0), random(-1.0, 1.0), random(-1.0, 1.0));
        const double distances[] = {1.0, 1e-5, 1e-9, 1e-13, 0.0};  // from nearly opposite to exactly opposite
        const Vec3D to = i % 2 == 0 ? away : from * -3.0 + away * distances[i % 5];
        const Quaternion turn(from, to);
        EXPECT_THAT((Vec3D(from) *= turn) / from.Length(), IsNear(to / to.Length(), 2e-15));
        Vec3D axis;
        Angle angle;
        ASSERT_TRUE(turn.GetRotation(axis, angle));
        const double between = std::atan2(from.CrossProduct(to).Length(), from.DotProduct(to));
        EXPECT_NEAR(angle.GetRadians(), between, 1e-13) << "the least angle";
        EXPECT_TRUE(Quaternion(axis, angle).IsEqualTo(turn, 1e-14) ||
                    Quaternion(-axis, detail::twoPi - angle.GetRadians()).IsEqualTo(turn, 1e-14));
    }
    for (const Vec3D& none : {Vec3D(), Vec3D(std::numeric_limits<double>::infinity(), 0, 0)}) {
        EXPECT_TRUE(Quaternion(Vec3D(1, 0, 0), none).IsEqualTo(Quaternion(), 1e-300));
        EXPECT_TRUE(Quaternion(none, Angle(1.0)).IsEqualTo(Quaternion(), 1e-300));
    }
}

TEST(QuaternionTest, AlgebraAndFailures) {
    EXPECT_TRUE((Quaternion(1, 0, 0, 0) *= Quaternion(0, 1, 0, 0)).IsEqualTo(Quaternion(0, 0, 1, 0), 1e-300))
        << "i j = k";
    const Quaternion a(0.1, -0.2, 0.3, 0.9), b(0.5, 0.6, -0.1, 0.4);
    const Quaternion unitA = Quaternion(a).Normalize(), unitB = Quaternion(b).Normalize();
    EXPECT_TRUE(Matrix3D(Quaternion(unitA) *= unitB).Equal(Matrix3D(unitB) *= Matrix3D(unitA), 1e-15));
    EXPECT_TRUE((Quaternion(a).Invert() *= Quaternion(a) *= b).IsEqualTo(b, 1e-15));
    EXPECT_THAT(Vec3D(1, 0, 0) *= Quaternion(0.0, 0.0, 2.0, 1.0), IsNear(Vec3D(-7.0, 4.0, 0.0), 0.0))
        << "not normalised: 1 - 2 * 4 and 2 * 2";
    Quaternion zero(0, 0, 0, 0);
    EXPECT_TRUE(zero.Invert().Normalize().IsEqualTo(Quaternion(0, 0, 0, 0), 1e-300));
    Vec3D axis(4, 5, 6);
    Angle angle(0.25);
    EXPECT_TRUE(!zero.GetRotation(axis, angle) && axis.IsEqualTo(Vec3D(4, 5, 6), 1e-300));
    EXPECT_TRUE(Quaternion(0, 0, 0, -2).GetRotation(axis, angle) && angle.GetRadians() == 0.0) << "-1 is no rotation";
    EXPECT_TRUE(a[7] == 0.1 && a[3] == 0.9);
}

}  // namespace
}  // namespace Kalvio::Math
