#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"
#include "support/Concurrently.h"
#include "support/ElementChecks.h"

#include <sstream>

namespace Kalvio::Math {
namespace {

using Values = std::vector<double>;

// "0 0  4 0  4 4": x and y in turn.
LineString2D Chain(const char* coordinates) {
    std::istringstream in(coordinates);
    LineString2D string;
    for (double x = 0.0, y = 0.0; in >> x >> y;) string.AppendPoint(Point2D(x, y));
    return string;
}

LineString2D Along(const Values& x) {
    LineString2D string;
    for (const double value : x) string.AppendPoint(Point2D(value, 0.0));
    return string;
}

template <class String>
Values Abscissae(const String& string) {
    Values x;
    for (const auto& point : string.GetPoints()) x.push_back(point.GetX());
    return x;
}

// A chain that advances to the right, so that it passes every point once.
LineString2D RandomChain(RandomNumbers& random, const Point2D& origin, unsigned int count) {
    LineString2D string{origin};
    while (string.GetSize() < count) {
        string.AppendPoint(std::as_const(string).GetEnd() + Vec2D(random(0.5, 9.0), random(-6.0, 6.0)));
    }
    return string;
}

TEST(LineStringTest, EditsInsertInOrderRefuseWhatIsOutsideAndMayTakeTheirOwnPoints) {
    const auto check = [](auto string, const auto& make) {
        using Point = decltype(make(0.0));
        string.AppendPoints(std::vector<Point>{make(1), make(4)});
        EXPECT_TRUE(string.Insert(1, std::list<Point>{make(2), make(3)}) && string.Insert(0, make(0)));
        EXPECT_TRUE(string.InsertReverse(5, std::vector<Point>{make(6), make(5)}) && string.RemovePoint(6));
        EXPECT_FALSE(string.Insert(7, make(9)) || string.InsertReverse(7, std::list<Point>{make(9)}));
        EXPECT_FALSE(string.RemovePoint(-1) || string.RemovePoint(6));
        EXPECT_TRUE(string.Insert(1, string.GetPoints()));
        string.AppendPoints(string.GetPoints());
        EXPECT_EQ(Abscissae(string), (Values{0, 0, 1, 2, 3, 4, 5, 1, 2, 3, 4, 5, 0, 0, 1, 2, 3, 4, 5, 1, 2, 3, 4, 5}));
        string.RemoveAllPoints();
        string.GetEnd() = make(7);
        EXPECT_TRUE(string.GetEnd().GetX() == 0.0 && string.GetSize() == 0) << "the end of none is nobody's point";
    };
    check(LineString2D(), [](double x) { return Point2D(x, 0.0); });
    check(LineString3D(), [](double x) { return Point3D(x, 0.0, 0.0); });
}

TEST(LineStringTest, BoxAndSegmentsFollowEveryKindOfEdit) {
    const std::pair<double, void (*)(LineString2D&)> edits[] = {
        {2, [](LineString2D& string) { string.AppendPoint(Point2D(2, 0)); }},
        {3, [](LineString2D& string) { string.GetPoint(2) = Point2D(3, 0); }},
        {4, [](LineString2D& string) { string.GetEnd() = Point2D(4, 0); }},
        {5, [](LineString2D& string) { string.GetPoints().emplace_back(5, 0); }},
        {6, [](LineString2D& string) { string.Translate(Vec2D(1, 0)); }},
    };
    LineString2D string = Along({0, 1});
    for (const auto& [x, edit] : edits) {
        edit(string);
        EXPECT_EQ(string.GetBoundingBox().GetMaxPoint(), Point2D(x, 0));
        EXPECT_EQ(string.GetElementAtIndex(string.GetNrOfElements() - 1).GetEnd(), Point2D(x, 0));
    }
    const LineString2D taken = std::move(string);
    EXPECT_EQ(string.GetBoundingBox().GetMaxPoint(), Point2D(0, 0)) << "what was moved from is empty";
    EXPECT_EQ(taken.GetElementAtIndex(99).GetEnd(), Point2D(2, 0)) << "any other index is the first segment";
    EXPECT_EQ(LineString2D().GetElementAtIndex(0).GetLength(), 0.0);
}

TEST(LineStringTest, StationsExtractionsBreaksAndSamplesAgreeAlongRandomChains) {
    RandomNumbers random(20261);
    for (unsigned int round = 0; round < 60; ++round) {
        const LineString2D string = RandomChain(random, surveyOrigins[round % 2], 2 + round % 30);
        const double total = string.GetLength();
        LineString2D reversed = string;
        reversed.Reverse();
        const double s = random(0.0, 1.0) * total;
        Point2D p = CheckRoundTrip(string, s, 1e-7);
        EXPECT_THAT(CheckRoundTrip(reversed, total - s, 1e-7), IsNear(p, 1e-7));
        Values passages;
        string.GetLengthsAlongGeometry(p, passages, kTolerances);
        EXPECT_EQ(passages, Values{string.LengthFromStartPoint(p, 1e-4)});

        LineString2D before, after;
        ASSERT_TRUE(string.ExtractLineString(0.0, s, before) && string.ExtractLineString(s, total, after));
        std::vector<IGeometry*> out;
        ASSERT_TRUE(string.BreakAt({p, p + Vec2D(0, 9)}, out, kTolerances));
        const auto pieces = Owned(out);
        ASSERT_EQ(pieces.size(), 2U);
        EXPECT_TRUE(pieces[0]->IsEqualTo(before, 1e-6) && pieces[1]->IsEqualTo(after, 1e-6));
        EXPECT_NEAR(before.GetLength() + after.GetLength(), total, 1e-7);

        std::vector<Sample> samples;
        std::list<Point2D> listed;
        std::list<Vec2D> tangents;
        LineString2D sampled;
        ASSERT_TRUE(string.MakePointsAndTangents(s, total + 1.0, samples, 1.75));
        ASSERT_TRUE(string.MakePointsAndTangents(s, total, 1.75, listed, tangents));
        ASSERT_TRUE(string.MakeLineString(s, total, sampled, 1.75));
        EXPECT_NEAR(static_cast<double>(samples.size()), (total - s) / 1.75 + 1.5, 0.5 + 1e-6);
        EXPECT_NEAR(samples.back().station, total, 1e-9);
        EXPECT_EQ(sampled.GetPoints(), std::vector<Point2D>(listed.begin(), listed.end()));
        ASSERT_EQ(listed.size(), samples.size());
        for (const auto& sample : samples) {
            Vec2D tangent;
            ASSERT_TRUE(string.GetPointOffsetFromStart(sample.station, p));
            EXPECT_THAT(sample.point, IsNear(p, 1e-8));
            ASSERT_TRUE(string.GetTangentAtLength(sample.station - 1e-7, tangent, 0.0));
            EXPECT_THAT(sample.tangent, IsNear(tangent, 1e-9));
            ASSERT_TRUE(string.ComputeTangent(p, tangent, kTolerances));
            EXPECT_THAT(sample.tangent, IsNear(tangent, 1e-9));
        }
    }
}

TEST(LineStringTest, ClosestSegmentIsTheFirstOfTheNearestByTheDistanceToEachSegment) {
    RandomNumbers random(20264);
    std::uniform_int_distribution<int> coordinate(-4, 4);  // a coarse grid: many are equally near
    for (int round = 0; round < 2000; ++round) {
        const Point2D& origin = surveyOrigins[round % 2];
        const auto any = [&] { return origin + Vec2D(coordinate(random), coordinate(random)); };
        LineString2D string{any(), any()};
        for (int i = 0; i < round % 9; ++i) string.AppendPoint(any());
        const Point2D p = any();
        double nearest = kInfinity;
        unsigned int expected = 99, index = 77;
        for (unsigned int i = 0; i < string.GetNrOfElements(); ++i) {
            const double distance = std::abs(Distance::PointToLineSegment(string.GetElementAtIndex(i), p, 1e-10));
            if (distance < nearest) expected = i;
            nearest = std::min(nearest, distance);
        }
        EXPECT_TRUE(string.GetClosestSegment(p, index));
        EXPECT_EQ(index, expected);
        const Polyline2D::PolylinePoint projected = Projection::NearestPointOnLineString(p, string, 1e-10);
        EXPECT_EQ(projected.elementIndex, expected);
        EXPECT_NEAR(projected.distance, nearest, 1e-12);
        EXPECT_NEAR(projected.point.Distance(p), nearest, 2e-9);
    }
}

TEST(LineStringTest, LengthsAtTheLimits) {
    const LineString2D bend = Chain("0 0  10 0  10 10");
    Point2D p(-1, -1);
    EXPECT_TRUE(bend.GetPointOffsetFromStart(20.0 + 5e-11, p) && p.IsEqualTo(Point2D(10, 10), 1e-9));
    EXPECT_TRUE(bend.GetPointOffsetFromStart(-2.0, p));
    EXPECT_FALSE(bend.GetPointOffsetFromStart(20.0 + 1e-9, p) || Along({0, 0, 1}).GetPointOffsetFromStart(0.0, p));
    EXPECT_THAT(p, IsNear(Point2D(-2, 0), 0.0));
    EXPECT_THAT(bend.GetMiddlePoint(), IsNear(Point2D(10, 0), 1e-12));

    const double r = std::sqrt(0.5);
    const std::tuple<const char*, double, Vec2D> tangents[] = {
        {"before the start within tol", -0.25, Vec2D(1, 0)},
        {"before a vertex", 9.5, Vec2D(1, 0)},
        {"before a vertex within tol", 9.875, Vec2D(r, r)},
        {"at a vertex", 10.0, Vec2D(r, r)},
        {"exactly tol after a vertex", 10.25, Vec2D(0, 1)},
        {"the very end and tol", 20.25, Vec2D(0, 1)},
        {"too far after the end", 20.5, Vec2D()},
        {"too far before the start", -0.5, Vec2D()},
    };
    for (const auto& [why, length, expected] : tangents) {
        Vec2D tangent;
        EXPECT_EQ(bend.GetTangentAtLength(length, tangent, 0.25), expected.Length() > 0.0) << why;
        EXPECT_THAT(tangent, IsNear(expected, 1e-15)) << why;
    }
    const std::tuple<const char*, double, double, Values> extractions[] = {
        {"inside", 15, 25, {15, 20, 25}},
        {"vertex to vertex", 10, 20, {10, 20}},
        {"no length", 12, 12, {12, 12}},
        {"from before the start", -5, 5, {-5, 5}},
        {"to beyond the end", 25, 99, {25, 30}},
        {"beyond", 35, 40, {}},
        {"just over a vertex", 5, 10 + 5e-11, {5, 10}},
        {"backwards", 20, 10, {-1}},
    };
    for (const auto& [why, from, to, x] : extractions) {
        LineString2D straight = Along({0, 10, 20, 30}), out = Along({-1});
        EXPECT_EQ(straight.ExtractLineString(from, to, out), x.size() > 1) << why;
        EXPECT_THAT(Abscissae(out), testing::Pointwise(testing::DoubleNear(1e-9), x)) << why;
        EXPECT_EQ(straight.ExtractLineString(from, to, straight), x.size() > 1) << "into itself";
        EXPECT_TRUE(from > to || straight.IsEqualTo(out, 1e-12)) << why;
    }
    const std::pair<Point2D, Values> passages[] = {
        {Point2D(4, 0), {4}}, {Point2D(2, 0), {2, 14}}, {Point2D(0, 0), {0, 16}}, {Point2D(1, 1), {}}};
    for (const auto& [point, expected] : passages) {
        Values lengths{9.0};
        Chain("0 0  4 0  4 4  2 4  2 0  0 0").GetLengthsAlongGeometry(point, lengths, kTolerances);
        EXPECT_EQ(lengths, expected) << "once per vertex, once per passage";
    }
}

TEST(LineStringTest, EditsByLengthAndDistance) {
    const std::pair<double, Values> insertions[] = {{0.0, {0, 7, 1, 3}}, {1.0, {0, 7, 1, 3}}, {3.0, {0, 1, 7, 3}},
                                                    {3.5, {0, 1, 3}},    {-1e-9, {0, 1, 3}},  {kNan, {0, 1, 3}}};
    for (const auto& [length, x] : insertions) {
        LineString2D string = Along({0, 1, 3});
        EXPECT_EQ(string.InsertAtLength(length, Point2D(7, 0)), x.size() == 4) << length;
        EXPECT_EQ(Abscissae(string), x) << length;
    }
    const auto reduced = [](LineString2D string, double tolerance) {
        string.ReducePoints(tolerance);
        return Abscissae(string);
    };
    EXPECT_EQ(reduced(Along({0, 0.05, 0.2, 0.25}), 0.1), (Values{0, 0.2})) << "from the last point kept";
    EXPECT_EQ(reduced(Along({0, 0.5, 1.0}), 0.5), (Values{0, 1.0})) << "exactly the tolerance away goes";
    EXPECT_EQ(reduced(Chain("0 0  4 0  4 4  0.25 0.25"), 0.5), (Values{0, 4, 4, 0})) << "snapped shut";
    EXPECT_EQ(reduced(Chain("0 0  4 0  0.25 0.25"), 0.5), (Values{0, 4, 0.25})) << "three points are no ring";
    const auto opened = [](LineString2D string) {
        string.RemoveClosingPoint(0.5);
        return Abscissae(string);
    };
    EXPECT_EQ(opened(Along({2, 2, 2})), Values());
    EXPECT_EQ(opened(Along({0, 5, 0.5, 0.25, 0})), (Values{0, 5, 0.5})) << "exactly the tolerance away stays";

    const std::pair<double, std::vector<std::uint64_t>> shorts[] = {{1.0, {9}}, {1.5, {9, 0, 2}}, {4.5, {9}}};
    for (const auto& [minLength, expected] : shorts) {
        std::vector<std::uint64_t> indexes{9};
        EXPECT_EQ(Along({0, 1, 3, 4}).FindShortElements(indexes, minLength), minLength > 1.0) << minLength;
        EXPECT_EQ(indexes, expected) << minLength;
    }
    const auto removed = [&](const std::vector<std::uint64_t>& indexes, bool protect) {
        LineString2D string = Along({0, 1, 2, 3, 4});
        string.RemoveElements(indexes, protect);
        return Abscissae(string);
    };
    EXPECT_EQ(removed({0, 2, 2, 4, 99}, false), (Values{0, 2, 4}));
    EXPECT_EQ(removed({0, 1, 3}, true), (Values{0, 1, 3})) << "the first segment is protected, the last is not";
}

TEST(LineStringTest, BreaksKeepTheVerticesAndGiveWayToCutsNearThem) {
    const std::tuple<const char*, bool, Values, std::vector<Values>> rows[] = {
        {"in place", true, {15, 25}, {{0, 10, 15}, {15, 20, 25}, {25, 30}}},
        {"at a vertex", false, {20}, {{0, 10, 20}, {20, 30}}},
        {"beside vertices", false, {9.875, 20.125}, {{0, 9.875}, {9.875, 20.125}, {20.125, 30}}},
        {"at the ends, and outside", false, {-1, 0.125, 30, 31}, {}},
    };
    for (const auto& [why, modifyThis, cuts, expected] : rows) {
        LineString2D string = Along({0, 10, 20, 30});
        std::map<double, const Point2D> breaks;
        for (const double cut : cuts) breaks.emplace(100.0 + cut, Point2D(cut, 0.0));
        std::vector<IGeometry*> out;
        EXPECT_EQ(string.BreakAtPreSorted(breaks, 100.0, out, modifyThis, Tolerances(0.25, 1e-10)), !expected.empty());
        std::vector<Values> pieces;
        if (modifyThis) out.insert(out.begin(), string.Clone());
        for (const auto& piece : Owned(out)) pieces.push_back(Abscissae(static_cast<const LineString2D&>(*piece)));
        EXPECT_EQ(pieces, expected) << why;
    }
}

TEST(LineStringTest, ExtendMeetsTheTargetStraightOnOrAtTheNearestPoint) {
    const std::tuple<const char*, const char*, bool, bool, double, double, const char*> rows[] = {
        {"exactly the distance", "4 4  12 -4", true, true, 4.0, 0.0, "0 0  2 0  4 0  8 0"},
        {"the nearest crossing", "9 -1  9 1  7 1  7 -1", true, true, 9.0, 0.0, "0 0  2 0  4 0  7 0"},
        {"too far straight on", "4 4  12 -4", true, true, 3.0, 0.8, "0 0  2 0  4 0  6 2"},
        {"the nearest point is off by too much", "4 4  12 -4", true, false, 3.0, 0.7, "0 0  2 0  4 0"},
        {"the nearest point is too far", "4 4  12 -4", true, false, 2.5, 3.0, "0 0  2 0  4 0"},
        {"at the start", "-5 -9  -5 9", false, true, 5.0, 0.0, "-5 0  0 0  2 0  4 0"},
        {"nothing there", "", true, true, 99.0, 3.0, "0 0  2 0  4 0"},
    };
    for (const auto& [why, target, atEnd, straight, maxDistance, maxAngle, expected] : rows) {
        LineString2D string = Chain("0 0  2 0  4 0");
        const bool extended = string.Extend(Chain(target), atEnd, 1e-4, straight, maxDistance, Angle(maxAngle));
        EXPECT_EQ(extended, Chain(expected).GetSize() == 4) << why;
        EXPECT_TRUE(string.IsEqualTo(Chain(expected), 1e-12)) << why;
    }
    for (const char* const points : {"0 0  2 3", "0 0  -2 -3"}) {
        EXPECT_TRUE(Chain(points).Extend(Chain("-9 0  9 0"), false, 1e-4, false, 1.0, Angle())) << "touching already";
    }
}

TEST(LineStringTest, AppendAndEqualityByTheOthersType) {
    const LineString2D string = Chain("0 0  1 0");
    const Arc2D arc(Point2D(2, 0), Point2D(1, 0), Angle(1.0));
    const auto appended = [&](const IGeometry& other) { return std::unique_ptr<IGeometry>(string.Append(&other)); };
    EXPECT_TRUE(appended(Line2D(Point2D(9, 9), Point2D(2, 0)))->IsEqualTo(Along({0, 1, 2}), 1e-9));
    EXPECT_TRUE(appended(Chain("9 9  2 0  3 0"))->IsEqualTo(Along({0, 1, 2, 3}), 1e-9));
    EXPECT_TRUE(appended(Along({9}))->IsEqualTo(string, 1e-9));
    Polyline2D chain;
    chain.AppendElement(string.Clone());
    EXPECT_TRUE(string.IsEqualTo(chain, 1e-9));
    chain.AppendElement(arc.Clone());
    EXPECT_TRUE(!string.IsEqualTo(chain, 1e-9) && appended(arc)->IsEqualTo(chain, 1e-9));
    const std::unique_ptr<IGeometry> three = appended(chain);
    EXPECT_EQ(static_cast<const Polyline2D&>(*three).GetNrOfElements(), 3U);
    EXPECT_TRUE(appended(Point2D(1, 1)) == nullptr && string.Append(nullptr) == nullptr);
    EXPECT_TRUE(string.IsEqualTo(Line2D(Point2D(0, 0), Point2D(1, 0)), 1e-9));
    EXPECT_FALSE(string.IsEqualTo(Line2D(Point2D(1, 0), Point2D(0, 0)), 1e-9));
    EXPECT_FALSE(string.IsEqualTo(Along({0, 1.5}), 0.5)) << "strict";
}

TEST(LineStringTest, BadInputGivesTheDocumentedFailure) {
    for (const char* const points : {"", "1 1", "1 1  1 1", "0 0  1e300 1  -1e300 2", "nan", "inf"}) {
        for (const double value : {kNan, kInfinity, -kInfinity, -1.0, 1e300}) {
            LineString2D string = Chain(points);
            if (points[0] == 'n') string.AppendPoints(std::vector<Point2D>(5, Point2D(kNan, value)));
            if (points[0] == 'i')
                string.AppendPoints(std::vector<Point2D>{Point2D(kInfinity, 1), Point2D(-kInfinity, value)});
            Point2D p(7, 7);
            Vec2D tangent(7, 7);
            std::list<Point2D> samples;
            std::list<Vec2D> tangents;
            LineString2D out = Along({7});
            unsigned int index = 7;
            double length = 7.0;
            EXPECT_FALSE(string.GetTangentAtLength(kNan, tangent, value) || string.GetPointOffsetFromStart(kNan, p));
            EXPECT_FALSE(string.MakePointsAndTangents(0.0, 1.0, kNan, samples, tangents));
            EXPECT_FALSE(string.MakePointsAndTangents(value, -2.0, 1.0, samples, tangents));
            EXPECT_FALSE(string.ExtractLineString(kNan, value, out) || string.InsertAtLength(kNan, p));
            EXPECT_FALSE(string.GetClosestSegment(Point2D(kNan, value), index));
            EXPECT_FALSE(string.GetLengthFromStartPoint(Point2D(kNan, 0), length, 1.0) || string.IsSelfCrossing(value));
            EXPECT_TRUE(p == Point2D(7, 7) && tangent.IsEqualTo(Vec2D(7, 7), 1e-9) && index == 7 && length == 0.0);
            EXPECT_TRUE(samples.empty() && tangents.empty() && out.GetSize() == 1);
            string.GetOrientedBoundingBox2D();
            string.Extend(string, true, value, true, value, Angle(1.0));
            string.ReducePoints(value);
        }
    }
    EXPECT_FALSE(LineString2D().ExtendStart(Point2D(1, 1), kTolerances) || LineString2D().IsClosed(1.0));
    EXPECT_TRUE(Along({1}).IsClosed(1.0));
}

TEST(LineStringTest, ConstCallsFromManyThreadsSeeOneString) {
    RandomNumbers random(20266);
    const LineString2D string = RandomChain(random, surveyOrigins[1], 500);
    const LineString3D spatial(string, 5.0);
    Values seen(8, 0.0);
    Concurrently(8, [&](unsigned int i) {
        seen[i] = string.GetBoundingBox().GetSize().GetX() + string.GetElementAtIndex(i % 2 * 400).GetLength() +
                  spatial.GetElementAtIndex(3).GetLength() + (string.IsSelfCrossing(1e-4) ? 1.0 : 0.0);
    });
    for (unsigned int i = 2; i < 8; ++i) EXPECT_EQ(seen[i], seen[i % 2]);
}

TEST(LineStringTest, CrossingsComeInOrderOnceEachWithTheirFirstPassage) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        // crossings: x y length
        {"fewer segments than can cross", "0 0  4 0  2 0", ""},
        {"the joint of a ring", "0 0  4 0  4 4  0 0", ""},
        {"a bow tie, closed", "0 0  3 4  3 0  0 4  0 0", "1.5 2 2.5"},
        {"an end within the tolerance", "0 0  4 0  4 4  1 4  1 0.0625", "1 0.0625 1"},
        {"an end beyond the tolerance", "0 0  4 0  4 4  1 4  1 0.15625", ""},
        {"through a vertex: four pairs, one crossing", "0 0  2 0  4 0  4 4  2 4  2 0  2 -4", "2 0 2"},
        {"three passages of one point", "0 0  4 0  4 2  2 2  2 -2  4 -2  0 2", "2 0 2"},
        {"back over itself: the first end on the later segment", "0 0  8 0  8 4  6 4  6 0  3 0", "3 0 3  6 0 6"},
        {"by the first passage, not by the second", "0 0  8 0  8 4  6 4  6 -4  2 -4  2 4", "2 0 2  6 0 6"},
        {"steps hardly above the tolerance", "0 0  0.1 0.1  0.2 0.2  0.3 0.3  0.4 0.4", ""},
    };
    EXPECT_FALSE(Chain("0 0  1 0  1.000000000001 0  2 1").IsSelfCrossing(0.0)) << "a step below the least tolerance";
    for (const Point2D& origin : surveyOrigins) {
        for (const auto& [why, points, listed] : rows) {
            SCOPED_TRACE(why);
            LineString2D string = Chain(points);
            string.Translate(origin - Point2D());
            std::vector<std::pair<Point2D, double>> crossings{{Point2D(9, 9), 9.0}}, expected;
            std::istringstream in(listed);
            for (double x, y, length; in >> x >> y >> length;) expected.emplace_back(origin + Vec2D(x, y), length);
            EXPECT_EQ(string.IsSelfCrossing(crossings, 0.125), !expected.empty());
            ASSERT_EQ(crossings.size(), expected.size());
            for (std::size_t i = 0; i < crossings.size(); ++i) {
                EXPECT_THAT(crossings[i].first, IsNear(expected[i].first, 1e-9));
                EXPECT_NEAR(crossings[i].second, expected[i].second, 1e-9);
            }
            Point2D first(7, 7);
            EXPECT_EQ(string.IsSelfCrossing(first, 0.125), string.IsSelfCrossing(0.125));
            EXPECT_THAT(first, IsNear(crossings.empty() ? Point2D(7, 7) : crossings.front().first, 0.0));
        }
    }
}

