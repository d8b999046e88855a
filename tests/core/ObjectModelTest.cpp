#include "kalvio/Math.h"
#include "kalvio/core/detail/Lazy.h"

#include "support/Concurrently.h"

#include <gtest/gtest.h>

#include <atomic>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

TEST(ObjectModelTest, EveryClassAnswersItsOwnCode) {
    using enum MathTypes;
    // Codes are stored by callers: they never change.
    const std::pair<MathTypes, std::uint32_t> codes[] = {
        {Math::Angle().GetType(), 0},
        {Math::Point2D().GetType(), 11},
        {Math::Point2DM().GetType(), 12},
        {Math::Point3D().GetType(), 13},
        {Math::PointND().GetType(), 14},
        {Math::Vec2D().GetType(), 15},
        {Math::Vec3D().GetType(), 16},
        {Math::VecND().GetType(), 17},
        {Math::BoundingBox2D().GetType(), 34},
        {Math::BoundingBox3D().GetType(), 35},
        {Math::BoundingBoxND().GetType(), 36},
        {Math::OrientedBoundingBox2D().GetType(), 52},
        {Math::Tolerances(1.0, 1.0).GetType(), 59},
        {Matrix2D, 7},
        {Plane3D, 10},
        {Polygon2D, 19},
        {LineString2D, 23},
        {Clothoid, 25},
        {Polyline3D, 28},
        {Nurbs3D, 32},
        {Box, 33},
        {Sphere, 37},
        {IndexedTriangleSet3D, 40},
        {Polyhedron, 44},
        {Parallelogram3D, 47},
        {IndexedFaceSet3D, 51},
        {TSpline, 56},
        {Spiral2D, 58},
    };
    for (const auto& [type, code] : codes) EXPECT_EQ(static_cast<std::uint32_t>(type), code);
}

TEST(ObjectModelTest, ALazyValueIsBuiltOnceByManyReaders) {
    for (int round = 0; round < 50; ++round) {
        const detail::Lazy<std::vector<int>> lazy;
        std::atomic<int> builds{0};
        std::vector<const std::vector<int>*> seen(4, nullptr);
        Concurrently(4, [&](unsigned int i) {
            seen[i] = &lazy.Get([&] {
                ++builds;
                return std::vector<int>(100, 7);
            });
            EXPECT_EQ(seen[i]->back(), 7);
        });
        EXPECT_EQ(builds, 1);
        EXPECT_EQ(seen, std::vector(4, seen[0]));
    }
}

TEST(ObjectModelTest, ALazyValueIsRebuiltAfterAChangeAndInACopy) {
    detail::Lazy<int> lazy;
    EXPECT_EQ(lazy.Get([] { return 1; }), 1);
    EXPECT_EQ(lazy.Get([] { return 2; }), 1) << "kept";
    const detail::Lazy<int> copy(lazy);
    EXPECT_EQ(copy.Get([] { return 3; }), 3) << "from its own owner";
    lazy.Invalidate();
    EXPECT_EQ(lazy.Get([] { return 4; }), 4);
    lazy = copy;
    EXPECT_EQ(lazy.Get([] { return 5; }), 5);
}

}  // namespace
}  // namespace Kalvio::Math
