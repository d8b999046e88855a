#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Nearest.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"
#include "kalvio/SpatialIndexes/detail/RoughBoxes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Kalvio::Math::SpatialIndexes {
class ISpatialIndexData;
}

namespace Kalvio::Math::SpatialIndexes::detail {

/// What a search reads of a node of a box tree, in one piece of memory: for each entry the block of the child or the
/// item, then the boxes rounded outward to single precision, then the boxes as they are. Searches read half as much
/// that way: exact boxes only decide on the few entries within a rounding of a window's border. It owns nothing of what
/// it points to.
class EntryBlock {
public:
    union Target {
        const EntryBlock* child;
        ISpatialIndexData* item;
    };
    struct Delete {
        void operator()(EntryBlock* block) const {
            if (block->piece == nullptr) {
                ::operator delete (block, std::align_val_t{alignment});
            } else {
                block->piece->Leave();
            }
        }
    };
    using Owner = std::unique_ptr<EntryBlock, Delete>;

private:
    static constexpr std::size_t alignment = 64;  // a cache line; in plan each pair of boxes is one, too

    /// Memory of several blocks, freed with the last of them; its first bytes.
    struct Piece {
        std::size_t nrOfUsers = 1;  // the shelf that fills it is one
        void Leave() {
            if (--nrOfUsers == 0) ::operator delete (static_cast<void*>(this), std::align_val_t{alignment});
        }
    };

public:
    /// Where the blocks of one tree are laid side by side in the order in which they are made: less memory, and read
    /// faster, than one by one. The tree must be destroyed and changed by one thread at a time, as all are.
    class Shelf {
    public:
        /// @param nrOfBlocks  about how many will be made
        explicit Shelf(std::size_t nrOfBlocks) : nrExpected(nrOfBlocks) {}
        Shelf(const Shelf&) = delete;
        Shelf& operator=(const Shelf&) = delete;
        ~Shelf() {
            if (piece != nullptr) piece->Leave();
        }

    private:
        friend class EntryBlock;
        static constexpr std::size_t pieceSize = std::size_t{1} << 16U;

        char* Take(std::size_t size) {
            size = AlignedUp(size, alignment);
            if (size > left) {
                const std::size_t n = (std::min)((std::max)(pieceSize / size, std::size_t{1}), nrExpected + 1);
                void* const memory = ::operator new (alignment + n * size, std::align_val_t{alignment});
                if (piece != nullptr) piece->Leave();
                piece = new (memory) Piece;
                next = static_cast<char*>(memory) + alignment;
                left = n * size;
            }
            nrExpected -= nrExpected > 0 ? 1 : 0;
            ++piece->nrOfUsers;
            left -= size;
            return std::exchange(next, next + size);
        }

        std::size_t nrExpected;
        Piece* piece = nullptr;
        char* next = nullptr;
        std::size_t left = 0;
    };

    /// An empty block with room for at most 64 entries, and one more while a node overflows; on a shelf, or by itself.
    static Owner Make(bool leafLevel, unsigned int dimension, unsigned int room, Shelf* shelf = nullptr) {
        static_assert(sizeof(EntryBlock) <= headSize);
        const std::size_t boxes = BoxPairs::GetSize(room, dimension);
        const std::size_t size = GetSize(room, dimension);
        void* const memory = shelf != nullptr ? shelf->Take(size) : ::operator new (size, std::align_val_t{alignment});
        Owner block(new (memory) EntryBlock(leafLevel, dimension, room, shelf != nullptr ? shelf->piece : nullptr));
        // Fours and pairs are read whole.
        std::uninitialized_fill_n(block->RoughNumbers(), RoughBoxes::GetSize(room, dimension), 0.0F);
        std::uninitialized_fill_n(block->Numbers(), boxes, 0.0);
        return block;
    }

    bool IsLeafLevel() const { return leafLevel; }
    unsigned int GetCount() const { return count; }
    unsigned int GetRoom() const { return capacity; }
    BoxPairs Boxes() const { return {Numbers(), dimension}; }
    Target GetTarget(unsigned int i) const { return Targets()[i]; }

