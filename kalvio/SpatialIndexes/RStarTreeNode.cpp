#include "kalvio/SpatialIndexes/RStarTreeNode.h"

#include "kalvio/SpatialIndexes/detail/OverlapGrowth.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <utility>

// Beckmann, Kriegel, Schneider, Seeger: The R*-tree, an efficient and robust access method for points and rectangles,
// 1990: choice of the subtree, forced reinsertion ("close": nearest first) and the split.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;
using detail::OverlapGrowth;
using detail::Ranked;

namespace {

constexpr unsigned int largestCandidateCount = 32;  // children whose overlap growth is looked at
constexpr double reinsertedShare = 0.3;             // of the entries of a node that overflows
constexpr unsigned int overflowing = RStarTreeNode::mostEntries + 1;

/// How much a child suits a new box: less is better; the area is there to prefer the tighter of two that do not grow.
struct Rank {
    double areaGrowth;
    double edgeGrowth;
    double area;
    unsigned int child;

    bool operator<(const Rank& other) const {
        if (areaGrowth != other.areaGrowth) return areaGrowth < other.areaGrowth;
        if (edgeGrowth != other.edgeGrowth) return edgeGrowth < other.edgeGrowth;
        if (area != other.area) return area < other.area;
        return child < other.child;
    }
};

/// One bound of an entry along one axis; ties go by the other bound, then by position.
struct Key {
    double first;
    double second;
    unsigned int entry;

    bool operator<(const Key& other) const {
        if (first != other.first) return first < other.first;
        if (second != other.second) return second < other.second;
        return entry < other.entry;
    }
};
using Keys = std::array<Key, overflowing>;

// Covers that grow box by box are kept as the lower bound of each axis beside the negative upper one: a minimum widens
// both.

Lanes BoundsOf(double low, double high) { return Lanes::Of(std::min(low, high), -std::max(low, high)); }

double LengthOf(Lanes bounds) {
    double both[2];
    Store(bounds, both);
    return -both[1] - both[0];
}

void Widen(Lanes* cover, const Lanes* added, unsigned int dimension) {
    for (unsigned int axis = 0; axis < dimension; ++axis) cover[axis] = Min(cover[axis], added[axis]);
}

/// What two covers are worth as the groups of a split.
struct Worth {
    double edges = 0.0;
    double overlap = 1.0;
    double area;

    Worth(const Lanes* first, const Lanes* second, unsigned int dimension) {
        double edgesOfSecond = 0.0;
        double areaOfFirst = 1.0;
        double areaOfSecond = 1.0;
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            const double length = LengthOf(first[axis]);
            const double lengthOfSecond = LengthOf(second[axis]);
            const double common = LengthOf(Max(first[axis], second[axis]));
            edges += length;
            edgesOfSecond += lengthOfSecond;
            areaOfFirst *= length;
            areaOfSecond *= lengthOfSecond;
            overlap = common > 0.0 && overlap > 0.0 ? overlap * common : 0.0;
        }
        edges += edgesOfSecond;
        area = Ranked(areaOfFirst + areaOfSecond);
        overlap = Ranked(overlap);
    }
};

}  // namespace

RStarTreeNode::RStarTreeNode(bool leafLevel, unsigned int dimension, bool deleteFlag, detail::EntryBlock::Shelf* shelf)
    : BoundedItem(FlatBox(dimension)), entries(leafLevel, dimension, overflowing, shelf), deletes(deleteFlag) {}

RStarTreeNode::RStarTreeNode(const RStarTreeNode& other)
    : BoundedItem(other), ISpatialIndexNode(other), entries(other.entries), deletes(false) {}

RStarTreeNode& RStarTreeNode::operator=(const RStarTreeNode& other) {
    if (this == &other) return *this;
    // The copy comes first: the other node may lie below this one.
    detail::NodeEntries<RStarTreeNode> copy(other.entries);
    BoundedItem::operator=(other);
    entries = std::move(copy);
    deletes = false;
    return *this;
}

RStarTreeNode::~RStarTreeNode() = default;

SpatialIndexNodeTypes RStarTreeNode::GetType() const { return SpatialIndexNodeTypes::RStarTreeNode; }

const RStarTreeNode* RStarTreeNode::GetChild(unsigned int index) const {
    return HoldsLeaves() || index >= GetNrOfEntries() ? nullptr : &entries.Child(index);
}

RStarLeaf RStarTreeNode::GetLeaf(unsigned int index) const {
    if (!HoldsLeaves() || index >= GetNrOfEntries()) return RStarLeaf(deletes);
    return {entries.GetBox(index), entries.Item(index), deletes};
}

