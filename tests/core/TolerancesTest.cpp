#include "kalvio/core/Tolerances.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(TolerancesTest, DerivedValuesFollowTheTwoGivenOnes) {
    struct Row {
        const char* why;
        double user, system;
        double epsilon, squared, less, angle;
    };
    const Row rows[] = {
        {"the standard record", 0.0001, 1e-10, 1e-10, 1e-20, 1e-9, 0.0001},
        {"never looser than the user tolerance", 1e-12, 1e-10, 1e-12, 1e-24, 1e-11, 1e-12},
        {"no number: the user tolerance", 0.25, kNan, 0.25, 0.0625, 2.5, 0.25},
        {"more than a turn", 7.0, 1e-10, 1e-10, 1e-20, 1e-9, 7.0 - 6.283185307179586},
        {"a turn back is none", -6.283185307179586, 1.0, -6.283185307179586, 39.47841760435743, -62.83185307179586,
         0.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const Tolerances tolerances(row.user, row.system);
        EXPECT_EQ(tolerances.UserTolerance(), row.user);
        EXPECT_EQ(tolerances.SystemEpsilon(), row.epsilon);
        EXPECT_DOUBLE_EQ(tolerances.SystemEpsilonSquared(), row.squared);
        EXPECT_DOUBLE_EQ(tolerances.SystemEpsilonLess(), row.less);
        EXPECT_EQ(tolerances.AngleTolerance().GetRadians(), row.angle);
    }
    EXPECT_EQ(Tolerances(0.0001, Angle(0.5), 1e-10).AngleTolerance().GetRadians(), 0.5);
    EXPECT_EQ(Tolerances(0.0001, Angle(0.5), 1e-10).SystemEpsilon(), 1e-10) << "the epsilon comes last here";
}

static_assert(!std::is_copy_assignable_v<Tolerances> && std::is_copy_constructible_v<Tolerances>);

}  // namespace
}  // namespace Kalvio::Math
