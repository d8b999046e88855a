#include "kalvio/Math.h"
#include "kalvio/core/detail/Lazy.h"
#include "support/Concurrently.h"
#include "support/Testing.h"

#include <atomic>

namespace Kalvio::Math {
namespace {

// Codes are stored by callers: they never change.
TEST(ObjectModelTest, EveryClassAnswersItsOwnCode) {
    const auto code = [](const IMathObject& object) { return static_cast<int>(object.GetType()); };
    const BoundingBox2D box;
    EXPECT_THAT(std::vector({code(Angle()), code(Point2D()), code(Point2DM()), code(Point3D()), code(PointND()),
                             code(Vec2D()), code(Vec3D()), code(VecND()), code(box), code(BoundingBox3D()),
                             code(BoundingBoxND()), code(OrientedBoundingBox2D(box)), code(kTolerances)}),
                testing::ElementsAre(0, 11, 12, 13, 14, 15, 16, 17, 34, 35, 36, 52, 59));
    using enum MathTypes;
    const std::pair<MathTypes, int> codes[] = {{Matrix2D, 7},          {Plane3D, 10},
                                               {Polygon2D, 19},        {LineString2D, 23},
                                               {Clothoid, 25},         {Polyline3D, 28},
                                               {Nurbs3D, 32},          {Box, 33},
                                               {Sphere, 37},           {IndexedTriangleSet3D, 40},
                                               {Polyhedron, 44},       {Parallelogram3D, 47},
                                               {IndexedFaceSet3D, 51}, {TSpline, 56},
                                               {Spiral2D, 58}};
    for (const auto& [type, expected] : codes) EXPECT_EQ(static_cast<int>(type), expected);
}

TEST(ObjectModelTest, ALazyValueIsBuiltOnceByManyReadersAndAgainAfterAChangeAndInACopy) {
    for (int round = 0; round < 50; ++round) {
        const detail::Lazy<std::vector<int>> lazy;
        std::atomic<int> builds{0};
        std::vector<const std::vector<int>*> seen(4, nullptr);
        Concurrently(4, [&](unsigned int i) {
            seen[i] = &lazy.Get([&] { return std::vector<int>(100, ++builds); });
            EXPECT_EQ(seen[i]->back(), 1);
        });
        EXPECT_EQ(seen, std::vector(4, seen[0]));
    }
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
