#include "areas/Areas.h"

namespace Kalvio::Math {
namespace {

double FromSegment(const Point3D& p, const Point3D& a, const Point3D& b) {
    const Vec3D d = b - a;
    const double t = d.NormSquared() > 0.0 ? std::clamp((p - a).DotProduct(d) / d.NormSquared(), 0.0, 1.0) : 0.0;
    return (p - a - d * t).Length();
}

// By the definition: the farthest point of all stays if it must, and both parts likewise.
void KeepFarthest(const std::vector<Point3D>& points, std::size_t from, std::size_t to, double tolerance,
                  std::vector<Point3D>& kept) {
    double farthest = tolerance;
    std::size_t middle = from;
    for (std::size_t i = from + 1; i < to; ++i) {
        const double distance = FromSegment(points[i], points[from], points[to]);
        if (distance > farthest) std::tie(farthest, middle) = std::tuple(distance, i);
    }
    if (middle == from) return kept.push_back(points[to]);
    KeepFarthest(points, from, middle, tolerance, kept);
    KeepFarthest(points, middle, to, tolerance, kept);
}

// By the definition: the smallest triangle of all goes, again and again.
void RemoveSmallest(double smallest, std::vector<Point3D>& kept) {
    const auto areaAt = [&](std::size_t i) {
        return (kept[i - 1] - kept[i]).CrossProduct(kept[i + 1] - kept[i]).Length() / 2.0;
    };
    for (std::size_t least = 1; least > 0;) {
        least = 0;
        for (std::size_t i = 1; i + 1 < kept.size(); ++i) {
            if (areaAt(i) < (least > 0 ? areaAt(least) : smallest)) least = i;
        }
        if (least > 0) kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(least));
    }
}

TEST(GeometrySimplifierTest, ChainsKeepWhatTheDefinitionsKeep) {
    RandomNumbers random(20261122);
    for (int round = 0; round < 60; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        const bool isPlan = round % 4 < 2;
        std::vector<Point3D> points{{origin.GetX(), origin.GetY(), 0.0}};
        std::vector<Point2D> plan{origin};
        for (int i = 0; i < 20 * round; ++i) {
            const Vec3D step(random(-0.6, 1.0), random(-1.0, 0.9), isPlan ? 0.0 : random(-1.0, 1.0));
            points.push_back(points.back() + step * (i % 7 == 0 ? 0.0 : random(0.1, 2.0)));
            plan.emplace_back(points.back().GetX(), points.back().GetY());
        }
        const double tolerance = random(0.0, 8.0);
        std::vector<Point3D> kept{points.front()}, large;
        if (points.size() > 1) KeepFarthest(points, 0, points.size() - 1, tolerance, kept);
        for (const Point3D& p : points) {
            if (large.empty() || large.back().Distance(p) > 0.0) large.push_back(p);
        }
        RemoveSmallest(tolerance, large);
        LineString3D inSpace;
        LineString2D chain;
        ASSERT_TRUE(GeometrySimplifier::SimplifyByDistance(LineString3D(points), tolerance, inSpace));
        EXPECT_THAT(inSpace.GetPoints(), testing::Pointwise(AreNear(0.0), kept));
        ASSERT_TRUE(GeometrySimplifier::SimplifyByArea(LineString3D(points), tolerance, inSpace));
        EXPECT_THAT(inSpace.GetPoints(), testing::Pointwise(AreNear(0.0), large));
        if (!isPlan) continue;
        ASSERT_TRUE(GeometrySimplifier::SimplifyByDistance(LineString2D(plan), tolerance, chain));
        EXPECT_THAT(chain.GetPoints(), testing::Pointwise(AreNear(0.0), kept));
    }
}

// A square cut into cells with ragged borders, each with an island in its middle that fills a hole; rings begin
// anywhere and run either way.
std::vector<Polygon2D> RaggedCells(RandomNumbers& random, const Point2D& origin, int cells, int pointsPerSide) {
    std::map<std::pair<int, int>, Point2D> places;  // of points on sides, counted from the origin
    const auto placeAt = [&](int x, int y) {
        const double t = static_cast<double>((x + y) % pointsPerSide) / pointsPerSide;
        const double step = 16.0 / pointsPerSide, reach = 0.6 * std::min(t, 1.0 - t);
        const auto [place, isNew] = places.try_emplace({x, y}, origin + Vec2D(step * x, step * y));
        const int outer = cells * pointsPerSide;
        if (isNew && x % outer != 0 && y % outer != 0) {
            place->second +=
                Vec2D(x % pointsPerSide == 0 ? 1 : 0, y % pointsPerSide == 0 ? 1 : 0) * random(-reach, reach);
        }
        return place->second;
    };
    const auto turned = [&](std::vector<Point2D> ring) {
        std::rotate(ring.begin(), ring.begin() + static_cast<int>(random(0.0, 1.0) * static_cast<double>(ring.size())),
                    ring.end());
        if (random(-1.0, 1.0) < 0.0) std::reverse(ring.begin(), ring.end());
        if (random(-1.0, 1.0) < 0.0) ring.push_back(ring.front());
        return ring;
    };
    std::vector<Polygon2D> areas;
    for (int i = 0; i < cells; ++i) {
        for (int j = 0; j < cells; ++j) {
            std::vector<Point2D> ring;
            for (int k = 0, n = pointsPerSide; k < 4 * n; ++k) {
                ring.push_back(placeAt(i * n + std::clamp(std::min(k, 3 * n - k), 0, n),
                                       j * n + std::clamp(std::min(k - n, 4 * n - k), 0, n)));
            }
            const Point2D middle = origin + Vec2D(16.0 * i + 8.0, 16.0 * j + 8.0);
            const std::vector<Point2D> island = RandomStar(random, middle, 1.5, pointsPerSide);
            areas.emplace_back(turned(ring)).AppendHoleBoundary(LineString2D(turned(island)));
            areas.emplace_back(turned(island));
        }
    }
    return areas;
}

TEST(GeometrySimplifierTest, AreasStillCoverTheSquareOnce) {
    RandomNumbers random(20261124);
    for (int round = 0; round < 48; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        const int cells = 1 + round % 3;
        const std::vector<Polygon2D> areas = RaggedCells(random, origin, cells, 3 + 3 * round);
        const bool isByArea = round % 4 > 1;
        const double limit = std::pow(10.0, random(-2.0, 1.2));  // up to the size of a cell
        std::vector<Polygon2D> made;
        ASSERT_TRUE(isByArea ? GeometrySimplifier::SimplifyByArea(areas, limit, made)
                             : GeometrySimplifier::SimplifyByDistance(areas, limit, made));
        ASSERT_EQ(made.size(), areas.size());
        double sum = 0.0;
        unsigned int before = 0, after = 0;
        for (std::size_t i = 0; i < made.size(); ++i) {
            Point2D where;
            ASSERT_TRUE(made[i].Validate(where, true, 0.0)) << testing::PrintToString(where);
            EXPECT_EQ(Polygon2D(made[i].GetPoints()).GetWinding(), Polygon2D(areas[i].GetPoints()).GetWinding());
            EXPECT_EQ(made[i].IsClosed(0.0), areas[i].IsClosed(0.0));
            sum += std::abs(made[i].GetArea());
            before += areas[i].GetTotalSize();
            after += made[i].GetTotalSize();
            if (isByArea) continue;
            for (const Point2D& p : areas[i].GetPoints()) {
                ASSERT_LE(FromBorder(made[i].GetPoints(), p), limit * (1.0 + 1e-12));
            }
        }
        EXPECT_NEAR(sum, 256.0 * cells * cells, 1e-6);
        EXPECT_LT(after, before);
        for (int k = 0; k < 100; ++k) {
            const Point2D p = origin + Vec2D(random(0.0, 16.0 * cells), random(0.0, 16.0 * cells));
            const auto isIn = [&p](const Polygon2D& area) { return area.IsPointInside(p, 0.0); };
            EXPECT_EQ(std::count_if(made.begin(), made.end(), isIn), 1);
        }
    }
}

TEST(GeometrySimplifierTest, ChainsStaySimpleOnRequest) {
    RandomNumbers random(20261125);
    int crossed = 0;
    for (int round = 0; round < 200; ++round) {
        LineString2D chain;  // there and back beside itself
        for (int i = 0; i < 60 + round; ++i) {
            chain.AppendPoint(Point2D(i, random(-4.0, 4.0)));
            chain.Insert(0, chain.GetEnd() + Vec2D(0.0, random(0.2, 2.0)));
        }
        const double limit = random(0.5, 4.0);
        LineString2D plain, simple;
        ASSERT_TRUE(GeometrySimplifier::SimplifyByDistance(chain, limit, plain));
        ASSERT_TRUE(round % 2 == 0 ? GeometrySimplifier::SimplifyByDistance(chain, limit, simple, true)
                                   : GeometrySimplifier::SimplifyByArea(chain, limit, simple, true));
        EXPECT_FALSE(simple.IsSelfCrossing(0.0)) << limit;
        crossed += plain.IsSelfCrossing(0.0) ? 1 : 0;
    }
    EXPECT_GT(crossed, 10) << "without the request";
}

// Digitised lines and arcs with their corners are found again; with noise, result and chain still lie within the
// tolerance of each other everywhere.
TEST(GeometrySimplifierTest, LinesAndArcsComeBackFromTheirPoints) {
    RandomNumbers random(20261126);
    for (int round = 0; round < 24; ++round) {
        std::vector<Point2D> points{surveyOrigins[round % 2]};
        const bool isNoisy = round % 4 > 1;
        const double noise = isNoisy ? 0.02 : 0.0, tolerance = isNoisy ? 0.06 : 0.004;
        std::vector<double> bulges, found;
        double direction = random(-3.0, 3.0);
        for (int element = 0; element < 6; ++element) {
            const double length = random(30.0, 90.0);
            bulges.push_back(element % 3 == 0 ? 0.0 : std::copysign(random(0.1, 0.9), random(-1.0, 1.0)));
            direction += random(0.6, 1.2);  // a corner
            const Point2D from = points.back();
            const Vec2D way(length * std::cos(direction), length * std::sin(direction));
            const Arc2D arc(from, bulges.back(), from + way);
            for (int i = 1; i <= 200; ++i) {
                IPolyline2DElement::PolylineElementPoint on;
                const bool isArc = bulges.back() != 0.0 && arc.MakePointAndTangentAt(arc.GetLength() * i / 200.0, on);
                const Vec2D off(random(-noise, noise), random(-noise, noise));
                points.push_back((isArc ? on.point : from + way * (i / 200.0)) + off);
            }
        }
        const LineString2D chain(points);
        Polyline2D made;
        ASSERT_TRUE(GeometrySimplifier::ToLinesAndArcs(chain, tolerance, made));
        EXPECT_TRUE(made.IsContinuous(1e-8));
        std::vector<Polyline2D::PolylinePoint> samples;
        ASSERT_TRUE(made.MakePointsAndTangents(0.0, made.GetLength(), samples, 0.05, true));
        for (unsigned int i = 0; i < made.GetNrOfElements(); ++i) {
            const IPolyline2DElement& element = made.GetElementAtIndex(i);
            found.push_back(element.GetType() == MathTypes::Arc2D ? static_cast<const Arc2D&>(element).GetBulge()
                                                                  : 0.0);
        }
        EXPECT_TRUE(isNoisy || testing::Value(found, testing::Pointwise(testing::DoubleNear(0.01), bulges)));
        EXPECT_LT(found.size(), 20u);
        for (const auto& at : samples) {
            ASSERT_LE(at.point.Distance(Projection::NearestPoint(at.point, chain, 0.0)), tolerance + 1e-8);
        }
        for (const Point2D& p : points) {
            ASSERT_LE(p.Distance(Projection::NearestPointOnPolyline(p, made, 0.0)), tolerance + 1e-8);
        }
    }
}

TEST(GeometrySimplifierTest, WhatCannotBeSimplifiedIsToldOrKept) {
    LineString2D chain, untouched{Point2D(7, 7)};
    Polygon2D polygon;
    for (const auto& [limit, x] : {std::pair(-1.0, 2.0), {kNan, 2.0}, {1.0, kNan}, {1.0, kInfinity}, {1.0, 1e150}}) {
        const LineString2D bad{Point2D(0, 0), Point2D(x, 1), Point2D(1, 1)};
        EXPECT_FALSE(GeometrySimplifier::SimplifyByDistance(bad, limit, untouched));
        EXPECT_FALSE(GeometrySimplifier::SimplifyByArea(bad, limit, untouched, true));
        EXPECT_FALSE(GeometrySimplifier::SimplifyByArea(Polygon2D(bad), limit, polygon));
    }
    EXPECT_EQ(untouched.GetSize(), 1u);
    const LineString2D twice{Point2D(1, 1), Point2D(2, 1), Point2D(1, 1), Point2D(2, 1), Point2D(1, 1)};
    ASSERT_TRUE(GeometrySimplifier::SimplifyByDistance(twice, 1.25, chain, true)) << "a part without extent: must end";
    EXPECT_GE(chain.GetSize(), 2u);
    const std::tuple<const char*, const char*, double, unsigned int> rows[] = {
        {"empty", "", 1.0, 0},
        {"a point", "1 1", 1.0, 1},
        {"a ring of one place", "1 1 1 1 1 1", 1.0, 3},
        {"a ring keeps three points", "0 0 1 0 1 1 0 1", 100.0, 3},
        {"points on sides go", "0 0 5 0 10 0 10 5 10 10 5 10 0 10 0 5", 0.0, 4},
        {"twice around", "0 0 8 0 8 8 0 8 0 0 8 0 8 8 0 8", 0.0, 8},
    };
    for (const auto& [why, ring, tolerance, size] : rows) {
        SCOPED_TRACE(why);
        ASSERT_TRUE(GeometrySimplifier::SimplifyByDistance(MakePolygon(ring), tolerance, polygon));
        EXPECT_EQ(polygon.GetSize(), size);
        ASSERT_TRUE(GeometrySimplifier::SimplifyByArea(MakePolygon(ring), tolerance, polygon));
    }
}

}  // namespace
}  // namespace Kalvio::Math
