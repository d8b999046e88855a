#include "support/ElementChecks.h"
#include "support/RandomCurves.h"

#include <ranges>

namespace Kalvio::Math {
namespace {

const Polyline2D& AsPolyline(const std::unique_ptr<IGeometry>& geometry) {
    return static_cast<const Polyline2D&>(*geometry);
}

Line2D Line(double x1, double y1, double x2, double y2) { return {Point2D(x1, y1), Point2D(x2, y2)}; }

// The described walk, element by element, without boxes; 0 where no element holds the point.
std::pair<bool, double> WalkToStation(const Polyline2D& road, const Point2D& p, double tolerance) {
    double before = 0.0;
    for (unsigned int i = 0; i < road.GetNrOfElements(); ++i) {
        const IPolyline2DElement& element = road.GetElementAtIndex(i);
        double onElement = 0.0;
        if (element.GetLengthFromStartPoint(p, onElement, tolerance)) return {true, before + onElement};
        before += element.GetLength();
    }
    return {false, 0.0};
}

class PolylineLawTest : public testing::TestWithParam<int> {
protected:
    RandomNumbers random{4711 + static_cast<std::uint64_t>(GetParam())};
    Polyline2D road = RandomRoad(random, 3 + GetParam(), surveyOrigins[GetParam() % 2]);
};

TEST_P(PolylineLawTest, StationsAreThoseOfTheWalkAndTheReversedChainMirrorsThem) {
    const std::unique_ptr<IGeometry> reversed(road.CloneAsReverse());
    EXPECT_TRUE(road.IsContinuous(1e-6) && AsPolyline(reversed).IsContinuous(1e-6));
    for (int i = 0; i < 60; ++i) {
        const auto sample = At(road, random(0.0, road.GetLength()));
        const Point2D p = sample.point + sample.tangent.GetNormalVector(true) * (i % 3 == 0 ? 0.4 : 0.0);
        const double tolerance = i % 4 == 1 ? 0.5 : 1e-4;
        double station = -2.0, fromEnd = -1.0;
        const auto [holds, expected] = WalkToStation(road, p, tolerance);
        EXPECT_EQ(road.GetLengthFromStartPoint(p, station, tolerance), holds);
        EXPECT_DOUBLE_EQ(station, expected);
        EXPECT_EQ(road.IsPointOnGeometry(p, Tolerances(tolerance, 1e-10)), holds);
        EXPECT_EQ(AsPolyline(reversed).GetLengthFromEndPoint(p, fromEnd, tolerance), holds);
        EXPECT_NEAR(fromEnd, expected, 1e-6);

        EXPECT_NEAR(sample.tangent.Length(), 1.0, 1e-12);
        std::vector<double> lengths;
        road.GetLengthsAlongGeometry(sample.point, lengths, kTolerances);
        const auto isIt = [&](double length) { return std::abs(length - sample.station) < 1e-3; };
        EXPECT_EQ(std::count_if(lengths.begin(), lengths.end(), isIt), 1);
    }
}

TEST_P(PolylineLawTest, PiecesOfABreakRunAlongTheRoad) {
    CheckPieces(road, false, 1e-6, 1e-6);
    CheckConcurrently(road, road.GetLength());
    const double joint = road.GetElementAtIndex(0).GetLength();
    std::vector<std::unique_ptr<IGeometry>> pieces;
    ASSERT_TRUE(road.BreakAt({road.GetElementAtIndex(1).GetStart()}, pieces, kTolerances) && pieces.size() == 2);
    EXPECT_TRUE(AsPolyline(pieces[0]).IsContinuous(1e-6) && AsPolyline(pieces[1]).IsContinuous(1e-6));
    EXPECT_NEAR(pieces[0]->GetLength(), joint, 1e-6);
    EXPECT_NEAR(pieces[1]->GetLength(), road.GetLength() - joint, 1e-6);
}

// Visits the elements of a chain of chains and strings.
void TakeApart(const IPolyline2DElement& element, const auto& visit) {
    const auto all = [&](const auto& chain) {
        for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) TakeApart(chain.GetElementAtIndex(i), visit);
    };
    if (const auto* polyline = dynamic_cast<const Polyline2D*>(&element)) return all(*polyline);
    if (const auto* string = dynamic_cast<const LineString2D*>(&element)) return all(*string);
    visit(element);
}

// Chains of all kinds within each other, there and back.
TEST_P(PolylineLawTest, StationAndOffsetLeadToThePointAndBack) {
    road.AppendElement(Polyline2D(road));
    Parabola crest;
    ASSERT_TRUE(crest.SetVerticalCurve(Point2D(-90.0, 7.0), 0.06, -0.03, 80.0) && road.AppendElement(crest));
    road.AppendElement(Spiral2D(Spiral2D::Spiral2DType::Bloss, -200.0, 0.0, 90.0, road.GetEnd(), Vec2D(0.6, 0.8)));
    const std::unique_ptr<IGeometry> reversed(road.CloneAsReverse());
    const double length = road.GetLength();
    for (int i = 0; i < 100; ++i) {
        const double station = random(0.01, length - 0.01), offset = random(-4.0, 4.0), h = 1e-3;
        Point2D p, q;
        double foundStation = -1.0, found = 9.0, back = 9.0, other = 9.0;
        ASSERT_TRUE(road.GetPoint(station, offset, p) && road.GetStationAndOffset(p, foundStation, found, 1e-8));
        EXPECT_LE(std::abs(found), std::abs(offset) + 1e-8) << "the nearest foot";
        ASSERT_TRUE(road.GetPoint(foundStation, found, q));
        EXPECT_THAT(q, IsNear(p, 4e-9));
        const auto axis = At(road, foundStation), before = At(road, station - h), after = At(road, station + h);
        EXPECT_NEAR(Distance::PointToLine(p, axis.point, axis.point + axis.tangent), found, 4e-9);
        ASSERT_TRUE(AsPolyline(reversed).GetStationAndOffset(p, other, back, 1e-8));
        EXPECT_NEAR(std::abs(back), std::abs(found), 4e-9);
        EXPECT_TRUE(std::abs(other + foundStation - length) > 1e-6 || std::abs(back + found) < 4e-9);
        double k[3] = {};
        for (int j = 0; j < 3; ++j) ASSERT_TRUE(road.GetCurvature(station + h * (j - 1), k[j]));
        const auto [least, most] = std::minmax({k[0], k[1], k[2]});  // a joint may lie between
        const double turn = std::asin(before.tangent.PerpDotProduct(after.tangent)) / (2.0 * h);
        EXPECT_TRUE(std::abs(turn) > 25.0 || (turn > least - 5e-5 && turn < most + 5e-5)) << "else a corner between";
        // As the elements one by one; from the fourth question on boxes answer.
        double nearest = kInfinity, nearestFoot = kInfinity;
        TakeApart(road, [&](const IPolyline2DElement& leaf) {
            Polyline2D::PolylinePoint foot;
            nearest = std::min(nearest, p.Distance(leaf.GetNearestPoint(p, kTolerances)));
            if (ChainOf(leaf).GetNormalPoint(p, 1e-9, foot)) nearestFoot = std::min(nearestFoot, foot.distance);
        });
        Polyline2D::PolylinePoint answer, foot;
        ASSERT_TRUE(Projection::NearestPointOnPolyline(p, road, answer, 1e-4));
        EXPECT_NEAR(answer.distance, nearest, 1e-9);
        EXPECT_EQ(Distance::PointToPolyline(p, road), answer.distance);
        EXPECT_EQ(Projection::NearestPointOnPolyline(p, road, 1e-4), answer.point);
        EXPECT_THAT(At(road, answer.station).point, IsNear(answer.point, 6e-9));
        ASSERT_EQ(Projection::NormalPointOnPolyline(p, road, foot, 1e-9), 1);
        EXPECT_NEAR(foot.distance, nearestFoot, 2e-9);
        EXPECT_THAT(At(road, foot.station).point, IsNear(foot.point, 6e-9));
        EXPECT_TRUE(road.GetElementAtIndex(foot.elementIndex).IsPointOnGeometry(foot.point, kTolerances));

        Polyline2D part;
        const double to = random(station, length);
        ASSERT_TRUE(road.ExtractPolyline(station, to, part));
        ASSERT_NEAR(part.GetLength(), to - station, 4e-9);
        for (const double share : {0.0, 0.3, 0.7, 1.0}) {
            const double along = share * std::min(part.GetLength(), to - station);
            EXPECT_THAT(At(part, along).point, IsNear(At(road, station + along).point, 1e-8));
        }
        ASSERT_TRUE(part.ExtractPolyline(0.0, 0.5 * (to - station), part)) << "a part of itself";
    }
}

static_assert(std::ranges::random_access_range<const Polyline2D> && std::ranges::sized_range<const RingCurve2D>);
static_assert(std::is_same_v<std::ranges::range_reference_t<Polyline3D>, const IPolyline3DElement&>);
static_assert(std::ranges::contiguous_range<const LineString2D> && std::ranges::contiguous_range<LineString3D>);
static_assert(std::is_nothrow_move_constructible_v<Polyline2D> && std::is_nothrow_move_assignable_v<Polyline3D>);
static_assert(std::is_nothrow_move_constructible_v<Spiral2D> && std::is_nothrow_move_assignable_v<Clothoid>);

// Chains and rings, in plan and in space, fill by pointers, owners and clones alike, and give their elements as a
// range.
template <class Chain, class Base, class Element>
void CheckOwningForms(Element (*element)(double)) {
    Chain chain;
    const Element two = element(2);
    EXPECT_TRUE(chain.AppendElement(new Element(element(0))) && chain.AppendElement(two));
    EXPECT_TRUE(chain.AppendElement(std::make_unique<Element>(element(3))));
    EXPECT_FALSE(chain.AppendElement(nullptr) || chain.AppendElement(std::unique_ptr<Base>()));
    if constexpr (requires { chain.Insert(0, two); }) {
        EXPECT_TRUE(chain.Insert(1, std::make_unique<Element>(element(1))) && chain.Insert(4, element(4)));
        EXPECT_FALSE(chain.Insert(9, std::make_unique<Element>(two)) || chain.Insert(9, two)) << "deleted, not leaked";
        EXPECT_TRUE(chain.IsContinuous(1e-9));
    } else {
        EXPECT_FALSE(chain.AppendElement(std::make_unique<Point2D>(0, 0)) || chain.AppendElement(Point2D()));
    }
    double length = 0.0;
    for (const auto& part : chain) length += part.GetLength();
    EXPECT_EQ(length, chain.GetLength());
    EXPECT_EQ(&*(chain.end() - 1), &chain[chain.size() - 1]);
    EXPECT_EQ(chain.begin()[1].GetStart().GetX(), 1.0 + (chain.size() == 5 ? 0.0 : 1.0));
    const auto endOf = [](const auto& part) { return part.GetEnd().GetX(); };
    EXPECT_EQ(&*std::ranges::max_element(chain, {}, endOf), &chain[chain.size() - 1]);

    const auto* const first = &chain[0];
    Chain moved(std::move(chain));
    EXPECT_EQ(&moved[0], first) << "taken over, not copied";
    EXPECT_TRUE(chain.begin() == chain.end() && chain.GetLength() == 0.0);
    EXPECT_TRUE(chain.AppendElement(two) && chain.GetLength() == 1.0);
}

TEST(PolylineTest, OwnersAndRanges) {
    const auto flat = [](double x) { return Line(x, 0, x + 1, 0); };
    const auto lifted = [](double x) { return Line3D(Point3D(x, 0, 0), Point3D(x + 1, 0, 0)); };
    CheckOwningForms<Polyline2D, IPolyline2DElement>(+flat);
    CheckOwningForms<Polyline3D, IPolyline3DElement>(+lifted);
    CheckOwningForms<RingCurve2D, IGeometry>(+flat);
    CheckOwningForms<RingCurve3D, IGeometry>(+lifted);
    const auto& points = LineString2D{Point2D(1, 2), Point2D(3, 4)}.GetPoints();
    EXPECT_EQ(points[1], Point2D(3, 4)) << "a value that lives as long as its name";

    Spiral2D spiral(Spiral2D::Spiral2DType::Bloss, 0.0, 200.0, 90.0, Point2D(5, 5), Vec2D(0.6, 0.8));
    const Spiral2D copy = spiral, moved = std::move(spiral);
    EXPECT_THAT(At(moved, 45.0).point, IsNear(At(copy, 45.0).point, 0.0));
    EXPECT_TRUE(spiral.GetLength() == 0.0 && NearestOn(spiral, Point2D(1, 1)) == Point2D());
}

TEST(PolylineTest, StationsWithoutAnAnswerAndTies) {
    // A closed track: two straights, a turn to the left, and back around a corner to the right.
    Polyline2D track = ChainOf(Line(0, 0, 100, 0), Arc2D(Point2D(100, 0), Point2D(100, 20), Angle(kPi)),
                               Line(100, 40, 0, 40), Line(0, 40, 0, 0));
    const double length = track.GetLength(), turn = 20 * kPi, far = std::hypot(104, 21);
    const std::tuple<const char*, Point2D, double, double> rows[] = {
        {"right of the straight", {30, -5}, 30, 5},
        {"the centre of the turn: the first of equals", {100, 20}, 100, -20},
        {"on the seam, inside", {0, 0}, 0, 0},
        {"inside the corner: the first of equals", {3, 37}, 197 + turn, -3},
        {"off the corner: beyond the centre", {-4, -1}, 100 + turn / 2 + 20 * std::atan2(21, 104), -20 - far},
        {"nowhere", {kNan, 0}, 9, 9},
    };
    for (const auto& [why, point, station, offset] : rows) {
        double s = 9, d = 9;
        (void)track.GetStationAndOffset(point, s, d, 1e-9);
        EXPECT_NEAR(s, station, 1e-9) << why;
        EXPECT_NEAR(d, offset, 1e-9) << why;
        EXPECT_FALSE(ChainOf(Line(10, 0, 20, 0), Line(20, 0, 20, 9)).GetStationAndOffset({21, -1}, s, d, 0.5));
    }
    double curvature = 9.0;
    EXPECT_TRUE(track.GetCurvature(100.0, curvature) && curvature == 0.05) << "of the element that starts there";
    EXPECT_TRUE(track.GetCurvature(length, curvature) && curvature == 0.0);
    Polyline2D part;
    Point2D p;
    curvature = 9.0;
    for (const double station : {-1.0, length + 1.0, kNan, kInfinity}) {
        EXPECT_FALSE(track.GetPoint(station, 0.0, p) || track.GetPoint(1.0, station == -1.0 ? kNan : kInfinity, p));
        EXPECT_FALSE(track.GetCurvature(station, curvature) || Polyline2D().GetCurvature(0.0, curvature));
        EXPECT_FALSE(track.ExtractPolyline(5.0, station, part) || track.ExtractPolyline(station, 5.0, part));
    }
    EXPECT_TRUE(p == Point2D() && curvature == 9.0 && part.GetSize() == 0);
    EXPECT_FALSE(track.ExtractPolyline(8.0, 7.0, part) || Polyline2D().ExtractPolyline(0.0, 0.0, part));
    ASSERT_TRUE(track.ExtractPolyline(100.0, 100.0 + turn, part));
    EXPECT_EQ(part.GetSize(), 1u) << "joints cut nothing";
    EXPECT_TRUE(part.IsEqualTo(track.GetElementAtIndex(1), 1e-12));
}

TEST_P(PolylineLawTest, SamplesStandAtTheirStations) {
    const double from = 0.1 * road.GetLength(), to = 0.9 * road.GetLength();
    std::vector<Polyline2D::PolylinePoint> samples, chords;
    ASSERT_TRUE(road.MakePointsAndTangents(from, to, samples, 1.7, 1e-6));
    EXPECT_EQ(samples.size(), static_cast<std::size_t>((to - from) / 1.7) + 2);
    EXPECT_DOUBLE_EQ(samples.back().station, to);
    ASSERT_TRUE(road.MakePointsAndTangentsUsingHeight(from, to, chords, 0.01, 1e-6));
    EXPECT_NEAR(chords.front().station, from, 1e-9);
    EXPECT_NEAR(chords.back().station, to, 1e-9);
    std::size_t chord = 0;
    for (const Polyline2D::PolylinePoint& sample : samples) {
        const auto expected = At(road, sample.station);
        EXPECT_THAT(sample.point, IsNear(expected.point, 1e-7));
        EXPECT_THAT(sample.tangent, IsNear(expected.tangent, 1e-9));
        EXPECT_EQ(sample.elementIndex, expected.elementIndex);
        while (chord + 2 < chords.size() && chords[chord + 1].station < sample.station) ++chord;
        const Line2D segment(chords[chord].point, chords[chord + 1].point);
        EXPECT_LE(segment.GetNearestPoint(sample.point, kTolerances).Distance(sample.point), 0.01 + 1e-7);
    }
}

INSTANTIATE_TEST_SUITE_P(Roads, PolylineLawTest, testing::Range(0, 8));

TEST(PolylineTest, OwnsWhatItTakesAndRefusesWhatItCannot) {
    Polyline2D chain = ChainOf(Line(0, 0, 1, 0));
    Line2D kept = Line(5, 5, 6, 6);
    std::vector<IPolyline2DElement*> holed{&kept, nullptr}, twice{&kept, &kept};
    EXPECT_FALSE(chain.AppendElement(&chain) || chain.Insert(2, &kept));
    EXPECT_FALSE(chain.Insert(0, holed) || chain.Insert(0, twice));
    std::vector<IPolyline2DElement*> added{Line(-2, 0, -1, 0).Clone(), Line(-1, 0, 0, 0).Clone()};
    EXPECT_TRUE(chain.Insert(0, added));
    EXPECT_TRUE(chain.GetNrOfElements() == 3 && chain.IsContinuous(1e-12) && chain.GetStart() == Point2D(-2, 0));

    Polyline2D copy(chain);
    copy.ExtendEnd(Point2D(9, 0), kTolerances);
    EXPECT_EQ(chain.GetEnd(), Point2D(1, 0)) << "copies are deep";
    EXPECT_EQ(copy.GetLength(), 11.0) << "and forget what was known of the old elements";
    copy = chain;
    EXPECT_TRUE(copy.GetLength() == 3.0 && copy.IsEqualTo(chain, 1e-12));
    copy.DeleteElements();
    EXPECT_EQ(copy.GetLength(), 0.0);
}

TEST(PolylineTest, EmptyChainAnswersEverything) {
    Polyline2D empty;
    double length = 7.0;
    Polyline2D::PolylinePoint sample;
    std::vector<Polyline2D::PolylinePoint> samples;
    std::vector<std::uint64_t> indexes;
    EXPECT_TRUE(&empty.GetStart() == &Point2D::origo() && &empty.GetEnd() == &Point2D::origo());
    EXPECT_TRUE(&Polyline3D().GetStart() == &Point3D::origo() && empty.IsContinuous(0.0));
    EXPECT_TRUE(!empty.GetLengthFromStartPoint(Point2D(), length, 1.0) && length == 0.0);
    EXPECT_FALSE(empty.ComputeTangent(Point2D(), sample.tangent, kTolerances));
    EXPECT_FALSE(empty.MakePointAndTangentAt(0.0, sample) || empty.MakePointAndTangentAt(0, 0.0, sample));
    EXPECT_FALSE(empty.MakePointsAndTangents(0, 1, samples, 0.1, 0.0) || empty.ExtendEnd(Point2D(1, 1), kTolerances));
    EXPECT_TRUE(empty.FindShortElements(indexes, 1.0) && empty.GetElementAtIndex(3).GetLength() == 0.0);
    EXPECT_EQ(empty.GetNearestPoint(Point2D(2, 3), kTolerances), Point2D(2, 3));
    EXPECT_EQ(empty.GetPointUsingLengthAlongXAxis(0.0, sample, 1.0), 0);
    const Polyline2D chain = ChainOf(empty, Line(100, 100, 110, 100), LineString2D());
    ASSERT_TRUE(chain.GetNearestPoint(Point2D(0, 0.5), sample, kTolerances)) << "what has nothing in it is not nearest";
    EXPECT_NEAR(sample.distance, std::hypot(100.0, 99.5), 1e-12);
    for (const double far : {1e300, kInfinity})
        EXPECT_FALSE(chain.GetNearestPoint(Point2D(far, 0), sample, kTolerances));
    EXPECT_EQ(sample.point, Point2D(100, 100)) << "untouched";
}

TEST(PolylineTest, GapsAndJoints) {
    Polyline2D chain = ChainOf(Line(0, 0, 10, 0), Line(10, 0, 10, 5));
    EXPECT_TRUE(chain.IsContinuous(1e-6));
    std::vector<double> lengths;
    chain.GetLengthsAlongGeometry(Point2D(10, 0), lengths, kTolerances);
    EXPECT_EQ(lengths, std::vector<double>{10.0}) << "a joint is one passage";
    auto sample = At(chain, 10.0);
    EXPECT_EQ(sample.elementIndex, 1U) << "a joint belongs to the element that starts there";
    EXPECT_FALSE(chain.MakePointAndTangentAt(15.001, sample));

    chain.AppendElement(Line(10, 5.25, 0, 5.25));
    EXPECT_TRUE(chain.IsContinuous(0.26) && !chain.IsContinuous(0.25));
    EXPECT_EQ(chain.GetLength(), 25.0) << "lengths add up across gaps";
    // The nested chain sets its output to 0 when it does not hold the point; the sum must not lose its length.
    const Polyline2D outer = ChainOf(chain, Line(0, 5.25, -8, 5.25));
    for (const double x : {4.0, -3.0}) EXPECT_EQ(outer.LengthFromStartPoint(Point2D(x, 5.25), 1e-4), 25.0 - x);
    EXPECT_EQ(At(outer, 21.0).point, Point2D(4, 5.25));
    EXPECT_EQ(outer.GetMidPoint(), Point2D(8.5, 5.25));
}

// Lines down to the least length there is, at all places of a chain: real data has them.
TEST(PolylineTest, ShortLinesAreLinesToo) {
    RandomNumbers random(717);
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(trial);
        Polyline2D chain;
        Polyline3D inSpace;
        const Point2D at;  // of all lines: elsewhere coordinates are coarser than the shortest of them
        for (int i = 0; i < 5; ++i) {
            const double length = i == trial % 5 || i == trial / 12 ? std::pow(10.0, -random(10.0, 160.0)) : 10.0;
            const Line2D line(at, Point2D(Angle(random(0.0, 6.0)), length));
            Polyline2D::PolylinePoint place;
            const LineString2D string(line);
            ASSERT_TRUE(ChainOf(line).GetNearestPoint(line.GetEnd(), place, kTolerances));
            ASSERT_TRUE(line.ComputeTangent(at, place.tangent, kTolerances));
            EXPECT_NEAR(place.tangent.Length(), 1.0, 1e-12);
            EXPECT_NEAR(Projection::NearestPointOnLineString(at, string, 1e-4).tangent.Length(), 1.0, 1e-12);
            ASSERT_TRUE(i % 2 == 0 ? chain.AppendElement(line) : chain.AppendElement(string));
            inSpace.AppendElement(Line3D(Point3D(line.GetStart(), 1.0), Point3D(line.GetEnd(), 1.0)));
        }
        const auto check = [](const auto& road) {
            auto samples = std::vector<std::decay_t<decltype(At(road, 0.0))>>();
            ASSERT_TRUE(road.MakePointsAndTangents(0.0, 1e9, samples, 0.7, 1e-6));
            ASSERT_TRUE(road.MakePointsAndTangentsUsingHeight(0.0, 1e9, samples, 0.01, 0.0));
            for (int i = 0; i < 5; ++i) {
                const double half = 0.5 * road.GetElementAtIndex(static_cast<unsigned int>(i)).GetLength();
                ASSERT_TRUE(road.MakePointAndTangentAt(i, half, samples.emplace_back()));
            }
            for (const auto& sample : samples) ASSERT_NEAR(sample.tangent.Length(), 1.0, 1e-12);
            EXPECT_THAT(road.GetMidPoint(), IsNear(At(road, 0.5 * road.GetLength()).point, 0.0));
        };
        check(chain);
        check(inSpace);
    }
    EXPECT_EQ(ChainOf(Line(3, 4, 3, 4)).GetMidPoint(), Point2D(3, 4)) << "the start where there is no length";
    const Polyline2D doubled = ChainOf(LineString2D({Point2D(0, 0), Point2D(2, 0), Point2D(2, 0)}));
    EXPECT_THAT(At(doubled, 2.0).tangent, IsNear(Vec2D(1, 0), 0.0)) << "of the last segment that has a length";
}

