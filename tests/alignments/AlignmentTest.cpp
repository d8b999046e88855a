#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Law = Cant::Law;

// A left curve between clothoids, a reverse Bloss transition onto a right curve, a corner, and a profile and a cant
// over all of it.
Alignment MakeRoad(const Point2D& start) {
    Polyline2D plan;
    plan.AppendElement(new Line2D(start, start + Vec2D(120.0, 50.0)));
    const Vec2D along = Vec2D(120.0, 50.0).Normalize();
    const Clothoid in(0.0, 200.0, 110.0, plan.GetEnd(), along);
    plan.AppendElement(in.Clone());
    const Arc2D left(plan.GetEnd(), plan.GetEnd() + in.GetEndTangent().GetNormalVector(true) * 200.0, Angle(0.6));
    plan.AppendElement(left.Clone());
    const Spiral2D reverse(Law::Bloss, 200.0, -150.0, 90.0, plan.GetEnd(), left.GetEndTangent());
    plan.AppendElement(reverse.Clone());
    const Vec2D on = reverse.GetEndTangent();
    const Arc2D right(plan.GetEnd(), plan.GetEnd() + on.GetNormalVector(false) * 150.0, Angle(-0.8));
    plan.AppendElement(right.Clone());
    plan.AppendElement(new Line2D(plan.GetEnd(), plan.GetEnd() + right.GetEndTangent() * 60.0));
    plan.AppendElement(new Line2D(plan.GetEnd(), plan.GetEnd() + right.GetEndTangent().GetNormalVector(true) * 70.0));
    using Vertex = Profile::Vertex;
    const Vertex vertices[] = {Vertex::Corner(0.0, 300.0), Vertex::Arc(180.0, 312.0, 900.0),
                               Vertex::Parabola(420.0, 301.0, 90.0, 40.0), Vertex::Corner(plan.GetLength(), 309.0)};
    const Cant::Knot knots[] = {
        {130, 0.025, -0.025}, {190.5, 0.06, 0.06, Law::Sine}, {310.5, 0.06, 0.06, Law::Bloss}, {400.5, -0.07, -0.07}};
    Profile profile;
    Cant cant;
    EXPECT_TRUE(profile.Set(vertices) && cant.Set(knots, Cant::Pivot::Inner, 3.5));
    return Alignment(plan, profile, cant, Stationing(1000.0));
}

TEST(AlignmentTest, PointsComeBackToTheirStations) {
    RandomNumbers random(20240601);
    for (const Point2D& origin : surveyOrigins) {
        const Alignment road = MakeRoad(origin);
        std::vector<double> stations = road.GetChanges(0.0, road.GetLength());
        for (int i = 0; i < 500; ++i) stations.push_back(random(0, road.GetLength()));
        for (const double station : stations) {
            const Alignment::Place place{station, random(-60, 60), random(-5, 5)};
            Point3D point;
            Alignment::Frame frame;
            ASSERT_TRUE(road.GetPoint(place, point) && road.GetFrame(station, frame));
            const Point3D expected = frame.position + frame.right * place.offset +
                                     Vec3D(0, 0, place.above + frame.cant.GetHeight(place.offset) - frame.cant.lift);
            EXPECT_THAT(point, IsNear(expected, 2e-9));
            EXPECT_THAT(frame.right.CrossProduct(frame.direction), IsNear(frame.up, 1e-15));
            // The frame moves as its grade and curvatures say.
            Alignment::Frame next;
            const double step = 1e-4;
            if (road.GetFrame(station + step, next) && station > 0.0 && station < road.GetLength() - 71.0) {
                const double inPlan = std::hypot(next.direction.GetX(), next.direction.GetY());
                EXPECT_NEAR(frame.right.DotProduct(next.direction) / inPlan, -frame.curvature * step, 1e-9);
                EXPECT_NEAR(next.grade - frame.grade,
                            frame.profileCurvature * std::pow(1.0 + frame.grade * frame.grade, 1.5) * step, 1e-8);
            }
            std::vector<Alignment::Place> found;
            road.GetPlaces(point, std::abs(place.offset) + 1e-6, found);
            const auto isSame = [&](const Alignment::Place& p) {
                return std::abs(p.station - station) < 1e-8 && std::abs(p.offset - place.offset) < 1e-8 &&
                       std::abs(p.above - place.above) < 1e-8;
            };
            // Abeam of the corner, to its inside, the way back is nearer.
            const bool isCorner = std::abs(station - (road.GetLength() - 70.0)) < 1e-9;
            EXPECT_TRUE(isCorner || std::ranges::any_of(found, isSame)) << "station " << station;
            Alignment::Place nearest;
            if (found.empty()) continue;
            ASSERT_TRUE(road.GetNearestPlace(point, 61.0, nearest));
            EXPECT_EQ(nearest.offset, found.front().offset);
        }
    }
}

