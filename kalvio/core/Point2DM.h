#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"

#include <cmath>

namespace Kalvio::Math {

/// Position in plan that carries a measure value.
class KALVIO_MATH_API Point2DM final : public IGeometry {
public:
    constexpr Point2DM() = default;
    constexpr Point2DM(double xValue, double yValue, double measure) : x(xValue), y(yValue), m(measure) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 0; }
    /// Comparable with another `Point2DM` only.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Point2DM* Clone() const override;

    double GetX() const { return x; }
    double GetY() const { return y; }
    double GetM() const { return m; }
    void SetX(double value) { x = value; }
    void SetY(double value) { y = value; }
    void SetM(double value) { m = value; }
    void SetCoordinates(double xValue, double yValue, double measure) {
        x = xValue;
        y = yValue;
        m = measure;
    }
    /// Position only; the measure is kept.
    void SetCoordinates(const Point2D& p) {
        x = p.GetX();
        y = p.GetY();
    }
    /// 0, 1, 2 are x, y, m; any other index yields 0 here and x in the non-const form.
    double operator[](int index) const { return index == 0 ? x : index == 1 ? y : index == 2 ? m : 0.0; }
    double& operator[](int index) { return index == 1 ? y : index == 2 ? m : x; }

    /// Plan distance; the measures are ignored.
    double Distance(const Point2DM& other) const {
        const double dx = other.x - x;
        const double dy = other.y - y;
        return std::sqrt(dx * dx + dy * dy);
    }
    /// Strict comparison of x, y and m.
    bool IsEqualTo(const Point2DM& other, double tolerance) const {
        return std::abs(x - other.x) < tolerance && std::abs(y - other.y) < tolerance &&
               std::abs(m - other.m) < tolerance;
    }

    /// The position as that of a `Point2D`; the measure is kept. A non-const point is changed in place.
    Point2DM& Transform(const Matrix2D& matrix);
    [[nodiscard]] Point2DM Transform(const Matrix2D& matrix) const;

    Point2DM& operator+=(const Point2DM& other) {
        x += other.x;
        y += other.y;
        m += other.m;
        return *this;
    }
    /// Moves the position; the measure is kept.
    Point2DM& operator+=(const Vec2D& v) {
        x += v.GetX();
        y += v.GetY();
        return *this;
    }
    Point2DM& operator*=(double factor) {
        x *= factor;
        y *= factor;
        m *= factor;
        return *this;
    }
    /// Nothing changes for a divisor of 0 or NaN.
    Point2DM& operator/=(double divisor) {
        if (divisor < 0.0 || divisor > 0.0) {
            x /= divisor;
            y /= divisor;
            m /= divisor;
        }
        return *this;
    }

private:
    double x = 0.0;
    double y = 0.0;
    double m = 0.0;
};

inline Vec2D operator-(const Point2DM& a, const Point2DM& b) { return {a.GetX() - b.GetX(), a.GetY() - b.GetY()}; }
inline Point2DM operator+(Point2DM p, const Vec2D& v) { return p += v; }
inline Point2DM operator-(Point2DM p, const Vec2D& v) { return p += -v; }
inline Point2DM operator+(Point2DM a, const Point2DM& b) { return a += b; }
inline Point2DM operator*(Point2DM p, double factor) { return p *= factor; }
inline Point2DM operator*(double factor, Point2DM p) { return p *= factor; }
inline Point2DM operator*(const Point2DM& p, const Matrix2D& matrix) { return p.Transform(matrix); }

}  // namespace Kalvio::Math
