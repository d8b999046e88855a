#pragma once

#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/Chain.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class LineString2D;
class Matrix3D;

/// Chain of points in space joined by straight segments, with the height queries of borders and breaklines.
///
/// Segment i joins point i to point i + 1. Lengths are lengths in space unless a function says plan. The segment
/// objects that `GetElementAtIndex` hands out are kept once built and dropped by every edit. The non-const accessors
/// count as edits: a reference they return is valid for writing until the next query.
class KALVIO_MATH_API LineString3D final : public IPolyline3DElement {
public:
    LineString3D() = default;
    LineString3D(std::vector<Point3D> vertices) : points(std::move(vertices)) {}
    LineString3D(std::initializer_list<Point3D> vertices) : points(vertices) {}
    /// The two points of the line.
    LineString3D(const Line3D& line) : points{line.GetStart(), line.GetEnd()} {}
    /// `count` points at the origin.
    explicit LineString3D(unsigned int count) : points(count) {}
    /// Every point lifted to height z.
    LineString3D(const LineString2D& plan, double z);
    /// The points of a plan string at z = 0.
    LineString3D& SetEqualTo(const LineString2D& plan);
    LineString3D& SetEqualTo(const LineString3D& other) { return *this = other; }

    MathTypes GetType() const override;
    /// Extent of the points; the point box at the origin for an empty string.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `LineString3D` of as many points, equal index by index, with a `Line3D` of the same two points
    /// in the same order and with a `Polyline3D` of just an equal string.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const LineString3D& other, double tolerance) const;
    [[nodiscard]] LineString3D* Clone() const override;
    /// Reverses the order of the points.
    void Reverse() override;
    /// Length in space; 0 for fewer than two points.
    double GetLength() const override;
    /// The first (last) point; the origin for an empty string.
    const Point3D& GetStart() const override;
    const Point3D& GetEnd() const override;
    /// Length up to the point along the first segment that holds it, so the earlier one at a shared vertex.
    /// @param length  0 when the point is not on the string within the tolerance
    [[nodiscard]] bool GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const override;
    /// What `GetLengthFromStartPoint` of the reversed string gives: the first segment from the end wins.
    [[nodiscard]] bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const override;

    /// Segment `index`. Any other index yields the first segment, or one of zero length at the origin where there is
    /// none. The reference is valid until the string changes.
    const Line3D& GetElementAtIndex(unsigned int index) const;
    /// Number of segments: one less than points, 0 for an empty string.
    unsigned int GetNrOfElements() const { return static_cast<unsigned int>(detail::SegmentCount(points)); }

    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    const std::vector<Point3D>& GetPoints() const& { return points; }
    std::vector<Point3D>& GetPoints() & {
        Changed();
        return points;
    }
    std::vector<Point3D> GetPoints() && {
        Changed();
        return std::move(points);
    }
    /// The points as a range; indexes are unchecked.
    auto begin() const { return points.begin(); }
    auto end() const { return points.end(); }
    std::size_t size() const { return points.size(); }
    /// Unchecked.
    const Point3D& GetPoint(unsigned int index) const { return points[index]; }
    Point3D& GetPoint(unsigned int index) {
        Changed();
        return points[index];
    }
    const Point3D& operator[](unsigned int index) const { return GetPoint(index); }
    Point3D& operator[](unsigned int index) { return GetPoint(index); }
    /// False, `point` untouched, when there is no such point.
    [[nodiscard]] bool GetPoint(unsigned int index, Point3D& point) const;
    /// For an empty string, a spare point at the origin that is no part of it.
    Point3D& GetEnd();
    /// False when there is no such point.
    bool SetPoint(const Point3D& point, std::uint64_t index);
    void SetPoints(const std::vector<Point3D>& vertices);