// Elements nearer than the tolerance to each other: the one sample for them must not creep along the curve.
TEST(PolylineTest, SamplesByHeightKeepItOnTinyElements) {
    Polyline2D circle;
    std::vector<Point2D> corners{Point2D(1, 0)};
    for (int i = 1; i <= 5000; ++i) {
        corners.emplace_back(std::cos(i * 1e-3), std::sin(i * 1e-3));
        circle.AppendElement(Line2D(corners[i - 1], corners[i]));
    }
    LineString2D chords;
    ASSERT_TRUE(circle.MakeLineStringUsingHeight(0.0, 1e9, chords, 1e-6, 0.01));
    for (const Point2D& p : corners) ASSERT_LE(Projection::NearestPoint(p, chords, 1e-9).Distance(p), 0.01);
    EXPECT_LE(chords.GetSize(), 503U) << "one for every tolerance";
    const Polyline2D stub = ChainOf(Line(0, 0, 10, 0), Line(10, 0, 10.0005, 0));
    ASSERT_TRUE(stub.MakeLineStringUsingHeight(0.0, 20.0, chords, 0.1, 1e-3));
    EXPECT_EQ(chords.GetEnd(), stub.GetEnd()) << "an element shorter than the tolerance ends the range";
}

template <class Chain, class... Curves>
void CheckChainsOfOne(const Curves&... curves) {
    const auto check = [](const IGeometry& curve, Chain chain, bool isAlone) {
        EXPECT_EQ(curve.IsEqualTo(chain, 1e-12), isAlone) << GetName(curve.GetType());
        EXPECT_EQ(chain.IsEqualTo(curve, 1e-12), isAlone) << GetName(curve.GetType());
    };
    (check(curves, ChainOf<Chain>(curves), true), ...);
    (check(curves, ChainOf<Chain>(curves, curves), false), ...);
}

