#include "kalvio/core/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(NumbersTest, CompareIsInclusiveForEqualAndExclusiveForLess) {
    using Op = Numbers::CompareOperator;
    struct Row {
        const char* why;
        double a;
        Op op;
        double b, tol;
        bool expected;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Numbers::Compare(row.a, row.op, row.b, row.tol), row.expected);
    }
}

}  // namespace
}  // namespace Kalvio::Math
