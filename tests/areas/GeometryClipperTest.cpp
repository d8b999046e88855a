#include "areas/Areas.h"

namespace Kalvio::Math {
namespace {

// Parts follow each other by turns, cover the chain, meet at the border, and have their points on their side.
template <class ChainType>
void CheckParts(const ChainType& plan, const Polygon2D& area,
                const std::vector<GeometryClipper::Part<ChainType>>& parts) {
    ASSERT_FALSE(parts.empty());
    EXPECT_EQ(parts.front().from, 0.0);
    EXPECT_EQ(parts.back().to, plan.GetLength());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto& [chain, from, to, isInside] = parts[i];
        EXPECT_NEAR(chain.GetLength(), to - from, 1e-6);
        if (i > 0) {
            EXPECT_EQ(from, parts[i - 1].to);
            EXPECT_NE(isInside, parts[i - 1].isInside);
            EXPECT_THAT(chain.GetStart(), IsNear(parts[i - 1].chain.GetEnd(), 1e-6));
            EXPECT_LT(FromBorder(area, chain.GetStart()), 1e-3);
        }
        LineString2D samples;
        if constexpr (std::is_same_v<ChainType, LineString2D>) {
            samples = chain;
        } else {
            ASSERT_TRUE(chain.MakeLineString(0.0, chain.GetLength(), samples, 1.0, 1e-9));
        }
        for (unsigned int k = 1; k < samples.GetSize(); ++k) {
            const Point2D p = samples.GetPoint(k - 1) + (samples.GetPoint(k) - samples.GetPoint(k - 1)) * 0.5;
            ASSERT_TRUE(area.IsPointInside(p, 1e-4) == isInside || FromBorder(area, p) <= 0.2);
        }
    }
}

// The height of a plane, for points in space as they come and as they are cut.
double HeightAt(const Point2D& p, const Point2D& origin) { return (p - origin).DotProduct(Vec2D(1.0, 2.0)); }

TEST(GeometryClipperTest, PartsCoverTheChainAndKeepToTheirSide) {
    RandomNumbers random(20261127);
    std::size_t cuts = 0;
    for (int round = 0; round < 40; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        Polygon2D area(RandomStar(random, origin, 80.0, 5 + round));
        area.AppendHoleBoundary(LineString2D(RandomStar(random, origin, 14.0, 3 + round)));
        std::vector<Point3D> points;
        LineString2D plan;
        for (int i = 0; i < 4 * round + 2; ++i) {
            const Point2D p = origin + Vec2D(random(-90.0, 90.0), random(-90.0, 90.0));
            points.emplace_back(p, HeightAt(p, origin));
            plan.AppendPoint(p);
        }
        std::vector<GeometryClipper::Part<LineString2D>> parts;
        ASSERT_TRUE(GeometryClipper::Clip(plan, area, parts, kTolerances));
        CheckParts(plan, area, parts);
        cuts += parts.size() - 1;

        std::vector<GeometryClipper::Part<LineString3D>> inSpace;
        ASSERT_TRUE(GeometryClipper::Clip(LineString3D(points), area, inSpace, kTolerances));
        ASSERT_EQ(inSpace.size(), parts.size());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            EXPECT_EQ(inSpace[i].from, parts[i].from);
            EXPECT_EQ(inSpace[i].isInside, parts[i].isInside);
            for (const Point3D& p : inSpace[i].chain.GetPoints()) {
                EXPECT_NEAR(p.GetZ(), HeightAt(p.GetPoint2D(), origin), 1e-7);
            }
        }

        Polyline2D road;  // across and back
        const Point2D start = origin + Vec2D(-100.0, random(-40.0, 40.0));
        road.AppendElement(new Line2D(start, start + Vec2D(60.0, 0.0)));
        road.AppendElement(new Clothoid(0.0, 100.0, 70.0, road.GetEnd(), Vec2D(1.0, 0.0)));
        road.AppendElement(new Arc2D(road.GetEnd(), road.GetEnd() + Vec2D(0.0, random(30.0, 50.0)), Angle(2.5)));
        road.AppendElement(new Line2D(road.GetEnd(), start));
        std::vector<GeometryClipper::Part<Polyline2D>> lots;
        ASSERT_TRUE(GeometryClipper::Clip(road, area, lots, kTolerances));
        CheckParts(road, area, lots);
    }
    EXPECT_GT(cuts, 1000u);
}

