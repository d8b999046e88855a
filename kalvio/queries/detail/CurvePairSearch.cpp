#include "kalvio/queries/detail/CurvePairSearch.h"

#include "kalvio/core/detail/BracketedNewton.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math::detail {

using Knot = PlanCurve::Knot;

namespace {

constexpr double mostSteering = 0.25;      // of pieces whose gap is examined
constexpr double mostTilt = 0.6;           // [rad]; of their tangents against the common axis
constexpr double mostSag = 0.25;           // of the reach: how little gaps of even curves may bend
constexpr double leastResolution = 1e-10;  // of a piece: the width hardly changes about its least value
constexpr int mostDepth = 120;             // halving both curves to the spacing of doubles
constexpr int coarseDepth = 16;            // halved to this depth in any case

double HalfExtent(const CurvePiece& piece, const Vec2D& axis) { return 0.5 * std::abs(piece.chord.DotProduct(axis)); }

double Middle(const Knot& a, const Knot& b) { return 0.5 * (a.parameter + b.parameter); }

}  // namespace

/// The gap between the curves at an abscissa along the common axis.
struct CurvePairSearch::Gap {
    double p = 0.0;
    double q = 0.0;
    double width = 0.0;  // how far the first lies to the left of the second
    double slope = 0.0;  // derivatives by the abscissa
    double bend = 0.0;
    double advance = 0.0;  // of the abscissa by p
};

/// Two pieces as graphs over their common axis, along which the first runs.
class CurvePairSearch::Profile {
public:
    Profile(const PlanCurve& firstCurve, const PlanCurve& secondCurve, const CurvePiece& firstPiece,
            const CurvePiece& secondPiece, double secondSense)
        : first(firstCurve),
          second(secondCurve),
          a(firstPiece),
          b(secondPiece),
          sense(secondSense),
          lastQ(Middle(b.from, b.to)) {
        axis = (a.chord / a.chordLength + b.chord * (sense / b.chordLength)).Normalize();
        normal = axis.GetNormalVector(true);
        const Knot& low = sense > 0.0 ? b.from : b.to;
        const Knot& high = sense > 0.0 ? b.to : b.from;
        from = std::max(a.from.position.DotProduct(axis), low.position.DotProduct(axis));
        to = std::min(a.to.position.DotProduct(axis), high.position.DotProduct(axis));
    }

    bool IsEmpty() const { return !(from <= to); }
    double GetExtent() const { return to - from; }
    double GetFirstFrom() const { return ParameterAt(first, a, 1.0, from, a.from.parameter); }
    double GetFirstTo() const { return ParameterAt(first, a, 1.0, to, a.to.parameter); }

    Gap At(double p) {
        const PlanState one = first.At(p);
        Gap gap;
        gap.p = p;
        gap.q = ParameterAt(second, b, sense, one.position.DotProduct(axis), lastQ);
        lastQ = gap.q;
        const PlanState other = second.At(gap.q);
        const Graph graph = GraphOf(one, first.GetCurvature(p));
        const Graph otherGraph = GraphOf(other, sense * second.GetCurvature(gap.q));
        gap.width = (one.position - other.position).DotProduct(normal);
        gap.slope = graph.slope - otherGraph.slope;
        gap.bend = graph.bend - otherGraph.bend;
        gap.advance = one.velocity.DotProduct(axis);
        return gap;
    }

private:
    struct Graph {
        double slope;
        double bend;
    };

    Graph GraphOf(const PlanState& state, double curvature) const {
        const double slope = state.velocity.DotProduct(normal) / state.velocity.DotProduct(axis);
        const double secant = std::sqrt(1.0 + slope * slope);
        return {slope, curvature * secant * secant * secant};
    }

