#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/polygons/LineString3D.h"

#include <vector>

namespace Kalvio::Math::detail {

/// How far the vertical plane over a line in plan reaches.
enum class PlanReach : bool { Segment, InfiniteLine };

/// Whether triangles in a vertical plane stand there as walls, or, of a surface without walls, by rounding alone.
enum class Upright : bool { Walls, Slivers };

/// Appends the section of a mesh along the plan line a -> b: see `IndexedTriangleSet3D::GetSections`.
void AppendSection(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes, const Point2D& a,
                   const Point2D& b, PlanReach reach, std::vector<LineString3D>& out);

/// The same along the segments of a chain in plan.
void AppendSection(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes,
                   const std::vector<Point2D>& chain, Upright upright, std::vector<LineString3D>& out);

}  // namespace Kalvio::Math::detail