TEST(AlignmentTest, PlacesAreTheMinimaOfTheDistance) {
    RandomNumbers random(20240601);
    const Alignment road = MakeRoad(Point2D());
    constexpr double step = 0.05;
    std::vector<Point2D> samples;
    for (const double station : road.GetStationsByStep(0.0, road.GetLength(), step)) {
        ASSERT_TRUE(road.GetPoint(station, 0.0, samples.emplace_back()));
    }
    for (int i = 0; i < 100; ++i) {
        // First where rounding about a maximum in the transition once showed a minimum.
        const Point2D q =
            i == 0 ? Point2D(-43.47758982832076, 290.77728345615083) : Point2D(random(-200, 800), random(-300, 700));
        const double reach = 400.0;
        std::vector<double> minima;
        for (std::size_t k = 1; k + 1 < samples.size(); ++k) {
            const double d = samples[k].Distance(q);
            if (d <= reach && d < samples[k - 1].Distance(q) && d <= samples[k + 1].Distance(q)) {
                minima.push_back(step * static_cast<double>(k));
            }
        }
        std::vector<Alignment::Place> places;
        road.GetPlaces(Point3D(q, 0.0), reach, places);
        std::vector<double> stations;
        for (const Alignment::Place& place : places) stations.push_back(place.station);
        std::sort(stations.begin(), stations.end());
        EXPECT_THAT(stations, testing::Pointwise(testing::DoubleNear(2.0 * step), minima))
            << q.GetX() << ' ' << q.GetY();
    }
    Point2D p;
    std::vector<Alignment::Place> places;
    ASSERT_TRUE(road.GetPoint(road.GetLength() - 5e-5, 2.0, p));
    road.GetPlaces(Point3D(p, 0.0), 3.0, places);
    EXPECT_EQ(places.size(), 1U) << "the foot and the end";
}

TEST(AlignmentTest, StationsByHeightKeepTheirChordsNearTheAxis) {
    const Alignment road = MakeRoad(Point2D());
    const Alignment axis(road.GetPlan(), road.GetProfile());
    for (const double height : {0.5, 0.01, 1e-4}) {
        const std::vector<double> stations = axis.GetStationsByHeight(0.0, axis.GetLength(), height);
        double near = 0.0, chords = 0.0;
        for (std::size_t i = 1; i < stations.size(); ++i) {
            Point3D ends[2], middle;
            const Alignment::Place places[] = {{stations[i - 1]}, {stations[i]}};
            ASSERT_EQ(axis.GetPoints(places, ends), 2U);
            ASSERT_TRUE(axis.GetPoint({0.5 * (stations[i - 1] + stations[i])}, middle));
            const Vec3D chord = ends[1] - ends[0];
            const double away = chord.CrossProduct(middle - ends[0]).Length() / chord.Length();
            EXPECT_LE(away, height * (1.0 + 1e-9));
            near += away > 0.3 * height ? 1.0 : 0.0;
            chords += chord.Length();
        }
        const auto changes = static_cast<double>(axis.GetChanges(0.0, axis.GetLength()).size());
        EXPECT_LE(static_cast<double>(stations.size()), 1.1 * near + 2.0 * changes) << "no more than it takes";
        EXPECT_GE(axis.GetSpaceLength(0.0, axis.GetLength()), chords);
        EXPECT_NEAR(axis.GetSpaceLength(0.0, axis.GetLength()), chords, 0.7 * height);
    }
}

