#include "common/LandXml.h"
#include "common/LandXmlSurface.h"
#include "common/LandXmlWriter.h"
#include "examples/RealData.h"

#include "kalvio/core/Geometry.h"

#include "support/Testing.h"

#include <fstream>
#include <iterator>

namespace Kalvio::Examples {
namespace {

using namespace Math;

// Every element ends where the file says and where the next one starts.
void CheckClosure(const Alignment& alignment, double tolerance) {
    SCOPED_TRACE(alignment.name);
    ASSERT_EQ(alignment.elements.size(), alignment.plan.GetNrOfElements());
    for (unsigned int i = 0; i < alignment.plan.GetNrOfElements(); ++i) {
        SCOPED_TRACE(alignment.elements[i].type + " in line " + std::to_string(alignment.elements[i].line));
        EXPECT_THAT(alignment.plan.GetElementAtIndex(i).GetEnd(), IsNear(alignment.elements[i].statedEnd, tolerance));
    }
    EXPECT_TRUE(alignment.plan.IsContinuous(tolerance));
    if (alignment.statedLength > 0.0) {
        EXPECT_NEAR(alignment.plan.GetLength(), alignment.statedLength, 1e-5);
    }
}

TEST(LandXmlTest, SampleRoadClosesThroughItsTransitions) {
    const LandXmlFile file = ReadLandXml(KALVIO_EXAMPLE_DATA "/alignment.xml");
    ASSERT_EQ(file.alignments.size(), 1U);
    const Alignment& road = file.alignments.front();
    ASSERT_EQ(road.plan.GetNrOfElements(), 15U);
    CheckClosure(road, 3e-6);  // points and radii are rounded to the micrometre
    EXPECT_EQ(road.elements[3].type, "Clothoid");
    EXPECT_NEAR(road.elements[3].startRadius, 300.0, 1e-9);
    EXPECT_NEAR(road.elements[3].endRadius, 150.0, 1e-9);
    EXPECT_EQ(road.elements[11].type, "Bloss");

    // Heights worked out from the tangents: 41.2 + 0.03 s before the first curve; the parabola's middle lies
    // (g2 - g1) L / 8 = -1 over its vertex; the unsymmetric one's (g2 - g1) a b / (2 (a + b)).
    const double outGrade = (45.0 - 52.9) / (1375.5 - 890.0);
    const std::tuple<double, double, double> rows[] = {
        {100.0, 41.2 + 100.0 * 0.03, 1e-9},
        {260.0, 49.0 + (-0.02 - 0.03) * 160.0 / 8.0, 1e-9},
        {890.0, 52.9 + (outGrade - 0.03) * 90.0 * 140.0 / (2.0 * 230.0), 1e-9},
        // The sag of R = 2500 lies R (sec(half the turn) - 1) from its vertex, along the bisector.
        {560.0, 43.0 + 0.781, 2e-3},
    };
    double height = 0.0;
    for (const auto& [station, expected, tolerance] : rows) {
        ASSERT_TRUE(road.GetHeight(station, height));
        EXPECT_NEAR(height, expected, tolerance) << station;
    }
    EXPECT_FALSE(road.GetHeight(1376.0, height));
}

// A file that holds the text; beside the program and by the test's name, since tests of several builds run at once.
std::string WriteInput(const std::string& text) {
    const std::string path = std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".xml";
    std::ofstream(path) << text;
    return path;
}

// What a reader says of a file that holds the text; empty when the file is read.
template <class File>
std::string MessageOf(const std::string& text, File (*read)(const std::string&)) {
    const std::string path = WriteInput(text);
    std::string message;
    try {
        read(path);
    } catch (const InputError& error) {
        message = error.what();
    }
    std::filesystem::remove(path);
    return message;
}

TEST(LandXmlTest, BrokenAndForeignFilesAreNamedWithTheirLine) {
    const std::string head = "<LandXML>\n<Alignments>\n<Alignment>\n<CoordGeom>\n";
    const std::string tail = "\n</CoordGeom></Alignment></Alignments></LandXML>";
    const std::string ends = "<Start>1 2</Start><PI>2 2</PI><End>3 3</End></Spiral>" + tail;
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"not XML", "<LandXML>\n<oops\n", "line 2: Error parsing"},
        {"foreign", "\n<svg/>", "line 2: not a LandXML file"},
        {"empty", "<LandXML/>", "no <Alignment>"},
        {"no elements", head + tail, "without elements"},
        {"missing end", head + "<Line><Start>1 2</Start></Line>" + tail, "line 5: <Line> without <End>"},
        {"a word", head + "<Line><Start>1 2</Start><End>1 x</End></Line>" + tail, "\"x\" is not a number"},
        {"no length", head + "<Line><Start>1 2</Start><End>1 2</End></Line>" + tail, "of no length"},
        {"no turn", head + "<Curve><Start>1 2</Start><Center>0 0</Center><End>2 1</End></Curve>" + tail, "rot"},
        {"unknown spiral",
         head + R"(<Spiral rot="cw" length="9" radiusStart="INF" radiusEnd="9" spiType="wave">)" + ends, "\"wave\""},
        {"no such cubic parabola",
         head + R"(<Spiral rot="cw" length="500" radiusStart="300" radiusEnd="310" spiType="cubic">)" + ends,
         "line 5: <Spiral> that is no curve"},
        {"unknown point", head + "<Line><Start pntRef=\"7\"/><End>1 2</End></Line>" + tail, "no point named 7"},
        {"unknown element", head + "<Arc/>" + tail, "<Arc> is no element"},
    };
    for (const auto& [why, text, message] : rows) {
        EXPECT_THAT(MessageOf(text, ReadLandXml), testing::HasSubstr(message)) << why;
    }
    EXPECT_THROW(ReadLandXml(std::string(testing::TempDir()) + "kalvio_none.xml"), InputError);
}

