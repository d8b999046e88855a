#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/IntersectionExt.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using R = IntersectionResult;
using L = IntersectionExt::PointLocation;
using P = Point2D;
using Common = std::vector<IntersectionExt::IntersectionPoint<Point2D>>;
using Gaps = std::vector<IntersectionExt::UndershootPoint<Point2D>>;

struct Place {
    P point;
    L onFirst, onSecond;
    double first, second;
};
struct Gap {
    P point;
    L onFirst, onSecond;
    double distance;
};

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

template <class First, class Second>
void CheckCommon(const char* why, const First& a, const Second& b, R result, const std::vector<Place>& expected) {
    for (const P& origin : surveyOrigins) {
        const Vec2D shift = origin - P();
        Common found, general;
        const First movedA = Moved(a, shift);
        const Second movedB = Moved(b, shift);
        EXPECT_EQ(IntersectionExt::Intersect(movedA, movedB, found, kTolerances), result) << why;
        EXPECT_EQ(IntersectionExt::Intersect(static_cast<const IGeometry&>(movedA), movedB, general, kTolerances),
                  result);
        ASSERT_EQ(general.size(), expected.size()) << why;
        ASSERT_EQ(found.size(), expected.size()) << why;
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_THAT(found[i].point, IsNear(expected[i].point + shift, 1e-8)) << why;
            EXPECT_EQ(found[i].onFirst, expected[i].onFirst) << why;
            EXPECT_EQ(found[i].onSecond, expected[i].onSecond) << why;
            EXPECT_NEAR(found[i].firstStation, expected[i].first, 1e-8) << why;
            EXPECT_NEAR(found[i].secondStation, expected[i].second, 1e-8) << why;
        }
    }
}

TEST(IntersectionExtTest, LocationsOnBothOperands) {
    const LineString2D corner{P(0, 0), P(4, 0), P(4, 4)};
    CheckCommon("across", Line2D(P(0, 0), P(4, 0)), Line2D(P(1, -2), P(1, 1)), R::Intersecting,
                {{P(1, 0), L::Interior, L::Interior, 1, 2}});
    CheckCommon("foot to end", Line2D(P(0, 0), P(4, 0)), Line2D(P(1, 3), P(1, 5e-5)), R::Intersecting,
                {{P(1, 5e-5), L::Interior, L::End, 1, 3 - 5e-5}});
    CheckCommon("start to end", Line2D(P(5, 0), P(9, 0)), kUpper, R::Intersecting,
                {{P(5, 0), L::Start, L::Start, 0, 0}});
    CheckCommon("halves of a circle", kUpper, kLower, R::Intersecting,
                {{P(5, 0), L::Start, L::End, 0, 5 * kPi}, {P(-5, 0), L::End, L::Start, 5 * kPi, 0}});
    CheckCommon("joint, end", corner, Line2D(P(9, 0), P(4, 0)), R::Intersecting,
                {{P(4, 0), L::Interior, L::End, 4, 5}});
    CheckCommon("the same", corner, LineString2D{P(4, 4), P(4, 0), P(0, 0)}, R::Coincident,
                {{P(0, 0), L::Start, L::End, 0, 8}, {P(4, 4), L::End, L::Start, 8, 0}});
    CheckCommon("apart", kUpper, corner.Translate(Vec2D(20, 0)), R::NoIntersection, {});
    Common found;
    EXPECT_EQ(IntersectionExt::Intersect(kUpper, Line2D(), found, kTolerances), R::Degenerate);
    EXPECT_EQ(IntersectionExt::Intersect(kUpper, BoundingBox2D(), found, kTolerances), R::Degenerate);
    EXPECT_TRUE(found.empty());
}