    void SetBox(unsigned int i, const FlatBox& box) {
        Boxes().Set(i, box);
        Rough().Set(i, Boxes());
    }
    void Append(const FlatBox& box, Target target) {
        SetBox(count, box);
        new (Targets() + count) Target(target);
        ++count;
    }
    void Append(const double* bounds, Target target) {
        Boxes().Set(count, bounds);
        Rough().Set(count, Boxes());
        new (Targets() + count) Target(target);
        ++count;
    }
    /// The last entry takes its place.
    void Erase(unsigned int i) {
        --count;
        Boxes().Copy(i, Boxes(), count);
        Rough().Set(i, Boxes());
        Targets()[i] = Targets()[count];
    }
    void Clear() { count = 0; }

    /// All blocks of a tree are laid out alike: what will be read of a child is known without looking at it.
    void FetchAllOfChild(unsigned int i) const {
        const char* const child = reinterpret_cast<const char*>(Targets()[i].child);
        ReadAhead(child);
        const std::size_t size = (std::min)(GetSize(capacity, dimension), mostFetched);
        for (std::size_t at = alignment; at < size; at += alignment) Prefetch(child + at);
    }

    /// Calls `found(item)` for every item below whose box answers `itemQuery`, left to right; nodes whose box does not
    /// answer `nodeQuery` are passed by, and those inside a window are not looked at box by box.
    template <class NodeQuery, class ItemQuery, class Found>
    void Search(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
        const Step top{this, false};
        SearchLevel<NodeQuery::isWindow>(&top, 1, RoughTests<NodeQuery>::WindowOf(nodeQuery), itemQuery, found);
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
        std::array<double, 68> distances;
        const bool isExact = leafLevel && !nearest.IsFull();  // all of them are wanted at first
        if (isExact) {
            Boxes().SquaredDistances(from, count, distances.data());
        } else {
            Rough().SquaredDistances(from, count, distances.data());
        }
        const bool isPicked = isExact && nearest.GetNrOpen() < count / 2;  // few of many: the nearest alone are put in
        if (leafLevel && !isPicked) {
            std::uint64_t near = NotAbove(distances.data(), count, nearest.GetLimit());
            for (; near != 0; near &= near - 1) {
                const auto i = static_cast<unsigned int>(std::countr_zero(near));
                const double distance = isExact ? distances[i] : Boxes().SquaredDistance(from, i);
                if (distance <= nearest.GetLimit()) nearest.Take(distance, Boxes().GetBounds(i), Targets()[i].item);
            }
            return;
        }
        for (;;) {  // ends: the limit is finite
            const double least = Least(distances.data(), count);
            if (!(least <= nearest.GetLimit())) return;
            const auto i = static_cast<unsigned int>(std::countr_zero(NotAbove(distances.data(), count, least)));
            distances[i] = std::numeric_limits<double>::infinity();
            if (leafLevel) {
                nearest.Take(least, Boxes().GetBounds(i), Targets()[i].item);
            } else {
                Targets()[i].child->SearchNearest(from, nearest);
            }
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
    static constexpr std::size_t headSize = 16;
    static constexpr std::size_t mostFetched = 1024;
    static constexpr std::size_t fetchedLines = 3;  // of boxes; the processor follows by itself from there

    EntryBlock(bool holdsItems, unsigned int axes, unsigned int room, Piece* memory)
        : piece(memory), dimension(axes), capacity(static_cast<std::uint8_t>(room)), leafLevel(holdsItems) {}

    static std::size_t AlignedUp(std::size_t size, std::size_t to) { return (size + to - 1) / to * to; }
    static std::size_t RoughAt(unsigned int room) { return AlignedUp(headSize + room * sizeof(Target), 16); }
    static std::size_t NumbersAt(unsigned int room, unsigned int dimension) {
        return AlignedUp(RoughAt(room) + RoughBoxes::GetSize(room, dimension) * sizeof(float), alignment);
    }
    static std::size_t GetSize(unsigned int room, unsigned int dimension) {
        return NumbersAt(room, dimension) + BoxPairs::GetSize(room, dimension) * sizeof(double);
    }
    char* At(std::size_t offset) const { return reinterpret_cast<char*>(const_cast<EntryBlock*>(this)) + offset; }
    Target* Targets() const { return reinterpret_cast<Target*>(At(headSize)); }
    float* RoughNumbers() const { return reinterpret_cast<float*>(At(RoughAt(capacity))); }
    RoughBoxes Rough() const { return {RoughNumbers(), dimension}; }
    double* Numbers() const { return reinterpret_cast<double*>(At(NumbersAt(capacity, dimension))); }

    /// A node on the way of a search; one inside a window is not looked at box by box.
    struct Step {
        const EntryBlock* block;
        bool isInside;
    };
    static constexpr std::size_t mostStepsAhead = 32;

    /// Searches nodes of one level, left to right: all of them before those below, which are on their way to the
    /// processor meanwhile.
    template <bool isWindow, class ItemQuery, class Found>
    static void SearchLevel(const Step* steps, std::size_t n, const RoughWindow& window, const ItemQuery& itemQuery,
                            Found& found) {
        const Step* const end = steps + n;
        if (steps->block->leafLevel) {
            for (; steps != end; ++steps) {
                const Target* const targets = steps->block->Targets();
                std::uint64_t on = steps->isInside ? steps->block->All() : steps->block->Matches(window, itemQuery);
                for (; on != 0; on &= on - 1) found(targets[std::countr_zero(on)].item);
            }
            return;
        }
        std::array<Step, mostStepsAhead> below;
        std::size_t nrBelow = 0;
        for (; steps != end; ++steps) {
            const EntryBlock& block = *steps->block;
            std::uint64_t on = block.All();
            std::uint64_t inside = on;
            if (!steps->isInside) {
                on = block.Rough().template Match<RoughWindow::MayOverlap>(window, block.count);
                inside = 0;
                if constexpr (isWindow) {
                    inside = block.Rough().template Match<RoughWindow::IsInside>(window, block.count);
                }
            }
            for (; on != 0; on &= on - 1) {
                const auto i = static_cast<unsigned int>(std::countr_zero(on));
                const bool isInside = (inside >> i & 1U) != 0;
                block.FetchChild(i, isInside);
                if (nrBelow == below.size()) {
                    SearchLevel<isWindow>(below.data(), nrBelow, window, itemQuery, found);
                    nrBelow = 0;
                }
                below[nrBelow++] = {block.Targets()[i].child, isInside};
            }
        }
        if (nrBelow > 0) SearchLevel<isWindow>(below.data(), nrBelow, window, itemQuery, found);
    }
    /// A bit for each entry.
    std::uint64_t All() const { return count < 64 ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0}; }
    /// Bit i: the box of entry i answers the query.
    template <class Query>
    std::uint64_t Matches(const RoughWindow& window, const Query& query) const {
        using Tests = RoughTests<Query>;
        std::uint64_t matches = Rough().template Match<typename Tests::May>(window, count);
        std::uint64_t open = matches;
        if constexpr (!std::is_void_v<typename Tests::Does>) {
            if (matches != 0) open &= ~Rough().template Match<typename Tests::Does>(window, count);
        }
        for (; open != 0; open &= open - 1) {
            const auto i = static_cast<unsigned int>(std::countr_zero(open));
            const std::uint64_t pair = Boxes().Match(query, i & ~1U, 2);
            if ((pair >> i % 2 & 1U) == 0) matches ^= std::uint64_t{1} << i;
        }
        return matches;
    }
    /// What a search will read of the child.
    void FetchChild(unsigned int i, bool itemsOnly) const {
        const char* const child = reinterpret_cast<const char*>(Targets()[i].child);
        const std::size_t boxes = RoughAt(capacity) / alignment * alignment;
        ReadAhead(child);
        if (itemsOnly) {
            for (std::size_t at = alignment; at < boxes; at += alignment) Prefetch(child + at);
            return;
        }
        ReadAhead(child + boxes);
        for (std::size_t line = 1; line < fetchedLines; ++line) Prefetch(child + boxes + line * alignment);
    }

    Piece* piece;  // null: memory of its own
    unsigned int dimension;
    std::uint8_t capacity;
    std::uint8_t count = 0;
    bool leafLevel;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
