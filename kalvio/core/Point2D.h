#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/detail/GeographicAccess.h"

#include <cmath>

namespace Kalvio::Math {

class Matrix2D;

/// Position in plan: X east-like, Y north-like.
class KALVIO_MATH_API Point2D final : public IGeometry, public detail::GeographicAccess<Point2D> {
public:
    constexpr Point2D() = default;
    constexpr Point2D(double xValue, double yValue) : x(xValue), y(yValue) {}
    /// Polar: the point at a distance from the origin in a direction counter-clockwise from +X.
    Point2D(Angle direction, double distance)
        : x(std::cos(direction.GetRadians()) * distance), y(std::sin(direction.GetRadians()) * distance) {}
    /// The one shared point at the origin.
    static const Point2D& origo();

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 0; }
    /// Comparable with a `Point2D` and a `PointND` of two coordinates.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Point2D* Clone() const override;

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

    double Distance(const Point2D& other) const {
        const double dx = other.x - x;
        const double dy = other.y - y;
        return std::sqrt(dx * dx + dy * dy);
    }
    /// Strict per-coordinate comparison: a square test, not a distance test.
    bool IsEqualTo(const Point2D& other, double tolerance) const {
        return std::abs(x - other.x) < tolerance && std::abs(y - other.y) < tolerance;
    }
    /// `IsEqualTo` with 1e-10.
    bool operator==(const Point2D& other) const { return IsEqualTo(other, detail::numericalZero); }

    /// Homogeneous row-vector product [x y 1] M, divided by w when w is not 1. A non-const point is changed in place.
    Point2D& Transform(const Matrix2D& matrix);
    [[nodiscard]] Point2D Transform(const Matrix2D& matrix) const;

    Point2D& operator+=(const Point2D& other) {
        x += other.x;
        y += other.y;
        return *this;
    }
    Point2D& operator+=(const Vec2D& v) {
        x += v.GetX();
        y += v.GetY();
        return *this;
    }
    Point2D& operator-=(const Vec2D& v) {
        x -= v.GetX();
        y -= v.GetY();
        return *this;
    }
    Point2D& operator*=(double factor) {
        x *= factor;
        y *= factor;
        return *this;
    }
    /// Nothing changes for a divisor of 0 or NaN.
    Point2D& operator/=(double divisor) {
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

inline Vec2D operator-(const Point2D& a, const Point2D& b) { return {a.GetX() - b.GetX(), a.GetY() - b.GetY()}; }
inline Point2D operator+(Point2D p, const Vec2D& v) { return p += v; }
inline Point2D operator-(Point2D p, const Vec2D& v) { return p -= v; }
inline Point2D operator+(Point2D a, const Point2D& b) { return a += b; }
inline Point2D operator*(Point2D p, double factor) { return p *= factor; }
inline Point2D operator*(double factor, Point2D p) { return p *= factor; }
inline Point2D operator*(const Point2D& p, const Matrix2D& matrix) { return p.Transform(matrix); }

}  // namespace Kalvio::Math
