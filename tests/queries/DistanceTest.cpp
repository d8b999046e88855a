#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"
#include "support/Near.h"
#include "support/Origins.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Kalvio::Math {
namespace {

TEST(DistanceTest, PointToLineSegmentHasTheSideOfTheLineAndTheNearestPointOfTheSegment) {
    struct Row {
        const char* why;
        Point2D p;
        double distance;
        bool isFoot;
        Point2D nearest;
    };
    const double tolerance = 0.25;
    const Row rows[] = {
        {"left", Point2D(1, 1), -1.0, true, Point2D(1, 0)},
        {"right", Point2D(1, -1), 1.0, true, Point2D(1, 0)},
        {"on it", Point2D(1, 0), 0.0, true, Point2D(1, 0)},
        {"beyond the end, left", Point2D(3, 1), -std::sqrt(2.0), false, Point2D(2, 0)},
        {"beyond the start, right", Point2D(-1, -1), std::sqrt(2.0), false, Point2D(0, 0)},
        {"exactly the tolerance beyond the end", Point2D(2.25, -1), 1.0, true, Point2D(2.25, 0)},
        {"beyond the end by more", Point2D(2.375, 0), 0.375, false, Point2D(2, 0)},
    };
    for (const Point2D& origin : surveyOrigins) {
        const Vec2D shift = origin - Point2D();
        const Line2D line(Point2D(0, 0) + shift, Point2D(2, 0) + shift);
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            const Point2D p = row.p + shift;
            EXPECT_NEAR(Distance::PointToLineSegment(line, p, tolerance), row.distance, 1e-12);
            EXPECT_THAT(Projection::NearestPointOnLineSegment(p, line, tolerance), IsNear(row.nearest + shift, 1e-9));
            Point2D foot(7, 7), always;
            EXPECT_EQ(Projection::NormalPointOnLineSegment(p, line, foot, tolerance), row.isFoot);
            EXPECT_EQ(Projection::NormalPointOnLineSegment2(p, line, always, tolerance), row.isFoot);
            EXPECT_THAT(always, IsNear(Point2D(row.p.GetX(), 0) + shift, 1e-9));
            EXPECT_THAT(foot, IsNear(row.isFoot ? always : Point2D(7, 7), 1e-9));
            const Point3D up(p, 5.0);
            const Line3D level(Point3D(line.GetStart(), 1.0), Point3D(line.GetEnd(), 1.0));
            EXPECT_NEAR(Distance::PointToLineSegment(level, up, tolerance), std::hypot(row.distance, 4.0), 1e-12);
            EXPECT_THAT(Projection::NearestPointOnLineSegment(up, level, tolerance),
                        IsNear(Point3D(row.nearest + shift, 1.0), 1e-9));
        }
    }
    Point2D foot(7, 7);
    const Line2D point(Point2D(1, 1), Point2D(1, 1));
    EXPECT_FALSE(Projection::NormalPointOnLineSegment(Point2D(1, 1), point, foot, 1.0));
    EXPECT_THAT(foot, IsNear(Point2D(7, 7), 0.0));
    EXPECT_EQ(Distance::PointToLineSegment(point, Point2D(4, 5), 1.0), 5.0);
}

TEST(DistanceTest, LineStringsWithoutSegments) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Distance::PointToLineString(LineString2D(), Point2D(1, 1), 1e-4), std::numeric_limits<double>::max());
    EXPECT_EQ(Distance::PointToLineString(LineString2D{Point2D(4, 5)}, Point2D(1, 1), 1e-4), 5.0);
    EXPECT_EQ(Projection::NearestPointOnLineString(Point2D(1, 1), LineString2D{Point2D(4, 5)}, 1e-4).distance, 5.0);
    const LineString2D remote{Point2D(-inf, 5), Point2D(inf, inf)};
    EXPECT_EQ(Projection::NearestPointOnLineString(Point2D(1, 1), remote, 1e-4).distance, 0.0) << "a zero record";
    EXPECT_THAT(Projection::NearestPoint(Point2D(1, 1), LineString2D(), 1e-4), IsNear(Point2D(), 0.0));
    unsigned int segment = 7;
    const LineString3D rising{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(1, 0, 4)};
    EXPECT_THAT(Projection::NearestPointOnLineString(Point3D(2, 0, 3), rising, segment, 1e-4),
                IsNear(Point3D(1, 0, 3), 1e-15));
    EXPECT_EQ(segment, 1U);
    EXPECT_THAT(Projection::NearestPoint(Point3D(-2, 0, 0), rising, 1e-4), IsNear(Point3D(0, 0, 0), 0.0));
    EXPECT_EQ(Distance::PointToLineString(rising, Point3D(1, 3, 8), 1e-4), 5.0);
}

}  // namespace
}  // namespace Kalvio::Math
