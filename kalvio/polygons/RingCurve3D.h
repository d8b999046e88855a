#pragma once

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/detail/ElementChain.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math {

/// Closed chain of lines, arcs and line strings in space that bounds an area of a plane. It owns its elements and
/// copies deeply. Nothing closes the ring by itself: `IsClosed` and `IsContinuous` tell whether its elements meet. It
/// keeps nothing derived from its elements, so they may be changed through kept pointers.
class KALVIO_MATH_API RingCurve3D final : public IMathObject {
public:
    RingCurve3D() = default;

    MathTypes GetType() const override;

    /// The element stays owned by the ring. An index out of range gives the first element, or a line of zero length
    /// when the ring is empty.
    const IPolyline3DElement& GetElementAtIndex(unsigned int index) const;
    unsigned int GetNrOfElements() const { return static_cast<unsigned int>(chain.Size()); }
    /// Replaces `lengths` by every length along the ring at which the point lies, in ascending order: once for a point
    /// on a joint; at the joint where the ring closes, both 0 and the whole length.
    void GetLengthsAlongGeometry(const Point3D& point, std::vector<double>& lengths,
                                 const Tolerances& tolerances) const;
    /// Appends the indexes of the elements shorter than `minLength`.
    /// @return true when there are any. A ring that is shorter as a whole (or empty) gives true and no indexes
    [[nodiscard]] bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const;
    /// Removes the elements of the indexes; those out of range are ignored, repeated ones count once. Gaps stay open.
    /// @param deleteElements  false: the removed elements are not deleted but go back to the holder of their pointers
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements);

    /// Takes a `Line3D`, `Arc3D` or `LineString3D` over and appends it.
    /// @return false, ownership left with the caller, for any other type and for a null pointer
    bool AppendElement(IGeometry* element);
    /// The same with an owner; an element that is not taken is deleted.
    bool AppendElement(std::unique_ptr<IGeometry> element);
    /// Appends a clone.
    bool AppendElement(const IGeometry& element) { return AppendElement(std::unique_ptr<IGeometry>(element.Clone())); }
    unsigned int GetSize() const { return GetNrOfElements(); }
    /// The elements as a range of references, for as long as the ring does not change; indexes are unchecked.
    auto begin() const { return detail::IndexIterator<RingCurve3D>(*this, 0); }
    auto end() const { return detail::IndexIterator<RingCurve3D>(*this, size()); }
    std::size_t size() const { return chain.Size(); }
    const IPolyline3DElement& operator[](std::size_t index) const { return chain[index]; }
    void Clear() { chain.Clear(); }
    /// The elements are replaced by reversed clones in the opposite order.
    void Reverse() { chain.Reverse(); }

    /// The first element's start, the last element's end; the shared origin for an empty ring.
    const Point3D& GetStartPoint() const;
    const Point3D& GetEndPoint() const;
    double GetLength() const { return chain.LengthOf(0, chain.Size()); }
    /// The union of the elements' boxes; the point box at the origin for an empty ring.
    BoundingBox3D GetBoundingBox() const;
    /// The first element starts where the last one ends, strictly within 1e-10 in x and in y; false for an empty ring.
    bool IsClosed() const;
    /// Every element starts where the one before it ends, strictly within the tolerance per coordinate.
    bool IsContinuous(double tolerance) const { return chain.IsContinuous(tolerance); }
    /// At most |tolerance| from the plane of best fit (of the normal by Newell's sum, M. Newell, 1972), and inside in
    /// that plane, by the rule of `RingCurve2D::IsPointInside`. False for a ring without area.
    [[nodiscard]] bool IsPointInside(const Point3D& p, double tolerance) const;
    /// Equal element by element.
    bool IsEqualTo(const RingCurve3D& other, double tolerance) const { return chain.IsEqualTo(other.chain, tolerance); }
    /// @return a copy owned by the caller, never null
    [[nodiscard]] RingCurve3D* Clone() const { return new RingCurve3D(*this); }

private:
    detail::ElementChain<IPolyline3DElement> chain;
};

}  // namespace Kalvio::Math