TEST(PolylineTest, AChainEqualsTheOneCurveInItBothWays) {
    const Spiral2D in(Spiral2D::Spiral2DType::Bloss, -600, -300, 100, Point2D(1, 2), Vec2D(1, 0));
    const Clothoid out(-300, 0, 150, in.GetEnd(), in.GetEndTangent());
    CheckChainsOfOne<Polyline2D>(in, out, Parabola(Point2D(0, 0), Point2D(10, 1), 0.01, 0.0, 0.0), Line(0, 0, 3, 4));
    CheckChainsOfOne<Polyline3D>(Line3D(Point3D(0, 0, 0), Point3D(1, 0, 2)),
                                 Arc3D(Point3D(1, 0, 0), Point3D(), Angle(1.0), Plane3D(0, 0, 1, 0)),
                                 LineString3D({Point3D(0, 0, 0), Point3D(1, 0, 2), Point3D(3, 0, 2)}));
    const std::unique_ptr<IGeometry> chain(in.Append(&out));
    EXPECT_THAT(At(AsPolyline(chain), 40.0).point, IsNear(At(in, 40.0).point, 1e-12));
    EXPECT_NEAR(AsPolyline(chain).LengthFromStartPoint(out.GetEnd(), 1e-6), 175.0, 1e-6);
    EXPECT_FALSE(Geometry::AreEqual(in, AsPolyline(chain), 1e-6));
    std::vector<Polyline2D::PolylinePoint> samples;
    ASSERT_TRUE(AsPolyline(chain).MakePointsAndTangentsUsingHeight(0.0, 175.0, samples, 0.01, 1e-9));
    EXPECT_GT(samples.size(), 10u);
}

