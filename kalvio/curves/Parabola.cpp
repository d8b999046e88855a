#include "kalvio/curves/Parabola.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/ArcSampling.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

constexpr double touchTolerance = 1e-8;  // a length: a point this near to the curve lies on it for its tangents

// asinh(x) / x
double RelativeAsinh(double x) {
    constexpr double linear = 1e-8;  // below it the next term, x^2 / 6, is beyond the last digit
    return std::abs(x) < linear ? 1.0 : std::asinh(x) / x;
}

// Arc length over a signed run from where the slope is u1. It is (G(u2) - G(u1)) / 2a with G(u) = (asinh u + u sqrt(1 +
// u^2)) / 2. Both differences are written as multiples of u2 - u1 = 2a run, so that a cancels and may be as small as it
// likes: with s = sqrt(1 + u^2), asinh u2 - asinh u1 = asinh(u2 s1 - u1 s2), and for slopes of one sign u2 s1 - u1 s2 =
// (u2^2 - u1^2) / (u2 s1 + u1 s2) and u2 s2 - u1 s1 = (u2^2 - u1^2)(1 + u1^2 + u2^2) / (u2 s2 + u1 s1).
double ArcLength(double a, double u1, double run) {
    constexpr double vertical = 1e100;  // a slope: horizontal run and asinh are beyond the last digit
    const double difference = 2.0 * a * run;
    const double u2 = u1 + difference;
    run = std::abs(run);
    const bool oneSign = (u1 > 0.0 && u2 > 0.0) || (u1 < 0.0 && u2 < 0.0);
    if (std::max(std::abs(u1), std::abs(u2)) > vertical) {
        if (oneSign) return run * std::abs(0.5 * u1 + 0.5 * u2);
        return 0.5 * (std::abs(u1 / (2.0 * a)) * std::abs(u1) + std::abs(u2 / (2.0 * a)) * std::abs(u2));
    }
    const double s1 = std::sqrt(1.0 + u1 * u1);
    const double s2 = std::sqrt(1.0 + u2 * u2);
    if (oneSign) {
        const double turn = (u1 + u2) / (u2 * s1 + u1 * s2);
        const double rise = (u1 + u2) * (1.0 + u1 * u1 + u2 * u2) / (u2 * s2 + u1 * s1);
        return 0.5 * run * (turn * RelativeAsinh(turn * difference) + rise);
    }
    if (u1 == u2) return run;  // both 0
    const double turn = (u2 * s1 - u1 * s2) / (u2 - u1);
    const double rise = (u2 * s2 - u1 * s1) / (u2 - u1);
    return 0.5 * run * (turn * RelativeAsinh(turn * difference) + rise);
}

// Calls emit(x) at from, from +- step ... up to `to`.
template <class Emit>
bool ForEachAbscissa(double from, double to, double step, bool closeAtEnd, Emit&& emit) {
    const double span = std::abs(to - from);
    const double sign = to < from ? -1.0 : 1.0;
    const auto emitOffset = [&](double offset) { emit(offset == span ? to : from + sign * offset); };
    if (!std::isfinite(span)) return false;
    return closeAtEnd ? detail::ForEachStationTo(0.0, span, step, emitOffset)
                      : detail::ForEachStation(0.0, span, step, span, false, emitOffset);
}

}  // namespace

MathTypes Parabola::GetType() const { return MathTypes::Parabola; }

BoundingBox2D Parabola::GetBoundingBox2D() const {
    const double minX = std::min(start.GetX(), end.GetX());
    const double maxX = std::max(start.GetX(), end.GetX());
    const auto [low, high] = std::minmax({start.GetY(), end.GetY(), Evaluate(minX), Evaluate(maxX)});
    double minY = low;
    double maxY = high;
    const double summit = -b / (2.0 * a);
    if (summit > minX && summit < maxX) {
        minY = std::min(minY, Evaluate(summit));
        maxY = std::max(maxY, Evaluate(summit));
    }
    return {Point2D(minX, minY), Point2D(maxX, maxY)};
}

