#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/polygons/detail/ConstrainedTriangulation.h"
#include "kalvio/polygons/detail/ExactTurn.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
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
inline bool TriangulateRings(std::vector<PlanePoint> points, const std::vector<std::size_t>& ends, double tolerance,
                             std::vector<unsigned int>& corners) {
    double reach = 0.0;
    for (const PlanePoint& p : points) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) return false;
        reach = std::max({reach, std::abs(p.x), std::abs(p.y)});
    }
    if (!(reach > 0.0)) return false;
    // To the square [-1, 1] by a power of two, which rounds nothing.
    int exponent = 0;
    std::frexp(reach, &exponent);
    for (PlanePoint& p : points) p = {std::ldexp(p.x, -exponent), std::ldexp(p.y, -exponent)};
    const double limit = std::ldexp(tolerance, -exponent);

    // The points in the order of their distance along a line that is not likely to be a direction of the data: only
    // neighbours in this order can be one point.
    const auto along = [&points](std::size_t i) { return 0.8253 * points[i].x + 0.5647 * points[i].y; };
    std::vector<std::size_t> order(points.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return along(a) < along(b) || (along(a) == along(b) && a < b); });
    std::vector<std::size_t> vertexOf(points.size());
    std::vector<std::size_t> firstOf;
    std::vector<PlanePoint> vertices;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::size_t p = order[i];
        vertexOf[p] = vertices.size();
        for (std::size_t j = i; j-- > 0 && along(p) - along(order[j]) <= 2.0 * limit;) {
            const PlanePoint& vertex = vertices[vertexOf[order[j]]];
            if (std::hypot(vertex.x - points[p].x, vertex.y - points[p].y) > limit) continue;
            vertexOf[p] = vertexOf[order[j]];
            break;
        }
        if (vertexOf[p] < vertices.size()) continue;
        vertices.push_back(points[p]);
        firstOf.push_back(p);
    }
    if (vertices.size() < 3) return false;

    ConstrainedTriangulation triangulation(vertices, limit);
    double expected = 0.0;
    double allowed = 0.0;
    bool isClockwise = false;
    std::size_t begin = 0;
    for (std::size_t ring = 0; ring < ends.size(); ++ring) {
        double area = 0.0;
        for (std::size_t i = begin; i < ends[ring]; ++i) {
            const std::size_t a = vertexOf[i];
            const std::size_t b = vertexOf[i + 1 < ends[ring] ? i + 1 : begin];
            if (a == b) continue;
            if (!triangulation.RequireEdge(a, b)) return false;
            const PlanePoint& from = vertices[a];
            const PlanePoint& to = vertices[b];
            area += from.x * to.y - from.y * to.x;
            // A point on an edge moves it by the tolerance at most.
            allowed +=
                2.0 * limit * std::hypot(to.x - from.x, to.y - from.y) +
                8.0 * std::numeric_limits<double>::epsilon() * (std::abs(from.x * to.y) + std::abs(from.y * to.x));
        }
        begin = ends[ring];
        if (ring == 0) isClockwise = area < 0.0;
        expected += ring == 0 ? std::abs(area) : -std::abs(area);
    }

    const std::vector<ConstrainedTriangulation::Corners> triangles = triangulation.GetEnclosed();
    double covered = 0.0;
    std::vector<unsigned int> result;
    result.reserve(3 * triangles.size());
    for (const auto& [a, b, c] : triangles) {
        covered += (vertices[b].x - vertices[a].x) * (vertices[c].y - vertices[a].y) -
                   (vertices[c].x - vertices[a].x) * (vertices[b].y - vertices[a].y);
        for (const std::size_t vertex : {a, isClockwise ? c : b, isClockwise ? b : c}) {
            result.push_back(static_cast<unsigned int>(firstOf[vertex]));
        }
    }
    if (triangles.empty() || !(std::abs(covered - expected) <= allowed)) return false;
    corners = std::move(result);
    return true;
}

}  // namespace Kalvio::Math::detail
