#include "SpatialIndexes/Items.h"
#include "SpatialIndexes/Structure.h"
#include "support/Concurrently.h"

#include <deque>
#include <functional>

namespace Kalvio::Math::SpatialIndexes {
namespace {

/// A tree and a plain list that are asked the same.
template <class Tree>
class Model {
public:
    Model(std::uint64_t seed, unsigned int axes) : random(seed), dimension(axes) {
        tree.SetDimension(static_cast<int>(axes));
    }

    void Insert(bool again) {
        if (again && removed.empty()) return;
        ASSERT_TRUE(tree.Insert(Take(again)));
    }
    /// Some come back, the others are new.
    void InsertMany(int n) {
        std::vector<const ISpatialIndexData*> many;
        for (; n > 0; --n) many.push_back(Take(n % 3 == 0 && !removed.empty()));
        ASSERT_TRUE(tree.Insert(many));
        many.push_back(nullptr);
        ASSERT_FALSE(tree.Insert(many));
    }
    void Remove() {
        if (inside.empty()) return;
        const auto i = static_cast<std::size_t>(Integer(0, static_cast<int>(inside.size()) - 1));
        Item* const item = inside[i];
        inside[i] = inside.back();
        inside.pop_back();
        ASSERT_TRUE(tree.Remove(item));
        ASSERT_FALSE(tree.Remove(item)) << "it is no longer there";
        removed.push_back(item);
    }
    void CheckSearches() {
        const BoundingBoxND window = Integer(0, 1) == 0 ? Next() : Next() + Next();
        Check([&](const BoundingBoxND& box) { return box.Intersects(window); }, window, true);
        Check([&](const BoundingBoxND& box) { return window.Contains(box); }, window, false);
        PointND point = Next().GetMinPoint();
        const double steps[]{0.0, 0.004, 0.006, -0.004};
        point.SetCoordinate(0, point[0] + steps[Integer(0, 3)]);
        Check([&](const BoundingBoxND& box) { return box.IsPointInside(point, 0.005); }, point);
        if (Integer(0, 3) > 0) return;  // costs more
        const std::uint64_t most = std::uint64_t{1} << Integer(0, 8);
        const double reaches[]{kInfinity, 40.0, 0.5, 0.0};
        const double within = reaches[Integer(0, 3)];
        CheckNearest(point, BoundingBoxND(point, point), most, within);
        CheckNearest(window, window, most, within);
    }
    void CheckStructureOf(const Tree& of) const {
        const auto nrOfUnplaced = std::ranges::count_if(inside, [](const Item* i) { return HasNaN(i->box); });
        CheckStructure(of, static_cast<std::size_t>(nrOfUnplaced), inside.size());
    }

    int Integer(int first, int last) { return std::uniform_int_distribution<int>(first, last)(random); }

    Tree tree;
    std::vector<Item*> inside;

private:
    /// A box of any kind that may arrive, many of them equal or touching.
    BoundingBoxND Next() {
        PointND low(dimension), high(dimension);
        const int kind = Integer(0, 24);
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            const double place = Integer(-400, 400) * 0.5, fine = random(-200.0, 200.0);
            double from = place, to = place + Integer(0, 3);  // degenerate points and lines among them, touching others
            if (kind == 0) from = to = 12.5;                  // always the same point
            if (kind == 1) from = -(to = Integer(0, 5));      // on the axes
            if (kind == 2) from = -1e300, to = fine * 1e299;
            if (kind == 3) to = std::nextafter(from = fine + 385000.0, kInfinity);  // as small as can be
            if (kind == 4) to = (from = 1e-300 * Integer(0, 9)) * 2.0;
            if (kind == 5) from = 0.3 * kLargest, to = (0.5 + 0.001 * Integer(0, 9)) * kLargest;
            if (kind == 6 && axis == 0) to = kInfinity;
            if (kind == 7 && axis == 0) (Integer(0, 1) == 0 ? from : to) = kNan;
            if (kind == 8) std::swap(from, to);
            if (kind == 9) from = to = 1e17 + fine;  // half a minimum extent is lost beside it
            if (kind == 10) to = std::nextafter(from = Integer(6672000, 6672002), Integer(0, 1) * 1e7);
            if (kind > 16) to = (from = fine) + 0.01 * Integer(0, 99);
            low.SetCoordinate(axis, from);
            high.SetCoordinate(axis, to);
        }
        return {low, high};
    }
    Item* Take(bool again) {
        inside.push_back(again ? removed.back() : &items.emplace_back(Next()));
        if (again) removed.pop_back();
        return inside.back();
    }
    void Check(const auto& matches, const auto&... where) const {
        Found expected, called;
        for (const Item* item : inside) {
            if (matches(item->box)) expected.push_back(item);
        }
        EXPECT_EQ(Search(tree, where...), Sorted(expected));
        const int count = static_cast<int>(expected.size());
        Collector visitor;
        EXPECT_EQ(tree.SearchAndVisit(where..., visitor), count);
        EXPECT_EQ(Sorted(visitor.found), Sorted(expected));
        EXPECT_EQ(tree.Search(where..., [&called](ISpatialIndexData* item) { called.push_back(item); }), count);
        EXPECT_EQ(called, visitor.found);
    }

