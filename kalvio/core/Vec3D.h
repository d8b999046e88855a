#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/Vec2D.h"

#include <cmath>

namespace Kalvio::Math {

class Matrix3D;
class Quaternion;

/// Free vector in space. The rules of `Vec2D` hold where the names agree.
class KALVIO_MATH_API Vec3D : public IMathObject {
public:
    constexpr Vec3D() = default;
    constexpr Vec3D(double xValue, double yValue, double zValue) : x(xValue), y(yValue), z(zValue) {}
    Vec3D(const Vec2D& plan, double zValue) : x(plan.GetX()), y(plan.GetY()), z(zValue) {}
    Vec3D(const Vec3D&) = default;
    Vec3D& operator=(const Vec3D&) = default;

    MathTypes GetType() const override;

    double GetX() const { return x; }
    double GetY() const { return y; }
    double GetZ() const { return z; }
    void SetX(double value) { x = value; }
    void SetY(double value) { y = value; }
    void SetZ(double value) { z = value; }
    void SetCoordinates(double xValue, double yValue, double zValue) {
        x = xValue;
        y = yValue;
        z = zValue;
    }
    /// 0, 1, 2 are x, y, z; any other index yields x.
    const double& operator[](int index) const { return index == 1 ? y : index == 2 ? z : x; }
    double& operator[](int index) { return index == 1 ? y : index == 2 ? z : x; }

    double Length() const { return std::sqrt(NormSquared()); }
    double Norm() const { return Length(); }
    double NormSquared() const { return x * x + y * y + z * z; }
    /// Length in plan.
    double Length2D() const { return std::sqrt(x * x + y * y); }
    double DotProduct(const Vec3D& other) const { return x * other.x + y * other.y + z * other.z; }
    Vec3D CrossProduct(const Vec3D& other) const {
        return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
    }
    /// x o.y - y o.x: the plan components only.
    double PerpDotProduct(const Vec3D& other) const { return x * other.y - y * other.x; }
    /// Divides by the length; a vector of length at most 1e-10 stays as it is.
    Vec3D& Normalize() {
        const double length = Length();
        if (length > detail::numericalZero) *this /= length;
        return *this;
    }
    /// A copy of at most the given length. The zero test is made on the square: a vector shorter than about 1e-5 is
    /// never scaled.
    [[nodiscard]] Vec3D Clamp(double maxLength) const;

    /// Unsigned angle between the vectors in [0, pi], as in the plane.
    Angle GetAngle(const Vec3D& other) const;
    /// Cosine of that angle, not clamped; 0 when the product of the lengths is at most 1e-10.
    double Vec3DCosAngle(const Vec3D& other) const;
    /// Index of the component of the largest magnitude; equal magnitudes favour the later axis.
    int FindDominantAxis() const;
    /// The two axes to project onto so that a polygon whose normal is this vector keeps its orientation.
    void Find2MajorAxisForProjection(int& first, int& second) const;

    /// Strict per-coordinate comparison.
    bool IsEqualTo(const Vec3D& other, double tolerance) const {
        return std::abs(x - other.x) < tolerance && std::abs(y - other.y) < tolerance &&
               std::abs(z - other.z) < tolerance;
    }
    /// The same with a `Vec3D` or a `VecND` of three coordinates; false for any other object.
    bool IsEqualTo(const IMathObject& other, double tolerance) const;
    bool IsOppositeTo(const Vec3D& other, double tolerance) const { return IsEqualTo(-other, tolerance); }

    /// Homogeneous row-vector product [x y z 1] M, divided by w when w is not 1: translation included, as for a point.
    /// A non-const vector is changed in place.
    Vec3D& Transform(const Matrix3D& matrix);
    [[nodiscard]] Vec3D Transform(const Matrix3D& matrix) const;
    /// Rotates by the rotation matrix of the quaternion, which is not normalised.
    Vec3D& operator*=(const Quaternion& rotation);

    Vec3D operator-() const { return {-x, -y, -z}; }
    Vec3D& operator+=(const Vec3D& other) {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    Vec3D& operator-=(const Vec3D& other) {
        x -= other.x;
        y -= other.y;
        z -= other.z;
        return *this;
    }
    Vec3D& operator*=(double factor) {
        x *= factor;
        y *= factor;
        z *= factor;
        return *this;
    }
    Vec3D& operator/=(double divisor) {
        if (divisor < 0.0 || divisor > 0.0) {
            x /= divisor;
            y /= divisor;
            z /= divisor;
        }
        return *this;
    }

protected:
    void CopyData(const Vec3D& other) { SetCoordinates(other.x, other.y, other.z); }

private:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

inline Vec3D operator+(Vec3D a, const Vec3D& b) { return a += b; }
inline Vec3D operator-(Vec3D a, const Vec3D& b) { return a -= b; }
inline Vec3D operator*(Vec3D v, double factor) { return v *= factor; }
inline Vec3D operator*(double factor, Vec3D v) { return v *= factor; }
inline Vec3D operator/(Vec3D v, double divisor) { return v /= divisor; }
inline Vec3D operator*(const Vec3D& v, const Matrix3D& matrix) { return v.Transform(matrix); }

}  // namespace Kalvio::Math
