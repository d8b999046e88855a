#include "kalvio/alignments/AlignmentDesign.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"

#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <cmath>
#include <random>

namespace Kalvio::Math {
namespace {

using Corner = AlignmentDesign::Corner;
using Kind = AlignmentDesign::FaultKind;
using Law = AlignmentDesign::Law;

TEST(AlignmentDesignTest, PlansAreSmoothAndWhatDoesNotFitTellsWhatIsMissing) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240601));
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int fitting = 0;
    int tight = 0;
    for (int round = 0; round < 2000; ++round) {
        std::vector<Corner> corners{{surveyOrigins[round % 2]}};
        for (int i = 0; i < 4; ++i) {
            const double bearing = 2.0 * i * unit(random);
            const Point2D next =
                corners.back().point + Vec2D(std::cos(bearing), std::sin(bearing)) * (150.0 + 500.0 * unit(random));
            const bool hasTransitions = unit(random) < 0.8;
            corners.push_back({next, 50.0 + 250.0 * unit(random), hasTransitions ? 20.0 + 60.0 * unit(random) : 0.0,
                               hasTransitions ? 20.0 + 60.0 * unit(random) : 0.0, static_cast<Law>(random() % 6)});
        }
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        if (!AlignmentDesign::MakePlan(corners, plan, fault)) {
            EXPECT_EQ(plan.GetNrOfElements(), 0U);
            ASSERT_NE(fault.kind, Kind::None);
            if (fault.kind != Kind::Tangent) continue;
            // As much longer, the tangent is just long enough.
            ++tight;
            const Point2D& before = corners[fault.corner - 1].point;
            const Vec2D way = (corners[fault.corner].point - before).Normalize();
            for (const double more : {-1e-6, 1e-6}) {
                std::vector<Corner> longer = corners;
                for (std::size_t i = fault.corner; i < longer.size(); ++i)
                    longer[i].point += way * (fault.amount + more);
                AlignmentDesign::Fault next;
                (void)AlignmentDesign::MakePlan(longer, plan, next);
                EXPECT_EQ(next.kind == Kind::Tangent && next.corner == fault.corner, more < 0.0);
            }
            continue;
        }
        ++fitting;
        EXPECT_EQ(fault.kind, Kind::None);
        EXPECT_THAT(plan.GetStart(), IsNear(corners.front().point, 2e-9));
        EXPECT_THAT(plan.GetEnd(), IsNear(corners.back().point, 2e-9));
        double station = 0.0;
        for (unsigned int i = 0; i + 1 < plan.GetNrOfElements(); ++i) {
            const Polyline2D& chain = plan;
            station += chain.GetElementAtIndex(i).GetLength();
            Polyline2D::PolylinePoint ends[2];
            ASSERT_TRUE(
                chain.MakePointAndTangentAt(static_cast<int>(i), chain.GetElementAtIndex(i).GetLength(), ends[0]));
            ASSERT_TRUE(chain.MakePointAndTangentAt(static_cast<int>(i) + 1, 0.0, ends[1]));
            EXPECT_THAT(ends[0].point, IsNear(ends[1].point, 4e-9));
            const double shortest = std::min(
                1.0, std::min(chain.GetElementAtIndex(i).GetLength(), chain.GetElementAtIndex(i + 1).GetLength()));
            EXPECT_THAT(ends[0].tangent, IsNear(ends[1].tangent, 4e-9 / shortest));
            const auto isTransition = [&](unsigned int k) {
                const MathTypes type = chain.GetElementAtIndex(k).GetType();
                return type == MathTypes::Clothoid || type == MathTypes::Spiral2D;
            };
            double before = 0.0;
            double behind = 0.0;
            ASSERT_TRUE(plan.GetCurvature(station - 1e-9, before) && plan.GetCurvature(station + 1e-9, behind));
            if (isTransition(i) || isTransition(i + 1)) {
                EXPECT_NEAR(before, behind, 1e-9);
            }
        }
    }
    EXPECT_GT(fitting, 300);
    EXPECT_GT(tight, 300);
}

