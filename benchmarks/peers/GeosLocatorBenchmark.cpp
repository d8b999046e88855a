#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <geos/algorithm/locate/IndexedPointInAreaLocator.h>
#include <geos/geom/Coordinate.h>
#include <geos/geom/CoordinateArraySequence.h>
#include <geos/geom/GeometryFactory.h>
#include <geos/geom/LinearRing.h>
#include <geos/geom/Location.h>
#include <geos/geom/Polygon.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

using geos::algorithm::locate::IndexedPointInAreaLocator;
using geos::geom::Coordinate;
using geos::geom::GeometryFactory;
using geos::geom::LinearRing;

std::unique_ptr<LinearRing> RingOf(const GeometryFactory& factory,
                                   const std::vector<std::pair<double, double>>& source) {
    auto coordinates = std::make_unique<geos::geom::CoordinateArraySequence>();
    for (const auto& [x, y] : source) coordinates->add(Coordinate(x, y));
    coordinates->add(Coordinate(source.front().first, source.front().second));
    return factory.createLinearRing(std::move(coordinates));
}

std::unique_ptr<geos::geom::Polygon> Archipelago(const GeometryFactory& factory, std::int64_t count) {
    std::vector<std::unique_ptr<LinearRing>> holes;
    for (const auto& island : Islands(count)) holes.push_back(RingOf(factory, island));
    return factory.createPolygon(RingOf(factory, ShoreRing(count)), std::move(holes));
}

void RunQueries(benchmark::State& state, const std::vector<std::pair<double, double>>& queries) {
    const auto factory = GeometryFactory::create();
    const auto polygon = Archipelago(*factory, state.range(0));
    IndexedPointInAreaLocator locator(*polygon);
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [x, y] = queries[next++ % queries.size()];
        const Coordinate point(x, y);
        benchmark::DoNotOptimize(locator.locate(&point) != geos::geom::Location::EXTERIOR);
    }
}

void BM_GeosLocatorSpread(benchmark::State& state) { RunQueries(state, SpreadPoints(1 << 16)); }
BENCHMARK(BM_GeosLocatorSpread)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_GeosLocatorBeside(benchmark::State& state) { RunQueries(state, BesidePoints(state.range(0), 1 << 16)); }
BENCHMARK(BM_GeosLocatorBeside)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 1000000);

// The index is built by the first query.
void BM_GeosLocatorBuild(benchmark::State& state) {
    const auto factory = GeometryFactory::create();
    const auto polygon = Archipelago(*factory, state.range(0));
    const Coordinate point(500.0, 500.0);
    for (auto _ : state) {
        IndexedPointInAreaLocator locator(*polygon);
        benchmark::DoNotOptimize(locator.locate(&point));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_GeosLocatorBuild)
    ->ArgName("vertices")
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
