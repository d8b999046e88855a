#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndex.h"
#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/core/BoundingBoxND.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// The same work on the same boxes for every index, ours and others'.
///
/// An index under test is an adapter with `Insert(i)`, `Remove(i)`, `Window(box)`, `Point(x, y)`, the last two
/// answering the number of items found; it is made from the boxes. `Load()`, where there is one, takes all of them at
/// once.
namespace Kalvio::Math::SpatialIndexes {

struct PlanBox {
    double minX, minY, maxX, maxY;
};

/// Boxes over a square of 1e5, even or in 100 clusters, with windows that find about 10 and about 1000 of them.
struct Scene {
    Scene(std::size_t n, bool clustered) {
        std::mt19937_64 random(20240601);
        std::uniform_real_distribution<double> place(0.0, extent);
        std::normal_distribution<double> scatter(0.0, sigma);
        const double area = clustered ? 100 * 4.0 * std::numbers::pi * sigma * sigma : extent * extent;
        const double spacing = std::sqrt(area / static_cast<double>(n));  // where the items are
        std::uniform_real_distribution<double> side(0.0, 0.5 * spacing);
        std::vector<std::pair<double, double>> centers(100);
        for (auto& [x, y] : centers) {
            x = place(random);
            y = place(random);
        }
        std::vector<std::pair<double, double>> places(n);
        for (std::size_t i = 0; i < n; ++i) {
            const auto& [x, y] = centers[i % centers.size()];
            places[i] = clustered ? std::pair(x + scatter(random), y + scatter(random))
                                  : std::pair(place(random), place(random));
        }
        std::shuffle(places.begin(), places.end(), random);
        for (const auto& [x, y] : places) {
            const double width = side(random);
            const double height = side(random);
            boxes.push_back({x, y, x + width, y + height});
        }
        std::uniform_int_distribution<std::size_t> any(0, n - 1);
        for (int i = 0; i < 1000; ++i) {
            const auto& [x, y] = places[any(random)];
            points.push_back({x, y, x, y});
            for (auto& [hits, windows] : windowsFor) {
                const double half = 0.5 * spacing * std::sqrt(static_cast<double>(hits));
                windows.push_back({x - half, y - half, x + half, y + half});
            }
        }
    }

    static const Scene& Of(std::size_t n, bool clustered) {
        static std::map<std::pair<std::size_t, bool>, std::unique_ptr<Scene>> scenes;
        std::unique_ptr<Scene>& scene = scenes[{n, clustered}];
        if (scene == nullptr) scene = std::make_unique<Scene>(n, clustered);
        return *scene;
    }

    static constexpr double extent = 1e5;
    static constexpr double sigma = 1e3;
    std::vector<PlanBox> boxes;
    std::vector<PlanBox> points;
    std::map<int, std::vector<PlanBox>> windowsFor{{10, {}}, {1000, {}}};
};

class BoxItem final : public ISpatialIndexData {
public:
    explicit BoxItem(const PlanBox& plan)
        : box(PointND(std::vector<double>{plan.minX, plan.minY}), PointND(std::vector<double>{plan.maxX, plan.maxY})) {}
    void GetEnvelope(BoundingBoxND& envelope) const override { envelope = box; }

private:
    BoundingBoxND box;
};

class Counter final : public ISpatialIndexVisit {
public:
    void Visit(ISpatialIndexData* item) const override { benchmark::DoNotOptimize(item); }
};

template <class Tree>
class KalvioAdapter {
public:
    explicit KalvioAdapter(const std::vector<PlanBox>& boxes) {
        for (const PlanBox& box : boxes) items.emplace_back(box);
    }
    void Insert(std::size_t i) { tree.Insert(&items[i]); }
    void Load() {
        std::vector<const ISpatialIndexData*> all;
        all.reserve(items.size());
        for (const BoxItem& item : items) all.push_back(&item);
        tree.Insert(all);
    }
    bool Remove(std::size_t i) { return tree.Remove(&items[i]); }
    int Window(const PlanBox& w) const {
        return tree.Search(BoundingBoxND(Low(w), High(w)), true,
                           [](ISpatialIndexData* item) { benchmark::DoNotOptimize(item); });
    }
    int Point(double x, double y) const { return tree.SearchAndVisit(PointND(std::vector<double>{x, y}), Counter()); }
    std::size_t Nearest(double x, double y, unsigned int k) const {
        std::vector<ISpatialIndexData*> found;
        return tree.SearchNearest(PointND(std::vector<double>{x, y}), k, Scene::extent, found);
    }
    int List(const PlanBox& w) const {
        std::list<ISpatialIndexData*> found;
        return static_cast<int>(tree.Search(BoundingBoxND(Low(w), High(w)), true, found));
    }

private:
    static PointND Low(const PlanBox& w) { return PointND(std::vector<double>{w.minX, w.minY}); }
    static PointND High(const PlanBox& w) { return PointND(std::vector<double>{w.maxX, w.maxY}); }

