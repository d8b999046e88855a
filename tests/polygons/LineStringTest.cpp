#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"
#include "support/Concurrently.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
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

// A chain that advances to the right, so that it passes every point once.
std::vector<Point2D> RandomChain(std::mt19937_64& random, const Point2D& origin, std::size_t count) {
    std::uniform_real_distribution<double> ahead(0.5, 9.0);
    std::uniform_real_distribution<double> aside(-6.0, 6.0);
    std::vector<Point2D> points{origin};
    while (points.size() < count) points.push_back(points.back() + Vec2D(ahead(random), aside(random)));
    return points;
}

double AngleBetween(const Vec2D& a, const Vec2D& b) { return std::atan2(a.PerpDotProduct(b), a.DotProduct(b)); }

TEST(LineStringTest, StationsExtractionsBreaksAndSamplesAgreeAlongRandomChains) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20261));
    std::uniform_real_distribution<double> fraction(0.0, 1.0);
    for (unsigned int round = 0; round < 60; ++round) {
        const std::vector<Point2D> points = RandomChain(random, surveyOrigins[round % 2], 2U + round % 30U);
        const LineString2D string(points);
        const double total = string.GetLength();
        const std::unique_ptr<LineString2D> reversed(static_cast<LineString2D*>(string.CloneAsReverse()));
        const double s = fraction(random) * total;
        Point2D p, mirrored;
        double fromStart = -1.0, fromEnd = -1.0;
        ASSERT_TRUE(string.GetPointOffsetFromStart(s, p));
        ASSERT_TRUE(reversed->GetPointOffsetFromStart(total - s, mirrored));
        EXPECT_THAT(mirrored, IsNear(p, 1e-7));
        ASSERT_TRUE(string.GetLengthFromStartPoint(p, fromStart, 1e-4));
        ASSERT_TRUE(string.GetLengthFromEndPoint(p, fromEnd, 1e-4));
        EXPECT_NEAR(fromStart, s, 1e-7);
        EXPECT_NEAR(fromEnd, total - s, 1e-7);
        ASSERT_TRUE(reversed->GetLengthFromStartPoint(p, mirrored[0], 1e-4));
        EXPECT_NEAR(mirrored[0], fromEnd, 1e-7);
        EXPECT_TRUE(string.IsPointOnGeometry(p, kTolerances));
        std::vector<double> passages;
        string.GetLengthsAlongGeometry(p, passages, kTolerances);
        ASSERT_EQ(passages.size(), 1U);
        EXPECT_EQ(passages[0], fromStart);
        Vec2D tangent, atLength;
        ASSERT_TRUE(string.ComputeTangent(p, tangent, kTolerances));
        ASSERT_TRUE(string.GetTangentAtLength(s, atLength, 0.0));
        EXPECT_THAT(atLength, IsNear(tangent, 1e-12));

        const double t = s + fraction(random) * (total - s);
        LineString2D before, between, after;
        ASSERT_TRUE(string.ExtractLineString(0.0, s, before));
        ASSERT_TRUE(string.ExtractLineString(s, t, between));
        ASSERT_TRUE(string.ExtractLineString(t, total, after));
        EXPECT_NEAR(before.GetLength(), s, 1e-7);
        EXPECT_NEAR(between.GetLength(), t - s, 1e-7);
        EXPECT_NEAR(after.GetLength(), total - t, 1e-7);
        EXPECT_THAT(between.GetStart(), IsNear(p, 1e-7));
        EXPECT_THAT(std::as_const(between).GetEnd(), IsNear(after.GetStart(), 1e-7));

        std::vector<IGeometry*> out;
        ASSERT_TRUE(string.BreakAt({p, points.back() + Vec2D(1, 1)}, out, kTolerances));
        ASSERT_EQ(out.size(), 2U);
        const std::unique_ptr<LineString2D> head(static_cast<LineString2D*>(out[0]));
        const std::unique_ptr<LineString2D> tail(static_cast<LineString2D*>(out[1]));
        EXPECT_THAT(std::as_const(*head).GetEnd(), IsNear(p, 0.0));
        EXPECT_THAT(tail->GetStart(), IsNear(p, 0.0));
        EXPECT_TRUE(head->IsEqualTo(before, 1e-6));
        EXPECT_NEAR(head->GetLength() + tail->GetLength(), total, 1e-7);
        EXPECT_EQ(head->GetSize() + tail->GetSize(), points.size() + 2U);

        std::vector<IPolyline2DElement::PolylineElementPoint> samples;
        ASSERT_TRUE(string.MakePointsAndTangents(s, total + 1.0, samples, 1.75));
        EXPECT_EQ(samples.front().station, s);
        EXPECT_NEAR(samples.back().station, total, 1e-9);
        EXPECT_NEAR(static_cast<double>(samples.size()), (total - s) / 1.75 + 1.5, 0.5 + 1e-6);
        std::list<Point2D> listed;
        std::list<Vec2D> tangents;
        LineString2D sampled;
        ASSERT_TRUE(string.MakePointsAndTangents(s, total, 1.75, listed, tangents));
        ASSERT_TRUE(string.MakeLineString(s, total, sampled, 1.75));
        ASSERT_EQ(listed.size(), samples.size());
        EXPECT_EQ(sampled.GetPoints(), std::vector<Point2D>(listed.begin(), listed.end()));
        for (const auto& sample : samples) {
            ASSERT_TRUE(string.GetPointOffsetFromStart(sample.station, p));
            EXPECT_THAT(sample.point, IsNear(p, 1e-8));
            ASSERT_TRUE(string.GetTangentAtLength(sample.station - 1e-7, tangent, 0.0));
            EXPECT_THAT(sample.tangent, IsNear(tangent, 1e-9));
        }
    }
}