TEST(LandXmlTest, FaultyAlignmentsAndProfilesAreLeftOutWithTheirReason) {
    const std::string path = WriteInput(R"(<LandXML><Alignments>
<Alignment name="A"><CoordGeom><Line><Start>1 2</Start></Line></CoordGeom></Alignment>
<Alignment name="B"><CoordGeom><Line><Start>1 2</Start><End>1 99</End></Line></CoordGeom><Profile><ProfAlign>
<PVI>0 5</PVI><PVI>50 6</PVI><PVI>50 6</PVI><PVI>90 5</PVI></ProfAlign></Profile></Alignment>
<Alignment name="C"><CoordGeom><Line><Start>1 2</Start><End>1 99</End></Line></CoordGeom><Profile><ProfAlign>
<PVI>0 5</PVI><PVI>50 6</PVI></ProfAlign></Profile><StaEquation staBack="0" staAhead="7"/>
<Cant name="c"/></Alignment>
<Alignment name="D" staStart="1000"><CoordGeom><Line><Start>1 2</Start><End>1 99</End></Line></CoordGeom>
<Profile><ProfAlign><PVI>1000 5</PVI><PVI>1097 6</PVI></ProfAlign></Profile>
<StaEquation staAhead="2000" staInternal="1030"/><StaEquation staBack="2040" staAhead="1060"/>
<Cant gauge="1.5" rotationPoint="insideRail"><CantStation station="1010" appliedCant="0" curvature="cw"
transitionType="bloss"/><CantStation station="1050" appliedCant="90" curvature="cw"/></Cant></Alignment>
</Alignments></LandXML>)");
    const LandXmlFile file = ReadLandXml(path);
    std::filesystem::remove(path);
    ASSERT_EQ(file.alignments.size(), 3U);
    EXPECT_EQ(file.alignments[0].name + file.alignments[1].name, "BC");
    double height = 0.0;
    EXPECT_FALSE(file.alignments[0].GetHeight(50.0, height));
    EXPECT_TRUE(file.alignments[1].GetHeight(50.0, height) && height == 6.0);
    using testing::HasSubstr;
    EXPECT_THAT(file.warnings,
                testing::ElementsAre(HasSubstr("line 2: <Line> without <End>; the alignment \"A\" is left out"),
                                     HasSubstr("line 4: profile stations must ascend; the profile of \"B\""),
                                     HasSubstr("line 6: <StaEquation> before the one above it"),
                                     HasSubstr("line 7: <Cant> without gauge; the cant of \"C\"")));
    // Halfway through a Bloss transition to 90 mm over 1500 mm in a right curve the left rail is half as high, about
    // the right one.
    const Math::Alignment rails = file.alignments[2].InSpace();
    ASSERT_TRUE(rails.GetHeight(30.0, 0.75, height));
    EXPECT_NEAR(height, 5.0 + 30.0 / 97.0, 1e-12);
    ASSERT_TRUE(rails.GetHeight(30.0, -0.75, height));
    EXPECT_NEAR(height, 5.0 + 30.0 / 97.0 + 0.045, 1e-12);
    EXPECT_EQ(rails.GetStationing().GetText(30.0, 1), "2+000.0/1");  // the last zone is open ahead
    EXPECT_EQ(rails.GetStationing().GetText(75.0, 1), "1+065.0");
}

