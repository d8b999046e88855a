#include "kalvio/Math.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "support/ElementChecks.h"
#include "support/RandomCurves.h"
#include "support/Rings.h"

#include <functional>
#include <set>

namespace Kalvio::Math {
namespace {

using Values = std::vector<double>;

// "0 0  4 0  4 4": x and y in turn.
LineString2D Chain(const std::string& coordinates) { return LineString2D(MakePolygon(coordinates).GetPoints()); }

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

// Points (x, x): how far the last edit reaches.
TEST(LineStringTest, EveryEditOfAStringOrARingRenewsBoxAndElements) {
    const auto check = [](auto shape, const auto& make) {
        using Point = decltype(make(0.0));
        const std::vector<Point> three{make(0), make(0.5), make(1)};
        const std::function<void()> edits[] = {
            [] {},
            [&] { shape.AppendPoints(three); },
            [&] { shape.AppendPoints(std::list<Point>(1, make(2))); },
            [&] { shape.GetPoint(3) = make(3); },
            [&] { shape.GetPoints().push_back(make(4)); },
            [&] { shape.AppendPoint(make(5)); },
            [&] { EXPECT_TRUE(shape.Insert(6, make(6)) && !shape.Insert(8, make(9))); },
            [&] { shape.Translate(make(1) - make(0)); },
        };
        double x = 0.0;
        for (const auto& edit : edits) {
            edit();
            EXPECT_EQ(shape.GetBoundingBox2D().GetMaxPoint(), Point2D(x, x));
            if constexpr (requires { shape.GetElementAtIndex(0); }) {
                const auto last = shape.GetElementAtIndex(shape.GetNrOfElements() - 1);
                EXPECT_EQ(std::max(last.GetStart().GetX(), last.GetEnd().GetX()), x);
            }
            x += 1.0;
        }
        if constexpr (requires { shape.InsertAtLength(x, make(x)); }) {
            EXPECT_TRUE(shape.InsertAtLength(0.1, make(x)) && !shape.InsertAtLength(-1e-9, make(9)));
            EXPECT_EQ(shape.GetBoundingBox2D().GetMaxPoint().GetX(), x);
        }
        shape.RemoveAllPoints();
        EXPECT_TRUE(shape.GetSize() == 0 && shape.GetBoundingBox2D().GetMaxPoint() == Point2D());
    };
    const auto inPlan = [](double x) { return Point2D(x, x); };
    const auto inSpace = [](double x) { return Point3D(x, x, 0.0); };
    check(LineString2D(), inPlan);
    check(LineString3D(), inSpace);
    check(Polygon2D(), inPlan);
    check(Polygon3D(), inSpace);
}

TEST(LineStringTest, EditsOfAStringKeepTheOrderAndMayTakeTheirOwnPoints) {
    const auto check = [](auto string, const auto& make) {
        using Point = decltype(make(0.0));
        string.GetEnd() = make(7);
        EXPECT_TRUE(string.GetEnd().GetX() == 0.0 && string.GetSize() == 0) << "the end of none is nobody's point";
        string.AppendPoints(std::vector<Point>{make(1), make(4)});
        EXPECT_TRUE(string.Insert(1, std::list<Point>{make(2), make(3)}) && string.Insert(0, make(0)));
        EXPECT_TRUE(string.InsertReverse(5, std::vector<Point>{make(6), make(5)}) && string.RemovePoint(6));
        EXPECT_FALSE(string.Insert(7, make(9)) || string.InsertReverse(7, std::list<Point>{make(9)}));
        EXPECT_FALSE(string.RemovePoint(-1) || string.RemovePoint(6));
        EXPECT_TRUE(string.Insert(1, string.GetPoints()));
        string.AppendPoints(string.GetPoints());
        EXPECT_EQ(Abscissae(string), (Values{0, 0, 1, 2, 3, 4, 5, 1, 2, 3, 4, 5, 0, 0, 1, 2, 3, 4, 5, 1, 2, 3, 4, 5}));
        for (const double x : {5.0, 7.0}) {
            EXPECT_EQ(string.GetElementAtIndex(22).GetEnd().GetX(), x);
            EXPECT_EQ(string.GetBoundingBox2D().GetMaxPoint().GetX(), x);
            string.GetEnd() = make(7);
        }
        const auto taken = std::move(string);
        EXPECT_EQ(string.GetBoundingBox2D().GetMaxPoint(), Point2D(0, 0)) << "what was moved from is empty";
        EXPECT_EQ(taken.GetElementAtIndex(99).GetEnd().GetX(), 0.0) << "any other index is the first segment";
        EXPECT_EQ(string.GetElementAtIndex(0).GetLength(), 0.0);
    };
    check(LineString2D(), [](double x) { return Point2D(x, 0.0); });
    check(LineString3D(), [](double x) { return Point3D(x, 0.0, 0.0); });
}

// A chain that advances to the right, so that it passes every point once.
template <class String, class Point, class Step>
String RandomChain(const Point& origin, unsigned int count, const Step& step) {
    String string{origin};
    while (string.GetSize() < count) string.AppendPoint(std::as_const(string).GetEnd() + step());
    return string;
}

// At a length s: the point, its station from both ends, the parts before and after it, and the samples from there on.
template <class Vector, class String>
auto CheckLengths(const String& string, double s, String& before, String& after) {
    const double total = string.GetLength();
    EXPECT_TRUE(string.ExtractLineString(0.0, s, before) && string.ExtractLineString(s, total, after));
    String reversed = string;
    reversed.Reverse();
    const auto p = CheckRoundTrip(string, s, 1e-7);
    EXPECT_THAT(CheckRoundTrip(reversed, total - s, 1e-7), IsNear(p, 1e-7));
    EXPECT_NEAR(before.GetLength(), s, 1e-7);
    EXPECT_NEAR(after.GetLength(), total - s, 1e-7);
    EXPECT_THAT(before.GetEnd(), IsNear(p, 1e-7));
    std::list<std::decay_t<decltype(p)>> points;
    std::list<Vector> tangents;
    EXPECT_TRUE(string.MakePointsAndTangents(s, total, 1.75, points, tangents));
    EXPECT_NEAR(static_cast<double>(points.size()), (total - s) / 1.75 + 1.5, 0.5 + 1e-6);
    EXPECT_THAT(points.back(), IsNear(string.GetEnd(), 1e-8));
    auto expected = p;
    Vector tangent;
    for (double station = s; points.size() > 1; points.pop_front(), tangents.pop_front(), station += 1.75) {
        EXPECT_TRUE(string.GetPointOffsetFromStart(station, expected));
        EXPECT_THAT(points.front(), IsNear(expected, 1e-8));
        EXPECT_TRUE(string.GetTangentAtPoint(points.front(), tangent));
        // Within the tolerance of a vertex the point is on both segments.
        const auto isHere = [&](const auto& vertex) { return vertex.Distance(points.front()) < 2e-4; };
        if (std::ranges::any_of(string.GetPoints(), isHere)) continue;
        EXPECT_THAT(tangents.front(), IsNear(tangent, 1e-9));
    }
    return p;
}

TEST(LineStringTest, StationsExtractionsBreaksAndSamplesAgreeAlongRandomChains) {
    RandomNumbers random(20261);
    for (unsigned int round = 0; round < 60; ++round) {
        const auto string = RandomChain<LineString2D>(surveyOrigins[round % 2], 2 + round % 30,
                                                      [&random] { return Vec2D(random(0.5, 9.0), random(-6.0, 6.0)); });
        const double total = string.GetLength(), s = random(0.0, 1.0) * total;
        LineString2D before, after, sampled;
        const Point2D p = CheckLengths<Vec2D>(string, s, before, after);
        Values passages;
        string.GetLengthsAlongGeometry(p, passages, kTolerances);
        EXPECT_EQ(passages, Values{string.LengthFromStartPoint(p, 1e-4)});
        std::vector<IGeometry*> out;
        ASSERT_TRUE(string.BreakAt({p, p + Vec2D(0, 9)}, out, kTolerances));
        const auto pieces = Owned(out);
        ASSERT_EQ(pieces.size(), 2U);
        EXPECT_TRUE(pieces[0]->IsEqualTo(before, 1e-6) && pieces[1]->IsEqualTo(after, 1e-6));
        std::vector<Sample> samples;
        ASSERT_TRUE(string.MakePointsAndTangents(s, total + 1.0, samples, 1.75));
        ASSERT_TRUE(string.MakeLineString(s, total, sampled, 1.75));
        EXPECT_NEAR(samples.back().station, total, 1e-9);
        ASSERT_EQ(sampled.GetSize(), samples.size());
        for (unsigned int i = 0; i < samples.size(); ++i) EXPECT_EQ(samples[i].point, sampled.GetPoint(i));

        const auto spatial = RandomChain<LineString3D>(Point3D(surveyOrigins[round % 2], 100.0), 2 + round % 30, [&] {
            return Vec3D(random(0.5, 9.0), random(-6.0, 6.0), random(-6.0, 6.0));
        });
        LineString3D first, last, planFirst, planLast;
        if (round < 3) {
            CheckConcurrently(string, total);
            CheckConcurrently(spatial, spatial.GetLength());
        }
        const Point3D q = CheckLengths<Vec3D>(spatial, random(0.0, 1.0) * spatial.GetLength(), first, last);
        double z = 0.0;
        EXPECT_FALSE(spatial.IsPointOnGeometry(q + Vec3D(0, 0, 20), kTolerances)) << "above it";
        ASSERT_TRUE(spatial.GetZ(q.GetPoint2D(), z, 1e-6));
        EXPECT_NEAR(z, q.GetZ(), 1e-7);
        const double plan = first.GetLineString2D().GetLength();
        ASSERT_TRUE(spatial.ExtractLineString2DLengths(0.0, plan, planFirst));
        ASSERT_TRUE(spatial.ExtractLineString2DLengths(plan, spatial.GetLength2D(), planLast));
        EXPECT_TRUE(planFirst.IsEqualTo(first, 1e-6) && planLast.IsEqualTo(last, 1e-6));
    }
}

TEST(LineStringTest, AnswersFromTheFourthQuestionOnAreThoseOfAScanToTheLastBit) {
    RandomNumbers random(20266);
    const auto pick = [&random](std::size_t size) { return static_cast<std::size_t>(random() % size); };
    for (int round = 0; round < 300; ++round) {
        const double far = round % 5 == 4 ? 1e9 : 3.0;  // feet on long segments are rounded by more than the tolerance
        std::vector<Point2D> points{surveyOrigins[round % 2]};
        for (int i = 0; i < (round % 7 == 0 ? 3 : 90); ++i) {
            const Vec2D step(random(-far, far), random(-far, far));
            const Point2D rows[] = {points.back() + step, points[0] + step, points[pick(points.size())],
                                    points[0] + Vec2D(std::round(step.GetX()), std::round(step.GetY()))};
            points.push_back(rows[round % 3 == 0 ? 0 : pick(4)]);
        }
        if (round % 11 == 0) points[1 + pick(points.size() - 1)] = Point2D(round % 2 ? kNan : kInfinity, 1e308);
        LineString2D string(points);
        const auto answers = [](const LineString2D& asked, const Polygon2D& polygon, const Point2D& p) {
            unsigned int segment = 77;
            double fromStart = -1.0, fromEnd = -1.0;
            Vec2D tangent;
            Values all;
            asked.GetLengthsAlongGeometry(p, all, kTolerances);
            (void)asked.GetClosestSegment(p, segment);
            (void)asked.GetLengthFromStartPoint(p, fromStart, 1e-4);
            (void)asked.GetLengthFromEndPoint(p, fromEnd, 1e-4);
            (void)asked.ComputeTangent(p, tangent, kTolerances);
            const Polyline2D::PolylinePoint nearest = Projection::NearestPointOnLineString(p, asked, 1e-4);
            const Point2D onBorder = Projection::NearestPointOnPolygon(p, polygon, 1e-4);
            all.insert(all.end(), {double(segment), fromStart, fromEnd, tangent.GetX(), tangent.GetY(), nearest.station,
                                   nearest.point.GetX(), nearest.point.GetY(), onBorder.GetX(), onBorder.GetY(),
                                   Distance::PointToLineString(asked, p, 0.5), Distance::PointToPolygon(p, polygon)});
            return all;
        };
        const Polygon2D polygon(points);
        for (int question = 0; question < 12; ++question) {
            if (question == 8) string.GetPoint(2) = points[2] = points[0] + Vec2D(0.25, 0.5);  // drops what is prepared
            const Point2D& a = points[pick(points.size() - 1)];
            const Point2D p = question % 3 == 0 ? a : a + Vec2D(random(-far, far), random(-far, far)) * (question % 2);
            const Values now = answers(string, question < 8 ? polygon : Polygon2D(points), p);
            const Values scanned = answers(LineString2D(points), Polygon2D(points), p);
            EXPECT_THAT(now, testing::Pointwise(testing::NanSensitiveDoubleNear(0.0), scanned)) << round;
        }
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
        {"exactly tol before a vertex", 9.75, Vec2D(r, r)},
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
    Vec2D end;
    EXPECT_TRUE(Along({0, 10, 10}).GetTangentAtLength(10.0, end, 0.0) && end.IsEqualTo(Vec2D(1, 0), 1e-15));
    const std::tuple<const char*, double, double, Values> extractions[] = {
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

Values After(LineString2D string, const auto& edit, const auto&... with) {
    std::invoke(edit, string, with...);
    return Abscissae(string);
}

TEST(LineStringTest, EditsByLengthAndDistance) {
    using String = LineString2D;
    const std::pair<double, Values> insertions[] = {{0.0, {0, 7, 1, 3}}, {1.0, {0, 7, 1, 3}}, {3.0, {0, 1, 7, 3}},
                                                    {3.5, {0, 1, 3}},    {-1e-9, {0, 1, 3}},  {kNan, {0, 1, 3}}};
    for (const auto& [length, x] : insertions) {
        LineString2D string = Along({0, 1, 3});
        EXPECT_EQ(string.InsertAtLength(length, Point2D(7, 0)), x.size() == 4) << length;
        EXPECT_EQ(Abscissae(string), x) << length;
    }
    const std::tuple<const char*, LineString2D, Values> reduced[] = {
        {"from the last point kept", Along({0, 0.375, 0.75, 1}), {0, 0.75}},
        {"exactly the tolerance away goes", Along({0, 0.5, 1.0}), {0, 1.0}},
        {"snapped shut", Chain("0 0  4 0  4 4  0.25 0.25"), {0, 4, 4, 0}},
        {"three points are no ring", Chain("0 0  4 0  0.25 0.25"), {0, 4, 0.25}},
    };
    for (const auto& [why, string, x] : reduced) EXPECT_EQ(After(string, &String::ReducePoints, 0.5), x) << why;
    EXPECT_EQ(After(Along({2, 2, 2}), &String::RemoveClosingPoint, 0.5), Values());
    EXPECT_EQ(After(Along({0, 5, 0.5, 0.25, 0}), &String::RemoveClosingPoint, 0.5), (Values{0, 5, 0.5})) << "as far";

    const std::pair<double, std::vector<std::uint64_t>> shorts[] = {
        {1.0, {9}}, {1.5, {9, 0, 2}}, {4.0, {9, 0, 1, 2}}, {4.5, {9}}};
    for (const auto& [minLength, expected] : shorts) {
        std::vector<std::uint64_t> indexes{9};
        EXPECT_EQ(Along({0, 1, 3, 4}).FindShortElements(indexes, minLength), minLength > 1.0) << minLength;
        EXPECT_EQ(indexes, expected) << minLength;
    }
    const auto removed = [](const std::vector<std::uint64_t>& indexes, bool protect) {
        return After(Along({0, 1, 2, 3, 4}), &String::RemoveElements, indexes, protect);
    };
    EXPECT_EQ(removed({0, 2, 2, 4, 99}, false), (Values{0, 2, 4}));
    EXPECT_EQ(removed({0, 1, 3}, true), (Values{0, 1, 3})) << "the first segment is protected, the last is not";
}

TEST(LineStringTest, BreaksKeepTheVerticesAndGiveWayToCutsNearThem) {
    const std::tuple<const char*, bool, Values, std::vector<Values>> rows[] = {
        {"in place", true, {15, 25}, {{0, 10, 15}, {15, 20, 25}, {25, 29.875, 30}}},
        {"at a vertex", false, {20}, {{0, 10, 20}, {20, 29.875, 30}}},
        {"beside vertices", false, {9.75, 20.25}, {{0, 9.75}, {9.75, 20.25}, {20.25, 29.875, 30}}},
        {"at the ends, and outside", false, {-1, 0.125, 30, 31}, {}},
    };
    for (const auto& [why, modifyThis, cuts, expected] : rows)
        CheckBreaks(why, Along({0, 10, 20, 29.875, 30}), cuts, modifyThis, expected);
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
    const Polyline2D chain = ChainOf(string, arc);
    EXPECT_TRUE(string.IsEqualTo(ChainOf(string), 1e-9) && !string.IsEqualTo(chain, 1e-9));
    EXPECT_TRUE(appended(arc)->IsEqualTo(chain, 1e-9));
    EXPECT_TRUE(appended(chain)->IsEqualTo(ChainOf(string, string, arc), 1e-9));
    EXPECT_TRUE(appended(Point2D(1, 1)) == nullptr && string.Append(nullptr) == nullptr);
    EXPECT_FALSE(string.IsEqualTo(Line2D(Point2D(1, 0), Point2D(0, 0)), 1e-9));
    EXPECT_FALSE(Along({0, 1, 2}).IsEqualTo(Line2D(Point2D(0, 0), Point2D(1, 0)), 1e-9));
}

TEST(LineStringTest, WhatIsEmptyOrEndlessHasNoPlaces) {
    LineString2D part = Along({7});
    Point2D point(9, 9);
    const LineString2D toInfinity{Point2D(), Point2D(kInfinity, 0)}, standing = Along({0, 10, 10});
    EXPECT_FALSE(toInfinity.GetPointOffsetFromStart(5.0, point) || toInfinity.ExtractLineString(0.0, 5.0, part));
    EXPECT_FALSE(toInfinity.MakeLineString(0.0, 5.0, part, 1.0) || standing.GetPointOffsetFromStart(-kInfinity, point));
    EXPECT_TRUE(part.GetSize() == 1 && point == Point2D(9, 9));
    EXPECT_FALSE(LineString2D().ExtendStart(Point2D(1, 1), kTolerances) || LineString2D().IsClosed(1.0));
    EXPECT_TRUE(Along({1}).IsClosed(1.0));
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
            std::vector<std::pair<Point2D, double>> crossings{{Point2D(9, 9), 9.0}};
            std::vector<Point3D> found, expected;  // with their lengths
            std::istringstream in(listed);
            for (double x, y, length; in >> x >> y >> length;) expected.emplace_back(origin + Vec2D(x, y), length);
            EXPECT_EQ(string.IsSelfCrossing(crossings, 0.125), !expected.empty());
            for (const auto& [p, length] : crossings) found.emplace_back(p, length);
            EXPECT_THAT(found, testing::Pointwise(AreNear(1e-9), expected));
            Point2D first(7, 7);
            EXPECT_EQ(string.IsSelfCrossing(first, 0.125), string.IsSelfCrossing(0.125));
            EXPECT_THAT(first, IsNear(crossings.empty() ? Point2D(7, 7) : crossings.front().first, 0.0));
        }
    }
}

TEST(LineStringTest, CrossingsAreThoseOfAllPairsOfSegments) {
    RandomNumbers random(20262);
    int crossed = 0;
    for (unsigned int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        std::uniform_int_distribution<int> step(round % 4 < 2 ? -3 : -20, round % 4 < 2 ? 3 : 20);
        std::vector<Point2D> p{surveyOrigins[round % 2]}, expected, found;
        while (p.size() < 3 + round / 4) {
            const Vec2D v(step(random), step(random));
            const Vec2D before = p.size() > 1 ? p.back() - p[p.size() - 2] : Vec2D();
            const bool foldsBack = before.PerpDotProduct(v) == 0.0 && before.DotProduct(v) < 0.0;
            if (v.NormSquared() > 0.0 && !foldsBack) p.push_back(p.back() + v);
        }
        if (round % 3 == 0 && p.back().Distance(p.front()) > 0.5) p.push_back(p.front());
        bool overlaps = false;
        for (std::size_t i = 0; i + 1 < p.size(); ++i) {
            for (std::size_t j = i + 2; j + 1 < p.size(); ++j) {
                if (p.back() == p.front() && i == 0 && j + 2 == p.size()) continue;  // the joint
                const Vec2D a = p[i + 1] - p[i], b = p[j + 1] - p[j], gap = p[j] - p[i];
                const double turn = a.PerpDotProduct(b);  // exact, like all products of whole numbers
                const double s = gap.PerpDotProduct(b) / turn, t = gap.PerpDotProduct(a) / turn;
                if (s >= 0.0 && s <= 1.0 && t >= 0.0 && t <= 1.0) expected.push_back(p[i] + a * s);
                const auto [low, high] = std::minmax({gap.DotProduct(a), (gap + b).DotProduct(a)});
                const bool isInLine = turn == 0.0 && gap.PerpDotProduct(a) == 0.0;
                overlaps = overlaps || (isInLine && high >= 0.0 && low <= a.NormSquared());
            }
        }
        const LineString2D string(p);
        std::vector<std::pair<Point2D, double>> crossings;
        Point2D earliest;
        ASSERT_EQ(string.IsSelfCrossing(crossings, 1e-7), overlaps || !expected.empty());
        ASSERT_EQ(string.IsSelfCrossing(1e-7), !crossings.empty());
        ASSERT_EQ(string.IsSelfCrossing(earliest, 1e-7), !crossings.empty());
        EXPECT_TRUE(crossings.empty() || earliest.Distance(crossings[0].first) < 1e-6);
        crossed += crossings.empty() ? 0 : 1;
        double before = -1.0, first = -1.0;
        for (const auto& [point, length] : crossings) {
            found.push_back(point);
            EXPECT_LT(std::exchange(before, length), length);
            ASSERT_TRUE(string.GetLengthFromStartPoint(point, first, 1e-7));
            EXPECT_NEAR(length, first, 1e-6) << "the first passage";
            EXPECT_THAT(overlaps ? found : expected, testing::Contains(IsNear(point, 1e-6)));
        }
        for (const Point2D& e : expected) EXPECT_THAT(found, testing::Contains(IsNear(e, 1e-6)).Times(1));
    }
    EXPECT_TRUE(crossed > 100 && crossed < 390) << crossed;
}

TEST(SegmentBoxesTest, FindsThePairsAndNeighboursThatAllBoxesGive) {
    using detail::SegmentBoxes;
    RandomNumbers random(20263);
    const auto step = [&](double most) { return Vec2D(random(-most, most), random(-most, most)); };
    for (const std::size_t size : {0, 1, 2, 3, 6, 7, 25, 150, 600}) {
        std::vector<Point2D> chain(size, surveyOrigins[1]), ring(size / 2, surveyOrigins[1]),
            place(2, surveyOrigins[1]);
        for (std::size_t i = 1; i < size; ++i) chain[i] = chain[i - 1] + step(3.0);
        for (Point2D& point : ring) point += step(30.0);
        const SegmentBoxes boxes(chain), rings(ring, SegmentBoxes::Closing::Ring), near(place);
        ASSERT_EQ(rings.GetCount(), size / 2 < 2 ? 0 : size / 2);
        std::set<std::array<std::size_t, 3>> found, expected;
        const auto visit = [&found](std::size_t kind) {
            return [&found, kind](std::size_t i, std::size_t j) { return !found.insert({kind, i, j}).second; };
        };
        EXPECT_FALSE(boxes.ForEachPair(0.25, visit(0)) || boxes.ForEachPair(rings, 0.25, visit(1))) << "none twice";
        boxes.ForEachNear(near.GetExtent(0), 0.25, [&visit](std::size_t i) { return visit(2)(i, 0); });
        for (std::size_t i = 0; i < boxes.GetCount(); ++i) {
            for (std::size_t kind = 0; kind < 3; ++kind) {
                const SegmentBoxes& others = kind == 0 ? boxes : kind == 1 ? rings : near;
                for (std::size_t j = kind == 0 ? i + 1 : 0; j < others.GetCount(); ++j) {
                    const bool meets = boxes.GetExtent(i).Widened(0.25).Meets(others.GetExtent(j));
                    if (meets) expected.insert({kind, i, j});
                }
            }
        }
        EXPECT_EQ(found, expected) << "of " << size;
        int calls = 0;
        EXPECT_EQ(boxes.ForEachPair(0.25, [&](std::size_t, std::size_t) { return ++calls > 0; }), size > 2);
        EXPECT_EQ(calls, size > 2 ? 1 : 0) << "true ends the search";
    }
}

}  // namespace
}  // namespace Kalvio::Math
