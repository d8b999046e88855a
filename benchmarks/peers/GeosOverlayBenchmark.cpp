#include "areas/Layers.h"

#include <benchmark/benchmark.h>

#include <geos_c.h>

namespace Kalvio::Math {
namespace {

// Geometries live until the program ends.
GEOSContextHandle_t Handle() {
    static const GEOSContextHandle_t handle = GEOS_init_r();
    return handle;
}

GEOSGeometry* PolygonOf(const PlainRing& ring, double shift = 0.0) {
    std::vector<double> values;
    for (const auto& [x, y] : ring) values.insert(values.end(), {x + shift, y + shift});
    values.insert(values.end(), {values[0], values[1]});
    GEOSCoordSequence* const points =
        GEOSCoordSeq_copyFromBuffer_r(Handle(), values.data(), static_cast<unsigned int>(ring.size() + 1), 0, 0);
    return GEOSGeom_createPolygon_r(Handle(), GEOSGeom_createLinearRing_r(Handle(), points), nullptr, 0);
}

void Intersect(benchmark::State& state, const GEOSGeometry* a, const GEOSGeometry* b) {
    for (auto _ : state) {
        GEOSGeometry* const common = GEOSIntersection_r(Handle(), a, b);
        benchmark::DoNotOptimize(common);
        GEOSGeom_destroy_r(Handle(), common);
    }
}

void BM_GeosShoresIntersection(benchmark::State& state) {
    const PlainRing shore = ShoreRing(state.range(0));
    Intersect(state, PolygonOf(shore), PolygonOf(shore, 50.0));
}
BENCHMARK(BM_GeosShoresIntersection)->ArgName("vertices")->RangeMultiplier(10)->Range(100, 1000000);

void BM_GeosCombsIntersection(benchmark::State& state) {
    Intersect(state, PolygonOf(Comb(state.range(0), false)), PolygonOf(Comb(state.range(0), true)));
}
BENCHMARK(BM_GeosCombsIntersection)->ArgName("teeth")->Arg(30)->Arg(300);

void BM_GeosParcelsUnion(benchmark::State& state) {
    std::vector<GEOSGeometry*> parcels;
    for (const PlainRing& ring : Parcels(state.range(0))) parcels.push_back(PolygonOf(ring));
    const GEOSGeometry* const all = GEOSGeom_createCollection_r(Handle(), GEOS_MULTIPOLYGON, parcels.data(),
                                                                static_cast<unsigned int>(parcels.size()));
    for (auto _ : state) {
        GEOSGeometry* const united = GEOSUnaryUnion_r(Handle(), all);
        benchmark::DoNotOptimize(united);
        GEOSGeom_destroy_r(Handle(), united);
    }
}
BENCHMARK(BM_GeosParcelsUnion)->ArgName("side")->Arg(10)->Arg(100);

// Eight chords a quarter turn.
void Buffer(benchmark::State& state, const GEOSGeometry* source) {
    for (auto _ : state) {
        GEOSGeometry* const buffer = GEOSBuffer_r(Handle(), source, static_cast<double>(state.range(1)), 8);
        benchmark::DoNotOptimize(buffer);
        GEOSGeom_destroy_r(Handle(), buffer);
    }
}

void BM_GeosShoreBuffer(benchmark::State& state) { Buffer(state, PolygonOf(ShoreRing(state.range(0)))); }
BENCHMARK(BM_GeosShoreBuffer)->ArgNames({"vertices", "distance"})->ArgsProduct({{1000, 10000, 100000}, {1, 20, -20}});

void BM_GeosShoreLineBuffer(benchmark::State& state) {
    std::vector<double> values;
    for (const auto& [x, y] : ShoreRing(state.range(0))) values.insert(values.end(), {x, y});
    GEOSCoordSequence* const points =
        GEOSCoordSeq_copyFromBuffer_r(Handle(), values.data(), static_cast<unsigned int>(values.size() / 2), 0, 0);
    Buffer(state, GEOSGeom_createLineString_r(Handle(), points));
}
BENCHMARK(BM_GeosShoreLineBuffer)->ArgNames({"vertices", "distance"})->ArgsProduct({{1000, 10000, 100000}, {1, 20}});

}  // namespace
}  // namespace Kalvio::Math
