#include "kalvio/core/Angle.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Tolerances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Kalvio::Math {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double twoPi = 6.283185307179586;
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(AngleTest, EachNormalisationKeepsItsOwnRange) {
    struct Row {
        const char* why;
        double value, stored, signedHalf, positive;
    };
    const Row rows[] = {
        {"inside", 1.0, 1.0, 1.0, 1.0},
        {"the sign stays", -pi / 2, -pi / 2, -pi / 2, 1.5 * pi},
        {"a full turn stays a full turn where the range holds it", twoPi, twoPi, 0.0, twoPi},
        {"a turn back is open", -twoPi, 0.0, 0.0, 0.0},
        {"beyond a turn", 7.0, 7.0 - twoPi, 7.0 - twoPi, 7.0 - twoPi},
        {"beyond a turn back", -7.0, -7.0 + twoPi, -7.0 + twoPi, -7.0 + 2 * twoPi},
        {"half a turn is closed", pi, pi, pi, pi},
        {"half a turn back is open", -pi, -pi, pi, pi},
        {"the largest number ends", std::numeric_limits<double>::max(), std::fmod(1.7976931348623157e308, twoPi),
         std::remainder(1.7976931348623157e308, twoPi), std::fmod(1.7976931348623157e308, twoPi)},
        {"infinity passes", infinity, infinity, infinity, infinity},
        {"and so does its negation", -infinity, -infinity, -infinity, -infinity},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_DOUBLE_EQ(Angle(row.value).GetRadians(), row.stored);
        EXPECT_DOUBLE_EQ(Angle::NormalizeAnglePiMinusPi(row.value), row.signedHalf);
        EXPECT_DOUBLE_EQ(Angle::NormalizeZero2Pi(row.value), row.positive);
    }
    EXPECT_TRUE(std::signbit(Angle::NormalizeZero2Pi(-0.0))) << "-0.0 is not below zero";
    EXPECT_TRUE(std::isnan(Angle(std::nan("")).GetRadians()));
}

TEST(AngleTest, DirectionsCountFromEastAndBearingsFromNorth) {
    struct Row {
        const char* way;
        double dx, dy, direction, bearing;
    };
    const Row rows[] = {
        {"east", 1, 0, 0, pi / 2},     {"north", 0, 1, pi / 2, 0}, {"west", -1, 0, pi, -pi / 2},
        {"south", 0, -1, -pi / 2, pi}, {"nowhere", 0, 0, 0, 0},    {"north-east", 2, 2, pi / 4, pi / 4},
    };
    const Point2D from(385000.0, 6672000.0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.way);
        EXPECT_DOUBLE_EQ(Angle(row.dx, row.dy).GetRadians(), row.direction);
        EXPECT_DOUBLE_EQ(Angle(from, from + Vec2D(row.dx, row.dy)).GetRadians(), row.bearing);
    }
}

TEST(AngleTest, EqualityIsStrictAndCrossesTheFullTurnOnce) {
    struct Row {
        const char* why;
        double a, b, tolerance;
        bool expected;
    };
    const Row rows[] = {
        {"exactly the tolerance apart", 1.0, 1.25, 0.25, false},
        {"nearer", 1.0, 1.25, 0.250001, true},
        {"across the full turn", 6.28315, 0.00005, 0.0001, true},
        {"just not", 3.0, 3.0001, 0.0001, false},
        {"a quarter back and three quarters on", -pi / 2, 1.5 * pi, 1e-9, true},
        {"two turns apart", -6.0, -6.0 + 2 * twoPi - 0.6, 0.1, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Angle(row.a).IsEqualTo(Angle(row.b), row.tolerance), row.expected);
        EXPECT_EQ(Angle(row.b).IsEqualTo(Angle(row.a), row.tolerance), row.expected);
        EXPECT_EQ(Angle(row.a).IsEqualTo(Angle(row.b), Tolerances(1.0, Angle(row.tolerance), 1e-10)), row.expected);
    }
}

TEST(AngleTest, TheNearerDirectionWinsTheShorterWayRound) {
    const Angle reference(0.0);
    EXPECT_TRUE(reference.IsFirstCloser(Angle(twoPi - 0.1), Angle(0.3)));
    EXPECT_FALSE(reference.IsFirstCloser(Angle(0.3), Angle(twoPi - 0.1)));
    EXPECT_FALSE(reference.IsFirstCloser(Angle(0.3), Angle(-0.3))) << "a tie";
}

TEST(AngleTest, UnitsConvertInPlaceAndUnknownOnesDoNothing) {
    using enum AngleUnit;
    const auto unknown = static_cast<AngleUnit>(3);
    struct Row {
        AngleUnit from, to;
        double value, expected;
    };
    const Row rows[] = {
        {DecimalDegree, Radians, 180.0, pi},        {Radians, DecimalDegree, pi, 180.0},
        {DegreeSecond, DecimalDegree, 3600.0, 1.0}, {DecimalDegree, DegreeSecond, 1.0, 3600.0},
        {Radians, DegreeSecond, pi, 648000.0},      {DegreeSecond, Radians, 648000.0, pi},
        {DegreeSecond, DegreeSecond, 7.0, 7.0},     {unknown, Radians, 7.0, 7.0},
        {DegreeSecond, unknown, 7.0, 7.0},
    };
    for (const Row& row : rows) {
        double value = row.value;
        Angle::TransformValue(row.from, row.to, value);
        EXPECT_DOUBLE_EQ(value, row.expected);
    }
    double seconds = 7200.0;
    Angle::TransformDegreeSecond(DegreeSecond, seconds);
    EXPECT_EQ(seconds, 2.0) << "divides whatever the target";

    Angle angle;
    angle.SetDegrees(-90.0);
    EXPECT_DOUBLE_EQ(angle.GetRadians(), -pi / 2);
    angle.SetGrad(500.0);
    EXPECT_DOUBLE_EQ(angle.GetGrad(), 100.0) << "setters normalise";
    EXPECT_DOUBLE_EQ(Angle(pi).GetGrad(), 200.0);
    EXPECT_DOUBLE_EQ(Angle(pi).GetDegrees(), 180.0);
}

}  // namespace
}  // namespace Kalvio::Math
