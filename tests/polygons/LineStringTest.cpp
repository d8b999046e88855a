#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

const Tolerances kTolerances(0.0001, 1e-10);

template <class String>
std::vector<double> Abscissae(const String& string) {
    std::vector<double> x;
    for (const auto& point : string.GetPoints()) x.push_back(point.GetX());
    return x;
}

TEST(LineStringTest, EditsInsertInOrderRefuseWhatIsOutsideAndMayTakeTheirOwnPoints) {
    const auto check = [](auto string, const auto& make) {
        using Point = decltype(make(0.0));
        using X = std::vector<double>;
        string.AppendPoints(std::vector<Point>{make(1), make(4)});
        EXPECT_TRUE(string.Insert(1, std::list<Point>{make(2), make(3)}));
        EXPECT_TRUE(string.InsertReverse(4, std::vector<Point>{make(6), make(5)}));
        EXPECT_TRUE(string.Insert(0, make(0)));
        EXPECT_EQ(Abscissae(string), (X{0, 1, 2, 3, 4, 5, 6}));
        EXPECT_FALSE(string.Insert(8, make(9)));
        EXPECT_FALSE(string.InsertReverse(8, std::list<Point>{make(9)}));
        EXPECT_FALSE(string.RemovePoint(-1));
        EXPECT_FALSE(string.RemovePoint(7));
        EXPECT_TRUE(string.RemovePoint(6));
        EXPECT_TRUE(string.Insert(1, string.GetPoints()));
        string.AppendPoints(string.GetPoints());
        EXPECT_EQ(string.GetSize(), 24U);
        EXPECT_EQ(string.GetPoint(23).GetX(), 5.0);
        Point point = make(-1);
        EXPECT_FALSE(string.GetPoint(24, point));
        EXPECT_EQ(point.GetX(), -1.0);
        string.RemoveAllPoints();
        string.GetEnd() = make(7);
        EXPECT_EQ(string.GetEnd().GetX(), 0.0) << "the end of an empty string is nobody's point";
        EXPECT_EQ(std::as_const(string).GetStart().GetX(), 0.0);
        EXPECT_EQ(string.GetSize(), 0U);
    };
    check(LineString2D(), [](double x) { return Point2D(x, 0.0); });
    check(LineString3D(), [](double x) { return Point3D(x, 0.0, 0.0); });
    EXPECT_EQ(LineString2D(3).GetSize(), 3U);
    EXPECT_THAT(LineString3D(LineString2D{Point2D(1, 2)}, 3.0).GetPoint(0), IsNear(Point3D(1, 2, 3), 0.0));
}

TEST(LineStringTest, BoxAndSegmentsFollowEveryKindOfEdit) {
    LineString2D string{Point2D(0, 0), Point2D(1, 1)};
    const auto reaches = [&string](double x) {
        const bool box = string.GetBoundingBox().GetMaxPoint() == Point2D(x, x);
        const unsigned int last = string.GetNrOfElements() - 1;
        return box && string.GetElementAtIndex(last).GetEnd() == Point2D(x, x);
    };
    EXPECT_TRUE(reaches(1));
    string.AppendPoint(Point2D(2, 2));
    EXPECT_TRUE(reaches(2));
    string.GetPoint(2) = Point2D(3, 3);
    EXPECT_TRUE(reaches(3));
    string.GetEnd() = Point2D(4, 4);
    EXPECT_TRUE(reaches(4));
    string.GetPoints().emplace_back(5, 5);
    EXPECT_TRUE(reaches(5));
    string.ExtendEnd(Point2D(6, 6), kTolerances);
    EXPECT_TRUE(reaches(6));
    string.Translate(Vec2D(1, 1));
    EXPECT_TRUE(reaches(7));
    string.RemovePoint(3);
    EXPECT_TRUE(reaches(5));
    string = LineString2D{Point2D(0, 0), Point2D(8, 8)};
    EXPECT_TRUE(reaches(8));
    const LineString2D taken = std::move(string);
    // NOLINTNEXTLINE(bugprone-use-after-move): what a move leaves is promised
    EXPECT_EQ(string.GetBoundingBox().GetMaxPoint(), Point2D(0, 0)) << "what was moved from is empty";
    EXPECT_EQ(taken.GetElementAtIndex(1).GetEnd(), Point2D(8, 8)) << "any other index is the first segment";
    EXPECT_EQ(LineString2D().GetElementAtIndex(0).GetLength(), 0.0);
    LineString3D spatial{Point3D(0, 0, 0), Point3D(0, 0, 1)};
    EXPECT_EQ(spatial.GetElementAtIndex(0).GetEnd().GetZ(), 1.0);
    spatial[1].SetZ(2.0);
    EXPECT_EQ(spatial.GetElementAtIndex(7).GetEnd().GetZ(), 2.0);
    EXPECT_EQ(spatial.GetBoundingBox3D().GetMaxPoint().GetZ(), 2.0);
}

