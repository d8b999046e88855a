#include "kalvio/areas/PolygonsBooleanOperation.h"

#include "areas/Layers.h"

#include "kalvio/core/Angle.h"
#include "kalvio/curves/Arc2D.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <numbers>

namespace Kalvio::Math {
namespace {

const Tolerances tolerances(1e-6, 1e-10);

Polygon2D PolygonOf(const PlainRing& ring, double shift = 0.0) {
    Polygon2D polygon;
    for (const auto& [x, y] : ring) polygon.AppendPoint(Point2D(x + shift, y + shift));
    return polygon;
}

void Intersect(benchmark::State& state, const Polygon2D& a, const Polygon2D& b) {
    std::vector<Polygon2D> common;
    for (auto _ : state) {
        benchmark::DoNotOptimize(PolygonsBooleanOperation::Intersection(a, b, common, tolerances));
    }
}

void BM_ShoresIntersection(benchmark::State& state) {
    const PlainRing shore = ShoreRing(state.range(0));
    Intersect(state, PolygonOf(shore), PolygonOf(shore, 50.0));
}
BENCHMARK(BM_ShoresIntersection)->ArgName("vertices")->RangeMultiplier(10)->Range(100, 1000000);

void BM_CombsIntersection(benchmark::State& state) {
    Intersect(state, PolygonOf(Comb(state.range(0), false)), PolygonOf(Comb(state.range(0), true)));
}
BENCHMARK(BM_CombsIntersection)->ArgName("teeth")->Arg(30)->Arg(300);

void BM_ParcelsUnion(benchmark::State& state) {
    std::vector<Polygon2D> parcels;
    for (const PlainRing& ring : Parcels(state.range(0))) parcels.push_back(PolygonOf(ring));
    std::vector<Polygon2D> united;
    for (auto _ : state) benchmark::DoNotOptimize(PolygonsBooleanOperation::Union(parcels, united, tolerances));
}
BENCHMARK(BM_ParcelsUnion)->ArgName("side")->Arg(10)->Arg(100);

void BM_DiscsUnion(benchmark::State& state) {
    std::vector<PolygonCurve2D> discs;
    for (const PlainDisc& disc : Discs(state.range(0))) {
        const Point2D center(disc.x, disc.y);
        RingCurve2D ring;
        for (const double side : {disc.radius, -disc.radius}) {
            auto half = std::make_unique<Arc2D>(Point2D(disc.x + side, disc.y), center, Angle(std::numbers::pi));
            if (ring.AppendElement(half.get())) (void)half.release();
        }
        discs.emplace_back(ring);
    }
    std::vector<PolygonCurve2D> united;
    for (auto _ : state) benchmark::DoNotOptimize(PolygonsBooleanOperation::Union(discs, united, tolerances));
}
BENCHMARK(BM_DiscsUnion)->ArgName("discs")->Arg(100)->Arg(1000);

}  // namespace
}  // namespace Kalvio::Math
