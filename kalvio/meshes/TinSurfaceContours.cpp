#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/detail/SurfaceBuilder.h"
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

// Where a contour crosses a line, from one triangle beside it to another; in both it is straight, as are all others.
struct Crossing {
    Point2D at;
    Point2D right;  // ends of the line, seen along the contour
    Point2D left;
    Point2D before;  // third corners of the triangles
    Point2D after;
    bool isFixed = false;
};

// Contours with their corners cut (G. Chaikin, 1974), in such a way that they never cross each other: around each line
// that has corners lies a kite, its other corners half the way to the third ones of the triangles. No two kites
// overlap. Where one is convex, what passes it is replaced by chords of it: of paths that do not meet in a convex area,
// chords between their ends do not either. Where it is not, all that pass it keep their corners. The sides of the kite
// are lines with corners then, each beside two triangles in which all is straight: what is left of those outside, and
// of the kite.
class CornerCutter {
public:
    // @param isClosed  the last crossing leads to the first one
    static void Cut(std::vector<Crossing>& path, bool isClosed) {
        std::vector<Crossing> cut;
        for (std::size_t i = 0; i < path.size(); ++i) {
            const bool isInner = isClosed || (i > 0 && i + 1 < path.size());
            const Crossing& here = path[i];
            if (here.isFixed || !isInner) {
                cut.push_back(here);
                continue;
            }
            AddCut(path[i > 0 ? i - 1 : path.size() - 1].at, here, path[i + 1 < path.size() ? i + 1 : 0].at, cut);
        }
        path = std::move(cut);
    }

private:
    static void AddCut(const Point2D& from, const Crossing& here, const Point2D& to, std::vector<Crossing>& cut) {
        const Point2D middle = here.right + (here.left - here.right) * 0.5;
        const Point2D before = middle + (here.before - middle) * 0.5;
        const Point2D after = middle + (here.after - middle) * 0.5;
        Crossing in{{}, here.right, here.left, here.before, middle};
        Crossing out{{}, here.right, here.left, middle, here.after};
        (Turn(from, here.at, before) > 0.0 ? in.left : in.right) = before;
        (Turn(here.at, to, after) > 0.0 ? out.left : out.right) = after;
        const bool isConvex = Turn(before, here.right, after) > 0.0 && Turn(after, here.left, before) > 0.0;
        if (isConvex && SetAt(here.at, from, in) && SetAt(here.at, to, out)) {
            cut.insert(cut.end(), {in, out});
        } else {
            cut.push_back(here);
            cut.back().isFixed = true;
        }
    }

    static double Turn(const Point2D& a, const Point2D& b, const Point2D& c) {
        return detail::ExactTurn(detail::InPlan(a), detail::InPlan(b), detail::InPlan(c));
    }

    // Where the way between two places crosses its line.
    static bool SetAt(const Point2D& from, const Point2D& to, Crossing& crossing) {
        const Vec2D line = crossing.left - crossing.right;
        const double share = (crossing.right - from).PerpDotProduct(line) / (to - from).PerpDotProduct(line);
        crossing.at = from + (to - from) * std::clamp(share, 0.0, 1.0);
        return std::isfinite(share);
    }
};

