#pragma once

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/ProjectionPlane.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/polygons/LineString3D.h"

#include <initializer_list>
#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Matrix3D;
class Polygon2D;
class Triangle3D;

/// Area in space: an outer ring of points and the rings of its holes, in one plane or nearly so.
///
/// The rules of `Polygon2D` hold where the names agree. The plane of best fit has the normal of Newell's sum over the
/// outer ring (the vector area); seen from its tip the outer ring runs counter-clockwise.
///
/// Triangulations cover the area once, also around holes that touch the ring or each other. Their triangles are
/// Delaunay triangles as far as the rings allow, run like the outer ring, and use the points of the rings only: a
/// corner is an index into the points of the outer ring followed by those of the holes in order (`GetPointOfAll`).
/// Points closer than the tolerance (at least 1e-10, or the rounding of the coordinates) are one point, and a point
/// this near to an edge lies on it. About n log n. They return false, the output untouched, where rings cross
/// themselves or each other in the projection, a hole lies outside, or there is no area.
class KALVIO_MATH_API Polygon3D final : public IGeometry {
public:
    Polygon3D() = default;
    Polygon3D(std::vector<Point3D> outerRing) : points(std::move(outerRing)) {}
    Polygon3D(std::initializer_list<Point3D> outerRing) : points(outerRing) {}
    /// The points of the string become the outer ring.
    Polygon3D(const LineString3D& outerRing) : points(outerRing.GetPoints()) {}
    /// All rings lifted to height z.
    Polygon3D(const Polygon2D& plan, double z);

    MathTypes GetType() const override;
    /// Extent of the outer ring; the point box at the origin for an empty polygon.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `Polygon3D` of as many points and holes, equal index by index, hole by hole.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const Polygon3D& other, double tolerance) const;
    [[nodiscard]] Polygon3D* Clone() const override;
    /// Reverses the outer ring; holes keep their order and direction.
    void Reverse() override;
    /// Length of the outer ring in space, its closing edge included.
    double GetLength() const override;
    double Perimeter() const { return GetLength(); }

    const std::vector<Point3D>& GetPoints() const& { return points; }
    std::vector<Point3D>& GetPoints() & {
        Changed();
        return points;
    }
    std::vector<Point3D> GetPoints() && {
        Changed();
        return std::move(points);
    }
    /// Unchecked.
    const Point3D& GetPoint(unsigned int index) const { return points[index]; }
    Point3D& GetPoint(unsigned int index) {
        Changed();
        return points[index];
    }
    /// Number of points of the outer ring.
    unsigned int GetSize() const { return static_cast<unsigned int>(points.size()); }
    /// Number of points of the outer ring and all holes.
    unsigned int GetTotalSize() const;
    /// The points of the outer ring, then those of the holes in order; the origin for index >= `GetTotalSize`.
    const Point3D& GetPointOfAll(unsigned int index) const;

    void AppendPoint(const Point3D& point) {
        points.push_back(point);
        Changed();
    }
    void AppendPoints(const std::list<Point3D>& list);
    void AppendPoints(const std::vector<Point3D>& vertices);
    /// Inserts before position `index`; index = size appends.
    /// @return false when index > size
    bool Insert(unsigned int index, const Point3D& point);
    /// Inserts the point before the end point of the first edge of the closed ring that reaches the length in space
    /// from the first point: at length 0 it becomes the second point, on the closing edge the last one.
    /// @return false for a negative length, and for one beyond the perimeter
    bool InsertAtLength(double length, const Point3D& point);
    /// Empties the outer ring; holes stay.
    void RemoveAllPoints();
    /// Removes points and holes.
    void Clear();
    /// Appends a copy of the first point unless the last one agrees with it strictly within 1e-10 in x, y and z.
    void Close();
    /// First and last point agree strictly in x, y and z; false for an empty ring, true for a single point.
    bool IsClosed(double tolerance) const;
    /// Removes last points of the outer ring for as long as `IsClosed`: points that all coincide leave none.
    void RemoveClosingPoint(double tolerance);
    /// Removes points of the outer ring at most `tolerance`, in space, from the last point kept, as for line strings.
    void ReducePoints(double tolerance);

