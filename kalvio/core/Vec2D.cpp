#include "kalvio/core/Vec2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/VecND.h"
#include "kalvio/core/detail/Transform.h"
#include "kalvio/core/detail/VectorAngle.h"

namespace Kalvio::Math {

MathTypes Vec2D::GetType() const { return MathTypes::Vec2D; }

Vec2D Vec2D::MakeVector(const Point2D& from, const Point2D& to, double length) { return (to - from).SetLength(length); }

Angle Vec2D::GetAngle(const Vec2D& other) const {
    return detail::AngleFromProducts(DotProduct(other), Length() * other.Length());
}

Angle Vec2D::GetAngle(const Vec2D& other, WindingValue sense) const {
    const double angle = GetAngle(other).GetRadians();
    const double side = PerpDotProduct(other);
    const bool longWay =
        (sense == WindingValue::CounterClockwise && side < 0.0) || (sense == WindingValue::Clockwise && side > 0.0);
    return longWay ? detail::twoPi - angle : angle;
}

bool Vec2D::IsEqualTo(const IMathObject& other, double tolerance) const {
    if (other.GetType() == MathTypes::Vec2D) return IsEqualTo(static_cast<const Vec2D&>(other), tolerance);
    if (other.GetType() != MathTypes::VecND) return false;
    const auto& c = static_cast<const VecND&>(other).GetCoordinates();
    return c.size() == 2 && IsEqualTo(Vec2D(c[0], c[1]), tolerance);
}

Vec2D& Vec2D::Transform(const Matrix2D& matrix) { return detail::TransformInPlane(*this, matrix); }

Vec2D Vec2D::Transform(const Matrix2D& matrix) const {
    Vec2D result(*this);
    return result.Transform(matrix);
}

template <>
bool Geometry::AreEqual(const Vec2D& a, const Vec2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
