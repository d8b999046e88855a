#include "kalvio/core/Geometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

void BM_ConvexHull(benchmark::State& state) {
    std::mt19937_64 random(5);
    std::normal_distribution<double> coordinate(0.0, 1000.0);
    std::vector<Point2D> points;
    for (std::int64_t i = 0; i < state.range(0); ++i) points.emplace_back(coordinate(random), coordinate(random));
    for (auto _ : state) {
        Polygon2D hull;
        Geometry::ConvexHull(points, hull);
        benchmark::DoNotOptimize(hull);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ConvexHull)->ArgName("points")->RangeMultiplier(10)->Range(1000, 1000000)->Complexity(benchmark::oNLogN);

}  // namespace
}  // namespace Kalvio::Math
