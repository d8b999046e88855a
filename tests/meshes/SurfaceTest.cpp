#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

void Scramble(RandomNumbers& random, Indexes& indexes) {
    for (std::size_t i = 0; i < indexes.size(); i += 3) {
        const std::size_t other = random() % (indexes.size() / 3) * 3;
        if (i != other) std::swap_ranges(&indexes[i], &indexes[i] + 3, &indexes[other]);
        if (random() % 2 == 0) std::swap(indexes[i], indexes[i + 1]);
    }
}

// Length of all border strings, their number, and the area in plan on their left.
std::tuple<double, std::size_t, double> BorderOf(const IndexedTriangleSet3D& set) {
    std::vector<LineString3D> strings(1);
    EXPECT_TRUE(set.GetBoundaries(strings));
    double length = 0.0, area = 0.0;
    for (const LineString3D& string : strings) {
        length += string.GetLength();
        area += Polygon2D(string.GetLineString2D()).GetArea();
    }
    return {length, strings.size() - 1, area};
}

TEST(SurfaceTest, BorderOfAnyBoardOfFields) {
    RandomNumbers random(20264);
    for (int trial = 0; trial < 120; ++trial) {
        Fields fields;
        for (int i = 0; i < 81; ++i) {
            if (random(0.0, 1.0) < 0.3 + 0.05 * (trial % 13)) fields.emplace(i % 9, i / 9);
        }
        const auto isKept = [&fields](int x, int y) { return fields.contains(Field(x, y)); };
        IndexedTriangleSet3D grid = Grid(surveyOrigins[trial % 2], 9, kFlat, isKept);
        Scramble(random, grid.GetIndexes());
        IndexedTriangleSet2D plan;
        for (const Point3D& vertex : grid.GetVertices()) plan.AppendVertices({vertex.GetPoint2D()});
        plan.AppendIndexes(grid.GetIndexes());
        plan.AppendIndexes({5, 5, 6, 1, 2, 4000000000U, 7});

        std::vector<Polygon2D> polygons, outers;
        ASSERT_TRUE(plan.GetBoundaries(polygons, true) && plan.GetBoundaries(outers, false));
        const std::size_t parts = PartsOf(fields).size();
        int sides = 0;  // that have no field beyond
        for (const Field& field : fields) {
            for (const Field& beside : Beside(field)) sides += fields.contains(beside) ? 0 : 1;
        }
        ASSERT_EQ(std::pair(polygons.size(), outers.size()), std::pair(parts, parts));
        for (const Polygon2D& outer : outers) EXPECT_EQ(outer.GetNumHoleBoundaries(), 0U);
        double area = 0.0, border = 0.0;
        for (const Polygon2D& polygon : polygons) {
            EXPECT_EQ(polygon.GetWinding(), WindingValue::CounterClockwise);
            area += polygon.GetArea();
            border += polygon.GetLength();
            Point2D fault;
            EXPECT_TRUE(polygon.Validate(fault, true, 1e-6)) << fault;
            for (unsigned int k = 0; k < polygon.GetNumHoleBoundaries(); ++k) {
                const Polygon2D hole(polygon.GetHoleBoundary(k));
                EXPECT_EQ(hole.GetWinding(), WindingValue::Clockwise);
                border += hole.GetLength();
            }
        }
        EXPECT_NEAR(area, static_cast<double>(fields.size()), 1e-7);
        EXPECT_NEAR(border, sides, 1e-7);
        const auto [length, rings, left] = BorderOf(grid);
        EXPECT_NEAR(length, sides, 1e-7);
        EXPECT_TRUE(parts > 1 || std::abs(std::abs(left) - area) < 1e-7) << left << ": all the same way round";
    }
    for (const double bend : {0.0, 1e-9, -1e-9}) {  // of the vertex on the long side of a sliver, in and out
        IndexedTriangleSet2D set;
        set.AppendVertices({{0, 0}, {1, bend}, {2, 0}, {1, 1}});
        set.AppendIndexes({0, 2, 1, 0, 1, 3, 1, 2, 3});
        std::vector<Polygon2D> polygons;
        ASSERT_TRUE(set.GetBoundaries(polygons, true) && polygons.size() == 1);
        EXPECT_TRUE(polygons[0].IsEqualTo(Polygon2D{{0, 0}, {2, 0}, {1, 1}}, 1e-12));
    }
}

