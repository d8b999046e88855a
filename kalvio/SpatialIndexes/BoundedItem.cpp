#include "kalvio/SpatialIndexes/BoundedItem.h"

namespace Kalvio::Math::SpatialIndexes {

BoundedItem::~BoundedItem() = default;

}  // namespace Kalvio::Math::SpatialIndexes