std::unique_ptr<RStarTreeNode> RStarTreeNode::Insert(const FlatBox& itemBox, ISpatialIndexData* item, bool isRoot,
                                                     Insertion& insertion) {
    box.Cover(itemBox);
    if (HoldsLeaves()) {
        entries.Append({itemBox, nullptr, item});
    } else {
        const unsigned int i = ChooseSubtree(itemBox);
        RStarTreeNode& child = entries.Child(i);
        const bool mightReinsert = insertion.mayReinsert;
        std::unique_ptr<RStarTreeNode> sibling = child.Insert(itemBox, item, false, insertion);
        entries.SetBox(i, child.box);
        if (sibling != nullptr) {
            const FlatBox siblingBox = sibling->box;
            entries.Append({siblingBox, std::move(sibling), nullptr});
        }
        if (mightReinsert && !insertion.mayReinsert) UpdateBox();  // entries have left: the child has shrunk
    }
    if (GetNrOfEntries() <= mostEntries) return nullptr;
    if (!isRoot && insertion.mayReinsert) {
        insertion.mayReinsert = false;
        insertion.removed = TakeFarthest();
        return nullptr;
    }
    return Split();
}

bool RStarTreeNode::Remove(Removal& removal) {
    bool changed = false;
    bool isSmaller = false;  // something has left that lay at the border
    if (HoldsLeaves()) {
        for (unsigned int i = GetNrOfEntries(); i-- > 0;) {
            if (entries.Item(i) != removal.item) continue;
            FlatBox kept(box.GetDimension());
            kept.Cover(entries.GetBox(i));
            isSmaller = isSmaller || !box.HoldsInside(kept);
            entries.Erase(i);
            ++removal.nrOfLeaves;
            changed = true;
        }
    } else {
        // From the last to the first, so that the numbers of those to come stay when one is dropped.
        std::uint64_t on = entries.Boxes().Match(detail::OverlapQuery{removal.itemBox}, 0, GetNrOfEntries());
        while (on != 0) {
            const unsigned int i = static_cast<unsigned int>(std::bit_width(on)) - 1;
            on ^= std::uint64_t{1} << i;
            RStarTreeNode& child = entries.Child(i);
            isSmaller = isSmaller || !box.HoldsInside(child.box);
            if (!child.Remove(removal)) continue;
            changed = true;
            if (child.GetNrOfEntries() >= fewestEntries) {
                entries.SetBox(i, child.box);
                continue;
            }
            auto collect = [&removal](const FlatBox& leafBox, ISpatialIndexData* leaf) {
                removal.orphans.push_back({leafBox, nullptr, leaf});
            };
            entries.TakeChild(i)->entries.Block().ForEachItem(collect);
        }
    }
    if (changed && isSmaller) UpdateBox();
    return changed;
}

unsigned int RStarTreeNode::ChooseSubtree(const FlatBox& itemBox) const {
    const unsigned int n = GetNrOfEntries();
    const detail::BoxPairs boxes = entries.Boxes();
    FlatBox added(boxes.GetDimension());
    added.Cover(itemBox);
    std::array<double, overflowing + 1> areas;
    std::array<double, overflowing + 1> growths;
    unsigned int pair = 0;
    do {
        Lanes area = Lanes::Repeat(1.0);
        Lanes widened = area;
        const auto multiply = [&](unsigned int axis) {
            const Lanes low = boxes.Lows(axis, pair);
            const Lanes high = boxes.Highs(axis, pair);
            area = area * (high - low);
            widened = widened * (Max(high, Lanes::Repeat(added.High(axis))) - Min(low, Lanes::Repeat(added.Low(axis))));
        };
        if (boxes.GetDimension() == 2) {  // without a loop: this is where insertion spends its time
            multiply(0);
            multiply(1);
        } else {
            for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) multiply(axis);
        }
        Store(area, areas.data() + std::size_t{2} * pair);
        Store(widened - area, growths.data() + std::size_t{2} * pair);
    } while (2 * ++pair < n);
    const auto rankOf = [&](unsigned int i) {
        Rank rank{Ranked(growths[i]), 0.0, Ranked(areas[i]), i};
        if (rank.areaGrowth > 0.0) return rank;
        for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) {  // flat boxes grow without an area
            rank.edgeGrowth += std::max(added.High(axis) - boxes.High(axis, i), 0.0);
            rank.edgeGrowth += std::max(boxes.Low(axis, i) - added.Low(axis), 0.0);
        }
        return rank;
    };
    Rank best = rankOf(0);
    for (unsigned int i = 1; i < n; ++i) {
        if (growths[i] > best.areaGrowth) continue;
        best = std::min(best, rankOf(i));
    }
    if (!entries.Child(0).HoldsLeaves()) return best.child;

    // The least growth of overlap wins, and none at all cannot be beaten: mostly the first candidate settles it.
    double least = OverlapGrowth(boxes, n, best.child, itemBox, std::numeric_limits<double>::infinity());
    if (least == 0.0) return best.child;
    std::array<Rank, overflowing> candidates;
    for (unsigned int i = 0; i < n; ++i) candidates[i] = rankOf(i);
    if (n > largestCandidateCount) {
        std::nth_element(candidates.begin(), candidates.begin() + largestCandidateCount, candidates.begin() + n);
    }
    for (unsigned int i = 0; i < std::min(n, largestCandidateCount); ++i) {
        if (candidates[i].child == best.child || (least == 0.0 && best < candidates[i])) continue;
        const double growth = OverlapGrowth(boxes, n, candidates[i].child, itemBox, least);
        if (!(growth < least || (growth == least && candidates[i] < best))) continue;
        least = growth;
        best = candidates[i];
    }
    return best.child;
}

