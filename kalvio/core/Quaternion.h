#pragma once

#include "kalvio/core/IMathObject.h"

#include <array>

namespace Kalvio::Math {

class Angle;
class Vec3D;

/// Rotation in space as a quaternion qx i + qy j + qz k + qw.
///
/// The unit quaternion (k sin(a / 2), cos(a / 2)) turns by the angle a, right-handed, about the unit axis k. q and -q
/// are the same rotation. Vectors are turned by `Vec3D::operator*=`, which does not normalise.
class KALVIO_MATH_API Quaternion final : public IMathObject {
public:
    /// No rotation: (0, 0, 0, 1).
    constexpr Quaternion() = default;
    constexpr Quaternion(double qx, double qy, double qz, double qw) : components{qx, qy, qz, qw} {}
    /// Right-handed turn about the axis, which need not be a unit vector; no rotation for an axis of length at most
    /// 1e-10 or not finite.
    Quaternion(const Vec3D& axis, const Angle& angle);
    /// The rotation by the least angle that turns the direction of `from` into that of `to`; about some axis
    /// perpendicular to both when they are opposite. No rotation when either has a length of at most 1e-10 or not
    /// finite.
    Quaternion(const Vec3D& from, const Vec3D& to);

    MathTypes GetType() const override;

    /// 0, 1, 2, 3 are qx, qy, qz, qw; any other index yields qx.
    const double& operator[](int index) const { return components[Index(index)]; }
    double& operator[](int index) { return components[Index(index)]; }

    /// Hamilton's product, this times the other (i j = k). As rotations the other is applied first:
    /// Matrix3D(a b) = Matrix3D(b) Matrix3D(a).
    Quaternion& operator*=(const Quaternion& other);
    /// The conjugate divided by the squared length; a quaternion of length 0 or not finite stays as it is.
    Quaternion& Invert();
    /// Divides by the length; a quaternion of length at most 1e-10 or not finite stays as it is.
    Quaternion& Normalize();
    /// Strict comparison of the components, so q and -q are different.
    bool IsEqualTo(const Quaternion& other, double tolerance) const;

    /// Unit axis and angle in [0, pi] of the rotation of the normalised quaternion; no rotation has the axis (0, 0, 1).
    /// @return false, outputs untouched, for a length of at most 1e-10 or not finite
    [[nodiscard]] bool GetRotation(Vec3D& axis, Angle& angle) const;

private:
    static constexpr std::size_t Index(int index) {
        return index > 0 && index < 4 ? static_cast<std::size_t>(index) : 0;
    }
    double Length() const;

    std::array<double, 4> components{0.0, 0.0, 0.0, 1.0};
};

}  // namespace Kalvio::Math
