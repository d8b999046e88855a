#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString3D.h"
#include "polygons/Rings.h"

#ifdef KALVIO_PEER_CGAL
#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Spatial_sort_traits_adapter_2.h>
#include <CGAL/Triangulation_hierarchy_2.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>
#include <CGAL/property_map.h>
#include <CGAL/spatial_sort.h>
#endif
#ifdef KALVIO_PEER_GTS
#include <gts.h>
#endif

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

/// Heights on a surface of spread points at survey coordinates. The label is the sum of some of them, which must be the
/// same for all.
namespace Kalvio::Math {
namespace {

constexpr double west = 385000.0;
constexpr double south = 6672000.0;
constexpr int placeCount = 1 << 16;

double HeightOfGround(double x, double y) { return 10.0 * std::sin(0.01 * (x - west)) + std::cos(0.1 * (y - south)); }

std::vector<Point3D> Ground(std::int64_t count) {
    std::vector<Point3D> points;
    for (const auto& [x, y] : SpreadPoints(count)) {
        points.emplace_back(west + x, south + y, HeightOfGround(west + x, south + y));
    }
    return points;
}

// Not those of the points, and so far from the border that the triangles there are no matter.
std::vector<Point2D> SpreadPlaces() {
    std::vector<Point2D> places;
    for (const auto& [x, y] : SpreadPoints(placeCount)) {
        places.emplace_back(west + 25.0 + 0.95 * y, south + 25.0 + 0.95 * x);
    }
    return places;
}

// 1 apart, back and forth along lines about 14 from each other.
std::vector<Point2D> PlacesAlongLines() {
    constexpr int perLine = 950;
    std::vector<Point2D> places;
    for (int i = 0; i < placeCount; ++i) {
        const int along = i / perLine % 2 == 0 ? i % perLine : perLine - 1 - i % perLine;
        places.emplace_back(west + 25.0 + along, south + 25.0 + 950.0 * i / placeCount);
    }
    return places;
}

struct Ours {
    explicit Ours(const std::vector<Point3D>& points) {
        TinSurfacePatch3D::Ground ground;
        ground.points = points;
        (void)surface.Build(ground, Tolerances::Standard());
    }
    double GetHeight(const Point2D& place) const {
        double z = std::numeric_limits<double>::quiet_NaN();
        (void)surface.GetHeight(place, z);
        return z;
    }
    double GetNextHeight(const Point2D& place) {
        double z = std::numeric_limits<double>::quiet_NaN();
        (void)surface.GetHeight(place, z, triangle);
        return z;
    }
    void GetHeights(const std::vector<Point2D>& places, std::vector<double>& heights) const {
        surface.GetHeights(places, heights);
    }

    TinSurfacePatch3D surface;
    unsigned int triangle = 0;
};

#ifdef KALVIO_PEER_CGAL
// The hierarchy where there is no hint, as the triangulation alone is searched from afar.
struct Cgal {
    using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
    using Vertex =
        CGAL::Triangulation_hierarchy_vertex_base_2<CGAL::Triangulation_vertex_base_with_info_2<double, Kernel>>;
    using Delaunay = CGAL::Delaunay_triangulation_2<Kernel, CGAL::Triangulation_data_structure_2<Vertex>>;
    using Point = Kernel::Point_2;

    explicit Cgal(const std::vector<Point3D>& points) {
        std::vector<Point> plan;
        for (const Point3D& p : points) plan.emplace_back(p.GetX(), p.GetY());
        triangulation.insert(plan.begin(), plan.end());
        for (const auto vertex : triangulation.finite_vertex_handles()) {
            vertex->info() = HeightOfGround(vertex->point().x(), vertex->point().y());
        }
    }
    double GetHeight(const Point2D& place) const {
        const Point p(place.GetX(), place.GetY());
        return HeightIn(*triangulation.locate(p), p);
    }
    double GetNextHeight(const Point2D& place) {
        const Point p(place.GetX(), place.GetY());
        face = triangulation.Delaunay::locate(p, face);
        return HeightIn(*face, p);
    }
    // Along a curve through the places.
    void GetHeights(const std::vector<Point2D>& places, std::vector<double>& heights) {
        heights.resize(places.size());
        std::vector<Point> points;
        for (const Point2D& p : places) points.emplace_back(p.GetX(), p.GetY());
        std::vector<std::size_t> order(points.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        const auto map = CGAL::make_property_map(points);
        CGAL::spatial_sort(order.begin(), order.end(), CGAL::Spatial_sort_traits_adapter_2<Kernel, decltype(map)>(map));
        for (const std::size_t i : order) heights[i] = GetNextHeight(places[i]);
    }
    static double HeightIn(const Delaunay::Face& face, const Point& p) {
        const auto& [a, b, c] = std::tie(*face.vertex(0), *face.vertex(1), *face.vertex(2));
        const auto u = b.point() - a.point(), v = c.point() - a.point(), w = p - a.point();
        return a.info() +
               (CGAL::determinant(w, v) * (b.info() - a.info()) + CGAL::determinant(u, w) * (c.info() - a.info())) /
                   CGAL::determinant(u, v);
    }

    CGAL::Triangulation_hierarchy_2<Delaunay> triangulation;
    Delaunay::Face_handle face;
};
#endif

#ifdef KALVIO_PEER_GTS
// Inside a large triangle, which is kept. Points are added along strips, each from a face at the one before.
struct Gts {
    explicit Gts(std::vector<Point3D> points) {
        const auto corner = [](double x, double y) { return gts_vertex_new(gts_vertex_class(), x, y, 0.0); };
        const auto edge = [](GtsVertex* a, GtsVertex* b) { return gts_edge_new(gts_edge_class(), a, b); };
        GtsVertex* a = corner(west - 1e4, south - 1e4);
        GtsVertex* b = corner(west + 2e4, south - 1e4);
        GtsVertex* c = corner(west, south + 2e4);
        gts_surface_add_face(surface, gts_face_new(gts_face_class(), edge(a, b), edge(b, c), edge(c, a)));
        const double width = 2000.0 / std::sqrt(static_cast<double>(points.size()));
        const auto strip = [width](const Point3D& p) { return std::floor((p.GetX() - west) / width); };
        std::sort(points.begin(), points.end(), [&](const Point3D& p, const Point3D& q) {
            if (strip(p) != strip(q)) return strip(p) < strip(q);
            return std::fmod(strip(p), 2.0) == 0.0 ? p.GetY() < q.GetY() : q.GetY() < p.GetY();
        });
        for (const Point3D& p : points) {
            GtsVertex* vertex = gts_vertex_new(gts_vertex_class(), p.GetX(), p.GetY(), p.GetZ());
            GSList* faces = gts_vertex_faces(a, surface, nullptr);
            if (!gts_delaunay_add_vertex(surface, vertex, static_cast<GtsFace*>(faces->data))) a = vertex;
            g_slist_free(faces);
        }
    }
    Gts(const Gts&) = delete;
    Gts& operator=(const Gts&) = delete;
    ~Gts() {
        gts_object_destroy(GTS_OBJECT(point));
        gts_object_destroy(GTS_OBJECT(surface));
    }
    double GetHeight(const Point2D& place) {
        face = nullptr;
        return GetNextHeight(place);
    }
    double GetNextHeight(const Point2D& place) {
        gts_point_set(point, place.GetX(), place.GetY(), 0.0);
        face = gts_point_locate(point, surface, face);
        gts_triangle_interpolate_height(&face->triangle, point);
        return point->z;
    }

