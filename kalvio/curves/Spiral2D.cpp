#include "kalvio/curves/Spiral2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/TransitionCurve.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace Kalvio::Math {

namespace {

using detail::pi;
using detail::twoPi;

constexpr double turnPerPanel = 0.5;                 // [rad]; with 8 nodes the quadrature is exact to rounding
constexpr double leastPanels = 8.0;                  // that resolve the waves of the laws
constexpr double extensionTurn = 2.0;                // [rad]; a clothoid is extended by no more
constexpr double mostExtension = 1e3;                // in lengths; bounds the extension of a straight
constexpr double mostTurn = 1000.0;                  // [rad]; more is no transition curve
constexpr double culmination = 0.66874030497642202;  // 5^(-1/4): u at the largest curvature of the cubic parabola
constexpr double culminationCurvature = 1.0174559726346407;  // 2 u / (1 + u^4)^(3/2) there

double CurvatureOf(double radius) { return std::abs(radius) <= detail::numericalZero ? 0.0 : 1.0 / radius; }

double RadiusOf(double curvature) {
    const double radius = 1.0 / curvature;
    return std::isfinite(radius) ? radius : 0.0;
}

// f(t) of the laws.
double Shape(Spiral2D::Spiral2DType type, double t) {
    using Type = Spiral2D::Spiral2DType;
    switch (type) {
        case Type::Bloss:
            return t * t * (3.0 - 2.0 * t);
        case Type::Sine:
            return t - std::sin(twoPi * t) / twoPi;
        case Type::Cosine:
            return 0.5 * (1.0 - std::cos(pi * t));
        case Type::Biquadratic:
            return t < 0.5 ? 2.0 * t * t : 1.0 - 2.0 * (1.0 - t) * (1.0 - t);
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    return t;
}

// The integral of f from 0 to t.
double ShapeIntegral(Spiral2D::Spiral2DType type, double t) {
    using Type = Spiral2D::Spiral2DType;
    switch (type) {
        case Type::Bloss:
            return t * t * t * (1.0 - 0.5 * t);
        case Type::Sine:
            return 0.5 * t * t + (std::cos(twoPi * t) - 1.0) / (twoPi * twoPi);
        case Type::Cosine:
            return 0.5 * t - std::sin(pi * t) / twoPi;
        case Type::Biquadratic:
            return t < 0.5 ? 2.0 / 3.0 * t * t * t : t - 0.5 + 2.0 / 3.0 * (1.0 - t) * (1.0 - t) * (1.0 - t);
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    return 0.5 * t * t;
}

// The largest f'(t).
double SteepestShape(Spiral2D::Spiral2DType type) {
    using Type = Spiral2D::Spiral2DType;
    switch (type) {
        case Type::Bloss:
            return 1.5;
        case Type::Cosine:
            return 0.5 * pi;
        case Type::Sine:
        case Type::Biquadratic:
            return 2.0;
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    return 1.0;
}

// The unit cubic parabola y = u^3 / 3: slope u^2, length S(u), curvature 2 u / (1 + u^4)^(3/2).

// S(u) = integral of sqrt(1 + u^4), by the binomial series; 24 terms suffice for |u| up to the culmination.
double ParabolaLength(double u) {
    constexpr double vanishing = 1e-17;
    const double fourth = u * u * u * u;
    double term = 1.0;
    double sum = 1.0;
    for (double n = 1.0; n < 24.0 && std::abs(term) > vanishing; ++n) {
        term *= fourth * (1.5 - n) / n;
        sum += term / (4.0 * n + 1.0);
    }
    return u * sum;
}

// The inverse of S by Newton's steps from u = s - s^5 / 10 + ..., which is within 0.5 %: three double the digits to
// all.
double AbscissaAtLength(double s) {
    double u = s - 0.1 * s * s * s * s * s;
    for (int i = 0; i < 3; ++i) u -= (ParabolaLength(u) - s) / std::sqrt(1.0 + u * u * u * u);
    return u;
}

double AbscissaAtCurvature(double curvature) {
    const double wanted = std::abs(curvature);
    const double u = detail::BracketedNewton(0.0, culmination, [wanted](double x) {
        const double q = 1.0 + x * x * x * x;
        const double root = std::sqrt(q);
        return detail::ValueAndSlope{2.0 * x / (q * root) - wanted, 2.0 * (1.0 - 5.0 * x * x * x * x) / (q * q * root)};
    });
    return std::copysign(u, curvature);
}

}  // namespace

// Finds the scale at which the parabola passes both curvatures within the length: scale length = S(u2) - S(u1) with
// u = AbscissaAtCurvature(side k / scale). The right side falls as the scale grows, from the smallest at which both
// curvatures exist.
bool Spiral2D::Law::SolveCubic() {
    side = k2 > k1 ? 1.0 : -1.0;
    const auto excess = [this](double w) {
        return w * length - (ParabolaLength(AbscissaAtCurvature(side * k2 / w)) -
                             ParabolaLength(AbscissaAtCurvature(side * k1 / w)));
    };
    const double least = std::max(std::abs(k1), std::abs(k2)) / culminationCurvature;
    const double most = std::max(least, std::sqrt(std::abs(k2 - k1) / length));
    if (!(excess(least) <= 0.0)) return false;
    scale = detail::BracketedNewton(least, most, [&](double w) { return detail::ValueAndSlope{excess(w), 0.0}; });
    firstAbscissa = AbscissaAtCurvature(side * k1 / scale);
    first = ParabolaLength(firstAbscissa);
    return true;
}

double Spiral2D::Law::GetAbscissa(double station) const { return AbscissaAtLength(first + scale * station); }

double Spiral2D::Law::GetCurvature(double station) const {
    if (!(length > 0.0)) return k1;
    if (!IsParabola()) return k1 + (k2 - k1) * Shape(type, station / length);
    const double u = GetAbscissa(station);
    const double q = 1.0 + u * u * u * u;
    return side * scale * 2.0 * u / (q * std::sqrt(q));
}

double Spiral2D::Law::GetTurn(double station) const {
    if (!(length > 0.0)) return 0.0;
    if (!IsParabola()) return k1 * station + (k2 - k1) * length * ShapeIntegral(type, station / length);
    const double u = GetAbscissa(station);
    return side * (std::atan(u * u) - std::atan(firstAbscissa * firstAbscissa));
}

double Spiral2D::Law::GetLargestRate() const {
    if (IsParabola()) return 2.0 * scale * scale;
    return length > 0.0 ? SteepestShape(type) * std::abs(k2 - k1) / length : 0.0;
}

// Evaluates stations relative to the start point, in world directions.
class Spiral2D::Evaluator {
public:
    explicit Evaluator(const Spiral2D& evaluated)
        : spiral(evaluated),
          angle(evaluated.startTangent.GetAngle().GetRadians()),
          cosine(std::cos(angle)),
          sine(std::sin(angle)) {}

    detail::CurveState At(double station) const {
        const Position local = spiral.GetPosition(station);
        const double direction = GetDirection(station);
        return {local.x * cosine - local.y * sine, local.x * sine + local.y * cosine, std::cos(direction),
                std::sin(direction), GetCurvature(station)};
    }
    double GetDirection(double station) const {
        return angle + spiral.law.GetTurn(spiral.lawStart + station) - spiral.startTurn;
    }
    double GetCurvature(double station) const { return spiral.law.GetCurvature(spiral.lawStart + station); }
    double GetLargestRate() const { return spiral.law.GetLargestRate(); }
    double GetInflection() const { return spiral.inflection; }

    const Point2D& GetStart() const { return spiral.start; }
    const Point2D& GetEnd() const { return spiral.end; }
    double GetLength() const { return spiral.length; }

private:
    const Spiral2D& spiral;
    double angle;
    double cosine;
    double sine;
};

Spiral2D::Spiral2D() { MakeWhole(); }

Spiral2D::Spiral2D(Spiral2DType spiralType, double startRadiusValue, double endRadiusValue, double spiralLength,
                   const Point2D& from, const Vec2D& tangent)
    : type(spiralType),
      startRadius(startRadiusValue),
      endRadius(endRadiusValue),
      length(spiralLength),
      start(from),
      startTangent(tangent) {
    MakeWhole();
}

Spiral2D::Spiral2D(const Spiral2D& other) : IPolyline2DElement(other) { CopyData(other); }

Spiral2D& Spiral2D::operator=(const Spiral2D& other) {
    if (this != &other) CopyData(other);
    return *this;
}

void Spiral2D::CopyData(const Spiral2D& other) {
    type = other.type;
    startRadius = other.startRadius;
    endRadius = other.endRadius;
    length = other.length;
    start = other.start;
    startTangent = other.startTangent;
    law = other.law;
    lawStart = other.lawStart;
    startTurn = other.startTurn;
    inflection = other.inflection;
    usable = other.usable;
    panel = other.panel;
    positions = other.positions;
    end = other.end;
}

// Takes the law from the public fields.
void Spiral2D::MakeWhole() {
    law = Law{type, CurvatureOf(startRadius), CurvatureOf(endRadius), length};
    lawStart = 0.0;
    Update();
}

bool Spiral2D::IsUsable() const {
    const bool known = type <= Spiral2DType::Cubic;
    const double turn = std::max(std::abs(law.k1), std::abs(law.k2)) * law.length;
    return known && length >= 0.0 && law.length <= detail::largestDouble && turn <= mostTurn && std::isfinite(law.k1) &&
           std::isfinite(law.k2) && std::isfinite(startTangent.NormSquared()) && std::isfinite(start.GetX()) &&
           std::isfinite(start.GetY());
}

void Spiral2D::Update() {
    startTurn = 0.0;
    inflection = -1.0;
    positions.clear();
    usable = IsUsable() && (!law.IsParabola() || law.scale > 0.0 || law.SolveCubic());
    if (usable && length > 0.0) {
        startTurn = law.GetTurn(lawStart);
        const double first = law.GetCurvature(lawStart);
        const double last = law.GetCurvature(lawStart + length);
        if ((first < 0.0 && last > 0.0) || (first > 0.0 && last < 0.0)) {
            inflection = detail::BracketedNewton(0.0, length, [&](double station) {
                const double curvature = law.GetCurvature(lawStart + station);
                return detail::ValueAndSlope{first < 0.0 ? curvature : -curvature, 0.0};
            });
        }
        const double turn = std::max(std::abs(first), std::abs(last)) * length;
        const double panels = std::max(leastPanels, std::ceil(turn / turnPerPanel));
        panel = length / panels;
        usable = panel > 0.0;
        Position position;
        for (double i = 0.0; i < panels && !law.IsParabola(); ++i) {
            positions.push_back(position);
            const Position step = Integrate(i * panel, (i + 1.0) * panel);
            position.x += step.x;
            position.y += step.y;
        }
    }
    end = start;
    if (!usable) return;
    const detail::CurveState at = Evaluator(*this).At(length);
    end += Vec2D(at.x, at.y);
}

// The displacement between two stations, x along the start tangent. Abramowitz and Stegun 1964, table 25.4, n = 8.
Spiral2D::Position Spiral2D::Integrate(double from, double to) const {
    constexpr std::array<double, 4> nodes = {0.1834346424956498, 0.5255324099163290, 0.7966664774136267,
                                             0.9602898564975363};
    constexpr std::array<double, 4> weights = {0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                                               0.1012285362903763};
    // The biquadratic law has a kink in its middle, which no panel may cover.
    const double kink = 0.5 * law.length - lawStart;
    if (type == Spiral2DType::Biquadratic && from < kink && kink < to) {
        const Position before = Integrate(from, kink);
        const Position after = Integrate(kink, to);
        return {before.x + after.x, before.y + after.y};
    }
    const double half = 0.5 * (to - from);
    const double middle = 0.5 * (to + from);
    Position sum;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        for (const double node : {-nodes[i], nodes[i]}) {
            const double direction = law.GetTurn(lawStart + (middle + half * node)) - startTurn;
            sum.x += weights[i] * std::cos(direction);
            sum.y += weights[i] * std::sin(direction);
        }
    }
    return {sum.x * half, sum.y * half};
}

// The position at a station relative to the start, x along the start tangent.
Spiral2D::Position Spiral2D::GetPosition(double station) const {
    if (!(length > 0.0)) return {};
    if (law.IsParabola()) {
        const double u1 = law.GetAbscissa(lawStart);
        const double u = law.GetAbscissa(lawStart + station);
        const double dx = (u - u1) / law.scale;
        const double dy = law.side * (u - u1) * (u * u + u * u1 + u1 * u1) / (3.0 * law.scale);
        const double slope = law.side * u1 * u1;  // of the start tangent
        const double norm = std::sqrt(1.0 + slope * slope);
        return {(dx + dy * slope) / norm, (dy - dx * slope) / norm};
    }
    const double last = static_cast<double>(positions.size()) - 1.0;
    const double index = station > 0.0 ? std::min(std::floor(station / panel), last) : 0.0;
    const Position& before = positions[static_cast<std::size_t>(index)];
    const Position step = Integrate(index * panel, station);
    return {before.x + step.x, before.y + step.y};
}

MathTypes Spiral2D::GetType() const { return MathTypes::Spiral2D; }

BoundingBox2D Spiral2D::GetBoundingBox2D() const {
    if (!usable) return {start, start};
    return detail::BoxOfElement(Evaluator(*this), 0.0);
}

BoundingBox3D Spiral2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Spiral2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline2D) return other.IsEqualTo(*this, tolerance);
    return other.GetType() == MathTypes::Spiral2D && IsEqualTo(static_cast<const Spiral2D&>(other), tolerance);
}

