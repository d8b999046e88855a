#include "kalvio/alignments/AlignmentDesign.h"

#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/CubicParabola.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace Kalvio::Math {

namespace {

using Law = AlignmentDesign::Law;
using FaultKind = AlignmentDesign::FaultKind;

constexpr double touching = 2e-9;              // a length: curves on one tangent overlap by rounding
constexpr double tangency = 1e-9;              // a length: what just touches, by rounding
constexpr double straightOn = 1e-12;           // [rad]: no curve is needed
constexpr double clothoidTurn = 1.0;           // [rad]: the series of `Clothoid` errs by 6e-13 of the parameter
constexpr double mostTurn = 0.5 * detail::pi;  // [rad] of a transition between given curves

// A transition from a tangent onto a circle: what it turns, and the centre seen from its start, along the tangent and
// across.
struct Entry {
    double turn = 0.0;
    double along = 0.0;
    double across = 0.0;
};

std::unique_ptr<IPolyline2DElement> MakeTransition(Law law, double radius, double length, const Point2D& start,
                                                   const Vec2D& tangent) {
    if (law == Law::Clothoid && length <= 2.0 * clothoidTurn * std::abs(radius)) {
        return std::make_unique<Clothoid>(0.0, radius, std::sqrt(std::abs(radius) * length), start, tangent);
    }
    return std::make_unique<Spiral2D>(law, 0.0, radius, length, start, tangent);
}

// @return false where the transition does not exist
bool FindEntry(Law law, double radius, double length, Entry& entry) {
    entry = {0.0, 0.0, radius};
    if (length == 0.0) return true;
    const std::unique_ptr<IPolyline2DElement> transition =
        MakeTransition(law, radius, length, Point2D(), Vec2D(1.0, 0.0));
    Vec2D end;
    Vec2D tangent;
    const bool isCurve = transition->GetType() == MathTypes::Clothoid
                             ? static_cast<const Clothoid&>(*transition).MakeOffsetAndTangentAt(length, end, tangent)
                             : static_cast<const Spiral2D&>(*transition).MakeOffsetAndTangentAt(length, end, tangent);
    if (!isCurve) return false;
    const Vec2D center = end + tangent.GetNormalVector(true) * radius;
    // The angle of the tangent, unwound: transitions may turn by more than half a circle.
    const double expected = 0.5 * length / radius;
    const double angle = std::atan2(tangent.GetY(), tangent.GetX());
    entry = {angle + detail::twoPi * std::round((expected - angle) / detail::twoPi), center.GetX(), center.GetY()};
    return true;
}

// The curve of a corner: where it touches its tangents, as lengths from the corner.
struct Rounding {
    double in = 0.0;
    double out = 0.0;
    double sweep = 0.0;  // signed, of the arc
    double side = 0.0;   // 1 left, -1 right, 0 no curve
};

struct Leg {
    Vec2D direction;
    double length = 0.0;
};

// A length is missing where `amount` is positive.
FaultKind Round(const AlignmentDesign::Corner& corner, const Vec2D& in, const Vec2D& out, Rounding& rounding,
                double& amount) {
    const double turn = std::atan2(in.PerpDotProduct(out), in.DotProduct(out));
    const double angle = std::abs(turn);
    if (angle <= straightOn && corner.radius == 0.0) return FaultKind::None;
    if (!(corner.radius > 0.0) || corner.lengthIn < 0.0 || corner.lengthOut < 0.0) return FaultKind::NotACurve;
    if (angle <= straightOn && corner.lengthIn == 0.0 && corner.lengthOut == 0.0) return FaultKind::None;
    if (angle >= detail::pi - detail::numericalZero) return FaultKind::TurnsBack;
    Entry first;
    Entry last;
    if (!FindEntry(corner.law, corner.radius, corner.lengthIn, first) ||
        !FindEntry(corner.law, corner.radius, corner.lengthOut, last)) {
        return FaultKind::NotACurve;
    }
    const double sweep = angle - first.turn - last.turn;
    if (sweep * corner.radius < -touching) {
        amount = -sweep * corner.radius;
        return FaultKind::Transitions;
    }
    // The centre lies first.across from the one tangent and last.across from the other one.
    const double half = std::tan(0.5 * angle);
    const double sine = std::sin(angle);
    rounding.in = first.along + first.across * half + (last.across - first.across) / sine;
    rounding.out = last.along + last.across * half + (first.across - last.across) / sine;
    rounding.side = turn < 0.0 ? -1.0 : 1.0;
    rounding.sweep = rounding.side * std::max(sweep, 0.0);
    return FaultKind::None;
}

void AppendRounding(Polyline2D& plan, const AlignmentDesign::Corner& corner, const Rounding& rounding, const Vec2D& in,
                    const Vec2D& out) {
    const double radius = rounding.side * corner.radius;
    Point2D at = corner.point - in * rounding.in;
    const Point2D end = corner.point + out * rounding.out;
    double heading = 0.0;  // turned so far, from the first tangent
    std::unique_ptr<IPolyline2DElement> last;
    if (corner.lengthOut > 0.0) {  // built backwards from the tangent, so that it ends there
        last = MakeTransition(corner.law, -radius, corner.lengthOut, end, -out);
        last->Reverse();
    }
    if (corner.lengthIn > 0.0) {
        std::unique_ptr<IPolyline2DElement> first = MakeTransition(corner.law, radius, corner.lengthIn, at, in);
        at = first->GetEnd();
        Entry entry;
        (void)FindEntry(corner.law, corner.radius, corner.lengthIn, entry);
        heading = rounding.side * entry.turn;
        plan.AppendElement(first.release());
    }
    if (std::abs(rounding.sweep) * corner.radius > touching) {
        const Vec2D tangent(in.GetX() * std::cos(heading) - in.GetY() * std::sin(heading),
                            in.GetX() * std::sin(heading) + in.GetY() * std::cos(heading));
        plan.AppendElement(new Arc2D(at, at + tangent.GetNormalVector(true) * radius, Angle(rounding.sweep)));
    }
    if (last) plan.AppendElement(last.release());
}

// The length at which a measure of the transition, growing with it, has the wanted value.
// @param misfit  how far the value is out of what lengths up to `longest` reach
template <class Measure>
bool SolveLength(double longest, double wanted, Measure&& measure, double& length, double& misfit) {
    double low = 0.0;
    double high = 0.0;
    misfit = 0.0;
    if (!std::isfinite(wanted) || !measure(0.0, low)) return false;
    constexpr int mostCuts = 40;  // cubic parabolas are shorter
    for (int cuts = 0; !measure(longest, high); longest *= 0.9) {
        if (++cuts > mostCuts) return false;
    }
    if (!std::isfinite(low) || !std::isfinite(high)) return false;
    if (!(wanted > std::min(low, high) && wanted < std::max(low, high))) {
        const double least = std::min(low, high);
        misfit = wanted <= least ? wanted - least : wanted - std::max(low, high);
        return false;
    }
    const double sign = high > low ? 1.0 : -1.0;
    bool isCurve = true;
    length = detail::BracketedNewton(0.0, longest, [&](double l) {
        double value = 0.0;
        isCurve = isCurve && measure(l, value);
        return detail::ValueAndSlope{sign * (value - wanted), 0.0};
    });
    return isCurve;
}

// The centres of the circles at both ends of a transition from the origin along x.
struct Centers {
    Vec2D from;
    Vec2D to;
};

bool FindCenters(Law law, double r1, double r2, double length, Centers& centers) {
    const Spiral2D transition(law, r1, r2, length, Point2D(), Vec2D(1.0, 0.0));
    Vec2D end;
    Vec2D tangent(1.0, 0.0);
    if (length > 0.0 && !transition.MakeOffsetAndTangentAt(length, end, tangent)) return false;
    centers = {Vec2D(0.0, r1), end + tangent.GetNormalVector(true) * r2};
    return true;
}

// The tangents of a corner, away from `before` and towards `after`.
struct Tangents {
    Vec2D in;
    Vec2D out;
    double turn = 0.0;  // signed
};

bool FindTangents(const Point2D& before, const Point2D& corner, const Point2D& after, Tangents& tangents) {
    const Vec2D in = corner - before;
    const Vec2D out = after - corner;
    const double lengths[] = {in.Length(), out.Length()};
    if (!(std::min(lengths[0], lengths[1]) > detail::numericalZero) || !std::isfinite(lengths[0] + lengths[1]))
        return false;
    tangents = {in * (1.0 / lengths[0]), out * (1.0 / lengths[1])};
    tangents.turn = std::atan2(tangents.in.PerpDotProduct(tangents.out), tangents.in.DotProduct(tangents.out));
    return std::abs(tangents.turn) > straightOn && std::abs(tangents.turn) < detail::pi - detail::numericalZero;
}

// The lengths to be kept by the curve of a corner at the origin; how far a point lies on the inside of it.
class CornerCurve {
public:
    CornerCurve(const AlignmentDesign::Corner& wanted, const Tangents& at, const Vec2D& point)
        : corner(wanted), tangents(at), through(point.GetX(), point.GetY()) {
        corner.point = Point2D();
    }

