#pragma once

#include "kalvio/areas/detail/BorderNoding.h"
#include "kalvio/areas/detail/PlaneVectors.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Kalvio::Math::detail {

/// The faces of a plane graph, by half-edges: edge e has 2 e from its lower node to its higher one, and 2 e + 1 back.
/// The face of a half-edge lies on its left. Face 0 is the unbounded one.
///
/// Orders about nodes, and which face a component lies in, are exact.
class PlanarFaces {
public:
    static constexpr std::uint32_t none = BorderNoding::none;

    struct Edge {
        std::uint32_t low;
        std::uint32_t high;
    };

    /// The vertices that an edge passes from its lower node to its higher one, by numbers.
    struct Detour {
        std::uint32_t first;
        std::uint32_t end;
        std::uint32_t leftmost;  ///< lowest of those; `none` where there are none
    };

    /// Gets the half-edge that runs along a segment, and its ends.
    using VisitSegment = std::function<void(std::uint32_t half, const PlanePoint& from, const PlanePoint& to)>;
    /// Visits the segments of edges whose boxes meet an extent.
    using VisitSegments = std::function<void(const Extent& extent, const VisitSegment& visit)>;

    /// Edges lead straight from node to node, but the last ones, between nodes of two edges, take detours on which they
    /// meet no other.
    /// @param detourVertices  of each detour also the ends, before the first and after the last
    /// @param forEachNear  serves to find what lies left of a component
    PlanarFaces(const std::vector<PlanePoint>& graphNodes, const std::vector<Edge>& graphEdges,
                const std::vector<PlanePoint>& detourVertices, const std::vector<Detour>& lastDetours,
                const VisitSegments& forEachNear);

    std::uint32_t GetHalfEdgeCount() const { return static_cast<std::uint32_t>(2 * edges.size()); }
    static std::uint32_t Twin(std::uint32_t half) { return half ^ 1U; }
    std::uint32_t Origin(std::uint32_t half) const {
        return (half & 1U) == 0 ? edges[half / 2].low : edges[half / 2].high;
    }
    /// The detour of the edge, if it has one.
    const Detour* DetourOf(std::uint32_t half) const {
        const std::size_t straight = edges.size() - detours.size();
        return half / 2 < straight ? nullptr : &detours[half / 2 - straight];
    }
    /// The vertex or node after the origin of a half-edge.
    const PlanePoint& VertexAfter(std::uint32_t half) const {
        const Detour* detour = DetourOf(half);
        if (detour == nullptr || detour->first == detour->end) return nodes[Origin(Twin(half))];
        return vertices[(half & 1U) == 0 ? detour->first : detour->end - 1];
    }
    /// Whether a half-edge turns to the left at the leftmost vertex of its detour.
    bool TurnsLeft(std::uint32_t half) const {
        const std::uint32_t at = DetourOf(half)->leftmost;
        const double turn = ExactTurn(vertices[at - 1], vertices[at], vertices[at + 1]);
        return (half & 1U) == 0 ? turn > 0.0 : turn < 0.0;
    }
    /// The half-edge after this one along the border of its face.
    std::uint32_t Next(std::uint32_t half) const { return next[half]; }

    std::uint32_t GetFaceCount() const { return static_cast<std::uint32_t>(firstCycle.size()); }
    std::uint32_t Face(std::uint32_t half) const { return faceOf[cycleOf[half]]; }
    /// Calls visit(half) for all half-edges of a face.
    template <class Visit>
    void ForEachHalfEdge(std::uint32_t face, Visit&& visit) const {
        for (std::uint32_t cycle = firstCycle[face]; cycle != none; cycle = nextCycle[cycle]) {
            std::uint32_t half = start[cycle];
            do {
                visit(half);
                half = next[half];
            } while (half != start[cycle]);
        }
    }
    /// The half-edge after this one among those of its face, whatever their cycle; `none` after the last one.
    std::uint32_t NextOfFace(std::uint32_t half) const {
        const std::uint32_t cycle = cycleOf[half];
        if (next[half] != start[cycle]) return next[half];
        return nextCycle[cycle] == none ? none : start[nextCycle[cycle]];
    }
    /// The first half-edge of a face; `none` for the unbounded face of an empty graph.
    std::uint32_t FirstOfFace(std::uint32_t face) const {
        return firstCycle[face] == none ? none : start[firstCycle[face]];
    }

private:
    void LinkHalfEdges();
    void FindCycles();
    void NestComponents(const VisitSegments& forEachNear);
    std::uint32_t FindLeftOf(const PlanePoint& p, double reach, double leftEnd, const VisitSegments& forEachNear) const;
    std::uint32_t OuterHalfEdge(std::uint32_t leftmost) const;

    const std::vector<PlanePoint>& nodes;
    const std::vector<Edge>& edges;
    const std::vector<PlanePoint>& vertices;
    const std::vector<Detour>& detours;
    std::vector<std::uint32_t> firstAround;  // of each node, in `around`
    std::vector<std::uint32_t> around;       // outgoing half-edges, counter-clockwise from the direction +x
    std::vector<std::uint32_t> next;
    std::vector<std::uint32_t> cycleOf;
    std::vector<std::uint32_t> start;       // a half-edge of each cycle
    std::vector<std::uint32_t> faceOf;      // of each cycle
    std::vector<std::uint32_t> nextCycle;   // of the same face
    std::vector<std::uint32_t> firstCycle;  // of each face
};

}  // namespace Kalvio::Math::detail