TEST(AlignmentDesignTest, FaultsNameTheCorner) {
    struct Row {
        const char* why;
        std::vector<Corner> corners;
        Kind kind;
        std::size_t corner;
        double amount;
    };
    const Point2D a(0, 0);
    const Point2D b(100, 0);
    const Point2D c(100, 100);
    const Row rows[] = {
        {"one corner", {{a}}, Kind::NotFinite, 0, 0.0},
        {"not a number", {{a}, {b, NAN}, {c}}, Kind::NotFinite, 1, 0.0},
        {"twice the same", {{a}, {b, 20}, {b, 20}, {c}}, Kind::SamePoint, 2, 0.0},
        {"no radius", {{a}, {b}, {c}}, Kind::NotACurve, 1, 0.0},
        {"back", {{a}, {b, 20}, {a}}, Kind::TurnsBack, 1, 0.0},
        {"no such cubic parabola", {{a}, {b, 20, 15, 0, Law::Cubic}, {c}}, Kind::NotACurve, 1, 0.0},
        // 60/40 + 80/80 rad of a quarter turn, at a radius of 40
        {"transitions", {{a}, {b, 40, 60, 80}, {c}}, Kind::Transitions, 1, 70.0 - 20.0 * 3.14159265358979},
        {"a tangent of 120 on 100", {{a}, {b, 120}, {c}}, Kind::Tangent, 1, 20.0},
        {"a tangent of 110 behind", {{a + Vec2D(-50, 0)}, {b, 110}, {c}}, Kind::Tangent, 2, 10.0},
        {"straight on", {{a}, {b}, {Point2D(150, 0)}}, Kind::None, 0, 0.0},
        {"a quarter circle alone", {{a}, {b, 100}, {c}}, Kind::None, 0, 0.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        EXPECT_EQ(AlignmentDesign::MakePlan(row.corners, plan, fault), row.kind == Kind::None);
        EXPECT_EQ(fault.kind, row.kind);
        EXPECT_EQ(fault.corner, row.corner);
        EXPECT_NEAR(fault.amount, row.amount, 1e-9);
    }
}

TEST(AlignmentDesignTest, TransitionsTouchLinesAndCircles) {
    const auto center = [](const Point2D& p, const Vec2D& tangent, double radius) {
        return p + tangent.GetNormalVector(true) * radius;
    };
    const Line2D line(Point2D(-5, 0), Point2D(5, 0));
    for (const Law law : {Law::Clothoid, Law::Bloss, Law::Sine, Law::Cosine, Law::Biquadratic, Law::Cubic}) {
        Spiral2D spiral;
        double misfit = 0.0;
        for (const double side : {1.0, -1.0}) {
            const Circle2D bend(Point2D(40, side * 302), side * 300);
            ASSERT_TRUE(AlignmentDesign::TransitionBetween(line, bend, law, spiral, misfit));
            EXPECT_NEAR(spiral.GetStart().GetY(), 0.0, 1e-9);
            EXPECT_THAT(center(spiral.GetEnd(), spiral.GetEndTangent(), side * 300), IsNear(bend.GetCenter(), 1e-9));
            ASSERT_TRUE(AlignmentDesign::TransitionBetween(bend, line, law, spiral, misfit));
            EXPECT_NEAR(spiral.GetEnd().GetY(), 0.0, 1e-9);
            EXPECT_THAT(spiral.GetEndTangent(), IsNear(Vec2D(1, 0), 1e-12));
            EXPECT_FALSE(AlignmentDesign::TransitionBetween(line, Circle2D(Point2D(0, side * 299), side * 300), law,
                                                            spiral, misfit));
            EXPECT_NEAR(misfit, -1.0, 1e-9);
        }
        if (law == Law::Cubic) continue;
        const Circle2D circles[][2] = {{{Point2D(0, 0), 300}, {Point2D(100, 105), 150}},    // egg, inwards
                                       {{Point2D(100, 105), -150}, {Point2D(0, 0), -300}},  // egg, outwards
                                       {{Point2D(0, 0), 200}, {Point2D(-210, 145), -50}}};  // S
        for (const auto& [from, to] : circles) {
            ASSERT_TRUE(AlignmentDesign::TransitionBetween(from, to, law, spiral, misfit)) << misfit;
            EXPECT_THAT(center(spiral.GetStart(), spiral.GetStartTangent(), from.GetRadius()),
                        IsNear(from.GetCenter(), 1e-9));
            EXPECT_THAT(center(spiral.GetEnd(), spiral.GetEndTangent(), to.GetRadius()), IsNear(to.GetCenter(), 1e-9));
        }
        EXPECT_FALSE(
            AlignmentDesign::TransitionBetween({Point2D(0, 0), 200}, {Point2D(240, 0), -50}, law, spiral, misfit));
        EXPECT_NEAR(misfit, -10.0, 1e-9);
    }
}

// Whoever leaves a line or circle at a point in a direction turns about this centre.
Point2D CenterBeside(const Point2D& p, const Vec2D& tangent, double radius) {
    return p + tangent.GetNormalVector(true) * radius;
}

TEST(AlignmentDesignTest, ArcsAndPairsOfTransitionsTouchWhatTheyJoin) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20240601));
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    int joined = 0;
    for (int round = 0; round < 2000; ++round) {
        const double radii[] = {200.0 * unit(random), 200.0 * unit(random), 200.0 * unit(random)};
        const Circle2D from(Point2D(), radii[1]);
        const Circle2D to(Point2D(500.0 * unit(random), 500.0 * unit(random)), radii[2]);
        const Line2D line(Point2D(1.0, 0.0), Point2D(9.0, 0.0));
        const double lacks[] = {
            // of the circles on which the centre of the arc lies
            std::max(to.GetCenter().Distance(Point2D()) - std::abs(radii[1] - radii[0]) - std::abs(radii[2] - radii[0]),
                     std::abs(std::abs(radii[1] - radii[0]) - std::abs(radii[2] - radii[0])) -
                         to.GetCenter().Distance(Point2D())),
            std::abs(to.GetCenter().GetY() - radii[0]) - std::abs(radii[2] - radii[0])};
        for (const int isLine : {0, 1}) {
            std::vector<Arc2D> arcs;
            double misfit = 0.0;
            const bool isFound = isLine != 0 ? AlignmentDesign::ArcBetween(line, to, radii[0], arcs, misfit)
                                             : AlignmentDesign::ArcBetween(from, to, radii[0], arcs, misfit);
            ASSERT_EQ(isFound, lacks[isLine] <= 0.0);
            EXPECT_NEAR(std::abs(misfit), std::max(lacks[isLine], 0.0), 1e-9);
            for (const Arc2D& arc : arcs) {
                ++joined;
                EXPECT_NEAR(arc.GetSignedRadius(), radii[0], 1e-9);
                EXPECT_LE(arcs.front().GetLength(), arc.GetLength());
                EXPECT_THAT(CenterBeside(arc.GetEnd(), arc.GetEndTangent(), radii[2]), IsNear(to.GetCenter(), 1e-9));
                if (isLine == 0) {
                    EXPECT_THAT(CenterBeside(arc.GetStart(), arc.GetStartTangent(), radii[1]),
                                IsNear(from.GetCenter(), 1e-9));
                } else {
                    EXPECT_NEAR(arc.GetStart().GetY(), 0.0, 1e-9);
                    EXPECT_THAT(arc.GetStartTangent(), IsNear(Vec2D(1, 0), 1e-9));
                }
            }
        }
        Spiral2D first;
        Spiral2D second;
        double misfit = 0.0;
        const auto law = static_cast<Law>(random() % 6);
        if (!AlignmentDesign::TransitionsBetween(from, to, law, first, second, misfit)) continue;
        ++joined;
        EXPECT_THAT(CenterBeside(first.GetStart(), first.GetStartTangent(), radii[1]), IsNear(from.GetCenter(), 1e-9));
        EXPECT_THAT(CenterBeside(second.GetEnd(), second.GetEndTangent(), radii[2]), IsNear(to.GetCenter(), 1e-9));
        EXPECT_THAT(first.GetEnd(), IsNear(second.GetStart(), 1e-9));
        EXPECT_THAT(first.GetEndTangent(), IsNear(second.GetStartTangent(), 1e-12));
        EXPECT_EQ(std::abs(first.GetEndRadius()) + std::abs(second.GetStartRadius()), 0.0);
    }
    EXPECT_GT(joined, 2000);
}

