#include "kalvio/curves/Clothoid.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/TransitionCurve.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>
#include <span>
#include <type_traits>

namespace Kalvio::Math {

// Notation: A = parameter, l = length from the inflection point, s = station (length from the start), tau = tangent
// angle l^2 / (2 A^2); a 1 or 2 suffix = start or end. grow: the curve runs away from its inflection point.

namespace {

constexpr double extensionTurn = 2.0;  // tau [rad] up to which a clothoid is extended: error 1.3e-8 A
constexpr double mostTurn = 15.0;      // tau [rad] beyond which the first omitted term no longer bounds the series

// Inclusive; a NaN is not zero.
bool IsZero(double value, double tolerance = detail::numericalZero) { return std::abs(value) <= std::abs(tolerance); }

// Coefficients 1 / ((4n+1) (2n)!) of x and 1 / ((4n+3) (2n+1)!) of y, n = 0, 1 ..., while the factorials are doubles.
struct SeriesTable {
    static constexpr int size = 85;
    std::array<double, size> x{};
    std::array<double, size> y{};

    constexpr SeriesTable() {
        double factorial = 1.0;
        for (int n = 0; n < size; ++n) {
            if (n > 0) factorial *= (2.0 * n - 1.0) * (2.0 * n);
            const auto i = static_cast<std::size_t>(n);
            x[i] = 1.0 / ((4.0 * n + 1.0) * factorial);
            y[i] = 1.0 / ((4.0 * n + 3.0) * (factorial * (2.0 * n + 1.0)));
        }
    }
};

constexpr SeriesTable series;

struct LocalPoint {
    double x = 0.0;
    double y = 0.0;
};

// The two sums of the series, by powers of -tau^2 from the first term on: the local point at the length l is
// (l x, l tau y), and l = A sqrt(2 tau). A `Count` known at compile time is unrolled.
template <class Count>
inline LocalPoint SumTerms(double tau, Count count) {
    const double factor = -tau * tau;
    double power = 1.0;
    double x = 0.0;
    double y = 0.0;
    for (std::size_t n = 0; n < count; ++n) {
        x += power * series.x[n];
        y += power * series.y[n];
        power *= factor;
    }
    return {x, y};
}

using DefaultCount = std::integral_constant<std::size_t, Clothoid::defaultTerms>;

inline LocalPoint SumTerms(double tau, int terms) {
    if (terms == Clothoid::defaultTerms) return SumTerms(tau, DefaultCount());
    return SumTerms(tau, static_cast<std::size_t>(std::clamp(terms, 0, SeriesTable::size)));
}

constexpr double smallTurn = 0.5;  // [rad]; up to it the series of SmallTurn are exact to rounding

// (cos, sin) of a small angle.
inline LocalPoint SmallTurn(double angle) {
    constexpr double inverse[] = {1.0 / 87178291200.0, 1.0 / 6227020800.0,
                                  1.0 / 479001600.0,   1.0 / 39916800.0,
                                  1.0 / 3628800.0,     1.0 / 362880.0,
                                  1.0 / 40320.0,       1.0 / 5040.0,
                                  1.0 / 720.0,         1.0 / 120.0,
                                  1.0 / 24.0,          1.0 / 6.0,
                                  1.0 / 2.0,           1.0};  // of 14!, 13! ... 1!
    const double squared = angle * angle;
    double cosine = inverse[0];
    double sine = inverse[1];
    for (std::size_t i = 2; i < std::size(inverse); i += 2) {
        cosine = inverse[i] - squared * cosine;
        sine = inverse[i + 1] - squared * sine;
    }
    return {1.0 - squared * cosine, angle * sine};
}

// Bound of what the terms beyond the seventh add to x and y together, for A = 1 and tau below `mostTurn`.
double SeriesError(double tau) {
    constexpr std::size_t n = Clothoid::defaultTerms;
    const double omitted = std::sqrt(2.0 * tau) * std::pow(tau, 2.0 * n) * (series.x[n] + tau * series.y[n]);
    return omitted / (1.0 - tau * tau / ((2.0 * n + 1.0) * (2.0 * n + 2.0)));
}

}  // namespace

// Evaluates the closed form at stations, relative to the start point.
class Clothoid::Evaluator {
public:
    explicit Evaluator(const Clothoid& evaluated, int seriesTerms = defaultTerms)
        : frame(evaluated.frame),
          start(evaluated.start),
          end(evaluated.end),
          aSquared(evaluated.parameter * evaluated.parameter),
          terms(seriesTerms) {
        if (terms == defaultTerms) return;
        const LocalPoint first = SumTerms(Tau(frame.length1), terms);
        frame.x1 = frame.length1 * first.x;
        frame.y1 = frame.length1 * Tau(frame.length1) * first.y;
        const LocalPoint last = PositionAt(LengthFromInflection(frame.length));
        end = start + Vec2D(last.x, last.y);
    }

