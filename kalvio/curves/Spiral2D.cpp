#include "kalvio/curves/Spiral2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/CubicParabola.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/TransitionCurve.h"
#include "kalvio/curves/detail/TransitionLaw.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace Kalvio::Math {

namespace {

using detail::pi;
using detail::twoPi;

constexpr double turnPerPanel = 0.5;   // [rad]; 14 terms are exact to rounding
constexpr double leastPanels = 8.0;    // over which the waves of the laws are short enough for that
constexpr double extensionTurn = 2.0;  // [rad]; a clothoid is extended by no more
constexpr double mostExtension = 1e3;  // in lengths; bounds the extension of a straight
constexpr double mostTurn = 1000.0;    // [rad]; more is no transition curve
constexpr double culminationCurvature = 1.0174559726346407;  // 2 u / (1 + u^4)^(3/2) there

double CurvatureOf(double radius) { return std::abs(radius) <= detail::numericalZero ? 0.0 : 1.0 / radius; }

double RadiusOf(double curvature) {
    const double radius = 1.0 / curvature;
    return std::isfinite(radius) ? radius : 0.0;
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
        case Type::Viennese:
            return t * t * t * t * t * (7.0 - t * (14.0 - t * (10.0 - 2.5 * t)));
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
        case Type::Viennese:
            return 2.1875;
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    return 1.0;
}

// Derivatives of f of the law `Viennese`.
double VienneseSlope(double t) {
    const double q = t * (1.0 - t);
    return 140.0 * q * q * q;
}

double VienneseBend(double t) {
    const double q = t * (1.0 - t);
    return 420.0 * q * q * (1.0 - 2.0 * t);
}

constexpr double mostVienneseBend = 7.52;   // bounds of the second derivative
constexpr double mostVienneseTwist = 52.5;  // and of the third

double AbscissaAtCurvature(double curvature) {
    const double wanted = std::abs(curvature);
    const double u = detail::BracketedNewton(0.0, detail::culmination, [wanted](double x) {
        const double q = 1.0 + x * x * x * x;
        const double root = std::sqrt(q);
        return detail::ValueAndSlope{2.0 * x / (q * root) - wanted, 2.0 * (1.0 - 5.0 * x * x * x * x) / (q * q * root)};
    });
    return std::copysign(u, curvature);
}

// The derivative by t of the turn over a panel, as a power series in t: half the panel times the curvature at the
// law's station middle + half t.
struct RateSeries {
    std::array<double, 13> terms{};
    std::size_t size = 0;
};

// f(T + d t) of the laws by powers of t.
RateSeries ShapeSeries(Spiral2D::Spiral2DType type, double T, double d) {
    using Type = Spiral2D::Spiral2DType;
    RateSeries f;
    f.terms[0] = detail::TransitionShape(type, T);
    f.size = 2;
    switch (type) {
        case Type::Bloss:
            f.terms[1] = 6.0 * T * (1.0 - T) * d;
            f.terms[2] = (3.0 - 6.0 * T) * d * d;
            f.terms[3] = -2.0 * d * d * d;
            f.size = 4;
            return f;
        case Type::Biquadratic:
            f.terms[1] = 4.0 * (T < 0.5 ? T : 1.0 - T) * d;
            f.terms[2] = (T < 0.5 ? 2.0 : -2.0) * d * d;
            f.size = 3;
            return f;
        case Type::Viennese: {
            // The coefficients by powers of t about T: divided by (t - T) again and again.
            f.terms = {0.0, 0.0, 0.0, 0.0, 35.0, -84.0, 70.0, -20.0};
            f.size = 8;
            double power = 1.0;
            for (std::size_t n = 0; n < f.size; ++n) {
                for (std::size_t i = f.size - 1; i-- > n;) f.terms[i] += T * f.terms[i + 1];
                f.terms[n] *= power;
                power *= d;
            }
            return f;
        }
        case Type::Sine:
        case Type::Cosine: {
            // - sin(2 pi T + phase t) / (2 pi) or - cos(pi T + phase t) / 2: every derivative is one of four values.
            const bool isSine = type == Type::Sine;
            const double phase = (isSine ? twoPi : pi) * d;
            const double sine = std::sin((isSine ? twoPi : pi) * T);
            const double cosine = std::cos((isSine ? twoPi : pi) * T);
            const double wave = isSine ? -1.0 / twoPi : -0.5;
            const double cycle[] = {isSine ? sine : cosine, isSine ? cosine : -sine, isSine ? -sine : -cosine,
                                    isSine ? -cosine : sine};
            double power = 1.0;
            f.size = f.terms.size();
            for (std::size_t n = 1; n < f.size; ++n) {
                power *= phase / static_cast<double>(n);
                f.terms[n] = wave * power * cycle[n % 4];
            }
            if (isSine) f.terms[1] += d;
            return f;
        }
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    f.terms[1] = d;
    return f;
}

}  // namespace

// Finds the scale at which the parabola passes both curvatures within the length: scale length = S(u2) - S(u1) with
// u = AbscissaAtCurvature(side k / scale). The right side falls as the scale grows, from the smallest at which both
// curvatures exist.
bool Spiral2D::Law::SolveCubic() {
    side = k2 > k1 ? 1.0 : -1.0;
    const auto excess = [this](double w) {
        return w * length - (detail::ParabolaLength(AbscissaAtCurvature(side * k2 / w)) -
                             detail::ParabolaLength(AbscissaAtCurvature(side * k1 / w)));
    };
    const double least = std::max(std::abs(k1), std::abs(k2)) / culminationCurvature;
    const double most = std::max(least, std::sqrt(std::abs(k2 - k1) / length));
    if (!(excess(least) <= 0.0)) return false;
    scale = detail::BracketedNewton(least, most, [&](double w) { return detail::ValueAndSlope{excess(w), 0.0}; });
    firstAbscissa = AbscissaAtCurvature(side * k1 / scale);
    first = detail::ParabolaLength(firstAbscissa);
    return true;
}

double Spiral2D::Law::GetAbscissa(double station) const { return detail::AbscissaAtLength(first + scale * station); }

double Spiral2D::Law::GetCurvatureAtAbscissa(double u) const {
    const double q = 1.0 + u * u * u * u;
    return side * scale * 2.0 * u / (q * std::sqrt(q));
}

double Spiral2D::Law::GetCurvature(double station) const {
    if (!(length > 0.0)) return k1;
    if (IsParabola()) return GetCurvatureAtAbscissa(GetAbscissa(station));
    const double k = k1 + (k2 - k1) * detail::TransitionShape(type, station / length);
    return shift == 0.0 ? k : k - shift / length / length * VienneseBend(station / length);
}

double Spiral2D::Law::GetTurn(double station) const {
    if (!(length > 0.0)) return 0.0;
    if (!IsParabola()) {
        const double turn = k1 * station + (k2 - k1) * length * ShapeIntegral(type, station / length);
        return shift == 0.0 ? turn : turn - shift / length * VienneseSlope(station / length);
    }
    const double u = GetAbscissa(station);
    return side * (std::atan(u * u) - std::atan(firstAbscissa * firstAbscissa));
}

double Spiral2D::Law::GetLargestRate() const {
    if (IsParabola()) return 2.0 * scale * scale;
    if (!(length > 0.0)) return 0.0;
    const double rate = SteepestShape(type) * std::abs(k2 - k1) / length;
    return shift == 0.0 ? rate : rate + mostVienneseTwist * std::abs(shift) / length / length / length;
}

// With q = t (1 - t) the first derivative of f is 140 q^3, the third 840 q (1 - 5 q): the curvature turns back where
// d q^2 + 30 shift q = 6 shift, d = (k2 - k1) length^2.
std::vector<double> Spiral2D::Law::GetTurningPoints() const {
    std::vector<double> stations;
    if (shift == 0.0 || !(length > 0.0)) return stations;
    const double d = (k2 - k1) * length * length;
    const double sum = 15.0 * shift + std::copysign(std::sqrt(225.0 * shift * shift + 6.0 * shift * d), shift);
    for (const double q : {6.0 * shift / sum, -sum / d}) {  // both without cancellation; NaN for none
        if (!(q > 0.0 && q < 0.25)) continue;
        const double away = 0.5 * std::sqrt(1.0 - 4.0 * q);
        stations.push_back(length * (q / (0.5 + away)));
        stations.push_back(length * (0.5 + away));
    }
    std::sort(stations.begin(), stations.end());
    return stations;
}

// Evaluates stations relative to the start point, in world directions.
class Spiral2D::Evaluator {
public:
    explicit Evaluator(const Spiral2D& evaluated) : spiral(evaluated), isParabola(evaluated.law.IsParabola()) {}

