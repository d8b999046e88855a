#include "kalvio/SpatialIndexes/QuadTree.h"
#include "kalvio/SpatialIndexes/RStarTree.h"
#include "kalvio/SpatialIndexes/RTree.h"

#include "SpatialIndexes/IndexBenchmark.h"

#ifdef KALVIO_PEER_BOOST
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#endif
#ifdef KALVIO_PEER_GEOS
#include <geos/geom/Envelope.h>
#include <geos/index/ItemVisitor.h>
#include <geos/index/quadtree/Quadtree.h>
#include <geos/index/strtree/TemplateSTRtree.h>
#endif
#ifdef KALVIO_PEER_SPATIALINDEX
#include <spatialindex/SpatialIndex.h>
#endif

#include <benchmark/benchmark.h>

namespace Kalvio::Math::SpatialIndexes {
namespace {

#ifdef KALVIO_PEER_BOOST
template <class Parameters>
class BoostAdapter {
public:
    explicit BoostAdapter(const std::vector<PlanBox>& all) : boxes(all) {}
    void Insert(std::size_t i) { tree.insert(ValueOf(i)); }
    void Load() {
        std::vector<Value> all;
        all.reserve(boxes.size());
        for (std::size_t i = 0; i < boxes.size(); ++i) all.push_back(ValueOf(i));
        tree = boost::geometry::index::rtree<Value, Parameters>(all);
    }
    bool Remove(std::size_t i) { return tree.remove(ValueOf(i)) == 1; }
    std::size_t Window(const PlanBox& w) const { return Count(BoxOf(w)); }
    std::size_t Point(double x, double y) const { return Count(PointXY(x, y)); }
    std::size_t Nearest(double x, double y, unsigned int k) const {
        return Query(boost::geometry::index::nearest(PointXY(x, y), k));
    }

private:
    using PointXY = boost::geometry::model::d2::point_xy<double>;
    using Box = boost::geometry::model::box<PointXY>;
    using Value = std::pair<Box, const PlanBox*>;

    static Box BoxOf(const PlanBox& b) { return {PointXY(b.minX, b.minY), PointXY(b.maxX, b.maxY)}; }
    Value ValueOf(std::size_t i) const { return {BoxOf(boxes[i]), &boxes[i]}; }
    template <class Shape>
    std::size_t Count(const Shape& shape) const {
        return Query(boost::geometry::index::intersects(shape));
    }
    template <class Predicate>
    std::size_t Query(const Predicate& predicate) const {
        return tree.query(predicate, boost::make_function_output_iterator(
                                         [](const Value& value) { benchmark::DoNotOptimize(value.second); }));
    }

    const std::vector<PlanBox>& boxes;
    boost::geometry::index::rtree<Value, Parameters> tree;
};
#endif

#ifdef KALVIO_PEER_GEOS
// The quadtree answers with candidates: the exact test is made here, as its users do.
class GeosAdapter {
public:
    explicit GeosAdapter(const std::vector<PlanBox>& all) {
        for (const PlanBox& b : all) envelopes.emplace_back(b.minX, b.maxX, b.minY, b.maxY);
    }
    void Insert(std::size_t i) { tree.insert(&envelopes[i], &envelopes[i]); }
    bool Remove(std::size_t i) { return tree.remove(&envelopes[i], &envelopes[i]); }
    std::size_t Window(const PlanBox& w) const {
        const geos::geom::Envelope window(w.minX, w.maxX, w.minY, w.maxY);
        Collector collector(window);
        tree.query(&window, collector);
        return collector.count;
    }
    std::size_t Point(double x, double y) const { return Window({x, y, x, y}); }

private:
    struct Collector final : geos::index::ItemVisitor {
        explicit Collector(const geos::geom::Envelope& w) : window(w) {}
        void visitItem(void* item) override {
            if (window.intersects(static_cast<geos::geom::Envelope*>(item))) ++count;
        }
        const geos::geom::Envelope& window;
        std::size_t count = 0;
    };