    const Point2D& GetStart() const { return start; }
    const Point2D& GetEnd() const { return end; }
    double GetLength() const { return frame.length; }
    double LengthFromInflection(double station) const { return frame.length1 + frame.xSign * station; }
    double Tau(double l) const { return l * l / frame.twiceASquared; }

    LocalPoint PositionAt(double l) const {
        const double tau = Tau(l);
        return Place(l, tau, SumTerms(tau, terms));
    }
    double SquaredDistance(double station, const Vec2D& query) const {
        const LocalPoint at = PositionAt(LengthFromInflection(station));
        const double dx = at.x - query.GetX();
        const double dy = at.y - query.GetY();
        return dx * dx + dy * dy;
    }
    detail::CurveState At(double station) const {
        const double l = LengthFromInflection(station);
        const double tau = Tau(l);
        const LocalPoint at = Place(l, tau, SumTerms(tau, terms));
        const double direction = Direction(tau);
        return {at.x, at.y, std::cos(direction), std::sin(direction), Curvature(l)};
    }
    double GetDirection(double station) const { return Direction(Tau(LengthFromInflection(station))); }
    double GetCurvature(double station) const { return Curvature(LengthFromInflection(station)); }
    double GetLargestRate() const { return aSquared > 0.0 ? 1.0 / aSquared : 0.0; }
    double GetInflection() const { return -1.0; }  // at most an end lies there

    /// Calls emit(point) at every station.
    template <class Emit>
    void EmitPoints(std::span<const double> stations, Emit&& emit) const {
        ForEachBlock(stations, [&](const Block& block, std::size_t count) {
            for (std::size_t k = 0; k < count; ++k) emit(block.PointAt(*this, k));
        });
    }
    /// Calls emit(sample) at every station.
    template <class Emit>
    void EmitSamples(std::span<const double> stations, Emit&& emit) const {
        ForEachBlock(stations, [&](Block& block, std::size_t count) {
            ComputeTangents(block);
            for (std::size_t k = 0; k < count; ++k) {
                emit(PolylineElementPoint{block.PointAt(*this, k), Vec2D(block.cosine[k], block.sine[k]),
                                          block.station[k]});
            }
        });
    }

private:
    // Many stations are evaluated some at a time, so that the arithmetic of neighbours overlaps. Positions are those
    // of `At` to the last digit.
    struct Block {
        static constexpr std::size_t size = 8;

        Point2D PointAt(const Evaluator& curve, std::size_t k) const {
            return detail::PointOf(curve, station[k], Vec2D(x[k], y[k]));
        }

        std::array<double, size> station, l, tau, x, y, cosine, sine;
    };

