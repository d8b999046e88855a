#include "queries/QueryNames.h"

#include <sstream>
#include <string>

namespace Kalvio::Math {
namespace {

using E = IntersectionExt;
using L = E::PointLocation;
using Common = std::vector<E::IntersectionPoint<Point2D>>;
using Gaps = std::vector<E::UndershootPoint<Point2D>>;

// Half circles around the origin, from east and from west.
const Arc2D kUpper(P(5, 0), P(0, 0), Angle(kPi));
const Arc2D kLower(P(-5, 0), P(0, 0), Angle(kPi));

template <class Element>
Element Moved(const Element& element, const Vec2D& shift) {
    if constexpr (std::is_same_v<Element, Arc2D>) {
        return {element.GetStart() + shift, element.GetCenter() + shift, element.GetAngle()};
    } else {
        return element.Translate(shift);
    }
}

// Each point in micrometres as "x y locations lengths", the locations being i(nterior), s(tart), e(nd), < and >.
template <class Located>
std::string Text(const std::vector<Located>& found, const Vec2D& shift) {
    std::ostringstream text;
    const auto write = [&text](double value) { text << std::round(value * 1e6) / 1e6 + 0.0 << ' '; };
    for (const Located& place : found) {
        for (const double at : {(place.point - shift).GetX(), (place.point - shift).GetY()}) write(at);
        text << "ise<>"[static_cast<int>(place.onFirst)] << "ise<>"[static_cast<int>(place.onSecond)] << ' ';
        if constexpr (requires { place.distance; }) {
            write(place.distance);
        } else {
            for (const double station : {place.firstStation, place.secondStation}) write(station);
        }
    }
    return text.str();
}

template <class First, class Second>
void CheckCommon(const char* why, const First& first, const Second& second, R result, const char* expected) {
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        const First a = Moved(first, shift);
        const Second b = Moved(second, shift);
        Common found, general;
        EXPECT_EQ(E::Intersect(a, b, found, kTolerances), result) << why;
        E::Intersect(static_cast<const IGeometry&>(a), b, general, kTolerances);
        for (const Common& common : {found, general}) EXPECT_EQ(Text(common, shift), expected) << why;
    }
}

TEST(IntersectionExtTest, LocationsOnBothOperands) {
    const Line2D axis(P(0, 0), P(4, 0));
    const LineString2D corner{P(0, 0), P(4, 0), P(4, 4)};
    CheckCommon("across", axis, Line2D(P(1, -2), P(1, 1)), R::Intersecting, "1 0 ii 1 2 ");
    CheckCommon("foot to end", axis, Line2D(P(1, 3), P(1, 5e-5)), R::Intersecting, "1 5e-05 ie 1 2.99995 ");
    CheckCommon("half circles", kUpper, kLower, R::Intersecting, "5 0 se 0 15.708 -5 0 es 15.708 0 ");
    CheckCommon("joint, end", corner, Line2D(P(9, 0), P(4, 0)), R::Intersecting, "4 0 ie 4 5 ");
    CheckCommon("same", corner, LineString2D{P(4, 4), P(4, 0), P(0, 0)}, R::Coincident, "0 0 se 0 8 4 4 es 8 0 ");
    CheckCommon("apart", kUpper, corner.Translate(Vec2D(20, 0)), R::NoIntersection, "");
    Common found;
    EXPECT_EQ(E::Intersect(kUpper, Line2D(), found, kTolerances), R::Degenerate);
    EXPECT_EQ(E::Intersect(kUpper, BoundingBox2D(), found, kTolerances), R::Degenerate);
    EXPECT_TRUE(found.empty());
}

TEST(IntersectionExtTest, LocationsInSpace) {
    using Q = Point3D;
    const Line3D axis(Q(0, 0, 0), Q(4, 0, 0));
    const std::tuple<const char*, Line3D, R, std::vector<double>> rows[] = {
        {"across, within the tolerance", {Q(1, -1, 8e-5), Q(1, 2, 8e-5)}, R::Intersecting, {1}},
        {"above", {Q(1, -1, 2e-4), Q(1, 2, 2e-4)}, R::NoIntersection, {}},
        {"at the end", {Q(4, 0, 3), Q(4, 0, 0)}, R::Intersecting, {4}},
        {"along", {Q(6, 0, 0), Q(3, 0, 0)}, R::Intersecting, {3, 4}},
        {"along, the same way", {Q(3, 0, 0), Q(6, 0, 0)}, R::Intersecting, {3, 4}},
        {"the same", {Q(4, 0, 0), Q(0, 0, 0)}, R::Coincident, {0, 4}},
        {"no length", {Q(1, 0, 0), Q(1, 0, 0)}, R::Degenerate, {}},
    };
    for (const auto& [why, line, result, stations] : rows) {
        std::vector<E::IntersectionPoint<Point3D>> found;
        EXPECT_EQ(E::Intersect(axis, line, found, kTolerances), result) << why;
        std::vector<double> along;
        for (const auto& place : found) {
            const double at = along.emplace_back(place.firstStation);
            EXPECT_THAT(place.point, IsNear(Q(at, 0, 0), 5e-5)) << why;
            EXPECT_EQ(place.onFirst, at == 0 ? L::Start : at == 4 ? L::End : L::Interior) << why;
        }
        EXPECT_THAT(along, testing::Pointwise(testing::DoubleNear(1e-9), stations)) << why;
    }
}

template <class First, class Second>
void CheckGaps(const char* why, const First& first, const Second& second, const char* expected, const char* swapped) {
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        const First a = Moved(first, shift);
        const Second b = Moved(second, shift);
        Gaps gaps, others;
        const R result = *expected == 0 ? R::NoIntersection : R::Intersecting;
        EXPECT_EQ(E::GetUndershoots(a, b, gaps, kTolerances), result) << why;
        EXPECT_EQ(E::GetUndershoots(b, a, others, kTolerances), result) << why;
        EXPECT_EQ(Text(gaps, shift), expected) << why;
        EXPECT_EQ(Text(others, shift), swapped) << why;
    }
}

