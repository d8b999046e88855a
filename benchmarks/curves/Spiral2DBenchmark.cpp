#include "kalvio/curves/Spiral2D.h"

#include <benchmark/benchmark.h>

namespace Kalvio::Math {
namespace {

Spiral2D Transition(benchmark::State& state) {
    return {static_cast<Spiral2D::Spiral2DType>(state.range(0)),
            0.0,
            300.0,
            75.0,
            Point2D(385000.0, 6672000.0),
            Vec2D(0.6, 0.8)};
}

void BM_Spiral2DConstruct(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(Transition(state));
}
BENCHMARK(BM_Spiral2DConstruct)->ArgName("type")->DenseRange(0, 5);

void BM_Spiral2DPointAndTangent(benchmark::State& state) {
    const Spiral2D spiral = Transition(state);
    IPolyline2DElement::PolylineElementPoint sample;
    double station = 31.4159;
    for (auto _ : state) {
        benchmark::DoNotOptimize(station);
        (void)spiral.MakePointAndTangentAt(station, sample);
        benchmark::DoNotOptimize(sample);
    }
}
BENCHMARK(BM_Spiral2DPointAndTangent)->ArgName("type")->DenseRange(0, 5);

void BM_Spiral2DNearestPoint(benchmark::State& state) {
    const Spiral2D spiral = Transition(state);
    const Tolerances tolerances(1e-4, 1e-10);
    const Point2D query = spiral.GetStart() + Vec2D(10.0, 40.0);
    for (auto _ : state) benchmark::DoNotOptimize(spiral.GetNearestPoint(query, tolerances));
}
BENCHMARK(BM_Spiral2DNearestPoint)->ArgName("type")->DenseRange(0, 5);

}  // namespace
}  // namespace Kalvio::Math