TEST(AlignmentDesignTest, CurvesPassThroughPointsAndDoWithoutArcs) {
    const Point2D before(-900, 0);
    const Point2D after(700, 450);
    for (const Law law : {Law::Clothoid, Law::Bloss, Law::Sine, Law::Cosine, Law::Biquadratic, Law::Cubic}) {
        for (const double length : {0.0, 40.0}) {
            Corner corner{Point2D(), 0.0, length, 1.5 * length, law};
            double misfit = 0.0;
            const Point2D through(2.0, 31.0);
            ASSERT_TRUE(AlignmentDesign::ThroughPoint(before, after, through, corner, misfit));
            Polyline2D plan;
            AlignmentDesign::Fault fault;
            ASSERT_TRUE(AlignmentDesign::MakePlan(std::vector{Corner{before}, corner, {after}}, plan, fault));
            EXPECT_LT(plan.GetNearestPoint(through, Tolerances::Standard()).Distance(through), 1e-9);
            // On the outside of a tangent there is none.
            EXPECT_FALSE(AlignmentDesign::ThroughPoint(before, after, Point2D(-9, -2), corner, misfit));
            EXPECT_NEAR(misfit, -2.0, 1e-12);
        }
        for (const double tangent : {0.0, 120.0}) {
            Corner corner{Point2D(), 250.0, 0.0, 0.0, law};
            ASSERT_TRUE(AlignmentDesign::WithoutArc(before, after, 0.7, tangent, corner));
            Polyline2D plan;
            AlignmentDesign::Fault fault;
            ASSERT_TRUE(AlignmentDesign::MakePlan(std::vector{Corner{before}, corner, {after}}, plan, fault));
            ASSERT_EQ(plan.GetNrOfElements(), 4U);
            EXPECT_NEAR(plan[2].GetLength(), 0.7 * plan[1].GetLength(), 1e-9);
            EXPECT_TRUE(tangent == 0.0 ? corner.radius == 250.0 : std::abs(plan[0].GetLength() - 780.0) < 1e-9);
            Polyline2D::PolylinePoint ends[2];
            ASSERT_TRUE(plan.MakePointAndTangentAt(1, plan[1].GetLength(), ends[0]));
            ASSERT_TRUE(plan.MakePointAndTangentAt(2, 0.0, ends[1]));
            EXPECT_THAT(ends[0].point, IsNear(ends[1].point, 2e-9));
            EXPECT_THAT(ends[0].tangent, IsNear(ends[1].tangent, 1e-9));
        }
    }
}

