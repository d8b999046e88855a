#include "alignment/Crossings.h"
#include "examples/RealData.h"
#include "support/Near.h"

#include "kalvio/curves/Line2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace Kalvio::Examples {
namespace {

using namespace Math;

// Stations at which the axis passes the line: sign changes of a fine subdivision, then bisection on the curve itself.
std::vector<double> PassesOf(const Alignment& road, const Line2D& line) {
    const auto sideAt = [&](double station) {
        Polyline2D::PolylinePoint sample;
        EXPECT_TRUE(road.plan.MakePointAndTangentAt(station, sample));
        return (line.GetEnd() - line.GetStart()).PerpDotProduct(sample.point - line.GetStart());
    };
    std::vector<double> stations;
    constexpr int pieces = 4000;
    for (int k = 0; k < pieces; ++k) {
        double low = road.plan.GetLength() * k / pieces;
        double high = road.plan.GetLength() * (k + 1) / pieces;
        const bool isLeft = sideAt(low) > 0.0;
        if (isLeft == (sideAt(high) > 0.0)) continue;
        for (int i = 0; i < 60; ++i) {
            const double middle = 0.5 * (low + high);
            (isLeft == (sideAt(middle) > 0.0) ? low : high) = middle;
        }
        stations.push_back(road.GetStartStation() + low);
    }
    return stations;
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
        cross.plan.AppendElement(new Line2D(Point2D(easting, 6671700.0), Point2D(easting + 40.0, 6673000.0)));
        const auto& line = static_cast<const Line2D&>(cross.plan.GetElementAtIndex(0));
        const std::vector<double> expected = PassesOf(road, line);
        passes += expected.size();
        const std::vector<Crossing> found = FindCrossings(road, cross);
        const std::vector<Crossing> swapped = FindCrossings(cross, road);
        ASSERT_EQ(found.size(), expected.size());
        ASSERT_EQ(swapped.size(), expected.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_NEAR(found[i].station, expected[i], 1e-6);
            EXPECT_NEAR(found[i].otherStation, -200.0 + line.GetStart().Distance(found[i].point), 1e-6);
            bool isThere = false;
            for (const Crossing& other : swapped) {
                isThere |= std::abs(other.otherStation - found[i].station) < 1e-6 &&
                           std::abs(other.station - found[i].otherStation) < 1e-6 &&
                           std::abs(other.angle + found[i].angle) < 1e-6;
            }
            EXPECT_TRUE(isThere) << found[i].station;
        }
    }
    EXPECT_GE(passes, 12U);
}

using RealCrossingsTest = RealDataTest;

TEST_F(RealCrossingsTest, RoadsMeetWhereTheirFilesLetThem) {
    struct Row {
        const char* file;
        const char* otherFile;
        const char* name;
        const char* otherName;
        std::vector<std::pair<double, double>> stations;  // by sampling both axes, or as the foot of an end
    };
    const Row rows[] = {
        {"M3", "Y10", "M3_RS - CL", "Y10_RS - CL", {{628.9436, 0.0}}},
        {"M3", "Y11", "M3_RS - CL", "Y11_RS - CL", {{674.5175, 0.0}}},
        {"subdivision", "subdivision", "1stave", "loop", {{0.0, 362.3009}, {773.5798, 6914.3035}}},
        {"subdivision", "subdivision", "2ndave", "loop", {{0.0, 6072.4627}, {811.3510, 1094.2757}}},
        {"subdivision", "subdivision", "1stave", "mainst", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " with " + row.otherName);
        const LandXmlFile file = ReadLandXml(data + "landxml/" + row.file + ".xml");
        const LandXmlFile otherFile = ReadLandXml(data + "landxml/" + row.otherFile + ".xml");
        const auto named = [](const LandXmlFile& in, const std::string& name) -> const Alignment& {
            for (const Alignment& alignment : in.alignments) {
                if (alignment.name == name) return alignment;
            }
            ADD_FAILURE() << "no alignment " << name;
            return in.alignments.front();
        };
        const std::vector<Crossing> found = FindCrossings(named(file, row.name), named(otherFile, row.otherName));
        ASSERT_EQ(found.size(), row.stations.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_NEAR(found[i].station, row.stations[i].first, 1e-3);
            EXPECT_NEAR(found[i].otherStation, row.stations[i].second, 1e-3);
        }
    }
}

}  // namespace
}  // namespace Kalvio::Examples
