#include "kalvio/meshes/IndexedFaceSet3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"

namespace Kalvio::Math {

MathTypes IndexedFaceSet3D::GetType() const { return MathTypes::IndexedFaceSet3D; }

BoundingBox3D IndexedFaceSet3D::GetBoundingBox() const { return detail::BoxOfPoints<BoundingBox3D>(vertices); }

BoundingBox2D IndexedFaceSet3D::GetBoundingBox2D() const { return GetBoundingBox().GetBoundingBox2D(); }

BoundingBox3D IndexedFaceSet3D::GetBoundingBox3D() const { return GetBoundingBox(); }

bool IndexedFaceSet3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::IndexedFaceSet3D &&
           IsEqualTo(static_cast<const IndexedFaceSet3D&>(other), tolerance);
}

bool IndexedFaceSet3D::IsEqualTo(const IndexedFaceSet3D& other, double tolerance) const {
    return faceSize == other.faceSize && HasSameFaces(other, tolerance);
}

IndexedFaceSet3D* IndexedFaceSet3D::Clone() const { return new IndexedFaceSet3D(*this); }

IndexedFaceSet3D& IndexedFaceSet3D::Transform(const Matrix3D& matrix) {
    TransformVertices(matrix);
    return *this;
}

IndexedFaceSet3D IndexedFaceSet3D::Transform(const Matrix3D& matrix) const {
    IndexedFaceSet3D copy(*this);
    return copy.Transform(matrix);
}

IndexedFaceSet3D& IndexedFaceSet3D::Translate(const Vec3D& v) {
    TranslateVertices(v);
    return *this;
}

IndexedFaceSet3D IndexedFaceSet3D::Translate(const Vec3D& v) const {
    IndexedFaceSet3D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const IndexedFaceSet3D& a, const IndexedFaceSet3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
