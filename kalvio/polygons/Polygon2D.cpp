#include "kalvio/polygons/Polygon2D.h"

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/polygons/detail/Chain.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Kalvio::Math {

MathTypes Polygon2D::GetType() const { return MathTypes::Polygon2D; }

BoundingBox2D Polygon2D::GetBoundingBox2D() const {
    return boundingBox.Get([this] { return ComputeBoundingBox(); });
}

BoundingBox3D Polygon2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

BoundingBox2D Polygon2D::ComputeBoundingBox() const { return detail::BoxOfPoints<BoundingBox2D>(points); }

bool Polygon2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Polygon2D && IsEqualTo(static_cast<const Polygon2D&>(other), tolerance);
}

bool Polygon2D::IsEqualTo(const Polygon2D& other, double tolerance) const {
    const auto areEqual = [tolerance](const auto& a, const auto& b) { return a.IsEqualTo(b, tolerance); };
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(), areEqual) &&
           std::equal(holes.begin(), holes.end(), other.holes.begin(), other.holes.end(), areEqual);
}

Polygon2D* Polygon2D::Clone() const { return new Polygon2D(*this); }

void Polygon2D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double Polygon2D::GetLength() const { return detail::RingLength(points); }

unsigned int Polygon2D::GetTotalSize() const {
    return std::accumulate(holes.begin(), holes.end(), GetSize(),
                           [](unsigned int sum, const LineString2D& hole) { return sum + hole.GetSize(); });
}

void Polygon2D::AppendPoints(const std::list<Point2D>& list) {
    detail::InsertPoints(points, points.size(), list.begin(), list.end());
    Changed();
}

void Polygon2D::AppendPoints(const std::vector<Point2D>& vertices) {
    detail::InsertPoints(points, points.size(), vertices.begin(), vertices.end());
    Changed();
}

bool Polygon2D::Insert(unsigned int index, const Point2D& point) {
    Changed();
    return detail::InsertPoints(points, index, &point, &point + 1);
}

void Polygon2D::RemoveAllPoints() {
    points.clear();
    Changed();
}

void Polygon2D::Clear() {
    RemoveAllPoints();
    RemoveHoleBoundaries();
}

void Polygon2D::Close() {
    if (points.empty() || points.front() == points.back()) return;
    AppendPoint(Point2D(points.front()));
}

bool Polygon2D::IsClosed(double tolerance) const {
    return !points.empty() && points.front().IsEqualTo(points.back(), tolerance);
}

double Polygon2D::GetArea() const {
    if (points.empty()) return 0.0;
    double area = detail::DoubledArea(points, points.front());
    double removed = 0.0;
    for (const LineString2D& hole : holes) removed += std::abs(detail::DoubledArea(hole.GetPoints(), points.front()));
    area = area >= 0.0 ? area - removed : area + removed;
    return area * 0.5;
}

WindingValue Polygon2D::GetWinding() const {
    return GetArea() > 0.0 ? WindingValue::CounterClockwise : WindingValue::Clockwise;
}

bool Polygon2D::SetWinding(WindingValue winding) {
    if (GetWinding() == winding) return false;
    Reverse();
    return true;
}

Point2D Polygon2D::GetCentroid() const {
    if (points.empty()) return {};
    const Point2D& origin = points.front();
    double area = 0.0;
    double magnitude = 0.0;
    Vec2D moment;
    detail::WalkRing(points, [&](const Point2D& a, const Point2D& b) {
        const Vec2D u = a - origin;
        const Vec2D v = b - origin;
        const double cross = u.PerpDotProduct(v);
        area += cross;
        magnitude += std::abs(cross);
        moment += (u + v) * cross;
        return false;
    });
    const std::size_t size = detail::OpenRingSize(points);
    const double noise = magnitude * std::numeric_limits<double>::epsilon() * static_cast<double>(size);
    const Point2D centroid = origin + moment / (3.0 * area);
    if (std::abs(area) > noise && std::isfinite(centroid.GetX()) && std::isfinite(centroid.GetY())) return centroid;
    Vec2D sum;
    for (std::size_t i = 0; i < size; ++i) sum += (points[i] - origin) / static_cast<double>(size);
    return origin + sum;
}

Polygon2D& Polygon2D::Translate(const Vec2D& v) {
    for (Point2D& point : points) point += v;
    for (LineString2D& hole : holes) hole.Translate(v);
    Changed();
    return *this;
}

Polygon2D Polygon2D::Translate(const Vec2D& v) const {
    Polygon2D copy(*this);
    return copy.Translate(v);
}

}  // namespace Kalvio::Math
