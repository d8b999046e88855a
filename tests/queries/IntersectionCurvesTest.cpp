#include "queries/QueryNames.h"

#include <optional>

namespace Kalvio::Math {
namespace {

struct WholeLine {
    operator const Line2D&() const { return line; }
    Line2D line;
};

#define KALVIO_PAIR(First, Second, Function)                                                 \
    R MeetPair(const First& a, const Second& b, Points& out, const Tolerances& tolerances) { \
        Points counted;                                                                      \
        const R result = I::Function(a, b, out, tolerances);                                 \
        EXPECT_EQ(I::Function(a, b, counted, tolerances.UserTolerance()), out.size());       \
        return result;                                                                       \
    }
#define KALVIO_CURVES(First, Name)               \
    KALVIO_PAIR(First, Clothoid, Name##Clothoid) \
    KALVIO_PAIR(First, Spiral2D, Name##Spiral)   \
    KALVIO_PAIR(First, Parabola, Name##Parabola)
KALVIO_CURVES(Line2D, LineSegment)
KALVIO_CURVES(WholeLine, Line)
KALVIO_CURVES(Arc2D, Arc)
KALVIO_CURVES(Circle2D, Circle)
KALVIO_CURVES(Spiral2D, Spiral)
KALVIO_PAIR(Line2D, Line2D, LineSegmentLineSegment)
KALVIO_PAIR(Line2D, Arc2D, LineSegmentArc)
KALVIO_PAIR(Line2D, Circle2D, LineSegmentCircle)
KALVIO_PAIR(WholeLine, Arc2D, LineArc)
KALVIO_PAIR(WholeLine, Circle2D, LineCircle)
KALVIO_PAIR(Arc2D, Arc2D, ArcArc)
KALVIO_PAIR(Arc2D, Circle2D, ArcCircle)
KALVIO_PAIR(Clothoid, Clothoid, ClothoidClothoid)
KALVIO_PAIR(Clothoid, Parabola, ClothoidParabola)
KALVIO_PAIR(Parabola, Parabola, ParabolaParabola)
#undef KALVIO_CURVES
#undef KALVIO_PAIR

R MeetBoth(const auto& a, const auto& b, Points& out, const Tolerances& tolerances) {
    if constexpr (requires { MeetPair(a, b, out, tolerances); }) {
        return MeetPair(a, b, out, tolerances);
    } else {
        return MeetPair(b, a, out, tolerances);
    }
}
R Meet(const Curve& first, const Curve& second, Points& out, const Tolerances& tolerances) {
    return std::visit([&](const auto& a, const auto& b) { return MeetBoth(a, b, out, tolerances); }, first, second);
}

const Vec2D kEast(1, 0);

Sample SampleOf(const Curve& curve, double station) {
    return std::visit([=](const auto& known) { return At(known, station); }, curve);
}

TEST(IntersectionCurvesTest, LineLine) {
    const std::tuple<const char*, Line2D, Line2D, R, P> rows[] = {
        {"beyond both", {P(0, 0), P(1, 0)}, {P(5, 3), P(5, 1)}, R::Intersecting, P(5, 0)},
        {"the same line", {P(0, 0), P(4, 2)}, {P(8, 4), P(6, 3)}, R::Coincident, P(7, 7)},
        {"parallel", {P(0, 0), P(4, 2)}, {P(0, 1), P(4, 3)}, R::NoIntersection, P(7, 7)},
        {"parallel within tol", {P(0, 0), P(4, 0)}, {P(0, 0.125), P(4, 0.125)}, R::Coincident, P(7, 7)},
        {"as short as tol", {P(0, 0), P(0.125, 0)}, {P(0, 1), P(0, 2)}, R::Degenerate, P(7, 7)},
        {"short, at a slight angle", {P(0, 0), P(0.25, 2e-11)}, {P(-8, 0), P(8, 0)}, R::Intersecting, P(0, 0)},
        {"NaN", {P(0, 0), P(4, kNan)}, {P(0, 4), P(4, 0)}, R::NoIntersection, P(7, 7)},
        {"to infinity", {P(0, 0), P(kInfinity, 0)}, {P(1, -1), P(1, 1)}, R::Degenerate, P(7, 7)},
        {"too long to square", {P(0, 0), P(1e160, 0)}, {P(1, -1e160), P(1, 1e160)}, R::Degenerate, P(7, 7)},
        {"too far", {P(1, 1e305), P(1e9, 1e305)}, {P(1e305, 1), P(1e305, 1e9)}, R::NoIntersection, P(7, 7)},
    };
    const Tolerances tolerances(0.125, 1e-10);
    for (const auto& [why, a, b, result, expected] : rows) {
        SCOPED_TRACE(why);
        P found[] = {P(7, 7), P(7, 7), P(7, 7)};
        const P a1 = a.GetStart(), a2 = a.GetEnd(), b1 = b.GetStart(), b2 = b.GetEnd();
        EXPECT_EQ(I::LineLine(a, b, found[0], tolerances), result);
        EXPECT_EQ(I::LineLine(b1, b2, a1, a2, found[1], tolerances), result);
        EXPECT_EQ(I::LineLine(a1, a2 - a1, b1, b2 - b1, found[2], tolerances), result);
        for (const P& p : found) EXPECT_THAT(p, IsNear(expected, 1e-9));
        EXPECT_EQ(I::LineLine(a, b, found[0], 0.125), result == R::Intersecting ? 1 : 0);
    }
}

TEST(IntersectionCurvesTest, Segments) {
    const std::tuple<const char*, Line2D, R, P> rows[] = {
        {"beyond the two points", {P(8, -1), P(9, 1)}, R::Intersecting, P(8.5, 0)},
        {"an end within tol", {P(-3, 5), P(-3, 0.0625)}, R::Intersecting, P(-3, 0.0625)},
        {"an end too far", {P(-3, 5), P(-3, 0.25)}, R::NoIntersection, P(7, 7)},
        {"along it", {P(3, 0), P(4, 0)}, R::Coincident, P(7, 7)},
        {"too short", {P(3, 0), P(3, 0.125)}, R::Degenerate, P(7, 7)},
    };
    const Line2D line(P(0, 0), P(2, 0));
    for (const auto& [why, segment, result, expected] : rows) {
        P p(7, 7);
        EXPECT_EQ(I::LineSegmentLine(segment, line, p, Tolerances(0.125, 1e-10)), result) << why;
        EXPECT_THAT(p, IsNear(expected, 1e-9)) << why;
        EXPECT_EQ(I::LineSegmentLine(segment, line, p, 0.125), result == R::Intersecting ? 1 : 0) << why;
    }
    const std::tuple<const char*, double, double, double, R, std::vector<double>> collinear[] = {
        {"a gap below the tolerance", 4.0625, 6, 0.125, R::Intersecting, {4.0625}},
        {"a gap of the tolerance", 4.125, 6, 0.125, R::NoIntersection, {}},
        {"an overlap below it", 3.9375, 6, 0.125, R::Intersecting, {3.9375}},
        {"an overlap of it", 6, 3.875, 0.125, R::Intersecting, {3.875, 4}},
        {"both ends agree", 4.125, -0.125, 0.125, R::Coincident, {0, 4}},
        {"they do not without a tolerance", 4.125, 0, 0, R::Intersecting, {0, 4}},
        {"end to end", 4, 6, 0, R::Intersecting, {4}},
    };
    for (const auto& [why, from, to, tolerance, result, expected] : collinear) {
        Points found, points;
        for (const double x : expected) points.emplace_back(x, 0);
        const Line2D a(P(0, 0), P(4, 0)), b(P(from, 0), P(to, 0));
        EXPECT_EQ(I::LineSegmentLineSegment(a, b, found, Tolerances(tolerance, 1e-10)), result) << why;
        EXPECT_EQ(found, points) << why;
    }
    EXPECT_TRUE(I::IsPointInsideLineBounds(P(4.25, -0.25), Line2D(P(4, 0), P(0, 2)), -0.25));
    for (const P& p : {P(4.3, 1), P(1, 2.3), P(kNan, 1)}) {
        EXPECT_FALSE(I::IsPointInsideLineBounds(p, Line2D(P(4, 0), P(0, 2)), 0.25));
    }
}

TEST(IntersectionCurvesTest, LineCircleTellsPointsAndTangentsByTheDiscriminant) {
    const std::tuple<const char*, Line2D, double, int, P, P> rows[] = {
        {"level", {P(0, 3), P(1, 3)}, 0.0, 2, P(-4, 3), P(4, 3)},
        {"level, the other way", {P(1, 3), P(0, 3)}, 0.0, 2, P(4, 3), P(-4, 3)},
        {"falling: the upper point first", {P(3, 2), P(3, 0)}, 0.0, 2, P(3, 4), P(3, -4)},
        {"through the centre", {P(-3, -4), P(3, 4)}, 0.0, 2, P(3, 4), P(-3, -4)},
        {"a tangent", {P(-2, 5), P(2, 5)}, 1e-6, 1, P(0, 5), P(0, 5)},
        {"beside, the discriminant -11 within the tolerance", {P(0, 6), P(1, 6)}, 16.0, 1, P(0, 6), P(0, 6)},
        {"beside", {P(0, 6), P(1, 6)}, 8.0, 0, P(7, 7), P(7, 7)},
        {"no line", {P(0, 5), P(0, 5)}, 1e-6, 0, P(7, 7), P(7, 7)},
        {"NaN", {P(0, kNan), P(0, 5)}, 1e-6, 0, P(7, 7), P(7, 7)},
    };
    for (const auto& [why, line, tolerance, count, expected1, expected2] : rows) {
        P p1(7, 7), p2(7, 7);
        EXPECT_EQ(I::LineCircle(line, Circle2D(P(0, 0), 5), p1, p2, tolerance), count) << why;
        EXPECT_THAT(p1, IsNear(expected1, 1e-12)) << why;
        EXPECT_THAT(p2, IsNear(expected2, 1e-12)) << why;
    }
}

TEST(IntersectionCurvesTest, CircleCircle) {
    const std::tuple<const char*, Circle2D, R, Points> rows[] = {
        {"the right of the way first", {P(6, 0), 5}, R::Intersecting, {P(3, -4), P(3, 4)}},
        {"and back", {P(-6, 0), 5}, R::Intersecting, {P(-3, 4), P(-3, -4)}},
        {"touching outside, of rounded numbers", {P(8.9, 0), 3.9}, R::Intersecting, {P(5, 0)}},
        {"touching inside", {P(3, 0), 2}, R::Intersecting, {P(5, 0)}},
        {"apart", {P(0, 10.001), 5}, R::NoIntersection, {}},
        {"inside", {P(0, 1), 2}, R::NoIntersection, {}},
        {"concentric", {P(0, 0), 2}, R::NoIntersection, {}},
        {"the same", {P(0, 0), 5}, R::Coincident, {}},
        {"nearly",
         {P(0x1p-30, 0), 5 + 0x1p-31},
         R::Intersecting,
         {P(-2.499999999650754, -4.330127019123831), P(-2.499999999650754, 4.330127019123831)}},
        {"a point", {P(5, 0), 0}, R::Degenerate, {}},
        {"a negative radius", {P(6, 0), -5}, R::Degenerate, {}},
        {"NaN", {P(kNan, 0), 5}, R::NoIntersection, {}},
        {"NaN radius", {P(1, 0), kNan}, R::Degenerate, {}},
    };
    for (const auto& [why, circle, result, expected] : rows) {
        Points points;
        EXPECT_EQ(I::CircleCircle(Circle2D(P(0, 0), 5), circle, points, kTolerances), result);
        EXPECT_THAT(points, testing::Pointwise(AreNear(1e-12), expected)) << why;
        EXPECT_EQ(I::CircleCircle(Circle2D(P(0, 0), 5), circle, points, 1e-4), expected.size()) << why;
        points.clear();
        EXPECT_EQ(I::CircleCircle(circle, circle, points, 0.0), 0) << why;
    }
}

TEST(IntersectionCurvesTest, ResultsAndPointsOfCurvesThatTouchOrCoincide) {
    for (const P& o : surveyOrigins) {
        const auto at = [&](double x, double y) { return o + Vec2D(x, y); };
        const auto line = [&](double x1, double y1, double x2, double y2) { return Line2D(at(x1, y1), at(x2, y2)); };
        const auto arc = [&](double x, double y, double cx, double cy, double sweep) {
            return Arc2D(at(x, y), at(cx, cy), Angle(sweep));
        };
        const Clothoid clothoid(0.0, 300.0, 150.0, o, kEast);
        const Sample middle = At(clothoid, 37.5), last = At(clothoid, 75);
        using Type = Spiral2D::Spiral2DType;
        const auto spiral = [&](Type type, double from, double to, double length) {
            return Spiral2D(type, from, to, length, o, kEast);
        };
        const auto parabola = [&](double x1, double x2) {
            Parabola curve(P(x1, 0.01 * x1 * x1), P(x2, 0.01 * x2 * x2), 0.01, 0.0, 0.0);
            return curve.Translate(o - P());
        };
        const Clothoid part(600, 300, 150, middle.point, middle.tangent);
        const Arc2D joined(last.point, last.point + last.tangent.GetNormalVector(true) * 300, Angle(0.5));
        const Spiral2D closed = spiral(Type::Bloss, 20, 20, 40 * kPi);
        const double up = std::sqrt(12.5);
        const std::tuple<const char*, Curve, Curve, R, Points> rows[] = {
            {"an end just short", line(0, 0, 9, 0), line(4, 5, 4, 5e-5), R::Intersecting, {at(4, 5e-5)}},
            {"an end too short", line(0, 0, 9, 0), line(4, 5, 4, 2e-4), R::NoIntersection, {}},
            {"a flat crossing", line(0, 0, 9, 0), line(0, -1e-3, 9, 2e-3), R::Intersecting, {at(3, 0)}},
            {"tiny", line(0, 0, 2e-4, 0), line(1e-4, 2e-5, 3e-4, -4e-5), R::Intersecting, {at(1.667e-4, 0)}},
            {"no length", line(4, 4, 4, 4), line(0, 0, 9, 9), R::Degenerate, {}},
            {"not a number", line(4, 4, kNan, 4), line(0, 0, 9, 9), R::Degenerate, {}},
            {"one circle", arc(5, 0, 0, 0, kPi / 2), arc(0, 5, 0, 0, -kPi / 4), R::Coincident, {at(up, up), at(0, 5)}},
            {"begin together, overlap at their ends",
             arc(5, 0, 0, 0, -1.75 * kPi),
             arc(5 - 4e-5, 4e-5, -4e-5, 4e-5, 11 * kPi / 6),
             R::Coincident,
             {at(5, 0), at(5 * std::cos(kPi / 6), -2.5), at(up, up)}},
            {"where a curve closes", line(0, -9, 0, 50), closed, R::Intersecting, {o, at(0, 40)}},
            {"a part of it", clothoid, part, R::Coincident, {middle.point, last.point}},
            {"as a spiral", spiral(Type::Clothoid, 0, 300, 75), clothoid, R::Coincident, {o, last.point}},
            {"its first tangent", line(-50, 0, 50, 0), clothoid, R::Intersecting, {o}},
            {"the arc it joins", joined, clothoid, R::Intersecting, {last.point}},
            {"an inflection", line(0, 0, 1, 0), spiral(Type::Bloss, -300, 300, 60), R::Intersecting, {o}},
            {"parts of a parabola", parabola(-10, 40), parabola(60, 20), R::Coincident, {at(20, 4), at(40, 16)}},
            {"its summit", line(-10, 0, 10, 0), parabola(-10, 40), R::Intersecting, {o}},
        };
        for (const auto& [why, a, b, result, expected] : rows) {
            SCOPED_TRACE(why);
            for (const bool isSwapped : {false, true}) {
                Points points;
                EXPECT_EQ(isSwapped ? Meet(b, a, points, kTolerances) : Meet(a, b, points, kTolerances), result);
                ExpectSamePoints(points, expected, 1e-4);
            }
        }
    }
}

// The crossings of fine chords; none when the curves meet too flatly, or too near to an end, for chords to tell.
std::optional<Points> CrossingsOfChords(const Curve& a, const Curve& b) {
    constexpr int parts = 400;
    constexpr double flat = 0.05, nearEnd = 0.05;
    Points p, q, crossings;
    for (int i = 0; i <= parts; ++i) {
        p.push_back(SampleOf(a, ElementOf(a).GetLength() * i / parts).point);
        q.push_back(SampleOf(b, ElementOf(b).GetLength() * i / parts).point);
    }
    for (std::size_t i = 0; i < parts; ++i) {
        const Vec2D v = p[i + 1] - p[i];
        for (std::size_t j = 0; j < parts; ++j) {
            const Vec2D w = q[j + 1] - q[j], between = q[j] - p[i];
            const double cross = v.PerpDotProduct(w);
            const double s = between.PerpDotProduct(w) / cross, t = between.PerpDotProduct(v) / cross;
            if (!(s >= 0 && s < 1 && t >= 0 && t < 1)) continue;
            crossings.push_back(p[i] + v * s);
            if (std::abs(cross) < flat * v.Length() * w.Length()) return std::nullopt;
        }
    }
    for (const auto& [chords, other] : {std::pair(&p, &b), std::pair(&q, &a)}) {
        for (const P& end : {chords->front(), chords->back()}) {
            if (ElementOf(*other).GetNearestPoint(end, kTolerances).Distance(end) < nearEnd) return std::nullopt;
        }
    }
    return crossings;
}

// What runs within the tolerance beside them, and how far away the curves begin, leaves the crossings as they are.
TEST(IntersectionCurvesTest, NeitherRunsAlongEachOtherNorDistanceCostACrossing) {
    const auto transition = [](double from, double to, double length, const Vec2D& shift) {
        return Spiral2D(Spiral2D::Spiral2DType::Clothoid, from, to, length, P() + shift, kEast);
    };
    const auto arc = [](double x, double r, double start, double sweep) {
        return Arc2D(P(x + r * std::cos(start), r * std::sin(start)), P(x, 0), Angle(sweep));
    };
    const auto bent = transition(-300, 300, 300, {});
    const Vec2D along = SampleOf(bent, 30).tangent * 0.02;
    const double degree = kPi / 180, far = 1e6, down = std::sqrt(1e4 - 0.005 * 0.005);
    const Arc2D one = arc(0, 100, 87 * degree, 213 * degree), other = arc(0.01, 100, 240 * degree, 213 * degree);
    const Arc2D ring = arc(0, 5, 0, 2 * kPi);
    const P end(132.598463, 178.966288);
    const std::tuple<const char*, Curve, Curve, Points> rows[] = {
        {"equal", bent, transition(-300, 300, 300, along), {SampleOf(bent, 30.01).point, SampleOf(bent, 270.01).point}},
        {"equal, eastwards", transition(0, 50, 400, {}), transition(0, 50, 400, kEast * 0.05), {P(0.05, 0), end}},
        {"beside a stretch", one, other, {one.GetStart(), arc(0.01, 100, 93 * degree, 1).GetStart(), P(0.005, -down)}},
        {"a long segment", Line2D(P(-far, 3), P(9, 3)), ring, {P(-4, 3), P(4, 3)}},
        {"a large circle", arc(-far, far, -1, 2), ring, {P(-12.5e-6, -5), P(-12.5e-6, 5)}},
        {"an arc that all but closes", arc(0, 10, 0, 2 * kPi - 5e-5), arc(15, 5, 1, 6), {P(10, 0)}},
    };
    for (const auto& [why, a, b, expected] : rows) {
        SCOPED_TRACE(why);
        const double within = a.index() == 3 ? 1e-6 : 1e-9;  // beside spirals
        Points points, swapped;
        Meet(a, b, points, Tolerances(1e-3, 1e-10));
        Meet(b, a, swapped, Tolerances(1e-3, 1e-10));
        for (const Points& found : {points, swapped}) ExpectSamePoints(found, expected, within);
    }
}

TEST(IntersectionCurvesTest, FindsWhatFineChordsFindOnTheCurvesThemselves) {
    RandomNumbers random(20260801);
    const Vec2D shift = surveyOrigins[1] - surveyOrigins[0];
    int compared = 0, found = 0;
    for (int i = 0; i < 20 * kKinds * kKinds; ++i) {
        SCOPED_TRACE(i);
        RandomNumbers again = random;
        const int kindA = i % kKinds, kindB = i / kKinds % kKinds;
        Curve a = RandomCurve(random, kindA, surveyOrigins[0]), b = RandomCurve(random, kindB, surveyOrigins[0]);
        const Curve movedA = RandomCurve(again, kindA, surveyOrigins[1]);
        const Curve movedB = RandomCurve(again, kindB, surveyOrigins[1]);
        if (!IsMade(ElementOf(a)) || !IsMade(ElementOf(b))) continue;
        Points points;
        const R result = Meet(a, b, points, kTolerances);
        EXPECT_EQ(result, points.empty() ? R::NoIntersection : R::Intersecting);
        double last = 0.0, station = 0.0;
        // Along the first operand of the pair: of a clothoid and a spiral that is the spiral.
        const bool isInOrder = kindA == 2 && kindB == 3 ? false : kindA <= kindB || (kindA == 3 && kindB == 2);
        for (const P& p : points) {
            for (const Curve* c : {&a, &b}) EXPECT_THAT(ElementOf(*c).GetNearestPoint(p, kTolerances), IsNear(p, 1e-4));
            EXPECT_TRUE(ElementOf(isInOrder ? a : b).GetLengthFromStartPoint(p, station, 2e-4));
            EXPECT_GE(station, std::exchange(last, station) - 2e-4);
        }
        const std::optional<Points> crossings = CrossingsOfChords(a, b);
        if (!crossings) continue;
        ++compared;
        found += static_cast<int>(points.size());
        EXPECT_GE(points.size(), crossings->size());
        for (const P& p : *crossings) EXPECT_THAT(points, testing::Contains(IsNear(p, 0.1)));
        if (points.size() != crossings->size()) continue;  // a tangent point, which chords pass over

        Points swapped, reversed, moved;
        Meet(b, a, swapped, kTolerances);
        Meet(movedA, movedB, moved, kTolerances);
        for (Curve* curve : {&a, &b}) std::visit([](auto& known) { known.Reverse(); }, *curve);
        Meet(a, b, reversed, kTolerances);
        ExpectSamePoints(swapped, points, 1e-9);
        ExpectSamePoints(reversed, points, 1e-8);
        for (Point2D& p : moved) p -= shift;
        ExpectSamePoints(moved, points, 1e-5);  // rounding over the angle of flat crossings
    }
    EXPECT_TRUE(compared > 300 && found > 80);
}

TEST(IntersectionCurvesTest, WholeLinesAndCirclesMeetCurvesLikeLongSegmentsAndFullArcs) {
    RandomNumbers random(20260804);
    for (int i = 0; i < 40 * kKinds; ++i) {
        const P o = surveyOrigins[i % 2] + Vec2D(random(-40, 40), random(-40, 40));
        const Line2D line(o, o + Vec2D(4, random(-3, 3)));
        const Vec2D far = (line.GetEnd() - o) * 500;
        const Circle2D circle(o, random(10, 60));
        const auto check = [&](const auto& whole, const auto& part, const auto& curve) {
            Points found, expected;
            EXPECT_EQ(MeetBoth(whole, curve, found, kTolerances), MeetBoth(part, curve, expected, kTolerances));
            ExpectSamePoints(found, expected, 1e-7);
        };
        const Arc2D ring(o + Vec2D(circle.GetRadius(), 0), o, Angle(2 * kPi));
        check(WholeLine{line}, Line2D(o - far, o + far), circle);
        check(circle, ring, ring);
        const auto both = [&](const auto& curve) {
            if constexpr (!std::is_same_v<decltype(curve), const Line2D&>)
                check(WholeLine{line}, Line2D(o - far, o + far), curve);
            check(circle, ring, curve);
        };
        std::visit(both, RandomCurve(random, i % kKinds, surveyOrigins[i % 2]));
    }
}

// A small circle that touches a curve from either side, lifted off or sunk in by a little.
TEST(IntersectionCurvesTest, TouchingCirclesMeetOnceAndSunkOnesTwice) {
    RandomNumbers random(20260802);
    constexpr double radius = 2.0;
    for (int i = 0; i < 60 * kKinds; ++i) {
        SCOPED_TRACE(i);
        const Curve curve = RandomCurve(random, i % kKinds, surveyOrigins[0]);
        const double station = random(0.1, 0.9) * ElementOf(curve).GetLength();
        const Sample touch = SampleOf(curve, station);
        const Vec2D out = touch.tangent.GetNormalVector(random(-1, 1) > 0.0);
        const Vec2D turned = SampleOf(curve, station + 0.01).tangent - SampleOf(curve, station - 0.01).tangent;
        const std::tuple<double, std::size_t> rows[] = {{2e-4, 0}, {5e-5, 1}, {0.0, 1}, {-1e-6, 2}, {-1e-3, 2}};
        for (const auto& [lift, number] : rows) {
            const P center = touch.point + out * (radius + lift);
            const Arc2D circle(center + out * radius, center, Angle(2 * kPi));
            Points points, near;
            Meet(circle, curve, points, kTolerances);
            for (const P& p : points) {
                if (p.Distance(touch.point) < 0.2) near.push_back(p);
                EXPECT_NEAR(p.Distance(center), radius, 1e-4);
            }
            ASSERT_EQ(near.size(), number) << lift;
            EXPECT_LE(number == 1 ? near[0].Distance(touch.point) : 0.0, 1e-4);
            if (number < 2) continue;
            // The chord over the sunken cap, by the curvatures of both.
            const double curvatures = 1.0 / radius - turned.DotProduct(out) / 0.02;
            EXPECT_NEAR(near[0].Distance(near[1]) / std::sqrt(-8.0 * lift / curvatures), 1.0, 0.02);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
