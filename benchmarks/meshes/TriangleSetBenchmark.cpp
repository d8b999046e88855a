// Times are per index position: read "per index".
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "meshes/Terrain.h"

#include <benchmark/benchmark.h>

#include <numeric>

namespace Kalvio::Math {
namespace {

using Benchmarks::Soup;

void CountIndexes(benchmark::State& state, std::size_t indexes) {
    state.counters["per index"] = benchmark::Counter(
        static_cast<double>(indexes), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

IndexedTriangleSet3D MakeSet(const Soup& soup) {
    std::vector<Point3D> vertices;
    for (const Soup::Vertex& v : soup.vertices) vertices.emplace_back(v.x, v.y, v.z);
    std::vector<unsigned int> indexes(vertices.size());
    std::iota(indexes.begin(), indexes.end(), 0U);
    return {vertices, indexes};
}

Soup MakeSoup(const benchmark::State& state) { return {static_cast<std::size_t>(state.range(0)), state.range(1) != 0}; }
double ToleranceOf(const benchmark::State& state) { return Soup::tolerance * static_cast<double>(state.range(2)); }

void BM_CollapsePoints(benchmark::State& state) {
    const IndexedTriangleSet3D soup = MakeSet(MakeSoup(state));
    for (auto _ : state) {
        state.PauseTiming();
        IndexedTriangleSet3D set = soup;
        state.ResumeTiming();
        if (!set.CollapsePoints(ToleranceOf(state))) state.SkipWithError("nothing merged");
        benchmark::DoNotOptimize(set);
    }
    CountIndexes(state, soup.GetIndexesSize());
}

// The least any merge by cells has to do: every vertex is looked up in the cell it lies in, of the size of the
// tolerance, in a table large enough from the start; neighbouring cells, distances and the triangles are left out.
void BM_BareHashOfCells(benchmark::State& state) {
    const Soup soup = MakeSoup(state);
    const double tolerance = ToleranceOf(state);
    struct Cell {
        std::int64_t x, y, z;
        std::uint32_t vertex;
    };
    constexpr std::uint32_t none = 0xFFFFFFFFU;
    std::size_t size = 64;
    while (size < soup.vertices.size()) size *= 2;
    for (auto _ : state) {
        std::vector<Cell> cells(size, {0, 0, 0, none});
        std::vector<std::uint32_t> merged(soup.vertices.size());
        for (std::uint32_t i = 0; i < soup.vertices.size(); ++i) {
            const auto [x, y, z] = soup.vertices[i];
            const auto cellOf = [tolerance](double v) { return static_cast<std::int64_t>(v / tolerance); };
            const Cell cell{cellOf(x), cellOf(y), cellOf(z), i};
            auto hash = static_cast<std::uint64_t>(cell.x * 73856093 ^ cell.y * 19349669 ^ cell.z * 83492791);
            hash *= 0x9E3779B97F4A7C15U;
            std::size_t at = (hash >> 20) & (size - 1);
            while (cells[at].vertex != none &&
                   (cells[at].x != cell.x || cells[at].y != cell.y || cells[at].z != cell.z))
                at = (at + 1) & (size - 1);
            if (cells[at].vertex == none) cells[at] = cell;
            merged[i] = cells[at].vertex;
        }
        benchmark::DoNotOptimize(merged.data());
    }
    CountIndexes(state, soup.vertices.size());
}

void Sizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"indexes", "shuffled", "mm"})->Unit(benchmark::kMillisecond);
    for (const std::int64_t shuffled : {0, 1}) {
        for (const std::int64_t indexes : {30000, 300000, 3000000}) b->Args({indexes, shuffled, 1});
        b->Args({300000, shuffled, 1000});  // the tolerance is the spacing
    }
}
BENCHMARK(BM_CollapsePoints)->Apply(Sizes);
BENCHMARK(BM_BareHashOfCells)->Apply(Sizes);

// Work over the merged set; the pass that only adds up coordinates tells the speed of memory.
template <class Work>
void OverMergedSet(benchmark::State& state, const Work& work) {
    IndexedTriangleSet3D set = MakeSet({3000000, false});
    set.CollapsePoints(Soup::tolerance);
    set.SetCCW(true);
    for (auto _ : state) work(set);
    CountIndexes(state, set.GetIndexesSize());
}

void BM_BarePass(benchmark::State& state) {
    OverMergedSet(state, [](const IndexedTriangleSet3D& set) {
        double sum = 0.0;
        for (const unsigned int index : set.GetIndexes()) {
            const Point3D& p = set.GetVertex(index);
            sum += p.GetX() + p.GetY() + p.GetZ();
        }
        benchmark::DoNotOptimize(sum);
    });
}
BENCHMARK(BM_BarePass)->Unit(benchmark::kMillisecond);

void BM_GetVolume(benchmark::State& state) {
    OverMergedSet(state, [](const IndexedTriangleSet3D& set) { benchmark::DoNotOptimize(set.GetVolume(90.0)); });
}
BENCHMARK(BM_GetVolume)->Unit(benchmark::kMillisecond);

void BM_GetTotalWindings2D(benchmark::State& state) {
    OverMergedSet(state, [](const IndexedTriangleSet3D& set) {
        unsigned int counts[3];
        set.GetTotalWindings2D(counts[0], counts[1], counts[2]);
        benchmark::DoNotOptimize(counts);
    });
}
BENCHMARK(BM_GetTotalWindings2D)->Unit(benchmark::kMillisecond);

void BM_GetBoundingBox(benchmark::State& state) {
    OverMergedSet(state, [](const IndexedTriangleSet3D& set) { benchmark::DoNotOptimize(set.GetBoundingBox()); });
}
BENCHMARK(BM_GetBoundingBox)->Unit(benchmark::kMillisecond);

void BM_ComputeNormals(benchmark::State& state) {
    OverMergedSet(state, [&state](const IndexedTriangleSet3D& set) {
        std::vector<Vec3D> normals;
        if (state.range(0) == 2) {
            set.ComputeNormals(true, normals, Angle(0.5));
        } else {
            set.ComputeNormals(state.range(0) == 1, normals);
        }
        benchmark::DoNotOptimize(normals.data());
    });
}
BENCHMARK(BM_ComputeNormals)->ArgName("face=0,vertex=1,crease=2")->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void BM_IsOneClosedVolume(benchmark::State& state) {
    OverMergedSet(state, [](const IndexedTriangleSet3D& set) { benchmark::DoNotOptimize(set.IsOneClosedVolume()); });
}
BENCHMARK(BM_IsOneClosedVolume)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Kalvio::Math
