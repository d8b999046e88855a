#include "kalvio/Math.h"
#include "support/Concurrently.h"
#include "support/Rings.h"
#include "support/Testing.h"

#include <string>

namespace Kalvio::Math {
namespace {

// The law of a cover without gaps and overlaps: all triangles run like the outer ring, their areas add up, and a point
// of the polygon lies in one of them, any other point in none.
void CheckCover(const Polygon2D& polygon, const std::vector<unsigned int>& corners, RandomNumbers& random) {
    const Polygon3D lifted(polygon, 0.0);
    std::vector<Polygon2D> triangles;
    double area = 0.0;
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        triangles.emplace_back();
        for (std::size_t k = i; k < i + 3; ++k)
            triangles.back().AppendPoint(lifted.GetPointOfAll(corners[k]).GetPoint2D());
        area += triangles.back().GetArea();
        ASSERT_GT(triangles.back().GetArea() * Polygon2D(polygon.GetPoints()).GetArea(), 0.0) << "triangle " << i / 3;
    }
    EXPECT_NEAR(area, polygon.GetArea(), 1e-12 * std::abs(area));
    const BoundingBox2D box = polygon.GetBoundingBox();
    for (int k = 0; k < 300; ++k) {
        const Point2D p =
            box.GetCenter() + Vec2D(box.GetSize().GetX() * random(-0.5, 0.5), box.GetSize().GetY() * random(-0.5, 0.5));
        const auto holders = std::count_if(triangles.begin(), triangles.end(),
                                           [&p](const Polygon2D& triangle) { return triangle.IsPointInside(p, 0.0); });
        ASSERT_EQ(holders, polygon.IsPointInsideByRay(p, 0.0) ? 1 : 0) << testing::PrintToString(p);
    }
}

// Triangulates in every way, flat and tilted at survey coordinates.
void CheckTriangulations(const Polygon2D& plan, RandomNumbers& random) {
    std::vector<unsigned int> corners;
    const Polygon3D flat(plan, 7.0);
    ASSERT_TRUE(flat.Triangulate(corners, 1e-10));
    CheckCover(plan, corners, random);
    ASSERT_TRUE(flat.TriangulateByProjection(ProjectionPlane::XY, corners, 1e-10));
    CheckCover(plan, corners, random);
    EXPECT_FALSE(flat.TriangulateByProjection(ProjectionPlane::XZ, corners, 1e-10)) << "a line in that plane";
    ASSERT_TRUE(flat.TriangulateWithoutHoles(corners, 1e-10));
    CheckCover(Polygon2D(plan.GetPoints()), corners, random);
    Matrix3D tilt;
    tilt.Rotate(0, 0.4).Rotate(1, -0.7).Rotate(2, 1.1).Translate(385000.0, 6672000.0, 120.0);
    const Polygon3D tilted = flat.Transform(tilt);
    std::vector<Triangle3D> triangles;
    ASSERT_TRUE(tilted.Triangulate(triangles, 1e-9));
    double sum = 0.0;
    for (const Triangle3D& triangle : triangles) sum += triangle.GetArea();
    const double tolerance = 1e-7 * (1.0 + tilted.GetLength());
    EXPECT_NEAR(sum, std::abs(plan.GetArea()), tolerance);
    EXPECT_NEAR(tilted.GetPlanarArea(), std::abs(plan.GetArea()), tolerance);
    ASSERT_TRUE(tilted.TriangulateByMainAxes(corners, 1e-9));
    EXPECT_EQ(corners.size(), 3 * triangles.size());
}

TEST(Polygon3DTest, TrianglesCoverTheAreaOnce) {
    RandomNumbers random(20240601);
    const std::string square = "0 0 16 0 16 16 0 16 / ";
    std::string comb = "0 0";
    for (int i = 0; i < 40; ++i) comb += " " + std::to_string(i) + " 1 " + std::to_string(i) + ".5 100";
    const std::pair<const char*, std::string> rows[] = {
        {"points on straight sides", "0 0 1 0 2 0 2 2 0 2"},
        {"repeated points", "0 0 0 0 4 0 4 4 4 4"},
        {"comb", comb + " 40 0"},
        {"flat: sides across edges to the corners around everything", "4.75 0.0625 1360 0 1236 16 -832 0"},
        {"hole corner on the ring's side", square + "8 0 10 4 6 4"},
        {"hole corner on the ring's corner", square + "0 0 4 2 2 4"},
        {"hole side along the ring's side", square + "4 0 8 0 8 4 4 4"},
        {"hole that cuts the area in two", square + "0 4 16 4 16 6 0 6"},
        {"hole that leaves the corners", square + "8 0 16 8 8 16 0 8"},
        {"holes corner to corner", square + "2 2 6 2 6 6 2 6 / 6 6 10 6 10 10"},
        {"holes side by side", square + "2 2 6 2 6 6 2 6 / 6 3 10 3 10 5 6 5"},
        {"ring that touches itself at a point", "0 0 4 4 8 0 8 8 4 4 0 8"},
        {"hole bridged into the ring", "0 0 8 0 8 8 0 8 0 0 2 2 2 4 4 4 4 2 2 2"},
    };
    for (const auto& [why, coordinates] : rows) {
        for (int form = 0; form < 4; ++form) {
            SCOPED_TRACE(testing::Message() << why << ", form " << form);
            Polygon2D polygon = MakePolygon(coordinates);
            if ((form & 1) != 0) polygon.Reverse();
            if ((form & 2) != 0 && polygon.GetNumHoleBoundaries() > 0) polygon.GetHoleBoundary(0).Reverse();
            CheckTriangulations(polygon, random);
        }
    }
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        Polygon2D polygon(RandomStar(random, Point2D(0, 0), 100.0, 3 + 4 * round));
        for (int i = 0; i < round % 10 && round > 2;
             ++i) {  // inside the star's inner circle, of a radius from 20 cos(pi/n)
            polygon.AppendHoleBoundary(RandomStar(random, Point2D(Angle(0.7 * i), 10.0), 3.0, 3 + i));
        }
        CheckTriangulations(polygon, random);
        std::vector<unsigned int> corners;
        ASSERT_TRUE(Polygon3D(polygon, 0.0).TriangulateByMainAxes(corners, 1e-10));
        EXPECT_EQ(corners.size() / 3, polygon.GetTotalSize() + 2 * polygon.GetNumHoleBoundaries() - 2);
    }
}