// y = x^3 / (6 R X) and y = x^3 / (6 R L), their lengths summed over chords, against the spirals of the true radii.
TEST(AlignmentDesignTest, StatedCubicParabolasGetTheirTrueRadii) {
    for (const bool isByLength : {false, true}) {
        for (const double radius : {150.0, -400.0}) {
            constexpr double reach = 60.0;                  // X
            const auto lengthTo = [](double denominator) {  // of y = x^3 / denominator, by Simpson's rule
                constexpr int pieces = 2000;
                double sum = 0.0;
                for (int i = 0; i <= pieces; ++i) {
                    const double x = reach * i / pieces;
                    sum += (i == 0 || i == pieces ? 1.0
                            : i % 2 == 1          ? 4.0
                                                  : 2.0) *
                           std::hypot(1.0, 3.0 * x * x / denominator);
                }
                return sum * reach / pieces / 3.0;
            };
            double length = lengthTo(6.0 * radius * reach);
            for (int i = 0; isByLength && i < 50; ++i) length = lengthTo(6.0 * radius * length);
            const double height = reach * reach * reach / (6.0 * radius * (isByLength ? length : reach));
            double first = 0.0;
            double last = radius;
            ASSERT_TRUE(isByLength ? AlignmentDesign::FromClothoid(length, first, last)
                                   : AlignmentDesign::FromSecondDerivatives(length, first, last));
            EXPECT_EQ(first, 0.0);
            const Spiral2D curve(Law::Cubic, first, last, length, Point2D(), Vec2D(1, 0));
            EXPECT_THAT(curve.GetEnd(), IsNear(Point2D(reach, height), 1e-9));
            // The other way round, and of a part: whatever is between has the radii of its ends.
            double back = -radius;
            double none = 0.0;
            const auto convert = isByLength ? AlignmentDesign::FromClothoid : AlignmentDesign::FromSecondDerivatives;
            ASSERT_TRUE(convert(length, back, none));
            EXPECT_NEAR(back, -last, 1e-9);
        }
    }
    double first = 0.0;
    double last = 100.0;
    EXPECT_FALSE(AlignmentDesign::FromSecondDerivatives(150.0, first, last));
    EXPECT_FALSE(AlignmentDesign::FromClothoid(0.0, first, last));
    EXPECT_EQ(last, 100.0);
}

}  // namespace
}  // namespace Kalvio::Math
