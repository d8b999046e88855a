#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/GridSurface.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "polygons/Rings.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

/// Surfaces of spread points, two triangles to a point, at survey coordinates on a square of 1 km.
namespace Kalvio::Math {
namespace {

constexpr double west = 385000.0;
constexpr double south = 6672000.0;
constexpr int levelCount = 20;

double GroundAt(double x, double y) { return 9.0 * std::sin(0.011 * (x - west)) * std::cos(0.013 * (y - south)); }
double DesignAt(double x, double y) { return 0.01 * (x - west) - 0.008 * (y - south); }

template <class HeightAt>
TinSurfacePatch3D SurfaceOf(std::int64_t triangles, const HeightAt& heightAt, double moved) {
    TinSurfacePatch3D::Ground ground;
    for (const auto& [x, y] : SpreadPoints(triangles / 2)) {
        const double px = west + x + moved;
        const double py = south + y + moved;
        ground.points.emplace_back(px, py, heightAt(px, py));
    }
    TinSurfacePatch3D surface;
    (void)surface.Build(ground, Tolerances::Standard());
    return surface;
}

void Sizes(benchmark::internal::Benchmark* b) {
    b->ArgName("triangles")->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);
}

// Contours cannot be had for less: each triangle's lowest and highest corner.
void BM_BareExtents(benchmark::State& state) {
    const TinSurfacePatch3D surface = SurfaceOf(state.range(0), GroundAt, 0.0);
    const auto& vertices = surface.GetTriangles().GetVertices();
    const auto& indexes = surface.GetTriangles().GetIndexes();
    for (auto _ : state) {
        double sum = 0.0;
        for (std::size_t i = 0; i + 2 < indexes.size(); i += 3) {
            const double a = vertices[indexes[i]].GetZ();
            const double b = vertices[indexes[i + 1]].GetZ();
            const double c = vertices[indexes[i + 2]].GetZ();
            sum += std::max({a, b, c}) - std::min({a, b, c});
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_BareExtents)->Apply(Sizes);

void BM_Contours(benchmark::State& state) {
    const TinSurfacePatch3D surface = SurfaceOf(state.range(0), GroundAt, 0.0);
    std::vector<double> levels;
    for (int i = 0; i < levelCount; ++i) levels.push_back(-8.55 + 0.9 * i);
    std::vector<LineString3D> contours;
    for (auto _ : state) {
        contours.clear();
        if (!surface.GetContours(levels, contours)) state.SkipWithError("no contours");
    }
    std::size_t points = 0;
    for (const LineString3D& contour : contours) points += contour.GetSize();
    state.counters["points"] = static_cast<double>(points);
}
BENCHMARK(BM_Contours)->Apply(Sizes);

void BM_VolumesBetween(benchmark::State& state) {
    const TinSurfacePatch3D ground = SurfaceOf(state.range(0), GroundAt, 0.0);
    const TinSurfacePatch3D design = SurfaceOf(state.range(0), DesignAt, 0.37);
    for (auto _ : state) {
        TinSurfacePatch3D::Volumes volumes;
        if (!ground.GetVolumes(design, volumes)) state.SkipWithError("no volumes");
        benchmark::DoNotOptimize(volumes);
    }
}
BENCHMARK(BM_VolumesBetween)->Apply(Sizes);

// A cross-section of 60.
void BM_CrossSection(benchmark::State& state) {
    const TinSurfacePatch3D surface = SurfaceOf(state.range(0), GroundAt, 0.0);
    std::vector<LineString3D> draped;
    double along = 0.0;
    for (auto _ : state) {
        along = along > 800.0 ? 0.0 : along + 7.3;
        LineString2D chain;
        chain.AppendPoint(Point2D(west + 100.0 + along, south + 470.0));
        chain.AppendPoint(Point2D(west + 105.0 + along, south + 530.0));
        draped.clear();
        benchmark::DoNotOptimize(surface.Drape(chain, draped));
    }
}
BENCHMARK(BM_CrossSection)->ArgName("triangles")->RangeMultiplier(10)->Range(10000, 1000000);

void BM_Thin(benchmark::State& state) {
    const TinSurfacePatch3D surface = SurfaceOf(state.range(0), GroundAt, 0.0);
    for (auto _ : state) {
        TinSurfacePatch3D thinned = surface;
        if (!thinned.Thin(0.05)) state.SkipWithError("not thinned");
        state.counters["left"] = static_cast<double>(thinned.GetTrianglesCount());
    }
}
BENCHMARK(BM_Thin)->Apply(Sizes);

}  // namespace
}  // namespace Kalvio::Math
