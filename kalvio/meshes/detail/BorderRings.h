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
    explicit RingSplitter(std::size_t vertexCount) : placeOf(vertexCount, nowhere) {}

    /// Appends the rings of a walk, given as its edges.
    void Split(const std::vector<unsigned int>& indexes, const std::vector<std::size_t>& walk,
               std::vector<BorderRing>& rings) {
        for (const std::size_t edge : walk) {
            const unsigned int vertex = indexes[edge];
            if (placeOf[vertex] != nowhere) Cut(indexes, placeOf[vertex], rings);
            placeOf[vertex] = path.size();
            path.push_back(edge);
        }
        Cut(indexes, 0, rings);
    }

private:
    void Cut(const std::vector<unsigned int>& indexes, std::size_t from, std::vector<BorderRing>& rings) {
        BorderRing ring;
        for (std::size_t i = from; i < path.size(); ++i) {
            ring.vertices.push_back(indexes[path[i]]);
            placeOf[indexes[path[i]]] = nowhere;
        }
        ring.triangle = path[from] / 3;
        path.resize(from);
        rings.push_back(std::move(ring));
    }

    std::vector<std::size_t> placeOf;  // of a vertex on the path
    std::vector<std::size_t> path;
};

/// The rings along the edges that have no partner running the other way, in the order of their first edges. The walk
/// turns around each vertex across the triangles there, from partner to partner, so it needs no coordinates.
inline std::vector<BorderRing> TraceBorders(const std::vector<unsigned int>& indexes, std::size_t vertexCount) {
    std::vector<std::size_t> partners(indexes.size(), nowhere);
    std::vector<bool> isBorder(indexes.size(), false);
    std::vector<std::size_t> forth;
    std::vector<std::size_t> back;
    ForEachEdge(indexes, vertexCount, [&](std::span<const std::size_t> edges) {
        forth.clear();
        back.clear();
        for (const std::size_t edge : edges) {
            (indexes[edge] == indexes[edges[0]] ? forth : back).push_back(edge);
            isBorder[edge] = true;
        }
        for (std::size_t i = 0; i < std::min(forth.size(), back.size()); ++i) {
            partners[forth[i]] = back[i];
            partners[back[i]] = forth[i];
            isBorder[forth[i]] = isBorder[back[i]] = false;
        }
    });
    std::vector<BorderRing> rings;
    RingSplitter splitter(vertexCount);
    std::vector<std::size_t> walk;
    for (std::size_t first = 0; first < indexes.size(); ++first) {
        walk.clear();
        // Every border edge has one follower and follows one: the walk comes back to where it began.
        for (std::size_t edge = first; isBorder[edge];) {
            isBorder[edge] = false;
            walk.push_back(edge);
            edge = NextInTriangle(edge);
            while (partners[edge] != nowhere) edge = NextInTriangle(partners[edge]);
        }
        if (!walk.empty()) splitter.Split(indexes, walk, rings);
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
