#include "kalvio/polygons/PolygonCurve2D.h"

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"

#include <cmath>
#include <memory>

namespace Kalvio::Math {

MathTypes PolygonCurve2D::GetType() const { return MathTypes::PolygonCurve2D; }

BoundingBox2D PolygonCurve2D::GetBoundingBox2D() const { return boundary.GetBoundingBox(); }

BoundingBox3D PolygonCurve2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool PolygonCurve2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::PolygonCurve2D &&
           IsEqualTo(static_cast<const PolygonCurve2D&>(other), tolerance);
}

bool PolygonCurve2D::IsEqualTo(const PolygonCurve2D& other, double tolerance) const {
    return boundary.IsEqualTo(other.boundary, tolerance) && innerRings.IsEqualTo(other.innerRings, tolerance);
}

PolygonCurve2D* PolygonCurve2D::Clone() const { return new PolygonCurve2D(*this); }

void PolygonCurve2D::Reverse() { boundary.Reverse(); }

double PolygonCurve2D::GetArea() const {
    const double area = boundary.GetArea();
    double removed = 0.0;
    for (std::size_t i = 0; i < innerRings.Size(); ++i) removed += std::abs(innerRings[i].GetArea());
    return area >= 0.0 ? area - removed : area + removed;
}

bool PolygonCurve2D::AppendInnerRing(RingCurve2D* ring) {
    if (ring == nullptr) return false;
    innerRings.Append(std::unique_ptr<RingCurve2D>(ring));
    return true;
}

bool PolygonCurve2D::IsContinuous(double tolerance) const {
    bool isContinuous = boundary.IsContinuous(tolerance);
    for (std::size_t i = 0; i < innerRings.Size(); ++i) isContinuous &= innerRings[i].IsContinuous(tolerance);
    return isContinuous;
}

bool PolygonCurve2D::IsPointInside(const Point2D& p, double tolerance) const {
    if (!boundary.IsPointInside(p, tolerance)) return false;
    for (std::size_t i = 0; i < innerRings.Size(); ++i) {
        if (innerRings[i].IsPointInside(p, tolerance)) return false;
    }
    return true;
}

template <>
bool Geometry::AreEqual(const PolygonCurve2D& a, const PolygonCurve2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
