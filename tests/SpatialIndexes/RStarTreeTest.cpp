#include "SpatialIndexes/Structure.h"
#include "support/Testing.h"

#include <deque>
#include <set>

namespace Kalvio::Math::SpatialIndexes {
namespace {

/// Vertical segments of height 1.
Item Segment(double x) { return Item(Box(x, 0, x, 1)); }

std::multiset<unsigned int> ChildSizes(const RStarTree& tree) {
    std::multiset<unsigned int> sizes;
    for (unsigned int i = 0; i < tree.GetRoot()->GetNrOfEntries(); ++i) {
        sizes.insert(tree.GetRoot()->GetChild(i)->GetNrOfEntries());
    }
    return sizes;
}

TEST(RStarTreeTest, TheSixtyFifthInsertionSplitsTheRoot) {
    std::deque<Item> items;
    RStarTree tree(false);
    EXPECT_EQ(tree.GetRoot(), nullptr);
    for (int i = 0; i < 64; ++i) tree.Insert(&items.emplace_back(Segment(i)));
    EXPECT_TRUE(tree.GetRoot()->HoldsLeaves() && tree.GetRoot()->GetNrOfEntries() == 64);
    tree.Insert(&items.emplace_back(Segment(64)));
    EXPECT_FALSE(tree.GetRoot()->HoldsLeaves());
    EXPECT_EQ(ChildSizes(tree), (std::multiset<unsigned int>{32, 33}));
    EXPECT_EQ(tree.GetNrOfItems(), 65U);

    tree.Remove(&items[0]);
    tree.Remove(&items[1]);
    EXPECT_TRUE(tree.GetRoot()->HoldsLeaves()) << "a node below 32 gives its leaves away, a root with one child goes";
    EXPECT_EQ(tree.GetRoot()->GetNrOfEntries(), 63U);
}

TEST(RStarTreeTest, AnOverflowBelowTheRootReinsertsNineteenEntries) {
    std::deque<Item> items;
    RStarTree tree(false);
    const auto insert = [&](int n, double x, double step) {
        for (int i = 0; i < n; ++i) tree.Insert(&items.emplace_back(Segment(x + i * step)));
    };
    insert(3, 0.0, 0.0);
    insert(30, 29.0, 0.05);
    insert(32, 100.0, 25.0);  // the 65th splits: 33 on the left, 32 on the right
    ASSERT_EQ(ChildSizes(tree), (std::multiset<unsigned int>{32, 33}));
    insert(16, 60.0, 0.0);
    insert(15, 30.5, 0.01);  // the left node is full: 3 at 0, 45 near 30, 16 at 60
    tree.Insert(&items.emplace_back(Box(55, 0, 110, 1)));
    ASSERT_EQ(ChildSizes(tree), (std::multiset<unsigned int>{33, 64}));
    // The overflow takes out those at 0 and 60, the farthest 19. Those at 0 come back, those at 60 fit to the right.
    insert(1, 30.0, 0.0);
    EXPECT_EQ(ChildSizes(tree), (std::multiset<unsigned int>{46 + 3, 33 + 16}));
    EXPECT_EQ(tree.GetNrOfItems(), items.size()) << "reinserted items are counted once";
    int depth = 0;
    EXPECT_EQ(CheckNode(*tree.GetRoot(), true, depth), items.size());
}

struct Counted final : public Item {
    Counted(const BoundingBoxND& itemBox, int& counter) : Item(itemBox), deleted(counter) {}
    ~Counted() override { ++deleted; }
    int& deleted;
};

TEST(RStarTreeTest, TheDeleteFlagLetsTheTreeOwnItsItemsButNoCopyOfIt) {
    int deleted = 0;
    const auto filled = [&](bool deletes) {
        auto tree = std::make_unique<RStarTree>(deletes);
        for (int i = 0; i < 100; ++i) {
            auto* const item = new Counted(Box(i, 0, i + 1, 1), deleted);
            tree->Insert(item);
            if (i % 10 == 0) tree->Insert(item);  // found twice, deleted once
        }
        return tree;
    };
    std::unique_ptr<RStarTree> owner = filled(true);
    const RStarLeaf leaf = RStarTreeNode(*owner->GetRoot()->GetChild(0)).GetLeaf(0);
    EXPECT_TRUE(owner->GetDelete() && leaf.GetItem() != nullptr && !leaf.GetDelete());
    const PointND place = PointOf({0.5, 0.5});
    EXPECT_TRUE(!RStarTree(*owner).GetDelete() && Search(RStarTree(*owner), place).size() == 2);
    EXPECT_EQ(deleted, 0) << "copies own nothing";
    const std::unique_ptr<const ISpatialIndexData> first(Search(*owner, place)[0]);
    EXPECT_TRUE(owner->Remove(first.get()) && Search(*owner, place).empty()) << "both entries";
    EXPECT_EQ(deleted, 0) << "removal never deletes";
    owner.reset();
    EXPECT_EQ(deleted, 99);

    {
        owner = filled(true);
        RStarTree taken(true);
        taken = RStarTree(std::move(*owner));
        owner.reset();
        EXPECT_TRUE(taken.GetDelete() && deleted == 99) << "ownership moves along";
    }
    EXPECT_EQ(deleted, 199);

    owner = filled(true);
    *owner = RStarTree(false);
    EXPECT_EQ(deleted, 299) << "an assignment gives up what was owned";
    EXPECT_FALSE(owner->GetDelete());

    owner = filled(true);
    *owner = RStarTree(*owner);
    EXPECT_EQ(deleted, 299) << "what both trees hold lives on, owned by nobody";
    const auto left = Search(*owner, Box(-1, -1, 200, 2), true);
    const std::set<const ISpatialIndexData*> distinct(left.begin(), left.end());
    EXPECT_EQ(distinct.size(), 100U);
    for (const ISpatialIndexData* const item : distinct) delete item;
}

TEST(RStarTreeTest, TheSplitGoesAcrossTheLongerAxis) {
    std::deque<Item> items;
    RStarTree tree(false);
    for (int i = 0; i < 65; ++i) tree.Insert(&items.emplace_back(Box(0, i, 1, i)));
    EXPECT_FALSE(tree.GetRoot()->GetChild(0)->GetBox().Intersects(tree.GetRoot()->GetChild(1)->GetBox()))
        << "stacked segments come apart by their heights";
}

TEST(RStarTreeTest, LeavesAreValuesAndNodesTellTheirKind) {
    RStarLeaf leaf(true);
    EXPECT_TRUE(leaf.GetDelete() && leaf.GetItem() == nullptr);
    RStarTree tree(true);
    auto* const item = new Item(Box(1, 2, 3, 4));
    tree.Insert(item);
    leaf = tree.GetRoot()->GetLeaf(0);
    EXPECT_TRUE(leaf.GetItem() == item && leaf.GetDelete() && leaf.GetBox().IsEqualTo(item->box, 1e-300));
    EXPECT_EQ(tree.GetRoot()->GetType(), SpatialIndexNodeTypes::RStarTreeNode);
    EXPECT_EQ(std::pair(tree.GetType(), RTree().GetType()),
              std::pair(SpatialIndexTypes::RStarTree, SpatialIndexTypes::RTree));
    EXPECT_EQ(RTreeNode().GetType(), SpatialIndexNodeTypes::RTreeNode);
    BoundingBoxND empty(2U);
    empty.Reset();
    EXPECT_TRUE(RStarTreeNode().GetBox().IsEqualTo(empty, 1e-300));
    static_assert(std::is_base_of_v<BoundedItem, RStarTreeNode> && std::is_base_of_v<BoundedItem, RStarLeaf>);
}

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
