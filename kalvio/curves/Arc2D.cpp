#include "kalvio/curves/Arc2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/detail/ArcSampling.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/PointOnArc.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/curves/detail/ThreePoints.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace Kalvio::Math {

namespace {

// x - sin x for x >= 0 without cancellation.
double XMinusSine(double x) {
    if (x > 0.5) return x - std::sin(x);
    const double s = x * x;  // Taylor series, nested; the first term left out is below 1e-17 of the sum
    return x * s / 6.0 * (1.0 - s / 20.0 * (1.0 - s / 42.0 * (1.0 - s / 72.0 * (1.0 - s / 110.0 * (1.0 - s / 156.0)))));
}

}  // namespace

Arc2D::Turn::Turn(double angle) {
    const double half = std::sin(0.5 * angle);
    sine = 2.0 * half * std::cos(0.5 * angle);
    versine = 2.0 * half * half;
}

Arc2D::Arc2D(const Point2D& start, double bulge, const Point2D& end) {
    const Vec2D chord = end - start;
    const Point2D center = start + chord * 0.5 + chord.GetNormalVector(true) * (0.25 * (1.0 / bulge - bulge));
    const bool curved = std::isfinite(center.Distance(start));  // a radius beyond all numbers has no arc
    Set(start, curved ? center : start, Angle(curved ? 4.0 * std::atan(bulge) : 0.0));
}

MathTypes Arc2D::GetType() const { return MathTypes::Arc2D; }

BoundingBox2D Arc2D::GetBoundingBox2D() const {
    const double r = GetRadius();
    Point2D low = centerPoint - Vec2D(r, r);
    Point2D high = centerPoint + Vec2D(r, r);
    const auto holds = [this](double x, double y) {
        return detail::IsPointOnArc(Point2D(x, y), *this, detail::boxExtremeTolerance);
    };
    const bool west = holds(low.GetX(), centerPoint.GetY());
    const bool south = holds(centerPoint.GetX(), low.GetY());
    const bool east = holds(high.GetX(), centerPoint.GetY());
    const bool north = holds(centerPoint.GetX(), high.GetY());
    if (!west) low.SetX(std::min(startPoint.GetX(), endPoint.GetX()));
    if (!south) low.SetY(std::min(startPoint.GetY(), endPoint.GetY()));
    if (!east) high.SetX(std::max(startPoint.GetX(), endPoint.GetX()));
    if (!north) high.SetY(std::max(startPoint.GetY(), endPoint.GetY()));
    return {low, high};
}

BoundingBox3D Arc2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Arc2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline2D) return other.IsEqualTo(*this, tolerance);
    return other.GetType() == MathTypes::Arc2D && IsEqualTo(static_cast<const Arc2D&>(other), tolerance);
}

bool Arc2D::IsEqualTo(const Arc2D& other, double tolerance) const {
    return startPoint.IsEqualTo(other.startPoint, tolerance) && endPoint.IsEqualTo(other.endPoint, tolerance) &&
           centerPoint.IsEqualTo(other.centerPoint, tolerance) &&
           GetMiddlePoint().IsEqualTo(other.GetMiddlePoint(), tolerance);
}

Arc2D* Arc2D::Clone() const { return new Arc2D(*this); }

void Arc2D::Reverse() {
    const double sweep = sweepAngle.GetRadians();
    if (sweep >= detail::twoPi) return;  // -2 pi is no sweep: it would become 0
    std::swap(startPoint, endPoint);
    sweepAngle.SetRadians(-sweep);
}

double Arc2D::GetLength() const { return std::abs(GetRadius() * sweepAngle.GetRadians()); }

bool Arc2D::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation, std::vector<IGeometry*>& out,
                             bool modifyThis, const Tolerances& tolerances) {
    return detail::BreakElement(*this, breaks, startStation, out, modifyThis, tolerances.UserTolerance(),
                                [this](const detail::ElementCut& from, const detail::ElementCut& to) {
                                    return std::make_unique<Arc2D>(Part(from.station, to.station));
                                });
}