    bool Exists(double radius) {
        corner.radius = radius;
        double amount = 0.0;
        return Round(corner, tangents.in, tangents.out, rounding, amount) == FaultKind::None;
    }

    // @param radius  of a curve that exists
    double GetInside(double radius) {
        (void)Exists(radius);
        Polyline2D curve;
        AppendRounding(curve, corner, rounding, tangents.in, tangents.out);
        Polyline2D::PolylinePoint nearest;
        if (!curve.GetNearestPoint(through, nearest, Tolerances::Standard())) return std::nan("");
        const double side = nearest.tangent.PerpDotProduct(through - nearest.point);
        return std::copysign(nearest.distance, side * rounding.side);
    }

    // The smallest radius, which the lengths of the transitions leave.
    double GetSharpest() {
        double low = 0.5 * (corner.lengthIn + corner.lengthOut) / std::abs(tangents.turn);
        if (low == 0.0 || Exists(low)) return low;
        double high = low;
        for (int i = 0; i < mostDoublings && !Exists(high); ++i) high *= 2.0;
        while (high - low > 1e-15 * high) {
            const double middle = 0.5 * (low + high);
            if (middle <= low || middle >= high) break;
            (Exists(middle) ? high : low) = middle;
        }
        return high;
    }

    static constexpr int mostDoublings = 64;

private:
    AlignmentDesign::Corner corner;
    Tangents tangents;
    Rounding rounding;
    Point2D through;
};

// Appends an arc that touches in two places, given by its centre and the normals there, to the left of the travel.
void AppendArc(const Point2D& center, double radius, const Vec2D& from, const Vec2D& to, std::vector<Arc2D>& arcs) {
    const double turn = std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
    const bool isWithRadius = turn * radius > 0.0;
    const double sweep = isWithRadius ? turn : turn + std::copysign(detail::twoPi, radius);
    const double left = std::min(std::abs(sweep), detail::twoPi - std::abs(sweep));
    if (!(left * std::abs(radius) > touching)) return;
    arcs.emplace_back(center - from * radius, center, Angle(sweep));
}

// @return false where there are none
bool TakeArcs(std::vector<Arc2D>& found, std::vector<Arc2D>& arcs) {
    if (found.empty()) return false;
    std::stable_sort(found.begin(), found.end(),
                     [](const Arc2D& a, const Arc2D& b) { return a.GetLength() < b.GetLength(); });
    arcs = std::move(found);
    return true;
}

double CurvatureOf(double radius) { return radius == 0.0 ? 0.0 : 1.0 / radius; }

bool IsCubic(double length, double k1, double k2) {
    return length > 0.0 && k1 != k2 && std::isfinite(length + k1 + k2);
}

// At the signed abscissa u of the unit parabola, y'' = u / m.
double TrueRadius(double u, double m) {
    const double secant = std::sqrt(1.0 + u * u * u * u);
    return u == 0.0 ? 0.0 : m / u * secant * secant * secant;
}

}  // namespace