TEST(IntersectionExtTest, Undershoots) {
    const Line2D wall(P(10, -50), P(10, 50));
    const Line2D edge(P(0, 0), P(3, 0));
    const Arc2D quarter(P(5, 0), P(0, 0), Angle(0.5 * kPi));
    const LineString2D corner{P(0, 9), P(0, 0), P(2, 0)};
    CheckGaps("straight on", edge, wall, "10 0 >i 7 ", "10 0 i> 7 ");
    CheckGaps("backwards", Line2D(P(12, 0), P(16, 0)), wall, "10 0 <i 2 ", "10 0 i< 2 ");
    CheckGaps("an end that reaches it", Line2D(P(0, 0), P(10 - 9e-5, 0)), wall, "", "");
    CheckGaps("two extensions", edge, Line2D(P(5, 2), P(5, 1)), "5 0 >> 2 5 0 >> 1 ", "5 0 >> 1 5 0 >> 2 ");
    CheckGaps("end to end", edge, Line2D(P(5, 0), P(9, 0)), "5 0 >s 2 3 0 e< 2 ", "3 0 <e 2 5 0 s> 2 ");
    CheckGaps("parallel", edge, Line2D(P(5, 1), P(9, 1)), "", "");
    CheckGaps("around the circle both ways", quarter, Line2D(P(-9, -3), P(9, -3)), "4 -3 <i 3.21751 -4 -3 >i 11.0715 ",
              "4 -3 i< 3.21751 -4 -3 i> 11.0715 ");
    CheckGaps("no ends", Arc2D(P(5, 0), P(0, 0), Angle(2 * kPi)), Line2D(P(9, 0), P(7, 0)), "5 0 s> 2 ", "5 0 >s 2 ");
    CheckGaps("last segments", corner, LineString2D{P(20, 0), P(8, 0), P(8, 4)}, "8 0 >i 6 ", "8 0 i> 6 ");
    CheckGaps("where the other starts", Arc2D(P(10, 0), P(0, 0), Angle(kPi / 3)), Line2D(P(-20, 0), P(-5, 0)),
              "-10 0 <i 31.4159 -10 0 >i 20.944 10 0 s> 15 ", "10 0 >s 15 -10 0 i< 31.4159 -10 0 i> 20.944 ");
    Gaps gaps;
    EXPECT_EQ(E::GetUndershoots(wall, Line2D(), gaps, kTolerances), R::Degenerate);
    EXPECT_EQ(E::GetUndershoots(wall, BoundingBox2D(), gaps, kTolerances), R::Degenerate);
    EXPECT_EQ(E::GetUndershoots(wall, Line2D(P(0, 0), P(kNan, 0)), gaps, kTolerances), R::Degenerate);
    EXPECT_TRUE(gaps.empty());
}

// Across a short line, and to its very start, and no more.
TEST(IntersectionExtTest, LinesAndTransitionsGoStraightOn) {
    RandomNumbers random(701);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const Curve curve = RandomCurve(random, std::array{0, 2, 3}[round % 3], surveyOrigins[round % 2]);
        if (!IsMade(ElementOf(curve))) continue;
        const Polyline2D road = ChainOf(ElementOf(curve));
        const auto end = At(road, road.GetLength());
        const double further = random(0.01, 5.0);
        const P meeting = end.point + end.tangent * further;
        const Vec2D across = (end.tangent.GetNormalVector(true) + end.tangent * random(-1.0, 1.0)) * 0.02;
        for (const L onSecond : {L::Interior, L::Start}) {
            Gaps gaps;
            const P from = onSecond == L::Start ? meeting : meeting - across;
            E::GetUndershoots(road, Line2D(from, meeting + across), gaps, kTolerances);
            std::erase_if(gaps, [](const auto& gap) { return gap.onFirst != L::BeyondEnd || gap.distance > 6.0; });
            ASSERT_EQ(gaps.size(), 1U);
            EXPECT_EQ(gaps[0].onSecond, onSecond);
            EXPECT_THAT(gaps[0].point, IsNear(meeting, 1e-7));
            EXPECT_NEAR(gaps[0].distance, further, 1e-7);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