    template <class Visit>
    void ForEachBlock(std::span<const double> stations, Visit&& visit) const {
        Block block;
        for (std::size_t first = 0; first < stations.size(); first += Block::size) {
            const std::size_t count = std::min(Block::size, stations.size() - first);
            for (std::size_t k = 0; k < Block::size; ++k) block.station[k] = stations[first + std::min(k, count - 1)];
            if (terms == defaultTerms) {
                ComputePositions(block, DefaultCount());
            } else {
                ComputePositions(block, terms);
            }
            visit(block, count);
        }
    }
    template <class Count>
    void ComputePositions(Block& block, Count count) const {
        for (std::size_t k = 0; k < Block::size; ++k) {
            block.l[k] = LengthFromInflection(block.station[k]);
            block.tau[k] = Tau(block.l[k]);
            const LocalPoint at = Place(block.l[k], block.tau[k], SumTerms(block.tau[k], count));
            block.x[k] = at.x;
            block.y[k] = at.y;
        }
    }
    // The direction of one station, turned to the others by small angles.
    void ComputeTangents(Block& block) const {
        constexpr std::size_t middle = Block::size / 2;
        if (!(std::abs(block.tau.back() - block.tau.front()) <= smallTurn)) {
            for (std::size_t k = 0; k < Block::size; ++k) {
                block.cosine[k] = std::cos(Direction(block.tau[k]));
                block.sine[k] = std::sin(Direction(block.tau[k]));
            }
            return;
        }
        const double cosine = std::cos(Direction(block.tau[middle]));
        const double sine = std::sin(Direction(block.tau[middle]));
        const double turn = frame.xSign * frame.ySign / frame.twiceASquared;
        for (std::size_t k = 0; k < Block::size; ++k) {
            const LocalPoint by = SmallTurn(turn * (block.l[k] - block.l[middle]) * (block.l[k] + block.l[middle]));
            block.cosine[k] = cosine * by.x - sine * by.y;
            block.sine[k] = sine * by.x + cosine * by.y;
        }
    }
    LocalPoint Place(double l, double tau, const LocalPoint& sums) const {
        const double dx = frame.xSign * (l * sums.x - frame.x1);
        const double dy = frame.ySign * (l * tau * sums.y - frame.y1);
        return {dx * frame.cosine - dy * frame.sine, dx * frame.sine + dy * frame.cosine};
    }
    double Direction(double tau) const { return frame.angle + frame.xSign * frame.ySign * tau; }
    double Curvature(double l) const { return aSquared > 0.0 ? frame.ySign * l / aSquared : 0.0; }

    Frame frame;
    Point2D start;
    Point2D end;
    double aSquared;
    int terms;
};

Clothoid::Clothoid() { Update(); }

Clothoid::Clothoid(double startRadiusValue, double endRadiusValue, double parameterValue, const Point2D& from,
                   const Vec2D& tangent)
    : start(from),
      startTangent(tangent),
      startRadius(startRadiusValue),
      endRadius(endRadiusValue),
      parameter(parameterValue) {
    Update();
}

Clothoid::Clothoid(const Clothoid& other) : IPolyline2DElement(other) { CopyData(other); }

Clothoid& Clothoid::operator=(const Clothoid& other) {
    CopyData(other);
    return *this;
}

void Clothoid::CopyData(const Clothoid& other) {
    start = other.start;
    end = other.end;
    requestedEnd = other.requestedEnd;
    startTangent = other.startTangent;
    startRadius = other.startRadius;
    endRadius = other.endRadius;
    parameter = other.parameter;
    frame = other.frame;
}

void Clothoid::Update() {
    end = ComputePointFromRadius(endRadius, defaultTerms);
    frame = ComputeFrame();
}

Clothoid::Frame Clothoid::ComputeFrame() const {
    const double length1 = std::abs(GetLength(startRadius));
    const double length2 = std::abs(GetLength(endRadius));
    Frame f;
    f.length = GetLength();
    f.length1 = length1;
    f.xSign = length2 > length1 ? 1.0 : -1.0;
    f.ySign = startRadius < 0.0 || endRadius < 0.0 ? -1.0 : 1.0;
    const double tau1 = ComputeTauFromRadius(startRadius, parameter, detail::numericalZero);
    const double tau2 = ComputeTauFromRadius(endRadius, parameter, detail::numericalZero);
    // The rotation angle at tau1, also where equal radii give its sign rule nothing to go by.
    f.angle = ComputeRotationAngle(0.0) - f.xSign * f.ySign * tau1;
    f.cosine = std::cos(f.angle);
    f.sine = std::sin(f.angle);
    const double aSquared = parameter * parameter;
    f.twiceASquared = aSquared > 0.0 ? 2.0 * aSquared : std::numeric_limits<double>::infinity();
    const double tau = length1 * length1 / f.twiceASquared;
    const LocalPoint first = SumTerms(tau, defaultTerms);
    f.x1 = length1 * first.x;
    f.y1 = length1 * tau * first.y;
    const bool opposite = !IsZero(startRadius) && !IsZero(endRadius) && (startRadius < 0.0) != (endRadius < 0.0);
    f.usable = !opposite && parameter >= 0.0 && tau1 <= mostTurn && tau2 <= mostTurn && std::isfinite(f.angle) &&
               std::isfinite(end.GetX()) && std::isfinite(end.GetY()) && std::isfinite(start.GetX()) &&
               std::isfinite(start.GetY()) && std::isfinite(f.length);
    return f;
}

MathTypes Clothoid::GetType() const { return MathTypes::Clothoid; }

BoundingBox2D Clothoid::GetBoundingBox2D() const {
    if (!frame.usable) {
        return {Point2D(std::min(start.GetX(), end.GetX()), std::min(start.GetY(), end.GetY())),
                Point2D(std::max(start.GetX(), end.GetX()), std::max(start.GetY(), end.GetY()))};
    }
    const Evaluator curve(*this);
    const double furthest = std::max(frame.length1, curve.LengthFromInflection(frame.length));
    return detail::BoxOfElement(curve, 2.0 * parameter * SeriesError(curve.Tau(furthest)));
}

BoundingBox3D Clothoid::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Clothoid::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline2D) return other.IsEqualTo(*this, tolerance);
    return other.GetType() == MathTypes::Clothoid && IsEqualTo(static_cast<const Clothoid&>(other), tolerance);
}