    std::vector<BoxItem> items;
    Tree tree;
};

/// Which boxes, by the benchmark's arguments: count and whether in clusters.
inline const Scene& SceneOf(const benchmark::State& state) {
    return Scene::Of(static_cast<std::size_t>(state.range(0)), state.range(1) != 0);
}

template <bool atOnce, class Adapter>
void Fill(Adapter& index, const Scene& scene) {
    if constexpr (atOnce) {
        index.Load();
    } else {
        for (std::size_t i = 0; i < scene.boxes.size(); ++i) index.Insert(i);
    }
}

template <class Adapter, bool atOnce = false>
std::unique_ptr<Adapter> Filled(const Scene& scene) {
    auto index = std::make_unique<Adapter>(scene.boxes);
    Fill<atOnce>(*index, scene);
    return index;
}

/// The filled index for a benchmark's arguments; kept until another is asked for.
template <class Adapter, bool atOnce>
const Adapter& Prepared(const benchmark::State& state) {
    static std::pair<const Scene*, std::unique_ptr<Adapter>> kept;
    const Scene& scene = SceneOf(state);
    if (kept.first != &scene) kept = {&scene, Filled<Adapter, atOnce>(scene)};
    return *kept.second;
}

/// Runs one search per iteration over the places in turn.
template <class Search>
void RunSearches(benchmark::State& state, const std::vector<PlanBox>& places, Search&& search) {
    std::size_t next = 0;
    std::int64_t hits = 0;
    for (auto _ : state) {
        hits += static_cast<std::int64_t>(search(places[next]));
        next = (next + 1) % places.size();
    }
    state.counters["hits"] = benchmark::Counter(static_cast<double>(hits), benchmark::Counter::kAvgIterations);
}

template <class Adapter, bool atOnce>
void BM_Window(benchmark::State& state) {
    const Adapter& index = Prepared<Adapter, atOnce>(state);
    RunSearches(state, SceneOf(state).windowsFor.at(static_cast<int>(state.range(2))),
                [&](const PlanBox& w) { return index.Window(w); });
}

template <class Adapter, bool atOnce>
void BM_List(benchmark::State& state) {
    const Adapter& index = Prepared<Adapter, atOnce>(state);
    RunSearches(state, SceneOf(state).windowsFor.at(static_cast<int>(state.range(2))),
                [&](const PlanBox& w) { return index.List(w); });
}

template <class Adapter, bool atOnce>
void BM_Point(benchmark::State& state) {
    const Adapter& index = Prepared<Adapter, atOnce>(state);
    RunSearches(state, SceneOf(state).points, [&](const PlanBox& p) { return index.Point(p.minX, p.minY); });
}

template <class Adapter, bool atOnce>
void BM_Nearest(benchmark::State& state) {
    const Adapter& index = Prepared<Adapter, atOnce>(state);
    const auto k = static_cast<unsigned int>(state.range(2));
    RunSearches(state, SceneOf(state).points, [&](const PlanBox& p) { return index.Nearest(p.minX, p.minY, k); });
}

/// Processor time: a busy machine does not change it much.
inline double SecondsUsed() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// Time of one of `n` operations, as counter `each`.
inline benchmark::Counter Each(double n) {
    return {n, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert};
}

/// Bytes per item are those of the heap, items themselves apart.
template <class Adapter, bool atOnce>
void BM_Insert(benchmark::State& state) {
    const Scene& scene = SceneOf(state);
    const auto n = static_cast<double>(scene.boxes.size());
    double bytes = 0.0;
    for (auto _ : state) {
        auto index = std::make_unique<Adapter>(scene.boxes);
        const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const double start = SecondsUsed();
        Fill<atOnce>(*index, scene);
        state.SetIterationTime(SecondsUsed() - start);
        bytes = static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - before) / n;
    }
    state.counters["each"] = Each(n);
    state.counters["bytes"] = bytes;
}

