#include "SpatialIndexes/Items.h"
#include "fuzz/Bytes.h"

#include <deque>

using namespace Kalvio::Math;
using namespace Kalvio::Math::SpatialIndexes;

namespace {

struct Known final : public Item {
    using Item::Item;
    bool isIn = true;
};

BoundingBoxND TakeBox(Bytes& bytes) { return {PointND(bytes.TakePoint()), PointND(bytes.TakePoint())}; }

void CheckSearch(const ISpatialIndex& index, const std::deque<Known>& items, const BoundingBoxND& box) {
    for (const bool overlap : {true, false}) {
        std::vector<const ISpatialIndexData*> expected;
        for (const Known& item : items) {
            bool matches = item.isIn && !HasNaN(item.box);
            for (unsigned int axis = 0; axis < 2; ++axis) {
                const double low = item.box.GetMin(axis), high = item.box.GetMax(axis);
                matches = matches && (overlap ? low <= box.GetMax(axis) && box.GetMin(axis) <= high
                                              : box.GetMin(axis) <= low && high <= box.GetMax(axis));
            }
            if (matches) expected.push_back(&item);
        }
        Require(Search(index, box, overlap) == Sorted(expected));
    }
    std::list<ISpatialIndexData*> inOrder;
    index.Search(box.GetMinPoint(), inOrder);
    index.Search(box, true, inOrder);
    for (const ISpatialIndexData* item : inOrder) See({static_cast<const Known*>(item)->box.GetMin(0)});
}

std::size_t CountBelow(const QuadTreeNode& node) { return static_cast<std::size_t>(node.Size()); }
std::size_t CountBelow(const RTreeNode& node);
std::size_t CountBelow(const RStarTreeNode& node);

template <class Node, class ItemAt>
std::size_t CountEntries(const Node& node, unsigned int size, ItemAt itemAt) {
    std::size_t count = 0;
    for (unsigned int i = 0; i < size; ++i) {
        const auto* const child = node.GetChild(i);
        Require((child == nullptr) == (itemAt(i) != nullptr));
        count += child == nullptr ? 1 : CountBelow(*child);
    }
    return count;
}

std::size_t CountBelow(const RTreeNode& node) {
    return CountEntries(node, node.GetNrOfBranches(), [&](unsigned int i) { return node.GetItem(i); });
}

std::size_t CountBelow(const RStarTreeNode& node) {
    const BoundedItem& bounds = node;
    Require(bounds.GetBox().GetDimension() == 2);
    const auto itemAt = [&](unsigned int i) { return RStarLeaf(node.GetLeaf(i)).GetItem(); };
    return CountEntries(node, node.GetNrOfEntries(), itemAt);
}

// Items come and go; every search finds what a look at all of them finds, in the index and in its copy.
template <class Index>
void CheckIndex(Bytes bytes) {
    Index index;
    std::deque<Known> items;
    while (!bytes.Empty()) {
        const unsigned int what = bytes.TakeCount(8);
        if (what == 0 && !items.empty()) {
            Known& item = items[bytes.TakeCount(static_cast<unsigned int>(std::min<std::size_t>(items.size(), 255)))];
            Require(index.Remove(&item) == item.isIn);
            item.isIn = false;
        } else if (what == 1) {
            CheckSearch(index, items, TakeBox(bytes));
        } else {
            // One; or several beside each other, so that nodes split, one by one or at once.
            const BoundingBoxND box = TakeBox(bytes);
            Found added;
            for (unsigned int i = 0; i < (what < 4 ? 40U : 1U); ++i) {
                const Point2D high(box.GetMax(0) + i, box.GetMax(1));
                items.emplace_back(i == 0 ? box : BoundingBoxND(box.GetMinPoint(), PointND(high)));
                added.push_back(&items.back());
                if (what != 2) Require(index.Insert(added.back()));
            }
            if (what == 2) Require(index.Insert(added));
        }
    }
    const auto count = std::count_if(items.begin(), items.end(), [](const Known& item) { return item.isIn; });
    const std::size_t below = index.GetRoot() == nullptr ? 0 : CountBelow(*index.GetRoot());
    if (bytes.Tame()) Require(below == static_cast<std::size_t>(count));  // boxes with NaN are kept beside the nodes
    const Index copy(index);
    for (std::size_t i = 0; i < items.size() && i < 8; ++i) CheckSearch(copy, items, items[i].box);
    CheckSearch(index, items, Box(-HUGE_VAL, -HUGE_VAL, HUGE_VAL, HUGE_VAL));
}

void CheckPoints(Bytes bytes) {
    const unsigned int capacity = bytes.TakeCount(5);
    const Point2D low = bytes.TakePoint(), center = bytes.TakePoint();
    const double radius = bytes.TakeDouble();
    const auto index = IQuadTreeForPoints::Create(capacity, BoundingBox2D(low, center));
    std::uint64_t expected = 0;
    for (const Point3D& p : bytes.TakePoints3D()) {
        if (index->Insert(p) && p.GetPoint2D().Distance(center) <= radius) ++expected;
    }
    std::vector<Point3D> found;
    Require(index->Search(center, radius, found) == expected && found.size() == expected);
}

}  // namespace

void Kalvio::Math::FuzzIndex(Bytes& bytes) {
    CheckIndex<QuadTree>(bytes);
    CheckIndex<RTree>(bytes);
    CheckIndex<RStarTree>(bytes);
    CheckPoints(bytes);
}