TEST(IntersectionExtTest, LocationsInSpace) {
    const std::tuple<const char*, Line3D, R, std::vector<double>> rows[] = {
        {"across, within the tolerance", {Point3D(1, -1, 8e-5), Point3D(1, 2, 8e-5)}, R::Intersecting, {1}},
        {"above", {Point3D(1, -1, 2e-4), Point3D(1, 2, 2e-4)}, R::NoIntersection, {}},
        {"at the end", {Point3D(4, 0, 3), Point3D(4, 0, 0)}, R::Intersecting, {4}},
        {"along", {Point3D(6, 0, 0), Point3D(3, 0, 0)}, R::Intersecting, {3, 4}},
        {"the same", {Point3D(4, 0, 0), Point3D(0, 0, 0)}, R::Coincident, {0, 4}},
        {"end to end", {Point3D(4, 0, 0), Point3D(7, 0, 0)}, R::Intersecting, {4}},
        {"no length", {Point3D(1, 0, 0), Point3D(1, 0, 0)}, R::Degenerate, {}},
    };
    for (const auto& [why, line, result, stations] : rows) {
        std::vector<IntersectionExt::IntersectionPoint<Point3D>> found;
        EXPECT_EQ(IntersectionExt::Intersect(Line3D(Point3D(0, 0, 0), Point3D(4, 0, 0)), line, found, kTolerances),
                  result)
            << why;
        ASSERT_EQ(found.size(), stations.size()) << why;
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_NEAR(found[i].firstStation, stations[i], 1e-9) << why;
            EXPECT_EQ(found[i].onFirst, stations[i] == 0 ? L::Start : stations[i] == 4 ? L::End : L::Interior) << why;
            EXPECT_LE(found[i].point.Distance(Point3D(stations[i], 0, 0)), 5e-5) << why;
        }
    }
}

template <class First, class Second>
void CheckGaps(const char* why, const First& a, const Second& b, const std::vector<Gap>& expected) {
    for (const P& origin : surveyOrigins) {
        const Vec2D shift = origin - P();
        const First movedA = Moved(a, shift);
        const Second movedB = Moved(b, shift);
        Gaps found, swapped;
        const R result = expected.empty() ? R::NoIntersection : R::Intersecting;
        EXPECT_EQ(IntersectionExt::GetUndershoots(movedA, movedB, found, kTolerances), result) << why;
        EXPECT_EQ(IntersectionExt::GetUndershoots(movedB, movedA, swapped, kTolerances), result) << why;
        ASSERT_EQ(found.size(), expected.size()) << why;
        ASSERT_EQ(swapped.size(), expected.size()) << why;
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_THAT(found[i].point, IsNear(expected[i].point + shift, 1e-7)) << why;
            EXPECT_EQ(found[i].onFirst, expected[i].onFirst) << why;
            EXPECT_EQ(found[i].onSecond, expected[i].onSecond) << why;
            EXPECT_NEAR(found[i].distance, expected[i].distance, 1e-7) << why;
            const auto same = [&](const auto& gap) {
                return gap.onFirst == found[i].onSecond && gap.onSecond == found[i].onFirst &&
                       std::abs(gap.distance - found[i].distance) < 1e-9;
            };
            EXPECT_TRUE(std::any_of(swapped.begin(), swapped.end(), same)) << why;
        }
    }
}