    void AppendPoint(const Point3D& point) {
        points.push_back(point);
        Changed();
    }
    void AppendPoints(const std::list<Point3D>& list) { AppendPoints(list.begin(), list.end()); }
    void AppendPoints(const std::vector<Point3D>& vertices) { AppendPoints(vertices.begin(), vertices.end()); }
    template <class Iterator>
    void AppendPoints(Iterator first, Iterator last) {
        detail::InsertPoints(points, points.size(), first, last);
        Changed();
    }
    /// Inserts before position `index`; index = size appends.
    /// @return false when index > size
    bool Insert(unsigned int index, const Point3D& point);
    bool Insert(unsigned int index, const std::list<Point3D>& list);
    bool Insert(unsigned int index, const std::vector<Point3D>& vertices);
    /// The same with the inserted points in reverse order.
    bool InsertReverse(unsigned int index, const std::list<Point3D>& list);
    bool InsertReverse(unsigned int index, const std::vector<Point3D>& vertices);
    /// False when there is no such point.
    bool RemovePoint(int index);
    void RemoveAllPoints();

    /// The plan projection.
    LineString2D GetLineString2D() const;
    double GetLength2D() const;
    /// The point at a length from the start; a negative length extends the first segment backwards.
    /// @return false, `point` untouched, for fewer than two points, for a length more than 1e-10 beyond the end, and
    ///         where the segment at that length is shorter than 1e-10
    [[nodiscard]] bool GetPointOffsetFromStart(double length, Point3D& point) const;
    /// The segment nearest in space, the lowest index on ties.
    /// @return false, `index` untouched, for fewer than two points and where no distance is finite
    [[nodiscard]] bool GetClosestSegment(const Point3D& point, unsigned int& index) const;
    /// Unit direction of the first segment that holds the point in space within 1e-4 and is longer than 1e-10.
    [[nodiscard]] bool GetTangentAtPoint(const Point3D& point, Vec3D& tangent) const;
    /// Removes points at most `tolerance`, in space, from the last point kept. When at least four are left and the last
    /// one equals the first strictly within the tolerance, it is set to the first.
    void ReducePoints(double tolerance);
    /// Appends samples of the part between two lengths: at from, from + step, from + 2 step ... and at `to`, or at the
    /// end of the string when that comes first. A negative `from` extends the first segment backwards; a vertex has the
    /// direction of the segment before it.
    /// @return false, nothing appended, for a string of no length, `from` beyond the end, to < from, to < 0, and a step
    ///         that is not positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, double step, std::list<Point3D>& samples,
                                             std::list<Vec3D>& tangents) const;
    /// The same along the whole string.
    [[nodiscard]] bool MakePointsAndTangents(double step, std::list<Point3D>& samples,
                                             std::list<Vec3D>& tangents) const;
    /// Replaces the points of `out` by the part between two lengths (two plan lengths): the point at `from`, the
    /// vertices between, the point at `to`. A negative `from` extends the first segment backwards, a `to` beyond the
    /// end stops there.
    /// @return whether `out` has any point; false, `out` untouched, for fewer than two points and for to < from
    [[nodiscard]] bool ExtractLineString(double from, double to, LineString3D& out) const;
    [[nodiscard]] bool ExtractLineString2DLengths(double from, double to, LineString3D& out) const;
    /// Replaces the points of `out` by the points first ... last, both included.
    /// @return false, `out` untouched, when first > last or there is no point `last`
    [[nodiscard]] bool ExtractLineString(std::uint64_t first, std::uint64_t last, LineString3D& out) const;
    /// The same for indexes of any integer type.
    template <std::integral First, std::integral Last>
    [[nodiscard]] bool ExtractLineString(First first, Last last, LineString3D& out) const {
        return std::cmp_greater_equal(first, 0) && std::cmp_greater_equal(last, 0) &&
               ExtractLineString(static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(last), out);
    }
    /// Replaces `distances` by the length from the start at every point.
    /// @param average  the whole length divided by the number of points (not of segments); 0 for an empty string
    void GetAccumulatedDistances(std::vector<double>& distances, double& average) const;
    /// Smallest and largest grade |rise| / plan length of the segments; infinite for a vertical one. A segment of no
    /// length has no grade.
    /// @param minGrade,maxGrade  untouched when no segment has a grade
    void GetMinMaxGrades(double& minGrade, double& maxGrade) const;

    /// Height at a plan position: interpolated on the first segment that holds it in plan within the tolerance.
    /// @return false, `z` untouched, when none does, or its height is not finite
    [[nodiscard]] bool GetZ(const Point2D& p, double& z, double tolerance) const;
    /// Heights of a border at a vertex. From ring[index], which must lie at p in plan (strictly within the tolerance
    /// per coordinate), the vertices after it are followed, cyclically, for as long as they lie at p too: zFirst is the
    /// height of the first, zLast of the last of them. When none follows and index is 0, the vertices before it are
    /// followed backwards and zFirst is the height of the earliest.
    /// @return 0 when ring[index] is not at p or does not exist, the heights untouched; 1 when they are equal strictly
    ///         within the tolerance; 2 when they differ: a vertical step
    [[nodiscard]] static int GetHeightAtPoint(const std::vector<Point3D>& ring, int index, const Point2D& p,
                                              double& zFirst, double& zLast, double tolerance);
    /// Height of the border's edge from ring[index] to the next point, cyclically, at p.
    /// @return 0 when the edge does not hold p in plan (`Line2D::IsPointOnGeometry`) or does not exist, `z` untouched;
    ///         1 when z is interpolated along the edge; 2 for an edge shorter than the tolerance: z of ring[index]
    [[nodiscard]] static int GetHeightAtLine(const std::vector<Point3D>& ring, int index, const Point2D& p, double& z,
                                             double tolerance);
    /// Height of the closed border through the points at p: at the first vertex there, else on the first edge, the
    /// closing one included.
    /// @param takeLast  at a vertical step, not 0 takes the last height, 0 the first
    /// @return the code of `GetHeightAtPoint` or `GetHeightAtLine`; 0, `z` untouched, when p is not on the border
    [[nodiscard]] int GetHeightAtBorder(const Point2D& p, double& z, double tolerance, int takeLast) const;

    /// The length nearest to `segmentLength` that divides `length` into equal parts: length / max(1, round(length /
    /// segmentLength)); 0 unless both are positive and finite.
    double CalculateNormalizedSegmentLength(double length, double segmentLength) const;
    /// Smooths the string: it is divided into equal parts of the normalized length h, and every division point becomes
    /// the mean position of the string over the length h around it, (1/h) times the integral of the position from s -
    /// h/2 to s + h/2. The ends stay. A straight part longer than h is kept as it is.
    /// @param averaged  receives the smoothed string, as many points as parts and one more
    /// @param indexes   receives for each of them the index of the segment of this string that it stands for
    /// @return false, nothing written, for a string of no length and a segment length that is not positive or asks for
    ///         more than 1e7 points
    [[nodiscard]] bool GetAveraged(LineString3D& averaged, std::vector<int>& indexes, double segmentLength) const;
    /// Unit tangent on segment k = indexes[index] at `ratio` (0 its start, 1 its end, clamped): the tangents at its two
    /// vertices, mixed linearly. The tangent at a vertex is the mean of the directions of the segments beside it.
    /// @return the zero vector when there is no such segment
    Vec3D GetInterpolatedTangent(const std::vector<int>& indexes, int index, double ratio) const;
    /// Densifies the string along a centripetal Catmull-Rom spline (E. Catmull, R. Rom, 1974; C. Yuksel, S. Schaefer,
    /// J. Keyser, 2011), which passes through all vertices without cusps or loops: with d = the root of a segment's
    /// length, the derivative at vertex 1 towards vertex 2 is d12 ((p1 - p0) / d01 - (p2 - p0) / (d01 + d12) + (p2 -
    /// p1) / d12), at an end that of the segment itself; each segment becomes `parts` parts of equal parameter. A
    /// closed string stays smooth at its joint. Repeated vertices count once.
    /// @return false, `spline` untouched, for a string of no length, parts < 1, more than 1e7 points and points that
    ///         are not finite
    [[nodiscard]] bool GetSplineLineString(LineString3D& spline, int parts) const;

    /// True when a segment holds the point in space within the user tolerance.
    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    using IPolyline3DElement::IsPointOnGeometry;

    /// A non-const string is changed in place.
    LineString3D& Transform(const Matrix3D& matrix);
    [[nodiscard]] LineString3D Transform(const Matrix3D& matrix) const;
    LineString3D& Translate(const Vec3D& v);
    [[nodiscard]] LineString3D Translate(const Vec3D& v) const;

private:
    void Changed() noexcept { elements.Invalidate(); }

    std::vector<Point3D> points;
    detail::Lazy<std::vector<Line3D>> elements;
    Point3D spare;  // what the non-const GetEnd of an empty string refers to
};

}  // namespace Kalvio::Math
