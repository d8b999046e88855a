#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"

namespace Kalvio::Math {

class Matrix3D;

/// Infinite plane a x + b y + c z + d = 0.
///
/// The normal (a, b, c) is a unit vector, except in a degenerate plane, whose normal is exactly zero: no point lies on
/// that and nothing is projected onto it.
class KALVIO_MATH_API Plane3D : public IGeometry {
public:
    using IGeometry::IsPointOnGeometry;

    /// Degenerate: all coefficients 0.
    constexpr Plane3D() = default;
    /// The coefficients are divided by the length of (a, b, c).
    Plane3D(double aValue, double bValue, double cValue, double dValue) : a(aValue), b(bValue), c(cValue), d(dValue) {
        Normalize();
    }
    /// Through three points, which run counter-clockwise seen from the tip of the normal; degenerate where
    /// (p2 - p1) x (p3 - p1) is exactly zero. Of points in line up to rounding only the rounding decides the normal.
    Plane3D(const Point3D& p1, const Point3D& p2, const Point3D& p3);
    Plane3D(const Point3D& point, const Vec3D& normal);
    Plane3D(const Plane3D&) = default;
    Plane3D& operator=(const Plane3D&) = default;

    MathTypes GetType() const override;
    /// The plane is without end: each coordinate in which it has an extent spans the largest double around `GetPoint`.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Plane3D* Clone() const override;

    /// Strict comparison of the coefficients; the same plane with the opposite normal is another one.
    bool IsEqualTo(const Plane3D& other, double tolerance) const;
    /// `IsEqualTo` with 0.005.
    bool operator==(const Plane3D& other) const;

    void GetParameters(double& outA, double& outB, double& outC, double& outD) const {
        outA = a;
        outB = b;
        outC = c;
        outD = d;
    }
    Vec3D GetNormal() const { return {a, b, c}; }
    /// The foot of the perpendicular from the origin: -d (a, b, c).
    Point3D GetPoint() const { return {-d * a, -d * b, -d * c}; }
    /// The coordinate of the plane's point above two others.
    /// @return false, the output untouched, when the plane is parallel to that axis (its coefficient is exactly 0)
    [[nodiscard]] bool GetPointX(double y, double z, double& x) const { return Solve(a, b * y + c * z, x); }
    [[nodiscard]] bool GetPointY(double x, double z, double& y) const { return Solve(b, a * x + c * z, y); }
    [[nodiscard]] bool GetPointZ(double x, double y, double& z) const { return Solve(c, a * x + b * y, z); }
    /// Orthogonal projection; the point itself for a degenerate plane.
    Point3D GetProjection(const Point3D& point) const;
    /// True when the distance is below the user tolerance. Strict: a point exactly that far away is not on the plane.
    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    /// Angle of the two normals in [0, pi], by `Vec3D::GetAngle`.
    Angle Plane3DAngle(const Plane3D& other) const;

    /// The matrix from plane coordinates to world coordinates: [u v w 1] M.
    ///
    /// Row 3, the origin, is `GetPoint`; row 2 is the normal. Row 0, the first axis, is the unit projection of world X
    /// onto the plane, or of world Y when the normal is within 25.8 degrees of the X axis (|a| > 0.9); row 1 completes
    /// a right-handed system. A horizontal plane with its normal up keeps the directions of the world.
    /// @return the undefined matrix for a degenerate plane
    Matrix3D GetTransformationMatrix() const;

protected:
    void CopyData(const Plane3D& other) { *this = other; }
    void Normalize();

private:
    bool Solve(double coefficient, double others, double& out) const {
        if (coefficient == 0.0) return false;
        out = (-others - d) / coefficient;
        return true;
    }
    double SignedDistance(const Point3D& p) const { return a * p.GetX() + b * p.GetY() + c * p.GetZ() + d; }

    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
    double d = 0.0;
};

}  // namespace Kalvio::Math
