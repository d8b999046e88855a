#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {
class BoundingBoxND;
}

namespace Kalvio::Math::SpatialIndexes {

/// What an index holds: derive from it and report the extent. Items are told apart by their address.
class KALVIO_MATH_API ISpatialIndexData {
public:
    virtual ~ISpatialIndexData() = default;

    /// Writes the item's box. An index asks once on insertion and once on removal and keeps what it was told in
    /// between, so the box must not change while the item is in an index.
    virtual void GetEnvelope(BoundingBoxND& envelope) const = 0;

protected:
    ISpatialIndexData() = default;
    ISpatialIndexData(const ISpatialIndexData&) = default;
    ISpatialIndexData& operator=(const ISpatialIndexData&) = default;
};

}  // namespace Kalvio::Math::SpatialIndexes
