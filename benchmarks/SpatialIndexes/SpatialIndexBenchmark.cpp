#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"
#include "kalvio/SpatialIndexes/QuadTree.h"
#include "kalvio/SpatialIndexes/RStarTree.h"
#include "kalvio/SpatialIndexes/RTree.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point3D.h"

#include "SpatialIndexes/IndexBenchmark.h"

namespace Kalvio::Math::SpatialIndexes {
namespace {

const bool registered = [] {
    RegisterAll<KalvioAdapter<RStarTree>>("RStarTree");
    RegisterAll<KalvioAdapter<RTree>>("RTree", 100000);
    RegisterAll<KalvioAdapter<QuadTree>>("QuadTree");
    RegisterAll<KalvioAdapter<RStarTree>, true>("RStarTreeAtOnce");
    RegisterAll<KalvioAdapter<RTree>, true>("RTreeAtOnce");
    RegisterAll<KalvioAdapter<QuadTree>, true>("QuadTreeAtOnce");
    return true;
}();

// Merging the vertices of a mesh: all points in, then a small circle around each.
void BM_PointsInCircles(benchmark::State& state) {
    const Scene& scene = SceneOf(state);
    const BoundingBox2D box(Point2D(0.0, 0.0), Point2D(Scene::extent, Scene::extent));
    std::vector<Point3D> found;
    for (auto _ : state) {
        const auto index = IQuadTreeForPoints::Create(100, box);
        for (const PlanBox& b : scene.boxes) index->Insert(Point3D(b.minX, b.minY, 0.0));
        for (const PlanBox& b : scene.boxes) {
            found.clear();
            benchmark::DoNotOptimize(index->Search(Point2D(b.minX, b.minY), 0.01, found));
        }
    }
    state.counters["each"] = Each(static_cast<double>(scene.boxes.size()));
}
BENCHMARK(BM_PointsInCircles)
    ->ArgNames({"points", "clustered"})
    ->Args({10000, 0})
    ->Args({100000, 0})
    ->Args({100000, 1});

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
