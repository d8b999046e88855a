#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Testing.h"

#include <optional>
#include <variant>

namespace Kalvio::Math {
namespace {

using Sample = IPolyline2DElement::PolylineElementPoint;
using Points = std::vector<Point2D>;
using R = IntersectionResult;
using Curve = std::variant<Line2D, Arc2D, Clothoid, Spiral2D, Parabola>;

struct WholeLine {
    operator const Line2D&() const { return line; }
    Line2D line;
};

#define KALVIO_PAIR(First, Second, Function)                                                      \
    R MeetPair(const First& a, const Second& b, Points& out, const Tolerances& tolerances) {      \
        Points counted;                                                                           \
        const R result = Intersection::Function(a, b, out, tolerances);                           \
        EXPECT_EQ(Intersection::Function(a, b, counted, tolerances.UserTolerance()), out.size()); \
        return result;                                                                            \
    }
KALVIO_PAIR(Line2D, Line2D, LineSegmentLineSegment)
KALVIO_PAIR(Line2D, Arc2D, LineSegmentArc)
KALVIO_PAIR(Line2D, Clothoid, LineSegmentClothoid)
KALVIO_PAIR(Line2D, Spiral2D, LineSegmentSpiral)
KALVIO_PAIR(Line2D, Parabola, LineSegmentParabola)
KALVIO_PAIR(Arc2D, Arc2D, ArcArc)
KALVIO_PAIR(Arc2D, Clothoid, ArcClothoid)
KALVIO_PAIR(Arc2D, Spiral2D, ArcSpiral)
KALVIO_PAIR(Arc2D, Parabola, ArcParabola)
KALVIO_PAIR(Clothoid, Clothoid, ClothoidClothoid)
KALVIO_PAIR(Clothoid, Parabola, ClothoidParabola)
KALVIO_PAIR(Spiral2D, Clothoid, SpiralClothoid)
KALVIO_PAIR(Spiral2D, Spiral2D, SpiralSpiral)
KALVIO_PAIR(Spiral2D, Parabola, SpiralParabola)
KALVIO_PAIR(Parabola, Parabola, ParabolaParabola)
KALVIO_PAIR(WholeLine, Arc2D, LineArc)
KALVIO_PAIR(WholeLine, Clothoid, LineClothoid)
KALVIO_PAIR(WholeLine, Spiral2D, LineSpiral)
KALVIO_PAIR(WholeLine, Parabola, LineParabola)
KALVIO_PAIR(WholeLine, Circle2D, LineCircle)
KALVIO_PAIR(Line2D, Circle2D, LineSegmentCircle)
KALVIO_PAIR(Arc2D, Circle2D, ArcCircle)
KALVIO_PAIR(Circle2D, Clothoid, CircleClothoid)
KALVIO_PAIR(Circle2D, Spiral2D, CircleSpiral)
KALVIO_PAIR(Circle2D, Parabola, CircleParabola)
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

bool Holds(const Points& points, const Point2D& point, double distance) {
    return std::any_of(points.begin(), points.end(), [&](const Point2D& p) { return p.Distance(point) <= distance; });
}

void ExpectSamePoints(const Points& a, const Points& b, double distance) {
    EXPECT_THAT(a, testing::UnorderedPointwise(AreNear(distance), b));
}

TEST(IntersectionCurvesTest, ResultsAndPointsOfCurvesThatTouchOrCoincide) {
    for (const Point2D& o : surveyOrigins) {
        const auto at = [&](double x, double y) { return o + Vec2D(x, y); };
        const auto line = [&](double x1, double y1, double x2, double y2) { return Line2D(at(x1, y1), at(x2, y2)); };
        const auto arc = [&](double x, double y, double cx, double cy, double sweep) {
            return Arc2D(at(x, y), at(cx, cy), Angle(sweep));
        };
        const Clothoid clothoid(0.0, 300.0, 150.0, o, kEast);
        Sample middle, last;
        clothoid.MakePointAndTangentAt(37.5, middle);
        clothoid.MakePointAndTangentAt(75.0, last);
        const auto spiral = [&](Spiral2D::Spiral2DType type, double from, double to, double length) {
            return Spiral2D(type, from, to, length, o, kEast);
        };
        using Type = Spiral2D::Spiral2DType;
        const auto parabola = [&](double x1, double x2) {
            Parabola curve(Point2D(x1, 0.01 * x1 * x1), Point2D(x2, 0.01 * x2 * x2), 0.01, 0.0, 0.0);
            return curve.Translate(o - Point2D());
        };
        const Clothoid part(600, 300, 150, middle.point, middle.tangent);
        const Arc2D joined(last.point, last.point + last.tangent.GetNormalVector(true) * 300, Angle(0.5));
        const Spiral2D closed = spiral(Type::Bloss, 20, 20, 40 * kPi);
        const double in = 4.9998, up = std::sqrt(12.5);
        const std::tuple<const char*, Curve, Curve, R, Points> rows[] = {
            {"the same segment", line(0, 0, 9, 3), line(0, 0, 9, 3), R::Coincident, {at(0, 0), at(9, 3)}},
            {"parts", line(0, 0, 9, 3), line(3, 1, 12, 4), R::Intersecting, {at(3, 1), at(9, 3)}},
            {"end to end", line(0, 0, 9, 3), line(9, 3, 12, 4), R::Intersecting, {at(9, 3)}},
            {"a gap", line(0, 0, 9, 0), line(9.001, 0, 12, 0), R::NoIntersection, {}},
            {"an end just short", line(0, 0, 9, 0), line(4, 5, 4, 5e-5), R::Intersecting, {at(4, 5e-5)}},
            {"an end too short", line(0, 0, 9, 0), line(4, 5, 4, 2e-4), R::NoIntersection, {}},
            {"a flat crossing", line(0, 0, 9, 0), line(0, -1e-3, 9, 2e-3), R::Intersecting, {at(3, 0)}},
            {"tiny, at an angle",
             line(0, 0, 2e-4, 0),
             line(1e-4, 2e-5, 3e-4, -4e-5),
             R::Intersecting,
             {at(1.667e-4, 0)}},
            {"no length", line(4, 4, 4, 4), line(0, 0, 9, 9), R::Degenerate, {}},
            {"not a number", line(4, 4, kNan, 4), line(0, 0, 9, 9), R::Degenerate, {}},
            {"a tangent", line(-9, 5, 9, 5), arc(5, 0, 0, 0, 3), R::Intersecting, {at(0, 5)}},
            {"just beside", line(-9, 5.00008, 9, 5.00008), arc(5, 0, 0, 0, 3), R::Intersecting, {at(0, 5.00004)}},
            {"beside", line(-9, 5.0002, 9, 5.0002), arc(5, 0, 0, 0, 3), R::NoIntersection, {}},
            {"just inside",
             line(-9, in, 9, in),
             arc(5, 0, 0, 0, 3),
             R::Intersecting,
             {at(-.04472, in), at(.04472, in)}},
            {"at the seam", line(0, 0, 9, 0), arc(5, 0, 0, 0, 2 * kPi), R::Intersecting, {at(5, 0)}},
            {"one circle", arc(5, 0, 0, 0, kPi / 2), arc(0, 5, 0, 0, -kPi / 4), R::Coincident, {at(up, up), at(0, 5)}},
            {"one full circle", arc(5, 0, 0, 0, 2 * kPi), arc(5, 0, 0, 0, 2 * kPi), R::Coincident, {at(5, 0)}},
            {"where a curve closes", line(0, -9, 0, 50), closed, R::Intersecting, {o, at(0, 40)}},
            {"joined arcs", arc(5, 0, 0, 0, 0.5 * kPi), arc(0, 5, 0, 0, 1), R::Intersecting, {at(0, 5)}},
            {"from outside", arc(5, 0, 0, 0, -6), arc(11, 2, 8, 2, 6), R::NoIntersection, {}},
            {"touching inside", arc(0, 5, 0, 0, -3), arc(3, 2, 3, 0, -3), R::Intersecting, {at(5, 0)}},
            {"the same clothoid", clothoid, clothoid, R::Coincident, {o, last.point}},
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

const IPolyline2DElement& ElementOf(const Curve& curve) {
    return std::visit([](const auto& known) -> const IPolyline2DElement& { return known; }, curve);
}

Sample SampleOf(const Curve& curve, double station) {
    Sample sample;
    EXPECT_TRUE(std::visit([&](const auto& known) { return known.MakePointAndTangentAt(station, sample); }, curve));
    return sample;
}

constexpr int kKinds = 5;

// A curve of a kind, some 100 long, that starts near the origin.
Curve RandomCurve(RandomNumbers& random, int kind, const Point2D& origin) {
    const Point2D start = origin + Vec2D(random(-30, 30), random(-30, 30));
    const Vec2D tangent = Point2D(Angle(random(-kPi, kPi)), 1.0) - Point2D();
    const double side = random(-1, 1) < 0.0 ? -1.0 : 1.0;
    const double radius = side * random(25, 300), length = random(20, 150);
    switch (kind) {
        case 0:
            return Line2D(start, tangent * length);
        case 1:
            return Arc2D(start, start + tangent * std::abs(radius),
                         Angle(random(0, 1) < 0.1 ? 2 * kPi : side * random(0.1, 6.2)));
        case 2: {
            const double parameter = std::sqrt(std::abs(radius) * std::min(length, 2.0 * std::abs(radius)));
            const double from = random(0, 1) < 0.5 ? 0.0 : radius * random(1.5, 5);
            const Clothoid grows(from, radius, parameter, start, tangent),
                falls(radius, from, parameter, start, tangent);
            return random(0, 1) < 0.5 ? grows : falls;
        }
        case 3: {
            const auto type = static_cast<Spiral2D::Spiral2DType>(static_cast<std::uint32_t>(random(0, 5)));
            return Spiral2D(type, random(-1, 1) < 0.0 ? 0.0 : random(-1, 1) * 200, radius, 1.5 * length, start,
                            tangent);
        }
        default: {
            const double a = random(-0.03, 0.03), middle = start.GetX() + random(-50, 50);
            const double from = start.GetX(), to = from + side * length;
            const auto height = [&](double x) { return a * (x - middle) * (x - middle); };
            return Parabola(Point2D(from, height(from)), Point2D(to, height(to)), a, -2 * a * middle,
                            a * middle * middle)
                .Translate(Vec2D(0, start.GetY()));
        }
    }
}

// The crossings of fine chords; none when the curves meet too flatly, or too near to an end, for chords to tell.
std::optional<Points> CrossingsOfChords(const Curve& a, const Curve& b) {
    constexpr int parts = 400;
    constexpr double flat = 0.05, nearEnd = 0.05;
    std::vector<Point2D> p, q;
    for (int i = 0; i <= parts; ++i) p.push_back(SampleOf(a, ElementOf(a).GetLength() * i / parts).point);
    for (int i = 0; i <= parts; ++i) q.push_back(SampleOf(b, ElementOf(b).GetLength() * i / parts).point);
    Points crossings;
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
    for (const Point2D& end : {p.front(), p.back()}) {
        if (ElementOf(b).GetNearestPoint(end, kTolerances).Distance(end) < nearEnd) return std::nullopt;
    }
    for (const Point2D& end : {q.front(), q.back()}) {
        if (ElementOf(a).GetNearestPoint(end, kTolerances).Distance(end) < nearEnd) return std::nullopt;
    }
    return crossings;
}

// What runs within the tolerance beside them, and how far away the curves begin, leaves the crossings as they are.
TEST(IntersectionCurvesTest, NeitherRunsAlongEachOtherNorDistanceCostACrossing) {
    const auto transition = [](double from, double to, double length, const Vec2D& shift) {
        return Spiral2D(Spiral2D::Spiral2DType::Clothoid, from, to, length, Point2D() + shift, kEast);
    };
    const auto arc = [](double x, double r, double start, double sweep) {
        return Arc2D(Point2D(x + r * std::cos(start), r * std::sin(start)), Point2D(x, 0), Angle(sweep));
    };
    const auto bent = transition(-300, 300, 300, Vec2D()), entry = transition(0, 50, 400, Vec2D());
    const Vec2D along = SampleOf(bent, 30).tangent * 0.02;
    using P = Point2D;
    const double degree = kPi / 180, far = 1e6, beside = std::sqrt(1e4 - 0.005 * 0.005);
    const Arc2D one = arc(0, 100, 87 * degree, 213 * degree), other = arc(0.01, 100, 240 * degree, 213 * degree);
    const Arc2D ring = arc(0, 5, 0, 2 * kPi);
    const std::tuple<const char*, Curve, Curve, Points, double> rows[] = {
        {"equal",
         bent,
         transition(-300, 300, 300, along),
         {SampleOf(bent, 30.01).point, SampleOf(bent, 270.01).point},
         1e-6},
        {"equal, eastwards",
         entry,
         transition(0, 50, 400, kEast * 0.05),
         {P(0.05, 0), P(132.598463, 178.966288)},
         1e-6},
        {"beside a stretch",
         one,
         other,
         {one.GetStart(), arc(0.01, 100, 93 * degree, 1).GetStart(), P(0.005, -beside)},
         1e-9},
        {"a long segment", Line2D(P(-far, 3), P(9, 3)), ring, {P(-4, 3), P(4, 3)}, 1e-9},
        {"a large circle", arc(-far, far, -1, 2), ring, {P(-12.5e-6, -5), P(-12.5e-6, 5)}, 1e-9},
        {"an arc that all but closes", arc(0, 10, 0, 2 * kPi - 5e-5), arc(15, 5, 1, 6), {P(10, 0)}, 1e-9},
    };
    for (const auto& [why, a, b, expected, within] : rows) {
        SCOPED_TRACE(why);
        Points points, swapped;
        Meet(a, b, points, Tolerances(1e-3, 1e-10));
        Meet(b, a, swapped, Tolerances(1e-3, 1e-10));
        ExpectSamePoints(points, expected, within);
        ExpectSamePoints(swapped, expected, within);
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
        const Curve movedA = RandomCurve(again, kindA, surveyOrigins[1]),
                    movedB = RandomCurve(again, kindB, surveyOrigins[1]);
        if (!(ElementOf(a).IsPointOnGeometry(ElementOf(a).GetStart(), kTolerances) &&
              ElementOf(b).IsPointOnGeometry(ElementOf(b).GetStart(), kTolerances)))
            continue;
        Points points;
        const R result = Meet(a, b, points, kTolerances);
        EXPECT_EQ(result, points.empty() ? R::NoIntersection : R::Intersecting);
        double last = 0.0;
        const bool isInOrder = kindA <= kindB || (kindA == 3 && kindB == 2);
        for (const Point2D& p : points) {
            double station = 0.0;
            for (const Curve* curve : {&a, &b})
                EXPECT_LE(ElementOf(*curve).GetNearestPoint(p, kTolerances).Distance(p), 1e-4);
            EXPECT_TRUE(ElementOf(isInOrder ? a : b).GetLengthFromStartPoint(p, station, 2e-4));
            EXPECT_GE(station, last - 2e-4);
            last = station;
        }
        const std::optional<Points> crossings = CrossingsOfChords(a, b);
        if (!crossings) continue;
        ++compared;
        found += static_cast<int>(points.size());
        EXPECT_GE(points.size(), crossings->size());
        for (const Point2D& p : *crossings) EXPECT_TRUE(Holds(points, p, 0.1));
        if (points.size() != crossings->size()) continue;  // a tangent point, which chords pass over

        Points swapped, reversed, moved;
        Meet(b, a, swapped, kTolerances);
        ExpectSamePoints(swapped, points, 1e-9);
        for (Curve* curve : {&a, &b}) std::visit([](auto& known) { known.Reverse(); }, *curve);
        Meet(a, b, reversed, kTolerances);
        ExpectSamePoints(reversed, points, 1e-8);
        Meet(movedA, movedB, moved, kTolerances);
        for (Point2D& p : moved) p -= shift;
        ExpectSamePoints(moved, points, 1e-6);
    }
    EXPECT_GT(compared, 400);
    EXPECT_GT(found, 100);
}

TEST(IntersectionCurvesTest, WholeLinesAndCirclesMeetCurvesLikeLongSegmentsAndFullArcs) {
    RandomNumbers random(20260804);
    for (int i = 0; i < 40 * kKinds; ++i) {
        const Point2D o = surveyOrigins[i % 2] + Vec2D(random(-40, 40), random(-40, 40));
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
        const double length = ElementOf(curve).GetLength();
        const Sample touch = SampleOf(curve, random(0.1, 0.9) * length);
        const double side = random(-1, 1) < 0.0 ? -1.0 : 1.0;
        const Vec2D out = touch.tangent.GetNormalVector(true) * side;
        const std::tuple<double, std::size_t> rows[] = {{2e-4, 0}, {5e-5, 1}, {0.0, 1}, {-1e-6, 2}, {-1e-3, 2}};
        for (const auto& [lift, number] : rows) {
            const Point2D center = touch.point + out * (radius + lift);
            const Arc2D circle(center + out * radius, center, Angle(2 * kPi));
            Points points, near;
            Meet(circle, curve, points, kTolerances);
            for (const Point2D& p : points) {
                if (p.Distance(touch.point) < 0.2) near.push_back(p);
                EXPECT_NEAR(p.Distance(center), radius, 1e-4);
            }
            ASSERT_EQ(near.size(), number) << lift;
            if (number == 1) {
                EXPECT_THAT(near[0], IsNear(touch.point, 1e-4));
            }
            if (number < 2) continue;
            // Half the chord over the sunken cap, between a curve as flat as a line and one bent at radius 16.
            const double half = std::sqrt(-2.0 * radius * lift), apart = near[0].Distance(near[1]);
            EXPECT_GT(apart, 2 * half * 0.94);
            EXPECT_LT(apart, 2 * half * 1.07);
        }
    }
}

TEST(IntersectionCurvesTest, InputWithoutMeaningEndsWithoutPointsThatAreNoNumbers) {
    RandomNumbers random(20260803);
    const double values[] = {0.0, 1e-300, 1e-5, 1.0, -3.0, 1e8, 1e155, 1e300, kInfinity, -kInfinity, kNan};
    const auto any = [&] { return values[random() % std::size(values)]; };
    for (int i = 0; i < 4000; ++i) {
        const Point2D p(any(), any()), q(any(), any());
        const Vec2D v(any(), any());
        const auto type = static_cast<Spiral2D::Spiral2DType>(random() % 7);
        const Curve curves[] = {Line2D(p, q),
                                Arc2D(p, q, Angle(random(-7, 7))),
                                Clothoid(any(), any(), any(), p, v),
                                Spiral2D(type, any(), any(), any(), p, v),
                                Parabola(p, q, any(), any(), any()),
                                RandomCurve(random, i % kKinds, Point2D())};
        Points points;
        const Tolerances tolerances(random() % 2 == 0 ? 1e-4 : any(), 1e-10);
        Meet(curves[random() % 6], curves[random() % 6], points, tolerances);
        Intersection::LineCircle(Line2D(p, v), Circle2D(q, any()), points, tolerances);
        for (const Point2D& point : points) EXPECT_TRUE(std::isfinite(point.GetX()) && std::isfinite(point.GetY()));
    }
}

}  // namespace
}  // namespace Kalvio::Math
