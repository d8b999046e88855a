#pragma once

#include "kalvio/Math.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

inline constexpr double kLargest = std::numeric_limits<double>::max();

inline PointND PointOf(std::vector<double> coordinates) { return PointND(coordinates); }
inline BoundingBoxND Box(double minX, double minY, double maxX, double maxY) {
    return {PointOf({minX, minY}), PointOf({maxX, maxY})};
}

inline bool HasNaN(const BoundingBoxND& box) {
    for (unsigned int axis = 0; axis < box.GetDimension(); ++axis) {
        if (std::isnan(box.GetMin(axis)) || std::isnan(box.GetMax(axis))) return true;
    }
    return false;
}

class Item : public ISpatialIndexData {
public:
    explicit Item(const BoundingBoxND& itemBox) : box(itemBox) {}
    void GetEnvelope(BoundingBoxND& envelope) const override { envelope = box; }

    BoundingBoxND box;
};

using Found = std::vector<const ISpatialIndexData*>;

class Collector final : public ISpatialIndexVisit {
public:
    void Visit(ISpatialIndexData* item) const override { found.push_back(item); }
    mutable Found found;
};

inline Found Sorted(Found items) {
    std::sort(items.begin(), items.end());
    return items;
}

/// The items that a search finds, sorted. `where` is a point, or a box and the overlap flag.
inline Found Search(const ISpatialIndex& index, const auto&... where) {
    std::list<ISpatialIndexData*> items;
    index.Search(where..., items);
    return Sorted(Found(items.begin(), items.end()));
}

}  // namespace Kalvio::Math::SpatialIndexes
