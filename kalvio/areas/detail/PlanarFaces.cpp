#include "kalvio/areas/detail/PlanarFaces.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

bool IsLeftBelow(const PlanePoint& a, const PlanePoint& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

}  // namespace

PlanarFaces::PlanarFaces(const std::vector<PlanePoint>& graphNodes, const std::vector<Edge>& graphEdges,
                         const std::vector<PlanePoint>& detourVertices, const std::vector<Detour>& lastDetours,
                         const VisitSegments& forEachNear)
    : nodes(graphNodes), edges(graphEdges), vertices(detourVertices), detours(lastDetours) {
    LinkHalfEdges();
    FindCycles();
    NestComponents(forEachNear);
}

void PlanarFaces::LinkHalfEdges() {
    firstAround.assign(nodes.size() + 1, 0);
    for (const Edge& edge : edges) {
        ++firstAround[edge.low + 1];
        ++firstAround[edge.high + 1];
    }
    for (std::size_t v = 0; v < nodes.size(); ++v) firstAround[v + 1] += firstAround[v];
    std::vector<std::uint32_t> filled(firstAround.begin(), firstAround.end() - 1);
    around.resize(2 * edges.size());
    for (std::uint32_t half = 0; half < around.size(); ++half) around[filled[Origin(half)]++] = half;

    next.resize(around.size());
    const auto isBelow = [](const PlanePoint& v, const PlanePoint& p) {
        return p.y < v.y || (p.y == v.y && p.x < v.x);
    };
    for (std::uint32_t v = 0; v < nodes.size(); ++v) {
        const auto from = around.begin() + firstAround[v];
        const auto to = around.begin() + firstAround[v + 1];
        if (to - from > 2) {
            std::sort(from, to, [&](std::uint32_t g, std::uint32_t h) {
                const PlanePoint& p = nodes[Origin(Twin(g))];
                const PlanePoint& q = nodes[Origin(Twin(h))];
                const bool isGBelow = isBelow(nodes[v], p);
                const bool isHBelow = isBelow(nodes[v], q);
                return isGBelow != isHBelow ? isHBelow : ExactTurn(nodes[v], p, q) > 0.0;
            });
        }
        for (auto half = from; half != to; ++half) next[Twin(*half)] = half == from ? *(to - 1) : *(half - 1);
    }
}

void PlanarFaces::FindCycles() {
    cycleOf.assign(next.size(), none);
    for (std::uint32_t first = 0; first < next.size(); ++first) {
        if (cycleOf[first] != none) continue;
        const auto cycle = static_cast<std::uint32_t>(start.size());
        start.push_back(first);
        for (std::uint32_t half = first; cycleOf[half] == none; half = next[half]) cycleOf[half] = cycle;
    }
}

// Of the half-edges that leave the leftmost (lowest) node of a component, the last one before the direction -x,
// counter-clockwise: outside of the component lies left of it.
std::uint32_t PlanarFaces::OuterHalfEdge(std::uint32_t leftmost) const {
    std::uint32_t outer = around[firstAround[leftmost]];
    for (std::uint32_t k = firstAround[leftmost] + 1; k < firstAround[leftmost + 1]; ++k) {
        if (ExactTurn(nodes[leftmost], VertexAfter(outer), VertexAfter(around[k])) > 0.0) outer = around[k];
    }
    return outer;
}

