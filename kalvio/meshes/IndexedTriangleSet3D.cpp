#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/meshes/detail/Triangles.h"

namespace Kalvio::Math {

MathTypes IndexedTriangleSet3D::GetType() const { return MathTypes::IndexedTriangleSet3D; }

BoundingBox3D IndexedTriangleSet3D::GetBoundingBox() const { return detail::BoxOfPoints<BoundingBox3D>(vertices); }

BoundingBox2D IndexedTriangleSet3D::GetBoundingBox2D() const { return GetBoundingBox().GetBoundingBox2D(); }

BoundingBox3D IndexedTriangleSet3D::GetBoundingBox3D() const { return GetBoundingBox(); }

bool IndexedTriangleSet3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::IndexedTriangleSet3D &&
           IsEqualTo(static_cast<const IndexedTriangleSet3D&>(other), tolerance);
}

bool IndexedTriangleSet3D::IsEqualTo(const IndexedTriangleSet3D& other, double tolerance) const {
    return HasSameFaces(other, tolerance);
}

IndexedTriangleSet3D* IndexedTriangleSet3D::Clone() const { return new IndexedTriangleSet3D(*this); }

void IndexedTriangleSet3D::Clear() {
    vertices.clear();
    indexes.clear();
}

bool IndexedTriangleSet3D::GetTriangleAt(std::uint64_t triangle, Point3D& a, Point3D& b, Point3D& c) const {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), triangle);
    if (corners == nullptr) return false;
    a = vertices[corners[0]];
    b = vertices[corners[1]];
    c = vertices[corners[2]];
    return true;
}

IndexedTriangleSet3D& IndexedTriangleSet3D::Transform(const Matrix3D& matrix) {
    TransformVertices(matrix);
    return *this;
}

IndexedTriangleSet3D IndexedTriangleSet3D::Transform(const Matrix3D& matrix) const {
    IndexedTriangleSet3D copy(*this);
    return copy.Transform(matrix);
}

IndexedTriangleSet3D& IndexedTriangleSet3D::Translate(const Vec3D& v) {
    TranslateVertices(v);
    return *this;
}

IndexedTriangleSet3D IndexedTriangleSet3D::Translate(const Vec3D& v) const {
    IndexedTriangleSet3D copy(*this);
    return copy.Translate(v);
}

}  // namespace Kalvio::Math
