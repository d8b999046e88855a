#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

Polygon2D Shore(std::int64_t count) {
    Polygon2D polygon;
    for (const auto& [x, y] : ShoreRing(count)) polygon.AppendPoint(Point2D(x, y));
    return polygon;
}

// Points spread over the extent, without a grid: one pass per point.
void BM_PolygonIsPointInside(benchmark::State& state) {
    const Polygon2D polygon = Shore(state.range(0));
    const auto queries = SpreadPoints(256);
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [x, y] = queries[next++ % queries.size()];
        benchmark::DoNotOptimize(polygon.IsPointInside(Point2D(x, y), 1e-4));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonIsPointInside)->ArgName("vertices")->Arg(10)->Arg(100)->Arg(1000)->Arg(100000);

template <class Measure>
void RunMeasure(benchmark::State& state, Measure measure) {
    const Polygon2D polygon = Shore(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(measure(polygon));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_PolygonGetArea(benchmark::State& state) {
    RunMeasure(state, [](const Polygon2D& polygon) { return polygon.GetArea(); });
}
BENCHMARK(BM_PolygonGetArea)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_PolygonGetCentroid(benchmark::State& state) {
    RunMeasure(state, [](const Polygon2D& polygon) { return polygon.GetCentroid(); });
}
BENCHMARK(BM_PolygonGetCentroid)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_PolygonGetMaxWidth(benchmark::State& state) {
    RunMeasure(state, [](const Polygon2D& polygon) { return polygon.GetMaxWidth(1e-10); });
}
BENCHMARK(BM_PolygonGetMaxWidth)->ArgName("vertices")->Arg(1000)->Arg(100000);

void BM_PolygonValidate(benchmark::State& state) {
    RunMeasure(state, [](const Polygon2D& polygon) {
        Point2D where;
        return polygon.Validate(where, true, 1e-9);
    });
}
BENCHMARK(BM_PolygonValidate)->ArgName("vertices")->Arg(1000)->Arg(100000);

void BM_PolygonGetPointInsideBoundary(benchmark::State& state) {
    RunMeasure(state, [](const Polygon2D& polygon) {
        Point2D inside;
        (void)polygon.GetPointInsideBoundary(inside, 1e-6);
        return inside.GetX();
    });
}
BENCHMARK(BM_PolygonGetPointInsideBoundary)->ArgName("vertices")->Arg(1000)->Arg(100000);

void BM_PolygonTriangulate(benchmark::State& state) {
    const Polygon3D polygon(Shore(state.range(0)), 0.0);
    std::vector<unsigned int> corners;
    for (auto _ : state) benchmark::DoNotOptimize(polygon.Triangulate(corners, 1e-10));
    if (corners.size() / 3 + 2 != polygon.GetSize()) state.SkipWithError("not triangulated");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonTriangulate)->ArgName("vertices")->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000);

// Narrow strips side by side: every edge crosses many triangles of the points alone.
void BM_PolygonTriangulateComb(benchmark::State& state) {
    std::vector<Point3D> ring{Point3D(0, 0, 0)};
    for (std::int64_t i = 0; i < state.range(0) / 2; ++i) {
        ring.emplace_back(static_cast<double>(i), 1.0, 0.0);
        ring.emplace_back(static_cast<double>(i) + 0.5, 5000.0, 0.0);
    }
    ring.emplace_back(ring.back().GetX(), 0, 0);
    const Polygon3D polygon(ring);
    std::vector<unsigned int> corners;
    for (auto _ : state) benchmark::DoNotOptimize(polygon.Triangulate(corners, 1e-10));
    if (corners.size() / 3 + 2 != polygon.GetSize()) state.SkipWithError("not triangulated");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PolygonTriangulateComb)->ArgName("vertices")->Arg(1000)->Arg(10000);

}  // namespace
}  // namespace Kalvio::Math
