#pragma once

#include "kalvio/Export.h"
#include "kalvio/SpatialIndexes/SpatialIndexNodeTypes.h"

namespace Kalvio::Math::SpatialIndexes {

/// Node of an index; tells its kind.
class KALVIO_MATH_API ISpatialIndexNode {
public:
    virtual ~ISpatialIndexNode() = default;

    virtual SpatialIndexNodeTypes GetType() const = 0;

protected:
    ISpatialIndexNode() = default;
    ISpatialIndexNode(const ISpatialIndexNode&) = default;
    ISpatialIndexNode& operator=(const ISpatialIndexNode&) = default;
};

}  // namespace Kalvio::Math::SpatialIndexes