TEST(AlignmentTest, ApproachesAreTheNearestOfAllPairs) {
    RandomNumbers random(20240601);
    for (int i = 0; i < 40; ++i) {
        const Alignment road = MakeRoad(surveyOrigins[i % 2]);
        Alignment other = MakeRoad(surveyOrigins[i % 2] + Vec2D(random(-300, 300), random(-300, 300)));
        Polyline2D turned = other.GetPlan();
        if (i % 3 == 0) turned.Reverse();
        // Of some the profile ends early; of some the roads meet, or one lies over the other.
        if (i % 5 == 0) turned = road.GetPlan();
        Profile profile;
        ASSERT_TRUE(profile.Set(std::vector{Profile::Vertex::Corner(-1.0, 290.0 + random(0, 10)),
                                            Profile::Vertex::Clothoids(random(150, 200), 305.0, 2000.0, 1.0, 2.0),
                                            Profile::Vertex::Corner(turned.GetLength() - random(0, 200), 310.0)}));
        other = Alignment(turned, profile);
        const Alignment axis(road.GetPlan(), road.GetProfile());
        std::vector<Point3D> samples[2];
        for (const int k : {0, 1}) {
            const Alignment& sampled = k == 0 ? axis : other;
            for (const double station : sampled.GetStationsByStep(0.0, sampled.GetLength(), 2.0)) {
                Point3D point;
                if (sampled.GetPoint({station}, point)) samples[k].push_back(point);
            }
        }
        double least = kInfinity;
        for (const Point3D& p : samples[0]) {
            for (const Point3D& q : samples[1]) least = std::min(least, p.Distance(q));
        }
        Alignment::Approach approach, back;
        ASSERT_TRUE(road.GetNearestApproach(other, 1e-6, approach) && other.GetNearestApproach(road, 1e-6, back));
        EXPECT_LE(approach.distance, least + 1e-6);
        EXPECT_GE(approach.distance, least - 3.0) << "a step of either";
        EXPECT_NEAR(approach.distance, back.distance, 1e-6);
        Point3D from, to;
        ASSERT_TRUE(axis.GetPoint({approach.station}, from) && other.GetPoint({approach.otherStation}, to));
        EXPECT_THAT(approach.point, IsNear(from, 3e-9));
        EXPECT_NEAR(approach.distance, from.Distance(to), 3e-9);
        for (const Alignment::Crossing& crossing : road.GetCrossings(other, kTolerances)) {
            Point2D here, there;
            double low = 0.0, high = 0.0;
            EXPECT_TRUE(road.GetPoint(crossing.station, 0.0, here) && here.IsEqualTo(crossing.point, 1e-4));
            EXPECT_TRUE(other.GetPoint(crossing.otherStation, 0.0, there) && there.IsEqualTo(crossing.point, 1e-4));
            if (!crossing.hasClearance) continue;
            ASSERT_TRUE(road.GetHeight(crossing.station, 0.0, low) &&
                        other.GetHeight(crossing.otherStation, 0.0, high));
            EXPECT_EQ(crossing.clearance, high - low);
        }
    }
    Alignment::Approach approach;
    const Alignment road = MakeRoad(Point2D());
    EXPECT_FALSE(road.GetNearestApproach(Alignment(road.GetPlan()), 1e-6, approach));
    EXPECT_FALSE(road.GetNearestApproach(road, 0.0, approach));
    EXPECT_TRUE(road.GetNearestApproach(road, 1e-9, approach) && approach.distance == 0.0);
    // Nearest at the end before a gap, whose station is that of the start behind it too.
    Polyline2D torn, across;
    for (const double y : {0.0, 50.0}) torn.AppendElement(Line2D(Point2D(y, y), Vec2D(50, 0)));
    across.AppendElement(Line2D(Point2D(53, -9), Vec2D(0, 18)));
    Profile level, above;
    ASSERT_TRUE(level.Set(std::vector<Profile::Vertex>{{0, 1}, {100, 1}}) &&
                above.Set(std::vector<Profile::Vertex>{{0, 5}, {18, 5}}));
    ASSERT_TRUE(Alignment(torn, level).GetNearestApproach(Alignment(across, above), 1e-6, approach));
    EXPECT_EQ(approach.point.Distance(approach.otherPoint), 5.0);
    EXPECT_EQ(approach.distance, 5.0);
}

TEST(AlignmentTest, TheInnerEdgeKeepsTheProfile) {
    const Alignment road = MakeRoad(Point2D());
    for (const double station : {250.0, 420.0}) {
        double profile = 0.0, inner = 0.0, outer = 0.0;
        const double side = station < 350.0 ? -3.5 : 3.5;  // of the centre
        ASSERT_TRUE(road.GetProfile().GetHeight(station, profile) && road.GetHeight(station, side, inner) &&
                    road.GetHeight(station, -side, outer));
        EXPECT_NEAR(inner, profile, 1e-12);
        EXPECT_NEAR(outer, profile + 7.0 * (station < 350.0 ? 0.06 : 0.07), 1e-12);
    }
    EXPECT_NEAR(road.GetCant().GetPlace(130.0 + 0.5 * 60.5).right, 0.5 * (0.06 - 0.025), 1e-15);
}

