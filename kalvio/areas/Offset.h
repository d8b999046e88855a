#pragma once

#include "kalvio/Export.h"
#include "kalvio/areas/BufferCreator.h"

#include <vector>

namespace Kalvio::Math {

class LineString2D;
class Polyline2D;
class Tolerances;

/// Parallels of chains in plan: chains at a distance from them, positive to the right of the direction of travel, that
/// run in the same direction.
///
///       -----------> chain
///       -----------> distance > 0
///
/// Lines and arcs have lines and arcs about the same centre. The raw parallels of clothoids, spirals and parabolas are
/// clothoids (with a line beside where the curvature is 0), or arcs where these reach farther, that join tangentially,
/// each as long as the user tolerance allows; where they fold, and in trimmed parallels, they are arcs alone, which
/// join tangentially but at cusps and, beyond a centre of curvature, keep the tolerance from the source rather than
/// from its parallel. Elements no longer than the user tolerance are left out, with all that they turn. Corners that
/// turn away are closed by a join: an arc, a mitre, or a segment where it would reach farther than the limit, in
/// distances. A chain that ends within the user tolerance of its start is closed, and so is its parallel.
///
///     Polyline2D edge;
///     if (Offset::Parallel(plan, 3.5, edge, tolerances)) value = edge.GetLength();
///
/// All functions answer false, the result untouched, for coordinates and distances that are not finite (or beyond
/// 1e100), chains no longer than the user tolerance, transitions that no such arcs keep to, a limit that is not
/// positive, and when trimmed for distances that rounding leaves no shape, as in `BufferCreator` (not round).
class KALVIO_MATH_API Offset {
public:
    /// What closes the outside of a corner.
    using Join = BufferCreator::Join;

    /// The raw parallel, one chain with its loops. On the inside of a corner two lines end where they meet, as long as
    /// both reach that far; else a segment joins the elements. An arc of a radius smaller than the distance comes out
    /// on the far side of its centre. @return false, the result untouched, also where nothing of it is longer than the
    /// user tolerance, as beside an arc at its centre
    [[nodiscard]] static bool Parallel(const LineString2D& chain, double distance, Polyline2D& result,
                                       const Tolerances& tolerances, Join join = Join::Round, double mitreLimit = 2.0);
    [[nodiscard]] static bool Parallel(const Polyline2D& chain, double distance, Polyline2D& result,
                                       const Tolerances& tolerances, Join join = Join::Round, double mitreLimit = 2.0);

    /// A distance at a station along the chain.
    struct Width {
        double station = 0.0;   ///< in plan, ascending
        double distance = 0.0;  ///< positive to the right
    };
    /// The line at a distance that changes, linearly between the given stations, which ascend (two at one station are a
    /// step); before the first and after the last it is theirs. Lines stay lines, arcs at one distance arcs; all else
    /// becomes clothoids and arcs that join tangentially, within the user tolerance. Q = P + d n goes along (1 + d k) t
    /// + d' n (t, n: tangent and normal to the right, k: curvature, positive to the left). Corners are closed as by
    /// `Parallel`, round outside; a chain that ends where it starts is not closed.
    /// @return false, the result untouched, also where the line folds (1 + d k <= 0), without a width, and where
    ///         stations descend or numbers are not finite
    [[nodiscard]] static bool Parallel(const LineString2D& chain, const std::vector<Width>& widths, Polyline2D& result,
                                       const Tolerances& tolerances);
    [[nodiscard]] static bool Parallel(const Polyline2D& chain, const std::vector<Width>& widths, Polyline2D& result,
                                       const Tolerances& tolerances);

    /// The parallel without all that is nearer to the chain than the distance: the border of the chain's buffer (with
    /// round ends) on that side, in stretches along the chain. There may be none. Decided as in `BufferCreator`:
    /// corners within 1.42 user tolerances of each other become one.
    [[nodiscard]] static bool TrimmedParallel(const LineString2D& chain, double distance,
                                              std::vector<Polyline2D>& result, const Tolerances& tolerances,
                                              Join join = Join::Round, double mitreLimit = 2.0);
    [[nodiscard]] static bool TrimmedParallel(const Polyline2D& chain, double distance, std::vector<Polyline2D>& result,
                                              const Tolerances& tolerances, Join join = Join::Round,
                                              double mitreLimit = 2.0);
};

}  // namespace Kalvio::Math
