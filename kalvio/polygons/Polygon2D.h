#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/polygons/LineString2D.h"

#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// Area in plan: an outer ring of points and the rings of its holes.
///
/// A ring may repeat its first point at the end or not; either way the edge from the last point to the first belongs to
/// it. Rings run in either direction. Nothing is checked on the way in: `Validate` does. The extent is kept once built
/// and dropped by every edit. The non-const accessors of points count as edits: a reference they return is valid for
/// writing until the next query.
class KALVIO_MATH_API Polygon2D final : public IGeometry {
public:
    Polygon2D() = default;
    Polygon2D(std::vector<Point2D> outerRing) : points(std::move(outerRing)) {}
    Polygon2D(std::initializer_list<Point2D> outerRing) : points(outerRing) {}
    /// The points of the string become the outer ring.
    Polygon2D(const LineString2D& outerRing) : points(outerRing.GetPoints()) {}

    MathTypes GetType() const override;
    /// Extent of the outer ring; the point box at the origin for an empty polygon.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `Polygon2D` of as many points and holes, equal index by index, hole by hole.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const Polygon2D& other, double tolerance) const;
    [[nodiscard]] Polygon2D* Clone() const override;
    /// Reverses the outer ring; holes keep their order and direction.
    void Reverse() override;
    /// Length of the outer ring, its closing edge included.
    double GetLength() const override;
    double Perimeter() const { return GetLength(); }

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
    /// Number of points of the outer ring.
    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    /// Number of points of the outer ring and all holes.
    unsigned int GetTotalSize() const;

    void AppendPoint(const Point2D& point) {
        points.push_back(point);
        Changed();
    }
    void AppendPoints(const std::list<Point2D>& list);
    void AppendPoints(const std::vector<Point2D>& vertices);
    /// Inserts before position `index`; index = size appends.
    /// @return false when index > size
    bool Insert(unsigned int index, const Point2D& point);
    /// Empties the outer ring; holes stay.
    void RemoveAllPoints();
    /// Removes points and holes.
    void Clear();
    /// Appends a copy of the first point unless the last one equals it within 1e-10.
    void Close();
    /// First and last point agree strictly in x and in y; false for an empty ring, true for a single point.
    bool IsClosed(double tolerance) const;

    void AppendHoleBoundary(const LineString2D& ring) { holes.push_back(ring); }
    /// Unchecked.
    const LineString2D& GetHoleBoundary(unsigned int index) const { return holes[index]; }
    LineString2D& GetHoleBoundary(unsigned int index) { return holes[index]; }
    unsigned int GetNumHoleBoundaries() const { return static_cast<unsigned int>(holes.size()); }
    void RemoveHoleBoundaries() { holes.clear(); }

    /// Signed area: that of the outer ring, positive counter-clockwise, its magnitude less the magnitudes of the holes,
    /// whatever their direction. Holes larger than the outer ring flip the sign. 0 for an empty polygon.
    double GetArea() const;
    /// Counter-clockwise for `GetArea` > 0, else clockwise.
    WindingValue GetWinding() const;
    /// Reverses the outer ring unless it has the winding already; a ring of zero area stays clockwise.
    /// @return whether it was reversed
    bool SetWinding(WindingValue winding);
    /// Centroid of the area of the outer ring; holes play no part. A ring without area (less than the rounding of its
    /// sum) gives the mean of its points, an empty one the origin.
    Point2D GetCentroid() const;

    /// A non-const polygon is changed in place.
    Polygon2D& Translate(const Vec2D& v);
    Polygon2D Translate(const Vec2D& v) const;

private:
    void Changed() noexcept { boundingBox.Invalidate(); }
    BoundingBox2D ComputeBoundingBox() const;

    std::vector<Point2D> points;
    std::vector<LineString2D> holes;
    detail::Lazy<BoundingBox2D> boundingBox;
};

}  // namespace Kalvio::Math
