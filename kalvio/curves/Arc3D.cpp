#include "kalvio/curves/Arc3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/curves/detail/PlaneFrame.h"
#include "kalvio/curves/detail/PointOnArc.h"
#include "kalvio/curves/detail/SpaceElements.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

using Sample2D = IPolyline2DElement::PolylineElementPoint;
using Sample3D = IPolyline3DElement::PolylineElementPoint;

void AppendLifted(const std::vector<Sample2D>& samples, const detail::PlaneFrame& frame,
                  std::vector<Sample3D>& points) {
    for (const Sample2D& s : samples) points.push_back({frame.ToSpace(s.point), frame.ToSpace(s.tangent), s.station});
}

void AppendLifted(const std::vector<Point2D>& plane, const detail::PlaneFrame& frame, std::vector<Point3D>& points) {
    for (const Point2D& p : plane) points.push_back(frame.ToSpace(p));
}

// Appends to `points` what `make` makes in the plane.
template <class PlaneSample, class SpaceSample, class Make>
bool Lift(const detail::PlaneFrame& frame, std::vector<SpaceSample>& points, Make&& make) {
    std::vector<PlaneSample> samples;
    if (!make(samples)) return false;
    AppendLifted(samples, frame, points);
    return true;
}

// Asks in the plane, with what the height of the point leaves there of a tolerance in space.
template <class Ask>
bool AskInPlane(const detail::PlaneFrame& frame, const Point3D& point, double tolerance, Ask&& ask) {
    const double height = frame.HeightOf(point);
    const double squared = tolerance * tolerance - height * height;
    return squared >= 0.0 && ask(frame.ToPlane(point), std::sqrt(squared));
}

}  // namespace

Arc3D::Arc3D(const Arc2D& plan, double z) {
    Set(Point3D(plan.GetStart(), z), Point3D(plan.GetCenter(), z), plan.GetAngle(), Plane3D());
}

MathTypes Arc3D::GetType() const { return MathTypes::Arc3D; }

BoundingBox2D Arc3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Arc3D::GetBoundingBox3D() const {
    const detail::PlaneFrame frame = Frame();
    const Arc2D arc = InPlane();
    const double r = GetRadius();
    Point3D low;
    Point3D high;
    for (int axis = 0; axis < 3; ++axis) {
        const Vec2D out = frame.DirectionAlong(axis) * r;
        const double reach = frame.ReachAlong(axis) * r;
        const auto holds = [&](const Point2D& p) { return detail::IsPointOnArc(p, arc, detail::boxExtremeTolerance); };
        low[axis] =
            holds(arc.GetCenter() - out) ? centerPoint[axis] - reach : std::min(startPoint[axis], endPoint[axis]);
        high[axis] =
            holds(arc.GetCenter() + out) ? centerPoint[axis] + reach : std::max(startPoint[axis], endPoint[axis]);
    }
    return {low, high};
}

bool Arc3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline3D) return other.IsEqualTo(*this, tolerance);
    return other.GetType() == MathTypes::Arc3D && IsEqualTo(static_cast<const Arc3D&>(other), tolerance);
}

bool Arc3D::IsEqualTo(const Arc3D& other, double tolerance) const {
    return startPoint.IsEqualTo(other.startPoint, tolerance) && endPoint.IsEqualTo(other.endPoint, tolerance) &&
           centerPoint.IsEqualTo(other.centerPoint, tolerance) &&
           GetMiddlePoint().IsEqualTo(other.GetMiddlePoint(), tolerance);
}

Arc3D* Arc3D::Clone() const { return new Arc3D(*this); }

void Arc3D::Reverse() {
    const double sweep = sweepAngle.GetRadians();
    if (sweep >= detail::twoPi) return;  // -2 pi is no sweep: it would become 0
    std::swap(startPoint, endPoint);
    sweepAngle.SetRadians(-sweep);
}

bool Arc3D::GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    return AskInPlane(Frame(), point, tolerance,
                      [&](const Point2D& p, double t) { return InPlane().GetLengthFromStartPoint(p, length, t); });
}

bool Arc3D::GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    return AskInPlane(Frame(), point, tolerance,
                      [&](const Point2D& p, double t) { return InPlane().GetLengthFromEndPoint(p, length, t); });
}

Point3D Arc3D::GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const {
    const detail::PlaneFrame frame = Frame();
    return frame.ToSpace(InPlane().GetNearestPoint(frame.ToPlane(point), tolerances));
}

