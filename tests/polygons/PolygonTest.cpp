#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "support/Concurrently.h"
#include "support/Near.h"
#include "support/Origins.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <list>
#include <memory>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<Point2D> Rectangle(double x, double y, double width, double height) {
    return {Point2D(x, y), Point2D(x + width, y), Point2D(x + width, y + height), Point2D(x, y + height)};
}

TEST(PolygonTest, AreaWindingCentroidAndPerimeterFollowTheOuterRing) {
    struct Row {
        const char* why;
        std::vector<Point2D> ring;
        std::vector<std::vector<Point2D>> holes;
        double area;
        Point2D centroid;
        double perimeter;
    };
    const Row rows[] = {
        {"unit square", Rectangle(0, 0, 1, 1), {}, 1.0, Point2D(0.5, 0.5), 4.0},
        {"hole turning left", Rectangle(0, 0, 10, 10), {Rectangle(6, 6, 2, 2)}, 96.0, Point2D(5, 5), 40.0},
        {"hole turning right", Rectangle(0, 0, 10, 10), {Rectangle(8, 6, -2, 2)}, 96.0, Point2D(5, 5), 40.0},
        {"holes larger than the ring", Rectangle(0, 0, 2, 2), {Rectangle(0, 0, 3, 3)}, -5.0, Point2D(1, 1), 8.0},
        {"triangle", {Point2D(0, 0), Point2D(3, 0), Point2D(0, 4)}, {}, 6.0, Point2D(1, 4.0 / 3), 12.0},
        {"no area: mean", {Point2D(0, 0), Point2D(1, 1), Point2D(5, 5)}, {}, 0.0, Point2D(2, 2), 10 * std::sqrt(2.0)},
        {"one point", {Point2D(3, 4)}, {}, 0.0, Point2D(3, 4), 0.0},
    };
    for (const Row& row : rows) {
        for (const Point2D& origin : {Point2D(0, 0), Point2D(385000, 6672000), Point2D(500123.38, 6612345.61)}) {
            for (const bool isClosed : {false, true}) {
                SCOPED_TRACE(row.why);
                Polygon2D polygon(row.ring);
                for (const auto& hole : row.holes) polygon.AppendHoleBoundary(hole);
                if (isClosed) polygon.Close();
                polygon.Translate(origin - Point2D());
                const auto check = [&](double area) {
                    EXPECT_NEAR(polygon.GetArea(), area, 2e-8);
                    EXPECT_EQ(polygon.GetWinding() == WindingValue::CounterClockwise, polygon.GetArea() > 0.0);
                    EXPECT_THAT(polygon.GetCentroid(), IsNear(row.centroid + (origin - Point2D()), 1e-6));
                    EXPECT_NEAR(polygon.GetLength(), row.perimeter, 1e-8);
                };
                check(row.area);
                polygon.Reverse();
                check(-row.area);
            }
        }
    }
    EXPECT_EQ(Polygon2D().GetArea(), 0.0);
    EXPECT_EQ(Polygon2D().GetCentroid(), Point2D(0, 0));
}

TEST(PolygonTest, SetWindingReversesOnlyWhatHasAnotherWinding) {
    Polygon2D square{Point2D(0, 0), Point2D(0, 1), Point2D(1, 1), Point2D(1, 0)};
    square.AppendHoleBoundary(Rectangle(0.25, 0.25, 0.5, 0.5));
    EXPECT_EQ(square.GetWinding(), WindingValue::Clockwise);
    EXPECT_FALSE(square.SetWinding(WindingValue::Clockwise));
    EXPECT_TRUE(square.SetWinding(WindingValue::CounterClockwise));
    EXPECT_EQ(square.GetWinding(), WindingValue::CounterClockwise);
    EXPECT_EQ(square.GetHoleBoundary(0).GetPoint(1), Point2D(0.75, 0.25)) << "holes keep their direction";
    EXPECT_EQ(Polygon2D({Point2D(0, 0), Point2D(1, 0)}).GetWinding(), WindingValue::Clockwise);
}

TEST(PolygonTest, EveryEditOfTheRingRenewsTheBox) {
    Polygon2D polygon;
    const auto reaches = [&polygon](double x) { return polygon.GetBoundingBox().GetMaxPoint() == Point2D(x, x); };
    EXPECT_TRUE(reaches(0));
    polygon.AppendPoints(std::vector<Point2D>{Point2D(0, 0), Point2D(1, 0), Point2D(1, 1)});
    EXPECT_TRUE(reaches(1));
    polygon.AppendPoints(std::list<Point2D>{Point2D(2, 2)});
    EXPECT_TRUE(reaches(2));
    polygon.GetPoint(3) = Point2D(3, 3);
    EXPECT_TRUE(reaches(3));
    polygon.GetPoints().emplace_back(0, 4);
    polygon.AppendPoint(Point2D(4, 4));
    EXPECT_TRUE(reaches(4));
    EXPECT_TRUE(polygon.Insert(6, Point2D(5, 5)));
    EXPECT_FALSE(polygon.Insert(8, Point2D(9, 9)));
    EXPECT_TRUE(reaches(5));
    polygon.Translate(Vec2D(1, 1));
    EXPECT_TRUE(reaches(6));
    EXPECT_FALSE(polygon.IsClosed(1e-4));
    polygon.Close();
    polygon.Close();
    EXPECT_TRUE(polygon.IsClosed(1e-4));
    polygon.AppendHoleBoundary(Rectangle(0, 0, 1, 1));
    EXPECT_EQ(polygon.GetTotalSize(), 12U) << "closing twice closes once";
    polygon.Clear();
    EXPECT_TRUE(reaches(0));
    EXPECT_EQ(polygon.GetTotalSize(), 0U);
    EXPECT_FALSE(polygon.IsClosed(1.0));
}

TEST(PolygonTest, EqualityComparesPointsAndHolesInOrder) {
    Polygon2D polygon(Rectangle(0, 0, 4, 4));
    polygon.AppendHoleBoundary(Rectangle(1, 1, 1, 1));
    const std::unique_ptr<IGeometry> copy(polygon.Clone());
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 1e-9));
    auto& other = static_cast<Polygon2D&>(*copy);
    other.GetHoleBoundary(0).GetPoint(2) = Point2D(2.0, 2.25);
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 0.25)) << "strict, holes too";
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 0.2501));
    other.RemoveHoleBoundaries();
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 10.0));
    EXPECT_FALSE(polygon.IsEqualTo(LineString2D(Rectangle(0, 0, 4, 4)), 10.0));
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetY(), 4.0);
}

}  // namespace
}  // namespace Kalvio::Math
