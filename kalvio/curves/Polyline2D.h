#pragma once

#include "kalvio/core/IComplexGeometry.h"
#include "kalvio/core/detail/FewQuestions.h"
#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/IPolyline2DElement.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/ElementChain.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class LineString2D;

/// An alignment in plan: an ordered chain of elements, evaluated by station. It owns its elements and copies deeply; it
/// is itself an element, so chains nest.
///
/// Elements need not join: `IsContinuous` tells. A station is the length along the chain from its start; lengths of
/// elements add up across gaps.
///
///     Polyline2D road;
///     road.AppendElement(new Line2D(Point2D(0, 0), Point2D(100, 0)));
///     road.AppendElement(new Clothoid(0.0, 300.0, 150.0, Point2D(100, 0), Vec2D(1, 0)));
///     double station = 0.0;
///     if (!road.GetLengthFromStartPoint(Point2D(40, 0), station, 1e-4)) return false;  // 40
///
/// The first three searches for a place ask every element. Later ones reject elements by their boxes, and runs of
/// elements by the boxes over those, built in linear time, 40 bytes an element: an element must lie inside its
/// `GetBoundingBox2D`. They take about log n where the chain does not fold upon itself, and give the same answers.
/// Stations are kept likewise.
///
/// So an element is not to be changed behind the chain's back, through a pointer kept when it was appended (an inner
/// chain filled later included): `GetLength` still tells the truth, but all else may answer from the old boxes and
/// stations. The non-const `GetElementAtIndex` is the way to change one.
class KALVIO_MATH_API Polyline2D final : public IPolyline2DElement, public IComplexGeometry {
public:
    /// A point of the chain.
    struct PolylinePoint {
        Point2D point;                   ///< on the chain
        Vec2D tangent;                   ///< unit, in the direction of travel
        std::uint32_t elementIndex = 0;  ///< element (of a line string: segment) that holds the point
        double distance = 0.0;           ///< from the query point, where there is one
        double station = 0.0;            ///< length along the whole chain from its start
    };

    Polyline2D() = default;

    MathTypes GetType() const override;
    /// The union of the elements' boxes; the point box at the origin for an empty chain.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Another chain is equal element by element; a single element is equal to a chain that holds just its equal.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] Polyline2D* Clone() const override;
    /// The elements are replaced by reversed clones in the opposite order.
    void Reverse() override;
    /// Sum of the elements' lengths, as they are now.
    double GetLength() const override;
    /// The pieces are polylines. A cut within the user tolerance of a joint falls on the joint; cuts nearer than that
    /// to the cut (or chain start) before them, and cuts in an element that cannot be broken, are skipped.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// Extends the first (last) element; true whatever that element answers, false for an empty chain.
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    /// With another plan element: a new `Polyline2D` of clones; the elements of a polyline are taken one by one.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    /// The first element's start, the last element's end; the shared origin for an empty chain.
    const Point2D& GetStart() const override;
    const Point2D& GetEnd() const override;
    /// The first element that holds the point answers, counted from the end where it is measured from there: the
    /// reversed chain measures the same.
    /// @param length  set to 0 when no element holds the point (false)
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// The direction of the first element that holds the point.
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
    /// The nearest point over all elements, the first of equals; the query point for an empty chain.
    Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const override;
    /// The same with its element, tangent, distance and station.
    /// @return false, `nearest` untouched, for an empty chain and where no distance is finite
    [[nodiscard]] bool GetNearestPoint(const Point2D& point, PolylinePoint& nearest,
                                       const Tolerances& tolerances) const;
    /// The nearest foot of a perpendicular on the elements, the first of equals, those of line strings and chains among
    /// them taken apart. A joint is a foot when it is one of an element that ends there: when the foot lies beyond that
    /// end by at most the tolerance.
    /// @return false, `foot` untouched, when there is none, and for a point that is not finite
    [[nodiscard]] bool GetNormalPoint(const Point2D& point, double tolerance, PolylinePoint& foot) const;

