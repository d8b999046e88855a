#include "kalvio/core/Tolerances.h"
#include "support/Testing.h"

#include <type_traits>

namespace Kalvio::Math {
namespace {

TEST(TolerancesTest, DerivedValuesFollowTheTwoGivenOnes) {
    const std::tuple<const char*, double, double, double, double, double, double> rows[] = {
        {"the standard record", 0.0001, 1e-10, 1e-10, 1e-20, 1e-9, 0.0001},
        {"never looser than the user tolerance", 1e-12, 1e-10, 1e-12, 1e-24, 1e-11, 1e-12},
        {"no number: the user tolerance", 0.25, kNan, 0.25, 0.0625, 2.5, 0.25},
        {"more than a turn", 7.0, 1e-10, 1e-10, 1e-20, 1e-9, 7.0 - 2 * kPi},
        {"a turn back is none", -2 * kPi, 1.0, -2 * kPi, 4 * kPi * kPi, -20 * kPi, 0.0},
    };
    for (const auto& [why, user, system, epsilon, squared, less, angle] : rows) {
        SCOPED_TRACE(why);
        const Tolerances tolerances(user, system);
        EXPECT_EQ(tolerances.UserTolerance(), user);
        EXPECT_EQ(tolerances.SystemEpsilon(), epsilon);
        EXPECT_DOUBLE_EQ(tolerances.SystemEpsilonSquared(), squared);
        EXPECT_DOUBLE_EQ(tolerances.SystemEpsilonLess(), less);
        EXPECT_EQ(tolerances.AngleTolerance().GetRadians(), angle);
    }
    EXPECT_EQ(Tolerances(0.0001, Angle(0.5), 1e-10).AngleTolerance().GetRadians(), 0.5);
    for (const Tolerances& one : {Tolerances::Standard(), Tolerances(1e-4)}) {
        EXPECT_EQ(std::tuple(one.UserTolerance(), one.SystemEpsilon(), one.AngleTolerance()),
                  std::tuple(0.0001, 1e-10, Angle(0.0001)));
    }
    EXPECT_EQ(Tolerances(0.0001, Angle(0.5), 1e-10).SystemEpsilon(), 1e-10) << "the epsilon comes last here";
}

static_assert(!std::is_convertible_v<double, Tolerances> && !std::is_copy_assignable_v<Tolerances> &&
              std::is_copy_constructible_v<Tolerances>);

}  // namespace
}  // namespace Kalvio::Math
