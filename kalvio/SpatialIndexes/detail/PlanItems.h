#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Nearest.h"
#include "kalvio/SpatialIndexes/detail/PlanBox.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace Kalvio::Math::SpatialIndexes {
class ISpatialIndexData;
}

namespace Kalvio::Math::SpatialIndexes::detail {

/// The items of a node of a quadtree with their boxes, in the order in which they came. One alone, which is what most
/// nodes hold, lies in place; more share one piece of memory.
class PlanItems {
public:
    PlanItems() = default;
    PlanItems(const PlanItems& other) {
        if (other.count > 1) MakeRoom(other.count, 0.0);
        for (unsigned int i = 0; i < other.count; ++i) Append(other.GetBox(i), other.begin()[i], 0.0);
        if (capacity > 1) GetStrips() = other.GetStrips();
    }
    PlanItems& operator=(const PlanItems&) = delete;
    ~PlanItems() {
        if (capacity > 1) ::operator delete(data.memory);
    }
    void Swap(PlanItems& other) noexcept {
        std::swap(count, other.count);
        std::swap(capacity, other.capacity);
        std::swap(data, other.data);
        std::swap(bounds, other.bounds);
    }

    unsigned int GetCount() const { return count; }
    ISpatialIndexData* const* begin() const { return Items(); }
    ISpatialIndexData* const* end() const { return Items() + count; }
    BoxBounds GetBounds(unsigned int i) const {
        return capacity > 1 ? Boxes().GetBounds(i) : BoxBounds{bounds.data(), 1, planDimension};
    }
    PlanBox GetBox(unsigned int i) const {
        const BoxBounds box = GetBounds(i);
        return {box.Low(0), box.Low(1), box.High(0), box.High(1)};
    }

    /// @param centerX  of the node; told the same each time
    void Append(const PlanBox& box, ISpatialIndexData* item, double centerX) {
        if (count == capacity) MakeRoom(2 * capacity, centerX);
        if (capacity == 1) {
            bounds = {box.minX, box.maxX, box.minY, box.maxY};
        } else {
            Boxes().Set(count, box.GetFlatBox());
            GetStrips().Cover(box, centerX);
        }
        Items()[count++] = item;
    }
    /// Later ones move up.
    void Erase(unsigned int i) {
        if (capacity > 1) Boxes().Erase(i, count);
        std::copy(begin() + i + 1, end(), Items() + i);
        --count;
    }

    /// Calls `found(item)` for each item, or `found.TakeIf(item, isThere)` for what may be one: without a branch, as
    /// whether it is there is hard to foresee.
    template <class Found>
    void ForEach(Found& found) const {
        if (capacity == 1) return found.TakeIf(data.item, count == 1);
        for (ISpatialIndexData* item : *this) found(item);
    }

    /// The same for each item whose box answers the query; covers of such boxes answer `coverQuery`.
    template <class CoverQuery, class Query, class Found>
    void ForEachMatch(const CoverQuery& coverQuery, const Query& query, Found& found) const {
        if (capacity > 1) {
            if (!GetStrips().MayAnswer(coverQuery)) return;
            Boxes().ForEachMatch(query, count, [&](unsigned int i) { found(Items()[i]); });
            return;
        }
        const LaneMask x = query.Axis(0)(Lanes::Repeat(bounds[0]), Lanes::Repeat(bounds[1]));
        const LaneMask both = x & query.Axis(1)(Lanes::Repeat(bounds[2]), Lanes::Repeat(bounds[3]));
        found.TakeIf(data.item, (count & both.Bits()) != 0);
    }

    /// Offers the items that are near enough, but for those with a NaN bound.
    void SearchNearest(const FlatBox& from, NearestItems& nearest) const {
        if (capacity > 1) {
            if (GetStrips().MayReach(from, nearest.GetLimit())) SearchNearestOfMany(from, nearest);
        } else if (count == 1) {
            Offer(0, GetBox(0).SquaredDistance(from), nearest);
        }
    }

private:
    static constexpr unsigned int planDimension = 2;

