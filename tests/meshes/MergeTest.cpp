#include "kalvio/meshes/IndexedTriangleSet2D.h"
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

        for (const bool isPlan : {false, true}) {
            IndexedTriangleSet3D set = original, slow = original;
            MergeSlowly(slow, t, isPlan);
            const auto merge = [&] { return isPlan ? set.CollapsePoints2D(t) : set.CollapsePoints(t); };
            EXPECT_EQ(merge(), slow.GetIndexesSize() != 240 || slow.GetVerticesSize() != 90);
            EXPECT_TRUE(set.IsEqualTo(slow, 1e-300)) << "exactly";
            EXPECT_FALSE(merge()) << "a second merge finds nothing";
            EXPECT_TRUE(!isPlan || flat.GetIndexes() == set.GetIndexes());
        }
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

TEST(MergeTest, SmallSetsWorkedOutByHand) {
    // A, B, C at 0, 0.9 and 1.8 tolerances become A, A, C: what has been taken takes nothing.
    IndexedTriangleSet3D set({{0, 0, 0}, {0.9, 0, 0}, {1.8, 0, 0}, {0, 9, 0}, {9, 9, 0}}, {0, 3, 4, 1, 4, 3, 2, 3, 4});
    EXPECT_TRUE(set.CollapsePoints(1.0));
    EXPECT_EQ(set.GetIndexes(), (Indexes{0, 2, 3, 0, 3, 2, 1, 2, 3}));
    EXPECT_THAT(set.GetVertex(1), IsNear(Point3D(1.8, 0, 0), 0.0));
    // Without a triangle nothing merges and nothing goes.
    IndexedTriangleSet3D points({{}, {}, {1, 0, 0}}, {0, 1});
    EXPECT_FALSE(points.CollapsePoints(1.0) || points.CollapsePoints2D(1.0));
    EXPECT_TRUE(points.IsEqualTo(IndexedTriangleSet3D({{}, {}, {1, 0, 0}}, {0, 1}), 1e-300));
}

TEST(MergeTest, SeveralSetsMergeLikeOne) {
    RandomNumbers random(20262);
    for (const Point2D& origin : surveyOrigins) {
        std::vector<IndexedTriangleSet3D> sets(4);
        IndexedTriangleSet3D together;
        for (IndexedTriangleSet3D& set : sets) {
            for (int i = 0; i < 60; ++i) {
                set.AppendVertex({origin + Vec2D(random(0.0, 0.02), random(0.0, 0.02)), random(0.0, 0.02)});
                set.AppendIndexes({static_cast<unsigned int>(random() % (set.GetVerticesSize()))});
            }
            together.Merge(set, false, 0.0);
        }
        EXPECT_TRUE(together.CollapsePoints(2e-3) && IndexedTriangleSet3D::CollapsePoints(sets, 2e-3));
        IndexedTriangleSet3D joined;
        for (const IndexedTriangleSet3D& set : sets) joined.Merge(set, false, 0.0);
        ASSERT_EQ(joined.GetIndexesSize(), together.GetIndexesSize());
        for (std::size_t i = 0; i < joined.GetIndexesSize(); ++i) {
            const Point3D& expected = together.GetVertex(together.GetIndexes()[i]);
            EXPECT_THAT(joined.GetVertex(joined.GetIndexes()[i]), IsNear(expected, 0.0));
        }
        std::vector<IndexedTriangleSet3D*> again = {&sets[0], nullptr, &sets[3], &sets[1], &sets[2], &sets[0]};
        EXPECT_FALSE(IndexedTriangleSet3D::CollapsePoints(again, 2e-3));
        sets[1] = sets[0];
        sets[1].Translate(Vec3D(1e-9, 0, 0));
        EXPECT_TRUE(IndexedTriangleSet3D::CollapsePoints(sets, 2e-3) && sets[1].IsEqualTo(sets[0], 1e-300)) << "moved";
    }
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
}

}  // namespace
}  // namespace Kalvio::Math
