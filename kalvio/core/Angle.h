#pragma once

#include "kalvio/core/IMathObject.h"
#include "kalvio/core/detail/Constants.h"

#include <compare>
#include <cstdint>

namespace Kalvio::Math {

class Point2D;
class Tolerances;

/// Units that the conversion functions and the geographic accessors of points understand.
enum class AngleUnit : std::uint32_t {
    Radians = 0,
    DegreeSecond = 1,   ///< seconds of arc: degrees x 3600
    DecimalDegree = 2,  ///< degrees
};

/// An angle: a sweep, a direction, a rotation or an angular tolerance.
///
/// Stored in radians in (-2 pi, 2 pi]; the sign is kept, so -pi/2 and 3 pi/2 are different values and 2 pi is a full
/// turn. Non-finite values pass through every normalisation unchanged.
///
/// Normalisation adds or removes one full turn, the double nearest to 2 pi, at a time, with a rounding for each; beyond
/// 4096 turns the exact remainder by that double is taken first. A huge angle is therefore off by its number of turns
/// times 2.4e-16 rad, and by half the last digit that it had: above 1e16 rad it holds no direction any more.
class KALVIO_MATH_API Angle : public IMathObject {
public:
    constexpr Angle() = default;
    /// @param value  radians, normalised by `NormalizeAngle`
    Angle(double value) : radians(NormalizeAngle(value)) {}
    /// Direction of the vector (x, y), counter-clockwise from +X, in (-pi, pi]; the sign of a zero does not matter, and
    /// (0, 0) gives 0.
    Angle(double x, double y);
    /// Bearing from one point to another as surveyors measure it: from +Y (north), positive clockwise, in (-pi, pi].
    Angle(const Point2D& from, const Point2D& to);
    Angle(const Angle&) = default;
    Angle& operator=(const Angle&) = default;

    /// The angle of degrees, or of gradians (400 to the turn), normalised by `NormalizeAngle`.
    [[nodiscard]] static Angle FromDegrees(double degrees) { return {degrees * detail::radiansPerDegree}; }
    [[nodiscard]] static Angle FromGradians(double gradians);

    MathTypes GetType() const override;

    double GetRadians() const { return radians; }
    double GetDegrees() const { return radians * detail::degreesPerRadian; }
    double GetGrad() const;

    /// The setters normalise by `NormalizeAngle`.
    void SetRadians(double value) { radians = NormalizeAngle(value); }
    void SetDegrees(double degrees);
    void SetGrad(double grads);

    /// Value in (-2 pi, 2 pi].
    [[nodiscard]] static double NormalizeAngle(double value) {
        return value > detail::twoPi || value <= -detail::twoPi ? Reduce(value, detail::twoPi, -detail::twoPi) : value;
    }
    /// Value in (-pi, pi].
    [[nodiscard]] static double NormalizeAnglePiMinusPi(double value);
    /// Value in [0, 2 pi]; 2 pi and -0.0 stay as they are.
    [[nodiscard]] static double NormalizeZero2Pi(double value);

    /// Strict comparison of the radians, tried once more with a full turn added to the smaller value: 0.00001 and
    /// 2 pi - 0.00001 are equal within 0.0001.
    bool IsEqualTo(const Angle& other, double tolerance) const;
    /// The same with the record's angle tolerance.
    bool IsEqualTo(const Angle& other, Tolerances tolerances) const;
    /// True when `first` is strictly nearer to this direction than `second`, the shorter way round.
    bool IsFirstCloser(const Angle& first, const Angle& second) const;

    /// In-place conversions; an unknown unit leaves the value as it is.
    static void TransformValue(AngleUnit from, AngleUnit to, double& value);
    static void TransformRadians(AngleUnit to, double& value);
    static void TransformDecimalDegree(AngleUnit to, double& value);
    /// Divides by 3600 for every target, `DegreeSecond` included; `TransformValue` guards equal units.
    static void TransformDegreeSecond(AngleUnit to, double& value);

    /// Arithmetic on the radians; every result is normalised by `NormalizeAngle`, so that a full turn is kept, its
    /// opposite is 0, and an angle halved and doubled again is itself. Nothing guards a division by 0.
    Angle operator-() const { return {-radians}; }
    Angle& operator+=(const Angle& other) { return *this = {radians + other.radians}; }
    Angle& operator-=(const Angle& other) { return *this = {radians - other.radians}; }
    Angle& operator*=(double factor) { return *this = {radians * factor}; }
    Angle& operator/=(double divisor) { return *this = {radians / divisor}; }
    friend Angle operator+(Angle a, const Angle& b) { return a += b; }
    friend Angle operator-(Angle a, const Angle& b) { return a -= b; }
    friend Angle operator*(Angle a, double factor) { return a *= factor; }
    friend Angle operator*(double factor, Angle a) { return a *= factor; }
    friend Angle operator/(Angle a, double divisor) { return a /= divisor; }

    /// By the radians as they are, exactly: -pi/2, 3 pi/2 and 2 pi are three values, 0 and -0.0 one, and NaN compares
    /// false. A number on one side becomes an angle first, normalised. `IsEqualTo` compares directions.
    friend bool operator==(const Angle& a, const Angle& b) { return a.radians == b.radians; }
    friend std::partial_ordering operator<=>(const Angle& a, const Angle& b) { return a.radians <=> b.radians; }

protected:
    void CopyData(const Angle& other) { radians = other.radians; }
    void NormalizeAngle() { radians = NormalizeAngle(radians); }

private:
    static double Reduce(double value, double above, double notAbove);

    double radians = 0.0;
};

}  // namespace Kalvio::Math