TEST(LineStringTest, CrossingsComeInOrderOnceEachWithTheirFirstPassage) {
    struct Row {
        const char* why;
        std::vector<Point2D> points;
        std::vector<std::pair<Point2D, double>> crossings;
    };
    using P = Point2D;
    const Row rows[] = {
        {"fewer segments than can cross", {P(0, 0), P(4, 0), P(2, 0)}, {}},
        {"a loop", {P(0, 0), P(4, 0), P(4, 4), P(2, 4), P(2, -4)}, {{P(2, 0), 2.0}}},
        {"the joint of a ring", {P(0, 0), P(4, 0), P(4, 4), P(0, 0)}, {}},
        {"a bow tie, closed", {P(0, 0), P(4, 4), P(4, 0), P(0, 4), P(0, 0)}, {{P(2, 2), std::sqrt(8.0)}}},
        {"an end that touches", {P(0, 0), P(4, 0), P(4, 4), P(1, 4), P(1, 0)}, {{P(1, 0), 1.0}}},
        {"an end within the tolerance", {P(0, 0), P(4, 0), P(4, 4), P(1, 4), P(1, 1.0 / 16)}, {{P(1, 1.0 / 16), 1.0}}},
        {"an end beyond the tolerance", {P(0, 0), P(4, 0), P(4, 4), P(1, 4), P(1, 5.0 / 32)}, {}},
        {"through a vertex: four pairs, one crossing",
         {P(0, 0), P(2, 0), P(4, 0), P(4, 4), P(2, 4), P(2, 0), P(2, -4)},
         {{P(2, 0), 2.0}}},
        {"three passages of one point",
         {P(0, 0), P(4, 0), P(4, 2), P(2, 2), P(2, -2), P(4, -2), P(0, 2)},
         {{P(2, 0), 2.0}}},
        {"back over itself: the first end that the later segment shares",
         {P(0, 0), P(8, 0), P(8, 4), P(6, 4), P(6, 0), P(3, 0)},
         {{P(3, 0), 3.0}, {P(6, 0), 6.0}}},
        {"in order of the first passage, not of the second",
         {P(0, 0), P(8, 0), P(8, 4), P(6, 4), P(6, -4), P(2, -4), P(2, 4)},
         {{P(2, 0), 2.0}, {P(6, 0), 6.0}}},
        {"a straight diagonal of steps hardly above the tolerance",
         {P(0, 0), P(0.1, 0.1), P(0.2, 0.2), P(0.3, 0.3), P(0.4, 0.4)},
         {}},
    };
    const double tolerance = 0.125;
    for (const Point2D& origin : surveyOrigins) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            LineString2D string(row.points);
            string.Translate(origin - Point2D());
            std::vector<std::pair<Point2D, double>> crossings{{Point2D(9, 9), 9.0}};
            EXPECT_EQ(string.IsSelfCrossing(crossings, tolerance), !row.crossings.empty());
            EXPECT_EQ(string.IsSelfCrossing(tolerance), !row.crossings.empty());
            ASSERT_EQ(crossings.size(), row.crossings.size());
            for (std::size_t i = 0; i < crossings.size(); ++i) {
                EXPECT_THAT(crossings[i].first, IsNear(row.crossings[i].first + origin, 1e-9));
                EXPECT_NEAR(crossings[i].second, row.crossings[i].second, 1e-9);
            }
            Point2D first(7, 7);
            EXPECT_EQ(string.IsSelfCrossing(first, tolerance), !crossings.empty());
            EXPECT_THAT(first, IsNear(crossings.empty() ? Point2D(7, 7) : crossings.front().first, 0.0));
        }
    }
}

