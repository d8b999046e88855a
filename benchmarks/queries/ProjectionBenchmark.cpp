#include "curves/Road.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace Kalvio::Math {
namespace {

constexpr double tolerance = 1e-4;

template <class Find>
void RunFoot(benchmark::State& state, Find&& find) {
    std::vector<Point2D> points;
    for (int i = 0; i < 64; ++i) points.emplace_back(1.0 + 1.1 * i, -20.0 + 37.0 * (i % 3));
    std::size_t next = 0;
    for (auto _ : state) {
        Point2D foot;
        Vec2D tangent;
        double station = 0.0;
        benchmark::DoNotOptimize(find(points[next++ % points.size()], foot, station, tangent));
        benchmark::DoNotOptimize(station);
    }
}

void BM_FootOnClothoid(benchmark::State& state) {
    const Clothoid clothoid(0.0, 300.0, 150.0, Point2D(), Vec2D(1.0, 0.0));
    RunFoot(state, [&](const Point2D& p, Point2D& foot, double& station, Vec2D& tangent) {
        return Projection::NormalPointOnClothoid(p, clothoid, foot, station, tangent, tolerance);
    });
}
BENCHMARK(BM_FootOnClothoid);

void BM_FootOnSpiral(benchmark::State& state) {
    const Spiral2D spiral(Spiral2D::Spiral2DType::Bloss, 0.0, 300.0, 75.0, Point2D(), Vec2D(1.0, 0.0));
    RunFoot(state, [&](const Point2D& p, Point2D& foot, double& station, Vec2D& tangent) {
        return Projection::NormalPointOnSpiral(p, spiral, foot, station, tangent, tolerance);
    });
}
BENCHMARK(BM_FootOnSpiral);

void BM_FootOnParabola(benchmark::State& state) {
    const Parabola parabola(Point2D(0.0, 0.0), Point2D(75.0, 0.5625), 0.0001, 0.0, 0.0);
    RunFoot(state, [&](const Point2D& p, Point2D& foot, double& station, Vec2D& tangent) {
        return Projection::NormalPointOnParabola(p, parabola, foot, station, tangent, tolerance);
    });
}
BENCHMARK(BM_FootOnParabola);

void BM_FootOnChain(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0));
    const Point2D point = road.GetMidPoint() + Vec2D(3.0, 4.0);
    Polyline2D::PolylinePoint foot;
    for (auto _ : state) benchmark::DoNotOptimize(Projection::NormalPointOnPolyline(point, road, foot, tolerance));
}
BENCHMARK(BM_FootOnChain)->ArgName("elements")->Arg(100)->Arg(10000);

// The least that a search without an order of the elements has to do: one pass over their boxes.
void BM_BarePassOverBoxes(benchmark::State& state) {
    const Polyline2D road = Road(state.range(0));
    const Point2D point = road.GetMidPoint() + Vec2D(3.0, 4.0);
    std::vector<double> minX, minY, maxX, maxY;
    for (unsigned int i = 0; i < road.GetNrOfElements(); ++i) {
        const BoundingBox2D box = road.GetElementAtIndex(i).GetBoundingBox2D();
        minX.push_back(box.GetMinPoint().GetX());
        minY.push_back(box.GetMinPoint().GetY());
        maxX.push_back(box.GetMaxPoint().GetX());
        maxY.push_back(box.GetMaxPoint().GetY());
    }
    for (auto _ : state) {
        std::size_t nearest = 0;
        double best = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < minX.size(); ++i) {
            const double dx = std::max({minX[i] - point.GetX(), 0.0, point.GetX() - maxX[i]});
            const double dy = std::max({minY[i] - point.GetY(), 0.0, point.GetY() - maxY[i]});
            if (dx * dx + dy * dy < best) {
                best = dx * dx + dy * dy;
                nearest = i;
            }
        }
        benchmark::DoNotOptimize(nearest);
    }
}
BENCHMARK(BM_BarePassOverBoxes)->ArgName("elements")->Arg(100)->Arg(10000);

LineString2D Rough(std::int64_t count) {
    LineString2D chain;
    for (const auto& [x, y] : RoughChain(count, 40.0)) chain.AppendPoint(Point2D(x, y));
    return chain;
}

void BM_DistanceToLineString(benchmark::State& state) {
    const LineString2D chain = Rough(state.range(0));
    const Point2D point(0.5 * static_cast<double>(state.range(0)), 70.0);
    for (auto _ : state) benchmark::DoNotOptimize(Distance::PointToLineString(chain, point, tolerance));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DistanceToLineString)->ArgName("segments")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_FootOnLineString(benchmark::State& state) {
    const LineString2D chain = Rough(state.range(0));
    const Point2D point(0.5 * static_cast<double>(state.range(0)), 70.0);
    for (auto _ : state) {
        Point2D foot;
        double station = 0.0;
        benchmark::DoNotOptimize(Projection::NormalPointOnLineString(point, chain, foot, station, tolerance));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FootOnLineString)->ArgName("segments")->Arg(1000000)->Unit(benchmark::kMicrosecond);

// How fast the points can be read at all.
void BM_ReadLineString(benchmark::State& state) {
    const LineString2D chain = Rough(state.range(0));
    for (auto _ : state) {
        double sum = 0.0;
        for (const Point2D& point : chain.GetPoints()) sum += point.GetX() + point.GetY();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadLineString)->ArgName("segments")->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
