#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "support/Near.h"
#include "support/Rings.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

using Ring = std::vector<Point2D>;

const Matrix3D kTilt = [] {
    Matrix3D tilt;
    tilt.Rotate(0, 0.4).Rotate(1, -0.7).Rotate(2, 1.1).Translate(385000.0, 6672000.0, 120.0);
    return tilt;
}();

Polygon2D Polygon(const Ring& ring, const std::vector<Ring>& holes = {}) {
    Polygon2D polygon(ring);
    for (const Ring& hole : holes) polygon.AppendHoleBoundary(hole);
    return polygon;
}

// The law of a cover without gaps and overlaps: all triangles run like the outer ring, and the edges that do not cancel
// are just those of the rings, the holes the other way round. Ring edges are divided at points that lie on them
// exactly.
testing::AssertionResult CoversOnce(const Polygon2D& polygon, const std::vector<unsigned int>& corners) {
    const Polygon3D lifted(polygon, 0.0);
    const auto at = [&lifted](unsigned int i) { return lifted.GetPointOfAll(i).GetPoint2D(); };
    const auto turn = [](const Point2D& a, const Point2D& b, const Point2D& c) {
        return (b - a).PerpDotProduct(c - a);
    };
    const double sense = Polygon2D(polygon.GetPoints()).GetArea() > 0.0 ? 1.0 : -1.0;
    using Place = std::pair<double, double>;
    std::map<std::pair<Place, Place>, int> edges;
    const auto count = [&edges](const Point2D& a, const Point2D& b, int times) {
        const Place from(a.GetX(), a.GetY());
        const Place to(b.GetX(), b.GetY());
        if (from == to) return;
        from < to ? edges[{from, to}] += times : edges[{to, from}] -= times;
    };
    if (corners.empty() || corners.size() % 3 != 0) return testing::AssertionFailure() << "no triangles";
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        if (!(turn(at(corners[i]), at(corners[i + 1]), at(corners[i + 2])) * sense > 0.0)) {
            return testing::AssertionFailure() << "triangle " << i / 3 << " runs the wrong way";
        }
        for (std::size_t k = 0; k < 3; ++k) count(at(corners[i + k]), at(corners[i + (k + 1) % 3]), 1);
    }
    const auto countRing = [&](const Ring& ring, bool isHole) {
        const int times = isHole == (Polygon2D(ring).GetArea() * sense > 0.0) ? 1 : -1;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Point2D& a = ring[i];
            const Point2D& b = ring[(i + 1) % ring.size()];
            std::vector<std::pair<double, Point2D>> parts{{0.0, a}, {1.0, b}};
            for (unsigned int k = 0; k < lifted.GetTotalSize(); ++k) {
                const Point2D p = at(k);
                const double t = (p - a).DotProduct(b - a) / (b - a).NormSquared();
                if (t > 0.0 && t < 1.0 && turn(a, b, p) == 0.0) parts.emplace_back(t, p);
            }
            std::sort(parts.begin(), parts.end(), [](const auto& u, const auto& v) { return u.first < v.first; });
            for (std::size_t k = 1; k < parts.size(); ++k) count(parts[k - 1].second, parts[k].second, times);
        }
    };
    countRing(polygon.GetPoints(), false);
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        countRing(polygon.GetHoleBoundary(i).GetPoints(), true);
    }
    for (const auto& [edge, times] : edges) {
        if (times != 0) {
            return testing::AssertionFailure() << "edge (" << edge.first.first << ", " << edge.first.second << ") - ("
                                               << edge.second.first << ", " << edge.second.second << ") " << times;
        }
    }
    return testing::AssertionSuccess();
}

