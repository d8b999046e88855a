#pragma once

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/meshes/detail/VertexArrays.h"

#include <initializer_list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// Ladder of triangles in space: vertices 2 k and 2 k + 1 are the ends of rung k, one on each rail. Two rungs bound a
/// quad of two triangles, which share the diagonal from the first rung's even end to the second rung's odd end.
///
///     1 ---- 3 ---- 5      odd rail
///     |   /  |   /  |
///     0 ---- 2 ---- 4      even rail
///
/// A vertex without its partner makes no rung: a strip of an odd number of vertices has no triangles.
class KALVIO_MATH_API TriangleStrip3D final : public IGeometry, public detail::VertexArray<Point3D> {
public:
    TriangleStrip3D() = default;
    explicit TriangleStrip3D(std::vector<Point3D> ladder) : VertexArray(std::move(ladder)) {}
    TriangleStrip3D(std::initializer_list<Point3D> ladder) : VertexArray(std::vector<Point3D>(ladder)) {}

    MathTypes GetType() const override;
    /// Extent of all vertices; the point box at the origin for an empty strip.
    BoundingBox3D GetBoundingBox() const { return GetBoundingBox3D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Another strip of as many vertices, equal index by index, strictly per coordinate, with the same winding
    /// flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const TriangleStrip3D& other, double tolerance) const;
    [[nodiscard]] TriangleStrip3D* Clone() const override;

    /// Number of vertices.
    unsigned int GetSize() const { return GetVerticesSize(); }

    /// Replaces `out` by three indexes per triangle: of the quad at b = 2 k first (b, b + 1, b + 3), then
    /// (b, b + 3, b + 2). Less than two rungs have none.
    /// @return false, `out` untouched, for an odd number of vertices
    [[nodiscard]] bool ComputeIndexes(std::vector<unsigned int>& out) const;
    /// Replaces `normals` by those of the triangles of `ComputeIndexes` in their order, or by one per vertex: the
    /// normalised sum over the triangles that use it, zero where there are none.
    ///
    /// The normal of a triangle a, b, c is the unit vector of (b - a) x (c - b), of which one no longer than 1e-10 is
    /// left as it is, and its opposite unless `IsCCW`. Empty for an odd number of vertices.
    void ComputeNormals(bool perVertex, std::vector<Vec3D>& normals) const;
};

}  // namespace Kalvio::Math
