#pragma once

#include "kalvio/core/IComplexGeometry.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/IPolyline2DElement.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/detail/SegmentSearch.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Matrix2D;
class Matrix3D;

/// Chain of points in plan joined by straight segments: a breakline, border, contour line or sampled alignment.
///
/// Segment i joins point i to point i + 1. Lengths along the chain are plan lengths. The extent and the segment objects
/// that `GetElementAtIndex` hands out are kept once built and dropped by every edit, and so are boxes of the segments,
/// built by the fourth question for a place on the string (the nearest one, or that of a point on it): about two scans
/// and 6 to 22 bytes a point, from then on a question costs log n. The non-const accessors count as edits: a reference
/// they return is valid for writing until the next query.
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
    /// The rectangle of the smallest area around the points, its first axis along an edge of their convex hull.
    OrientedBoundingBox2D GetOrientedBoundingBox2D() const;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `LineString2D` of as many points, equal index by index; with a `Line2D` of the same two points
    /// in the same order; with a `Polyline2D` whose only element is an equal line string.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const LineString2D& other, double tolerance) const;
    [[nodiscard]] LineString2D* Clone() const override;
    /// Reverses the order of the points.
    void Reverse() override;
    /// 0 for fewer than two points.
    double GetLength() const override;
    /// The pieces are line strings with the vertices between two cuts; a vertex within the user tolerance of a cut
    /// gives way to it.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// True at the first segment that holds the point (`Intersection::PointOnLineSegment`, user tolerance).
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// Moves the first (last) point to the given position; no point is added. False for an empty string.
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    /// With a `Line2D`, its end point is appended; with a `LineString2D`, its points from the second on; with an
    /// `Arc2D`, a `Polyline2D` of clones of the two; with a `Polyline2D`, a copy of it that begins with a clone of this
    /// string.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    /// The first (last) point; the origin for an empty string.
    const Point2D& GetStart() const override;
    const Point2D& GetEnd() const override;
    /// Length up to the point along the first segment that holds it, so the earlier one at a shared vertex.
    /// @param length  0 when the point is not on the string within the tolerance
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    /// What `GetLengthFromStartPoint` of the reversed string gives: the first segment from the end wins.
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// Unit direction of the first segment that holds the point and is longer than 1e-10.
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
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
    [[nodiscard]] bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const override;
    /// Removes segments, all indexes being those before the call: the end point of each goes, so that it merges into
    /// the segment after it. Indexes beyond the last segment are ignored, repeated ones count once.
    /// @param protect  keeps segment 0; the last segment is not protected
    void RemoveElements(const std::vector<std::uint64_t>& indexes, bool protect) override;

    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    const std::vector<Point2D>& GetPoints() const& { return points; }
    std::vector<Point2D>& GetPoints() & {
        Changed();
        return points;
    }
    std::vector<Point2D> GetPoints() && {
        Changed();
        return std::move(points);
    }
    /// The points as a range; indexes are unchecked.
    auto begin() const { return points.begin(); }
    auto end() const { return points.end(); }
    std::size_t size() const { return points.size(); }
    const Point2D& operator[](std::size_t index) const { return points[index]; }
    /// Unchecked.
    const Point2D& GetPoint(unsigned int index) const { return points[index]; }
    Point2D& GetPoint(unsigned int index) {
        Changed();
        return points[index];
    }
    /// False, `point` untouched, when there is no such point.
    [[nodiscard]] bool GetPoint(int index, Point2D& point) const;
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
    [[nodiscard]] bool GetPointOffsetFromStart(double length, Point2D& point) const;
    /// The nearest segment, the lowest index on ties.
    /// @return false, `index` untouched, for fewer than two points and where no distance is finite
    [[nodiscard]] bool GetClosestSegment(const Point2D& point, unsigned int& index) const;

    /// `ComputeTangent` with the standard tolerances.
    [[nodiscard]] bool GetTangentAtPoint(const Point2D& point, Vec2D& tangent) const;
    /// Unit direction at a length from the start: of the segment there or, within the tolerance of the end of a
    /// segment, the mean of its direction and the next one's (of length 0 where the string turns back on itself).
    /// @return false, `tangent` untouched, for fewer than two points, beyond either end by more than the tolerance, and
    ///         where a point is not finite
    [[nodiscard]] bool GetTangentAtLength(double length, Vec2D& tangent, double tolerance) const;

    /// Inserts the point before the end point of the first segment that reaches the length: at length 0 it becomes the
    /// second point.
    /// @return false for a negative length, and for one beyond the end
    bool InsertAtLength(double length, const Point2D& point);
    /// Removes last points for as long as `IsClosed`: a string whose points all coincide ends empty.
    void RemoveClosingPoint(double tolerance);
    /// Removes points at most `tolerance` from the last point kept. When at least four are left and the last one equals
    /// the first strictly within the tolerance, it is set to the first.
    void ReducePoints(double tolerance);
    /// Replaces the points of `out` by the part between two lengths: the point at `from`, the vertices between, the
    /// point at `to`. A negative `from` extends the first segment backwards, a `to` beyond the end stops there.
    /// @return whether `out` has any point; false, `out` untouched, for fewer than two points and for to < from
    [[nodiscard]] bool ExtractLineString(double from, double to, LineString2D& out) const;
    /// Appends samples of the part between two lengths: at from, from + step, from + 2 step ... and at `to`, or at the
    /// end of the string when that comes first. A negative `from` extends the first segment backwards; a vertex has the
    /// direction of the segment before it.
    /// @return false, nothing appended, for a string of no length, `from` beyond the end, to < from, to < 0, and a step
    ///         that is not positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& samples,
                                             double step) const;
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, double step, std::list<Point2D>& samples,
                                             std::list<Vec2D>& tangents) const;
    /// The same along the whole string.
    [[nodiscard]] bool MakePointsAndTangents(double step, std::list<Point2D>& samples,
                                             std::list<Vec2D>& tangents) const;
    /// The same, only the points, into a string.
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& out, double step) const;
    /// Lengthens the string by one point on `target`. With `straight`, the end segment is taken on as an infinite line
    /// and meets `target` in the crossing nearest to the end. Without, or when that is further than `maxDistance`, the
    /// end is projected: to the nearest point of `target`, if that is at most `maxDistance` away and at most `maxAngle`
    /// off the direction of the end segment.
    /// @return whether a point was added
    bool Extend(const LineString2D& target, bool atEnd, double tolerance, bool straight, double maxDistance,
                const Angle& maxAngle);

    /// True when two segments that are not neighbours cross or come within the tolerance (at least 1e-10) of each
    /// other, on a copy after `ReducePoints` with the same tolerance. The joint of a closed string is no crossing.
    /// About n log n plus the crossings found; tracing a line back over itself crosses once per pair of segments. False
    /// in every form for a string whose length is not finite.
    [[nodiscard]] bool IsSelfCrossing(double tolerance) const;
    /// @param crossing  the first crossing along the string; untouched when there is none. Where two segments run along
    ///                  each other, or touch, it is the first end of one on the other
    [[nodiscard]] bool IsSelfCrossing(Point2D& crossing, double tolerance) const;
    /// Replaces `crossings` by the crossings in the order of their first passage. A point that is passed three times
    /// and more is one crossing.
    [[nodiscard]] bool IsSelfCrossing(std::vector<Point2D>& crossings, double tolerance) const;
    /// The same, each with the length from the start of this string to its first passage.
    [[nodiscard]] bool IsSelfCrossing(std::vector<std::pair<Point2D, double>>& crossings, double tolerance) const;

    /// A non-const string is changed in place.
    LineString2D& Transform(const Matrix2D& matrix);
    [[nodiscard]] LineString2D Transform(const Matrix2D& matrix) const;
    /// Replaces `transformed` by the points, taken at z = 0, transformed by the matrix.
    void Transform(const Matrix3D& matrix, std::vector<Point3D>& transformed) const;
    LineString2D& Translate(const Vec2D& v);
    [[nodiscard]] LineString2D Translate(const Vec2D& v) const;

private:
    friend struct detail::SearchAccess;

    void Changed() noexcept {
        elements.Invalidate();
        boundingBox.Invalidate();
        search.Invalidate();
    }

    std::vector<Point2D> points;
    detail::Lazy<std::vector<Line2D>> elements;
    detail::Lazy<BoundingBox2D> boundingBox;
    detail::SegmentSearch search;
    Point2D spare;  // what the non-const GetEnd of an empty string refers to
};

}  // namespace Kalvio::Math
