#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace Kalvio::Math {
namespace {

// Line, clothoid, arc, clothoid, to the left and to the right in turn: about 50 m an element.
Polyline2D Road(std::int64_t elements) {
    Polyline2D road;
    Point2D at(385000.0, 6672000.0);
    Vec2D along(1.0, 0.0);
    for (std::int64_t i = 0; i < elements; ++i) {
        const double radius = (i / 4) % 2 == 0 ? 300.0 : -300.0;
        const double parameter = Clothoid::ComputeParameter(300.0, 50.0);
        switch (i % 4) {
            case 0:
                road.AppendElement(new Line2D(at, along * 50.0));
                break;
            case 1:
                road.AppendElement(new Clothoid(0.0, radius, parameter, at, along));
                break;
            case 2:
                road.AppendElement(new Arc2D(at, at + along.GetNormalVector(true) * radius, Angle(50.0 / radius)));
                break;
            default:
                road.AppendElement(new Clothoid(radius, 0.0, parameter, at, along));
        }
        Polyline2D::PolylinePoint sample;
        road.MakePointAndTangentAt(static_cast<int>(i),
                                   road.GetElementAtIndex(static_cast<unsigned int>(i)).GetLength(), sample);
        at = road.GetEnd();
        along = sample.tangent;
    }
    return road;
}

// A point on the last line: everything before it is rejected.
void BM_StationOnChain(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0) + 1);
    Polyline2D::PolylinePoint sample;
    road.MakePointAndTangentAt(static_cast<int>(state.range(0)) / 4 * 4, 20.0, sample);
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
    road.MakePointAndTangentAt(static_cast<int>(state.range(0)) / 4 * 4, 20.0, sample);
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
