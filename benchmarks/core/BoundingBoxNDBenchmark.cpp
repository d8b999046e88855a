#include "kalvio/core/BoundingBoxND.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

// The work of an index while it walks a node: one query box against the boxes of the node's items.
void BM_BoundingBoxNDIntersects(benchmark::State& state) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> coordinate(0.0, 1000.0);
    const auto dimension = static_cast<unsigned int>(state.range(0));
    std::vector<BoundingBoxND> boxes;
    for (int i = 0; i < 1000; ++i) {
        PointND low(dimension);
        for (unsigned int axis = 0; axis < dimension; ++axis) low.SetCoordinate(axis, coordinate(random));
        boxes.emplace_back(low, PointND(low.GetCoordinates()));
    }
    const BoundingBoxND query(PointND(dimension), PointND(std::vector<double>(dimension, 500.0)));
    for (auto _ : state) {
        std::size_t hits = 0;
        for (const BoundingBoxND& box : boxes) hits += query.Intersects(box) ? 1U : 0U;
        benchmark::DoNotOptimize(hits);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(boxes.size()));
}
BENCHMARK(BM_BoundingBoxNDIntersects)->ArgName("dimension")->Arg(2)->Arg(3)->Arg(8);

}  // namespace
}  // namespace Kalvio::Math
