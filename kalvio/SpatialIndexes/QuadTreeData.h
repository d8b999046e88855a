#pragma once

#include "kalvio/SpatialIndexes/QuadTreeNode.h"
#include "kalvio/SpatialIndexes/detail/EnvelopeReader.h"

#include <memory>

namespace Kalvio::Math::SpatialIndexes {

/// What a `QuadTree` owns.
struct QuadTreeData {
    std::unique_ptr<QuadTreeNode> root = std::make_unique<QuadTreeNode>();  ///< never null
    double minimumExtent = 1.0;           ///< smallest positive width or height of an item so far, at most 1
    detail::EnvelopeReader envelopes{2};  ///< asks items for their boxes

    QuadTreeData() = default;
    QuadTreeData(const QuadTreeData& other)
        : root(std::make_unique<QuadTreeNode>(*other.root)), minimumExtent(other.minimumExtent) {}
    QuadTreeData& operator=(const QuadTreeData&) = delete;
};

}  // namespace Kalvio::Math::SpatialIndexes
