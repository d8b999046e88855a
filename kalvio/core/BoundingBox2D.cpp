#include "kalvio/core/BoundingBox2D.h"

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"

#include <algorithm>

namespace Kalvio::Math {

MathTypes BoundingBox2D::GetType() const { return MathTypes::BoundingBox2D; }

BoundingBox3D BoundingBox2D::GetBoundingBox3D() const { return {Point3D(center, 0.0), Vec3D(size, 0.0)}; }

bool BoundingBox2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() != MathTypes::BoundingBox2D) return false;
    const auto& box = static_cast<const BoundingBox2D&>(other);
    return center.IsEqualTo(box.center, tolerance) && size.IsEqualTo(box.size, tolerance);
}

BoundingBox2D* BoundingBox2D::Clone() const { return new BoundingBox2D(*this); }

double BoundingBox2D::GetIntersectionArea(const BoundingBox2D& other) const {
    const Point2D low = GetMinPoint();
    const Point2D high = GetMaxPoint();
    const Point2D otherLow = other.GetMinPoint();
    const Point2D otherHigh = other.GetMaxPoint();
    const double width = std::min(high.GetX(), otherHigh.GetX()) - std::max(low.GetX(), otherLow.GetX());
    const double height = std::min(high.GetY(), otherHigh.GetY()) - std::max(low.GetY(), otherLow.GetY());
    return width > 0.0 && height > 0.0 ? width * height : 0.0;
}

BoundingBox2D& BoundingBox2D::operator+=(const BoundingBox2D& other) {
    ComputeSizeAndCenter(*this, other, center, size);
    return *this;
}

void BoundingBox2D::ComputeSizeAndCenter(const BoundingBox2D& a, const BoundingBox2D& b, Point2D& unionCenter,
                                         Vec2D& unionSize) {
    const Point2D lowA = a.GetMinPoint();
    const Point2D lowB = b.GetMinPoint();
    const Point2D highA = a.GetMaxPoint();
    const Point2D highB = b.GetMaxPoint();
    const Point2D low(std::min(lowA.GetX(), lowB.GetX()), std::min(lowA.GetY(), lowB.GetY()));
    const Point2D high(std::max(highA.GetX(), highB.GetX()), std::max(highA.GetY(), highB.GetY()));
    unionSize = high - low;
    unionCenter = (low + high) * 0.5;
}

BoundingBox2D operator+(const BoundingBox2D& a, const BoundingBox2D& b) {
    BoundingBox2D result(a);
    return result += b;
}

template <>
bool Geometry::AreEqual(const BoundingBox2D& a, const BoundingBox2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
