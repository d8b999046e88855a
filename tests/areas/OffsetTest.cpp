#include "areas/Areas.h"

namespace Kalvio::Math {
namespace {

using Join = Offset::Join;

double LengthOf(const std::vector<Polyline2D>& parts) {
    double length = 0.0;
    for (const Polyline2D& part : parts) length += part.GetLength();
    return length;
}

TEST(OffsetTest, CornersAreJoinedOnTheOutsideAndMeetOnTheInside) {
    const char* const corner = "0 0 10 0 10 10";
    const char* const closed = "0 0 10 0 10 10 0 10 0 0";
    const char* const narrow = "0 10 0 0 2 0 2 10";
    struct Row {
        const char* why;
        const char* points;
        double distance;
        Join join;
        double limit;
        double raw;      // length
        double trimmed;  // lengths together
        std::size_t parts;
    };
    const Row rows[] = {
        {"left is inside: the lines meet", corner, -2, Join::Round, 2, 16, 16, 1},
        {"right is outside: an arc", corner, 2, Join::Round, 2, 20 + kPi, 20 + kPi, 1},
        {"mitred", corner, 2, Join::Mitred, 2, 24, 24, 1},
        {"beyond the limit", corner, 2, Join::Mitred, 1.4, 20 + std::sqrt(8.0), 20 + std::sqrt(8.0), 1},
        {"bevelled", corner, 2, Join::Bevelled, 2, 20 + std::sqrt(8.0), 20 + std::sqrt(8.0), 1},
        {"closed, outside", closed, 1, Join::Mitred, 2, 48, 48, 1},
        {"closed, inside", closed, -1, Join::Round, 2, 32, 32, 1},
        {"nothing is as far inside: lines meet beyond each other", closed, -6, Join::Round, 2, 8, 0, 0},
        {"too narrow: the floor does not reach the meetings", narrow, -3, Join::Round, 2, 22 + std::sqrt(72.0), 0, 0},
        {"a gap of 1.8 tolerances closes", "0 0 3 0 3 10 0 10 0 0", -1.49991, Join::Round, 2, 14.00072, 0, 0},
        {"none", corner, 0, Join::Round, 2, 20, 20, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const LineString2D chain(MakePolygon(row.points).GetPoints());
        Polyline2D raw;
        std::vector<Polyline2D> trimmed;
        ASSERT_TRUE(Offset::Parallel(chain, row.distance, raw, kTolerances, row.join, row.limit));
        ASSERT_TRUE(Offset::TrimmedParallel(chain, row.distance, trimmed, kTolerances, row.join, row.limit));
        EXPECT_NEAR(raw.GetLength(), row.raw, 1e-9);
        EXPECT_NEAR(LengthOf(trimmed), row.trimmed, 1e-9);
        EXPECT_EQ(trimmed.size(), row.parts);
    }
    // Straight back, by way of next to nothing: the half disc there is on one of both sides.
    const LineString2D hairpin(
        MakePolygon("0 0 -2 0 -2.000000001 -0.000000001 -2.000000001 -1 -2 -1 -2 2").GetPoints());
    std::vector<Polyline2D> right, left;
    ASSERT_TRUE(Offset::TrimmedParallel(hairpin, 1, right, kTolerances));
    ASSERT_TRUE(Offset::TrimmedParallel(hairpin, -1, left, kTolerances));
    EXPECT_NEAR(LengthOf(right) + LengthOf(left), 7 + kPi, 1e-6);
}

// A law of parallels: everything on a trimmed one is as far as the distance, on its side, and nothing is missing that
// is on the raw one and not nearer.
TEST(OffsetTest, TrimmedParallelsAreWhatTheDistanceLeaves) {
    RandomNumbers random(20261123);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        Polyline2D chain;
        Point2D at = surveyOrigins[i % 2];
        double heading = random(0.0, 6.0);
        const bool isSmooth = i % 3 != 0;
        for (int k = 0; k < 2 + i % 5; ++k) {
            if (!isSmooth) heading += random(-2.5, 2.5);
            const Vec2D way = Point2D(Angle(heading), 1.0) - Point2D();
            const double radius = (k % 2 == 0 ? 1.0 : -1.0) * random(1.0, 15.0);
            const double turn = std::copysign(random(0.2, 3.0), radius);
            if (k % 3 == 0) {
                chain.AppendElement(new Line2D(at, at + way * std::abs(radius)));
            } else if (k % 3 == 1) {
                chain.AppendElement(new Arc2D(at, at + Vec2D(-way.GetY(), way.GetX()) * radius, Angle(turn)));
                heading += turn;
            } else {
                chain.AppendElement(new Clothoid(0.0, radius, std::sqrt(std::abs(radius) * 6.0), at, way));
                heading += std::copysign(3.0 / std::abs(radius), radius);
            }
            at = Point2D(chain.GetEnd());
        }
        const double distance = random(0.2, 6.0) * (i % 4 < 2 ? 1.0 : -1.0);
        Polyline2D raw;
        std::vector<Polyline2D> trimmed;
        ASSERT_TRUE(Offset::Parallel(chain, distance, raw, kTolerances));
        ASSERT_TRUE(Offset::TrimmedParallel(chain, distance, trimmed, kTolerances));
        Polyline2D::PolylinePoint place, foot;
        double done = 0.0;
        for (const Polyline2D& part : trimmed) {
            EXPECT_TRUE(part.IsContinuous(1e-6));
            ASSERT_TRUE(part.MakePointAndTangentAt(0.5 * part.GetLength(), place) &&
                        chain.GetNearestPoint(place.point, foot, kTolerances));
            EXPECT_GE(foot.station, done) << "along the chain";
            done = foot.station;
            for (double s = 0.0; s <= part.GetLength(); s += 0.37) {
                ASSERT_TRUE(part.MakePointAndTangentAt(s, place) &&
                            chain.GetNearestPoint(place.point, foot, kTolerances));
                EXPECT_NEAR(foot.distance, std::abs(distance), 3.0 * kTolerances.UserTolerance());
            }
        }
        for (double s = 0.0; s <= raw.GetLength(); s += 0.37) {
            ASSERT_TRUE(raw.MakePointAndTangentAt(s, place) && chain.GetNearestPoint(place.point, foot, kTolerances));
            if (foot.distance < std::abs(distance) - 1e-7) continue;
            const bool isKept = std::any_of(trimmed.begin(), trimmed.end(), [&](const Polyline2D& part) {
                Polyline2D::PolylinePoint nearest;
                return part.GetNearestPoint(place.point, nearest, kTolerances) && nearest.distance < 0.002;
            });
            EXPECT_TRUE(isKept) << s;
        }
    }
}

// A transition has a parallel of clothoids and arcs, far fewer of a clothoid than arcs alone, that has all points at
// the distance and no corners.
TEST(OffsetTest, TransitionsHaveParallelsOfClothoids) {
    RandomNumbers random(20261124);
    std::size_t clothoids = 0, arcs = 0;
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        Polyline2D chain = ChainOf(ElementOf(RandomCurve(random, 2 + i % 3, surveyOrigins[i / 3 % 2])));
        if (i % 4 < 2) chain.Reverse();
        const double distance = random(-14, 14), tolerance = i % 2 == 0 ? 1e-3 : 1e-2;
        Polyline2D made;
        std::vector<Polyline2D> trimmed;
        Polyline2D::PolylinePoint place, foot, next;
        ASSERT_TRUE(Offset::Parallel(chain, distance, made, Tolerances(tolerance)));
        ASSERT_TRUE(Offset::TrimmedParallel(chain, distance, trimmed, Tolerances(tolerance)));
        for (double s = 0.05; s < chain.GetLength(); s += 0.7) {
            ASSERT_TRUE(chain.MakePointAndTangentAt(s, place));
            const Vec2D right(place.tangent.GetY(), -place.tangent.GetX());
            ASSERT_TRUE(made.GetNearestPoint(place.point + right * distance, foot, kTolerances));
            EXPECT_LT(foot.distance, tolerance) << s;
        }
        if (i % 3 == 0) clothoids += made.size();
        for (const Polyline2D& part : trimmed) arcs += i % 3 == 0 ? part.size() : 0;
        for (std::size_t k = 1; k < made.size(); ++k) {
            const Polyline2D before = ChainOf(made[k - 1]);
            ASSERT_TRUE(before.MakePointAndTangentAt(before.GetLength(), place));
            ASSERT_TRUE(ChainOf(made[k]).MakePointAndTangentAt(0.0, next));
            EXPECT_NEAR(place.tangent.PerpDotProduct(next.tangent), 0.0, i / 3 % 2 == 0 ? 1e-9 : 1e-7);
            EXPECT_LT(place.point.Distance(next.point), 1e-9);
        }
    }
    EXPECT_LT(3 * clothoids, arcs);
}

// Points beside the chain, by the table, lie on the line.
TEST(OffsetTest, DistancesChangeAlongTheStation) {
    Polyline2D made;
    for (const double radius : {50.0, -50.0}) {
        Polyline2D chain;
        Polyline2D::PolylinePoint place, foot;
        chain.AppendElement(new Line2D(surveyOrigins[1], surveyOrigins[1] + Vec2D(20.0, 0.0)));
        chain.AppendElement(new Clothoid(0.0, radius, 40.0, chain.GetEnd(), Vec2D(1.0, 0.0)));
        ASSERT_TRUE(chain.MakePointAndTangentAt(52.0, place));
        const Vec2D toCenter = Vec2D(-place.tangent.GetY(), place.tangent.GetX()) * radius;
        chain.AppendElement(new Arc2D(chain.GetEnd(), chain.GetEnd() + toCenter, Angle(40.0 / radius)));
        ASSERT_TRUE(Offset::Parallel(chain, {{10, -7}, {30, 5}, {80, 9}}, made, kTolerances));
        for (double s = 0.3; s < chain.GetLength(); s += 0.7) {
            ASSERT_TRUE(chain.MakePointAndTangentAt(s, place));
            const double distance =
                s < 30.0 ? -7.0 + 0.6 * std::max(s - 10.0, 0.0) : std::min(3.0 + 0.08 * s - 0.4, 9.0);
            const Vec2D right(place.tangent.GetY(), -place.tangent.GetX());
            ASSERT_TRUE(made.GetNearestPoint(place.point + right * distance, foot, kTolerances));
            EXPECT_LT(foot.distance, kTolerances.UserTolerance()) << s;
        }
        EXPECT_EQ(Offset::Parallel(chain, {{60, 5}, {90, 55}}, made, kTolerances), radius > 0.0)
            << "folds on the right";
    }
    // Around the corner outside, to where the lines meet inside.
    const LineString2D corner{Point2D(0, 0), Point2D(10, 0), Point2D(10, 10)};
    ASSERT_TRUE(Offset::Parallel(corner, {{0, 1}, {10, 2}}, made, kTolerances));
    EXPECT_NEAR(made.GetLength(), std::sqrt(101.0) + kPi + 10, 1e-9);
    ASSERT_TRUE(Offset::Parallel(corner, {{0, -2}, {20, -2}, {20, -3}}, made, kTolerances)) << "a step at the end";
    EXPECT_NEAR(made.GetLength(), 16, 1e-9);
    EXPECT_FALSE(Offset::Parallel(corner, {{5, 1}, {0, 1}}, made, kTolerances)) << "descends";
    EXPECT_FALSE(Offset::Parallel(corner, std::vector<Offset::Width>(), made, kTolerances));
    EXPECT_FALSE(Offset::Parallel(corner, {{0, kNan}}, made, kTolerances));
    EXPECT_NEAR(made.GetLength(), 16, 1e-9) << "untouched";
}

TEST(OffsetTest, ArcsOfAFineToleranceJoinWithoutCorners) {
    Polyline2D curve;  // some thousand arcs of 0.08, beyond whose centres the parallel lies
    curve.AppendElement(Spiral2D(Spiral2D::Spiral2DType::Clothoid, -407.125, 1820.625, 691.125,
                                 Point2D(-1741.5, -1713.4375), Vec2D(-1.0, 0.0, 1.0)));
    std::vector<Polyline2D> fine, coarse;
    ASSERT_TRUE(Offset::TrimmedParallel(curve, -1024.0, fine, Tolerances(0.0)));
    ASSERT_TRUE(Offset::TrimmedParallel(curve, -1024.0, coarse, Tolerances(1e-6)) && coarse.size() == fine.size());
    EXPECT_NEAR(fine.back().GetLength(), coarse.back().GetLength(), 1e-4);
    EXPECT_LT(fine.back().GetNrOfElements(), 30000U);
}

TEST(OffsetTest, WhatHasNoParallelTouchesNothing) {
    Polyline2D raw;
    std::vector<Polyline2D> trimmed(2);
    const LineString2D chain{Point2D(0, 0), Point2D(1, 0)};
    for (const double bad : {kNan, kInfinity, 1e300}) {
        EXPECT_FALSE(Offset::Parallel(chain, bad, raw, kTolerances));
        EXPECT_FALSE(Offset::TrimmedParallel(LineString2D{Point2D(0, 0), Point2D(bad, 0)}, 1.0, trimmed, kTolerances));
    }
    EXPECT_FALSE(Offset::Parallel(LineString2D{Point2D(1, 1), Point2D(1, 1)}, 1.0, raw, kTolerances)) << "no direction";
    Polyline2D arc;
    EXPECT_TRUE(arc.AppendElement(Arc2D(Point2D(5, 0), Point2D(0, 0), Angle(1.0))));
    EXPECT_FALSE(Offset::Parallel(arc, -5.0, raw, kTolerances)) << "its centre";
    EXPECT_FALSE(Offset::TrimmedParallel(Polyline2D(), 1.0, trimmed, kTolerances)) << "nothing";
    EXPECT_FALSE(Offset::TrimmedParallel(chain, 1e9, trimmed, kTolerances)) << "no shape is left";
    EXPECT_FALSE(Offset::Parallel(chain, 1.0, raw, kTolerances, Join::Mitred, 0.0)) << "no limit";
    Polyline2D beyond;  // the series of the clothoid: a tangent of 10 radians
    beyond.AppendElement(new Clothoid(0.0, 4.95, 22.6, Point2D(), Vec2D(1.0, 0.0)));
    EXPECT_FALSE(Offset::TrimmedParallel(beyond, 140.0, trimmed, Tolerances(7.0)));
    std::vector<Polyline2D> none;
    Polyline2D tiny;  // arcs of no radius
    tiny.AppendElement(Parabola(Point2D(1.2e-199, 2e19), Point2D(5.8e-294, 2e19), 9.6e-231, -1.3e-36, 2e19));
    EXPECT_TRUE(Offset::TrimmedParallel(tiny, -2e-194, none, Tolerances(3e-262)) && none.empty());
    Polyline2D high, made;
    high.AppendElement(Parabola(Point2D(0, 0), Point2D(9, 0), 1e200, 0.0, 0.0));
    EXPECT_TRUE(!Offset::Parallel(high, 1.0, made, kTolerances) || std::isfinite(made.GetLength()));
    EXPECT_EQ(raw.GetNrOfElements(), 0U);
    EXPECT_EQ(trimmed.size(), 2U);
}

}  // namespace
}  // namespace Kalvio::Math
