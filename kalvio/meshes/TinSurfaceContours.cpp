#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/detail/SurfaceBuilder.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <array>
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
// right. All steps through triangles are made first, in their order: the way along a contour then reads those alone.
class ContourTracer {
public:
    ContourTracer(const TinSurfacePatch3D& traced, const std::vector<unsigned int>& beyondEdges,
                  const std::vector<bool>& ofChain, const std::vector<double>& sortedLevels, unsigned int timesCut)
        : neighbors(beyondEdges),
          isOfChain(ofChain),
          levels(sortedLevels),
          cuts(timesCut),
          vertices(traced.GetTriangles().GetVertices()),
          indexes(traced.GetTriangles().GetIndexes()),
          ofLevel(sortedLevels.size()) {
        rank.reserve(vertices.size());
        for (const Point3D& v : vertices) rank.push_back(LevelsUpTo(v.GetZ()));
        before.reserve(indexes.size() / 3);
        for (unsigned int t = 0; t < indexes.size() / 3; ++t) {
            const auto [low, high] = RanksOf(t);
            before.push_back(count - low);
            if (low != high) crossed.push_back(t);
            count += high - low;
        }
    }

    // False where so many levels lie close above each other that their points would be many beside the triangles.
    bool Trace(std::vector<LineString3D>& contours) {
        constexpr double usual = 16.0;  // points for a triangle
        const double most = std::max(detail::mostSamples, usual * static_cast<double>(before.size()));
        if (!(std::ldexp(static_cast<double>(count), static_cast<int>(cuts)) <= most)) return false;
        steps.reserve(count);
        isEntered.assign(count, 0);
        for (const unsigned int t : crossed) AddSteps(t);
        // First those that come in over the border; what is left then is closed.
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (isEntered[i] == 0) Follow(i);
        }
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (steps[i].next != passed) Follow(i);
        }
        for (std::vector<LineString3D>& lines : ofLevel) {
            std::move(lines.begin(), lines.end(), std::back_inserter(contours));
        }
        return true;
    }

