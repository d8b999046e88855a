#include "kalvio/meshes/IndexedFaceSet2D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"

namespace Kalvio::Math {

MathTypes IndexedFaceSet2D::GetType() const { return MathTypes::IndexedFaceSet2D; }

BoundingBox2D IndexedFaceSet2D::GetBoundingBox() const { return detail::BoxOfPoints<BoundingBox2D>(vertices); }

BoundingBox2D IndexedFaceSet2D::GetBoundingBox2D() const { return GetBoundingBox(); }

BoundingBox3D IndexedFaceSet2D::GetBoundingBox3D() const { return GetBoundingBox().GetBoundingBox3D(); }

bool IndexedFaceSet2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::IndexedFaceSet2D &&
           IsEqualTo(static_cast<const IndexedFaceSet2D&>(other), tolerance);
}

bool IndexedFaceSet2D::IsEqualTo(const IndexedFaceSet2D& other, double tolerance) const {
    return faceSize == other.faceSize && HasSameFaces(other, tolerance);
}

IndexedFaceSet2D* IndexedFaceSet2D::Clone() const { return new IndexedFaceSet2D(*this); }

template <>
bool Geometry::AreEqual(const IndexedFaceSet2D& a, const IndexedFaceSet2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
