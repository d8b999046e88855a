#pragma once

#include "kalvio/meshes/detail/TriangleEdges.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// A closed walk along the border of a set, no vertex twice, which has the triangles on its left seen from the side
/// where they run counter-clockwise.
struct BorderRing {
    std::vector<unsigned int> vertices;
    std::size_t triangle = nowhere;  // beside one of its edges
};

/// Cuts a closed walk where it meets itself at a vertex, so that rings remain that meet no vertex twice.
class RingSplitter {
public:
    struct Step {
        unsigned int vertex;
        std::size_t triangle;  // beside the edge that leads on
    };

    explicit RingSplitter(std::size_t vertexCount) : placeOf(vertexCount, nowhere) {}

    /// Appends the rings of a walk.
    void Split(const std::vector<Step>& walk, std::vector<BorderRing>& rings) {
        for (const Step& step : walk) {
            if (placeOf[step.vertex] != nowhere) Cut(placeOf[step.vertex], rings);
            placeOf[step.vertex] = path.size();
            path.push_back(step);
        }
        Cut(0, rings);
    }

private:
    void Cut(std::size_t from, std::vector<BorderRing>& rings) {
        BorderRing ring;
        for (std::size_t i = from; i < path.size(); ++i) {
            ring.vertices.push_back(path[i].vertex);
            placeOf[path[i].vertex] = nowhere;
        }
        ring.triangle = path[from].triangle;
        path.resize(from);
        rings.push_back(std::move(ring));
    }

    std::vector<std::size_t> placeOf;  // of a vertex on the path
    std::vector<Step> path;
};

/// Of each edge the one across which its triangle is continued: the triangles at an edge are paired, first those that
/// run against each other, then what is left. `nowhere` for the last one of an odd number, which is border.
inline std::vector<std::size_t> PairEdges(const std::vector<unsigned int>& indexes, std::size_t vertexCount,
                                          std::vector<bool>& isBorder) {
    std::vector<std::size_t> partners(indexes.size(), nowhere);
    isBorder.assign(indexes.size(), false);
    std::vector<std::size_t> forth;
    std::vector<std::size_t> back;
    const auto pair = [&partners](std::size_t a, std::size_t b) {
        partners[a] = b;
        partners[b] = a;
    };
    ForEachEdge(indexes, vertexCount, [&](std::span<const std::size_t> edges) {
        forth.clear();
        back.clear();
        for (const std::size_t edge : edges) (indexes[edge] == indexes[edges[0]] ? forth : back).push_back(edge);
        const std::size_t both = std::min(forth.size(), back.size());
        for (std::size_t i = 0; i < both; ++i) pair(forth[i], back[i]);
        const std::vector<std::size_t>& rest = forth.size() > both ? forth : back;
        for (std::size_t i = both; i + 1 < rest.size(); i += 2) pair(rest[i], rest[i + 1]);
        if (edges.size() % 2 != 0) isBorder[rest.back()] = true;
    });
    return partners;
}

/// The rings along the edges of an odd number of triangles, in the order of their first edges, each in the direction
/// of its first. The walk turns around each vertex across the triangles there, from partner to partner, so it needs no
/// coordinates, and no triangles that run alike.
inline std::vector<BorderRing> TraceBorders(const std::vector<unsigned int>& indexes, std::size_t vertexCount) {
    std::vector<bool> isBorder;
    const std::vector<std::size_t> partners = PairEdges(indexes, vertexCount, isBorder);
    // The other edge of the triangle at one end of an edge.
    const auto across = [&indexes](std::size_t edge, unsigned int vertex) {
        const std::size_t next = NextInTriangle(edge);
        return indexes[next] == vertex ? next : NextInTriangle(next);
    };
    std::vector<BorderRing> rings;
    RingSplitter splitter(vertexCount);
    std::vector<RingSplitter::Step> walk;
    for (std::size_t first = 0; first < indexes.size(); ++first) {
        walk.clear();
        // At each of its ends a border edge leads to one other: the walk comes back to where it began.
        unsigned int vertex = indexes[first];
        for (std::size_t edge = first; isBorder[edge];) {
            isBorder[edge] = false;
            walk.push_back({vertex, edge / 3});
            const unsigned int from = indexes[edge];
            vertex = from == vertex ? indexes[NextInTriangle(edge)] : from;
            edge = across(edge, vertex);
            while (partners[edge] != nowhere) edge = across(partners[edge], vertex);
        }
        if (!walk.empty()) splitter.Split(walk, rings);
    }
    return rings;
}

/// The same with all triangles taken as running like the first one of their part.
inline std::vector<BorderRing> TraceCoherentBorders(const std::vector<unsigned int>& indexes, std::size_t vertexCount) {
    std::vector<unsigned int> coherent = indexes;
    MakeCoherent(coherent, FindCoherentParts(indexes, vertexCount));
    return TraceBorders(coherent, vertexCount);
}

}  // namespace Kalvio::Math::detail
