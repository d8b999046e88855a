#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Vec2D.h"

namespace Kalvio::Math {

/// Axis-aligned box in plan, kept as centre and full size.
///
/// There is no empty state: the default box is the point box at the origin, so accumulation starts from the first
/// geometry's box. A box built from corners in decreasing order keeps its negative size.
class KALVIO_MATH_API BoundingBox2D final : public IGeometry {
public:
    constexpr BoundingBox2D() = default;
    /// From two corners, which are not reordered.
    BoundingBox2D(const Point2D& p1, const Point2D& p2) { SetMinMaxPoints(p1, p2); }
    BoundingBox2D(const Point2D& boxCenter, const Vec2D& boxSize) : center(boxCenter), size(boxSize) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override { return *this; }
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Another box of this class with equal centre and size, strictly per coordinate.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] BoundingBox2D* Clone() const override;

    const Point2D& GetCenter() const { return center; }
    const Vec2D& GetSize() const { return size; }
    void SetCenter(const Point2D& value) { center = value; }
    void SetSize(const Vec2D& value) { size = value; }
    Point2D GetMinPoint() const { return center - size * 0.5; }
    Point2D GetMaxPoint() const { return center + size * 0.5; }
    void GetMinMaxPoints(Point2D& minPoint, Point2D& maxPoint) const {
        minPoint = GetMinPoint();
        maxPoint = GetMaxPoint();
    }
    void SetMinMaxPoints(const Point2D& p1, const Point2D& p2) {
        size = p2 - p1;
        center = (p1 + p2) * 0.5;
    }

    double GetArea() const { return size.GetX() * size.GetY(); }
    double GetPerimeter() const { return 2.0 * (size.GetX() + size.GetY()); }
    double GetDiagonalLength() const { return size.Length(); }

    /// Inclusive: points on the border, and up to the tolerance outside it, are inside. Evaluated as centre -+ half
    /// size -+ tolerance.
    bool IsPointInside(const Point2D& p, double tolerance) const {
        const Point2D low = GetMinPoint();
        const Point2D high = GetMaxPoint();
        return p.GetX() >= low.GetX() - tolerance && p.GetX() <= high.GetX() + tolerance &&
               p.GetY() >= low.GetY() - tolerance && p.GetY() <= high.GetY() + tolerance;
    }
    /// Inclusive: touching boxes, and boxes up to the tolerance apart, intersect.
    bool Intersects(const BoundingBox2D& other, double tolerance) const {
        const Point2D low = GetMinPoint();
        const Point2D high = GetMaxPoint();
        const Point2D otherLow = other.GetMinPoint();
        const Point2D otherHigh = other.GetMaxPoint();
        return !(otherLow.GetX() > high.GetX() + tolerance || low.GetX() - tolerance > otherHigh.GetX() ||
                 otherLow.GetY() > high.GetY() + tolerance || low.GetY() - tolerance > otherHigh.GetY());
    }
    /// Area of the overlap; 0 when there is none.
    double GetIntersectionArea(const BoundingBox2D& other) const;

    /// Union.
    BoundingBox2D& operator+=(const BoundingBox2D& other);

private:
    static void ComputeSizeAndCenter(const BoundingBox2D& a, const BoundingBox2D& b, Point2D& unionCenter,
                                     Vec2D& unionSize);

    Point2D center;
    Vec2D size;
};

/// Union.
KALVIO_MATH_API BoundingBox2D operator+(const BoundingBox2D& a, const BoundingBox2D& b);

}  // namespace Kalvio::Math