// Far along a chain a station is coarser than what an element allows beyond its end.
TEST(PolylineTest, LongChainsHaveTheirEnd) {
    Polyline2D chain;
    for (int i = 0; i < 1000; ++i) {
        chain.AppendElement(new Line2D(Point2D(i * 77777.77, 0), Vec2D(77777.77, 0)));
        EXPECT_THAT(At(chain, chain.GetLength()).point, IsNear(chain.GetEnd(), 2e-8));
    }
}

// What changes a chain from outside, and what the chain must still know. `touch` asks so that everything is derived.
TEST(PolylineTest, ChangedElementsAreMeasuredAnew) {
    const auto touch = [](const Polyline2D& chain) {
        for (int i = 0; i < 4; ++i) (void)chain.GetNearestPoint(Point2D(), kTolerances);
    };
    auto* const line = new Line2D(Point2D(0, 0), Point2D(10, 0));
    auto* const inner = new Polyline2D;
    Polyline2D chain;
    chain.AppendElement(line);
    chain.AppendElement(inner);
    touch(chain);
    line->SetEnd(Point2D(20, 0));
    inner->AppendElement(Line(20, 0, 20, 5).Clone());
    EXPECT_EQ(chain.GetLength(), 25.0) << "through kept pointers";
    std::vector<std::uint64_t> indexes;
    EXPECT_FALSE(chain.FindShortElements(indexes, 5.0));

    (void)chain.GetElementAtIndex(0);
    EXPECT_EQ(chain.LengthFromStartPoint(Point2D(20, 4), 1e-4), 24.0);
    touch(chain);
    static_cast<Line2D&>(chain.GetElementAtIndex(0)).SetStart(Point2D(-100, 0));
    EXPECT_EQ(At(chain, 121.0).point, Point2D(20, 1));
    EXPECT_EQ(chain.GetNearestPoint(Point2D(-100, 0), kTolerances), Point2D(-100, 0));
    Polyline2D::PolylinePoint nearest;
    EXPECT_TRUE(chain.GetNearestPoint(Point2D(21, 2), nearest, kTolerances) && nearest.station == 122.0);
    static_cast<Line2D&>(Polyline2D().GetElementAtIndex(7)).SetEnd(Point2D(1, 1));  // the spare line of no chain

    RingCurve2D ring = ChainOf<RingCurve2D>(Line(0, 0, 1, 0));
    EXPECT_EQ(ring.GetLength(), 1.0);
    static_cast<Line2D&>(ring.GetElementAtIndex(0)).SetEnd(Point2D(3, 0));
    std::vector<double> lengths;
    ring.GetLengthsAlongGeometry(Point2D(2, 0), lengths, kTolerances);
    EXPECT_TRUE(ring.GetLength() == 3.0 && lengths.size() == 1U);

    Polyline3D inSpace = ChainOf<Polyline3D>(Line3D(Point3D(0, 0, 0), Point3D(0, 0, 1)));
    EXPECT_EQ(At(inSpace, 1.0).point.GetZ(), 1.0);
    static_cast<Line3D&>(inSpace.GetElementAtIndex(0)).SetEnd(Point3D(0, 0, 9));
    EXPECT_TRUE(At(inSpace, 9.0).point.GetZ() == 9.0 && inSpace.GetLength() == 9.0);
}

