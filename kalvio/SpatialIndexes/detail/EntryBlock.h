#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Nearest.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace Kalvio::Math::SpatialIndexes {
class ISpatialIndexData;
}

namespace Kalvio::Math::SpatialIndexes::detail {

/// What a search reads of a node of a box tree, in one piece of memory: the boxes of the entries, and for each the
/// block of the child or the item. It owns nothing of what it points to.
class EntryBlock {
public:
    union Target {
        const EntryBlock* child;
        ISpatialIndexData* item;
    };
    struct Delete {
        void operator()(EntryBlock* block) const { ::operator delete (block, std::align_val_t{alignment}); }
    };
    using Owner = std::unique_ptr<EntryBlock, Delete>;

    /// An empty block with room for at most 64 entries, and one more while a node overflows.
    static Owner Make(bool leafLevel, unsigned int dimension, unsigned int room) {
        const std::size_t boxes = BoxPairs::GetSize(room, dimension);
        void* const memory =
            ::operator new (headSize + boxes * sizeof(double) + room * sizeof(Target), std::align_val_t{alignment});
        Owner block(new (memory) EntryBlock(leafLevel, dimension, room));
        std::uninitialized_fill_n(block->Numbers(), boxes, 0.0);  // pairs are read whole
        return block;
    }

    bool IsLeafLevel() const { return leafLevel; }
    unsigned int GetCount() const { return count; }
    unsigned int GetRoom() const { return capacity; }
    BoxPairs Boxes() const { return {Numbers(), dimension}; }
    Target GetTarget(unsigned int i) const { return Targets()[i]; }

    void Append(const FlatBox& box, Target target) {
        Boxes().Set(count, box);
        new (Targets() + count) Target(target);
        ++count;
    }
    void Append(const BoxPairs& boxes, unsigned int i, Target target) {
        Boxes().Copy(count, boxes, i);
        new (Targets() + count) Target(target);
        ++count;
    }
    /// The last entry takes its place.
    void Erase(unsigned int i) {
        --count;
        Boxes().Copy(i, Boxes(), count);
        Targets()[i] = Targets()[count];
    }
    void Clear() { count = 0; }

    /// Calls `found(item)` for every item below whose box answers `itemQuery`, left to right; nodes whose box does not
    /// answer `nodeQuery` are passed by, and those inside a window are not looked at box by box.
    template <class NodeQuery, class ItemQuery, class Found>
    void Search(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
        const BoxPairs boxes = Boxes();
        const Target* const targets = Targets();
        if (leafLevel) {
            boxes.ForEachMatch(itemQuery, count, [&](unsigned int i) { found(targets[i].item); });
            return;
        }
        std::uint64_t inside = 0;
        if constexpr (NodeQuery::isWindow) inside = boxes.Match(InsideQuery{nodeQuery.window}, 0, count);
        const std::uint64_t on = boxes.Match(nodeQuery, 0, count);
        for (std::uint64_t rest = on; rest != 0; rest &= rest - 1) {
            const auto i = static_cast<unsigned int>(std::countr_zero(rest));
            PrefetchChild(i, (inside >> i & 1U) != 0);
        }
        for (std::uint64_t rest = on; rest != 0; rest &= rest - 1) {
            const auto i = static_cast<unsigned int>(std::countr_zero(rest));
            if ((inside >> i & 1U) != 0) {
                targets[i].child->FindAll(found);
            } else {
                targets[i].child->Search(nodeQuery, itemQuery, found);
            }
        }
    }
    /// Calls `found(item)` for every item below, left to right.
    template <class Found>
    void FindAll(Found& found) const {
        const Target* const end = Targets() + count;
        if (leafLevel) {
            for (const Target* target = Targets(); target != end; ++target) found(target->item);
        } else {
            for (const Target* target = Targets(); target != end; ++target) target->child->FindAll(found);
        }
    }
    /// Offers the items below that are near enough, nearer nodes first.
    void SearchNearest(const FlatBox& from, NearestItems& nearest) const {
        alignas(16) std::array<double, 66> distances;
        Boxes().SquaredDistances(from, count, distances.data());
        if (leafLevel) {
            std::uint64_t near = NotAbove(distances.data(), count, nearest.GetLimit());
            for (; near != 0; near &= near - 1) {
                const auto i = static_cast<unsigned int>(std::countr_zero(near));
                if (distances[i] <= nearest.GetLimit()) nearest.Take(distances[i], Boxes(), i, Targets()[i].item);
            }
            return;
        }
        for (;;) {  // ends: the limit is finite
            const double least = Least(distances.data(), count);
            if (!(least <= nearest.GetLimit())) return;
            const auto i = static_cast<unsigned int>(std::countr_zero(NotAbove(distances.data(), count, least)));
            distances[i] = std::numeric_limits<double>::infinity();
            Targets()[i].child->SearchNearest(from, nearest);
        }
    }
    /// Calls `visit(box, item)` for every item below, left to right.
    template <class Visit>
    void ForEachItem(Visit& visit) const {
        for (unsigned int i = 0; i < count; ++i) {
            if (leafLevel) {
                visit(Boxes().Get(i), Targets()[i].item);
            } else {
                Targets()[i].child->ForEachItem(visit);
            }
        }
    }

private:
    static constexpr std::size_t alignment = 64;  // a cache line; in plan each pair of boxes is one, too
    static constexpr std::size_t headSize = 64;
    static constexpr std::size_t prefetchedLines = 2;  // the processor follows by itself from there

    EntryBlock(bool holdsItems, unsigned int axes, unsigned int room)
        : dimension(axes), capacity(room), leafLevel(holdsItems) {}

    double* Numbers() const {
        return reinterpret_cast<double*>(reinterpret_cast<char*>(const_cast<EntryBlock*>(this)) + headSize);
    }
    Target* Targets() const { return reinterpret_cast<Target*>(Numbers() + BoxPairs::GetSize(capacity, dimension)); }
    /// All blocks of a tree are laid out alike: what a search will read of the child is known without looking at it.
    void PrefetchChild(unsigned int i, bool itemsOnly) const {
        const char* const child = reinterpret_cast<const char*>(Targets()[i].child);
        const std::size_t targets = headSize + BoxPairs::GetSize(capacity, dimension) * sizeof(double);
        Prefetch(child);
        for (std::size_t line = 0; line < prefetchedLines; ++line) {
            Prefetch(child + (itemsOnly ? targets : headSize) + line * alignment);
        }
    }

    unsigned int count = 0;
    unsigned int dimension;
    unsigned int capacity;
    bool leafLevel;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