TEST(LineStringTest, ClosestSegmentIsTheFirstOfTheNearestByTheDistanceToEachSegment) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20264));
    std::uniform_int_distribution<int> coordinate(-4, 4);
    for (int round = 0; round < 2000; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        LineString2D string;
        for (int i = 0; i < 2 + round % 9; ++i) {
            string.AppendPoint(origin + Vec2D(coordinate(random), coordinate(random)));
        }
        const Point2D p = origin + Vec2D(coordinate(random), coordinate(random));
        double nearest = std::numeric_limits<double>::infinity();
        unsigned int expected = 99;
        for (unsigned int i = 0; i < string.GetNrOfElements(); ++i) {
            const double distance = std::abs(Distance::PointToLineSegment(string.GetElementAtIndex(i), p, 1e-10));
            if (distance < nearest) expected = i;
            nearest = std::min(nearest, distance);
        }
        unsigned int index = 77;
        ASSERT_TRUE(string.GetClosestSegment(p, index));
        EXPECT_EQ(index, expected);
        const Polyline2D::PolylinePoint projected = Projection::NearestPointOnLineString(p, string, 1e-10);
        EXPECT_EQ(projected.elementIndex, expected);
        EXPECT_NEAR(projected.distance, nearest, 1e-12);
        EXPECT_NEAR(projected.point.Distance(p), nearest, 2e-9);
        EXPECT_NEAR(Distance::PointToLineString(string, p, 1e-10), nearest, 1e-12);
        double station = -1.0;
        EXPECT_TRUE(string.GetLengthFromStartPoint(projected.point, station, 1e-8));
        EXPECT_LE(station, projected.station + 1e-7) << "no later than the nearest place";
    }
    unsigned int index = 99;
    const LineString2D u{Point2D(0, 0), Point2D(4, 0), Point2D(4, 2), Point2D(0, 2)};
    EXPECT_TRUE(u.GetClosestSegment(Point2D(1, 1), index));
    EXPECT_EQ(index, 0U) << "as near to segment 2";
}

