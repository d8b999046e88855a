#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/meshes/detail/VertexArrays.h"

#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class Matrix3D;

/// Triangles in space that share their vertices by index: a terrain model, a tessellated surface, the skin of a solid.
///
/// The corners of triangle k are the vertices at 3k, 3k + 1, 3k + 2 of the index array. Triangles are neighbours where
/// they name the same two vertices, so equal places must be merged first (`CollapsePoints`). Vertices that no triangle
/// names may exist. At most 2^32 - 1 vertices.
///
/// A triangle that names a vertex that does not exist takes no part in anything; nor do one or two indexes at the end
/// that are no whole triangle. Edits leave them where they are.
class KALVIO_MATH_API IndexedTriangleSet3D final : public IGeometry, public detail::IndexedVertexArray<Point3D> {
public:
    IndexedTriangleSet3D() = default;
    IndexedTriangleSet3D(const std::vector<Point3D>& corners, const std::vector<unsigned int>& triangles)
        : IndexedVertexArray(corners, triangles) {}

    MathTypes GetType() const override;
    /// Extent of all vertices, used or not, taken in one pass; the point box at the origin when there are none.
    BoundingBox3D GetBoundingBox() const;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with an `IndexedTriangleSet3D` of as many vertices, equal index by index, and of the same indexes and
    /// winding flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const IndexedTriangleSet3D& other, double tolerance) const;
    [[nodiscard]] IndexedTriangleSet3D* Clone() const override;

    using IndexedVertexArray::GetVertices;
    std::vector<Point3D>& GetVertices() { return vertices; }
    using IndexedVertexArray::GetIndexes;
    std::vector<unsigned int>& GetIndexes() { return indexes; }
    void AppendVertex(const Point3D& vertex) { vertices.push_back(vertex); }
    /// Removes vertices and triangles; the winding flag stays.
    void Clear();
    std::uint64_t GetTrianglesCount() const { return indexes.size() / 3; }
    /// The corners of one triangle.
    /// @return false, the points untouched, when there is no such triangle or it names a vertex that does not exist
    bool GetTriangleAt(std::uint64_t triangle, Point3D& a, Point3D& b, Point3D& c) const;

    /// A non-const set is changed in place.
    IndexedTriangleSet3D& Transform(const Matrix3D& matrix);
    IndexedTriangleSet3D Transform(const Matrix3D& matrix) const;
    IndexedTriangleSet3D& Translate(const Vec3D& v);
    IndexedTriangleSet3D Translate(const Vec3D& v) const;
};

}  // namespace Kalvio::Math