    detail::CurveState At(double station) const {
        if (isParabola) return AtOfParabola(station);
        const Vec2D offset = spiral.panels.empty() ? Vec2D() : World(spiral.PanelAt(station).At(station));
        const double direction = GetDirection(station);
        return {offset.GetX(), offset.GetY(), std::cos(direction), std::sin(direction), GetCurvature(station)};
    }
    double GetDirection(double station) const {
        return spiral.angle + spiral.law.GetTurn(spiral.lawStart + station) - spiral.startTurn;
    }
    double GetCurvature(double station) const { return spiral.law.GetCurvature(spiral.lawStart + station); }
    double GetLargestRate() const { return spiral.law.GetLargestRate(); }
    double GetInflection() const { return spiral.inflection; }

    const Point2D& GetStart() const { return spiral.start; }
    const Point2D& GetEnd() const { return spiral.end; }
    double GetLength() const { return spiral.length; }

private:
    detail::CurveState AtOfParabola(double station) const {
        const Law& ofAll = spiral.law;
        const double u1 = spiral.startAbscissa;
        const double u = ofAll.GetAbscissa(spiral.lawStart + station);
        const double run = (u - u1) / ofAll.scale;
        const Vec2D offset = World({run, ofAll.side * run * (u * u + u * u1 + u1 * u1) / 3.0});
        const double slope = ofAll.side * u * u;
        const double secant = std::sqrt(1.0 + slope * slope);
        const Vec2D tangent = World({1.0 / secant, slope / secant});
        return {offset.GetX(), offset.GetY(), tangent.GetX(), tangent.GetY(), ofAll.GetCurvatureAtAbscissa(u)};
    }
    Vec2D World(const Position& local) const {
        return {local.x * spiral.axisCosine - local.y * spiral.axisSine,
                local.x * spiral.axisSine + local.y * spiral.axisCosine};
    }

