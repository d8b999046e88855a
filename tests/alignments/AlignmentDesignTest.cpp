#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Corner = AlignmentDesign::Corner;
using Kind = AlignmentDesign::FaultKind;
using Law = AlignmentDesign::Law;

constexpr Law laws[] = {Law::Clothoid, Law::Bloss, Law::Sine, Law::Cosine, Law::Biquadratic, Law::Cubic};

// Whoever leaves a line or circle at a point in a direction turns about this centre.
Point2D CenterBeside(const Point2D& p, const Vec2D& tangent, double radius) {
    return p + tangent.GetNormalVector(true) * radius;
}

// The curve leaves the first circle and arrives at the second one.
template <class Element>
void ExpectTouching(const Element& first, const Element& last, const Circle2D& from, const Circle2D& to) {
    EXPECT_THAT(CenterBeside(first.GetStart(), first.GetStartTangent(), from.GetRadius()),
                IsNear(from.GetCenter(), 1e-9));
    EXPECT_THAT(CenterBeside(last.GetEnd(), last.GetEndTangent(), to.GetRadius()), IsNear(to.GetCenter(), 1e-9));
}

// One point and one direction where an element of a chain ends and the next begins.
void ExpectJoined(const Polyline2D& chain, int first, double rounding, double turning) {
    Polyline2D::PolylinePoint end, start;
    ASSERT_TRUE(chain.MakePointAndTangentAt(first, chain[static_cast<unsigned int>(first)].GetLength(), end));
    ASSERT_TRUE(chain.MakePointAndTangentAt(first + 1, 0.0, start));
    EXPECT_THAT(end.point, IsNear(start.point, rounding));
    EXPECT_THAT(end.tangent, IsNear(start.tangent, turning));
}