bool Clothoid::IsEqualTo(const Clothoid& other, double tolerance) const {
    return start.IsEqualTo(other.start, tolerance) && startTangent.IsEqualTo(other.startTangent, tolerance) &&
           std::abs(startRadius - other.startRadius) < tolerance && std::abs(endRadius - other.endRadius) < tolerance &&
           std::abs(parameter - other.parameter) < tolerance;
}

Clothoid* Clothoid::Clone() const { return new Clothoid(*this); }

void Clothoid::Reverse() {
    Vec2D tangent = GetEndTangent();
    if (frame.usable) {
        const detail::CurveState at = Evaluator(*this).At(GetLength());
        tangent.SetCoordinates(at.cosine, at.sine);
    }
    *this = Clothoid(0.0 - endRadius, 0.0 - startRadius, parameter, end, -tangent);
}

double Clothoid::GetLength() const { return std::abs(GetLength(endRadius) - GetLength(startRadius)); }

bool Clothoid::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    if (!frame.usable) return false;
    const Evaluator curve(*this);
    const double length = GetLength();
    const auto radiusAt = [&](double station) { return RadiusAt(curve.LengthFromInflection(station)); };
    return detail::BreakElement(
        *this, breaks, startStation, out, modifyThis, tolerances.UserTolerance(),
        [&](const detail::ElementCut& from, const detail::ElementCut& to) {
            const double last = to.station < length ? radiusAt(to.station) : endRadius;
            if (!(from.station > 0.0))
                return std::make_unique<Clothoid>(startRadius, last, parameter, start, startTangent);
            const PolylineElementPoint first = detail::SampleOf(curve, from.station);
            return std::make_unique<Clothoid>(radiusAt(from.station), last, parameter, first.point, first.tangent);
        });
}

bool Clothoid::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    Vec2D tangent;
    return GetLengthAndTangent(point, length, tangent, tolerances.UserTolerance());
}

bool Clothoid::ExtendStart(const Point2D& point, const Tolerances& tolerances) {
    return detail::ExtendStartOf(*this, point, tolerances);
}

