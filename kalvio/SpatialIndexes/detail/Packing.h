#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/detail/EntryBlock.h"
#include "kalvio/SpatialIndexes/detail/FlatBox.h"
#include "kalvio/SpatialIndexes/detail/Lanes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math::SpatialIndexes::detail {

/// How a packed tree fills its nodes.
struct PackingRules {
    unsigned int fewest;  // entries of a node below the root; at most half of `most`
    unsigned int most;
    unsigned int wanted;  // of a node on level 0 on average, where the bounds let it; higher nodes are full
};

/// Items with their boxes, to be put into a box tree all at once.
///
/// From the root down, items are cut at medians of their centres across the longest side of where they lie, until each
/// part is one node: nodes come out compact and hardly overlap, all on even levels.
class Packing {
public:
    explicit Packing(unsigned int axes) : dimension(axes) {}

    void Reserve(std::size_t n) { records.reserve(n * RecordSize()); }
    void Add(const FlatBox& box, ISpatialIndexData* item) {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            records.push_back(box.Low(axis));
            records.push_back(box.High(axis));
        }
        records.push_back(0.0);
        std::memcpy(&records.back(), &item, sizeof(item));
    }
    bool IsEmpty() const { return records.empty(); }
    /// Calls `take(box, item)`, in the order in which they came.
    template <class Take>
    void ForEach(const Take& take) const {
        FlatBox box(dimension);
        for (std::size_t i = 0; i < GetCount(); ++i) {
            const double* const bounds = BoundsOf(i);
            for (unsigned int axis = 0; axis < dimension; ++axis) box.Set(axis, bounds[2 * axis], bounds[2 * axis + 1]);
            take(box, ItemOf(i));
        }
    }

    /// The root over all items, one at least. The tree makes its nodes by `MakeNode(level, shelf)`, shows their entries
    /// by `EntriesOf(node)`, and is told by `Close(node)` that one has all of them.
    template <class Tree>
    auto Build(Tree& tree, const PackingRules& packingRules) {
        rules = packingRules;
        // Fresh memory costs more than what is done with it: it is written once, and of the room half is mostly used.
        const std::size_t n = GetCount();
        const auto all = std::make_unique_for_overwrite<Seed[]>(n);
        const std::span<Seed> seeds(all.get(), n);
        for (std::uint32_t i = 0; i < n; ++i) seeds[i].item = i;
        LayGrid(seeds);
        room = std::make_unique_for_overwrite<Seed[]>(n);
        std::uint64_t capacity = rules.most;
        unsigned int level = 0;
        for (; capacity < n; capacity *= rules.most) ++level;
        const std::size_t nrOfLeaves = n / rules.wanted + 1;
        EntryBlock::Shelf shelf(nrOfLeaves + nrOfLeaves / (rules.most - 1));
        return BuildNode(tree, seeds, level, true, shelf);
    }

