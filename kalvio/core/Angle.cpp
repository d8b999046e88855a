#include "kalvio/core/Angle.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Tolerances.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

constexpr double onePerPi = 0.3183098861837907;
constexpr double gradsPerHalfTurn = 200.0;
constexpr double manyTurns = 4096.0 * detail::twoPi;  // beyond this the remainder is taken first: the loops stay short

// atan2 in (-pi, pi]: -0.0 + 0.0 is 0.0, so that the sign of a zero decides nothing.
double Direction(double sine, double cosine) { return std::atan2(sine + 0.0, cosine + 0.0); }

double WithoutManyTurns(double value) { return std::abs(value) > manyTurns ? std::fmod(value, detail::twoPi) : value; }

}  // namespace

Angle::Angle(double x, double y) : radians(Direction(y, x)) {}

Angle::Angle(const Point2D& from, const Point2D& to)
    : radians(NormalizeAngle(Direction(to.GetX() - from.GetX(), to.GetY() - from.GetY()))) {}

MathTypes Angle::GetType() const { return MathTypes::Angle; }

double Angle::GetGrad() const { return radians * gradsPerHalfTurn * onePerPi; }

void Angle::SetDegrees(double degrees) { SetRadians(degrees * detail::radiansPerDegree); }

void Angle::SetGrad(double grads) { SetRadians(grads * detail::pi / gradsPerHalfTurn); }

Angle Angle::FromGradians(double gradians) {
    Angle angle;
    angle.SetGrad(gradians);
    return angle;
}

// While above `above` a turn is removed, then while not above `notAbove` one is added.
double Angle::Reduce(double value, double above, double notAbove) {
    if (!std::isfinite(value)) return value;
    value = WithoutManyTurns(value);
    while (value > above) value -= detail::twoPi;
    while (value <= notAbove) value += detail::twoPi;
    return value;
}

double Angle::NormalizeAnglePiMinusPi(double value) { return Reduce(value, detail::pi, -detail::pi); }

double Angle::NormalizeZero2Pi(double value) {
    if (!std::isfinite(value)) return value;
    value = WithoutManyTurns(value);
    while (value > detail::twoPi) value -= detail::twoPi;
    while (value < 0.0) value += detail::twoPi;
    return value;
}

bool Angle::IsEqualTo(const Angle& other, double tolerance) const {
    double a = radians;
    double b = other.radians;
    if (std::abs(a - b) < tolerance) return true;
    (b <= a ? b : a) += detail::twoPi;
    return std::abs(a - b) < tolerance;
}

bool Angle::IsEqualTo(const Angle& other, Tolerances tolerances) const {
    return IsEqualTo(other, tolerances.AngleTolerance().GetRadians());
}

bool Angle::IsFirstCloser(const Angle& first, const Angle& second) const {
    return std::abs(NormalizeAnglePiMinusPi(second.radians - radians)) >
           std::abs(NormalizeAnglePiMinusPi(first.radians - radians));
}

void Angle::TransformValue(AngleUnit from, AngleUnit to, double& value) {
    const auto known = [](AngleUnit unit) { return unit <= AngleUnit::DecimalDegree; };
    if (from == to || !known(from) || !known(to)) return;
    switch (from) {
        case AngleUnit::Radians:
            return TransformRadians(to, value);
        case AngleUnit::DegreeSecond:
            return TransformDegreeSecond(to, value);
        case AngleUnit::DecimalDegree:
            return TransformDecimalDegree(to, value);
    }
}

void Angle::TransformRadians(AngleUnit to, double& value) {
    if (to == AngleUnit::DegreeSecond) {
        value = value * detail::degreesPerRadian * detail::secondsPerDegree;
    } else if (to == AngleUnit::DecimalDegree) {
        value *= detail::degreesPerRadian;
    }
}

void Angle::TransformDecimalDegree(AngleUnit to, double& value) {
    if (to == AngleUnit::Radians) {
        value *= detail::radiansPerDegree;
    } else if (to == AngleUnit::DegreeSecond) {
        value *= detail::secondsPerDegree;
    }
}

void Angle::TransformDegreeSecond(AngleUnit to, double& value) {
    value /= detail::secondsPerDegree;
    if (to == AngleUnit::Radians) value *= detail::radiansPerDegree;
}

template <>
bool Geometry::AreEqual(const Angle& a, const Angle& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