bool AlignmentDesign::MakePlan(std::span<const Corner> corners, Polyline2D& plan, Fault& fault) {
    const auto fail = [&fault](FaultKind kind, std::size_t corner, double amount = 0.0) {
        fault = {kind, corner, amount};
        return false;
    };
    if (corners.size() < 2) return fail(FaultKind::NotFinite, 0);
    std::vector<Leg> legs(corners.size());  // each leads to its corner
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Corner& corner = corners[i];
        const double sum =
            corner.point.GetX() + corner.point.GetY() + corner.radius + corner.lengthIn + corner.lengthOut;
        if (!std::isfinite(sum)) return fail(FaultKind::NotFinite, i);
        if (i == 0) continue;
        const Vec2D way = corner.point - corners[i - 1].point;
        legs[i].length = way.Length();
        if (!std::isfinite(legs[i].length)) return fail(FaultKind::NotFinite, i);
        if (!(legs[i].length > detail::numericalZero)) return fail(FaultKind::SamePoint, i);
        legs[i].direction = way * (1.0 / legs[i].length);
    }
    std::vector<Rounding> roundings(corners.size());
    for (std::size_t i = 1; i < corners.size(); ++i) {
        double amount = 0.0;
        const bool isEnd = i + 1 == corners.size();
        const FaultKind kind =
            isEnd ? FaultKind::None : Round(corners[i], legs[i].direction, legs[i + 1].direction, roundings[i], amount);
        if (kind != FaultKind::None) return fail(kind, i, amount);
        const double missing = roundings[i - 1].out + roundings[i].in - legs[i].length;
        if (!(missing <= touching)) return fail(FaultKind::Tangent, i, missing);
    }
    Polyline2D made;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const Vec2D& in = legs[i].direction;
        const Point2D from = corners[i - 1].point + in * roundings[i - 1].out;
        const Point2D to = corners[i].point - in * roundings[i].in;
        if (legs[i].length - roundings[i - 1].out - roundings[i].in > touching)
            made.AppendElement(new Line2D(from, to));
        if (roundings[i].side != 0.0) AppendRounding(made, corners[i], roundings[i], in, legs[i + 1].direction);
    }
    plan = std::move(made);
    fault = {};
    return true;
}