TEST(Polygon3DTest, HoleCornersWithinTheToleranceOfASideLieOnIt) {
    for (const char* const hole : {"8 -0.00005 10 4 6 4", "16.00005 8 12 10 12 6", "5.99995 6.00005 10 6 10 8"}) {
        const Polygon3D polygon(MakePolygon(std::string("0 0 16 0 16 16 / ") + hole), 0.0);
        std::vector<unsigned int> corners;
        EXPECT_TRUE(polygon.Triangulate(corners, 1e-4));
        EXPECT_EQ(corners.size() / 3, 5U) << "the corner divides the side: one outline of seven points";
        EXPECT_FALSE(polygon.Triangulate(corners, 1e-6)) << "the hole crosses the ring";
    }
    // The side is there before the corners beside it are seen: two holes on both sides of it.
    const char* const late =
        "5 0 -4.5 7.79423 -3.5 -6.06218 / -3.8007 -1.90596 -0.84021 -1.47179 -1.14021 -0.571787 / "
        "-3.7993 -1.90596 -2.35951 -0.434169 -2.65951 -1.33417";
    std::vector<unsigned int> corners;
    EXPECT_TRUE(Polygon3D(MakePolygon(late), 0.0).TriangulateByProjection(ProjectionPlane::XY, corners, 1e-3));
}

TEST(Polygon3DTest, TriangulationRefusesWhatIsNoArea) {
    const std::pair<const char*, Polygon2D> rows[] = {
        {"empty", Polygon2D()},
        {"hole without a ring", MakePolygon(" / 0 0 2 0 2 2")},
        {"one line", MakePolygon("0 0 1 1 3 3")},
        {"bow tie", MakePolygon("0 0 2 2 2 0 0 2")},
        {"bow tie with a point at the knot", MakePolygon("0 0 1 1 2 2 2 0 1 1 0 2")},
        {"twice round", MakePolygon("0 10 -6 -8 9.5 3 -9.5 3 6 -8")},
        {"hole outside", MakePolygon("0 0 9 0 9 9 / 20 0 22 0 22 2")},
        {"hole across the ring", MakePolygon("0 0 9 0 9 9 / 8 2 12 2 12 3")},
        {"hole in a hole", MakePolygon("0 0 9 0 9 9 0 9 / 2 2 8 2 8 8 2 8 / 4 4 6 4 6 6")},
        {"hole as large as the ring", MakePolygon("0 0 9 0 9 9 / 0 0 9 0 9 9")},
        {"not a number", Polygon2D({Point2D(0, 0), Point2D(1, 0), Point2D(0, kNan)})},
        {"infinite", Polygon2D({Point2D(0, 0), Point2D(kInfinity, 0), Point2D(0, 1)})},
        {"too large", MakePolygon("-1e308 0 1e308 0 0 1e308")},
        {"too small", MakePolygon("0 0 1e-12 0 0 1e-12")},
    };
    for (const auto& [why, plan] : rows) {
        SCOPED_TRACE(why);
        std::vector<unsigned int> corners{7};
        std::vector<Triangle3D> triangles(1);
        const Polygon3D polygon(plan, 0.0);
        EXPECT_FALSE(polygon.TriangulateByProjection(ProjectionPlane::XY, corners, 1e-10));
        EXPECT_FALSE(polygon.Triangulate(triangles, 1e-10));
        EXPECT_EQ(corners, std::vector<unsigned int>{7});
        EXPECT_EQ(triangles.size(), 1U);
    }
}

