#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(BoundingBoxTest, BordersAreInsideUpToTheTolerance) {
    const BoundingBox2D box(Point2D(0, 0), Point2D(2, 4)), backward(Point2D(2, 4), Point2D(0, 0));
    const std::tuple<const char*, Point2D, double, bool> rows[] = {
        {"exactly the tolerance above", Point2D(2.25, 4.25), 0.25, true},
        {"exactly the tolerance below", Point2D(-0.25, -0.25), 0.25, true},
        {"beyond it", Point2D(2.5, 4), 0.25, false},
        {"below", Point2D(1, -0.5), 0.25, false},
        {"a negative tolerance shrinks", Point2D(1, 0.25), -0.5, false},
    };
    for (const auto& [why, p, tolerance, expected] : rows) {
        EXPECT_EQ(box.IsPointInside(p, tolerance), expected) << why;
        EXPECT_EQ(BoundingBoxND(box).IsPointInside(PointND(p), tolerance), expected) << why;
    }
    EXPECT_TRUE(box.GetArea() == 8.0 && box.GetPerimeter() == 12.0);
    EXPECT_TRUE(backward.GetSize().IsEqualTo(Vec2D(-2, -4), 1e-15) && backward.GetCenter() == Point2D(1, 2));
    EXPECT_FALSE(backward.IsPointInside(Point2D(1, 2), 0.0)) << "corners stay: negative sizes hold nothing";
}

TEST(BoundingBoxTest, TouchingBoxesIntersect) {
    const std::tuple<const char*, double, double, bool, double> rows[] = {
        {"sharing a border", 1.0, 0.0, true, 0.0},
        {"farther apart than the tolerance", 1.125, 0.0625, false, 0.0},
        {"exactly the tolerance apart", 1.125, 0.125, true, 0.0},
        {"overlapping", 0.75, 0.0, true, 0.25},
        {"one in the other", 0.0, 0.0, true, 1.0},
    };
    for (const auto& [why, left, tolerance, expected, area] : rows) {
        SCOPED_TRACE(why);
        const BoundingBox2D a(Point2D(0, 0), Point2D(1, 1)), b(Point2D(left, 0), Point2D(2, 1));
        const BoundingBoxND many[] = {BoundingBoxND(a), BoundingBoxND(b)};
        EXPECT_EQ(std::pair(a.Intersects(b, tolerance), b.Intersects(a, tolerance)), std::pair(expected, expected));
        EXPECT_EQ(std::pair(a.GetIntersectionArea(b), many[0].GetIntersectionArea(many[1])), std::pair(area, area));
        EXPECT_EQ(many[0].Intersects(many[1]), left <= 1.0);
        EXPECT_EQ(many[1].Intersects(many[0]), left <= 1.0);
    }
}

TEST(BoundingBoxTest, UnionsHoldBothBoxesAndNothingMore) {
    RandomNumbers random(20240601);
    for (const Point2D& origin : surveyOrigins) {
        const auto draw = [&] {
            return Point3D(origin, 0.0) + Vec3D(random(-50.0, 50.0), random(-50.0, 50.0), random(-50.0, 50.0));
        };
        for (int i = 0; i < 100; ++i) {
            const Point3D p[] = {draw(), draw(), draw(), draw()};
            const BoundingBox3D both = p[0].GetBoundingBox3D() + BoundingBox3D(p[1], p[1]) + p[2].GetBoundingBox3D();
            BoundingBoxND many(3);
            many.Reset();
            for (int k = 0; k < 3; ++k) many += BoundingBoxND(p[k].GetBoundingBox3D());
            const BoundingBoxND exact = many + BoundingBoxND(p[3].GetBoundingBox3D());
            EXPECT_TRUE(exact.Contains(many) && exact.Intersects(many));
            for (int axis = 0; axis < 3; ++axis) {
                const auto [low, high] = std::minmax({p[0][axis], p[1][axis], p[2][axis]});
                EXPECT_NEAR(both.GetMinPoint()[axis], low, 2e-9);
                EXPECT_NEAR(both.GetMaxPoint()[axis], high, 2e-9);
                EXPECT_EQ(many.GetMin(static_cast<unsigned int>(axis)), low) << "after Reset the first union replaces";
                EXPECT_EQ(many.GetMax(static_cast<unsigned int>(axis)), high);
            }
            EXPECT_TRUE(both.GetBoundingBox2D().IsEqualTo(many.GetBoundingBox2D(), 4e-9));
        }
    }
    const BoundingBox2D away(Point2D(5, 5), Point2D(6, 6)), withOrigin(Point2D(0, 0), Point2D(6, 6));
    EXPECT_TRUE((BoundingBox2D() + away).IsEqualTo(withOrigin, 1e-15)) << "no empty state";
}

