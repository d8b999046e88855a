#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/queries/Intersection.h"
#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

const auto kWhole = [](unsigned int, unsigned int) { return true; };

IndexedTriangleSet3D Soup(const IndexedTriangleSet3D& set) {
    IndexedTriangleSet3D soup;
    Point3D a, b, c;
    for (unsigned int i = 0; set.GetTriangleAt(i, a, b, c); ++i) soup.AddTriangle(b, c, a, i % 2 == 0, false);
    return soup;
}

std::vector<double> LengthsOf(const std::vector<LineString3D>& strings) {
    std::vector<double> lengths;
    for (const LineString3D& string : strings) lengths.push_back(string.GetLength());
    return lengths;
}

double PlanDistance(const Point3D& a, const Point2D& b) { return a.GetPoint2D().Distance(b); }

// The sections of its segments one after another, as one walks along the chain; a closed one is joined over its start.
std::vector<std::vector<Point3D>> WalkAlong(const IndexedTriangleSet3D& set, const std::vector<Point2D>& chain) {
    std::vector<std::vector<Point3D>> strings;
    bool isAtBend = false, isClosed = chain.front().Distance(chain.back()) == 0.0;
    const auto append = [&](const std::vector<Point3D>& points) {
        if (!isAtBend) strings.emplace_back(points.begin(), points.begin() + 1);
        strings.back().insert(strings.back().end(), points.begin() + 1, points.end());
    };
    for (std::size_t i = 1; i < chain.size(); ++i) {
        std::vector<LineString3D> parts;
        set.GetSectionsLineSegment(Line2D(chain[i - 1], chain[i]), parts);
        const bool startsAtBend = !parts.empty() && PlanDistance(parts[0][0], chain[i - 1]) == 0.0;
        isAtBend = isAtBend && startsAtBend;
        isClosed = isClosed && (i > 1 || startsAtBend);
        for (const LineString3D& part : parts) {
            append(part.GetPoints());
            isAtBend = PlanDistance(strings.back().back(), chain[i]) == 0.0;
        }
    }
    if (isAtBend && isClosed && strings.size() > 1) {
        append(strings[0]);
        strings.erase(strings.begin());
    }
    return strings;
}

TEST(SectionTest, AChainOverASlopeIsFollowedWhereverItComesBack) {
    RandomNumbers random(20311);
    for (int round = 0; round < 400; ++round) {
        const Point2D corner = surveyOrigins[round % 2];
        const Vec3D slope(random(-2, 2), random(-2, 2), random(-9, 9));
        const auto height = [&](double x, double y) { return slope.GetX() * x + slope.GetY() * y + slope.GetZ(); };
        const unsigned int n = round % 5 == 0 ? 30 : 6, missing = round % 4 == 0 ? 0 : 3;
        IndexedTriangleSet3D grid =
            Grid(corner, n, height, [&](unsigned int, unsigned int) { return random() % 12 >= missing; });
        if (round % 3 == 0) grid = Soup(grid);
        // Every third corner of the chain is on a vertex of the grid, others on edges, or anywhere, or where it was.
        std::vector<Point2D> chain;
        for (std::size_t i = 0; i < 9; ++i) {
            Vec2D place(random(0.1, n - 0.1), random(0.1, n - 0.1));
            if (i % 3 != 2) place.SetX(std::floor(place.GetX()));
            if (i % 3 == 0) place.SetY(std::floor(place.GetY()));
            chain.push_back(i > 1 && random() % 3 == 0 ? chain[random() % (i - 1)] : corner + place);
        }
        if (round % 7 == 0) chain.push_back(chain[0]);
        const auto repeats = [](const Point2D& a, const Point2D& b) { return a.Distance(b) == 0.0; };
        chain.erase(std::unique(chain.begin(), chain.end(), repeats), chain.end());
        const LineString2D line(chain);
        std::vector<LineString3D> strings(1);
        grid.GetSections(line, strings);
        const auto expected = WalkAlong(grid, chain);
        ASSERT_EQ(strings.size(), 1 + expected.size()) << round;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(strings[i + 1].GetSize(), expected[i].size()) << round;
            for (unsigned int k = 0; k < expected[i].size(); ++k) {
                const Point3D& p = strings[i + 1][k];
                const Vec2D v = p.GetPoint2D() - corner;
                EXPECT_THAT(p, IsNear(expected[i][k], 3e-8)) << round;
                EXPECT_NEAR(p.GetZ(), height(v.GetX(), v.GetY()), 3e-8);
            }
        }
        if (missing > 0) continue;
        EXPECT_NEAR(strings.at(1).GetLength2D(), line.GetLength(), 1e-7);
        EXPECT_EQ(PlanDistance(strings[1][0], chain.front()), 0.0);
    }
}

