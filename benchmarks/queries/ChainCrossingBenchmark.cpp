#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/Intersection.h"
#include "polygons/Rings.h"
#include "queries/Chains.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

std::vector<Point2D> PointsOf(const std::vector<std::pair<double, double>>& coordinates, double shift) {
    std::vector<Point2D> points;
    for (const auto& [x, y] : coordinates) points.emplace_back(x + shift, y + shift);
    return points;
}

Polygon2D Archipelago(std::int64_t count, double shift) {
    Polygon2D polygon(PointsOf(ShoreRing(count), shift));
    for (const auto& island : Islands(count)) polygon.AppendHoleBoundary(LineString2D(PointsOf(island, shift)));
    return polygon;
}

void BM_LineStringLineString(benchmark::State& state) {
    const LineString2D a(PointsOf(RoughChain(state.range(0), 40.0), 0.0));
    const LineString2D b(PointsOf(RoughChain(state.range(0), 33.0), 0.0));
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::LineStringLineString(a, b, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_LineStringLineString)
    ->ArgName("segments")
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);

// Many short chains all over a square: contour lines cut into tiles.
void BM_LineStrings(benchmark::State& state) {
    std::vector<LineString2D> strings;
    for (const auto& [x, y] : SpreadPoints(state.range(0))) {
        strings.emplace_back();
        for (const auto& [u, v] : RoughChain(10, 1.0 + static_cast<double>(strings.size() % 5))) {
            strings.back().AppendPoint(Point2D(x + u, y + 0.01 * v));
        }
    }
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::LineStrings(strings, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_LineStrings)->ArgName("strings")->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMicrosecond);

void BM_PolygonPolygon(benchmark::State& state) {
    const Polygon2D a = Archipelago(state.range(0), 0.0);
    const Polygon2D b = Archipelago(state.range(0), 20.0);
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::PolygonPolygon(a, b, points, 1e-6));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_PolygonPolygon)
    ->ArgName("vertices")
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMicrosecond);

// A mountain road: lines, clothoids, arcs and clothoids back, turn by turn.
Polyline2D Road(std::int64_t count, double side) {
    Polyline2D road;
    IPolyline2DElement::PolylineElementPoint end{Point2D(385000.0 + side, 6672000.0), Vec2D(1.0, 0.0), 0.0};
    const auto append = [&](auto* element) {
        (void)element->MakePointAndTangentAt(element->GetLength(), end);
        road.AppendElement(element);
    };
    for (std::int64_t i = 0; i < count / 4; ++i) {
        const double radius = i % 2 == 0 ? -80.0 : 80.0;
        append(new Line2D(end.point, end.tangent * 20.0));
        append(new Clothoid(0.0, radius, 40.0, end.point, end.tangent));
        append(new Arc2D(end.point, end.point + end.tangent.GetNormalVector(true) * radius, Angle(radius / 160.0)));
        append(new Clothoid(radius, 0.0, 40.0, end.point, end.tangent));
    }
    return road;
}

void BM_PolylinePolyline(benchmark::State& state) {
    const Polyline2D a = Road(state.range(0), 0.0);
    const Polyline2D b = Road(state.range(0), 7.0);
    std::vector<Polyline2D::PolylinePoint> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(Intersection::PolylinePolyline(a, b, points, 1e-4));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["points"] = static_cast<double>(points.size());
}
BENCHMARK(BM_PolylinePolyline)
    ->ArgName("elements")
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Kalvio::Math
