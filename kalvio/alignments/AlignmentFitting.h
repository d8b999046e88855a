#pragma once

#include "kalvio/Export.h"
#include "kalvio/alignments/Alignment.h"
#include "kalvio/alignments/AlignmentDesign.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Kalvio::Math {

/// Static functions that lay alignments through surveyed points: straights with curves of an arc, or of an arc between
/// transitions, that turn by less than half a circle.
///
/// The squares of the offsets, at right angles to the plan, have the least sum; the plan is that of a polygon of
/// tangents, so that it is continuous whatever the points are (Gauss-Newton with the damping of Levenberg 1944 and
/// Marquardt 1963).
///
///     std::vector<AlignmentFitting::Corner> corners;
///     AlignmentFitting::Result road;
///     if (!AlignmentFitting::Propose(survey, 0.01, AlignmentFitting::Law::Clothoid, corners)) return false;
///     if (AlignmentFitting::Fit(survey, corners, road)) Show(road.scatter);  // along road.plan
class KALVIO_MATH_API AlignmentFitting {
public:
    /// Of a tangent polygon, with its curve.
    using Corner = AlignmentDesign::Corner;
    /// Curvature law of a transition.
    using Law = AlignmentDesign::Law;

    /// An alignment through points.
    struct Result {
        std::vector<Corner> corners;           ///< the polygon of tangents
        Polyline2D plan;                       ///< from the first to the last foot of a point
        std::vector<Alignment::Place> places;  ///< of the points beside the plan, in their order
        double scatter = 0.0;    ///< standard deviation of an offset; 0 where there are no more points than unknowns
        std::size_t worst = 0;   ///< index of the point with the largest offset
        bool isAtLimit = false;  ///< the curves touch each other or leave no arc; the points want more than fits
    };

    /// The alignment of the kinds of `start` nearest to the points.
    /// @param points  along the alignment; each counts for the part of the plan that is nearest to it
    /// @param start   a polygon of tangents that is roughly right and makes a plan. What is 0 stays so: a length (there
    ///                is no transition), a radius (there is no curve)
    /// @return false, `result` untouched, for fewer points than unknowns, values not finite, a start without a plan,
    ///         and where no least sum is found
    [[nodiscard]] static bool Fit(std::span<const Point2D> points, std::span<const Corner> start, Result& result);

    /// Straights and curves for `Fit`, from the curvature of the chain of points: circles of radii up to 5000, with
    /// transitions where they bring the points nearer to the plan by more than chance does (Schwarz 1978).
    /// @param points   in their order along the alignment
    /// @param scatter  standard deviation of the points, 0 or larger
    /// @return false, `corners` untouched, where there are fewer than 5 points or no such alignment lies near to them
    [[nodiscard]] static bool Propose(std::span<const Point2D> points, double scatter, Law law,
                                      std::vector<Corner>& corners);
};

}  // namespace Kalvio::Math
