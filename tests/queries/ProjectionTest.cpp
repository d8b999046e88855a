#include "queries/QueryNames.h"

namespace Kalvio::Math {
namespace {

TEST(ProjectionTest, LineStringsAndPolygons) {
    for (const Vec2D& shift : {Vec2D(), surveyOrigins[1] - P()}) {
        const LineString2D bend{P(0, 0) + shift, P(4, 0) + shift, P(4, 4) + shift, P(8, 4) + shift};
        P foot(7, 7);
        double station = 7.0;
        EXPECT_EQ(J::NormalPointOnLineString(P(5, 1), LineString2D{P(1, 1)}, foot, station, 1e-4), 0);
        EXPECT_EQ(foot.GetX() + station, 14.0) << "untouched";
        EXPECT_EQ(J::NormalPointOnLineString(P(5, -1) + shift, bend, foot, station, 1e-4), 1);
        EXPECT_THAT(foot, IsNear(P(4, 0) + shift, 0.0)) << "the vertex is nearest";
        EXPECT_EQ(station, 4.0);
        const LineString2D twice{P(0, 0.005) + shift, P(4, 0.005) + shift, P(4, 0) + shift, P(0, 0) + shift};
        EXPECT_EQ(J::NormalPointOnLineString(P(1, -1) + shift, twice, foot, station, 1e-4), 1);
        EXPECT_NEAR(station, 1.0, 2e-5) << "the first passage within 0.01";

        std::vector<GeometryDistancePair<P>> found;
        const Polygon2D ring = MakePolygon("0 0 8 0 8 8 0 8 / 2 2 6 2 6 6 2 6 2 2").Translate(shift);
        EXPECT_EQ(J::NearestPointsOnPolygon(P(3, 5.5) + shift, ring, found, 1e-4), 7U);
        const std::uint64_t order[] = {0, 1, 4, 3, 2, 7, 6};
        for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(found[i].index, order[i]) << "5 is as far as 3";
        const auto onAny = [&](const P& p) { return J::NearestPointOnPolygonWithHoles(p + shift, ring, 1e-4); };
        EXPECT_THAT(J::NearestPointOnPolygon(P(1.5, 4) + shift, ring, 1e-4), IsNear(P(0, 4) + shift, 1e-9));
        EXPECT_THAT(onAny(P(1, 4)), IsNear(P(0, 4) + shift, 1e-9)) << "the outer ring first";
        EXPECT_THAT(onAny(P(1.5, 4)), IsNear(P(2, 4) + shift, 1e-9));
    }
}

TEST(ProjectionTest, PlanesAndAxes) {
    RandomNumbers random(21);
    const auto vector = [&](double s) { return Vec3D(random(-s, s), random(-s, s), random(-s, s)); };
    for (int round = 0; round < 200; ++round) {
        const Point3D origin(surveyOrigins[round % 2], 100.0);
        const Vec3D normal = vector(1.0), direction = vector(5.0) * (round % 3 == 0 ? 1e-11 : 1.0);
        const Plane3D plane(origin + vector(50.0), normal);
        const Point3D p = origin + vector(50.0);
        Point3D projected;
        ASSERT_TRUE(J::PointOnPlane(p, direction, plane, projected));
        Vec3D along = direction;
        const double steep = std::abs(plane.GetNormal().DotProduct(along.Normalize()));
        EXPECT_LT(Distance::PointToPlane(projected, plane), 1e-8 / steep);
        EXPECT_LT((projected - p).CrossProduct(along).Length(), 1e-8 / steep);
        Polygon3D polygon{p, projected, origin};
        polygon.AppendHoleBoundary(LineString3D{p});
        const Polygon3D shadow = J::PolygonOnPlane(polygon, direction, plane);
        EXPECT_THAT(shadow.GetPoint(0), IsNear(projected, 0.0));
        EXPECT_THAT(shadow.GetHoleBoundary(0).GetPoint(0), IsNear(projected, 0.0));
        const Polygon3D normalShadow = J::NormalPolygonOnPlane(polygon, plane);
        EXPECT_THAT(normalShadow.GetPoint(2), IsNear(plane.GetProjection(origin), 1e-8));
        EXPECT_FALSE(J::PointOnPlane(p, normal.CrossProduct(direction), plane, projected));
        EXPECT_EQ(J::PolygonOnPlane(polygon, Vec3D(), plane).GetSize(), 0U);
        EXPECT_EQ(J::NormalPolygonOnPlane(polygon, Plane3D()).GetSize(), 0U);

        const Vec2D turned(random(-1.0, 1.0), 1.0), size(random(0.0, 9.0), 4.0);
        const Vec2D axis(Vec2D(random(-3.0, 3.0), 2.0) * (round % 3 == 0 ? 1e-11 : 1.0));
        const OrientedBoundingBox2D box(p.GetPoint2D(), size, turned, turned.GetNormalVector(true));
        double low = 7.0, high = 7.0, least = kInfinity, most = -kInfinity;
        EXPECT_FALSE(J::OrientedBoundingBoxOnAxis(box, Vec2D(), P(), low, high));
        EXPECT_EQ(low, 7.0);
        ASSERT_TRUE(J::OrientedBoundingBoxOnAxis(box, axis, origin.GetPoint2D(), low, high));
        std::vector<P> corners;
        box.GetCornerPoints(corners);
        for (const P& corner : corners) {
            const double place = (corner - origin.GetPoint2D()).DotProduct(axis) / axis.Length();
            least = std::min(least, place), most = std::max(most, place);
        }
        EXPECT_NEAR(low, least, 4e-9);
        EXPECT_NEAR(high, most, 4e-9);
    }
}

// One call for the feet of every kind of curve.
struct Foot {
    P point{7, 7};
    double station = -1.0;
    Vec2D tangent;
    int status = 0;
};
int Normal(const P& p, const Clothoid& curve, auto&&... foot) { return J::NormalPointOnClothoid(p, curve, foot...); }
int Normal(const P& p, const Spiral2D& curve, auto&&... foot) { return J::NormalPointOnSpiral(p, curve, foot...); }
int Normal(const P& p, const Parabola& curve, auto&&... foot) { return J::NormalPointOnParabola(p, curve, foot...); }
int Normal(const P& p, const Arc2D& arc, P& foot, double& station, Vec2D& tangent, double tolerance) {
    const int status = J::NormalPointOnArc(p, arc, foot, tolerance);
    if (status > 0) (void)arc.GetLengthFromStartPoint(foot, station, 1e-8);
    tangent = arc.ComputeTangent(foot);
    return status;
}
Foot FootOf(const P& p, const auto& curve, double tolerance) {
    Foot f;
    f.status = Normal(p, curve, f.point, f.station, f.tangent, tolerance);
    return f;
}

// Distance of the nearest foot among all changes of sign between 500 stations; infinite when there is none.
template <class Curve>
double NearestFootDistance(const Curve& curve, const P& p) {
    constexpr int steps = 500;
    const auto isAhead = [&](double station) {
        const auto sample = At(curve, station);
        return (sample.point - p).DotProduct(sample.tangent) >= 0.0;
    };
    double nearest = kInfinity;
    for (int i = 1; i <= steps; ++i) {
        double low = curve.GetLength() * (i - 1) / steps, high = curve.GetLength() * i / steps;
        const bool first = isAhead(low);
        if (first == isAhead(high)) continue;
        for (int k = 0; k < 60; ++k) {
            const double middle = 0.5 * (low + high);
            (isAhead(middle) == first ? low : high) = middle;
        }
        nearest = std::min(nearest, At(curve, low).point.Distance(p));
    }
    return nearest;
}

template <class Curve>
void CheckFoot(const Curve& curve, const P& p, double rounding) {
    const double expected = NearestFootDistance(curve, p);
    const double nearest = std::min({expected, p.Distance(curve.GetStart()), p.Distance(curve.GetEnd())});
    EXPECT_LE(p.Distance(NearestOn(curve, p)), nearest + rounding) << testing::PrintToString(p);
    const Foot foot = FootOf(p, curve, 1e-9);
    EXPECT_TRUE(foot.status > 0 || !std::isfinite(expected)) << testing::PrintToString(p);
    if (foot.status == 0) return;
    const auto sample = At(curve, foot.station);
    EXPECT_THAT(foot.point, IsNear(sample.point, rounding));
    EXPECT_THAT(foot.tangent, IsNear(sample.tangent, 1e-9));
    EXPECT_NEAR((foot.point - p).DotProduct(foot.tangent), 0.0, rounding);
    EXPECT_LE(foot.point.Distance(p), expected + rounding) << testing::PrintToString(p);
    EXPECT_GE(foot.point.Distance(p), p.Distance(curve.GetNearestPoint(p, kTolerances)) - rounding);
}

TEST(ProjectionTest, FeetAreThoseOfEveryChangeOfSign) {
    RandomNumbers random(22);
    for (int round = 0; round < 960; ++round) {
        SCOPED_TRACE(round);
        const int kind = 1 + round / 2 % 4;
        const bool isCoil = kind == 2 && round % 3 == 0;
        const bool isFar = round % 2 != 0 && kind < 4;  // coefficients of parabolas hold no survey coordinates
        const P origin = surveyOrigins[isFar ? 1 : 0];
        const auto query = [&] { return origin + Vec2D(random(-150.0, 150.0), random(-150.0, 150.0)); };
        const auto check = [&](auto curve) {
            if constexpr (!std::is_same_v<decltype(curve), Line2D>) {
                if (!IsMade(curve)) return;
                const double rounding = isCoil ? 2e-6 : isFar ? 4e-9 : 1e-9;
                for (int i = 0; i < 4; ++i) CheckFoot(curve, query(), rounding);
                const auto on = At(curve, random(0.0, curve.GetLength()));
                double curvature = 0.0;
                ASSERT_TRUE(ChainOf(curve).GetCurvature(on.station, curvature));
                if (std::abs(curvature) > 1e-4 && kind > 1)  // where feet run together
                    CheckFoot(curve, on.point + Sideways(on.tangent) * (1.0 / curvature), rounding);
                const P p = query(), foot = FootOf(p, curve, 1e-9).point;
                curve.Reverse();
                EXPECT_THAT(FootOf(p, curve, 1e-9).point, IsNear(foot, 2e-7)) << "a double foot lies loosely";
            }
        };
        Curve made = RandomCurve(random, kind, origin);
        if (isCoil) {  // tangent angles up to 3: many feet, and the error of the series
            const double radius = random(10, 60), other = random(-1, 1) < 0.0 ? 0.0 : radius * random(1.0001, 2);
            made = Clothoid(-other, -radius, radius * std::sqrt(2 * random(0.5, 3)), origin, Vec2D(0.6, 0.8));
        }
        std::visit(check, made);
    }
}

TEST(ProjectionTest, WhereFeetEnd) {
    const Arc2D quarter(P(5, 0), P(0, 0), Angle(kPi / 2));
    const Clothoid clothoid(0.0, 100.0, 100.0, P(0, 0), Vec2D(1, 0));
    const Spiral2D bloss(Spiral2D::Spiral2DType::Bloss, 0.0, 100.0, 100.0, P(0, 0), Vec2D(1, 0));
    const Spiral2D circle(Spiral2D::Spiral2DType::Bloss, 100.0, 100.0, 100.0, P(0, 0), Vec2D(1, 0));
    const Parabola parabola(P(-1, 1), P(2, 4), 1.0, 0.0, 0.0);
    const auto centerAt = [](const auto& curve, double station) {
        const auto sample = At(curve, station);
        return sample.point + sample.tangent.GetNormalVector(true) * (1.0 / curve.GetCurvature(station));
    };
    const std::tuple<const char*, Foot, double> rows[] = {
        {"behind the start by the tolerance", FootOf(P(-1e-3, 9), clothoid, 1e-3), 0.0},
        {"behind the start by more", FootOf(P(-2e-3, 9), clothoid, 1e-3), -1.0},
        {"behind the start of an arc", FootOf(P(6, -1e-3), quarter, 1e-3), 0.0},
        {"the centre of an arc", FootOf(P(0, 0), quarter, 0.0), 0.0},
        {"beyond the centre, on the far side", FootOf(P(-3, -3), quarter, 0.0), 5 * kPi / 4},
        {"beside both sides", FootOf(P(3, -3), quarter, 1e-3), -1.0},
        {"a spiral with its centre", FootOf(P(0, 100), circle, 1e-9), 0.0},
        {"a centre of curvature", FootOf(centerAt(clothoid, 61.0), clothoid, 1e-9), 61.0},
        {"of a spiral", FootOf(centerAt(bloss, 37.0), bloss, 1e-9), 37.0},
        {"of a parabola's summit", FootOf(P(0, 0.5), parabola, 1e-9), parabola.GetLength(P(-1, 1), P(0, 0), 0)},
        {"behind a parabola", FootOf(P(-3, 2), parabola, 1e-3), -1.0},
        {"by the tolerance", FootOf(P(-1.0004, 1), parabola, 1e-3), 0.0},
        {"not a number", FootOf(P(kNan, 0), clothoid, 1e-3), -1.0},
        {"at infinity", FootOf(P(0, kInfinity), parabola, 1e-3), -1.0},
        {"an arc of no radius", FootOf(P(1, 1), Arc2D(), 1e-3), -1.0},
        {"a clothoid of no length", FootOf(P(1, 1), Clothoid(), 1e-3), -1.0},
    };
    for (const auto& [why, foot, station] : rows) {
        EXPECT_EQ(foot.status > 0, station >= 0.0) << why;
        EXPECT_NEAR(foot.station, station, 1e-8) << why;
        EXPECT_TRUE(station >= 0.0 || foot.point.IsEqualTo(P(7, 7), 1e-15)) << "untouched: " << why;
    }
    P foot(7, 7);
    EXPECT_EQ(J::NormalPointOnCircle(P(1, 1), Circle2D(), foot, 1e-3), 0);
    EXPECT_EQ(J::NormalPointOnCircle(P(6, 9), Circle2D(P(0, 1), 5.0), foot, 1e-3), 1);
    EXPECT_THAT(foot, IsNear(P(3, 5), 1e-15));
    EXPECT_THAT(J::NearestPointOnArc(P(3, -3), quarter, 1e-3), IsNear(P(5, 0), 0.0));
}

TEST(ProjectionTest, FeetOutsideTheElements) {
    const Parabola against(P(20, 5), P(19, 6), 1.0, -40.0, 405.0);  // its tangents
    const Polyline2D chain = ChainOf(Line2D(P(0, 0), P(10, 0)), against, Line2D(P(10, -10), P(10, -20)),
                                     Line2D(P(90, 90), P(std::nextafter(90.0, 99.0), 90)));
    const double length = chain.GetLength();
    const std::tuple<const char*, P, int, int, P, double> rows[] = {
        {"beyond a line of the least length there is", P(120, 93), 1, 2, P(120, 90), length + 30.0},
        {"on an element", P(4, -3), 1, 1, P(4, 0), 4.0},
        {"before the start", P(-3, -4), 0, 2, P(-3, 0), -3.0},
        {"behind the end", P(24, -23), 0, 2, P(10, -23), length + 3.0},
        {"before the parabola", P(22, 4), 0, 2, P(22, 5), 8.0},
        {"nearer than the foot on an element", P(22, -11), 1, 2, P(22, 0), 22.0},
        {"further than that", P(15, -11), 1, 1, P(10, -11), length - 9.0},
        {"beyond an end by the tolerance", P(-0x1p-21, 3), 1, 1, P(0, 0), 0.0},
        {"not a number", P(kNan, 0), 0, 0, P(7, 7), 7.0},
    };
    for (const auto& [why, p, onElement, status, place, at] : rows) {
        P foot(7, 7), ofAll(7, 7);
        double station = 7.0;
        EXPECT_EQ(J::NormalPointOnPolyline(p, chain, foot, station, 0x1p-20), onElement) << why;
        EXPECT_EQ(foot.IsEqualTo(P(7, 7), 1e-9), onElement == 0) << why;
        EXPECT_EQ(J::NormalPointOnPolyline2(p, chain, ofAll, station, 0x1p-20), status) << why;
        EXPECT_THAT(ofAll, IsNear(place, 1e-12)) << why;
        EXPECT_NEAR(station, at, 2e-12) << why;
    }
    Polyline2D::PolylinePoint nothing;
    EXPECT_EQ(J::NormalPointOnPolyline2(P(1, 1), Polyline2D(), nothing, 1e-6), 0);
    EXPECT_FALSE(J::NearestPointOnPolyline(P(1, 1), Polyline2D(), nothing, 1e-6));
    EXPECT_EQ(Distance::PointToPolyline(P(1, 1), Polyline2D()), std::numeric_limits<double>::max());
}

}  // namespace
}  // namespace Kalvio::Math
