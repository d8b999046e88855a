#include "kalvio/core/Triangle3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SegmentDistance.h"

#include <algorithm>

namespace Kalvio::Math {

namespace {

bool HasNoLength(const Vec3D& edge) {
    return Numbers::Compare(edge.Length(), Numbers::CompareOperator::Equal, 0.0, detail::numericalZero);
}

}  // namespace

MathTypes Triangle3D::GetType() const { return MathTypes::Triangle3D; }

BoundingBox2D Triangle3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Triangle3D::GetBoundingBox3D() const {
    Point3D low;
    Point3D high;
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min({pointA[axis], pointB[axis], pointC[axis]});
        high[axis] = std::max({pointA[axis], pointB[axis], pointC[axis]});
    }
    return {low, high};
}

bool Triangle3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() != MathTypes::Triangle3D) return false;
    const auto& triangle = static_cast<const Triangle3D&>(other);
    return pointA.IsEqualTo(triangle.pointA, tolerance) && pointB.IsEqualTo(triangle.pointB, tolerance) &&
           pointC.IsEqualTo(triangle.pointC, tolerance);
}

Triangle3D* Triangle3D::Clone() const { return new Triangle3D(*this); }

Vec3D Triangle3D::GetNormal() const { return (pointB - pointA).CrossProduct(pointC - pointA).Normalize(); }

double Triangle3D::GetArea() const {
    const Vec3D ab = pointB - pointA;
    const Vec3D ac = pointC - pointA;
    if (HasNoLength(ab) || HasNoLength(ac)) return 0.0;
    return 0.5 * ab.CrossProduct(ac).Length();
}

bool Triangle3D::IsPointInside(const Point3D& point, const Tolerances& tolerances) const {
    const double tolerance = tolerances.UserTolerance();
    const Vec3D normal = (pointB - pointA).CrossProduct(pointC - pointA);
    const double length = normal.Length();
    bool inside =
        length > 0.0 && std::isfinite(length) && std::abs(normal.DotProduct(point - pointA)) <= tolerance * length;
    for (int i = 0; i < 3; ++i) {
        const Point3D& from = (*this)[i];
        const Point3D& to = (*this)[(i + 1) % 3];
        if (detail::SegmentFoot(point, from, to, 0.0).squaredDistance <= tolerance * tolerance) return true;
        inside = inside && normal.DotProduct((to - from).CrossProduct(point - from)) >= 0.0;
    }
    return inside;
}

template <>
bool Geometry::AreEqual(const Triangle3D& a, const Triangle3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
