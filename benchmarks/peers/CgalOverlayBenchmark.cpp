#include "areas/Layers.h"

#include <benchmark/benchmark.h>

#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/General_polygon_set_2.h>
#include <CGAL/Gps_circle_segment_traits_2.h>

#include <boost/variant.hpp>

#include <iterator>
#include <vector>

namespace Kalvio::Math {
namespace {

using Kernel = CGAL::Exact_predicates_exact_constructions_kernel;
using Traits = CGAL::Gps_circle_segment_traits_2<Kernel>;
using PolygonSet = CGAL::General_polygon_set_2<Traits>;

// A circle in its parts that are monotone in x.
Traits::Polygon_2 PolygonOf(const PlainDisc& disc) {
    const Kernel::FT radius(disc.radius);
    const Traits::Curve_2 circle(Kernel::Circle_2({disc.x, disc.y}, radius * radius, CGAL::COUNTERCLOCKWISE));
    std::vector<boost::variant<Traits::Point_2, Traits::X_monotone_curve_2>> parts;
    Traits().make_x_monotone_2_object()(circle, std::back_inserter(parts));
    Traits::Polygon_2 polygon;
    for (const auto& part : parts) polygon.push_back(boost::get<Traits::X_monotone_curve_2>(part));
    return polygon;
}

void BM_CgalDiscsUnion(benchmark::State& state) {
    std::vector<Traits::Polygon_2> discs;
    for (const PlainDisc& disc : Discs(state.range(0))) discs.push_back(PolygonOf(disc));
    for (auto _ : state) {
        PolygonSet united;
        united.join(discs.begin(), discs.end());
        benchmark::DoNotOptimize(united);
    }
}
BENCHMARK(BM_CgalDiscsUnion)->ArgName("discs")->Arg(100)->Arg(1000);

}  // namespace
}  // namespace Kalvio::Math
