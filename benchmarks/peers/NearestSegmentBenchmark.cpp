#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Projection.h"
#include "polygons/Rings.h"
#include "queries/Chains.h"

#ifdef KALVIO_PEER_BOOST
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/segment.hpp>
#include <boost/geometry/index/rtree.hpp>
#endif
#ifdef KALVIO_PEER_CGAL
#include <CGAL/AABB_segment_primitive.h>
#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/Simple_cartesian.h>
#endif

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

/// The nearest place on one chain of `count` segments, asked again and again, for places spread over its extent.
namespace Kalvio::Math {
namespace {

using Pairs = std::vector<std::pair<double, double>>;

Pairs Rough(std::int64_t count) { return RoughChain(count, 40.0); }
Pairs Shore(std::int64_t count) {
    Pairs ring = ShoreRing(count);
    ring.push_back(ring.front());
    return ring;
}

Pairs Places(const Pairs& chain) {
    Pairs places = SpreadPoints(1024);  // in [0, 1000] x [0, 1000]
    double lowX = chain[0].first, highX = lowX, lowY = chain[0].second, highY = lowY;
    for (const auto& [x, y] : chain) {
        lowX = std::min(lowX, x), highX = std::max(highX, x);
        lowY = std::min(lowY, y), highY = std::max(highY, y);
    }
    for (auto& [x, y] : places) {
        x = lowX + (highX - lowX) * 1e-3 * x;
        y = lowY + (highY - lowY) * 1e-3 * y;
    }
    return places;
}

template <class Ask>
void Run(benchmark::State& state, const Pairs& places, Ask&& ask) {
    for (std::size_t i = 0; i < 4; ++i) benchmark::DoNotOptimize(ask(places[i].first, places[i].second));  // prepares
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [x, y] = places[next++ % places.size()];
        benchmark::DoNotOptimize(ask(x, y));
    }
}

LineString2D StringOf(const Pairs& chain) {
    LineString2D string;
    for (const auto& [x, y] : chain) string.AppendPoint(Point2D(x, y));
    return string;
}

template <Pairs (*make)(std::int64_t)>
void BM_Nearest(benchmark::State& state) {
    const Pairs chain = make(state.range(0));
    const LineString2D string = StringOf(chain);
    Run(state, Places(chain),
        [&](double x, double y) { return Projection::NearestPoint(Point2D(x, y), string, 1e-4); });
}

// Asked once after a change; and the scan that it should cost.
template <Pairs (*make)(std::int64_t)>
void BM_NearestOnce(benchmark::State& state) {
    const Pairs chain = make(state.range(0));
    LineString2D string = StringOf(chain);
    Run(state, Places(chain), [&](double x, double y) {
        string.GetPoint(0);
        return Projection::NearestPoint(Point2D(x, y), string, 1e-4);
    });
}

template <Pairs (*make)(std::int64_t)>
void BM_NearestScan(benchmark::State& state) {
    const Pairs chain = make(state.range(0));
    const LineString2D string = StringOf(chain);
    Run(state, Places(chain), [&](double x, double y) {
        detail::ChainFoot<Point2D> foot;
        detail::FindNearest(string.GetPoints(), Point2D(x, y), 0.0, foot);
        return foot.point;
    });
}

template <Pairs (*make)(std::int64_t)>
void BM_NearestOnPolyline(benchmark::State& state) {
    const Pairs chain = make(state.range(0));
    Polyline2D polyline;
    for (std::size_t i = 1; i < chain.size(); ++i) {
        polyline.AppendElement(
            new Line2D(Point2D(chain[i - 1].first, chain[i - 1].second), Point2D(chain[i].first, chain[i].second)));
    }
    const Polyline2D& asked = polyline;
    const Tolerances tolerances(1e-4);
    Run(state, Places(chain), [&](double x, double y) { return asked.GetNearestPoint(Point2D(x, y), tolerances); });
}

#ifdef KALVIO_PEER_BOOST
template <Pairs (*make)(std::int64_t)>
void BM_BoostNearest(benchmark::State& state) {
    using Point = boost::geometry::model::d2::point_xy<double>;
    using Segment = boost::geometry::model::segment<Point>;
    const Pairs chain = make(state.range(0));
    std::vector<Segment> segments;
    for (std::size_t i = 1; i < chain.size(); ++i) {
        segments.emplace_back(Point(chain[i - 1].first, chain[i - 1].second), Point(chain[i].first, chain[i].second));
    }
    const boost::geometry::index::rtree<Segment, boost::geometry::index::rstar<16>> tree(segments);
    Run(state, Places(chain), [&](double x, double y) {
        const auto nearest = tree.qbegin(boost::geometry::index::nearest(Point(x, y), 1));
        return nearest->first.x();
    });
}
#endif

#ifdef KALVIO_PEER_CGAL
template <Pairs (*make)(std::int64_t)>
void BM_CgalNearest(benchmark::State& state) {
    using Kernel = CGAL::Simple_cartesian<double>;
    using Segments = std::vector<Kernel::Segment_3>;
    using Primitive = CGAL::AABB_segment_primitive<Kernel, Segments::const_iterator>;
    const Pairs chain = make(state.range(0));
    Segments segments;
    for (std::size_t i = 1; i < chain.size(); ++i) {
        segments.emplace_back(Kernel::Point_3(chain[i - 1].first, chain[i - 1].second, 0.0),
                              Kernel::Point_3(chain[i].first, chain[i].second, 0.0));
    }
    CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>> tree(segments.cbegin(), segments.cend());
    tree.accelerate_distance_queries();
    Run(state, Places(chain), [&](double x, double y) { return tree.closest_point(Kernel::Point_3(x, y, 0.0)).x(); });
}
#endif

#define KALVIO_NEAREST_ROWS(row)                                                           \
    BENCHMARK(row<Rough>)->ArgName("segments")->RangeMultiplier(10)->Range(1000, 1000000); \
    BENCHMARK(row<Shore>)->ArgName("segments")->RangeMultiplier(10)->Range(1000, 1000000)
KALVIO_NEAREST_ROWS(BM_Nearest);
KALVIO_NEAREST_ROWS(BM_NearestOnce);
KALVIO_NEAREST_ROWS(BM_NearestScan);
KALVIO_NEAREST_ROWS(BM_NearestOnPolyline);
#ifdef KALVIO_PEER_BOOST
KALVIO_NEAREST_ROWS(BM_BoostNearest);
#endif
#ifdef KALVIO_PEER_CGAL
KALVIO_NEAREST_ROWS(BM_CgalNearest);
#endif
#undef KALVIO_NEAREST_ROWS

}  // namespace
}  // namespace Kalvio::Math
