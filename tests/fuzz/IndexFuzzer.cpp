#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"
#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/QuadTree.h"
#include "kalvio/SpatialIndexes/QuadTreeNode.h"
#include "kalvio/SpatialIndexes/RStarTree.h"
#include "kalvio/SpatialIndexes/RStarTreeNode.h"
#include "kalvio/SpatialIndexes/RTree.h"
#include "kalvio/SpatialIndexes/RTreeNode.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBoxND.h"

#include "fuzz/Bytes.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <list>

using namespace Kalvio::Math;
using namespace Kalvio::Math::SpatialIndexes;

namespace {

class Item final : public ISpatialIndexData {
public:
    explicit Item(const BoundingBoxND& itemBox) : box(itemBox) {}
    void GetEnvelope(BoundingBoxND& envelope) const override { envelope = box; }

    BoundingBoxND box;
    bool isIn = false;
};

BoundingBoxND TakeBox(Bytes& bytes) {
    const PointND low(bytes.TakePoint());
    return {low, PointND(bytes.TakePoint())};
}

bool HasNaN(const BoundingBoxND& box) {
    for (unsigned int axis = 0; axis < 2; ++axis) {
        if (std::isnan(box.GetMin(axis)) || std::isnan(box.GetMax(axis))) return true;
    }
    return false;
}

// The rule of every index, for one item.
bool Matches(const BoundingBoxND& box, const BoundingBoxND& item, bool overlap) {
    for (unsigned int axis = 0; axis < 2; ++axis) {
        const bool meets = item.GetMin(axis) <= box.GetMax(axis) && box.GetMin(axis) <= item.GetMax(axis);
        const bool isWithin = box.GetMin(axis) <= item.GetMin(axis) && item.GetMax(axis) <= box.GetMax(axis);
        if (!(overlap ? meets : isWithin)) return false;
    }
    return !HasNaN(item);
}

void CheckSearch(const ISpatialIndex& index, const std::deque<Item>& items, const BoundingBoxND& box) {
    for (const bool overlap : {true, false}) {
        std::list<ISpatialIndexData*> found;
        Require(index.Search(box, overlap, found) == found.size());
        std::vector<const ISpatialIndexData*> got(found.begin(), found.end());
        std::vector<const ISpatialIndexData*> expected;
        for (const Item& item : items) {
            if (item.isIn && Matches(box, item.box, overlap)) expected.push_back(&item);
        }
        std::sort(got.begin(), got.end());
        std::sort(expected.begin(), expected.end());
        Require(got == expected);
    }
    std::list<ISpatialIndexData*> atCorner;
    (void)index.Search(box.GetMinPoint(), atCorner);
}

std::size_t CountBelow(const QuadTreeNode& node) { return static_cast<std::size_t>(node.Size()); }

std::size_t CountBelow(const RTreeNode& node) {
    std::size_t count = 0;
    for (unsigned int i = 0; i < node.GetNrOfBranches(); ++i) {
        const RTreeNode* const child = node.GetChild(i);
        Require((child == nullptr) == (node.GetItem(i) != nullptr));
        count += child == nullptr ? 1 : CountBelow(*child);
    }
    return count;
}

std::size_t CountBelow(const RStarTreeNode& node) {
    std::size_t count = 0;
    const BoundedItem& bounds = node;
    Require(bounds.GetBox().GetDimension() == 2);
    for (unsigned int i = 0; i < node.GetNrOfEntries(); ++i) {
        const RStarLeaf leaf = node.GetLeaf(i);
        const RStarTreeNode* const child = node.GetChild(i);
        Require((child == nullptr) == (leaf.GetItem() != nullptr));
        count += child == nullptr ? 1 : CountBelow(*child);
    }
    return count;
}

// Items come and go; every search finds what a look at all of them finds, in the index and in its copy.
template <class Index>
void CheckIndex(Bytes bytes) {
    Index index;
    std::deque<Item> items;
    while (!bytes.Empty()) {
        const unsigned int what = bytes.TakeCount(8);
        if (what == 0 && !items.empty()) {
            Item& item = items[bytes.TakeCount(static_cast<unsigned int>(std::min<std::size_t>(items.size(), 255)))];
            Require(index.Remove(&item) == item.isIn);
            item.isIn = false;
        } else if (what == 1) {
            CheckSearch(index, items, TakeBox(bytes));
        } else {
            // One; or several beside each other, so that nodes split, one by one or at once.
            const BoundingBoxND box = TakeBox(bytes);
            std::vector<const ISpatialIndexData*> added;
            for (unsigned int i = 0; i < (what < 4 ? 40U : 1U); ++i) {
                const Point2D high(box.GetMax(0) + i, box.GetMax(1));
                items.emplace_back(i == 0 ? box : BoundingBoxND(box.GetMinPoint(), PointND(high)));
                items.back().isIn = true;
                added.push_back(&items.back());
                if (what != 2) Require(index.Insert(added.back()));
            }
            if (what == 2) Require(index.Insert(added));
        }
    }
    const auto isIn = [](const Item& item) { return item.isIn; };
    const auto count = static_cast<std::size_t>(std::count_if(items.begin(), items.end(), isIn));
    const std::size_t below = index.GetRoot() == nullptr ? 0 : CountBelow(*index.GetRoot());
    if (bytes.Tame()) Require(below == count);  // boxes with NaN are kept beside the nodes
    const Index copy(index);
    const double infinity = HUGE_VAL;
    const BoundingBoxND everywhere(PointND(Point2D(-infinity, -infinity)), PointND(Point2D(infinity, infinity)));
    for (std::size_t i = 0; i < items.size() && i < 8; ++i) CheckSearch(copy, items, items[i].box);
    CheckSearch(index, items, everywhere);
}

void CheckPoints(Bytes bytes) {
    const unsigned int capacity = bytes.TakeCount(5);
    const Point2D low = bytes.TakePoint();
    const Point2D center = bytes.TakePoint();
    const double radius = bytes.TakeDouble();
    const auto index = IQuadTreeForPoints::Create(capacity, BoundingBox2D(low, center));
    std::uint64_t expected = 0;
    for (const Point3D& p : bytes.TakePoints3D()) {
        if (!index->Insert(p)) continue;
        expected += p.GetPoint2D().Distance(center) <= radius ? 1 : 0;
    }
    std::vector<Point3D> found;
    Require(index->Search(center, radius, found) == expected && found.size() == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 600) return 0;
    const Bytes bytes(data, size);
    CheckIndex<QuadTree>(bytes);
    CheckIndex<RTree>(bytes);
    CheckIndex<RStarTree>(bytes);
    CheckPoints(bytes);
    return 0;
}
