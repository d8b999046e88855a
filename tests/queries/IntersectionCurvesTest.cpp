#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Testing.h"

#include <variant>

namespace Kalvio::Math {
namespace {

using Sample = IPolyline2DElement::PolylineElementPoint;
using Points = std::vector<Point2D>;
using Result = IntersectionResult;
using Curve = std::variant<Line2D, Arc2D, Clothoid, Spiral2D, Parabola>;

#define KALVIO_PAIR(First, Second, Function)                                                      \
    Result MeetPair(const First& a, const Second& b, Points& out, const Tolerances& tolerances) { \
        Points counted;                                                                           \
        const Result result = Intersection::Function(a, b, out, tolerances);                      \
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
#undef KALVIO_PAIR

Result Meet(const Curve& first, const Curve& second, Points& out, const Tolerances& tolerances) {
    return std::visit(
        [&](const auto& a, const auto& b) {
            if constexpr (requires { MeetPair(a, b, out, tolerances); }) {
                return MeetPair(a, b, out, tolerances);
            } else {
                return MeetPair(b, a, out, tolerances);
            }
        },
        first, second);
}

const Vec2D kEast(1, 0);

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
        const Vec2D left = last.tangent.GetNormalVector(true);
        const std::tuple<const char*, Curve, Curve, Result, Points> rows[] = {
            {"the same segment", line(0, 0, 9, 3), line(0, 0, 9, 3), Result::Coincident, {at(0, 0), at(9, 3)}},
            {"parts", line(0, 0, 9, 3), line(3, 1, 12, 4), Result::Intersecting, {at(3, 1), at(9, 3)}},
            {"end to end", line(0, 0, 9, 3), line(9, 3, 12, 4), Result::Intersecting, {at(9, 3)}},
            {"a gap", line(0, 0, 9, 0), line(9.001, 0, 12, 0), Result::NoIntersection, {}},
            {"an end just short", line(0, 0, 9, 0), line(4, 5, 4, 5e-5), Result::Intersecting, {at(4, 5e-5)}},
            {"an end too short", line(0, 0, 9, 0), line(4, 5, 4, 2e-4), Result::NoIntersection, {}},
            {"a flat crossing", line(0, 0, 9, 0), line(0, -1e-3, 9, 2e-3), Result::Intersecting, {at(3, 0)}},
            {"tiny, at an angle",
             line(0, 0, 2e-4, 0),
             line(1e-4, 2e-5, 3e-4, -4e-5),
             Result::Intersecting,
             {at(1.667e-4, 0)}},
            {"no length", line(4, 4, 4, 4), line(0, 0, 9, 9), Result::Degenerate, {}},
            {"not a number", line(4, 4, kNan, 4), line(0, 0, 9, 9), Result::Degenerate, {}},
            {"a tangent", line(-9, 5, 9, 5), arc(5, 0, 0, 0, 3), Result::Intersecting, {at(0, 5)}},
            {"just beside", line(-9, 5.00008, 9, 5.00008), arc(5, 0, 0, 0, 3), Result::Intersecting, {at(0, 5.00004)}},
            {"beside", line(-9, 5.0002, 9, 5.0002), arc(5, 0, 0, 0, 3), Result::NoIntersection, {}},
            {"just inside",
             line(-9, 4.9998, 9, 4.9998),
             arc(5, 0, 0, 0, 3),
             Result::Intersecting,
             {at(-0.04472, 4.9998), at(0.04472, 4.9998)}},
            {"at the seam", line(0, 0, 9, 0), arc(5, 0, 0, 0, 2 * kPi), Result::Intersecting, {at(5, 0)}},
            {"one circle",
             arc(5, 0, 0, 0, 0.5 * kPi),
             arc(0, 5, 0, 0, -0.25 * kPi),
             Result::Coincident,
             {at(std::sqrt(12.5), std::sqrt(12.5)), at(0, 5)}},
            {"joined arcs", arc(5, 0, 0, 0, 0.5 * kPi), arc(0, 5, 0, 0, 1), Result::Intersecting, {at(0, 5)}},
            {"from outside", arc(5, 0, 0, 0, -6), arc(11, 2, 8, 2, 6), Result::NoIntersection, {}},
            {"touching inside", arc(0, 5, 0, 0, -3), arc(3, 2, 3, 0, -3), Result::Intersecting, {at(5, 0)}},
            {"the same clothoid", clothoid, clothoid, Result::Coincident, {o, last.point}},
            {"a part of it",
             clothoid,
             Clothoid(600, 300, 150, middle.point, middle.tangent),
             Result::Coincident,
             {middle.point, last.point}},
            {"as a spiral", spiral(Type::Clothoid, 0, 300, 75), clothoid, Result::Coincident, {o, last.point}},
            {"its first tangent", line(-50, 0, 50, 0), clothoid, Result::Intersecting, {o}},
            {"the arc it joins",
             Arc2D(last.point, last.point + left * 300, Angle(0.5)),
             clothoid,
             Result::Intersecting,
             {last.point}},
            {"an inflection", line(0, 0, 1, 0), spiral(Type::Bloss, -300, 300, 60), Result::Intersecting, {o}},
            {"parts of a parabola", parabola(-10, 40), parabola(60, 20), Result::Coincident, {at(20, 4), at(40, 16)}},
            {"its summit", line(-10, 0, 10, 0), parabola(-10, 40), Result::Intersecting, {o}},
        };
        for (const auto& [why, a, b, result, expected] : rows) {
            for (const bool isSwapped : {false, true}) {
                Points points;
                EXPECT_EQ(isSwapped ? Meet(b, a, points, kTolerances) : Meet(a, b, points, kTolerances), result) << why;
                ASSERT_EQ(points.size(), expected.size()) << why;
                for (std::size_t i = 0; i < points.size(); ++i) {
                    const Point2D& p = points[i];
                    const bool isKnown = std::any_of(expected.begin(), expected.end(),
                                                     [&](const Point2D& q) { return q.Distance(p) < 1e-4; });
                    EXPECT_TRUE(isKnown) << why;
                }
            }
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