    // From a guess, by Newton's method; with a bracket only where that does not settle at once.
    double ParameterAt(const PlanCurve& curve, const CurvePiece& piece, double runs, double abscissa,
                       double guess) const {
        constexpr int freeSteps = 4;
        constexpr double settled = 1e-9;  // of the piece; one more step doubles the digits
        const double low = piece.from.parameter;
        const double high = piece.to.parameter;
        const auto ahead = [&](double p) {
            const PlanState state = curve.At(p);
            return ValueAndSlope{runs * (state.position.DotProduct(axis) - abscissa),
                                 runs * state.velocity.DotProduct(axis)};
        };
        double p = guess;
        for (int i = 0; i < freeSteps; ++i) {
            const ValueAndSlope f = ahead(p);
            const double next = p - f.value / f.slope;
            if (!(next >= low && next <= high)) break;
            if (std::abs(next - p) <= settled * (high - low)) return next;
            p = next;
        }
        if (runs * (piece.from.position.DotProduct(axis) - abscissa) >= 0.0) return low;
        if (runs * (piece.to.position.DotProduct(axis) - abscissa) <= 0.0) return high;
        return BracketedNewton(low, high, ahead);
    }

    const PlanCurve& first;
    const PlanCurve& second;
    const CurvePiece& a;
    const CurvePiece& b;
    double sense;
    double lastQ;  // where the next search begins
    Vec2D axis;
    Vec2D normal;
    double from;
    double to;
};

void CurvePairSearch::Find() {
    const Knot a0 = first.KnotAt(first.GetFrom());
    const Knot a1 = first.KnotAt(first.GetTo());
    Search(a0, a1, second.KnotAt(second.GetFrom()), second.KnotAt(second.GetTo()), 0);
}

void CurvePairSearch::Search(const Knot& a0, const Knot& a1, const Knot& b0, const Knot& b1, int depth) {
    const CurvePiece a(first, a0, a1);
    const CurvePiece b(second, b0, b1);
    if (AreApart(a, b)) return;
    const double cross = std::abs(a.chord.PerpDotProduct(b.chord));
    if (cross > 0.0 && 8.0 * (a.height * b.chordLength + b.height * a.chordLength) <= cross) {
        SolveCrossing(a, b);
        return;
    }
    const bool isLast = (a.height <= 0.5 * limits.noise && b.height <= 0.5 * limits.noise) || depth == mostDepth ||
                        (halvings >= mostHalvings && depth >= coarseDepth);
    if (SolveGap(a, b)) return;
    if (isLast) {
        SolveLast(a, b);
        return;
    }
    ++halvings;
    if (a.height >= b.height) {
        const Knot middle = first.KnotAt(Middle(a0, a1));
        Search(a0, middle, b0, b1, depth + 1);
        Search(middle, a1, b0, b1, depth + 1);
    } else {
        const Knot middle = second.KnotAt(Middle(b0, b1));
        Search(a0, a1, b0, middle, depth + 1);
        Search(a0, a1, middle, b1, depth + 1);
    }
}

// A separating axis among the directions of the chords and their normals. True also where a value is not a number.
bool CurvePairSearch::AreApart(const CurvePiece& a, const CurvePiece& b) const {
    const Vec2D between = (a.from.position - b.from.position) + (a.chord - b.chord) * 0.5;
    const double around = a.height + b.height + limits.reach;
    const auto separates = [&](const Vec2D& axis, double length) {
        return !(std::abs(between.DotProduct(axis)) <= HalfExtent(a, axis) + HalfExtent(b, axis) + around * length);
    };
    return separates(a.chord.GetNormalVector(true), a.chordLength) ||
           separates(b.chord.GetNormalVector(true), b.chordLength) || separates(a.chord, a.chordLength) ||
           separates(b.chord, b.chordLength);
}

