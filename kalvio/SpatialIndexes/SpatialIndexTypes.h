#pragma once

#include <cstdint>

namespace Kalvio::Math::SpatialIndexes {

/// Kind of an index, returned by `ISpatialIndex::GetType`.
enum class SpatialIndexTypes : std::uint32_t {
    RTree = 0,         ///< balanced boxes, small nodes
    RStarTree = 1,     ///< balanced boxes, large nodes, forced reinsertion
    QuadTree = 2,      ///< squares on a global grid of powers of two
    IntervalTree = 3,  ///< intervals along one axis
};

}  // namespace Kalvio::Math::SpatialIndexes
