#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/detail/SegmentSearch.h"

#include <cstdint>
#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Matrix2D;
class Matrix3D;
class Polygon3D;

/// Area in plan: an outer ring of points and the rings of its holes.
///
/// A ring may repeat its first point at the end or not; either way the edge from the last point to the first belongs to
/// it. Rings run in either direction. Nothing is checked on the way in: `Validate` does. The extent, and from the
/// fourth question for the nearest place of a border on what `LineString2D` tells, are kept once built and dropped by
/// every edit. The non-const accessors of points count as edits: a reference they return is valid for writing until the
/// next query.
class KALVIO_MATH_API Polygon2D final : public IGeometry {
public:
    /// Where something lies seen from the polygon.
    enum class PositionResult : std::uint32_t {
        Outside = 1,        ///< outside the outer ring
        OnOuterBorder = 2,  ///< on the outer ring within the tolerance
        Inside = 3,         ///< inside the outer ring and in no hole
        OnHoleBorder = 4,   ///< on the border of a hole
        InsideHole = 5,     ///< strictly inside a hole
    };

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

    const std::vector<Point2D>& GetPoints() const& { return points; }
    std::vector<Point2D>& GetPoints() & {
        Changed();
        return points;
    }
    std::vector<Point2D> GetPoints() && {
        Changed();
        return std::move(points);
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
    /// Inserts the point before the end point of the first edge of the closed ring that reaches the length from the
    /// first point: at length 0 it becomes the second point, on the closing edge the last one.
    /// @return false for a negative length, and for one beyond the perimeter
    bool InsertAtLength(double length, const Point2D& point);
    /// Empties the outer ring; holes stay.
    void RemoveAllPoints();
    /// Removes points and holes.
    void Clear();
    /// Appends a copy of the first point unless the last one equals it within 1e-10.
    void Close();
    /// First and last point agree strictly in x and in y; false for an empty ring, true for a single point.
    bool IsClosed(double tolerance) const;

    /// Removes last points of the outer ring for as long as `IsClosed`: points that all coincide leave none.
    void RemoveClosingPoint(double tolerance);
    /// Removes points of the outer ring at most `tolerance` from the last point kept, as for line strings.
    void ReducePoints(double tolerance);
    /// Turns the list of points until it starts from the one of the smallest x, of those (x within the tolerance) from
    /// the one of the smallest y. A closing point, within the tolerance, becomes a copy of the new first point.
    static void RearrangePointsByStartingFromMinXMinY(Polygon2D& polygon, double tolerance);

    void AppendHoleBoundary(const LineString2D& ring) { holes.push_back(ring); }
    /// Unchecked.
    const LineString2D& GetHoleBoundary(unsigned int index) const& { return holes[index]; }
    LineString2D& GetHoleBoundary(unsigned int index) & { return holes[index]; }
    LineString2D GetHoleBoundary(unsigned int index) && { return std::move(holes[index]); }
    const std::vector<LineString2D>& GetHoleBoundaries() const& { return holes; }
    std::vector<LineString2D> GetHoleBoundaries() && { return std::move(holes); }
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

    /// The smallest width of the outer ring over all directions (rotating calipers on the convex hull, M. I. Shamos,
    /// 1978): a sliver is thin however it lies. 0 for fewer than three points that are not on one line.
    /// @param tolerance  a width at most this counts as none: 0
    double GetMaxWidth(double tolerance) const;
    /// The rectangle of the smallest area around the outer ring, its first axis along an edge of the convex hull.
    OrientedBoundingBox2D GetOrientedBoundingBox2D() const;
    /// True when all turns of the ring go the same way once round, and there is no hole. Points on a straight side
    /// (within 1e-10, or the rounding of the coordinates if that is more) do not matter. A ring without area is not.
    bool IsConvex() const;

    /// Inside the outer ring and in no hole, by the nonzero winding rule; points on the outer ring and on the borders
    /// of holes (`Intersection::PointOnLineSegment`) count as inside. A ring answers the same with and without its
    /// closing point.
    [[nodiscard]] bool IsPointInside(const Point2D& p, double tolerance) const {
        return IsPointInsideAndBorders(p, tolerance, true);
    }
    /// The same, with the points on all borders counted as inside or as outside.
    [[nodiscard]] bool IsPointInsideAndBorders(const Point2D& p, double tolerance, bool includeBorders) const;
    /// Inside by crossing parity, the borders of the outer ring included: a point on the border of a hole counts as
    /// inside.
    [[nodiscard]] bool IsPointInsideByRay(const Point2D& p, double tolerance) const;
    /// Position by crossing parity. Points near a vertex in both coordinates count as on the border. Holes are tried in
    /// order, the first that holds the point decides.
    /// @param holeIndex  the hole for `InsideHole`, else -1
    PositionResult CheckPositionOf(const Point2D& p, int& holeIndex, double tolerance) const;
    /// Position of the outer ring of another polygon: `OnOuterBorder` and `OnHoleBorder` when it crosses or touches the
    /// ring. A ring around this polygon is `Outside`, one around a hole `Inside`.
    PositionResult CheckPositionOf(const Polygon2D& other, int& holeIndex, double tolerance) const;
    /// True when the area of `inner` lies in the area of `outer`: no part of it outside, none in a hole. Their borders
    /// may touch. Both are taken as valid.
    [[nodiscard]] static bool IsPolygonInsideNotCrossing(const Polygon2D& inner, const Polygon2D& outer,
                                                         double tolerance);
    /// The closed outer ring by the rules of `LineString2D::IsSelfCrossing`; holes play no part.
    [[nodiscard]] bool IsSelfCrossing(double tolerance) const;
    [[nodiscard]] bool IsSelfCrossing(Point2D& crossing, double tolerance) const;
    [[nodiscard]] bool IsSelfCrossing(std::vector<Point2D>& crossings, double tolerance) const;
    /// A point of the area well inside: the middle of the longest stretch inside on one of several lines across the
    /// polygon, that one which is farthest from all borders, moved on to the middle the other way where that is
    /// farther.
    /// @return false, `point` untouched, when none is farther than the tolerance times the root of 2, so that the point
    ///         is on no border for any test with this tolerance
    [[nodiscard]] bool GetPointInsideBoundary(Point2D& point, double tolerance) const;
    /// Looks for the first fault, in this order: a coordinate that is not finite; in the outer ring, then in each hole,
    /// fewer than three points more than the tolerance apart, or a ring that meets itself or turns back on itself; in
    /// each hole, a part outside the outer ring or inside an earlier hole. Rings may touch from their proper sides.
    /// @param where       a point of the fault; untouched for a valid polygon and an empty ring
    /// @param checkHoles  false: the outer ring alone
    /// @return true for a valid polygon
    [[nodiscard]] bool Validate(Point2D& where, bool checkHoles, double tolerance) const;

    /// A non-const polygon is changed in place.
    Polygon2D& Transform(const Matrix2D& matrix);
    [[nodiscard]] Polygon2D Transform(const Matrix2D& matrix) const;
    /// Replaces `transformed` by this polygon, taken at z = 0, transformed by the matrix.
    void Transform(const Matrix3D& matrix, Polygon3D& transformed) const;
    Polygon2D& Translate(const Vec2D& v);
    [[nodiscard]] Polygon2D Translate(const Vec2D& v) const;

private:
    friend struct detail::SearchAccess;

    LineString2D ClosedRing() const;
    void Changed() noexcept {
        boundingBox.Invalidate();
        search.Invalidate();
    }
    BoundingBox2D ComputeBoundingBox() const;

    std::vector<Point2D> points;
    std::vector<LineString2D> holes;
    detail::Lazy<BoundingBox2D> boundingBox;
    detail::SegmentSearch search;  // of the outer ring
};

}  // namespace Kalvio::Math