void CurvePairSearch::SolveCrossing(const CurvePiece& a, const CurvePiece& b) {
    constexpr int mostSteps = 80;
    constexpr int freeSteps = 12;  // of Newton's method; then the contracting one, with the chords for tangents
    constexpr double resolution = 2.0 * std::numeric_limits<double>::epsilon();
    const double spanA = a.to.parameter - a.from.parameter;
    const double spanB = b.to.parameter - b.from.parameter;
    // Where the chords cross.
    const double cross = a.chord.PerpDotProduct(b.chord);
    const Vec2D between = b.from.position - a.from.position;
    const auto inside = [](const CurvePiece& piece, double p) {
        return std::clamp(p, piece.from.parameter, piece.to.parameter);
    };
    double p = inside(a, a.from.parameter + spanA * (between.PerpDotProduct(b.chord) / cross));
    double q = inside(b, b.from.parameter + spanB * (between.PerpDotProduct(a.chord) / cross));
    for (int i = 0; i < mostSteps; ++i) {
        const PlanState one = first.At(p);
        const PlanState other = second.At(q);
        const Vec2D v = i < freeSteps ? one.velocity : a.chord / spanA;
        const Vec2D w = i < freeSteps ? other.velocity : b.chord / spanB;
        const Vec2D off = other.position - one.position;
        const double determinant = v.PerpDotProduct(w);
        const double nextP = inside(a, p + off.PerpDotProduct(w) / determinant);
        const double nextQ = inside(b, q + off.PerpDotProduct(v) / determinant);
        const bool isSettled = std::abs(nextP - p) <= resolution * std::abs(p) + resolution * spanA &&
                               std::abs(nextQ - q) <= resolution * std::abs(q) + resolution * spanB;
        p = nextP;
        q = nextQ;
        if (isSettled) break;
    }
    // Away from the ends of the pieces it is a crossing, whatever rounding leaves of the distance.
    const auto isInside = [](const CurvePiece& piece, double at) {
        return at > piece.from.parameter && at < piece.to.parameter;
    };
    AddWithin(isInside(a, p) && isInside(b, q) ? limits.reach : limits.noise, p, q);
}

// False where the pieces turn too much, or the bounds of their curvatures do not tell which is the larger.
bool CurvePairSearch::SolveGap(const CurvePiece& a, const CurvePiece& b) {
    const double steering = std::max(a.GetSteering(), b.GetSteering());
    if (!(steering <= mostSteering)) return false;
    const double dot = a.chord.DotProduct(b.chord);
    const double sense = dot < 0.0 ? -1.0 : 1.0;
    const double angle = std::atan2(std::abs(a.chord.PerpDotProduct(b.chord)), std::abs(dot));
    const double tilt = 0.5 * angle + std::asin(steering);
    if (!(tilt <= mostTilt)) return false;
    // y'' is the curvature times the cube of the secant of the slope.
    const double cosine = std::cos(tilt);
    const double most = 1.0 / (cosine * cosine * cosine);
    const auto bends = [most](double low, double high) {
        return PlanCurve::Interval{low < 0.0 ? low * most : low, high > 0.0 ? high * most : high};
    };
    const PlanCurve::Interval k1 = first.GetCurvatures(a.from, a.to);
    const PlanCurve::Interval k2 = second.GetCurvatures(b.from, b.to);
    const PlanCurve::Interval bend1 = bends(k1.low, k1.high);
    const PlanCurve::Interval bend2 = sense > 0.0 ? bends(k2.low, k2.high) : bends(-k2.high, -k2.low);
    const bool isConvex = bend1.low >= bend2.high;
    Profile profile(first, second, a, b, sense);
    if (profile.IsEmpty()) return true;
    if (!isConvex && !(bend2.low >= bend1.high)) {
        const double spread = std::max(bend1.high - bend2.low, bend2.high - bend1.low);
        return SolveEven(profile, 0.125 * spread * profile.GetExtent() * profile.GetExtent());
    }
    const double up = isConvex ? 1.0 : -1.0;
    const Gap from = profile.At(profile.GetFirstFrom());
    const Gap to = profile.At(profile.GetFirstTo());
    Gap least = from;
    if (up * from.slope < 0.0) least = to;
    if (up * from.slope < 0.0 && up * to.slope > 0.0) {
        const auto slope = [&](double p) {
            const Gap gap = profile.At(p);
            return ValueAndSlope{up * gap.slope, up * gap.bend * gap.advance};
        };
        least = profile.At(BracketedNewton(from.p, to.p, slope, leastResolution * (to.p - from.p)));
    }
    if (!(up * least.width < -limits.noise)) {
        AddNearest(least);
        return true;
    }
    if (up * from.width >= 0.0) AddCrossing(profile, from.p, least.p, -up);
    if (up * to.width >= 0.0) AddCrossing(profile, least.p, to.p, up);
    return true;
}

