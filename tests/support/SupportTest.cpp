#include "support/Near.h"

#include <gtest/gtest-spi.h>

#include <limits>

namespace Kalvio::Math {
namespace {

TEST(SupportTest, NearnessIsADistanceAndSaysHowFarOffAValueIs) {
    EXPECT_THAT(Point2D(3.0, 4.0), IsNear(Point2D(0.0, 0.0), 5.0));
    EXPECT_THAT(Point3D(0.0, 0.0, 1.5), testing::Not(IsNear(Point3D(0.0, 0.0, 1.0), 0.25)));
    EXPECT_THAT(Vec2D(std::numeric_limits<double>::quiet_NaN(), 0.0), testing::Not(IsNear(Vec2D(), 1e300)));
    EXPECT_NONFATAL_FAILURE(EXPECT_THAT(Point2D(1.0, 2.0), IsNear(Point2D(1.0, 2.5), 0.25)),
                            "which is 0.5 away, off by Vec3D(0, -0.5, 0)");
}

}  // namespace
}  // namespace Kalvio::Math
