#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

// A closed border with bays of all sizes that does not cross itself, about 1 km across, at survey coordinates.
LineString2D Border(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> phase(0.0, 2.0 * std::numbers::pi);
    std::vector<double> phases(12);
    for (double& value : phases) value = phase(random);
    LineString2D border;
    for (std::int64_t i = 0; i <= count; ++i) {
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(i % count) / static_cast<double>(count);
        double radius = 500.0;
        double frequency = 3.0;
        for (const double value : phases) {
            radius += 200.0 / frequency * std::sin(frequency * angle + value);
            frequency *= 2.0;
        }
        border.AppendPoint(Point2D(385000.0 + radius * std::cos(angle), 6672000.0 + radius * std::sin(angle)));
    }
    return border;
}

// A meander that runs into itself now and then.
LineString2D Meander(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> turn(-0.4, 0.4);
    LineString2D meander;
    Point2D end(385000.0, 6672000.0);
    double direction = 0.0;
    for (std::int64_t i = 0; i < count; ++i) {
        meander.AppendPoint(end);
        direction += turn(random);
        end += Vec2D(std::cos(direction), std::sin(direction));
    }
    return meander;
}

void BM_LineStringIsSelfCrossingBorder(benchmark::State& state) {
    const LineString2D border = Border(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(border.IsSelfCrossing(1e-4));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LineStringIsSelfCrossingBorder)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 1000000);

void BM_LineStringIsSelfCrossingMeander(benchmark::State& state) {
    const LineString2D meander = Meander(state.range(0));
    std::vector<std::pair<Point2D, double>> crossings;
    for (auto _ : state) benchmark::DoNotOptimize(meander.IsSelfCrossing(crossings, 1e-4));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["crossings"] = static_cast<double>(crossings.size());
}
BENCHMARK(BM_LineStringIsSelfCrossingMeander)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 100000);

// The segment pairs of two borders that come near each other, building included.
void BM_SegmentBoxesOfTwoBorders(benchmark::State& state) {
    const LineString2D border = Border(state.range(0));
    LineString2D other = border;
    other.Translate(Vec2D(40.0, 30.0));
    std::int64_t pairs = 0;
    for (auto _ : state) {
        pairs = 0;
        const detail::SegmentBoxes boxes(border.GetPoints());
        const detail::SegmentBoxes otherBoxes(std::as_const(other).GetPoints());
        boxes.ForEachPair(otherBoxes, 1e-10, [&pairs](std::size_t, std::size_t) { return ++pairs < 0; });
        benchmark::DoNotOptimize(pairs);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["pairs"] = static_cast<double>(pairs);
}
BENCHMARK(BM_SegmentBoxesOfTwoBorders)->ArgName("vertices")->RangeMultiplier(10)->Range(1000, 100000);

void BM_LineStringGetClosestSegment(benchmark::State& state) {
    const LineString2D border = Border(state.range(0));
    const Point2D inside(385010.0, 6672020.0);
    unsigned int index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(border.GetClosestSegment(inside, index));
        benchmark::DoNotOptimize(index);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LineStringGetClosestSegment)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_LineStringGetLengthFromStartPoint(benchmark::State& state) {
    const LineString2D border = Border(state.range(0));
    const Point2D nearEnd = border.GetPoint(border.GetSize() - 2);
    double length = 0.0;
    for (auto _ : state) benchmark::DoNotOptimize(border.GetLengthFromStartPoint(nearEnd, length, 1e-6));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LineStringGetLengthFromStartPoint)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_LineStringGetLength(benchmark::State& state) {
    const LineString2D border = Border(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(border.GetLength());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LineStringGetLength)->ArgName("vertices")->Arg(1000)->Arg(1000000);

void BM_LineStringGetBoundingBox(benchmark::State& state) {
    LineString2D border = Border(state.range(0));
    for (auto _ : state) {
        border.GetPoint(0);  // drops the box
        benchmark::DoNotOptimize(border.GetBoundingBox());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LineStringGetBoundingBox)->ArgName("vertices")->Arg(1000)->Arg(1000000);

}  // namespace
}  // namespace Kalvio::Math
