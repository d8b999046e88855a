#pragma once

#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/queries/detail/PlanCurve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// The single curves of a plan, those of nested chains and line strings taken apart, prepared for many questions. It
/// refers to the elements of the plan.
class AlignmentCurves {
public:
    struct Curve {
        PlanCurve curve;  // relative to its start
        Point2D origin;
        double length;
        Vec2D end;
        Vec2D startTangent;
        Vec2D endTangent;
        bool followsOn;  // starts where the curve before ends
    };
    /// A place beside a curve; right is positive.
    struct Foot {
        std::size_t curve;
        double along;   // from the start of the curve
        double offset;  // right is positive; at a corner the distance with the sign of its side
        bool isPerpendicular;
    };

    explicit AlignmentCurves(const Polyline2D& plan);

    /// Some element is no curve of the library with a length, or not finite: nothing can be asked.
    bool IsFaulty() const { return isFaulty; }
    bool IsEmpty() const { return curves.empty(); }
    double GetLength() const { return starts.back(); }
    const std::vector<Curve>& GetCurves() const { return curves; }
    /// Of the curves; one more for the end.
    const std::vector<double>& GetStarts() const { return starts; }

    /// The curve at a station, at a joint the one that starts there.
    std::size_t CurveAt(double station) const {
        const auto next = std::upper_bound(starts.begin() + 1, starts.end() - 1, station);
        return static_cast<std::size_t>(next - starts.begin()) - 1;
    }
    /// Clips rounding from a station; false where it is out of the plan by more than 1e-10.
    bool Clip(double& station) const;
    /// Bound of the curvature over stations of one curve.
    double GetMostCurvature(std::size_t curve, double from, double to) const;

    /// Calls visit(foot) for each place where the distance from the plan has a minimum that is at most the reach: feet
    /// of perpendiculars, corners that point to q, and ends that a perpendicular misses by at most the end tolerance.
    /// The visitor may lower the reach. Of a foot near a joint both curves may tell.
    template <class Visit>
    void ForEachFoot(const Point2D& q, double& squaredReach, Visit&& visit) const;

private:
    struct Along {
        double g;       // (P - q) . T
        double normal;  // (q - P) . N, N to the left
        Vec2D gap;      // q - P
    };

    void Append(const IPolyline2DElement& element, std::vector<Extent>& extents);
    static Along AlongOf(const Vec2D& gap, const Vec2D& tangent) {
        return {-gap.DotProduct(tangent), tangent.PerpDotProduct(gap), gap};
    }
    /// Calls visit(along, offset) for the minima of the distance strictly inside the curve.
    template <class Visit>
    static void ForEachInside(const Curve& c, const Vec2D& q, Visit& visit);
    template <class Visit>
    static void SearchTransition(const Curve& c, const Vec2D& q, double a, double b, const Along& atA, const Along& atB,
                                 int& halvings, Visit& visit);

    static constexpr double endTolerance = 1e-4;     // along the tangent, at ends and where curves do not join
    static constexpr double jointTolerance = 1e-10;  // along the tangent: rounding
    static constexpr int mostHalvings = 1000;        // of one curve: about the centre of an arc all is alike

    bool isFaulty = false;
    std::vector<Curve> curves;
    std::vector<double> starts{0.0};
    ExtentBoxes boxes{std::vector<Extent>()};
};

template <class Visit>
void AlignmentCurves::ForEachInside(const Curve& c, const Vec2D& q, Visit& visit) {
    if (const StraightCurve* const line = c.curve.AsStraight()) {
        const double along = q.DotProduct(line->direction);
        if (along > 0.0 && along < c.length) visit(along, -line->direction.PerpDotProduct(q));
        return;
    }
    if (const RoundCurve* const arc = c.curve.AsRound()) {
        double along = arc->ParameterOf(q, c.length);
        if (c.curve.IsClosed() && along < 0.0) along += c.length;
        if (!(along > 0.0 && along < c.length)) return;
        const PlanState at = c.curve.At(along);
        visit(along, -at.velocity.PerpDotProduct(q - at.position));
        return;
    }
    int halvings = 0;
    SearchTransition(c, q, 0.0, c.length, AlongOf(q, c.startTangent), AlongOf(q - c.end, c.endTangent), halvings,
                     visit);
}