bool Spiral2D::IsEqualTo(const Spiral2D& other, double tolerance) const {
    const auto equal = [tolerance](double a, double b) { return std::abs(a - b) < tolerance; };
    return type == other.type && start.IsEqualTo(other.start, tolerance) &&
           startTangent.IsEqualTo(other.startTangent, tolerance) && equal(startRadius, other.startRadius) &&
           equal(endRadius, other.endRadius) && equal(length, other.length) && equal(lawStart, other.lawStart) &&
           equal(law.length, other.law.length);
}

Spiral2D* Spiral2D::Clone() const { return new Spiral2D(*this); }

void Spiral2D::Reverse() {
    const Vec2D tangent = -GetEndTangent();
    Law reversed = law;
    reversed.k1 = 0.0 - law.k2;
    reversed.k2 = 0.0 - law.k1;
    if (law.scale > 0.0) {
        reversed.firstAbscissa = -law.GetAbscissa(law.length);
        reversed.first = -(law.first + law.scale * law.length);
    }
    lawStart = law.length - (lawStart + length);
    law = reversed;
    const double radius = 0.0 - startRadius;
    startRadius = 0.0 - endRadius;
    endRadius = radius;
    start = end;
    startTangent = tangent;
    Update();
}

bool Spiral2D::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    if (!usable) return false;
    return detail::BreakElement(*this, breaks, startStation, out, modifyThis, tolerances.UserTolerance(),
                                [this](const detail::ElementCut& from, const detail::ElementCut& to) {
                                    return std::make_unique<Spiral2D>(GetPart(from.station, to.station));
                                });
}

