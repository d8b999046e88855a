#include "meshes/Meshes.h"

namespace Kalvio::Math {
namespace {

using Strings = std::vector<LineString3D>;

IndexedTriangleSet3D Soup(const IndexedTriangleSet3D& set) {
    IndexedTriangleSet3D soup;
    for (const Triangle3D& t : set) soup.AddTriangle(t[1], t[2], t[0], soup.size() % 2 == 0, false);
    return soup;
}

std::vector<double> LengthsOf(const Strings& strings) {
    std::vector<double> lengths;
    for (const LineString3D& string : strings) lengths.push_back(string.GetLength());
    return lengths;
}

// The sections of its segments one after another, as one walks along the chain.
Strings WalkAlong(const IndexedTriangleSet3D& set, const std::vector<Point2D>& chain) {
    Strings strings(1);
    bool isAtBend = false;
    for (std::size_t i = 1; i < chain.size(); ++i) {
        Strings parts;
        set.GetSectionsLineSegment(Line2D(chain[i - 1], chain[i]), parts);
        isAtBend = isAtBend && !parts.empty() && parts[0][0].GetPoint2D().Distance(chain[i - 1]) == 0.0;
        for (const LineString3D& part : parts) {
            if (!isAtBend) strings.push_back({part[0]});
            for (unsigned int k = 1; k < part.GetSize(); ++k) strings.back().AppendPoint(part[k]);
            isAtBend = part.GetEnd().GetPoint2D().Distance(chain[i]) == 0.0;
        }
    }
    return strings;
}

TEST(SectionTest, AChainOverASlopeIsFollowedWhereverItComesBack) {
    RandomNumbers random(20311);
    for (int round = 0; round < 400; ++round) {
        const Point2D corner = surveyOrigins[round % 2];
        const Vec3D slope(random(-2, 2), random(-2, 2), random(-9, 9));
        const auto height = [&](double x, double y) { return slope.GetX() * x + slope.GetY() * y + slope.GetZ(); };
        const unsigned int n = round % 5 == 0 ? 30 : 6;
        // Every third corner of the chain is on a vertex of the grid, others on edges, or anywhere, or where it was.
        std::vector<Point2D> chain;
        for (std::size_t i = 0; i < 10; ++i) {
            Vec2D place(random(0.1, n - 0.1), random(0.1, n - 0.1));
            if (i % 3 != 2) place.SetX(std::floor(place.GetX()));
            if (i % 3 == 0) place.SetY(std::floor(place.GetY()));
            const bool comesBack = i > 1 && random() % 3 == 0;
            Point2D next = comesBack ? chain[1 + random() % (chain.size() - 1)] : corner + place;
            if (i == 9 && round % 8 == 0) next = chain[0];
            if (i == 0 || next.Distance(chain.back()) > 0.0) chain.push_back(next);
        }
        const unsigned int missing = round % 4 == 0 || chain.front() == chain.back() ? 0 : 3;
        IndexedTriangleSet3D grid = Grid(corner, n, height, [&](int, int) { return random() % 12 >= missing; });
        if (round % 3 == 0) grid = Soup(grid);
        Strings strings(1);
        grid.GetSections(LineString2D(chain), strings);
        const Strings expected = WalkAlong(grid, chain);
        ASSERT_EQ(strings.size(), expected.size()) << round;
        double length = 0.0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_THAT(strings[i].GetPoints(), testing::Pointwise(AreNear(3e-8), expected[i].GetPoints())) << round;
            for (const Point3D& p : strings[i].GetPoints()) {
                const Vec2D v = p.GetPoint2D() - corner;
                EXPECT_NEAR(p.GetZ(), height(v.GetX(), v.GetY()), 3e-8);
            }
            length += strings[i].GetLength2D();
        }
        EXPECT_TRUE(missing > 0 || std::abs(length - LineString2D(chain).GetLength()) < 1e-7);
    }
}

TEST(SectionTest, WallsBordersAndGaps) {
    const auto pond = [](int x, int y) { return x < 2 || x > 3 || y < 2 || y > 3; };
    const IndexedTriangleSet3D block = Block(Point3D(0, 0, 0), Vec3D(4, 3, 2)), grid = Grid(Point2D(), 6, kFlat, pond);
    const double root = std::sqrt(2.0), x = 5.4e6;
    const IndexedTriangleSet3D roof(
        {{x, 2 * x, 0}, {x + 10, 2 * x, 0}, {x + 5, 2 * x + 10, 10}, {x + 5, 2 * x - 10, 10}}, {0, 1, 2, 1, 0, 3});
    const std::vector<Point2D> beside = {{x + 1, 2 * x + 0.5}, {x + 5, 2 * x + 1.9e-9}, {x + 8, 2 * x}};
    // The lengths of the strings; over the infinite line, too, where the chain has two points.
    using Lengths = std::vector<double>;
    const std::tuple<const char*, const IndexedTriangleSet3D&, std::vector<Point2D>, Lengths, Lengths> rows[] = {
        {"through a block", block, {{-1, 1}, {9, 1}}, {12}, {12}},
        {"half of it", block, {{-1, 1}, {3, 1}}, {8}, {12}},
        {"inside it", block, {{1, 1}, {3, 1}}, {2, 2}, {12}},
        {"ends in its face", block, {{-1, 1}, {0, 1}}, {2}, {12}},
        {"along its face", block, {{-1, 3}, {9, 3}}, {12}, {12}},
        {"along half its face", block, {{2, 3}, {9, 3}}, {6}, {12}},
        {"along an edge, upright", block, {{-1, 1}, {1, -1}}, {2}, {2}},
        {"a wall at a bend is cut once", block, {{-1, 1}, {0, 1}, {0.5, 1.5}}, {2 + root}, {}},
        {"a wall at both ends", block, {{0, 1}, {-2, 1}, {-2, 2}, {0, 1}}, {2}, {}},
        {"across the pond", grid, {{0, 3}, {6, 3}}, {2, 2}, {2, 2}},
        {"along its shore", grid, {{6, 2}, {1, 2}}, {5}, {6}},
        {"over the corners of the pond", grid, {{-1, -1}, {2.5, 2.5}}, {2 * root}, {2 * root, 2 * root}},
        {"through its start", grid, {{1, 3}, {1, 1}, {5, 1}, {5, 3}, {1, 3}}, {10}, {}},
        {"around the pond", grid, {{1, 1}, {5, 1}, {5, 5}, {1, 5}, {1, 1}}, {16}, {}},
        {"touches a corner", grid, {{-1, 1}, {1, -1}}, {}, {}},
        {"no line", grid, {{1, 1}, {1, 1}}, {}, {}},
        {"not finite", grid, {{1, 1}, {kInfinity, 1}}, {}, {}},
        {"no way over infinity", grid, {{1, 1}, {kInfinity, 1}, {1.5, 1}}, {}, {}},
        {"a bend beside an edge, by rounding", roof, beside, {std::sqrt(16.5) + 3.0}, {}},
    };
    for (const auto& [why, mesh, chain, lengths, ofLine] : rows) {
        for (const IndexedTriangleSet3D& set : {mesh, Soup(mesh)}) {
            Strings lines, segments, chains;
            set.GetSections(LineString2D(chain), chains);
            EXPECT_THAT(LengthsOf(chains), testing::Pointwise(testing::DoubleNear(2e-9), lengths)) << why;
            if (chain.size() > 2) continue;
            set.GetSections(Line2D(chain[0], chain[1]), lines);
            set.GetSectionsLineSegment(Line2D(chain[0], chain[1]), segments);
            EXPECT_THAT(LengthsOf(lines), testing::Pointwise(testing::DoubleNear(1e-9), ofLine)) << why;
            EXPECT_EQ(LengthsOf(segments), LengthsOf(chains)) << why;
        }
    }
    // A wall covered once, twice, by triangles that overlap. One at the end is cut however the chain goes on.
    for (const Indexes& indexes : {Indexes{0, 1, 2, 0, 2, 3},
                                   {0, 1, 2, 0, 2, 3, 0, 2, 1, 0, 3, 2},
                                   {0, 1, 2, 0, 2, 3, 1, 2, 0},
                                   {0, 1, 2, 0, 2, 3, 0, 3, 1, 1, 3, 2}}) {
        const IndexedTriangleSet3D wall({{10, -5, 0}, {10, 5, 0}, {10, 5, 3}, {10, -5, 3}}, indexes);
        Strings strings;
        wall.GetSections(Line2D(Point2D(10, -9), Point2D(10, 9)), strings);
        EXPECT_THAT(LengthsOf(strings), testing::ElementsAre(26.0));
        for (const Point2D& last : {Point2D(10, 0), Point2D(10 + 1e-11, 0), Point2D(kNan, 0), Point2D(1e300, 0)}) {
            strings.clear();
            wall.GetSections(LineString2D{{0, 0}, {10, 0}, last}, strings);
            EXPECT_FALSE(strings.empty()) << last.GetX();
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