bool AlignmentDesign::WithoutArc(const Point2D& before, const Point2D& after, double ratio, double tangent,
                                 Corner& corner) {
    Tangents tangents;
    if (!FindTangents(before, corner.point, after, tangents)) return false;
    const bool isPositive = ratio > 0.0 && tangent >= 0.0 && (tangent > 0.0 || corner.radius > 0.0);
    if (!isPositive || !std::isfinite(ratio + tangent + corner.radius)) return false;
    // All laws but that of the cubic parabola turn by half the product of length and curvature.
    const double turn = std::abs(tangents.turn);
    double length = 2.0 * turn / (1.0 + ratio);  // at a radius of 1, to which all is in proportion
    double misfit = 0.0;
    const auto turnOf = [&](double l, double& sum) {
        Entry in;
        Entry out;
        if (!FindEntry(corner.law, 1.0, l, in) || !FindEntry(corner.law, 1.0, ratio * l, out)) return false;
        sum = in.turn + out.turn;
        return true;
    };
    if (corner.law == Law::Cubic && !SolveLength(length, turn, turnOf, length, misfit)) return false;
    const Corner unit{corner.point, 1.0, length, ratio * length, corner.law};
    Rounding rounding;
    if (Round(unit, tangents.in, tangents.out, rounding, misfit) != FaultKind::None) return false;
    const double radius = tangent > 0.0 ? tangent / rounding.in : corner.radius;
    if (!(radius > 0.0) || !std::isfinite(radius)) return false;
    corner.radius = radius;
    corner.lengthIn = length * radius;
    corner.lengthOut = ratio * corner.lengthIn;
    return true;
}

