#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

#include <cstdint>

namespace Kalvio::Math {
namespace {

using Point = boost::geometry::model::d2::point_xy<double>;
using Polygon = boost::geometry::model::polygon<Point, false>;

Polygon Shore(std::int64_t count) {
    Polygon polygon;
    for (const auto& [x, y] : ShoreRing(count)) boost::geometry::append(polygon.outer(), Point(x, y));
    polygon.outer().push_back(polygon.outer().front());
    return polygon;
}

void BM_BoostWithin(benchmark::State& state) {
    const Polygon polygon = Shore(state.range(0));
    const auto queries = SpreadPoints(256);
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [x, y] = queries[next++ % queries.size()];
        benchmark::DoNotOptimize(boost::geometry::within(Point(x, y), polygon));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BoostWithin)->ArgName("vertices")->Arg(10)->Arg(100)->Arg(1000)->Arg(100000);

void BM_BoostArea(benchmark::State& state) {
    const Polygon polygon = Shore(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(boost::geometry::area(polygon));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BoostArea)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_BoostIsValid(benchmark::State& state) {
    const Polygon polygon = Shore(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(boost::geometry::is_valid(polygon));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BoostIsValid)->ArgName("vertices")->Arg(1000)->Arg(100000);

}  // namespace
}  // namespace Kalvio::Math
