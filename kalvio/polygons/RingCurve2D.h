#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/IComplexGeometry.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/curves/Polyline2D.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math {

/// Closed chain of lines, arcs and line strings in plan that bounds an area. It owns its elements and copies deeply.
///
/// Nothing closes the ring by itself: `IsClosed` and `IsContinuous` tell whether its elements meet.
///
///     RingCurve2D ring;                                    // a half disc
///     ring.AppendElement(Line2D(Point2D(-1, 0), Point2D(1, 0)));
///     ring.AppendElement(Arc2D(Point2D(1, 0), Point2D(0, 0), Angle(3.14159265358979)));
///     const bool isInside = ring.IsPointInside(Point2D(0, 0.9), 1e-4);  // true
class KALVIO_MATH_API RingCurve2D final : public IMathObject, public IComplexGeometry {
public:
    RingCurve2D() = default;

    MathTypes GetType() const override;

    /// The element stays owned by the ring. An index out of range gives the first element, or a line of zero length
    /// when the ring is empty.
    const IPolyline2DElement& GetElementAtIndex(unsigned int index) const override;
    /// The element for a change, as for `Polyline2D`.
    IPolyline2DElement& GetElementAtIndex(unsigned int index);
    unsigned int GetNrOfElements() const override { return chain.GetNrOfElements(); }
    /// A point on a joint is reported once; at the joint where the ring closes, both as 0 and as the whole length.
    void GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                 const Tolerances& tolerances) const override;
    /// @return true when some element is shorter than `minLength`. A ring that is shorter as a whole (or empty) gives
    ///         true and no indexes
    [[nodiscard]] bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const override;
    /// Removes the elements of the ascending indexes; indexes out of range are ignored. Gaps, also the one where a
    /// closed ring starts, are closed where the line or line string behind them, else before them, can be moved.
    /// @param deleteElements  false: the removed elements are not deleted but go back to the holder of their pointers
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) override;

    /// Takes a `Line2D`, `Arc2D` or `LineString2D` over and appends it.
    /// @return false, ownership left with the caller, for any other type and for a null pointer
    bool AppendElement(IGeometry* element);
    /// The same with an owner; an element that is not taken is deleted.
    bool AppendElement(std::unique_ptr<IGeometry> element);
    /// Appends a clone.
    bool AppendElement(const IGeometry& element) { return AppendElement(std::unique_ptr<IGeometry>(element.Clone())); }
    unsigned int GetSize() const { return GetNrOfElements(); }
    /// The elements as a range of references, for as long as the ring does not change; indexes are unchecked.
    auto begin() const { return detail::IndexIterator<RingCurve2D>(*this, 0); }
    auto end() const { return detail::IndexIterator<RingCurve2D>(*this, size()); }
    std::size_t size() const { return chain.size(); }
    const IPolyline2DElement& operator[](std::size_t index) const { return chain[index]; }
    void Clear() { chain.DeleteElements(); }
    /// The elements are replaced by reversed clones in the opposite order.
    void Reverse() { chain.Reverse(); }

    /// The first element's start, the last element's end; the shared origin for an empty ring.
    const Point2D& GetStartPoint() const { return chain.GetStart(); }
    const Point2D& GetEndPoint() const { return chain.GetEnd(); }
    double GetLength() const { return chain.GetLength(); }
    /// The union of the elements' boxes; the point box at the origin for an empty ring.
    BoundingBox2D GetBoundingBox() const { return chain.GetBoundingBox(); }
    /// Signed area, positive counter-clockwise, as for `Polygon2D`: exact for arcs (the area over the chords, and the
    /// segments between arcs and chords). Gaps, also from the end to the start, are closed by lines; 0 for an empty
    /// ring.
    double GetArea() const;
    /// Centroid of that area. A ring without area (less than the rounding of its sum) gives the mean of the starts of
    /// its elements, an empty one the origin.
    Point2D GetCentroid() const;
    /// The first element starts where the last one ends, strictly within 1e-10 per coordinate; false for an empty ring.
    bool IsClosed() const;
    /// Every element starts where the one before it ends, strictly within the tolerance per coordinate.
    bool IsContinuous(double tolerance) const { return chain.IsContinuous(tolerance); }
    /// Inside by the nonzero winding of the chords, turned round for a point between an arc and its chord; being beside
    /// several arcs counts once. Points on the ring itself are inside or outside, as rounding has it.
    /// @param tolerance  plays no part: arcs are tested with 1e-10
    [[nodiscard]] bool IsPointInside(const Point2D& p, double tolerance) const;
    /// Equal element by element.
    bool IsEqualTo(const RingCurve2D& other, double tolerance) const { return chain.IsEqualTo(other.chain, tolerance); }
    /// @return a copy owned by the caller, never null
    [[nodiscard]] RingCurve2D* Clone() const { return new RingCurve2D(*this); }

private:
    Polyline2D chain;
};

}  // namespace Kalvio::Math