// Exact for integer coordinates.
int Side(const Point2D& a, const Point2D& b, const Point2D& p) {
    const double area = (b - a).PerpDotProduct(p - a);
    return area > 0.0 ? 1 : area < 0.0 ? -1 : 0;
}

bool Intersect(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2) {
    const auto inBox = [](const Point2D& a, const Point2D& b, const Point2D& p) {
        return Line2D(a, b).GetBoundingBox2D().IsPointInside(p, 0.0);
    };
    if (Side(a1, a2, b1) * Side(a1, a2, b2) < 0 && Side(b1, b2, a1) * Side(b1, b2, a2) < 0) return true;
    return (Side(a1, a2, b1) == 0 && inBox(a1, a2, b1)) || (Side(a1, a2, b2) == 0 && inBox(a1, a2, b2)) ||
           (Side(b1, b2, a1) == 0 && inBox(b1, b2, a1)) || (Side(b1, b2, a2) == 0 && inBox(b1, b2, a2));
}

TEST(LineStringTest, CrossingsAreThoseOfAllPairsOfSegments) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20262));
    int crossed = 0;
    for (int round = 0; round < 400; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        const int extent = round % 4 < 2 ? 60 : 400;
        std::uniform_int_distribution<int> step(-extent / 20, extent / 20);
        std::vector<Point2D> p{origin};
        while (p.size() < 3U + static_cast<unsigned int>(round) / 4U) {
            const Vec2D v(step(random), step(random));
            const Vec2D before = p.size() > 1 ? p.back() - p[p.size() - 2] : Vec2D();
            const bool foldsBack = before.PerpDotProduct(v) == 0.0 && before.DotProduct(v) < 0.0;
            if (v.NormSquared() > 0.0 && !foldsBack) p.push_back(p.back() + v);
        }
        if (round % 3 == 0 && p.back().Distance(p.front()) > 0.5) p.push_back(p.front());
        const bool closed = p.back() == p.front();

        std::vector<Point2D> expected;
        bool overlaps = false;
        for (std::size_t i = 0; i + 1 < p.size(); ++i) {
            for (std::size_t j = i + 2; j + 1 < p.size(); ++j) {
                if ((closed && i == 0 && j + 2 == p.size()) || !Intersect(p[i], p[i + 1], p[j], p[j + 1])) continue;
                const double area = (p[i + 1] - p[i]).PerpDotProduct(p[j + 1] - p[j]);
                overlaps = overlaps || area == 0.0;
                if (area == 0.0) continue;
                const double t = (p[j] - p[i]).PerpDotProduct(p[j + 1] - p[j]) / area;
                expected.push_back(p[i] + (p[i + 1] - p[i]) * t);
            }
        }
        const LineString2D string(p);
        std::vector<std::pair<Point2D, double>> crossings;
        ASSERT_EQ(string.IsSelfCrossing(1e-7), overlaps || !expected.empty()) << round;
        ASSERT_EQ(string.IsSelfCrossing(crossings, 1e-7), overlaps || !expected.empty()) << round;
        crossed += crossings.empty() ? 0 : 1;
        for (const Point2D& point : expected) {
            EXPECT_EQ(std::count_if(crossings.begin(), crossings.end(),
                                    [&](const auto& crossing) { return crossing.first.Distance(point) < 1e-6; }),
                      1)
                << "round " << round;
        }
        double before = -1.0;
        for (const auto& [point, length] : crossings) {
            EXPECT_GT(length, before);
            before = length;
            double first = -1.0;
            ASSERT_TRUE(string.GetLengthFromStartPoint(point, first, 1e-7));
            EXPECT_NEAR(length, first, 1e-6) << "the first passage";
            EXPECT_TRUE(overlaps || std::any_of(expected.begin(), expected.end(), [&point = point](const Point2D& e) {
                            return e.Distance(point) < 1e-6;
                        }));
        }
    }
    EXPECT_GT(crossed, 100);
    EXPECT_LT(crossed, 390);
}

