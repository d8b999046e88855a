// Times are per place of the grid: run with --benchmark_counters_tabular=true and read "per place".
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/ExponentialVariogramModel.h"
#include "kalvio/statistics/KrigingSystem.h"
#include "kalvio/statistics/LocalKriging.h"
#include "kalvio/statistics/OrdinaryKriging.h"
#include "statistics/KrigingSamples.h"

#include <benchmark/benchmark.h>

namespace Kalvio::Math {
namespace {

std::vector<Point3D> Samples(const benchmark::State& state) {
    std::vector<Point3D> samples;
    for (const auto& [x, y, z] : Benchmarks::ScatteredSamples(static_cast<std::size_t>(state.range(0)))) {
        samples.emplace_back(x, y, z);
    }
    return samples;
}

OrdinaryKriging Kriging() {
    return OrdinaryKriging(new ExponentialVariogramModel(Benchmarks::sill, Benchmarks::range));
}

// Runs `prepare()` once and `estimate(place)` on the whole grid.
template <class Prepare, class Estimate>
void OverGrid(benchmark::State& state, const Prepare& prepare, const Estimate& estimate) {
    for (auto _ : state) {
        if (!prepare()) state.SkipWithError("no system");
        for (int row = 0; row < Benchmarks::gridSide; ++row) {
            for (int column = 0; column < Benchmarks::gridSide; ++column) {
                const Point2D place((column + 0.5) * Benchmarks::gridStep, (row + 0.5) * Benchmarks::gridStep);
                if (!estimate(place)) state.SkipWithError("no estimate");
            }
        }
    }
    state.counters["per place"] =
        benchmark::Counter(Benchmarks::gridSide * Benchmarks::gridSide,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_OrdinaryKrigingInterpolate(benchmark::State& state) {
    const OrdinaryKriging kriging = Kriging();
    const std::vector<Point3D> samples = Samples(state);
    OverGrid(
        state, [] { return true; },
        [&](const Point2D& place) {
            double value = 0.0;
            const bool done = kriging.Interpolate(place, samples, value);
            benchmark::DoNotOptimize(value);
            return done;
        });
}
BENCHMARK(BM_OrdinaryKrigingInterpolate)
    ->ArgName("samples")
    ->RangeMultiplier(2)
    ->Range(4, 64)
    ->Unit(benchmark::kMillisecond);

// The system is built within the time of its grid.
void BM_KrigingSystemValue(benchmark::State& state) {
    const OrdinaryKriging kriging = Kriging();
    const std::vector<Point3D> samples = Samples(state);
    KrigingSystem system;
    OverGrid(
        state, [&] { return system.Build(kriging, samples); },
        [&](const Point2D& place) {
            double value = 0.0;
            const bool done = system.Interpolate(place, value);
            benchmark::DoNotOptimize(value);
            return done;
        });
}
BENCHMARK(BM_KrigingSystemValue)
    ->ArgName("samples")
    ->Arg(8)
    ->Arg(32)
    ->Arg(128)
    ->Arg(512)
    ->Unit(benchmark::kMillisecond);

void BM_KrigingSystemVariance(benchmark::State& state) {
    const OrdinaryKriging kriging = Kriging();
    const std::vector<Point3D> samples = Samples(state);
    KrigingSystem system;
    OverGrid(
        state, [&] { return system.Build(kriging, samples); },
        [&](const Point2D& place) {
            double value = 0.0;
            double variance = 0.0;
            const bool done = system.Interpolate(place, value, variance);
            benchmark::DoNotOptimize(value);
            benchmark::DoNotOptimize(variance);
            return done;
        });
}
BENCHMARK(BM_KrigingSystemVariance)
    ->ArgName("samples")
    ->Arg(8)
    ->Arg(32)
    ->Arg(128)
    ->Arg(512)
    ->Unit(benchmark::kMillisecond);

// A grid of a million nodes, each from its 16 nearest samples.
void BM_LocalKriging(benchmark::State& state) {
    constexpr int side = 1000;
    const std::vector<Point3D> samples = Samples(state);
    for (auto _ : state) {
        LocalKriging local;
        if (!local.Build(Kriging(), samples, 16)) state.SkipWithError("not built");
        double sum = 0.0;
        for (int row = 0; row < side; ++row) {
            for (int column = 0; column < side; ++column) {
                double value = 0.0;
                double variance = 0.0;
                if (!local.Interpolate(Point2D(column + 0.5, row + 0.5), value, variance)) {
                    state.SkipWithError("no estimate");
                }
                sum += value;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["per place"] =
        benchmark::Counter(side * side, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_LocalKriging)->ArgName("samples")->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Kalvio::Math
