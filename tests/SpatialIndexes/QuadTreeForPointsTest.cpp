#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"
#include "kalvio/core/BoundingBox2D.h"
#include "support/Testing.h"

#include <functional>

namespace Kalvio::Math::SpatialIndexes {
namespace {

TEST(QuadTreeForPointsTest, CirclesFindWhatAScanFindsHoweverThePointsLie) {
    RandomNumbers random(5);
    const std::pair<const char*, std::function<Vec2D(int)>> rows[] = {
        {"even", [&](int) { return Vec2D(random(-100, 100), random(-100, 100)); }},
        {"a grid: many distances are exactly the radius", [](int i) { return Vec2D(i % 50, i / 50); }},
        {"sorted along a line", [](int i) { return Vec2D(0.05 * i, 3.0); }},
        {"all at one place", [](int) { return Vec2D(1.0, 2.0); }},
        {"two places", [](int i) { return Vec2D(i % 2, 0.0); }},
        {"outside the box", [&](int) { return Vec2D(random(400, 600), random(-100, 100)); }},
        {"ever closer to a corner", [](int i) { return Vec2D(100.0 - std::ldexp(1.0, -i % 60), 100.0); }},
    };
    for (const Point2D& origin : surveyOrigins) {
        const BoundingBox2D box(origin + Vec2D(-100.0, -100.0), origin + Vec2D(100.0, 100.0));
        for (const auto& [why, at] : rows) {
            for (const unsigned int capacity : {0U, 1U, 100U}) {
                SCOPED_TRACE(testing::Message() << why << ", capacity " << capacity << " at " << origin.GetX());
                const std::unique_ptr<IQuadTreeForPoints> tree = IQuadTreeForPoints::Create(capacity, box);
                std::vector<Point3D> points;
                for (int i = 0; i < 2000; ++i) {
                    points.emplace_back(origin + at(i), i);
                    ASSERT_TRUE(tree->Insert(points.back()));
                }
                EXPECT_EQ(tree->GetNrOfPoints(), points.size());
                for (const double radius : {0.0, 0.25, 5.0, 1e9}) {
                    const Point2D center = points[7].GetPoint2D() + Vec2D(0.25, 0.0) * radius;
                    std::vector<Point3D> found(1, Point3D(0, 0, -1)), expected = found;  // a search appends
                    for (const Point3D& point : points) {
                        if (center.Distance(point.GetPoint2D()) <= radius) expected.push_back(point);
                    }
                    EXPECT_EQ(tree->Search(center, radius, found), expected.size() - 1);
                    std::ranges::sort(found, {}, &Point3D::GetZ);
                    EXPECT_THAT(found, testing::Pointwise(AreNear(0.0), expected));
                }
            }
        }
    }
}

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