BoundingBox3D Parabola::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Parabola::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline2D) return other.IsEqualTo(*this, tolerance);
    return other.GetType() == MathTypes::Parabola && IsEqualTo(static_cast<const Parabola&>(other), tolerance);
}

bool Parabola::IsEqualTo(const Parabola& other, double tolerance) const {
    return start.IsEqualTo(other.start, tolerance) && end.IsEqualTo(other.end, tolerance) &&
           std::abs(a - other.a) < tolerance && std::abs(b - other.b) < tolerance && std::abs(c - other.c) < tolerance;
}

Parabola* Parabola::Clone() const { return new Parabola(*this); }

void Parabola::Reverse() { std::swap(start, end); }

double Parabola::GetLength() const { return GetLength(start, end, detail::numericalZero); }

bool Parabola::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    return detail::BreakElement(*this, breaks, startStation, out, modifyThis, tolerances.UserTolerance(),
                                [this](const detail::ElementCut& from, const detail::ElementCut& to) {
                                    return std::make_unique<Parabola>(from.point, to.point, a, b, c);
                                });
}

bool Parabola::SetVerticalCurve(const Point2D& intersection, double gradeIn, double gradeOut, double length) {
    const double half = 0.5 * length;
    const Point2D from = intersection - Vec2D(half, half * gradeIn);
    const Point2D to = intersection + Vec2D(half, half * gradeOut);
    const double quadratic = (gradeOut - gradeIn) / (2.0 * length);
    const double linear = gradeIn - 2.0 * quadratic * from.GetX();
    const double constant = from.GetY() - (quadratic * from.GetX() + linear) * from.GetX();
    if (!(length > detail::numericalZero) || !std::isfinite(to.GetX() + to.GetY() + linear + constant)) return false;
    *this = Parabola(from, to, quadratic, linear, constant);
    return true;
}

bool Parabola::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    return point.Distance(GetNearestPoint(point, tolerances)) <= std::abs(tolerances.UserTolerance());
}

bool Parabola::ExtendStart(const Point2D& point, const Tolerances&) {
    const Point2D moved = GetPointAt(point.GetX());
    if (!std::isfinite(moved.GetX()) || !std::isfinite(moved.GetY()) || !std::isfinite(point.GetY())) return false;
    start = moved;
    return true;
}

bool Parabola::ExtendEnd(const Point2D& point, const Tolerances& tolerances) {
    const Point2D target = point;  // which may be this start or end
    Reverse();
    const bool extended = ExtendStart(target, tolerances);
    Reverse();
    return extended;
}

IGeometry* Parabola::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendElements(*this, *other);
}

bool Parabola::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    const Point2D foot = GetNearestPoint(point, Tolerances(tolerance));
    if (!(point.Distance(foot) <= std::abs(tolerance))) return false;
    return detail::Store(GetArcLength(start.GetX(), foot.GetX()), length);
}

bool Parabola::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    const Point2D foot = GetNearestPoint(point, Tolerances(tolerance));
    if (!(point.Distance(foot) <= std::abs(tolerance))) return false;
    return detail::Store(GetArcLength(foot.GetX(), end.GetX()), length);
}

bool Parabola::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    if (!IsPointOnGeometry(point, tolerances)) return false;
    return detail::Store(ComputeTangent(point), tangent);
}

// With t = x - origin, origin the abscissa of the element nearest to that of the point, u the slope there, and d ahead
// of and h above the point there, half the derivative of the squared distance is the cubic g(t) = t + d + (a t^2 + u t
// + h)(2 a t + u). It is monotone between the zeros of g' = 6 a^2 t^2 + 6 a u t + 1 + u^2 + 2 a h, so each such
// interval holds at most one foot. Measured from the element the powers of t stay small however far away the point is.
struct Parabola::Feet {
    Feet(const Parabola& parabola, const Point2D& point)
        : origin(std::clamp(point.GetX(), std::min(parabola.start.GetX(), parabola.end.GetX()),
                            std::max(parabola.start.GetX(), parabola.end.GetX()))),
          a(parabola.a),
          u(parabola.GetSlope(origin)),
          d(origin - point.GetX()),
          h(parabola.Evaluate(origin) - point.GetY()) {
        limits[0] = std::min(parabola.start.GetX(), parabola.end.GetX()) - origin;
        limits[3] = std::max(parabola.start.GetX(), parabola.end.GetX()) - origin;
        const double discriminant = (u * u - 2.0 - 4.0 * a * h) / 3.0;
        const double middle = -u / (2.0 * a);
        const double offset = discriminant > 0.0 ? std::sqrt(discriminant) / std::abs(2.0 * a) : 0.0;
        const auto inside = [&](double t) { return t > limits[0] ? std::min(t, limits[3]) : limits[0]; };
        limits[1] = inside(middle - offset);
        limits[2] = inside(middle + offset);
    }

