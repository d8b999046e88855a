#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Vec2D.h"

#include <vector>

namespace Kalvio::Math {

/// Rectangle in plan with its own axes. The two axes are taken as perpendicular and are kept as unit vectors.
class KALVIO_MATH_API OrientedBoundingBox2D final : public IGeometry {
public:
    constexpr OrientedBoundingBox2D() = default;
    /// Axes along X and Y.
    explicit OrientedBoundingBox2D(const BoundingBox2D& box);
    OrientedBoundingBox2D(const Point2D& boxCenter, const Vec2D& boxSize, const Vec2D& first, const Vec2D& second);

    MathTypes GetType() const override;
    /// The axis-aligned box of the four corners.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Another box of this class with equal centre, size and axes, strictly per coordinate.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] OrientedBoundingBox2D* Clone() const override;

    const Point2D& GetCenter() const { return center; }
    const Vec2D& GetSize() const { return size; }
    void SetCenter(const Point2D& value) { center = value; }
    void SetSize(const Vec2D& value) { size = value; }
    void GetAxes(Vec2D& first, Vec2D& second) const {
        first = firstAxis;
        second = secondAxis;
    }
    /// The axes are normalised.
    void SetAxes(const Vec2D& first, const Vec2D& second);

    /// The corners counter-clockwise (for axes turning left), from centre - half size along both axes.
    void GetCornerPoints(Point2D& p1, Point2D& p2, Point2D& p3, Point2D& p4) const;
    /// Replaces `corners` by the four corners in that order.
    void GetCornerPoints(std::vector<Point2D>& corners) const;
    /// Inclusive, without tolerance.
    bool IsPointInside(const Point2D& p) const;

    /// The smallest box along this box's axes that contains both.
    OrientedBoundingBox2D& operator+=(const OrientedBoundingBox2D& other);

private:
    Point2D center;
    Vec2D size;
    Vec2D firstAxis{1.0, 0.0};
    Vec2D secondAxis{0.0, 1.0};
};

/// The smallest box along the first box's axes that contains both.
KALVIO_MATH_API OrientedBoundingBox2D operator+(const OrientedBoundingBox2D& a, const OrientedBoundingBox2D& b);

}  // namespace Kalvio::Math