TEST(AlignmentTest, WhatCannotBeAnsweredIsSaidAndTouchesNothing) {
    Polyline2D sag, nowhere;
    sag.AppendElement(new Parabola(Point2D(0, 0), Point2D(10, 1), 0.01, 0.0, 0.0));
    nowhere.AppendElement(new Line2D(Point2D(0, 0), Point2D(kNan, 0)));
    for (const Alignment& road : {Alignment(), Alignment(sag), Alignment(nowhere)}) {
        Point2D point(7, 7);
        Alignment::Place place{7.0};
        EXPECT_FALSE(road.GetPoint(0.0, 0.0, point) || road.GetNearestPlace(Point3D(1, 1, 1), 100.0, place));
        EXPECT_TRUE(point.GetX() == 7.0 && place.station == 7.0);
        EXPECT_TRUE(road.GetChanges(0.0, 1.0).empty() && road.GetStationsByHeight(0.0, 1.0, 0.1).empty());
    }
    Alignment road = MakeRoad(Point2D());
    Alignment::Frame frame;
    EXPECT_FALSE(road.GetFrame(road.GetLength() + 1e-6, frame) || road.GetFrame(kNan, frame));
    EXPECT_TRUE(road.GetStationsByStep(0.0, 100.0, 0.0).empty() && road.GetStationsByStep(0.0, 100.0, 1e-6).empty());
    const Alignment copy = road;  // answers for itself once the other has gone
    road = Alignment();
    EXPECT_TRUE(copy.GetFrame(100.0, frame));
}

TEST(AlignmentTest, CrossLinesLieOnTheSurface) {
    const Alignment road = MakeRoad(surveyOrigins[1]);
    Line2D plan;
    for (double station = 5.0; station < road.GetLength(); station += 31.0) {
        LineString3D line;
        const Alignment::Place places[] = {{station, -8.0}, {station}, {station, 6.0}};
        Point3D points[3];
        ASSERT_TRUE(road.GetCrossLine(station, -8.0, 6.0, line) && road.GetPoints(places, points) == 3);
        EXPECT_THAT(line.GetPoints(), testing::Pointwise(AreNear(1e-12), points));
        ASSERT_TRUE(road.GetCrossLine(station, 6.0, -8.0, plan));
        EXPECT_THAT(plan.GetEnd(), IsNear(line[0].GetPoint2D(), 1e-12));
        EXPECT_TRUE(road.GetCrossLine(station, 1.0, 6.0, line) && line.size() == 2);
        EXPECT_FALSE(road.GetCrossLine(station, 6.0, 6.0, plan));
    }
    EXPECT_FALSE(road.GetCrossLine(road.GetLength() + 1.0, 0.0, 1.0, plan));
}

// In a bend, where the outer ground counts more: against the exact volumes over the strip of the sections.
TEST(AlignmentTest, EarthworkOfNearSectionsIsWhatLiesBetweenSurfaces) {
    RandomNumbers random(20240601);
    TinSurfacePatch3D::Ground rough, level{{{-99, -99, 0}, {99, -99, 0}, {-99, 99, 0}, {99, 99, 0}}, {}, {}, {}, 0.0};
    for (int i = 0; i < 300; ++i) rough.points.emplace_back(random(-90, 90), random(-90, 90), random(-2, 3));
    TinSurfacePatch3D ground, design;
    ASSERT_TRUE(ground.Build(rough, kTolerances) && design.Build(level, kTolerances));
    Polyline2D plan;
    plan.AppendElement(new Arc2D({50, 0}, {0, 0}, Angle(kPi / 2)));
    const Alignment road(plan);
    std::vector<CrossSections::Section> sections;
    std::vector<CrossSections::Mass> masses;
    TinSurfacePatch3D::Volumes exact;
    const std::vector<double> stations = road.GetStationsByStep(0, road.GetLength(), 0.1);
    std::vector<Point2D> strip(2 * stations.size());
    for (std::size_t i = 0; i < stations.size(); ++i) {
        ASSERT_TRUE(road.GetPoint(stations[i], 12, strip[i]));
        ASSERT_TRUE(road.GetPoint(stations[i], -8, strip[strip.size() - 1 - i]));
    }
    ASSERT_TRUE(CrossSections::Make(road, stations, -8, 12, ground, design, sections));
    ASSERT_TRUE(CrossSections::GetMasses(sections, masses) && ground.GetVolumes(design, Polygon2D(strip), exact));
    EXPECT_NEAR(masses.back().volume.cut, exact.cut, 1e-4 * exact.cut);
    EXPECT_NEAR(masses.back().volume.fill, exact.fill, 1e-4 * exact.fill);
    EXPECT_FALSE(CrossSections::Make(road, {200}, -8, 12, ground, design, sections) ||
                 CrossSections::Make(road, {1}, 8, -12, ground, design, sections) ||
                 CrossSections::Make(road, {1}, -1e71, 12, ground, design, sections));
    sections.resize(1);
    sections[0].station = kNan;
    EXPECT_FALSE(CrossSections::GetMasses(sections, masses));
}

}  // namespace
}  // namespace Kalvio::Math
