#include "polygons/Rings.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <geos_c.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

using Coordinates = std::vector<std::pair<double, double>>;

class Geos {
public:
    struct Destroy {
        GEOSContextHandle_t handle;
        void operator()(GEOSGeometry* geometry) const { GEOSGeom_destroy_r(handle, geometry); }
    };
    using Geometry = std::unique_ptr<GEOSGeometry, Destroy>;

    Geos() : handle(GEOS_init_r()) {}
    ~Geos() { GEOS_finish_r(handle); }
    Geos(const Geos&) = delete;
    Geos& operator=(const Geos&) = delete;

    Geometry Chain(const Coordinates& source) const {
        std::vector<double> values;
        for (const auto& [x, y] : source) values.insert(values.end(), {x, y});
        GEOSCoordSequence* const sequence =
            GEOSCoordSeq_copyFromBuffer_r(handle, values.data(), static_cast<unsigned int>(source.size()), 0, 0);
        return {GEOSGeom_createLineString_r(handle, sequence), {handle}};
    }

    Geometry Borders(std::int64_t count, double shift) const {
        std::vector<GEOSGeometry*> chains;
        const auto add = [&](Coordinates ring) {
            ring.push_back(ring.front());
            for (auto& [x, y] : ring) x += shift, y += shift;
            chains.push_back(Chain(ring).release());
        };
        add(ShoreRing(count));
        for (const auto& island : Islands(count)) add(island);
        return {GEOSGeom_createCollection_r(handle, GEOS_MULTILINESTRING, chains.data(),
                                            static_cast<unsigned int>(chains.size())),
                {handle}};
    }

    void RunDistance(benchmark::State& state, const Geometry& chain, double x, double y) const {
        const Geometry point(GEOSGeom_createPointFromXY_r(handle, x, y), {handle});
        for (auto _ : state) {
            double distance = 0.0;
            GEOSDistance_r(handle, chain.get(), point.get(), &distance);
            benchmark::DoNotOptimize(distance);
        }
        state.SetItemsProcessed(state.iterations() * state.range(0));
    }

    void Run(benchmark::State& state, const Geometry& a, const Geometry& b) const {
        int count = 0;
        for (auto _ : state) {
            const Geometry common(GEOSIntersection_r(handle, a.get(), b.get()), {handle});
            count = GEOSGetNumGeometries_r(handle, common.get());
        }
        state.SetItemsProcessed(state.iterations() * state.range(0));
        state.counters["points"] = count;
    }

private:
    GEOSContextHandle_t handle;
};

void BM_GeosChains(benchmark::State& state) {
    const Geos geos;
    geos.Run(state, geos.Chain(RoughChain(state.range(0), 40.0)), geos.Chain(RoughChain(state.range(0), 33.0)));
}
BENCHMARK(BM_GeosChains)->ArgName("segments")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

void BM_GeosDistance(benchmark::State& state) {
    const Geos geos;
    geos.RunDistance(state, geos.Chain(RoughChain(state.range(0), 40.0)), 0.5 * static_cast<double>(state.range(0)),
                     70.0);
}
BENCHMARK(BM_GeosDistance)->ArgName("segments")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// The borders as one set of chains each: the points alone, without the areas.
void BM_GeosBorders(benchmark::State& state) {
    const Geos geos;
    geos.Run(state, geos.Borders(state.range(0), 0.0), geos.Borders(state.range(0), 20.0));
}
BENCHMARK(BM_GeosBorders)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