bool Clothoid::ExtendEnd(const Point2D& point, const Tolerances& tolerances) {
    if (!frame.usable || !(GetLength() > 0.0)) return false;
    Clothoid whole(*this);
    if (frame.xSign > 0.0) {
        const double longest = std::max(parameter * std::sqrt(2.0 * extensionTurn), std::abs(GetLength(endRadius)));
        whole.SetEndRadius(RadiusAt(longest));
    } else {
        whole.SetEndRadius(0.0);
    }
    PolylineElementPoint foot;
    if (!whole.GetNearestPoint(point, 0.0, whole.GetLength(), foot)) return false;
    const double user = tolerances.UserTolerance();
    if (!(std::abs((point - foot.point).DotProduct(foot.tangent)) <= user) || !(foot.station > user)) return false;
    const double fromInflection = Evaluator(*this).LengthFromInflection(foot.station);
    SetEndRadius(fromInflection > user ? RadiusAt(fromInflection) : 0.0);
    return true;
}

IGeometry* Clothoid::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendElements(*this, *other);
}

const Point2D& Clothoid::GetEnd(int terms) {
    requestedEnd = ComputePointFromRadius(endRadius, terms);
    return requestedEnd;
}

bool Clothoid::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    Vec2D tangent;
    return GetLengthAndTangent(point, length, tangent, tolerance);
}

bool Clothoid::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    double fromStart = 0.0;
    if (!GetLengthFromStartPoint(point, fromStart, tolerance)) return false;
    length = GetLength() - fromStart;
    return true;
}

bool Clothoid::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthAndTangent(point, length, tangent, tolerances.UserTolerance());
}

bool Clothoid::GetLengthAndTangent(const Point2D& point, double& length, Vec2D& tangent, double tolerance) const {
    constexpr int intervals = 20;
    constexpr int mostPasses = 100;
    constexpr double unitSpeedTurn = 4.0;  // tau [rad] below which the series is a curve of unit speed
    if (!frame.usable) return false;
    const Evaluator curve(*this);
    const Vec2D query = point - start;
    double low = 0.0;
    double high = GetLength();
    const bool unitSpeed = curve.Tau(std::max(frame.length1, curve.LengthFromInflection(high))) <= unitSpeedTurn;
    for (int pass = 0; pass < mostPasses; ++pass) {
        const double step = (high - low) / intervals;
        const auto station = [&](int i) { return i == intervals ? high : low + i * step; };
        int nearest = 0;
        double squared = std::numeric_limits<double>::infinity();
        for (int i = 0; i <= intervals; ++i) {
            const double candidate = curve.SquaredDistance(station(i), query);
            if (candidate < squared) {
                squared = candidate;
                nearest = i;
            }
        }
        const double distance = std::sqrt(squared);
        if (distance < tolerance) {
            const detail::CurveState at = curve.At(station(nearest));
            length = station(nearest);
            tangent.SetCoordinates(at.cosine, at.sine);
            return true;
        }
        if (step < tolerance) return false;
        // No point of the curve is further than half a step from a sample: refining finds nothing this far away.
        if (unitSpeed && distance > step + tolerance) return false;
        const double first = station(std::max(nearest - 1, 0));
        high = station(std::min(nearest + 1, intervals));
        low = first;
    }
    return false;
}

Point2D Clothoid::GetNearestPoint(const Point2D& point, const Tolerances&) const {
    PolylineElementPoint nearest;
    return GetNearestPoint(point, 0.0, GetLength(), nearest) ? nearest.point : start;
}

bool Clothoid::GetNearestPoint(const Point2D& point, double from, double to, PolylineElementPoint& nearest) const {
    return frame.usable && detail::NearestOnCurve(Evaluator(*this), point, from, to, nearest);
}

bool Clothoid::GetNormalPoint(const Point2D& point, double from, double to, double tolerance,
                              PolylineElementPoint& foot) const {
    return frame.usable && detail::FootOnCurve(Evaluator(*this), point, from, to, tolerance, foot);
}

void Clothoid::SetStart(const Point2D& value) {
    start = value;
    Update();
}

void Clothoid::SetStartTangent(const Vec2D& value) {
    startTangent = value;
    Update();
}

void Clothoid::SetStartRadius(double value) {
    startRadius = value;
    Update();
}

void Clothoid::SetEndRadius(double value) {
    endRadius = value;
    Update();
}

void Clothoid::SetParameter(double value) {
    parameter = value;
    Update();
}

