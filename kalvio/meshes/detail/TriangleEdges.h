#pragma once

#include "kalvio/meshes/detail/Triangles.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>
#include <vector>

/// Neighbourhood of triangles by the edges they share.
///
/// An edge of a triangle is named by the position in the index array of the corner from which it runs to the next one.
/// Triangles that name a vertex twice, or one that does not exist, have no edges.
namespace Kalvio::Math::detail {

inline constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

inline std::size_t NextInTriangle(std::size_t position) { return position % 3 == 2 ? position - 2 : position + 1; }

/// Calls visit(positions) for every pair of vertices that an edge joins, with all the edges that join it either way, in
/// order. Linear but for a sort of the edges at each vertex.
template <class Visit>
void ForEachEdge(const std::vector<unsigned int>& indexes, std::size_t vertexCount, Visit&& visit) {
    const auto ends = [&indexes](std::size_t position) {
        return std::minmax(indexes[position], indexes[NextInTriangle(position)]);
    };
    const auto forEachPosition = [&](auto&& take) {
        ForEachTriangle(indexes, vertexCount, [&take](const unsigned int* corners, std::size_t triangle) {
            for (std::size_t k = 0; k < 3 && !NamesVertexTwice(corners); ++k) take(3 * triangle + k);
        });
    };
    std::vector<std::size_t> starts(vertexCount + 2);
    forEachPosition([&](std::size_t position) { ++starts[ends(position).first + std::size_t{2}]; });
    for (std::size_t i = 2; i < starts.size(); ++i) starts[i] += starts[i - 1];
    std::vector<std::pair<unsigned int, std::size_t>> edges(starts.back());  // upper vertex, position, by lower vertex
    forEachPosition([&](std::size_t position) {
        const auto [lower, upper] = ends(position);
        edges[starts[lower + std::size_t{1}]++] = {upper, position};
    });
    std::vector<std::size_t> same;
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        const auto first = edges.begin() + static_cast<std::ptrdiff_t>(starts[vertex]);
        const auto last = edges.begin() + static_cast<std::ptrdiff_t>(starts[vertex + 1]);
        std::sort(first, last);
        for (auto edge = first; edge != last;) {
            same.clear();
            for (const unsigned int upper = edge->first; edge != last && edge->first == upper; ++edge) {
                same.push_back(edge->second);
            }
            visit(std::span<const std::size_t>(same));
        }
    }
}

/// The parts of a set that hang together by edges of exactly two triangles, and their windings.
struct CoherentParts {
    std::vector<std::size_t> partOf;  // per triangle, numbered in order of their first triangles; nowhere without edges
    std::vector<bool> isReversed;     // per triangle: it runs against the first one of its part
    std::size_t count = 0;
    bool isClosed = true;    // no edge of one triangle, nor of three or more
    bool isCoherent = true;  // every part has two sides
};

/// Breadth first through the edges of exactly two triangles.
inline CoherentParts FindCoherentParts(const std::vector<unsigned int>& indexes, std::size_t vertexCount) {
    CoherentParts parts;
    parts.partOf.assign(indexes.size() / 3, nowhere);
    parts.isReversed.assign(indexes.size() / 3, false);
    std::vector<std::size_t> neighbors(indexes.size(), nowhere);
    std::vector<bool> hasEdges(indexes.size() / 3, false);
    ForEachEdge(indexes, vertexCount, [&](std::span<const std::size_t> edges) {
        for (const std::size_t edge : edges) hasEdges[edge / 3] = true;
        parts.isClosed = parts.isClosed && edges.size() == 2;
        if (edges.size() != 2) return;
        neighbors[edges[0]] = edges[1];
        neighbors[edges[1]] = edges[0];
    });
    std::vector<std::size_t> queue;
    for (std::size_t seed = 0; seed < hasEdges.size(); ++seed) {
        if (!hasEdges[seed] || parts.partOf[seed] != nowhere) continue;
        parts.partOf[seed] = parts.count;
        queue.assign(1, seed);
        for (std::size_t next = 0; next < queue.size(); ++next) {
            const std::size_t triangle = queue[next];
            for (std::size_t edge = 3 * triangle; edge < 3 * triangle + 3; ++edge) {
                if (neighbors[edge] == nowhere) continue;
                const std::size_t other = neighbors[edge] / 3;
                const bool runsAlike = indexes[edge] == indexes[neighbors[edge]];
                const bool isReversed = parts.isReversed[triangle] != runsAlike;
                if (parts.partOf[other] == nowhere) {
                    parts.partOf[other] = parts.count;
                    parts.isReversed[other] = isReversed;
                    queue.push_back(other);
                } else if (parts.isReversed[other] != isReversed) {
                    parts.isCoherent = false;
                }
            }
        }
        ++parts.count;
    }
    return parts;
}

inline void Reverse(std::vector<unsigned int>& indexes, std::size_t triangle) {
    std::swap(indexes[3 * triangle], indexes[3 * triangle + 1]);
}

/// Reverses the triangles that run against the first one of their part. @return whether there were any
inline bool MakeCoherent(std::vector<unsigned int>& indexes, const CoherentParts& parts) {
    bool hasChanged = false;
    for (std::size_t i = 0; i < parts.isReversed.size(); ++i) {
        if (!parts.isReversed[i]) continue;
        Reverse(indexes, i);
        hasChanged = true;
    }
    return hasChanged;
}

}  // namespace Kalvio::Math::detail
