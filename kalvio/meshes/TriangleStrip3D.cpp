#include "kalvio/meshes/TriangleStrip3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/meshes/detail/TriangleNormals.h"

namespace Kalvio::Math {

MathTypes TriangleStrip3D::GetType() const { return MathTypes::TriangleStrip3D; }

BoundingBox2D TriangleStrip3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D TriangleStrip3D::GetBoundingBox3D() const { return detail::BoxOfPoints<BoundingBox3D>(vertices); }

bool TriangleStrip3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::TriangleStrip3D &&
           IsEqualTo(static_cast<const TriangleStrip3D&>(other), tolerance);
}

bool TriangleStrip3D::IsEqualTo(const TriangleStrip3D& other, double tolerance) const {
    return HasSameVertices(other, tolerance);
}

TriangleStrip3D* TriangleStrip3D::Clone() const { return new TriangleStrip3D(*this); }

bool TriangleStrip3D::ComputeIndexes(std::vector<unsigned int>& out) const {
    if (vertices.size() % 2 != 0) return false;
    out.clear();
    if (vertices.size() >= 4) out.reserve(3 * (vertices.size() - 2));
    for (unsigned int b = 0; std::size_t{b} + 3 < vertices.size(); b += 2) {
        out.insert(out.end(), {b, b + 1, b + 3, b, b + 3, b + 2});
    }
    return true;
}

void TriangleStrip3D::ComputeNormals(bool perVertex, std::vector<Vec3D>& normals) const {
    std::vector<unsigned int> corners;
    if (!ComputeIndexes(corners)) {
        normals.clear();
        return;
    }
    if (perVertex) {
        detail::ComputeVertexNormals(vertices, corners, ccw, normals);
    } else {
        detail::ComputeFaceNormals(vertices, corners, ccw, normals);
    }
}

template <>
bool Geometry::AreEqual(const TriangleStrip3D& a, const TriangleStrip3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
