#include "kalvio/core/Geometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/convex_hull_2.h>

#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Pairs = std::vector<std::pair<double, double>>;

Pairs Disc(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Pairs points;
    for (std::int64_t i = 0; i < count; ++i) {
        const double angle = 6.283185307179586 * unit(random);
        const double radius = 500.0 * std::sqrt(unit(random));
        points.emplace_back(500.0 + radius * std::cos(angle), 500.0 + radius * std::sin(angle));
    }
    return points;
}

Pairs Circle(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> turn(0.0, 6.283185307179586);
    Pairs points;
    for (std::int64_t i = 0; i < count; ++i) {
        const double angle = turn(random);
        points.emplace_back(500.0 + 500.0 * std::cos(angle), 500.0 + 500.0 * std::sin(angle));
    }
    return points;
}

template <Pairs (*make)(std::int64_t)>
void BM_ConvexHull(benchmark::State& state) {
    std::vector<Point2D> points;
    for (const auto& [x, y] : make(state.range(0))) points.emplace_back(x, y);
    for (auto _ : state) {
        Polygon2D hull;
        Geometry::ConvexHull(points, hull);
        benchmark::DoNotOptimize(hull);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Pairs (*make)(std::int64_t)>
void BM_CgalConvexHull(benchmark::State& state) {
    std::vector<Kernel::Point_2> points;
    for (const auto& [x, y] : make(state.range(0))) points.emplace_back(x, y);
    for (auto _ : state) {
        std::vector<Kernel::Point_2> hull;
        CGAL::convex_hull_2(points.begin(), points.end(), std::back_inserter(hull));
        benchmark::DoNotOptimize(hull.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define KALVIO_HULL_ROWS(make)                                                                           \
    BENCHMARK(BM_ConvexHull<make>)->ArgName("points")->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000); \
    BENCHMARK(BM_CgalConvexHull<make>)->ArgName("points")->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)
KALVIO_HULL_ROWS(Disc);
KALVIO_HULL_ROWS(SpreadPoints);
KALVIO_HULL_ROWS(ShoreRing);
KALVIO_HULL_ROWS(Circle);
#undef KALVIO_HULL_ROWS

}  // namespace
}  // namespace Kalvio::Math