// Contours of all levels. A vertex counts as above a level that it is on, so that a contour passes each triangle from
// one edge to one other: in where that leads up counter-clockwise, out where it leads down, the higher ground to the
// right.
class ContourTracer {
public:
    ContourTracer(const TinSurfacePatch3D& traced, const std::vector<bool>& ofChain,
                  const std::vector<double>& sortedLevels, unsigned int timesCut)
        : surface(traced),
          isOfChain(ofChain),
          levels(sortedLevels),
          cuts(timesCut),
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
    }

    // False where so many levels lie close above each other that their points would be many beside the triangles.
    bool Trace(std::vector<LineString3D>& contours) {
        constexpr double usual = 16.0;  // points for a triangle
        const double most = std::max(detail::mostSamples, usual * static_cast<double>(starts.size()));
        if (!(std::ldexp(static_cast<double>(starts.back()), static_cast<int>(cuts)) <= most)) return false;
        isDone.assign(starts.back(), 0);
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
        return true;
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

    // Where the contour crosses an edge out of its triangle.
    Crossing CrossingOf(unsigned int t, unsigned int edge, const Point3D& at) const {
        const auto corner = [this](unsigned int triangle, unsigned int k) {
            return vertices[indexes[3 * std::size_t{triangle} + k % 3]].GetPoint2D();
        };
        const auto middle = [&corner](unsigned int triangle) {
            const Point2D a = corner(triangle, 0);
            return a + ((corner(triangle, 1) - a) + (corner(triangle, 2) - a)) / 3.0;
        };
        Crossing crossing{at.GetPoint2D(), corner(t, edge), corner(t, edge + 1), middle(t), {}};
        const unsigned int next = surface.GetNeighbor(t, edge);
        crossing.isFixed = next == TinSurfacePatch3D::noTriangle || isOfChain[3 * std::size_t{t} + edge] ||
                           crossing.at == crossing.right || crossing.at == crossing.left;
        if (!crossing.isFixed) crossing.after = middle(next);
        return crossing;
    }

    void Follow(unsigned int first, std::uint32_t level) {
        std::vector<Point3D> points{PointOn(first, EdgeIn(first, level), level)};
        std::vector<Crossing> path(cuts > 0 ? 1 : 0, Crossing{points[0].GetPoint2D(), {}, {}, {}, {}, true});
        unsigned int t = first;
        while (t != TinSurfacePatch3D::noTriangle && isDone[Item(t, level)] == 0) {
            isDone[Item(t, level)] = 1;
            const unsigned int edge = EdgeOut(t, level);
            const Point3D next = PointOn(t, edge, level);
            const bool isNew = next.GetX() != points.back().GetX() || next.GetY() != points.back().GetY();
            if (isNew) points.push_back(next);
            if (isNew && cuts > 0) path.push_back(CrossingOf(t, edge, next));
            if (!isNew && cuts > 0) path.back().isFixed = true;  // it leaves by another triangle
            t = surface.GetNeighbor(t, edge);
        }
        if (points.size() < 2) return;
        if (cuts > 0) Smooth(path, t != TinSurfacePatch3D::noTriangle, points);
        ofLevel[level].emplace_back(std::move(points));
    }

    void Smooth(std::vector<Crossing>& path, bool isClosed, std::vector<Point3D>& points) const {
        if (isClosed) path.erase(path.begin());  // it is the last one
        for (unsigned int i = 0; i < cuts; ++i) CornerCutter::Cut(path, isClosed);
        if (isClosed) path.push_back(path.front());
        const double z = points.front().GetZ();
        points.clear();
        for (const Crossing& crossing : path) {
            if (points.empty() || crossing.at != points.back().GetPoint2D()) points.emplace_back(crossing.at, z);
        }
    }

    const TinSurfacePatch3D& surface;
    const std::vector<bool>& isOfChain;
    const std::vector<double>& levels;
    unsigned int cuts;
    const std::vector<Point3D>& vertices;
    const std::vector<unsigned int>& indexes;
    std::vector<std::uint32_t> rank;  // per vertex the number of levels that it is above
    std::vector<std::size_t> starts;  // per triangle, of its levels among all
    std::vector<std::uint8_t> isDone;
    std::vector<std::vector<LineString3D>> ofLevel;
};

constexpr double mostLevels = 1e6;
constexpr unsigned int mostCuts = 8;

}  // namespace

bool TinSurfacePatch3D::GetContours(const std::vector<double>& levels, std::vector<LineString3D>& contours,
                                    unsigned int cuts) const {
    std::vector<double> sorted = levels;
    if (cuts > mostCuts || !(static_cast<double>(levels.size()) <= mostLevels) ||
        !std::all_of(levels.begin(), levels.end(), [](double level) { return std::isfinite(level); })) {
        return false;
    }
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    return ContourTracer(*this, isOfChain, sorted, cuts).Trace(contours);
}

bool TinSurfacePatch3D::GetContours(double interval, std::vector<LineString3D>& contours, unsigned int cuts) const {
    if (cuts > mostCuts || !(interval > 0.0) || !std::isfinite(interval)) return false;
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
    return GetContours(levels, contours, cuts);
}

}  // namespace Kalvio::Math