bool AlignmentDesign::ThroughPoint(const Point2D& before, const Point2D& after, const Point2D& through, Corner& corner,
                                   double& misfit) {
    misfit = 0.0;
    Tangents tangents;
    const Vec2D way = through - corner.point;
    if (!FindTangents(before, corner.point, after, tangents) || corner.lengthIn < 0.0 || corner.lengthOut < 0.0 ||
        !std::isfinite(corner.lengthIn + corner.lengthOut + way.Length())) {
        return false;
    }
    const double side = tangents.turn < 0.0 ? -1.0 : 1.0;
    misfit = std::min(side * tangents.in.PerpDotProduct(way), side * tangents.out.PerpDotProduct(way));
    if (!(misfit > 0.0)) return false;
    CornerCurve curve(corner, tangents, way);
    const double sharpest = curve.GetSharpest();
    misfit = 0.0;
    if (sharpest > 0.0) {
        if (!curve.Exists(sharpest)) return false;
        misfit = std::min(curve.GetInside(sharpest), 0.0);
        if (misfit < 0.0) return false;
    }
    double flattest = std::max(2.0 * sharpest, way.Length());
    for (int i = 0; curve.Exists(flattest) && curve.GetInside(flattest) > 0.0; ++i) {
        if (i == CornerCurve::mostDoublings) return false;
        flattest *= 2.0;
    }
    corner.radius = detail::BracketedNewton(sharpest, flattest, [&curve](double radius) {
        return detail::ValueAndSlope{-curve.GetInside(radius), 0.0};
    });
    return true;
}

// With n the normal to the left of the travel and r the radius of the arc, its centre lies at p + r n over the point p
// where it touches: beside a line by r, and (R - r) n before the centre of a circle of radius R.
bool AlignmentDesign::ArcBetween(const Line2D& from, const Circle2D& to, double radius, std::vector<Arc2D>& arcs,
                                 double& misfit) {
    const Vec2D way = from.GetEnd() - from.GetStart();
    const Vec2D toCenter = to.GetCenter() - from.GetStart();
    const double reach = to.GetRadius() - radius;
    misfit = 0.0;
    if (!(way.Length() > detail::numericalZero) || !(std::abs(radius) > detail::numericalZero) ||
        !(std::abs(reach) > detail::numericalZero) || !std::isfinite(way.Length() + toCenter.Length() + reach)) {
        return false;
    }
    const Vec2D along = way * (1.0 / way.Length());
    const Vec2D normal = along.GetNormalVector(true);
    const double across = along.PerpDotProduct(toCenter);
    const double distance = std::abs(across - radius);
    const double lack = distance - std::abs(reach);
    if (lack > tangency) {
        misfit = lack;
        return false;
    }
    const double half = std::sqrt(std::max(-lack * (distance + std::abs(reach)), 0.0));
    std::vector<Arc2D> found;
    for (const double sign : {-1.0, 1.0}) {
        const Vec2D center = along * (along.DotProduct(toCenter) + sign * half) + normal * radius;
        AppendArc(from.GetStart() + center, radius, normal, (toCenter - center) * (1.0 / reach), found);
        if (half == 0.0) break;
    }
    return TakeArcs(found, arcs);
}

bool AlignmentDesign::ArcBetween(const Circle2D& from, const Line2D& to, double radius, std::vector<Arc2D>& arcs,
                                 double& misfit) {
    std::vector<Arc2D> found;
    if (!ArcBetween(Line2D(to.GetEnd(), to.GetStart()), Circle2D(from.GetCenter(), -from.GetRadius()), -radius, found,
                    misfit)) {
        return false;
    }
    for (Arc2D& arc : found) arc.Reverse();
    arcs = std::move(found);
    return true;
}

