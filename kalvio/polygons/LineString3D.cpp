#include "kalvio/polygons/LineString3D.h"

#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>

namespace Kalvio::Math {

namespace {

using detail::lengthOf;
using detail::planLengthOf;

}  // namespace

LineString3D::LineString3D(const LineString2D& plan, double z) {
    points.reserve(plan.GetSize());
    for (const Point2D& point : plan.GetPoints()) points.emplace_back(point, z);
}

LineString3D& LineString3D::SetEqualTo(const LineString2D& plan) { return *this = LineString3D(plan, 0.0); }

MathTypes LineString3D::GetType() const { return MathTypes::LineString3D; }

BoundingBox2D LineString3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D LineString3D::GetBoundingBox3D() const { return detail::BoxOfPoints<BoundingBox3D>(points); }

bool LineString3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    switch (other.GetType()) {
        case MathTypes::Line3D: {
            const auto& line = static_cast<const Line3D&>(other);
            return points.size() == 2 && points[0].IsEqualTo(line.GetStart(), tolerance) &&
                   points[1].IsEqualTo(line.GetEnd(), tolerance);
        }
        case MathTypes::LineString3D:
            return IsEqualTo(static_cast<const LineString3D&>(other), tolerance);
        default:
            return false;
    }
}

bool LineString3D::IsEqualTo(const LineString3D& other, double tolerance) const {
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(),
                      [tolerance](const Point3D& a, const Point3D& b) { return a.IsEqualTo(b, tolerance); });
}

LineString3D* LineString3D::Clone() const { return new LineString3D(*this); }

void LineString3D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double LineString3D::GetLength() const { return detail::ChainLength(points, lengthOf); }

const Point3D& LineString3D::GetStart() const { return points.empty() ? Point3D::origo() : points.front(); }

const Point3D& LineString3D::GetEnd() const { return points.empty() ? Point3D::origo() : points.back(); }

Point3D& LineString3D::GetEnd() {
    Changed();
    if (!points.empty()) return points.back();
    spare = Point3D();
    return spare;
}

bool LineString3D::GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    return detail::LengthFromStart(points, point, length, tolerance);
}

bool LineString3D::GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    return detail::LengthFromEnd(points, point, length, tolerance);
}

const Line3D& LineString3D::GetElementAtIndex(unsigned int index) const {
    const std::vector<Line3D>& segments = elements.Get([this] { return detail::SegmentsOf<Line3D>(points); });
    return segments[index < segments.size() ? index : 0];
}

bool LineString3D::GetPoint(unsigned int index, Point3D& point) const {
    if (index >= points.size()) return false;
    point = points[index];
    return true;
}

bool LineString3D::SetPoint(const Point3D& point, std::uint64_t index) {
    if (index >= points.size()) return false;
    points[index] = point;
    Changed();
    return true;
}

void LineString3D::SetPoints(const std::vector<Point3D>& vertices) {
    points = vertices;
    Changed();
}

bool LineString3D::Insert(unsigned int index, const Point3D& point) {
    return Insert(index, std::vector<Point3D>{point});
}

bool LineString3D::Insert(unsigned int index, const std::list<Point3D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.begin(), list.end());
}

bool LineString3D::Insert(unsigned int index, const std::vector<Point3D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.begin(), vertices.end());
}

bool LineString3D::InsertReverse(unsigned int index, const std::list<Point3D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.rbegin(), list.rend());
}

bool LineString3D::InsertReverse(unsigned int index, const std::vector<Point3D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.rbegin(), vertices.rend());
}

bool LineString3D::RemovePoint(int index) {
    Changed();
    return detail::RemovePointAt(points, index);
}

void LineString3D::RemoveAllPoints() {
    points.clear();
    Changed();
}

LineString2D LineString3D::GetLineString2D() const {
    LineString2D plan;
    std::vector<Point2D>& vertices = plan.GetPoints();
    vertices.reserve(points.size());
    for (const Point3D& point : points) vertices.push_back(point.GetPoint2D());
    return plan;
}

double LineString3D::GetLength2D() const { return detail::ChainLength(points, planLengthOf); }

bool LineString3D::GetPointOffsetFromStart(double length, Point3D& point) const {
    return detail::PointAtLength(points, lengthOf, length, point);
}

bool LineString3D::GetClosestSegment(const Point3D& point, unsigned int& index) const {
    return detail::ClosestSegment(points, point, index);
}

bool LineString3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthFromStartPoint(point, length, tolerances.UserTolerance());
}

LineString3D& LineString3D::Translate(const Vec3D& v) {
    for (Point3D& point : points) point += v;
    Changed();
    return *this;
}

LineString3D LineString3D::Translate(const Vec3D& v) const {
    LineString3D copy(*this);
    return copy.Translate(v);
}

}  // namespace Kalvio::Math
