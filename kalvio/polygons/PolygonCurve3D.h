#pragma once

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/curves/detail/ElementChain.h"
#include "kalvio/polygons/RingCurve3D.h"

#include <memory>
#include <utility>

namespace Kalvio::Math {

/// Area of a plane in space bounded by a ring of lines and arcs, less the areas of inner rings. It owns its rings and
/// copies deeply.
class KALVIO_MATH_API PolygonCurve3D final : public IGeometry {
public:
    PolygonCurve3D() = default;
    PolygonCurve3D(RingCurve3D outerRing) : boundary(std::move(outerRing)) {}

    MathTypes GetType() const override;
    /// Extent of the boundary.
    BoundingBox3D GetBoundingBox() const { return GetBoundingBox3D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `PolygonCurve3D` whose rings are equal in order, element by element.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const PolygonCurve3D& other, double tolerance) const;
    [[nodiscard]] PolygonCurve3D* Clone() const override;
    /// Reverses the boundary; inner rings keep their order and direction.
    void Reverse() override;
    /// Length of the boundary.
    double GetLength() const override { return boundary.GetLength(); }

    const RingCurve3D& GetBoundary() const& { return boundary; }
    RingCurve3D& GetBoundary() & { return boundary; }
    RingCurve3D GetBoundary() && { return std::move(boundary); }
    /// Takes the ring over. @return false, nothing taken, for a null pointer
    bool AppendInnerRing(RingCurve3D* ring);
    bool AppendInnerRing(std::unique_ptr<RingCurve3D> ring) { return AppendInnerRing(ring.release()); }
    /// Appends a clone.
    bool AppendInnerRing(const RingCurve3D& ring) { return AppendInnerRing(ring.Clone()); }
    /// Unchecked.
    const RingCurve3D& GetInnerRingAtIndex(unsigned int index) const& { return innerRings[index]; }
    RingCurve3D& GetInnerRingAtIndex(unsigned int index) & { return innerRings.Change(index); }
    RingCurve3D GetInnerRingAtIndex(unsigned int index) && { return std::move(innerRings.Change(index)); }
    unsigned int GetNumInnerRings() const { return static_cast<unsigned int>(innerRings.Size()); }

    /// `RingCurve3D::IsContinuous` of every ring.
    bool IsContinuous(double tolerance) const;
    /// Inside the boundary and inside no inner ring, by `RingCurve3D::IsPointInside`.
    [[nodiscard]] bool IsPointInside(const Point3D& p, double tolerance) const;

private:
    RingCurve3D boundary;
    detail::ElementChain<RingCurve3D> innerRings;
};

}  // namespace Kalvio::Math
