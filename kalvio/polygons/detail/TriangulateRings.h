#pragma once

#include "kalvio/polygons/detail/ConstrainedTriangulation.h"
#include "kalvio/polygons/detail/ExactPredicates.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Triangulates the area between an outer ring and the rings of its holes; rings may touch. Points closer than the
/// tolerance are one point, and a point this near to an edge lies on it.
/// @param points   all rings one after another, the outer one first, near the origin
/// @param ends     the end of each ring in `points`
/// @param corners  receives three indexes into `points` per triangle, running like the outer ring
/// @return false, `corners` untouched, for coordinates that are not finite, for rings that cross, and where the
///         triangles do not add up to the area of the outer ring less those of the holes
inline bool TriangulateRings(const std::vector<PlanePoint>& points, const std::vector<std::size_t>& ends,
                             double tolerance, std::vector<unsigned int>& corners) {
    for (const PlanePoint& p : points) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) return false;
    }
    if (points.size() > ConstrainedTriangulation::most) return false;
    ConstrainedTriangulation triangulation(points, tolerance);
    if (!triangulation.HasTriangles()) return false;
    double expected = 0.0;
    double allowed = 0.0;
    bool isClockwise = false;
    std::size_t begin = 0;
    for (std::size_t ring = 0; ring < ends.size(); ++ring) {
        double area = 0.0;
        for (std::size_t i = begin; i < ends[ring]; ++i) {
            const auto a = triangulation.GetVertexOf(i);
            const auto b = triangulation.GetVertexOf(i + 1 < ends[ring] ? i + 1 : begin);
            if (a == b) continue;
            if (!triangulation.RequireEdge(a, b, ConstrainedTriangulation::ofBorder, false)) return false;
            const PlanePoint& from = points[triangulation.GetPlaceOf(a)];
            const PlanePoint& to = points[triangulation.GetPlaceOf(b)];
            area += from.x * to.y - from.y * to.x;
            // A point on an edge moves it by the tolerance at most.
            allowed +=
                2.0 * tolerance * std::hypot(to.x - from.x, to.y - from.y) +
                8.0 * std::numeric_limits<double>::epsilon() * (std::abs(from.x * to.y) + std::abs(from.y * to.x));
        }
        begin = ends[ring];
        if (ring == 0) isClockwise = area < 0.0;
        expected += ring == 0 ? std::abs(area) : -std::abs(area);
    }

    const std::vector<std::uint8_t> enclosing = triangulation.FindEnclosing();
    double covered = 0.0;
    std::vector<unsigned int> result;
    for (std::size_t t = 0; t < enclosing.size(); ++t) {
        if (enclosing[t] == 0) continue;
        std::array<unsigned int, 3> places{};
        for (std::size_t i = 0; i < 3; ++i) {
            places[i] = triangulation.GetPlaceOf(triangulation.GetTriangles()[t].corner[i]);
        }
        const auto& [a, b, c] = places;
        covered += (points[b].x - points[a].x) * (points[c].y - points[a].y) -
                   (points[c].x - points[a].x) * (points[b].y - points[a].y);
        result.insert(result.end(), {a, isClockwise ? c : b, isClockwise ? b : c});
    }
    if (result.empty() || !(std::abs(covered - expected) <= allowed)) return false;
    corners = std::move(result);
    return true;
}

}  // namespace Kalvio::Math::detail