// Triangulates in every way, flat and tilted at survey coordinates.
void CheckTriangulations(const Polygon2D& plan) {
    std::vector<unsigned int> corners;
    const Polygon3D flat(plan, 7.0);
    const double area = std::abs(plan.GetArea());
    ASSERT_TRUE(flat.Triangulate(corners, 1e-10));
    EXPECT_TRUE(CoversOnce(plan, corners));
    ASSERT_TRUE(flat.TriangulateByMainAxes(corners, 1e-10));
    EXPECT_TRUE(CoversOnce(plan, corners));
    ASSERT_TRUE(flat.TriangulateByProjection(ProjectionPlane::XY, corners, 1e-10));
    EXPECT_TRUE(CoversOnce(plan, corners));
    EXPECT_FALSE(flat.TriangulateByProjection(ProjectionPlane::XZ, corners, 1e-10)) << "a line in that plane";
    ASSERT_TRUE(flat.TriangulateWithoutHoles(corners, 1e-10));
    EXPECT_TRUE(CoversOnce(Polygon2D(plan.GetPoints()), corners));
    const Polygon3D tilted = flat.Transform(kTilt);
    std::vector<Triangle3D> triangles;
    ASSERT_TRUE(tilted.Triangulate(triangles, 1e-9));
    ASSERT_TRUE(tilted.TriangulateByMainAxes(corners, 1e-9));
    double sum = 0.0;
    const Vec3D normal = tilted.GetNormal();
    for (const Triangle3D& triangle : triangles) {
        sum += (triangle[1] - triangle[0]).CrossProduct(triangle[2] - triangle[0]).DotProduct(normal) * 0.5;
    }
    EXPECT_NEAR(sum, area, 1e-6 * (1.0 + tilted.GetLength()));
    EXPECT_NEAR(tilted.GetPlanarArea(), area, 1e-6 * (1.0 + tilted.GetLength()));
}

TEST(Polygon3DTest, TrianglesCoverTheAreaOnce) {
    const Ring square = Rectangle(0, 0, 16, 16);
    const Ring comb = [] {
        Ring ring{Point2D(0, 0)};
        for (int i = 0; i < 40; ++i) {
            ring.emplace_back(i, 1.0);
            ring.emplace_back(i + 0.5, 100.0);
        }
        ring.emplace_back(40, 0);
        return ring;
    }();
    const Ring spiral = [] {
        Ring ring;
        for (int i = 0; i < 200; ++i) ring.emplace_back(Angle(0.2 * i), 1.0 + 0.2 * i);
        for (int i = 200; i-- > 0;) ring.emplace_back(Angle(0.2 * i), 0.5 + 0.2 * i);
        return ring;
    }();
    struct Row {
        const char* why;
        Ring ring;
        std::vector<Ring> holes;
    };
    const Row rows[] = {
        {"triangle", {Point2D(0, 0), Point2D(4, 0), Point2D(0, 3)}, {}},
        {"points on straight sides", {Point2D(0, 0), Point2D(1, 0), Point2D(2, 0), Point2D(2, 2), Point2D(0, 2)}, {}},
        {"comb", comb, {}},
        {"spiral", spiral, {}},
        {"hole", square, {Rectangle(4, 4, 2, 2)}},
        {"hole corner on the ring's side", square, {{Point2D(8, 0), Point2D(10, 4), Point2D(6, 4)}}},
        {"hole corner on the ring's corner", square, {{Point2D(0, 0), Point2D(4, 2), Point2D(2, 4)}}},
        {"hole side along the ring's side", square, {Rectangle(4, 0, 4, 4)}},
        {"hole that cuts the area in two", square, {Rectangle(0, 4, 16, 2)}},
        {"hole that leaves the corners", square, {{Point2D(8, 0), Point2D(16, 8), Point2D(8, 16), Point2D(0, 8)}}},
        {"holes corner to corner", square, {Rectangle(2, 2, 4, 4), Rectangle(6, 6, 4, 4)}},
        {"holes side by side", square, {Rectangle(2, 2, 4, 4), Rectangle(6, 3, 4, 2)}},
        {"ring that touches itself at a point",
         {Point2D(0, 0), Point2D(4, 4), Point2D(8, 0), Point2D(8, 8), Point2D(4, 4), Point2D(0, 8)},
         {}},
        {"hole bridged into the ring",
         {Point2D(0, 0), Point2D(8, 0), Point2D(8, 8), Point2D(0, 8), Point2D(0, 0), Point2D(2, 2), Point2D(2, 4),
          Point2D(4, 4), Point2D(4, 2), Point2D(2, 2)},
         {}},
        {"repeated points", {Point2D(0, 0), Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(4, 4)}, {}},
    };
    for (const Row& row : rows) {
        for (int form = 0; form < 4; ++form) {
            SCOPED_TRACE(testing::Message() << row.why << ", form " << form);
            Polygon2D polygon = Polygon(row.ring, row.holes);
            if ((form & 1) != 0) polygon.Reverse();
            for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries() && (form & 2) != 0; ++i) {
                polygon.GetHoleBoundary(i).Reverse();
            }
            CheckTriangulations(polygon);
        }
    }
}

