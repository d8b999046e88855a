#pragma once

#include "kalvio/areas/detail/AreaOverlay.h"

#include <vector>

namespace Kalvio::Math::detail {

/// The areas of an overlay as polygons: `Polygon2D` for areas without arcs, `PolygonCurve2D` for any.
template <class Polygon>
std::vector<Polygon> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);
template <>
std::vector<Polygon2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);
template <>
std::vector<PolygonCurve2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas);

}  // namespace Kalvio::Math::detail