// Exact for integer coordinates.
bool Intersect(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2) {
    const auto side = [](const Point2D& a, const Point2D& b, const Point2D& p) {
        const double area = (b - a).PerpDotProduct(p - a);
        return (area > 0.0) - (area < 0.0);
    };
    const auto touches = [&](const Point2D& a, const Point2D& b, const Point2D& p) {
        return side(a, b, p) == 0 && Line2D(a, b).GetBoundingBox2D().IsPointInside(p, 0.0);
    };
    if (side(a1, a2, b1) * side(a1, a2, b2) < 0 && side(b1, b2, a1) * side(b1, b2, a2) < 0) return true;
    return touches(a1, a2, b1) || touches(a1, a2, b2) || touches(b1, b2, a1) || touches(b1, b2, a2);
}

TEST(LineStringTest, CrossingsAreThoseOfAllPairsOfSegments) {
    RandomNumbers random(20262);
    int crossed = 0;
    for (unsigned int round = 0; round < 400; ++round) {
        std::uniform_int_distribution<int> step(round % 4 < 2 ? -3 : -20, round % 4 < 2 ? 3 : 20);
        std::vector<Point2D> p{surveyOrigins[round % 2]};
        while (p.size() < 3 + round / 4) {
            const Vec2D v(step(random), step(random));
            const Vec2D before = p.size() > 1 ? p.back() - p[p.size() - 2] : Vec2D();
            const bool foldsBack = before.PerpDotProduct(v) == 0.0 && before.DotProduct(v) < 0.0;
            if (v.NormSquared() > 0.0 && !foldsBack) p.push_back(p.back() + v);
        }
        if (round % 3 == 0 && p.back().Distance(p.front()) > 0.5) p.push_back(p.front());
        std::vector<Point2D> expected;
        bool overlaps = false;
        for (std::size_t i = 0; i + 1 < p.size(); ++i) {
            for (std::size_t j = i + 2; j + 1 < p.size(); ++j) {
                const bool isJoint = p.back() == p.front() && i == 0 && j + 2 == p.size();
                if (isJoint || !Intersect(p[i], p[i + 1], p[j], p[j + 1])) continue;
                const Vec2D a = p[i + 1] - p[i], b = p[j + 1] - p[j];
                overlaps = overlaps || a.PerpDotProduct(b) == 0.0;
                if (a.PerpDotProduct(b) == 0.0) continue;
                expected.push_back(p[i] + a * ((p[j] - p[i]).PerpDotProduct(b) / a.PerpDotProduct(b)));
            }
        }
        const LineString2D string(p);
        std::vector<std::pair<Point2D, double>> crossings;
        ASSERT_EQ(string.IsSelfCrossing(1e-7), overlaps || !expected.empty()) << round;
        ASSERT_EQ(string.IsSelfCrossing(crossings, 1e-7), string.IsSelfCrossing(1e-7)) << round;
        crossed += crossings.empty() ? 0 : 1;
        for (const Point2D& point : expected) {
            const auto isThere = [&](const auto& crossing) { return crossing.first.Distance(point) < 1e-6; };
            EXPECT_EQ(std::count_if(crossings.begin(), crossings.end(), isThere), 1) << round;
        }
        double before = -1.0, first = -1.0;
        for (const auto& crossing : crossings) {
            EXPECT_GT(crossing.second, before);
            before = crossing.second;
            ASSERT_TRUE(string.GetLengthFromStartPoint(crossing.first, first, 1e-7));
            EXPECT_NEAR(before, first, 1e-6) << "the first passage";
            const auto isThere = [&](const Point2D& e) { return e.Distance(crossing.first) < 1e-6; };
            EXPECT_TRUE(overlaps || std::any_of(expected.begin(), expected.end(), isThere)) << round;
        }
    }
    EXPECT_TRUE(crossed > 100 && crossed < 390) << crossed;
}