TEST(LineStringTest, LengthsAtTheLimits) {
    const LineString2D string{Point2D(0, 0), Point2D(10, 0), Point2D(10, 10)};
    Point2D p(-1, -1);
    EXPECT_TRUE(string.GetPointOffsetFromStart(20.0 + 5e-11, p));
    EXPECT_THAT(p, IsNear(Point2D(10, 10), 1e-9));
    EXPECT_TRUE(string.GetPointOffsetFromStart(-2.0, p));
    EXPECT_THAT(p, IsNear(Point2D(-2, 0), 0.0));
    EXPECT_FALSE(string.GetPointOffsetFromStart(20.0 + 1e-9, p));
    EXPECT_FALSE(LineString2D({Point2D(0, 0), Point2D(0, 0), Point2D(1, 0)}).GetPointOffsetFromStart(0.0, p));
    EXPECT_THAT(p, IsNear(Point2D(-2, 0), 0.0));
    EXPECT_THAT(string.GetMiddlePoint(), IsNear(Point2D(10, 0), 1e-12));
    EXPECT_THAT(LineString2D{Point2D(3, 4)}.GetMiddlePoint(), IsNear(Point2D(0, 0), 0.0));

    struct Tangent {
        const char* why;
        double length, tol;
        bool expected;
        Vec2D tangent;
    };
    const double r = std::sqrt(0.5);
    const Tangent tangents[] = {
        {"inside", 5.0, 0.25, true, Vec2D(1, 0)},
        {"before the start within tol", -0.25, 0.25, true, Vec2D(1, 0)},
        {"just before a vertex", 9.75, 0.25, true, Vec2D(r, r)},
        {"at a vertex", 10.0, 0.25, true, Vec2D(r, r)},
        {"exactly tol after a vertex", 10.25, 0.25, true, Vec2D(0, 1)},
        {"further before it than tol", 9.5, 0.25, true, Vec2D(1, 0)},
        {"at the very end", 20.0, 0.0, true, Vec2D(0, 1)},
        {"after the end within tol", 20.25, 0.25, true, Vec2D(0, 1)},
        {"too far after the end", 20.5, 0.25, false, Vec2D(7, 7)},
        {"too far before the start", -0.5, 0.25, false, Vec2D(7, 7)},
    };
    for (const Tangent& row : tangents) {
        SCOPED_TRACE(row.why);
        Vec2D tangent(7, 7);
        EXPECT_EQ(string.GetTangentAtLength(row.length, tangent, row.tol), row.expected);
        EXPECT_THAT(tangent, IsNear(row.tangent, 1e-15));
    }

    struct Extraction {
        const char* why;
        double from, to;
        bool expected;
        std::vector<double> x;
    };
    const Extraction extractions[] = {
        {"inside", 15, 25, true, {15, 20, 25}},
        {"from a vertex to a vertex", 10, 20, true, {10, 20}},
        {"no length", 12, 12, true, {12, 12}},
        {"from before the start", -5, 5, true, {-5, 5}},
        {"to beyond the end", 25, 99, true, {25, 30}},
        {"all", 0, 30, true, {0, 10, 20, 30}},
        {"just over a vertex", 5, 10 + 5e-11, true, {5, 10}},
        {"beyond the end", 35, 40, false, {}},
        {"before the start", -9, -5, false, {}},
        {"backwards", 20, 10, false, {-1}},
    };
    for (const Extraction& row : extractions) {
        SCOPED_TRACE(row.why);
        LineString2D straight{Point2D(0, 0), Point2D(10, 0), Point2D(20, 0), Point2D(30, 0)};
        LineString2D out{Point2D(-1, 0)};
        EXPECT_EQ(straight.ExtractLineString(row.from, row.to, out), row.expected);
        EXPECT_THAT(Abscissae(out), testing::Pointwise(testing::DoubleNear(1e-9), row.x));
        if (row.expected) {
            EXPECT_TRUE(straight.ExtractLineString(row.from, row.to, straight));
            EXPECT_TRUE(straight.IsEqualTo(out, 1e-12)) << "into itself";
        }
    }
}

TEST(LineStringTest, PassagesCountOnceAtVerticesAndOncePerPass) {
    const LineString2D string{Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(2, 4), Point2D(2, 0), Point2D(0, 0)};
    const auto passages = [&string](const Point2D& p) {
        std::vector<double> lengths{9.0};
        string.GetLengthsAlongGeometry(p, lengths, kTolerances);
        return lengths;
    };
    EXPECT_EQ(passages(Point2D(4, 0)), (std::vector<double>{4.0}));
    EXPECT_EQ(passages(Point2D(2, 0)), (std::vector<double>{2.0, 14.0}));
    EXPECT_EQ(passages(Point2D(0, 0)), (std::vector<double>{0.0, 16.0}));
    EXPECT_EQ(passages(Point2D(1, 0)), (std::vector<double>{1.0, 15.0}));
    EXPECT_EQ(passages(Point2D(1, 1)), std::vector<double>());
    EXPECT_EQ(passages(Point2D(4.00007, -0.00007)).size(), 1U) << "beside a vertex";
}

