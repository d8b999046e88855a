#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {
class ISpatialIndexData;
}

namespace Kalvio::Math::SpatialIndexes::detail {

/// The nearest items that a search has come upon so far. Boxes are looked at only to order equal distances.
class NearestItems {
public:
    /// @param within  a distance, closed
    NearestItems(std::uint64_t nrOfItems, double within) : most(nrOfItems), limit(within * within) {
        hits.reserve((std::min)(most, mostInOrder));
        limit = (std::min)(limit, (std::numeric_limits<double>::max)());
        while (std::sqrt(limit) > within) limit = std::nextafter(limit, 0.0);
        for (double next = limit; std::sqrt(next) <= within && next <= (std::numeric_limits<double>::max)();) {
            limit = next;
            next = std::nextafter(next, std::numeric_limits<double>::infinity());
        }
    }

    /// The largest squared distance that still matters.
    double GetLimit() const { return limit; }

    /// Whether there are as many as are wanted.
    bool IsFull() const { return hits.size() == most; }

    /// Takes an item, not farther than the limit, with its box.
    void Take(double squaredDistance, const BoxBounds& box, ISpatialIndexData* item) {
        const Hit hit{squaredDistance, box, item};
        if (most <= mostInOrder) {
            if (hits.size() < most) {
                hits.push_back(hit);
            } else if (!IsBefore(hit, hits.back())) {
                return;
            }
            std::size_t at = hits.size() - 1;
            for (; at > 0 && IsBefore(hit, hits[at - 1]); --at) hits[at] = hits[at - 1];
            hits[at] = hit;
            if (hits.size() == most) limit = hits.back().squaredDistance;
            return;
        }
        if (hits.size() == most) {
            if (!IsBefore(hit, hits.front())) return;
            std::pop_heap(hits.begin(), hits.end(), IsBefore);
            hits.back() = hit;
        } else {
            hits.push_back(hit);
        }
        std::push_heap(hits.begin(), hits.end(), IsBefore);
        if (hits.size() == most) limit = hits.front().squaredDistance;
    }

    /// Appends the items, nearest first.
    /// @return their number
    std::uint64_t AppendTo(std::vector<ISpatialIndexData*>& items) {
        if (most > mostInOrder) std::sort_heap(hits.begin(), hits.end(), IsBefore);
        for (const Hit& hit : hits) items.push_back(hit.item);
        return hits.size();
    }

private:
    struct Hit {
        double squaredDistance;
        BoxBounds box;
        ISpatialIndexData* item;
    };

    static bool IsBefore(const Hit& a, const Hit& b) {
        if (a.squaredDistance != b.squaredDistance) return a.squaredDistance < b.squaredDistance;
        for (unsigned int axis = 0; axis < a.box.dimension; ++axis) {
            if (a.box.Low(axis) != b.box.Low(axis)) return a.box.Low(axis) < b.box.Low(axis);
        }
        for (unsigned int axis = 0; axis < a.box.dimension; ++axis) {
            if (a.box.High(axis) != b.box.High(axis)) return a.box.High(axis) < b.box.High(axis);
        }
        return std::less<>()(a.item, b.item);
    }

    static constexpr std::uint64_t mostInOrder = 32;

    std::uint64_t most;
    double limit;
    std::vector<Hit> hits;  // in order, or a heap with the last on top when many are wanted
};

/// The nearest items below a node, which may be null, to a point or box.
template <class Node, class Place>
std::uint64_t FindNearest(const Node* node, unsigned int dimension, const Place& place, std::uint64_t most,
                          double within, std::vector<ISpatialIndexData*>& items) {
    if (node == nullptr || place.GetDimension() < dimension || most == 0 || !(within >= 0.0)) return 0;
    const FlatBox from(place, dimension);
    if (from.HasNaN()) return 0;
    NearestItems nearest(most, within);
    node->SearchNearest(from, nearest);
    return nearest.AppendTo(items);
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
