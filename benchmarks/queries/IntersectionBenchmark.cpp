#include "kalvio/queries/Intersection.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Spiral2D.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace Kalvio::Math {
namespace {

const Tolerances kTolerances(1e-4, 1e-10);
const Point2D kOrigin(385000.0, 6672000.0);

Clothoid Transition() { return {0.0, 300.0, 150.0, kOrigin, Vec2D(1.0, 0.0)}; }

// A pair of curves is intersected again and again; `points` is the number of points it has in common.
template <class First, class Second, class Function>
void Intersect(benchmark::State& state, const First& first, const Second& second, Function function) {
    std::vector<Point2D> points;
    for (auto _ : state) {
        points.clear();
        benchmark::DoNotOptimize(function(first, second, points));
    }
    state.counters["points"] = static_cast<double>(points.size());
}

#define KALVIO_MEET(Function) \
    [](const auto& a, const auto& b, auto& out) { return Intersection::Function(a, b, out, kTolerances); }

void BM_ClothoidClothoidCrossing(benchmark::State& state) {
    const Clothoid other(-250.0, 0.0, 120.0, kOrigin + Vec2D(20.0, -20.0), Vec2D(0.6, 0.8));
    Intersect(state, Transition(), other, KALVIO_MEET(ClothoidClothoid));
}
BENCHMARK(BM_ClothoidClothoidCrossing);

void BM_ClothoidClothoidTouching(benchmark::State& state) {
    const Clothoid other(0.0, -300.0, 150.0, kOrigin, Vec2D(1.0, 0.0));
    Intersect(state, Transition(), other, KALVIO_MEET(ClothoidClothoid));
}
BENCHMARK(BM_ClothoidClothoidTouching);

void BM_ClothoidClothoidBesideEachOther(benchmark::State& state) {
    const Clothoid other(0.0, 300.0, 150.0, kOrigin + Vec2D(0.0, 4.0), Vec2D(1.0, 0.0));
    Intersect(state, Transition(), other, KALVIO_MEET(ClothoidClothoid));
}
BENCHMARK(BM_ClothoidClothoidBesideEachOther);

void BM_ClothoidClothoidFarApart(benchmark::State& state) {
    const Clothoid other(0.0, 300.0, 150.0, kOrigin + Vec2D(0.0, 400.0), Vec2D(1.0, 0.0));
    Intersect(state, Transition(), other, KALVIO_MEET(ClothoidClothoid));
}
BENCHMARK(BM_ClothoidClothoidFarApart);

void BM_LineClothoid(benchmark::State& state) {
    const Line2D line(kOrigin + Vec2D(20.0, -20.0), Vec2D(60.0, 80.0));
    Intersect(state, line, Transition(), KALVIO_MEET(LineClothoid));
}
BENCHMARK(BM_LineClothoid);

void BM_SpiralClothoid(benchmark::State& state) {
    const Spiral2D bloss(Spiral2D::Spiral2DType::Bloss, 0.0, 300.0, 75.0, kOrigin + Vec2D(20.0, -20.0),
                         Vec2D(0.6, 0.8));
    Intersect(state, bloss, Transition(), KALVIO_MEET(SpiralClothoid));
}
BENCHMARK(BM_SpiralClothoid);

void BM_ArcArc(benchmark::State& state) {
    const Arc2D arc(kOrigin, kOrigin + Vec2D(0.0, 300.0), Angle(0.5));
    const Arc2D other(kOrigin + Vec2D(60.0, -40.0), kOrigin + Vec2D(-140.0, -40.0), Angle(0.5));
    Intersect(state, arc, other, KALVIO_MEET(ArcArc));
}
BENCHMARK(BM_ArcArc);

void BM_LineSegmentArc(benchmark::State& state) {
    const Arc2D arc(kOrigin, kOrigin + Vec2D(0.0, 300.0), Angle(0.5));
    const Line2D line(kOrigin + Vec2D(20.0, -20.0), Vec2D(60.0, 80.0));
    Intersect(state, line, arc, KALVIO_MEET(LineSegmentArc));
}
BENCHMARK(BM_LineSegmentArc);

}  // namespace
}  // namespace Kalvio::Math