Vec2D Clothoid::GetEndTangent() const {
    const double tau1 = ComputeTauFromRadius(startRadius, parameter, detail::numericalZero);
    const double tau2 = ComputeTauFromRadius(endRadius, parameter, detail::numericalZero);
    int xSign = 1;
    int ySign = 1;
    ComputeXYSigns(startRadius, endRadius, tau1, tau2, xSign, ySign);
    const double direction = ComputeRotationAngle(tau1) + xSign * ySign * tau2;
    return {std::cos(direction), std::sin(direction)};
}

bool Clothoid::MakePointAndTangentAt(double station, PolylineElementPoint& result) const {
    return frame.usable && detail::SampleAt(Evaluator(*this), station, result);
}

bool Clothoid::MakeOffsetAndTangentAt(double station, Vec2D& offset, Vec2D& tangent) const {
    return frame.usable && detail::OffsetAt(Evaluator(*this), station, offset, tangent);
}

double Clothoid::GetCurvature(double station) const {
    return frame.usable ? Evaluator(*this).GetCurvature(station) : 0.0;
}

Point2D Clothoid::ComputePoint(double tau, int terms) const {
    const LocalPoint sums = SumTerms(tau, terms);
    const double scale = std::sqrt(2.0 * tau);
    return {parameter * (scale * sums.x), parameter * (scale * tau * sums.y)};
}

Point2D Clothoid::ComputePointFromRadius(double radius, int terms) const {
    if (radius == startRadius) return start;
    double tau1 = 0.0, length1 = 0.0, tau = 0.0, length = 0.0;
    ComputeTauAndLength(startRadius, parameter, tau1, length1, detail::numericalZero);
    ComputeTauAndLength(radius, parameter, tau, length, detail::numericalZero);
    const Point2D first = ComputePoint(tau1, terms);
    const Point2D local = ComputePoint(tau, terms);
    int xSign = 1;
    int ySign = 1;
    ComputeXYSigns(startRadius, radius, tau1, tau, xSign, ySign);
    const auto size = [](double r) { return IsZero(r) ? detail::largestDouble : std::abs(r); };
    const double difference = size(radius) - size(startRadius);
    const double towardsEnd = Numbers::Sign(size(endRadius) - size(startRadius));
    if (difference != 0.0 && towardsEnd != Numbers::Sign(difference)) xSign = -xSign;
    const double angle = ComputeRotationAngle(tau1);
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double dx = xSign * (local.GetX() - first.GetX());
    const double dy = ySign * (local.GetY() - first.GetY());
    return start + Vec2D(dx * cosine - dy * sine, dx * sine + dy * cosine);
}

double Clothoid::ComputeRotationAngle(double tau) const {
    // A straight end counts as the largest radius of the other end's side.
    const auto sided = [](double radius, double other) {
        return IsZero(radius) ? Numbers::Sign(other) * detail::largestDouble : radius;
    };
    const bool bothStraight = IsZero(startRadius) && IsZero(endRadius);
    const bool falling = sided(startRadius, endRadius) > sided(endRadius, startRadius) && !bothStraight;
    // Sign and magnitude apart: a tangent due west with y = -0.0 points at +pi.
    const double toTangent = std::atan2(std::abs(startTangent.GetY()), startTangent.GetX());
    return Numbers::Sign(startTangent.GetY()) * toTangent + (falling ? -tau : tau);
}

void Clothoid::ComputeStartAndEndTausAndLengths(double& tau1, double& length1, double& tau2, double& length2,
                                                double tolerance) const {
    ComputeTauAndLength(startRadius, parameter, tau1, length1, tolerance);
    ComputeTauAndLength(endRadius, parameter, tau2, length2, tolerance);
}

void Clothoid::ComputeXYSigns(int& xSign, int& ySign) const {
    ComputeXYSigns(startRadius, endRadius, ComputeTauFromRadius(startRadius, parameter, detail::numericalZero),
                   ComputeTauFromRadius(endRadius, parameter, detail::numericalZero), xSign, ySign);
}

