#include "fuzz/Calls.h"
#include "fuzz/Families.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

// Copies, moves, equality and what every geometry answers, of objects full, empty and left behind by a move.
template <class Class>
void CheckObject(Bytes bytes) {
    const auto object = Make<Class>(bytes), other = Make<Class>(bytes);
    const std::string text = Text(object);
    Class copy(other);
    if constexpr (std::is_copy_assignable_v<Class>) Require(Text(copy = object) == text, __PRETTY_FUNCTION__);
    if constexpr (requires { object.Clone(); })
        Require(Text(std::unique_ptr<const IMathObject>(object.Clone())) == text, __PRETTY_FUNCTION__);
    if constexpr (std::is_base_of_v<IGeometry, Class>) {
        std::vector<std::unique_ptr<IGeometry>> pieces;
        const bool isCut = object.BreakAt(Make<std::vector<Point2D>>(bytes), pieces, tolerances);
        Require(isCut == !pieces.empty(), __PRETTY_FUNCTION__);
    }
    const double from = bytes.TakeDouble(), to = bytes.TakeDouble(), step = std::max(bytes.TakeDouble(), to - from) / 8;
    if constexpr (requires { object.ExtractLineString(from, to, copy); }) {
        Class part;
        std::list<std::remove_cvref_t<decltype(object.GetPoint(0))>> points;
        std::list<decltype(points.front() - points.front())> tangents;
        Require(object.ExtractLineString(from, to, part) == (part.GetSize() > 0), __PRETTY_FUNCTION__);
        Require(object.MakePointsAndTangents(from, to, step, points, tangents) == !points.empty(), __PRETTY_FUNCTION__);
    }
    if constexpr (requires { object.ExtractPolyline(from, to, copy); }) {
        Class part;
        Require(object.ExtractPolyline(from, to, part) == (part.GetSize() > 0), __PRETTY_FUNCTION__);
    }
    if constexpr (requires { Geometry::AreEqual(object, other, 1.0); }) {
        const double t = bytes.TakeDouble();
        Require(Geometry::AreEqual(object, other, t) == Geometry::AreEqual(other, object, t), __PRETTY_FUNCTION__);
        Require(Geometry::AreEqual(object, object, 1.0) || !bytes.Tame(), __PRETTY_FUNCTION__);
    }
}

template <class... Classes>
void CheckObjects(const Bytes& bytes) {
    (CheckObject<Classes>(bytes), ...);
}

// The const form of what moves an object, and the form that changes it.
template <class Class, class By>
void CheckMoves(Bytes bytes, const By& by) {
    const auto object = Make<Class>(bytes);
    Class moved(object);
    if constexpr (requires { object.Translate(by); }) {
        const std::string expected = Text(object.Translate(by));
        Require(Text(moved.Translate(by)) == expected, __PRETTY_FUNCTION__);
    } else {
        const std::string expected = Text(object.Transform(by));
        Require(Text(moved.Transform(by)) == expected, __PRETTY_FUNCTION__);
    }
}
template <class... Classes>
void CheckAllMoves(const Bytes& bytes, const auto& by) {
    (CheckMoves<Classes>(bytes, by), ...);
}

void CheckAll(Bytes bytes) {
    CheckAllMoves<Line2D, LineString2D, Point2D, Polygon2D, Vec2D, IndexedTriangleSet2D>(bytes, Make<Matrix2D>(bytes));
    CheckAllMoves<Line2D, LineString2D, Parabola, Polygon2D, IndexedTriangleSet2D>(bytes, Make<Vec2D>(bytes));
    CheckAllMoves<Line3D, LineString3D, Point3D, Polygon3D, Vec3D, IndexedTriangleSet3D, IndexedFaceSet3D>(
        bytes, Make<Matrix3D>(bytes));
    CheckAllMoves<Line3D, LineString3D, Polygon3D, IndexedTriangleSet3D, IndexedFaceSet3D>(bytes, Make<Vec3D>(bytes));
    CheckObjects<Angle, Arc2D, Arc3D, BoundingBox2D, BoundingBox3D, BoundingBoxND, Circle2D, Circle3D, Clothoid,
                 GridSurface, IndexedFaceSet2D, IndexedFaceSet3D, IndexedTriangleSet2D, IndexedTriangleSet3D, Line2D,
                 Line3D, LineString2D, LineString3D, Matrix2D, Matrix3D, MatrixNM, OrientedBoundingBox2D, Parabola,
                 Plane3D, Point2D, Point2DM, Point3D, PointND, Polygon2D, Polygon3D, PolygonCurve2D, PolygonCurve3D,
                 Polyline2D, Polyline3D, Quaternion, RingCurve2D, RingCurve3D, Spiral2D, TinSurfacePatch3D, Tolerances,
                 Triangle3D, TriangleStrip3D, Vec2D, Vec3D, VecND>(bytes);
}

TEST(CallTest, EveryFunctionKeepsItsLawsForAnyBytes) {
    std::uint64_t seed = SeedFromEnvironment(1);
    int broken = 0;
    for (int i = 0; i < 300 && broken < 5; ++i, ++seed) {
        const std::vector<std::uint8_t> data = RandomBytes(seed);
        Bytes bytes(data.data(), data.size());
        try {
            CheckAll(bytes);
            EXPECT_GE(CallPart0(bytes) + CallPart1(bytes) + CallPart2(bytes) + CallPart3(bytes), 1079);
        } catch (const BrokenLaw& law) {
            ++broken;
            ADD_FAILURE() << law.what() << ", at once with KALVIO_TEST_SEED=" << seed;
        }
    }
}

}  // namespace
}  // namespace Kalvio::Math