    GtsSurface* surface = gts_surface_new(gts_surface_class(), gts_face_class(), gts_edge_class(), gts_vertex_class());
    GtsPoint* point = gts_point_new(gts_point_class(), 0.0, 0.0, 0.0);
    GtsFace* face = nullptr;
};

void BM_GtsDelaunay(benchmark::State& state) {
    const std::vector<Point3D> points = Ground(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(Gts(points).surface);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_GtsDelaunay)->ArgName("points")->Arg(10000)->Arg(100000);
#endif

// Made once for all rows of a size.
template <class Surface>
Surface& SurfaceOf(std::int64_t triangles) {
    static std::int64_t size = 0;
    static std::unique_ptr<Surface> surface;
    if (size != triangles) {
        surface = std::make_unique<Surface>(Ground(triangles / 2));
        size = triangles;
    }
    return *surface;
}

template <class Ask>
void Run(benchmark::State& state, const std::vector<Point2D>& places, Ask&& ask) {
    double sum = 0.0;
    for (std::size_t i = 0; i < 4096; ++i) sum += ask(places[i]);
    state.SetLabel(std::to_string(sum));
    std::size_t next = 0;
    for (auto _ : state) benchmark::DoNotOptimize(ask(places[next++ % places.size()]));
}

template <class Surface>
void BM_Height(benchmark::State& state) {
    Surface& surface = SurfaceOf<Surface>(state.range(0));
    Run(state, SpreadPlaces(), [&](const Point2D& place) { return surface.GetHeight(place); });
}

template <class Surface>
void BM_NextHeight(benchmark::State& state) {
    Surface& surface = SurfaceOf<Surface>(state.range(0));
    Run(state, PlacesAlongLines(), [&](const Point2D& place) { return surface.GetNextHeight(place); });
}

// Of 65536 places.
template <class Surface>
void BM_Heights(benchmark::State& state) {
    Surface& surface = SurfaceOf<Surface>(state.range(0));
    const std::vector<Point2D> places = SpreadPlaces();
    std::vector<double> heights;
    surface.GetHeights(places, heights);
    state.SetLabel(std::to_string(std::accumulate(heights.begin(), heights.begin() + 4096, 0.0)));
    for (auto _ : state) {
        surface.GetHeights(places, heights);
        benchmark::DoNotOptimize(heights.data());
    }
}

#define KALVIO_HEIGHT_ROW(row) BENCHMARK(row)->ArgName("triangles")->Arg(10000)->Arg(1000000)
KALVIO_HEIGHT_ROW(BM_Height<Ours>);
KALVIO_HEIGHT_ROW(BM_NextHeight<Ours>);
KALVIO_HEIGHT_ROW(BM_Heights<Ours>);
#ifdef KALVIO_PEER_CGAL
KALVIO_HEIGHT_ROW(BM_Height<Cgal>);
KALVIO_HEIGHT_ROW(BM_NextHeight<Cgal>);
KALVIO_HEIGHT_ROW(BM_Heights<Cgal>);
#endif
#ifdef KALVIO_PEER_GTS
KALVIO_HEIGHT_ROW(BM_Height<Gts>);
KALVIO_HEIGHT_ROW(BM_NextHeight<Gts>);
#endif
#undef KALVIO_HEIGHT_ROW

}  // namespace
}  // namespace Kalvio::Math
