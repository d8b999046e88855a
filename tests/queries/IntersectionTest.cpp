#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Intersection.h"
#include "support/Near.h"
#include "support/Origins.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(IntersectionTest, LineLine) {
    using R = IntersectionResult;
    struct Row {
        const char* why;
        Line2D a, b;
        R result;
        Point2D p;
    };
    const Row rows[] = {
        {"cross", {Point2D(0, 0), Point2D(4, 4)}, {Point2D(0, 4), Point2D(4, 0)}, R::Intersecting, Point2D(2, 2)},
        {"cross beyond both",
         {Point2D(0, 0), Point2D(1, 0)},
         {Point2D(5, 3), Point2D(5, 1)},
         R::Intersecting,
         Point2D(5, 0)},
        {"the same line", {Point2D(0, 0), Point2D(4, 2)}, {Point2D(8, 4), Point2D(6, 3)}, R::Coincident, Point2D(7, 7)},
        {"parallel", {Point2D(0, 0), Point2D(4, 2)}, {Point2D(0, 1), Point2D(4, 3)}, R::NoIntersection, Point2D(7, 7)},
        {"parallel within the user tolerance",
         {Point2D(0, 0), Point2D(4, 0)},
         {Point2D(0, 0.125), Point2D(4, 0.125)},
         R::Coincident,
         Point2D(7, 7)},
        {"as short as the user tolerance",
         {Point2D(0, 0), Point2D(0.125, 0)},
         {Point2D(0, 1), Point2D(0, 2)},
         R::Degenerate,
         Point2D(7, 7)},
        {"a short one at a slight angle to a long one is not the same line",
         {Point2D(0, 0), Point2D(0.25, 2e-11)},
         {Point2D(-8, 0), Point2D(8, 0)},
         R::Intersecting,
         Point2D(0, 0)},
        {"NaN", {Point2D(0, 0), Point2D(4, kNan)}, {Point2D(0, 4), Point2D(4, 0)}, R::NoIntersection, Point2D(7, 7)},
    };
    const Tolerances tolerances(0.125, 1e-10);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        for (const bool swapped : {false, true}) {
            const Line2D& a = swapped ? row.b : row.a;
            const Line2D& b = swapped ? row.a : row.b;
            Point2D p(7, 7);
            EXPECT_EQ(Intersection::LineLine(a, b, p, tolerances), row.result);
            EXPECT_THAT(p, IsNear(row.p, 1e-9));
            EXPECT_EQ(Intersection::LineLine(a.GetStart(), a.GetEnd(), b.GetStart(), b.GetEnd(), p, tolerances),
                      row.result);
        }
    }
    const Vec2D shift = surveyOrigins[1] - Point2D();
    Point2D p;
    EXPECT_EQ(Intersection::LineLine(Line2D(Point2D(0, 0) + shift, Point2D(4, 4) + shift),
                                     Line2D(Point2D(0, 4) + shift, Point2D(4, 0) + shift), p, tolerances),
              R::Intersecting);
    EXPECT_THAT(p, IsNear(Point2D(2, 2) + shift, 0.0));
}

TEST(IntersectionTest, LineStringLine) {
    struct Row {
        const char* why;
        LineString2D string;
        std::vector<Point2D> points;
    };
    const Row rows[] = {
        {"nothing", {}, {}},
        {"a point on it", {Point2D(3, 0.25)}, {Point2D(3, 0.25)}},
        {"through", {Point2D(9, -2), Point2D(9, 2), Point2D(-7, -2)}, {Point2D(9, 0), Point2D(1, 0)}},
        {"a vertex on it once", {Point2D(1, -1), Point2D(2, 0), Point2D(3, 1)}, {Point2D(2, 0)}},
        {"a vertex that touches", {Point2D(1, 1), Point2D(2, 0), Point2D(3, 1)}, {Point2D(2, 0)}},
        {"a vertex just across", {Point2D(1, 1), Point2D(2, -0.125), Point2D(3, 1)}, {Point2D(2, -0.125)}},
        {"along it",
         {Point2D(1, 1), Point2D(2, 0), Point2D(4, 0), Point2D(5, 0), Point2D(6, -1)},
         {Point2D(2, 0), Point2D(4, 0), Point2D(5, 0)}},
        {"NaN", {Point2D(1, -1), Point2D(2, kNan), Point2D(3, 1)}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<Point2D> points{Point2D(7, 7)};
        const Line2D line(Point2D(0, 0), Point2D(1, 0));
        EXPECT_EQ(Intersection::LineStringLine(row.string, line, points, 0.25), static_cast<int>(row.points.size()));
        ASSERT_EQ(points.size(), row.points.size() + 1);
        for (std::size_t i = 0; i < row.points.size(); ++i) {
            EXPECT_THAT(points[i + 1], IsNear(row.points[i], 1e-15));
        }
        EXPECT_EQ(Intersection::LineStringLine(row.string, Line2D(), points, 0.25), 0) << "no line";
    }
}

}  // namespace
}  // namespace Kalvio::Math