private:
    static constexpr std::size_t fewForBuckets = 128;
    static constexpr unsigned int mostAxes = 3;             // the longest of more
    static constexpr std::uint32_t fewestSteps = 1U << 8U;  // a part that spans fewer of the grid gets its own

    /// An item with its centre on a grid over the centres of a part.
    struct Seed {
        std::array<std::uint32_t, mostAxes> center;
        std::uint32_t item;
    };

    std::size_t RecordSize() const { return std::size_t{2} * dimension + 1; }
    std::size_t GetCount() const { return records.size() / RecordSize(); }
    const double* BoundsOf(std::size_t i) const { return records.data() + i * RecordSize(); }
    ISpatialIndexData* ItemOf(std::size_t i) const {
        ISpatialIndexData* item = nullptr;
        std::memcpy(&item, BoundsOf(i) + std::size_t{2} * dimension, sizeof(item));
        return item;
    }

    double CenterOf(unsigned int axis, std::uint32_t i) const {
        const double* const bounds = BoundsOf(i) + std::size_t{2} * axis;
        return 0.5 * bounds[0] + 0.5 * bounds[1];
    }

    void LayGrid(std::span<Seed> seeds) {
        struct Extent {
            unsigned int axis;
            double low = std::numeric_limits<double>::infinity();
            double high = -std::numeric_limits<double>::infinity();
            double HalfLength() const { return 0.5 * high - 0.5 * low; }  // does not overflow
        };
        std::vector<Extent> extents;
        for (unsigned int axis = 0; axis < dimension; ++axis) extents.push_back(Extent{axis});
        for (const Seed& seed : seeds) {
            for (Extent& extent : extents) {
                const double center = CenterOf(extent.axis, seed.item);
                if (!std::isfinite(center)) continue;
                extent.low = std::min(extent.low, center);
                extent.high = std::max(extent.high, center);
            }
        }
        if (dimension > mostAxes) {
            std::stable_sort(extents.begin(), extents.end(),
                             [](const Extent& a, const Extent& b) { return a.HalfLength() > b.HalfLength(); });
        }
        for (unsigned int k = 0; k < NrOfAxes(); ++k) {
            const Extent& extent = extents[k];
            constexpr double steps = std::numeric_limits<std::uint32_t>::max();
            const double scale = steps / extent.HalfLength();
            grid.axes[k] = extent.axis;
            grid.stepLengths[k] = extent.HalfLength() / steps;
            for (Seed& seed : seeds) {
                // NaN goes to the low end.
                const double place = (0.5 * CenterOf(extent.axis, seed.item) - 0.5 * extent.low) * scale;
                seed.center[k] = static_cast<std::uint32_t>(place > 0.0 ? std::min(place, steps) : 0.0);
            }
        }
    }

    unsigned int NrOfAxes() const { return std::min(dimension, mostAxes); }

    template <class Tree>
    decltype(std::declval<Tree&>().root) BuildNode(Tree& tree, std::span<Seed> seeds, unsigned int level, bool isRoot,
                                                   EntryBlock::Shelf& shelf) {
        auto node = tree.MakeNode(level, shelf);
        auto& entries = tree.EntriesOf(*node);
        if (level == 0) {
            for (const Seed& seed : seeds) entries.AppendItem(BoundsOf(seed.item), ItemOf(seed.item));
        } else {
            if (level == 1) {
                for (const Seed& seed : seeds) {  // from all over the memory
                    ReadAhead(BoundsOf(seed.item));
                    ReadAhead(BoundsOf(seed.item) + std::size_t{2} * dimension);
                }
            }
            Divide(seeds, NrOfChildren(seeds.size(), level, isRoot), [&](std::span<Seed> part) {
                auto child = BuildNode(tree, part, level - 1, false, shelf);
                const FlatBox cover = tree.EntriesOf(*child).Cover();
                entries.Append({cover, std::move(child), nullptr});
            });
        }
        tree.Close(*node);
        return node;
    }

    std::uint64_t NrOfChildren(std::uint64_t n, unsigned int level, bool isRoot) const {
        std::uint64_t wanted = rules.wanted;  // items below one child
        std::uint64_t fewest = rules.fewest;
        std::uint64_t most = rules.most;
        for (; level > 1; --level) {
            wanted *= rules.most;
            fewest *= rules.fewest;
            most *= rules.most;
        }
        const std::uint64_t least = std::max<std::uint64_t>((n + most - 1) / most, isRoot ? 2 : rules.fewest);
        const std::uint64_t greatest = std::min<std::uint64_t>(n / fewest, rules.most);
        return std::clamp((n + wanted - 1) / wanted, least, greatest);
    }

    /// Hands over `nrOfParts` parts that differ by one item at most.
    template <class Take>
    void Divide(std::span<Seed> seeds, std::uint64_t nrOfParts, const Take& take) {
        if (nrOfParts == 1) return take(seeds);
        const Grid before = grid;
        const std::uint64_t nrOfLow = nrOfParts / 2;
        const std::uint64_t middle = seeds.size() * nrOfLow / nrOfParts;
        Part(seeds, middle);
        Divide(seeds.first(middle), nrOfLow, take);
        Divide(seeds.subspan(middle), nrOfParts - nrOfLow, take);
        grid = before;
    }

    struct Range {
        static constexpr std::size_t nrOfBuckets = 256;
        unsigned int axis;
        std::uint32_t low;
        std::uint32_t nrOfSteps;
        unsigned int shift;  // of a distance from the low end, to the number of its bucket
    };

    /// The first `nrOfLow` seeds become those that lie lowest along the longest axis. Many are told apart by the
    /// buckets of a histogram first, few by a bound between them: no comparison of two seeds then depends on what they
    /// hold.
    void Part(std::span<Seed> seeds, std::size_t nrOfLow) {
        Range range = LongestRange(seeds);
        if (range.nrOfSteps < fewestSteps) {
            LayGrid(seeds);
            range = LongestRange(seeds);
        }
        const auto bucketOf = [&](const Seed& seed) { return (seed.center[range.axis] - range.low) >> range.shift; };
        std::size_t first = 0;
        std::size_t last = seeds.size();
        if (seeds.size() <= fewForBuckets) {
            if (PartFew(seeds, nrOfLow, range)) return;
        } else {
            std::array<std::uint32_t, Range::nrOfBuckets> counts{};
            for (const Seed& seed : seeds) ++counts[bucketOf(seed)];
            std::uint32_t bucket = 0;
            for (; first + counts[bucket] <= nrOfLow; ++bucket) first += counts[bucket];
            last = first + counts[bucket];
            std::array<Seed*, 3> next{seeds.data(), room.get(), room.get() + (last - first)};
            for (const Seed seed : seeds) {
                const std::uint32_t at = bucketOf(seed);
                *next[std::size_t{at >= bucket} + std::size_t{at > bucket}]++ = seed;
            }
            std::copy_n(room.get(), seeds.size() - first, seeds.data() + first);
        }
        // Both sides in the order in which they came, of equal ones the first below: whichever library selects.
        const auto isBefore = [this, k = range.axis](const Seed& a, const Seed& b) {
            if (a.center[k] != b.center[k]) return a.center[k] < b.center[k];
            return IsBefore(grid.axes[k], a, b);
        };
        const std::span<Seed> part = seeds.subspan(first, last - first);
        const std::size_t nrBelow = nrOfLow - first;
        std::copy(part.begin(), part.end(), room.get());
        std::nth_element(room.get(), room.get() + nrBelow, room.get() + part.size(), isBefore);
        const Seed bound = room[nrBelow];
        const auto isBelow = [&](const Seed& seed) { return isBefore(seed, bound); };
        std::size_t nrOfEqual = nrBelow - static_cast<std::size_t>(std::count_if(part.begin(), part.end(), isBelow));
        std::array<Seed*, 2> next{part.data(), room.get()};
        for (const Seed seed : part) {
            const bool isLow = isBelow(seed) || (nrOfEqual > 0 && !isBefore(bound, seed) && nrOfEqual-- > 0);
            *next[isLow ? 0 : 1]++ = seed;
        }
        std::copy_n(room.get(), part.size() - nrBelow, part.data() + nrBelow);
    }

    /// Halves the range until as many as are wanted lie below the bound. False when equal centres leave none.
    bool PartFew(std::span<Seed> seeds, std::size_t nrOfLow, const Range& range) {
        std::array<std::int32_t, fewForBuckets> centers;  // signed ones are compared four at once
        const auto asSigned = [](std::uint32_t step) { return static_cast<std::int32_t>(step ^ (1U << 31U)); };
        const std::size_t n = seeds.size();
        for (std::size_t i = 0; i < n; ++i) centers[i] = asSigned(seeds[i].center[range.axis] - range.low);
        std::uint32_t least = 0;
        std::uint32_t most = range.nrOfSteps;
        while (least < most) {
            const std::uint32_t middle = least + (most - least) / 2 + 1;
            const std::int32_t bound = asSigned(middle);
            std::uint32_t nrBelow = 0;
            for (std::size_t i = 0; i < n; ++i) nrBelow += centers[i] < bound ? 1 : 0;
            if (nrBelow == nrOfLow) {
                std::array<Seed*, 2> next{seeds.data(), room.get()};
                for (std::size_t i = 0; i < n; ++i) {
                    const Seed seed = seeds[i];
                    *next[centers[i] < bound ? 0 : 1]++ = seed;
                }
                std::copy_n(room.get(), n - nrOfLow, seeds.data() + nrOfLow);
                return true;
            }
            if (nrBelow < nrOfLow) {
                least = middle;
            } else {
                most = middle - 1;
            }
        }
        return false;
    }

    /// By exact centres within one step of the grid, which an item far away makes coarse; infinite ones are lowest.
    bool IsBefore(unsigned int axis, const Seed& a, const Seed& b) const {
        const auto placeOf = [&](const Seed& seed) {
            const double center = CenterOf(axis, seed.item);
            return std::isfinite(center) ? center : -std::numeric_limits<double>::infinity();
        };
        return placeOf(a) < placeOf(b);
    }

    Range LongestRange(std::span<const Seed> seeds) const {
        Range longest{};
        double most = -1.0;
        for (unsigned int axis = 0; axis < NrOfAxes(); ++axis) {
            std::uint32_t low = seeds[0].center[axis];
            std::uint32_t high = low;
            for (const Seed& seed : seeds) {
                low = std::min(low, seed.center[axis]);
                high = std::max(high, seed.center[axis]);
            }
            const double length = (high - low) * grid.stepLengths[axis];
            if (!(length > most)) continue;
            most = length;
            longest = {axis, low, high - low, std::max(static_cast<unsigned int>(std::bit_width(high - low)), 8U) - 8U};
        }
        return longest;
    }

    unsigned int dimension;
    PackingRules rules{};
    std::unique_ptr<Seed[]> room;  // for sorting
    struct Grid {
        std::array<unsigned int, mostAxes> axes{};
        std::array<double, mostAxes> stepLengths{};  // halved
    };
    Grid grid;                    // of the part that is being divided
    std::vector<double> records;  // for each item its bounds, lower and upper axis by axis, and its address
    static_assert(sizeof(ISpatialIndexData*) <= sizeof(double));
};

