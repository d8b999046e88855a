#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/meshes/IndexedFaceSet2D.h"
#include "kalvio/meshes/IndexedFaceSet3D.h"
#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

template <class Set, class PointType>
Set Filled(Set set, const std::vector<PointType>& corners) {
    set.AppendVertices(corners);
    set.AppendVertices(set.GetVertices());
    set.AppendIndexes({0, 1, 2});
    return set;
}

template <class Set>
void CheckObject(const Set& set, MathTypes type) {
    EXPECT_EQ(set.GetType(), type);
    EXPECT_EQ(set.GetTopologicalDimension(), 2U);
    EXPECT_EQ(set.GetVerticesSize(), 6U);
    std::vector<Point3D> vertices(1);
    EXPECT_TRUE(Geometry::GetVertices(set, vertices));
    ASSERT_EQ(vertices.size(), 7U);
    EXPECT_THAT(CoordinatesOf(vertices[6]), IsNear(CoordinatesOf(set.GetVertex(5)), 0.0)) << "named or not";
    const std::unique_ptr<Set> copy(set.Clone());
    EXPECT_TRUE(copy->IsEqualTo(static_cast<const IGeometry&>(set), 1e-12));
    copy->GetVertex(2).SetX(0.25);
    EXPECT_FALSE(copy->IsEqualTo(set, 0.25)) << "strict";
    EXPECT_TRUE(copy->IsEqualTo(set, 0.3));
    copy->SetCCW(true);
    EXPECT_FALSE(copy->IsEqualTo(set, 0.3)) << "the flag counts";
    *copy = set;
    copy->AppendIndexes({0});
    EXPECT_FALSE(copy->IsEqualTo(set, 0.3));
    EXPECT_FALSE(set.IsEqualTo(Point2D(), 1.0));
}

TEST(MeshTest, EverySetIsAGeometry) {
    const std::vector<Point2D> plan = {{0, 0}, {4, 0}, {0, 2}};
    const std::vector<Point3D> space = {{0, 0, 1}, {4, 0, 1}, {0, 2, 9}};
    const auto faces = Filled(IndexedFaceSet3D(3), space);
    CheckObject(Filled(IndexedFaceSet2D(3), plan), MathTypes::IndexedFaceSet2D);
    CheckObject(faces, MathTypes::IndexedFaceSet3D);
    CheckObject(Filled(IndexedTriangleSet2D(), plan), MathTypes::IndexedTriangleSet2D);
    CheckObject(Filled(IndexedTriangleSet3D(), space), MathTypes::IndexedTriangleSet3D);
    EXPECT_FALSE(Geometry::AreEqual(faces, Filled(IndexedFaceSet3D(4), space), 1.0)) << "the face size counts";
    EXPECT_THAT(faces.GetBoundingBox().GetCenter(), IsNear(Point3D(2, 1, 5), 0.0));
    EXPECT_THAT(faces.GetBoundingBox3D().GetSize(), IsNear(Vec3D(4, 2, 8), 0.0));
    EXPECT_THAT(faces.Translate(Vec3D(1, 2, 3)).GetVertex(1), IsNear(Point3D(5, 2, 4), 0.0));

    IndexedTriangleSet3D lifted;
    Filled(IndexedTriangleSet2D(), plan).Transform(Matrix3D(Matrix3D::TranslateType::Translation, 1, 2, 3), lifted);
    EXPECT_THAT(lifted.GetVertex(1), IsNear(Point3D(5, 2, 3), 0.0));
    EXPECT_EQ(lifted.GetTrianglesCount(), 1U);
}

TEST(TriangleSetTest, VolumesOfSolidsAndTerrain) {
    for (const Point2D& origin : surveyOrigins) {
        const IndexedTriangleSet3D block = Block({origin, 250.0}, {4, 5, 6});
        // 2 pi R times the area of the section, both of n-gons instead of circles.
        const double share = std::sin(2.0 * kPi / 40) / (2.0 * kPi / 40);
        IndexedTriangleSet3D torus = Torus(origin, 250.0, 8.0, 2.0, 40);
        const double ofTorus = 2.0 * kPi * 8.0 * share * kPi * 4.0 * share;
        for (const double reference : {0.0, 250.0, -1e3}) {
            EXPECT_NEAR(block.GetVolume(reference), 120.0, 1e-9);
            EXPECT_NEAR(torus.GetVolume(reference), ofTorus, 1e-8);
        }
        torus.InvertAllTriangles();
        EXPECT_NEAR(torus.GetVolume(250.0), -ofTorus, 1e-8);
        // z = x + 2 y over a square of side 6 less one field, over the height -1: the integral of z + 1.
        const auto terrain = Grid(
            origin, 6, [](double x, double y) { return x + 2.0 * y; }, [](int x, int y) { return x != 2 || y != 3; });
        EXPECT_NEAR(terrain.Translate(Vec3D(7, 7, 0.5)).GetVolume(-1.0), 36.0 * 10.5 - 11.0, 1e-9);
    }
    EXPECT_EQ(IndexedTriangleSet3D().GetVolume(3.0), 0.0);
}