    detail::ValueAndSlope g(double t) const {
        const double height = (a * t + u) * t + h;
        const double slope = 2.0 * a * t + u;
        return {t + d + height * slope, 1.0 + slope * slope + 2.0 * a * height};
    }
    // How far the point is ahead of (negative: behind) the curve's point, along its tangent.
    double GetMiss(double t) const { return -g(t).value / std::hypot(1.0, 2.0 * a * t + u); }
    // Calls visit(t) for the foot between two limits, if any.
    template <class Visit>
    void ForEachFoot(bool minimaOnly, Visit&& visit) const {
        for (int i = 0; i < 3; ++i) {
            if (!(limits[i] < limits[i + 1])) continue;
            const double first = g(limits[i]).value;
            const double last = g(limits[i + 1]).value;
            const bool rises = first < 0.0 && last >= 0.0;
            if (!rises && (minimaOnly || !(first > 0.0 && last <= 0.0))) continue;
            visit(detail::BracketedNewton(limits[i], limits[i + 1], [&](double t) {
                const detail::ValueAndSlope value = g(t);
                return rises ? value : detail::ValueAndSlope{-value.value, -value.slope};
            }));
        }
    }

    double origin;
    double a;
    double u;
    double d;
    double h;
    double limits[4];  // the ends and, between them, where g turns
};

Point2D Parabola::GetNearestPoint(const Point2D& point, const Tolerances&) const {
    const bool backwards = GetSign() < 0.0;
    Point2D nearest[5] = {backwards ? end : start};
    int number = 1;
    const Feet feet(*this, point);
    feet.ForEachFoot(true, [&](double t) { nearest[number++] = GetPointAt(feet.origin + t); });
    nearest[number++] = backwards ? start : end;
    if (backwards) std::reverse(nearest, nearest + number);
    return *std::min_element(nearest, nearest + number,
                             [&](const Point2D& p, const Point2D& q) { return point.Distance(p) < point.Distance(q); });
}

IPolyline2DElement::PolylineElementPoint Parabola::GetNearestPoint(const Point2D& point) const {
    const Point2D nearest = GetNearestPoint(point, Tolerances::Standard());
    return MakeSample(nearest, GetArcLength(start.GetX(), nearest.GetX()));
}

bool Parabola::GetNormalPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const {
    const Feet feet(*this, point);
    const double low = feet.limits[0];
    const double high = feet.limits[3];
    if (!(low < high) || !std::isfinite(feet.g(low).value) || !std::isfinite(feet.g(high).value)) return false;
    PolylineElementPoint best;
    double bestDistance = std::numeric_limits<double>::infinity();
    const bool backwards = GetSign() < 0.0;
    const auto consider = [&](double t) {
        PolylineElementPoint candidate = GetSample(feet.origin + t);
        if (t == low || t == high) {
            candidate = (t == low) == backwards ? MakeSample(end, GetLength()) : MakeSample(start, 0.0);
        }
        const double distance = point.Distance(candidate.point);
        if (!(distance < bestDistance || (distance == bestDistance && candidate.station < best.station))) return;
        best = candidate;
        bestDistance = distance;
    };
    feet.ForEachFoot(false, consider);
    const double reach = std::abs(tolerance);
    if (std::abs(feet.GetMiss(low)) <= reach && feet.g(low).value * feet.g(low).slope >= 0.0) consider(low);
    if (std::abs(feet.GetMiss(high)) <= reach && feet.g(high).value * feet.g(high).slope <= 0.0) consider(high);
    // A double foot, where the point is the centre of curvature: g touches 0 without a change of sign.
    for (int i = 1; i < 3; ++i) {
        const double turn = feet.limits[i];
        const double value = feet.g(turn).value;
        const bool isAlone =
            value * feet.g(feet.limits[i - 1]).value > 0.0 && value * feet.g(feet.limits[i + 1]).value > 0.0;
        if (turn > low && turn < high && isAlone && std::abs(feet.GetMiss(turn)) <= touchTolerance) consider(turn);
    }
    return std::isfinite(bestDistance) && detail::Store(best, foot);
}