TEST(Polygon3DTest, NormalAreaAndWindingBelongToThePlaneOfBestFit) {
    using Winding = WindingValue;
    const std::tuple<const char*, const char*, Vec3D, Vec3D, double, Winding> rows[] = {
        // plan, height at the origin and its changes with x and y, normal, area
        {"level", "0 0 2 0 2 2 0 2", Vec3D(0, 0, 5), Vec3D(0, 0, 1), 4.0, Winding::CounterClockwise},
        {"roof seen from below", "0 0 0 4 3 4 3 0", Vec3D(4.0 / 3, 0, 0), Vec3D(0.8, 0, -0.6), 20, Winding::Clockwise},
        {"wall", "0 0 3 4 1.5 2 -3 -4", Vec3D(2, 7, 0), Vec3D(), 0.0, Winding::Vertical},
    };
    for (const auto& [why, plan, slope, normal, area, winding] : rows) {
        for (const Vec3D& shift : {Vec3D(), Vec3D(385000, 6672000, 120)}) {
            SCOPED_TRACE(why);
            Polygon3D polygon(MakePolygon(plan), 1.0);
            for (Point3D& p : polygon.GetPoints()) p.SetZ(slope.DotProduct(p - Point3D()));
            if (winding == Winding::Vertical) polygon.GetPoint(1).SetZ(99.0);
            polygon.Translate(shift);
            EXPECT_TRUE(area == 0.0 || (polygon.IsPlanarConvex() && polygon.GetNormal().IsEqualTo(normal, 1e-9)));
            EXPECT_TRUE(area == 0.0 || std::abs(polygon.GetPlanarArea() - area) < 1e-8);
            EXPECT_EQ(polygon.GetPlanarWinding(), winding);
            const bool canTurn = winding == Winding::CounterClockwise;
            EXPECT_EQ(polygon.SetPlanarWinding(Winding::Clockwise), canTurn);
            EXPECT_EQ(polygon.GetPlanarWinding(), canTurn ? Winding::Clockwise : winding);
        }
    }
    EXPECT_EQ(Polygon3D().GetNormal().Length(), 0.0);
    EXPECT_EQ(Polygon3D().GetPlanarWinding(), Winding::Vertical);
}

TEST(Polygon3DTest, BehavesLikeThePlanPolygonWhereTheNamesAgree) {
    const Polygon2D plan = MakePolygon("0 0 4 0 4 3 0 3 / 1 1 2 1 2 2");
    Polygon3D polygon(plan, 2.0);
    EXPECT_TRUE(Geometry::AreEqual(polygon.GetPolygon(), plan, 1e-12));
    EXPECT_EQ(polygon.GetLength(), 14.0);
    const std::unique_ptr<Polygon3D> copy(polygon.Clone());
    copy->GetHoleBoundary(0)[0].SetZ(2.5);
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 0.5)) << "strict, holes too";
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 0.5001));
    EXPECT_FALSE(polygon.IsEqualTo(plan, 10.0) || plan.IsEqualTo(Polygon2D(plan.GetPoints()), 10.0));
    Polygon3D lifted;
    Matrix3D up;
    plan.Transform(up.Translate(1.0, 2.0, 3.0), lifted);
    EXPECT_TRUE(lifted.IsEqualTo(Polygon3D(plan, 0.0).Translate(Vec3D(1, 2, 3)), 1e-12));

    EXPECT_TRUE(polygon.InsertAtLength(5.0, Point3D(4, 1, 10)));
    polygon.Close();
    double z = 0.0;
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(4, 0.5), z, 1e-4, 0), 1);
    EXPECT_NEAR(z, 6.0, 1e-12);
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(1.5, 1), z, 1e-4, 0), 1) << "on the hole";
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(3, 2), z, 1e-4, 0), 0);
    EXPECT_EQ(z, 2.0);
    polygon.RemoveClosingPoint(1e-9);
    polygon.Insert(0, Point3D(0, 0, 2.001));
    polygon.ReducePoints(0.01);
    EXPECT_EQ(polygon.GetTotalSize(), 8U);

    Concurrently(8, [&](unsigned int) {
        Point2D where;
        EXPECT_EQ(plan.GetBoundingBox().GetArea() + copy->GetBoundingBox2D().GetArea(), 24.0);
        EXPECT_TRUE(plan.Validate(where, true, 1e-4));
    });
}

}  // namespace
}  // namespace Kalvio::Math
