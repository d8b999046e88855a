#pragma once

#include "kalvio/SpatialIndexes/BoundedItem.h"

namespace Kalvio::Math::SpatialIndexes {

class ISpatialIndexData;

/// An item with the box under which an `RStarTree` keeps it. Nodes keep these parts in flat arrays and make the leaf
/// when they are asked for it.
class KALVIO_MATH_API RStarLeaf final : public BoundedItem {
public:
    /// Without an item.
    /// @param deleteFlag  whether the tree deletes the item when it is destroyed; a leaf itself deletes nothing
    explicit RStarLeaf(bool deleteFlag) : deletes(deleteFlag) {}
    RStarLeaf(const detail::FlatBox& leafBox, ISpatialIndexData* leafItem, bool deleteFlag)
        : BoundedItem(leafBox), item(leafItem), deletes(deleteFlag) {}
    RStarLeaf(const RStarLeaf&) = default;
    RStarLeaf& operator=(const RStarLeaf&) = default;
    ~RStarLeaf() override;

    /// Not owned.
    ISpatialIndexData* GetItem() const { return item; }
    bool GetDelete() const { return deletes; }

private:
    ISpatialIndexData* item = nullptr;
    bool deletes;
};

}  // namespace Kalvio::Math::SpatialIndexes