TEST(TriangleSetTest, AddTriangleOrientsInPlan) {
    const std::vector<unsigned int> kept = {0, 1, 2}, reversed = {1, 0, 2};
    struct Row {
        const char* why;
        Point3D b, c;
        bool ccw, orient;
        const std::vector<unsigned int>& expected;
    };
    const Row rows[] = {
        {"not asked for", {0, 1, 0}, {1, 0, 0}, true, false, kept},
        {"runs as the set", {1, 0, 0}, {0, 1, 0}, true, true, kept},
        {"runs the other way", {0, 1, 0}, {1, 0, 0}, true, true, reversed},
        {"clockwise set, clockwise triangle", {0, 1, 0}, {1, 0, 0}, false, true, kept},
        {"clockwise set, counter-clockwise triangle", {1, 0, 0}, {0, 1, 0}, false, true, reversed},
        {"vertical, kept", {1, 0, 0}, {1, 0, 1}, true, true, kept},
        {"vertical, reversed", {1, 0, 0}, {1, 0, 1}, false, true, reversed},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        IndexedTriangleSet3D set;
        set.SetCCW(row.ccw);
        set.AddTriangle({0, 0, 0}, row.b, row.c, row.orient, false);
        EXPECT_EQ(set.GetIndexes(), row.expected);
        set.AddTriangle({0, 0, 0}, row.b, row.c, row.orient, true);
        EXPECT_EQ(std::pair(set.GetVerticesSize(), set.GetIndexesSize()), std::pair(3U, 6U));
        EXPECT_TRUE(set.RemoveDuplicatedTriangles());
        EXPECT_EQ(set.GetIndexes(), row.expected);
    }
}

TEST(TriangleSetTest, WindingsByAxisAndInPlan) {
    using enum WindingValue;
    struct Row {
        const char* why;
        Point3D b, c;
        WindingValue byAxis, inPlan;
    };
    const Row rows[] = {
        {"flat", {1, 0, 0}, {0, 1, 0}, CounterClockwise, CounterClockwise},
        {"flat, reversed", {0, 1, 0}, {1, 0, 0}, Clockwise, Clockwise},
        {"steep, judged by x", {0, 1, 0}, {-0.1, 0, 1}, CounterClockwise, CounterClockwise},
        {"steep, its x against its z", {0, 1, 0}, {0.1, 0, 1}, CounterClockwise, Clockwise},
        {"normal (1, -1, 0): y before x", {1, 1, 0}, {0, 0, 1}, Clockwise, Vertical},
        {"normal (-1, 0, 1): z before x", {0, -1, 0}, {1, 0, 1}, CounterClockwise, CounterClockwise},
        {"hardly off the vertical", {0, 1, 0}, {-1e-10, 0, 1}, CounterClockwise, CounterClockwise},
        {"too near to the vertical", {0, 1, 0}, {-1e-12, 0, 1}, CounterClockwise, Vertical},
        {"small, but flat", {1e-7, 0, 0}, {0, 1e-7, 0}, CounterClockwise, CounterClockwise},
        {"a line", {1, 1, 1}, {2, 2, 2}, Clockwise, Vertical},
    };
    IndexedTriangleSet3D all;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const IndexedTriangleSet3D set({{}, row.b, row.c}, {0, 1, 2});
        EXPECT_EQ(set.GetWinding(), row.byAxis);
        EXPECT_EQ(set.GetWinding2D(0), row.inPlan);
        all.Merge(set, false, 0.0);
    }
    all.AppendIndexes({0, 1, 4000000000U, 1});
    unsigned int ccw = 0, cw = 0, vertical = 0;
    all.GetTotalWindings2D(ccw, cw, vertical);
    EXPECT_EQ((std::array{ccw, cw, vertical}), (std::array{5U, 2U, 4U}));
    for (const unsigned int missing : {10U, 11U, 0x55555556U, 0xFFFFFFFFU}) {
        EXPECT_EQ(all.GetWinding2D(missing), Vertical);
        EXPECT_EQ(all.GetWinding(missing), Clockwise);
    }
    all.SetCCW(true);
    EXPECT_EQ(all.GetWinding(0x55555556U), CounterClockwise) << "3 i + 2 exceeds 32 bits";
    IndexedTriangleSet3D line({{}, {1, 0, 0}}, {0, 1, 0});
    line.SetCCW(true);
    EXPECT_EQ(line.GetWinding(), CounterClockwise) << "two vertices: what the flag tells";
}

