#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

// Against its triangles wherever gaps are; bilinear against the polynomial that it is; both along the lines.
TEST(GridSurfaceTest, AnswersAsItsTrianglesAndAsThePolynomial) {
    RandomNumbers random(20240611);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const double step = std::array{0.1, 5.0, 1.0 / 3.0}[static_cast<std::size_t>(round % 3)];
        const Point2D origin = round % 2 == 0 ? Point2D() : Point2D(385000.0, 6672000.1);
        const auto bilinear = [&](const Point2D& p) {
            const Vec2D v = p - origin;
            return 3.0 + 2.0 * v.GetX() - v.GetY() + 0.25 * v.GetX() * v.GetY();
        };
        GridSurface grid, smooth;
        ASSERT_TRUE(grid.Set(origin, step, 7, 6) && smooth.Set(origin, step, 7, 6));
        grid.Fill([&](const Point2D&, double& z) { return z = random(0, 9), random() % 4 != 0; });
        smooth.Fill([&](const Point2D& p, double& z) { return z = bilinear(p), true; });
        TinSurfacePatch3D tin;
        ASSERT_TRUE(grid.MakeTin(tin));
        for (int i = 0; i < 400; ++i) {
            const bool isOnLine = i % 4 == 0;
            const double x = isOnLine ? static_cast<double>(random() % 7) : random(-0.5, 6.5);
            const double y = i % 8 == 0 ? static_cast<double>(random() % 6) : random(-0.5, 5.5);
            const Point2D p = origin + Vec2D(x, y) * step;
            double z = kNan, expected = kNan;
            ASSERT_EQ(grid.GetTriangleHeight(p, z), tin.GetHeight(p, expected)) << x << ' ' << y;
            ASSERT_TRUE(std::isnan(expected) || std::abs(z - expected) < 1e-6) << x << ' ' << y;
            const bool isInside = x >= 0.0 && x <= 6.0 && y >= 0.0 && y <= 5.0;
            double slope = kNan;
            Angle fall;
            ASSERT_EQ(smooth.GetHeight(p, z = kNan), isInside);
            ASSERT_EQ(smooth.GetSlope(p, slope, fall), isInside);
            if (!isInside) continue;
            EXPECT_NEAR(z, bilinear(p), 1e-7);
            const Vec2D down(std::sin(fall.GetRadians()), std::cos(fall.GetRadians()));
            EXPECT_NEAR((bilinear(p + down * step) - bilinear(p - down * step)) / (2.0 * step), -slope, 1e-6);
        }
        EXPECT_EQ(IndexedTriangleSet3D(tin.GetTriangles()).RemoveUnusedVertices(), 0U);
    }
}

TEST(GridSurfaceTest, GapsAndBadInput) {
    GridSurface grid;
    ASSERT_TRUE(grid.SetOver(BoundingBox2D(Point2D(11, 21), Point2D(19, 24)), 5.0));
    EXPECT_EQ(std::tuple(grid.GetColumns(), grid.GetRows(), grid.GetPlace(0, 0).GetX()), std::tuple(3U, 2U, 10.0));
    const GridSurface gaps = grid;
    GridSurface from = grid;
    EXPECT_EQ(GridSurface(std::move(from)).GetRows(), 2U);
    EXPECT_TRUE(std::isnan(from.GetHeightOf(0, 0)));  // NOLINT(bugprone-use-after-move)
    double z = -1.0;
    TinSurfacePatch3D tin;
    EXPECT_FALSE(grid.GetHeight({15, 20}, z) || grid.MakeTin(tin) || grid.GetTriangleHeight({15, 20}, z));
    grid.SetHeightOf(1, 0, 4.0);
    grid.SetHeightOf(3, 0, 7.0);  // no such node
    grid.SetHeightOf(0, 0, kInfinity);
    EXPECT_TRUE(grid.GetHeight({15, 20}, z) && z == 4.0) << "alone, but no other node counts";
    EXPECT_FALSE(grid.GetHeight({15.1, 20}, z) || grid.GetHeight({kNan, 20}, z) || grid.GetHeight({1e308, 20}, z) ||
                 grid.GetHeight({-7e98, 1e120}, z));
    Angle fall;
    GridSurface level;
    ASSERT_TRUE(level.Set({0, 0}, 1.0, 2, 2));
    level.Fill([](const Point2D&, double& height) { return height = 1.0, true; });
    EXPECT_FALSE(level.GetSlope({kInfinity, 0}, z, fall) || level.GetSlope({0, -kInfinity}, z, fall));
    const std::tuple<Point2D, double, std::size_t, std::size_t> rows[] = {
        {{0, 0}, 0.0, 2, 2},  {{0, 0}, kNan, 2, 2},    {{0, 0}, 1e-10, 2, 2},      {{0, kNan}, 1.0, 2, 2},
        {{0, 0}, 1.0, 0, 2},  {{1e200, 0}, 1.0, 2, 2}, {{6672000, 0}, 1e-6, 2, 2}, {{0, 0}, 1.0, 1U << 20U, 1U << 20U},
        {{0, 0}, 1e70, 9, 9},
    };
    for (const auto& [first, step, columns, count] : rows) EXPECT_FALSE(grid.Set(first, step, columns, count));
    EXPECT_FALSE(grid.SetOver(BoundingBox2D(Point2D(0, 0), Point2D(1e9, 1e9)), 1e-9) ||
                 grid.SetOver(BoundingBox2D(Point2D(0, 0), Point2D(kNan, 1)), 1.0));
    EXPECT_THAT(grid.GetBoundingBox3D().GetMaxPoint(), IsNear(Point3D(15, 20, 4), 0.0));
    EXPECT_TRUE(gaps.IsEqualTo(gaps, 1e-9) && !Geometry::AreEqual(gaps, grid, 1e-9));
    std::vector<Point3D> vertices;
    const std::unique_ptr<IGeometry> copy(grid.Clone());
    EXPECT_TRUE(copy->IsEqualTo(grid, 1e-9) && Geometry::GetVertices(*copy, vertices) && vertices.size() == 1);
}

}  // namespace
}  // namespace Kalvio::Math
