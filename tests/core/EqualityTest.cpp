#include "kalvio/Math.h"
#include "support/RandomCurves.h"

#include <typeinfo>

namespace Kalvio::Math {
namespace {

const Point2D a(1, 2), b(5, 2);
const Point3D u(1, 2, 3), v(5, 2, 3), w(5, 9, 4);
const std::vector<Point2D> plan{{0, 0}, {4, 0}, {0, 4}};
const std::vector<Point3D> space{{0, 0, 1}, {4, 0, 1}, {0, 4, 1}};

// `first(d)` and `second(d)` make objects of which a coordinate, or whatever is compared, is off by d.
void Check(const auto& first, const auto& second, const char* pair) {
    EXPECT_TRUE(Geometry::AreEqual(first(0.0), second(0.125), 0.25)) << pair;
    EXPECT_TRUE(Geometry::AreEqual(first(-0.125), second(0.0), 0.25)) << pair;
    EXPECT_FALSE(Geometry::AreEqual(first(0.0), second(0.25), 0.25)) << pair << ": strict";
    EXPECT_FALSE(Geometry::AreEqual(first(0.25), second(0.0), 0.25)) << pair << ": strict";
}
void CheckEach(const auto&... make) { (Check(make, make, typeid(make(0.0)).name()), ...); }

template <class Chain>
auto ChainOf(const auto& make) {
    return [make](double d) { return Math::ChainOf<Chain>(make(d)); };
}
template <class Shape>
auto ShapeOf(const auto& points) {
    return [points](double d) {
        auto moved = points;
        moved[1][0] += d;
        if constexpr (requires { Shape().GetVertices(); }) {
            Shape mesh;
            mesh.AppendVertices(moved);
            return mesh;
        } else {
            return Shape(moved);
        }
    };
}

TEST(EqualityTest, EveryPairThatHasOne) {
    const Vec2D east(1, 0);
    const Plane3D floor(0, 0, 1, -3);
    const auto number = [](double d) { return 1.0 + d; };
    const auto line = [](double d) { return Line2D(a, b + Vec2D(d, 0)); };
    const auto line3D = [](double d) { return Line3D(u, v + Vec3D(0, 0, d)); };
    const auto string = [](double d) { return LineString2D{a, b + Vec2D(d, 0)}; };
    const auto string3D = [](double d) { return LineString3D{u, v + Vec3D(0, 0, d)}; };
    const auto arc = [](double d) { return Arc2D(a + Vec2D(d, 0), b + Vec2D(d, 0), Angle(1.0)); };
    const auto clothoid = [&](double d) { return Clothoid(0.0, 300.0, 150.0, a + Vec2D(d, 0), east); };
    const auto spiral = [&](double d) {
        return Spiral2D(Spiral2D::Spiral2DType::Bloss, 0.0, 300.0, 60.0, a + Vec2D(d, 0), east);
    };
    const auto parabola = [](double d) { return Parabola(Point2D(0, d), Point2D(1, 1 + d), 1.0, 0.0, d); };
    const auto integer = [](double d) { return d < 0.2 ? 1 : 2; };
    Check(number, integer, "double, int");
    CheckEach([](double d) { return Angle(d); }, [](double d) { return Point2D(1, 2 + d); },
              [](double d) { return Point2DM(1, 2, 3 + d); }, [](double d) { return Point3D(1, 2, 3 + d); },
              [](double d) { return PointND(Point3D(1, 2, 3 + d)); }, [](double d) { return Vec2D(1, 2 + d); },
              [](double d) { return Vec3D(1, 2, 3 + d); }, [](double d) { return VecND(Vec3D(1, 2, 3 + d)); },
              [](double d) { return Matrix2D().Translate(3 + d, 0); }, [](double d) { return Plane3D(0, 0, 1, d); },
              [](double d) { return Triangle3D(u, v, w + Vec3D(0, d, 0)); },
              [](double d) { return BoundingBox2D(a, b + Vec2D(d, 2)); },
              [](double d) { return BoundingBox3D(u + Vec3D(d, d, d), v + Vec3D(d, 2 + d, d)); },
              [](double d) { return BoundingBoxND(BoundingBox2D(a, b + Vec2D(d, 0))); },
              [](double d) { return Circle2D(a, 4 + d); }, [&](double d) { return Circle3D(u, 4 + d, floor); },
              [&](double d) { return Arc3D(u + Vec3D(d, 0, 0), v + Vec3D(d, 0, 0), Angle(1.0), floor); },
              [&](double d) { return PolygonCurve2D(ChainOf<RingCurve2D>(arc)(d)); },
              [&](double d) { return PolygonCurve3D(ChainOf<RingCurve3D>(line3D)(d)); });
    CheckEach(number, line3D, string3D, ChainOf<Polyline2D>(arc), ChainOf<Polyline3D>(line3D), ShapeOf<Polygon2D>(plan),
              ShapeOf<Polygon3D>(space), ShapeOf<IndexedFaceSet2D>(plan), ShapeOf<IndexedFaceSet3D>(space),
              ShapeOf<IndexedTriangleSet2D>(plan), ShapeOf<IndexedTriangleSet3D>(space),
              ShapeOf<TriangleStrip3D>(space));
    Check(line, string, "Line2D, LineString2D");
    Check(line3D, string3D, "Line3D, LineString3D");
    const auto checkCurves = [](const auto&... make) {
        CheckEach(make...);
        (Check(make, ChainOf<Polyline2D>(make), typeid(make(0.0)).name()), ...);
    };
    checkCurves(line, string, arc, clothoid, spiral, parabola);
    const Point2D near(1.125, 2), far(1.25, 2);
    const IGeometry* const points[] = {&a, &near, &far};
    EXPECT_TRUE(Geometry::AreEqual(*points[0], *points[1], 0.25) && !Geometry::AreEqual(*points[0], *points[2], 0.25));
}

}  // namespace
}  // namespace Kalvio::Math
