#include "kalvio/polygons/Polygon3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/detail/PlaneCoordinates.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/ConvexRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/RingPlane.h"
#include "kalvio/polygons/detail/TriangulateRings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Kalvio::Math {

using detail::DoubledVectorArea;
using detail::PlaneAxes;

Polygon3D::Polygon3D(const Polygon2D& plan, double z) : points(LineString3D(plan.GetPoints(), z).GetPoints()) {
    for (unsigned int i = 0; i < plan.GetNumHoleBoundaries(); ++i) holes.emplace_back(plan.GetHoleBoundary(i), z);
}

MathTypes Polygon3D::GetType() const { return MathTypes::Polygon3D; }

BoundingBox2D Polygon3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Polygon3D::GetBoundingBox3D() const {
    return boundingBox.Get([this] { return detail::BoxOfPoints<BoundingBox3D>(points); });
}

bool Polygon3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Polygon3D && IsEqualTo(static_cast<const Polygon3D&>(other), tolerance);
}

bool Polygon3D::IsEqualTo(const Polygon3D& other, double tolerance) const {
    const auto areEqual = [tolerance](const auto& a, const auto& b) { return a.IsEqualTo(b, tolerance); };
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(), areEqual) &&
           std::equal(holes.begin(), holes.end(), other.holes.begin(), other.holes.end(), areEqual);
}

Polygon3D* Polygon3D::Clone() const { return new Polygon3D(*this); }

void Polygon3D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double Polygon3D::GetLength() const { return detail::RingLength(points); }

unsigned int Polygon3D::GetTotalSize() const {
    return std::accumulate(holes.begin(), holes.end(), GetSize(),
                           [](unsigned int sum, const LineString3D& hole) { return sum + hole.GetSize(); });
}

const Point3D& Polygon3D::GetPointOfAll(unsigned int index) const {
    if (index < GetSize()) return points[index];
    index -= GetSize();
    for (const LineString3D& hole : holes) {
        if (index < hole.GetSize()) return hole.GetPoint(index);
        index -= hole.GetSize();
    }
    return Point3D::origo();
}

void Polygon3D::AppendPoints(const std::list<Point3D>& list) {
    detail::InsertPoints(points, points.size(), list.begin(), list.end());
    Changed();
}

void Polygon3D::AppendPoints(const std::vector<Point3D>& vertices) {
    detail::InsertPoints(points, points.size(), vertices.begin(), vertices.end());
    Changed();
}

bool Polygon3D::Insert(unsigned int index, const Point3D& point) {
    Changed();
    return detail::InsertPoint(points, index, point);
}

bool Polygon3D::InsertAtLength(double length, const Point3D& point) {
    Changed();
    return detail::InsertAtRingLength(points, length, point);
}

void Polygon3D::RemoveAllPoints() {
    points.clear();
    Changed();
}

void Polygon3D::Clear() {
    RemoveAllPoints();
    RemoveHoleBoundaries();
}

void Polygon3D::Close() {
    if (points.empty() || points.front().IsEqualTo(points.back(), detail::numericalZero)) return;
    AppendPoint(Point3D(points.front()));
}

bool Polygon3D::IsClosed(double tolerance) const {
    return !points.empty() && points.front().IsEqualTo(points.back(), tolerance);
}

void Polygon3D::RemoveClosingPoint(double tolerance) {
    while (IsClosed(tolerance)) points.pop_back();
    Changed();
}

void Polygon3D::ReducePoints(double tolerance) {
    detail::ReduceChain(points, tolerance, [](std::size_t) {});
    Changed();
}

Vec3D Polygon3D::GetNormal() const {
    if (points.empty()) return {};
    const Vec3D area = DoubledVectorArea(points, points.front());
    return area / area.Length();
}

double Polygon3D::GetPlanarArea() const {
    if (points.empty()) return 0.0;
    const Vec3D outer = DoubledVectorArea(points, points.front());
    const Vec3D normal = outer / outer.Length();
    double area = outer.Length();
    for (const LineString3D& hole : holes) {
        area -= std::abs(DoubledVectorArea(hole.GetPoints(), points.front()).DotProduct(normal));
    }
    return area * 0.5;
}

WindingValue Polygon3D::GetPlanarWinding() const {
    constexpr double vertical = 1e-11;  // a component of a unit normal
    const double z = points.size() < 3 ? 0.0 : GetNormal().GetZ();
    return z > vertical    ? WindingValue::CounterClockwise
           : z < -vertical ? WindingValue::Clockwise
                           : WindingValue::Vertical;
}

bool Polygon3D::SetPlanarWinding(WindingValue winding) {
    const WindingValue current = GetPlanarWinding();
    if (winding == WindingValue::Vertical || current == WindingValue::Vertical || winding == current) return false;
    Reverse();
    return true;
}