// The distance has a minimum where g passes from below to above 0; g' = 1 - k n. Over a piece with half length h, all
// of n and g keep within h K (d + h) of the middle, d the distance there, and k between its values at the ends.
template <class Visit>
void AlignmentCurves::SearchTransition(const Curve& c, const Vec2D& q, double a, double b, const Along& atA,
                                       const Along& atB, int& halvings, Visit& visit) {
    const double half = 0.5 * (b - a);
    const double m = a + half;
    const PlanState state = c.curve.At(m);
    const Along middle = AlongOf(q - state.position, state.velocity);
    const double ka = c.curve.GetCurvature(a);
    const double kb = c.curve.GetCurvature(b);
    const double most = std::max(std::abs(ka), std::abs(kb));
    const double away = middle.gap.Length() + half;
    if (!(std::abs(middle.g) <= half * (1.0 + most * away))) return;
    const double slack = half * most * away;
    const double low = middle.normal - slack;
    const double high = middle.normal + slack;
    const auto [least, largest] = std::minmax({ka * low, ka * high, kb * low, kb * high});  // of k n
    if (least > 1.0) return;  // g falls: a maximum at most, about which rounding would show minima
    if (largest < 1.0 || ++halvings > mostHalvings) {
        if (!(atA.g < 0.0 && atB.g > 0.0)) return;
        const double along = BracketedNewton(a, b, [&](double p) {
            const PlanState at = c.curve.At(p);
            const Along here = AlongOf(q - at.position, at.velocity);
            return ValueAndSlope{here.g, 1.0 - c.curve.GetCurvature(p) * here.normal};
        });
        const PlanState at = c.curve.At(along);
        visit(along, -at.velocity.PerpDotProduct(q - at.position));
        return;
    }
    SearchTransition(c, q, a, m, atA, middle, halvings, visit);
    if (middle.g == 0.0 && 1.0 - c.curve.GetCurvature(m) * middle.normal > 0.0) visit(m, -middle.normal);
    SearchTransition(c, q, m, b, middle, atB, halvings, visit);
}

template <class Visit>
void AlignmentCurves::ForEachFoot(const Point2D& q, double& squaredReach, Visit&& visit) const {
    const auto offer = [&](std::size_t i, double along, double offset, double squared, bool isPerpendicular) {
        if (squared <= squaredReach) visit(Foot{i, along, offset, isPerpendicular});
    };
    boxes.ForEachNearest(q, squaredReach, [&](std::size_t i) {
        const Curve& c = curves[i];
        const Vec2D local = q - c.origin;
        const auto inside = [&](double along, double offset) { offer(i, along, offset, offset * offset, true); };
        ForEachInside(c, local, inside);
        // The start of a curve answers for a joint, the end only where nothing follows on.
        const Along start = AlongOf(local, c.startTangent);
        if (c.followsOn) {
            const Curve& before = curves[i - 1];
            const Along end = AlongOf((q - before.origin) - before.end, before.endTangent);
            if (start.g >= -jointTolerance && end.g <= jointTolerance) {
                const bool isSmooth = start.g <= endTolerance && end.g >= -endTolerance;
                const double side = -(before.endTangent + c.startTangent).PerpDotProduct(start.gap);
                offer(i, 0.0, isSmooth ? -start.normal : std::copysign(start.gap.Length(), side),
                      start.gap.NormSquared(), isSmooth);
            }
        } else if (std::abs(start.g) <= endTolerance) {
            offer(i, 0.0, -start.normal, start.gap.NormSquared(), true);
        }
        if (i + 1 < curves.size() && curves[i + 1].followsOn) return;
        const Along end = AlongOf(local - c.end, c.endTangent);
        if (std::abs(end.g) <= endTolerance) offer(i, c.length, -end.normal, end.gap.NormSquared(), true);
    });
}

}  // namespace Kalvio::Math::detail
