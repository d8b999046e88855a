#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"
#include "support/ElementChecks.h"
#include "support/Rings.h"

namespace Kalvio::Math {
namespace {

TEST(ProjectionTest, LineStringsAndPolygons) {
    using P = Point2D;
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        const LineString2D bend{P(0, 0) + shift, P(4, 0) + shift, P(4, 4) + shift, P(8, 4) + shift};
        P foot(7, 7);
        double station = 7.0;
        EXPECT_EQ(Projection::NormalPointOnLineString(P(5, 1), LineString2D{P(1, 1)}, foot, station, 1e-4), 0);
        EXPECT_EQ(foot.GetX() + station, 14.0) << "untouched";
        EXPECT_EQ(Projection::NormalPointOnLineString(P(5, -1) + shift, bend, foot, station, 1e-4), 1);
        EXPECT_THAT(foot, IsNear(P(4, 0) + shift, 0.0)) << "the vertex is nearest";
        EXPECT_EQ(station, 4.0);
        const LineString2D twice{P(0, 0.005) + shift, P(4, 0.005) + shift, P(4, 0) + shift, P(0, 0) + shift};
        EXPECT_EQ(Projection::NormalPointOnLineString(P(1, -1) + shift, twice, foot, station, 1e-4), 1);
        EXPECT_NEAR(station, 1.0, 2e-5) << "the first passage within 0.01";

        std::vector<GeometryDistancePair<P>> found(1);
        EXPECT_EQ(Projection::NearestPointsOnLineString(P(5, 1) + shift, bend, found, 1e-4), 4U);
        EXPECT_THAT(found[1].geometry, IsNear(P(4, 0) + shift, 0.0));
        EXPECT_EQ(found[1].distance, -std::sqrt(2.0)) << "left of the first segment";
        EXPECT_EQ(found[2].index, 1U);
        EXPECT_EQ(found[3].index, 2U);
        EXPECT_EQ(found[3].distance, 3.0);
        EXPECT_EQ(Projection::NearestPointsOnLineString(P(2, 2) + shift, bend, found, 1e-4), 6U) << "-2 comes twice";

        const Polygon2D ring = MakePolygon("0 0 8 0 8 8 0 8 / 2 2 6 2 6 6 2 6 2 2").Translate(shift);
        found.clear();
        EXPECT_EQ(Projection::NearestPointsOnPolygon(P(3, 5.5) + shift, ring, found, 1e-4), 7U);
        const std::uint64_t order[] = {0, 1, 4, 3, 2, 7, 6};
        for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(found[i].index, order[i]) << "5 is as far as 3";
        EXPECT_THAT(Projection::NearestPointOnPolygon(P(1, 4) + shift, ring, 1e-4), IsNear(P(0, 4) + shift, 1e-9));
        EXPECT_THAT(Projection::NearestPointOnPolygonWithHoles(P(1, 4) + shift, ring, 1e-4),
                    IsNear(P(0, 4) + shift, 1e-9))
            << "the outer ring first";
        EXPECT_THAT(Projection::NearestPointOnPolygonWithHoles(P(1.5, 4) + shift, ring, 1e-4),
                    IsNear(P(2, 4) + shift, 1e-9));
    }
}

TEST(ProjectionTest, PlanesAndAxes) {
    RandomNumbers random(21);
    const auto vector = [&](double size) {
        return Vec3D(random(-size, size), random(-size, size), random(-size, size));
    };
    for (int round = 0; round < 200; ++round) {
        const Point3D origin(surveyOrigins[round % 2], 100.0);
        const Vec3D normal = vector(1.0), direction = vector(5.0);
        const Plane3D plane(origin + vector(50.0), normal);
        const Point3D p = origin + vector(50.0);
        Point3D projected;
        ASSERT_TRUE(Projection::PointOnPlane(p, direction, plane, projected));
        Vec3D along = direction;
        const double steep = std::abs(plane.GetNormal().DotProduct(along.Normalize()));
        EXPECT_LT(Distance::PointToPlane(projected, plane), 1e-8 / steep);
        EXPECT_LT((projected - p).CrossProduct(along).Length(), 1e-8 / steep);
        Polygon3D polygon{p, projected, origin};
        polygon.AppendHoleBoundary(LineString3D{p});
        const Polygon3D shadow = Projection::PolygonOnPlane(polygon, direction, plane);
        EXPECT_THAT(shadow.GetPoint(0), IsNear(projected, 0.0));
        EXPECT_THAT(shadow.GetHoleBoundary(0).GetPoint(0), IsNear(projected, 0.0));
        EXPECT_THAT(Projection::NormalPolygonOnPlane(polygon, plane).GetPoint(2),
                    IsNear(plane.GetProjection(origin), 1e-8));
        EXPECT_FALSE(Projection::PointOnPlane(p, normal.CrossProduct(direction), plane, projected));
        EXPECT_EQ(Projection::PolygonOnPlane(polygon, Vec3D(), plane).GetSize(), 0U);
        EXPECT_EQ(Projection::NormalPolygonOnPlane(polygon, Plane3D()).GetSize(), 0U);

        const Vec2D turned(Angle(random(0.0, 6.0)).GetRadians(), 1.0), axis(random(-3.0, 3.0), 2.0);
        const OrientedBoundingBox2D box(p.GetPoint2D(), Vec2D(random(0.0, 9.0), 4.0), turned,
                                        turned.GetNormalVector(true));
        double low = 7.0, high = 7.0;
        EXPECT_FALSE(Projection::OrientedBoundingBoxOnAxis(box, Vec2D(), Point2D(), low, high));
        EXPECT_EQ(low, 7.0);
        ASSERT_TRUE(Projection::OrientedBoundingBoxOnAxis(box, axis, origin.GetPoint2D(), low, high));
        std::vector<Point2D> corners;
        box.GetCornerPoints(corners);
        std::vector<double> places;
        for (const Point2D& corner : corners) {
            places.push_back((corner - origin.GetPoint2D()).DotProduct(axis) / axis.Length());
        }
        EXPECT_NEAR(low, *std::min_element(places.begin(), places.end()), 4e-9);
        EXPECT_NEAR(high, *std::max_element(places.begin(), places.end()), 4e-9);
    }
}

}  // namespace
}  // namespace Kalvio::Math
