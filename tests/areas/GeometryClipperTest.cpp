#include "kalvio/areas/GeometryClipper.h"

#include "areas/Areas.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/curves/Clothoid.h"

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
            if (FromBorder(area, p) > 0.2) {
                ASSERT_EQ(area.IsPointInside(p, 1e-4), isInside);
            }
        }
    }
}

TEST(GeometryClipperTest, PartsCoverTheChainAndKeepToTheirSide) {
    RandomNumbers random(20261127);
    std::size_t cuts = 0;
    for (int round = 0; round < 40; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        Polygon2D area(RandomStar(random, origin, 80.0, 5 + round));
        area.AppendHoleBoundary(LineString2D(RandomStar(random, origin, 14.0, 3 + round)));
        std::vector<Point3D> points;
        for (int i = 0; i < 4 * round + 2; ++i) {
            points.emplace_back(origin.GetX() + random(-90.0, 90.0), origin.GetY() + random(-90.0, 90.0), 0.0);
            points.back().SetZ(points.back().GetX() - origin.GetX() + 2.0 * (points.back().GetY() - origin.GetY()));
        }
        LineString2D plan;
        for (const Point3D& p : points) plan.AppendPoint(Point2D(p.GetX(), p.GetY()));
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
                EXPECT_NEAR(p.GetZ(), p.GetX() - origin.GetX() + 2.0 * (p.GetY() - origin.GetY()), 1e-7);
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
    PolygonCurve2D disc;
    disc.GetBoundary().AppendElement(new Arc2D(Point2D(10, 5), Point2D(5, 5), Angle(2 * kPi)));
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

}  // namespace
}  // namespace Kalvio::Math
