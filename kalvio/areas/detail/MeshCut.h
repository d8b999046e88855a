#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"

#include <functional>
#include <vector>

namespace Kalvio::Math {

class Polygon2D;

}  // namespace Kalvio::Math

namespace Kalvio::Math::detail {

/// The part of a mesh inside an area in plan, see `GeometryClipper::Clip`. Triangles that the border comes near to are
/// laid over the area, all at once, and what they have in common with it is triangulated; points on a side of a
/// triangle become points of all triangles with that side. Those upright in plan are cut along their stations. All
/// others are inside or outside as a whole.
///
/// @param vertices  finite; receives those at the border
/// @param indexes   of triangles that exist; replaced
/// @param area      finite
/// @param isInside  whether a place lies in the area, borders included
/// @return false where borders or triangles cannot be laid over each other; vertices and indexes are of no use then
[[nodiscard]] bool CutMesh(std::vector<Point3D>& vertices, std::vector<unsigned int>& indexes, const Polygon2D& area,
                           const std::function<bool(const Point2D&)>& isInside);

}  // namespace Kalvio::Math::detail
