#include "kalvio/curves/Parabola.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace Kalvio::Math {
namespace {

// A sag curve of 400 m at survey coordinates.
Parabola Sag() {
    Parabola sag(Point2D(0.0, 4.0), Point2D(400.0, 4.0), 1e-4, -0.04, 4.0);
    return sag.Translate(Vec2D(385000.0, 100.0));
}

void BM_ParabolaMakePointsAndTangents(benchmark::State& state) {
    const Parabola sag = Sag();
    const double samples = static_cast<double>(state.range(0));
    std::vector<IPolyline2DElement::PolylineElementPoint> points;
    for (auto _ : state) {
        points.clear();
        (void)sag.MakePointsAndTangents(sag.GetStart().GetX(), sag.GetEnd().GetX(), points, 400.0 / samples);
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ParabolaMakePointsAndTangents)->ArgName("samples")->Arg(100)->Arg(100000);

void BM_ParabolaPointAtStation(benchmark::State& state) {
    const Parabola sag = Sag();
    IPolyline2DElement::PolylineElementPoint sample;
    double station = 123.4;
    for (auto _ : state) {
        benchmark::DoNotOptimize(station);
        (void)sag.MakePointAndTangentAt(station, sample);
        benchmark::DoNotOptimize(sample);
    }
}
BENCHMARK(BM_ParabolaPointAtStation);

void BM_ParabolaStationOfPoint(benchmark::State& state) {
    const Parabola sag = Sag();
    Point2D query(385123.4, sag.Evaluate(385123.4));
    double station = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(query);
        (void)sag.GetLengthFromStartPoint(query, station, 1e-4);
        benchmark::DoNotOptimize(station);
    }
}
BENCHMARK(BM_ParabolaStationOfPoint);

}  // namespace
}  // namespace Kalvio::Math