bool Arc2D::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    return detail::IsPointOnArc(point, *this, tolerances.UserTolerance());
}

IGeometry* Arc2D::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendElements(*this, *other);
}

bool Arc2D::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    if (!detail::IsPointOnArc(point, *this, tolerance)) return false;
    return detail::Store(StationOf(TravelTo(point), tolerance), length);
}

bool Arc2D::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    if (!detail::IsPointOnArc(point, *this, tolerance)) return false;
    return detail::Store(StationOf(TravelBackTo(point), tolerance), length);
}

bool Arc2D::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    if (!IsPointOnGeometry(point, tolerances)) return false;
    return detail::Store(ComputeTangent(point), tangent);
}

Point2D Arc2D::GetNearestPoint(const Point2D& point, const Tolerances&) const { return GetNearestPoint(point).point; }

IPolyline2DElement::PolylineElementPoint Arc2D::GetNearestPoint(const Point2D& point) const {
    const double travel = TravelTo(point);
    const double r = GetRadius();
    if (travel <= std::abs(sweepAngle.GetRadians())) {
        const Turn turn(GetSense() * travel);
        return {PointAt(turn), TangentAt(turn), std::min(r * travel, GetLength())};
    }
    if (point.Distance(endPoint) < point.Distance(startPoint)) return {endPoint, GetEndTangent(), GetLength()};
    return {startPoint, GetStartTangent(), 0.0};
}

bool Arc2D::GetNormalPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const {
    const double length = GetLength();
    const double sweep = std::abs(sweepAngle.GetRadians());
    const double travel = TravelTo(point);
    if (!(length > 0.0) || !std::isfinite(length) || !std::isfinite(travel)) return false;
    PolylineElementPoint best;
    double bestDistance = std::numeric_limits<double>::infinity();
    const auto consider = [&](const PolylineElementPoint& candidate) {
        const double distance = point.Distance(candidate.point);
        if (!(distance < bestDistance)) return;
        best = candidate;
        bestDistance = distance;
    };
    const auto considerAngle = [&](double angle) {
        if (!(angle <= sweep)) return;
        const Turn turn(GetSense() * angle);
        consider({PointAt(turn), TangentAt(turn), std::min(GetRadius() * angle, length)});
    };
    // `inward`: +1 at the start, -1 at the end. On the far side of the centre the foot lies the other way.
    const auto considerEnd = [&](const PolylineElementPoint& end, double inward) {
        const double ahead = (point - end.point).DotProduct(end.tangent) * inward;
        const bool isNearSide = (point - centerPoint).DotProduct(end.point - centerPoint) > 0.0;
        if (std::abs(ahead) <= std::abs(tolerance) && (isNearSide ? ahead <= 0.0 : ahead >= 0.0)) consider(end);
    };
    considerAngle(travel);
    considerEnd({startPoint, GetStartTangent(), 0.0}, 1.0);
    considerEnd({endPoint, GetEndTangent(), length}, -1.0);
    considerAngle(travel < detail::pi ? travel + detail::pi : travel - detail::pi);
    if (!std::isfinite(bestDistance)) return false;
    foot = best;
    return true;
}

const Point2D Arc2D::GetMiddlePoint() const { return PointAt(Turn(0.5 * sweepAngle.GetRadians())); }

bool Arc2D::ExtendStart(const Point2D& point, const Tolerances&) {
    Set(point, GetMiddlePoint(), endPoint);
    return false;
}

bool Arc2D::ExtendEnd(const Point2D& point, const Tolerances&) {
    Set(startPoint, GetMiddlePoint(), point);
    return false;
}

void Arc2D::Set(const Point2D& start, const Point2D& center, const Angle& sweep) {
    const double radians = std::isfinite(sweep.GetRadians()) ? sweep.GetRadians() : 0.0;
    Arc2D arc(start, center, Angle(radians), start);  // the arguments may be points of this arc
    arc.endPoint = arc.PointAt(Turn(radians));
    *this = arc;
}

