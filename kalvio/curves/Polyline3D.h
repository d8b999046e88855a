#pragma once

#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/ElementChain.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class LineString3D;

/// An ordered chain of elements in space, evaluated by station along its 3D length: the contract of `Polyline2D`, also
/// for elements that are changed while they belong to the chain.
class KALVIO_MATH_API Polyline3D final : public IPolyline3DElement {
public:
    /// A point of the chain.
    struct PolylinePoint {
        Point3D point;                   ///< on the chain
        Vec3D tangent;                   ///< unit, in the direction of travel
        std::uint32_t elementIndex = 0;  ///< element that holds the point
        double distance = 0.0;           ///< from the query point, where there is one
        double station = 0.0;            ///< length along the whole chain from its start
    };

    Polyline3D() = default;

    MathTypes GetType() const override;
    /// The union of the elements' boxes; the point box at the origin for an empty chain.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Another chain is equal element by element; a single element is equal to a chain that holds just its equal.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Polyline3D* Clone() const override;
    /// The elements are replaced by reversed clones in the opposite order.
    void Reverse() override;
    /// Sum of the elements' lengths, as they are now.
    double GetLength() const override;
    /// With another element in space: a new `Polyline3D` of clones, the elements of a polyline taken one by one; else
    /// null.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    /// The first element's start, the last element's end; the shared origin for an empty chain.
    const Point3D& GetStart() const override;
    const Point3D& GetEnd() const override;
    /// The first element that holds the point answers, counted from the end where it is measured from there.
    /// @param length  set to 0 when no element holds the point (false)
    [[nodiscard]] bool GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const override;
    /// The nearest point over all elements, the first of equals; the query point for an empty chain, and for one that
    /// holds a `LineString3D`, which answers so: ask `Projection::NearestPoint` of strings.
    Point3D GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const override;

    BoundingBox3D GetBoundingBox() const { return GetBoundingBox3D(); }
    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    using IPolyline3DElement::IsPointOnGeometry;
    /// The direction of the first element that holds the point; false, `tangent` untouched, when there is none.
    [[nodiscard]] bool ComputeTangent(const Point3D& point, Vec3D& tangent, const Tolerances& tolerances) const;
    /// Moves the start of the first (end of the last) element; false for an empty chain. An arc becomes the one through
    /// its middle.
    bool ExtendStart(const Point3D& point, const Tolerances& tolerances);
    bool ExtendEnd(const Point3D& point, const Tolerances& tolerances);
    using IPolyline3DElement::ExtendEnd;
    using IPolyline3DElement::ExtendStart;

    /// The element stays owned by the chain. An index out of range gives the first element, or a line of zero length
    /// when the chain is empty.
    const IPolyline3DElement& GetElementAtIndex(unsigned int index) const;
    /// The element for a change, as for `Polyline2D`.
    IPolyline3DElement& GetElementAtIndex(unsigned int index);
    unsigned int GetNrOfElements() const { return static_cast<unsigned int>(elements.Size()); }
    unsigned int GetSize() const { return GetNrOfElements(); }
    /// The elements as a range of references, for as long as the chain does not change; indexes are unchecked.
    auto begin() const { return detail::IndexIterator<Polyline3D>(*this, 0); }
    auto end() const { return detail::IndexIterator<Polyline3D>(*this, size()); }
    std::size_t size() const { return elements.Size(); }
    const IPolyline3DElement& operator[](std::size_t at) const { return elements[at]; }
    /// Replaces `lengths` by every length along the chain at which the point lies, on line strings and inner chains
    /// too; at a joint once.
    void GetLengthsAlongGeometry(const Point3D& point, std::vector<double>& lengths,
                                 const Tolerances& tolerances) const;
    /// As for `Polyline2D`: a gap that opens inside the chain is closed where the line or line string behind it, else
    /// before it, can be moved to its other side.
    /// @param deleteElements  false: the removed elements are not deleted but go back to the holder of their pointers
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements);
    /// @return true when some element is shorter than `minLength`. A chain that is shorter as a whole (or empty) gives
    /// true
    ///         and no indexes
    [[nodiscard]] bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const;

    /// Takes the element over and appends it. It must not belong to a chain already, this one included: that is not
    /// looked for, and each would delete it. @return false, nothing taken, for a null pointer or this chain itself
    bool AppendElement(IPolyline3DElement* element);
    /// The same with an owner; an element that is not taken is deleted.
    bool AppendElement(std::unique_ptr<IPolyline3DElement> element) { return AppendElement(element.release()); }
    /// Appends a clone.
    bool AppendElement(const IPolyline3DElement& element) { return AppendElement(elements.CloneOf(element)); }
    /// Takes the element(s) over before position `index`.
    /// @return false, ownership left with the caller, for a null pointer, this chain itself or an index beyond the size
    bool Insert(unsigned int index, IPolyline3DElement* element);
    bool Insert(unsigned int index, std::vector<IPolyline3DElement*>& added);
    bool Insert(unsigned int at, std::unique_ptr<IPolyline3DElement> element) {
        return Insert(at, element.get()) && element.release() != nullptr;
    }
    bool Insert(unsigned int at, const IPolyline3DElement& element) { return Insert(at, elements.CloneOf(element)); }
    void DeleteElements() { elements.Clear(); }

    /// True when every element starts where the one before it ends, strictly within the tolerance per coordinate.
    bool IsContinuous(double tolerance) const { return elements.IsContinuous(tolerance); }

    /// The point at half the length; the start of a chain of no length, the origin for an empty one.
    Point3D GetMidPoint() const;
    /// Point, tangent and station at a station of the chain; at a joint the element that starts there. @return false,
    /// the result untouched, out of [0, length] by more than 1e-10 or where a degenerate element cannot be evaluated
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylinePoint& result) const;
    /// The same at a length along one element.
    [[nodiscard]] bool MakePointAndTangentAt(int elementIndex, double station, PolylinePoint& result) const;
    /// Appends samples at from, from + step ... and `to`, the range clipped to the chain. A last sample nearer than the
    /// tolerance to `to` gives way to it.
    /// @return false, nothing appended, for an empty range or a step that is not positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylinePoint>& points, double step,
                                             double tolerance) const;
    /// The same with steps such that no chord lies further than `height` from its curve; joints are always sampled,
    /// those within the tolerance of each other as one.
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylinePoint>& points,
                                                        double height, double tolerance) const;
    /// The points alone, appended to a line string.
    [[nodiscard]] bool MakeLineString(double from, double to, LineString3D& lineString, double step,
                                      double tolerance) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(double from, double to, LineString3D& lineString, double height,
                                                 double tolerance) const;

private:
    detail::ElementChain<IPolyline3DElement> elements;
    Line3D spare;  // what the non-const GetElementAtIndex of an empty chain refers to
};

}  // namespace Kalvio::Math