TEST(Polygon3DTest, RandomStarsWithHolesAreCoveredOnce) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240601));
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        Polygon2D polygon(RandomStar(random, Point2D(0, 0), 100.0, 3 + 4 * round));
        // The inner circle of the star has a radius of at least 20 cos(pi / n).
        for (int i = 0; i < round % 10 && round > 2; ++i) {
            polygon.AppendHoleBoundary(RandomStar(random, Point2D(Angle(0.7 * i), 10.0), 3.0, 3 + i));
        }
        CheckTriangulations(polygon);
        std::vector<unsigned int> corners;
        ASSERT_TRUE(Polygon3D(polygon, 0.0).Triangulate(corners, 1e-10));
        EXPECT_EQ(corners.size() / 3, polygon.GetTotalSize() + 2 * polygon.GetNumHoleBoundaries() - 2);
    }
}

TEST(Polygon3DTest, TriangulationRefusesWhatIsNoArea) {
    const Ring square = Rectangle(0, 0, 16, 16);
    const double infinity = std::numeric_limits<double>::infinity();
    struct Row {
        const char* why;
        Polygon2D polygon;
    };
    const Row rows[] = {
        {"empty", Polygon({})},
        {"holes without a ring", Polygon({}, {square})},
        {"two points", Polygon({Point2D(0, 0), Point2D(1, 0)})},
        {"one line", Polygon({Point2D(0, 0), Point2D(1, 1), Point2D(3, 3)})},
        {"bow tie", Polygon({Point2D(0, 0), Point2D(2, 2), Point2D(2, 0), Point2D(0, 2)})},
        {"bow tie with a point at the knot",
         Polygon({Point2D(0, 0), Point2D(1, 1), Point2D(2, 2), Point2D(2, 0), Point2D(1, 1), Point2D(0, 2)})},
        {"twice round", Polygon({Point2D(0, 10), Point2D(-6, -8), Point2D(9.5, 3), Point2D(-9.5, 3), Point2D(6, -8)})},
        {"hole outside", Polygon(square, {Rectangle(20, 0, 2, 2)})},
        {"hole across the ring", Polygon(square, {Rectangle(12, 2, 8, 2)})},
        {"hole in a hole", Polygon(square, {Rectangle(2, 2, 8, 8), Rectangle(4, 4, 2, 2)})},
        {"hole as large as the ring", Polygon(square, {square})},
        {"not a number", Polygon({Point2D(0, 0), Point2D(1, 0), Point2D(0, std::nan(""))})},
        {"infinite", Polygon({Point2D(0, 0), Point2D(infinity, 0), Point2D(0, 1)})},
        {"too large", Polygon({Point2D(-1e308, 0), Point2D(1e308, 0), Point2D(0, 1e308)})},
        {"too small", Polygon({Point2D(0, 0), Point2D(1e-12, 0), Point2D(0, 1e-12)})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<unsigned int> corners{7};
        std::vector<Triangle3D> triangles(1);
        const Polygon3D polygon(row.polygon, 0.0);
        EXPECT_FALSE(polygon.TriangulateByProjection(ProjectionPlane::XY, corners, 1e-10));
        EXPECT_FALSE(polygon.Triangulate(corners, 1e-10));
        EXPECT_FALSE(polygon.Triangulate(triangles, 1e-10));
        EXPECT_EQ(corners, std::vector<unsigned int>{7});
        EXPECT_EQ(triangles.size(), 1U);
    }
}

TEST(Polygon3DTest, NormalAreaAndWindingBelongToThePlaneOfBestFit) {
    struct Row {
        const char* why;
        std::vector<Point3D> ring;
        Vec3D normal;
        double area;
        WindingValue winding;
    };
    const Row rows[] = {
        {"level",
         {Point3D(0, 0, 5), Point3D(2, 0, 5), Point3D(2, 2, 5), Point3D(0, 2, 5)},
         Vec3D(0, 0, 1),
         4.0,
         WindingValue::CounterClockwise},
        {"wall",
         {Point3D(0, 0, 0), Point3D(3, 0, 0), Point3D(3, 0, 2), Point3D(0, 0, 2)},
         Vec3D(0, -1, 0),
         6.0,
         WindingValue::Vertical},
        {"roof seen from below",
         {Point3D(0, 0, 0), Point3D(0, 4, 0), Point3D(3, 4, 4), Point3D(3, 0, 4)},
         Vec3D(0.8, 0, -0.6),
         20.0,
         WindingValue::Clockwise},
        {"saddle",
         {Point3D(0, 0, 1), Point3D(2, 0, -1), Point3D(2, 2, 1), Point3D(0, 2, -1)},
         Vec3D(0, 0, 1),
         4.0,
         WindingValue::CounterClockwise},
        {"line", {Point3D(0, 0, 0), Point3D(1, 1, 1), Point3D(2, 2, 2)}, Vec3D(), 0.0, WindingValue::Vertical},
    };
    for (const Vec3D& shift : {Vec3D(), Vec3D(385000, 6672000, 120)}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            Polygon3D polygon(row.ring);
            polygon.Translate(shift);
            EXPECT_THAT(polygon.GetNormal(), IsNear(row.normal, 1e-9));
            EXPECT_NEAR(polygon.GetPlanarArea(), row.area, 1e-8);
            EXPECT_EQ(polygon.GetPlanarWinding(), row.winding);
            EXPECT_EQ(polygon.IsPlanarConvex(), row.area > 0.0);
            if (row.winding == WindingValue::Vertical) {
                EXPECT_FALSE(polygon.SetPlanarWinding(WindingValue::Clockwise));
                continue;
            }
            EXPECT_EQ(polygon.SetPlanarWinding(WindingValue::Clockwise), row.winding != WindingValue::Clockwise);
            EXPECT_EQ(polygon.GetPlanarWinding(), WindingValue::Clockwise);
            EXPECT_NEAR(polygon.GetPlanarArea(), row.area, 1e-8);
        }
    }
    EXPECT_EQ(Polygon3D().GetNormal().Length(), 0.0);
    EXPECT_EQ(Polygon3D().GetPlanarArea(), 0.0);
}