TEST(SurfaceTest, BorderOfASurfaceWithOneSide) {
    RandomNumbers random(20267);
    for (unsigned int n = 5; n < 25; ++n) {  // a band of n quads, twisted once: the border goes round twice
        LineString3D border;
        Indexes indexes;
        for (unsigned int i = 0; i <= 2 * n; ++i) {
            const Point2D section(Angle(kPi * i / n), 1.0);
            border.AppendPoint({Point2D(Angle(2.0 * kPi * i / n), 5.0 + section.GetX()), section.GetY()});
            const unsigned int opposite = i + n, next = (opposite + 1) % (2 * n);
            if (i < n) indexes.insert(indexes.end(), {i, i + 1, next, i, next, opposite});
        }
        Scramble(random, indexes);
        const auto [length, rings, left] = BorderOf(IndexedTriangleSet3D(border.GetPoints(), indexes));
        EXPECT_NEAR(length, border.GetLength(), 1e-9);
        EXPECT_EQ(rings, 1U);
    }
    // Three pages of a book: the back of one closes its border.
    const IndexedTriangleSet3D book({{}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}}, {0, 1, 2, 0, 1, 3, 0, 1, 4});
    EXPECT_NEAR(std::get<0>(BorderOf(book)), 3.0 * (1.0 + std::sqrt(2.0)) + 1.0, 1e-12);
}

TEST(SurfaceTest, OneClosedVolume) {
    const IndexedTriangleSet3D block = Block({385000.0, 6672000.0, 50.0}, {4, 5, 6});
    IndexedTriangleSet3D two = block, open = block, degenerate = block, flat = block;
    two.Merge(block.Translate(Vec3D(9, 0, 0)), false, 0.0);
    open.GetIndexes().resize(33);
    degenerate.AppendIndexes({0, 0, 1, 0, 1, 77});
    for (Point3D& vertex : flat.GetVertices()) vertex.SetZ(3.0);
    const IndexedTriangleSet3D cells({{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, -1}},
                                     {0, 1, 2, 0, 1, 3, 1, 2, 3, 2, 0, 3, 1, 0, 4, 2, 1, 4, 0, 2, 4});
    // The projective plane on six vertices has no border and no inside.
    const IndexedTriangleSet3D plane(
        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {1, 1, 1}},
        {0, 1, 2, 0, 2, 3, 0, 3, 4, 0, 4, 5, 0, 5, 1, 1, 2, 4, 2, 3, 5, 3, 4, 1, 4, 5, 2, 5, 1, 3});
    const std::tuple<const char*, IndexedTriangleSet3D, bool, bool, bool> rows[] = {
        // one, closed, coherent
        {"block", block, true, true, true},
        {"two blocks", two, false, false, true},
        {"a triangle is missing", open, false, false, true},
        {"two cells with a wall between them", cells, false, false, true},
        {"a line and what does not exist play no part", degenerate, true, true, true},
        {"flat", flat, false, true, true},
        {"one side only", plane, false, true, false},
        {"nothing", {}, false, false, true},
    };
    RandomNumbers random(20265);
    for (const auto& [why, set, isOne, wantsClosed, wantsCoherent] : rows) {
        SCOPED_TRACE(why);
        IndexedTriangleSet3D scrambled = set;
        Scramble(random, scrambled.GetIndexes());
        EXPECT_EQ(scrambled.IsOneClosedVolume(), isOne);
        bool isClosed = !wantsClosed, isCoherent = !wantsCoherent;
        IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding(scrambled.GetVertices(), scrambled.GetIndexes(),
                                                                isClosed, isCoherent);
        EXPECT_EQ(std::pair(isClosed, isCoherent), std::pair(wantsClosed, wantsCoherent));
        EXPECT_EQ(scrambled.IsTriangleNeighborWindingCoherent(), wantsCoherent);
        EXPECT_EQ(scrambled.FixCoherentTriangleWinding(), wantsCoherent);
        EXPECT_TRUE(!isOne || std::abs(std::abs(scrambled.GetVolume(0.0)) - set.GetVolume(0.0)) < 1e-7);
    }
}