bool Spiral2D::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    PolylineElementPoint foot;
    return FindPoint(point, tolerances.UserTolerance(), foot);
}

bool Spiral2D::ExtendStart(const Point2D& point, const Tolerances& tolerances) {
    return detail::ExtendStartOf(*this, point, tolerances);
}

bool Spiral2D::ExtendEnd(const Point2D& point, const Tolerances& tolerances) {
    if (!usable || !(length > 0.0)) return false;
    Spiral2D longest(*this);
    if (type == Spiral2DType::Clothoid) {
        // |k2| e + |rate| e^2 / 2 bounds the turn over a length e beyond the end.
        const double rate = (law.k2 - law.k1) / length;
        const double root = std::sqrt(law.k2 * law.k2 + 2.0 * extensionTurn * std::abs(rate));
        const double extension = std::min(2.0 * extensionTurn / (std::abs(law.k2) + root), mostExtension * length);
        longest =
            Spiral2D(type, startRadius, RadiusOf(law.k2 + rate * extension), length + extension, start, startTangent);
    } else {
        longest.length = law.length - lawStart;
        longest.endRadius = RadiusOf(law.k2);
        longest.Update();
    }
    PolylineElementPoint foot;
    if (!longest.GetNearestPoint(point, 0.0, longest.length, foot)) return false;
    const double user = tolerances.UserTolerance();
    if (!(std::abs((point - foot.point).DotProduct(foot.tangent)) <= user) || !(foot.station > user)) return false;
    *this = longest.GetPart(0.0, foot.station);
    return true;
}