    std::vector<geos::geom::Envelope> envelopes;
    mutable geos::index::quadtree::Quadtree tree;
};

class StrAdapter {
public:
    explicit StrAdapter(const std::vector<PlanBox>& all) {
        for (const PlanBox& b : all) envelopes.emplace_back(b.minX, b.maxX, b.minY, b.maxY);
    }
    void Load() {
        for (geos::geom::Envelope& envelope : envelopes) tree.insert(&envelope, &envelope);
        tree.build();
    }
    std::size_t Window(const PlanBox& w) const {
        std::size_t count = 0;
        tree.query(geos::geom::Envelope(w.minX, w.maxX, w.minY, w.maxY), [&count](const geos::geom::Envelope* item) {
            benchmark::DoNotOptimize(item);
            ++count;
        });
        return count;
    }
    std::size_t Point(double x, double y) const { return Window({x, y, x, y}); }

private:
    std::vector<geos::geom::Envelope> envelopes;
    mutable geos::index::strtree::TemplateSTRtree<const geos::geom::Envelope*> tree{10};
};
#endif

#ifdef KALVIO_PEER_SPATIALINDEX
class LibSpatialIndexAdapter {
public:
    explicit LibSpatialIndexAdapter(const std::vector<PlanBox>& all)
        : boxes(all),
          storage(SpatialIndex::StorageManager::createNewMemoryStorageManager()),
          tree(SpatialIndex::RTree::createNewRTree(*storage, 0.7, 64, 64, 2, SpatialIndex::RTree::RV_RSTAR, id)) {}
    void Insert(std::size_t i) {
        tree->insertData(0, nullptr, RegionOf(boxes[i]), static_cast<SpatialIndex::id_type>(i));
    }
    bool Remove(std::size_t i) { return tree->deleteData(RegionOf(boxes[i]), static_cast<SpatialIndex::id_type>(i)); }
    std::size_t Window(const PlanBox& w) const {
        Collector collector;
        tree->intersectsWithQuery(RegionOf(w), collector);
        return collector.count;
    }
    std::size_t Point(double x, double y) const { return Window({x, y, x, y}); }

private:
    struct Collector final : SpatialIndex::IVisitor {
        void visitNode(const SpatialIndex::INode&) override {}
        void visitData(const SpatialIndex::IData&) override { ++count; }
        void visitData(std::vector<const SpatialIndex::IData*>&) override {}
        std::size_t count = 0;
    };
    static SpatialIndex::Region RegionOf(const PlanBox& b) {
        const double low[]{b.minX, b.minY};
        const double high[]{b.maxX, b.maxY};
        return {low, high, 2};
    }

    const std::vector<PlanBox>& boxes;
    SpatialIndex::id_type id = 0;
    std::unique_ptr<SpatialIndex::IStorageManager> storage;
    std::unique_ptr<SpatialIndex::ISpatialIndex> tree;
};
#endif

const bool registered = [] {
    RegisterAll<KalvioAdapter<RStarTree>>("RStarTree");
    RegisterAll<KalvioAdapter<RTree>>("RTree");
    RegisterAll<KalvioAdapter<QuadTree>>("QuadTree");
    RegisterAll<KalvioAdapter<RStarTree>, true>("RStarTreeAtOnce");
    RegisterAll<KalvioAdapter<RTree>, true>("RTreeAtOnce");
    RegisterAll<KalvioAdapter<QuadTree>, true>("QuadTreeAtOnce");
#ifdef KALVIO_PEER_BOOST
    RegisterAll<BoostAdapter<boost::geometry::index::rstar<64, 32>>>("BoostRStar64");
    RegisterAll<BoostAdapter<boost::geometry::index::rstar<16>>>("BoostRStar16");
    RegisterAll<BoostAdapter<boost::geometry::index::quadratic<8>>>("BoostQuadratic8");
    RegisterAll<BoostAdapter<boost::geometry::index::rstar<16>>, true>("BoostPacked16");
#endif
#ifdef KALVIO_PEER_GEOS
    RegisterAll<GeosAdapter>("GeosQuadtree");
    RegisterAll<StrAdapter, true>("GeosStr");
#endif
#ifdef KALVIO_PEER_SPATIALINDEX
    RegisterAll<LibSpatialIndexAdapter>("LibSpatialIndex", 100000);
#endif
    return true;
}();

}  // namespace
}  // namespace Kalvio::Math::SpatialIndexes
