#include "kalvio/areas/BufferCreator.h"

#include "areas/Layers.h"

#include "kalvio/core/Tolerances.h"

#include <benchmark/benchmark.h>

namespace Kalvio::Math {
namespace {

const Tolerances tolerances(1e-6, 1e-10);

LineString2D StringOf(const PlainRing& ring) {
    LineString2D string;
    for (const auto& [x, y] : ring) string.AppendPoint(Point2D(x, y));
    return string;
}

// The distance in thousandths of the extent.
template <class Source>
void Buffer(benchmark::State& state, const Source& source) {
    const auto distance = static_cast<double>(state.range(1));
    std::vector<Polygon2D> buffer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            BufferCreator::Create(source, distance, bufferHeight * std::abs(distance), buffer, tolerances));
    }
}

void BM_ShoreBuffer(benchmark::State& state) {
    Buffer(state, Polygon2D(StringOf(ShoreRing(state.range(0))).GetPoints()));
}
BENCHMARK(BM_ShoreBuffer)->ArgNames({"vertices", "distance"})->ArgsProduct({{1000, 10000, 100000}, {1, 20, -20}});

void BM_ShoreLineBuffer(benchmark::State& state) { Buffer(state, StringOf(ShoreRing(state.range(0)))); }
BENCHMARK(BM_ShoreLineBuffer)->ArgNames({"vertices", "distance"})->ArgsProduct({{1000, 10000, 100000}, {1, 20}});

void BM_ShoreBufferOfArcs(benchmark::State& state) {
    const Polygon2D shore(StringOf(ShoreRing(state.range(0))).GetPoints());
    std::vector<PolygonCurve2D> buffer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(BufferCreator::Create(shore, static_cast<double>(state.range(1)), buffer, tolerances));
    }
}
BENCHMARK(BM_ShoreBufferOfArcs)->ArgNames({"vertices", "distance"})->ArgsProduct({{1000, 10000}, {1, 20}});

}  // namespace
}  // namespace Kalvio::Math
