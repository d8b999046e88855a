#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/meshes/detail/VertexArrays.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kalvio::Math {

class IndexedTriangleSet3D;
class Matrix2D;
class Matrix3D;
class Polygon2D;

/// Triangles in plan that share their vertices by index: corners of triangle k are the vertices at 3k, 3k + 1, 3k + 2
/// of the index array.
///
/// The rules of `IndexedTriangleSet3D` hold where the names agree.
class KALVIO_MATH_API IndexedTriangleSet2D final : public IGeometry, public detail::IndexedVertexArray<Point2D> {
public:
    IndexedTriangleSet2D() = default;

    MathTypes GetType() const override;
    /// Extent of all vertices, used or not; the point box at the origin when there are none.
    BoundingBox2D GetBoundingBox() const;
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with an `IndexedTriangleSet2D` of as many vertices, equal index by index, and of the same indexes and
    /// winding flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const IndexedTriangleSet2D& other, double tolerance) const;
    [[nodiscard]] IndexedTriangleSet2D* Clone() const override;

    /// The corners of the whole triangles as a range of values; indexes are unchecked. A corner that names a vertex
    /// that does not exist is NaN.
    auto begin() const { return detail::IndexIterator<IndexedTriangleSet2D>(*this, 0); }
    auto end() const { return detail::IndexIterator<IndexedTriangleSet2D>(*this, size()); }
    std::size_t size() const { return indexes.size() / 3; }
    std::array<Point2D, 3> operator[](std::size_t triangle) const {
        return {CornerAt(3 * triangle), CornerAt(3 * triangle + 1), CornerAt(3 * triangle + 2)};
    }

    /// The winding of the first triangle: counter-clockwise for a signed area > 0, else clockwise; without a triangle
    /// the winding that `IsCCW` tells.
    WindingValue GetWinding() const;

    /// Appends the area of the set as polygons, one per part that hangs together by edges: the edges of one triangle,
    /// chained into an outer ring, counter-clockwise, and rings of holes, clockwise, which belong to the ring of their
    /// part. Rings that meet at a vertex are apart; an island in a hole is a polygon of its own. Triangles run either
    /// way; they may not overlap. Near linear.
    /// @param withHoles  false: outer rings alone
    /// @return whether there is any polygon
    [[nodiscard]] bool GetBoundaries(std::vector<Polygon2D>& boundaries, bool withHoles) const;

    /// Merges vertices at most the tolerance apart, as `IndexedTriangleSet3D::CollapsePoints` does.
    bool CollapsePoints(double tolerance);
    /// Removes triangles that are a line or a point: two of their corners are at most the tolerance apart.
    /// @param withUnusedVertices  also drops all vertices that no index names then
    /// @return whether anything was removed; nothing is for a tolerance that is negative or NaN
    bool RemoveLineTriangles(double tolerance, bool withUnusedVertices);
    /// Drops the vertices that no index names; the others keep their order. @return the number dropped
    std::uint64_t RemoveUnusedVertices();

    /// A non-const set is changed in place.
    IndexedTriangleSet2D& Transform(const Matrix2D& matrix);
    IndexedTriangleSet2D Transform(const Matrix2D& matrix) const;
    /// Replaces `out` by this set, taken at z = 0, transformed by the matrix.
    void Transform(const Matrix3D& matrix, IndexedTriangleSet3D& out) const;
    IndexedTriangleSet2D& Translate(const Vec2D& v);
    IndexedTriangleSet2D Translate(const Vec2D& v) const;
};

}  // namespace Kalvio::Math