TEST(LineStringTest, EditsByLengthAndDistance) {
    using X = std::vector<double>;
    const auto along = [](const X& x) {
        LineString2D string;
        for (const double value : x) string.AppendPoint(Point2D(value, 0.0));
        return string;
    };
    struct Insertion {
        double length;
        bool expected;
        X x;
    };
    const Insertion insertions[] = {{0.0, true, {0, 7, 1, 3}}, {1.0, true, {0, 7, 1, 3}}, {1.5, true, {0, 1, 7, 3}},
                                    {3.0, true, {0, 1, 7, 3}}, {3.5, false, {0, 1, 3}},   {-1e-9, false, {0, 1, 3}},
                                    {kNan, false, {0, 1, 3}}};
    for (const Insertion& row : insertions) {
        LineString2D string = along({0, 1, 3});
        EXPECT_EQ(string.InsertAtLength(row.length, Point2D(7, 0)), row.expected) << row.length;
        EXPECT_EQ(Abscissae(string), row.x) << row.length;
    }

    LineString2D string = along({0, 0.05, 0.2, 0.25});
    string.ReducePoints(0.1);
    EXPECT_EQ(Abscissae(string), (X{0, 0.2})) << "measured from the last point kept";
    string = along({0, 0.5, 1.0});
    string.ReducePoints(0.5);
    EXPECT_EQ(Abscissae(string), (X{0, 1.0})) << "exactly the tolerance away goes";
    string = LineString2D{Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(0.25, 0.25)};
    string.ReducePoints(0.5);
    EXPECT_THAT(string.GetEnd(), IsNear(Point2D(0, 0), 0.0)) << "snapped shut";
    string = LineString2D{Point2D(0, 0), Point2D(4, 0), Point2D(0.25, 0.25)};
    string.ReducePoints(0.5);
    EXPECT_THAT(string.GetEnd(), IsNear(Point2D(0.25, 0.25), 0.0)) << "three points are no ring";

    string = along({2, 2, 2});
    string.RemoveClosingPoint(0.1);
    EXPECT_EQ(string.GetSize(), 0U);
    string = along({0, 5, 0.25, 0});
    string.RemoveClosingPoint(0.5);
    EXPECT_EQ(Abscissae(string), (X{0, 5})) << "exactly the tolerance away would stay";

    struct Short {
        double minLength;
        bool expected;
        std::vector<std::uint64_t> indexes;
    };
    const Short shorts[] = {{1.0, false, {9}}, {1.5, true, {9, 0, 2}}, {4.5, true, {9}}, {4.0, true, {9, 0, 1, 2}}};
    for (const Short& row : shorts) {
        std::vector<std::uint64_t> indexes{9};
        EXPECT_EQ(along({0, 1, 3, 4}).FindShortElements(indexes, row.minLength), row.expected) << row.minLength;
        EXPECT_EQ(indexes, row.indexes) << row.minLength;
    }
    const auto removed = [&](const std::vector<std::uint64_t>& indexes, bool protect) {
        LineString2D from = along({0, 1, 2, 3, 4});
        from.RemoveElements(indexes, protect);
        return Abscissae(from);
    };
    EXPECT_EQ(removed({0, 2, 2, 4, 99}, false), (X{0, 2, 4}));
    EXPECT_EQ(removed({0, 1, 3}, true), (X{0, 1, 3}));
    EXPECT_EQ(removed({}, false), (X{0, 1, 2, 3, 4}));
}

