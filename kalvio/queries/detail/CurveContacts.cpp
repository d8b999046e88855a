#include "kalvio/queries/detail/CurveContacts.h"

#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/queries/detail/CurvePairSearch.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

// Calls add(onFirst, onSecond, point, gap) where the curves cross, or pass each other at an extreme of their distance
// within the reach. Parameters beyond the ends are left to the caller.

template <class Add>
void Cross(const StraightCurve& a, const StraightCurve& b, const ContactLimits&, Add&& add) {
    const double cross = a.direction.PerpDotProduct(b.direction);
    if (cross == 0.0) return;
    const Vec2D between = b.start - a.start;
    const double onA = between.PerpDotProduct(b.direction) / cross;
    add(onA, between.PerpDotProduct(a.direction) / cross, a.At(onA).position, 0.0);
}

// Calls hit(parameter on the line) at the points of a line on the circle x^2 + 2 radial x = 0 about -radial,
// x from the start of the circle: the parameter l solves l^2 + 2 b l + c = 0 without reference to the centre, which may
// be far; l counts from the foot of the start of the circle, as the rounding of c grows with the square of the distance
// to it. depthOf(b^2 - c) tells how far the line dips into the circle. A line that only touches it, or passes beside
// it within the reach, is met at its foot: touch(parameter, depth).
template <class Depth, class Hit, class Touch>
void CrossCircle(const Vec2D& start, const Vec2D& direction, const RoundCurve& circle, const ContactLimits& limits,
                 Depth&& depthOf, Hit&& hit, Touch&& touch) {
    const double foot = (circle.start - start).DotProduct(direction);
    const Vec2D from = (start - circle.start) + direction * foot;
    const double b = (from + circle.radial).DotProduct(direction);
    const double c = from.DotProduct(from + 2.0 * circle.radial);
    const double discriminant = std::fma(b, b, -c);
    const double depth = depthOf(discriminant);
    if (depth > limits.noise && discriminant > 0.0) {
        const double larger = -(b + std::copysign(std::sqrt(discriminant), b));
        hit(foot + larger);
        hit(foot + c / larger);
    } else if (depth >= -limits.reach) {
        touch(foot - b, depth);
    }
}

template <class Add>
void Cross(const StraightCurve& line, const RoundCurve& circle, const ContactLimits& limits, double length, Add&& add) {
    const double radius = circle.GetRadius();
    const auto depthOf = [radius](double discriminant) {
        return discriminant / (radius + std::sqrt(std::max(0.0, radius * radius - discriminant)));
    };
    const auto hit = [&](double p) {
        const Vec2D point = line.At(p).position;
        add(p, circle.ParameterOf(point, length), point, 0.0);
    };
    const auto touch = [&](double p, double depth) {
        const Vec2D foot = line.At(p).position;
        const Vec2D outward = circle.radial + (foot - circle.start);
        const Vec2D middle = foot + outward * (0.5 * depth / outward.Length());
        add(p, circle.ParameterOf(middle, length), middle, std::abs(depth));
    };
    CrossCircle(line.start, line.direction, circle, limits, depthOf, hit, touch);
}

// Two circles meet on their radical line, N x = g with N from centre to centre. The first is not the larger: the
// rounding grows with the radius the line is cut with.
template <class Add>
void CrossSmaller(const RoundCurve& a, const RoundCurve& b, const ContactLimits& limits, double lengthA, double lengthB,
                  Add&& add) {
    const Vec2D between = b.start - a.start;
    const Vec2D centers = between + (a.radial - b.radial);
    const double distance = centers.Length();
    if (!(distance > limits.noise)) return;  // the same centre
    const double r1 = a.GetRadius();
    const double r2 = b.GetRadius();
    const Vec2D ahead = centers / distance;
    const Vec2D foot = ahead * (0.5 * between.DotProduct(between - 2.0 * b.radial) / distance);
    const bool isOutside = distance >= std::max(r1, r2);
    // By Heron's formula the product of the four sums of the distance and the radii is (2 distance)^2 times the squared
    // half chord; one of them is the depth, which loses its digits when summed up.
    const double sum = distance + r1 + r2;
    const double others = isOutside ? sum * (distance + r1 - r2) * (distance - r1 + r2)
                                    : sum * (r1 + r2 - distance) * (distance + std::abs(r1 - r2));
    const auto depthOf = [&](double squared) { return 4.0 * distance * distance * squared / others; };
    const Vec2D along = ahead.GetNormalVector(true);
    const auto addAt = [&](const Vec2D& point, double gap) {
        add(a.ParameterOf(point, lengthA), b.ParameterOf(point, lengthB), point, gap);
    };
    const auto hit = [&](double p) { addAt(a.start + foot + along * p, 0.0); };
    const auto touch = [&](double, double depth) {
        const bool isInside = !isOutside && r1 < r2;  // the first in the second
        const Vec2D outward = isInside ? -ahead : ahead;
        const double middle = r1 + (isOutside || isInside ? -0.5 * depth : 0.5 * depth);
        addAt(a.start + (outward * middle - a.radial), std::abs(depth));
    };
    CrossCircle(a.start + foot, along, a, limits, depthOf, hit, touch);
}

