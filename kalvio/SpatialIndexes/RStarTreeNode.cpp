#include "kalvio/SpatialIndexes/RStarTreeNode.h"

#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

// Beckmann, Kriegel, Schneider, Seeger: The R*-tree, an efficient and robust access method for points and rectangles,
// 1990: choice of the subtree, forced reinsertion ("close": nearest first) and the split.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;

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

/// NaN, the difference of infinite areas, ranks last: it would break the order.
double Ranked(double value) { return value == value ? value : std::numeric_limits<double>::infinity(); }

using Order = std::array<unsigned int, overflowing>;

/// The n entries in the order of one bound along one axis; ties by the other bound, then by position.
Order Sorted(const detail::BoxPairs& boxes, unsigned int n, unsigned int axis, bool byLow) {
    struct Key {
        double first;
        double second;
        unsigned int entry;
    };
    std::array<Key, overflowing> keys;
    for (unsigned int i = 0; i < n; ++i) {
        keys[i] = {boxes.Low(axis, i), boxes.High(axis, i), i};
        if (!byLow) std::swap(keys[i].first, keys[i].second);
    }
    std::sort(keys.begin(), keys.begin() + n, [](const Key& a, const Key& b) {
        if (a.first != b.first) return a.first < b.first;
        if (a.second != b.second) return a.second < b.second;
        return a.entry < b.entry;
    });
    Order order{};
    for (unsigned int i = 0; i < n; ++i) order[i] = keys[i].entry;
    return order;
}

/// Cover of the entries at the places first ... last - 1 of an order.
FlatBox CoverOf(const detail::BoxPairs& boxes, const Order& order, unsigned int first, unsigned int last) {
    FlatBox cover(boxes.GetDimension());
    for (unsigned int i = first; i < last; ++i) cover.Cover(boxes.Get(order[i]));
    return cover;
}

/// Volume that a box has in common with entry i; 0 when they are disjoint.
double OverlapArea(const FlatBox& box, const detail::BoxPairs& boxes, unsigned int i) {
    double area = 1.0;
    for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) {
        const double low = std::max(box.Low(axis), boxes.Low(axis, i));
        const double high = std::min(box.High(axis), boxes.High(axis, i));
        if (!(low < high)) return 0.0;
        area *= high - low;
    }
    return area;
}

}  // namespace

RStarTreeNode::RStarTreeNode(bool leafLevel, unsigned int dimension, bool deleteFlag)
    : BoundedItem(FlatBox(dimension)), entries(leafLevel, dimension, overflowing), deletes(deleteFlag) {}

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
    if (HoldsLeaves()) {
        for (unsigned int i = GetNrOfEntries(); i-- > 0;) {
            if (entries.Item(i) != removal.item) continue;
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
    if (changed) UpdateBox();
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
    double least = OverlapGrowth(best.child, itemBox, std::numeric_limits<double>::infinity());
    if (least == 0.0) return best.child;
    std::array<Rank, overflowing> candidates;
    for (unsigned int i = 0; i < n; ++i) candidates[i] = rankOf(i);
    if (n > largestCandidateCount) {
        std::nth_element(candidates.begin(), candidates.begin() + largestCandidateCount, candidates.begin() + n);
    }
    for (unsigned int i = 0; i < std::min(n, largestCandidateCount); ++i) {
        if (candidates[i].child == best.child || (least == 0.0 && best < candidates[i])) continue;
        const double growth = OverlapGrowth(candidates[i].child, itemBox, least);
        if (!(growth < least || (growth == least && candidates[i] < best))) continue;
        least = growth;
        best = candidates[i];
    }
    return best.child;
}

double RStarTreeNode::OverlapGrowth(unsigned int i, const FlatBox& itemBox, double limit) const {
    const FlatBox before = entries.GetBox(i);
    FlatBox after = before;
    after.Cover(itemBox);
    if (before.Contains(after)) return 0.0;
    double growth = 0.0;
    const detail::BoxPairs boxes = entries.Boxes();
    std::uint64_t others = boxes.Match(detail::OverlapQuery{after}, 0, GetNrOfEntries()) & ~(std::uint64_t{1} << i);
    for (; others != 0 && growth <= limit; others &= others - 1) {
        const auto other = static_cast<unsigned int>(std::countr_zero(others));
        growth += OverlapArea(after, boxes, other) - OverlapArea(before, boxes, other);
    }
    return Ranked(growth);
}

std::unique_ptr<RStarTreeNode> RStarTreeNode::Split() {
    const unsigned int n = GetNrOfEntries();
    const detail::BoxPairs boxes = entries.Boxes();
    struct Distribution {
        Order order;
        unsigned int size;  // of the first group
        double overlap;
        double area;
    };
    Distribution best{};
    double leastEdges = 0.0;
    for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) {
        double edges = 0.0;
        Distribution bestOfAxis{};
        for (const bool byLow : {true, false}) {
            const Order order = Sorted(boxes, n, axis, byLow);
            for (unsigned int k = fewestEntries; k <= n - fewestEntries; ++k) {
                const FlatBox first = CoverOf(boxes, order, 0, k);
                const FlatBox second = CoverOf(boxes, order, k, n);
                edges += first.EdgesLengthSum() + second.EdgesLengthSum();
                const double overlap = Ranked(detail::OverlapArea(first, second));
                const double area = Ranked(first.Area() + second.Area());
                if (bestOfAxis.size == 0 || overlap < bestOfAxis.overlap ||
                    (overlap == bestOfAxis.overlap && area < bestOfAxis.area)) {
                    bestOfAxis = {order, k, overlap, area};
                }
            }
        }
        edges = Ranked(edges);
        if (axis == 0 || edges < leastEdges) {
            leastEdges = edges;
            best = bestOfAxis;
        }
    }

    std::vector<Entry> all = entries.TakeAll();
    auto sibling = std::make_unique<RStarTreeNode>(HoldsLeaves(), boxes.GetDimension(), deletes);
    for (unsigned int i = 0; i < n; ++i) {
        (i < best.size ? *this : *sibling).entries.Append(std::move(all[best.order[i]]));
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