    void CheckNearest(const auto& where, const BoundingBoxND& from, std::uint64_t most, double within) const {
        std::vector<std::tuple<double, std::vector<double>, std::vector<double>, const ISpatialIndexData*>> expected;
        for (const Item* item : inside) {
            double sum = 0.0;
            for (unsigned int axis = 0; axis < from.GetDimension(); ++axis) {
                const double below = item->box.GetMin(axis) - from.GetMax(axis);
                const double above = from.GetMin(axis) - item->box.GetMax(axis);
                const double gap = below > 0.0 || above > 0.0 ? std::fmax(below, above) : 0.0;
                sum += gap * gap;
            }
            if (HasNaN(item->box) || HasNaN(from) || !std::isfinite(sum) || std::sqrt(sum) > within) continue;
            const PointND low = item->box.GetMinPoint(), high = item->box.GetMaxPoint();
            expected.emplace_back(sum, low.GetCoordinates(), high.GetCoordinates(), item);
        }
        std::sort(expected.begin(), expected.end());
        expected.resize(std::min<std::size_t>(expected.size(), most));
        std::vector<ISpatialIndexData*> found(1, nullptr);  // a search appends
        EXPECT_EQ(tree.SearchNearest(where, most, within, found), expected.size());
        ASSERT_EQ(found.size(), expected.size() + 1);
        for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(found[i + 1], std::get<3>(expected[i])) << i;
    }

    RandomNumbers random;
    unsigned int dimension;
    std::deque<Item> items;
    std::vector<Item*> removed;
};

template <class Tree>
void RunModel(unsigned int dimension, int nrOfSteps) {
    Model<Tree> model(20240601, dimension);
    // It grows, shrinks to nothing, and grows again.
    for (const int chanceOfInsertion : {80, 25, 70}) {
        for (int step = 0; step < nrOfSteps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(testing::Message() << "chance " << chanceOfInsertion << ", step " << step);
            const bool insert = model.Integer(0, 99) < chanceOfInsertion;
            if (insert) model.Insert(step % 3 == 0);
            if (!insert) model.Remove();
            if (step % 1000 == 0) model.InsertMany(model.Integer(0, step == 0 ? 600 : 200));
            if (step % 5 == 0) model.CheckSearches();
            if (step % 100 == 0) model.CheckStructureOf(model.tree);
        }
    }
    while (!model.inside.empty() && !testing::Test::HasFailure()) model.Remove();
    model.CheckStructureOf(model.tree);
    EXPECT_TRUE(Search(model.tree, Box(-kInfinity, -kInfinity, kInfinity, kInfinity), true).empty());
}

template <class Tree>
class SpatialIndexTest : public testing::Test {};
using Trees = testing::Types<RTree, RStarTree, QuadTree>;
TYPED_TEST_SUITE(SpatialIndexTest, Trees);

TYPED_TEST(SpatialIndexTest, AnswersEqualALinearScanThroughAnyHistory) { RunModel<TypeParam>(2, 5000); }

TEST(SpatialIndexDimensionTest, AnswersEqualALinearScanInOtherDimensions) {
    for (const unsigned int dimension : {1U, 3U, 5U}) {
        SCOPED_TRACE(dimension);
        RunModel<RTree>(dimension, 1000);
        RunModel<RStarTree>(dimension, 1500);
    }
}

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
        Model<TypeParam> model(3, 2);
        model.InsertMany(n);
        struct NoBox final : Item {
            using Item::Item;
            void GetEnvelope(BoundingBoxND&) const override { throw 0; }
        } const noBox(Box(0, 0, 1, 1));
        const Item small(Box(0, 0, 1e-300, 1));
        EXPECT_ANY_THROW(model.tree.Insert(std::vector<const ISpatialIndexData*>{&small, &noBox}));
        if constexpr (!std::is_same_v<TypeParam, QuadTree>) {
            model.CheckStructureOf(model.tree);
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
    Model<TypeParam> filled(7, 2);
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
    Model<TypeParam> filled(11, 2);
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