bool AlignmentDesign::ArcBetween(const Circle2D& from, const Circle2D& to, double radius, std::vector<Arc2D>& arcs,
                                 double& misfit) {
    const Vec2D apart = to.GetCenter() - from.GetCenter();
    const double distance = apart.Length();
    const double first = from.GetRadius() - radius;
    const double second = to.GetRadius() - radius;
    misfit = 0.0;
    if (!(std::abs(radius) > detail::numericalZero) || !(distance > detail::numericalZero) ||
        !(std::min(std::abs(first), std::abs(second)) > detail::numericalZero) ||
        !std::isfinite(distance + first + second)) {
        return false;
    }
    // The centre lies |first| from the one centre and |second| from the other one: a triangle (Heron).
    const double sum = std::abs(first) + std::abs(second);
    const double difference = std::abs(std::abs(first) - std::abs(second));
    if (distance > sum + tangency || distance < difference - tangency) {
        misfit = distance > sum ? distance - sum : distance - difference;
        return false;
    }
    const Vec2D along = apart * (1.0 / distance);
    const double foot = 0.5 * (distance + (first - second) * ((first + second) / distance));
    const double area = std::max((sum - distance) * (distance - difference), 0.0);
    const double half = 0.5 * std::sqrt(area * (sum + distance) * (distance + difference)) / distance;
    std::vector<Arc2D> found;
    for (const double sign : {-1.0, 1.0}) {
        const Vec2D center = along * foot + along.GetNormalVector(true) * (sign * half);
        AppendArc(from.GetCenter() + center, radius, center * (-1.0 / first), (apart - center) * (1.0 / second), found);
        if (half == 0.0) break;
    }
    return TakeArcs(found, arcs);
}

bool AlignmentDesign::TransitionBetween(const Line2D& from, const Circle2D& to, Law law, Spiral2D& transition,
                                        double& misfit) {
    const Vec2D way = from.GetEnd() - from.GetStart();
    const double radius = to.GetRadius();
    misfit = 0.0;
    if (!(way.Length() > detail::numericalZero) || !(std::abs(radius) > detail::numericalZero)) return false;
    const Vec2D along = way * (1.0 / way.Length());
    const Vec2D toCenter = to.GetCenter() - from.GetStart();
    if (!std::isfinite(way.Length() + toCenter.Length() + radius)) return false;
    const double side = radius < 0.0 ? -1.0 : 1.0;
    // On the side to which the circle turns; more than the radius away.
    double length = 0.0;
    const bool isFound = SolveLength(
        2.0 * mostTurn * std::abs(radius), side * along.PerpDotProduct(toCenter),
        [&](double l, double& across) {
            Centers centers;
            if (!FindCenters(law, 0.0, radius, l, centers)) return false;
            across = side * centers.to.GetY();
            return true;
        },
        length, misfit);
    Centers centers;
    if (!isFound || !FindCenters(law, 0.0, radius, length, centers)) return false;
    const Point2D start = from.GetStart() + along * (along.DotProduct(toCenter) - centers.to.GetX());
    transition = Spiral2D(law, 0.0, radius, length, start, along);
    return true;
}

bool AlignmentDesign::TransitionBetween(const Circle2D& from, const Line2D& to, Law law, Spiral2D& transition,
                                        double& misfit) {
    Spiral2D backwards;
    if (!TransitionBetween(Line2D(to.GetEnd(), to.GetStart()), Circle2D(from.GetCenter(), -from.GetRadius()), law,
                           backwards, misfit)) {
        return false;
    }
    backwards.Reverse();
    transition = backwards;
    return true;
}

bool AlignmentDesign::TransitionBetween(const Circle2D& from, const Circle2D& to, Law law, Spiral2D& transition,
                                        double& misfit) {
    const double r1 = from.GetRadius();
    const double r2 = to.GetRadius();
    misfit = 0.0;
    if (!(std::min(std::abs(r1), std::abs(r2)) > detail::numericalZero) || r1 == r2) return false;
    const Vec2D apart = to.GetCenter() - from.GetCenter();
    if (!std::isfinite(apart.Length() + r1 + r2)) return false;
    // Either part of the way, up to and on from the point without curvature, turns at most a quarter circle.
    const double longest = 2.0 * mostTurn / (std::abs(1.0 / r1) + std::abs(1.0 / r2));
    double length = 0.0;
    const bool isFound = SolveLength(
        longest, apart.Length(),
        [&](double l, double& distance) {
            Centers centers;
            if (!FindCenters(law, r1, r2, l, centers)) return false;
            distance = (centers.to - centers.from).Length();
            return true;
        },
        length, misfit);
    Centers centers;
    if (!isFound || !FindCenters(law, r1, r2, length, centers)) return false;
    // Turned so that the way between the centres falls on the given one.
    const Vec2D local = centers.to - centers.from;
    const double angle = std::atan2(local.PerpDotProduct(apart), local.DotProduct(apart));
    const Vec2D tangent(std::cos(angle), std::sin(angle));
    transition = Spiral2D(law, r1, r2, length, from.GetCenter() - tangent.GetNormalVector(true) * r1, tangent);
    return true;
}

