#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Near.h"
#include "support/Origins.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(IntersectionTest, LineLine) {
    using R = IntersectionResult;
    using P = Point2D;
    const std::tuple<const char*, Line2D, Line2D, R, Point2D> rows[] = {
        {"cross", {P(0, 0), P(4, 4)}, {P(0, 4), P(4, 0)}, R::Intersecting, P(2, 2)},
        {"beyond both", {P(0, 0), P(1, 0)}, {P(5, 3), P(5, 1)}, R::Intersecting, P(5, 0)},
        {"the same line", {P(0, 0), P(4, 2)}, {P(8, 4), P(6, 3)}, R::Coincident, P(7, 7)},
        {"parallel", {P(0, 0), P(4, 2)}, {P(0, 1), P(4, 3)}, R::NoIntersection, P(7, 7)},
        {"parallel within tol", {P(0, 0), P(4, 0)}, {P(0, 0.125), P(4, 0.125)}, R::Coincident, P(7, 7)},
        {"as short as tol", {P(0, 0), P(0.125, 0)}, {P(0, 1), P(0, 2)}, R::Degenerate, P(7, 7)},
        {"short, at a slight angle", {P(0, 0), P(0.25, 2e-11)}, {P(-8, 0), P(8, 0)}, R::Intersecting, P(0, 0)},
        {"NaN", {P(0, 0), P(4, kNan)}, {P(0, 4), P(4, 0)}, R::NoIntersection, P(7, 7)},
    };
    const Tolerances tolerances(0.125, 1e-10);
    for (const auto& [why, a, b, result, expected] : rows) {
        Point2D p(7, 7), q(7, 7);
        EXPECT_EQ(Intersection::LineLine(a, b, p, tolerances), result) << why;
        EXPECT_EQ(Intersection::LineLine(b.GetStart(), b.GetEnd(), a.GetStart(), a.GetEnd(), q, tolerances), result);
        EXPECT_THAT(p, IsNear(expected, 1e-9)) << why;
        EXPECT_THAT(q, IsNear(expected, 1e-9)) << why;
    }
}

TEST(IntersectionTest, LineStringLine) {
    using P = Point2D;
    const std::tuple<const char*, LineString2D, std::vector<Point2D>> rows[] = {
        {"nothing", {}, {}},
        {"a point on it", {P(3, 0.25)}, {P(3, 0.25)}},
        {"through", {P(9, -2), P(9, 2), P(-7, -2)}, {P(9, 0), P(1, 0)}},
        {"a vertex on it once", {P(1, -1), P(2, 0), P(3, 1)}, {P(2, 0)}},
        {"a vertex that touches, just across", {P(1, 1), P(2, -0.125), P(3, 1)}, {P(2, -0.125)}},
        {"along it", {P(1, 1), P(2, 0), P(4, 0), P(6, -1)}, {P(2, 0), P(4, 0)}},
        {"NaN", {P(1, -1), P(2, kNan), P(3, 1)}, {}},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - Point2D()}) {
        for (const auto& [why, string, expected] : rows) {
            std::vector<Point2D> points{Point2D(7, 7)};
            const Line2D line(Point2D() + shift, Point2D(1, 0) + shift);
            const int count = static_cast<int>(expected.size());
            EXPECT_EQ(Intersection::LineStringLine(string.Translate(shift), line, points, 0.25), count) << why;
            ASSERT_EQ(points.size(), expected.size() + 1) << why;
            for (std::size_t i = 0; i < expected.size(); ++i) {
                EXPECT_THAT(points[i + 1], IsNear(expected[i] + shift, 1e-9)) << why;
            }
            EXPECT_EQ(Intersection::LineStringLine(string, Line2D(), points, 0.25), 0) << "no line";
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