TEST(LandXmlTest, SurfacesAreReadByTheirPointIdsWithoutInvisibleFaces) {
    const std::string head = "<LandXML>\n<Surfaces><Surface name=\"s\">\n<Definition surfType=\"TIN\"><Pnts>\n";
    const std::string points = "<P id=\"a1\">2 1 5</P><P id=\"7\">2 9 5</P><P id=\"x\">8 9 6</P></Pnts>\n<Faces>";
    const std::string tail = "</Faces></Definition></Surface></Surfaces></LandXML>";
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"no surface", "<LandXML/>", "no <Surface>"},
        {"no definition", "<LandXML><Surfaces><Surface/></Surfaces></LandXML>", "without <Definition>"},
        {"a grid", "<LandXML><Surfaces><Surface><Definition surfType=\"grid\"/></Surface></Surfaces></LandXML>",
         "\"grid\""},
        {"no id", head + "<P>1 2 3</P>" + points + tail, "line 4: <P> without id"},
        {"an id twice", head + "<P id=\"7\">1 2 3</P>" + points + tail, "a second point 7"},
        {"no height", head + "<P id=\"8\">1 2</P>" + points + tail, "line 4: <P> needs 3 numbers"},
        {"a word", head + "<P id=\"8\">1 2 high</P>" + points + tail, "\"high\" is not a number"},
        {"not finite", head + "<P id=\"8\">1 2 1e999</P>" + points + tail, "\"1e999\" is not a number"},
        {"an unknown corner", head + points + "<F>7 x 9</F>" + tail, "line 5: <F> names point 9"},
        {"two corners", head + points + "<F>7 x</F>" + tail, "2 corners"},
        {"four corners", head + points + "<F>7 x 7 x</F>" + tail, "4 corners"},
        {"nothing to see", head + points + "<F i=\"1\">7 x x</F>" + tail, "without visible faces"},
    };
    for (const auto& [why, text, message] : rows) {
        EXPECT_THAT(MessageOf(text, ReadLandXmlSurfaces), testing::HasSubstr(message)) << why;
    }
}

std::string TextOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Written, read and written again, a file is the same to the last digit, and what it held is read as it was.
void CheckWriting(const std::string& path) {
    SCOPED_TRACE(path);
    const std::string copy = std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "_copy.xml";
    const LandXmlFile file = ReadLandXml(path);
    WriteLandXml(copy, file.linearUnit, file.alignments, {});
    const std::string first = TextOf(copy);
    const LandXmlFile again = ReadLandXml(copy);
    WriteLandXml(copy, again.linearUnit, again.alignments, {});
    EXPECT_EQ(TextOf(copy), first);
    std::filesystem::remove(copy);
    ASSERT_EQ(again.alignments.size(), file.alignments.size());
    for (std::size_t i = 0; i < file.alignments.size(); ++i) {
        const Math::Alignment was = file.alignments[i].InSpace();
        const Math::Alignment is = again.alignments[i].InSpace();
        EXPECT_NEAR(is.GetLength(), was.GetLength(), 1e-9);
        for (const double station : was.GetStationsByStep(0.0, was.GetLength(), 7.0)) {
            Point2D points[2];
            double heights[2] = {0.0, 0.0};
            ASSERT_TRUE(was.GetPoint(station, 2.0, points[0]) && is.GetPoint(station, 2.0, points[1]));
            EXPECT_THAT(points[1], IsNear(points[0], 2e-9));
            EXPECT_EQ(was.GetHeight(station, 2.0, heights[0]), is.GetHeight(station, 2.0, heights[1]));
            EXPECT_NEAR(heights[1], heights[0], 1e-9);
            EXPECT_EQ(is.GetStationing().GetText(station, 6), was.GetStationing().GetText(station, 6));
        }
    }
}

