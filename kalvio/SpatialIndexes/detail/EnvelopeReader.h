#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/detail/FlatBox.h"

namespace Kalvio::Math::SpatialIndexes::detail {

/// Asks items for their boxes, always into the same one: for many items nothing is allocated.
class EnvelopeReader {
public:
    explicit EnvelopeReader(unsigned int axes) : origin(axes), envelope(axes) {}

    /// The item's box, sized to the reader's dimension.
    FlatBox Read(const ISpatialIndexData& item) {
        envelope.SetMinPoint(origin);
        envelope.SetMaxPoint(origin);
        item.GetEnvelope(envelope);
        return {envelope, origin.GetDimension()};
    }

private:
    PointND origin;
    BoundingBoxND envelope;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
