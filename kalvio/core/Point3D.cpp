#include "kalvio/core/Point3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/detail/Transform.h"

namespace Kalvio::Math {

namespace {

constinit const Point3D origin{};

}  // namespace

const Point3D& Point3D::origo() { return origin; }

MathTypes Point3D::GetType() const { return MathTypes::Point3D; }

BoundingBox2D Point3D::GetBoundingBox2D() const { return {GetPoint2D(), Vec2D()}; }

BoundingBox3D Point3D::GetBoundingBox3D() const { return {*this, Vec3D()}; }

bool Point3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Point3D) return IsEqualTo(static_cast<const Point3D&>(other), tolerance);
    return other.GetType() == MathTypes::PointND && other.IsEqualTo(*this, tolerance);
}

Point3D* Point3D::Clone() const { return new Point3D(*this); }

Point3D& Point3D::Transform(const Matrix3D& matrix) { return detail::TransformInSpace(*this, matrix); }

Point3D Point3D::Transform(const Matrix3D& matrix) const {
    Point3D result(*this);
    return result.Transform(matrix);
}

template <>
bool Geometry::AreEqual(const Point3D& a, const Point3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
