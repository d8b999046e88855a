#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math {

class Matrix2D;
class Point2D;

/// Free vector in the plane.
///
/// Division by exactly 0 (or NaN) is a no-operation. Lengths of at most 1e-10 count as zero: such a vector is never
/// scaled or normalised.
class KALVIO_MATH_API Vec2D final : public IMathObject {
public:
    constexpr Vec2D() = default;
    constexpr Vec2D(double xValue, double yValue) : x(xValue), y(yValue) {}
    /// The vector (x, y) brought to the given length by `SetLength`.
    Vec2D(double xValue, double yValue, double length) : x(xValue), y(yValue) { SetLength(length); }
    /// The vector to - from brought to the given length by `SetLength`.
    static Vec2D MakeVector(const Point2D& from, const Point2D& to, double length);

    MathTypes GetType() const override;

    double GetX() const { return x; }
    double GetY() const { return y; }
    void SetX(double value) { x = value; }
    void SetY(double value) { y = value; }
    void SetCoordinates(double xValue, double yValue) {
        x = xValue;
        y = yValue;
    }
    /// 0 is x, 1 is y; any other index yields x.
    const double& operator[](int index) const { return index == 1 ? y : x; }
    double& operator[](int index) { return index == 1 ? y : x; }

    double Length() const { return std::sqrt(NormSquared()); }
    double Norm() const { return Length(); }
    double NormSquared() const { return x * x + y * y; }
    double DotProduct(const Vec2D& other) const { return x * other.x + y * other.y; }
    /// x o.y - y o.x: positive when `other` lies counter-clockwise from this vector.
    double PerpDotProduct(const Vec2D& other) const { return x * other.y - y * other.x; }
    /// The normal of the same length: (-y, x) to the left, (y, -x) to the right.
    [[nodiscard]] Vec2D GetNormalVector(bool left) const { return left ? Vec2D(-y, x) : Vec2D(y, -x); }
    /// Scales to the length; nothing changes for a negative length or a vector of length at most 1e-10.
    Vec2D& SetLength(double length) {
        if (length < 0.0) return *this;
        const double current = Length();
        if (current > detail::numericalZero) *this *= length / current;
        return *this;
    }
    Vec2D& Normalize() { return SetLength(1.0); }

    /// Direction, counter-clockwise from +X, in (-pi, pi]; 0 for the zero vector.
    Angle GetAngle() const { return {x, y}; }
    /// Unsigned angle between the vectors in [0, pi], by acos of the clamped cosine; 0 when the product of the lengths
    /// is at most 1e-10. Near 0 and pi it resolves no better than 1e-8 rad: use `PerpDotProduct` for small turns.
    Angle GetAngle(const Vec2D& other) const;
    /// Sweep from this vector to the other in the given sense, in [0, 2 pi]; the unsigned angle for `Vertical`.
    Angle GetAngle(const Vec2D& other, WindingValue sense) const;

    /// Strict per-coordinate comparison.
    bool IsEqualTo(const Vec2D& other, double tolerance) const {
        return std::abs(x - other.x) < tolerance && std::abs(y - other.y) < tolerance;
    }
    /// The same with a `Vec2D` or a `VecND` of two coordinates; false for any other object.
    bool IsEqualTo(const IMathObject& other, double tolerance) const;
    bool IsOppositeTo(const Vec2D& other, double tolerance) const { return IsEqualTo(-other, tolerance); }

    /// Homogeneous row-vector product [x y 1] M, divided by w when w is not 1: translation included, as for a point.
    /// A non-const vector is changed in place.
    Vec2D& Transform(const Matrix2D& matrix);
    [[nodiscard]] Vec2D Transform(const Matrix2D& matrix) const;

    Vec2D operator-() const { return {-x, -y}; }
    Vec2D& operator+=(const Vec2D& other) {
        x += other.x;
        y += other.y;
        return *this;
    }
    Vec2D& operator-=(const Vec2D& other) {
        x -= other.x;
        y -= other.y;
        return *this;
    }
    Vec2D& operator*=(double factor) {
        x *= factor;
        y *= factor;
        return *this;
    }
    Vec2D& operator/=(double divisor) {
        if (divisor < 0.0 || divisor > 0.0) {
            x /= divisor;
            y /= divisor;
        }
        return *this;
    }

private:
    double x = 0.0;
    double y = 0.0;
};

inline Vec2D operator+(Vec2D a, const Vec2D& b) { return a += b; }
inline Vec2D operator-(Vec2D a, const Vec2D& b) { return a -= b; }
inline Vec2D operator*(Vec2D v, double factor) { return v *= factor; }
inline Vec2D operator*(double factor, Vec2D v) { return v *= factor; }
inline Vec2D operator/(Vec2D v, double divisor) { return v /= divisor; }
inline Vec2D operator*(const Vec2D& v, const Matrix2D& matrix) { return v.Transform(matrix); }

}  // namespace Kalvio::Math
