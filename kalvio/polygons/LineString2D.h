#pragma once

#include "kalvio/core/IComplexGeometry.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/IPolyline2DElement.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/detail/Chain.h"

#include <cstdint>
#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// Chain of points in plan joined by straight segments: a breakline, border, contour line or sampled alignment.
///
/// Segment i joins point i to point i + 1. Lengths along the chain are plan lengths. The extent and the segment objects
/// that `GetElementAtIndex` hands out are kept once built and dropped by every edit. The non-const accessors count as
/// edits: a reference they return is valid for writing until the next query.
class KALVIO_MATH_API LineString2D final : public IPolyline2DElement, public IComplexGeometry {
public:
    LineString2D() = default;
    LineString2D(std::vector<Point2D> vertices) : points(std::move(vertices)) {}
    LineString2D(std::initializer_list<Point2D> vertices) : points(vertices) {}
    /// The two points of the line.
    LineString2D(const Line2D& line) : points{line.GetStart(), line.GetEnd()} {}
    /// `count` points at the origin.
    explicit LineString2D(unsigned int count) : points(count) {}
    /// Copies the points.
    LineString2D& SetEqualTo(const LineString2D& other) { return *this = other; }

    MathTypes GetType() const override;
    /// Extent of the points; the point box at the origin for an empty string.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `LineString2D` of as many points, equal index by index, and with a `Line2D` of the same two
    /// points in the same order.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const LineString2D& other, double tolerance) const;
    [[nodiscard]] LineString2D* Clone() const override;
    /// Reverses the order of the points.
    void Reverse() override;
    /// 0 for fewer than two points.
    double GetLength() const override;
    /// True at the first segment that holds the point (`Intersection::PointOnLineSegment`, user tolerance).
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// Moves the first (last) point to the given position; no point is added. False for an empty string.
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    /// The first (last) point; the origin for an empty string.
    const Point2D& GetStart() const override;
    const Point2D& GetEnd() const override;
    /// Length up to the point along the first segment that holds it, so the earlier one at a shared vertex.
    /// @param length  0 when the point is not on the string within the tolerance
    bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    /// What `GetLengthFromStartPoint` of the reversed string gives: the first segment from the end wins.
    bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// Unit direction of the first segment that holds the point and is longer than 1e-10.
    bool ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const override;
    /// The point half way along; the origin when there is none.
    const Point2D GetMiddlePoint() const override;

    /// Segment `index`. Any other index yields the first segment, or one of zero length at the origin where there is
    /// none. The reference is valid until the string changes.
    const Line2D& GetElementAtIndex(unsigned int index) const override;
    /// Number of segments: one less than points, 0 for an empty string.
    unsigned int GetNrOfElements() const override;
    /// Lengths at which the string passes through the point. Passages at most four tolerances apart count once, so that
    /// a point at a shared vertex is reported by its first segment only.
    void GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                 const Tolerances& tolerances) const override;
    /// Appends the indexes of the segments strictly shorter than `minLength`.
    /// @return whether any was found; true, with nothing appended, for fewer than two points or when the whole string
    ///         is shorter
    bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const override;
    /// Removes segments, all indexes being those before the call: the end point of each goes, so that it merges into
    /// the segment after it. Indexes beyond the last segment are ignored, repeated ones count once.
    /// @param protect  keeps segment 0; the last segment is not protected
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool protect) override;

    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    const std::vector<Point2D>& GetPoints() const { return points; }
    std::vector<Point2D>& GetPoints() {
        Changed();
        return points;
    }
    /// Unchecked.
    const Point2D& GetPoint(unsigned int index) const { return points[index]; }
    Point2D& GetPoint(unsigned int index) {
        Changed();
        return points[index];
    }
    /// False, `point` untouched, when there is no such point.
    bool GetPoint(int index, Point2D& point) const;
    /// For an empty string, a spare point at the origin that is no part of it.
    Point2D& GetEnd();

    void AppendPoint(const Point2D& point) {
        points.push_back(point);
        Changed();
    }
    void AppendPoints(const std::list<Point2D>& list) { AppendPoints(list.begin(), list.end()); }
    void AppendPoints(const std::vector<Point2D>& vertices) { AppendPoints(vertices.begin(), vertices.end()); }
    template <class Iterator>
    void AppendPoints(Iterator first, Iterator last) {
        detail::InsertPoints(points, points.size(), first, last);
        Changed();
    }
    /// Inserts before position `index`; index = size appends.
    /// @return false when index > size
    bool Insert(unsigned int index, const Point2D& point);
    bool Insert(unsigned int index, const std::list<Point2D>& list);
    bool Insert(unsigned int index, const std::vector<Point2D>& vertices);
    /// The same with the inserted points in reverse order.
    bool InsertReverse(unsigned int index, const std::list<Point2D>& list);
    bool InsertReverse(unsigned int index, const std::vector<Point2D>& vertices);
    /// False when there is no such point.
    bool RemovePoint(int index);
    void RemoveAllPoints();

    /// First and last point agree strictly in x and in y; false for an empty string, true for a single point.
    bool IsClosed(double tolerance) const;
    /// The point at a length from the start; a negative length extends the first segment backwards.
    /// @return false, `point` untouched, for fewer than two points, for a length more than 1e-10 beyond the end, and
    ///         where the segment at that length is shorter than 1e-10
    bool GetPointOffsetFromStart(double length, Point2D& point) const;
    /// The nearest segment, the lowest index on ties.
    /// @return false, `index` untouched, for fewer than two points and where no distance is finite
    bool GetClosestSegment(const Point2D& point, unsigned int& index) const;

    /// A non-const string is changed in place.
    /// True when two segments that are not neighbours cross or come within the tolerance (at least 1e-10) of each
    /// other, after `ReducePoints(tolerance)` on a copy. The joint of a closed string is no crossing. About n log n
    /// plus the crossings found; tracing a line back over itself crosses once per pair of segments.
    bool IsSelfCrossing(double tolerance) const;
    /// @param crossing  the first crossing along the string; untouched when there is none. Where two segments run along
    ///                  each other, or touch, it is the first end of one on the other
    bool IsSelfCrossing(Point2D& crossing, double tolerance) const;
    /// Replaces `crossings` by the crossings in the order of their first passage. A point that is passed three times
    /// and more is one crossing.
    bool IsSelfCrossing(std::vector<Point2D>& crossings, double tolerance) const;
    /// The same, each with the length from the start of this string to its first passage.
    bool IsSelfCrossing(std::vector<std::pair<Point2D, double>>& crossings, double tolerance) const;

    LineString2D& Translate(const Vec2D& v);
    LineString2D Translate(const Vec2D& v) const;

private:
    void Changed() noexcept {
        elements.Invalidate();
        boundingBox.Invalidate();
    }

    std::vector<Point2D> points;
    detail::Lazy<std::vector<Line2D>> elements;
    detail::Lazy<BoundingBox2D> boundingBox;
    Point2D spare;  // what the non-const GetEnd of an empty string refers to
};

}  // namespace Kalvio::Math
