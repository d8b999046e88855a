#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

/// Walks over the index arrays of triangle sets, past triangles that name vertices that do not exist, and the edits
/// that need nothing but the arrays.
namespace Kalvio::Math::detail {

inline constexpr unsigned int noVertex = (std::numeric_limits<unsigned int>::max)();
inline constexpr std::size_t anyVertex = (std::numeric_limits<std::size_t>::max)();  // as a count: all exist

inline bool HasCorners(const unsigned int* corners, std::size_t vertexCount) {
    return corners[0] < vertexCount && corners[1] < vertexCount && corners[2] < vertexCount;
}

inline bool NamesVertexTwice(const unsigned int* corners) {
    return corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
}

/// The three indexes of a triangle; null when there is no such triangle or one of its vertices does not exist.
inline const unsigned int* CornersOf(const std::vector<unsigned int>& indexes, std::size_t vertexCount,
                                     std::uint64_t triangle) {
    if (triangle >= indexes.size() / 3) return nullptr;
    const unsigned int* const corners = indexes.data() + 3 * triangle;
    return HasCorners(corners, vertexCount) ? corners : nullptr;
}

/// Calls visit(corners, triangle) for every triangle whose vertices exist.
template <class Visit>
void ForEachTriangle(const std::vector<unsigned int>& indexes, std::size_t vertexCount, Visit&& visit) {
    const std::size_t count = indexes.size() / 3;
    const unsigned int* corners = indexes.data();
    for (std::size_t i = 0; i < count; ++i, corners += 3) {
        if (HasCorners(corners, vertexCount)) visit(corners, i);
    }
}

/// The triangles at each vertex, in order. A triangle that names a vertex twice is there twice.
class TrianglesAround {
public:
    TrianglesAround(const std::vector<unsigned int>& indexes, std::size_t vertexCount) : starts(vertexCount + 2) {
        ForEachTriangle(indexes, vertexCount, [this](const unsigned int* corners, std::size_t) {
            for (int k = 0; k < 3; ++k) ++starts[corners[k] + std::size_t{2}];
        });
        for (std::size_t i = 2; i < starts.size(); ++i) starts[i] += starts[i - 1];
        triangles.resize(starts.back());
        // Entry i + 1 walks from the start of vertex i to its end.
        ForEachTriangle(indexes, vertexCount, [this](const unsigned int* corners, std::size_t triangle) {
            for (int k = 0; k < 3; ++k) triangles[starts[corners[k] + std::size_t{1}]++] = triangle;
        });
    }

    std::span<const std::size_t> Of(unsigned int vertex) const {
        return {triangles.data() + starts[vertex], triangles.data() + starts[vertex + std::size_t{1}]};
    }

private:
    std::vector<std::size_t> starts;
    std::vector<std::size_t> triangles;
};

/// Removes the triangles for which remove(corners, triangle) is true; the others move up in order.
/// @return whether there were any
template <class Remove>
bool RemoveTriangles(std::vector<unsigned int>& indexes, std::size_t vertexCount, Remove&& remove) {
    const std::size_t whole = indexes.size() - indexes.size() % 3;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < whole; i += 3) {
        if (HasCorners(&indexes[i], vertexCount) && remove(&indexes[i], i / 3)) continue;
        if (kept != i) std::copy_n(&indexes[i], 3, &indexes[kept]);
        kept += 3;
    }
    const auto begin = indexes.begin();
    indexes.erase(begin + static_cast<std::ptrdiff_t>(kept), begin + static_cast<std::ptrdiff_t>(whole));
    return kept != whole;
}

/// Drops the vertices that no index names; the others move up in order and keep their indexes' names.
/// @return the number dropped
template <class PointType>
std::uint64_t RemoveUnused(std::vector<PointType>& vertices, std::vector<unsigned int>& indexes) {
    std::vector<unsigned int> renumbered(vertices.size(), noVertex);
    for (const unsigned int index : indexes) {
        if (index < vertices.size()) renumbered[index] = 0;
    }
    unsigned int kept = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        if (renumbered[i] == noVertex) continue;
        renumbered[i] = kept;
        if (kept != i) vertices[kept] = vertices[i];
        ++kept;
    }
    const std::uint64_t removed = vertices.size() - kept;
    if (removed == 0) return 0;
    for (unsigned int& index : indexes) {
        if (index < vertices.size()) index = renumbered[index];
    }
    vertices.resize(kept);
    return removed;
}

/// Removes the triangles of which one corner is at most the tolerance from another, and on request the vertices that
/// no index names then.
/// @return whether anything was removed; nothing is for a tolerance that is negative or NaN
template <class PointType>
bool RemoveLines(std::vector<PointType>& vertices, std::vector<unsigned int>& indexes, double tolerance,
                 bool withUnusedVertices) {
    if (!(tolerance >= 0.0)) return false;
    const bool hasLines = RemoveTriangles(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        const PointType& a = vertices[corners[0]];
        const PointType& b = vertices[corners[1]];
        const PointType& c = vertices[corners[2]];
        return NamesVertexTwice(corners) || a.Distance(b) <= tolerance || b.Distance(c) <= tolerance ||
               c.Distance(a) <= tolerance;
    });
    const bool hasUnused = withUnusedVertices && RemoveUnused(vertices, indexes) > 0;
    return hasLines || hasUnused;
}

}  // namespace Kalvio::Math::detail
