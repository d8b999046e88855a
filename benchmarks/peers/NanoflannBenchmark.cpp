// The merge of vertices by circle searches in a k-d tree; times are per vertex.
#include "meshes/Terrain.h"

#include <benchmark/benchmark.h>
#include <nanoflann.hpp>

namespace Kalvio::Benchmarks {
namespace {

struct Cloud {
    const std::vector<Soup::Vertex>& vertices;

    std::size_t kdtree_get_point_count() const { return vertices.size(); }
    double kdtree_get_pt(std::size_t i, std::size_t axis) const {
        return axis == 0 ? vertices[i].x : axis == 1 ? vertices[i].y : vertices[i].z;
    }
    template <class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};

void BM_NanoflannMerge(benchmark::State& state) {
    using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud, 3>;
    const Soup soup(static_cast<std::size_t>(state.range(0)), state.range(1) != 0);
    const Cloud cloud{soup.vertices};
    constexpr std::uint32_t none = 0xFFFFFFFFU;
    constexpr double square = Soup::tolerance * Soup::tolerance;
    for (auto _ : state) {
        const Tree tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
        std::vector<std::uint32_t> merged(soup.vertices.size(), none);
        std::vector<std::pair<std::size_t, double>> found;
        for (std::uint32_t i = 0; i < soup.vertices.size(); ++i) {
            if (merged[i] != none) continue;
            merged[i] = i;
            found.clear();
            nanoflann::RadiusResultSet<double, std::size_t> results(square, found);
            const double at[] = {soup.vertices[i].x, soup.vertices[i].y, soup.vertices[i].z};
            tree.findNeighbors(results, at, nanoflann::SearchParams());
            for (const auto& [other, distance] : found) {
                if (merged[other] == none) merged[other] = i;
            }
        }
        benchmark::DoNotOptimize(merged.data());
    }
    state.counters["per index"] =
        benchmark::Counter(static_cast<double>(soup.vertices.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_NanoflannMerge)
    ->ArgNames({"indexes", "shuffled"})
    ->ArgsProduct({{30000, 300000, 3000000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Kalvio::Benchmarks
