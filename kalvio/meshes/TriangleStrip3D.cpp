#include "kalvio/meshes/TriangleStrip3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/polygons/detail/Chain.h"

#include <algorithm>

namespace Kalvio::Math {

MathTypes TriangleStrip3D::GetType() const { return MathTypes::TriangleStrip3D; }

BoundingBox2D TriangleStrip3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D TriangleStrip3D::GetBoundingBox3D() const { return detail::BoxOfPoints<BoundingBox3D>(vertices); }

bool TriangleStrip3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::TriangleStrip3D &&
           IsEqualTo(static_cast<const TriangleStrip3D&>(other), tolerance);
}

bool TriangleStrip3D::IsEqualTo(const TriangleStrip3D& other, double tolerance) const {
    return ccw == other.ccw &&
           std::equal(vertices.begin(), vertices.end(), other.vertices.begin(), other.vertices.end(),
                      [tolerance](const Point3D& a, const Point3D& b) { return a.IsEqualTo(b, tolerance); });
}

TriangleStrip3D* TriangleStrip3D::Clone() const { return new TriangleStrip3D(*this); }

void TriangleStrip3D::AppendVertices(const std::vector<Point3D>& list) {
    detail::InsertPoints(vertices, vertices.size(), list.begin(), list.end());
}

bool TriangleStrip3D::ComputeIndexes(std::vector<unsigned int>& out) const {
    if (vertices.size() % 2 != 0) return false;
    if (vertices.size() >= 4) out.reserve(out.size() + 3 * (vertices.size() - 2));
    for (unsigned int b = 0; std::size_t{b} + 3 < vertices.size(); b += 2) {
        out.insert(out.end(), {b, b + 1, b + 3, b, b + 3, b + 2});
    }
    return true;
}

void TriangleStrip3D::ComputeNormals(bool perVertex, std::vector<Vec3D>& normals) const {
    std::vector<unsigned int> corners;
    if (!ComputeIndexes(corners)) return;
    const std::size_t first = normals.size();
    normals.resize(first + (perVertex ? vertices.size() : corners.size() / 3));
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        const Point3D& b = vertices[corners[i + 1]];
        const Vec3D product = (b - vertices[corners[i]]).CrossProduct(vertices[corners[i + 2]] - b).Normalize();
        const Vec3D normal = ccw ? product : -product;
        if (perVertex) {
            for (std::size_t k = i; k < i + 3; ++k) normals[first + corners[k]] += normal;
        } else {
            normals[first + i / 3] = normal;
        }
    }
    if (perVertex)
        std::for_each(normals.begin() + static_cast<std::ptrdiff_t>(first), normals.end(),
                      [](Vec3D& n) { n.Normalize(); });
}

}  // namespace Kalvio::Math
