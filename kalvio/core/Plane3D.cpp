#include "kalvio/core/Plane3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

constexpr double equalPlanes = 0.005;      // of a coefficient, so also of a distance from the origin
constexpr double steepestForWorldX = 0.9;  // |a| up to which world X gives the first axis

bool IsDegenerate(const Vec3D& normal) {
    return Numbers::Compare(normal.NormSquared(), Numbers::CompareOperator::Equal, 0.0, detail::numericalZero);
}

}  // namespace

Plane3D::Plane3D(const Point3D& p1, const Point3D& p2, const Point3D& p3)
    : Plane3D(p1, (p2 - p1).CrossProduct(p3 - p1).Normalize()) {}

Plane3D::Plane3D(const Point3D& point, const Vec3D& normal)
    : Plane3D(normal.GetX(), normal.GetY(), normal.GetZ(), -normal.DotProduct(point - Point3D::origo())) {}

void Plane3D::Normalize() {
    const double length = std::sqrt(a * a + b * b + c * c);
    if (length == 0.0) return;
    a /= length;
    b /= length;
    c /= length;
    d /= length;
}

MathTypes Plane3D::GetType() const { return MathTypes::Plane3D; }

BoundingBox2D Plane3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Plane3D::GetBoundingBox3D() const {
    const auto extent = [](double other1, double other2) {
        return other1 == 0.0 && other2 == 0.0 ? 0.0 : detail::largestDouble;
    };
    return {GetPoint(), Vec3D(extent(b, c), extent(a, c), extent(a, b))};
}

bool Plane3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Plane3D && IsEqualTo(static_cast<const Plane3D&>(other), tolerance);
}

Plane3D* Plane3D::Clone() const { return new Plane3D(*this); }

bool Plane3D::IsEqualTo(const Plane3D& other, double tolerance) const {
    return GetNormal().IsEqualTo(other.GetNormal(), tolerance) && std::abs(d - other.d) < tolerance;
}

bool Plane3D::operator==(const Plane3D& other) const { return IsEqualTo(other, equalPlanes); }

Point3D Plane3D::GetProjection(const Point3D& point) const {
    const Vec3D normal = GetNormal();
    if (IsDegenerate(normal)) return point;
    return point - normal * (SignedDistance(point) / normal.NormSquared());
}

bool Plane3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    return !IsDegenerate(GetNormal()) && std::abs(SignedDistance(point)) < tolerances.UserTolerance();
}

Angle Plane3D::Plane3DAngle(const Plane3D& other) const { return GetNormal().GetAngle(other.GetNormal()); }

Matrix3D Plane3D::GetTransformationMatrix() const {
    const Vec3D normal = GetNormal();
    if (IsDegenerate(normal)) return Matrix3D(Matrix3D::SpecialMatrix::Undefined);
    const Vec3D world = std::abs(a) <= steepestForWorldX ? Vec3D(1.0, 0.0, 0.0) : Vec3D(0.0, 1.0, 0.0);
    const Vec3D first = (world - normal * normal.DotProduct(world)).Normalize();
    const Vec3D second = normal.CrossProduct(first);
    const Point3D origin = GetPoint();
    const double rows[4][4] = {{first.GetX(), first.GetY(), first.GetZ(), 0.0},
                               {second.GetX(), second.GetY(), second.GetZ(), 0.0},
                               {a, b, c, 0.0},
                               {origin.GetX(), origin.GetY(), origin.GetZ(), 1.0}};
    return Matrix3D(rows);
}

template <>
bool Geometry::AreEqual(const Plane3D& a, const Plane3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
