#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/Intersection.h"
#include "polygons/Rings.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/multi_point.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

#include <cstdint>
#include <vector>

namespace Kalvio::Math {
namespace {

using Point = boost::geometry::model::d2::point_xy<double>;
using Chain = boost::geometry::model::linestring<Point>;

Chain BoostChain(const std::vector<std::pair<double, double>>& points) {
    Chain chain;
    for (const auto& [x, y] : points) chain.push_back(Point(x, y));
    return chain;
}

LineString2D OurChain(const std::vector<std::pair<double, double>>& points) {
    LineString2D chain;
    for (const auto& [x, y] : points) chain.AppendPoint(Point2D(x, y));
    return chain;
}

// A shore that does not cross itself, left open by its last side.
void BM_SelfCrossing(benchmark::State& state) {
    const LineString2D chain = OurChain(ShoreRing(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(chain.IsSelfCrossing(1e-4));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SelfCrossing)->ArgName("points")->RangeMultiplier(10)->Range(100, 100000);

void BM_BoostSelfCrossing(benchmark::State& state) {
    const Chain chain = BoostChain(ShoreRing(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(boost::geometry::intersects(chain));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BoostSelfCrossing)->ArgName("points")->RangeMultiplier(10)->Range(100, 100000);

void BM_Crossings(benchmark::State& state) {
    const LineString2D a = OurChain(RoughChain(state.range(0), 40.0));
    const LineString2D b = OurChain(RoughChain(state.range(0), 33.0));
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::LineStringLineString(a, b, points, 1e-4));
    }
}
BENCHMARK(BM_Crossings)->ArgName("segments")->Arg(100)->Arg(10000);

void BM_BoostCrossings(benchmark::State& state) {
    const Chain a = BoostChain(RoughChain(state.range(0), 40.0));
    const Chain b = BoostChain(RoughChain(state.range(0), 33.0));
    boost::geometry::model::multi_point<Point> points;
    for (auto _ : state) {
        points.clear();
        boost::geometry::intersection(a, b, points);
        benchmark::DoNotOptimize(points.data());
    }
}
BENCHMARK(BM_BoostCrossings)->ArgName("segments")->Arg(100)->Arg(10000);

using Ring = boost::geometry::model::polygon<Point, false>;

Ring BoostRing(std::int64_t count) {
    Ring ring;
    ring.outer() = {};
    for (const auto& [x, y] : ShoreRing(count)) ring.outer().push_back(Point(x, y));
    ring.outer().push_back(ring.outer().front());
    return ring;
}

Polygon2D OurRing(std::int64_t count) { return Polygon2D(OurChain(ShoreRing(count))); }

void BM_Area(benchmark::State& state) {
    const Polygon2D ring = OurRing(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(ring.GetArea());
}
BENCHMARK(BM_Area)->ArgName("vertices")->Arg(100)->Arg(1000);

void BM_BoostArea(benchmark::State& state) {
    const Ring ring = BoostRing(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(boost::geometry::area(ring));
}
BENCHMARK(BM_BoostArea)->ArgName("vertices")->Arg(100)->Arg(1000);

void BM_Centroid(benchmark::State& state) {
    const Polygon2D ring = OurRing(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(ring.GetCentroid());
}
BENCHMARK(BM_Centroid)->ArgName("vertices")->Arg(100)->Arg(1000);

void BM_BoostCentroid(benchmark::State& state) {
    const Ring ring = BoostRing(state.range(0));
    for (auto _ : state) {
        Point centroid;
        boost::geometry::centroid(ring, centroid);
        benchmark::DoNotOptimize(centroid);
    }
}
BENCHMARK(BM_BoostCentroid)->ArgName("vertices")->Arg(100)->Arg(1000);

}  // namespace
}  // namespace Kalvio::Math