Vec2D Clothoid::ComputeTangentFromLength(double length) const {
    return ComputeTangentAtLength(length, parameter, detail::numericalZero);
}

Vec2D Clothoid::ComputeTangentFromRadius(double radius) const {
    return ComputeTangentAtRadius(radius, parameter, detail::numericalZero);
}

double Clothoid::GetLengthFromStart(double radius) const { return GetLength(radius) - GetLength(startRadius); }

double Clothoid::GetRadiusFromStart(double station) const {
    const double first = GetLength(startRadius);
    return GetRadius(startRadius > endRadius ? first + station : first - station);
}

double Clothoid::GetRadiusFromEnd(double station) const {
    const double last = GetLength(endRadius);
    return GetRadius(startRadius > endRadius ? last - station : last + station);
}

Matrix2D Clothoid::GetLocalToWorldCoordinatesMatrix() const {
    const double xx = frame.xSign * frame.cosine;
    const double xy = frame.xSign * frame.sine;
    const double yx = -frame.ySign * frame.sine;
    const double yy = frame.ySign * frame.cosine;
    const double rows[3][3] = {
        {xx, xy, 0.0},
        {yx, yy, 0.0},
        {start.GetX() - (frame.x1 * xx + frame.y1 * yx), start.GetY() - (frame.x1 * xy + frame.y1 * yy), 1.0}};
    return Matrix2D(rows);
}

Matrix2D Clothoid::GetWorldToLocalCoordinatesMatrix() const {
    const double xx = frame.xSign * frame.cosine;
    const double xy = frame.xSign * frame.sine;
    const double yx = -frame.ySign * frame.sine;
    const double yy = frame.ySign * frame.cosine;
    const double rows[3][3] = {
        {xx, yx, 0.0},
        {xy, yy, 0.0},
        {frame.x1 - (start.GetX() * xx + start.GetY() * xy), frame.y1 - (start.GetX() * yx + start.GetY() * yy), 1.0}};
    return Matrix2D(rows);
}

bool Clothoid::MakeLineString(LineString2D& lineString, double chordTolerance, int terms) const {
    return EmitPoints(StationsForHeight(0.0, frame.length, chordTolerance), terms,
                      [&](const Point2D& point) { lineString.AppendPoint(point); });
}

bool Clothoid::MakeLineString(double from, double to, LineString2D& lineString, double step, int terms) const {
    return EmitPoints(ConstantStations(from, to, step), terms,
                      [&](const Point2D& point) { lineString.AppendPoint(point); });
}

bool Clothoid::MakeLineString(double from, double to, std::list<double>& lengths, std::list<Point2D>& points,
                              double step, int terms) const {
    const std::vector<double> stations = ConstantStations(from, to, step);
    lengths.insert(lengths.end(), stations.begin(), stations.end());
    return EmitPoints(stations, terms, [&](const Point2D& point) { points.push_back(point); });
}

bool Clothoid::MakePoints(double from, double to, std::list<Point2D>& points, double step, int terms) const {
    return EmitPoints(ConstantStations(from, to, step), terms, [&](const Point2D& point) { points.push_back(point); });
}

bool Clothoid::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points, double step,
                                     int terms) const {
    return CreatePolylineElements(ConstantStations(from, to, step), terms, points);
}

bool Clothoid::MakePointsAndTangentsAt(std::span<const double> stations,
                                       std::vector<PolylineElementPoint>& points) const {
    if (!frame.usable) return false;
    std::vector<double> clamped(stations.begin(), stations.end());
    for (double& station : clamped) {
        if (!(station >= -detail::numericalZero && station <= frame.length + detail::numericalZero)) return false;
        station = std::clamp(station, 0.0, frame.length);
    }
    CreatePolylineElements(clamped, defaultTerms, points);
    return true;
}

bool Clothoid::MakePointsAndTangents(double from, double to, std::vector<Point2D>& points, std::vector<Vec2D>& tangents,
                                     double step, int terms) const {
    const std::vector<double> stations = ConstantStations(from, to, step);
    Evaluator(*this, terms).EmitSamples(stations, [&](const PolylineElementPoint& sample) {
        points.push_back(sample.point);
        tangents.push_back(sample.tangent);
    });
    return !stations.empty();
}

