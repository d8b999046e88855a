#include "kalvio/core/Point2DM.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"

namespace Kalvio::Math {

MathTypes Point2DM::GetType() const { return MathTypes::Point2DM; }

BoundingBox2D Point2DM::GetBoundingBox2D() const { return {Point2D(x, y), Vec2D()}; }

BoundingBox3D Point2DM::GetBoundingBox3D() const { return {Point3D(x, y, 0.0), Vec3D()}; }

bool Point2DM::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Point2DM && IsEqualTo(static_cast<const Point2DM&>(other), tolerance);
}

Point2DM* Point2DM::Clone() const { return new Point2DM(*this); }

template <>
bool Geometry::AreEqual(const Point2DM& a, const Point2DM& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

Point2DM& Point2DM::Transform(const Matrix2D& matrix) {
    SetCoordinates(Point2D(x, y).Transform(matrix));
    return *this;
}

Point2DM Point2DM::Transform(const Matrix2D& matrix) const {
    Point2DM result(*this);
    return result.Transform(matrix);
}

}  // namespace Kalvio::Math
