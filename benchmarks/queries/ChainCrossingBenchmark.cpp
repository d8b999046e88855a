#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/Intersection.h"
#include "polygons/Rings.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

std::vector<Point2D> PointsOf(const std::vector<std::pair<double, double>>& coordinates, double shift) {
    std::vector<Point2D> points;
    for (const auto& [x, y] : coordinates) points.emplace_back(x + shift, y + shift);
    return points;
}

Polygon2D Archipelago(std::int64_t count, double shift) {
    Polygon2D polygon(PointsOf(ShoreRing(count), shift));
    for (const auto& island : Islands(count)) polygon.AppendHoleBoundary(LineString2D(PointsOf(island, shift)));
    return polygon;
}

void BM_LineStringLineString(benchmark::State& state) {
    const LineString2D a(PointsOf(RoughChain(state.range(0), 40.0), 0.0));
    const LineString2D b(PointsOf(RoughChain(state.range(0), 33.0), 0.0));
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::LineStringLineString(a, b, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_LineStringLineString)
    ->ArgName("segments")
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);

// Many short chains all over a square: contour lines cut into tiles.
void BM_LineStrings(benchmark::State& state) {
    std::vector<LineString2D> strings;
    for (const auto& [x, y] : SpreadPoints(state.range(0))) {
        strings.emplace_back();
        for (const auto& [u, v] : RoughChain(10, 1.0 + static_cast<double>(strings.size() % 5))) {
            strings.back().AppendPoint(Point2D(x + u, y + 0.01 * v));
        }
    }
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::LineStrings(strings, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_LineStrings)->ArgName("strings")->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMicrosecond);

void BM_PolygonPolygon(benchmark::State& state) {
    const Polygon2D a = Archipelago(state.range(0), 0.0);
    const Polygon2D b = Archipelago(state.range(0), 20.0);
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::PolygonPolygon(a, b, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_PolygonPolygon)
    ->ArgName("vertices")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