TEST(SectionTest, LinesCutATorusInTheLoopsThatTheirDistanceTells) {
    RandomNumbers random(20312);
    for (unsigned int round = 0; round < 100; ++round) {
        const Point2D center = surveyOrigins[round % 2];
        const IndexedTriangleSet3D torus = Torus(center, 5.0, 8.0, 2.0, 40);
        const Point2D direction(Angle(random(0, 7)), 1.0);
        const unsigned int loops = round % 3;
        const double away = loops == 2 ? random(-5.9, 5.9) : loops == 1 ? random(6.1, 9.9) : random(10.1, 12);
        const Point2D foot = center + Vec2D(-direction.GetY(), direction.GetX()) * away;
        const Line2D line(foot, direction - Point2D());
        std::vector<LineString3D> strings;
        torus.GetSections(line, strings);
        ASSERT_EQ(strings.size(), loops) << away;
        // Against the cuts of the triangles one by one.
        double length = 0.0;
        Point3D a, b, c;
        Line3D piece;
        const Plane3D wall(Point3D(foot, 0.0), Vec3D(line.GetDirection().GetNormalVector(true), 0.0));
        for (unsigned int i = 0; torus.GetTriangleAt(i, a, b, c); ++i) {
            if (Intersection::TrianglePlane(Triangle3D(a, b, c), wall, piece, 1e-9) == 1) length += piece.GetLength();
        }
        for (const double part : LengthsOf(strings)) length -= part;
        EXPECT_NEAR(length, 0.0, 1e-5);
        double station = -kInfinity;
        for (const LineString3D& string : strings) {
            EXPECT_EQ(string.GetPoints().front().Distance(string.GetPoints().back()), 0.0) << "closed";
            const double start = (string[0].GetPoint2D() - foot).DotProduct(line.GetDirection());
            EXPECT_GT(start, station);
            station = start;
            for (const Point3D& p : string.GetPoints()) {
                EXPECT_GE((p.GetPoint2D() - foot).DotProduct(line.GetDirection()), start - 1e-9);
                const double ring = p.GetPoint2D().Distance(center) - 8.0;
                EXPECT_NEAR(std::hypot(ring, p.GetZ() - 5.0), 2.0, 0.06) << "on the surface, but for its chords";
            }
        }
    }
}

