#include "kalvio/core/Point2D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/detail/Transform.h"

namespace Kalvio::Math {

namespace {

constinit const Point2D origin{};

}  // namespace

const Point2D& Point2D::origo() { return origin; }

MathTypes Point2D::GetType() const { return MathTypes::Point2D; }

BoundingBox2D Point2D::GetBoundingBox2D() const { return {*this, Vec2D()}; }

BoundingBox3D Point2D::GetBoundingBox3D() const { return {Point3D(*this, 0.0), Vec3D()}; }

bool Point2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Point2D) return IsEqualTo(static_cast<const Point2D&>(other), tolerance);
    return other.GetType() == MathTypes::PointND && other.IsEqualTo(*this, tolerance);
}

Point2D* Point2D::Clone() const { return new Point2D(*this); }

Point2D& Point2D::Transform(const Matrix2D& matrix) { return detail::TransformInPlane(*this, matrix); }

Point2D Point2D::Transform(const Matrix2D& matrix) const {
    Point2D result(*this);
    return result.Transform(matrix);
}

template <>
bool Geometry::AreEqual(const Point2D& a, const Point2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