bool Arc2D::Set(const Point2D& p1, const Point2D& p2, const Point2D& p3) {
    return detail::ArcThrough(p1, p2, p3, *this, detail::numericalZero);
}

bool Arc2D::Set(const Point2D& start, const Point2D& center, const Point2D& end, WindingValue sense, double tolerance) {
    const double t = std::abs(tolerance);
    const double radius = start.Distance(center);
    if (!(std::abs(end.Distance(center) - radius) <= t && radius > detail::numericalZero)) return false;
    const bool isLeft = sense == WindingValue::CounterClockwise;
    if (!isLeft && sense != WindingValue::Clockwise) return false;
    double sweep = detail::twoPi;
    if (!(start.Distance(end) <= t)) {
        const Vec2D from = start - center;
        const Vec2D to = end - center;
        sweep = std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
        if (isLeft != (sweep > 0.0)) sweep += isLeft ? detail::twoPi : -detail::twoPi;
    }
    const Angle angle(sweep);  // a clockwise turn is none
    if (!std::isfinite(sweep) || (!isLeft && !(angle < 0.0))) return false;
    Set(start, center, angle);
    return true;
}

void Arc2D::Move(const Point2D& newStart) {
    const Vec2D shift = newStart - startPoint;
    startPoint = newStart;
    centerPoint += shift;
    endPoint += shift;
}

double Arc2D::GetBulge() const { return std::tan(0.25 * sweepAngle.GetRadians()); }

double Arc2D::GetHeight() const { return GetRadius() * Turn(0.5 * sweepAngle.GetRadians()).versine; }

Angle Arc2D::SignAngle(const Vec2D& v) {
    const double unsignedAngle = std::atan2(std::abs(v.GetY()), v.GetX() + 0.0);  // -0.0 + 0.0 is 0.0
    return {v.GetY() < 0.0 ? -unsignedAngle : unsignedAngle};
}

Vec2D Arc2D::ComputeTangent(const Point2D& point) const { return TangentAt(Turn(GetSense() * TravelTo(point))); }

double Arc2D::GetArea() const {
    const double r = GetRadius();
    return 0.5 * r * r * XMinusSine(std::abs(sweepAngle.GetRadians()));
}

bool Arc2D::IsPointOnCircle(const Point2D& point, const Tolerances& tolerances) const {
    return IsPointOnCircle(point, tolerances.UserTolerance());
}

bool Arc2D::IsPointOnCircle(const Point2D& point, double tolerance) const {
    return std::abs(DistanceFromCircle(point)) <= std::abs(tolerance);
}

bool Arc2D::IsCirclePointInside(const Point2D& point, const Tolerances& tolerances) const {
    return IsCirclePointInside(point, tolerances.UserTolerance());
}

bool Arc2D::IsCirclePointInside(const Point2D& point, double tolerance) const {
    const double t = std::abs(tolerance);
    return TravelTo(point) <= std::abs(sweepAngle.GetRadians()) || point.Distance(startPoint) <= t ||
           point.Distance(endPoint) <= t;
}

bool Arc2D::IsPointInside(const Point2D& point, const Tolerances& tolerances) const {
    return IsPointInside(point, tolerances.UserTolerance());
}

bool Arc2D::IsPointInside(const Point2D& point, double tolerance) const {
    const double t = std::abs(tolerance);
    const Vec2D outward = (GetMiddlePoint() - centerPoint).Normalize();  // from the chord to the arc
    return (point - startPoint).DotProduct(outward) >= -t && DistanceFromCircle(point) <= t;
}

bool Arc2D::GetShortestLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    if (!IsPointOnCircle(point, tolerance)) return false;
    const double travel = TravelTo(point);
    return detail::Store(GetRadius() * std::min(travel, detail::twoPi - travel), length);
}

bool Arc2D::GetShortestLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    if (!IsPointOnCircle(point, tolerance)) return false;
    const double travel = TravelBackTo(point);
    return detail::Store(GetRadius() * std::min(travel, detail::twoPi - travel), length);
}

