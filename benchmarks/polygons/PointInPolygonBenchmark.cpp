#include "kalvio/polygons/PointInPolygon.h"
#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

LineString2D RingOf(const std::vector<std::pair<double, double>>& source) {
    LineString2D ring;
    for (const auto& [x, y] : source) ring.AppendPoint(Point2D(x, y));
    return ring;
}

Polygon2D Archipelago(std::int64_t count) {
    Polygon2D polygon(RingOf(ShoreRing(count)));
    for (const auto& island : Islands(count)) polygon.AppendHoleBoundary(RingOf(island));
    return polygon;
}

// Twice as many rows as the root of the vertices: the cells cost about as much as the vertices.
std::uint64_t RowsFor(std::int64_t count) {
    return static_cast<std::uint64_t>(2.0 * std::sqrt(static_cast<double>(count)));
}

void RunQueries(benchmark::State& state, const std::vector<std::pair<double, double>>& queries) {
    const PointInPolygon tester(Archipelago(state.range(0)), RowsFor(state.range(0)), 1e-4);
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [x, y] = queries[next++ % queries.size()];
        benchmark::DoNotOptimize(tester.IsPointInside(Point2D(x, y), 1e-4));
    }
}

void BM_PointInPolygonSpread(benchmark::State& state) { RunQueries(state, SpreadPoints(1 << 16)); }
BENCHMARK(BM_PointInPolygonSpread)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_PointInPolygonBeside(benchmark::State& state) { RunQueries(state, BesidePoints(state.range(0), 1 << 16)); }
BENCHMARK(BM_PointInPolygonBeside)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_PointInPolygonBuild(benchmark::State& state) {
    const Polygon2D polygon = Archipelago(state.range(0));
    PointInPolygon tester;
    for (auto _ : state) {
        tester.Recompute(polygon, RowsFor(state.range(0)), 1e-4);
        benchmark::DoNotOptimize(tester.GetGrid().GetRows());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PointInPolygonBuild)
    ->ArgName("vertices")
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
