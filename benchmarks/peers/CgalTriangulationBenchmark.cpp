#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString3D.h"

#include <benchmark/benchmark.h>

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Constrained = CGAL::Constrained_Delaunay_triangulation_2<Kernel>;

// Points spread over a square of side 1000 at survey coordinates; 10^5 points of breaklines, 0.1 apart, in chains of
// 100, on request.
TinSurfacePatch3D::Ground Spread(std::int64_t count, bool hasBreaklines) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    TinSurfacePatch3D::Ground ground;
    for (std::int64_t i = 0; i < count; ++i) {
        const double x = 385000.0 + 1000.0 * unit(random);
        ground.points.emplace_back(x, 6672000.0 + 1000.0 * unit(random), unit(random));
    }
    for (int chain = 0; hasBreaklines && chain < 1000; ++chain) {
        LineString3D& breakline = ground.breaklines.emplace_back();
        for (int i = 0; i < 100; ++i) {
            breakline.AppendPoint({385000.0 + 10.0 * (chain % 100) + 0.1 * i,
                                   6672050.0 + 100.0 * std::floor(chain / 100.0) + 10.0 * std::sin(0.05 * i), 0.0});
        }
    }
    return ground;
}

template <bool hasBreaklines>
void BM_BuildSurface(benchmark::State& state) {
    const TinSurfacePatch3D::Ground ground = Spread(state.range(0), hasBreaklines);
    for (auto _ : state) {
        TinSurfacePatch3D surface;
        if (!surface.Build(ground, Tolerances::Standard())) state.SkipWithError("not built");
        benchmark::DoNotOptimize(surface);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <bool hasBreaklines>
void BM_CgalConstrainedDelaunay(benchmark::State& state) {
    const TinSurfacePatch3D::Ground ground = Spread(state.range(0), hasBreaklines);
    std::vector<Kernel::Point_2> points;
    std::vector<std::pair<std::size_t, std::size_t>> segments;
    for (const Point3D& p : ground.points) points.emplace_back(p.GetX(), p.GetY());
    for (const LineString3D& chain : ground.breaklines) {
        for (unsigned int i = 0; i < chain.GetSize(); ++i) {
            if (i > 0) segments.emplace_back(points.size() - 1, points.size());
            points.emplace_back(chain[i].GetX(), chain[i].GetY());
        }
    }
    for (auto _ : state) {
        Constrained triangulation;
        if (hasBreaklines) {
            triangulation.insert_constraints(points.begin(), points.end(), segments.begin(), segments.end());
        } else {
            triangulation.insert(points.begin(), points.end());
        }
        benchmark::DoNotOptimize(triangulation);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define KALVIO_TRIANGULATION_ROWS(benchmarked)                                               \
    BENCHMARK(benchmarked<false>)->ArgName("points")->Arg(10000)->Arg(100000)->Arg(1000000); \
    BENCHMARK(benchmarked<true>)->ArgName("points")->Arg(10000)->Arg(1000000)
KALVIO_TRIANGULATION_ROWS(BM_BuildSurface);
KALVIO_TRIANGULATION_ROWS(BM_CgalConstrainedDelaunay);
#undef KALVIO_TRIANGULATION_ROWS

}  // namespace
}  // namespace Kalvio::Math