IGeometry* Spiral2D::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendElements(*this, *other);
}

bool Spiral2D::GetLengthFromStartPoint(const Point2D& point, double& stationFromStart, double tolerance) const {
    PolylineElementPoint foot;
    if (!FindPoint(point, tolerance, foot)) return false;
    stationFromStart = foot.station;
    return true;
}

bool Spiral2D::GetLengthFromEndPoint(const Point2D& point, double& stationFromEnd, double tolerance) const {
    PolylineElementPoint foot;
    if (!FindPoint(point, tolerance, foot)) return false;
    stationFromEnd = length - foot.station;
    return true;
}

bool Spiral2D::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    PolylineElementPoint foot;
    if (!FindPoint(point, tolerances.UserTolerance(), foot)) return false;
    tangent = foot.tangent;
    return true;
}

Point2D Spiral2D::GetNearestPoint(const Point2D& point, const Tolerances&) const {
    PolylineElementPoint nearest;
    return GetNearestPoint(point, 0.0, length, nearest) ? nearest.point : start;
}

bool Spiral2D::GetNearestPoint(const Point2D& point, double from, double to, PolylineElementPoint& nearest) const {
    return usable && detail::NearestOnCurve(Evaluator(*this), point, from, to, nearest);
}

bool Spiral2D::GetNormalPoint(const Point2D& point, double from, double to, double tolerance,
                              PolylineElementPoint& foot) const {
    return usable && detail::FootOnCurve(Evaluator(*this), point, from, to, tolerance, foot);
}

