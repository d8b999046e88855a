#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/detail/GeographicAccess.h"

#include <cmath>

namespace Kalvio::Math {

class Matrix3D;

/// Position in space: X and Y in plan, Z is height.
class KALVIO_MATH_API Point3D final : public IGeometry, public detail::GeographicAccess<Point3D> {
public:
    constexpr Point3D() = default;
    constexpr Point3D(double xValue, double yValue, double zValue) : x(xValue), y(yValue), z(zValue) {}
    Point3D(const Point2D& plan, double zValue) : x(plan.GetX()), y(plan.GetY()), z(zValue) {}
    /// The one shared point at the origin.
    static const Point3D& origo();

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 0; }
    /// Comparable with a `Point3D` and a `PointND` of three coordinates.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Point3D* Clone() const override;

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
    /// Drops z.
    Point2D GetPoint2D() const { return {x, y}; }
    /// 0, 1, 2 are x, y, z; any other index yields x.
    const double& operator[](int index) const { return index == 1 ? y : index == 2 ? z : x; }
    double& operator[](int index) { return index == 1 ? y : index == 2 ? z : x; }

    double Distance(const Point3D& other) const {
        const double dx = other.x - x;
        const double dy = other.y - y;
        const double dz = other.z - z;
        return std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    double Distance2D(const Point3D& other) const {
        const double dx = other.x - x;
        const double dy = other.y - y;
        return std::sqrt(dx * dx + dy * dy);
    }
    /// Strict per-coordinate comparison: a cube test, not a distance test.
    bool IsEqualTo(const Point3D& other, double tolerance) const {
        return IsEqualTo2d(other, tolerance) && std::abs(z - other.z) < tolerance;
    }
    /// The same on x and y only.
    bool IsEqualTo2d(const Point3D& other, double tolerance) const {
        return std::abs(x - other.x) < tolerance && std::abs(y - other.y) < tolerance;
    }

    /// Homogeneous row-vector product [x y z 1] M, divided by w when w is not 1. A non-const point is changed in place.
    Point3D& Transform(const Matrix3D& matrix);
    [[nodiscard]] Point3D Transform(const Matrix3D& matrix) const;

    Point3D operator-() const { return {-x, -y, -z}; }
    Point3D& operator+=(const Point3D& other) {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    Point3D& operator+=(const Vec3D& v) {
        x += v.GetX();
        y += v.GetY();
        z += v.GetZ();
        return *this;
    }
    Point3D& operator-=(const Vec3D& v) {
        x -= v.GetX();
        y -= v.GetY();
        z -= v.GetZ();
        return *this;
    }
    Point3D& operator*=(double factor) {
        x *= factor;
        y *= factor;
        z *= factor;
        return *this;
    }
    /// Nothing changes for a divisor of 0 or NaN.
    Point3D& operator/=(double divisor) {
        if (divisor < 0.0 || divisor > 0.0) {
            x /= divisor;
            y /= divisor;
            z /= divisor;
        }
        return *this;
    }

private:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

inline Vec3D operator-(const Point3D& a, const Point3D& b) {
    return {a.GetX() - b.GetX(), a.GetY() - b.GetY(), a.GetZ() - b.GetZ()};
}
inline Point3D operator+(Point3D p, const Vec3D& v) { return p += v; }
inline Point3D operator-(Point3D p, const Vec3D& v) { return p -= v; }
inline Point3D operator+(Point3D a, const Point3D& b) { return a += b; }
inline Point3D operator*(Point3D p, double factor) { return p *= factor; }
inline Point3D operator*(double factor, Point3D p) { return p *= factor; }
inline Point3D operator/(Point3D p, double divisor) { return p /= divisor; }
inline Point3D operator*(const Point3D& p, const Matrix3D& matrix) { return p.Transform(matrix); }

}  // namespace Kalvio::Math