/// Removal of every second item.
template <class Adapter>
void BM_RemoveHalf(benchmark::State& state) {
    const Scene& scene = SceneOf(state);
    for (auto _ : state) {
        auto index = Filled<Adapter>(scene);
        const double start = SecondsUsed();
        for (std::size_t i = 0; i < scene.boxes.size(); i += 2) {
            if (!index->Remove(i)) state.SkipWithError("an item is not found");
        }
        state.SetIterationTime(SecondsUsed() - start);
    }
    state.counters["each"] = Each(static_cast<double>((scene.boxes.size() + 1) / 2));
}

/// How insertion of one item and a small window grow from 1e4 to 1e6 items: the exponent p of n^p between sizes.
template <class Adapter>
void BM_Growth(benchmark::State& state) {
    std::vector<double> insertion;
    std::vector<double> window;
    const std::vector<std::size_t> sizes{10000, 100000, 1000000};
    for (auto _ : state) {
        for (const std::size_t n : sizes) {
            const Scene& scene = Scene::Of(n, false);
            const double start = SecondsUsed();
            const auto index = Filled<Adapter>(scene);
            const double filled = SecondsUsed();
            for (int round = 0; round < 10; ++round) {
                for (const PlanBox& w : scene.windowsFor.at(10)) benchmark::DoNotOptimize(index->Window(w));
            }
            window.push_back(SecondsUsed() - filled);
            insertion.push_back((filled - start) / static_cast<double>(n));
        }
    }
    for (std::size_t i = 1; i < sizes.size(); ++i) {
        const std::string to = "to_1e" + std::to_string(i + 4);
        state.counters["insert_" + to] = std::log10(insertion[i] / insertion[i - 1]);
        state.counters["window_" + to] = std::log10(window[i] / window[i - 1]);
    }
}

/// Everything for one index, up to `most` items, filled item by item or all at once.
template <class Adapter, bool atOnce = false>
void RegisterAll(const std::string& name, std::int64_t most = 1000000) {
    const auto withSizes = [most](benchmark::internal::Benchmark* b, const std::vector<std::int64_t>& hits) {
        std::vector<std::string> names{"items", "clustered"};
        if (!hits.empty()) names.emplace_back("hits");
        b->ArgNames(names);
        for (std::int64_t n = 1000; n <= most; n *= 10) {
            for (const std::int64_t clustered : {0, 1}) {
                if (hits.empty()) b->Args({n, clustered});
                for (const std::int64_t k : hits) b->Args({n, clustered, k});
            }
        }
        return b;
    };
    using benchmark::RegisterBenchmark;
    withSizes(RegisterBenchmark((name + "/window").c_str(), BM_Window<Adapter, atOnce>), {10, 1000});
    if constexpr (requires(const Adapter& a, const PlanBox& w) { a.List(w); }) {
        withSizes(RegisterBenchmark((name + "/list").c_str(), BM_List<Adapter, atOnce>), {10, 1000});
    }
    if constexpr (requires(const Adapter& a) { a.Nearest(0.0, 0.0, 1U); }) {
        withSizes(RegisterBenchmark((name + "/nearest").c_str(), BM_Nearest<Adapter, atOnce>), {1, 10});
    }
    withSizes(RegisterBenchmark((name + "/point").c_str(), BM_Point<Adapter, atOnce>), {});
    withSizes(RegisterBenchmark((name + "/" + (atOnce ? "load" : "insert")).c_str(), BM_Insert<Adapter, atOnce>), {})
        ->UseManualTime();
    if constexpr (!atOnce) {
        withSizes(RegisterBenchmark((name + "/removeHalf").c_str(), BM_RemoveHalf<Adapter>), {})->UseManualTime();
        if (most >= 1000000) RegisterBenchmark((name + "/growth").c_str(), BM_Growth<Adapter>)->Iterations(1);
    }
}

}  // namespace Kalvio::Math::SpatialIndexes
