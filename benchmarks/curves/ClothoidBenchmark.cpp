#include "kalvio/curves/Clothoid.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace Kalvio::Math {
namespace {

Clothoid Transition() { return {0.0, 300.0, 150.0, Point2D(385000.0, 6672000.0), Vec2D(0.6, 0.8)}; }

void BM_ClothoidComputePoint(benchmark::State& state) {
    const Clothoid clothoid = Transition();
    double tau = 0.7;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tau);
        benchmark::DoNotOptimize(clothoid.ComputePoint(tau, static_cast<int>(state.range(0))));
    }
}
BENCHMARK(BM_ClothoidComputePoint)->ArgName("terms")->Arg(3)->Arg(7)->Arg(20);

// The yardstick of ComputePoint: the same seven terms, written out by hand over a table of coefficients.
void BM_HandWrittenSeries(benchmark::State& state) {
    constexpr double x[] = {1.0, 1.0 / 10, 1.0 / 216, 1.0 / 9360, 1.0 / 685440, 1.0 / 76204800, 1.0 / 11975040000};
    constexpr double y[] = {1.0 / 3,       1.0 / 42,        1.0 / 1320,        1.0 / 75600,
                            1.0 / 6894720, 1.0 / 918086400, 1.0 / 168129561600};
    double parameter = 150.0;
    double tau = 0.7;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tau);
        benchmark::DoNotOptimize(parameter);
        double power = 1.0, sumX = 0.0, sumY = 0.0;
        for (int n = 0; n < 7; ++n) {
            sumX += power * x[n];
            sumY += power * y[n];
            power *= -tau * tau;
        }
        const double scale = parameter * std::sqrt(2.0 * tau);
        benchmark::DoNotOptimize(Point2D(scale * sumX, scale * tau * sumY));
    }
}
BENCHMARK(BM_HandWrittenSeries);

void BM_ClothoidMakePointsAndTangents(benchmark::State& state) {
    const Clothoid clothoid = Transition();
    std::vector<IPolyline2DElement::PolylineElementPoint> points;
    for (auto _ : state) {
        points.clear();
        (void)clothoid.MakePointsAndTangents(0.0, clothoid.GetLength(), points,
                                             clothoid.GetLength() / static_cast<double>(state.range(0)));
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ClothoidMakePointsAndTangents)->ArgName("samples")->Arg(100)->Arg(1000000);

void BM_ClothoidStationOfPoint(benchmark::State& state) {
    const Clothoid clothoid = Transition();
    IPolyline2DElement::PolylineElementPoint sample;
    (void)clothoid.MakePointAndTangentAt(31.4159, sample);
    const Point2D query = sample.point + sample.tangent.GetNormalVector(true) * static_cast<double>(state.range(0));
    double station = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(clothoid.GetLengthFromStartPoint(query, station, 1e-4));
        benchmark::DoNotOptimize(station);
    }
}
BENCHMARK(BM_ClothoidStationOfPoint)->ArgName("offset")->Arg(0)->Arg(10);

void BM_ClothoidNearestPoint(benchmark::State& state) {
    const Clothoid clothoid = Transition();
    const Tolerances tolerances(1e-4, 1e-10);
    const Point2D query = clothoid.GetStart() + Vec2D(10.0, 40.0);
    for (auto _ : state) benchmark::DoNotOptimize(clothoid.GetNearestPoint(query, tolerances));
}
BENCHMARK(BM_ClothoidNearestPoint);

}  // namespace
}  // namespace Kalvio::Math