bool Clothoid::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylineElementPoint>& points,
                                                double height, int terms) const {
    return CreatePolylineElements(StationsForHeight(from, to, height), terms, points);
}

bool Clothoid::CreatePolylineElements(const std::vector<double>& stations, int terms,
                                      std::vector<PolylineElementPoint>& points) const {
    Evaluator(*this, terms).EmitSamples(stations, [&](const PolylineElementPoint& sample) {
        points.push_back(sample);
    });
    return !stations.empty();
}

template <class Emit>
bool Clothoid::EmitPoints(const std::vector<double>& stations, int terms, Emit&& emit) const {
    Evaluator(*this, terms).EmitPoints(stations, emit);
    return !stations.empty();
}

std::vector<double> Clothoid::ConstantStations(double from, double to, double step) const {
    if (!frame.usable) return {};
    return detail::ConstantStations(Evaluator(*this), from, to, step);
}

std::vector<double> Clothoid::StationsForHeight(double from, double to, double height) const {
    if (!frame.usable) return {};
    return detail::StationsForHeight(Evaluator(*this), from, to, height);
}

double Clothoid::RadiusAt(double length) const {
    return length > detail::numericalZero ? frame.ySign * (parameter * parameter / length) : 0.0;
}

double Clothoid::ComputeParameter(double radius, double length) { return std::sqrt(radius * length); }

double Clothoid::ComputeParameter(double r1, double r2, double length) {
    if (IsZero(r1 - r2)) return 0.0;
    if (IsZero(r1)) return std::sqrt(std::abs(r2 * length));
    if (IsZero(r2)) return std::sqrt(std::abs(r1 * length));
    return std::sqrt(std::abs(r1 * r2 * length / (r2 - r1)));
}

double Clothoid::ComputeTauFromLength(double length, double parameterValue, double tolerance) {
    const double squared = parameterValue * parameterValue;
    return IsZero(squared, tolerance) ? 0.0 : length * length / (2.0 * squared);
}

double Clothoid::ComputeTauFromRadius(double radius, double parameterValue, double tolerance) {
    return IsZero(radius, tolerance) ? 0.0 : parameterValue * parameterValue / (2.0 * radius * radius);
}

void Clothoid::ComputeTauAndLength(double radius, double parameterValue, double& tau, double& length,
                                   double tolerance) {
    if (IsZero(radius, tolerance)) return;
    const double squared = parameterValue * parameterValue;
    tau = squared / (2.0 * radius * radius);
    length = squared / radius;
}

void Clothoid::ComputeTauAndRadius(double length, double parameterValue, double& tau, double& radius,
                                   double tolerance) {
    tau = 0.0;
    radius = 0.0;
    const double squared = parameterValue * parameterValue;
    if (IsZero(squared, tolerance) || IsZero(length, tolerance)) return;
    tau = length * length / (2.0 * squared);
    radius = squared / length;
}

double Clothoid::ComputeLength(double radius, double parameterValue) {
    return IsZero(radius) ? 0.0 : parameterValue * parameterValue / radius;
}

double Clothoid::ComputeRadius(double length, double parameterValue) { return ComputeLength(length, parameterValue); }

Vec2D Clothoid::ComputeTangentAtLength(double length, double parameterValue, double tolerance) {
    const double tau = ComputeTauFromLength(length, parameterValue, tolerance);
    return {std::cos(tau), std::sin(tau)};
}

Vec2D Clothoid::ComputeTangentAtRadius(double radius, double parameterValue, double tolerance) {
    const double tau = ComputeTauFromRadius(radius, parameterValue, tolerance);
    return {std::cos(tau), std::sin(tau)};
}

void Clothoid::ComputeXYSigns(double r1, double r2, double tau1, double tau2, int& xSign, int& ySign) {
    xSign = tau1 > tau2 ? -1 : 1;
    ySign = r1 < 0.0 || r2 < 0.0 ? -1 : 1;
}

template <>
bool Geometry::AreEqual(const Clothoid& a, const Clothoid& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
