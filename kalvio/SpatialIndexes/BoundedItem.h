#pragma once

#include "kalvio/Export.h"
#include "kalvio/SpatialIndexes/detail/FlatBox.h"

namespace Kalvio::Math::SpatialIndexes {

/// What sits in a node of an `RStarTree`: something with a box.
class KALVIO_MATH_API BoundedItem {
public:
    /// An empty box without axes.
    BoundedItem() = default;
    BoundedItem(const BoundedItem&) = default;
    BoundedItem& operator=(const BoundedItem&) = default;
    virtual ~BoundedItem();

    /// Empty as after `BoundingBoxND::Reset` when there is nothing to bound.
    BoundingBoxND GetBox() const { return box.ToBoundingBox(); }

protected:
    explicit BoundedItem(const detail::FlatBox& itemBox) : box(itemBox) {}

    detail::FlatBox box;  ///< of the item
};

}  // namespace Kalvio::Math::SpatialIndexes
