#include "SpatialIndexes/Model.h"
#include "support/Concurrently.h"
#include "support/Testing.h"

#include <functional>

namespace Kalvio::Math::SpatialIndexes {
namespace {

/// Many tame ones, until the next call.
Bytes RandomBytes(std::uint64_t seed) {
    static std::vector<std::uint8_t> data;
    data.assign(1, 0);
    RandomNumbers random(seed);
    while (data.size() < 1000000) data.push_back(static_cast<std::uint8_t>(random()));
    return {data.data(), data.size()};
}

template <class Tree>
class SpatialIndexTest : public testing::Test {};
using Trees = testing::Types<RTree, RStarTree, QuadTree>;
TYPED_TEST_SUITE(SpatialIndexTest, Trees);

TEST(SpatialIndexDimensionTest, ItemsMoveToANewDimensionAndQueriesNeedItsAxes) {
    Item flat(Box(0, 0, 1, 1)), high(BoundingBoxND(PointOf({0, 0, 5}), PointOf({1, 1, 6})));
    const BoundingBoxND atHeight(PointOf({0, 0, 4}), PointOf({2, 2, 5}));
    const auto check = [&](ISpatialIndex& tree) {
        tree.Insert(&flat);
        tree.Insert(&high);
        EXPECT_EQ(tree.GetDimension(), 2);
        EXPECT_EQ(Search(tree, atHeight, true).size(), 2U) << "the third axis of the window is ignored";
        for (const int refused : {0, -1, 1025}) tree.SetDimension(refused);
        tree.SetDimension(3);
        EXPECT_EQ(tree.GetDimension(), 3);
        EXPECT_EQ(Search(tree, atHeight, true), Found{&high}) << "the flat item lies at height 0";
        EXPECT_TRUE(Search(tree, Box(0, 0, 2, 2), true).empty() && Search(tree, PointOf({0, 0})).empty())
            << "the window has too few axes";
        EXPECT_TRUE(tree.Remove(&flat));
    };
    RTree small;
    RStarTree large(false);
    QuadTree plane;
    check(small);
    check(large);
    plane.SetDimension(3);
    EXPECT_EQ(plane.GetDimension(), 2);
}

TYPED_TEST(SpatialIndexTest, TouchingCountsAndPointsReachFiveThousandths) {
    for (const Point2D& origin : surveyOrigins) {
        SCOPED_TRACE(testing::Message() << "origin " << origin.GetX());
        const double x = origin.GetX() + 10.0, y = origin.GetY() + 10.0;
        TypeParam tree;
        Item item(Box(x, y, x + 4, y + 4)), other(Box(x + 100, y + 100, x + 101, y + 101)), stranger = item;
        EXPECT_TRUE(tree.Build());
        tree.Insert(&item);
        tree.Insert(&other);
        const std::tuple<const char*, BoundingBoxND, bool, bool> rows[] = {
            {"touches at a corner", Box(x - 8, y - 8, x, y), true, true},
            {"touching is not inside", Box(x + 4, y, x + 8, y + 4), false, false},
            {"the box itself", Box(x, y, x + 4, y + 4), false, true},
            {"no axis", BoundingBoxND(), true, false},
        };
        for (const auto& [why, window, overlap, isFound] : rows) {
            EXPECT_EQ(Search(tree, window, overlap), isFound ? Found{&item} : Found{}) << why;
        }
        EXPECT_EQ(Search(tree, PointOf({x + 4.004, y - 0.004})), Found{&item});
        EXPECT_EQ(Search(tree, PointOf({x + 4.006, y})), Found{});
        EXPECT_EQ(Search(tree, PointOf({kNan, y})), Found{});
        std::vector<ISpatialIndexData*> nearest;
        for (const double within : {kNan, -1.0, 2.75}) {
            EXPECT_EQ(tree.SearchNearest(PointOf({x + 7, y}), 9, within, nearest), 0U) << within;
        }
        EXPECT_EQ(tree.SearchNearest(PointOf({kNan, y}), 9, kInfinity, nearest), 0U);
        EXPECT_EQ(tree.SearchNearest(PointOf({x}), 9, kInfinity, nearest), 0U) << "an axis short";
        EXPECT_EQ(tree.SearchNearest(PointOf({x, y}), 0, kInfinity, nearest), 0U);
        EXPECT_EQ(tree.SearchNearest(PointOf({x + 7, y + 8}), 9, 5.0, nearest), 1U) << "3 and 4: closed";
        EXPECT_EQ(TypeParam().SearchNearest(Box(x, y, x, y), 9, kInfinity, nearest), 0U) << "empty";
        EXPECT_EQ(nearest, std::vector<ISpatialIndexData*>{&item});

        std::list<ISpatialIndexData*> list(3, &other);
        tree.Insert(&item);  // again
        EXPECT_EQ(tree.Search(PointOf({x, y}), list), 5U) << "what was in the list counts";
        EXPECT_EQ(tree.Search(Box(x, y, x, y), true, list), 7U);
        EXPECT_EQ(list.front(), &other);
        EXPECT_FALSE(tree.Remove(&stranger) || tree.Insert(nullptr) || tree.Remove(nullptr));
    }
}

TYPED_TEST(SpatialIndexTest, ManyItemsAtOnceMakeALegalTree) {
    for (const int n : {0, 1, 8, 9, 64, 65, 95, 96, 97, 2047, 2048, 3100, 4096, 4097, 5000}) {
        SCOPED_TRACE(n);
        Model<TypeParam> model(RandomBytes(3), 2);
        model.InsertMany(n);
        struct NoBox final : Item {
            using Item::Item;
            void GetEnvelope(BoundingBoxND& envelope) const override {
                if (answers-- == 0) throw 0;
                Item::GetEnvelope(envelope);
            }
            mutable int answers = 0;
        } const noBox(Box(0, 0, 1, 1));
        const Item small(Box(0, 0, 1e-300, 1));
        EXPECT_ANY_THROW(model.tree.Insert(std::vector<const ISpatialIndexData*>{&small, &noBox}));
        if constexpr (!std::is_same_v<TypeParam, QuadTree>) {
            model.CheckStructureOf(model.tree);
            const BoundingBoxND all = Box(-kInfinity, -kInfinity, kInfinity, kInfinity);
            const std::size_t count = Search(model.tree, all, true).size();
            noBox.answers = 1;
            EXPECT_TRUE(model.tree.Insert(&noBox));
            EXPECT_ANY_THROW(model.tree.SetDimension(3));
            EXPECT_EQ(Search(model.tree, all, true).size(), count + 1);
        } else {
            QuadTree oneByOne;
            for (const Item* item : model.inside) oneByOne.Insert(item);
            std::vector<ISpatialIndexData*> together, expected;
            EXPECT_EQ(*model.tree.GetRoot()->AddAllItems(&together), *oneByOne.GetRoot()->AddAllItems(&expected));
            EXPECT_EQ(model.tree.GetRoot()->Depth(), oneByOne.GetRoot()->Depth());
            EXPECT_EQ(model.tree.GetMinimumExtent(), oneByOne.GetMinimumExtent());
        }
    }
}

TEST(RTreeTest, TheNinthInsertionSplitsTheRoot) {
    std::deque<Item> items;
    RTree tree;
    for (unsigned int i = 0; i < 9; ++i) {
        tree.Insert(&items.emplace_back(Box(i, 0, i + 0.5, 1)));
        EXPECT_EQ(tree.GetRoot()->GetNrOfBranches(), i < 8 ? i + 1 : 2);
    }
}

// Rows of a grid in one plane of the space of an index, and one item far away.
TEST(PackingTest, NeighboursShareNodesWhateverLiesFarAway) {
    for (const unsigned int axis : {1U, 3U}) {
        const auto at = [axis](double x, double y) {
            return PointOf(axis == 1 ? std::vector{x, y} : std::vector{x, 7.0, 7.0, y});
        };
        std::deque<Item> items;
        std::vector<const ISpatialIndexData*> all;
        const auto add = [&](const PointND& p) { all.push_back(&items.emplace_back(BoundingBoxND(p, p))); };
        for (int i = 0; i < 4096; ++i) add(at(i * 2731 % 4096 % 64, i * 2731 % 4096 / 64));  // neither row by row
        add(at(1e30, 1e30));
        RStarTree tree;
        tree.SetDimension(axis + 1);
        tree.Insert(all);
        const BoundingBoxND window(at(31, 31), at(32, 32));
        const std::function<int(const RStarTreeNode&)> nodesAt = [&](const RStarTreeNode& node) {
            if (!node.GetBox().Intersects(window)) return 0;
            int nodes = node.HoldsLeaves() ? 1 : 0;
            for (unsigned int i = 0; !node.HoldsLeaves() && i < node.GetNrOfEntries(); ++i) {
                nodes += nodesAt(*node.GetChild(i));
            }
            return nodes;
        };
        EXPECT_LE(nodesAt(*tree.GetRoot()), 9) << "of 65";
    }
}

TYPED_TEST(SpatialIndexTest, ACopyLivesOnItsOwn) {
    Model<TypeParam> filled(RandomBytes(7), 2);
    for (int i = 0; i < 300; ++i) filled.Insert(false);
    TypeParam copy(filled.tree), assigned;
    assigned.Insert(filled.inside[0]);
    assigned = filled.tree;
    const BoundingBoxND everywhere = Box(-kInfinity, -kInfinity, kInfinity, kInfinity);
    const Found all = Search(filled.tree, everywhere, true);
    for (const Item* item : filled.inside) EXPECT_TRUE(filled.tree.Remove(item));
    EXPECT_TRUE(Search(filled.tree, everywhere, true).empty());
    EXPECT_EQ(Search(copy, everywhere, true), all);
    EXPECT_EQ(Search(assigned, everywhere, true), all);
    filled.CheckStructureOf(copy);

    static_assert(std::is_nothrow_move_constructible_v<TypeParam> && std::is_nothrow_move_assignable_v<TypeParam>);
    TypeParam moved(std::move(copy)), again;
    const auto* const root = moved.GetRoot();
    again = std::move(moved);
    EXPECT_EQ(again.GetRoot(), root) << "taken over, not copied";
    EXPECT_EQ(Search(again, everywhere, true), all);
    for (TypeParam* left : {&copy, &moved}) {
        EXPECT_TRUE(Search(TypeParam(*left), everywhere, true).empty() && left->GetDimension() == 2);
        EXPECT_TRUE(!left->Remove(filled.inside[0]) && left->Insert(filled.inside[0]));
        EXPECT_EQ(Search(*left, everywhere, true), Found{filled.inside[0]});
    }
}

TYPED_TEST(SpatialIndexTest, ManyThreadsSearchOneTree) {
    Model<TypeParam> filled(RandomBytes(11), 2);
    for (int i = 0; i < 1000; ++i) filled.Insert(false);
    const BoundingBoxND window = Box(-50, -50, 120, 120);
    const Found alone = Search(filled.tree, window, true);
    std::vector<Found> together(4);
    Concurrently(4, [&](unsigned int i) {
        together[i] = Search(filled.tree, window, true);
        (void)Search(filled.tree, PointOf({12.5, 12.5}));
        filled.CheckStructureOf(filled.tree);  // quadtrees make squares on demand
    });
    for (const Found& found : together) EXPECT_EQ(found, alone);
}

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