void Parabola::GetParameters(double& quadratic, double& linear, double& constant) const {
    quadratic = a;
    linear = b;
    constant = c;
}

void Parabola::SetParameters(double quadratic, double linear, double constant) {
    a = quadratic;
    b = linear;
    c = constant;
}

int Parabola::GetY(double x, double& y) const {
    y = Evaluate(x);
    return 1;
}

bool Parabola::GetSummit(Point2D& summit) const {
    if (!(std::abs(a) >= detail::numericalZero)) return false;
    summit = {-b / (2.0 * a), c - b * b / (4.0 * a)};
    return true;
}

bool Parabola::GetFocus(Point2D& focus) const {
    if (!(std::abs(a) >= detail::numericalZero)) return false;
    focus = {-b / (2.0 * a), c + (1.0 - b * b) / (4.0 * a)};
    return true;
}

bool Parabola::GetDirectix(double& y) const {
    if (!(std::abs(a) >= detail::numericalZero)) return false;
    y = c - (b * b + 1.0) / (4.0 * a);
    return true;
}

double Parabola::GetParameterK() const {
    constexpr double halfPercent = 0.005;
    return a == 0.0 ? std::numeric_limits<double>::infinity() : std::abs(halfPercent / a);
}

int Parabola::FindRoots(double& x1, double& x2) const {
    constexpr double rounding = 4.0 * std::numeric_limits<double>::epsilon();  // of D by that of a, b and c
    const double discriminant = b * b - 4.0 * a * c;
    if (!std::isfinite(discriminant)) return 0;
    if (std::abs(discriminant) <= rounding * (b * b)) {
        x1 = x2 = -b / (2.0 * a);
        return 1;
    }
    if (discriminant < 0.0) return 0;
    // The root whose two terms have one sign first; the other from the product of the roots, c / a.
    const bool bothNegative = b >= 0.0;
    const double sum = -0.5 * (bothNegative ? b + std::sqrt(discriminant) : b - std::sqrt(discriminant));
    const double larger = sum / a;
    const double smaller = c / sum;
    x1 = bothNegative ? smaller : larger;
    x2 = bothNegative ? larger : smaller;
    return discriminant < detail::numericalZero ? 1 : 2;
}

double Parabola::GetLength(const Point2D& p1, const Point2D& p2, double tolerance) const {
    if (!(std::abs(a) < tolerance)) return GetArcLength(p1.GetX(), p2.GetX());
    const double run = p2.GetX() - p1.GetX();
    return std::hypot(run, run * 0.5 * (GetSlope(p1.GetX()) + GetSlope(p2.GetX())));
}

double Parabola::GetArcLength(double x1, double x2) const { return ArcLength(a, GetSlope(x1), x2 - x1); }

Vec2D Parabola::ComputeTangent(const Point2D& point) const {
    const double slope = GetSlope(point.GetX());
    const double length = std::hypot(1.0, slope);
    return {1.0 / length, slope / length};
}

