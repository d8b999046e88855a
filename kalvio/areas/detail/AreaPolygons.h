#pragma once

#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/curves/Polyline2D.h"

#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// The areas of an overlay as polygons: `Polygon2D` for areas without arcs, `PolygonCurve2D` for any.
template <class Polygon>
std::vector<Polygon> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);
template <>
std::vector<Polygon2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);
template <>
std::vector<PolygonCurve2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);

/// A chain of corners, the last without an arc, as lines and arcs. Lines no longer than the tolerance are left out.
/// @param clothoids  elements that are, in the order of their corners
Polyline2D ChainOf(const AreaOverlay::Ring& path, double tolerance, std::span<const Bend> clothoids = {});

}  // namespace Kalvio::Math::detail
