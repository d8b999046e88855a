#include "SpatialIndexes/Structure.h"
#include "support/Testing.h"

namespace Kalvio::Math::SpatialIndexes {
namespace {

/// The node that holds an item; null when there is none.
const QuadTreeNode* NodeOf(const QuadTreeNode& node, const Item& item) {
    if (std::count(node.GetItems().begin(), node.GetItems().end(), &item) > 0) return &node;
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const QuadTreeNode* const child = node.GetSubnode(quadrant);
        if (const QuadTreeNode* const found = child != nullptr ? NodeOf(*child, item) : nullptr) return found;
    }
    return nullptr;
}

TEST(QuadTreeTest, TheQuadrantHoldsTheWholeBoxAndTouchingIsInside) {
    const std::tuple<const char*, BoundingBoxND, int> rows[] = {
        {"touches both lines from above", Box(0, 0, 1, 1), 3},
        {"touches both lines from below", Box(-1, -1, 0, 0), 0},
        {"high x, low y", Box(1, -2, 2, -1), 1},
        {"crosses x = 0", Box(-1, 1, 1, 2), -1},
        {"crosses y = 0", Box(1, -1, 2, 1), -1},
        {"on the vertical line, above: low x", Box(0, 1, 0, 2), 2},
        {"on the vertical line, below: low x", Box(0, -2, 0, -1), 0},
        {"on the vertical line, across", Box(0, -1, 0, 1), -1},
        {"on the horizontal line: low y", Box(1, 0, 2, 0), 1},
        {"the centre: low x, low y", Box(0, 0, 0, 0), 0},
    };
    for (const auto& [why, box, quadrant] : rows) {
        EXPECT_EQ(QuadTreeNode::GetSubnodeIndex(box, PointND(2U)), quadrant) << why;
    }
}

TEST(QuadTreeTest, AnItemLivesInTheSmallestSquareThatHoldsIt) {
    const std::tuple<const char*, BoundingBoxND, BoundingBoxND, int> rows[] = {
        {"exactly a square of level 2", Box(4, 8, 8, 12), Box(4, 8, 8, 12), 2},
        {"as wide, but across the grid", Box(1, 8, 5, 12), Box(0, 8, 8, 16), 3},
        {"below 1", Box(0.25, 0.25, 0.5, 0.5), Box(0.25, 0.25, 0.5, 0.5), -2},
        {"negative", Box(-3, -3, -2.5, -2.5), Box(-3, -3, -2.5, -2.5), -1},
        {"a point, widened to 1", Box(10.5, 10.5, 10.5, 10.5), Box(10, 10, 11, 11), 0},
        {"a line, widened in y", Box(16, 16.5, 18, 16.5), Box(16, 16, 18, 18), 1},
        {"largest numbers", Box(0.4 * kLargest, 1, 0.9 * kLargest, 2), Box(0, 0, INFINITY, INFINITY), 1024},
    };
    for (const auto& [why, box, square, level] : rows) {
        SCOPED_TRACE(why);
        QuadTree tree;
        Item item(box);
        tree.Insert(&item);
        const QuadTreeNode* const node = NodeOf(*tree.GetRoot(), item);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetLevel(), level);
        EXPECT_TRUE(Same(*node->GetEnvelope(), square));
        EXPECT_TRUE(tree.Remove(&item) && tree.GetRoot()->IsPrunable()) << "an empty node goes";
    }
}

TEST(QuadTreeTest, ALargerBoxPutsALargerSquareAboveTheOldOne) {
    QuadTree tree;
    Item small(Box(5, 5, 6, 6)), large(Box(1, 1, 60, 60)), across(Box(-1, 5, 1, 6));
    tree.Insert(&small);
    EXPECT_EQ(tree.GetRoot()->GetSubnode(3)->GetLevel(), 0);
    tree.Insert(&large);
    tree.Insert(&across);
    const QuadTreeNode& root = *tree.GetRoot();
    EXPECT_EQ(root.GetSubnode(3)->GetLevel(), 6);
    EXPECT_EQ(NodeOf(root, small)->GetLevel(), 0);
    EXPECT_EQ(NodeOf(root, across), &root) << "the axes belong to the root";
    EXPECT_EQ(root.GetItems(), std::vector<ISpatialIndexData*>{&across});
    EXPECT_EQ(root.Depth(), 8) << "the root and levels 6 to 0";
    EXPECT_TRUE(root.Size() == 3 && root.NodeCount() == 3) << "1 and the sizes of the children";
    std::vector<ISpatialIndexData*> all;
    EXPECT_EQ(root.AddAllItems(&all), &all);
    EXPECT_EQ(all, (std::vector<ISpatialIndexData*>{&across, &large, &small})) << "depth first";
    CheckStructure(tree, 0, 3);
}