int Parabola::GetTangentsThroughPoint(const Point2D& point, Line2D& left, Line2D& right) const {
    // The tangent at x = point.x + t passes a t^2 below the curve's height h over the point.
    const double h = Evaluate(point.GetX()) - point.GetY();
    if (std::abs(h) <= touchTolerance) {
        left = Line2D(point, point + ComputeTangent(point));
        return 1;
    }
    if (!(std::abs(a) >= detail::numericalZero) || !(h / a > 0.0)) return 0;
    const double t = std::sqrt(h / a);
    left = Line2D(point, GetPointAt(point.GetX() - t));
    right = Line2D(point, GetPointAt(point.GetX() + t));
    return 2;
}

IPolyline2DElement::PolylineElementPoint Parabola::MakeSample(const Point2D& point, double station) const {
    return {point, ComputeTangent(point) * GetSign(), station};
}

IPolyline2DElement::PolylineElementPoint Parabola::GetSample(double x) const {
    const bool before = (x < start.GetX()) != (end.GetX() < start.GetX());
    const double length = GetArcLength(start.GetX(), x);
    return MakeSample(GetPointAt(x), before && length > 0.0 ? -length : length);
}

bool Parabola::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    const double length = GetLength();
    if (!(station >= -detail::numericalZero && station <= length + detail::numericalZero)) return false;
    if (station <= 0.0 || station >= length) {
        return detail::Store(station <= 0.0 ? MakeSample(start, 0.0) : MakeSample(end, length), result);
    }
    const double run = std::abs(end.GetX() - start.GetX());
    const double sign = GetSign();
    const double slope = GetSlope(start.GetX());
    const double along = detail::BracketedNewton(0.0, std::min(run, station), [&](double distance) {
        const double x = sign * distance;
        return detail::ValueAndSlope{ArcLength(a, slope, x) - station, std::hypot(1.0, slope + 2.0 * a * x)};
    });
    return detail::Store(MakeSample(GetPointAt(start.GetX() + sign * along), station), result);
}

bool Parabola::MakePointAndTangentAtAbscissa(double x, PolylineElementPoint& result) const {
    const auto [low, high] = std::minmax({start.GetX(), end.GetX()});
    if (!(x >= low && x <= high)) return false;
    if (x == start.GetX()) return detail::Store(MakeSample(start, 0.0), result);
    return detail::Store(x == end.GetX() ? MakeSample(end, GetLength()) : GetSample(x), result);
}

bool Parabola::MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                          bool closeAtEnd) const {
    return ForEachAbscissa(from, to, step, closeAtEnd, [&](double x) { points.push_back(GetSample(x)); });
}

bool Parabola::MakePoints(double from, double to, double step, std::vector<Point2D>& points, bool closeAtEnd) const {
    return ForEachAbscissa(from, to, step, closeAtEnd, [&](double x) { points.push_back(GetPointAt(x)); });
}

bool Parabola::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                     double step) const {
    return MakePoints(from, to, step, points, true);
}

// The chord over a run d lies |a| d^2 / 4 from the curve at its middle.
double Parabola::GetStep(double from, double to, double height) const {
    const double span = std::abs(to - from);
    if (!(height > 0.0) || !(span > 0.0)) return height > 0.0 ? 1.0 : 0.0;
    return span / std::max(1.0, std::ceil(span * std::sqrt(std::abs(a) / height) * 0.5 - detail::partRounding));
}

bool Parabola::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylineElementPoint>& points,
                                                double height) const {
    return MakePoints(from, to, GetStep(from, to, height), points, true);
}

bool Parabola::MakePointsUsingHeight(double from, double to, std::vector<Point2D>& points, double height) const {
    return MakePoints(from, to, GetStep(from, to, height), points, true);
}

bool Parabola::MakeLineString(double from, double to, LineString2D& lineString, double step) const {
    std::vector<Point2D> points;
    if (!MakePoints(from, to, step, points, true)) return false;
    lineString.AppendPoints(points);
    return true;
}

Parabola& Parabola::Translate(const Vec2D& v) {
    const double x = v.GetX();
    start += v;
    end += v;
    c += (a * x - b) * x + v.GetY();
    b -= 2.0 * a * x;
    return *this;
}

Parabola Parabola::Translate(const Vec2D& v) const {
    Parabola copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Parabola& a, const Parabola& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
