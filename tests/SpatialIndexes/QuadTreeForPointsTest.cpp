#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"
#include "kalvio/core/BoundingBox2D.h"
#include "support/Testing.h"

namespace Kalvio::Math::SpatialIndexes {
namespace {

TEST(QuadTreeForPointsTest, NumbersThatAreNoPlaceAreRefused) {
    const BoundingBox2D noBox(Point2D(kNan, 0.0), Point2D(1.0, kInfinity));
    const std::unique_ptr<IQuadTreeForPoints> tree = IQuadTreeForPoints::Create(1, noBox);
    std::vector<Point3D> found;
    EXPECT_EQ(tree->Search(Point2D(0.0, 0.0), 1.0, found), 0U) << "empty";
    EXPECT_FALSE(tree->Insert(Point3D(kNan, 0.0, 0.0)) || tree->Insert(Point3D(0.0, kInfinity, 0.0)));
    EXPECT_TRUE(tree->Insert(Point3D(1.0, 2.0, kNan))) << "a height is only kept";
    EXPECT_TRUE(tree->Insert(Point3D(1.0, 3.0, 0.0)));
    for (const double radius : {-1.0, kNan}) EXPECT_EQ(tree->Search(Point2D(1.0, 2.0), radius, found), 0U);
    EXPECT_EQ(tree->Search(Point2D(kNan, 2.0), 1.0, found), 0U);
    EXPECT_EQ(tree->Search(Point2D(1.0, 2.0), 1.0, found), 2U) << "closed";
}

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