TEST(SegmentBoxesTest, FindsThePairsAndNeighboursThatAllBoxesGive) {
    using detail::SegmentBoxes;
    RandomNumbers random(20263);
    const auto step = [&](double most) { return Vec2D(random(-most, most), random(-most, most)); };
    for (const std::size_t size : {0, 1, 2, 3, 6, 7, 25, 150, 600}) {
        std::vector<Point2D> chain(size, surveyOrigins[1]), ring(size / 2, surveyOrigins[1]);
        for (std::size_t i = 1; i < size; ++i) chain[i] = chain[i - 1] + step(3.0);
        for (Point2D& point : ring) point += step(30.0);
        const SegmentBoxes boxes(chain), rings(ring, SegmentBoxes::Closing::Ring);
        ASSERT_EQ(rings.GetCount(), size / 2 < 2 ? 0 : size / 2);
        std::vector<std::pair<std::size_t, std::size_t>> found[3], expected[3];
        const auto into = [](auto& pairs) {
            return [&](std::size_t i, std::size_t j) { return pairs.emplace_back(i, j), false; };
        };
        detail::Extent place;
        place.Add(surveyOrigins[1]);
        boxes.ForEachPair(0.25, into(found[0]));
        boxes.ForEachPair(rings, 0.25, into(found[1]));
        boxes.ForEachNear(place, 2.0, [&](std::size_t i) { return into(found[2])(i, i); });
        const auto boxOf = [](const SegmentBoxes& of, std::size_t i) {
            return Line2D(of.GetStart(i), of.GetEnd(i)).GetBoundingBox2D();
        };
        for (std::size_t i = 0; i + 1 < size; ++i) {
            const BoundingBox2D box = boxOf(boxes, i);
            if (box.IsPointInside(surveyOrigins[1], 2.0)) expected[2].emplace_back(i, i);
            for (std::size_t j = i + 1; j + 1 < size; ++j)
                if (box.Intersects(boxOf(boxes, j), 0.25)) expected[0].emplace_back(i, j);
            for (std::size_t j = 0; j < rings.GetCount(); ++j)
                if (box.Intersects(boxOf(rings, j), 0.25)) expected[1].emplace_back(i, j);
        }
        for (int k = 0; k < 3; ++k) {
            std::sort(found[k].begin(), found[k].end());
            EXPECT_EQ(found[k], expected[k]) << "of " << size;
        }
        int calls = 0;
        EXPECT_EQ(boxes.ForEachPair(0.25, [&](std::size_t, std::size_t) { return ++calls > 0; }), size > 2);
        EXPECT_EQ(calls, size > 2 ? 1 : 0) << "true ends the search";
    }
}

