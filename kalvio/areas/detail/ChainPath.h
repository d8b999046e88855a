#pragma once

#include "kalvio/areas/Offset.h"
#include "kalvio/areas/detail/AreaOverlay.h"

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

/// @return false, `path` emptied, for coordinates that are not finite or beyond 1e100, and for an empty chain
[[nodiscard]] bool MakePath(const LineString2D& chain, ChainPath& path);
/// The same. Lines and arcs stay as they are; other elements are replaced by arcs (lines where flat) that join
/// tangentially, two for a stretch (K. M. Bolton, Biarc curves, 1975), each stretch as long as the tolerance allows.
/// @return false also where no such arcs are found
[[nodiscard]] bool MakePath(const Polyline2D& chain, double tolerance, ChainPath& path);
/// The offset of the chain by distances that are linear between stations, see `Offset::Parallel`. Stations ascend.
[[nodiscard]] bool MakeWidened(const Polyline2D& chain, std::span<const Offset::Width> widths, double tolerance,
                               ChainPath& path);
/// `MakePath` by chords, no finer than 1e-9 of the length.
[[nodiscard]] bool MakeChords(const Polyline2D& chain, double height, ChainPath& path);
[[nodiscard]] bool MakeChords(const PolygonCurve2D& area, double height, Polygon2D& polygon);

/// @param isClosed  the last corner has an element, which leads to the first
ChainPath Reversed(const ChainPath& path, bool isClosed = false);

}  // namespace Kalvio::Math::detail
