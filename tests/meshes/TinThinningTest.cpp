#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

// Random places, grids in any direction, whose needles have no plain determinant, and terraces, with chains and a
// border: no vertex left out is farther than the tolerance, the border is the same in plan, chains keep their heights.
TEST(TinThinningTest, KeepsToleranceBorderAndChains) {
    RandomNumbers random(20240610);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const Point2D origin = round % 2 == 0 ? Point2D() : Point2D(385000, 6672000);
        const double turn = round % 3 == 0 ? 0.37 : 0.0;
        const Vec2D along(std::cos(turn), std::sin(turn));
        const auto height = [](double x, double y) { return 5.0 * std::sin(0.3 * x) * std::cos(0.2 * y) + 0.2 * x; };
        const auto place = [&](double x, double y) {
            return Point3D(origin + along * x + Vec2D(-along.GetY(), along.GetX()) * y,
                           round % 5 == 0 ? std::floor(x / 6.0) : height(x, y));
        };
        TinSurfacePatch3D::Ground ground;
        for (int i = 0; i < 400; ++i) {
            ground.points.push_back(round % 4 == 1 ? place(random(0, 30), random(0, 30)) : place(i % 20, i / 20));
        }
        if (round % 4 > 1) {
            ground.breaklines = {LineString3D{place(2, 3), place(9, 14), place(9, 3)}};
            ground.borders = {LineString3D{place(1, 1), place(18, 2), place(12, 9), place(17, 17), place(2, 15)}};
        }
        TinSurfacePatch3D full, thin;
        ASSERT_TRUE(full.Build(ground, kTolerances));
        thin = full;
        const double tolerance = round % 7 == 0 ? 0.0 : random(0.0, 1.0);
        ASSERT_TRUE(thin.Thin(tolerance));
        EXPECT_NEAR(thin.GetPlanArea(), full.GetPlanArea(), 1e-6);
        for (const Point3D& v : full.GetTriangles().GetVertices()) {
            double z = kNan;
            ASSERT_TRUE(thin.GetHeight(v.GetPoint2D(), z));
            ASSERT_NEAR(z, v.GetZ(), tolerance + 1e-7);
        }
        for (const LineString3D& chain : ground.breaklines) {
            std::vector<LineString3D> draped;
            ASSERT_TRUE(full.Drape(chain.GetLineString2D(), draped));
            for (const Point3D& p : draped[0].GetPoints()) {
                double z = kNan;
                ASSERT_TRUE(thin.GetHeight(p.GetPoint2D(), z));
                EXPECT_NEAR(z, p.GetZ(), 2e-3) << "a place within the tolerance of a chain may be off it";
            }
        }
        TinSurfacePatch3D again;
        ASSERT_TRUE(again.SetTriangles(thin.GetTriangles()));
        for (unsigned int edge = 0; edge < 3 * thin.GetTrianglesCount(); ++edge) {
            ASSERT_EQ(thin.GetNeighbor(edge / 3, edge % 3), again.GetNeighbor(edge / 3, edge % 3));
        }
    }
}

TEST(TinThinningTest, LeavesTheFewestOnPlanesAndRefusesTwoHeights) {
    const auto isOutOfHole = [](int x, int y) { return x < 9 || x > 11 || y < 9 || y > 11; };
    TinSurfacePatch3D surface;
    EXPECT_FALSE(surface.Thin(1.0)) << "empty";
    ASSERT_TRUE(surface.SetTriangles(Grid(
        {385000, 6672000}, 30, [](double x, double y) { return 0.25 * x - 0.5 * y; }, isOutOfHole)));
    EXPECT_FALSE(surface.Thin(-1e-9) || surface.Thin(kNan));
    ASSERT_TRUE(surface.Thin(0.0));
    EXPECT_EQ(surface.GetTriangles().GetVerticesSize(), 8U) << "the corners of border and hole";
    TinSurfacePatch3D fan;  // twice round its middle
    std::vector<Point3D> corners = {{0, 0, 0}};
    Indexes indexes;
    for (unsigned int i = 0; i < 16; ++i) {
        corners.emplace_back(Point2D(Angle(kPi / 4.0 * i), 9.0 + i), 1.0);
        if (i > 0) indexes.insert(indexes.end(), {0, i, i + 1});
    }
    ASSERT_TRUE(fan.SetTriangles(IndexedTriangleSet3D(corners, indexes)));
    EXPECT_FALSE(fan.Thin(0.5));
    EXPECT_EQ(fan.GetTrianglesCount(), 15U);
}

// Against a flood of the squares that are missing: those that it does not reach from outside are closed.
TEST(TinThinningTest, HolesAreFilledAndBaysAreNot) {
    RandomNumbers random(20240614);
    for (int round = 0; round < 60; ++round) {
        constexpr int n = 14;
        const std::uint64_t share = 2 + random() % 4;
        Fields missing;
        for (int x = -1; x <= n; ++x) {
            for (int y = -1; y <= n; ++y) {
                const bool isRound = x < 0 || y < 0 || x == n || y == n;
                if (isRound || (random() % share == 0 && Field(x, y) != Field(4, 4))) missing.emplace(x, y);
            }
        }
        TinSurfacePatch3D surface;
        ASSERT_TRUE(surface.SetTriangles(Grid(
            {385000, 6672000}, n, [](double x, double y) { return x - 2.0 * y; },
            [&missing](int x, int y) { return !missing.contains(Field(x, y)); })));
        double area = surface.GetPlanArea();
        const double limit = round % 2 == 0 ? 1e9 : 3.0;
        std::size_t expected = 0, count = 99;
        auto parts = PartsOf(missing);
        for (auto part = parts.begin() + 1; part != parts.end(); ++part) {  // the first one comes from outside
            const auto size = static_cast<double>(part->size());
            if (size <= limit) ++expected, area += size;
        }
        ASSERT_TRUE(surface.FillHoles(limit, count));
        EXPECT_EQ(count, expected);
        EXPECT_NEAR(surface.GetPlanArea(), area, 1e-7);
        double z = kNan;
        const Point2D p(385000 + random(0, n), 6672000 + random(0, n));
        const double plane = p.GetX() - 385000 - 2.0 * (p.GetY() - 6672000);
        EXPECT_TRUE(!surface.GetHeight(p, z) || std::abs(z - plane) < 1e-6) << z << ", not " << plane;
        ASSERT_TRUE(surface.FillHoles(limit, count));
        EXPECT_EQ(count, 0U) << "closed once";
        EXPECT_FALSE(surface.FillHoles(-1.0, count) || surface.FillHoles(kNan, count));
    }
}

}  // namespace
}  // namespace Kalvio::Math
