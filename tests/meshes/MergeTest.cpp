#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "support/Testing.h"

#include <set>

namespace Kalvio::Math {
namespace {

using Indexes = std::vector<unsigned int>;

double PlanDistance(const Point3D& a, const Point3D& b) { return a.Distance2D(b); }
double SpaceDistance(const Point3D& a, const Point3D& b) { return a.Distance(b); }

// The merge position by position, all against all.
template <class PointType, class Distance>
void MergeSlowly(std::vector<PointType>& vertices, Indexes& indexes, double t, const Distance& distance) {
    std::vector<bool> isTaken(indexes.size(), false);
    for (std::size_t k = 0; k < indexes.size(); ++k) {
        if (isTaken[k]) continue;
        const unsigned int v = indexes[k];
        for (std::size_t j = 0; j < indexes.size(); ++j) {
            if (indexes[j] == v || isTaken[j] || !(distance(vertices[v], vertices[indexes[j]]) <= t)) continue;
            indexes[j] = v;
            isTaken[j] = true;
        }
    }
    Indexes kept;
    for (std::size_t i = 0; i < indexes.size(); i += 3) {
        const unsigned int a = indexes[i], b = indexes[i + 1], c = indexes[i + 2];
        if (distance(vertices[a], vertices[b]) <= t || distance(vertices[b], vertices[c]) <= t ||
            distance(vertices[c], vertices[a]) <= t)
            continue;
        kept.insert(kept.end(), {a, b, c});
    }
    const std::set<unsigned int> used(kept.begin(), kept.end());
    std::map<unsigned int, unsigned int> names;
    std::vector<PointType> left;
    for (const unsigned int index : used) {
        names[index] = static_cast<unsigned int>(left.size());
        left.push_back(vertices[index]);
    }
    for (unsigned int& index : kept) index = names[index];
    vertices = left;
    indexes = kept;
}

template <class Set>
void ExpectSame(const Set& set, const Set& expected) {
    ASSERT_EQ(set.GetIndexes(), expected.GetIndexes());
    ASSERT_EQ(set.GetVerticesSize(), expected.GetVerticesSize());
    for (unsigned int i = 0; i < set.GetVerticesSize(); ++i) {
        ASSERT_THAT(set.GetVertex(i), IsNear(expected.GetVertex(i), 0.0));
    }
}

TEST(MergeTest, EqualsTheComparisonOfAllWithAll) {
    RandomNumbers random(20261);
    for (int trial = 0; trial < 300; ++trial) {
        const double t = std::array{0.0, 1e-10, 1e-3, 1.0, 1e6}[static_cast<std::size_t>(trial) % 5];
        // From clusters narrower than the tolerance to chains of points hardly farther apart than it.
        const double extent = std::max(t, 1e-9) * random(2.0, 12.0);
        const Point2D& origin = surveyOrigins[trial / 5 % 2];
        std::vector<Point3D> space;
        std::vector<Point2D> plan;
        for (int i = 0; i < 90; ++i) {
            space.emplace_back(origin + Vec2D(random(-extent, extent), random(-extent, extent)), random(0.0, 3.0 * t));
            if (i % 4 == 3) space.back() = space[static_cast<std::size_t>(random() % space.size())];
            plan.push_back(space.back().GetPoint2D());
        }
        Indexes indexes;
        for (int i = 0; i < 240; ++i) indexes.push_back(static_cast<unsigned int>(random() % 90));

        for (const bool isPlan : {false, true}) {
            IndexedTriangleSet3D set(space, indexes), slow(space, indexes);
            MergeSlowly(slow.GetVertices(), slow.GetIndexes(), t, isPlan ? PlanDistance : SpaceDistance);
            const auto merge = [&] { return isPlan ? set.CollapsePoints2D(t) : set.CollapsePoints(t); };
            EXPECT_EQ(merge(), slow.GetIndexesSize() != 240 || slow.GetVerticesSize() != 90);
            ExpectSame(set, slow);
            EXPECT_FALSE(merge()) << "a second merge finds nothing";
        }
        IndexedTriangleSet2D flat;
        flat.AppendVertices(plan);
        flat.AppendIndexes(indexes);
        flat.CollapsePoints(t);
        MergeSlowly(plan, indexes, t, [](const Point2D& a, const Point2D& b) { return a.Distance(b); });
        IndexedTriangleSet2D slow;
        slow.AppendVertices(plan);
        slow.AppendIndexes(indexes);
        ExpectSame(flat, slow);
    }
}

TEST(MergeTest, WhatHasBeenTakenTakesNothing) {
    // A, B, C at 0, 0.9 and 1.8 tolerances become A, A, C.
    IndexedTriangleSet3D set({{0, 0, 0}, {0.9, 0, 0}, {1.8, 0, 0}, {0, 9, 0}, {9, 9, 0}}, {0, 3, 4, 1, 4, 3, 2, 3, 4});
    EXPECT_TRUE(set.CollapsePoints(1.0));
    EXPECT_EQ(set.GetIndexes(), (Indexes{0, 2, 3, 0, 3, 2, 1, 2, 3}));
    EXPECT_THAT(set.GetVertex(1), IsNear(Point3D(1.8, 0, 0), 0.0));
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
        EXPECT_TRUE(together.CollapsePoints(2e-3));
        EXPECT_TRUE(IndexedTriangleSet3D::CollapsePoints(sets, 2e-3));
        std::uint64_t triangle = 0;
        Point3D a, b, c, d, e, f;
        for (const IndexedTriangleSet3D& set : sets) {
            for (std::uint64_t i = 0; set.GetTriangleAt(i, a, b, c); ++i) {
                ASSERT_TRUE(together.GetTriangleAt(triangle++, d, e, f));
                EXPECT_THAT(a, IsNear(d, 0.0));
                EXPECT_THAT(b, IsNear(e, 0.0));
                EXPECT_THAT(c, IsNear(f, 0.0));
            }
        }
        EXPECT_EQ(triangle, together.GetTrianglesCount());
        std::vector<IndexedTriangleSet3D*> again = {&sets[0], nullptr, &sets[3], &sets[1], &sets[2], &sets[0]};
        EXPECT_FALSE(IndexedTriangleSet3D::CollapsePoints(again, 2e-3));
    }
}

TEST(MergeTest, PassesOverWhatCannotMerge) {
    const double huge = std::numeric_limits<double>::max();
    std::vector<Point3D> vertices(100000, Point3D(kNan, 0, 0));
    for (std::size_t i = 0; i < vertices.size(); i += 2) vertices[i].SetX(i % 4 == 0 ? kInfinity : -huge);
    vertices.insert(vertices.end(), {{1, 2, 3}, {1, 2, 3}, {huge, huge, 7}, {huge, huge, 7}});
    Indexes indexes(99999);
    for (unsigned int i = 0; i < indexes.size(); ++i) indexes[i] = i;
    indexes.insert(indexes.end(), {100000, 100002, 3, 100001, 100003, 4, 5, 100004, 4294967295U, 7});
    for (const double bad : {-1.0, kNan, kInfinity}) {
        IndexedTriangleSet3D set(vertices, indexes);
        EXPECT_FALSE(set.CollapsePoints(bad));
        EXPECT_EQ(set.GetIndexes(), indexes);
    }
    IndexedTriangleSet3D set(vertices, indexes);
    EXPECT_TRUE(set.CollapsePoints(0.5));
    const Indexes& left = set.GetIndexes();
    ASSERT_EQ(left.size() % 3, 1U) << "what is no whole triangle stays";
    EXPECT_EQ(*(left.end() - 2), 4294967295U);
    EXPECT_EQ(left[left.size() - 10], left[left.size() - 7]);
    EXPECT_EQ(left[left.size() - 9], left[left.size() - 6]);
}

}  // namespace
}  // namespace Kalvio::Math
