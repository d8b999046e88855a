#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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
    bool IsFull() const { return count == most; }
    std::uint64_t GetNrOpen() const { return most - count; }

    /// Takes an item, not farther than the limit, with its box.
    void Take(double squaredDistance, const BoxBounds& box, ISpatialIndexData* item) {
        const Hit hit{squaredDistance, box, item};
        if (most <= mostInOrder) {
            if (IsFull() && !IsBefore(hit, inOrder[count - 1])) return;
            if (!IsFull()) ++count;
            std::size_t at = count - 1;
            for (; at > 0 && IsBefore(hit, inOrder[at - 1]); --at) inOrder[at] = inOrder[at - 1];
            inOrder[at] = hit;
            if (IsFull()) limit = inOrder[count - 1].squaredDistance;
            return;
        }
        if (IsFull()) {
            if (!IsBefore(hit, heap.front())) return;
            std::pop_heap(heap.begin(), heap.end(), IsBefore);
            heap.back() = hit;
        } else {
            heap.push_back(hit);
            ++count;
        }
        std::push_heap(heap.begin(), heap.end(), IsBefore);
        if (IsFull()) limit = heap.front().squaredDistance;
    }

    /// Appends the items, nearest first.
    /// @return their number
    std::uint64_t AppendTo(std::vector<ISpatialIndexData*>& items) {
        std::sort_heap(heap.begin(), heap.end(), IsBefore);
        const Hit* const first = most > mostInOrder ? heap.data() : inOrder.data();
        const std::size_t before = items.size();
        items.resize(before + count);
        for (std::size_t i = 0; i < count; ++i) items[before + i] = first[i].item;
        return count;
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

    static constexpr std::size_t mostInOrder = 32;

    std::uint64_t most;
    double limit;
    std::size_t count = 0;
    std::array<Hit, mostInOrder> inOrder;  // without an allocation while few are wanted
    std::vector<Hit> heap;                 // with the last on top, when many are
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
