#include "kalvio/core/BoundingBox3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Geometry.h"

#include <algorithm>

namespace Kalvio::Math {

MathTypes BoundingBox3D::GetType() const { return MathTypes::BoundingBox3D; }

BoundingBox2D BoundingBox3D::GetBoundingBox2D() const { return {center.GetPoint2D(), Vec2D(size.GetX(), size.GetY())}; }

bool BoundingBox3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() != MathTypes::BoundingBox3D) return false;
    const auto& box = static_cast<const BoundingBox3D&>(other);
    return center.IsEqualTo(box.center, tolerance) && size.IsEqualTo(box.size, tolerance);
}

BoundingBox3D* BoundingBox3D::Clone() const { return new BoundingBox3D(*this); }

BoundingBox3D& BoundingBox3D::operator+=(const BoundingBox3D& other) {
    ComputeSizeAndCenter(*this, other, center, size);
    return *this;
}

void BoundingBox3D::ComputeSizeAndCenter(const BoundingBox3D& a, const BoundingBox3D& b, Point3D& unionCenter,
                                         Vec3D& unionSize) {
    Point3D low = a.GetMinPoint();
    Point3D high = a.GetMaxPoint();
    const Point3D lowB = b.GetMinPoint();
    const Point3D highB = b.GetMaxPoint();
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], lowB[axis]);
        high[axis] = std::max(high[axis], highB[axis]);
    }
    unionSize = high - low;
    unionCenter = (low + high) * 0.5;
}

BoundingBox3D operator+(const BoundingBox3D& a, const BoundingBox3D& b) {
    BoundingBox3D result(a);
    return result += b;
}

template <>
bool Geometry::AreEqual(const BoundingBox3D& a, const BoundingBox3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
