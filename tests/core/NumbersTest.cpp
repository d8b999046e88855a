#include "kalvio/core/Numbers.h"
#include "support/Testing.h"

#include <type_traits>

namespace Kalvio::Math {
namespace {

TEST(NumbersTest, CompareIsInclusiveForEqualAndExclusiveForLess) {
    using Op = Numbers::CompareOperator;
    const std::tuple<const char*, double, Op, double, double, bool> rows[] = {
        {"exactly tol apart", 1.0, Op::Equal, 1.25, 0.25, true},
        {"beyond tol", 1.0, Op::Equal, 1.5, 0.25, false},
        {"tol apart is not less", 1.0, Op::Less, 1.25, 0.25, false},
        {"beyond tol is less, sign of tol ignored", 1.0, Op::Less, 1.5, -0.25, true},
        {"tol apart is not greater", 1.25, Op::Greater, 1.0, 0.25, false},
        {"beyond tol is greater", 1.5, Op::Greater, 1.0, 0.25, true},
        {"tol apart still <=", 1.25, Op::LessOrEqual, 1.0, 0.25, true},
        {"beyond tol not <=", 1.5, Op::LessOrEqual, 1.0, 0.25, false},
        {"tol apart still >=", 1.0, Op::GreaterOrEqual, 1.25, -0.25, true},
        {"beyond tol not >=", 1.0, Op::GreaterOrEqual, 1.5, 0.25, false},
        {"NaN compares false", kNan, Op::Equal, kNan, 1.0, false},
        {"unknown operator", 1.0, static_cast<Op>(9), 1.0, 1.0, false},
    };
    for (const auto& [why, a, op, b, tol, expected] : rows) EXPECT_EQ(Numbers::Compare(a, op, b, tol), expected) << why;
}

TEST(NumbersTest, CountsSaturateAndNeverOverflow) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const std::tuple<const char*, int, int, std::int64_t, std::int64_t> rows[] = {
        {"the small table", 5, 2, 10, 20},
        {"all", 5, 5, 1, 120},
        {"none", 5, 0, 1, 1},
        {"less than none", 5, -1, 0, 0},
        {"more than all", 5, 6, 1, 0},
        {"far more than all", 5, 400, 1, 0},
        {"the last exact row of the triangle", 54, 27, 1946939425648112, most},
        {"beyond 64 bits", 100, 50, most, most},
        {"small at the far end of a huge row", 2000000000, 1, 2000000000, 2000000000},
        {"extreme arguments end", std::numeric_limits<int>::max(), std::numeric_limits<int>::max(), 1, most},
    };
    for (const auto& [why, n, k, combination, permutations] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(Numbers::Combination(n, k), combination);
        EXPECT_EQ(Numbers::Permutations(n, k), permutations);
    }
}

TEST(NumbersTest, DigitsSignsAndParity) {
    const std::pair<double, unsigned int> digits[] = {
        {999.9, 3}, {1000.0, 4}, {0.0, 1}, {-1000.0, 1}, {kNan, 1}, {0.5, 1}, {0.05, 0}, {0.001, 4294967294U},
    };
    for (const auto& [x, expected] : digits) EXPECT_EQ(Numbers::GetNumberOfDigits(x), expected) << x;
    for (const double x : {0.0, -0.0, kNan, 3.0}) EXPECT_EQ(Numbers::Sign(x), 1.0);
    EXPECT_TRUE(Numbers::Sign(-1e-300) == -1.0 && Numbers::GetMaxNumberOfDigits(1.0, 123.0, 12.0) == 3);
    EXPECT_TRUE(Numbers::IsOdd(-3) && Numbers::IsEven(0) && Numbers::IsEven(std::numeric_limits<int>::min()));
}

TEST(NumbersTest, KeysWithinATenthOfAMillimetreAreOneKey) {
    std::map<double, const char*, compareDouble> stations;
    stations.emplace(1.0, "first");
    EXPECT_FALSE(stations.emplace(1.00005, "second").second || stations.emplace(0.99995, "third").second);
    EXPECT_STREQ(stations.begin()->second, "first");
    EXPECT_TRUE(stations.emplace(1.0002, "fourth").second);
}

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
    for (const Tolerances& one : {Tolerances::Standard(), Tolerances(1e-4), Tolerances(1e-4, Angle(1e-4), 1e-10)}) {
        EXPECT_EQ(std::pair(one.UserTolerance(), one.SystemEpsilon()), std::pair(1e-4, 1e-10));
        EXPECT_EQ(one.AngleTolerance(), Angle(1e-4));
    }
    EXPECT_EQ(Tolerances(1e-4, Angle(0.5), 1e-10).AngleTolerance(), Angle(0.5));
}

static_assert(!std::is_convertible_v<double, Tolerances> && !std::is_copy_assignable_v<Tolerances> &&
              std::is_copy_constructible_v<Tolerances>);

}  // namespace
}  // namespace Kalvio::Math