TEST(PolylineTest, StationsFollowEveryEdit) {
    RandomNumbers random(31);
    const auto any = [&random] { return Point2D(random(-9.0, 9.0), random(-9.0, 9.0)); };
    Polyline2D chain;
    for (int i = 0; i < 1000; ++i) {
        const auto at = static_cast<unsigned int>(random() % (chain.GetSize() + 1));
        const std::uint64_t edit = chain.GetSize() == 0 ? 0 : random() % 6;
        if (edit < 2) chain.AppendElement(new Line2D(any(), any()));
        if (edit == 2) chain.Insert(at, new Line2D(any(), any()));
        if (edit == 3) chain.RemoveElements({at, at / 2}, true);
        if (edit == 4) chain.GetElementAtIndex(at).ExtendEnd(any(), kTolerances);
        if (edit == 5) chain.Reverse();
        double from = 0.0;
        for (unsigned int k = 0; i % 3 == 0 && k < chain.GetSize(); ++k) {
            Polyline2D::PolylinePoint sample;
            const double length = std::as_const(chain).GetElementAtIndex(k).GetLength();
            ASSERT_EQ(chain.MakePointAndTangentAt(static_cast<int>(k), 0.0, sample), length > 0.0);
            ASSERT_TRUE(sample.station == from || length == 0.0) << "where lines turn back a bridge may have no length";
            from += length;
        }
    }
}