int Arc2D::GetY(double x, double& y, double tolerance) const {
    const double t = std::abs(tolerance);
    const Vec2D radial = startPoint - centerPoint;
    const double dx = x - startPoint.GetX();
    // Heights above the start: h^2 + 2 radial.y h + q = 0.
    const double q = dx * (dx + 2.0 * radial.GetX());
    const double discriminant = radial.GetY() * radial.GetY() - q;
    if (!(discriminant >= 0.0) && !(std::abs(dx + radial.GetX()) <= GetRadius() + t)) return 0;
    const double root = discriminant > 0.0 ? std::sqrt(discriminant) : 0.0;
    const double first = -(radial.GetY() + std::copysign(root, radial.GetY()));
    const double second = root > 0.0 ? q / first : first;

    int count = 0;
    double least = 0.0;
    double result = 0.0;
    for (const double height : {first, second}) {
        const Point2D candidate(x, startPoint.GetY() + height);
        if (!IsCirclePointInside(candidate, t)) continue;
        const double station = StationOf(TravelTo(candidate), t);
        if (count == 0 || station < least) {
            least = station;
            result = candidate.GetY();
        }
        ++count;
    }
    if (count == 0) return 0;
    y = result;
    return std::abs(first - second) <= t ? 1 : count;
}

bool Arc2D::GetPointOffsetFromStart(double station, Point2D& point) const {
    const double curvature = GetCurvature();
    if (curvature == 0.0 || !std::isfinite(station)) return false;
    return detail::Store(PointAt(Turn(station * curvature)), point);
}

bool Arc2D::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    const double curvature = GetCurvature();
    if (curvature == 0.0 || !(station >= -detail::numericalZero) || !(station <= GetLength() + detail::numericalZero)) {
        return false;
    }
    return detail::Store(SampleAt(station, curvature), result);
}

bool Arc2D::MakeArc(double from, double to, Arc2D& part) const {
    const double length = GetLength();
    const double first = std::max(from, 0.0);
    const double last = std::min(to, length);
    if (!(from >= -detail::numericalZero) || !(to <= length + detail::numericalZero) || !(first < last)) return false;
    const Arc2D cut = Part(first, last);
    Point2D end;
    if (!detail::Store(cut.startPoint, end) || !detail::Store(cut.endPoint, end)) return false;
    part = cut;
    return true;
}

bool Arc2D::MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                       bool closeAtEnd) const {
    const double curvature = GetCurvature();
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd,
                                  [&](double station) { points.push_back(SampleAt(station, curvature)); });
}

bool Arc2D::MakePoints(double from, double to, double step, std::vector<Point2D>& points, bool closeAtEnd) const {
    const double curvature = GetCurvature();
    return detail::ForEachStation(from, to, step, GetLength(), closeAtEnd,
                                  [&](double station) { points.push_back(PointAt(Turn(station * curvature))); });
}

bool Arc2D::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                  double step) const {
    const double curvature = GetCurvature();
    return Sample(from, to, step, [&](double station) { points.push_back(SampleAt(station, curvature)); });
}

bool Arc2D::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double height) const {
    return MakePointsAndTangents(from, to, points, StepForHeight(from, to, height));
}

bool Arc2D::MakePointsUsingHeight(double from, double to, std::vector<Point2D>& points, double height) const {
    const double curvature = GetCurvature();
    return Sample(from, to, StepForHeight(from, to, height),
                  [&](double station) { points.push_back(PointAt(Turn(station * curvature))); });
}

bool Arc2D::MakeLineString(double from, double to, LineString2D& lineString, double step) const {
    const double curvature = GetCurvature();
    std::vector<Point2D> points;
    if (!Sample(from, to, step, [&](double station) { points.push_back(PointAt(Turn(station * curvature))); })) {
        return false;
    }
    lineString.AppendPoints(points);
    return true;
}

bool Arc2D::MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height) const {
    return MakeLineString(from, to, lineString, StepForHeight(from, to, height));
}