TEST(SegmentBoxesTest, FindsThePairsAndNeighboursThatAllBoxesGive) {
    using detail::SegmentBoxes;
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20263));
    const std::size_t sizes[] = {0, 1, 2, 3, 6, 7, 25, 150, 600};
    const double tolerance = 0.25;
    for (const std::size_t size : sizes) {
        SCOPED_TRACE(size);
        std::uniform_real_distribution<double> step(-3.0, 3.0);
        std::vector<Point2D> chain(size, surveyOrigins[1]);
        for (std::size_t i = 1; i < size; ++i) chain[i] = chain[i - 1] + Vec2D(step(random), step(random));
        std::vector<Point2D> ring(size / 2, surveyOrigins[1]);
        for (Point2D& point : ring) point += Vec2D(10.0 * step(random), 10.0 * step(random));
        const SegmentBoxes boxes(chain);
        const SegmentBoxes ringBoxes(ring, SegmentBoxes::Closing::Ring);
        ASSERT_EQ(boxes.GetCount(), size < 2 ? 0 : size - 1);
        ASSERT_EQ(ringBoxes.GetCount(), size / 2 < 2 ? 0 : size / 2);

        const auto boxOf = [](const SegmentBoxes& of, std::size_t i) {
            return Line2D(of.GetStart(i), of.GetEnd(i)).GetBoundingBox2D();
        };
        std::vector<std::pair<std::size_t, std::size_t>> within, between, expectedWithin, expectedBetween;
        std::vector<std::size_t> near, expectedNear;
        boxes.ForEachPair(tolerance, [&](std::size_t i, std::size_t j) { return within.emplace_back(i, j), false; });
        boxes.ForEachPair(ringBoxes, tolerance,
                          [&](std::size_t i, std::size_t j) { return between.emplace_back(i, j), false; });
        detail::Extent point;
        point.Add(surveyOrigins[1]);
        boxes.ForEachNear(point, 2.0, [&](std::size_t i) { return near.push_back(i), false; });
        for (std::size_t i = 0; i < boxes.GetCount(); ++i) {
            if (boxOf(boxes, i).IsPointInside(surveyOrigins[1], 2.0)) expectedNear.push_back(i);
            for (std::size_t j = i + 1; j < boxes.GetCount(); ++j) {
                if (boxOf(boxes, i).Intersects(boxOf(boxes, j), tolerance)) expectedWithin.emplace_back(i, j);
            }
            for (std::size_t j = 0; j < ringBoxes.GetCount(); ++j) {
                if (boxOf(boxes, i).Intersects(boxOf(ringBoxes, j), tolerance)) expectedBetween.emplace_back(i, j);
            }
        }
        std::sort(within.begin(), within.end());
        std::sort(between.begin(), between.end());
        EXPECT_EQ(within, expectedWithin);
        EXPECT_EQ(between, expectedBetween);
        EXPECT_EQ(near, expectedNear);
        int calls = 0;
        EXPECT_EQ(boxes.ForEachPair(tolerance, [&](std::size_t, std::size_t) { return ++calls > 0; }), size > 2);
        EXPECT_EQ(calls, size > 2 ? 1 : 0) << "true ends the search";
    }
}

}  // namespace
}  // namespace Kalvio::Math