    const Spiral2D& spiral;
    bool isParabola;
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

std::vector<Spiral2D> Spiral2D::MakeVienneseBend(double startRadiusValue, double endRadiusValue, double bendLength,
                                                 double lever, double rollChange, const Point2D& from,
                                                 const Vec2D& tangent) {
    Spiral2D whole(Spiral2DType::Viennese, startRadiusValue, endRadiusValue, bendLength, from, tangent);
    whole.law.shift = lever * rollChange;
    whole.Update();
    std::vector<Spiral2D> parts;
    if (!whole.usable || !(bendLength > 0.0)) return parts;
    std::vector<double> ends = whole.law.GetTurningPoints();
    ends.push_back(bendLength);
    double start = 0.0;
    for (const double end : ends) {
        if (end > start) parts.push_back(whole.GetPart(start, end));
        start = end;
    }
    return parts;
}

Spiral2D::Spiral2D(const Spiral2D& other) : IPolyline2DElement(other) { CopyData(other); }

Spiral2D& Spiral2D::operator=(const Spiral2D& other) {
    if (this != &other) CopyData(other);
    return *this;
}

Spiral2D::Spiral2D(Spiral2D&& other) noexcept { *this = std::move(other); }

Spiral2D& Spiral2D::operator=(Spiral2D&& other) noexcept {
    if (this == &other) return *this;
    std::vector<Panel> taken = std::move(other.panels);
    other.panels.clear();
    CopyData(other);
    panels = std::move(taken);
    other.CopyData(Spiral2D());
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
    angle = other.angle;
    axisCosine = other.axisCosine;
    axisSine = other.axisSine;
    startAbscissa = other.startAbscissa;
    panels = other.panels;
    kink = other.kink;
    panelsToKink = other.panelsToKink;
    end = other.end;
}

// Takes the law from the public fields.
void Spiral2D::MakeWhole() {
    law = Law{type, CurvatureOf(startRadius), CurvatureOf(endRadius), length};
    lawStart = 0.0;
    Update();
}

bool Spiral2D::IsUsable() const {
    const bool known = type <= Spiral2DType::Viennese;
    double turn = std::max(std::abs(law.k1), std::abs(law.k2)) * law.length;
    if (law.shift != 0.0) turn += mostVienneseBend * std::abs(law.shift) / law.length;
    return known && length >= 0.0 && (law.shift == 0.0 || std::isfinite(law.GetLargestRate())) &&
           law.length <= detail::largestDouble && turn <= mostTurn && std::isfinite(law.k1) && std::isfinite(law.k2) &&
           std::isfinite(startTangent.NormSquared()) && std::isfinite(start.GetX()) && std::isfinite(start.GetY());
}

void Spiral2D::Update() {
    startTurn = 0.0;
    inflection = -1.0;
    startAbscissa = 0.0;
    panels.clear();
    kink = 0.0;
    panelsToKink = 0;
    angle = startTangent.GetAngle().GetRadians();
    axisCosine = std::cos(angle);
    axisSine = std::sin(angle);
    usable = IsUsable() && (!law.IsParabola() || law.scale > 0.0 || law.SolveCubic());
    if (usable) startTurn = law.GetTurn(lawStart);
    if (usable && law.IsParabola()) {
        startAbscissa = law.GetAbscissa(lawStart);
        const double toAxis = -law.side * std::atan(startAbscissa * startAbscissa);
        axisCosine = std::cos(angle + toAxis);
        axisSine = std::sin(angle + toAxis);
    }
    if (usable && length > 0.0) {
        const double first = law.GetCurvature(lawStart);
        const double last = law.GetCurvature(lawStart + length);
        if ((first < 0.0 && last > 0.0) || (first > 0.0 && last < 0.0)) {
            inflection = detail::BracketedNewton(0.0, length, [&](double station) {
                const double curvature = law.GetCurvature(lawStart + station);
                return detail::ValueAndSlope{first < 0.0 ? curvature : -curvature, 0.0};
            });
        }
        if (!law.IsParabola()) {
            double turn = std::max(std::abs(first), std::abs(last)) * length;
            // A bend before it comes in parts is sharpest inside.
            if (law.shift != 0.0) turn += mostVienneseBend * std::abs(law.shift) / law.length * (length / law.length);
            const double longest = length / std::max(leastPanels, turn / turnPerPanel);
            const double middle = 0.5 * law.length - lawStart;
            if (type == Spiral2DType::Biquadratic && middle > 0.0 && middle < length) kink = middle;
            AppendPanels(0.0, kink, longest);
            panelsToKink = panels.size();
            AppendPanels(kink, length, longest);
        }
    }
    end = start;
    if (!usable) return;
    const detail::CurveState at = Evaluator(*this).At(length);
    end += Vec2D(at.x, at.y);
}

Spiral2D::Position Spiral2D::Panel::Sum(double t) const {
    const double square = t * t;
    Position even = powers[terms - 2];
    Position odd = powers[terms - 1];
    for (std::size_t i = terms - 2; i >= 2; i -= 2) {
        even = {even.x * square + powers[i - 2].x, even.y * square + powers[i - 2].y};
        odd = {odd.x * square + powers[i - 1].x, odd.y * square + powers[i - 1].y};
    }
    return {even.x + t * odd.x, even.y + t * odd.y};
}

Spiral2D::Position Spiral2D::Panel::At(double station) const { return Sum((station - middle) * perHalf); }

// With w = (cos, sin) of the direction and r its rate of turning, w' is r times w turned left: the power series of r
// gives that of w term by term, and w integrated is the position.
void Spiral2D::AppendPanels(double from, double to, double longest) {
    if (!(to > from)) return;
    const auto count = static_cast<double>(std::max(std::int64_t{1}, detail::NumberOfParts(to - from, longest)));
    const double half = 0.5 * ((to - from) / count);
    const double perHalf = 1.0 / half;
    Position joint;
    if (!panels.empty()) joint = panels.back().Sum(1.0);
    if (panels.empty()) panels.reserve(static_cast<std::size_t>(count));
    for (double i = 0.0; i < count; ++i) {
        Panel& panel = panels.emplace_back();
        panel.middle = from + (2.0 * i + 1.0) * half;
        panel.perHalf = std::isfinite(perHalf) ? perHalf : 0.0;  // too short for a second point
        const double inLaw = lawStart + panel.middle;
        RateSeries rate = ShapeSeries(law.type, inLaw / law.length, half / law.length);
        for (double& term : rate.terms) term *= half * (law.k2 - law.k1);
        rate.terms[0] += half * law.k1;
        if (law.shift != 0.0) {
            const RateSeries f = ShapeSeries(law.type, inLaw / law.length, half / law.length);
            for (std::size_t n = 2; n < f.size; ++n) {
                rate.terms[n - 2] -= law.shift / half * static_cast<double>(n * (n - 1)) * f.terms[n];
            }
        }
        const double direction = law.GetTurn(inLaw) - startTurn;
        std::array<Position, Panel::terms> w;
        w[0] = {std::cos(direction), std::sin(direction)};
        for (std::size_t n = 0; n + 1 < Panel::terms; ++n) {
            const double perNext = 1.0 / (static_cast<double>(n) + 1.0);
            panel.powers[n + 1] = {half * perNext * w[n].x, half * perNext * w[n].y};
            Position sum;
            for (std::size_t j = 0; j <= n && j < rate.size; ++j) {
                sum.x -= rate.terms[j] * w[n - j].y;
                sum.y += rate.terms[j] * w[n - j].x;
            }
            w[n + 1] = {sum.x * perNext, sum.y * perNext};
        }
        const Position atStart = panel.Sum(-1.0);
        panel.powers[0] = {joint.x - atStart.x, joint.y - atStart.y};
        joint = panel.Sum(1.0);
    }
}

const Spiral2D::Panel& Spiral2D::PanelAt(double station) const {
    const bool isBefore = station < kink;
    const std::size_t first = isBefore ? 0 : panelsToKink;
    const std::size_t last = isBefore ? panelsToKink - 1 : panels.size() - 1;
    const double parts = (station - panels[first].middle) * panels[first].perHalf;  // -1 where the first one starts
    const double index = std::floor(0.5 * (parts + 1.0));
    if (!(index > 0.0)) return panels[first];
    return index < static_cast<double>(last - first) ? panels[first + static_cast<std::size_t>(index)] : panels[last];
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
           equal(law.length, other.law.length) && equal(law.shift, other.law.shift);
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
        double whole = law.length;
        for (const double turning : law.GetTurningPoints()) {
            if (turning >= lawStart + length * (1.0 - 1e-12)) whole = std::min(whole, turning);
        }
        longest.length = whole - lawStart;
        longest.endRadius = RadiusOf(whole < law.length ? law.GetCurvature(whole) : law.k2);
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
