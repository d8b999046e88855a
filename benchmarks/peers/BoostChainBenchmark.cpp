#include "polygons/Rings.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/multi_linestring.hpp>
#include <boost/geometry/geometries/multi_point.hpp>
#include <boost/geometry/geometries/point_xy.hpp>

#include <cstdint>

namespace Kalvio::Math {
namespace {

using Point = boost::geometry::model::d2::point_xy<double>;
using Chain = boost::geometry::model::linestring<Point>;
using Chains = boost::geometry::model::multi_linestring<Chain>;
using Points = boost::geometry::model::multi_point<Point>;

Chain Rough(std::int64_t count, double waves) {
    Chain chain;
    for (const auto& [x, y] : RoughChain(count, waves)) chain.push_back(Point(x, y));
    return chain;
}

void BM_BoostChains(benchmark::State& state) {
    const Chain a = Rough(state.range(0), 40.0);
    const Chain b = Rough(state.range(0), 33.0);
    Points points;
    for (auto _ : state) {
        points.clear();
        boost::geometry::intersection(a, b, points);
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_BoostChains)->ArgName("segments")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

void BM_BoostDistance(benchmark::State& state) {
    const Chain chain = Rough(state.range(0), 40.0);
    const Point point(0.5 * static_cast<double>(state.range(0)), 70.0);
    for (auto _ : state) benchmark::DoNotOptimize(boost::geometry::distance(point, chain));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BoostDistance)->ArgName("segments")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// The borders as one set of chains each: the points alone, without the areas.
void BM_BoostBorders(benchmark::State& state) {
    const auto borders = [&state](double shift) {
        Chains chains;
        const auto add = [&chains, shift](const auto& ring) {
            chains.emplace_back();
            for (const auto& [x, y] : ring) chains.back().push_back(Point(x + shift, y + shift));
            chains.back().push_back(chains.back().front());
        };
        add(ShoreRing(state.range(0)));
        for (const auto& island : Islands(state.range(0))) add(island);
        return chains;
    };
    const Chains a = borders(0.0);
    const Chains b = borders(20.0);
    Points points;
    for (auto _ : state) {
        points.clear();
        boost::geometry::intersection(a, b, points);
        benchmark::DoNotOptimize(points.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_BoostBorders)
    ->ArgName("vertices")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