bool AlignmentDesign::TransitionsBetween(const Circle2D& from, const Circle2D& to, Law law, Spiral2D& first,
                                         Spiral2D& second, double& misfit) {
    const double r1 = from.GetRadius();
    const double r2 = to.GetRadius();
    misfit = 0.0;
    if (!(std::min(std::abs(r1), std::abs(r2)) > detail::numericalZero) || (r1 < 0.0) != (r2 < 0.0)) return false;
    const Vec2D apart = to.GetCenter() - from.GetCenter();
    if (!std::isfinite(apart.Length() + r1 + r2)) return false;
    // From the point between them, backwards to the first circle and on to the second one, by the product of length and
    // radius.
    Centers back;
    Centers on;
    const auto find = [&](double product) {
        return FindCenters(law, 0.0, -r1, product / std::abs(r1), back) &&
               FindCenters(law, 0.0, r2, product / std::abs(r2), on);
    };
    const double smaller = std::min(std::abs(r1), std::abs(r2));
    double product = 0.0;
    const bool isFound = SolveLength(
        2.0 * mostTurn * smaller * smaller, apart.Length(),
        [&](double value, double& distance) {
            if (!find(value)) return false;
            distance = (on.to + back.to).Length();  // what lies behind is seen turned around
            return true;
        },
        product, misfit);
    if (!isFound || !find(product)) return false;
    const Vec2D local = on.to + back.to;
    const double angle = std::atan2(local.PerpDotProduct(apart), local.DotProduct(apart));
    const Vec2D tangent(std::cos(angle), std::sin(angle));
    const Point2D middle = to.GetCenter() - (tangent * on.to.GetX() + tangent.GetNormalVector(true) * on.to.GetY());
    Spiral2D made(law, 0.0, -r1, product / std::abs(r1), middle, -tangent);
    made.Reverse();
    first = made;
    second = Spiral2D(law, 0.0, r2, product / std::abs(r2), middle, tangent);
    return true;
}

// With m = sqrt(q / 2) for y'' = x / q the abscissa u of the unit parabola is m y'', and lengths are 2 m S(u).
bool AlignmentDesign::FromSecondDerivatives(double length, double& startRadius, double& endRadius) {
    const double k1 = CurvatureOf(startRadius);
    const double k2 = CurvatureOf(endRadius);
    if (!IsCubic(length, k1, k2)) return k1 == k2 && length > 0.0 && std::isfinite(length + k1);
    const double side = k2 > k1 ? 1.0 : -1.0;
    const double most = detail::culmination / std::max(std::abs(k1), std::abs(k2));
    const auto excess = [&](double m) {
        return 2.0 * m * side * (detail::ParabolaLength(k2 * m) - detail::ParabolaLength(k1 * m)) - length;
    };
    if (!(excess(most) >= 0.0)) return false;
    const double m = detail::BracketedNewton(0.0, most, [&](double x) {
        return detail::ValueAndSlope{excess(x), 0.0};
    });
    startRadius = TrueRadius(k1 * m, m);
    endRadius = TrueRadius(k2 * m, m);
    return true;
}

bool AlignmentDesign::FromClothoid(double length, double& startRadius, double& endRadius) {
    const double k1 = CurvatureOf(startRadius);
    const double k2 = CurvatureOf(endRadius);
    if (!IsCubic(length, k1, k2)) return k1 == k2 && length > 0.0 && std::isfinite(length + k1);
    const double m = std::sqrt(0.5 * length / std::abs(k2 - k1));
    const double longest = detail::ParabolaLength(detail::culmination);
    if (!(m * std::max(std::abs(k1), std::abs(k2)) <= longest)) return false;
    startRadius = TrueRadius(detail::AbscissaAtLength(k1 * m), m);
    endRadius = TrueRadius(detail::AbscissaAtLength(k2 * m), m);
    return true;
}

}  // namespace Kalvio::Math