void PlanarFaces::NestComponents(const VisitSegments& forEachNear) {
    // Cycles with an edge in common are of one component.
    std::vector<std::uint32_t> parent(start.size());
    for (std::uint32_t cycle = 0; cycle < parent.size(); ++cycle) parent[cycle] = cycle;
    const auto find = [&parent](std::uint32_t cycle) {
        while (parent[cycle] != cycle) cycle = parent[cycle] = parent[parent[cycle]];
        return cycle;
    };
    for (std::uint32_t half = 0; half < next.size(); half += 2) parent[find(cycleOf[half])] = find(cycleOf[half + 1]);
    struct Leftmost {
        PlanePoint at;
        std::uint32_t half = none;  // that passes there, or begins
        bool isOnDetour = false;
    };
    std::vector<Leftmost> leftmost(start.size());  // of each component
    const auto offer = [&](const Leftmost& place) {
        Leftmost& best = leftmost[find(cycleOf[place.half])];
        if (best.half == none || IsLeftBelow(place.at, best.at)) best = place;
    };
    for (std::uint32_t v = 0; v < nodes.size(); ++v) {
        if (firstAround[v] < firstAround[v + 1]) offer({nodes[v], around[firstAround[v]], false});
    }
    for (auto half = static_cast<std::uint32_t>(next.size() - 2 * detours.size()); half < next.size(); half += 2) {
        const std::uint32_t at = DetourOf(half)->leftmost;
        if (at != none) offer({vertices[at], half, true});
    }
    std::erase_if(leftmost, [](const Leftmost& place) { return place.half == none; });
    std::sort(leftmost.begin(), leftmost.end(),
              [](const Leftmost& a, const Leftmost& b) { return IsLeftBelow(a.at, b.at); });

    // About from one component to the next, if they are spread; by the middle half of them, as a few far away tell
    // nothing of that.
    const std::size_t count = leftmost.size();
    const double leftEnd = count == 0 ? 0.0 : leftmost.front().at.x;
    double reach = 0.0;
    if (count > 0) {
        const double middle = 2.0 * (leftmost[3 * count / 4].at.x - leftmost[count / 4].at.x);
        const double whole = (leftmost.back().at.x - leftEnd) / static_cast<double>(count);
        reach = std::max(middle, whole) / std::sqrt(static_cast<double>(count));
    }
    faceOf.assign(start.size(), none);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> outside;  // the outer cycle of a component, a cycle around it
    for (const auto& [at, half, isOnDetour] : leftmost) {
        const std::uint32_t left = leftmost.size() == 1 ? none : FindLeftOf(at, reach, leftEnd, forEachNear);
        const std::uint32_t outer = !isOnDetour ? OuterHalfEdge(Origin(half)) : TurnsLeft(half) ? Twin(half) : half;
        outside.emplace_back(cycleOf[outer], left == none ? none : cycleOf[left]);
        faceOf[outside.back().first] = 0;
    }
    std::uint32_t faces = 1;
    for (std::uint32_t& face : faceOf) {
        if (face == none) face = faces++;
    }
    // What lies left of a component was placed before it.
    for (const auto& [outer, holder] : outside) faceOf[outer] = holder == none ? 0 : faceOf[holder];
    firstCycle.assign(faces, none);
    nextCycle.resize(start.size());
    for (auto cycle = static_cast<std::uint32_t>(start.size()); cycle-- > 0;) {
        nextCycle[cycle] = firstCycle[faceOf[cycle]];
        firstCycle[faceOf[cycle]] = cycle;
    }
}

// The half-edge with the point in its face that is the nearest one to the left, a little above the level of the point.
// Looks ever farther, first as far as `reach`, at last to the left end of all: what lies beyond the nearest is not
// looked at.
std::uint32_t PlanarFaces::FindLeftOf(const PlanePoint& p, double reach, double leftEnd,
                                      const VisitSegments& forEachNear) const {
    constexpr double growth = 4.0;
    for (;; reach *= growth) {
        std::uint32_t nearest = none;
        PlanePoint low;
        PlanePoint high;
        Extent ray;
        ray.minX = reach > 0.0 ? std::max(p.x - reach, leftEnd) : leftEnd;
        ray.maxX = p.x;
        ray.minY = ray.maxY = p.y;
        forEachNear(ray, [&](std::uint32_t half, const PlanePoint& from, const PlanePoint& to) {
            const bool isUp = from.y < to.y;
            const PlanePoint& a = isUp ? from : to;
            const PlanePoint& b = isUp ? to : from;
            if (!(a.y <= p.y && b.y > p.y) || !(ExactTurn(a, b, p) < 0.0)) return;
            if (nearest != none) {
                // Edges do not cross: an end of one that lies beside the other tells which is farther right.
                double side = a.y >= low.y ? -ExactTurn(low, high, a) : ExactTurn(a, b, low);
                if (side == 0.0) side = b.y <= high.y ? -ExactTurn(low, high, b) : ExactTurn(a, b, high);
                if (!(side > 0.0)) return;
            }
            nearest = isUp ? Twin(half) : half;  // downward: its left is where the point lies
            low = a;
            high = b;
        });
        if (ray.minX == leftEnd) return nearest;
        if (nearest != none && ExactTurn(low, high, {ray.minX, p.y}) > 0.0) return nearest;
    }
}

}  // namespace Kalvio::Math::detail
