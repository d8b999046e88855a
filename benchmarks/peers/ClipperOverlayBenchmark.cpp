#include "areas/Layers.h"

#include <benchmark/benchmark.h>

#include <polyclipping/clipper.hpp>

namespace Kalvio::Math {
namespace {

// Whole micrometres, as its coordinates are whole numbers.
ClipperLib::Path PathOf(const PlainRing& ring, double shift = 0.0) {
    constexpr double scale = 1e6;
    ClipperLib::Path path;
    for (const auto& [x, y] : ring) {
        path.emplace_back(static_cast<ClipperLib::cInt>((x + shift) * scale),
                          static_cast<ClipperLib::cInt>((y + shift) * scale));
    }
    return path;
}

void Intersect(benchmark::State& state, const ClipperLib::Path& a, const ClipperLib::Path& b) {
    for (auto _ : state) {
        ClipperLib::Clipper clipper;
        ClipperLib::PolyTree common;
        clipper.AddPath(a, ClipperLib::ptSubject, true);
        clipper.AddPath(b, ClipperLib::ptClip, true);
        benchmark::DoNotOptimize(
            clipper.Execute(ClipperLib::ctIntersection, common, ClipperLib::pftNonZero, ClipperLib::pftNonZero));
    }
}

void BM_ClipperShoresIntersection(benchmark::State& state) {
    const PlainRing shore = ShoreRing(state.range(0));
    Intersect(state, PathOf(shore), PathOf(shore, 50.0));
}
BENCHMARK(BM_ClipperShoresIntersection)->ArgName("vertices")->RangeMultiplier(10)->Range(100, 100000);

void BM_ClipperCombsIntersection(benchmark::State& state) {
    Intersect(state, PathOf(Comb(state.range(0), false)), PathOf(Comb(state.range(0), true)));
}
BENCHMARK(BM_ClipperCombsIntersection)->ArgName("teeth")->Arg(30)->Arg(300);

}  // namespace
}  // namespace Kalvio::Math