TEST(SectionTest, WallsBordersAndGaps) {
    const auto pond = [](unsigned int x, unsigned int y) { return x < 2 || x > 3 || y < 2 || y > 3; };
    const auto flat = [](double, double) { return 1.0; };
    const IndexedTriangleSet3D block = Block(Point3D(0, 0, 0), Vec3D(4, 3, 2)), grid = Grid(Point2D(), 6, flat, pond);
    const double diagonal = 2.0 * std::sqrt(2.0);
    struct Row {
        const char* why;
        const IndexedTriangleSet3D* set;
        Point2D from, to;
        std::vector<double> line, segment;  // lengths of the strings
    };
    const Row rows[] = {
        {"through a block", &block, {-1, 1}, {9, 1}, {12}, {12}},
        {"half of it", &block, {-1, 1}, {3, 1}, {12}, {8}},
        {"inside it", &block, {1, 1}, {3, 1}, {12}, {2, 2}},
        {"ends in its face", &block, {-1, 1}, {0, 1}, {12}, {2}},
        {"along its face", &block, {-1, 3}, {9, 3}, {12}, {12}},
        {"along half its face", &block, {2, 3}, {9, 3}, {12}, {6}},
        {"beside it", &block, {-1, 4}, {9, 4}, {}, {}},
        {"along an edge, upright", &block, {-1, 1}, {1, -1}, {2}, {2}},
        {"across the pond", &grid, {0, 3}, {6, 3}, {2, 2}, {2, 2}},
        {"along its shore", &grid, {6, 2}, {1, 2}, {6}, {5}},
        {"over the corners of the pond", &grid, {-1, -1}, {2.5, 2.5}, {diagonal, diagonal}, {diagonal}},
        {"touches a corner", &grid, {-1, 1}, {1, -1}, {}, {}},
        {"no line", &grid, {1, 1}, {1, 1}, {}, {}},
        {"not finite", &grid, {1, 1}, {kInfinity, 1}, {}, {}},
    };
    for (const Row& row : rows) {
        for (const bool isSoup : {false, true}) {
            const IndexedTriangleSet3D set = isSoup ? Soup(*row.set) : *row.set;
            std::vector<LineString3D> lines, segments, chains;
            set.GetSections(Line2D(row.from, row.to), lines);
            set.GetSectionsLineSegment(Line2D(row.from, row.to), segments);
            set.GetSections(LineString2D{row.from, row.to}, chains);
            EXPECT_THAT(LengthsOf(lines), testing::Pointwise(testing::DoubleNear(1e-9), row.line)) << row.why;
            EXPECT_THAT(LengthsOf(segments), testing::Pointwise(testing::DoubleNear(1e-9), row.segment)) << row.why;
            EXPECT_EQ(LengthsOf(chains), LengthsOf(segments)) << row.why;
        }
    }
    // Around the pond: one string, closed. A wall at a bend is cut once.
    std::vector<LineString3D> strings;
    grid.GetSections(LineString2D{{1, 1}, {5, 1}, {5, 5}, {1, 5}, {1, 1}}, strings);
    ASSERT_EQ(strings.size(), 1u);
    EXPECT_NEAR(strings[0].GetLength(), 16.0, 1e-12);
    EXPECT_THAT(strings[0][0], IsNear(Point3D(1, 1, 1), 0.0));
    block.GetSections(LineString2D{Point2D(-1, 1), Point2D(0, 1), Point2D(0.5, 1.5)}, strings);
    ASSERT_EQ(strings.size(), 2u);
    EXPECT_NEAR(strings[1].GetLength(), 2.0 + std::sqrt(2.0), 1e-9);
    // Closed chains run forwards. A wall at the end is cut however the chain goes on; one covered twice is one wall.
    const IndexedTriangleSet3D plain = Grid(Point2D(), 9, flat, kWhole);
    strings.clear();
    plain.GetSections(LineString2D{{1, 1}, {3, 1.5}, {3, 2.5}, {1, 4}, {1, 1}}, strings);
    grid.GetSections(LineString2D{{1, 3}, {1, 1}, {5, 1}, {5, 3}, {1, 3}}, strings);
    ASSERT_EQ(strings.size(), 2u);
    EXPECT_LT(strings[0][1].GetY(), 1.5);
    EXPECT_EQ(strings[1][0].GetX(), 2.0) << "through the start";
    const std::vector<unsigned int> walls[] = {{0, 1, 2, 0, 2, 3},
                                               {0, 1, 2, 0, 2, 3, 0, 2, 1, 0, 3, 2},
                                               {0, 1, 2, 0, 2, 3, 1, 2, 0},
                                               {0, 1, 2, 0, 2, 3, 0, 3, 1, 1, 3, 2}};
    for (const std::vector<unsigned int>& indexes : walls) {
        IndexedTriangleSet3D wall;
        wall.AppendVertices({{10, -5, 0}, {10, 5, 0}, {10, 5, 3}, {10, -5, 3}});
        wall.AppendIndexes(indexes);
        strings.clear();
        wall.GetSections(Line2D(Point2D(10, -9), Point2D(10, 9)), strings);
        EXPECT_THAT(LengthsOf(strings), testing::ElementsAre(26.0));
        for (const Point2D& last : {Point2D(10, 0), Point2D(10 + 1e-11, 0), Point2D(kNan, 0), Point2D(1e300, 0)}) {
            strings.clear();
            wall.GetSections(LineString2D{{0, 0}, {10, 0}, last}, strings);
            EXPECT_FALSE(strings.empty()) << last.GetX();
        }
    }
    strings.clear();
    block.GetSections(LineString2D{{0, 1}, {-2, 1}, {-2, 2}, {0, 1}}, strings);
    EXPECT_THAT(LengthsOf(strings), testing::ElementsAre(2.0)) << "a wall at both ends of a chain";
    // A bend beside an edge, by rounding.
    const double x = 5.4e6;
    IndexedTriangleSet3D roof;
    roof.AppendVertices({{x, 2 * x, 0}, {x + 10, 2 * x, 0}, {x + 5, 2 * x + 10, 10}, {x + 5, 2 * x - 10, 10}});
    roof.AppendIndexes({0, 1, 2, 1, 0, 3});
    strings.clear();
    roof.GetSections(LineString2D{{x + 1, 2 * x + 0.5}, {x + 5, 2 * x + 1.9e-9}, {x + 8, 2 * x}}, strings);
    EXPECT_EQ(strings.size(), 1u);
    strings.clear();
    plain.GetSections(LineString2D{{1, 1}, {kInfinity, 1}, {3, 1}}, strings);
    EXPECT_TRUE(strings.empty()) << "no way over infinity";
    // What cannot be cut takes no part.
    IndexedTriangleSet3D wild = grid;
    wild.AppendVertices({{1, 1, kNan}, {kInfinity, 1, 1}, {1e300, -1e300, 1}, {-1e300, 1e300, 1e300}});
    const unsigned int n = wild.GetVerticesSize();
    wild.AppendIndexes({0, 8, n - 4, 0, 8, n - 3, 0, n - 2, n - 1, 0, 1, n, 4});
    strings.clear();
    wild.GetSections(Line2D(Point2D(-1e6, 2), Point2D(1e6, 2.001)), strings);
    wild.GetSections(LineString2D{Point2D(-1e6, 2), Point2D(kNan, 1), Point2D(9, 1), Point2D(-9, 1.5)}, strings);
    ASSERT_GE(strings.size(), 3u);
    for (const LineString3D& string : strings) {
        for (const Point3D& p : string.GetPoints()) EXPECT_TRUE(std::isfinite(p.GetX() + p.GetY() + p.GetZ()));
    }
}

}  // namespace
}  // namespace Kalvio::Math