// The foot of a point that lies on the curve.
bool Spiral2D::FindPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const {
    // A point of the curve cannot be further from both ends together than the curve is long.
    if (!(point.Distance(start) + point.Distance(end) <= length + 2.0 * tolerance + detail::numericalZero))
        return false;
    return GetNearestPoint(point, 0.0, length, foot) && foot.point.Distance(point) < tolerance;
}

Vec2D Spiral2D::GetEndTangent() const {
    if (!usable) return startTangent;
    const double direction = Evaluator(*this).GetDirection(length);
    return {std::cos(direction), std::sin(direction)};
}

void Spiral2D::SetSpiralType(Spiral2DType value) {
    type = value;
    MakeWhole();
}

void Spiral2D::SetStartRadius(double value) {
    startRadius = value;
    MakeWhole();
}

void Spiral2D::SetEndRadius(double value) {
    endRadius = value;
    MakeWhole();
}

void Spiral2D::SetLength(double value) {
    length = value;
    MakeWhole();
}

void Spiral2D::SetStart(const Point2D& value) {
    start = value;
    Update();
}

void Spiral2D::SetStartTangent(const Vec2D& value) {
    startTangent = value;
    Update();
}

bool Spiral2D::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    return usable && detail::SampleAt(Evaluator(*this), station, result);
}

bool Spiral2D::MakeOffsetAndTangentAt(double station, Vec2D& offset, Vec2D& tangent) const {
    return usable && detail::OffsetAt(Evaluator(*this), station, offset, tangent);
}

double Spiral2D::GetCurvature(double station) const { return usable ? Evaluator(*this).GetCurvature(station) : 0.0; }

bool Spiral2D::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                     double step) const {
    return EmitSamples(ConstantStations(from, to, step),
                       [&](const PolylineElementPoint& sample) { points.push_back(sample); });
}

bool Spiral2D::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylineElementPoint>& points,
                                                double height) const {
    return EmitSamples(StationsForHeight(from, to, height),
                       [&](const PolylineElementPoint& sample) { points.push_back(sample); });
}

bool Spiral2D::MakeLineString(double from, double to, LineString2D& lineString, double step) const {
    return EmitSamples(ConstantStations(from, to, step),
                       [&](const PolylineElementPoint& sample) { lineString.AppendPoint(sample.point); });
}

bool Spiral2D::MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height) const {
    return EmitSamples(StationsForHeight(from, to, height),
                       [&](const PolylineElementPoint& sample) { lineString.AppendPoint(sample.point); });
}

std::vector<double> Spiral2D::ConstantStations(double from, double to, double step) const {
    if (!usable) return {};
    return detail::ConstantStations(Evaluator(*this), from, to, step);
}

std::vector<double> Spiral2D::StationsForHeight(double from, double to, double height) const {
    if (!usable) return {};
    return detail::StationsForHeight(Evaluator(*this), from, to, height);
}

template <class Emit>
bool Spiral2D::EmitSamples(const std::vector<double>& stations, Emit&& emit) const {
    const Evaluator curve(*this);
    for (const double station : stations) emit(detail::SampleOf(curve, station));
    return !stations.empty();
}

Spiral2D Spiral2D::GetPart(double from, double to) const {
    const Evaluator curve(*this);
    const PolylineElementPoint first = detail::SampleOf(curve, from);
    Spiral2D part(*this);
    if (from > 0.0) {
        part.startRadius = RadiusOf(curve.GetCurvature(from));
        part.start = first.point;
        part.startTangent = first.tangent;
    }
    if (to < length) part.endRadius = RadiusOf(curve.GetCurvature(to));
    part.length = to - from;
    part.lawStart += from;
    if (type == Spiral2DType::Clothoid) {
        part.MakeWhole();
    } else {
        part.Update();
    }
    return part;
}

template <>
bool Geometry::AreEqual(const Spiral2D& a, const Spiral2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
