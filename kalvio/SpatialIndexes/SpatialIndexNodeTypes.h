#pragma once

#include <cstdint>

namespace Kalvio::Math::SpatialIndexes {

/// Kind of an index node, returned by `ISpatialIndexNode::GetType`.
enum class SpatialIndexNodeTypes : std::uint32_t {
    RTreeNode = 0,         ///< node of an `RTree`
    RStarTreeNode = 1,     ///< node of an `RStarTree`
    QuadTreeNode = 2,      ///< node of a `QuadTree`
    IntervalTreeNode = 3,  ///< node of an interval tree
};

}  // namespace Kalvio::Math::SpatialIndexes
