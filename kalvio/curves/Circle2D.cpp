#include "kalvio/curves/Circle2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/ArcSampling.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Kalvio::Math {

namespace {

constexpr double touchTolerance = 1e-8;  // a length: above the rounding of survey coordinates (1e-9)
constexpr std::int64_t fewestParts = 3;  // of a ring

// The points that cut the circle into equal parts; none for radius 0 or no parts.
std::list<Point2D> PointsOfParts(const Circle2D& circle, std::int64_t parts) {
    std::list<Point2D> points;
    if (!(std::abs(circle.GetRadius()) > 0.0) || parts <= 0) return points;
    if (!(static_cast<double>(parts) < detail::mostSamples)) return points;
    for (std::int64_t i = 0; i < parts; ++i) {
        points.push_back(
            circle.GetPointOnCircle(Angle(detail::twoPi * static_cast<double>(i) / static_cast<double>(parts))));
    }
    return points;
}

std::int64_t PartsForStep(const Circle2D& circle, double step) {
    const std::int64_t parts = detail::NumberOfParts(circle.GetLength(), step);
    return parts > 0 ? std::max(parts, fewestParts) : 0;
}

bool AppendRing(const std::list<Point2D>& points, LineString2D& lineString) {
    if (points.empty()) return false;
    lineString.AppendPoints(points);
    lineString.AppendPoint(points.front());
    return true;
}

}  // namespace

MathTypes Circle2D::GetType() const { return MathTypes::Circle2D; }

BoundingBox2D Circle2D::GetBoundingBox2D() const {
    const double size = std::abs(GetDiameter());
    return {center, Vec2D(size, size)};
}

BoundingBox3D Circle2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Circle2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Circle2D && IsEqualTo(static_cast<const Circle2D&>(other), tolerance);
}

Circle2D* Circle2D::Clone() const { return new Circle2D(*this); }

Point2D Circle2D::GetPointOnCircle(const Angle& direction) const {
    return center + Vec2D(std::cos(direction.GetRadians()), std::sin(direction.GetRadians())) * radius;
}

Point2D Circle2D::NormalProjectionPointOnCircle(const Point2D& point) const {
    const Vec2D out = point - center;
    const double distance = out.Length();
    const double r = std::abs(radius);
    return distance > detail::numericalZero ? center + out * (r / distance) : center + Vec2D(r, 0.0);
}

int Circle2D::GetTangentsThroughPoint(const Point2D& point, Line2D& left, Line2D& right) const {
    return Circle2D(point, 0.0).GetNonCrossingTangents(*this, left, right);
}

// Both kinds touch where the unit normal n has n.u = (r1 - side r2) / d with u the direction of the centres: the other
// circle is touched at side r2 n from its centre, side = 1 for tangents that stay on one side and -1 for crossing ones.
int Circle2D::TangentsTo(const Circle2D& other, double otherSide, double tolerance, Line2D& left, Line2D& right) const {
    const double ownRadius = std::abs(radius);
    const double otherRadius = otherSide * std::abs(other.radius);
    const double difference = ownRadius - otherRadius;
    const Vec2D between = other.center - center;
    const double distance = between.Length();
    if (!(distance > detail::numericalZero && distance <= detail::largestDouble)) return 0;
    const Vec2D ahead = between / distance;
    const Vec2D aside = ahead.GetNormalVector(true);
    if (std::abs(difference) > 0.0 && std::abs(distance - std::abs(difference)) <= tolerance) {
        left = Line2D(center + ahead * (difference < 0.0 ? -ownRadius : ownRadius), aside);
        return 1;
    }
    if (!(distance > std::abs(difference))) return 0;
    const double cosine = difference / distance;
    const double sine = std::sqrt((distance - difference) * (distance + difference)) / distance;
    const auto tangent = [&](double side) {
        const Vec2D normal = ahead * cosine + aside * (side * sine);
        return Line2D(center + normal * ownRadius, other.center + normal * otherRadius);
    };
    left = tangent(1.0);
    if (ownRadius == 0.0 && otherRadius == 0.0) return 1;
    right = tangent(-1.0);
    return 2;
}

int Circle2D::GetCrossingTangents(const Circle2D& other, Line2D& left, Line2D& right, double tolerance) const {
    return TangentsTo(other, -1.0, std::abs(tolerance), left, right);
}

int Circle2D::GetNonCrossingTangents(const Circle2D& other, Line2D& left, Line2D& right) const {
    return TangentsTo(other, 1.0, touchTolerance, left, right);
}

bool Circle2D::MakeLineString(LineString2D& lineString, double step) const {
    return AppendRing(MakePoints(step), lineString);
}

bool Circle2D::MakeLineString(LineString2D& lineString, unsigned int count) const {
    return count >= fewestParts && AppendRing(PointsOfParts(*this, count), lineString);
}

bool Circle2D::MakeLineStringUsingHeight(LineString2D& lineString, double height) const {
    const double angle = detail::AngleForHeight(std::abs(radius), height);
    return AppendRing(PointsOfParts(*this, detail::NumberOfParts(detail::twoPi, angle)), lineString);
}

std::list<Point2D> Circle2D::MakePoints(double step) const { return PointsOfParts(*this, PartsForStep(*this, step)); }

template <>
bool Geometry::AreEqual(const Circle2D& a, const Circle2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
