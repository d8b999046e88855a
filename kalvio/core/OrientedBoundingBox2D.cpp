#include "kalvio/core/OrientedBoundingBox2D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math {

OrientedBoundingBox2D::OrientedBoundingBox2D(const BoundingBox2D& box) : center(box.GetCenter()), size(box.GetSize()) {}

OrientedBoundingBox2D::OrientedBoundingBox2D(const Point2D& boxCenter, const Vec2D& boxSize, const Vec2D& first,
                                             const Vec2D& second)
    : center(boxCenter), size(boxSize) {
    SetAxes(first, second);
}

MathTypes OrientedBoundingBox2D::GetType() const { return MathTypes::OrientedBoundingBox2D; }

BoundingBox2D OrientedBoundingBox2D::GetBoundingBox2D() const {
    std::vector<Point2D> corners;
    GetCornerPoints(corners);
    Point2D low = corners.front();
    Point2D high = corners.front();
    for (const Point2D& p : corners) {
        low.SetCoordinates(std::min(low.GetX(), p.GetX()), std::min(low.GetY(), p.GetY()));
        high.SetCoordinates(std::max(high.GetX(), p.GetX()), std::max(high.GetY(), p.GetY()));
    }
    return {low, high};
}

BoundingBox3D OrientedBoundingBox2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool OrientedBoundingBox2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() != MathTypes::OrientedBoundingBox2D) return false;
    const auto& box = static_cast<const OrientedBoundingBox2D&>(other);
    return center.IsEqualTo(box.center, tolerance) && size.IsEqualTo(box.size, tolerance) &&
           firstAxis.IsEqualTo(box.firstAxis, tolerance) && secondAxis.IsEqualTo(box.secondAxis, tolerance);
}

OrientedBoundingBox2D* OrientedBoundingBox2D::Clone() const { return new OrientedBoundingBox2D(*this); }

void OrientedBoundingBox2D::SetAxes(const Vec2D& first, const Vec2D& second) {
    firstAxis = first;
    secondAxis = second;
    firstAxis.Normalize();
    secondAxis.Normalize();
}

void OrientedBoundingBox2D::GetCornerPoints(Point2D& p1, Point2D& p2, Point2D& p3, Point2D& p4) const {
    const Vec2D u = firstAxis * (size.GetX() * 0.5);
    const Vec2D v = secondAxis * (size.GetY() * 0.5);
    p1 = center - u - v;
    p2 = center + u - v;
    p3 = center + u + v;
    p4 = center - u + v;
}

void OrientedBoundingBox2D::GetCornerPoints(std::vector<Point2D>& corners) const {
    corners.resize(4);
    GetCornerPoints(corners[0], corners[1], corners[2], corners[3]);
}

bool OrientedBoundingBox2D::IsPointInside(const Point2D& p) const {
    const Vec2D d = p - center;
    return std::abs(d.DotProduct(firstAxis)) <= size.GetX() * 0.5 &&
           std::abs(d.DotProduct(secondAxis)) <= size.GetY() * 0.5;
}

OrientedBoundingBox2D& OrientedBoundingBox2D::operator+=(const OrientedBoundingBox2D& other) {
    std::vector<Point2D> corners;
    other.GetCornerPoints(corners);
    Vec2D low = size * -0.5;
    Vec2D high = size * 0.5;
    for (const Point2D& p : corners) {
        const Vec2D d = p - center;
        const double u = d.DotProduct(firstAxis);
        const double v = d.DotProduct(secondAxis);
        low.SetCoordinates(std::min(low.GetX(), u), std::min(low.GetY(), v));
        high.SetCoordinates(std::max(high.GetX(), u), std::max(high.GetY(), v));
    }
    const Vec2D middle = (low + high) * 0.5;
    center += firstAxis * middle.GetX() + secondAxis * middle.GetY();
    size = high - low;
    return *this;
}

OrientedBoundingBox2D operator+(const OrientedBoundingBox2D& a, const OrientedBoundingBox2D& b) {
    OrientedBoundingBox2D result(a);
    return result += b;
}

}  // namespace Kalvio::Math
