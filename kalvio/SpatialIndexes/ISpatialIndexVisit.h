#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math::SpatialIndexes {

class ISpatialIndexData;

/// Receives the items that a search finds, one call each, without a list in between.
class KALVIO_MATH_API ISpatialIndexVisit {
public:
    virtual ~ISpatialIndexVisit() = default;

    /// The item as it was inserted; never null. The index must not be changed from here.
    virtual void Visit(ISpatialIndexData* item) const = 0;

protected:
    ISpatialIndexVisit() = default;
    ISpatialIndexVisit(const ISpatialIndexVisit&) = default;
    ISpatialIndexVisit& operator=(const ISpatialIndexVisit&) = default;
};

}  // namespace Kalvio::Math::SpatialIndexes