TEST(QuadTreeTest, TheMinimumExtentShrinksAndWidenedItemsAreStillRemoved) {
    QuadTree tree;
    Item early(Box(10.5, 10.5, 10.5, 10.5)), thin(Box(3, 3, 4, 3.125)), late(Box(20.125, 20.125, 20.125, 20.125));
    tree.Insert(&early);
    EXPECT_EQ(tree.GetMinimumExtent(), 1.0);
    tree.Insert(&thin);
    tree.Insert(&late);
    EXPECT_EQ(tree.GetMinimumExtent(), 0.125);
    EXPECT_EQ(NodeOf(*tree.GetRoot(), late)->GetLevel(), -2)
        << "20.0625 to 20.1875 crosses the grid of 1/8 and fits 1/4";
    for (const Item* item : {&early, &thin, &late}) EXPECT_TRUE(tree.Remove(item));
    EXPECT_TRUE(tree.GetRoot()->IsPrunable());
    const double far = 0x1p53 + 8.0;  // numbers are 2 apart: squares are not what their level says
    Item first(Box(far, far, far, far)), second(Box(far - 2, far, far - 2, far));
    for (const Item* item : {&first, &second}) tree.Insert(item);
    for (const Item* item : {&first, &second}) EXPECT_TRUE(tree.Remove(item));
}

TEST(QuadTreeTest, NodesCanBeBuiltByHand) {
    QuadTreeNode node(new BoundingBoxND(Box(0, 0, 16, 16)), 4);
    EXPECT_EQ(node.GetType(), SpatialIndexNodeTypes::QuadTreeNode);
    const std::unique_ptr<QuadTreeNode> loose(node.CreateSubnode(2));
    EXPECT_TRUE(loose->GetEnvelope()->IsEqualTo(Box(0, 8, 8, 16), 1e-300) && loose->GetLevel() == 3);
    EXPECT_TRUE(node.IsPrunable()) << "a created node is no child yet";
    EXPECT_TRUE(!node.CreateSubnode(4) && !QuadTreeNode().CreateSubnode(0) && !QuadTreeNode().GetEnvelope());

    Item item(Box(13, 13, 14, 14));
    auto* const deep = new QuadTreeNode(new BoundingBoxND(Box(12, 12, 14, 14)), 1);
    deep->Add(&item);
    node.InsertNode(deep);
    EXPECT_EQ(node.Depth(), 4) << "levels 4 to 1";
    EXPECT_EQ(node.Find(item.box), deep);
    EXPECT_EQ(node.Find(Box(1, 1, 2, 2)), &node) << "nothing is created";
    QuadTreeNode* const created = node.GetNode(Box(1, 1, 2, 2));
    EXPECT_EQ(created->GetLevel(), 0);
    EXPECT_EQ(node.Find(Box(1, 1, 2, 2)), created);
    Item line(Box(5, 4, 5, 6));
    node.Insert(line.box, &line);
    EXPECT_EQ(NodeOf(node, line), node.GetSubnode(0)) << "boxes without width do not create nodes";

    const QuadTreeNode copy(node);
    Collector visitor;
    int count = 10;
    copy.Visit(Box(0, 0, 16, 16), false, visitor, count);
    copy.Visit(PointOf({5.004, 5}), visitor, count);
    EXPECT_EQ(count, 13) << "what was counted before stays";
    std::list<ISpatialIndexData*> found;
    copy.AddAllItemsFromOverlapping(Box(14, 14, 20, 20), found, true);
    EXPECT_EQ(found, std::list<ISpatialIndexData*>{&item});
    EXPECT_TRUE(node.Remove(item.box, &item) && !node.Remove(item.box, &item));
    EXPECT_EQ(node.GetSubnode(3), nullptr) << "the emptied chain goes";

    auto* const straddling = new QuadTreeNode(new BoundingBoxND(Box(4, 4, 12, 12)), 3);
    straddling->Add(&item);
    node.InsertNode(straddling);
    EXPECT_EQ(node.GetItems(), std::vector<ISpatialIndexData*>{&item}) << "a node across the centre gives its items";

    Item stray(Box(100, 100, 101, 101));
    node.GetNode(Box(9, 1, 10, 2))->Add(&stray);
    found.clear();
    node.AddAllItemsFromOverlapping(Box(-1, -1, 17, 17), found, true);
    EXPECT_EQ(found.size(), 2U) << "a window over the whole square does not take what was put there by force";
    QuadTreeNode top(new BoundingBoxND(Box(0, 0, 16, 16)), 2000000000);
    top.InsertNode(new QuadTreeNode(new BoundingBoxND(Box(0, 0, 1, 1)), -2000000000));
    EXPECT_EQ(top.GetLevel(), QuadTreeNode::highestLevel);
    EXPECT_EQ(QuadTreeNode(new BoundingBoxND(Box(0, 0, 1, 1)), -2000000000).CreateSubnode(0), nullptr);
    const QuadTreeNode odd(new BoundingBoxND(Box(0, 0, 16, 16)), 2);  // a level that does not fit the side
    const std::unique_ptr<QuadTreeNode> half(odd.CreateSubnode(0));
    const std::unique_ptr<QuadTreeNode> quarter(half->CreateSubnode(3));
    EXPECT_TRUE(quarter->GetEnvelope()->IsEqualTo(Box(4, 4, 8, 8), 1e-12));
}

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