TEST(PolylineTest, RemovedRunsAreBridged) {
    Polyline2D chain;
    for (int i = 0; i < 6; ++i) chain.AppendElement(Line(i, i % 2, i + 1, (i + 1) % 2).Clone());
    std::vector<std::uint64_t> indexes;
    EXPECT_FALSE(chain.FindShortElements(indexes, 1.0));
    EXPECT_TRUE(chain.FindShortElements(indexes, 2.0) && indexes.size() == 6);
    indexes.clear();
    EXPECT_TRUE(chain.FindShortElements(indexes, 100.0) && indexes.empty()) << "the whole chain counts as short";
    chain.RemoveElements({4, 77, 2, 1, 2}, true);  // in any order
    EXPECT_TRUE(chain.IsEqualTo(ChainOf(Line(0, 0, 1, 1), Line(1, 1, 4, 0), Line(4, 0, 6, 0)), 1e-12));

    const std::unique_ptr<const IPolyline2DElement> released(&chain.GetElementAtIndex(0));
    chain.RemoveElements({0}, false);
    EXPECT_EQ(chain.GetNrOfElements(), 2U);
    EXPECT_EQ(released->GetStart(), Point2D(0, 0)) << "still alive, and ours";
    chain = ChainOf(Line(0, 0, 1, 0), Line(1, 0, 2, 1), Arc2D(Point2D(2, 1), Point2D(2, 5), Angle(1.0)));
    chain.RemoveElements({1}, true);
    EXPECT_TRUE(chain.GetElementAtIndex(0).IsEqualTo(Line(0, 0, 2, 1), 1e-12)) << "an arc stays where it is";
}