    /// The element stays owned by the chain. An index out of range gives the first element, or a line of zero length
    /// when the chain is empty.
    const IPolyline2DElement& GetElementAtIndex(unsigned int index) const override;
    /// The element for a change: the boxes, and the stations from it on, are dropped. The reference is valid for
    /// writing until the next query; of an empty chain it is a spare line that is no part of it. Counts as a change of
    /// the chain, so that threads sharing one must ask for elements through a const reference.
    IPolyline2DElement& GetElementAtIndex(unsigned int index);
    unsigned int GetNrOfElements() const override { return static_cast<unsigned int>(elements.Size()); }
    unsigned int GetSize() const { return GetNrOfElements(); }
    /// The elements as a range of references, for as long as the chain does not change; indexes are unchecked.
    auto begin() const { return detail::IndexIterator<Polyline2D>(*this, 0); }
    auto end() const { return detail::IndexIterator<Polyline2D>(*this, size()); }
    std::size_t size() const { return elements.Size(); }
    const IPolyline2DElement& operator[](std::size_t at) const { return elements[at]; }
    /// A point on a joint, or within the tolerance of it, is reported once.
    void GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                 const Tolerances& tolerances) const override;
    /// @return true when some element is shorter than `minLength`. A chain that is shorter as a whole (or empty) gives
    /// true
    ///         and no indexes
    [[nodiscard]] bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const override;
    /// Removes the elements of the indexes; indexes out of range are ignored, repeated ones count once. A gap that
    /// opens inside the chain is closed where the line or line string behind it, else before it, can be moved to its
    /// other side; next to other elements it stays.
    /// @param deleteElements  false: the removed elements are not deleted but go back to the holder of their pointers
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) override;

    /// Takes the element over and appends it. It must not belong to a chain already, this one included: that is not
    /// looked for, and each would delete it. @return false, nothing taken, for a null pointer or this chain itself
    bool AppendElement(IPolyline2DElement* element);
    /// The same with an owner; an element that is not taken is deleted.
    bool AppendElement(std::unique_ptr<IPolyline2DElement> element) { return AppendElement(element.release()); }
    /// Appends a clone.
    bool AppendElement(const IPolyline2DElement& element) { return AppendElement(elements.CloneOf(element)); }
    /// Takes the element(s) over before position `index`.
    /// @return false, ownership left with the caller, for a null pointer, this chain itself or an index beyond the size
    bool Insert(unsigned int index, IPolyline2DElement* element);
    bool Insert(unsigned int index, std::vector<IPolyline2DElement*>& added);
    bool Insert(unsigned int at, std::unique_ptr<IPolyline2DElement> element) {
        return Insert(at, element.get()) && element.release() != nullptr;
    }
    bool Insert(unsigned int at, const IPolyline2DElement& element) { return Insert(at, elements.CloneOf(element)); }
    void DeleteElements();

    /// True when every element starts where the one before it ends, strictly within the tolerance per coordinate.
    bool IsContinuous(double tolerance) const { return elements.IsContinuous(tolerance); }
    /// The point at half the length; the start of a chain of no length, the origin for an empty one.
    Point2D GetMidPoint() const;

    /// The first point of the chain at the abscissa start.x + `length`.
    /// @return 1 when found; 2 when a vertical line lies there (its start is given); 0 when none, `result` untouched
    [[nodiscard]] int GetPointUsingLengthAlongXAxis(double length, PolylinePoint& result, double tolerance) const;
    /// The height there, within 1e-10.
    [[nodiscard]] int GetYUsingLengthAlongXAxis(double length, double& y) const;

    /// Point, tangent and station at a station of the chain; at a joint the element that starts there. @return false,
    /// the result untouched, out of [0, length] by more than 1e-10 or where a degenerate element cannot be evaluated
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylinePoint& result) const;
    /// The same at a length along one element.
    /// @param station  along the element, from 0 to its length; the result's station is along the chain
    /// @return false for an index or station out of range (by more than 1e-10)
    [[nodiscard]] bool MakePointAndTangentAt(int elementIndex, double station, PolylinePoint& result) const;
    /// The point beside a station, at a right angle to the chain there; at a joint to the element that starts there.
    /// @param offset  positive to the right of the direction of travel
    /// @return false, `point` untouched, where `MakePointAndTangentAt` is, and for an offset that is not finite
    [[nodiscard]] bool GetPoint(double station, double offset, Point2D& point) const;
    /// The reverse: station and offset of the foot that `GetNormalPoint` finds, so that `GetPoint` leads back to the
    /// point, within the tolerance where the foot is an end of an element.
    /// @param offset  positive when the point lies to the right of the direction of travel
    /// @return false, outputs untouched, when there is no foot on any element, near or far: a point beyond an end or
    /// off
    ///         the outside of a corner, whose place `GetNearestPoint` tells, may have one far away
    [[nodiscard]] bool GetStationAndOffset(const Point2D& point, double& station, double& offset,
                                           double tolerance) const;
    /// Signed curvature 1/R at a station, positive turning left as radii are, 0 on a straight; at a joint of the
    /// element that starts there. @return false, `curvature` untouched, where `MakePointAndTangentAt` is
    [[nodiscard]] bool GetCurvature(double station, double& curvature) const;
    /// Replaces `part`, which may be this chain, by its part between two stations: clones of the elements, those at the
    /// ends cut. What a cut would leave of an element over a length of at most 1e-9 is left out.
    /// @return false, `part` untouched, unless 0 <= from < to <= length, both ends within 1e-10, and where an element
    ///         cannot be cut
    [[nodiscard]] bool ExtractPolyline(double from, double to, Polyline2D& part) const;
    /// Appends samples at from, from + step ... and `to`, the range clipped to the chain; at a joint the element that
    /// starts there is sampled. A last sample nearer than the tolerance to `to` gives way to it.
    /// @return false, nothing appended, for an empty range or a step that is not positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylinePoint>& points, double step,
                                             double tolerance) const;
    /// The same with steps such that no chord lies further than `height` from its curve; joints are always sampled,
    /// those within the tolerance of each other as one.
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylinePoint>& points,
                                                        double height, double tolerance) const;
    /// The points alone, appended to a line string.
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& lineString, double step,
                                      double tolerance) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height,
                                                 double tolerance) const;

private:
    // The boxes of the elements, and of runs of them.
    struct Index;

    const Index& GetIndex() const;
    void Changed() {
        index.Invalidate();
        questions.Reset();
    }
    // Calls visit(i) in ascending order for the elements that may hold the point, until it returns true.
    template <class Visit>
    bool VisitNear(const Point2D& point, double tolerance, Visit&& visit) const;
    // Position in `indexes` of the last index of the run without gaps that starts at `position`.
    static std::size_t GetLastConsecutiveIndex(const std::vector<std::uint64_t>& indexes, std::size_t position);
    // The nearest of the points that `answer(element, sample)` gives on the elements, the first of equals. An element
    // without one (false) is passed over; a point is never nearer than the box of its element.
    template <class Answer>
    bool FindNearest(const Point2D& point, Answer&& answer, PolylinePoint& nearest) const;

    detail::ElementChain<IPolyline2DElement> elements;
    detail::Lazy<std::shared_ptr<const Index>> index;
    detail::FewQuestions questions;
    Line2D spare;  // what the non-const GetElementAtIndex of an empty chain refers to
};

}  // namespace Kalvio::Math
