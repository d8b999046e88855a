#include "kalvio/alignments/Alignment.h"
#include "kalvio/alignments/AlignmentDesign.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

using namespace Kalvio::Math;

namespace {

// A winding road of `count` elements between clothoids, at survey coordinates, with a profile and a cant.
Alignment MakeRoad(std::size_t count) {
    std::vector<AlignmentDesign::Corner> corners{{Point2D(385000.0, 6672000.0)}};
    for (std::size_t i = 1; corners.size() < count / 4 + 2; ++i) {
        const double bearing = i % 2 == 0 ? 0.5 : -0.4;
        const Vec2D way(420.0 * std::cos(bearing), 420.0 * std::sin(bearing));
        corners.push_back({corners.back().point + way, 250.0, 60.0, 60.0});
    }
    Polyline2D plan;
    AlignmentDesign::Fault fault;
    if (!AlignmentDesign::MakePlan(corners, plan, fault)) return Alignment();
    const double length = plan.GetLength();
    std::vector<Profile::Vertex> vertices{Profile::Vertex::Corner(0.0, 100.0)};
    std::vector<Cant::Knot> knots;
    for (double station = 300.0; station < length - 300.0; station += 300.0) {
        const double height = vertices.size() % 2 == 0 ? 100.0 : 108.0;
        vertices.push_back(Profile::Vertex::Parabola(station, height, 160.0));
        knots.push_back({station, 0.05, 0.05});
    }
    vertices.push_back(Profile::Vertex::Corner(length, 100.0));
    Profile profile;
    Cant cant;
    if (!profile.Set(vertices) || !cant.Set(knots, Cant::Pivot::Axis, 0.0)) return Alignment();
    return Alignment(plan, profile, cant);
}

std::vector<Alignment::Place> MakePlaces(const Alignment& road) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> station(0.0, road.GetLength());
    std::uniform_real_distribution<double> offset(-30.0, 30.0);
    std::vector<Alignment::Place> places(10000);
    for (Alignment::Place& place : places) place = {station(random), offset(random), 1.0};
    return places;
}

// Plan and profile alone, the measure for `BM_AlignmentPoints`.
void BM_PlanAndProfile(benchmark::State& state) {
    const Alignment road = MakeRoad(static_cast<std::size_t>(state.range(0)));
    const std::vector<Alignment::Place> places = MakePlaces(road);
    for (auto _ : state) {
        for (const Alignment::Place& place : places) {
            Point2D point;
            double height = 0.0;
            benchmark::DoNotOptimize(road.GetPlan().GetPoint(place.station, place.offset, point));
            benchmark::DoNotOptimize(road.GetProfile().GetHeight(place.station, height));
            benchmark::DoNotOptimize(point);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(places.size()));
}
BENCHMARK(BM_PlanAndProfile)->ArgName("elements")->Arg(400);

void BM_AlignmentPoints(benchmark::State& state) {
    const Alignment road = MakeRoad(static_cast<std::size_t>(state.range(0)));
    const std::vector<Alignment::Place> places = MakePlaces(road);
    std::vector<Point3D> points(places.size());
    for (auto _ : state) benchmark::DoNotOptimize(road.GetPoints(places, points));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(places.size()));
}
BENCHMARK(BM_AlignmentPoints)->ArgName("elements")->Arg(400)->Arg(40000);

void BM_AlignmentFrames(benchmark::State& state) {
    const Alignment road = MakeRoad(static_cast<std::size_t>(state.range(0)));
    const std::vector<double> stations = road.GetStationsByStep(0.0, road.GetLength(), road.GetLength() / 1e4);
    std::vector<Alignment::Frame> frames(stations.size());
    for (auto _ : state) benchmark::DoNotOptimize(road.GetFrames(stations, frames));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(stations.size()));
}
BENCHMARK(BM_AlignmentFrames)->ArgName("elements")->Arg(400);

void BM_AlignmentNearestPlaces(benchmark::State& state) {
    const Alignment road = MakeRoad(static_cast<std::size_t>(state.range(0)));
    std::vector<Alignment::Place> places = MakePlaces(road);
    std::vector<Point3D> points(places.size());
    if (road.GetPoints(places, points) < points.size()) return state.SkipWithError("no road");
    for (auto _ : state) benchmark::DoNotOptimize(road.GetNearestPlaces(points, 40.0, places));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
}
BENCHMARK(BM_AlignmentNearestPlaces)->ArgName("elements")->Arg(400)->Arg(40000);

}  // namespace