// Curvatures that hardly differ keep the gap within `sag` of its chord, and its slope within 8 sag / extent of that of
// the chord. False where this does not tell whether the curves cross.
bool CurvePairSearch::SolveEven(Profile& profile, double sag) {
    if (!(sag <= mostSag * limits.reach)) return false;
    const Gap from = profile.At(profile.GetFirstFrom());
    const Gap to = profile.At(profile.GetFirstTo());
    const bool isFromNearer = std::abs(from.width) <= std::abs(to.width);
    const Gap& nearer = isFromNearer ? from : to;
    const double least = std::abs(nearer.width);
    const bool isMonotone = std::abs(to.width - from.width) > 8.0 * sag;
    const bool isOne = std::abs((isFromNearer ? to : from).width) + sag <= limits.noise;
    if (!isOne && (from.width < 0.0) != (to.width < 0.0)) {
        if (!isMonotone) return false;
        AddCrossing(profile, from.p, to.p, to.width > from.width ? 1.0 : -1.0);
        return true;
    }
    const bool isDecided =
        isOne || isMonotone || (least - sag > limits.noise && least <= limits.reach) || least - sag > limits.reach;
    if (isDecided && least <= limits.reach) AddNearest(nearer);
    return isDecided;
}

void CurvePairSearch::AddCrossing(Profile& profile, double low, double high, double rises) {
    const double p = BracketedNewton(low, high, [&](double at) {
        const Gap gap = profile.At(at);
        return ValueAndSlope{rises * gap.width, rises * gap.slope * gap.advance};
    });
    AddWithin(limits.reach, p, profile.At(p).q);
}

// Pieces as straight as rounding lets them be, along each other: where the gap changes its sign, or the nearer ends.
void CurvePairSearch::SolveLast(const CurvePiece& a, const CurvePiece& b) {
    const double sense = a.chord.DotProduct(b.chord) < 0.0 ? -1.0 : 1.0;
    Profile profile(first, second, a, b, sense);
    if (profile.IsEmpty()) return;
    const Gap from = profile.At(profile.GetFirstFrom());
    const Gap to = profile.At(profile.GetFirstTo());
    const bool isOne = std::abs(from.width) <= limits.noise && std::abs(to.width) <= limits.noise;
    if (!isOne && (from.width < 0.0) != (to.width < 0.0)) {
        AddCrossing(profile, from.p, to.p, to.width > from.width ? 1.0 : -1.0);
    } else {
        AddNearest(std::abs(to.width) < std::abs(from.width) ? to : from);
    }
}

// The gap is least along the common normal of the curves; that across their common axis is where to begin.
void CurvePairSearch::AddNearest(const Gap& least) {
    constexpr int mostSteps = 4;
    double p = least.p;
    double q = least.q;
    for (int i = 0; i < mostSteps && std::abs(least.width) > limits.noise; ++i) {
        q = NearestParameter(second, first.At(p).position, q);
        const PlanState one = first.At(p);
        const PlanState other = second.At(q);
        const double sense = one.velocity.DotProduct(other.velocity) < 0.0 ? -1.0 : 1.0;
        const double speed = one.velocity.Length();
        const double sine = sense * one.velocity.PerpDotProduct(other.velocity) / (speed * other.velocity.Length());
        const double next = p + sine / (speed * (first.GetCurvature(p) - sense * second.GetCurvature(q)));
        if (!(std::abs(next - p) <= std::abs(least.width) + limits.reach)) break;
        p = std::clamp(next, first.GetFrom(), first.GetTo());
    }
    if (misses == mostMisses) return;
    if (AddWithin(limits.reach, p, NearestParameter(second, first.At(p).position, q)) ||
        AddWithin(limits.reach, least.p, least.q)) {
        ++misses;
    }
}

bool CurvePairSearch::AddWithin(double limit, double p, double q) {
    const Vec2D one = first.At(p).position;
    const Vec2D other = second.At(q).position;
    const double gap = (other - one).Length();
    if (!(gap <= limit) || contacts.size() >= mostMisses + mostCrossings) return false;
    contacts.push_back({p, q, (one + other) * 0.5, gap, false});
    return true;
}

}  // namespace Kalvio::Math::detail
