#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Walks over the index arrays of triangle sets, past triangles that name vertices that do not exist.
namespace Kalvio::Math::detail {

inline bool HasCorners(const unsigned int* corners, std::size_t vertexCount) {
    return corners[0] < vertexCount && corners[1] < vertexCount && corners[2] < vertexCount;
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

}  // namespace Kalvio::Math::detail