    /// Where the items are that cross the vertical centre line of the node, along x, and where the others are, along
    /// y: along the horizontal line. Large nodes have many items, but seldom any near a place. NaN bounds do not count.
    struct Strips {
        double lowX = std::numeric_limits<double>::infinity();
        double highX = -std::numeric_limits<double>::infinity();
        double lowY = std::numeric_limits<double>::infinity();
        double highY = -std::numeric_limits<double>::infinity();

        void Cover(const PlanBox& box, double centerX) {
            // Without branches: which of the two an item belongs to is hard to foresee.
            const bool crosses = (box.minX < centerX) & (centerX < box.maxX);
            const double first = crosses ? box.minX : box.minY;  // in whatever order
            const double second = crosses ? box.maxX : box.maxY;
            double& low = crosses ? lowX : lowY;
            double& high = crosses ? highX : highY;
            low = (std::min)((std::min)(low, first), second);
            high = (std::max)((std::max)(high, first), second);
        }
        template <class Query>
        bool MayAnswer(const Query& query) const {
            const LaneMask x = query.Axis(0)(Lanes::Repeat(lowX), Lanes::Repeat(highX));
            const LaneMask y = query.Axis(1)(Lanes::Repeat(lowY), Lanes::Repeat(highY));
            return (x.Bits() | y.Bits()) != 0;
        }
        /// Whether an item may be as near: none is nearer by its box than its strip is.
        bool MayReach(const FlatBox& from, double squaredDistance) const {
            const Lanes gaps = SquaredGap(Lanes::Of(lowX, lowY), Lanes::Of(highX, highY),
                                          Lanes::Of(from.Low(0), from.Low(1)), Lanes::Of(from.High(0), from.High(1)));
            return (gaps <= Lanes::Repeat(squaredDistance)).Bits() != 0;
        }
    };

    static std::size_t GetBoxesSize(unsigned int n) { return BoxPairs::GetSize(n, planDimension) * sizeof(double); }

    Strips& GetStrips() const { return *reinterpret_cast<Strips*>(data.memory); }
    BoxPairs Boxes() const { return {reinterpret_cast<double*>(data.memory + sizeof(Strips)), planDimension}; }
    ISpatialIndexData** Items() const {
        if (capacity == 1) return const_cast<ISpatialIndexData**>(&data.item);
        return reinterpret_cast<ISpatialIndexData**>(data.memory + sizeof(Strips) + GetBoxesSize(capacity));
    }
    void Offer(unsigned int i, double distance, NearestItems& nearest) const {
        if (!(distance <= nearest.GetLimit()) || GetBox(i).GetFlatBox().HasNaN()) return;
        nearest.Take(distance, GetBounds(i), Items()[i]);
    }
    void SearchNearestOfMany(const FlatBox& from, NearestItems& nearest) const {
        std::array<double, 64> distances;
        for (unsigned int first = 0; first < count; first += 64) {
            const unsigned int n = (std::min)(count - first, 64U);
            Boxes().From(first).SquaredDistances(from, n, distances.data());
            std::uint64_t near = NotAbove(distances.data(), n, nearest.GetLimit());
            for (; near != 0; near &= near - 1) {
                const auto i = static_cast<unsigned int>(std::countr_zero(near));
                Offer(first + i, distances[i], nearest);
            }
        }
    }
    void MakeRoom(unsigned int n, double centerX) {
        PlanItems more;
        const unsigned int room = n + n % 2;
        more.data.memory =
            static_cast<char*>(::operator new(sizeof(Strips) + GetBoxesSize(room) + room * sizeof(ISpatialIndexData*)));
        more.capacity = room;
        new (more.data.memory) Strips;
        std::uninitialized_fill_n(reinterpret_cast<double*>(more.data.memory + sizeof(Strips)),
                                  BoxPairs::GetSize(room, planDimension), 0.0);  // pairs are read whole
        for (unsigned int i = 0; i < count; ++i) more.Append(GetBox(i), begin()[i], centerX);
        Swap(more);
    }

    unsigned int count = 0;
    unsigned int capacity = 1;  // 1: in place
    union {
        ISpatialIndexData* item;
        char* memory;  // strips, boxes in pairs, then the items
    } data{nullptr};
    std::array<double, 4> bounds{};  // low x, high x, low y, high y of one in place
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