TEST(Polygon3DTest, BehavesLikeThePlanPolygonWhereTheNamesAgree) {
    const Polygon2D plan = Polygon(Rectangle(0, 0, 4, 3), {Rectangle(1, 1, 1, 1)});
    Polygon3D polygon(plan, 2.0);
    EXPECT_TRUE(polygon.GetPolygon().IsEqualTo(plan, 1e-12));
    EXPECT_EQ(polygon.GetLength(), 14.0);
    EXPECT_EQ(polygon.GetTotalSize(), 8U);
    EXPECT_EQ(polygon.GetPointOfAll(5).GetX(), 2.0);
    EXPECT_EQ(polygon.GetPointOfAll(8).GetX(), 0.0);
    const std::unique_ptr<IGeometry> copy(polygon.Clone());
    EXPECT_TRUE(Geometry::AreEqual(polygon, static_cast<const Polygon3D&>(*copy), 1e-12));
    static_cast<Polygon3D&>(*copy).GetHoleBoundary(0)[0].SetZ(2.5);
    EXPECT_FALSE(polygon.IsEqualTo(*copy, 0.5)) << "strict";
    EXPECT_TRUE(polygon.IsEqualTo(*copy, 0.5001));
    EXPECT_FALSE(polygon.IsEqualTo(plan, 10.0));

    EXPECT_TRUE(polygon.InsertAtLength(5.0, Point3D(4, 1, 9)));
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetZ(), 9.0);
    polygon.GetPoint(2).SetZ(10.0);
    EXPECT_EQ(polygon.GetBoundingBox3D().GetMaxPoint().GetZ(), 10.0);
    polygon.Close();
    EXPECT_TRUE(polygon.IsClosed(1e-9));
    double z = 0.0;
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(4, 0.5), z, 1e-4, 0), 1);
    EXPECT_NEAR(z, 6.0, 1e-12);
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(1.5, 1), z, 1e-4, 0), 1) << "on the hole";
    EXPECT_EQ(z, 2.0);
    EXPECT_EQ(polygon.GetHeightAtBorder(Point2D(3, 2), z, 1e-4, 0), 0);
    polygon.RemoveClosingPoint(1e-9);
    polygon.Insert(0, Point3D(0, 0, 2.001));
    polygon.ReducePoints(0.01);
    EXPECT_EQ(polygon.GetSize(), 5U);
    polygon.Clear();
    EXPECT_EQ(polygon.GetTotalSize(), 0U);

    Polygon3D lifted;
    Matrix3D up;
    plan.Transform(up.Translate(1.0, 2.0, 3.0), lifted);
    EXPECT_TRUE(lifted.IsEqualTo(Polygon3D(plan, 0.0).Translate(Vec3D(1, 2, 3)), 1e-12));
}

}  // namespace
}  // namespace Kalvio::Math
