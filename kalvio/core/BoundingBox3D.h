#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"

namespace Kalvio::Math {

/// Axis-aligned box in space, kept as centre and full size. As for `BoundingBox2D` there is no empty state, and corners
/// in decreasing order are not reordered.
class KALVIO_MATH_API BoundingBox3D final : public IGeometry {
public:
    constexpr BoundingBox3D() = default;
    /// From two corners, which are not reordered.
    BoundingBox3D(const Point3D& p1, const Point3D& p2) { SetMinMaxPoints(p1, p2); }
    BoundingBox3D(const Point3D& boxCenter, const Vec3D& boxSize) : center(boxCenter), size(boxSize) {}

    MathTypes GetType() const override;
    /// The box in plan.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override { return *this; }
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 3; }
    /// Another box of this class with equal centre and size, strictly per coordinate.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] BoundingBox3D* Clone() const override;

    const Point3D& GetCenter() const { return center; }
    const Vec3D& GetSize() const { return size; }
    void SetCenter(const Point3D& value) { center = value; }
    void SetSize(const Vec3D& value) { size = value; }
    Point3D GetMinPoint() const { return center - size * 0.5; }
    Point3D GetMaxPoint() const { return center + size * 0.5; }
    void GetMinMaxPoints(Point3D& minPoint, Point3D& maxPoint) const {
        minPoint = GetMinPoint();
        maxPoint = GetMaxPoint();
    }
    void SetMinMaxPoints(const Point3D& p1, const Point3D& p2) {
        size = p2 - p1;
        center = (p1 + p2) * 0.5;
    }

    /// Union.
    BoundingBox3D& operator+=(const BoundingBox3D& other);

private:
    static void ComputeSizeAndCenter(const BoundingBox3D& a, const BoundingBox3D& b, Point3D& unionCenter,
                                     Vec3D& unionSize);

    Point3D center;
    Vec3D size;
};

/// Union.
KALVIO_MATH_API BoundingBox3D operator+(const BoundingBox3D& a, const BoundingBox3D& b);

}  // namespace Kalvio::Math
