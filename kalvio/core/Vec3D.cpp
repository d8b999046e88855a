#include "kalvio/core/Vec3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/VecND.h"
#include "kalvio/core/detail/Transform.h"
#include "kalvio/core/detail/VectorAngle.h"

namespace Kalvio::Math {

MathTypes Vec3D::GetType() const { return MathTypes::Vec3D; }

Vec3D Vec3D::Clamp(double maxLength) const {
    const double squared = NormSquared();
    if (squared < detail::numericalZero || squared <= maxLength * maxLength) return *this;
    return *this * (maxLength / std::sqrt(squared));
}

Angle Vec3D::GetAngle(const Vec3D& other) const {
    return detail::AngleFromProducts(DotProduct(other), Length() * other.Length());
}

double Vec3D::Vec3DCosAngle(const Vec3D& other) const {
    const double lengths = Length() * other.Length();
    return std::abs(lengths) > detail::numericalZero ? DotProduct(other) / lengths : 0.0;
}

int Vec3D::FindDominantAxis() const {
    const double ax = std::abs(x);
    const double ay = std::abs(y);
    const double az = std::abs(z);
    if (ax > ay) return ax > az ? 0 : 2;
    return ay > az ? 1 : 2;
}

void Vec3D::Find2MajorAxisForProjection(int& first, int& second) const {
    const int axis = FindDominantAxis();
    const int next = (axis + 1) % 3;
    const int last = (axis + 2) % 3;
    const bool keeps = (*this)[axis] >= 0.0;
    first = keeps ? next : last;
    second = keeps ? last : next;
}

bool Vec3D::IsEqualTo(const IMathObject& other, double tolerance) const {
    if (other.GetType() == MathTypes::Vec3D) return IsEqualTo(static_cast<const Vec3D&>(other), tolerance);
    if (other.GetType() != MathTypes::VecND) return false;
    const auto& c = static_cast<const VecND&>(other).GetCoordinates();
    return c.size() == 3 && IsEqualTo(Vec3D(c[0], c[1], c[2]), tolerance);
}

Vec3D& Vec3D::Transform(const Matrix3D& matrix) { return detail::TransformInSpace(*this, matrix); }

Vec3D Vec3D::Transform(const Matrix3D& matrix) const {
    Vec3D result(*this);
    return result.Transform(matrix);
}

Vec3D& Vec3D::operator*=(const Quaternion& rotation) { return Transform(Matrix3D(rotation)); }

template <>
bool Geometry::AreEqual(const Vec3D& a, const Vec3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