TEST(PolylineTest, AppendingJoinsElements) {
    const Line2D line = Line(0, 0, 3, 4);
    const Polyline2D chain = ChainOf(line);
    EXPECT_EQ(std::unique_ptr<IGeometry>(line.Append(&line))->GetType(), MathTypes::LineString2D);
    const std::unique_ptr<IGeometry> joined(line.Append(&chain));
    ASSERT_TRUE(joined->GetType() == MathTypes::Polyline2D && AsPolyline(joined).GetNrOfElements() == 2);
    EXPECT_EQ(AsPolyline(joined).GetElementAtIndex(1).GetType(), MathTypes::Polyline2D)
        << "the chain stays one element";
    const std::unique_ptr<IGeometry> flat(chain.Append(joined.get()));
    EXPECT_EQ(AsPolyline(flat).GetNrOfElements(), 3U) << "here the elements are taken one by one";
    EXPECT_TRUE(line.Append(nullptr) == nullptr && chain.Append(&Point2D::origo()) == nullptr);
}

TEST(PolylineTest, HeightsAlongTheXAxis) {
    const Polyline2D profile = ChainOf(Line(100, 10, 150, 12), Line(150, 12, 150, 15),
                                       LineString2D({Point2D(150, 15), Point2D(160, 15), Point2D(170, 20)}));
    double y = -1.0;
    // At 50 the first element there wins; beyond the end the output stays.
    for (const auto& [x, count, expected] :
         {std::tuple(25.0, 1, 11.0), {50.0, 1, 12.0}, {65.0, 1, 17.5}, {71.0, 0, 17.5}}) {
        EXPECT_EQ(profile.GetYUsingLengthAlongXAxis(x, y), count) << x;
        EXPECT_DOUBLE_EQ(y, expected) << x;
    }
    Polyline2D::PolylinePoint sample;
    EXPECT_EQ(profile.GetPointUsingLengthAlongXAxis(70.5, sample, 0.5), 1) << "up to the tolerance beyond the end";
    EXPECT_EQ(sample.point, Point2D(170, 20));
    EXPECT_DOUBLE_EQ(sample.station, profile.GetLength());
    EXPECT_EQ(ChainOf(Line(1, 5, 1, 9)).GetPointUsingLengthAlongXAxis(0.0, sample, 1e-6), 2);
    EXPECT_EQ(sample.point, Point2D(1, 5));
}

