#include "kalvio/Math.h"
#include "support/Testing.h"

#include <charconv>
#include <cstring>
#include <iomanip>
#include <set>
#include <sstream>

namespace Kalvio::Math {
namespace {

std::string Streamed(const auto& value) {
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

// What stands in the parentheses is told, and held, by the page about text.
template <class... Classes>
void CheckNames() {
    const auto check = [](const IMathObject& object) {
        const std::string name(GetName(object.GetType())), text = ToString(object);
        EXPECT_TRUE(text.starts_with(name + '(') && text.ends_with(')') && Streamed(object) == text) << text;
        EXPECT_EQ(testing::PrintToString(object), text) << "GoogleTest's way";
        return object.GetType();
    };
    EXPECT_EQ(std::set<MathTypes>({check(Classes())...}).size(), 45U) << "a class is missing";
}

TEST(PrintTest, EveryClassIsPrintedUnderItsName) {
    struct OfTheCaller : IMathObject {
        MathTypes GetType() const override { return MathTypes::Nurbs2D; }
    };
    struct Record : Tolerances {
        Record() : Tolerances(1e-4, 1e-10) {}
    };
    EXPECT_EQ(ToString(OfTheCaller()), "Nurbs2D()");
    CheckNames<Angle, Arc2D, Arc3D, BoundingBox2D, BoundingBox3D, BoundingBoxND, Circle2D, Circle3D, Clothoid,
               GridSurface, IndexedFaceSet2D, IndexedFaceSet3D, IndexedTriangleSet2D, IndexedTriangleSet3D, Line2D,
               Line3D, LineString2D, LineString3D, Matrix2D, Matrix3D, MatrixNM, OrientedBoundingBox2D, Parabola,
               Plane3D, Point2D, Point2DM, Point3D, PointND, Polygon2D, Polygon3D, PolygonCurve2D, PolygonCurve3D,
               Polyline2D, Polyline3D, Quaternion, Record, RingCurve2D, RingCurve3D, Spiral2D, TinSurfacePatch3D,
               Triangle3D, TriangleStrip3D, Vec2D, Vec3D, VecND>();
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
