#pragma once

#include "kalvio/areas/Offset.h"
#include "kalvio/areas/detail/AreaOverlay.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Kalvio::Math {

class LineString2D;
class Polygon2D;
class PolygonCurve2D;
class Polyline2D;

}  // namespace Kalvio::Math

namespace Kalvio::Math::detail {

/// A chain as lines and arcs of less than a turn; the last corner has no arc. Gaps between elements are closed.
using ChainPath = AreaOverlay::Ring;

/// An element of a path that is neither line nor arc (its corner has a sense, and no centre), and its directions.
struct Bend {
    std::size_t corner = 0;
    PlanePoint from;  ///< at its start, unit
    PlanePoint to;    ///< at its end
};
/// A path of clothoids too, each the `ClothoidFit` of a bend, in the order of their corners.
struct FittedPath {
    ChainPath path;
    std::vector<Bend> clothoids;
};
/// The elements of a path that are neither lines nor arcs, in the order of their corners, and their parallels, by the
/// fewest arcs and clothoids. Where these fold there is none.
struct Transitions {
    double distance = 0.0;  ///< of the parallels
    std::vector<Bend> bends;
    std::vector<FittedPath> parallels;
};

/// @return false, `path` emptied, for coordinates that are not finite or beyond 1e100, and for an empty chain
[[nodiscard]] bool MakePath(const LineString2D& chain, ChainPath& path);
/// The same. Lines and arcs stay as they are; other elements are replaced by arcs (lines where flat) that join
/// tangentially, two for a stretch (K. M. Bolton, Biarc curves, 1975), each stretch as long as the tolerance allows.
/// @return false also where no such arcs are found
/// @param transitions  where given, and they have a parallel, elements are bends instead
[[nodiscard]] bool MakePath(const Polyline2D& chain, double tolerance, ChainPath& path,
                            Transitions* transitions = nullptr);
/// The path with the parallels in the place of its bends.
FittedPath WithParallels(const ChainPath& path, const Transitions& transitions);
/// The offset of the chain by distances that are linear between stations, see `Offset::Parallel`. Stations ascend.
[[nodiscard]] bool MakeWidened(const Polyline2D& chain, std::span<const Offset::Width> widths, double tolerance,
                               FittedPath& made);
/// `MakePath` by chords, no finer than 1e-9 of the length.
[[nodiscard]] bool MakeChords(const Polyline2D& chain, double height, ChainPath& path);
[[nodiscard]] bool MakeChords(const PolygonCurve2D& area, double height, Polygon2D& polygon);

/// @param isClosed  the last corner has an element, which leads to the first
ChainPath Reversed(const ChainPath& path, bool isClosed = false);

}  // namespace Kalvio::Math::detail
