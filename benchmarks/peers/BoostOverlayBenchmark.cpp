#include "areas/Layers.h"

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

namespace Kalvio::Math {
namespace {

using Area = boost::geometry::model::polygon<boost::geometry::model::d2::point_xy<double>>;
using Areas = boost::geometry::model::multi_polygon<Area>;

Area AreaOf(const PlainRing& ring, double shift = 0.0) {
    Area area;
    for (const auto& [x, y] : ring) boost::geometry::append(area.outer(), Area::point_type(x + shift, y + shift));
    boost::geometry::correct(area);
    return area;
}

void Intersect(benchmark::State& state, const Area& a, const Area& b) {
    for (auto _ : state) {
        Areas common;
        boost::geometry::intersection(a, b, common);
        benchmark::DoNotOptimize(common.size());
    }
}

void BM_BoostShoresIntersection(benchmark::State& state) {
    const PlainRing shore = ShoreRing(state.range(0));
    Intersect(state, AreaOf(shore), AreaOf(shore, 50.0));
}
BENCHMARK(BM_BoostShoresIntersection)->ArgName("vertices")->RangeMultiplier(10)->Range(100, 1000000);

void BM_BoostCombsIntersection(benchmark::State& state) {
    Intersect(state, AreaOf(Comb(state.range(0), false)), AreaOf(Comb(state.range(0), true)));
}
BENCHMARK(BM_BoostCombsIntersection)->ArgName("teeth")->Arg(30);

}  // namespace
}  // namespace Kalvio::Math
