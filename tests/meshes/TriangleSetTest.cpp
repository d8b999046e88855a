#include "meshes/Meshes.h"

#include <ranges>

namespace Kalvio::Math {
namespace {

// A mesh that is given three corners, and then its own vertices once more.
template <class Set, class PointType>
Set CheckedMesh(Set set, const std::vector<PointType>& corners, MathTypes type) {
    set.AppendVertices(corners);
    set.AppendVertices(set.GetVertices());
    EXPECT_EQ(set.GetType(), type);
    EXPECT_EQ(std::pair(set.GetTopologicalDimension(), set.GetVerticesSize()), std::pair(2U, 6U));
    EXPECT_THAT(set.GetBoundingBox().GetMinPoint(), IsNear(PointType(), 0.0));
    EXPECT_THAT(set.GetBoundingBox3D().GetSize(), IsNear(Vec3D(4, 2, set.GetDimension() == 3 ? 9 : 0), 0.0));
    std::vector<Point3D> vertices(1);
    EXPECT_TRUE(Geometry::GetVertices(set, vertices) && vertices.size() == 7);
    EXPECT_THAT(CoordinatesOf(vertices[6]), IsNear(CoordinatesOf(set.GetVertex(5)), 0.0)) << "named or not";
    if constexpr (requires { set.GetIndexes(); }) {
        set.AppendIndexes({0, 1, 2});
        Set more = set;
        more.AppendIndexes({0});
        EXPECT_FALSE(more.IsEqualTo(set, 0.3));
    }
    const std::unique_ptr<Set> copy(set.Clone());
    EXPECT_TRUE(copy->IsEqualTo(static_cast<const IGeometry&>(set), 1e-12));
    copy->SetCCW(true);
    EXPECT_FALSE(copy->IsEqualTo(set, 0.3)) << "the flag counts";
    EXPECT_FALSE(set.IsEqualTo(Point2D(), 1.0));
    return set;
}

TEST(MeshTest, EverySetIsAGeometry) {
    const std::vector<Point2D> plan = {{0, 0}, {4, 0}, {0, 2}};
    const std::vector<Point3D> space = {{0, 0, 0}, {4, 0, 1}, {0, 2, 9}};
    auto flatFaces = CheckedMesh(IndexedFaceSet2D(3), plan, MathTypes::IndexedFaceSet2D), flatFours = flatFaces;
    auto faces = CheckedMesh(IndexedFaceSet3D(3), space, MathTypes::IndexedFaceSet3D), fours = faces;
    auto flat = CheckedMesh(IndexedTriangleSet2D(), plan, MathTypes::IndexedTriangleSet2D);
    CheckedMesh(IndexedTriangleSet3D(), space, MathTypes::IndexedTriangleSet3D);
    CheckedMesh(TriangleStrip3D(), space, MathTypes::TriangleStrip3D);
    fours.SetFaceSize(4);
    flatFours.SetFaceSize(4);
    EXPECT_FALSE(faces.IsEqualTo(fours, 1.0) || flatFaces.IsEqualTo(flatFours, 1.0)) << "the face size counts";
    EXPECT_THAT(faces.Translate(Vec3D(1, 2, 3)).GetVertex(1), IsNear(Point3D(5, 2, 4), 0.0));

    IndexedTriangleSet3D lifted;
    flat.SetCCW(true);
    flat.Transform(Matrix3D(Matrix3D::TranslateType::Translation, 1, 2, 3), lifted);
    EXPECT_THAT(lifted.GetVertex(1), IsNear(Point3D(5, 2, 3), 0.0));
    EXPECT_TRUE(lifted.GetTrianglesCount() == 1 && lifted.IsCCW());
    EXPECT_EQ(flat.GetWinding(), WindingValue::CounterClockwise);
}

static_assert(std::ranges::random_access_range<const IndexedTriangleSet3D>);
static_assert(std::ranges::sized_range<IndexedTriangleSet2D>);

TEST(TriangleSetTest, TrianglesAreARangeOfWholeOnes) {
    const IndexedTriangleSet3D set({{0, 0, 1}, {2, 0, 1}, {0, 2, 1}, {2, 2, 1}}, {0, 1, 2, 2, 1, 3, 0, 1, 9, 3, 2});
    IndexedTriangleSet2D plan;
    plan.AppendVertices({{0, 0}, {2, 0}, {0, 2}});
    plan.AppendIndexes({2, 0, 1});
    double area = 0.0;
    std::for_each(set.begin(), set.begin() + 2, [&](const Triangle3D& triangle) { area += triangle.GetArea(); });
    EXPECT_TRUE(set.size() == 3 && area == 4.0 && (*(set.end() - 2)).GetPointC().GetX() == 2.0);
    EXPECT_TRUE(set[2].GetPointB().GetX() == 2.0 && std::isnan(set.begin()[2].GetPointC().GetX())) << "no vertex";
    for (const auto& [a, b, c] : plan) EXPECT_EQ(Vec2D(b - a).PerpDotProduct(c - a), 4.0);
}

TEST(TriangleSetTest, AddTriangleOrientsInPlan) {
    // Counter-clockwise, clockwise, and vertical, which is kept by a counter-clockwise set alone.
    const std::array<Point3D, 2> rows[] = {
        {{{1, 0, 0}, {0, 1, 0}}}, {{{0, 1, 0}, {1, 0, 0}}}, {{{1, 0, 0}, {1, 0, 1}}}};
    for (std::size_t i = 0; i < 12; ++i) {
        const bool ccw = i / 3 % 2 == 0, orient = i < 6, isReversed = orient && (i % 3 == 1 ? ccw : !ccw);
        const Indexes expected = isReversed ? Indexes{1, 0, 2} : Indexes{0, 1, 2};
        const auto& [b, c] = rows[i % 3];
        IndexedTriangleSet3D set;
        set.SetCCW(ccw);
        set.AddTriangle({0, 0, 0}, b, c, orient, false);
        EXPECT_EQ(set.GetIndexes(), expected) << i;
        set.AddTriangle({0, 0, 0}, b, c, orient, true);
        EXPECT_EQ(std::pair(set.GetVerticesSize(), set.GetIndexesSize()), std::pair(3U, 6U));
        EXPECT_TRUE(set.RemoveDuplicatedTriangles());
        EXPECT_EQ(set.GetIndexes(), expected);
    }
}

TEST(TriangleSetTest, WindingsByAxisAndInPlan) {
    using enum WindingValue;
    const std::tuple<const char*, Point3D, Point3D, WindingValue, WindingValue> rows[] = {
        // by axis, in plan
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
    for (const auto& [why, b, c, byAxis, inPlan] : rows) {
        const IndexedTriangleSet3D set({{}, b, c}, {0, 1, 2});
        EXPECT_EQ(std::pair(set.GetWinding(), set.GetWinding2D(0)), std::pair(byAxis, inPlan)) << why;
        all.Merge(set, false, 0.0);
    }
    all.AppendIndexes({0, 1, 4000000000U, 1});
    std::array<unsigned int, 3> totals{};
    all.GetTotalWindings2D(totals[0], totals[1], totals[2]);
    EXPECT_EQ(totals, (std::array{5U, 2U, 4U}));
    for (const bool flag : {false, true}) {
        IndexedTriangleSet3D line({{}, {1, 0, 0}}, {0, 1, 0});
        line.SetCCW(flag);
        all.SetCCW(flag);
        EXPECT_EQ(line.GetWinding(), flag ? CounterClockwise : Clockwise) << "two vertices: what the flag tells";
        for (const unsigned int missing : {10U, 11U, 0x55555556U, 0xFFFFFFFFU}) {  // 3 i + 2 exceeds 32 bits
            EXPECT_EQ(all.GetWinding2D(missing), Vertical);
            EXPECT_EQ(all.GetWinding(missing), flag ? CounterClockwise : Clockwise);
        }
    }
}

TEST(TriangleSetTest, AStripIsTheSetOfItsTriangles) {
    // A roof that rises and falls at 45 degrees, clockwise from above, then a quad of no area.
    TriangleStrip3D roof{Point3D(0, 0, 0), Point3D(0, 5, 0), Point3D(2, 0, 2), Point3D(2, 5, 2),
                         Point3D(4, 0, 0), Point3D(4, 5, 0), Point3D(4, 0, 0), Point3D(4, 5, 0)};
    Indexes corners{7};
    ASSERT_TRUE(roof.ComputeIndexes(corners));
    EXPECT_EQ(corners, (Indexes{0, 1, 3, 0, 3, 2, 2, 3, 5, 2, 5, 4, 4, 5, 7, 4, 7, 6}));
    IndexedTriangleSet3D set(roof.GetVertices(), corners);
    for (const auto& [ccw, perVertex] : {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        roof.SetCCW(ccw);
        set.SetCCW(ccw);
        std::vector<Vec3D> normals(1), expected;
        roof.ComputeNormals(perVertex, normals);
        set.ComputeNormals(perVertex, expected);
        EXPECT_EQ(normals.size(), perVertex ? 8U : 6U);
        EXPECT_THAT(normals, testing::Pointwise(AreNear(0.0), expected));
    }
    TriangleStrip3D strip;
    for (const bool isLadder : {true, false, true, false}) {
        std::vector<Vec3D> normals(1);
        EXPECT_EQ(strip.ComputeIndexes(corners = {7}), isLadder) << strip.GetSize();
        strip.ComputeNormals(false, normals);
        EXPECT_TRUE(corners.empty() == isLadder && normals.empty()) << "indexes are untouched when it fails";
        strip.AppendVertices({Point3D(1, 2, strip.GetSize())});
    }
}

TEST(TriangleSetTest, EditsOfTrianglesAndVertices) {
    const std::vector<Point3D> p = {{0, 0, 1}, {9, 9, 9}, {4, 0, 1}, {0, 4, 1}, {4, 4, 1 + 1e-3}, {7, 7, 7}};
    IndexedTriangleSet3D set(p, {2, 3, 0, 0, 2, 3, 4, 3, 2, 3, 2, 4});
    EXPECT_TRUE(set.RemoveDuplicatedTriangles());
    EXPECT_EQ(set.GetIndexes(), (Indexes{2, 3, 0, 4, 3, 2})) << "the first of each stays";
    EXPECT_TRUE(set.IsPlanar(1.1e-3) && !set.IsPlanar(0.9e-3));
    EXPECT_EQ(set.RemoveUnusedVertices(), 2U);
    EXPECT_EQ(set.GetIndexes(), (Indexes{1, 2, 0, 3, 2, 1}));
    set.AppendIndexes({0, 1, 1, 0, 1, 2, 7, 7, 8});
    EXPECT_FALSE(set.RemoveLineTriangles(-1.0, true) || set.RemoveLineTriangles(kNan, true));
    EXPECT_TRUE(set.RemoveLineTriangles(0.0, true) && !set.RemoveLineTriangles(3.9, true));
    EXPECT_EQ(set.GetIndexes(), (Indexes{1, 2, 0, 3, 2, 1, 0, 1, 2, 7, 7, 8}));
    EXPECT_TRUE(set.RemoveLineTriangles(4.0, true)) << "inclusive";
    EXPECT_EQ(set.GetIndexes(), (Indexes{2, 1, 0, 7, 7, 8})) << "vertex 0 has gone";
    set.AppendIndexes({0, 1, 2, 8, 7, 7, 7, 8, 8, 8, 8});
    EXPECT_TRUE(set.RemoveDuplicatedTriangles());
    EXPECT_EQ(set.GetIndexes(), (Indexes{2, 1, 0, 7, 7, 8, 7, 8, 8, 8, 8})) << "by indexes alone";

    constexpr unsigned int no = 0xFFFFFFFFU;
    IndexedTriangleSet3D odd({{}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 4, 5});
    odd.Merge(IndexedTriangleSet3D({{}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 0xFFFFFFFEU, 2, 1, 0}), false, 0.0);
    odd.Merge(odd, false, 0.0);
    EXPECT_EQ(odd.GetIndexes(), (Indexes{0, 1, 4, 3, 4, no, 5, 4, 3, 6, 7, 10, 9, 10, no, 11, 10, 9}))
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
        const Vec2D place(std::floor(random(0.0, 9.0)), random(0.0, 9.0));
        points.insert(points.end(), i % 7 == 0 ? 2 : 1, {origin + place, i % 2 == 0 ? 5.0 : random(0.0, 10.0)});
    }
    IndexedTriangleSet3D set;
    for (int i = 0; i < 300; ++i) set.AppendVertex({origin + Vec2D(random(-9, 20), random(0, 9)), random(0, 10)});
    for (int i = 0; i < 40; ++i) set.AppendVertex({set.GetVertex(i).GetPoint2D(), std::array{1e3, 1e9}[i % 2]});
    const std::vector<Point3D> before = set.GetVertices();
    EXPECT_TRUE(set.AdjustVerticesToClosest(points));
    for (unsigned int i = 0; i < before.size(); ++i) {
        const Point3D& nearest = *std::min_element(points.begin() + 2, points.end(), [&](const auto& a, const auto& b) {
            return (a - before[i]).NormSquared() < (b - before[i]).NormSquared();
        });
        EXPECT_THAT(set.GetVertex(i), IsNear(nearest, 0.0)) << "the first on ties";
    }
    EXPECT_FALSE(set.AdjustVerticesToClosest(points) || set.AdjustVerticesToClosest({})) << "they lie there already";
    set.GetVertices() = {{0.5, 0, 0}};
    EXPECT_TRUE(set.AdjustVerticesToClosest({{1, 0, 0}, {0, 0, 0}}) && set.GetVertex(0).GetX() == 1.0) << "the first";
    EXPECT_FALSE(set.AdjustVerticesToClosest({{1, -0.0, 0}}) || std::signbit(set.GetVertex(0).GetY())) << "to the bit";

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