bool Arc3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthFromStartPoint(point, length, tolerances.UserTolerance());
}

IGeometry* Arc3D::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendSpaceElements(*this, *other);
}

bool Arc3D::ComputeTangent(const Point3D& point, Vec3D& tangent, const Tolerances& tolerances) const {
    if (!IsPointOnGeometry(point, tolerances)) return false;
    tangent = ComputeTangent(point);
    return true;
}

void Arc3D::Set(const Point3D& start, const Point3D& center, const Angle& sweep, const Plane3D& arcPlane) {
    Arc3D arc(*this);  // the arguments may be parts of this arc
    arc.startPoint = start;
    arc.centerPoint = center;
    arc.sweepAngle = std::isfinite(sweep.GetRadians()) ? sweep : Angle();
    const Vec3D radial = start - center;
    const Vec3D outward = radial / radial.Length();  // zero for radius 0
    // The first of these that is not along the radius, made square to it.
    for (const Vec3D& wish : {detail::UnitNormal(arcPlane.GetNormal()), Vec3D(0.0, 0.0, 1.0), Vec3D(1.0, 0.0, 0.0)}) {
        const Vec3D square = wish - outward * wish.DotProduct(outward);
        arc.plane = Plane3D(center, detail::UnitNormal(square));
        if (square.Length() > detail::numericalZero) break;
    }
    arc.endPoint = arc.Frame().ToSpace(arc.InPlane().GetEnd());
    *this = arc;
}

bool Arc3D::Set(const Point3D& p1, const Point3D& p2, const Point3D& p3) {
    const Vec3D chord = p3 - p1;
    const Vec3D normal = (p2 - p1).CrossProduct(chord);
    const Vec3D first = chord / chord.Length();
    const Vec3D unit = normal / normal.Length();
    const detail::PlaneFrame frame{p1, first, unit.CrossProduct(first), unit};
    Arc2D arc;
    if (!arc.Set(Point2D(), frame.ToPlane(p2), frame.ToPlane(p3))) return false;
    Set(p1, frame.ToSpace(arc.GetCenter()), arc.GetAngle(), Plane3D(p1, unit));
    return true;
}

void Arc3D::Move(const Point3D& newStart) { Set(newStart, centerPoint + (newStart - startPoint), sweepAngle, plane); }

Point3D Arc3D::GetMiddlePoint() const { return Frame().ToSpace(InPlane().GetMiddlePoint()); }

Vec3D Arc3D::GetStartTangent() const { return Frame().ToSpace(InPlane().GetStartTangent()); }

Vec3D Arc3D::GetEndTangent() const { return Frame().ToSpace(InPlane().GetEndTangent()); }

Vec3D Arc3D::ComputeTangent(const Point3D& point) const {
    const detail::PlaneFrame frame = Frame();
    return frame.ToSpace(InPlane().ComputeTangent(frame.ToPlane(point)));
}

bool Arc3D::IsPointOnCircle(const Point3D& point, const Tolerances& tolerances) const {
    return AskInPlane(Frame(), point, tolerances.UserTolerance(),
                      [&](const Point2D& p, double t) { return InPlane().IsPointOnCircle(p, t); });
}

bool Arc3D::IsCirclePointInside(const Point3D& point, const Tolerances& tolerances) const {
    return IsCirclePointInside(point, tolerances.UserTolerance());
}

bool Arc3D::IsCirclePointInside(const Point3D& point, double tolerance) const {
    return InPlane().IsCirclePointInside(Frame().ToPlane(point), tolerance);
}

bool Arc3D::IsPointInside(const Point3D& point, const Tolerances& tolerances) const {
    return IsPointInside(point, tolerances.UserTolerance());
}

bool Arc3D::IsPointInside(const Point3D& point, double tolerance) const {
    const detail::PlaneFrame frame = Frame();
    return std::abs(frame.HeightOf(point)) <= std::abs(tolerance) &&
           InPlane().IsPointInside(frame.ToPlane(point), tolerance);
}

bool Arc3D::GetShortestLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    return AskInPlane(Frame(), point, tolerance, [&](const Point2D& p, double t) {
        return InPlane().GetShortestLengthFromStartPoint(p, length, t);
    });
}

bool Arc3D::GetShortestLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    return AskInPlane(Frame(), point, tolerance, [&](const Point2D& p, double t) {
        return InPlane().GetShortestLengthFromEndPoint(p, length, t);
    });
}