TEST(TriangleSetTest, NormalsOfFacesVerticesAndCorners) {
    IndexedTriangleSet3D block = Block({385000.0, 6672000.0, 0.0}, {2, 2, 2});
    std::vector<Vec3D> faces, vertices, corners, all;
    block.ComputeNormals(false, faces);
    block.ComputeNormals(true, vertices);
    block.ComputeNormals(true, corners, Angle(kPi / 6));
    block.ComputeNormals(true, all, Angle(kPi / 2));
    ASSERT_EQ((std::array{faces.size(), vertices.size(), corners.size()}), (std::array<std::size_t, 3>{12, 8, 36}));
    Point3D p[3];
    for (std::size_t i = 0; i < 12; ++i) {
        ASSERT_TRUE(block.GetTriangleAt(i, p[0], p[1], p[2]));
        EXPECT_GT(faces[i].DotProduct(p[0] - Point3D(385001.0, 6672001.0, 1.0)), 0.9) << "outward";
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_THAT(corners[3 * i + k], IsNear(faces[i], 1e-15)) << "30 degrees: every face its own";
            EXPECT_THAT(all[3 * i + k], IsNear(vertices[block.GetIndexes()[3 * i + k]], 1e-15)) << "90 degrees: all";
        }
    }
    const Vec3D before = faces[0];
    block.SetCCW(false);
    block.ComputeNormals(false, faces);
    ASSERT_EQ(faces.size(), 12U) << "replaced";
    EXPECT_THAT(faces[0], IsNear(-before, 0.0)) << "turned with the flag";

    // On a fine ring the normals of vertices point away from the circle in the middle.
    const auto torus = Torus({0, 0}, 0.0, 8.0, 2.0, 90);
    torus.ComputeNormals(true, vertices);
    for (unsigned int i = 0; i < torus.GetVerticesSize(); ++i) {
        const Vec3D at = torus.GetVertex(i) - Point3D();
        const Vec2D inMiddle = Vec2D(at.GetX(), at.GetY()) * (8.0 / at.Length2D());
        EXPECT_THAT(vertices[i], IsNear((at - Vec3D(inMiddle, 0.0)) * 0.5, 0.05));
    }
}

