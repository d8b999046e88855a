#include "common/InputError.h"
#include "common/LandXmlSurface.h"
#include "examples/RealData.h"
#include "meshes/Meshes.h"
#include "terrain/KrigedGrid.h"
#include "terrain/LongSection.h"
#include "terrain/Measures.h"

#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"

namespace Kalvio::Examples {
namespace {

using namespace Math;

TEST(TerrainTest, MeasuresOfAPyramidHoldHoweverItsFacesTurn) {
    const double slopes = 4.0 * 0.5 * 10.0 * std::sqrt(6.0 * 6.0 + 5.0 * 5.0);
    for (const Point2D& origin : surveyOrigins) {
        IndexedTriangleSet3D pyramid({{0, 0, 50}, {10, 0, 50}, {10, 10, 50}, {0, 10, 50}, {5, 5, 56}},
                                     {0, 1, 4, 1, 4, 2, 2, 3, 4, 4, 3, 0});  // the second and fourth are clockwise
        pyramid.Translate(Vec3D(origin - Point2D(), 0.0));
        TurnUpward(pyramid);
        const Measures measures(pyramid, std::nullopt);
        EXPECT_NEAR(measures.planArea, 100.0, 1e-8);
        EXPECT_NEAR(measures.surfaceArea, slopes, 1e-8);
        EXPECT_NEAR(measures.volume, 100.0 * 6.0 / 3.0, 1e-7);
        EXPECT_NEAR(Measures(pyramid, 49.0).volume, 200.0 + 100.0, 1e-7);
        EXPECT_TRUE(measures.outerRings == 1 && measures.holes == 0);
        EXPECT_NEAR(measures.perimeter, 40.0, 1e-8);
    }
}

Surface SampleSurface(std::size_t index) {
    SurfaceFile file = ReadLandXmlSurfaces(KALVIO_EXAMPLE_DATA "/terrain.xml");
    TurnUpward(file.surfaces.at(index).mesh);
    return file.surfaces[index];
}

TEST(TerrainTest, SampleRoadFollowsItsProfileAndItsGroundTheFormula) {
    const Surface ground = SampleSurface(0);
    const Measures measures(ground.mesh, std::nullopt);
    EXPECT_EQ(ground.invisibleFaces, 6U);
    EXPECT_TRUE(measures.outerRings == 1 && measures.holes == 1) << "the pond";

    const LandXmlFile file = ReadLandXml(KALVIO_EXAMPLE_DATA "/terrain.xml");
    const Alignment& road = file.alignments.at(0);
    const LongSection onRoad(SampleSurface(1).mesh, road, 8.0);
    ASSERT_EQ(onRoad.GetRows().size(), 51U);
    for (const LongSection::Row& row : onRoad.GetRows()) {
        ASSERT_TRUE(row.ground && row.design) << row.station;
        EXPECT_NEAR(*row.ground, *row.design, 6e-4) << row.station;  // rounded to the millimetre
    }
    const LongSection onGround(ground.mesh, road, 20.0);
    ASSERT_EQ(onGround.GetRows().size(), 21U);
    for (const LongSection::Row& row : onGround.GetRows()) {
        const double u = row.place.GetX() - 385400.0, v = row.place.GetY() - 6672300.0;
        const auto hill = [&](double height, double u0, double v0, double width) {
            return height * std::exp(-((u - u0) * (u - u0) + (v - v0) * (v - v0)) / width);
        };
        const double formula =
            48.0 + hill(8.0, 240.0, 120.0, 9000.0) + hill(4.0, 60.0, 150.0, 6000.0) + 0.5 * std::sin(v / 30.0);
        ASSERT_TRUE(row.ground.has_value());
        EXPECT_NEAR(*row.ground, formula, 0.1) << row.station;  // faces of 17 m on a curvature of 0.002
    }
}

// A loop road that crosses itself, on a slope: every cut point must have the station of its own pass.
TEST(TerrainTest, AnAxisThatCrossesItselfKeepsItsStationsApart) {
    for (const Point2D& origin : surveyOrigins) {
        const auto at = [&](double x, double y) { return origin + Vec2D(x, y); };
        const auto heightOf = [&](const Point2D& p) {
            return 7.0 + 0.1 * (p - origin).GetX() - 0.3 * (p - origin).GetY();
        };
        Alignment loop;
        loop.stationing = Stationing(1000.0);
        loop.plan.AppendElement(new Line2D(at(0, 0), at(100, 0)));
        loop.plan.AppendElement(new Arc2D(at(100, 0), at(100, 30), Angle(1.5 * kPi)));
        loop.plan.AppendElement(new Line2D(at(70, 30), at(70, -40)));
        ASSERT_TRUE(loop.plan.IsContinuous(1e-6));

        IndexedTriangleSet3D slope = Grid(Point2D(), 15);
        for (Point3D& v : slope.GetVertices()) {  // ends above the road's end
            const Point2D p = at(-13.0 + 11.0 * v.GetX(), -31.0 + 9.0 * v.GetY());
            v = Point3D(p, heightOf(p));
        }
        const LongSection section(slope, loop, 7.0);
        const double end = 1100.0 + 45.0 * kPi + 61.0;  // where the slope ends
        EXPECT_NEAR(section.GetGroundLength(), end - 1000.0, 1e-6);
        for (const LongSection::Run& run : section.GetRuns()) {
            for (std::size_t k = 0; k < run.size(); ++k) {
                Polyline2D::PolylinePoint onAxis;
                ASSERT_TRUE(loop.plan.MakePointAndTangentAt(run[k].GetX() - loop.GetStartStation(), onAxis));
                EXPECT_NEAR(run[k].GetY(), heightOf(onAxis.point), 4e-4) << run[k].GetX();  // a millimetre off at 30 %
                EXPECT_GE(run[k].GetX(), run[k > 0 ? k - 1 : 0].GetX() - 1e-6);
            }
        }
        for (const LongSection::Row& row : section.GetRows()) {
            ASSERT_EQ(row.ground.has_value(), row.station < end) << row.station;
            EXPECT_NEAR(row.ground.value_or(heightOf(row.place)), heightOf(row.place), 1e-7) << row.station;
            EXPECT_FALSE(row.design.has_value());
        }
    }
}

TEST(TerrainTest, KrigedGridHoldsItsSamplesAndReachesRoundThem) {
    std::vector<Point3D> samples{
        {385400, 6672300, 5}, {385410, 6672300, 8}, {385405, 6672315, 2}, {385398, 6672307, 4}};
    const KrigedGrid grid(samples, 5.0, GuessModel(samples, std::nullopt, 40.0));
    const BoundingBox2D extent = grid.heights.GetBoundingBox2D();
    for (std::size_t i = 0; i < 4; ++i) {
        const Point2D place = samples[i].GetPoint2D();
        EXPECT_TRUE(extent.IsPointInside(place, 1e-6));
        double z = -1.0, deviation = -1.0;
        if (i == 3) continue;  // the others are at nodes
        ASSERT_TRUE(grid.heights.GetHeight(place, z) && grid.deviations.GetHeight(place, deviation));
        EXPECT_NEAR(z, samples[i].GetZ(), 1e-9);
        EXPECT_NEAR(deviation, 0.0, 1e-6);
    }

    EXPECT_THROW(KrigedGrid(samples, 1e-6, GuessModel(samples, 1.0, 1.0)), InputError);
    samples.push_back(samples.front());
    EXPECT_THROW(KrigedGrid(samples, 5.0, GuessModel(samples, 1.0, 1.0)), InputError);
    EXPECT_THROW(GuessModel({}, 1.0, 1.0), InputError);
}

using RealTerrainTest = RealDataTest;

TEST_F(RealTerrainTest, TheRoadsSurfaceHasTheHeightsOfItsProfile) {
    SurfaceFile file = ReadLandXmlSurfaces(data + "terrain/M3_Highest.xml");
    TurnUpward(file.surfaces.at(0).mesh);
    const LandXmlFile road = ReadLandXml(data + "landxml/M3.xml");
    const LongSection section(file.surfaces[0].mesh, road.alignments.at(0), 5.0);
    int stations = 0;
    for (const LongSection::Row& row : section.GetRows()) {
        if (!row.ground || !row.design) continue;
        EXPECT_NEAR(*row.ground, *row.design, 1e-3) << row.station;
        ++stations;
    }
    EXPECT_GE(stations, 251);
}

TEST_F(RealTerrainTest, AreasAgreeWithTheStatedOnes) {
    SurfaceFile file = ReadLandXmlSurfaces(data + "landxml/subdivision.xml");
    ASSERT_EQ(file.surfaces.size(), 2U);
    for (Surface& surface : file.surfaces) {
        TurnUpward(surface.mesh);
        const Measures measures(surface.mesh, std::nullopt);
        EXPECT_NEAR(measures.planArea / surface.statedPlanArea.value(), 1.0, 1e-9) << surface.name;
        // The points of steep faces are rounded: 5.4e-9 for the second surface also in exact arithmetic.
        EXPECT_NEAR(measures.surfaceArea / surface.statedSurfaceArea.value(), 1.0, 6e-9) << surface.name;
    }
}

}  // namespace
}  // namespace Kalvio::Examples
