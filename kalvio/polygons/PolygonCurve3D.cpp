#include "kalvio/polygons/PolygonCurve3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Geometry.h"

#include <memory>

namespace Kalvio::Math {

MathTypes PolygonCurve3D::GetType() const { return MathTypes::PolygonCurve3D; }

BoundingBox2D PolygonCurve3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D PolygonCurve3D::GetBoundingBox3D() const { return boundary.GetBoundingBox(); }

bool PolygonCurve3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::PolygonCurve3D &&
           IsEqualTo(static_cast<const PolygonCurve3D&>(other), tolerance);
}

bool PolygonCurve3D::IsEqualTo(const PolygonCurve3D& other, double tolerance) const {
    return boundary.IsEqualTo(other.boundary, tolerance) && innerRings.IsEqualTo(other.innerRings, tolerance);
}

PolygonCurve3D* PolygonCurve3D::Clone() const { return new PolygonCurve3D(*this); }

void PolygonCurve3D::Reverse() { boundary.Reverse(); }

bool PolygonCurve3D::AppendInnerRing(RingCurve3D* ring) {
    if (ring == nullptr) return false;
    innerRings.Append(std::unique_ptr<RingCurve3D>(ring));
    return true;
}

bool PolygonCurve3D::IsContinuous(double tolerance) const {
    bool isContinuous = boundary.IsContinuous(tolerance);
    for (std::size_t i = 0; i < innerRings.Size(); ++i) isContinuous &= innerRings[i].IsContinuous(tolerance);
    return isContinuous;
}

bool PolygonCurve3D::IsPointInside(const Point3D& p, double tolerance) const {
    if (!boundary.IsPointInside(p, tolerance)) return false;
    for (std::size_t i = 0; i < innerRings.Size(); ++i) {
        if (innerRings[i].IsPointInside(p, tolerance)) return false;
    }
    return true;
}

template <>
bool Geometry::AreEqual(const PolygonCurve3D& a, const PolygonCurve3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