TEST(GeometryClipperTest, BordersTouchesAndEndsAreDecided) {
    const Polygon2D square = MakePolygon("0 0 10 0 10 10 0 10 / 4 4 4 6 6 6 6 4");
    const Polygon2D infinite{Point2D(0, 0), Point2D(1, 0), Point2D(1, kInfinity)};
    const PolygonCurve2D disc = ChainOf<RingCurve2D>(Arc2D(Point2D(10, 5), Point2D(5, 5), Angle(2 * kPi)));
    const BoundingBox2D box(Point2D(0, 0), Point2D(10, 10));
    // Lengths of the parts, those outside negative.
    const std::tuple<const char*, GeometryClipper::Area, const char*, std::vector<double>> rows[] = {
        {"across the hole", square, "-1 5 11 5", {-1, 4, -2, 4, -1}},
        {"touches a corner from outside", square, "-5 5 0 0 5 -5", {-10 * std::sqrt(2.0)}},
        {"touches a side from inside", square, "1 1 3 0 5 1", {2 * std::sqrt(5.0)}},
        {"along a side is inside", square, "-2 0 12 0", {-2, 10, -2}},
        {"along the hole is inside", square, "2 4 8 4", {6}},
        {"from border to border", square, "0 2 10 2", {10}},
        {"ends within the tolerance of the border", square, "2 2 10.00005 2", {8.00005}},
        {"wholly outside", square, "20 20 30 30", {-10 * std::sqrt(2.0)}},
        {"wholly in the hole", square, "4.5 5 5.5 5", {-1}},
        {"shorter than the tolerance", square, "1 1 1.00001 1", {0.00001}},
        {"a box has no hole", box, "-1 5 11 5", {-1, 10, -1}},
        {"a disc", disc, "-1 5 11 5", {-1, 10, -1}},
        {"touches a disc", PolygonCurve2D(disc), "10 0 10 10", {-10}},
        {"nowhere", Polygon2D(), "0 0 1 0", {-1}},
    };
    for (const auto& [why, area, points, lengths] : rows) {
        SCOPED_TRACE(why);
        std::vector<GeometryClipper::Part<LineString2D>> parts;
        ASSERT_TRUE(GeometryClipper::Clip(LineString2D(MakePolygon(points).GetPoints()), area, parts, kTolerances));
        std::vector<double> found;
        for (const auto& part : parts) found.push_back((part.to - part.from) * (part.isInside ? 1 : -1));
        EXPECT_THAT(found, testing::Pointwise(testing::DoubleNear(1e-9), lengths));
    }
    std::vector<GeometryClipper::Part<LineString2D>> untouched(3);
    EXPECT_FALSE(GeometryClipper::Clip(LineString2D(), square, untouched, kTolerances));
    EXPECT_FALSE(GeometryClipper::Clip({Point2D(0, kNan), Point2D(1, 1)}, square, untouched, kTolerances));
    EXPECT_FALSE(GeometryClipper::Clip({Point2D(0, 0), Point2D(1, 1)}, infinite, untouched, kTolerances));
    EXPECT_EQ(untouched.size(), 3u);
}

// What covers an area ends at its border, in one ring: no side of a triangle is cut twice.
TEST(GeometryClipperTest, MeshesAreCutOnceAtTheBorder) {
    RandomNumbers random(20261129);
    constexpr unsigned int across = 9;
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const Point2D& origin = surveyOrigins[round % 2];
        IndexedTriangleSet3D mesh;
        for (unsigned int i = 0; i < across * across; ++i) {
            Point2D p = origin + Vec2D(10.0 * (i % across), 10.0 * (i / across));
            if (round >= 10) p += Vec2D(random(-2.4, 2.4), random(-2.4, 2.4));  // by more, triangles fold
            mesh.AppendVertex(Point3D(p, HeightAt(p, origin)));
            if (i % across == 0 || i < across) continue;
            for (const unsigned int back : {across + 1, across, 0U, across + 1, 0U, 1U}) {
                mesh.GetIndexes().push_back(i - back);
            }
        }
        std::vector<Point2D> border = RandomStar(random, origin + Vec2D(40.0, 40.0), 36.0, 4 + round);
        if (round < 10) {  // along sides, from vertices, and through them
            border = {origin + Vec2D(20, 20), origin + Vec2D(60, 20), origin + Vec2D(60, 50),
                      origin + Vec2D(10 + round, 40)};
        }
        border.push_back(border.front());
        const Polygon2D area(border);
        IndexedTriangleSet3D inside;
        ASSERT_TRUE(GeometryClipper::Clip(mesh, area, inside, kTolerances));
        EXPECT_NEAR(inside.GetVolume(0.0) - inside.GetVolume(1.0), area.GetArea(), 1e-5);
        for (const Point3D& p : inside.GetVertices()) EXPECT_NEAR(p.GetZ(), HeightAt(p.GetPoint2D(), origin), 1e-7);
        std::vector<LineString3D> rings;
        ASSERT_TRUE(inside.GetBoundaries(rings));
        ASSERT_EQ(rings.size(), 1U);
        EXPECT_NEAR(rings.front().GetLength2D(), LineString2D(border).GetLength(), 1e-5);
    }
}

TEST(GeometryClipperTest, WallsAreCutToo) {
    const std::vector<Point3D> corners{{0, -5, 0}, {10, -5, 0}, {0, 0, 0}, {10, 0, 0},
                                       {0, 0, 3},  {10, 0, 3},  {0, 5, 3}, {10, 5, 3}};
    const IndexedTriangleSet3D step(corners, {0, 1, 3, 0, 3, 2, 2, 3, 5, 2, 5, 4, 4, 5, 7, 4, 7, 6});
    IndexedTriangleSet3D inside;
    const BoundingBox2D box(Point2D(2, -9), Point2D(6, 9));
    ASSERT_TRUE(GeometryClipper::Clip(step, box, inside, kTolerances));
    std::vector<LineString3D> rings;
    ASSERT_TRUE(inside.GetBoundaries(rings));
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_NEAR(rings.front().GetLength(), 2 * (4 + 5 + 3 + 5), 1e-9);
    EXPECT_TRUE(inside.IsTriangleNeighborWindingCoherent());

    const IndexedTriangleSet3D bad({{0, 0, 0}, {1, 0, kNan}, {0, 1, 0}}, {0, 1, 2});
    EXPECT_FALSE(GeometryClipper::Clip(IndexedTriangleSet3D(), box, inside, kTolerances));
    EXPECT_FALSE(GeometryClipper::Clip(bad, box, inside, kTolerances));
    EXPECT_GT(inside.size(), 6U);
}

}  // namespace
}  // namespace Kalvio::Math