TEST(IntersectionExtTest, Undershoots) {
    const Line2D wall(P(10, -50), P(10, 50));
    CheckGaps("straight on, to the wall", Line2D(P(0, 0), P(6, 0)), wall, {{P(10, 0), L::BeyondEnd, L::Interior, 4}});
    CheckGaps("backwards", Line2D(P(12, 0), P(16, 0)), wall, {{P(10, 0), L::BeforeStart, L::Interior, 2}});
    CheckGaps("an end that reaches it", Line2D(P(0, 0), P(10 - 9e-5, 0)), wall, {});
    CheckGaps("two extensions", Line2D(P(0, 0), P(3, 0)), Line2D(P(5, 2), P(5, 1)),
              {{P(5, 0), L::BeyondEnd, L::BeyondEnd, 2}, {P(5, 0), L::BeyondEnd, L::BeyondEnd, 1}});
    CheckGaps("end to end", Line2D(P(0, 0), P(3, 0)), Line2D(P(5, 0), P(9, 0)),
              {{P(5, 0), L::BeyondEnd, L::Start, 2}, {P(3, 0), L::End, L::BeforeStart, 2}});
    CheckGaps("parallel", Line2D(P(0, 0), P(3, 0)), Line2D(P(5, 1), P(9, 1)), {});
    CheckGaps("on around the circle, twice", Arc2D(P(5, 0), P(0, 0), Angle(0.5 * kPi)), Line2D(P(-9, -3), P(9, -3)),
              {{P(4, -3), L::BeforeStart, L::Interior, 5 * std::asin(0.6)},
               {P(-4, -3), L::BeyondEnd, L::Interior, 5 * (0.5 * kPi + std::asin(0.6))}});
    CheckGaps("a full circle has no ends", Arc2D(P(5, 0), P(0, 0), Angle(2 * kPi)), Line2D(P(9, 0), P(7, 0)),
              {{P(5, 0), L::Start, L::BeyondEnd, 2}});
    CheckGaps("last segments", LineString2D{P(0, 9), P(0, 0), P(2, 0)}, LineString2D{P(20, 0), P(8, 0), P(8, 4)},
              {{P(8, 0), L::BeyondEnd, L::Interior, 6}});
    Gaps gaps;
    EXPECT_EQ(IntersectionExt::GetUndershoots(wall, Line2D(), gaps, kTolerances), R::Degenerate);
    EXPECT_EQ(IntersectionExt::GetUndershoots(wall, BoundingBox2D(), gaps, kTolerances), R::Degenerate);
    EXPECT_EQ(IntersectionExt::GetUndershoots(wall, Line2D(P(0, 0), P(kNan, 0)), gaps, kTolerances), R::Degenerate);
    EXPECT_TRUE(gaps.empty());
}

// A short fence across the way on from the end: that end meets it there, unless it meets an extension of it before.
TEST(IntersectionExtTest, UndershootsOfRandomCurves) {
    RandomNumbers random(701);
    int onFence = 0;
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const P start = surveyOrigins[round % 2] + Vec2D(random(-9, 9), random(-9, 9));
        const double heading = random(0.0, 2.0 * kPi);
        const Vec2D along(std::cos(heading), std::sin(heading));
        const double further = random(0.01, 5.0);
        Polyline2D road;
        IPolyline2DElement::PolylineElementPoint end;
        P meeting;
        if (round % 3 == 0) {
            auto* const arc = new Arc2D(start, start + along * 10.0, Angle(random(1.0, 3.0)));
            meeting = Arc2D(start, start + along * 10.0, Angle(arc->GetAngle().GetRadians() + 0.1 * further)).GetEnd();
            road.AppendElement(arc);
        } else if (round % 3 == 1) {
            road.AppendElement(new Line2D(start, along * 7.0));
            meeting = start + along * (7.0 + further);
        } else {
            auto* const clothoid = new Clothoid(0.0, random(20.0, 90.0), 15.0, start, along);
            ASSERT_TRUE(clothoid->MakePointAndTangentAt(clothoid->GetLength(), end));
            road.AppendElement(clothoid);
            meeting = end.point + end.tangent * further;
        }
        const double side = heading + random(-1.0, 1.0) + (round % 3 == 0 ? 0.0 : 0.5 * kPi);
        const Vec2D across(std::cos(side) * 0.02, std::sin(side) * 0.02);
        const LineString2D fence{meeting - across, meeting + across * 0.5, meeting + across};
        Gaps gaps;
        ASSERT_EQ(IntersectionExt::GetUndershoots(road, fence, gaps, kTolerances), R::Intersecting);
        const auto gap =
            std::find_if(gaps.begin(), gaps.end(), [](const auto& g) { return g.onFirst == L::BeyondEnd; });
        ASSERT_NE(gap, gaps.end());
        EXPECT_LE(gap->distance, further + 0.021);
        if (gap->onSecond != L::Interior) continue;
        ++onFence;
        EXPECT_LE(gap->point.Distance(meeting), 0.021);
        EXPECT_NEAR(gap->distance, further, 0.021);
    }
    EXPECT_GT(onFence, 100);
}

}  // namespace
}  // namespace Kalvio::Math