std::list<Line2D> Arc2D::MakeLines(double step) const {
    std::vector<PolylineElementPoint> points;
    (void)MakePointsAndTangents(0.0, GetLength(), points, step);
    std::list<Line2D> lines;
    for (std::size_t i = 1; i < points.size(); ++i) lines.emplace_back(points[i - 1].point, points[i].point);
    return lines;
}

double Arc2D::GetCurvature() const {
    const double r = GetRadius();
    return r > 0.0 ? GetSense() / r : 0.0;
}

Point2D Arc2D::PointAt(const Turn& turn) const {
    const Vec2D radial = startPoint - centerPoint;
    return startPoint + (radial.GetNormalVector(true) * turn.sine - radial * turn.versine);
}

Vec2D Arc2D::TangentAt(const Turn& turn) const {
    const Vec2D radial = startPoint - centerPoint;
    const Vec2D forward = radial.GetNormalVector(true) * (1.0 - turn.versine) - radial * turn.sine;
    return forward * GetCurvature();
}

IPolyline2DElement::PolylineElementPoint Arc2D::SampleAt(double station, double curvature) const {
    const Turn turn(station * curvature);
    return {PointAt(turn), TangentAt(turn), station};
}

// The cross product is taken against the step from the start, which keeps its accuracy on flat arcs.
double Arc2D::TravelTo(const Point2D& point) const {
    const Vec2D radial = startPoint - centerPoint;
    const double cross = radial.PerpDotProduct(point - startPoint);
    const double dot = radial.DotProduct(point - centerPoint) + 0.0;  // for the centre 0.0, not -0.0
    const double travel = GetSense() * std::atan2(cross, dot);
    return travel < 0.0 ? travel + detail::twoPi : travel;
}

double Arc2D::TravelBackTo(const Point2D& point) const {
    const double travel = std::abs(sweepAngle.GetRadians()) - TravelTo(point);
    return travel < 0.0 ? travel + detail::twoPi : travel;
}

// Station of a point of the arc from the angle between the point and the end that counts as 0. Just before that end
// within the tolerance is 0; outside the sweep the nearer end answers.
double Arc2D::StationOf(double travel, double tolerance) const {
    const double r = GetRadius();
    const double sweep = std::abs(sweepAngle.GetRadians());
    const double before = detail::twoPi - travel;
    if (sweep >= detail::twoPi && r * before <= std::abs(tolerance)) return 0.0;  // the seam of a full circle
    if (travel <= sweep) return r * travel;
    return before < travel - sweep ? 0.0 : r * sweep;
}

// (d^2 - r^2) / (d + r) with the difference of squares taken from the step w away from the start: w.w + 2 radial.w.
double Arc2D::DistanceFromCircle(const Point2D& point) const {
    const Vec2D radial = startPoint - centerPoint;
    const Vec2D step = point - startPoint;
    const double sum = centerPoint.Distance(point) + radial.Length();
    return sum > 0.0 ? (step.NormSquared() + 2.0 * radial.DotProduct(step)) / sum : 0.0;
}

Arc2D Arc2D::Part(double from, double to) const {
    const double length = GetLength();
    const double curvature = GetCurvature();
    const double share = std::min(1.0, (to - from) / length);  // never beyond the whole sweep, which may be 2 pi
    return {PointAt(Turn(from * curvature)), centerPoint, Angle(sweepAngle.GetRadians() * share),
            to < length ? PointAt(Turn(to * curvature)) : endPoint};
}

template <class Emit>
bool Arc2D::Sample(double from, double to, double step, Emit&& emit) const {
    return detail::ForEachStationTo(std::max(from, 0.0), std::min(to, GetLength()), step, emit);
}

double Arc2D::StepForHeight(double from, double to, double height) const {
    const double r = GetRadius();
    const double longest = r * detail::AngleForHeight(r, height);
    const double range = std::min(to, GetLength()) - std::max(from, 0.0);
    const auto parts = static_cast<double>(detail::NumberOfParts(range, longest));
    return parts > 0.0 && range > 0.0 ? range / parts : longest;
}

template <>
bool Geometry::AreEqual(const Arc2D& a, const Arc2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