template <class Add>
void Cross(const RoundCurve& a, const RoundCurve& b, const ContactLimits& limits, double lengthA, double lengthB,
           Add&& add) {
    if (a.GetRadius() <= b.GetRadius()) {
        CrossSmaller(a, b, limits, lengthA, lengthB, add);
    } else {
        CrossSmaller(b, a, limits, lengthB, lengthA,
                     [&](double onB, double onA, const Vec2D& point, double gap) { add(onA, onB, point, gap); });
    }
}

// Lines and arcs in closed form. @return false for other curves
template <class Add>
bool CrossInClosedForm(const PlanCurve& first, const PlanCurve& second, const ContactLimits& limits, Add&& add) {
    const StraightCurve* const line1 = first.AsStraight();
    const StraightCurve* const line2 = second.AsStraight();
    const RoundCurve* const arc1 = first.AsRound();
    const RoundCurve* const arc2 = second.AsRound();
    if (line1 != nullptr && line2 != nullptr) {
        Cross(*line1, *line2, limits, add);
    } else if (line1 != nullptr && arc2 != nullptr) {
        Cross(*line1, *arc2, limits, second.GetTo(), add);
    } else if (arc1 != nullptr && line2 != nullptr) {
        Cross(*line2, *arc1, limits, first.GetTo(),
              [&](double onLine, double onArc, const Vec2D& point, double gap) { add(onArc, onLine, point, gap); });
    } else if (arc1 != nullptr && arc2 != nullptr) {
        Cross(*arc1, *arc2, limits, first.GetTo(), second.GetTo(), add);
    } else {
        return false;
    }
    return true;
}

// Newton's method on (P - point) P' = 0, for points near the curve.
double NewtonFoot(const PlanCurve& curve, const Vec2D& point, double guess, double low, double high) {
    constexpr int mostSteps = 4;
    double p = guess;
    for (int i = 0; i < mostSteps; ++i) {
        const PlanState at = curve.At(p);
        const double next =
            std::clamp(p - (at.position - point).DotProduct(at.velocity) / at.velocity.NormSquared(), low, high);
        if (!(next != p)) break;
        p = next;
    }
    return p;
}

// Calls found(parameter, distance) for every place where the distance of the curve from a point culminates within the
// reach; twice where that is the joint of two pieces.
template <class Found>
class FootSearch {
public:
    FootSearch(const PlanCurve& searched, const Vec2D& query, double most, Found& answer)
        : curve(searched), point(query), reach(most), found(answer) {}

    void Find() {
        if (const StraightCurve* const line = curve.AsStraight()) {
            Offer(Inside((point - line->start).DotProduct(line->direction)));
        } else if (const RoundCurve* const arc = curve.AsRound()) {
            Offer(Inside(arc->ParameterOf(point, curve.GetTo())));
        } else if (!((point - curve.GetDiscCenter()).Length() > curve.GetDiscRadius() + reach)) {
            Search(curve.KnotAt(curve.GetFrom()), curve.KnotAt(curve.GetTo()));
        }
    }

private:
    static constexpr double mostSteering = 0.25;
    static constexpr int mostHalvings = 1000;  // in all: some ten for real curves and tolerances

