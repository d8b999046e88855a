#include "kalvio/SpatialIndexes/RStarLeaf.h"

namespace Kalvio::Math::SpatialIndexes {

RStarLeaf::~RStarLeaf() = default;

}  // namespace Kalvio::Math::SpatialIndexes
