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
#include <tuple>

namespace Kalvio::Math {
namespace {

TEST(DistanceTest, PointToLineSegmentHasTheSideOfTheLineAndTheNearestPointOfTheSegment) {
    const double tolerance = 0.25;
    const std::tuple<const char*, Point2D, double, bool, Point2D> rows[] = {
        {"left", Point2D(1, 1), -1.0, true, Point2D(1, 0)},
        {"right", Point2D(1, -1), 1.0, true, Point2D(1, 0)},
        {"beyond the end, left", Point2D(3, 1), -std::sqrt(2.0), false, Point2D(2, 0)},
        {"beyond the start, right", Point2D(-1, -1), std::sqrt(2.0), false, Point2D(0, 0)},
        {"exactly the tolerance beyond the end", Point2D(2.25, -1), 1.0, true, Point2D(2.25, 0)},
        {"beyond the end by more", Point2D(2.375, 0), 0.375, false, Point2D(2, 0)},
    };
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - Point2D()}) {
        const Line2D line(Point2D(0, 0) + shift, Point2D(2, 0) + shift);
        const Line3D level(Point3D(line.GetStart(), 1.0), Point3D(line.GetEnd(), 1.0));
        for (const auto& [why, place, distance, isFoot, nearest] : rows) {
            SCOPED_TRACE(why);
            const Point2D p = place + shift;
            EXPECT_NEAR(Distance::PointToLineSegment(line, p, tolerance), distance, 1e-12);
            EXPECT_NEAR(Distance::PointToLineSegment(level, Point3D(p, 5.0), tolerance), std::hypot(distance, 4.0),
                        1e-12);
            EXPECT_THAT(Projection::NearestPointOnLineSegment(p, line, tolerance), IsNear(nearest + shift, 1e-9));
            EXPECT_THAT(Projection::NearestPointOnLineSegment(Point3D(p, 5.0), level, tolerance),
                        IsNear(Point3D(nearest + shift, 1.0), 1e-9));
            Point2D foot(7, 7), always;
            EXPECT_EQ(Projection::NormalPointOnLineSegment(p, line, foot, tolerance), isFoot);
            EXPECT_EQ(Projection::NormalPointOnLineSegment2(p, line, always, tolerance), isFoot);
            EXPECT_THAT(always, IsNear(Point2D(place.GetX(), 0) + shift, 1e-9));
            EXPECT_THAT(foot, IsNear(isFoot ? always : Point2D(7, 7), 1e-9));
        }
    }
    EXPECT_EQ(Distance::PointToLineSegment(Line2D(Point2D(1, 1), Vec2D()), Point2D(4, 5), 1.0), 5.0);
}

TEST(DistanceTest, LineStringsInSpaceAndWithoutSegments) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Distance::PointToLineString(LineString2D(), Point2D(1, 1), 1e-4), std::numeric_limits<double>::max());
    EXPECT_EQ(Distance::PointToLineString(LineString2D{Point2D(4, 5)}, Point2D(1, 1), 1e-4), 5.0);
    const LineString2D remote{Point2D(-inf, 5), Point2D(inf, inf)};
    EXPECT_EQ(Projection::NearestPointOnLineString(Point2D(1, 1), remote, 1e-4).distance, 0.0) << "a zero record";
    unsigned int segment = 7;
    const LineString3D rising{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(1, 0, 4)};
    const Point3D nearest = Projection::NearestPointOnLineString(Point3D(2, 0, 3), rising, segment, 1e-4);
    EXPECT_THAT(nearest, IsNear(Point3D(1, 0, 3), 1e-15));
    EXPECT_EQ(segment, 1U);
    EXPECT_EQ(Distance::PointToLineString(rising, Point3D(1, 3, 8), 1e-4), 5.0);
}

}  // namespace
}  // namespace Kalvio::Math