    void Search(const PlanCurve::Knot& from, const PlanCurve::Knot& to) {
        const CurvePiece piece(curve, from, to);
        const Vec2D out = point - from.position;
        const double along = out.DotProduct(piece.chord) / (piece.chordLength * piece.chordLength);
        const double share = along > 0.0 ? std::min(along, 1.0) : 0.0;  // 0 for a chord of no length
        if (!((out - piece.chord * share).Length() <= piece.height + reach)) return;
        if (!(piece.GetSteering() <= mostSteering) && halvings < mostHalvings) {
            ++halvings;
            const PlanCurve::Knot middle = curve.KnotAt(0.5 * (from.parameter + to.parameter));
            Search(from, middle);
            Search(middle, to);
            return;
        }
        double p = share == 0.0 ? from.parameter : to.parameter;
        if (share > 0.0 && share < 1.0) {
            p = BracketedNewton(from.parameter, to.parameter, [&](double at) {
                const PlanState state = curve.At(at);
                return ValueAndSlope{(state.position - point).DotProduct(piece.chord),
                                     state.velocity.DotProduct(piece.chord)};
            });
        }
        Offer(NewtonFoot(curve, point, p, from.parameter, to.parameter));
    }
    void Offer(double p) const {
        const double distance = (curve.At(p).position - point).Length();
        if (distance <= reach) found(p, distance);
    }
    double Inside(double p) const { return std::clamp(p, curve.GetFrom(), curve.GetTo()); }

    const PlanCurve& curve;
    Vec2D point;
    double reach;
    Found& found;
    int halvings = 0;
};

}  // namespace

double NearestParameter(const PlanCurve& curve, const Vec2D& point, double guess) {
    if (const RoundCurve* const arc = curve.AsRound()) {
        return std::clamp(arc->ParameterOf(point, curve.GetTo()), curve.GetFrom(), curve.GetTo());
    }
    const bool isBounded = !curve.IsClosed() && !curve.IsInfinite();
    return NewtonFoot(curve, point, guess, isBounded ? curve.GetFrom() : -largestDouble,
                      isBounded ? curve.GetTo() : largestDouble);
}

void FindEndContacts(const PlanCurve& first, const PlanCurve& second, double reach,
                     std::vector<CurveContact>& contacts) {
    const auto find = [&](const PlanCurve& curve, const PlanCurve& other, auto&& add) {
        if (curve.IsInfinite()) return;
        for (const double p : {curve.GetFrom(), curve.GetTo()}) {
            const Vec2D end = curve.At(p).position;
            auto found = [&](double q, double gap) { add(p, q, end, gap, !curve.IsClosed()); };
            FootSearch(other, end, reach, found).Find();
        }
    };
    find(first, second, [&](double p, double q, const Vec2D& end, double gap, bool isEnd) {
        contacts.push_back({p, q, end, gap, isEnd});
    });
    find(second, first, [&](double q, double p, const Vec2D& end, double gap, bool isEnd) {
        contacts.push_back({p, q, end, gap, isEnd});
    });
}

void FindContacts(const PlanCurve& first, const PlanCurve& second, const ContactLimits& limits,
                  std::vector<CurveContact>& contacts) {
    // Within the rounding of an end a crossing is on the curve.
    const auto isOn = [&](const PlanCurve& curve, double& p) {
        if (curve.IsInfinite() || curve.IsClosed()) return true;
        if (!(p >= curve.GetFrom() - limits.noise && p <= curve.GetTo() + limits.noise)) return false;
        p = std::clamp(p, curve.GetFrom(), curve.GetTo());
        return true;
    };
    const bool isClosedForm =
        CrossInClosedForm(first, second, limits, [&](double p, double q, const Vec2D& point, double gap) {
            if (isOn(first, p) && isOn(second, q)) contacts.push_back({p, q, point, gap, false});
        });
    if (isClosedForm) return;
    const bool isSimple =
        first.AsStraight() != nullptr || (first.AsRound() != nullptr && second.AsStraight() == nullptr);
    if (!isSimple) {
        CurvePairSearch(first, second, limits, contacts).Find();
        return;
    }
    // The search evaluates its first curve less often than its second.
    const std::size_t before = contacts.size();
    CurvePairSearch(second, first, limits, contacts).Find();
    for (std::size_t i = before; i < contacts.size(); ++i) std::swap(contacts[i].onFirst, contacts[i].onSecond);
}

}  // namespace Kalvio::Math::detail
