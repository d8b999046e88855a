#include "kalvio/Math.h"
#include "support/ElementChecks.h"
#include "support/RandomCurves.h"
#include "text/Texts.h"

#include <regex>
#include <sstream>

namespace Kalvio::Math {
namespace {

using Owned = std::vector<std::unique_ptr<IGeometry>>;

Owned Read(const std::string& text) {
    Owned geometries;
    Wkt::Error error;
    EXPECT_TRUE(Wkt::Read(text, geometries, error)) << text << '\n' << error.offset << ": " << error.reason;
    return geometries;
}

// Read and written again; where there are arcs, without the last digits.
std::string Again(const std::string& text) {
    std::string written = "not written";
    const Owned geometries = Read(text);
    const bool isOne = !text.starts_with("MULTI") && !text.starts_with("GEOMETRYC") && geometries.size() == 1;
    EXPECT_TRUE(isOne ? Wkt::Write(*geometries[0], written) : Wkt::Write(geometries, written)) << text;
    if (text.find("CIRC") == std::string::npos) return written;
    std::ostringstream rounded;
    const std::regex number("-?[0-9][-+.0-9e]*");
    for (std::smatch at; std::regex_search(written, at, number); written = at.suffix()) {
        rounded << at.prefix() << std::round(std::stod(at.str()) * 1e9) / 1e9 + 0.0;
    }
    return rounded.str() + written;
}

TEST(WktTest, TextComesBackAsItWasAndNoBeginningOfOneIsTakenForTheWhole) {
    for (const std::string& text : texts) {
        EXPECT_EQ(Again(text), text);
        for (std::size_t size = 0; size < text.size(); ++size) {
            Owned none;
            Wkt::Error error;
            EXPECT_FALSE(Wkt::Read(std::string_view(text).substr(0, size), none, error)) << text << ' ' << size;
            EXPECT_TRUE(none.empty() && error.offset <= size && !error.reason.empty()) << text << ' ' << size;
        }
    }
    const std::pair<const char*, const char*> others[] = {
        {"\n pointz( 1\t2 +3.0e0 ) ", "POINT Z (1 2 3)"},
        {"POINT (1 2 3)", "POINT Z (1 2 3)"},
        {"POINT ZM (1 2 3 4)", "POINT Z (1 2 3)"},
        {"LineStringM (1 2 3, 4 5 6)", "LINESTRING (1 2, 4 5)"},
        {"MULTIPOINT (1 2, 3 4)", "MULTIPOINT ((1 2), (3 4))"},
        {"CIRCULARSTRING (0 0, 1 0, 2 0)", "LINESTRING (0 0, 2 0)"},
        {"GEOMETRYCOLLECTION (POINT (1 2), GEOMETRYCOLLECTION (POINT EMPTY, POINT (3 4)))",
         "MULTIPOINT ((1 2), (3 4))"},
        {"COMPOUNDCURVE Z (CIRCULARSTRING (0 0 3, 1 0 4, 2 0 3))",
         "COMPOUNDCURVE Z (CIRCULARSTRING Z (0 0 3, 1 0 4, 2 0 3))"},
    };
    for (const auto& [text, written] : others) EXPECT_EQ(Again(text), written) << text;
}

TEST(WktTest, WhatIsNoTextIsRefusedAtItsPlace) {
    std::string deep, wide(200000, '(');
    for (int i = 0; i < 34; ++i) deep += "GEOMETRYCOLLECTION(";
    const std::tuple<std::string, std::size_t, std::size_t, std::size_t, const char*> rows[] = {
        {"", 0, 1, 1, "name of a geometry"},
        {"POINT", 5, 1, 6, "opening"},
        {"PUNT (1 2)", 0, 1, 1, "name of a geometry"},
        {"POINT (1)", 8, 1, 9, "expected a number"},
        {"POINT (1 x)", 9, 1, 10, "expected a number"},
        {"POINT (1 2 3 4 5)", 15, 1, 16, "closing"},
        {"POINT Z (1 2)", 9, 1, 10, "more or fewer"},
        {"POINT (1 nan)", 9, 1, 10, "finite"},
        {"POINT (1 1e999)", 9, 1, 10, "finite"},
        {"POINT (1 2m)", 10, 1, 11, "expected a space"},
        {"POINT (1 2) ;", 12, 1, 13, "text after"},
        {"LINESTRING (1 2)", 11, 1, 12, "two points"},
        {"LINESTRING (\n1 2,\n  3 4 5)", 20, 3, 3, "more or fewer"},
        {"CIRCULARSTRING (0 0, 1 1)", 15, 1, 16, "3, 5, 7"},
        {"CIRCULARSTRING (0 0, 2 0, 1 0)", 15, 1, 16, "no circle"},
        {"CIRCULARSTRING Z (0 0 0, 2 0 0, 0 0 0)", 17, 1, 18, "no circle"},
        {"COMPOUNDCURVE ((0 0, 1 1), (1 1.0000001, 2 2))", 27, 1, 28, "does not start where"},
        {"COMPOUNDCURVE (COMPOUNDCURVE ((0 0, 1 1)))", 15, 1, 16, "cannot stand here"},
        {"COMPOUNDCURVE Z (CIRCULARSTRING M (0 0 3, 1 0 4, 2 0 3))", 17, 1, 18, "other coordinates"},
        {"POLYGON ((0 0, 9 0, 9 9))", 9, 1, 10, "does not close"},
        {"POLYGON ((0 0, 9 0, 0 0))", 9, 1, 10, "four positions"},
        {"POLYGON (LINESTRING (0 0, 9 0, 9 9, 0 0))", 9, 1, 10, "opening"},
        {"MULTIPOLYGON (CURVEPOLYGON ((0 0, 9 0, 9 9, 0 0)))", 14, 1, 15, "cannot stand here"},
        {deep, 33 * 19, 1, 33 * 19 + 1, "nested"},
        {"POLYGON" + wide, 9, 1, 10, "expected a number"},
    };
    for (const auto& [text, offset, line, column, reason] : rows) {
        Owned geometries(1);
        Wkt::Error error;
        EXPECT_FALSE(Wkt::Read(text, geometries, error)) << text;
        EXPECT_THAT(std::string(error.reason), testing::HasSubstr(reason)) << text;
        EXPECT_EQ(std::tuple(error.offset, error.line, error.column), std::tuple(offset, line, column)) << text;
        EXPECT_EQ(geometries.size(), 1U) << "untouched";
    }
}

TEST(WktTest, WhatHasNoTextIsRefused) {
    Polyline2D gap, nested;
    gap.AppendElement(new Line2D(Point2D(0, 0), Point2D(1, 0)));
    gap.AppendElement(new Line2D(Point2D(1.001, 0), Point2D(2, 0)));
    nested.AppendElement(gap.Clone());
    RingCurve2D open;
    open.AppendElement(new Line2D(Point2D(0, 0), Point2D(1, 0)));
    const std::pair<const char*, std::unique_ptr<IGeometry>> rows[] = {
        {"no class of text", std::make_unique<PointND>(2)},
        {"not finite", std::make_unique<Point2D>(1.0, kNan)},
        {"not finite", std::make_unique<Line3D>(Point3D(), Point3D(0, 0, kInfinity))},
        {"one point", std::make_unique<LineString2D>(1U)},
        {"a ring of two", std::make_unique<Polygon2D>(std::initializer_list<Point2D>{{0, 0}, {1, 0}, {0, 0}})},
        {"no radius", std::make_unique<Arc2D>()},
        {"a gap", std::make_unique<Polyline2D>(gap)},
        {"a gap within", std::make_unique<Polyline2D>(nested)},
        {"an open ring", std::make_unique<PolygonCurve2D>(open)},
        {"no height", std::make_unique<Clothoid>(0.0, 300.0, 150.0, Point2D(), Vec2D(1, 0))},
    };
    std::string text = "untouched";
    for (const auto& [why, geometry] : rows) EXPECT_FALSE(Wkt::Write(*geometry, text)) << why;
    EXPECT_FALSE(Wkt::Write({&*rows[0].second, nullptr}, text));
    const Point2D flat;
    const Point3D high;
    EXPECT_FALSE(Wkt::Write({&flat, &high}, text)) << "of different coordinates";
    EXPECT_EQ(text, "untouched");
}

// Curves come back in place: points along both differ by the rounding of coordinates at most.
TEST(WktTest, CurvesComeBackInPlace) {
    RandomNumbers random(2);
    for (const Point2D& origin : surveyOrigins) {
        const double rounding = origin.GetX() > 0.0 ? 2e-8 : 1e-10;
        for (int i = 0; i < 400; ++i) {
            Polyline2D chain = RandomRoad(random, 5, origin);
            chain.AppendElement(Arc2D(chain.GetEnd(), chain.GetEnd() + Vec2D(random(1, 500), 9), Angle(2 * kPi)));
            std::string text;
            ASSERT_TRUE(Wkt::Write(chain, text, 0.001));
            const auto back = Read(text);
            ASSERT_EQ(back.size(), 1U);
            const auto& read = static_cast<const Polyline2D&>(*back[0]);
            EXPECT_TRUE(read.IsContinuous(rounding)) << text;
            for (double share = 0.0; share <= 1.0; share += 0.0625) {
                const auto wanted = At(chain, share * chain.GetLength());
                const double allowed = wanted.elementIndex % 3 == 1 ? 0.001 + rounding : rounding;  // of clothoids
                EXPECT_LE(wanted.point.Distance(read.GetNearestPoint(wanted.point, kTolerances)), allowed) << text;
            }
        }
    }
    RingCurve3D ring;  // a half disc that leans
    const Arc3D half(Point3D(2, 0, 0), Point3D(1, 0, 0), Angle(kPi), Plane3D(Point3D(), Vec3D(0, -1, 1)));
    ring.AppendElement(new Line3D(Point3D(0, 0, 0), Point3D(2, 0, 0)));
    ring.AppendElement(half.Clone());
    std::string text;
    ASSERT_TRUE(Wkt::Write(PolygonCurve3D(ring), text));
    EXPECT_TRUE(PolygonCurve3D(ring).IsEqualTo(*Read(text)[0], 1e-12)) << text;
    ASSERT_TRUE(Wkt::Write(Polygon2D{Point2D(0, 0), Point2D(2, -1), Point2D(4, 0)}, text));
    EXPECT_EQ(text, "POLYGON ((0 0, 2 -1, 4 0, 0 0))") << "one coordinate alone closes no ring";
    ASSERT_TRUE(Wkt::Write(Circle2D(Point2D(3, 4), -2.0), text));
    EXPECT_NEAR(Read(text)[0]->GetLength(), 4 * kPi, 1e-13) << text;
}

}  // namespace
}  // namespace Kalvio::Math