TEST(LineStringTest, BreaksKeepTheVerticesAndGiveWayToCutsNearThem) {
    struct Row {
        const char* why;
        std::vector<double> cuts;
        bool modifyThis;
        std::vector<std::vector<double>> pieces;  // this string first when it is modified
    };
    const Row rows[] = {
        {"between vertices", {15.0}, false, {{0, 10, 15}, {15, 20, 30}}},
        {"in place", {15.0, 25.0}, true, {{0, 10, 15}, {15, 20, 25}, {25, 30}}},
        {"at a vertex", {20.0}, false, {{0, 10, 20}, {20, 30}}},
        {"just before and after a vertex", {9.875, 20.125}, false, {{0, 9.875}, {9.875, 20.125}, {20.125, 30}}},
        {"at the ends, and outside", {-1.0, 0.125, 30.0, 31.0}, false, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        LineString2D string{Point2D(0, 0), Point2D(10, 0), Point2D(20, 0), Point2D(30, 0)};
        EXPECT_EQ(string.GetBoundingBox().GetSize().GetX(), 30.0);
        std::map<double, const Point2D> breaks;
        for (const double cut : row.cuts) breaks.emplace(100.0 + cut, Point2D(cut, 0.0));
        std::vector<IGeometry*> out;
        EXPECT_EQ(string.BreakAtPreSorted(breaks, 100.0, out, row.modifyThis, Tolerances(0.25, 1e-10)),
                  !row.pieces.empty());
        std::vector<std::vector<double>> pieces;
        if (row.modifyThis) pieces.push_back(Abscissae(string));
        for (IGeometry* const piece : out) {
            const std::unique_ptr<LineString2D> owned(static_cast<LineString2D*>(piece));
            pieces.push_back(Abscissae(*owned));
        }
        EXPECT_EQ(pieces, row.pieces);
        EXPECT_EQ(string.GetBoundingBox().GetSize().GetX(), row.modifyThis ? 15.0 : 30.0);
    }
}

TEST(LineStringTest, ExtendMeetsTheTargetStraightOnOrAtTheNearestPoint) {
    struct Row {
        const char* why;
        LineString2D target;
        bool atEnd, straight;
        double maxDistance, maxAngle;
        bool expected;
        Point2D added;
    };
    const LineString2D wall{Point2D(8, -9), Point2D(8, 9)};
    const LineString2D slope{Point2D(4, 4), Point2D(12, -4)};
    const Row rows[] = {
        {"straight on", wall, true, true, 5.0, 0.0, true, Point2D(8, 0)},
        {"exactly the distance", wall, true, true, 4.0, 0.0, true, Point2D(8, 0)},
        {"the nearest of the crossings",
         {Point2D(9, -1), Point2D(9, 1), Point2D(7, 1), Point2D(7, -1)},
         true,
         true,
         9.0,
         0.0,
         true,
         Point2D(7, 0)},
        {"a crossing behind the end is nearer",
         {Point2D(3, -1), Point2D(3, 1), Point2D(9, 1), Point2D(9, -1)},
         true,
         true,
         9.0,
         0.0,
         true,
         Point2D(3, 0)},
        {"straight on is too far, the nearest point is not", slope, true, true, 3.0, 0.8, true, Point2D(6, 2)},
        {"the nearest point is off by too much", slope, true, false, 3.0, 0.7, false, Point2D()},
        {"the nearest point is too far", slope, true, false, 2.5, 3.0, false, Point2D()},
        {"at the start", {Point2D(-5, -9), Point2D(-5, 9)}, false, true, 5.0, 0.0, true, Point2D(-5, 0)},
        {"nothing there", {}, true, true, 99.0, 3.0, false, Point2D()},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        LineString2D string{Point2D(0, 0), Point2D(2, 0), Point2D(4, 0)};
        EXPECT_EQ(string.Extend(row.target, row.atEnd, 1e-4, row.straight, row.maxDistance, Angle(row.maxAngle)),
                  row.expected);
        ASSERT_EQ(string.GetSize(), row.expected ? 4U : 3U);
        if (!row.expected) continue;
        EXPECT_THAT(string.GetPoint(row.atEnd ? 3 : 0), IsNear(row.added, 1e-12));
    }
}

TEST(LineStringTest, AppendAndEqualityByTheOthersType) {
    const LineString2D string{Point2D(0, 0), Point2D(1, 0)};
    const Line2D line(Point2D(9, 9), Point2D(2, 0));
    const Arc2D arc(Point2D(2, 0), Point2D(1, 0), Angle(1.0));
    const auto appended = [&string](const IGeometry& other) {
        return std::unique_ptr<IGeometry>(string.Append(&other));
    };
    EXPECT_TRUE(appended(line)->IsEqualTo(LineString2D{Point2D(0, 0), Point2D(1, 0), Point2D(2, 0)}, 1e-9));
    EXPECT_TRUE(appended(LineString2D{Point2D(9, 9), Point2D(2, 0), Point2D(3, 0)})
                    ->IsEqualTo(LineString2D{Point2D(0, 0), Point2D(1, 0), Point2D(2, 0), Point2D(3, 0)}, 1e-9));
    EXPECT_TRUE(appended(LineString2D{Point2D(9, 9)})->IsEqualTo(string, 1e-9));
    const std::unique_ptr<IGeometry> withArc = appended(arc);
    ASSERT_EQ(withArc->GetType(), MathTypes::Polyline2D);
    const auto& chain = static_cast<const Polyline2D&>(*withArc);
    ASSERT_EQ(chain.GetNrOfElements(), 2U);
    EXPECT_TRUE(chain.GetElementAtIndex(0).IsEqualTo(string, 1e-9));
    EXPECT_TRUE(chain.GetElementAtIndex(1).IsEqualTo(arc, 1e-9));
    const std::unique_ptr<IGeometry> withChain = appended(chain);
    ASSERT_EQ(static_cast<const Polyline2D&>(*withChain).GetNrOfElements(), 3U);
    EXPECT_EQ(appended(Point2D(1, 1)), nullptr);
    EXPECT_EQ(string.Append(nullptr), nullptr);

    EXPECT_TRUE(string.IsEqualTo(Line2D(Point2D(0, 0), Point2D(1, 0)), 1e-9));
    EXPECT_FALSE(string.IsEqualTo(Line2D(Point2D(1, 0), Point2D(0, 0)), 1e-9));
    EXPECT_FALSE(string.IsEqualTo(LineString2D{Point2D(0, 0)}, 1e-9));
    EXPECT_FALSE(string.IsEqualTo(LineString2D{Point2D(0, 0), Point2D(1.5, 0)}, 0.5)) << "strict";
    Polyline2D single;
    single.AppendElement(string.Clone());
    EXPECT_TRUE(string.IsEqualTo(single, 1e-9));
    EXPECT_FALSE(string.IsEqualTo(chain, 1e-9));
    Polyline2D ofLine;
    ofLine.AppendElement(new Line2D(Point2D(0, 0), Point2D(1, 0)));
    EXPECT_FALSE(string.IsEqualTo(ofLine, 1e-9)) << "its element is of another type";
}

TEST(LineStringTest, OrientedBoxIsTheSmallestOverAllDirections) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20265));
    std::normal_distribution<double> spread(0.0, 10.0);
    for (int round = 0; round < 40; ++round) {
        const double tilt = spread(random);
        LineString2D string;
        for (int i = 0; i < 1 + round; ++i) {
            const double u = 4.0 * spread(random);
            const double v = round % 4 == 3 ? 0.0 : spread(random);
            string.AppendPoint(surveyOrigins[round % 2] +
                               Vec2D(u * std::cos(tilt) - v * std::sin(tilt), u * std::sin(tilt) + v * std::cos(tilt)));
        }
        const OrientedBoundingBox2D box = string.GetOrientedBoundingBox2D();
        Vec2D first, second;
        box.GetAxes(first, second);
        EXPECT_NEAR(AngleBetween(first, second), std::acos(0.0), 1e-12);
        for (const Point2D& point : string.GetPoints()) {
            EXPECT_LE(std::abs((point - box.GetCenter()).DotProduct(first)), 0.5 * box.GetSize().GetX() + 1e-8);
            EXPECT_LE(std::abs((point - box.GetCenter()).DotProduct(second)), 0.5 * box.GetSize().GetY() + 1e-8);
        }
        for (double angle = 0.0; angle < 3.15; angle += 0.01) {
            const Vec2D along(std::cos(angle), std::sin(angle));
            double low = 0.0, high = 0.0, left = 0.0, right = 0.0;
            for (const Point2D& point : string.GetPoints()) {
                const Vec2D v = point - string.GetStart();
                low = std::min(low, v.DotProduct(along));
                high = std::max(high, v.DotProduct(along));
                left = std::min(left, along.PerpDotProduct(v));
                right = std::max(right, along.PerpDotProduct(v));
            }
            EXPECT_LE(box.GetSize().GetX() * box.GetSize().GetY(), (high - low) * (right - left) + 1e-6);
        }
    }
}

