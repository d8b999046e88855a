#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

// The merge position by position, all against all.
void MergeSlowly(IndexedTriangleSet3D& set, double t, bool isPlan) {
    Indexes& indexes = set.GetIndexes();
    std::vector<bool> isTaken(indexes.size(), false);
    for (std::size_t k = 0; k < indexes.size(); ++k) {
        if (isTaken[k]) continue;
        const Point3D& p = set.GetVertex(indexes[k]);
        for (std::size_t j = 0; j < indexes.size(); ++j) {
            const Point3D& q = set.GetVertex(indexes[j]);
            if (&q == &p || isTaken[j] || !((isPlan ? p.Distance2D(q) : p.Distance(q)) <= t)) continue;
            indexes[j] = indexes[k];
            isTaken[j] = true;
        }
    }
    set.RemoveLineTriangles(isPlan ? 0.0 : t, true);
}

TEST(MergeTest, EqualsTheComparisonOfAllWithAll) {
    RandomNumbers random(20261);
    for (int trial = 0; trial < 300; ++trial) {
        // 1e-9: hardly more than doubles are apart at survey coordinates.
        const double t = std::array{0.0, 1e-10, 1e-9, 1e-3, 1.0, 1e6}[static_cast<std::size_t>(trial) % 6];
        // From clusters narrower than the tolerance to chains of points hardly farther apart than it.
        const double extent = std::max(t, 1e-9) * random(2.0, 12.0);
        const Point2D& origin = surveyOrigins[trial / 6 % 2];
        IndexedTriangleSet3D original;
        IndexedTriangleSet2D flat;
        for (unsigned int i = 0; i < 90; ++i) {
            const Point2D plan = origin + Vec2D(random(-extent, extent), random(-extent, extent));
            original.AppendVertex(i % 4 < 3 ? Point3D(plan, random(0.0, 3.0 * t)) : original.GetVertex(i / 2));
            flat.AppendVertices({original.GetVertex(i).GetPoint2D()});
        }
        for (int i = 0; i < 240; ++i) original.AppendIndexes({static_cast<unsigned int>(random() % 90)});
        flat.AppendIndexes(original.GetIndexes());
        flat.CollapsePoints(t);

        IndexedTriangleSet3D set, slow, joined;
        for (const bool isPlan : {true, false}) {
            set = slow = original;
            MergeSlowly(slow, t, isPlan);
            const auto merge = [&] { return isPlan ? set.CollapsePoints2D(t) : set.CollapsePoints(t); };
            EXPECT_EQ(merge(), slow.GetIndexesSize() != 240 || slow.GetVerticesSize() != 90);
            EXPECT_TRUE(set.IsEqualTo(slow, 1e-300)) << "exactly";
            EXPECT_FALSE(merge()) << "a second merge finds nothing";
            EXPECT_TRUE(!isPlan || flat.GetIndexes() == set.GetIndexes());
        }
        // Four sets, a quarter of the triangles each, merge like one.
        std::vector<IndexedTriangleSet3D> sets;
        for (auto first = original.GetIndexes().begin(); first != original.GetIndexes().end(); first += 60) {
            sets.emplace_back(original.GetVertices(), Indexes(first, first + 60));
        }
        EXPECT_TRUE(IndexedTriangleSet3D::CollapsePoints(sets, t)) << "unused vertices at least";
        for (const IndexedTriangleSet3D& part : sets) joined.Merge(part, false, 0.0);
        ASSERT_EQ(joined.size(), set.size());
        for (std::size_t i = 0; i < set.size(); ++i) EXPECT_TRUE(joined[i].IsEqualTo(set[i], 1e-300)) << i;
        std::vector<IndexedTriangleSet3D*> again = {&sets[0], nullptr, &sets[3], &sets[1], &sets[2], &sets[0]};
        EXPECT_FALSE(IndexedTriangleSet3D::CollapsePoints(again, t));
        sets[1] = sets[0];
        sets[1].Translate(Vec3D(1e-9, 0, 0));
        EXPECT_TRUE(t != 1.0 || (IndexedTriangleSet3D::CollapsePoints(sets, t) && sets[1].IsEqualTo(sets[0], 1e-300)));
    }
}

TEST(MergeTest, CostsNoMoreNearTheSpacingOfTheVertices) {
    // A cubic lattice in random order; half a minute, were all places within eight tolerances compared with each
    // vertex.
    constexpr unsigned int n = 64;
    RandomNumbers random(20266);
    IndexedTriangleSet3D set;
    Indexes order(n * n * n);
    for (unsigned int i = 0; i < order.size(); ++i) {
        set.AppendVertex({385000.0 + 1.1 * (i % n), 6672000.0 + 1.1 * (i / n % n), 1.1 * (i / n / n)});
        order[i] = i;
        std::swap(order[i], order[random() % (i + 1)]);
    }
    set.AppendIndexes(order);
    EXPECT_TRUE(!set.CollapsePoints(1.05) && set.CollapsePoints(1.15));
}

TEST(MergeTest, PassesOverWhatCannotMerge) {
    const double huge = std::numeric_limits<double>::max();
    IndexedTriangleSet3D set;
    for (unsigned int i = 0; i < 99999; ++i) {
        set.AppendVertex({i % 2 == 0 ? kNan : i % 4 == 1 ? kInfinity : -huge * 0.5 - i * 1e295, 0, 0});
        set.AppendIndexes({i});
    }
    set.AppendVertices({{1, 2, 3}, {1, 2, 3}, {huge, huge, 7}, {huge, huge, 7}});
    set.AppendIndexes({99999, 100001, 3, 100000, 100002, 4, 5, 100003, 4294967295U, 7});
    const IndexedTriangleSet3D before = set;
    for (const double bad : {-1.0, kNan, kInfinity}) EXPECT_FALSE(set.CollapsePoints(bad));
    EXPECT_EQ(set.GetIndexes(), before.GetIndexes());
    EXPECT_TRUE(set.CollapsePoints(0.5)) << "two of the last four vertices have gone";
    EXPECT_EQ(set.GetVerticesSize(), before.GetVerticesSize() - 2);
    EXPECT_EQ(set.GetIndexesSize(), before.GetIndexesSize()) << "what is no triangle stays";
    EXPECT_EQ(set.GetIndexes()[100000], set.GetIndexes()[100003]);
    IndexedTriangleSet3D points({{}, {}, {1, 0, 0}}, {0, 1});
    EXPECT_FALSE(points.CollapsePoints(1.0) || points.CollapsePoints2D(1.0)) << "no triangle";
    EXPECT_TRUE(points.IsEqualTo(IndexedTriangleSet3D({{}, {}, {1, 0, 0}}, {0, 1}), 1e-300));
}

}  // namespace
}  // namespace Kalvio::Math
