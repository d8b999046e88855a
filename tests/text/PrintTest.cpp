#include "kalvio/Math.h"
#include "support/Testing.h"

#include <charconv>
#include <cstring>
#include <iomanip>
#include <set>
#include <sstream>

namespace Kalvio::Math {
namespace {

template <class Value>
std::string Streamed(const Value& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

TEST(PrintTest, EveryCodeOfThePublicHeadersHasItsName) {
    int count = 0;
    const auto Check = [&count](auto code, std::string_view name) {
        EXPECT_EQ(GetName(code), name);
        EXPECT_EQ(Streamed(code), name);
        ++count;
    };
#include "Codes.inc"
    EXPECT_GT(count, 110) << "the headers were not read";
    EXPECT_EQ(GetName(static_cast<IntersectionResult>(1)), "?");
    std::ostringstream wide;
    wide << std::setw(8) << WindingValue::Vertical << '|' << std::setw(14) << Point2D(1, 2);
    EXPECT_EQ(wide.str(), "Vertical| Point2D(1, 2)");
}

TEST(PrintTest, ObjectsAreTheirClassNameAndWhatTheyWereMadeOf) {
    Polyline2D chain;
    chain.AppendElement(new Line2D(Point2D(0, 0), Point2D(1, 0)));
    chain.AppendElement(new Arc2D(Point2D(1, 0), Point2D(1, 1), Angle(1.5)));
    RingCurve2D ring;
    ring.AppendElement(new Line2D(Point2D(0, 0), Point2D(1, 0)));
    PolygonCurve2D curved(ring);
    curved.AppendInnerRing(new RingCurve2D());
    Polygon2D area{{0, 0}, {1, 0}, {1, 1}};
    area.AppendHoleBoundary({{0.5, 0.1}, {0.6, 0.1}});
    IndexedFaceSet2D faces(4);
    faces.AppendIndexes({0, 1, 2, 3, 1});
    Matrix2D moved;
    moved.Translate(5.0, 6.0);
    MatrixNM matrix(1, 2);
    matrix[0][1] = 0.1;
    const double null[] = {1, 0, 0, 0, 0, 0, 0, 0, 0};
    const Plane3D level(Point3D(0, 0, 5), Vec3D(0, 0, 1));
    const std::pair<std::unique_ptr<IMathObject>, const char*> rows[] = {
        {std::make_unique<Angle>(0.5), "Angle(0.5)"},
        {std::make_unique<Point2D>(385000.0, 6672000.25), "Point2D(385000, 6672000.25)"},
        {std::make_unique<Point2DM>(-0.0, 1e-300, 1e22), "Point2DM(-0, 1e-300, 1e+22)"},
        {std::make_unique<Point3D>(kNan, kInfinity, -kInfinity), "Point3D(nan, inf, -inf)"},
        {std::make_unique<PointND>(VecND().GetCoordinates()), "PointND()"},
        {std::make_unique<Vec2D>(1.0 / 3.0, 0.0001), "Vec2D(0.3333333333333333, 0.0001)"},
        {std::make_unique<Vec3D>(1, 2, 3), "Vec3D(1, 2, 3)"},
        {std::make_unique<VecND>(std::vector{1.0, 2.0}), "VecND(1, 2)"},
        {std::make_unique<Quaternion>(), "Quaternion(0, 0, 0, 1)"},
        {std::make_unique<Tolerances>(0.001, Angle(0.5), 1e-10), "Tolerances(0.001, 0.5, 1e-10)"},
        {std::make_unique<Matrix2D>(moved), "Matrix2D((1, 0, 0), (0, 1, 0), (5, 6, 1))"},
        {std::make_unique<Matrix2D>(Matrix2D(null).GetInverse()), "Matrix2D(undefined)"},
        {std::make_unique<Matrix3D>(), "Matrix3D((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 0, 0, 1))"},
        {std::make_unique<MatrixNM>(matrix), "MatrixNM((0, 0.1))"},
        {std::make_unique<BoundingBox2D>(Point2D(0, 0), Point2D(10, 20)), "BoundingBox2D((0, 0), (10, 20))"},
        {std::make_unique<BoundingBox3D>(), "BoundingBox3D((0, 0, 0), (0, 0, 0))"},
        {std::make_unique<BoundingBoxND>(2), "BoundingBoxND((0, 0), (0, 0))"},
        {std::make_unique<OrientedBoundingBox2D>(Point2D(5, 5), Vec2D(4, 2), Vec2D(1, 0), Vec2D(0, 1)),
         "OrientedBoundingBox2D(center (5, 5), size (4, 2), axes (1, 0) (0, 1))"},
        {std::make_unique<Plane3D>(level), "Plane3D(0, 0, 1, -5)"},
        {std::make_unique<Triangle3D>(Point3D(), Point3D(1, 0, 0), Point3D(0, 1, 0)),
         "Triangle3D((0, 0, 0), (1, 0, 0), (0, 1, 0))"},
        {std::make_unique<Line3D>(), "Line3D((0, 0, 0), (0, 0, 0))"},
        {std::make_unique<Circle2D>(Point2D(1, 2), 3.0), "Circle2D(center (1, 2), radius 3)"},
        {std::make_unique<Circle3D>(Point3D(0, 0, 5), 2.0, level),
         "Circle3D(center (0, 0, 5), radius 2, normal (0, 0, 1))"},
        {std::make_unique<Arc3D>(Point3D(1, 0, 5), Point3D(0, 0, 5), Angle(-1.5), level),
         "Arc3D(start (1, 0, 5), center (0, 0, 5), sweep -1.5, normal (0, 0, 1))"},
        {std::make_unique<Clothoid>(0.0, 300.0, 150.0, Point2D(), Vec2D(1, 0)),
         "Clothoid(start (0, 0), tangent (1, 0), radii 0 300, parameter 150)"},
        {std::make_unique<Spiral2D>(Spiral2D::Spiral2DType::Bloss, 0.0, 300.0, 75.0, Point2D(), Vec2D(1, 0)),
         "Spiral2D(Bloss, start (0, 0), tangent (1, 0), radii 0 300, length 75)"},
        {std::make_unique<Parabola>(Point2D(0, 2), Point2D(200, 0), 0.0001, -0.03, 2.0),
         "Parabola(start (0, 2), end (200, 0), 0.0001, -0.03, 2)"},
        {std::make_unique<LineString3D>(std::initializer_list<Point3D>{{0, 0, 1}, {1, 0, 2}}),
         "LineString3D((0, 0, 1), (1, 0, 2))"},
        {std::make_unique<LineString2D>(), "LineString2D()"},
        {std::make_unique<Polyline2D>(chain),
         "Polyline2D(Line2D((0, 0), (1, 0)), Arc2D(start (1, 0), center (1, 1), sweep 1.5))"},
        {std::make_unique<Polyline3D>(), "Polyline3D()"},
        {std::make_unique<Polygon2D>(area), "Polygon2D(((0, 0), (1, 0), (1, 1)), ((0.5, 0.1), (0.6, 0.1)))"},
        {std::make_unique<Polygon3D>(), "Polygon3D(())"},
        {std::make_unique<PolygonCurve2D>(curved),
         "PolygonCurve2D(RingCurve2D(Line2D((0, 0), (1, 0))), RingCurve2D())"},
        {std::make_unique<PolygonCurve3D>(), "PolygonCurve3D(RingCurve3D())"},
        {std::make_unique<TriangleStrip3D>(std::initializer_list<Point3D>{{0, 0, 1}}), "TriangleStrip3D((0, 0, 1))"},
        {std::make_unique<IndexedTriangleSet2D>(), "IndexedTriangleSet2D(vertices (), triangles none)"},
        {std::make_unique<IndexedTriangleSet3D>(std::vector{Point3D(1, 2, 3)}, std::vector{0U, 0U, 1U, 2U}),
         "IndexedTriangleSet3D(vertices ((1, 2, 3)), triangles (0, 0, 1), (2))"},
        {std::make_unique<TinSurfacePatch3D>(), "TinSurfacePatch3D(vertices (), triangles none)"},
        {std::make_unique<IndexedFaceSet2D>(faces), "IndexedFaceSet2D(vertices (), faces (0, 1, 2, 3), (1))"},
        {std::make_unique<IndexedFaceSet3D>(), "IndexedFaceSet3D(vertices (), faces none)"},
    };
    std::set<MathTypes> seen{MathTypes::Line2D, MathTypes::Arc2D, MathTypes::RingCurve2D, MathTypes::RingCurve3D};
    for (const auto& [object, text] : rows) {
        EXPECT_EQ(Streamed(*object), text);
        EXPECT_EQ(testing::PrintToString(*object), text) << "GoogleTest's way";
        EXPECT_TRUE(seen.insert(object->GetType()).second || object->GetType() == MathTypes::Matrix2D);
    }
    EXPECT_EQ(seen.size(), 44U) << "a class without a row";
}

TEST(PrintTest, DigitsReadBackToTheSameBits) {
    RandomNumbers random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double value = 0.0, back = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isnan(value)) continue;
        if (i % 2 == 0) value = std::ldexp(random(-1.0, 1.0), i % 80 - 30);
        const std::string text = ToString(Vec2D(value, 0.0));
        ASSERT_EQ(std::from_chars(text.data() + 6, text.data() + text.size(), back).ec, std::errc());
        ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << text;
    }
}

#ifdef __cpp_lib_format
TEST(PrintTest, FormatTakesTheSameWithWidths) {
    EXPECT_EQ(
        std::format("{:>14}|{:<9}|{}", Point2D(1, 2), WindingValue::Vertical, SpatialIndexes::SpatialIndexTypes::RTree),
        " Point2D(1, 2)|Vertical |RTree");
}
#endif

}  // namespace
}  // namespace Kalvio::Math