TEST(TriangleSetTest, EditsOfTrianglesAndVertices) {
    const std::vector<Point3D> p = {{0, 0, 1}, {9, 9, 9}, {4, 0, 1}, {0, 4, 1}, {4, 4, 1 + 1e-3}, {7, 7, 7}};
    IndexedTriangleSet3D set(p, {2, 3, 0, 0, 2, 3, 4, 3, 2, 3, 2, 4});
    EXPECT_TRUE(set.RemoveDuplicatedTriangles());
    EXPECT_EQ(set.GetIndexes(), (std::vector<unsigned int>{2, 3, 0, 4, 3, 2})) << "the first of each stays";
    EXPECT_TRUE(set.IsPlanar(1.1e-3) && !set.IsPlanar(0.9e-3));
    EXPECT_EQ(set.RemoveUnusedVertices(), 2U);
    EXPECT_EQ(set.GetIndexes(), (std::vector<unsigned int>{1, 2, 0, 3, 2, 1}));
    set.AppendIndexes({0, 1, 1, 0, 1, 2, 7, 7, 8});
    EXPECT_TRUE(set.RemoveLineTriangles(0.0, true));
    EXPECT_FALSE(set.RemoveLineTriangles(3.9, true));
    EXPECT_EQ(set.GetIndexes(), (std::vector<unsigned int>{1, 2, 0, 3, 2, 1, 0, 1, 2, 7, 7, 8}));
    EXPECT_TRUE(set.RemoveLineTriangles(4.0, true)) << "inclusive";
    EXPECT_EQ(set.GetIndexes(), (std::vector<unsigned int>{2, 1, 0, 7, 7, 8})) << "vertex 0 has gone";
    set.AppendIndexes({0, 1, 2, 8, 7, 7, 7, 8, 8, 8, 8});
    EXPECT_TRUE(set.RemoveDuplicatedTriangles());
    EXPECT_EQ(set.GetIndexes(), (std::vector<unsigned int>{2, 1, 0, 7, 7, 8, 7, 8, 8, 8, 8})) << "by indexes alone";

    // Merging a set with itself: one copy is left once duplicates go.
    IndexedTriangleSet3D torus = Torus({0, 0}, 0.0, 8.0, 2.0, 12);
    const IndexedTriangleSet3D before = torus;
    torus.Merge(torus, true, 1e-6);
    EXPECT_EQ(torus.GetTrianglesCount(), 2 * before.GetTrianglesCount());
    EXPECT_TRUE(torus.RemoveDuplicatedTriangles());
    EXPECT_TRUE(torus.IsEqualTo(before, 1e-12));

    IndexedTriangleSet3D odd({{}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 4, 5});
    odd.Merge(IndexedTriangleSet3D({{}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 0xFFFFFFFEU, 2, 1, 0}), false, 0.0);
    odd.Merge(odd, false, 0.0);
    constexpr unsigned int no = 0xFFFFFFFFU;
    EXPECT_EQ(odd.GetIndexes(), (std::vector<unsigned int>{0, 1, 4, 3, 4, no, 5, 4, 3, 6, 7, 10, 9, 10, no, 11, 10, 9}))
        << "as after AppendVertices, but for the other set";
    odd.AppendIndexes({0, 1});
    odd.AddTriangle({}, {1, 0, 0}, {0, 1, 0}, false, false);
    EXPECT_EQ(odd.GetVolume(-1.0), -0.5) << "the last triangle, two reversed ones, and two lines";
}

TEST(TriangleSetTest, VerticesAdjustToTheNearestOfManyPoints) {
    RandomNumbers random(20263);
    const Point2D& origin = surveyOrigins[1];
    std::vector<Point3D> points = {{kNan, 0, 0}, {origin, kInfinity}};
    for (int i = 0; i < 700; ++i) {  // some of them in one place, many on one height
        const double z = i % 2 == 0 ? 5.0 : random(0.0, 10.0);
        points.emplace_back(origin + Vec2D(std::floor(random(0.0, 9.0)), random(0.0, 9.0)), z);
        if (i % 7 == 0) points.push_back(points.back());
    }
    IndexedTriangleSet3D set;
    for (int i = 0; i < 300; ++i) set.AppendVertex({origin + Vec2D(random(-9, 20), random(0, 9)), random(0, 10)});
    for (int i = 0; i < 40; ++i) set.AppendVertex({set.GetVertex(i).GetPoint2D(), std::array{1e3, 1e9}[i % 2]});
    const std::vector<Point3D> before = set.GetVertices();
    EXPECT_TRUE(set.AdjustVerticesToClosest(points));
    for (unsigned int i = 0; i < set.GetVerticesSize(); ++i) {
        const auto square = [&](const Point3D& p) { return (p - before[i]).NormSquared(); };
        const auto nearest =
            std::min_element(points.begin() + 2, points.end(),
                             [&](const Point3D& a, const Point3D& b) { return square(a) < square(b); });
        EXPECT_THAT(set.GetVertex(i), IsNear(*nearest, 0.0)) << "the first on ties";
    }
    EXPECT_FALSE(set.AdjustVerticesToClosest(points)) << "they lie on the points already";
    EXPECT_FALSE(set.AdjustVerticesToClosest({}));

    // Minutes, were all compared with all: in one plane far away, farther than doubles can part, in one place.
    for (const auto& [width, z] : {std::pair(1.0, 1e3), {1.0, 1e12}, {0.0, 0.0}}) {
        points.clear();
        set.Clear();
        for (int i = 0; i < 100000; ++i) {
            points.emplace_back(random(0.0, width), random(0.0, width), 0.0);
            set.AppendVertex({random(0.0, 1.0), random(0.0, 1.0), z});
        }
        EXPECT_TRUE(set.AdjustVerticesToClosest(points));
    }
}

}  // namespace
}  // namespace Kalvio::Math