TEST(BoundingBoxTest, BoxesOfAnyDimensionMeasureThemselves) {
    const BoundingBoxND box(PointND({2.0, 0.0, 0.0, 0.0}), VecND({1.0, 2.0, 3.0, 4.0}));
    EXPECT_TRUE(box.GetArea() == 24.0 && box.GetEdgesLengthSum() == 10.0);
    EXPECT_EQ(box.DistanceSquareBetweenCenters(BoundingBoxND(4)), 13.5);

    const BoundingBoxND flat(2);
    EXPECT_FALSE(box.Intersects(flat) || box.Contains(flat) || box.IsPointInside(PointND(2U), 1.0));
    EXPECT_TRUE((box + flat).IsEqualTo(box, 1e-15)) << "another dimension changes nothing";
    EXPECT_TRUE(box.GetIntersectionArea(flat) == 0.0 && BoundingBoxND().GetArea() == 0.0);
    const BoundingBoxND uneven(PointND({0.0, 0.0, 0.0}), PointND({2.0, 3.0}));
    EXPECT_TRUE(uneven.GetDimension() == 2 && uneven.GetArea() == 6.0);
    BoundingBoxND empty(2);
    empty.Reset();
    EXPECT_TRUE(!empty.Intersects(empty) && empty.GetBoundingBox2D().IsEqualTo(BoundingBox2D(), 1e-15));
}

TEST(BoundingBoxTest, OrientedBoxesKeepTheFirstBoxesAxes) {
    const Vec2D along(3, 4);
    for (const Point2D& origin : surveyOrigins) {
        const OrientedBoundingBox2D box(origin, Vec2D(10, 5), along, along.GetNormalVector(true));
        const OrientedBoundingBox2D other(BoundingBox2D(origin + Vec2D(20, 0), Vec2D(2, 2)));
        OrientedBoundingBox2D both = box + other;
        both.SetSize(both.GetSize() + Vec2D(1e-8, 1e-8));  // corners on the border are inside but for rounding
        std::vector<Point2D> corners;
        for (const OrientedBoundingBox2D* part : {&other, &box}) {
            part->GetCornerPoints(corners);
            ASSERT_EQ(corners.size(), 4U);
            for (const Point2D& corner : corners) EXPECT_TRUE(both.IsPointInside(corner));
        }
        EXPECT_THAT(corners[0], IsNear(origin + Vec2D(-1, -5.5), 2e-9)) << "centre - half size along both axes";
        EXPECT_GT((corners[1] - corners[0]).PerpDotProduct(corners[2] - corners[1]), 0.0) << "counter-clockwise";
        EXPECT_TRUE(box.IsPointInside(origin + along * 0.99) && !box.IsPointInside(origin + along * 1.01));
        EXPECT_TRUE(box.GetBoundingBox2D().IsEqualTo(BoundingBox2D(origin, Vec2D(10, 11)), 4e-9));
        EXPECT_TRUE((box + box).IsEqualTo(box, 4e-9));
        Vec2D first, second;
        both.GetAxes(first, second);
        EXPECT_THAT(first, IsNear(Vec2D(0.6, 0.8), 1e-15));
    }
}

}  // namespace
}  // namespace Kalvio::Math
