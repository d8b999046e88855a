#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point3D.h"

#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>

namespace Kalvio::Math::SpatialIndexes {
namespace {

std::vector<double> SortedHeights(const std::vector<Point3D>& points) {
    std::vector<double> heights;
    for (const Point3D& point : points) heights.push_back(point.GetZ());
    std::sort(heights.begin(), heights.end());
    return heights;
}

TEST(QuadTreeForPointsTest, CirclesFindWhatAScanFindsHoweverThePointsLie) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 5));
    std::uniform_real_distribution<double> place(-100.0, 100.0);
    struct Row {
        const char* why;
        std::function<Point2D(int)> at;
    };
    const Row rows[] = {
        {"even", [&](int) { return Point2D(place(random), place(random)); }},
        {"a grid: many distances are exactly the radius", [](int i) { return Point2D(i % 50, i / 50); }},
        {"sorted along a line", [](int i) { return Point2D(0.05 * i, 3.0); }},
        {"all at one place", [](int) { return Point2D(1.0, 2.0); }},
        {"two places", [](int i) { return Point2D(i % 2, 0.0); }},
        {"outside the box", [&](int) { return Point2D(500.0 + place(random), place(random)); }},
        {"ever closer to a corner", [](int i) { return Point2D(100.0 - std::ldexp(1.0, -i % 60), 100.0); }},
    };
    for (const Point2D& origin : surveyOrigins) {
        const Vec2D shift(origin.GetX(), origin.GetY());
        const BoundingBox2D box(origin + Vec2D(-100.0, -100.0), origin + Vec2D(100.0, 100.0));
        for (const Row& row : rows) {
            for (const unsigned int capacity : {0U, 1U, 100U}) {
                SCOPED_TRACE(testing::Message() << row.why << ", capacity " << capacity << " at " << origin.GetX());
                const std::unique_ptr<IQuadTreeForPoints> tree = IQuadTreeForPoints::Create(capacity, box);
                std::vector<Point3D> points;
                for (int i = 0; i < 2000; ++i) {
                    const Point2D plan = row.at(i) + shift;
                    points.emplace_back(plan.GetX(), plan.GetY(), i);
                    ASSERT_TRUE(tree->Insert(points.back()));
                }
                EXPECT_EQ(tree->GetNrOfPoints(), points.size());
                for (const double radius : {0.0, 0.25, 5.0, 1e9}) {
                    const Point2D center = Point2D(points[7].GetX(), points[7].GetY()) + Vec2D(0.25, 0.0) * radius;
                    std::vector<Point3D> expected;
                    for (const Point3D& point : points) {
                        if (center.Distance({point.GetX(), point.GetY()}) <= radius) expected.push_back(point);
                    }
                    std::vector<Point3D> found(1);  // a search appends
                    EXPECT_EQ(tree->Search(center, radius, found), expected.size());
                    found.erase(found.begin());
                    EXPECT_EQ(SortedHeights(found), SortedHeights(expected));
                }
            }
        }
    }
}

TEST(QuadTreeForPointsTest, NumbersThatAreNoPlaceAreRefused) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const BoundingBox2D noBox(Point2D(kNaN, 0.0), Point2D(1.0, std::numeric_limits<double>::infinity()));
    const std::unique_ptr<IQuadTreeForPoints> tree = IQuadTreeForPoints::Create(1, noBox);
    std::vector<Point3D> found;
    EXPECT_EQ(tree->Search(Point2D(0.0, 0.0), 1.0, found), 0U) << "empty";
    EXPECT_FALSE(tree->Insert(Point3D(kNaN, 0.0, 0.0)));
    EXPECT_FALSE(tree->Insert(Point3D(0.0, std::numeric_limits<double>::infinity(), 0.0)));
    EXPECT_TRUE(tree->Insert(Point3D(1.0, 2.0, kNaN))) << "a height is only kept";
    EXPECT_TRUE(tree->Insert(Point3D(1.0, 3.0, 0.0)));
    for (const double radius : {-1.0, kNaN}) EXPECT_EQ(tree->Search(Point2D(1.0, 2.0), radius, found), 0U);
    EXPECT_EQ(tree->Search(Point2D(kNaN, 2.0), 1.0, found), 0U);
    EXPECT_EQ(tree->Search(Point2D(1.0, 2.0), 1.0, found), 2U) << "closed";
}

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
