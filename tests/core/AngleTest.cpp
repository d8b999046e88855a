#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(AngleTest, EachNormalisationKeepsItsOwnRange) {
    const std::tuple<const char*, double, double, double, double> rows[] = {
        {"the sign stays", -kPi / 2, -kPi / 2, -kPi / 2, 1.5 * kPi},
        {"a full turn stays a full turn where the range holds it", 2 * kPi, 2 * kPi, 0.0, 2 * kPi},
        {"a turn back is open", -2 * kPi, 0.0, 0.0, 0.0},
        {"beyond a turn", 7.0, 7.0 - 2 * kPi, 7.0 - 2 * kPi, 7.0 - 2 * kPi},
        {"beyond a turn back", -7.0, -7.0 + 2 * kPi, -7.0 + 2 * kPi, -7.0 + 2 * 2 * kPi},
        {"half a turn is closed", kPi, kPi, kPi, kPi},
        {"half a turn back is open", -kPi, -kPi, kPi, kPi},
        {"the largest number ends", std::numeric_limits<double>::max(), std::fmod(1.7976931348623157e308, 2 * kPi),
         std::remainder(1.7976931348623157e308, 2 * kPi), std::fmod(1.7976931348623157e308, 2 * kPi)},
        {"infinity passes", -kInfinity, -kInfinity, -kInfinity, -kInfinity},
    };
    for (const auto& [why, value, stored, signedHalf, positive] : rows) {
        SCOPED_TRACE(why);
        EXPECT_DOUBLE_EQ(Angle(value).GetRadians(), stored);
        EXPECT_DOUBLE_EQ(Angle::NormalizeAnglePiMinusPi(value), signedHalf);
        EXPECT_DOUBLE_EQ(Angle::NormalizeZero2Pi(value), positive);
    }
    EXPECT_TRUE(std::signbit(Angle::NormalizeZero2Pi(-0.0)) && std::isnan(Angle(kNan).GetRadians()));
}

TEST(AngleTest, ArithmeticIsNormalisedAndComparisonIsNot) {
    const Angle half = kPi, quarter = Angle::FromGradians(100.0);
    const std::tuple<const char*, Angle, double> rows[] = {
        {"a full turn is kept", half + half, 2 * kPi},
        {"and its opposite is none", -(half + half), 0.0},
        {"once round, the sign is kept", quarter - 3.0 * half, -kPi / 2},
        {"once round backwards", -half * 2.5, -kPi / 2},
        {"parts", half / 4.0 + quarter / -2.0, 0.0},
        {"a number is an angle", quarter + 2 * kPi, kPi / 2},
    };
    for (const auto& [why, angle, radians] : rows) EXPECT_NEAR(angle.GetRadians(), radians, 1e-15) << why;
    Angle sum = quarter;
    EXPECT_EQ((((sum += half) -= quarter) *= 3.0) /= 2.0, quarter);
    EXPECT_TRUE(-quarter < Angle(1.5 * kPi) && -quarter != Angle(1.5 * kPi) && Angle(2 * kPi) > Angle(0.0));
    EXPECT_TRUE(Angle(0.0) == Angle(-0.0) && !(Angle(kNan) == kNan) && !(Angle(kNan) <= half));
}

TEST(AngleTest, DirectionsCountFromEastAndBearingsFromNorth) {
    const std::tuple<const char*, double, double, double, double> rows[] = {
        {"east", 1, 0, 0, kPi / 2},
        {"north", 0, 1, kPi / 2, 0},
        {"west", -1, 0, kPi, -kPi / 2},
        {"south", 0, -1, -kPi / 2, kPi},
        {"nowhere", 0, 0, 0, 0},
        {"north-east", 2, 2, kPi / 4, kPi / 4},
        {"west, -0.0", -1, -0.0, kPi, -kPi / 2},
        {"south, -0.0", -0.0, -1, -kPi / 2, kPi},
        {"-0.0", -0.0, -0.0, 0, 0},
    };
    const Point2D from(385000.0, 6672000.0);
    for (const auto& [way, dx, dy, direction, bearing] : rows) {
        SCOPED_TRACE(way);
        EXPECT_DOUBLE_EQ(Angle(dx, dy).GetRadians(), direction);
        EXPECT_DOUBLE_EQ(Angle(Point2D(), Point2D(dx, dy)).GetRadians(), bearing);
        EXPECT_DOUBLE_EQ(Angle(from, from + Vec2D(dx, dy)).GetRadians(), bearing);
    }
}

TEST(AngleTest, TheShorterWayRoundCounts) {
    const std::tuple<const char*, double, double, double, bool> rows[] = {
        {"across the full turn", 6.28315, 0.00005, 0.0001, true},
        {"a quarter back and three quarters on", -kPi / 2, 1.5 * kPi, 1e-9, true},
        {"two turns apart", -6.0, -6.0 + 2 * 2 * kPi - 0.6, 0.1, false},
    };
    for (const auto& [why, a, b, tolerance, expected] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(Angle(a).IsEqualTo(Angle(b), tolerance), expected);
        EXPECT_EQ(Angle(b).IsEqualTo(Angle(a), tolerance), expected);
        EXPECT_EQ(Angle(a).IsEqualTo(Angle(b), Tolerances(1.0, Angle(tolerance), 1e-10)), expected);
    }
    EXPECT_TRUE(Angle(0.0).IsFirstCloser(Angle(2 * kPi - 0.1), Angle(0.3)));
    EXPECT_FALSE(Angle(0.0).IsFirstCloser(Angle(0.3), Angle(2 * kPi - 0.1)));
    EXPECT_FALSE(Angle(0.0).IsFirstCloser(Angle(0.3), Angle(-0.3))) << "a tie";
}

TEST(AngleTest, UnitsConvertInPlaceAndUnknownOnesDoNothing) {
    using enum AngleUnit;
    const auto unknown = static_cast<AngleUnit>(3);
    const std::tuple<AngleUnit, AngleUnit, double, double> rows[] = {
        {DecimalDegree, Radians, 180.0, kPi},       {Radians, DecimalDegree, kPi, 180.0},
        {DegreeSecond, DecimalDegree, 3600.0, 1.0}, {DecimalDegree, DegreeSecond, 1.0, 3600.0},
        {Radians, DegreeSecond, kPi, 648000.0},     {DegreeSecond, Radians, 648000.0, kPi},
        {DegreeSecond, DegreeSecond, 7.0, 7.0},     {unknown, Radians, 7.0, 7.0},
        {DegreeSecond, unknown, 7.0, 7.0},
    };
    double value = 7200.0;
    Angle::TransformDegreeSecond(DegreeSecond, value);
    EXPECT_EQ(value, 2.0) << "divides whatever the target";
    for (const auto& [from, to, given, expected] : rows) {
        Angle::TransformValue(from, to, value = given);
        EXPECT_DOUBLE_EQ(value, expected) << given;
    }
    Angle angle;
    angle.SetDegrees(-90.0);
    EXPECT_DOUBLE_EQ(angle.GetRadians(), -kPi / 2);
    angle.SetGrad(500.0);
    EXPECT_DOUBLE_EQ(angle.GetGrad() + Angle::FromDegrees(540.0).GetDegrees(), 100.0 + 180.0) << "all normalise";
}

}  // namespace
}  // namespace Kalvio::Math
