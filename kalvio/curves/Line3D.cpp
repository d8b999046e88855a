#include "kalvio/curves/Line3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/curves/detail/SpaceElements.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/curves/detail/WalkPoints.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace Kalvio::Math {

MathTypes Line3D::GetType() const { return MathTypes::Line3D; }

BoundingBox2D Line3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Line3D::GetBoundingBox3D() const {
    Point3D low;
    Point3D high;
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(start[axis], end[axis]);
        high[axis] = std::max(start[axis], end[axis]);
    }
    return {low, high};
}

bool Line3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Line3D) return IsEqualTo(static_cast<const Line3D&>(other), tolerance);
    const bool isChain = other.GetType() == MathTypes::LineString3D || other.GetType() == MathTypes::Polyline3D;
    return isChain && other.IsEqualTo(*this, tolerance);
}

Line3D* Line3D::Clone() const { return new Line3D(*this); }

void Line3D::Reverse() { std::swap(start, end); }

bool Line3D::Holds(const Point3D& point, double tolerance) const {
    return GetLength() > 0.0 && detail::IsPointOnSegment(point, start, end, tolerance);
}

bool Line3D::GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    return Holds(point, tolerance) && detail::Store(start.Distance(point), length);
}

bool Line3D::GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    return Holds(point, tolerance) && detail::Store(end.Distance(point), length);
}

Point3D Line3D::GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const {
    const Vec3D d = end - start;
    const double squared = d.NormSquared();
    if (squared < tolerances.SystemEpsilonSquared() || squared == 0.0) return start;
    const double t = (point - start).DotProduct(d) / squared;
    return t <= 0.0 ? start : t >= 1.0 ? end : start + d * t;
}

IGeometry* Line3D::Append(const IGeometry* const other) const {
    if (other == nullptr) return nullptr;
    if (other->GetType() != MathTypes::Polyline3D) return detail::AppendSpaceElements(*this, *other);
    auto chain = std::make_unique<Polyline3D>();
    chain->AppendElement(Clone());
    chain->AppendElement(static_cast<const Polyline3D&>(*other).Clone());
    return chain.release();
}

bool Line3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    return Holds(point, tolerances.UserTolerance());
}

bool Line3D::ComputeTangent(const Point3D&, Vec3D& tangent, const Tolerances&) const {
    tangent = detail::UnitDirection(end - start);
    return true;
}

bool Line3D::ExtendStart(const Point3D& point, const Tolerances&) {
    start = point;
    return true;
}

bool Line3D::ExtendEnd(const Point3D& point, const Tolerances&) {
    end = point;
    return true;
}

bool Line3D::GetPointOffsetFromStart(double station, Point3D& point) const {
    const double length = GetLength();
    if (!detail::IsUsableLength(length)) return false;
    point = start + (end - start) * (station / length);
    return true;
}

bool Line3D::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    return detail::SampleSegment(start, end, station, result);
}

bool Line3D::MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                        bool closeAtEnd) const {
    const Vec3D direction = detail::UnitDirection(end - start);
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd, [&](double station) {
        points.push_back({start + direction * station, direction, station});
    });
}

bool Line3D::MakePoints(double from, double to, double step, std::vector<Point3D>& points, bool closeAtEnd) const {
    const Vec3D direction = detail::UnitDirection(end - start);
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd,
                                  [&](double station) { points.push_back(start + direction * station); });
}

double Line3D::GetZ(const Point2D& p, double tolerance) const {
    if (!detail::IsPointOnLine(p, start.GetPoint2D(), end.GetPoint2D(), tolerance)) return 0.0;
    return detail::FootOnLine(Point3D(p, 0.0), start, end).GetZ();
}

double Line3D::GetZOnSegment(const Point2D& p, double tolerance) const {
    if (!detail::IsPointOnSegment(p, start.GetPoint2D(), end.GetPoint2D(), tolerance)) return 0.0;
    return detail::FootOnLine(Point3D(p, 0.0), start, end).GetZ();
}

double Line3D::GetZByInterpolation(const Point2D& p, double tolerance) const {
    const Vec3D d = end - start;
    const double t = std::abs(tolerance);
    if (!(std::abs(d.GetY()) <= t)) return start.GetZ() + d.GetZ() * (p.GetY() - start.GetY()) / d.GetY();
    if (!(std::abs(d.GetX()) <= t)) return start.GetZ() + d.GetZ() * (p.GetX() - start.GetX()) / d.GetX();
    return start.GetZ();
}

Line3D& Line3D::Transform(const Matrix3D& matrix) {
    start.Transform(matrix);
    end.Transform(matrix);
    return *this;
}

Line3D Line3D::Transform(const Matrix3D& matrix) const {
    Line3D copy(*this);
    return copy.Transform(matrix);
}

Line3D& Line3D::Translate(const Vec3D& v) {
    start += v;
    end += v;
    return *this;
}

Line3D Line3D::Translate(const Vec3D& v) const {
    Line3D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Line3D& a, const Line3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
