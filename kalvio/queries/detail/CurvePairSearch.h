#pragma once

#include "kalvio/queries/detail/CurveContacts.h"

#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// Finds the crossings of two curves, and where they pass each other without crossing at an extreme of their distance
/// within the reach.
///
/// Pairs of pieces are halved until a bound decides. Pieces lie no further from their chords than a height h, which
/// excludes most pairs. With P' differing from the chord by a share of 4 h / |chord|, Newton's simplified method on
/// P(p) = Q(q) contracts by at most one half where
///
///     8 (h1 |chord2| + h2 |chord1|) <= |chord1 x chord2|,
///
/// so that such a pair has at most one common point, and the method finds it. Nearly parallel pieces are graphs y(x)
/// over a common axis; where the bounds of their curvatures tell which of the two y'' is larger, the gap between them
/// is convex: one minimum, and at most one crossing on either side of it. Where they overlap, the difference of the
/// y'' is small for pieces of almost equal curvature, so that the gap is almost linear and its ends often decide.
/// Others (curves that osculate) are halved until their heights drown in the noise.
class CurvePairSearch {
public:
    CurvePairSearch(const PlanCurve& firstCurve, const PlanCurve& secondCurve, const ContactLimits& contactLimits,
                    std::vector<CurveContact>& found)
        : first(firstCurve), second(secondCurve), limits(contactLimits), contacts(found) {}

    void Find();

private:
    struct Gap;
    class Profile;

    void Search(const PlanCurve::Knot& a0, const PlanCurve::Knot& a1, const PlanCurve::Knot& b0,
                const PlanCurve::Knot& b1, int depth);
    bool AreApart(const CurvePiece& a, const CurvePiece& b) const;
    void SolveCrossing(const CurvePiece& a, const CurvePiece& b);
    bool SolveGap(const CurvePiece& a, const CurvePiece& b);
    bool SolveEven(Profile& profile, double sag);
    void AddCrossing(Profile& profile, double low, double high, double rises);
    void SolveLast(const CurvePiece& a, const CurvePiece& b);
    void AddNearest(const Gap& least);
    bool AddWithin(double limit, double p, double q);

    // In all: real curves need some hundred, two that run along each other within the tolerance for long, some
    // thousand. Beyond that only pairs of large pieces are still halved. Near misses take no room from crossings.
    static constexpr int mostHalvings = 20000;
    static constexpr std::size_t mostMisses = 1000;
    static constexpr std::size_t mostCrossings = 1000;

    const PlanCurve& first;
    const PlanCurve& second;
    ContactLimits limits;
    std::vector<CurveContact>& contacts;
    int halvings = 0;
    std::size_t misses = 0;
};

}  // namespace Kalvio::Math::detail
