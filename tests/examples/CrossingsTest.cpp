#include "alignment/Crossings.h"
#include "examples/RealData.h"
#include "support/Testing.h"

#include "kalvio/curves/Line2D.h"

#include <string>

namespace Kalvio::Examples {
namespace {

using namespace Math;

// Of the axis, left of the line.
bool IsLeftAt(const Alignment& road, double station, const Line2D& line) {
    Polyline2D::PolylinePoint sample;
    EXPECT_TRUE(road.plan.MakePointAndTangentAt(station, sample));
    return (line.GetEnd() - line.GetStart()).PerpDotProduct(sample.point - line.GetStart()) > 0.0;
}

TEST(CrossingsTest, EveryPassOfALineHasBothStations) {
    LandXmlFile file = ReadLandXml(KALVIO_EXAMPLE_DATA "/alignment.xml");
    Alignment& road = file.alignments.at(0);
    road.stationing = Stationing(500.0);
    std::size_t passes = 0;
    for (const double easting : {384660.0, 384700.0, 384712.0, 384770.0, 384850.0}) {
        SCOPED_TRACE(easting);
        Alignment cross;
        cross.stationing = Stationing(-200.0);
        const Line2D line(Point2D(easting, 6671700.0), Point2D(easting + 40.0, 6673000.0));
        cross.plan.AppendElement(line.Clone());
        std::size_t expected = 0;  // by a fine subdivision
        for (int k = 0; k < 4000; ++k) {
            const double piece = road.plan.GetLength() / 4000;
            expected += IsLeftAt(road, k * piece, line) != IsLeftAt(road, (k + 1) * piece, line);
        }
        passes += expected;
        const std::vector<Crossing> found = FindCrossings(road, cross), swapped = FindCrossings(cross, road);
        ASSERT_EQ(std::pair(found.size(), swapped.size()), std::pair(expected, expected));
        double last = 0.0;
        for (const Crossing& one : found) {
            const double at = one.station - 500.0;
            EXPECT_NE(IsLeftAt(road, at - 1e-6, line), IsLeftAt(road, at + 1e-6, line));
            EXPECT_GT(one.station, std::exchange(last, one.station));
            EXPECT_NEAR(one.otherStation, -200.0 + line.GetStart().Distance(one.point), 1e-6);
            EXPECT_TRUE(std::ranges::any_of(swapped, [&one](const Crossing& other) {
                return std::abs(other.otherStation - one.station) < 1e-6 &&
                       std::abs(other.station - one.otherStation) < 1e-6 && std::abs(other.angle + one.angle) < 1e-6;
            })) << one.station;
        }
    }
    EXPECT_GE(passes, 12U);
}

using RealCrossingsTest = RealDataTest;

TEST_F(RealCrossingsTest, RoadsMeetWhereTheirFilesLetThem) {
    using Stations = std::vector<std::pair<double, double>>;  // by sampling both axes, or as the foot of an end
    const std::tuple<const char*, const char*, const char*, const char*, Stations> rows[] = {
        {"M3", "Y10", "M3_RS - CL", "Y10_RS - CL", {{628.9436, 0.0}}},
        {"M3", "Y11", "M3_RS - CL", "Y11_RS - CL", {{674.5175, 0.0}}},
        {"subdivision", "subdivision", "1stave", "loop", {{0.0, 362.3009}, {773.5798, 6914.3035}}},
        {"subdivision", "subdivision", "2ndave", "loop", {{0.0, 6072.4627}, {811.3510, 1094.2757}}},
        {"subdivision", "subdivision", "1stave", "mainst", {}},
    };
    for (const auto& [fileName, otherFileName, name, otherName, stations] : rows) {
        SCOPED_TRACE(std::string(name) + " with " + otherName);
        const LandXmlFile file = ReadLandXml(data + "landxml/" + fileName + ".xml");
        const LandXmlFile otherFile = ReadLandXml(data + "landxml/" + otherFileName + ".xml");
        const auto one = std::ranges::find(file.alignments, name, &Alignment::name);
        const auto other = std::ranges::find(otherFile.alignments, otherName, &Alignment::name);
        ASSERT_TRUE(one != file.alignments.end() && other != otherFile.alignments.end());
        const std::vector<Crossing> found = FindCrossings(*one, *other);
        ASSERT_EQ(found.size(), stations.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_NEAR(found[i].station, stations[i].first, 1e-3);
            EXPECT_NEAR(found[i].otherStation, stations[i].second, 1e-3);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Examples
