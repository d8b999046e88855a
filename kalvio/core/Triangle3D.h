#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"

namespace Kalvio::Math {

/// A triangle in space, with its area.
class KALVIO_MATH_API Triangle3D final : public IGeometry {
public:
    /// All corners at the origin.
    constexpr Triangle3D() = default;
    constexpr Triangle3D(const Point3D& a, const Point3D& b, const Point3D& c) : pointA(a), pointB(b), pointC(c) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Another triangle with equal corners in the same order, strictly per coordinate.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Triangle3D* Clone() const override;

    const Point3D& GetPointA() const { return pointA; }
    const Point3D& GetPointB() const { return pointB; }
    const Point3D& GetPointC() const { return pointC; }
    void SetPointA(const Point3D& point) { pointA = point; }
    void SetPointB(const Point3D& point) { pointB = point; }
    void SetPointC(const Point3D& point) { pointC = point; }
    /// 0, 1, 2 are A, B, C; any other index yields A.
    const Point3D& operator[](int index) const { return index == 1 ? pointB : index == 2 ? pointC : pointA; }
    Point3D& operator[](int index) { return index == 1 ? pointB : index == 2 ? pointC : pointA; }

    /// Centroid.
    Point3D GetCenter() const { return (pointA + pointB + pointC) / 3.0; }
    /// (B - A) x (C - A) as a unit vector; the product itself when its length is at most 1e-10.
    Vec3D GetNormal() const;
    /// 0 when the edge B - A or C - A has a length of at most 1e-10.
    double GetArea() const;
    /// True for points at most the user tolerance (inclusive) from the plane and from the triangle: the foot of the
    /// perpendicular lies between the edges or the point is at most the tolerance from one of them, so that the edges
    /// are widened all round by the tolerance, corners rounded. A degenerate triangle has edges only.
    bool IsPointInside(const Point3D& point, const Tolerances& tolerances) const;

private:
    Point3D pointA;
    Point3D pointB;
    Point3D pointC;
};

}  // namespace Kalvio::Math