    void AppendHoleBoundary(const LineString3D& ring) { holes.push_back(ring); }
    /// Unchecked.
    const LineString3D& GetHoleBoundary(unsigned int index) const& { return holes[index]; }
    LineString3D& GetHoleBoundary(unsigned int index) & { return holes[index]; }
    LineString3D GetHoleBoundary(unsigned int index) && { return std::move(holes[index]); }
    const std::vector<LineString3D>& GetHoleBoundaries() const& { return holes; }
    std::vector<LineString3D> GetHoleBoundaries() && { return std::move(holes); }
    unsigned int GetNumHoleBoundaries() const { return static_cast<unsigned int>(holes.size()); }
    void RemoveHoleBoundaries() { holes.clear(); }

    /// Unit normal of the plane of best fit; the zero vector for a ring without area.
    Vec3D GetNormal() const;
    /// Area of the outer ring in the plane of best fit less those of the holes, whatever their direction.
    double GetPlanarArea() const;
    /// The winding of the outer ring in the plane of best fit seen from above: `Vertical` for a normal with z within
    /// +-1e-11 and for fewer than three points.
    WindingValue GetPlanarWinding() const;
    /// Reverses the outer ring when it has the other of the windings clockwise and counter-clockwise.
    /// @return whether it was reversed
    bool SetPlanarWinding(WindingValue winding);
    /// `Polygon2D::IsConvex` in the plane of best fit.
    bool IsPlanarConvex() const;
    /// The plan projection, holes included.
    Polygon2D GetPolygon() const;
    /// Height of the border at a plan position, on the outer ring first, then on the holes in order, by the rules of
    /// `LineString3D::GetHeightAtBorder`.
    /// @return its codes: 0, `z` untouched, when p is on no border in plan
    [[nodiscard]] int GetHeightAtBorder(const Point2D& p, double& z, double tolerance, int takeLast) const;

    /// Triangulates in the plane of best fit.
    /// @param corners  receives three indexes per triangle
    [[nodiscard]] bool Triangulate(std::vector<unsigned int>& corners, double tolerance) const;
    /// The same as triangles.
    [[nodiscard]] bool Triangulate(std::vector<Triangle3D>& triangles, double tolerance) const;
    /// The outer ring alone.
    [[nodiscard]] bool TriangulateWithoutHoles(std::vector<unsigned int>& corners, double tolerance) const;
    /// Triangulates in the two coordinates in which the area is largest (`Vec3D::Find2MajorAxisForProjection`): no
    /// rotation rounds them.
    [[nodiscard]] bool TriangulateByMainAxes(std::vector<unsigned int>& corners, double tolerance) const;
    /// Triangulates in the two coordinates of the plane (`GeometryCreator::Point2DFromPoint3D`).
    [[nodiscard]] bool TriangulateByProjection(ProjectionPlane plane, std::vector<unsigned int>& corners,
                                               double tolerance) const;

    /// A non-const polygon is changed in place.
    Polygon3D& Transform(const Matrix3D& matrix);
    [[nodiscard]] Polygon3D Transform(const Matrix3D& matrix) const;
    Polygon3D& Translate(const Vec3D& v);
    [[nodiscard]] Polygon3D Translate(const Vec3D& v) const;

private:
    template <class Project>
    bool TriangulateIn(Project&& project, bool withHoles, double tolerance, std::vector<unsigned int>& corners) const;
    void Changed() noexcept { boundingBox.Invalidate(); }

    std::vector<Point3D> points;
    std::vector<LineString3D> holes;
    detail::Lazy<BoundingBox3D> boundingBox;
};

}  // namespace Kalvio::Math