private:
    // Through a triangle.
    struct Step {
        Point2D to;        // where it leaves
        std::size_t next;  // the step from there
        unsigned int triangle;
        unsigned int edge;
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::size_t passed = none - 1;

    std::pair<std::uint32_t, std::uint32_t> RanksOf(unsigned int t) const {
        const unsigned int* const corners = indexes.data() + 3 * std::size_t{t};
        const std::uint32_t a = rank[corners[0]];
        const std::uint32_t b = rank[corners[1]];
        const std::uint32_t c = rank[corners[2]];
        return {std::min(std::min(a, b), c), std::max(std::max(a, b), c)};
    }
    // The number of levels at or below a height: halved without a branch, which would be guessed wrong each time.
    std::uint32_t LevelsUpTo(double z) const {
        const double* from = levels.data();
        for (std::size_t left = levels.size(); left > 0;) {
            const std::size_t half = (left + 1) / 2;
            from += from[half - 1] <= z ? half : 0;
            left -= half;
        }
        return static_cast<std::uint32_t>(from - levels.data());
    }
    // By the corners above a level, as bits: the edge that leads down. Where those below are the bits it leads up.
    static unsigned int EdgeOut(unsigned int above) {
        constexpr std::array<unsigned char, 8> edges{0, 0, 1, 1, 2, 0, 2, 0};
        return edges[above];
    }
    unsigned int Above(unsigned int t, std::uint32_t level) const {
        const unsigned int* const corners = indexes.data() + 3 * std::size_t{t};
        return (rank[corners[0]] > level ? 1U : 0U) | (rank[corners[1]] > level ? 2U : 0U) |
               (rank[corners[2]] > level ? 4U : 0U);
    }

    void AddSteps(unsigned int t) {
        const auto [low, high] = RanksOf(t);
        for (std::uint32_t level = low; level < high; ++level) {
            const unsigned int edge = EdgeOut(Above(t, level));
            const unsigned int beyond = neighbors[3 * std::size_t{t} + edge];
            const std::size_t next = beyond == TinSurfacePatch3D::noTriangle ? none : before[beyond] + level;
            if (next != none) isEntered[next] = 1;
            steps.push_back({PointBetween(t, edge + 1, edge, level), next, t, edge});
        }
    }

    // From the lower end, so that both triangles at an edge have the same point.
    Point2D PointBetween(unsigned int t, unsigned int lower, unsigned int upper, std::uint32_t level) const {
        const Point3D& low = vertices[indexes[3 * std::size_t{t} + lower % 3]];
        const Point3D& high = vertices[indexes[3 * std::size_t{t} + upper % 3]];
        const double z = levels[level];
        if (!(z < high.GetZ())) return high.GetPoint2D();
        const double share = (z - low.GetZ()) / (high.GetZ() - low.GetZ());
        return {low.GetX() + share * (high.GetX() - low.GetX()), low.GetY() + share * (high.GetY() - low.GetY())};
    }

    // Where the contour crosses an edge out of its triangle.
    Crossing CrossingOf(unsigned int t, unsigned int edge, const Point2D& at) const {
        const auto corner = [this](unsigned int triangle, unsigned int k) {
            return vertices[indexes[3 * std::size_t{triangle} + k % 3]].GetPoint2D();
        };
        const auto middle = [&corner](unsigned int triangle) {
            const Point2D a = corner(triangle, 0);
            return a + ((corner(triangle, 1) - a) + (corner(triangle, 2) - a)) / 3.0;
        };
        Crossing crossing{at, corner(t, edge), corner(t, edge + 1), middle(t), {}};
        const unsigned int next = neighbors[3 * std::size_t{t} + edge];
        crossing.isFixed = next == TinSurfacePatch3D::noTriangle || isOfChain[3 * std::size_t{t} + edge] ||
                           crossing.at == crossing.right || crossing.at == crossing.left;
        if (!crossing.isFixed) crossing.after = middle(next);
        return crossing;
    }

    void Follow(std::size_t first) {
        const unsigned int from = steps[first].triangle;
        const auto level = static_cast<std::uint32_t>(first - before[from]);
        const double z = levels[level];
        const unsigned int edgeIn = EdgeOut(7 - Above(from, level));
        Point2D last = PointBetween(from, edgeIn, edgeIn + 1, level);
        std::vector<Point3D> points{Point3D(last, z)};
        std::vector<Crossing> path(cuts > 0 ? 1 : 0, Crossing{last, {}, {}, {}, {}, true});
        std::size_t i = first;
        while (i != none && steps[i].next != passed) {
            const Step step = steps[i];
            steps[i].next = passed;
            const bool isNew = step.to.GetX() != last.GetX() || step.to.GetY() != last.GetY();
            if (isNew) points.emplace_back(step.to, z);
            if (isNew && cuts > 0) path.push_back(CrossingOf(step.triangle, step.edge, step.to));
            if (!isNew && cuts > 0) path.back().isFixed = true;  // it leaves by another triangle
            last = step.to;
            i = step.next;
        }
        if (points.size() < 2) return;
        if (cuts > 0) Smooth(path, i != none, points);
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

    const std::vector<unsigned int>& neighbors;
    const std::vector<bool>& isOfChain;
    const std::vector<double>& levels;
    unsigned int cuts;
    const std::vector<Point3D>& vertices;
    const std::vector<unsigned int>& indexes;
    std::vector<std::uint32_t> rank;    // per vertex the number of levels that it is above
    std::vector<std::size_t> before;    // per triangle, what its levels are to be added to for their steps
    std::vector<unsigned int> crossed;  // triangles with levels
    std::size_t count = 0;              // of steps
    std::vector<Step> steps;
    std::vector<std::uint8_t> isEntered;
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
    return ContourTracer(*this, neighbors, isOfChain, sorted, cuts).Trace(contours);
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