TEST(LineStringTest, EndlessAndStandingSegmentsGiveNoFalsePoints) {
    const LineString2D endless({Point2D(0, 0), Point2D(kInfinity, 0)});
    LineString2D part({Point2D(7, 7)});
    Point2D point(9, 9);
    EXPECT_FALSE(endless.GetPointOffsetFromStart(5.0, point));
    EXPECT_FALSE(endless.ExtractLineString(0.0, 5.0, part));
    EXPECT_FALSE(endless.MakeLineString(0.0, 5.0, part, 1.0));
    const LineString2D standing({Point2D(0, 0), Point2D(10, 0), Point2D(10, 0)});
    EXPECT_FALSE(standing.GetPointOffsetFromStart(-kInfinity, point));
    EXPECT_EQ(part.GetSize(), 1U);
    EXPECT_EQ(point, Point2D(9, 9));
    // A crossing behind a point that is no number has no length: all forms answer alike.
    const LineString2D broken({Point2D(0, 0), Point2D(kNan, 0), Point2D(4, 0), Point2D(2, 2), Point2D(2, -2)});
    std::vector<std::pair<Point2D, double>> crossings;
    EXPECT_FALSE(broken.IsSelfCrossing(1e-4));
    EXPECT_FALSE(broken.IsSelfCrossing(point, 1e-4));
    EXPECT_FALSE(broken.IsSelfCrossing(crossings, 1e-4));
    EXPECT_EQ(point, Point2D(9, 9));
    Vec2D tangent;
    EXPECT_TRUE(standing.GetTangentAtLength(10.0, tangent, 0.0));
    EXPECT_THAT(tangent, IsNear(Vec2D(1, 0), 0.0));
}

}  // namespace
}  // namespace Kalvio::Math