/// Packs a tree anew when the items are more than it holds, else inserts them one by one. All are asked for their boxes
/// before anything changes: an item may throw.
template <class Tree>
void InsertTogether(Tree& tree, std::span<const ISpatialIndexData* const> items, const PackingRules& rules) {
    const bool isPacked = items.size() > tree.nrOfItems;
    Packing packing(tree.dimension);
    std::vector<ISpatialIndexData*> unplaced;
    packing.Reserve(items.size() + (isPacked ? tree.nrOfItems : 0));
    auto add = [&packing](const FlatBox& box, ISpatialIndexData* item) { packing.Add(box, item); };
    if (isPacked && tree.root != nullptr) tree.root->GetEntries().Block().ForEachItem(add);
    for (const ISpatialIndexData* const given : items) {
        const FlatBox box = tree.envelopes.Read(*given);
        auto* const item = const_cast<ISpatialIndexData*>(given);  // as searches hand them out
        if (box.HasNaN()) {
            unplaced.push_back(item);
        } else {
            packing.Add(box, item);
        }
    }
    if (!isPacked) {
        packing.ForEach([&tree](const FlatBox& box, ISpatialIndexData* item) { tree.Insert(box, item); });
    } else if (!packing.IsEmpty()) {
        tree.root = packing.Build(tree, rules);
    }
    tree.unplaced.insert(tree.unplaced.end(), unplaced.begin(), unplaced.end());
    tree.nrOfItems += static_cast<unsigned int>(items.size());
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
