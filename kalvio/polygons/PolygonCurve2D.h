#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/curves/detail/ElementChain.h"
#include "kalvio/polygons/RingCurve2D.h"

#include <memory>
#include <utility>

namespace Kalvio::Math {

/// Area in plan bounded by a ring of lines and arcs, less the areas of inner rings. It owns its rings and copies
/// deeply.
class KALVIO_MATH_API PolygonCurve2D final : public IGeometry {
public:
    PolygonCurve2D() = default;
    PolygonCurve2D(RingCurve2D outerRing) : boundary(std::move(outerRing)) {}

    MathTypes GetType() const override;
    /// Extent of the boundary.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `PolygonCurve2D` whose rings are equal in order, element by element.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const PolygonCurve2D& other, double tolerance) const;
    [[nodiscard]] PolygonCurve2D* Clone() const override;
    /// Reverses the boundary; inner rings keep their order and direction.
    void Reverse() override;
    /// Length of the boundary.
    double GetLength() const override { return boundary.GetLength(); }
    /// Signed area, as for `Polygon2D`: that of the boundary, positive counter-clockwise, its magnitude less the
    /// magnitudes of the inner rings, whatever their direction. Arcs count exactly.
    double GetArea() const;
    /// Centroid of the boundary; inner rings play no part, as for `Polygon2D`.
    Point2D GetCentroid() const { return boundary.GetCentroid(); }

    const RingCurve2D& GetBoundary() const& { return boundary; }
    RingCurve2D& GetBoundary() & { return boundary; }
    RingCurve2D GetBoundary() && { return std::move(boundary); }
    /// Takes the ring over. @return false, nothing taken, for a null pointer
    bool AppendInnerRing(RingCurve2D* ring);
    bool AppendInnerRing(std::unique_ptr<RingCurve2D> ring) { return AppendInnerRing(ring.release()); }
    /// Appends a clone.
    bool AppendInnerRing(const RingCurve2D& ring) { return AppendInnerRing(ring.Clone()); }
    /// Unchecked.
    const RingCurve2D& GetInnerRingAtIndex(unsigned int index) const& { return innerRings[index]; }
    RingCurve2D& GetInnerRingAtIndex(unsigned int index) & { return innerRings.Change(index); }
    RingCurve2D GetInnerRingAtIndex(unsigned int index) && { return std::move(innerRings.Change(index)); }
    unsigned int GetNumInnerRings() const { return static_cast<unsigned int>(innerRings.Size()); }

    /// `RingCurve2D::IsContinuous` of every ring.
    bool IsContinuous(double tolerance) const;
    /// Inside the boundary and inside no inner ring, by `RingCurve2D::IsPointInside`.
    [[nodiscard]] bool IsPointInside(const Point2D& p, double tolerance) const;

private:
    RingCurve2D boundary;
    detail::ElementChain<RingCurve2D> innerRings;
};

}  // namespace Kalvio::Math