TEST(AlignmentDesignTest, PlansAreSmoothAndWhatDoesNotFitTellsWhatIsMissing) {
    RandomNumbers random(20240601);
    int fitting = 0, tight = 0;
    for (int round = 0; round < 2000; ++round) {
        std::vector<Corner> corners{{surveyOrigins[round % 2]}};
        for (int i = 0; i < 4; ++i) {
            const Vec2D way = Point2D(Angle(random(0, 2.0 * i)), random(150, 650)) - Point2D();
            const double longest = random(0, 1) < 0.8 ? 80.0 : 0.0;
            corners.push_back({corners.back().point + way, random(50, 300), random(0.25, 1) * longest,
                               random(0.25, 1) * longest, laws[random() % 6]});
        }
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        if (!AlignmentDesign::MakePlan(corners, plan, fault)) {
            EXPECT_EQ(plan.GetNrOfElements(), 0U);
            ASSERT_NE(fault.kind, Kind::None);
            if (fault.kind != Kind::Tangent || fault.amount > 1e4) continue;  // all but back: rounding decides
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
            const IPolyline2DElement &element = plan[i], &next = plan[i + 1];
            station += element.GetLength();
            const double shortest = std::min({1.0, element.GetLength(), next.GetLength()});
            ExpectJoined(plan, static_cast<int>(i), 4e-9, 4e-9 / shortest);
            const auto isRigid = [](const IPolyline2DElement& of) {
                return of.GetType() == MathTypes::Line2D || of.GetType() == MathTypes::Arc2D;
            };
            double before = 0.0, behind = 0.0;
            ASSERT_TRUE(plan.GetCurvature(station - 1e-9, before) && plan.GetCurvature(station + 1e-9, behind));
            EXPECT_TRUE((isRigid(element) && isRigid(next)) || std::abs(before - behind) < 1e-9);
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
    const Point2D a(0, 0), b(100, 0), c(100, 100);
    const Row rows[] = {
        {"one corner", {{a}}, Kind::NotFinite, 0, 0.0},
        {"not a number", {{a}, {b, kNan}, {c}}, Kind::NotFinite, 1, 0.0},
        {"twice the same", {{a}, {b, 20}, {b, 20}, {c}}, Kind::SamePoint, 2, 0.0},
        {"no radius", {{a}, {b}, {c}}, Kind::NotACurve, 1, 0.0},
        {"back", {{a}, {b, 20}, {a}}, Kind::TurnsBack, 1, 0.0},
        {"no such cubic parabola", {{a}, {b, 20, 15, 0, Law::Cubic}, {c}}, Kind::NotACurve, 1, 0.0},
        // 60/40 + 80/80 rad of a quarter turn, at a radius of 40
        {"transitions", {{a}, {b, 40, 60, 80}, {c}}, Kind::Transitions, 1, 70.0 - 20.0 * kPi},
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
    const Line2D line(Point2D(-5, 0), Point2D(5, 0));
    for (const Law law : laws) {
        Spiral2D spiral;
        double misfit = 0.0;
        for (const double side : {1.0, -1.0}) {
            const Circle2D bend(Point2D(40, side * 302), side * 300);
            ASSERT_TRUE(AlignmentDesign::TransitionBetween(line, bend, law, spiral, misfit));
            EXPECT_NEAR(spiral.GetStart().GetY(), 0.0, 1e-9);
            EXPECT_THAT(CenterBeside(spiral.GetEnd(), spiral.GetEndTangent(), side * 300),
                        IsNear(bend.GetCenter(), 1e-9));
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
            ExpectTouching(spiral, spiral, from, to);
        }
        for (const double radius : {-50.0, kNan}) {
            const Circle2D from(Point2D(0, 0), 200), to(Point2D(240, 0), radius);
            EXPECT_FALSE(AlignmentDesign::TransitionBetween(from, to, law, spiral, misfit));
            EXPECT_NEAR(misfit, radius < 0.0 ? -10.0 : 0.0, 1e-9);
        }
    }
}

TEST(AlignmentDesignTest, ArcsAndPairsOfTransitionsTouchWhatTheyJoin) {
    RandomNumbers random(20240601);
    int joined = 0;
    for (int round = 0; round < 2000; ++round) {
        const double radius = random(-200, 200);
        const Circle2D from(Point2D(), random(-200, 200));
        const Circle2D to(Point2D(random(-500, 500), random(-500, 500)), random(-200, 200));
        const Line2D line(Point2D(1.0, 0.0), Point2D(9.0, 0.0));
        // of the circles on which the centre of the arc lies
        const double first = std::abs(from.GetRadius() - radius), second = std::abs(to.GetRadius() - radius);
        const double apart = to.GetCenter().Distance(Point2D());
        const double lacks[] = {std::max(apart - first - second, std::abs(first - second) - apart),
                                std::abs(to.GetCenter().GetY() - radius) - second};
        for (const int isLine : {0, 1}) {
            std::vector<Arc2D> arcs;
            double misfit = 0.0;
            const bool isFound = isLine != 0 ? AlignmentDesign::ArcBetween(line, to, radius, arcs, misfit)
                                             : AlignmentDesign::ArcBetween(from, to, radius, arcs, misfit);
            ASSERT_EQ(isFound, lacks[isLine] <= 0.0);
            EXPECT_NEAR(std::abs(misfit), std::max(lacks[isLine], 0.0), 1e-9);
            EXPECT_TRUE(arcs.size() < 2 || arcs[0].GetCenter().Distance(arcs[1].GetCenter()) > 1e-9)
                << "the same twice";
            for (const Arc2D& arc : arcs) {
                ++joined;
                EXPECT_NEAR(arc.GetSignedRadius(), radius, 1e-9);
                EXPECT_LE(arcs.front().GetLength(), arc.GetLength());
                ExpectTouching(arc, arc, isLine != 0 ? Circle2D(arc.GetCenter(), radius) : from, to);
                if (isLine == 0) continue;
                EXPECT_NEAR(arc.GetStart().GetY(), 0.0, 1e-9);
                EXPECT_THAT(arc.GetStartTangent(), IsNear(Vec2D(1, 0), 1e-9));
            }
        }
        Spiral2D in, out;
        double misfit = 0.0;
        if (!AlignmentDesign::TransitionsBetween(from, to, laws[random() % 6], in, out, misfit)) continue;
        ++joined;
        ExpectTouching(in, out, from, to);
        EXPECT_THAT(in.GetEnd(), IsNear(out.GetStart(), 1e-9));
        EXPECT_THAT(in.GetEndTangent(), IsNear(out.GetStartTangent(), 1e-12));
        EXPECT_EQ(std::abs(in.GetEndRadius()) + std::abs(out.GetStartRadius()), 0.0);
    }
    EXPECT_GT(joined, 1500);  // 2080 with a standard deviation of 70
}

TEST(AlignmentDesignTest, CurvesPassThroughPointsAndDoWithoutArcs) {
    const Point2D before(-900, 0), after(700, 450);
    Polyline2D plan;
    AlignmentDesign::Fault fault;
    for (const Law law : laws) {
        for (const double length : {0.0, 40.0}) {
            Corner corner{Point2D(), 0.0, length, 1.5 * length, law};
            double misfit = 0.0;
            const Point2D through(2.0, 31.0);
            ASSERT_TRUE(AlignmentDesign::ThroughPoint(before, after, through, corner, misfit));
            ASSERT_TRUE(AlignmentDesign::MakePlan(std::vector{Corner{before}, corner, {after}}, plan, fault));
            EXPECT_LT(plan.GetNearestPoint(through, kTolerances).Distance(through), 1e-9);
            // On the outside of a tangent there is none.
            EXPECT_FALSE(AlignmentDesign::ThroughPoint(before, after, Point2D(-9, -2), corner, misfit));
            EXPECT_NEAR(misfit, -2.0, 1e-12);
        }
        for (const double tangent : {0.0, 120.0}) {
            Corner corner{Point2D(), 250.0, 0.0, 0.0, law};
            ASSERT_TRUE(AlignmentDesign::WithoutArc(before, after, 0.7, tangent, corner));
            ASSERT_TRUE(AlignmentDesign::MakePlan(std::vector{Corner{before}, corner, {after}}, plan, fault));
            ASSERT_EQ(plan.GetNrOfElements(), 4U);
            EXPECT_NEAR(plan[2].GetLength(), 0.7 * plan[1].GetLength(), 1e-9);
            EXPECT_TRUE(tangent == 0.0 ? corner.radius == 250.0 : std::abs(plan[0].GetLength() - 780.0) < 1e-9);
            ExpectJoined(plan, 1, 2e-9, 1e-9);
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
                    sum += (i % pieces == 0 ? 1.0 : 2.0 + 2.0 * (i % 2)) * std::hypot(1.0, 3.0 * x * x / denominator);
                }
                return sum * reach / pieces / 3.0;
            };
            double length = lengthTo(6.0 * radius * reach);
            for (int i = 0; isByLength && i < 50; ++i) length = lengthTo(6.0 * radius * length);
            const double height = reach * reach * reach / (6.0 * radius * (isByLength ? length : reach));
            const auto convert = isByLength ? AlignmentDesign::FromClothoid : AlignmentDesign::FromSecondDerivatives;
            double first = 0.0, last = radius;
            ASSERT_TRUE(convert(length, first, last));
            EXPECT_EQ(first, 0.0);
            const Spiral2D curve(Law::Cubic, first, last, length, Point2D(), Vec2D(1, 0));
            EXPECT_THAT(curve.GetEnd(), IsNear(Point2D(reach, height), 1e-9));
            // The other way round, and of a part: whatever is between has the radii of its ends.
            double back = -radius, none = 0.0;
            ASSERT_TRUE(convert(length, back, none));
            EXPECT_NEAR(back, -last, 1e-9);
        }
    }
    double first = 0.0, last = 100.0;
    EXPECT_FALSE(AlignmentDesign::FromSecondDerivatives(150.0, first, last));
    EXPECT_FALSE(AlignmentDesign::FromClothoid(0.0, first, last));
    EXPECT_EQ(last, 100.0);
}

}  // namespace
}  // namespace Kalvio::Math
