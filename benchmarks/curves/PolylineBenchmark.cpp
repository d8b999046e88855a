#include "curves/Road.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace Kalvio::Math {
namespace {

// A point on the last line: everything before it is rejected.
void BM_StationOnChain(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0) + 1);
    Polyline2D::PolylinePoint sample;
    (void)road.MakePointAndTangentAt(static_cast<int>(state.range(0)) / 4 * 4, 20.0, sample);
    Point2D point = sample.point;
    for (auto _ : state) {
        double station = 0.0;
        benchmark::DoNotOptimize(point);
        benchmark::DoNotOptimize(road.GetLengthFromStartPoint(point, station, 1e-4));
        benchmark::DoNotOptimize(station);
    }
    state.counters["per_element"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_StationOnChain)->ArgName("elements")->Arg(8)->Arg(100)->Arg(1000)->Arg(10000);

// The same by asking every element in turn.
void BM_StationByWalk(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0) + 1);
    Polyline2D::PolylinePoint sample;
    (void)road.MakePointAndTangentAt(static_cast<int>(state.range(0)) / 4 * 4, 20.0, sample);
    Point2D point = sample.point;
    for (auto _ : state) {
        double station = 0.0;
        benchmark::DoNotOptimize(point);
        for (unsigned int i = 0; i < road.GetNrOfElements(); ++i) {
            double onElement = 0.0;
            const IPolyline2DElement& element = road.GetElementAtIndex(i);
            if (element.GetLengthFromStartPoint(point, onElement, 1e-4)) {
                station += onElement;
                break;
            }
            station += element.GetLength();
        }
        benchmark::DoNotOptimize(station);
    }
}
BENCHMARK(BM_StationByWalk)->ArgName("elements")->Arg(8)->Arg(100);

void BM_EvaluateStations(benchmark::State& state) {
    const Polyline2D road = Road(400);
    const double step = road.GetLength() / static_cast<double>(state.range(0));
    for (auto _ : state) {
        std::vector<Polyline2D::PolylinePoint> samples;
        benchmark::DoNotOptimize(road.MakePointsAndTangents(0.0, road.GetLength(), samples, step, 1e-9));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_EvaluateStations)->ArgName("stations")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_NearestPointOnChain(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0));
    const Point2D point = road.GetMidPoint() + Vec2D(3.0, 4.0);
    const Tolerances tolerances(1e-4, 1e-10);
    for (auto _ : state) benchmark::DoNotOptimize(road.GetNearestPoint(point, tolerances));
}
BENCHMARK(BM_NearestPointOnChain)->ArgName("elements")->Arg(100)->Arg(10000);

}  // namespace
}  // namespace Kalvio::Math
