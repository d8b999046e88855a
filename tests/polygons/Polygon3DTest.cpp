#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "support/Concurrently.h"
#include "support/Rings.h"
#include "support/Testing.h"

#include <string>

namespace Kalvio::Math {
namespace {

// The law of a cover without gaps and overlaps: all triangles run like the outer ring, and the edges that do not cancel
// are just those of the rings, the holes the other way round. Edges are divided at points that lie on them exactly.
testing::AssertionResult CoversOnce(const Polygon2D& polygon, const std::vector<unsigned int>& corners) {
    using Place = std::pair<double, double>;
    const Polygon3D lifted(polygon, 0.0);
    const auto at = [&lifted](unsigned int i) { return lifted.GetPointOfAll(i).GetPoint2D(); };
    const auto turn = [](const Point2D& a, const Point2D& b, const Point2D& c) {
        return (b - a).PerpDotProduct(c - a);
    };
    const double sense = Polygon2D(polygon.GetPoints()).GetArea() > 0.0 ? 1.0 : -1.0;
    std::map<std::pair<Place, Place>, int> edges;
    const auto count = [&](const Point2D& a, const Point2D& b, int times) {
        std::map<double, Place> parts{{0.0, {a.GetX(), a.GetY()}}, {1.0, {b.GetX(), b.GetY()}}};
        for (unsigned int k = 0; k < lifted.GetTotalSize(); ++k) {
            const double t = (at(k) - a).DotProduct(b - a) / (b - a).NormSquared();
            if (t > 0.0 && t < 1.0 && turn(a, b, at(k)) == 0.0) parts.insert({t, {at(k).GetX(), at(k).GetY()}});
        }
        for (auto part = std::next(parts.begin()); part != parts.end(); ++part) {
            const Place& from = std::prev(part)->second;
            const Place& to = part->second;
            from < to ? edges[{from, to}] += times : edges[{to, from}] -= times;
        }
    };
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        if (!(turn(at(corners[i]), at(corners[i + 1]), at(corners[i + 2])) * sense > 0.0)) {
            return testing::AssertionFailure() << "triangle " << i / 3 << " runs the wrong way";
        }
        for (std::size_t k = 0; k < 3; ++k) count(at(corners[i + k]), at(corners[i + (k + 1) % 3]), 1);
    }
    for (unsigned int i = 0; i <= polygon.GetNumHoleBoundaries(); ++i) {
        const std::vector<Point2D>& ring = i == 0 ? polygon.GetPoints() : polygon.GetHoleBoundary(i - 1).GetPoints();
        const int times = (i > 0) == (Polygon2D(ring).GetArea() * sense > 0.0) ? 1 : -1;
        for (std::size_t k = 0; k < ring.size(); ++k) count(ring[k], ring[(k + 1) % ring.size()], times);
    }
    for (const auto& [edge, times] : edges) {
        if (times != 0 && edge.first != edge.second)
            return testing::AssertionFailure() << testing::PrintToString(edge) << " remains";
    }
    return testing::AssertionSuccess();
}

// Triangulates in every way, flat and tilted at survey coordinates.
void CheckTriangulations(const Polygon2D& plan) {
    std::vector<unsigned int> corners;
    const Polygon3D flat(plan, 7.0);
    ASSERT_TRUE(flat.Triangulate(corners, 1e-10));
    EXPECT_TRUE(CoversOnce(plan, corners));
    ASSERT_TRUE(flat.TriangulateByProjection(ProjectionPlane::XY, corners, 1e-10));
    EXPECT_TRUE(CoversOnce(plan, corners));
    EXPECT_FALSE(flat.TriangulateByProjection(ProjectionPlane::XZ, corners, 1e-10)) << "a line in that plane";
    ASSERT_TRUE(flat.TriangulateWithoutHoles(corners, 1e-10));
    EXPECT_TRUE(CoversOnce(Polygon2D(plan.GetPoints()), corners));
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
    const std::string square = "0 0 16 0 16 16 0 16 / ";
    std::string comb = "0 0";
    for (int i = 0; i < 40; ++i) comb += " " + std::to_string(i) + " 1 " + std::to_string(i) + ".5 100";
    const std::pair<const char*, std::string> rows[] = {
        {"triangle", "0 0 4 0 0 3"},
        {"points on straight sides", "0 0 1 0 2 0 2 2 0 2"},
        {"repeated points", "0 0 0 0 4 0 4 4 4 4"},
        {"comb", comb + " 40 0"},
        {"flat: sides across edges to the corners around everything", "4.75 0.0625 1360 0 1236 16 -832 0"},
        {"hole", square + "4 4 6 4 6 6"},
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
            CheckTriangulations(polygon);
        }
    }
    RandomNumbers random(20240601);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        Polygon2D polygon(RandomStar(random, Point2D(0, 0), 100.0, 3 + 4 * round));
        for (int i = 0; i < round % 10 && round > 2;
             ++i) {  // inside the star's inner circle, of a radius from 20 cos(pi/n)
            polygon.AppendHoleBoundary(RandomStar(random, Point2D(Angle(0.7 * i), 10.0), 3.0, 3 + i));
        }
        CheckTriangulations(polygon);
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
    struct Row {
        const char* why;
        const char* plan;
        double byX, byY, start;  // height: start + byX x + byY y
        Vec3D normal;
        double area;
        Winding winding;
    };
    const Row rows[] = {
        {"level", "0 0 2 0 2 2 0 2", 0, 0, 5, Vec3D(0, 0, 1), 4.0, Winding::CounterClockwise},
        {"roof seen from below", "0 0 0 4 3 4 3 0", 4.0 / 3, 0, 0, Vec3D(0.8, 0, -0.6), 20.0, Winding::Clockwise},
        {"wall", "0 0 3 4 1.5 2 -3 -4", 2, 7, 0, Vec3D(), 0.0, Winding::Vertical},
    };
    for (const Vec3D& shift : {Vec3D(), Vec3D(385000, 6672000, 120)}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            Polygon3D polygon(MakePolygon(row.plan), row.start);
            for (Point3D& p : polygon.GetPoints()) p.SetZ(row.start + row.byX * p.GetX() + row.byY * p.GetY());
            if (row.winding == Winding::Vertical) polygon.GetPoint(1).SetZ(99.0);
            polygon.Translate(shift);
            if (row.area > 0.0) {
                EXPECT_THAT(polygon.GetNormal(), IsNear(row.normal, 1e-9));
                EXPECT_NEAR(polygon.GetPlanarArea(), row.area, 1e-8);
                EXPECT_TRUE(polygon.IsPlanarConvex());
            }
            EXPECT_EQ(polygon.GetPlanarWinding(), row.winding);
            const bool canTurn = row.winding == Winding::CounterClockwise;
            EXPECT_EQ(polygon.SetPlanarWinding(Winding::Clockwise), canTurn);
            EXPECT_EQ(polygon.GetPlanarWinding(), canTurn ? Winding::Clockwise : row.winding);
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
    EXPECT_TRUE(Geometry::AreEqual(polygon, *copy, 1e-12));
    copy->GetHoleBoundary(0)[0].SetZ(2.5);
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 0.5)) << "strict, holes too";
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 0.5001));
    EXPECT_FALSE(polygon.IsEqualTo(plan, 10.0));
    Polygon3D lifted;
    Matrix3D up;
    plan.Transform(up.Translate(1.0, 2.0, 3.0), lifted);
    EXPECT_TRUE(lifted.IsEqualTo(Polygon3D(plan, 0.0).Translate(Vec3D(1, 2, 3)), 1e-12));

    EXPECT_TRUE(polygon.InsertAtLength(5.0, Point3D(4, 1, 9)));
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetZ(), 9.0);
    polygon.GetPoint(2).SetZ(10.0);
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetZ(), 10.0);
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

    std::vector<int> right(8, 0);
    Concurrently(8, [&](unsigned int i) {
        Point2D where;
        const bool boxes = plan.GetBoundingBox().GetArea() == 12.0 && copy->GetBoundingBox2D().GetArea() == 12.0;
        right[i] = boxes && plan.Validate(where, true, 1e-4) ? 1 : 0;
    });
    EXPECT_THAT(right, testing::Each(1));
}

}  // namespace
}  // namespace Kalvio::Math
