#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kalvio::Math {

namespace {

// Contours of all levels. A vertex counts as above a level that it is on, so that a contour passes each triangle from
// one edge to one other: in where that leads up counter-clockwise, out where it leads down, the higher ground to the
// right.
class ContourTracer {
public:
    ContourTracer(const TinSurfacePatch3D& traced, const std::vector<double>& sortedLevels)
        : surface(traced),
          levels(sortedLevels),
          vertices(traced.GetTriangles().GetVertices()),
          indexes(traced.GetTriangles().GetIndexes()),
          ofLevel(sortedLevels.size()) {
        rank.reserve(vertices.size());
        for (const Point3D& v : vertices) {
            rank.push_back(
                static_cast<std::uint32_t>(std::upper_bound(levels.begin(), levels.end(), v.GetZ()) - levels.begin()));
        }
        starts.reserve(indexes.size() / 3 + 1);
        starts.push_back(0);
        for (unsigned int t = 0; t < indexes.size() / 3; ++t) {
            const auto [low, high] = RanksOf(t);
            starts.push_back(starts.back() + (high - low));
        }
        isDone.assign(starts.back(), 0);
    }

    void Trace(std::vector<LineString3D>& contours) {
        // First those that come in over the border; what is left then is closed.
        for (const bool isOpen : {true, false}) {
            for (unsigned int t = 0; t < indexes.size() / 3; ++t) {
                const auto [low, high] = RanksOf(t);
                for (std::uint32_t level = low; level < high; ++level) {
                    if (isDone[Item(t, level)] != 0) continue;
                    if (isOpen && surface.GetNeighbor(t, EdgeIn(t, level)) != TinSurfacePatch3D::noTriangle) continue;
                    Follow(t, level);
                }
            }
        }
        for (std::vector<LineString3D>& lines : ofLevel) {
            std::move(lines.begin(), lines.end(), std::back_inserter(contours));
        }
    }

private:
    std::pair<std::uint32_t, std::uint32_t> RanksOf(unsigned int t) const {
        const unsigned int* const corners = indexes.data() + 3 * std::size_t{t};
        return std::minmax({rank[corners[0]], rank[corners[1]], rank[corners[2]]});
    }
    std::size_t Item(unsigned int t, std::uint32_t level) const { return starts[t] + (level - RanksOf(t).first); }
    bool IsAbove(unsigned int t, unsigned int corner, std::uint32_t level) const {
        return rank[indexes[3 * std::size_t{t} + corner % 3]] > level;
    }
    unsigned int EdgeIn(unsigned int t, std::uint32_t level) const {
        unsigned int edge = 0;
        while (IsAbove(t, edge, level) || !IsAbove(t, edge + 1, level)) ++edge;
        return edge;
    }
    unsigned int EdgeOut(unsigned int t, std::uint32_t level) const {
        unsigned int edge = 0;
        while (!IsAbove(t, edge, level) || IsAbove(t, edge + 1, level)) ++edge;
        return edge;
    }

    // From the lower end, so that both triangles at an edge have the same point.
    Point3D PointOn(unsigned int t, unsigned int edge, std::uint32_t level) const {
        const Point3D* low = &vertices[indexes[3 * std::size_t{t} + edge]];
        const Point3D* high = &vertices[indexes[3 * std::size_t{t} + (edge + 1) % 3]];
        if (low->GetZ() > high->GetZ()) std::swap(low, high);
        const double z = levels[level];
        if (!(z < high->GetZ())) return *high;
        const double share = (z - low->GetZ()) / (high->GetZ() - low->GetZ());
        return {low->GetX() + share * (high->GetX() - low->GetX()), low->GetY() + share * (high->GetY() - low->GetY()),
                z};
    }

    void Follow(unsigned int first, std::uint32_t level) {
        std::vector<Point3D> points{PointOn(first, EdgeIn(first, level), level)};
        unsigned int t = first;
        while (t != TinSurfacePatch3D::noTriangle && isDone[Item(t, level)] == 0) {
            isDone[Item(t, level)] = 1;
            const unsigned int edge = EdgeOut(t, level);
            const Point3D next = PointOn(t, edge, level);
            if (next.GetX() != points.back().GetX() || next.GetY() != points.back().GetY()) points.push_back(next);
            t = surface.GetNeighbor(t, edge);
        }
        if (points.size() > 1) ofLevel[level].emplace_back(std::move(points));
    }

    const TinSurfacePatch3D& surface;
    const std::vector<double>& levels;
    const std::vector<Point3D>& vertices;
    const std::vector<unsigned int>& indexes;
    std::vector<std::uint32_t> rank;  // per vertex the number of levels that it is above
    std::vector<std::size_t> starts;  // per triangle, of its levels among all
    std::vector<std::uint8_t> isDone;
    std::vector<std::vector<LineString3D>> ofLevel;
};

constexpr double mostLevels = 1e6;

}  // namespace

bool TinSurfacePatch3D::GetContours(const std::vector<double>& levels, std::vector<LineString3D>& contours) const {
    std::vector<double> sorted = levels;
    if (!(static_cast<double>(levels.size()) <= mostLevels) ||
        !std::all_of(levels.begin(), levels.end(), [](double level) { return std::isfinite(level); })) {
        return false;
    }
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    ContourTracer(*this, sorted).Trace(contours);
    return true;
}

bool TinSurfacePatch3D::GetContours(double interval, std::vector<LineString3D>& contours) const {
    if (!(interval > 0.0) || !std::isfinite(interval)) return false;
    if (neighbors.empty()) return true;
    double low = triangles.GetVertex(0).GetZ();
    double high = low;
    for (const Point3D& v : triangles.GetVertices()) {
        low = std::min(low, v.GetZ());
        high = std::max(high, v.GetZ());
    }
    const double first = std::ceil(low / interval);
    const double count = std::floor(high / interval) - first + 1.0;
    if (!(count <= mostLevels)) return false;
    std::vector<double> levels;
    for (double i = 0.0; i < count; ++i) levels.push_back((first + i) * interval);
    return GetContours(levels, contours);
}

}  // namespace Kalvio::Math
