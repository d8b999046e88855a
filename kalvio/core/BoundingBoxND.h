#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/VecND.h"

#include <algorithm>

namespace Kalvio::Math {

class OrientedBoundingBox2D;

/// Axis-aligned box in any dimension, kept as minimum and maximum: the key of the spatial indexes.
///
/// The state after `Reset` is empty: the first union replaces it. Operations on two boxes of different dimension find
/// no overlap and change nothing. Missing axes count as 0 where a plan or 3D box is asked for. A box whose corners
/// differ in dimension has the axes that both of them have.
class KALVIO_MATH_API BoundingBoxND final : public IGeometry {
public:
    /// Dimension 0.
    BoundingBoxND() = default;
    /// The point box at the origin.
    explicit BoundingBoxND(unsigned int dimension) : minPoint(dimension), maxPoint(dimension) {}
    /// From two corners, which are not reordered.
    BoundingBoxND(const PointND& low, const PointND& high) : minPoint(low), maxPoint(high) {}
    BoundingBoxND(const PointND& low, const VecND& boxSize) : minPoint(low), maxPoint(low + boxSize) {}
    BoundingBoxND(const BoundingBox2D& box);
    BoundingBoxND(const BoundingBox3D& box);
    /// The axis-aligned box of the oriented one.
    BoundingBoxND(const OrientedBoundingBox2D& box);

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return (std::min)(minPoint.GetDimension(), maxPoint.GetDimension()); }
    unsigned int GetTopologicalDimension() const override { return GetDimension(); }
    /// Another box of this class with equal corners, strictly per coordinate.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] BoundingBoxND* Clone() const override;

    /// Empties the box: every minimum becomes the largest finite double, every maximum its negation.
    void Reset();
    /// New axes are 0 ... 0.
    void SetDimension(unsigned int dimension);
    const PointND& GetMinPoint() const { return minPoint; }
    const PointND& GetMaxPoint() const { return maxPoint; }
    void SetMinPoint(const PointND& value) { minPoint = value; }
    void SetMaxPoint(const PointND& value) { maxPoint = value; }
    /// Unchecked.
    double GetMin(unsigned int axis) const { return minPoint[static_cast<int>(axis)]; }
    double GetMax(unsigned int axis) const { return maxPoint[static_cast<int>(axis)]; }
    void GetMinMaxPoints(PointND& low, PointND& high) const {
        low = minPoint;
        high = maxPoint;
    }
    PointND GetCenter() const;
    VecND GetSize() const { return maxPoint - minPoint; }

    /// Product of the sides: the N-dimensional volume; 0 in dimension 0.
    double GetArea() const;
    /// Sum of the sides.
    double GetEdgesLengthSum() const;
    /// Volume of the overlap; 0 when the boxes are disjoint.
    double GetIntersectionArea(const BoundingBoxND& other) const;
    double DistanceSquareBetweenCenters(const BoundingBoxND& other) const;
    /// Inclusive, widened by the tolerance on every side.
    bool IsPointInside(const PointND& p, double tolerance) const;
    /// Closed and exact: touching boxes intersect.
    bool Intersects(const BoundingBoxND& other) const;
    /// Closed and exact: a box contains itself.
    bool Contains(const BoundingBoxND& other) const;

    /// Union.
    BoundingBoxND& operator+=(const BoundingBoxND& other);

private:
    bool IsEmpty() const;

    PointND minPoint;
    PointND maxPoint;
};

/// Union.
KALVIO_MATH_API BoundingBoxND operator+(const BoundingBoxND& a, const BoundingBoxND& b);

}  // namespace Kalvio::Math
