#include "kalvio/curves/Line2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/curves/detail/WalkPoints.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

// Slope test of IsHorizontal: rise / run is zero, or the rise itself where the run is.
bool IsFlat(double rise, double run, double tolerance) {
    const double t = std::abs(tolerance);
    return std::abs(run) <= t ? std::abs(rise) <= t : std::abs(rise / run) <= t;
}

// Value of the line through (u1, v1) and (u2, v2) at u; the codes of Line2D::GetX.
int Solve(double u1, double v1, double u2, double v2, double u, double& v) {
    if (std::abs(u1 - u2) < detail::numericalZero) return std::abs(u - u1) < detail::numericalZero ? 2 : 0;
    const double value = v1 + (u - u1) * (v2 - v1) / (u2 - u1);
    if (!std::isfinite(value)) return 0;
    v = value;
    return 1;
}

}  // namespace

MathTypes Line2D::GetType() const { return MathTypes::Line2D; }

BoundingBox2D Line2D::GetBoundingBox2D() const {
    return {Point2D(std::min(start.GetX(), end.GetX()), std::min(start.GetY(), end.GetY())),
            Point2D(std::max(start.GetX(), end.GetX()), std::max(start.GetY(), end.GetY()))};
}

BoundingBox3D Line2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

OrientedBoundingBox2D Line2D::GetOrientedBoundingBox2D() const {
    const double length = GetLength();
    const Vec2D along = length > detail::numericalZero ? GetDirection() : Vec2D(1.0, 0.0);
    return {(start + end) * 0.5, Vec2D(length, 0.0), along, along.GetNormalVector(true)};
}

bool Line2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    switch (other.GetType()) {
        case MathTypes::Line2D:
            return IsEqualTo(static_cast<const Line2D&>(other), tolerance);
        case MathTypes::LineString2D:
        case MathTypes::Polyline2D:
            return other.IsEqualTo(*this, tolerance);
        default:
            return false;
    }
}

Line2D* Line2D::Clone() const { return new Line2D(*this); }

void Line2D::Reverse() { std::swap(start, end); }

bool Line2D::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                              std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    return detail::BreakElement(*this, breaks, startStation, out, modifyThis, tolerances.UserTolerance(),
                                [](const detail::ElementCut& from, const detail::ElementCut& to) {
                                    return std::make_unique<Line2D>(from.point, to.point);
                                });
}

bool Line2D::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    const bool degenerate = start.GetX() == end.GetX() && start.GetY() == end.GetY();
    return !degenerate && detail::IsPointOnSegment(point, start, end, tolerances.UserTolerance());
}

bool Line2D::ExtendStart(const Point2D& point, const Tolerances&) {
    start = point;
    return true;
}

bool Line2D::ExtendEnd(const Point2D& point, const Tolerances&) {
    end = point;
    return true;
}

IGeometry* Line2D::Append(const IGeometry* const other) const {
    if (other == nullptr) return nullptr;
    if (other->GetType() != MathTypes::Polyline2D) return detail::AppendElements(*this, *other);
    auto chain = std::make_unique<Polyline2D>();
    chain->AppendElement(Clone());
    chain->AppendElement(static_cast<const Polyline2D&>(*other).Clone());
    return chain.release();
}

bool Line2D::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    if (!IsPointOnGeometry(point, Tolerances(tolerance))) return false;
    return detail::Store(start.Distance(point), length);
}

bool Line2D::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    if (!IsPointOnGeometry(point, Tolerances(tolerance))) return false;
    return detail::Store(end.Distance(point), length);
}

bool Line2D::ComputeTangent(const Point2D&, Vec2D& tangent, const Tolerances&) const {
    tangent = detail::UnitDirection(end - start);
    return true;
}

Point2D Line2D::GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const {
    const double t = detail::NearestParameter(point, start, end, tolerances.SystemEpsilonSquared());
    return t == 1.0 ? end : start + (end - start) * t;
}

bool Line2D::IsHorizontal(double tolerance) const {
    return IsFlat(end.GetY() - start.GetY(), end.GetX() - start.GetX(), tolerance);
}

bool Line2D::IsVertical(double tolerance) const {
    return IsFlat(end.GetX() - start.GetX(), end.GetY() - start.GetY(), tolerance);
}

int Line2D::GetX(double y, double& x) const { return Solve(start.GetY(), start.GetX(), end.GetY(), end.GetX(), y, x); }

int Line2D::GetY(double x, double& y) const { return Solve(start.GetX(), start.GetY(), end.GetX(), end.GetY(), x, y); }

bool Line2D::IsPointOnInfiniteLine(const Point2D& point, double tolerance) const {
    return detail::IsPointOnLine(point, start, end, tolerance);
}

double Line2D::GetDistanceFromStartPoint(const Point2D& point) const {
    const double distance = start.Distance(point);
    return (point - start).DotProduct(end - start) < 0.0 ? -distance : distance;
}

double Line2D::GetDistanceFromEndPoint(const Point2D& point) const {
    const double distance = end.Distance(point);
    return (point - end).DotProduct(end - start) > 0.0 ? -distance : distance;
}

bool Line2D::GetPointOffsetFromStart(double station, Point2D& point) const {
    return GetPointOffsetFromStart(station, 0.0, Vec2D(), point);
}

bool Line2D::GetPointOffsetFromStart(double station, double offset, const Vec2D& direction, Point2D& point) const {
    const double length = GetLength();
    if (!detail::IsUsableLength(length)) return false;
    point = start + (end - start) * (station / length) + direction * offset;
    return true;
}

bool Line2D::GetPointOffsetFromStart(double station, double offset, const Angle& turn, Point2D& point) const {
    const double c = std::cos(turn.GetRadians());
    const double s = std::sin(turn.GetRadians());
    const Vec2D d = GetDirection();
    return GetPointOffsetFromStart(station, offset, Vec2D(d.GetX() * c - d.GetY() * s, d.GetX() * s + d.GetY() * c),
                                   point);
}

bool Line2D::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    return detail::SampleSegment(start, end, station, result);
}

bool Line2D::MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                        bool closeAtEnd) const {
    const Vec2D direction = detail::UnitDirection(end - start);
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd, [&](double station) {
        points.push_back({start + direction * station, direction, station});
    });
}

bool Line2D::MakePoints(double from, double to, double step, std::vector<Point2D>& points, bool closeAtEnd) const {
    const Vec2D direction = detail::UnitDirection(end - start);
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd,
                                  [&](double station) { points.push_back(start + direction * station); });
}

Line2D& Line2D::Transform(const Matrix2D& matrix) {
    start.Transform(matrix);
    end.Transform(matrix);
    return *this;
}

Line2D Line2D::Transform(const Matrix2D& matrix) const {
    Line2D copy(*this);
    return copy.Transform(matrix);
}

Line2D& Line2D::Translate(const Vec2D& v) {
    start += v;
    end += v;
    return *this;
}

Line2D Line2D::Translate(const Vec2D& v) const {
    Line2D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Line2D& a, const Line2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
