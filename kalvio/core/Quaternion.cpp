#include "kalvio/core/Quaternion.h"

#include "kalvio/core/Angle.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

constexpr double crossProductNoise = 1e-14;  // of unit vectors: a shorter product has lost its direction

bool IsUsableLength(double length) { return length > detail::numericalZero && std::isfinite(length); }

bool MakeUnit(Vec3D& v) {
    const double length = std::hypot(std::hypot(v.GetX(), v.GetY()), v.GetZ());
    if (!IsUsableLength(length)) return false;
    v /= length;
    return true;
}

// Shortest turn between unit vectors at most a quarter turn apart: (a x b, 1 + a b) normalised.
Quaternion ShortTurn(const Vec3D& a, const Vec3D& b) {
    const Vec3D axis = a.CrossProduct(b);
    return Quaternion(axis.GetX(), axis.GetY(), axis.GetZ(), 1.0 + a.DotProduct(b)).Normalize();
}

}  // namespace

Quaternion::Quaternion(const Vec3D& axis, const Angle& angle) {
    Vec3D unit(axis);
    if (!MakeUnit(unit)) return;
    unit *= std::sin(0.5 * angle.GetRadians());
    components = {unit.GetX(), unit.GetY(), unit.GetZ(), std::cos(0.5 * angle.GetRadians())};
}

Quaternion::Quaternion(const Vec3D& from, const Vec3D& to) {
    Vec3D a(from);
    Vec3D b(to);
    if (!MakeUnit(a) || !MakeUnit(b)) return;
    if (a.DotProduct(b) >= 0.0) {
        *this = ShortTurn(a, b);
        return;
    }
    // 1 + a b cancels near opposite vectors: a half turn takes a to -a, a short turn from there to b.
    Vec3D axis = a.CrossProduct(b);
    if (!(axis.Length() > crossProductNoise)) {
        Vec3D least;  // the coordinate axis that is farthest from a
        const bool xIsLeast = std::abs(a.GetX()) <= std::abs(a.GetY()) && std::abs(a.GetX()) <= std::abs(a.GetZ());
        least[xIsLeast ? 0 : std::abs(a.GetY()) <= std::abs(a.GetZ()) ? 1 : 2] = 1.0;
        axis = a.CrossProduct(least);
    }
    axis /= axis.Length();
    axis -= a * a.DotProduct(axis);
    axis /= axis.Length();
    *this = ShortTurn(-a, b);
    *this *= Quaternion(axis.GetX(), axis.GetY(), axis.GetZ(), 0.0);
}

MathTypes Quaternion::GetType() const { return MathTypes::Quaternion; }

double Quaternion::Length() const {
    return std::hypot(std::hypot(components[0], components[1]), std::hypot(components[2], components[3]));
}

Quaternion& Quaternion::operator*=(const Quaternion& other) {
    const auto [ax, ay, az, aw] = components;
    const auto [bx, by, bz, bw] = other.components;
    components = {aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
                  aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz};
    return *this;
}

Quaternion& Quaternion::Invert() {
    const double length = Length();
    if (!(length > 0.0) || !std::isfinite(length)) return *this;
    for (double& component : components) component = -(component / length / length);
    components[3] = -components[3];
    return *this;
}

Quaternion& Quaternion::Normalize() {
    const double length = Length();
    if (!IsUsableLength(length)) return *this;
    for (double& component : components) component /= length;
    return *this;
}

bool Quaternion::IsEqualTo(const Quaternion& other, double tolerance) const {
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (!(std::abs(components[i] - other.components[i]) < tolerance)) return false;
    }
    return true;
}

bool Quaternion::GetRotation(Vec3D& axis, Angle& angle) const {
    if (!IsUsableLength(Length())) return false;
    Quaternion unit(*this);
    unit.Normalize();
    const double sign = unit[3] < 0.0 ? -1.0 : 1.0;
    const Vec3D part(sign * unit[0], sign * unit[1], sign * unit[2]);
    const double sine = std::hypot(std::hypot(part.GetX(), part.GetY()), part.GetZ());
    axis = sine > 0.0 ? part / sine : Vec3D(0.0, 0.0, 1.0);
    angle = 2.0 * std::atan2(sine, sign * unit[3]);
    return true;
}

}  // namespace Kalvio::Math