bool Arc3D::GetPointOffsetFromStart(double station, Point3D& point) const {
    Point2D p;
    if (!InPlane().GetPointOffsetFromStart(station, p)) return false;
    return detail::Store(Frame().ToSpace(p), point);
}

bool Arc3D::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    Sample2D sample;
    if (!InPlane().MakePointAndTangentAt(station, sample)) return false;
    const detail::PlaneFrame frame = Frame();
    return detail::Store({frame.ToSpace(sample.point), frame.ToSpace(sample.tangent), sample.station}, result);
}

bool Arc3D::MakeArc(double from, double to, Arc3D& part) const {
    Arc2D arc;
    Point3D start;
    if (!InPlane().MakeArc(from, to, arc) || !detail::Store(Frame().ToSpace(arc.GetStart()), start)) return false;
    part = Arc3D(start, centerPoint, arc.GetAngle(), plane);
    return true;
}

bool Arc3D::MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                       bool closeAtEnd) const {
    return Lift<Sample2D>(Frame(), points, [&](std::vector<Sample2D>& samples) {
        return InPlane().MakePoints(from, to, step, samples, closeAtEnd);
    });
}

bool Arc3D::MakePoints(double from, double to, double step, std::vector<Point3D>& points, bool closeAtEnd) const {
    return Lift<Point2D>(Frame(), points, [&](std::vector<Point2D>& samples) {
        return InPlane().MakePoints(from, to, step, samples, closeAtEnd);
    });
}

bool Arc3D::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                  double step) const {
    return Lift<Sample2D>(Frame(), points, [&](std::vector<Sample2D>& samples) {
        return InPlane().MakePointsAndTangents(from, to, samples, step);
    });
}

bool Arc3D::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double height) const {
    return Lift<Sample2D>(Frame(), points, [&](std::vector<Sample2D>& samples) {
        return InPlane().MakePointsAndTangentsUsingHeight(from, to, samples, height);
    });
}

bool Arc3D::MakePointsUsingHeight(double from, double to, std::vector<Point3D>& points, double height) const {
    return Lift<Point2D>(Frame(), points, [&](std::vector<Point2D>& samples) {
        return InPlane().MakePointsUsingHeight(from, to, samples, height);
    });
}

bool Arc3D::MakeLineString(double from, double to, LineString3D& lineString, double step) const {
    std::vector<PolylineElementPoint> points;
    if (!MakePointsAndTangents(from, to, points, step)) return false;
    for (const PolylineElementPoint& sample : points) lineString.AppendPoint(sample.point);
    return true;
}

bool Arc3D::MakeLineStringUsingHeight(double from, double to, LineString3D& lineString, double height) const {
    std::vector<Point3D> points;
    if (!MakePointsUsingHeight(from, to, points, height)) return false;
    lineString.AppendPoints(points);
    return true;
}

std::list<Line3D> Arc3D::MakeLines(double step) const {
    const detail::PlaneFrame frame = Frame();
    std::list<Line3D> lines;
    for (const Line2D& line : InPlane().MakeLines(step)) {
        lines.emplace_back(frame.ToSpace(line.GetStart()), frame.ToSpace(line.GetEnd()));
    }
    return lines;
}

detail::PlaneFrame Arc3D::Frame() const {
    const Vec3D radial = startPoint - centerPoint;
    const Vec3D normal = plane.GetNormal();
    Vec3D outward = radial / radial.Length();
    if (radial.Length() == 0.0) {  // a point: any axis of the plane tells others from it
        const auto axis = plane.GetTransformationMatrix().GetRow(0);
        outward = Vec3D(axis[0], axis[1], axis[2]);
    }
    return {startPoint, outward, normal.CrossProduct(outward), normal};
}

Angle Arc3D::AngleInPlane(const Point3D& point) const {
    const Matrix3D axes = plane.GetTransformationMatrix();
    const Vec3D out = point - centerPoint;
    return Arc2D::SignAngle(Vec2D(out.DotProduct(Vec3D(axes.Get(0, 0), axes.Get(0, 1), axes.Get(0, 2))),
                                  out.DotProduct(Vec3D(axes.Get(1, 0), axes.Get(1, 1), axes.Get(1, 2)))));
}

template <>
bool Geometry::AreEqual(const Arc3D& a, const Arc3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