bool Polygon3D::IsPlanarConvex() const {
    const Vec3D normal = GetNormal();
    if (!holes.empty() || !(normal.Length() > 0.0)) return false;
    const PlaneAxes axes(normal);
    std::vector<Point2D> ring;
    ring.reserve(points.size());
    for (const Point3D& point : points) {
        const Vec3D offset = point - points.front();
        ring.emplace_back(offset.DotProduct(axes.u), offset.DotProduct(axes.v));
    }
    return detail::IsRingConvex(ring, detail::CoordinateNoise(points));
}

Polygon2D Polygon3D::GetPolygon() const {
    Polygon2D plan(LineString3D(points).GetLineString2D());
    for (const LineString3D& hole : holes) plan.AppendHoleBoundary(hole.GetLineString2D());
    return plan;
}

int Polygon3D::GetHeightAtBorder(const Point2D& p, double& z, double tolerance, int takeLast) const {
    int result = LineString3D(points).GetHeightAtBorder(p, z, tolerance, takeLast);
    for (std::size_t i = 0; i < holes.size() && result == 0; ++i) {
        result = holes[i].GetHeightAtBorder(p, z, tolerance, takeLast);
    }
    return result;
}

template <class Project>
bool Polygon3D::TriangulateIn(Project&& project, bool withHoles, double tolerance,
                              std::vector<unsigned int>& corners) const {
    if (points.empty()) return false;
    std::vector<detail::PlanePoint> projected;
    std::vector<std::size_t> ends;
    double noise = std::abs(tolerance);
    const auto add = [&](const std::vector<Point3D>& ring) {
        for (const Point3D& point : ring) projected.push_back(project(point - points.front()));
        ends.push_back(projected.size());
        noise = std::max(noise, detail::CoordinateNoise(ring));
    };
    add(points);
    for (std::size_t i = 0; withHoles && i < holes.size(); ++i) add(holes[i].GetPoints());
    return detail::TriangulateRings(projected, ends, noise, corners);
}

bool Polygon3D::Triangulate(std::vector<unsigned int>& corners, double tolerance) const {
    const PlaneAxes axes(GetNormal());
    return TriangulateIn(
        [&axes](const Vec3D& v) -> detail::PlanePoint {
            return {v.DotProduct(axes.u), v.DotProduct(axes.v)};
        },
        true, tolerance, corners);
}

bool Polygon3D::Triangulate(std::vector<Triangle3D>& triangles, double tolerance) const {
    std::vector<unsigned int> corners;
    if (!Triangulate(corners, tolerance)) return false;
    std::vector<const Point3D*> all;
    all.reserve(GetTotalSize());
    for (const Point3D& point : points) all.push_back(&point);
    for (const LineString3D& hole : holes) {
        for (const Point3D& point : hole.GetPoints()) all.push_back(&point);
    }
    triangles.clear();
    triangles.reserve(corners.size() / 3);
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
        triangles.emplace_back(*all[corners[i]], *all[corners[i + 1]], *all[corners[i + 2]]);
    }
    return true;
}

bool Polygon3D::TriangulateWithoutHoles(std::vector<unsigned int>& corners, double tolerance) const {
    const PlaneAxes axes(GetNormal());
    return TriangulateIn(
        [&axes](const Vec3D& v) -> detail::PlanePoint {
            return {v.DotProduct(axes.u), v.DotProduct(axes.v)};
        },
        false, tolerance, corners);
}

bool Polygon3D::TriangulateByMainAxes(std::vector<unsigned int>& corners, double tolerance) const {
    int first = 0;
    int second = 0;
    GetNormal().Find2MajorAxisForProjection(first, second);
    return TriangulateIn(
        [first, second](const Vec3D& v) -> detail::PlanePoint {
            return {v[first], v[second]};
        },
        true, tolerance, corners);
}

bool Polygon3D::TriangulateByProjection(ProjectionPlane plane, std::vector<unsigned int>& corners,
                                        double tolerance) const {
    return TriangulateIn(
        [plane](const Vec3D& v) -> detail::PlanePoint {
            const Point2D p = detail::CoordinatesInPlane(Point3D(v.GetX(), v.GetY(), v.GetZ()), plane);
            return {p.GetX(), p.GetY()};
        },
        true, tolerance, corners);
}

Polygon3D& Polygon3D::Transform(const Matrix3D& matrix) {
    for (Point3D& point : points) point.Transform(matrix);
    for (LineString3D& hole : holes) hole.Transform(matrix);
    Changed();
    return *this;
}

Polygon3D Polygon3D::Transform(const Matrix3D& matrix) const {
    Polygon3D copy(*this);
    return copy.Transform(matrix);
}

Polygon3D& Polygon3D::Translate(const Vec3D& v) {
    for (Point3D& point : points) point += v;
    for (LineString3D& hole : holes) hole.Translate(v);
    Changed();
    return *this;
}

Polygon3D Polygon3D::Translate(const Vec3D& v) const {
    Polygon3D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Polygon3D& a, const Polygon3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