TEST(SurfaceTest, TerrainWallsAndBottomAreASolid) {
    for (const Point2D& origin : surveyOrigins) {
        const auto terrain = Grid(
            origin, 6, [](double x, double y) { return x + 2.0 * y; }, [](int x, int y) { return x != 2 || y != 3; });
        IndexedTriangleSet3D walls, solid = terrain, bottom = terrain;
        EXPECT_TRUE(terrain.CreateVerticalWalls(-1.0, walls));
        EXPECT_FALSE(walls.CreateVerticalWalls(kNan, bottom));
        bottom.GetVertices()[0].SetZ(kNan);
        EXPECT_FALSE(bottom.CreateVerticalWalls(-1.0, walls));
        for (Point3D& vertex : bottom.GetVertices()) vertex.SetZ(-1.0);
        bottom.InvertAllTriangles();
        solid.Merge(walls, false, 0.0);
        solid.Merge(bottom, true, 1e-9);
        EXPECT_TRUE(solid.IsOneClosedVolume() && solid.IsTriangleNeighborWindingCoherent());
        EXPECT_NEAR(terrain.GetVolume(-1.0), 36.0 * 10.0 - 10.5, 1e-9) << "the integral of z + 1";
        EXPECT_NEAR(solid.GetVolume(-50.0), 36.0 * 10.0 - 10.5, 1e-9);
    }
}

TEST(SurfaceTest, FlippedEdges) {
    // Two triangles of a square, flipped once and back; the corners of the second start anywhere.
    for (const Indexes& both : {Indexes{0, 1, 2, 1, 0, 3}, {0, 1, 2, 0, 3, 1}, {0, 1, 2, 3, 1, 0}}) {
        IndexedTriangleSet3D set({{0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}}, both);
        EXPECT_TRUE(set.FlipEdge(0, 1));
        EXPECT_EQ(set.GetIndexes(), (Indexes{0, 3, 2, 3, 1, 2}));
        EXPECT_TRUE(set.FlipEdge(1, 0) && set.IsTriangleNeighborWindingCoherent());
        EXPECT_NEAR(set.GetVolume(-1.0), 1.0, 1e-15);
    }
    const Indexes faults = {0, 1, 2, 0, 1, 3, 2, 1, 0, 4, 5, 6, 2, 2, 1, 7};
    for (const unsigned int second : {1U, 2U, 3U, 4U, 0U, 5U}) {
        Indexes indexes = faults;
        EXPECT_FALSE(IndexedTriangleSet3DCleanUp::FlipEdge(indexes, 0, second)) << second;
        EXPECT_EQ(indexes, faults);
    }
}

TEST(SurfaceTest, PartsComeApart) {
    IndexedTriangleSet3D block = Block({0, 0, 0}, {1, 1, 1}), all = block, walls;
    all.Merge(Block({20, 0, 0}, {2, 3, 4}), false, 0.0);
    std::vector<IndexedTriangleSet3D> surfaces;
    ASSERT_TRUE(all.SplitIntoUnconnectedSurfaces(surfaces) && surfaces.size() == 2);
    EXPECT_TRUE(surfaces[0].IsOneClosedVolume() && surfaces[1].IsOneClosedVolume() && surfaces[0].IsCCW());
    EXPECT_NEAR(surfaces[0].GetVolume(0.0), 1.0, 1e-15);
    EXPECT_NEAR(surfaces[1].GetVolume(0.0), 24.0, 1e-12);
    EXPECT_FALSE(IndexedTriangleSet3D().SplitIntoUnconnectedSurfaces(surfaces));

    block.AppendVertex({9, 9, 9});
    EXPECT_TRUE(block.ExtractVerticalTriangles(walls) && block.RemoveTrianglesWindings2D(WindingValue::Clockwise));
    EXPECT_TRUE(walls.GetTrianglesCount() == 8 && block.GetTrianglesCount() == 2 && walls.GetVerticesSize() == 8);
    EXPECT_NEAR(block.GetVolume(0.0), 1.0, 1e-15) << "the top alone, over its own foot";
    EXPECT_FALSE(block.ExtractVerticalTriangles(walls));
}

}  // namespace
}  // namespace Kalvio::Math
