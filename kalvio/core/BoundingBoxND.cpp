#include "kalvio/core/BoundingBoxND.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>

namespace Kalvio::Math {

namespace {

double CoordinateOrZero(const PointND& p, unsigned int axis) {
    return axis < p.GetDimension() ? p[static_cast<int>(axis)] : 0.0;
}

}  // namespace

BoundingBoxND::BoundingBoxND(const BoundingBox2D& box) : minPoint(box.GetMinPoint()), maxPoint(box.GetMaxPoint()) {}

BoundingBoxND::BoundingBoxND(const BoundingBox3D& box) : minPoint(box.GetMinPoint()), maxPoint(box.GetMaxPoint()) {}

BoundingBoxND::BoundingBoxND(const OrientedBoundingBox2D& box) : BoundingBoxND(box.GetBoundingBox2D()) {}

MathTypes BoundingBoxND::GetType() const { return MathTypes::BoundingBoxND; }

bool BoundingBoxND::IsEmpty() const {
    return GetDimension() > 0 && GetMin(0) == detail::largestDouble && GetMax(0) == -detail::largestDouble;
}

BoundingBox2D BoundingBoxND::GetBoundingBox2D() const {
    if (IsEmpty()) return {};
    return {Point2D(CoordinateOrZero(minPoint, 0), CoordinateOrZero(minPoint, 1)),
            Point2D(CoordinateOrZero(maxPoint, 0), CoordinateOrZero(maxPoint, 1))};
}

BoundingBox3D BoundingBoxND::GetBoundingBox3D() const {
    if (IsEmpty()) return {};
    return {Point3D(CoordinateOrZero(minPoint, 0), CoordinateOrZero(minPoint, 1), CoordinateOrZero(minPoint, 2)),
            Point3D(CoordinateOrZero(maxPoint, 0), CoordinateOrZero(maxPoint, 1), CoordinateOrZero(maxPoint, 2))};
}

bool BoundingBoxND::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() != MathTypes::BoundingBoxND) return false;
    const auto& box = static_cast<const BoundingBoxND&>(other);
    return minPoint.IsEqualTo(box.minPoint, tolerance) && maxPoint.IsEqualTo(box.maxPoint, tolerance);
}

BoundingBoxND* BoundingBoxND::Clone() const { return new BoundingBoxND(*this); }

void BoundingBoxND::Reset() {
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        minPoint.SetCoordinate(axis, detail::largestDouble);
        maxPoint.SetCoordinate(axis, -detail::largestDouble);
    }
}

void BoundingBoxND::SetDimension(unsigned int dimension) {
    minPoint.SetDimension(dimension);
    maxPoint.SetDimension(dimension);
}

PointND BoundingBoxND::GetCenter() const { return minPoint * 0.5 + maxPoint * 0.5; }

double BoundingBoxND::GetArea() const {
    if (GetDimension() == 0) return 0.0;
    double volume = 1.0;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) volume *= GetMax(axis) - GetMin(axis);
    return volume;
}

double BoundingBoxND::GetEdgesLengthSum() const {
    double sum = 0.0;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) sum += GetMax(axis) - GetMin(axis);
    return sum;
}

double BoundingBoxND::GetIntersectionArea(const BoundingBoxND& other) const {
    if (GetDimension() == 0 || GetDimension() != other.GetDimension()) return 0.0;
    double volume = 1.0;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        const double side = std::min(GetMax(axis), other.GetMax(axis)) - std::max(GetMin(axis), other.GetMin(axis));
        if (!(side > 0.0)) return 0.0;
        volume *= side;
    }
    return volume;
}

double BoundingBoxND::DistanceSquareBetweenCenters(const BoundingBoxND& other) const {
    return (GetCenter() - other.GetCenter()).NormSquared();
}

bool BoundingBoxND::IsPointInside(const PointND& p, double tolerance) const {
    if (GetDimension() != p.GetDimension()) return false;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        const double value = p[static_cast<int>(axis)];
        if (!(value >= GetMin(axis) - tolerance && value <= GetMax(axis) + tolerance)) return false;
    }
    return true;
}

bool BoundingBoxND::Intersects(const BoundingBoxND& other) const {
    if (GetDimension() != other.GetDimension()) return false;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        if (!(other.GetMin(axis) <= GetMax(axis) && GetMin(axis) <= other.GetMax(axis))) return false;
    }
    return true;
}

bool BoundingBoxND::Contains(const BoundingBoxND& other) const {
    if (GetDimension() != other.GetDimension()) return false;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        if (!(GetMin(axis) <= other.GetMin(axis) && other.GetMax(axis) <= GetMax(axis))) return false;
    }
    return true;
}

BoundingBoxND& BoundingBoxND::operator+=(const BoundingBoxND& other) {
    if (GetDimension() != other.GetDimension()) return *this;
    for (unsigned int axis = 0; axis < GetDimension(); ++axis) {
        minPoint.SetCoordinate(axis, std::min(GetMin(axis), other.GetMin(axis)));
        maxPoint.SetCoordinate(axis, std::max(GetMax(axis), other.GetMax(axis)));
    }
    return *this;
}

BoundingBoxND operator+(const BoundingBoxND& a, const BoundingBoxND& b) {
    BoundingBoxND result(a);
    return result += b;
}

template <>
bool Geometry::AreEqual(const BoundingBoxND& a, const BoundingBoxND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