std::unique_ptr<RStarTreeNode> RStarTreeNode::Split() {
    std::vector<Entry> all = entries.TakeAll();
    const auto n = static_cast<unsigned int>(all.size());
    const unsigned int dimension = box.GetDimension();
    Keys keys;
    const auto read = [&](unsigned int axis, bool byLow) {
        for (unsigned int i = 0; i < n; ++i) {
            keys[i] = {all[i].box.Low(axis), all[i].box.High(axis), i};
            if (!byLow) std::swap(keys[i].first, keys[i].second);
        }
    };
    struct Distribution {
        unsigned int axis;
        bool byLow;
        unsigned int size;  // of the first group
        double overlap;
        double area;
    };
    Distribution best{};
    double leastEdges = 0.0;
    std::vector<Lanes> corners(std::size_t{n} * dimension);
    for (unsigned int i = 0; i < n; ++i) {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            corners[i * dimension + axis] = BoundsOf(all[i].box.Low(axis), all[i].box.High(axis));
        }
    }
    const auto cornersOf = [&](const Key& key) { return &corners[key.entry * dimension]; };
    const Lanes nothing = Lanes::Repeat(Math::detail::largestDouble);
    std::vector<Lanes> cover(dimension);
    std::vector<Lanes> seconds(corners.size());  // covers of the second groups, by the size of the first
    const unsigned int largest = n - fewestEntries;
    for (unsigned int axis = 0; axis < dimension; ++axis) {
        double edges = 0.0;
        Distribution bestOfAxis{};
        for (const bool byLow : {true, false}) {
            read(axis, byLow);
            // Whatever the cut, the entries before the first and behind the last need no order.
            const auto first = keys.begin() + fewestEntries;
            const auto last = keys.begin() + largest;
            std::nth_element(keys.begin(), first, keys.begin() + n);
            std::nth_element(first, last, keys.begin() + n);
            std::sort(first, last);
            std::fill(cover.begin(), cover.end(), nothing);
            for (unsigned int k = n; k-- > fewestEntries;) {
                Widen(cover.data(), cornersOf(keys[k]), dimension);
                std::copy(cover.begin(), cover.end(), &seconds[k * dimension]);
            }
            std::fill(cover.begin(), cover.end(), nothing);
            for (unsigned int k = 0; k <= largest; Widen(cover.data(), cornersOf(keys[k++]), dimension)) {
                if (k < fewestEntries) continue;
                const Worth worth(cover.data(), &seconds[k * dimension], dimension);
                edges += worth.edges;
                if (bestOfAxis.size == 0 || worth.overlap < bestOfAxis.overlap ||
                    (worth.overlap == bestOfAxis.overlap && worth.area < bestOfAxis.area)) {
                    bestOfAxis = {axis, byLow, k, worth.overlap, worth.area};
                }
            }
        }
        edges = Ranked(edges);
        if (axis == 0 || edges < leastEdges) {
            leastEdges = edges;
            best = bestOfAxis;
        }
    }

    read(best.axis, best.byLow);
    std::sort(keys.begin(), keys.begin() + n);
    auto sibling = std::make_unique<RStarTreeNode>(HoldsLeaves(), dimension, deletes);
    for (unsigned int i = 0; i < n; ++i) {
        (i < best.size ? *this : *sibling).entries.Append(std::move(all[keys[i].entry]));
    }
    UpdateBox();
    sibling->UpdateBox();
    return sibling;
}

std::vector<RStarTreeNode::Entry> RStarTreeNode::TakeFarthest() {
    const unsigned int n = GetNrOfEntries();
    const unsigned int nrOfTaken = std::max(1U, static_cast<unsigned int>(reinsertedShare * n));
    struct Place {
        double squaredDistance;
        unsigned int entry;
        bool operator<(const Place& other) const {
            if (squaredDistance != other.squaredDistance) return squaredDistance < other.squaredDistance;
            return entry < other.entry;
        }
    };
    std::array<Place, overflowing> places{};
    for (unsigned int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (unsigned int axis = 0; axis < box.GetDimension(); ++axis) {
            const double low = entries.Boxes().Low(axis, i) - box.Low(axis);
            const double high = entries.Boxes().High(axis, i) - box.High(axis);
            sum += (low + high) * (low + high);  // four times the square of the distance of the centres
        }
        places[i] = {Ranked(sum), i};
    }
    std::sort(places.begin(), places.begin() + n);

    std::vector<Entry> all = entries.TakeAll();
    std::vector<Entry> taken;
    taken.reserve(nrOfTaken);
    for (unsigned int i = 0; i < n - nrOfTaken; ++i) entries.Append(std::move(all[places[i].entry]));
    for (unsigned int i = n - nrOfTaken; i < n; ++i) taken.push_back(std::move(all[places[i].entry]));
    UpdateBox();
    return taken;
}

}  // namespace Kalvio::Math::SpatialIndexes
