#pragma once

#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/detail/Chain.h"

#include <cstdint>
#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class LineString2D;

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
    /// Comparable with a `LineString3D` of as many points, equal index by index, and with a `Line3D` of the same two
    /// points in the same order.
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
    bool GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const override;
    /// What `GetLengthFromStartPoint` of the reversed string gives: the first segment from the end wins.
    bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const override;

    /// Segment `index`. Any other index yields the first segment, or one of zero length at the origin where there is
    /// none. The reference is valid until the string changes.
    const Line3D& GetElementAtIndex(unsigned int index) const;
    /// Number of segments: one less than points, 0 for an empty string.
    unsigned int GetNrOfElements() const { return static_cast<unsigned int>(detail::SegmentCount(points)); }

    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    const std::vector<Point3D>& GetPoints() const { return points; }
    std::vector<Point3D>& GetPoints() {
        Changed();
        return points;
    }
    /// Unchecked.
    const Point3D& GetPoint(unsigned int index) const { return points[index]; }
    Point3D& GetPoint(unsigned int index) {
        Changed();
        return points[index];
    }
    const Point3D& operator[](unsigned int index) const { return GetPoint(index); }
    Point3D& operator[](unsigned int index) { return GetPoint(index); }
    /// False, `point` untouched, when there is no such point.
    bool GetPoint(unsigned int index, Point3D& point) const;
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
    bool GetPointOffsetFromStart(double length, Point3D& point) const;
    /// The segment nearest in space, the lowest index on ties.
    /// @return false, `index` untouched, for fewer than two points and where no distance is finite
    bool GetClosestSegment(const Point3D& point, unsigned int& index) const;
    /// True when a segment holds the point in space within the user tolerance.
    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    using IPolyline3DElement::IsPointOnGeometry;

    /// A non-const string is changed in place.
    LineString3D& Translate(const Vec3D& v);
    LineString3D Translate(const Vec3D& v) const;

private:
    void Changed() noexcept { elements.Invalidate(); }

    std::vector<Point3D> points;
    detail::Lazy<std::vector<Line3D>> elements;
    Point3D spare;  // what the non-const GetEnd of an empty string refers to
};

}  // namespace Kalvio::Math