TEST(LandXmlTest, WhatIsWrittenIsReadTheSame) {
    CheckWriting(KALVIO_EXAMPLE_DATA "/alignment.xml");
    // A cubic parabola by y = x^3 / (6 R X), R = 100 and X = 60, equations, unsymmetrical parabola and cant.
    const std::string path = WriteInput(R"(<LandXML><Units><Metric linearUnit="meter"/></Units><Alignments>
<Alignment name="A &amp; B" staStart="1000"><CoordGeom><Spiral rot="ccw" length="60.53346" radiusStart="INF"
radiusEnd="100" spiType="cubicParabola"><Start>0 0</Start><PI>0 40</PI><End>6 60</End></Spiral></CoordGeom>
<StaEquation staAhead="2000" staBack="1030" staInternal="1030"/><Profile><ProfAlign><PVI>1000 5</PVI>
<UnsymParaCurve lengthIn="10" lengthOut="20">1030.1 6.3</UnsymParaCurve><CircCurve radius="90" length="3">1055 6
</CircCurve><PVI>1061 6.7</PVI></ProfAlign></Profile><Cant gauge="1.5" rotationPoint="insideRail">
<CantStation station="1010.7" appliedCant="0" curvature="cw" transitionType="bloss"/><CantStation station="1050.3"
appliedCant="90.1" curvature="cw"/></Cant></Alignment></Alignments></LandXML>)");
    const LandXmlFile file = ReadLandXml(path);
    ASSERT_EQ(file.alignments.size(), 1U);
    EXPECT_THAT(file.alignments[0].plan.GetEnd(), IsNear(Point2D(60, 6), 1e-4));  // 0.3 off by its true radius
    CheckWriting(path);
    Alignment unknown = file.alignments[0];
    const Cant::Knot knots[] = {{0, 0, 0, Cant::Law::Viennese}, {20, 0.05, 0.05}};
    ASSERT_TRUE(unknown.cant.Set(knots, Cant::Pivot::Axis, 0.75));
    EXPECT_THROW(WriteLandXml(path, "", {&unknown, 1}, {}), InputError);
    const std::vector<Surface> surfaces = ReadLandXmlSurfaces(KALVIO_EXAMPLE_DATA "/terrain.xml").surfaces;
    WriteLandXml(path, "", {}, surfaces);
    const std::vector<Surface> again = ReadLandXmlSurfaces(path).surfaces;
    std::filesystem::remove(path);
    ASSERT_EQ(again.size(), surfaces.size());
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        EXPECT_EQ(again[i].name, surfaces[i].name);
        EXPECT_TRUE(Geometry::AreEqual(again[i].mesh, surfaces[i].mesh, 1e-300));
    }
}

using RealRoadTest = RealDataTest;

TEST_F(RealRoadTest, StatedEndsCloseAndWhatIsWrittenIsReadTheSame) {
    for (const auto& [name, tolerance] :
         {std::pair("M3.xml", 1e-5), {"Y10.xml", 1e-5}, {"Y11.xml", 1e-5}, {"subdivision.xml", 1e-4}}) {
        const LandXmlFile file = ReadLandXml(data + "landxml/" + name);
        EXPECT_EQ(file.alignments.size(), tolerance > 1e-5 ? 6U : 1U) << name;
        for (const Alignment& alignment : file.alignments) CheckClosure(alignment, tolerance);
        CheckWriting(data + "landxml/" + name);
    }
    const LandXmlFile m3 = ReadLandXml(data + "landxml/M3.xml");
    EXPECT_NEAR(m3.alignments.front().plan.GetLength(), 1266.246238, 2e-6);
}

}  // namespace
}  // namespace Kalvio::Examples