TEST(LineStringTest, BadInputGivesTheDocumentedFailure) {
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<Point2D> none;
    const std::vector<std::vector<Point2D>> inputs = {
        none,
        {Point2D(1, 1)},
        {Point2D(1, 1), Point2D(1, 1)},
        {Point2D(kNan, 0), Point2D(kNan, kNan), Point2D(0, kNan)},
        {Point2D(0, 0), Point2D(inf, 1), Point2D(-inf, 2), Point2D(3, inf)},
        {Point2D(0, 0), Point2D(1e300, 1), Point2D(-1e300, 2)}};
    for (const std::vector<Point2D>& points : inputs) {
        LineString2D string(points);
        for (const double value : {kNan, inf, -inf, -1.0, 1e300}) {
            Point2D p(7, 7);
            Vec2D tangent(7, 7);
            std::list<Point2D> samples;
            std::list<Vec2D> tangents;
            LineString2D out{Point2D(7, 7)};
            EXPECT_FALSE(string.GetTangentAtLength(kNan, tangent, value));
            EXPECT_FALSE(string.MakePointsAndTangents(0.0, 1.0, kNan, samples, tangents));
            EXPECT_FALSE(string.MakePointsAndTangents(value, -2.0, 1.0, samples, tangents));
            EXPECT_FALSE(string.ExtractLineString(kNan, value, out));
            EXPECT_FALSE(string.GetPointOffsetFromStart(kNan, p));
            EXPECT_FALSE(string.InsertAtLength(kNan, p));
            EXPECT_FALSE(string.IsSelfCrossing(value)) << value;
            unsigned int index = 7;
            EXPECT_EQ(string.GetClosestSegment(Point2D(kNan, value), index), false);
            EXPECT_EQ(index, 7U);
            EXPECT_THAT(p, IsNear(Point2D(7, 7), 0.0));
            EXPECT_THAT(tangent, IsNear(Vec2D(7, 7), 0.0));
            EXPECT_TRUE(samples.empty() && tangents.empty());
            EXPECT_EQ(out.GetSize(), 1U);
            string.GetOrientedBoundingBox2D();
            string.GetElementAtIndex(3);
            string.Extend(LineString2D(points), true, value, true, value, Angle(1.0));
            string.ReducePoints(value);
        }
    }
    EXPECT_FALSE(LineString2D(none).ExtendStart(Point2D(1, 1), kTolerances));
    double length = 7.0;
    EXPECT_FALSE(LineString2D(none).GetLengthFromStartPoint(Point2D(0, 0), length, 1.0));
    EXPECT_EQ(length, 0.0);
    EXPECT_FALSE(LineString2D(none).IsClosed(1.0));
    EXPECT_TRUE(LineString2D{Point2D(1, 1)}.IsClosed(1.0));
}

TEST(LineStringTest, ConstCallsFromManyThreadsSeeOneString) {
    std::mt19937_64 random(20266);
    const LineString2D string(RandomChain(random, surveyOrigins[1], 500));
    const LineString3D spatial(string, 5.0);
    std::vector<double> seen(8, 0.0);
    Concurrently(8, [&](unsigned int i) {
        const unsigned int segment = i % 2 == 0 ? 3 : 400;
        seen[i] = string.GetBoundingBox().GetSize().GetX() + string.GetElementAtIndex(segment).GetLength() +
                  spatial.GetElementAtIndex(segment).GetLength() + (string.IsSelfCrossing(1e-4) ? 1.0 : 0.0);
    });
    for (unsigned int i = 2; i < 8; ++i) EXPECT_EQ(seen[i], seen[i % 2]);
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