TEST(Polyline3DTest, ChainInSpace) {
    const Point3D bend(2, 3, 6), top(2, 3, 16);
    Polyline3D chain = ChainOf<Polyline3D>(Line3D(Point3D(0, 0, 0), bend), Line3D(bend, top));
    EXPECT_TRUE(chain.GetLength() == 17.0 && chain.GetBoundingBox3D().GetSize().GetZ() == 16.0);
    double length = -1.0;
    EXPECT_FALSE(chain.GetLengthFromStartPoint(Point3D(9, 9, 9), length, 1e-4));
    EXPECT_THAT(chain.GetNearestPoint(Point3D(5, 3, 9), kTolerances), IsNear(Point3D(2, 3, 9), 1e-12));
    chain.AppendElement(new LineString3D({top, Point3D(3, 3, 16), Point3D(3, 5, 16)}));
    const Plane3D wall(Point3D(3, 5, 16), Vec3D(1, 0, 0));
    chain.AppendElement(new Arc3D(Point3D(3, 5, 16), Point3D(3, 7, 16), Angle(3.0), wall));
    Polyline3D nested = ChainOf<Polyline3D>(chain);
    for (const Polyline3D* const road : {&chain, &nested}) {
        Polyline3D reversed(*road);
        reversed.Reverse();
        EXPECT_TRUE(road->IsContinuous(1e-9) && reversed.IsContinuous(1e-9));
        std::vector<Polyline3D::PolylinePoint> samples;
        ASSERT_TRUE(road->MakePointsAndTangents(0.0, 1e9, samples, 0.7, 1e-6));
        EXPECT_EQ(samples.back().station, road->GetLength());
        for (const Polyline3D::PolylinePoint& sample : samples) {
            EXPECT_NEAR(road->LengthFromStartPoint(sample.point, 1e-6), sample.station, 1e-6);
            EXPECT_NEAR(reversed.LengthFromEndPoint(sample.point, 1e-6), sample.station, 1e-6);
            EXPECT_NEAR(sample.tangent.Length(), 1.0, 1e-12);
            EXPECT_TRUE(road->IsPointOnGeometry(sample.point, kTolerances));
            Vec3D tangent;
            ASSERT_TRUE(road->ComputeTangent(sample.point, tangent, Tolerances(1e-9, 1e-10)));
            if (sample.station == 7.0) continue;  // a joint: there the first element that holds the point answers
            EXPECT_THAT(tangent, IsNear(sample.tangent, 1e-6));
        }
        LineString3D chords;
        ASSERT_TRUE(road->MakeLineStringUsingHeight(0.0, 1e9, chords, 0.01, 1e-6));
        EXPECT_EQ(chords.GetSize(), 5U + 15U)
            << "the joints and vertices, and smallest n with 2 (1 - cos(1.5 / n)) <= h";
        for (const auto& sample : samples) {
            unsigned int segment = 0;
            const Point3D nearest = Projection::NearestPointOnLineString(sample.point, chords, segment, 1e-9);
            EXPECT_LE(nearest.Distance(sample.point), 0.0100001);
        }
        std::vector<double> lengths;
        road->GetLengthsAlongGeometry(Point3D(2, 3, 6), lengths, kTolerances);
        EXPECT_EQ(lengths, std::vector<double>{7.0});
    }
    const Point3D here(0, 0, 0), there(5, 0, 0);
    const Polyline3D thereAndBack = ChainOf<Polyline3D>(Line3D(here, there), LineString3D({there, here, there}));
    Polyline3D outer = ChainOf<Polyline3D>(thereAndBack);
    std::vector<double> passages;
    outer.GetLengthsAlongGeometry(Point3D(1, 0, 0), passages, kTolerances);
    EXPECT_EQ(passages, (std::vector<double>{1.0, 9.0, 11.0})) << "in inner chains and line strings too";
    EXPECT_TRUE(outer.ExtendStart(Point3D(-1, 0, 0), kTolerances) && outer.GetLength() == 16.0);
    const std::unique_ptr<IGeometry> joined(outer.Append(&thereAndBack));
    EXPECT_TRUE(joined->GetLength() == 31.0 && static_cast<const Polyline3D&>(*joined).GetNrOfElements() == 3);
    chain.RemoveElements({1, 1, 9}, true);
    EXPECT_EQ(chain.GetNrOfElements(), 3U);
    EXPECT_TRUE(chain.IsContinuous(1e-9)) << "the line string moved to the gap's other side";
    EXPECT_EQ(Polyline3D().GetElementAtIndex(2).GetLength(), 0.0);
}

}  // namespace
}  // namespace Kalvio::Math
