#include "kalvio/core/PointND.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/BoundingBoxND.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/Coordinates.h"

namespace Kalvio::Math {

MathTypes PointND::GetType() const { return MathTypes::PointND; }

BoundingBox2D PointND::GetBoundingBox2D() const { return GetBoundingBoxND().GetBoundingBox2D(); }

BoundingBox3D PointND::GetBoundingBox3D() const { return GetBoundingBoxND().GetBoundingBox3D(); }

BoundingBoxND PointND::GetBoundingBoxND() const { return {*this, *this}; }

bool PointND::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetDimension() != GetDimension()) return false;
    switch (other.GetType()) {
        case MathTypes::PointND:
            return IsEqualTo(static_cast<const PointND&>(other), tolerance);
        case MathTypes::Point2D:
            return IsEqualTo(PointND(static_cast<const Point2D&>(other)), tolerance);
        case MathTypes::Point3D:
            return IsEqualTo(PointND(static_cast<const Point3D&>(other)), tolerance);
        default:
            return false;
    }
}

PointND* PointND::Clone() const { return new PointND(*this); }

double PointND::Distance(const PointND& other) const { return (*this - other).Length(); }

bool PointND::IsEqualTo(const PointND& other, double tolerance) const {
    return detail::AreCoordinatesEqual(coordinates, other.coordinates, tolerance);
}

PointND& PointND::operator+=(const PointND& other) {
    if (coordinates.size() == other.coordinates.size()) *this = *this + other;
    return *this;
}

PointND& PointND::operator+=(const VecND& v) {
    if (coordinates.size() == v.GetCoordinates().size()) *this = *this + v;
    return *this;
}

PointND& PointND::operator*=(double factor) {
    detail::Scale(coordinates, factor);
    return *this;
}

PointND& PointND::operator/=(double divisor) {
    detail::Divide(coordinates, divisor);
    return *this;
}

VecND operator-(const PointND& a, const PointND& b) {
    return VecND(detail::SumOfCoordinates(a.GetCoordinates(), -1.0, b.GetCoordinates()));
}

PointND operator+(const PointND& p, const VecND& v) {
    return PointND(detail::SumOfCoordinates(p.GetCoordinates(), 1.0, v.GetCoordinates()));
}

PointND operator-(const PointND& p, const VecND& v) {
    return PointND(detail::SumOfCoordinates(p.GetCoordinates(), -1.0, v.GetCoordinates()));
}

PointND operator+(const PointND& a, const PointND& b) {
    return PointND(detail::SumOfCoordinates(a.GetCoordinates(), 1.0, b.GetCoordinates()));
}

PointND operator*(PointND p, double factor) { return p *= factor; }

PointND operator*(double factor, PointND p) { return p *= factor; }

template <>
bool Geometry::AreEqual(const PointND& a, const PointND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
